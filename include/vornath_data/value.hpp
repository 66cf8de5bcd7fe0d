/// Values for C++ hosts: counted handles and typed views. This header is a thin, header-only layer
/// over the flat functions.
#ifndef VORNATH_DATA_VALUE_HPP
#define VORNATH_DATA_VALUE_HPP

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "vornath_data/detail/fitting.hpp"
#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/errors.h"
#include "vornath_data/result.hpp"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrnt {

namespace detail {

/// Calls vrntValueEqual(). If it gives a reason, copies it to `*reason`.
inline bool equalAt(const vrntValue_t* a, const vrntValueView_t& viewA, const vrntValue_t* b,
                    const vrntValueView_t& viewB, float tolerance, std::string* reason) {
  char* text = nullptr;
  const bool equal =
      vrntValueEqual(a, &viewA, b, &viewB, tolerance, reason != nullptr ? &text : nullptr) != 0;
  const std::unique_ptr<char, StringDeleter> owned(text);
  if (text != nullptr) *reason = text;
  return equal;
}

}  // namespace detail

/// A counted handle on a type. Owns one reference, or is empty.
class TypeHandle {
 public:
  TypeHandle() noexcept = default;
  TypeHandle(const TypeHandle& other)
      : type_(other.type_ != nullptr ? vrntTypeCopy(other.type_) : nullptr) {}
  TypeHandle(TypeHandle&& other) noexcept : type_(std::exchange(other.type_, nullptr)) {}
  TypeHandle& operator=(TypeHandle other) noexcept {
    std::swap(type_, other.type_);
    return *this;
  }
  ~TypeHandle() {
    if (type_ != nullptr) vrntTypeDestroy(type_);
  }

  /// Takes over the caller's reference on `type`, which may be null.
  static TypeHandle adopt(vrntType_t* type) noexcept {
    TypeHandle handle;
    handle.type_ = type;
    return handle;
  }

  /// Parses the text of a type. Fails with ParseFailed and the message of vrntTypeParse(), with
  /// MemoryAllocationFailure and no message, or with InternalError.
  static Result<TypeHandle> parse(const char* text) {
    vrntValuesError_t* error = nullptr;
    vrntType_t* const type = vrntTypeParse(text, &error);
    if (type == nullptr) return detail::typeParseFailure(error);
    return adopt(type);
  }

  /// Returns the flat handle, or null if this is empty. This object keeps its reference.
  vrntType_t* get() const noexcept { return type_; }

  /// Gives the reference to the caller and leaves this empty.
  vrntType_t* release() noexcept { return std::exchange(type_, nullptr); }

  /// Returns true if this is not empty.
  explicit operator bool() const noexcept { return type_ != nullptr; }

 private:
  vrntType_t* type_ = nullptr;
};

