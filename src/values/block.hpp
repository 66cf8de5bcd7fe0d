/// The block: the one form in which a value lies in memory. Its header is vrntValue_t, its bytes
/// follow. This file knows its layout, its count, and the words that refer to other blocks.
#ifndef VORNATH_VALUES_BLOCK_HPP
#define VORNATH_VALUES_BLOCK_HPP

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "types/ref_slots.hpp"
#include "types/type.hpp"

namespace qex::vornath {

static_assert(sizeof(vrntValue_t) == 48);
static_assert(offsetof(vrntValue_t, magic) == 0);
static_assert(offsetof(vrntValue_t, typeText) == 8);
static_assert(offsetof(vrntValue_t, type) == 16);
static_assert(offsetof(vrntValue_t, shadowRefs) == 24);
static_assert(offsetof(vrntValue_t, freeFn) == 32);
static_assert(offsetof(vrntValue_t, refCount) == 40);
static_assert(offsetof(vrntValue_t, length) == 44);

inline constexpr std::size_t kBlockHeaderSize = sizeof(vrntValue_t);
inline constexpr char kBlockMagic[8] = "vrntval";

inline char* blockData(vrntValue_t* block) {
  return reinterpret_cast<char*>(block) + kBlockHeaderSize;
}
inline const char* blockData(const vrntValue_t* block) {
  return reinterpret_cast<const char*>(block) + kBlockHeaderSize;
}

inline const InternedType& blockType(const vrntValue_t* block) {
  return *reinterpret_cast<const InternedType*>(block->type);
}

/// Whether an argument that may be a text is a block. Reads no further than a text reaches.
inline bool isBlock(const void* textOrBlock) {
  return std::strncmp(static_cast<const char*>(textOrBlock), kBlockMagic, sizeof(kBlockMagic)) == 0;
}

// Reference words. 0 is null; an odd word is an address of the embedder's own; any other is the
// address of another block's bytes and holds one reference on it.

inline constexpr std::uint64_t kWordSize = 8;

inline std::uint64_t loadWord(const void* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof(word));
  return word;
}
inline void storeWord(void* at, std::uint64_t word) { std::memcpy(at, &word, sizeof(word)); }

inline bool isBlockWord(std::uint64_t word) { return word != 0 && (word & 1) == 0; }
// The highest bit has no place in a word. An address that is 0 without it is null, so that its text
// is read back as the same word.
inline std::uint64_t foreignWord(std::uint64_t id) {
  const std::uint64_t shifted = id * 2;
  return shifted == 0 ? 0 : shifted + 1;
}

inline std::uint64_t wordOfBlock(const vrntValue_t* block) {
  return reinterpret_cast<std::uintptr_t>(blockData(block));
}
inline vrntValue_t* blockOfWord(std::uint64_t word) {
  return reinterpret_cast<vrntValue_t*>(static_cast<std::uintptr_t>(word) - kBlockHeaderSize);
}

// Counting.

inline std::atomic_ref<std::uint32_t> blockCount(vrntValue_t* block) {
  return std::atomic_ref<std::uint32_t>(block->refCount);
}

inline void retainBlock(vrntValue_t* block) noexcept {
  blockCount(block).fetch_add(1, std::memory_order_relaxed);
}

/// Ends a block whose count has fallen to zero, and what only it kept alive. It doesn't recurse and
/// doesn't allocate, however long the chain of references is.
void endBlock(vrntValue_t* block) noexcept;

inline void releaseBlock(vrntValue_t* block) noexcept {
  if (blockCount(block).fetch_sub(1, std::memory_order_acq_rel) == 1) endBlock(block);
}

/// Whether one handle or reference alone holds the block, so that it may be written in place.
inline bool isExclusive(vrntValue_t* block) {
  return blockCount(block).load(std::memory_order_acquire) == 1;
}

inline void retainWord(std::uint64_t word) {
  if (isBlockWord(word)) retainBlock(blockOfWord(word));
}
inline void releaseWord(std::uint64_t word) noexcept {
  if (isBlockWord(word)) releaseBlock(blockOfWord(word));
}

/// Takes a reference for each block word in the bytes of a value of the type.
inline void retainReferences(const InternedType& type, const char* data) {
  RefSlots(type).forEach(
      [data](std::uint64_t slot) { retainWord(loadWord(data + slot * kWordSize)); });
}

// Making.

enum class Fill { Zero, Undefined };

/// A new block of the type's `stripped` form with a count of 0. `length` is the extent of a
/// one-dimensional array type, else 0. Of a type that hasn't put its text together yet the block
/// doesn't know the text. Throws std::bad_alloc.
vrntValue_t* allocateBlock(const InternedType& type, Fill fill);

