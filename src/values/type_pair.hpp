/// Two types as a key: for what is worked out once for each pair that meets in a walk.
#ifndef VORNATH_VALUES_TYPE_PAIR_HPP
#define VORNATH_VALUES_TYPE_PAIR_HPP

#include <cstdint>
#include <unordered_map>
#include <utility>

#include "vornath_data/type_library.hpp"

namespace qex::vornath {

using TypePair = std::pair<const Type*, const Type*>;

struct TypePairHash {
  std::size_t operator()(const TypePair& pair) const noexcept {
    const auto bits = [](const Type* type) { return reinterpret_cast<std::uintptr_t>(type); };
    const std::uint64_t mixed = (bits(pair.first) * 31 + bits(pair.second)) * 0x9E3779B97F4A7C15U;
    return static_cast<std::size_t>(mixed ^ (mixed >> 32));
  }
};

template <typename T>
using TypePairMap = std::unordered_map<TypePair, T, TypePairHash>;

}  // namespace qex::vornath

#endif
