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

/// A handle on a block. A copy shares the block and costs two atomic increments; whoever writes to
/// a shared block moves to a copy of it first. One handle belongs to one thread at a time; the
/// block may be read from any number of them.
///
/// Members marked (embed) are defined in embed/: the shared library does not contain them.
///
/// A value's type never carries metadata: whatever type a value is made from, it keeps the stripped
/// form. Failures are vrnt::Exception with InvalidArguments unless told otherwise, and
/// std::bad_alloc; nothing half-made escapes.
class DynamicValue {
 public:
  struct Field;

  /// A reference word that holds its own reference on a block.
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

  /// Writes the bytes of a new value, of which it knows the type. The bytes are undefined before.
  using Filler = std::function<void(const InternedType&, char*)>;
  /// Receives the written type and offset; after setLength() null and 0.
  using ChangeListener = std::function<void(const InternedType*, std::uint64_t)>;
  /// The values that a stream has given so far, by the words under which the stream refers to them.
  using StreamMap = std::map<std::size_t, VRef>;

  // Plain values.

  /// All bytes zero.
  explicit DynamicValue(const TypePtr& type);
  /// A copy of as many bytes as the type has; each block word among them gets a new reference. With
  /// null the bytes stay undefined, reference words excepted, which are null.
  DynamicValue(const TypePtr& type, const void* bytes);
  /// (embed) Bytes that the filler writes; each block word that it leaves gets a new reference. An
  /// empty filler throws std::bad_function_call.
  static DynamicValue filled(const TypePtr& type, const Filler& filler);
  /// Shares the block.
  explicit DynamicValue(vrntValue_t* block);
  /// A copy of the bytes at the view.
  explicit DynamicValue(const ConstView& view);

  /// A scalar or short vector from its lanes: 32-bit words for bool (true is all ones), 32-bit
  /// integers, floats, bytes, or the bits of halfs. The bytes behind the last lane are zero.
  template <typename Lane>
  static DynamicValue base(Type::TBasetype kind, std::span<const Lane> lanes) {
    return base(kind, lanes.data(), lanes.size_bytes());
  }
  /// The same with one lane.
  template <typename Lane>
  static DynamicValue base(Type::TBasetype kind, const Lane& lane) {
    return base(kind, &lane, sizeof(lane));
  }

  // (embed) Arrays. The values are copied in order to the running index. Making the array type
  // comes first
  // ("concrete type required", "negative array length").

  /// An array of the element type. Fewer values than the extents hold leave zeros; more are refused
  /// with "Empty array without type is not allowed.". Each value must relate to the element type:
  /// "Incompatible type for value -> {}.".
  static DynamicValue array(const std::vector<DynamicValue>& values, const Extents& extents,
                            const TypePtr& element);
  /// The first value's type is the element type. Without values: "Empty array without type is not
  /// allowed."; in one dimension an extent other than the number of values is refused with the same
  /// words, as this form has none of its own.
  static DynamicValue array(const std::vector<DynamicValue>& values, const Extents& extents);

  // Other kinds. A type of another kind throws std::bad_variant_access.

  /// The code of a constructor. Throws "Invalid enum constructor: {}".
  static DynamicValue enumerator(const TypePtr& enumType, std::string_view constructor);
  /// (embed) Two foreign words, each stored as w * 2 + 1, or 0.
  static DynamicValue function(const TypePtr& functionType, std::uint64_t first,
                               std::uint64_t second);
  /// A reference to the referee's block. Without a target, the type takes any referee; otherwise
  /// the referee must relate to the target: "Incompatible type for value -> {}.".
  static DynamicValue reference(const DynamicValue& referee, const TypePtr& referenceType);
  /// A reference of the type `T*`, T being the referee's type.
  static DynamicValue reference(const DynamicValue& referee);
  /// A foreign pointer, stored as id * 2 + 1; null for 0.
  static DynamicValue foreign(const TypePtr& referenceType, std::uint64_t id);
  /// (embed) A struct with the labels and types of the fields. Throws what the struct type throws.
  static DynamicValue structure(const std::vector<Field>& fields);

  /// Reads a value and all that it refers to, leaving the reader behind its last byte. The reader
  /// is called with an address and a number of bytes, and fills them. Defined in stream.hpp.
  template <typename Reader>
  static DynamicValue deserialize(Reader&& reader, StreamMap& map);

  // A listener stays with the handle that it was set on: no copy, move or assignment carries it.

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
  /// The extent of a one-dimensional array type, else 0.
  std::int32_t length() const noexcept { return length_; }
  vrntValue_t* block() const noexcept { return block_.get(); }
  const char* data() const noexcept { return blockData(block_.get()); }

  /// The whole value.
  ConstView view() const { return {type_.get(), 0, this}; }
  View view() { return {{type_.get(), 0, this}, this}; }

  /// (embed) Sets the number of used elements, from 0 to length(). Throws "Length was {}, expected
  /// number in range [0, {}).", which is loose about the upper end on purpose.
  void setLength(int length);

  /// (embed) Exchanges the blocks. Both types must relate: "Incompatible type for value -> {}.".
  void swap(DynamicValue& other);

  /// Takes over type, length and block.
  void assign(const DynamicValue& other);
  void assign(DynamicValue&& other) noexcept;

  /// (embed) Shares the block of a value that relates to this handle's type, which stays:
  /// "Incompatible type for value -> {}.".
  void assignChecked(const DynamicValue& other);
  void assignChecked(DynamicValue&& other);

  ChangeListener& changeListener() noexcept { return changeListener_; }

  /// Calls the listener if there is one.
  void notify(const InternedType* type, std::uint64_t offset) const {
    if (changeListener_) changeListener_(type, offset);
  }

  /// The block handle: for the write protocol, which may move it to a copy.
  vrntValue_t*& blockHandle() noexcept { return block_.raw(); }

 private:
  DynamicValue(TypePtr type, BlockPtr block) noexcept;

  static DynamicValue base(Type::TBasetype kind, const void* lanes, std::size_t size);

  TypePtr type_;
  std::int32_t length_ = 0;
  BlockPtr block_;
  ChangeListener changeListener_;
};

/// A label and the value that a struct value takes under it.
struct DynamicValue::Field {
  std::string label;
  DynamicValue value;
};

/// Throws "Incompatible type for value -> {}." with the reason unless `given` may stand where
/// `required` is expected.
void requireFitting(const InternedType& given, const InternedType& required);

}  // namespace qex::vornath

#endif
