/// The library's self-describing value: a type and a counted, copy-on-write block of bytes laid out
/// as the type says. See docs/memory.md for the block's states and the write protocol.
#ifndef VORNATH_VALUES_DYNAMIC_VALUE_HPP
#define VORNATH_VALUES_DYNAMIC_VALUE_HPP

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "types/extents.hpp"
#include "types/type.hpp"
#include "values/block.hpp"
#include "values/views.hpp"

namespace qex::vornath {

/// A handle to a block. Copying a handle shares the block and costs two atomic increments; a write
/// to a shared block moves the handle to a copy of it first. Threads: a handle belongs to one
/// thread at a time; any number of threads may read a block.
///
/// Members marked (embed) are defined in embed/: the shared library does not contain them.
///
/// A value's type never carries metadata: a value created with an annotated type has the stripped
/// type. Functions throw vrnt::Exception with InvalidArguments unless stated otherwise, and
/// std::bad_alloc; no partial value remains.
class DynamicValue {
 public:
  struct Field;

  /// A reference word that owns a reference to its block.
  class VRef {
   public:
    VRef() noexcept = default;
    explicit VRef(const DynamicValue& target) noexcept : VRef(wordOfBlock(target.block())) {}
    explicit VRef(std::uint64_t word) noexcept : word_(word) { retainWord(word_); }
    VRef(const VRef& other) noexcept : VRef(other.word_) {}
    VRef(VRef&& other) noexcept : word_(std::exchange(other.word_, 0)) {}
    VRef& operator=(VRef other) noexcept {
      std::swap(word_, other.word_);
      return *this;
    }
    ~VRef() { releaseWord(word_); }

    std::uint64_t word() const noexcept { return word_; }

   private:
    std::uint64_t word_ = 0;
  };

  /// Writes the bytes of a new value of the given type. They are undefined before.
  using Filler = std::function<void(const InternedType&, char*)>;
  /// Receives the written type and offset; null and 0 after setLength().
  using ChangeListener = std::function<void(const InternedType*, std::uint64_t)>;
  /// The values read from a stream so far, by the words under which the stream refers to them.
  using StreamMap = std::map<std::size_t, VRef>;

  // Plain values.

  /// Creates a value whose bytes are all zero.
  explicit DynamicValue(const TypePtr& type);
  /// Copies the bytes, as many as the type has; each block word among them gets a new reference. If
  /// `bytes` is null, the bytes are undefined, except for reference words, which are null.
  DynamicValue(const TypePtr& type, const void* bytes);
  /// (embed) Creates a value whose bytes the filler writes; each block word that it writes gets a
  /// new reference. An empty filler throws std::bad_function_call.
  static DynamicValue filled(const TypePtr& type, const Filler& filler);
  /// Shares the block.
  explicit DynamicValue(vrntValue_t* block);
  /// Takes over a handle, which must not be empty.
  explicit DynamicValue(BlockPtr block) noexcept;
  /// Copies the bytes of the view.
  explicit DynamicValue(const ConstView& view);

  /// Creates a scalar or short vector from its lanes: 32-bit words for bool (true is all ones),
  /// 32-bit integers, floats, bytes, or the bits of halfs. The bytes after the last lane are zero.
  template <typename Lane>
  static DynamicValue base(Type::TBasetype kind, std::span<const Lane> lanes) {
    return base(kind, lanes.data(), lanes.size_bytes());
  }
  /// Does the same with one lane.
  template <typename Lane>
  static DynamicValue base(Type::TBasetype kind, const Lane& lane) {
    return base(kind, &lane, sizeof(lane));
  }

  // (embed) Arrays. Copies the values in order of the running index. The array type is checked
  // first ("concrete type required", "negative array length").

  /// Creates an array of the element type. Missing values are zero; more values than the extents
  /// hold throw "Empty array without type is not allowed.". A value whose type is not a subtype of
  /// the element type throws "Incompatible type for value -> {}.".
  static DynamicValue array(const std::vector<DynamicValue>& values, const Extents& extents,
                            const TypePtr& element);
  /// Does the same with the type of the first value as the element type. Without values throws
  /// "Empty array without type is not allowed."; in one dimension, an extent other than the number
  /// of values throws the same message, as this case has no message of its own.
  static DynamicValue array(const std::vector<DynamicValue>& values, const Extents& extents);

  // Other kinds. A type of another kind throws std::bad_variant_access.

