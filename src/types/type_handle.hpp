/// A flat type handle and the Type that it stands for: the same address.
#ifndef VORNATH_TYPES_TYPE_HANDLE_HPP
#define VORNATH_TYPES_TYPE_HANDLE_HPP

#include "types/type.hpp"

namespace qex::vornath {

inline const InternedType& typeOf(const vrntType_t* handle) {
  return *reinterpret_cast<const InternedType*>(handle);
}

/// Takes no reference. Types are immutable, whatever the handle says of const.
inline vrntType_t* typeHandle(const InternedType& type) {
  return reinterpret_cast<vrntType_t*>(const_cast<InternedType*>(&type));
}

}  // namespace qex::vornath

#endif
