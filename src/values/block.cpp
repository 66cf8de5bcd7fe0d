#include "values/block.hpp"

#include <cstdlib>
#include <limits>
#include <new>

#include "foundation/boundary.hpp"
#include "types/type_handle.hpp"

namespace qex::vornath {
namespace {

constexpr std::uint64_t kLargestAllocation = std::numeric_limits<std::ptrdiff_t>::max();

// Where the release of a block resumes after a child was destroyed. It overwrites `magic` and
// `typeText`, which nobody reads any more, so that the release of a chain needs no memory.
struct Resumption {
  vrntValue_t* parent;
  std::size_t next;  // counts the slots in the data, then those of the shadow array
};
static_assert(sizeof(Resumption) == offsetof(vrntValue_t, type));

void storeResumption(vrntValue_t* block, const Resumption& resumption) {
  std::memcpy(static_cast<void*>(block), &resumption, sizeof(resumption));
}

Resumption loadResumption(const vrntValue_t* block) {
  Resumption resumption;
  std::memcpy(&resumption, static_cast<const void*>(block), sizeof(resumption));
  return resumption;
}

void freeBlock(vrntValue_t* block) noexcept {
  void (*const free)(void*) = block->freeFn;
  if (block->shadowRefs != nullptr) free(block->shadowRefs);
  intrusive_ptr_release(&blockType(block));
  free(block);
}

// Releases the reference of a word. If it was the last one on the block, frees the block, or
// returns it if it has words of its own.
inline vrntValue_t* releaseReference(std::uint64_t word) noexcept {
  if (!isBlockWord(word)) return nullptr;
  vrntValue_t* const target = blockOfWord(word);
  if (!dropReference(target)) return nullptr;
  if (blockType(target).refSlotCount() != 0) return target;
  freeBlock(target);
  return nullptr;
}

// Releases the words from `next` on until one of them was the last reference on a block that has
// words of its own. Returns that block, and sets `next` to the index after its word.
vrntValue_t* releaseWords(vrntValue_t* block, std::size_t& next) noexcept {
  const RefSlots slots(blockType(block));
  const std::size_t count = slots.size();
  const char* const data = blockData(block);
  const std::uint64_t* const shadowRefs = block->shadowRefs;
  std::size_t at = next;
  vrntValue_t* unreferenced = nullptr;
  if (at < count) {
    for (auto slot = slots.from(at); unreferenced == nullptr && slot != slots.end(); ++slot, ++at) {
      unreferenced = releaseReference(loadWord(data + *slot * kWordSize));
    }
  }
  if (shadowRefs != nullptr) {
    for (; unreferenced == nullptr && at < 2 * count; ++at)
      unreferenced = releaseReference(shadowRefs[at - count]);
  }
  next = at;
  return unreferenced;
}

}  // namespace

void destroyBlock(vrntValue_t* block) noexcept {
  if (blockType(block).refSlotCount() == 0) {
    freeBlock(block);
    return;
  }
  vrntValue_t* parent = nullptr;
  std::size_t next = 0;
  for (;;) {
    if (vrntValue_t* const child = releaseWords(block, next)) {
      storeResumption(block, {parent, next});
      parent = block;
      block = child;
      next = 0;
      continue;
    }
    freeBlock(block);
    if (parent == nullptr) return;
    block = parent;
    const Resumption resumption = loadResumption(block);
    parent = resumption.parent;
    next = resumption.next;
  }
}

std::int32_t declaredLength(const InternedType& type) {
  const auto* array = type.getIf<Type::TArrayND<int>>();
  return array != nullptr && array->shape ? *array->shape : 0;
}

vrntValue_t* allocateBlock(TypePtr type, Fill fill) {
  if (&type->stripped() != type.get()) type = TypePtr(&type->stripped());
  const InternedType& stripped = *type;
  if (stripped.size() > kLargestAllocation - kBlockHeaderSize) throw std::bad_alloc();
  const std::size_t size = kBlockHeaderSize + stripped.size();
  // The list of slots may be built only now, and there may be no memory for it.
  const std::size_t slots = stripped.refSlotCount() == 0 ? 0 : RefSlots(stripped).size();
  // Small memory comes from the thread's own list with malloc(), but not with calloc().
  constexpr std::size_t kSmall = 1024;
  const bool zeroed = fill == Fill::Zero && size > kSmall;
  void* const memory = zeroed ? std::calloc(1, size) : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();

  std::uint64_t* shadowRefs = nullptr;
  if (slots != 0) {
    shadowRefs = static_cast<std::uint64_t*>(std::calloc(slots, sizeof(std::uint64_t)));
    if (shadowRefs == nullptr) {
      std::free(memory);
      throw std::bad_alloc();
    }
  }

  auto* const block = new (memory) vrntValue_t;
  // Of the bytes alone: with those of the header, compilers would make the two calls a calloc().
  if (fill == Fill::Zero && !zeroed) std::memset(blockData(block), 0, stripped.size());
  std::memcpy(block->magic, kBlockMagic, sizeof(kBlockMagic));
  const std::string* const text = stripped.knownText();
  block->typeText = text != nullptr ? text->c_str() : nullptr;
  block->type = typeHandle(*type.detach());
  block->shadowRefs = shadowRefs;
  block->freeFn = &std::free;
  block->refCount = 0;
  block->length = static_cast<std::uint32_t>(declaredLength(stripped));
  return block;
}

vrntValue_t* allocateBlock(const InternedType& type, Fill fill) {
  return allocateBlock(TypePtr(&type.stripped()), fill);
}

void setTypeText(vrntValue_t* block) {
  // Stored once: a host may read it as soon as it is set.
  const char* none = nullptr;
  std::atomic_ref(block->typeText)
      .compare_exchange_strong(none, blockType(block).text().c_str(), std::memory_order_acq_rel);
}

void trySetTypeText(vrntValue_t* block) noexcept {
  reportFailureAs(false, [block] { return setTypeText(block), true; });
}

namespace {

template <typename Call>
void forEachTarget(const vrntValue_t* block, Call&& call) {
  const char* const data = blockData(block);
  RefSlots(blockType(block)).forEach([&](std::uint64_t slot) {
    const std::uint64_t word = loadWord(data + slot * kWordSize);
    if (isBlockWord(word)) call(blockOfWord(word));
  });
}

}  // namespace

void exposeToHost(vrntValue_t* block) {
  if (blockType(block).refSlotCount() != 0) {
    forEachTarget(block, [](vrntValue_t* target) { ensureTypeText(target); });
  }
  ensureTypeText(block);
}

void tryExposeToHost(vrntValue_t* block) noexcept {
  reportFailureAs(false, [block] { return exposeToHost(block), true; });
}

void ensureTargetTexts(const vrntValue_t* block) {
  const bool deep = isDeep(blockType(block));
  forEachTarget(block, [deep](vrntValue_t* target) {
    if (!hasTypeText(target) && !(deep && isDeep(blockType(target)))) setTypeText(target);
  });
}

void discardBlock(vrntValue_t* block) noexcept { freeBlock(block); }

}  // namespace qex::vornath
