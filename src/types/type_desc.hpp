/// Descriptions of types: the nine alternatives of a TypeDesc.
#ifndef VORNATH_TYPES_TYPE_DESC_HPP
#define VORNATH_TYPES_TYPE_DESC_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "types/metadata.hpp"
#include "types/type_pointer.hpp"
#include "vornath_data/type_library.hpp"

namespace qex::vornath {

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

/// Scalars and short vectors. The order of types compares the codes.
enum class Type::TBasetype : std::int32_t {
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

/// A field of a struct. The constructor throws "Not a concrete type: {}." for a type without a
/// definite size.
struct Type::Field {
  Field(TypePtr fieldType, std::string fieldLabel);

  TypePtr type;
  std::string label;
};

/// Named fields in order. The constructor throws "Duplicate struct field: {}.".
struct Type::TStruct {
  TStruct() = default;
  explicit TStruct(std::vector<Field> structFields);

  /// (embed) Returns whether there is a field with this label.
  bool hasField(std::string_view label) const;
  /// (embed) Returns the index of a field. Throws "Field not found in struct: {}.".
  std::size_t fieldIndex(std::string_view label) const;

  std::vector<Field> fields;
  std::vector<std::uint64_t> offsets;  ///< bytes, one for each field
};

struct Type::Constructor {
  std::string name;
  Metadata metadata;
  TStruct payload;  ///< part of the type only: no value stores it
};

/// The constructors; a value stores the index of one as its code. The constructor of this struct
/// throws "Enum requires at least one constructor." and "Duplicate enum constructor: {}.".
struct Type::TEnum {
  explicit TEnum(std::vector<Constructor> enumConstructors);

  /// Returns the code of a constructor. Throws "Invalid enum constructor: {}".
  std::int32_t constructorIndex(std::string_view name) const;
  /// Returns the name of a constructor. Throws "Enum code out of range: {}".
  const std::string& constructorName(std::int32_t code) const;

  std::vector<Constructor> constructors;
};

/// An array of rank 1 to 4 (D is int, index2, index3 or index4). An unsized array has no shape. The
/// constructor throws "concrete type required" and "negative array length".
template <typename D>
struct Type::TArrayND {
  TArrayND(TypePtr elementType, std::optional<D> extents);

  static constexpr int kRank = sizeof(D) / 4;

  TypePtr element;
  std::optional<D> shape;
};

/// A reference. Without a target it is `void*`.
struct Type::TRef {
  TypePtr target;
};

struct Type::TFun {
  std::vector<TypePtr> domain;
  TypePtr codomain;
};

/// Types are ordered by the index of the alternative first.
using TypeDesc = std::variant<Type::TBasetype, Type::TEnum, Type::TStruct, Type::TArrayND<int>,
                              Type::TArrayND<index2>, Type::TArrayND<index3>,
                              Type::TArrayND<index4>, Type::TRef, Type::TFun>;

}  // namespace qex::vornath

#endif
