/// Writing to a value: copy first if others hold the block, and keep the counts of what its
/// reference words lead to, although the writer changes them as plain bytes.
#ifndef VORNATH_VALUES_WRITE_PROTOCOL_HPP
#define VORNATH_VALUES_WRITE_PROTOCOL_HPP

#include <cstdint>
#include <limits>
#include <optional>

#include "types/type.hpp"
#include "values/block.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// A block of its own with the same bytes and used length, references taken, and a count of 0.
/// Throws std::bad_alloc.
vrntValue_t* cloneBlock(const vrntValue_t* block);

/// Moves the handle, which owns a reference, to a clone unless it alone holds the block. Throws
/// std::bad_alloc; the handle is then as it was.
void makeExclusive(vrntValue_t*& handle);

// A write of the bytes of `type` at `offset` stands between prepareWrite() and commitWrite(). In
// between, the references that were in these bytes belong to the block's shadow array, and the
// words in the bytes count for nothing. The commit raises what the words lead to now before it
// releases what they led to: a word left alone never lets its target die. One write may be open on
// a block at a time.

/// Throws as makeExclusive() does. Returns the address of the bytes.
char* prepareWrite(vrntValue_t*& handle, const InternedType& type, std::uint64_t offset);

void commitWrite(vrntValue_t* block, const InternedType& type, std::uint64_t offset) noexcept;

/// The two steps as a scope, so that the commit follows a throw as well.
class WriteScope {
 public:
  WriteScope(vrntValue_t*& handle, const InternedType& type, std::uint64_t offset)
      : data_(prepareWrite(handle, type, offset)), block_(handle), type_(type), offset_(offset) {}
  WriteScope(const WriteScope&) = delete;
  WriteScope& operator=(const WriteScope&) = delete;
  ~WriteScope() { commitWrite(block_, type_, offset_); }

  /// The bytes to write.
  char* data() const noexcept { return data_; }

 private:
  char* data_;
  vrntValue_t* block_;
  const InternedType& type_;
  std::uint64_t offset_;
};

/// Writes a whole record of `type` at once, without the shadow array: only references that change
/// are counted. Throws std::bad_alloc; nothing is written then.
void writeData(DynamicValue& owner, const void* source, const InternedType& type,
               std::uint64_t offset);

}  // namespace qex::vornath

#endif
