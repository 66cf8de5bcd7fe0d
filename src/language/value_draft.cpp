#include "language/value_draft.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "types/parts.hpp"

namespace qex::vornath::build {
namespace {

// What a piece takes at least, with its block. A nest that is put together whenever its bytes are
// no more than that has grown by a fixed part of itself each time.
constexpr std::uint64_t kPieceBytes = 64;

}  // namespace

Draft::~Draft() = default;

Draft Draft::of(const InternedType& type, std::vector<Draft> values) {
  const Parts parts = Parts::of(type);
  for (std::size_t i = 0; i < values.size(); ++i) values[i].offset_ += parts[i].offset;
  Draft draft;
  draft.type_ = TypePtr(&type.stripped());
  std::size_t count = 0;
  for (const Draft& value : values) count += value.pieceCount();
  if (type.size() / kPieceBytes <= count) {
    NewBlock made(type, Fill::Zero);
    for (const Draft& value : values) value.copyTo(made.data());
    draft.whole_ = std::move(made).finish();
    return draft;
  }
  // The part with the most pieces stays as it is and the others join it, so that a piece moves a
  // few times only.
  const auto most = std::max_element(
      values.begin(), values.end(),
      [](const Draft& a, const Draft& b) { return a.pieces_.size() < b.pieces_.size(); });
  if (most != values.end() && !most->pieces_.empty()) {
    draft.offset_ = most->offset_;
    draft.pieces_ = std::move(most->pieces_);
    most->pieces_.clear();
  }
  for (Draft& value : values) value.moveTo(draft.pieces_, draft.offset_);
  return draft;
}

DynamicValue Draft::value() && {
  if (whole_.get() == nullptr) {
    NewBlock made(*type_, Fill::Zero);
    copyTo(made.data());
    whole_ = std::move(made).finish();
  }
  return DynamicValue(whole_.get());
}

void Draft::copyTo(char* destination) const {
  const auto copy = [&](std::uint64_t offset, const vrntValue_t* block) {
    std::memcpy(destination + offset, blockData(block), blockType(block).size());
  };
  if (whole_.get() != nullptr) copy(offset_, whole_.get());
  for (const Piece& piece : pieces_) copy(offset_ + piece.offset, piece.block.get());
}

// The offsets count from an origin that may lie behind them; they run over and back again.
void Draft::moveTo(std::vector<Piece>& pieces, std::uint64_t origin) {
  if (whole_.get() != nullptr) pieces.push_back({offset_ - origin, std::move(whole_)});
  for (Piece& piece : pieces_) {
    pieces.push_back({offset_ + piece.offset - origin, std::move(piece.block)});
  }
}

}  // namespace qex::vornath::build
