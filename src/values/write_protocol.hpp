/// Writes to values: copies a shared block first, and maintains the counts of the blocks that its
/// reference words refer to, although the writer changes the words as plain bytes.
#ifndef VORNATH_VALUES_WRITE_PROTOCOL_HPP
#define VORNATH_VALUES_WRITE_PROTOCOL_HPP

#include <cstdint>
#include <limits>
#include <optional>

#include "types/type.hpp"
#include "values/block.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// Returns a new block with the same bytes, references added, the same used length and a count of
/// 0. Throws std::bad_alloc.
vrntValue_t* cloneBlock(const vrntValue_t* block);

/// Replaces the handle, which owns a reference, by a clone unless it is the only one. Throws
/// std::bad_alloc; the handle is then unchanged.
void makeExclusive(vrntValue_t*& handle);

// A write of the bytes of `type` at `offset` is bracketed by prepareWrite() and commitWrite(). In
// between, the block's shadow array owns the references that were in these bytes, and the words in
// the bytes own none. The commit adds the new references before it releases the old ones, so that
// the target of an unchanged word survives. A block allows one open write at a time.

/// Returns the address of the bytes. Throws what makeExclusive() throws.
char* prepareWrite(vrntValue_t*& handle, const InternedType& type, std::uint64_t offset);

void commitWrite(vrntValue_t* block, const InternedType& type, std::uint64_t offset) noexcept;

/// The two calls as a scope, so that an exception commits too.
class WriteScope {
 public:
  WriteScope(vrntValue_t*& handle, const InternedType& type, std::uint64_t offset)
      : data_(prepareWrite(handle, type, offset)), block_(handle), type_(type), offset_(offset) {}
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;
  ~WriteScope() { commitWrite(block_, type_, offset_); }

  /// Returns the bytes to write.
  char* data() const noexcept { return data_; }

 private:
  char* data_;
  vrntValue_t* block_;
  const InternedType& type_;
  std::uint64_t offset_;
};

/// Writes `size` bytes at `offset`, as the two calls around a write of the whole value would, but
/// visits only the references that the bytes touch. The source may lie in the block. Throws what
/// makeExclusive() throws.
void writeBytes(vrntValue_t*& handle, std::uint64_t offset, const void* source, std::uint64_t size);

/// Writes a whole value of `type` at once, without the shadow array: only references that change
/// are counted. Throws std::bad_alloc; nothing is written then.
void writeData(DynamicValue& owner, const void* source, const InternedType& type,
               std::uint64_t offset);

}  // namespace qex::vornath

#endif
