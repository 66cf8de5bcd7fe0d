/// Reads fields of values whose types are known at run time only.
#ifndef VRN_RENDER_SCENE_READING_VALUE_READER_HPP
#define VRN_RENDER_SCENE_READING_VALUE_READER_HPP

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "geometry/vector.hpp"
#include "vornath_data/vrnt.h"

namespace vrn_render {

/// A place in a value. Borrows the value, which must outlive it.
class ValueReader {
 public:
  ValueReader(const vrntValue_t* value, vrntValueView_t place) : value_(value), place_(place) {}
  explicit ValueReader(const vrntValue_t* value) : value_(value), place_{vrntValueType(value), 0} {}

  const vrntValue_t* value() const { return value_; }
  const vrntValueView_t& place() const { return place_; }
  bool isStruct() const;
  bool isSpectrum() const;

  /// Returns the number of fields, and the label of one; 0 for a type without fields.
  std::uint32_t fieldCount() const;
  std::string_view label(std::uint32_t field) const;
  ValueReader field(std::uint32_t index) const;

  /// Returns the field at a path of labels, such as `matrix.x`, if there is one.
  std::optional<ValueReader> find(std::string_view path) const;
  /// Returns the first of several fields that there is. Labels are compared without their case and
  /// their underscores.
  std::optional<ValueReader> findAny(std::initializer_list<std::string_view> labels) const;

  /// Reads one number: a float, a half, an int, a bool or the code of an enum.
  std::optional<float> number() const;
  std::optional<std::int32_t> integer() const;
  std::optional<bool> boolean() const;
  /// Reads a vector, or an array of 2 to 4 numbers; lanes that it does not have are 0.
  std::optional<std::array<float, 4>> lanes() const;
  /// Returns the number of lanes or elements that lanes() reads; 0 if it reads none.
  int laneCount() const;
  /// Returns the name of an enum's constructor; empty for another type or a code without a name.
  std::string_view constructor() const;
  /// Reads a `char` array up to its first NUL.
  std::string text() const;

  /// Fields of a group, which is known to have them; the default for one that is of another type.
  float numberAt(std::string_view path, float otherwise = 0) const;
  bool booleanAt(std::string_view path, bool otherwise) const;
  std::string_view constructorAt(std::string_view path) const;
  /// Reads the rows x, y, z and w of a matrix.
  Transform matrixAt(std::string_view path) const;

 private:
  const unsigned char* bytes() const;

  const vrntValue_t* value_;
  vrntValueView_t place_;
};

/// True if two labels are the same without their case and their underscores.
bool sameLabel(std::string_view a, std::string_view b);

}  // namespace vrn_render

#endif
