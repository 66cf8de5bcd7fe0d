#include "catalogue/value_text.hpp"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

#include "catalogue/constructors.hpp"
#include "check/type_plan.hpp"
#include "foundation/half.hpp"
#include "json/text.hpp"

namespace vrtk {
namespace {

template <typename T>
T load(const char* at) {
  T number;
  std::memcpy(&number, at, sizeof(number));
  return number;
}

constexpr std::uint32_t kQuietNan = 0x7FC00000;

void append(std::string& out, const vrntType_t* type, const char* bytes);

void appendArray(std::string& out, const vrntType_t* type, const char* bytes) {
  std::array<std::int32_t, 4> shape = {1, 1, 1, 1};
  vrntTypeArrayShape(type, shape.data());
  if (elementCount(type) == 0) {
    out += "[]";
    return;
  }
  const std::uint32_t rank = vrntTypeArrayDimension(type);
  std::array<std::int32_t, 4> index{};
  // The last dimension, which runs slowest, is the outermost array.
  const auto dimension = [&](const auto& self, std::uint32_t d) -> void {
    out += '[';
    for (std::int32_t i = 0; i < shape[d]; ++i) {
      if (i != 0) out += ", ";
      index[d] = i;
      if (d != 0) {
        self(self, d - 1);
        continue;
      }
      vrntValueView_t element{};
      vrntValueArrayElement(&element, type, index.data());
      append(out, element.type, bytes + element.offset);
    }
    out += ']';
  };
  dimension(dimension, rank - 1);
}

void append(std::string& out, const vrntType_t* type, const char* bytes) {
  if (isStruct(type)) {
    out += "{";
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, type, i);
      out += i == 0 ? " " : ", ";
      appendJsonString(out, vrntTypeFieldLabel(type, i));
      out += ": ";
      append(out, field.type, bytes + field.offset);
    }
    out += " }";
    return;
  }
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ARRAY:
      appendArray(out, type, bytes);
      return;
    case VRNT_DESCRIPTOR_ENUM: {
      const auto code = load<std::uint32_t>(bytes);
      if (code < vrntTypeConstructorCount(type)) {
        appendJsonString(out, vrntTypeConstructorName(type, code));
      } else {
        out += std::to_string(static_cast<std::int32_t>(code));
      }
      return;
    }
    case VRNT_DESCRIPTOR_BASE:
      break;
    default:
      out += "null";
      return;
  }
  const Numbers numbers = *numbersOf(type);
  if (numbers.lanes == 1) {
    out += laneJson(numbers, bytes, 0);
    return;
  }
  for (std::uint32_t lane = 0; lane < numbers.lanes; ++lane) {
    out += lane == 0 ? "[" : ", ";
    out += laneJson(numbers, bytes, lane);
  }
  out += ']';
}

}  // namespace

std::string valueJson(const vrntType_t* type, const char* bytes) {
  std::string out;
  append(out, type, bytes);
  return out;
}

std::string valueJson(const vrntValue_t* value) {
  return valueJson(vrntValueType(value), static_cast<const char*>(vrntValueData(value)));
}

std::optional<Numbers> numbersOf(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_BASE) return std::nullopt;
  const std::uint32_t family = vrntTypeBasetype(type);
  if (family == VRNT_BASETYPE_STRUCT) return std::nullopt;
  const std::uint32_t size = family == VRNT_BASETYPE_CHAR   ? 1
                             : family == VRNT_BASETYPE_HALF ? 2
                                                            : 4;
  return Numbers{family, vrntTypeVectorDimension(type), size};
}

double laneNumber(const Numbers& numbers, const char* bytes, std::uint32_t lane) {
  const char* const at = bytes + std::size_t{lane} * numbers.size;
  switch (numbers.family) {
    case VRNT_BASETYPE_CHAR:
      return load<std::uint8_t>(at);
    case VRNT_BASETYPE_HALF:
      return halfToFloat(load<std::uint16_t>(at));
    case VRNT_BASETYPE_FLOAT:
      return load<float>(at);
    default:
      return load<std::int32_t>(at);
  }
}

std::string laneJson(const Numbers& numbers, const char* bytes, std::uint32_t lane) {
  const char* const at = bytes + std::size_t{lane} * numbers.size;
  switch (numbers.family) {
    case VRNT_BASETYPE_CHAR:
      return std::to_string(load<std::uint8_t>(at));
    case VRNT_BASETYPE_BOOL:
      return load<std::uint32_t>(at) != 0 ? "true" : "false";
    case VRNT_BASETYPE_HALF:
      return floatJson(halfToFloat(load<std::uint16_t>(at)));
    case VRNT_BASETYPE_FLOAT:
      return floatJson(load<float>(at));
    default:
      return std::to_string(load<std::int32_t>(at));
  }
}

std::string floatJson(float number) {
  if (std::isnan(number)) {
    std::uint32_t bits = 0;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits == kQuietNan ? "\"nan\"" : fmt::format("\"nan:{:08x}\"", bits);
  }
  if (std::isinf(number)) return number < 0 ? "\"-inf\"" : "\"inf\"";
  std::array<char, 32> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number).ptr;
  std::string text(buffer.data(), end);
  // A number with a fraction shows that it has one.
  if (text.find_first_of(".e") == std::string::npos) text += ".0";
  return text;
}

}  // namespace vrtk
