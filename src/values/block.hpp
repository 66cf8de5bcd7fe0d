/// The block: the one form in which a value lies in memory, a vrntValue_t as its header followed by
/// the bytes of the value. This file knows its layout, its count, and the reference words.
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

/// Returns whether an argument that may be a text is a block. Reads no further than the end of a
/// text.
inline bool isBlock(const void* textOrBlock) {
  return std::strncmp(static_cast<const char*>(textOrBlock), kBlockMagic, sizeof(kBlockMagic)) == 0;
}

// Reference words. 0 is null; an odd word is a foreign pointer; any other is the address of another
// block's bytes and holds one reference to it.

inline constexpr std::uint64_t kWordSize = 8;

inline std::uint64_t loadWord(const void* at) {
  std::uint64_t word;
  std::memcpy(&word, at, sizeof(word));
  return word;
}
inline void storeWord(void* at, std::uint64_t word) { std::memcpy(at, &word, sizeof(word)); }

inline bool isBlockWord(std::uint64_t word) { return word != 0 && (word & 1) == 0; }
// A word has no room for the highest bit. A foreign pointer that is 0 without it becomes null, so
// that its text parses to the same word.
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

/// Destroys a block whose count has fallen to zero, and releases what it refers to. Does not
/// recurse or allocate, however long the chain of references is.
void destroyBlock(vrntValue_t* block) noexcept;

/// Returns whether the block has a single handle or reference, so that it may be written in place.
inline bool isExclusive(vrntValue_t* block) {
  return blockCount(block).load(std::memory_order_acquire) == 1;
}

/// Subtracts a reference. Returns whether it was the last one: the caller must destroy the block
/// then. The last holder needs no atomic decrement, since nobody else can add a reference.
inline bool dropReference(vrntValue_t* block) noexcept {
  if (!isExclusive(block)) return blockCount(block).fetch_sub(1, std::memory_order_acq_rel) == 1;
  blockCount(block).store(0, std::memory_order_relaxed);
  return true;
}

inline void releaseBlock(vrntValue_t* block) noexcept {
  if (dropReference(block)) destroyBlock(block);
}

inline void retainWord(std::uint64_t word) {
  if (isBlockWord(word)) retainBlock(blockOfWord(word));
}
inline void releaseWord(std::uint64_t word) noexcept {
  if (isBlockWord(word)) releaseBlock(blockOfWord(word));
}

/// Adds a reference for each block word in the bytes of a value of the type.
inline void retainReferences(const InternedType& type, const char* data) {
  RefSlots(type).forEach(
      [data](std::uint64_t slot) { retainWord(loadWord(data + slot * kWordSize)); });
}

// Creation.

enum class Fill { Zero, Undefined };

/// Allocates a block of the type's `stripped` form with a count of 0. Its `length` is the extent of
/// a one-dimensional array type, else 0. Its `typeText` is null if the type has not built its text
/// yet. Throws std::bad_alloc.
vrntValue_t* allocateBlock(const InternedType& type, Fill fill);
/// Does the same and passes the block a reference of the caller, if the type is a `stripped` form.
vrntValue_t* allocateBlock(TypePtr type, Fill fill);

// Type texts in blocks. A long text is built on request, since each type of a deep nest has nearly
// the whole text of the nest. Hosts need it: they read `typeText` in a block that they were given
// and in every block that its words refer to. So a block gets its text before it is handed out, and
// before a word in another block refers to it. The exception bounds the cost of a nest of values by
// that of its text: a word between two types of deep nests builds no text. Of these the host sees
// the text in the block that it was given and in those that its words refer to.

/// The deepest nest of references in which each level's text is built. The texts take at most this
/// many times the length of the outermost type's text.
inline constexpr std::uint32_t kMaxEagerTextDepth = 64;

inline bool isDeep(const InternedType& type) { return type.referenceDepth() > kMaxEagerTextDepth; }

