#include "colour/spectrum_reading.hpp"

#include <cstdint>
#include <cstring>

#include "types/fixed_struct_types.hpp"
#include "values/dynamic_value.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

// Returns Rgb for an unknown code.
SpectrumEncoding encodingOf(std::int32_t code) {
  switch (code) {
    case static_cast<std::int32_t>(SpectrumEncoding::Luminance):
      return SpectrumEncoding::Luminance;
    case static_cast<std::int32_t>(SpectrumEncoding::Spectral):
      return SpectrumEncoding::Spectral;
    default:
      return SpectrumEncoding::Rgb;
  }
}

bool isFloatArray(const InternedType& type) {
  const auto* const array = type.getIf<Type::TArrayND<int>>();
  if (array == nullptr) return false;
  const auto* const element = array->element->getIf<Type::TBasetype>();
  return element != nullptr && *element == Type::TBasetype::Float;
}

// Returns the type of the array that a spectrum refers to.
const InternedType& floatsType() {
  const auto& structure = std::get<Type::TStruct>(spectrumType().desc());
  return *std::get<Type::TRef>(structure.fields[1].type->desc()).target;
}

// Follows a reference word, which must not be null. A host may have stored any block, whose type is
// still unknown, or a foreign pointer, which this layer must not follow.
const vrntValue_t* follow(std::uint64_t word) {
  if (!isBlockWord(word)) throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments);
  const vrntValue_t* const block = blockOfWord(word);
  if (!isFloatArray(blockType(block))) requireAccessible(blockType(block), floatsType());
  return block;
}

}  // namespace

StoredSpectrum storedSpectrum(const InternedType& type, const char* data) {
  const auto& structure = std::get<Type::TStruct>(type.desc());
  std::int32_t code = 0;
  std::memcpy(&code, data + structure.offsets[0], sizeof(code));
  const std::uint64_t word = loadWord(data + structure.offsets[1]);
  return {encodingOf(code), word == 0 ? nullptr : follow(word)};
}

std::span<const float> floatsOf(const StoredSpectrum& stored) {
  if (stored.array == nullptr) return {};
  return {reinterpret_cast<const float*>(blockData(stored.array)),
          blockType(stored.array).size() / sizeof(float)};
}

SpectrumView readSpectrum(const InternedType& type, const char* data) {
  requireAccessible(type, spectrumType());
  const StoredSpectrum stored = storedSpectrum(type, data);
  const std::span<const float> floats = floatsOf(stored);
  if (stored.encoding == SpectrumEncoding::Rgb && !floats.empty() && floats.size() < 3) {
    requireAssignable(blockType(stored.array), *floatArrayType(3));
  }
  return {stored.encoding, floats};
}

}  // namespace qex::vornath