/// A counted handle on a value. Owns one reference on the value's block, or is empty. A copy shares
/// the block. A write to a shared block first makes a copy of the block for this handle:
///
///     Value a = Value::parse("{ x = 1; }").value();
///     Value b = a;                                    // shares the block
///     View(&b).field("x").write(std::int32_t{2});     // b moves to a copy; a still holds 1
///
/// Threads: use one handle on one thread at a time. Handles on the same block may be used on
/// different threads.
class Value {
 public:
  Value() noexcept = default;
  Value(const Value& other)
      : value_(other.value_ != nullptr ? vrntValueCopy(other.value_) : nullptr) {}
  Value(Value&& other) noexcept : value_(std::exchange(other.value_, nullptr)) {}
  Value& operator=(Value other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~Value() {
    if (value_ != nullptr) vrntValueDestroy(value_);
  }

  /// Takes over the caller's reference on `value`, which may be null.
  static Value adopt(vrntValue_t* value) noexcept {
    Value handle;
    handle.value_ = value;
    return handle;
  }

  /// Adds a reference to `value`. The caller keeps its own reference.
  static Value share(const vrntValue_t* value) { return adopt(vrntValueCopy(value)); }

  /// Creates a value of the type: the default value if `withDefault`, else a value of zero bytes.
  /// Fails with MemoryAllocationFailure and no message, or with InternalError and the message of
  /// the flat function.
  static Result<Value> create(const vrntType_t* type, bool withDefault) {
    vrntValuesError_t* error = nullptr;
    vrntValue_t* const value =
        withDefault ? vrntValueCreateDefault(type, &error) : vrntValueCreate(type, &error);
    if (value == nullptr) return detail::creationFailure(error);
    return adopt(value);
  }

  /// Parses the text of a value, for example `{ a = 1; b = [ 1.0, 2.0 ]; }`. Fails as create(),
  /// with the message of vrntValueParse().
  static Result<Value> parse(const char* text) {
    // This text and its terminator equal the magic bytes of a block, so the parser would take the
    // text for a block.
    if (text != nullptr && std::strcmp(text, "vrntval") == 0) text = " vrntval";
    vrntValuesError_t* error = nullptr;
    vrntValue_t* const value = vrntValueParse(text, &error);
    if (value == nullptr) return detail::creationFailure(error);
    return adopt(value);
  }

  /// Coerces this value to another type, as vrntCoerce() does. This must not be empty, and does
  /// not change. Fails as create(), with the message of vrntCoerce().
  Result<Value> coerce(const vrntType_t* type) const {
    vrntValuesError_t* error = nullptr;
    vrntValue_t* const value = vrntCoerce(type, value_, &error);
    if (value == nullptr) return detail::creationFailure(error);
    return adopt(value);
  }

  /// Compares two values as vrntValueEqual() does. If they differ and the reason is known, stores
  /// it in `*reason`; `reason` may be null. An empty handle is equal only to another empty handle.
  /// Errors: throws what vrntValueEqual() throws.
  bool equal(const Value& other, float tolerance = 0.0F, std::string* reason = nullptr) const {
    if (value_ == nullptr || other.value_ == nullptr) return value_ == other.value_;
    return detail::equalAt(value_, {type(), 0}, other.value_, {other.type(), 0}, tolerance, reason);
  }

  /// Returns the flat handle, or null if this is empty. This object keeps its reference.
  vrntValue_t* get() const noexcept { return value_; }
  /// Returns true if this is not empty.
  explicit operator bool() const noexcept { return value_ != nullptr; }

  /// Gives the reference to the caller and leaves this empty.
  vrntValue_t* release() noexcept { return std::exchange(value_, nullptr); }

  /// Returns the address of the flat handle, for the flat functions that write. They may replace
  /// the handle.
  vrntValue_t** address() noexcept { return &value_; }

  /// Returns the type of the value, borrowed until the value is destroyed.
  vrntType_t* type() const { return vrntValueType(value_); }
  /// Returns the bytes of the value, borrowed until the next write to it, which may move them.
  const void* data() const { return vrntValueData(value_); }

 private:
  vrntValue_t* value_ = nullptr;
};

/// A read-only view of a place in a value: the whole value, a field of a struct, or an element of
/// an array. `Owner` is `Value*` or `const Value*`; use the names ConstView and View below. A view
/// holds no reference on the value. The Value must not be empty and must outlive the view. Field
/// indices, field labels and the types that are read and written are checked. The indices of
/// element() are not.
template <typename Owner>
class ConstBasicView {
  static_assert(std::is_same_v<Owner, Value*> || std::is_same_v<Owner, const Value*>,
                "a view's owner is a Value* or a const Value*");

 public:
  /// Makes a view of the whole value.
  explicit ConstBasicView(Owner owner) : ConstBasicView(owner, owner->type(), 0) {}

  /// Makes a view of the place of type `type`, `offset` bytes from the beginning of the value.
  /// Holds no reference on the type, which must outlive the view. A type that is part of the
  /// value's own type does.
  ConstBasicView(Owner owner, const vrntType_t* type, std::uint64_t offset)
      : ConstBasicView(owner, const_cast<vrntType_t*>(type), offset, wholePosition(type), false) {}

  /// As above, but this view and all views made from it hold references on their types.
  ConstBasicView(Owner owner, const TypeHandle& type, std::uint64_t offset)
      : ConstBasicView(owner, vrntTypeCopy(type.get()), offset, wholePosition(type.get()), true) {}

  ConstBasicView(const ConstBasicView& other)
      : type_(other.ownsType_ ? vrntTypeCopy(other.type_) : other.type_),
        ownsType_(other.ownsType_),
        owner_(other.owner_),
        offset_(other.offset_),
        position_(other.position_) {}

  /// Makes a read-only view of the place that a writable view refers to.
  template <typename Other, typename = std::enable_if_t<std::is_same_v<Owner, const Value*> &&
                                                        std::is_same_v<Other, Value*>>>
  ConstBasicView(const ConstBasicView<Other>& other)  // NOLINT(google-explicit-constructor)
      : type_(other.ownsType_ ? vrntTypeCopy(other.type_) : other.type_),
        ownsType_(other.ownsType_),
        owner_(other.owner_),
        offset_(other.offset_),
        position_(other.position_) {}

