/// Values for C++ hosts: counted handles and typed places, thin and header-only over the flat
/// functions.
#ifndef VORNATH_DATA_VALUE_HPP
#define VORNATH_DATA_VALUE_HPP

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/errors.h"
#include "vornath_data/result.hpp"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrnt {

/// Owns one reference on a type; an empty one owns nothing.
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

  /// Takes over a reference of the caller's.
  static TypeHandle adopt(vrntType_t* type) noexcept {
    TypeHandle handle;
    handle.type_ = type;
    return handle;
  }

  /// Parses a type's text. Fails with ParseFailed and the words of vrntTypeParse(), with
  /// MemoryAllocationFailure without words, or with InternalError.
  static Result<TypeHandle> parse(const char* text) {
    vrntValuesError_t* error = nullptr;
    vrntType_t* const type = vrntTypeParse(text, &error);
    if (type == nullptr) return detail::typeParseFailure(error);
    return adopt(type);
  }

  /// The handle, which stays this object's; null if it is empty.
  vrntType_t* get() const noexcept { return type_; }

  /// Gives the reference to the caller; the handle is empty then.
  vrntType_t* release() noexcept { return std::exchange(type_, nullptr); }

  /// Whether there is a handle.
  explicit operator bool() const noexcept { return type_ != nullptr; }

 private:
  vrntType_t* type_ = nullptr;
};

/// Owns one reference on a value's block; an empty one owns nothing. A copy shares the block; a
/// write to a shared block moves the handle to a copy of it. One handle belongs to one thread at a
/// time.
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

  /// Takes over a reference of the caller's.
  static Value adopt(vrntValue_t* value) noexcept {
    Value handle;
    handle.value_ = value;
    return handle;
  }

  /// Shares a block whose handle stays the caller's.
  static Value share(const vrntValue_t* value) { return adopt(vrntValueCopy(value)); }

  /// A value of the type: its default one if `withDefault`, else all bytes zero. Fails with
  /// MemoryAllocationFailure without words, or with InternalError and the words of the flat error.
  static Result<Value> create(const vrntType_t* type, bool withDefault) {
    vrntValuesError_t* error = nullptr;
    vrntValue_t* const value =
        withDefault ? vrntValueCreateDefault(type, &error) : vrntValueCreate(type, &error);
    if (value == nullptr) return detail::creationFailure(error);
    return adopt(value);
  }

  /// The handle, which stays this object's; null if it is empty.
  vrntValue_t* get() const noexcept { return value_; }
  /// Whether there is a handle.
  explicit operator bool() const noexcept { return value_ != nullptr; }

  /// Gives the reference to the caller; the handle is empty then.
  vrntValue_t* release() noexcept { return std::exchange(value_, nullptr); }

  /// The handle for the flat writing functions, which may replace it.
  vrntValue_t** address() noexcept { return &value_; }

  /// Borrowed: lives as long as the value.
  vrntType_t* type() const { return vrntValueType(value_); }
  /// The value's bytes, borrowed: they move when the value is written to.
  const void* data() const { return vrntValueData(value_); }

 private:
  vrntValue_t* value_ = nullptr;
};

/// A place in a value, for reading: the whole of it, a field of a struct, or an element of an
/// array. `Owner` is `Value*` or `const Value*`. A view holds no reference on the value, and lives
/// no longer than the Value that it names. Field indices and labels are checked, array indices are
/// not.
template <typename Owner>
class ConstBasicView {
  static_assert(std::is_same_v<Owner, Value*> || std::is_same_v<Owner, const Value*>,
                "a view's owner is a Value* or a const Value*");

 public:
  /// The whole value.
  explicit ConstBasicView(Owner owner) : ConstBasicView(owner, owner->type(), 0) {}

  /// The place of `type` at `offset`. The type isn't counted: it must outlive the view, as the
  /// types within the value's own type do.
  ConstBasicView(Owner owner, const vrntType_t* type, std::uint64_t offset)
      : ConstBasicView(owner, const_cast<vrntType_t*>(type), offset, wholePosition(type), false) {}

  /// The same, and the view and those made from it hold references on their types.
  ConstBasicView(Owner owner, const TypeHandle& type, std::uint64_t offset)
      : ConstBasicView(owner, vrntTypeCopy(type.get()), offset, wholePosition(type.get()), true) {}

  ConstBasicView(const ConstBasicView& other)
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

  /// The place in flat form: its own type, borrowed, and its offset in the value.
  vrntValueView_t place() const {
    if (!standsOnField()) return {type_, offset_};
    vrntValueView_t place{};
    vrntValueStructField(&place, type_, position_);
    place.offset += offset_;
    return place;
  }

  /// The type at the place, borrowed.
  const vrntType_t* type() const { return place().type; }

  /// The number of fields of a struct.
  std::uint32_t fieldCount() const { return vrntTypeFieldCount(type()); }

  /// Throws Exception "Struct field index {} out of range.", and VornathValuesAssertionFailure for
  /// a place that isn't a struct.
  ConstBasicView field(std::uint32_t index) const {
    return ConstBasicView(*this, FieldIndex{index});
  }
  /// Throws Exception "Field not found in struct: {}." as well.
  ConstBasicView field(std::string_view label) const { return field(fieldIndex(label)); }

  /// The index has as many numbers as the array has dimensions, the fastest running one first.
  /// Throws VornathValuesAssertionFailure for a place that isn't an array.
  template <typename... Index>
  ConstBasicView element(Index... index) const {
    return ConstBasicView(*this, elementPlace({static_cast<std::int32_t>(index)...}));
  }

