#include "values/write_protocol.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>

namespace qex::vornath {
namespace {

// Old reference words on their way out: on the stack as long as they are few.
class WordBuffer {
 public:
  explicit WordBuffer(std::size_t count)
      : heap_(count > inline_.size() ? std::make_unique<std::uint64_t[]>(count) : nullptr) {}

  std::uint64_t* data() { return heap_ ? heap_.get() : inline_.data(); }

 private:
  std::array<std::uint64_t, 16> inline_{};
  std::unique_ptr<std::uint64_t[]> heap_;
};

// Adds the reference of a word that a host wrote.
void retainWritten(std::uint64_t word) noexcept {
  if (!isBlockWord(word)) return;
  tryEnsureTypeText(blockOfWord(word));
  retainBlock(blockOfWord(word));
}

// Returns the index of the first slot whose word does not end before the byte at `offset`.
std::uint64_t firstSlotAt(const InternedType& type, std::uint64_t offset) {
  const InternedType& pattern = type.slotPattern();
  const std::vector<std::uint64_t>& list = pattern.refSlots();
  if (list.empty()) return 0;
  const std::uint64_t word = offset / kWordSize;
  const std::uint64_t stride = pattern.size() / kWordSize;
  const std::uint64_t repetition = list.size() == type.refSlotCount() ? 0 : word / stride;
  const auto at = std::lower_bound(list.begin(), list.end(), word - repetition * stride);
  return std::min(repetition * list.size() + static_cast<std::uint64_t>(at - list.begin()),
                  type.refSlotCount());
}

}  // namespace

vrntValue_t* cloneBlock(const vrntValue_t* block) {
  const InternedType& type = blockType(block);
  vrntValue_t* const clone = allocateBlock(type, Fill::Undefined);
  clone->freeFn = block->freeFn;
  clone->length = block->length;
  std::memcpy(blockData(clone), blockData(block), type.size());
  retainReferences(type, blockData(clone));
  return clone;
}

void makeExclusive(vrntValue_t*& handle) {
  if (isExclusive(handle)) return;
  vrntValue_t* const clone = BlockPtr::first(cloneBlock(handle)).detach();
  releaseBlock(std::exchange(handle, clone));
}

char* prepareWrite(vrntValue_t*& handle, const InternedType& type, std::uint64_t offset) {
  // A part's long list may be made only now: there must be memory for it before the handle moves.
  const RefSlots slots(type);
  makeExclusive(handle);
  char* const data = blockData(handle) + offset;
  std::uint64_t* shadow = handle->shadowRefs;
  slots.forEach([&](std::uint64_t slot) { *shadow++ = loadWord(data + slot * kWordSize); });
  return data;
}

void commitWrite(vrntValue_t* block, const InternedType& type, std::uint64_t offset) noexcept {
  if (type.refSlotCount() == 0) return;
  const char* const data = blockData(block) + offset;
  RefSlots(type).forEach(
      [data](std::uint64_t slot) { retainWritten(loadWord(data + slot * kWordSize)); });
  for (std::size_t i = 0; i < type.refSlotCount(); ++i) {
    releaseWord(std::exchange(block->shadowRefs[i], 0));
  }
}

void writeBytes(vrntValue_t*& handle, std::uint64_t offset, const void* source,
                std::uint64_t size) {
  const RefSlots slots(blockType(handle));
  // Keeps the source alive if it lies in the very block that the handle moves away from.
  const BlockPtr before = isExclusive(handle) ? BlockPtr() : BlockPtr(handle);
  makeExclusive(handle);
  if (size == 0) return;
  char* const data = blockData(handle);
  const std::size_t firstSlot = firstSlotAt(blockType(handle), offset);
  const auto first = slots.from(firstSlot);
  const auto forEachWritten = [&](auto&& call) {
    for (auto slot = first; slot != slots.end() && *slot * kWordSize < offset + size; ++slot) {
      call(loadWord(data + *slot * kWordSize));
    }
  };
  std::uint64_t* const shadow = handle->shadowRefs + firstSlot;
  std::size_t count = 0;
  forEachWritten([&](std::uint64_t word) { shadow[count++] = word; });
  std::memmove(data + offset, source, size);
  forEachWritten(retainWritten);
  for (std::size_t i = 0; i < count; ++i) releaseWord(std::exchange(shadow[i], 0));
}

void writeData(DynamicValue& owner, const void* source, const InternedType& type,
               std::uint64_t offset) {
  const RefSlots slots(type);
  const BlockPtr before = isExclusive(owner.block()) ? BlockPtr() : BlockPtr(owner.block());
  WordBuffer buffer(slots.size());
  makeExclusive(owner.blockHandle());
  char* const data = blockData(owner.block()) + offset;
  const char* const bytes = static_cast<const char*>(source);

  // What is released may be all that keeps the source alive, so that comes last.
  std::uint64_t* const released = buffer.data();
  std::uint64_t* old = released;
  slots.forEach([&](std::uint64_t slot) {
    const std::uint64_t now = loadWord(data + slot * kWordSize);
    const std::uint64_t next = loadWord(bytes + slot * kWordSize);
    *old++ = now == next ? 0 : now;
    if (now != next) retainWord(next);
  });
  std::memmove(data, bytes, type.size());
  for (std::size_t i = 0; i < slots.size(); ++i) releaseWord(released[i]);
  owner.notify(&type, offset);
}

}  // namespace qex::vornath
