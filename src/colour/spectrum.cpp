#include "spectrum.hpp"

#include <cstring>
#include <utility>

#include "fixed_struct_types.hpp"
#include "spectrum_value.hpp"
#include "step_function.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

Spectrum spectral(const std::vector<float>& pairs) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Spectral, pairs));
}

// The two fields of a spectrum. The type is a subtype of the spectrum type.
struct Fields {
  std::int32_t encoding;
  std::uint64_t word;
};

Fields fieldsAt(const Type& type, const char* data) {
  const auto& structure = std::get<Type::TStruct>(type.desc());
  Fields fields{};
  std::memcpy(&fields.encoding, data + structure.offsets[0], sizeof(fields.encoding));
  fields.word = loadWord(data + structure.offsets[1]);
  return fields;
}

// An unknown code reads as a triple.
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

bool isFloatArray(const Type& type) {
  const auto* const array = type.getIf<Type::TArrayND<int>>();
  if (array == nullptr) return false;
  const auto* const element = array->element->getIf<Type::TBasetype>();
  return element != nullptr && *element == Type::TBasetype::Float;
}

// The type of the array that a spectrum refers to.
const Type& floatsType() {
  const auto& structure = std::get<Type::TStruct>(spectrumType().desc());
  return *std::get<Type::TRef>(structure.fields[1].type->desc()).target;
}

// The word is not null. What a host stored may be any block, of whose type nobody knows yet, or an
// address of its own, which is not this layer's to read.
const vrntValue_t* follow(const Fields& fields) {
  if (!isBlockWord(fields.word)) throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments);
  const vrntValue_t* const block = blockOfWord(fields.word);
  if (!isFloatArray(blockType(block))) requireAccessible(blockType(block), floatsType());
  return block;
}

std::span<const float> floatsOf(const vrntValue_t* block) {
  return {reinterpret_cast<const float*>(blockData(block)),
          blockType(block).size() / sizeof(float)};
}

}  // namespace

Spectrum::Spectrum(DynamicValue value) : value_(std::move(value)) {
  requireAccessible(value_.typeOf(), spectrumType());
}

Spectrum Spectrum::fromLuminance(float value) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Luminance, {&value, 1}));
}

Spectrum Spectrum::fromRgb(float red, float green, float blue) {
  return Spectrum(makeSpectrumValue(SpectrumEncoding::Rgb, std::array<float, 3>{red, green, blue}));
}

Spectrum Spectrum::fromSamples(std::span<const float> lambdas, std::span<const float> amplitudes) {
  return spectral(pairsFromSamples(lambdas, amplitudes));
}

Spectrum Spectrum::fromUniformSamples(float lambda0, float deltaLambda,
                                      std::span<const float> amplitudes) {
  return spectral(pairsFromUniformSamples(lambda0, deltaLambda, amplitudes));
}

Spectrum Spectrum::fromBand(float lambda, float deltaLambda, float amplitude) {
  return spectral(pairsFromBand(lambda, deltaLambda, amplitude));
}

SpectrumView Spectrum::view() const { return readSpectrum(value_.typeOf(), value_.data()); }

void Spectrum::validate() const {
  const Fields fields = fieldsAt(value_.typeOf(), value_.data());
  if (fields.word == 0) return;
  const vrntValue_t* const array = follow(fields);
  const std::span<const float> floats = floatsOf(array);
  if (floats.empty()) return;
  switch (encodingOf(fields.encoding)) {
    case SpectrumEncoding::Luminance:
      requireFitting(blockType(array), *floatArrayType(1));
      break;
    case SpectrumEncoding::Rgb:
      requireFitting(blockType(array), *floatArrayType(3));
      break;
    case SpectrumEncoding::Spectral:
      validatePairs(floats);
      break;
  }
}

SpectrumView readSpectrum(const Type& type, const char* data) {
  requireAccessible(type, spectrumType());
  const Fields fields = fieldsAt(type, data);
  const SpectrumEncoding encoding = encodingOf(fields.encoding);
  if (fields.word == 0) return {encoding, {}};
  const vrntValue_t* const array = follow(fields);
  const std::span<const float> floats = floatsOf(array);
  if (encoding == SpectrumEncoding::Rgb && !floats.empty() && floats.size() < 3) {
    requireFitting(blockType(array), *floatArrayType(3));
  }
  return {encoding, floats};
}

}  // namespace qex::vornath
