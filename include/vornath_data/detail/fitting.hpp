/// Rules for reading and writing values as C++ types: which C++ types fit which types of values,
/// how the bytes are converted, and the message for a type that does not fit.
#ifndef VORNATH_DATA_DETAIL_FITTING_HPP
#define VORNATH_DATA_DETAIL_FITTING_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>

#include "vornath_data/detail/wrong_kind.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrnt::detail {

/// Returns true for a struct type. The spectrum counts, although its descriptor is a base type.
inline bool isStruct(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return descriptor == VRNT_DESCRIPTOR_STRUCT ||
         (descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
}

/// Returns the text of a type for use in a message, shortened if it is long.
inline std::string shownText(const vrntType_t* type) {
  const char* const text = vrntTypeString(type);
  if (text == nullptr) return "with a long text";
  const std::string_view whole = text;
  const std::size_t shown = shownLength(whole);
  return std::string(whole.substr(0, shown)) + (shown < whole.size() ? "..." : "");
}

/// Throws a VornathValuesAssertionFailure with the message of WrongKind.
[[noreturn]] inline void raiseWrongKind(const char* function, const char* takes,
                                        const vrntType_t* given) {
  const char* kind = "the ";  // the text of an enum starts with the name of the kind
  if (isStruct(given)) {
    kind = "the struct ";
  } else {
    switch (vrntTypeDescriptor(given)) {
      case VRNT_DESCRIPTOR_BASE:
        kind = "the base type ";
        break;
      case VRNT_DESCRIPTOR_ARRAY:
        kind = "the array ";
        break;
      case VRNT_DESCRIPTOR_REFERENCE:
        kind = "the reference ";
        break;
      case VRNT_DESCRIPTOR_FUNCTION:
        kind = "the function ";
        break;
      default:
        break;
    }
  }
  const char* const text = vrntTypeString(given);
  throw WrongKind(function, takes, kind, text != nullptr ? text : "with a long text");
}

/// True for the types that an element index may have.
template <typename T>
inline constexpr bool kIsIndex = std::is_integral_v<T> && !std::is_same_v<T, bool>;

inline constexpr std::uint32_t kNoFamily = UINT32_MAX;

/// Returns the scalar family (VRNT_BASETYPE_*) of a C++ scalar, or kNoFamily. A half is read and
/// written as its bits.
template <typename T>
constexpr std::uint32_t familyOf() {
  if constexpr (std::is_same_v<T, float>) {
    return VRNT_BASETYPE_FLOAT;
  } else if constexpr (std::is_same_v<T, bool>) {
    return VRNT_BASETYPE_BOOL;
  } else if constexpr (std::is_same_v<T, char> || std::is_same_v<T, signed char> ||
                       std::is_same_v<T, unsigned char>) {
    return VRNT_BASETYPE_CHAR;
  } else if constexpr (std::is_same_v<T, std::uint16_t>) {
    return VRNT_BASETYPE_HALF;
  } else if constexpr (std::is_same_v<T, std::int32_t> || std::is_same_v<T, std::uint32_t>) {
    return VRNT_BASETYPE_INT;
  } else if constexpr (std::is_enum_v<T>) {
    using Number = std::underlying_type_t<T>;
    constexpr std::uint32_t kFamily = familyOf<Number>();
    return kFamily == VRNT_BASETYPE_INT || kFamily == VRNT_BASETYPE_CHAR ? kFamily : kNoFamily;
  } else {
    return kNoFamily;
  }
}

template <typename T>
inline constexpr bool kIsScalar = familyOf<T>() != kNoFamily;

/// True for T[N] and std::array<T, N>.
template <typename T>
struct ArrayOf : std::false_type {};
template <typename T, std::size_t N>
struct ArrayOf<T[N]> : std::true_type {
  using Element = T;
  static constexpr std::size_t kCount = N;
};
template <typename T, std::size_t N>
struct ArrayOf<std::array<T, N>> : std::true_type {
  using Element = T;
  static constexpr std::size_t kCount = N;
};

template <typename T>
inline constexpr bool kIsArray = ArrayOf<T>::value;

/// Returns true for a host's own struct or union. The library checks only its size.
template <typename T>
constexpr bool isRecord() {
  if (!std::is_class_v<T> && !std::is_union_v<T>) return false;
  if (kIsArray<T> || std::is_empty_v<T> || std::is_same_v<T, std::string_view>) return false;
  return std::is_trivially_copyable_v<T>;
}

/// Returns true if a T has the same bytes as the values that it fits.
template <typename T>
constexpr bool isPlain() {
  if constexpr (kIsArray<T>) {
    return ArrayOf<T>::kCount != 0 && isPlain<typename ArrayOf<T>::Element>();
  } else {
    return (kIsScalar<T> && !std::is_same_v<T, bool>) || isRecord<T>();
  }
}

/// Returns true for bool and arrays of bool. These are converted, because a bool of the library is
/// a word, all ones for true.
template <typename T>
constexpr bool isBools() {
  if constexpr (kIsArray<T>) {
    return ArrayOf<T>::kCount != 0 && std::is_same_v<typename ArrayOf<T>::Element, bool>;
  } else {
    return std::is_same_v<T, bool>;
  }
}

/// Returns true if no type that T fits holds references: T is a scalar or an array of scalars.
template <typename T>
constexpr bool holdsNoWords() {
  if constexpr (kIsArray<T>) {
    return holdsNoWords<typename ArrayOf<T>::Element>();
  } else {
    return kIsScalar<T>;
  }
}

/// True if T fits any type of value.
template <typename T>
inline constexpr bool kCanFit = isPlain<T>() || isBools<T>();

/// Returns true if a record of `size` bytes fits: `size` is the size of the type or, for a vector
/// of three lanes, which takes the memory of four, the size of three lanes.
inline bool fitsSize(const vrntType_t* type, std::uint64_t size) {
  const std::uint64_t whole = vrntTypeSize(type);
  if (size == whole) return true;
  return size == whole / 4 * 3 && vrntTypeVectorDimension(type) == 3;
}

/// Returns true if T fits the type. A scalar or array must have the same scalar family and the same
/// number of lanes or elements; a record must have the same size. An enum fits what an int fits.
/// Allocates nothing.
template <typename T>
bool fits(const vrntType_t* type) {
  if constexpr (kIsArray<T>) {
    using Element = typename ArrayOf<T>::Element;
    constexpr std::size_t kCount = ArrayOf<T>::kCount;
    const std::uint32_t descriptor = vrntTypeDescriptor(type);
    if (descriptor == VRNT_DESCRIPTOR_ARRAY) {
      // An unsized array, or one with an extent of 0, has no elements.
      if (vrntTypeSize(type) == 0) return false;
      const std::int32_t first[4] = {};
      vrntValueView_t element{};
      vrntValueArrayElement(&element, type, first);
      const std::uint64_t step = vrntTypeSize(element.type);
      return vrntTypeSize(type) == kCount * step && (isBools<T>() || step == sizeof(Element)) &&
             fits<Element>(element.type);
    }
    return kIsScalar<Element> && descriptor == VRNT_DESCRIPTOR_BASE &&
           vrntTypeBasetype(type) == familyOf<Element>() && vrntTypeVectorDimension(type) == kCount;
  } else if constexpr (kIsScalar<T>) {
    const std::uint32_t descriptor = vrntTypeDescriptor(type);
    if (descriptor == VRNT_DESCRIPTOR_ENUM) return familyOf<T>() == VRNT_BASETYPE_INT;
    return descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == familyOf<T>() &&
           vrntTypeVectorDimension(type) == 1;
  } else {
    // A host's struct must not overwrite a reference or a function, even if the size is the same.
    const std::uint32_t descriptor = vrntTypeDescriptor(type);
    return fitsSize(type, sizeof(T)) && descriptor != VRNT_DESCRIPTOR_REFERENCE &&
           descriptor != VRNT_DESCRIPTOR_FUNCTION;
  }
}

/// Reads a T from the bytes of a type that T fits.
template <typename T>
void load(T& value, const void* bytes) {
  if constexpr (!isBools<T>()) {
    std::memcpy(static_cast<void*>(&value), bytes, sizeof(value));
  } else if constexpr (kIsArray<T>) {
    for (std::size_t i = 0; i < ArrayOf<T>::kCount; ++i) {
      load(value[i], static_cast<const char*>(bytes) + i * sizeof(std::int32_t));
    }
  } else {
    std::int32_t word = 0;
    std::memcpy(&word, bytes, sizeof(word));
    value = word != 0;
  }
}

/// Writes a T to the bytes of a type that T fits.
template <typename T>
void store(void* bytes, const T& value) {
  if constexpr (!isBools<T>()) {
    std::memcpy(bytes, &value, sizeof(value));
  } else if constexpr (kIsArray<T>) {
    for (std::size_t i = 0; i < ArrayOf<T>::kCount; ++i) {
      store(static_cast<char*>(bytes) + i * sizeof(std::int32_t), value[i]);
    }
  } else {
    const std::int32_t word = value ? -1 : 0;
    std::memcpy(bytes, &word, sizeof(word));
  }
}

/// Returns the text of the types that T fits, for a message.
template <typename T>
std::string fittingText() {
  if constexpr (kIsArray<T>) {
    using Element = typename ArrayOf<T>::Element;
    const std::string count = std::to_string(ArrayOf<T>::kCount);
    const std::string element = fittingText<Element>();
    std::string array = element + "[" + count + "]";
    if (!kIsScalar<Element> || ArrayOf<T>::kCount > 4) return array;
    return (ArrayOf<T>::kCount == 1 ? element : element + count) + " or " + array;
  } else if constexpr (kIsScalar<T>) {
    constexpr const char* kSpellings[] = {"char", "half", "bool", "int", "float"};
    return kSpellings[familyOf<T>()];
  } else {
    return "record of " + std::to_string(sizeof(T)) + " bytes";
  }
}

/// Throws Exception "Incompatible type for accessor -> {}.". The message names the type of the
/// place, the field if it is known, and the type that the caller expected.
[[noreturn]] inline void raiseUnfit(const vrntType_t* type, std::string_view field,
                                    const std::string& expected) {
  std::string words = "type " + shownText(type);
  if (!field.empty()) words.append(" of field ").append(field);
  throw Exception(ErrorCode::InvalidArguments, "Incompatible type for accessor -> {}.",
                  words + " does not match " + expected);
}

}  // namespace vrnt::detail

#endif
