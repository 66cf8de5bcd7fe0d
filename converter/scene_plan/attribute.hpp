// Arrays of numbers in the memory of a file: positions, normals, texture coordinates, indices.
#ifndef VRN_CONVERT_SCENE_PLAN_ATTRIBUTE_HPP
#define VRN_CONVERT_SCENE_PLAN_ATTRIBUTE_HPP

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vrn_convert {

enum class Component : std::uint8_t { Float, Int8, UInt8, Int16, UInt16, UInt32 };

constexpr std::size_t sizeOf(Component component) {
  switch (component) {
    case Component::Int8:
    case Component::UInt8:
      return 1;
    case Component::Int16:
    case Component::UInt16:
      return 2;
    case Component::Float:
    case Component::UInt32:
      break;
  }
  return 4;
}

/// A view of elements of 1 to 16 numbers. It owns nothing. The bytes need not be aligned.
struct Attribute {
  const unsigned char* data = nullptr;
  std::size_t stride = 0;  ///< bytes from an element to the next
  std::size_t count = 0;   ///< elements
  Component component = Component::Float;
  bool isNormalised = false;  ///< integers stand for 0 to 1, or -1 to 1
  int lanes = 0;              ///< numbers of an element

  explicit operator bool() const { return data != nullptr; }

  const unsigned char* at(std::size_t element) const { return data + element * stride; }

  /// Reads the first numbers of an element as floats. The element must have as many.
  void read(std::size_t element, float* numbers, int wanted) const {
    const unsigned char* const from = at(element);
    if (component == Component::Float) {
      std::memcpy(numbers, from, sizeof(float) * static_cast<std::size_t>(wanted));
      return;
    }
    for (int lane = 0; lane < wanted; ++lane) {
      numbers[lane] = number(from + static_cast<std::size_t>(lane) * sizeOf(component));
    }
  }

  /// Reads an index: the first number of an element, which is an unsigned integer.
  std::uint32_t index(std::size_t element) const {
    const unsigned char* const from = at(element);
    if (component == Component::UInt8) return *from;
    if (component == Component::UInt16) return load<std::uint16_t>(from);
    return load<std::uint32_t>(from);
  }

 private:
  template <typename T>
  static T load(const unsigned char* from) {
    T number;
    std::memcpy(&number, from, sizeof number);
    return number;
  }
  // The rules of glTF 2.0 for integers that stand for fractions.
  float number(const unsigned char* from) const {
    switch (component) {
      case Component::Int8: {
        const float value = load<std::int8_t>(from);
        return isNormalised ? std::max(value / 127.0F, -1.0F) : value;
      }
      case Component::UInt8:
        return isNormalised ? static_cast<float>(*from) / 255.0F : static_cast<float>(*from);
      case Component::Int16: {
        const float value = load<std::int16_t>(from);
        return isNormalised ? std::max(value / 32767.0F, -1.0F) : value;
      }
      case Component::UInt16: {
        const float value = load<std::uint16_t>(from);
        return isNormalised ? value / 65535.0F : value;
      }
      case Component::UInt32:
        return static_cast<float>(load<std::uint32_t>(from));
      case Component::Float:
        break;
    }
    return load<float>(from);
  }
};

/// Makes a view of an array of structs of floats.
template <typename T>
Attribute viewOf(const T* elements, std::size_t count, int lanes) {
  static_assert(sizeof(T) % sizeof(float) == 0);
  return {reinterpret_cast<const unsigned char*>(elements),
          sizeof(T),
          count,
          Component::Float,
          false,
          lanes};
}

}  // namespace vrn_convert

#endif