  ConstBasicView& operator=(const ConstBasicView& other) {
    ConstBasicView copy(other);
    std::swap(type_, copy.type_);
    std::swap(ownsType_, copy.ownsType_);
    owner_ = copy.owner_;
    offset_ = copy.offset_;
    position_ = copy.position_;
    return *this;
  }
  virtual ~ConstBasicView() {
    if (ownsType_) vrntTypeDestroy(type_);
  }

  Owner owner() const noexcept { return owner_; }

  /// Returns the place for the flat functions: its type, borrowed, and its offset in the value.
  vrntValueView_t place() const {
    if (!standsOnField()) return {type_, offset_};
    vrntValueView_t place{};
    vrntValueStructField(&place, type_, position_);
    place.offset += offset_;
    return place;
  }

  /// Returns the type of the place, borrowed.
  const vrntType_t* type() const { return place().type; }

  /// Returns the number of fields of a struct.
  std::uint32_t fieldCount() const { return vrntTypeFieldCount(type()); }

  /// Returns a view of a field of a struct. Throws Exception "Struct field index {} out of range.",
  /// and VornathValuesAssertionFailure if the place is not a struct.
  ConstBasicView field(std::uint32_t index) const {
    return ConstBasicView(*this, FieldIndex{index});
  }
  /// As above, by label. Also throws Exception "Field not found in struct: {}.".
  ConstBasicView field(std::string_view label) const { return field(fieldIndex(label)); }

  /// Returns a view of an element of an array. Takes one index for each dimension of the array; the
  /// first index varies fastest in memory. Does not check the indices against the extents. Throws
  /// Exception "Array of rank {} takes {} indices, not {}." for a wrong number of indices, and
  /// VornathValuesAssertionFailure if the place is not an array.
  template <typename... Index>
  ConstBasicView element(Index... index) const {
    return ConstBasicView(*this, elementPlace("element", false, index...));
  }
  /// As element(), but checks the indices. Also throws Exception "Array index {} out of range
  /// [0, {}).". An unsized array has no elements.
  template <typename... Index>
  ConstBasicView at(Index... index) const {
    return ConstBasicView(*this, elementPlace("at", true, index...));
  }

  /// Returns the bytes of the place, borrowed.
  const void* data() const { return static_cast<const char*>(owner_->data()) + place().offset; }

  /// Reads a T. T must fit the type of the place:
  ///
  /// | T | Fits |
  /// |---|---|
  /// | float | `float` |
  /// | bool | `bool`: any word except 0 is true |
  /// | std::int32_t, std::uint32_t, an enum of that size | `int`, an enum's code |
  /// | char, signed or unsigned, or an enum of that size | `char` |
  /// | std::uint16_t | `half`, as its bits |
  /// | std::array<T, N> | N lanes or N elements of a type that T fits |
  /// | a trivially copyable struct or union | its size; for three lanes, the size of 3 or of 4 |
  ///
  /// Throws Exception "Incompatible type for accessor -> {}." if T does not fit the type of the
  /// place. A T that fits no type, for example double or a pointer, does not compile.
  template <typename T>
  T read() const {
    requireFitting<T>();
    const vrntValueView_t at = place();
    if (!detail::fits<T>(at.type)) raiseUnfit<T>(at.type);
    T value;
    detail::load(value, static_cast<const char*>(owner_->data()) + at.offset);
    return value;
  }

  /// Returns the value that a reference refers to, or an empty Value for a null reference. See
  /// vrntValueDereference(). Throws VornathValuesAssertionFailure if the place is not a reference.
  Value dereference() const {
    const vrntValueView_t at = place();
    requireReference("ConstBasicView::dereference", at.type);
    return Value::adopt(vrntValueDereference(owner_->get(), &at));
  }

  /// Compares the contents of two places, as Value::equal() does.
  template <typename Other>
  bool equal(const ConstBasicView<Other>& other, float tolerance = 0.0F,
             std::string* reason = nullptr) const {
    return detail::equalAt(owner_->get(), place(), other.owner()->get(), other.place(), tolerance,
                           reason);
  }

  /// Returns the text of the place. `flags` is as for vrntValueString(). Throws std::bad_alloc, and
  /// an Exception of code UnknownError with the message of the flat function.
  std::string text(std::uint32_t flags = 0) const {
    const vrntValueView_t at = place();
    vrntValuesError_t* error = nullptr;
    const std::unique_ptr<char, detail::StringDeleter> text(
        vrntValueString(owner_->get(), &at, flags, &error));
    if (!text) detail::raiseError(error);
    return text.get();
  }

