// The samplers that hosts get no number for.
#include "colour/sampler_types.hpp"

#include <gtest/gtest.h>

#include "colour/texture_types.hpp"
#include "embed/sampler_makers.hpp"
#include "type_reading.hpp"
#include "types/type_handle.hpp"
#include "types/type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::samplerType;
using qex::vornath::TextureKind;
using qex::vornath::textureReferenceType;
using qex::vornath::typeHandle;
using qex::vornath::WrapMode;

const InternedType& fieldType(const InternedType& type, std::size_t index) {
  return *std::get<Struct>(type.desc()).fields[index].type;
}

// The same sampler but for its wrap modes, whose defaults are these.
void expectWrapped(const TypePtr& type, std::uint32_t number, int u, int v) {
  EXPECT_EQ(qex::vornath::samplerCode(*type), static_cast<int>(number));
  EXPECT_EQ(keysOf(typeHandle(*type)), (std::vector<std::string>{"no_specialize"}));
  const auto& fields = std::get<Struct>(type->desc()).fields;
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].label == "wrapmode") continue;
    EXPECT_EQ(fields[i].type.get(), &fieldType(samplerType(number), i)) << fields[i].label;
  }
  const ValueHandle value = defaultOf(typeHandle(*type));
  EXPECT_EQ(readAt<std::int32_t>(value, 0), -1);
  EXPECT_EQ(readAt<std::int32_t>(value, 4), u);
  EXPECT_EQ(readAt<std::int32_t>(value, 8), v);
}

}  // namespace

TEST(TextureReferences, AreNamedAfterTheirKind) {
  const std::tuple<TextureKind, const char*, const char*> kinds[] = {
      {TextureKind::Spectrum, "spectrum_texture", "Spectrum texture"},
      {TextureKind::SpectrumSphere, "spectrum_sphere_texture", "Spectrum sphere texture"},
      {TextureKind::Normal, "normal_texture", "Normal texture"},
      {TextureKind::Float, "float_texture", "Float texture"},
      {TextureKind::FloatSphere, "float_sphere_texture", "Float sphere texture"}};
  for (const auto& [kind, field, label] : kinds) {
    EXPECT_EQ(textureReferenceType(kind).text(), std::string("{ int @default=-1 @name=\"") + label +
                                                     "\" " + field + "; } @no_specialize");
    EXPECT_EQ(&textureReferenceType(kind), &textureReferenceType(kind));
  }
}

TEST(Samplers, ShareTheirParts) {
  EXPECT_EQ(&fieldType(samplerType(0), 0), &textureReferenceType(TextureKind::Spectrum));
  EXPECT_EQ(&fieldType(samplerType(1), 0), &textureReferenceType(TextureKind::Normal));
  EXPECT_EQ(&fieldType(samplerType(2), 0), &textureReferenceType(TextureKind::Float));
  EXPECT_EQ(&fieldType(samplerType(3), 0), &textureReferenceType(TextureKind::SpectrumSphere));
  for (const std::uint32_t number : {0u, 1u, 2u}) {
    EXPECT_EQ(&fieldType(samplerType(number), 1), &qex::vornath::wrapMode2Type());
  }
}

TEST(FloatSphereSampler, IsATextureOfThatKindAlone) {
  const InternedType& type = qex::vornath::floatSphereSamplerType();
  EXPECT_EQ(type.text(),
            "{ { int @default=-1 @name=\"Float sphere texture\" float_sphere_texture; } "
            "@no_specialize float_sphere_texture; } @no_specialize");
  EXPECT_EQ(&qex::vornath::floatSphereSamplerType(), &type);
  EXPECT_EQ(qex::vornath::samplerCode(type), -1);
  EXPECT_EQ(printed(defaultOf(typeHandle(type))),
            "{ float_sphere_texture = { float_sphere_texture = -1; }; }");
}

TEST(SpectrumSampler, TakesItsDefaultWrapModes) {
  for (int u = 0; u < 4; ++u) {
    for (int v = 0; v < 4; ++v) {
      expectWrapped(
          qex::vornath::makeSpectrumSamplerType(static_cast<WrapMode>(u), static_cast<WrapMode>(v)),
          0, u, v);
    }
  }
}

TEST(FloatSampler, TakesItsDefaultWrapModes) {
  for (int u = 0; u < 4; ++u) {
    for (int v = 0; v < 4; ++v) {
      expectWrapped(
          qex::vornath::makeFloatSamplerType(static_cast<WrapMode>(u), static_cast<WrapMode>(v)), 2,
          u, v);
    }
  }
}

TEST(Samplers, RefuseWhatIsNoWrapMode) {
  const std::string words = "Invalid enum constructor: INVALID_WRAPMODE";
  const auto none = static_cast<WrapMode>(7);
  expectThrows([&] { qex::vornath::makeSpectrumSamplerType(none, WrapMode::Clamp); }, words);
  expectThrows([&] { qex::vornath::makeFloatSamplerType(WrapMode::Clamp, none); }, words);
}
