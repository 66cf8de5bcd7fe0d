#include "sampler_types.hpp"

#include <string>
#include <variant>

#include "fixed_struct_types.hpp"
#include "metadata.hpp"
#include "texture_types.hpp"
#include "type_making.hpp"

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

// Black, in place of the universal spectrum's own name and lack of a default.
const Type& borderSpectrumType() {
  static const Type& type =
      permanentType(Type::parse(spectrumType().stripped().text() +
                                " @default={ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; };"
                                " spectrum = &[ 0., 0., 0. ]; }"
                                " @name=\"Border spectrum\""));
  return type;
}

TypePtr makeSpectrumSampler(const Type& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Spectrum), "spectrum_texture"),
                      makeField(wrapMode, "wrapmode"),
                      makeField(borderSpectrumType(), "border_spectrum"),
                      labelledField(Type::TBasetype::Float, "Border alpha", "border_alpha")});
}

TypePtr makeNormalSampler(const Type& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Normal), "normal_texture"),
                      makeField(wrapMode, "wrapmode"),
                      labelledField(Type::TBasetype::Float3, "Border normal", "border_normal"),
                      labelledField(Type::TBasetype::Float, "Border float", "border_float")});
}

TypePtr makeFloatSampler(const Type& wrapMode) {
  return makeSampler({makeField(textureReferenceType(TextureKind::Float), "float_texture"),
                      makeField(wrapMode, "wrapmode"),
                      labelledField(Type::TBasetype::Float4, "Border", "border")});
}

const Type& spectrumSamplerType() {
  static const Type& type = permanentType(makeSpectrumSampler(wrapMode2Type()));
  return type;
}

const Type& normalSamplerType() {
  static const Type& type = permanentType(makeNormalSampler(wrapMode2Type()));
  return type;
}

const Type& floatSamplerType() {
  static const Type& type = permanentType(makeFloatSampler(wrapMode2Type()));
  return type;
}

const Type& spectrumSphereSamplerType() {
  static const Type& type = permanentType(makeSampler(
      {makeField(textureReferenceType(TextureKind::SpectrumSphere), "spectrum_sphere_texture")}));
  return type;
}

}  // namespace

const Type& samplerType(std::uint32_t number) {
  static constexpr std::array<const Type& (*)(), kSamplerCount> kSamplers{
      &spectrumSamplerType, &normalSamplerType, &floatSamplerType, &spectrumSphereSamplerType};
  return kSamplers[number]();
}

std::int32_t samplerNumber(const Type& type) {
  return numberOfSameType(type, kSamplerCount, samplerType);
}

const Type& floatSphereSamplerType() {
  static const Type& type = permanentType(makeSampler(
      {makeField(textureReferenceType(TextureKind::FloatSphere), "float_sphere_texture")}));
  return type;
}

TypePtr makeSpectrumSamplerType(WrapMode defaultU, WrapMode defaultV) {
  return makeSpectrumSampler(*makeWrapMode2Type(defaultU, defaultV));
}

TypePtr makeFloatSamplerType(WrapMode defaultU, WrapMode defaultV) {
  return makeFloatSampler(*makeWrapMode2Type(defaultU, defaultV));
}

}  // namespace qex::vornath