 protected:
  struct FieldIndex {
    std::uint32_t value;
  };

  ConstBasicView(const ConstBasicView& parent, FieldIndex index)
      : ConstBasicView(parent, requireField(parent.place(), index.value), index.value) {}

  // Makes a view of a place within the parent's.
  ConstBasicView(const ConstBasicView& parent, const vrntValueView_t& place)
      : ConstBasicView(parent, place, wholePosition(place.type)) {}

  std::uint32_t fieldIndex(std::string_view label) const {
    const vrntType_t* const structType = type();
    requireStruct(structType);
    const std::uint32_t count = vrntTypeFieldCount(structType);
    for (std::uint32_t i = 0; i < count; ++i) {
      if (label == vrntTypeFieldLabel(structType, i)) return i;
    }
    throw Exception(ErrorCode::InvalidArguments, "Field not found in struct: {}.", label);
  }

  template <typename... Index>
  vrntValueView_t elementPlace(const char* function, bool checked, Index... index) const {
    static_assert(sizeof...(Index) >= 1 && sizeof...(Index) <= 4,
                  "an array has one to four dimensions");
    static_assert((detail::kIsIndex<Index> && ...), "an index is an integer");
    const vrntValueView_t array = place();
    requireRank(function, array.type, sizeof...(Index));
    if (checked) {
      std::int32_t extents[4] = {};
      vrntTypeArrayShape(array.type, extents);
      const std::int32_t* extent = extents;
      (requireIndex(index, *extent++), ...);
    }
    const std::int32_t numbers[] = {static_cast<std::int32_t>(index)...};
    vrntValueView_t place{};
    vrntValueArrayElement(&place, array.type, numbers);
    place.offset += array.offset;
    return place;
  }

  template <typename T>
  static constexpr void requireFitting() {
    static_assert(detail::kCanFit<T>,
                  "a view takes float, bool, 32-bit integers and characters, std::uint16_t for the "
                  "bits of a half, enums of 32 or 8 bits, std::array of these, and trivially "
                  "copyable structs: for a double take a float, for a pointer a reference");
  }

  static void requireReference(const char* function, const vrntType_t* type) {
    if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_REFERENCE) {
      detail::raiseWrongKind(function, "a reference", type);
    }
  }

  template <typename T>
  [[noreturn]] void raiseUnfit(const vrntType_t* type) const {
    detail::raiseUnfit(type, fieldLabel(), "type " + detail::fittingText<T>());
  }
  [[noreturn]] void raiseUnfitSize(const vrntType_t* type, std::size_t size) const {
    detail::raiseUnfit(type, fieldLabel(), std::to_string(size) + " bytes");
  }

 private:
  template <typename Other>
  friend class ConstBasicView;

  ConstBasicView(Owner owner, vrntType_t* type, std::uint64_t offset, std::uint32_t position,
                 bool ownsType)
      : type_(type), ownsType_(ownsType), owner_(owner), offset_(offset), position_(position) {}

  ConstBasicView(const ConstBasicView& parent, const vrntValueView_t& place, std::uint32_t position)
      : ConstBasicView(parent.owner_, parent.ownsType_ ? vrntTypeCopy(place.type) : place.type,
                       place.offset, position, parent.ownsType_) {}

  static void requireStruct(const vrntType_t* type) {
    if (!detail::isStruct(type)) detail::raiseWrongKind("ConstBasicView::field", "a struct", type);
  }

  static const vrntValueView_t& requireField(const vrntValueView_t& place, std::uint32_t index) {
    requireStruct(place.type);
    if (index >= vrntTypeFieldCount(place.type)) {
      throw Exception(ErrorCode::InvalidArguments, "Struct field index {} out of range.", index);
    }
    return place;
  }

