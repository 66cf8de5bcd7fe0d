// Numbers at places of any alignment.
#ifndef VORNATH_TOOLKIT_FOUNDATION_LOAD_HPP
#define VORNATH_TOOLKIT_FOUNDATION_LOAD_HPP

#include <cstring>

namespace vrtk {

/// Returns the number, or the record of numbers, that starts at a byte.
template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

}  // namespace vrtk

#endif
