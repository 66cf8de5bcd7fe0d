/// The types for reading and writing plain numbers: the base types and `void*`. Each is created on
/// first use and permanent from then on.
#ifndef VORNATH_VALUES_FIXED_TYPES_HPP
#define VORNATH_VALUES_FIXED_TYPES_HPP

#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "types/type.hpp"
#include "values/half.hpp"
#include "values/views.hpp"

namespace qex::vornath {

/// Returns a base type. Throws "Illegal base type." for a code outside the enumeration.
const InternedType& baseType(Type::TBasetype base);

/// Returns `void*`.
const InternedType& voidReferenceType();

/// A bool as it lies in memory.
struct BoolWord {
  std::int32_t word;

  BoolWord() = default;
  explicit BoolWord(bool truth) : word(truth ? -1 : 0) {}
  explicit operator bool() const { return word != 0; }
};

/// A reference word as it lies in memory. Holds no reference.
struct ReferenceWord {
  std::uint64_t word;
};

/// The type for reading and writing a `T`: BoolWord, std::int32_t, float, std::uint8_t, Float16,
/// std::array of two to four of one of them, and ReferenceWord. An enum reads as a std::int32_t.
template <typename T>
struct FixedType;

namespace fixed_types_detail {

template <Type::TBasetype Base>
struct Scalar {
  static constexpr Type::TBasetype kBase = Base;
  static const InternedType& type() { return baseType(Base); }
};

}  // namespace fixed_types_detail

template <>
struct FixedType<BoolWord> : fixed_types_detail::Scalar<Type::TBasetype::Bool> {};
template <>
struct FixedType<std::int32_t> : fixed_types_detail::Scalar<Type::TBasetype::Int> {};
template <>
struct FixedType<float> : fixed_types_detail::Scalar<Type::TBasetype::Float> {};
template <>
struct FixedType<std::uint8_t> : fixed_types_detail::Scalar<Type::TBasetype::Char> {};
template <>
struct FixedType<Float16> : fixed_types_detail::Scalar<Type::TBasetype::Half> {};

template <typename Lane, std::size_t Lanes>
struct FixedType<std::array<Lane, Lanes>> {
  static_assert(Lanes >= 2 && Lanes <= 4);
  // The vectors of a lane type follow it in the enumeration.
  static const InternedType& type() {
    return baseType(static_cast<Type::TBasetype>(static_cast<int>(FixedType<Lane>::kBase) +
                                                 static_cast<int>(Lanes) - 1));
  }
};

template <>
struct FixedType<ReferenceWord> {
  static const InternedType& type() { return voidReferenceType(); }
};

/// Returns the `T` at a view. Throws "Incompatible type for accessor -> {}.".
template <typename T>
T readAs(const ConstView& view) {
  static_assert(std::is_trivially_copyable_v<T>);
  requireAccessible(*view.type, FixedType<T>::type());
  T value;
  std::memcpy(static_cast<void*>(&value), view.data(), sizeof(value));
  return value;
}

}  // namespace qex::vornath

#endif
