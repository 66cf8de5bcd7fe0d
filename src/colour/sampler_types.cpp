#include "colour/sampler_types.hpp"

#include <string>
#include <variant>

#include "colour/texture_types.hpp"
#include "colour/type_construction.hpp"
#include "types/fixed_struct_types.hpp"
#include "types/metadata.hpp"

namespace qex::vornath {
namespace {

TypePtr makeSampler(std::vector<Type::Field> fields) {
  Metadata metadata;
  setMetadata(metadata, "no_specialize", std::monostate{});
  return makeStruct(std::move(fields), metadata);
}

Type::Field labelledField(Type::TBasetype base, const char* name, const char* label) {
  Metadata metadata;
  setMetadata(metadata, "name", std::string(name));
  return {makeType(base, metadata), label};
}

// The universal spectrum with a default, black, and another name.
const InternedType& borderSpectrumType() {
  static const InternedType& type = permanentType(
      InternedType::parse(spectrumType().stripped().text() +
                          " @default={ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; };"
                          " spectrum = &[ 0., 0., 0. ]; }"
                          " @name=\"Border spectrum\""));
  return type;
}

TypePtr makeNormalSampler(const InternedType& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Normal), "normal_texture"),
                      makeField(wrapMode, "wrapmode"),
                      labelledField(Type::TBasetype::Float3, "Border normal", "border_normal"),
                      labelledField(Type::TBasetype::Float, "Border float", "border_float")});
}

}  // namespace

TypePtr makeSpectrumSampler(const InternedType& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Spectrum), "spectrum_texture"),
                      makeField(wrapMode, "wrapmode"),
                      makeField(borderSpectrumType(), "border_spectrum"),
                      labelledField(Type::TBasetype::Float, "Border alpha", "border_alpha")});
}

TypePtr makeFloatSampler(const InternedType& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Float), "float_texture"),
                      makeField(wrapMode, "wrapmode"),
                      labelledField(Type::TBasetype::Float4, "Border", "border")});
}

TypePtr makeSphereSampler(TextureKind kind, const char* label) {
  return makeSampler({makeField(textureReferenceType(kind), label)});
}

namespace {

const InternedType& spectrumSamplerType() {
  static const InternedType& type = permanentType(makeSpectrumSampler(wrapMode2Type()));
  return type;
}

const InternedType& normalSamplerType() {
  static const InternedType& type = permanentType(makeNormalSampler(wrapMode2Type()));
  return type;
}

const InternedType& floatSamplerType() {
  static const InternedType& type = permanentType(makeFloatSampler(wrapMode2Type()));
  return type;
}

const InternedType& spectrumSphereSamplerType() {
  static const InternedType& type =
      permanentType(makeSphereSampler(TextureKind::SpectrumSphere, "spectrum_sphere_texture"));
  return type;
}

}  // namespace

const InternedType& samplerType(std::uint32_t code) {
  static constexpr std::array<const InternedType& (*)(), kSamplerCount> kSamplers{
      &spectrumSamplerType, &normalSamplerType, &floatSamplerType, &spectrumSphereSamplerType};
  return kSamplers[code]();
}

std::int32_t samplerCode(const InternedType& type) {
  return codeOfSameType(type, kSamplerCount, samplerType);
}

}  // namespace qex::vornath
