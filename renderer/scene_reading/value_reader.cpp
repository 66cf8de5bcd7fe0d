#include "scene_reading/value_reader.hpp"

#include <cctype>
#include <cstring>

namespace vrn_render {
namespace {

std::uint32_t descriptor(const vrntValueView_t& place) { return vrntTypeDescriptor(place.type); }

float fromHalf(std::uint16_t bits) {
  const std::uint32_t sign = (bits & 0x8000U) << 16;
  std::uint32_t exponent = (bits >> 10) & 31U;
  std::uint32_t mantissa = bits & 0x3ffU;
  std::uint32_t word = sign;
  if (exponent == 31) {
    word |= 0x7f800000U | (mantissa << 13);
  } else if (exponent != 0) {
    word |= ((exponent + 112) << 23) | (mantissa << 13);
  } else if (mantissa != 0) {
    exponent = 113;
    while (!(mantissa & 0x400U)) {
      mantissa <<= 1;
      --exponent;
    }
    word |= (exponent << 23) | ((mantissa & 0x3ffU) << 13);
  }
  float result;
  std::memcpy(&result, &word, sizeof result);
  return result;
}

float loadNumber(const unsigned char* bytes, std::uint32_t family) {
  if (family == VRNT_BASETYPE_FLOAT) {
    float number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
  }
  if (family == VRNT_BASETYPE_HALF) {
    std::uint16_t bits;
    std::memcpy(&bits, bytes, sizeof bits);
    return fromHalf(bits);
  }
  if (family == VRNT_BASETYPE_CHAR) return *bytes;
  std::int32_t word;
  std::memcpy(&word, bytes, sizeof word);
  return family == VRNT_BASETYPE_BOOL ? static_cast<float>(word != 0) : static_cast<float>(word);
}

}  // namespace

bool sameLabel(std::string_view a, std::string_view b) {
  std::size_t i = 0;
  std::size_t j = 0;
  for (;;) {
    while (i < a.size() && a[i] == '_') ++i;
    while (j < b.size() && b[j] == '_') ++j;
    if (i == a.size() || j == b.size()) return i == a.size() && j == b.size();
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[j]))) {
      return false;
    }
    ++i;
    ++j;
  }
}

const unsigned char* ValueReader::bytes() const {
  return static_cast<const unsigned char*>(vrntValueData(value_)) + place_.offset;
}

bool ValueReader::isStruct() const {
  return descriptor(place_) == VRNT_DESCRIPTOR_STRUCT || isSpectrum();
}

bool ValueReader::isSpectrum() const {
  vrntType_t* const spectrum = vrntTypeSpectrum();
  const bool is = vrntTypeIsSubType(place_.type, spectrum) != 0;
  vrntTypeDestroy(spectrum);
  return is;
}

std::uint32_t ValueReader::fieldCount() const {
  return isStruct() ? vrntTypeFieldCount(place_.type) : 0;
}

std::string_view ValueReader::label(std::uint32_t field) const {
  return vrntTypeFieldLabel(place_.type, field);
}

ValueReader ValueReader::field(std::uint32_t index) const {
  vrntValueView_t found;
  vrntValueStructField(&found, place_.type, index);
  found.offset += place_.offset;
  return {value_, found};
}

std::optional<ValueReader> ValueReader::find(std::string_view path) const {
  ValueReader at = *this;
  while (!path.empty()) {
    const std::size_t dot = path.find('.');
    const std::string_view wanted = path.substr(0, dot);
    path = dot == std::string_view::npos ? std::string_view() : path.substr(dot + 1);
    const std::uint32_t count = at.fieldCount();
    std::uint32_t index = 0;
    while (index < count && at.label(index) != wanted) ++index;
    if (index == count) return std::nullopt;
    at = at.field(index);
  }
  return at;
}

std::optional<ValueReader> ValueReader::findAny(
    std::initializer_list<std::string_view> labels) const {
  const std::uint32_t count = fieldCount();
  for (const std::string_view wanted : labels) {
    for (std::uint32_t index = 0; index < count; ++index) {
      if (sameLabel(label(index), wanted)) return field(index);
    }
  }
  return std::nullopt;
}

std::optional<float> ValueReader::number() const {
  const std::uint32_t kind = descriptor(place_);
  if (kind == VRNT_DESCRIPTOR_ENUM) return loadNumber(bytes(), VRNT_BASETYPE_INT);
  if (kind != VRNT_DESCRIPTOR_BASE || isSpectrum()) return std::nullopt;
  if (vrntTypeVectorDimension(place_.type) != 1) return std::nullopt;
  return loadNumber(bytes(), vrntTypeBasetype(place_.type));
}

