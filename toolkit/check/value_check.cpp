#include "check/value_check.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "foundation/load.hpp"

namespace vrtk {
namespace {

constexpr std::uint64_t kWord = 8;

// What the library takes for a block beside its bytes: the header, the allocation, its place in the
// table of the reader, and a level of the walk. Measured; see the test.
constexpr std::uint64_t kMemoryOfBlock = 320;
// A block beyond this size is rounded up to pages.
constexpr std::uint64_t kLargeBlock = 64 << 10;
constexpr std::uint64_t kPages = 8192;

// A value whose text has more parts can't be printed or compared in reasonable time and memory.
constexpr double kMostParts = double{1 << 28};
constexpr std::uint64_t kPartsOfByte = 16;

}  // namespace

// A place in a block that is not among the frames yet.
class ValueCheck::BlockPlace final : public Place {
 public:
  BlockPlace(ValueCheck& check, const vrntType_t* type) : check_(check), type_(type) {}
  std::string address(std::uint64_t offset) const override { return check_.address(type_, offset); }

 private:
  ValueCheck& check_;
  const vrntType_t* type_;
};

bool ValueCheck::fail(Code code, std::uint64_t offset, const std::string& message) {
  report_.add(code, offset, [&] { return std::pair(address(nullptr, 0), message); });
  return false;
}

bool ValueCheck::requireBytes(std::uint64_t position, std::uint64_t count, const char* what) {
  const std::uint64_t rest = window_.sourceSize() - position;
  if (count <= rest) return true;
  const bool absurd = count > window_.sourceSize();
  return fail(absurd ? Code::SIZE_TOO_LARGE : Code::FILE_TRUNCATED, position,
              fmt::format("{} has {} bytes, but the file ends after {}; it was cut, or the number "
                          "is damaged",
                          what, count, rest));
}

TypeCache::Found ValueCheck::typeAt(Window& window, std::size_t capacity, std::uint64_t offset,
                                    std::uint64_t length, TypeFault& fault) {
  if (length <= capacity) {
    const auto size = static_cast<std::size_t>(length);
    return types_.find({window.at(offset, size), size}, fault);
  }
  text_.clear();
  for (std::uint64_t done = 0; done < length;) {
    const auto piece = static_cast<std::size_t>(std::min<std::uint64_t>(length - done, capacity));
    text_.append(window.at(offset + done, piece), piece);
    done += piece;
  }
  TypeCache::Found found = types_.find(text_, fault);
  std::string().swap(text_);
  return found;
}

ValueTypePtr ValueCheck::typeOf(const Frame& frame) {
  if (ValueTypePtr type = types_.find(frame.type)) return type;
  TypeFault fault{};
  TypeCache::Found found = typeAt(back_, kBackCapacity, frame.textOffset, frame.textLength, fault);
  if (!found.type) throw std::bad_alloc();  // it was parsed before
  return found.type;
}

std::string ValueCheck::address(const vrntType_t* type, std::uint64_t offset) {
  // A path that nobody can read is cut in the middle.
  constexpr std::size_t kLongestWay = 64;
  std::string out = *owner_ + "/value/data";
  for (std::size_t i = 0; i < frames_.size(); ++i) {
    if (frames_.size() > kLongestWay && i == kLongestWay / 2) {
      const std::size_t left = frames_.size() - kLongestWay;
      fmt::format_to(std::back_inserter(out), "/...{} references.../to", left);
      i += left - 1;
      continue;
    }
    const Frame& frame = frames_[i];
    if (frame.next == 0) break;
    const ValueTypePtr outer = typeOf(frame);
    appendPath(out, outer->type.get(), outer->plan.reference(frame.next - 1).offset);
    if (i + 1 != frames_.size() || type != nullptr) out += "/to";
  }
  if (type != nullptr) appendPath(out, type, offset);
  return out;
}

bool ValueCheck::readRecord(std::uint64_t& position, std::uint64_t word, const vrntType_t* target) {
  const std::uint64_t start = position;
  if (!requireBytes(position, kWord, "the length of a type's text")) return false;
  const auto length = load<std::uint64_t>(window_.at(position, kWord));
  position += kWord;
  if (!requireBytes(position, length, "the text of a type")) return false;
  if (length > TypeCache::kLongestText) {
    return fail(Code::VALUE_TYPE_TOO_LARGE, start,
                fmt::format("the text of the type has {} bytes; at most {} are expected", length,
                            TypeCache::kLongestText));
  }
  const std::uint64_t textOffset = position;
  TypeFault fault{};
  const TypeCache::Found found = typeAt(window_, Window::kCapacity, position, length, fault);
  const ValueTypePtr& type = found.type;
  if (!type) return fail(fault.code, textOffset, fault.message);
  position += length;
  if (!requireBytes(position, kWord, "the identity of a block")) return false;
  const auto id = load<std::uint64_t>(window_.at(position, kWord));
  if (word != 0 && id != word) {
    return fail(Code::VALUE_REFERENCE_MISSING, position,
                fmt::format("the reference leads to block 0x{:x}, but the next block in the file "
                            "is 0x{:x}",
                            word, id));
  }
  position += kWord;
  const TypePlan& plan = type->plan;
  if (!requireBytes(position, plan.size(), "a block")) return false;
  const std::uint64_t data = position;
  position += plan.size();

  vrtkInfo& info = report_.info;
  ++info.valueBlocks;
  info.valueBytes += plan.size();
  info.openMemory += found.added + kMemoryOfBlock + plan.size() + 2 * kWord * plan.references() +
                     (plan.size() >= kLargeBlock ? kPages : 0);

  if (target != nullptr && !(type == relatedFrom_ && target == relatedTo_.get())) {
    if (vrntTypeIsSubType(type->type.get(), target) != 0) {
      relatedFrom_ = type;
      relatedTo_.reset(vrntTypeCopy(target));
    } else {
      report_.add(Code::VALUE_REFERENCE_TYPE, textOffset, [&] {
        return std::pair(address(nullptr, 0),
                         fmt::format("found a block of the type {}; the reference is to {}",
                                     vrntTypeString(type->type.get()), vrntTypeString(target)));
      });
    }
  }
  const BlockPlace place(*this, type->type.get());
  applyRules(plan, window_, {report_, place, data, textures_});
  frames_.push_back(
      {textOffset, length, found.number, data, 0, plan.references(), word, plan.parts()});
  blocks_.open(word != 0 ? word : id);
  if (word == 0) frames_.back().word = id;
  top_ = type;
  return true;
}

// Goes on with the next reference of the last frame.
bool ValueCheck::follow(std::uint64_t& position) {
  Frame& frame = frames_.back();
  if (!top_) top_ = typeOf(frame);
  const ReferencePlace place = top_->plan.reference(frame.next);
  ++frame.next;
  const std::uint64_t at = frame.data + place.offset;
  Window& window = window_.has(at, kWord) ? window_ : back_;
  const auto word = load<std::uint64_t>(window.at(at, kWord));
  if (word == 0) return true;
  if ((word & 1U) != 0) {
    report_.add(Code::VALUE_FOREIGN_ADDRESS, at, [&] {
      return std::pair(address(nullptr, 0),
                       fmt::format("found the address 0x{:x} of the process that wrote the file; "
                                   "it means nothing in another one",
                                   word >> 1U));
    });
    return true;
  }
  double parts = 0;
  switch (blocks_.find(word, parts)) {
    case BlockSet::State::Open:
      return fail(Code::VALUE_CYCLE, at,
                  fmt::format("the reference leads back to block 0x{:x}, which contains it", word));
    case BlockSet::State::Closed:
      frame.parts += parts;
      return true;
    case BlockSet::State::Unknown:
      break;
  }
  if (frames_.size() > kDeepestValue) {
    return fail(
        Code::VALUE_TOO_DEEP, at,
        fmt::format("there are more than {} references on the way to this block", kDeepestValue));
  }
  return readRecord(position, word, place.target);
}

bool ValueCheck::run(std::uint64_t& position, const std::string& owner) {
  owner_ = &owner;
  blocks_.clear();
  frames_.clear();
  const std::uint64_t start = position;
  if (!readRecord(position, 0, nullptr)) return false;
  double parts = 0;
  while (!frames_.empty()) {
    const Frame& frame = frames_.back();
    if (frame.next != frame.references) {
      if (!follow(position)) return false;
      continue;
    }
    parts = frame.parts;
    blocks_.close(frame.word, parts);
    frames_.pop_back();
    top_.reset();
    if (!frames_.empty()) frames_.back().parts += parts;
  }
  const double most = std::max(kMostParts, static_cast<double>(kPartsOfByte * (position - start)));
  if (parts > most) {
    report_.add(Code::VALUE_EXPANDS, start, [&] {
      return std::pair(address(nullptr, 0),
                       fmt::format("a text of the value would have about {:.0f} parts, since it "
                                   "repeats what is shared; at most {:.0f} are expected",
                                   parts, most));
    });
  }
  return true;
}

}  // namespace vrtk