  /// Creates an enum value. Throws "Invalid enum constructor: {}".
  static DynamicValue enumerator(const TypePtr& enumType, std::string_view constructor);
  /// (embed) Creates a function value from two foreign words, each stored as w * 2 + 1, or as 0 if
  /// it is 0.
  static DynamicValue function(const TypePtr& functionType, std::uint64_t first,
                               std::uint64_t second);
  /// Creates a reference to the referee's block. A `void*` accepts any referee; otherwise a referee
  /// whose type is not a subtype of the target throws "Incompatible type for value -> {}.".
  static DynamicValue reference(const DynamicValue& referee, const TypePtr& referenceType);
  /// Creates a reference of type `T*`, where T is the referee's type.
  static DynamicValue reference(const DynamicValue& referee);
  /// Creates a foreign pointer, stored as id * 2 + 1; null for 0.
  static DynamicValue foreign(const TypePtr& referenceType, std::uint64_t id);
  /// (embed) Creates a struct from the labels, types and values of the fields. Throws what
  /// Type::TStruct throws.
  static DynamicValue structure(const std::vector<Field>& fields);

  /// Reads a value and everything it refers to, and leaves the reader after its last byte. Calls
  /// the reader with an address and a number of bytes to fill. Defined in stream.hpp.
  template <typename Reader>
  static DynamicValue deserialize(Reader&& reader, StreamMap& map);

  // A listener belongs to the handle that it was set on: copies, moves and assignments do not carry
  // it.

  DynamicValue(const DynamicValue& other)
      : type_(other.type_), length_(other.length_), block_(other.block_) {}
  DynamicValue(DynamicValue&& other) noexcept
      : type_(std::move(other.type_)), length_(other.length_), block_(std::move(other.block_)) {}
  DynamicValue& operator=(const DynamicValue& other) {
    assign(other);
    return *this;
  }
  DynamicValue& operator=(DynamicValue&& other) noexcept {
    assign(std::move(other));
    return *this;
  }
  ~DynamicValue() = default;

  const InternedType& typeOf() const noexcept { return *type_; }
  const TypePtr& type() const noexcept { return type_; }
  /// Returns the extent of a one-dimensional array type, else 0.
  std::int32_t length() const noexcept { return length_; }
  vrntValue_t* block() const noexcept { return block_.get(); }
  const char* data() const noexcept { return blockData(block_.get()); }

  /// Returns a view of the whole value.
  ConstView view() const { return {type_.get(), 0, this}; }
  View view() { return {{type_.get(), 0, this}, this}; }

  /// (embed) Sets the number of used elements, from 0 to length(). Throws "Length was {}, expected
  /// number in range [0, {}).", whose upper end is deliberately imprecise.
  void setLength(int length);

  /// (embed) Exchanges the blocks. Throws "Incompatible type for value -> {}." unless each type is
  /// a subtype of the other.
  void swap(DynamicValue& other);

  /// Assigns type, length and block.
  void assign(const DynamicValue& other);
  void assign(DynamicValue&& other) noexcept;

  /// (embed) Shares the block of another value but keeps the type of this handle. Throws
  /// "Incompatible type for value -> {}." unless the value's type is a subtype of it.
  void assignChecked(const DynamicValue& other);
  void assignChecked(DynamicValue&& other);

  ChangeListener& changeListener() noexcept { return changeListener_; }

  /// Calls the listener, if there is one.
  void notify(const InternedType* type, std::uint64_t offset) const {
    if (changeListener_) changeListener_(type, offset);
  }

  /// Returns the block handle, for the write protocol, which may replace it by a copy.
  vrntValue_t*& blockHandle() noexcept { return block_.raw(); }

 private:
  DynamicValue(TypePtr type, BlockPtr block) noexcept;

  static DynamicValue base(Type::TBasetype kind, const void* lanes, std::size_t size);

  TypePtr type_;
  std::int32_t length_ = 0;
  BlockPtr block_;
  ChangeListener changeListener_;
};

/// A label and a value: one field of a struct value.
struct DynamicValue::Field {
  std::string label;
  DynamicValue value;
};

/// Returns a new block with a copy of the bytes, as many as the type has; each block word among
/// them gets a new reference. If `bytes` is null, the bytes are undefined, except for reference
/// words, which are null. Throws std::bad_alloc.
BlockPtr copyToBlock(const InternedType& type, const void* bytes);

/// Throws "Incompatible type for value -> {}." with the reason unless `given` is a subtype of
/// `required`.
void requireAssignable(const InternedType& given, const InternedType& required);

}  // namespace qex::vornath

#endif
