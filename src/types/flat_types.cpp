#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

#include "foundation/boundary.hpp"
#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/fixed_struct_types.hpp"
#include "types/relations.hpp"
#include "types/type_factory.hpp"
#include "types/type_handle.hpp"
#include "types/wrong_kind.hpp"
#include "vornath_data/types.h"

using qex::vornath::InternedType;
using qex::vornath::raiseWrongKind;
using qex::vornath::Type;
using qex::vornath::typeHandle;
using qex::vornath::typeOf;
using qex::vornath::TypePtr;

namespace {

// The handle takes over the pointer's reference.
vrntType_t* release(TypePtr type) { return typeHandle(*type.detach()); }

vrntType_t* newReference(const TypePtr& type) { return release(type); }

template <typename... Functions>
struct Overloaded : Functions... {
  using Functions::operator()...;
};
template <typename... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

template <typename... Functions>
auto visitType(const vrntType_t* type, Functions... functions) {
  return std::visit(Overloaded<Functions...>{std::move(functions)...}, typeOf(type).desc());
}

// Each of these stands behind more than one name, and tells that of the function that was called.

const TypePtr& elementOrTarget(const char* function, const vrntType_t* type) {
  const TypePtr* found = visitType(
      type, []<typename D>(const Type::TArrayND<D>& array) { return &array.element; },
      [](const Type::TRef& reference) { return &reference.target; },
      [&](const auto&) -> const TypePtr* {
        raiseWrongKind(function, "an array or a reference", typeOf(type));
      });
  return *found;
}

std::uint32_t partCount(const char* function, const vrntType_t* type) {
  return visitType(
      type, [](const Type::TEnum& e) { return static_cast<std::uint32_t>(e.constructors.size()); },
      [](const Type::TStruct& s) { return static_cast<std::uint32_t>(s.fields.size()); },
      [](const Type::TFun& f) { return static_cast<std::uint32_t>(f.domain.size()); },
      [&](const auto&) -> std::uint32_t {
        raiseWrongKind(function, "an enum, a struct or a function", typeOf(type));
      });
}

const char* partName(const char* function, const vrntType_t* type, std::uint32_t index) {
  return visitType(
      type,
      [index](const Type::TEnum& e) -> const char* { return e.constructors[index].name.c_str(); },
      [index](const Type::TStruct& s) -> const char* { return s.fields[index].label.c_str(); },
      [&](const auto&) -> const char* {
        raiseWrongKind(function, "an enum or a struct", typeOf(type));
      });
}

}  // namespace

vrntType_t* vrntTypeParse(const char* text, vrntValuesError_t** error) {
  return qex::vornath::reportLibraryErrorsOrUnknown(error, nullptr, [text]() -> vrntType_t* {
    if (text == nullptr) throw std::invalid_argument("No text.");
    return release(InternedType::parse(text));
  });
}

vrntType_t* vrntTypeCopy(const vrntType_t* type) {
  intrusive_ptr_add_ref(&typeOf(type));
  return typeHandle(typeOf(type));
}

void vrntTypeDestroy(const vrntType_t* type) { intrusive_ptr_release(&typeOf(type)); }

uint64_t vrntTypeSize(const vrntType_t* type) { return typeOf(type).size(); }

uint64_t vrntTypeAlignment(const vrntType_t* type) { return typeOf(type).alignment(); }

const char* vrntTypeString(const vrntType_t* type) {
  return qex::vornath::reportFailureAs(
      nullptr, [type]() -> const char* { return typeOf(type).text().c_str(); });
}

vrntType_t* vrntTypeStripMetadata(const vrntType_t* type) {
  return newReference(TypePtr(&typeOf(type).stripped()));
}

vrntType_t* vrtnTypeFloatArray(uint64_t count) {
  return release(qex::vornath::floatArrayType(static_cast<std::int32_t>(count)));
}

uint32_t vrntTypeBasetype(const vrntType_t* type) {
  return visitType(
      type,
      [](Type::TBasetype base) {
        return static_cast<std::uint32_t>(qex::vornath::baseTypeInfo(base).family);
      },
      [](const Type::TStruct&) -> std::uint32_t { return VRNT_BASETYPE_STRUCT; },
      [type](const auto&) -> std::uint32_t {
        raiseWrongKind("vrntTypeBasetype", "a base type or a struct", typeOf(type));
      });
}