inline bool hasTypeText(const vrntValue_t* block) {
  return std::atomic_ref(const_cast<vrntValue_t*>(block)->typeText)
             .load(std::memory_order_acquire) != nullptr;
}

/// Sets `typeText` in the block. Throws std::bad_alloc.
void setTypeText(vrntValue_t* block);
void trySetTypeText(vrntValue_t* block) noexcept;

inline void ensureTypeText(vrntValue_t* block) {
  if (!hasTypeText(block)) setTypeText(block);
}

/// Does the same and ignores a failure: the text is then missing until there is memory for it.
inline void tryEnsureTypeText(vrntValue_t* block) noexcept {
  if (!hasTypeText(block)) trySetTypeText(block);
}

/// Sets `typeText` in a block, and in those that its words refer to, before a host gets it. Throws
/// std::bad_alloc.
void exposeToHost(vrntValue_t* block);
void tryExposeToHost(vrntValue_t* block) noexcept;

/// Does the same for a block that a host could read before. Unless its type is a deep one, the
/// texts in the blocks that its words refer to were set when the words were stored.
inline void reexposeToHost(vrntValue_t* block) {
  if (isDeep(blockType(block))) {
    exposeToHost(block);
  } else {
    ensureTypeText(block);
  }
}

/// Does the same and ignores a failure.
inline void tryReexposeToHost(vrntValue_t* block) noexcept {
  if (isDeep(blockType(block))) {
    tryExposeToHost(block);
  } else {
    tryEnsureTypeText(block);
  }
}

/// Sets `typeText` in the blocks that the words of a new block refer to, except between two types
/// of deep nests. Throws std::bad_alloc.
void ensureTargetTexts(const vrntValue_t* block);

/// Frees a block of allocateBlock() without reading its bytes: its words do not hold references
/// yet.
void discardBlock(vrntValue_t* block) noexcept;

/// Returns the extent of a one-dimensional array type, else 0.
std::int32_t declaredLength(const InternedType& type);

/// A counted handle to a block. Only a handle that was moved from is empty.
class BlockPtr {
 public:
  BlockPtr() noexcept = default;
  /// Adds a reference to the block.
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
  /// Returns the handle as the flat interface holds it. The write protocol may replace it by a
  /// copy.
  vrntValue_t*& raw() noexcept { return block_; }

  /// Passes the reference to the caller.
  vrntValue_t* detach() noexcept { return std::exchange(block_, nullptr); }
  /// Takes ownership of a reference of the caller.
  static BlockPtr adopt(vrntValue_t* block) noexcept {
    BlockPtr handle;
    handle.block_ = block;
    return handle;
  }
  /// Returns the first handle to a new block of a count of 0. No other thread knows the block yet,
  /// so that its count is set, not added to.
  static BlockPtr first(vrntValue_t* block) noexcept {
    blockCount(block).store(1, std::memory_order_relaxed);
    return adopt(block);
  }

 private:
  vrntValue_t* block_ = nullptr;
};

/// A block under construction. Its words hold no references before finish() adds them, so an
/// unfinished block is freed without reading its words.
class NewBlock {
 public:
  /// No block: only empty() may be called.
  NewBlock() noexcept = default;
  /// Throws std::bad_alloc.
  NewBlock(const InternedType& type, Fill fill) : block_(allocateBlock(type, fill)) {}
  NewBlock(TypePtr type, Fill fill) : block_(allocateBlock(std::move(type), fill)) {}
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

  /// Adds the references of the words. Throws std::bad_alloc if there is no memory for the text of
  /// a type that a word refers to.
  BlockPtr finish() && {
    if (type().refSlotCount() != 0) {
      ensureTargetTexts(block_);
      retainReferences(type(), data());
    }
    return BlockPtr::first(std::exchange(block_, nullptr));
  }

 private:
  vrntValue_t* block_ = nullptr;
};

}  // namespace qex::vornath

#endif