// The texts of types in blocks. A long text is put together when somebody needs it, since each type
// of a deep nest has nearly the whole text of the nest. Who needs it are hosts, who read `typeText`
// in a block that they were given and in all that its words lead to. So a block has its text from
// when it is handed out, or a word in another block leads to it. The exception keeps the cost of a
// nest of values to what its text costs: between two types of deep nests a word alone makes none.
// Of these the host sees the text in the block that it was given and in those behind its words.

/// The deepest nest of references in which each level's text is made: so many times the text of the
/// outermost type is what they take at most.
inline constexpr std::uint32_t kShownDepth = 64;

inline bool isDeep(const InternedType& type) { return type.referenceDepth() > kShownDepth; }

inline bool showsTypeText(const vrntValue_t* block) {
  return std::atomic_ref(const_cast<vrntValue_t*>(block)->typeText)
             .load(std::memory_order_acquire) != nullptr;
}

/// Makes sure that the block knows the text of its type. Throws std::bad_alloc.
void makeTypeText(vrntValue_t* block);
void tryMakeTypeText(vrntValue_t* block) noexcept;

inline void showTypeText(vrntValue_t* block) {
  if (!showsTypeText(block)) makeTypeText(block);
}

/// The same where a failure can't be told: the text is then missing as long as there is no memory.
inline void tryShowTypeText(vrntValue_t* block) noexcept {
  if (!showsTypeText(block)) tryMakeTypeText(block);
}

/// Shows the texts in a block and in those that its words lead to, for a host that is given it.
/// Throws std::bad_alloc.
void showToHost(vrntValue_t* block);
void tryShowToHost(vrntValue_t* block) noexcept;

/// The same for a block that a host could see before: unless its type is a deep one, the texts
/// behind its words have been there since these lead to them.
inline void showAgainToHost(vrntValue_t* block) {
  if (isDeep(blockType(block))) {
    showToHost(block);
  } else {
    showTypeText(block);
  }
}

/// The same where a failure can't be told.
inline void tryShowAgainToHost(vrntValue_t* block) noexcept {
  if (isDeep(blockType(block))) {
    tryShowToHost(block);
  } else {
    tryShowTypeText(block);
  }
}

/// Shows the texts behind the words of a block that is being made, but for those between two types
/// of deep nests. Throws std::bad_alloc.
void showTargets(const vrntValue_t* block);

/// Frees a block of allocateBlock() without a look at its bytes: for one whose words don't hold
/// references yet.
void discardBlock(vrntValue_t* block) noexcept;

/// The extent of a one-dimensional array type, else 0.
std::int32_t declaredLength(const InternedType& type);

/// A counted handle on a block; only one that was moved from is empty.
class BlockPtr {
 public:
  BlockPtr() noexcept = default;
  /// Shares the block.
  explicit BlockPtr(vrntValue_t* block) noexcept : block_(block) {
    if (block_ != nullptr) retainBlock(block_);
  }
  BlockPtr(const BlockPtr& other) noexcept : BlockPtr(other.block_) {}
  BlockPtr(BlockPtr&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  BlockPtr& operator=(BlockPtr other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~BlockPtr() {
    if (block_ != nullptr) releaseBlock(block_);
  }

  vrntValue_t* get() const noexcept { return block_; }
  /// The handle as the flat interface holds one, for the write protocol to move to a copy.
  vrntValue_t*& raw() noexcept { return block_; }

  /// Gives the reference to the caller.
  vrntValue_t* detach() noexcept { return std::exchange(block_, nullptr); }
  /// Takes over a reference of the caller's.
  static BlockPtr adopt(vrntValue_t* block) noexcept {
    BlockPtr handle;
    handle.block_ = block;
    return handle;
  }

 private:
  vrntValue_t* block_ = nullptr;
};

/// A block under construction: its words hold no references until finish() takes them, so one that
/// is given up is freed without a look at them.
class NewBlock {
 public:
  /// None: nothing but empty() may be asked of it.
  NewBlock() noexcept = default;
  /// Throws std::bad_alloc.
  NewBlock(const InternedType& type, Fill fill) : block_(allocateBlock(type, fill)) {}
  NewBlock(NewBlock&& other) noexcept : block_(std::exchange(other.block_, nullptr)) {}
  NewBlock& operator=(NewBlock&& other) noexcept {
    std::swap(block_, other.block_);
    return *this;
  }
  ~NewBlock() {
    if (block_ != nullptr) discardBlock(block_);
  }

  bool empty() const noexcept { return block_ == nullptr; }
  const InternedType& type() const noexcept { return blockType(block_); }
  char* data() const noexcept { return blockData(block_); }

  /// Throws std::bad_alloc if there is no memory for the text of a type that a word leads to.
  BlockPtr finish() && {
    if (type().refSlotCount() != 0) {
      showTargets(block_);
      retainReferences(type(), data());
    }
    return BlockPtr(std::exchange(block_, nullptr));
  }

 private:
  vrntValue_t* block_ = nullptr;
};

}  // namespace qex::vornath

#endif