uint32_t vrntTypeDescriptor(const vrntType_t* type) {
  return visitType(
      type, [](Type::TBasetype) -> std::uint32_t { return VRNT_DESCRIPTOR_BASE; },
      // A spectrum is a leaf to hosts, as a number is.
      [type](const Type::TStruct&) -> std::uint32_t {
        return isSubType(typeOf(type), qex::vornath::spectrumType()) ? VRNT_DESCRIPTOR_BASE
                                                                     : VRNT_DESCRIPTOR_STRUCT;
      },
      []<typename D>(const Type::TArrayND<D>&) -> std::uint32_t { return VRNT_DESCRIPTOR_ARRAY; },
      [](const Type::TRef&) -> std::uint32_t { return VRNT_DESCRIPTOR_REFERENCE; },
      [](const Type::TEnum&) -> std::uint32_t { return VRNT_DESCRIPTOR_ENUM; },
      [](const Type::TFun&) -> std::uint32_t { return VRNT_DESCRIPTOR_FUNCTION; });
}

uint32_t vrntTypeVectorDimension(const vrntType_t* type) {
  return visitType(
      type, [](Type::TBasetype base) { return qex::vornath::baseTypeInfo(base).lanes; },
      [](const auto&) -> std::uint32_t { return 1; });
}

uint32_t vrntTypeArrayDimension(const vrntType_t* type) {
  return visitType(
      type,
      []<typename D>(const Type::TArrayND<D>&) -> std::uint32_t {
        return Type::TArrayND<D>::kRank;
      },
      [type](const auto&) -> std::uint32_t {
        raiseWrongKind("vrntTypeArrayDimension", "an array", typeOf(type));
      });
}

void vrntTypeArrayShape(const vrntType_t* type, int32_t* shape) {
  visitType(
      type,
      [shape]<typename D>(const Type::TArrayND<D>& array) {
        qex::vornath::storeExtents(array, shape);
      },
      [type](const auto&) { raiseWrongKind("vrntTypeArrayShape", "an array", typeOf(type)); });
}

vrntType_t* vrntTypeElementType(const vrntType_t* type) {
  return newReference(elementOrTarget("vrntTypeElementType", type));
}

vrntType_t* vrntTypeReferencedType(const vrntType_t* type) {
  const TypePtr& target = elementOrTarget("vrntTypeReferencedType", type);
  return target ? newReference(target) : nullptr;
}

uint32_t vrntTypeFieldCount(const vrntType_t* type) {
  return partCount("vrntTypeFieldCount", type);
}

uint32_t vrntTypeConstructorCount(const vrntType_t* type) {
  return partCount("vrntTypeConstructorCount", type);
}

const char* vrntTypeFieldLabel(const vrntType_t* type, uint32_t index) {
  return partName("vrntTypeFieldLabel", type, index);
}

const char* vrntTypeConstructorName(const vrntType_t* type, uint32_t index) {
  return partName("vrntTypeConstructorName", type, index);
}

vrntType_t* vrntTypeFieldType(const vrntType_t* type, uint32_t index) {
  return visitType(
      type, [index](const Type::TStruct& s) { return newReference(s.fields[index].type); },
      [index](const Type::TFun& f) { return newReference(f.domain[index]); },
      [type](const auto&) -> vrntType_t* {
        raiseWrongKind("vrntTypeFieldType", "a struct or a function", typeOf(type));
      });
}

int32_t vrntTypeIsSubType(const vrntType_t* a, const vrntType_t* b) {
  return a == b || isSubType(typeOf(a), typeOf(b)) ? 1 : 0;
}

int32_t vrntTypeIsEqual(const vrntType_t* a, const vrntType_t* b) {
  return a == b || isSameType(typeOf(a), typeOf(b)) ? 1 : 0;
}

char* vrntTypeCheckSubType(const vrntType_t* a, const vrntType_t* b, vrntValuesError_t** error) {
  return qex::vornath::reportOutOfMemoryOrOther(error, nullptr, [a, b]() -> char* {
    const auto reason = checkSubType(typeOf(a), typeOf(b));
    if (!reason) return nullptr;
    char* const copy = strdup(reason->c_str());
    if (!copy) throw std::bad_alloc();
    return copy;
  });
}