  /// The bytes at the place, borrowed.
  const void* data() const { return static_cast<const char*>(owner_->data()) + place().offset; }

  /// The bytes at the place as a T, whose form the caller knows.
  template <typename T>
  T read() const {
    static_assert(std::is_trivially_copyable_v<T>, "a T is read as bytes");
    T value;
    std::memcpy(static_cast<void*>(&value), data(), sizeof(value));
    return value;
  }

  /// What a reference leads to; empty for a null one. See vrntValueDereference().
  Value dereference() const {
    const vrntValueView_t at = place();
    return Value::adopt(vrntValueDereference(owner_->get(), &at));
  }

  /// The value's text; `flags` as for vrntValueString(). Throws std::bad_alloc, and an Exception of
  /// code UnknownError with the flat error's words.
  std::string text(std::uint32_t flags = 0) const {
    struct Free {
      void operator()(char* words) const noexcept { vrntDestroyString(words); }
    };
    const vrntValueView_t at = place();
    vrntValuesError_t* error = nullptr;
    const std::unique_ptr<char, Free> words(vrntValueString(owner_->get(), &at, flags, &error));
    if (!words) detail::raiseError(error);
    return words.get();
  }

 protected:
  struct FieldIndex {
    std::uint32_t value;
  };

  ConstBasicView(const ConstBasicView& parent, FieldIndex index)
      : ConstBasicView(parent, parent.place()) {
    if (!isStruct(type_)) throw VornathValuesAssertionFailure();
    if (index.value >= vrntTypeFieldCount(type_)) {
      throw Exception(ErrorCode::InvalidArguments, "Struct field index {} out of range.",
                      index.value);
    }
    position_ = index.value;
  }

  // A place within the parent's.
  ConstBasicView(const ConstBasicView& parent, const vrntValueView_t& place)
      : ConstBasicView(parent.owner_, parent.ownsType_ ? vrntTypeCopy(place.type) : place.type,
                       place.offset, wholePosition(place.type), parent.ownsType_) {}

  std::uint32_t fieldIndex(std::string_view label) const {
    const vrntType_t* const structType = type();
    if (!isStruct(structType)) throw VornathValuesAssertionFailure();
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(structType); ++i) {
      if (label == vrntTypeFieldLabel(structType, i)) return i;
    }
    throw Exception(ErrorCode::InvalidArguments, "Field not found in struct: {}.", label);
  }

  template <std::size_t Rank>
  vrntValueView_t elementPlace(const std::int32_t (&index)[Rank]) const {
    static_assert(Rank <= 4, "an array has one to four dimensions");
    const vrntValueView_t array = place();
    vrntValueView_t place{};
    vrntValueArrayElement(&place, array.type, index);
    place.offset += array.offset;
    return place;
  }

 private:
  ConstBasicView(Owner owner, vrntType_t* type, std::uint64_t offset, std::uint32_t position,
                 bool ownsType)
      : type_(type), ownsType_(ownsType), owner_(owner), offset_(offset), position_(position) {}

  // The spectrum struct has the descriptor of a base type.
  static bool isStruct(const vrntType_t* type) {
    const std::uint32_t descriptor = vrntTypeDescriptor(type);
    return descriptor == VRNT_DESCRIPTOR_STRUCT ||
           (descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
  }

  static std::uint32_t wholePosition(const vrntType_t* type) {
    return isStruct(type) ? vrntTypeFieldCount(type) : 0;
  }

  // A view of a whole struct stands behind the last field.
  bool standsOnField() const { return isStruct(type_) && position_ < vrntTypeFieldCount(type_); }

  vrntType_t* type_;
  bool ownsType_;
  Owner owner_;
  std::uint64_t offset_;
  std::uint32_t position_;
};

template <typename Owner>
class BasicView;

/// A place in a value, for reading and writing. A write moves the Value to a copy if others share
/// its block. What the flat functions report comes as std::bad_alloc or as an Exception of code
/// UnknownError; nothing is written then.
template <>
class BasicView<Value*> : public ConstBasicView<Value*> {
 public:
  using ConstBasicView<Value*>::ConstBasicView;

  BasicView field(std::uint32_t index) const { return BasicView(*this, FieldIndex{index}); }
  BasicView field(std::string_view label) const { return field(fieldIndex(label)); }

  template <typename... Index>
  BasicView element(Index... index) const {
    return BasicView(*this, elementPlace({static_cast<std::int32_t>(index)...}));
  }

  /// Copies `size` bytes to the place. Reference words among them then hold references.
  void write(const void* source, std::size_t size) const {
    const vrntValueView_t at = place();
    vrntValuesError_t* error = nullptr;
    void* const bytes = vrntValueMap(owner()->address(), &at, &error);
    if (bytes == nullptr) detail::raiseError(error);
    if (size != 0) std::memcpy(bytes, source, size);
    vrntValueUnmap(owner()->get(), &at);
  }

  /// Writes a T, whose form the caller knows.
  template <typename T>
  void write(const T& value) const {
    static_assert(std::is_trivially_copyable_v<T>, "a T is written as bytes");
    write(&value, sizeof(value));
  }

  /// Makes a reference lead to `target`, whose type isn't checked, or nowhere if that is empty.
  void setReference(const Value& target) const {
    const vrntValueView_t at = place();
    vrntValuesError_t* error = nullptr;
    vrntValueSetReference(owner()->address(), &at, target.get(), &error);
    if (error != nullptr) detail::raiseError(error);
  }
};

}  // namespace vrnt

#endif