std::optional<std::int32_t> ValueReader::integer() const {
  const std::uint32_t kind = descriptor(place_);
  const bool isInt = kind == VRNT_DESCRIPTOR_BASE && !isSpectrum() &&
                     vrntTypeVectorDimension(place_.type) == 1 &&
                     vrntTypeBasetype(place_.type) == VRNT_BASETYPE_INT;
  if (!isInt && kind != VRNT_DESCRIPTOR_ENUM) return std::nullopt;
  std::int32_t word;
  std::memcpy(&word, bytes(), sizeof word);
  return word;
}

std::optional<bool> ValueReader::boolean() const {
  const std::optional<float> found = number();
  if (!found) return std::nullopt;
  return *found != 0;
}

int ValueReader::laneCount() const {
  const std::uint32_t kind = descriptor(place_);
  if (kind == VRNT_DESCRIPTOR_BASE && !isSpectrum()) {
    const auto lanes = static_cast<int>(vrntTypeVectorDimension(place_.type));
    return lanes > 1 ? lanes : 0;
  }
  if (kind != VRNT_DESCRIPTOR_ARRAY || vrntTypeArrayDimension(place_.type) != 1) return 0;
  std::int32_t extent = 0;
  vrntTypeArrayShape(place_.type, &extent);
  vrntValueView_t element;
  const std::int32_t first = 0;
  vrntValueArrayElement(&element, place_.type, &first);
  const bool isNumber = vrntTypeDescriptor(element.type) == VRNT_DESCRIPTOR_BASE &&
                        !ValueReader(value_, element).isSpectrum() &&
                        vrntTypeVectorDimension(element.type) == 1;
  return isNumber && extent >= 2 && extent <= 4 ? extent : 0;
}

std::optional<std::array<float, 4>> ValueReader::lanes() const {
  const int count = laneCount();
  if (count == 0) return std::nullopt;
  std::uint32_t family;
  if (descriptor(place_) == VRNT_DESCRIPTOR_BASE) {
    family = vrntTypeBasetype(place_.type);
  } else {
    vrntValueView_t element;
    const std::int32_t first = 0;
    vrntValueArrayElement(&element, place_.type, &first);
    family = vrntTypeBasetype(element.type);
  }
  const std::size_t size = family == VRNT_BASETYPE_CHAR ? 1 : family == VRNT_BASETYPE_HALF ? 2 : 4;
  std::array<float, 4> result{};
  for (int i = 0; i < count; ++i) {
    const auto at = static_cast<std::size_t>(i);
    result[at] = loadNumber(bytes() + at * size, family);
  }
  return result;
}

std::string_view ValueReader::constructor() const {
  if (descriptor(place_) != VRNT_DESCRIPTOR_ENUM) return {};
  std::uint32_t code;
  std::memcpy(&code, bytes(), sizeof code);
  if (code >= vrntTypeConstructorCount(place_.type)) return {};
  return vrntTypeConstructorName(place_.type, code);
}

std::string ValueReader::text() const {
  if (descriptor(place_) != VRNT_DESCRIPTOR_ARRAY) return {};
  const char* const first = reinterpret_cast<const char*>(bytes());
  return {first, strnlen(first, static_cast<std::size_t>(vrntTypeSize(place_.type)))};
}

float ValueReader::numberAt(std::string_view path, float otherwise) const {
  const std::optional<ValueReader> at = find(path);
  return at ? at->number().value_or(otherwise) : otherwise;
}

bool ValueReader::booleanAt(std::string_view path, bool otherwise) const {
  const std::optional<ValueReader> at = find(path);
  return at ? at->boolean().value_or(otherwise) : otherwise;
}

std::string_view ValueReader::constructorAt(std::string_view path) const {
  const std::optional<ValueReader> at = find(path);
  return at ? at->constructor() : std::string_view();
}

Transform ValueReader::matrixAt(std::string_view path) const {
  Transform result;
  const std::optional<ValueReader> matrix = find(path);
  if (!matrix) return result;
  const auto row = [&matrix](std::string_view label, Vec3& out) {
    const std::optional<ValueReader> at = matrix->find(label);
    const std::optional<std::array<float, 4>> lanes = at ? at->lanes() : std::nullopt;
    if (lanes) out = {(*lanes)[0], (*lanes)[1], (*lanes)[2]};
  };
  row("x", result.x);
  row("y", result.y);
  row("z", result.z);
  row("w", result.w);
  return result;
}

}  // namespace vrn_render
