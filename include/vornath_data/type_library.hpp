/// The type library's own C++ names: the type model, its factory, and the bridges from a `Type` or
/// a `DynamicValue` to the flat handles. Hosts use the flat functions; this header is for code that
/// lives beside the library and holds a `Type` (a vrntType_t* is its address).
///
/// What carries VRNT_API can be called on the shared library, as can all inline reads of a `Type`.
/// The rest, counting through a TypePtr included, is for code that is linked with the library's
/// inside; on the shared library a handle is counted by vrntTypeCopy() and vrntTypeDestroy().
#ifndef VORNATH_DATA_TYPE_LIBRARY_HPP
#define VORNATH_DATA_TYPE_LIBRARY_HPP

#include <atomic>
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/thread/mutex.hpp>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace qex::vornath {

class Type;
class DynamicValue;

/// A counted pointer to an interned type.
using TypePtr = boost::intrusive_ptr<const Type>;

/// A box: owns one T on the heap; a copy of the box copies the T. It breaks the circle between
/// types, whose metadata hold values, and values, which have a type.
template <typename T>
class HeapValue {
 public:
  explicit HeapValue(const T& value);
  explicit HeapValue(T&& value);
  HeapValue(const HeapValue& other);
  HeapValue(HeapValue&& other) noexcept : value_(other.value_) { other.value_ = nullptr; }
  HeapValue& operator=(const HeapValue& other);
  HeapValue& operator=(HeapValue&& other) noexcept {
    std::swap(value_, other.value_);
    return *this;
  }
  ~HeapValue();

  const T& operator*() const { return *value_; }
  const T* get() const { return value_; }

 private:
  T* value_;
};

/// An annotation: a flag, a text, or a value. The index is the kind number of the flat interface.
using MetadataEntry = std::variant<std::monostate, std::string, HeapValue<DynamicValue>>;

/// The annotations of one type or constructor, in ascending byte order of their keys.
using Metadata = std::map<std::string, MetadataEntry, std::less<>>;

/// The length of a text and a digest of it, which for a text in parts follow from those of the
/// parts.
struct TextSum {
  void add(std::string_view words) noexcept;
  void add(const TextSum& text) noexcept;

  std::uint64_t length = 0;
  std::uint64_t digest = 0;
  std::uint64_t shift = 1;  ///< what a text's digest is multiplied with to put this one behind it
};

struct index2 {
  std::int32_t x, y;
  friend bool operator==(const index2& a, const index2& b) { return a.x == b.x && a.y == b.y; }
};
struct index3 {
  std::int32_t x, y, z;
  friend bool operator==(const index3& a, const index3& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z;
  }
};
struct index4 {
  std::int32_t x, y, z, w;
  friend bool operator==(const index4& a, const index4& b) {
    return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
  }
};

/// What a value's bytes mean: an immutable description with annotations, its size, its layout and
/// the places of its references.
///
/// Identity: made by the Factory only, one object for each description and metadata, so that equal
/// types have equal addresses. Values in metadata count by where they lie, so that each parse makes
/// a type with such of its own; the payloads of an enum's constructors don't count at all, so that
/// of two enums that differ in them alone the first made stands for both. Lifetime: until its
/// count falls to zero, or, if it is permanent, until vrntValuesShutdown(). Threads: everything but
/// the count and `permanent` is constant after construction and read without a lock.
///
/// A long text and a long list of references are put together when they are first asked for, since
/// each type of a deep nest has nearly the whole of them: so a nest costs what its text costs, not
/// the square of it.
class Type {
 public:
  class Factory;

  /// Scalars and short vectors. The numbers are part of the order of types.
  enum class TBasetype : std::int32_t {
    Bool,
    Bool2,
    Bool3,
    Bool4,
    Int,
    Int2,
    Int3,
    Int4,
    Float,
    Float2,
    Float3,
    Float4,
    Char,
    Char2,
    Char3,
    Char4,
    Half,
    Half2,
    Half3,
    Half4
  };

  /// A field of a struct. Throws "Not a concrete type: {}." for a type without a definite size.
  struct Field {
    Field(TypePtr fieldType, std::string fieldLabel);

    TypePtr type;
    std::string label;
  };

  /// Named fields in order. Throws "Duplicate struct field: {}.".
  struct TStruct {
    TStruct() = default;
    explicit TStruct(std::vector<Field> structFields);

    bool hasField(std::string_view label) const;
    /// Throws "Field not found in struct: {}.".
    std::size_t fieldIndex(std::string_view label) const;

    std::vector<Field> fields;
    std::vector<std::uint64_t> offsets;  ///< bytes, one for each field
  };

  struct Constructor {
    std::string name;
    Metadata metadata;
    TStruct payload;  ///< part of the type only: no value stores it
  };

  /// Constructors; the position of one is the code that a value stores. Throws "Enum requires at
  /// least one constructor." and "Duplicate enum constructor: {}.".
  struct TEnum {
    explicit TEnum(std::vector<Constructor> enumConstructors);

    /// Throws "Invalid enum constructor: {}".
    std::int32_t constructorIndex(std::string_view name) const;
    /// Throws "Enum code out of range: {}".
    const std::string& constructorName(std::int32_t code) const;

    std::vector<Constructor> constructors;
  };

  /// An array of rank 1 to 4 (D is int, index2, index3 or index4). No shape means unknown extents.
  /// Throws "concrete type required" and "negative array length".
  template <typename D>
  struct TArrayND {
    TArrayND(TypePtr elementType, std::optional<D> extents);

    static constexpr int kRank = sizeof(D) / 4;

    TypePtr element;
    std::optional<D> shape;
  };

  /// A reference; without a target it is `void*`.
  struct TRef {
    TypePtr target;
  };

  struct TFun {
    std::vector<TypePtr> domain;
    TypePtr codomain;
  };

  /// The order of the alternatives is the first criterion of the order of types.
  using TypeDesc = std::variant<TBasetype, TEnum, TStruct, TArrayND<int>, TArrayND<index2>,
                                TArrayND<index3>, TArrayND<index4>, TRef, TFun>;

  Type(const Type&) = delete;
  Type& operator=(const Type&) = delete;

  /// The one pointer to the process's factory. With `create` the factory is made if there is none;
  /// without, the pointer is empty until the first use of a type, and again once the library's
  /// static destructors have run. The reference stays valid until the library is unloaded, and sees
  /// a factory that is made later.
  /// Threads: any may call this. Reading the pointer beside the first use of a type is a race, as
  /// that use writes it: ask with `create` there.
  VRNT_API static const std::shared_ptr<Factory>& get_factory(bool create);

  /// The type of a text. Throws what the parse throws.
  static TypePtr parse(std::string_view text);

  const TypeDesc& desc() const noexcept { return desc_; }
  /// The alternative that the type is known to be.
  template <typename Alternative>
  const Alternative& get() const {
    return std::get<Alternative>(desc_);
  }
  template <typename Alternative>
  const Alternative* getIf() const noexcept {
    return std::get_if<Alternative>(&desc_);
  }
  const Metadata& metadata() const noexcept { return metadata_; }
  std::uint64_t alignment() const noexcept { return alignment_; }
  std::uint64_t size() const noexcept { return size_; }
  /// Whether the type has a definite size, so that a value of it can stand by itself.
  bool concrete() const noexcept { return concrete_; }
  /// concrete(), and every reference leads to a known type that is deepConcrete() too.
  bool deepConcrete() const noexcept { return deepConcrete_; }
  /// The canonical text; it lives as long as the type. Throws std::bad_alloc if there is no memory
  /// for a long text that nobody has asked for yet.
  const std::string& text() const {
    const std::string* const known = knownText();
    return known ? *known : made_->text(*this);
  }
  /// The canonical text, or null if it is a long one that nobody has asked for yet.
  const std::string* knownText() const noexcept { return text_.load(std::memory_order_acquire); }
  /// Whether the type started without its text: of a part with a long text, textSum() tells enough.
  bool hasLongText() const noexcept { return textSum_.length != 0; }
  /// The length and digest of a long text; zero for a short one.
  const TextSum& textSum() const noexcept { return textSum_; }
  /// The places of the references in a value, in 8-byte words from its start, ascending. Throws
  /// std::bad_alloc if there is no memory for a long list that nobody has asked for yet; after one
  /// call that returned, no other one throws.
  const std::vector<std::uint64_t>& refSlots() const {
    const auto* const known = knownRefSlots();
    return known ? *known : made_->refSlots(*this);
  }
  /// The same list, or null if it is a long one that nobody has asked for yet.
  const std::vector<std::uint64_t>* knownRefSlots() const noexcept {
    return refSlots_.load(std::memory_order_acquire);
  }
  /// The length of refSlots(), without making the list.
  std::uint64_t refSlotCount() const noexcept { return refSlotCount_; }
  /// How many references of a value can lead from one to the next as far as the type tells: 0
  /// without any, 1 for a `void*`, one more than the target's for any other reference.
  std::uint32_t referenceDepth() const noexcept { return referenceDepth_; }
  /// The type of which refSlots() are those of one value after the other: what a long array
  /// consists of, or this very type.
  const Type& slotPattern() const noexcept { return slotPattern_ ? *slotPattern_ : *this; }
  /// The same type without metadata at any depth; this very type if there is none to take off.
  const Type& stripped() const noexcept { return stripped_ ? *stripped_ : *this; }

  /// The default value that was worked out for this type, or null if none was kept yet. It lives as
  /// long as the type.
  const DynamicValue* keptDefault() const noexcept {
    const auto* kept = keptDefault_.load(std::memory_order_acquire);
    return kept ? kept->get() : nullptr;
  }
  /// Keeps a default value; the first one that is kept stays. Its type must not be this very type,
  /// which would then never end. Throws std::bad_alloc.
  const DynamicValue& keepDefault(DynamicValue&& value) const;

 private:
  friend class Factory;
  friend void intrusive_ptr_add_ref(const Type* type) noexcept;
  friend void intrusive_ptr_release(const Type* type) noexcept;

  Type(TypeDesc desc, const Metadata& metadata, TypePtr stripped, std::weak_ptr<Factory> factory);
  ~Type();

  // What makes a long text and list. A host reads types inline, and gets there through the type
  // itself: the library exports no function for it.
  struct Made {
    const std::string& (*text)(const Type& type);
    const std::vector<std::uint64_t>& (*refSlots)(const Type& type);
  };
  static const Made kMade;
  static const std::string& makeText(const Type& type);
  static const std::vector<std::uint64_t>& makeRefSlots(const Type& type);

  TypeDesc desc_;
  Metadata metadata_;
  std::uint64_t alignment_ = 0;
  std::uint64_t size_ = 0;
  bool concrete_ = false;
  bool deepConcrete_ = false;
  std::uint64_t refSlotCount_ = 0;
  std::uint32_t referenceDepth_ = 0;
  const Type* slotPattern_ = nullptr;  // of a long array: a type that desc_ keeps alive
  const Made* made_ = &kMade;
  TextSum textSum_;  // of a long text only
  std::string shortText_;
  std::vector<std::uint64_t> fewRefSlots_;
  // These lead to the members above or to objects on the heap that are the type's own.
  mutable std::atomic<const std::string*> text_{nullptr};
  mutable std::atomic<const std::vector<std::uint64_t>*> refSlots_{nullptr};
  mutable bool indexed_ = false;  // the factory's: whether a long text is in its table of samples
  mutable std::atomic<bool> permanent_{false};
  mutable std::atomic<std::uint32_t> references_{0};
  std::weak_ptr<Factory> factory_;
  TypePtr stripped_;
  mutable std::atomic<const HeapValue<DynamicValue>*> keptDefault_{nullptr};
  mutable const Type* nextEnded_ =
      nullptr;  // the factory's chain of types that are to be destroyed
};

using TypeDesc = Type::TypeDesc;

/// One atomic increment, no lock.
void intrusive_ptr_add_ref(const Type* type) noexcept;

/// One atomic decrement; the last one takes the factory's lock and ends the type.
void intrusive_ptr_release(const Type* type) noexcept;

/// A flat handle on the type: the type's address with a new reference.
VRNT_API vrntType_t* allocateType(const Type& type);

/// A flat handle on the value: the address of the value's block with a new reference.
VRNT_API vrntValue_t* allocateValue(const DynamicValue& value);

/// Held for the whole of each parse in the process; not recursive. Whoever holds the factory's lock
/// must not take it.
extern VRNT_API boost::mutex parser_mutex;

}  // namespace qex::vornath

#endif
