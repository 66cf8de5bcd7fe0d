/// A value whose fields are read and written by paths of labels.
#ifndef VORNATH_DATA_HOST_RECORD_HPP
#define VORNATH_DATA_HOST_RECORD_HPP

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "vornath_data/host/field.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::host {

/// A value with getters and setters by path. Each call searches for its field; to access a field
/// many times, use a Field, which searches once. A copy shares the value until either is written
/// to.
///
///     Record record = Record::ofType("{ float focal_length; enum { A; B; } mode; }");
///     record.set("focal_length", 0.035F).set("mode", "B");
class Record {
 public:
  /// Takes an existing value.
  explicit Record(Value value) : value_(std::move(value)) {}

  /// Creates the default value of a type. Throws an Exception if Value::create() or
  /// TypeHandle::parse() fails.
  static Record ofType(const vrntType_t* type) { return Record(Value::create(type, true).value()); }
  static Record ofType(const char* typeText) {
    return ofType(TypeHandle::parse(typeText).value().get());
  }
  static Record ofType(const std::string& typeText) { return ofType(typeText.c_str()); }

  /// Writes one field. `field` is one of:
  /// - a number, a bool, a std::array of lanes or elements, or a struct, as for Field<T>;
  /// - a string: the name of a constructor if the field is an enum, else the characters of an
  /// array;
  /// - a FlatSpectrum, RgbSpectrum or SampledSpectrum.
  ///
  /// Errors: throws what the field classes throw and writes nothing. Throws Exception "Incompatible
  /// type for value -> no value." if this Record was moved from.
  template <typename T>
  Record& set(std::string_view path, const T& field) {
    FieldPath found = find(path);
    if constexpr (std::is_convertible_v<const T&, std::string_view>) {
      if (vrntTypeDescriptor(found.type()) == VRNT_DESCRIPTOR_ENUM) {
        EnumField(std::move(found), path).set(value_, field);
      } else {
        TextField(std::move(found), path).set(value_, field);
      }
    } else if constexpr (std::is_same_v<T, FlatSpectrum> || std::is_same_v<T, RgbSpectrum> ||
                         std::is_same_v<T, SampledSpectrum>) {
      SpectrumField(std::move(found), path).set(value_, field);
    } else {
      Field<T>(std::move(found), path).set(value_, field);
    }
    return *this;
  }

  /// Reads one field. As a std::string, reads the name of an enum's constructor or an array of
  /// characters.
  /// Errors: as set().
  template <typename T>
  T get(std::string_view path) const {
    FieldPath found = find(path);
    if constexpr (std::is_same_v<T, std::string>) {
      if (vrntTypeDescriptor(found.type()) == VRNT_DESCRIPTOR_ENUM) {
        return std::string(EnumField(std::move(found), path).get(value_));
      }
      return TextField(std::move(found), path).get(value_);
    } else {
      return Field<T>(std::move(found), path).get(value_);
    }
  }

  /// Returns the text of the whole value, as ConstBasicView::text() does.
  /// Errors: as set() if this Record was moved from.
  std::string text() const {
    requireValue();
    return ConstView(&value_).text();
  }

  const Value& value() const& noexcept { return value_; }
  Value value() && noexcept { return std::move(value_); }

 private:
  void requireValue() const {
    if (!value_) {
      throw Exception(ErrorCode::InvalidArguments, "Incompatible type for value -> {}.",
                      "no value");
    }
  }
  FieldPath find(std::string_view path) const {
    requireValue();
    return FieldPath(value_.type(), path);
  }

  Value value_;
};

}  // namespace vrnt::host

#endif
