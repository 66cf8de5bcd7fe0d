// A struct value in the making, its fields reached by their labels.
#ifndef CORNELL_BOX_RECORD_HPP
#define CORNELL_BOX_RECORD_HPP

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "host.hpp"

namespace cornell_box {

using Float2 = std::array<float, 2>;
using Float4 = std::array<float, 4>;

/// A fraction, or a distribution over wavelengths in nanometres: each amplitude holds from its own
/// wavelength to the next one, the last one to `end`.
struct Spectrum {
  std::vector<float> wavelengths;
  std::vector<float> amplitudes;
  float end = 0;
};

class Record {
 public:
  explicit Record(Value value) : value_(std::move(value)) {}

  /// The default value of a type that is given as text.
  explicit Record(const std::string& typeText) : value_(defaultValue(parseType(typeText).get())) {}

  /// Each writes one field, which is named by a path of labels such as `matrix.w`. A path that
  /// leads nowhere and a field of another type raise an error.
  Record& set(const std::string& path, bool value);
  Record& set(const std::string& path, std::int32_t value);
  Record& set(const std::string& path, float value);
  Record& set(const std::string& path, const Float2& value);
  Record& set(const std::string& path, const Float4& value);
  Record& setName(const std::string& path, const std::string& constructor);
  Record& setText(const std::string& path, const std::string& text);

  /// Both write a spectrum, a struct of an `encoding` and a reference to the numbers.
  Record& setFlat(const std::string& path, float everywhere);
  Record& setSpectrum(const std::string& path, const Spectrum& spectrum);

  const vrntValue_t* value() const { return value_.get(); }

 private:
  vrntValueView_t find(const std::string& path) const;
  void write(const std::string& path, const char* type, const void* bytes, std::size_t size);
  void writeAt(const vrntValueView_t& view, const void* bytes, std::size_t size);
  void refer(const std::string& path, const std::vector<float>& numbers);

  Value value_;
};

}  // namespace cornell_box

#endif
