/// Converts between a flat type handle and the Type at the same address.
#ifndef VORNATH_TYPES_TYPE_HANDLE_HPP
#define VORNATH_TYPES_TYPE_HANDLE_HPP

#include "types/type.hpp"

namespace qex::vornath {

inline const InternedType& typeOf(const vrntType_t* handle) {
  return *reinterpret_cast<const InternedType*>(handle);
}

/// Adds no reference. Types are immutable even through a handle that is not const.
inline vrntType_t* typeHandle(const InternedType& type) {
  return reinterpret_cast<vrntType_t*>(const_cast<InternedType*>(&type));
}

}  // namespace qex::vornath

#endif