  static void requireRank(const char* function, const vrntType_t* type, std::size_t count) {
    if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY) {
      detail::raiseWrongKind((std::string("ConstBasicView::") + function).c_str(), "an array",
                             type);
    }
    const std::uint32_t rank = vrntTypeArrayDimension(type);
    if (rank != count) {
      throw Exception(ErrorCode::InvalidArguments, "Array of rank {} takes {} indices, not {}.",
                      rank, rank, count);
    }
  }

  template <typename Index>
  static void requireIndex(Index index, std::int32_t extent) {
    if constexpr (std::is_signed_v<Index>) {
      if (index < 0) raiseIndex(index, extent);
    }
    if (extent < 0 || static_cast<std::uint64_t>(index) >= static_cast<std::uint64_t>(extent)) {
      raiseIndex(index, extent);
    }
  }
  template <typename Index>
  [[noreturn]] static void raiseIndex(Index index, std::int32_t extent) {
    throw Exception(ErrorCode::InvalidArguments, "Array index {} out of range [0, {}).", +index,
                    extent < 0 ? 0 : extent);
  }

  static std::uint32_t wholePosition(const vrntType_t* type) {
    return detail::isStruct(type) ? vrntTypeFieldCount(type) : 0;
  }

  // In a view of a whole struct, position_ is the field count. For other types it is 0.
  bool standsOnField() const {
    return (position_ != 0 || detail::isStruct(type_)) && position_ < vrntTypeFieldCount(type_);
  }

  std::string_view fieldLabel() const {
    return standsOnField() ? vrntTypeFieldLabel(type_, position_) : "";
  }

  vrntType_t* type_;
  bool ownsType_;
  Owner owner_;
  std::uint64_t offset_;
  std::uint32_t position_;
};

template <typename Owner>
class BasicView;

/// A writable view of a place in a value. If others share the value's block, a write first moves
/// the Value to a copy of it. An error of the flat functions is thrown as std::bad_alloc or as an
/// Exception of code UnknownError; nothing is written then.
template <>
class BasicView<Value*> : public ConstBasicView<Value*> {
 public:
  using ConstBasicView<Value*>::ConstBasicView;

  BasicView field(std::uint32_t index) const { return BasicView(*this, FieldIndex{index}); }
  BasicView field(std::string_view label) const { return field(fieldIndex(label)); }

  template <typename... Index>
  BasicView element(Index... index) const {
    return BasicView(*this, elementPlace("element", false, index...));
  }
  template <typename... Index>
  BasicView at(Index... index) const {
    return BasicView(*this, elementPlace("at", true, index...));
  }

  /// Copies `size` bytes to the place. `size` must be the size of its type; for a vector of three
  /// lanes it may be the size of four lanes or of three. If the type holds references, each
  /// reference word must be null, or the address of a value's bytes, or a foreign pointer, which is
  /// encoded as the pointer times two plus one. The two words of a function are always foreign
  /// pointers. Throws Exception "Incompatible type for accessor -> {}." for another size.
  void write(const void* source, std::size_t size) const {
    const vrntValueView_t at = place();
    if (!detail::fitsSize(at.type, size)) raiseUnfitSize(at.type, size);
    writeAt(at, [source, size](void* bytes) {
      if (size != 0) std::memmove(bytes, source, size);
    });
  }

  /// Writes a T. T must fit the type of the place as for read(). Writes a true bool as all ones.
  /// Does not check the code of an enum. Throws as read().
  template <typename T>
  void write(const T& value) const {
    requireFitting<T>();
    const vrntValueView_t at = place();
    if (!detail::fits<T>(at.type)) raiseUnfit<T>(at.type);
    writeAt(at, [&value](void* bytes) { detail::store(bytes, value); });
  }

  /// Makes a reference refer to `target`, or to nothing if `target` is empty. Does not check the
  /// type of `target`. Throws VornathValuesAssertionFailure if the place is not a reference.
  void setReference(const Value& target) const {
    const vrntValueView_t at = place();
    requireReference("BasicView::setReference", at.type);
    vrntValuesError_t* error = nullptr;
    vrntValueSetReference(owner()->address(), &at, target.get(), &error);
    if (error != nullptr) detail::raiseError(error);
  }

 private:
  template <typename Fill>
  void writeAt(const vrntValueView_t& at, Fill fill) const {
    vrntValuesError_t* error = nullptr;
    void* const bytes = vrntValueMap(owner()->address(), &at, &error);
    if (bytes == nullptr) detail::raiseError(error);
    fill(bytes);
    vrntValueUnmap(owner()->get(), &at);
  }
};

ConstBasicView(Value*)->ConstBasicView<Value*>;
ConstBasicView(const Value*)->ConstBasicView<const Value*>;
ConstBasicView(const BasicView<Value*>&)->ConstBasicView<Value*>;
BasicView(Value*)->BasicView<Value*>;
BasicView(Value*, const vrntType_t*, std::uint64_t)->BasicView<Value*>;
BasicView(Value*, const TypeHandle&, std::uint64_t)->BasicView<Value*>;

/// A writable view of a place in a value.
using View = BasicView<Value*>;

/// A read-only view of a place in a value. A View converts to it.
using ConstView = ConstBasicView<const Value*>;

}  // namespace vrnt

#endif
