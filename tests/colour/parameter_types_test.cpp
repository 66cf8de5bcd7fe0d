// The parameters of material and light programs, their samplers, and what these are made of.
#include <gtest/gtest.h>

#include <array>

#include "fixed_types_list.hpp"
#include "type_reading.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

constexpr const char* kMaterialParameters[] = {
    "{ enum { VALUE; TEXTURE; } mode; { enum { LUMINANCE; RGB; SPECTRAL; } encoding; "
    "float[]* spectrum; } color; { { { int spectrum_texture; } spectrum_texture; { enum { "
    "CLAMP; BORDER; REPEAT; MIRROR; } u; enum { CLAMP; BORDER; REPEAT; MIRROR; } v; } "
    "wrapmode; { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } "
    "border_spectrum; float border_alpha; } sampler; { float3 x; float3 y; float3 z; } "
    "uvTransformation; { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } "
    "colorOffset; { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } "
    "colorScale; } texture; }",
    "{ enum { VALUE; TEXTURE; } mode; float value; { { { int float_texture; } float_texture; "
    "{ enum { CLAMP; BORDER; REPEAT; MIRROR; } u; enum { CLAMP; BORDER; REPEAT; MIRROR; } v; "
    "} wrapmode; float4 border; } sampler; { float3 x; float3 y; float3 z; } "
    "uvTransformation; float valueOffset; float valueScale; } texture; }",
    "{ bool enabled; { { int normal_texture; } normal_texture; { enum { CLAMP; BORDER; "
    "REPEAT; MIRROR; } u; enum { CLAMP; BORDER; REPEAT; MIRROR; } v; } wrapmode; float3 "
    "border_normal; float border_float; } sampler; { float3 x; float3 y; float3 z; } "
    "uvTransformation; float3 normalOffset; float3 normalScale; }",
    "{ { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } value; { int "
    "texture_ref; } texture; { float2 x; float2 y; float2 z; } transformation; enum { CLAMP; "
    "BORDER; REPEAT; MIRROR; } wrap_u; enum { CLAMP; BORDER; REPEAT; MIRROR; } wrap_v; { "
    "enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } scale; { enum { "
    "LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } offset; }",
    "{ float value; { int texture_ref; } texture; { float2 x; float2 y; float2 z; } "
    "transformation; enum { CLAMP; BORDER; REPEAT; MIRROR; } wrap_u; enum { CLAMP; BORDER; "
    "REPEAT; MIRROR; } wrap_v; float scale; float offset; }",
    "{ { int texture_ref; } texture; { float2 x; float2 y; float2 z; } transformation; enum "
    "{ CLAMP; BORDER; REPEAT; MIRROR; } wrap_u; enum { CLAMP; BORDER; REPEAT; MIRROR; } "
    "wrap_v; float3 scale; float3 offset; }",
};

using Labels = std::vector<std::string>;

const std::string kWrapModes = "enum { CLAMP; BORDER; REPEAT; MIRROR; }";
const std::string kWrapMode2 = "{ " + kWrapModes + " u; " + kWrapModes + " v; }";
const std::string kSpectrum = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";

// Without metadata, by number.
const std::string kSamplers[] = {
    "{ { int spectrum_texture; } spectrum_texture; " + kWrapMode2 + " wrapmode; " + kSpectrum +
        " border_spectrum; float border_alpha; }",
    "{ { int normal_texture; } normal_texture; " + kWrapMode2 +
        " wrapmode; float3 border_normal; float border_float; }",
    "{ { int float_texture; } float_texture; " + kWrapMode2 + " wrapmode; float4 border; }",
    "{ { int spectrum_sphere_texture; } spectrum_sphere_texture; }",
};

TypeHandle sampler(std::uint32_t number) { return TypeHandle(vrntTypeSampler(number)); }
TypeHandle parameter(std::uint32_t number) { return TypeHandle(vrntTypeMaterialParam(number)); }

void expectTextureStruct(const vrntType_t* type, const std::string& field,
                         const std::string& label) {
  EXPECT_EQ(strippedText(type), "{ int " + field + "; }");
  const TypeHandle index = fieldOf(type, {0});
  EXPECT_EQ(keysOf(index.get()), (Labels{"default", "name"}));
  EXPECT_EQ(defaultEntry(index.get()), "-1");
  EXPECT_EQ(displayName(index.get()), label);
  EXPECT_EQ(printed(defaultOf(type)), "{ " + field + " = -1; }");
}

// Fields u and v that are alike: wrap modes with a label and the default REPEAT.
void expectWrapMode2(const vrntType_t* type) {
  EXPECT_EQ(strippedText(type), kWrapMode2);
  EXPECT_EQ(vrntMetadataSize(type), 0u);
  for (const std::uint32_t i : {0u, 1u}) {
    const TypeHandle mode = fieldOf(type, {i});
    EXPECT_EQ(keysOf(mode.get()), (Labels{"default", "name"}));
    EXPECT_EQ(defaultEntry(mode.get()), "REPEAT : " + kWrapModes);
    EXPECT_EQ(displayName(mode.get()), "Wrap mode");
  }
}

void expectLabelOnly(const vrntType_t* type, const std::string& text, const std::string& label) {
  EXPECT_EQ(textOf(type), text + " @name=\"" + label + "\"");
}

}  // namespace

TEST(vrntTypeWrapmode, HasTheFourModesByNumberAndRepeats) {
  const TypeHandle type(vrntTypeWrapmode());
  EXPECT_EQ(textOf(type.get()), kWrapModes + " @default=REPEAT : " + kWrapModes);
  EXPECT_EQ(strippedText(type.get()), kWrapModes);
  EXPECT_EQ(keysOf(type.get()), (Labels{"default"}));
  ASSERT_EQ(vrntTypeConstructorCount(type.get()), 4u);
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_WRAP_MODE_CLAMP), "CLAMP");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_WRAP_MODE_BORDER), "BORDER");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_WRAP_MODE_REPEAT), "REPEAT");
  EXPECT_STREQ(vrntTypeConstructorName(type.get(), VRNT_WRAP_MODE_MIRROR), "MIRROR");
  EXPECT_EQ(readAt<std::int32_t>(defaultOf(type.get())), VRNT_WRAP_MODE_REPEAT);
}

TEST(vrntTypeWrapmode, IsThatOfTheWrittenText) {
  EXPECT_EQ(canonical("enum { CLAMP; BORDER; REPEAT; MIRROR; } @default = REPEAT : enum { CLAMP; "
                      "BORDER; REPEAT; MIRROR; }"),
            textOf(TypeHandle(vrntTypeWrapmode()).get()));
}

TEST(vrntTypeTexture, IsAnIndexThatStartsAtNone) {
  const TypeHandle type(vrntTypeTexture());
  EXPECT_EQ(textOf(type.get()), "{ int @default=-1 @name=\"Texture\" texture_ref; }");
  expectTextureStruct(type.get(), "texture_ref", "Texture");
  EXPECT_EQ(vrntMetadataSize(type.get()), 0u);
}

TEST(vrntTypeUVTransformation, IsThreeColumnsOfTwo) {
  const TypeHandle type(vrntTypeUVTransformation());
  EXPECT_EQ(textOf(type.get()), "{ float2 x; float2 y; float2 z; }");
  EXPECT_EQ(vrntTypeSize(type.get()), 24u);
  EXPECT_EQ(parseType("{ float2 x; float2 y; float2 z; }").get(), type.get());
}

TEST(vrntTypeMaterialParam, IsTheTypeOfItsText) {
  for (std::uint32_t number = 0; number < 6; ++number) {
    const TypeHandle type = parameter(number);
    ASSERT_NE(type, nullptr) << number;
    EXPECT_EQ(textOf(type.get()), kMaterialParameters[number]) << number;
    EXPECT_EQ(parseType(kMaterialParameters[number]).get(), type.get()) << number;
    EXPECT_EQ(TypeHandle(vrntTypeStripMetadata(type.get())).get(), type.get()) << number;
  }
}

TEST(vrntTypeMaterialParam, HasNamesForItsNumbers) {
  EXPECT_EQ(labelsOf(parameter(VRNT_MATERIAL_PARAM_COLOUR).get()),
            (Labels{"mode", "color", "texture"}));
  EXPECT_EQ(labelsOf(parameter(VRNT_MATERIAL_PARAM_FLOAT).get()),
            (Labels{"mode", "value", "texture"}));
  EXPECT_EQ(labelsOf(parameter(VRNT_MATERIAL_PARAM_NORMAL).get()),
            (Labels{"enabled", "sampler", "uvTransformation", "normalOffset", "normalScale"}));
  EXPECT_EQ(labelsOf(parameter(VRNT_MATERIAL_PARAM_SIMPLE_COLOUR).get()),
            (Labels{"value", "texture", "transformation", "wrap_u", "wrap_v", "scale", "offset"}));
  EXPECT_EQ(textOf(fieldOf(parameter(VRNT_MATERIAL_PARAM_SIMPLE_FLOAT).get(), {0}).get()), "float");
  EXPECT_EQ(labelsOf(parameter(VRNT_MATERIAL_PARAM_SIMPLE_NORMAL).get()),
            (Labels{"texture", "transformation", "wrap_u", "wrap_v", "scale", "offset"}));
}

TEST(vrntTypeMaterialParam, IsNullForAnyOtherNumber) {
  for (const std::uint32_t number : {6u, 7u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(vrntTypeMaterialParam(number), nullptr) << number;
  }
}

TEST(vrntTypeMaterialParamType, IsTheNumberOfTheParameter) {
  for (std::uint32_t number = 0; number < 6; ++number) {
    EXPECT_EQ(vrntTypeMaterialParamType(parameter(number).get()), static_cast<int>(number));
  }
}

TEST(vrntTypeMaterialParamType, LeavesMetadataOut) {
  for (std::uint32_t number = 0; number < 6; ++number) {
    const std::string text = kMaterialParameters[number];
    EXPECT_EQ(vrntTypeMaterialParamType(parseType(text + " @name=\"More\" @a=1.0").get()),
              static_cast<int>(number));
    // Deep inside, too: each reference to a texture gets an alias, each wrap mode labels.
    std::string annotated = text;
    for (const auto& [plain, more] :
         {std::pair<std::string, std::string>{"int ", "int @default=7 "},
          {"MIRROR; }", "MIRROR @name=\"Mirror\"; } @alias=\"wrap\""},
          {"float[]*", "float @x[] @y*"}}) {
      for (std::size_t at = annotated.find(plain); at != std::string::npos;
           at = annotated.find(plain, at + more.size())) {
        annotated.replace(at, plain.size(), more);
      }
    }
    ASSERT_NE(annotated, text);
    const TypeHandle type = parseType(annotated);
    ASSERT_NE(type.get(), parameter(number).get());
    EXPECT_EQ(vrntTypeMaterialParamType(type.get()), static_cast<int>(number)) << annotated;
  }
}

TEST(vrntTypeMaterialParamType, IsMinusOneForEveryOtherType) {
  std::vector<std::string> others{"float", "void*", "{ }", "enum { A; }", "float[3]"};
  for (const char* text : kMaterialParameters) {
    const std::string all = text;
    others.push_back(all + "[1]");
    others.push_back(all + "*");
    others.push_back(all.substr(0, all.size() - 1) + "int more; }");
  }
  for (const std::string& text : others) {
    EXPECT_EQ(vrntTypeMaterialParamType(parseType(text).get()), -1) << text;
  }
  for (std::uint32_t number = 0; number < 4; ++number) {
    EXPECT_EQ(vrntTypeMaterialParamType(sampler(number).get()), -1) << number;
  }
}

TEST(vrntTypeMaterialParamType, NeedsTheRelationBothWays) {
  const std::pair<std::string, std::string> narrower[] = {
      {"float[]*", "float[3]*"}, {"int texture_ref", "enum { A; } texture_ref"}};
  for (const auto& [wide, narrow] : narrower) {
    const TypeHandle parameterType = parameter(VRNT_MATERIAL_PARAM_SIMPLE_COLOUR);
    std::string text = textOf(parameterType.get());
    text.replace(text.find(wide), wide.size(), narrow);
    const TypeHandle type = parseType(text);
    ASSERT_NE(vrntTypeIsSubType(type.get(), parameterType.get()), 0) << text;
    EXPECT_EQ(vrntTypeMaterialParamType(type.get()), -1) << text;
  }
}

TEST(vrntTypeMaterialParamType, LeavesTheArgumentToTheCaller) {
  TypeHandle type = parseType("{ int material_param_type_probe; }");
  for (int i = 0; i < 100; ++i) EXPECT_EQ(vrntTypeMaterialParamType(type.get()), -1);
  EXPECT_EQ(textOf(type.get()), "{ int material_param_type_probe; }");
}

TEST(vrntTypeSampler, HasTheFieldsOfItsKind) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    const TypeHandle type = sampler(number);
    ASSERT_NE(type, nullptr) << number;
    EXPECT_EQ(strippedText(type.get()), kSamplers[number]) << number;
  }
  EXPECT_EQ(VRNT_SAMPLER_SPECTRUM, 0);
  EXPECT_EQ(VRNT_SAMPLER_NORMAL, 1);
  EXPECT_EQ(VRNT_SAMPLER_FLOAT, 2);
  EXPECT_EQ(VRNT_SAMPLER_SPECTRUM_SPHERE, 3);
}

TEST(vrntTypeSampler, IsLeftAloneBySpecialization) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    const TypeHandle type = sampler(number);
    EXPECT_EQ(keysOf(type.get()), (Labels{"no_specialize"})) << number;
    EXPECT_TRUE(isFlag(type.get(), "no_specialize")) << number;
  }
}

TEST(vrntTypeSampler, HasATextureOfItsKind) {
  const std::pair<const char*, const char*> textures[] = {
      {"spectrum_texture", "Spectrum texture"},
      {"normal_texture", "Normal texture"},
      {"float_texture", "Float texture"},
      {"spectrum_sphere_texture", "Spectrum sphere texture"}};
  for (std::uint32_t number = 0; number < 4; ++number) {
    const auto& [name, label] = textures[number];
    EXPECT_STREQ(vrntTypeFieldLabel(sampler(number).get(), 0), name);
    const TypeHandle texture = fieldOf(sampler(number).get(), {0});
    expectTextureStruct(texture.get(), name, label);
    EXPECT_EQ(keysOf(texture.get()), (Labels{"no_specialize"})) << name;
    EXPECT_TRUE(isFlag(texture.get(), "no_specialize")) << name;
  }
}

TEST(vrntTypeSampler, RepeatsByDefault) {
  for (std::uint32_t number = 0; number < 3; ++number) {
    expectWrapMode2(fieldOf(sampler(number).get(), {1}).get());
  }
}

TEST(vrntTypeSampler, HasALabelledBorder) {
  const TypeHandle spectrum = sampler(VRNT_SAMPLER_SPECTRUM);
  const TypeHandle border = fieldOf(spectrum.get(), {2});
  EXPECT_EQ(strippedText(border.get()), kSpectrum);
  EXPECT_EQ(keysOf(border.get()), (Labels{"default", "name"}));
  EXPECT_EQ(displayName(border.get()), "Border spectrum");
  EXPECT_EQ(
      defaultEntry(border.get()),
      "{ encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; spectrum = &[ 0.0, 0.0, 0.0 ]; }");
  expectLabelOnly(fieldOf(spectrum.get(), {3}).get(), "float", "Border alpha");
  const TypeHandle normal = sampler(VRNT_SAMPLER_NORMAL);
  expectLabelOnly(fieldOf(normal.get(), {2}).get(), "float3", "Border normal");
  expectLabelOnly(fieldOf(normal.get(), {3}).get(), "float", "Border float");
  const TypeHandle number = sampler(VRNT_SAMPLER_FLOAT);
  expectLabelOnly(fieldOf(number.get(), {2}).get(), "float4", "Border");
}

TEST(vrntTypeSampler, StartsWithoutATextureRepeatingWithABlackBorder) {
  const std::string wrap =
      "wrapmode = { u = REPEAT : " + kWrapModes + "; v = REPEAT : " + kWrapModes + "; }; ";
  EXPECT_EQ(printed(defaultOf(sampler(0).get())),
            "{ spectrum_texture = { spectrum_texture = -1; }; " + wrap +
                "border_spectrum = { encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; }; "
                "spectrum = &[ 0.0, 0.0, 0.0 ]; }; border_alpha = 0.0; }");
  EXPECT_EQ(printed(defaultOf(sampler(1).get())),
            "{ normal_texture = { normal_texture = -1; }; " + wrap +
                "border_normal = float3(0.0, 0.0, 0.0); border_float = 0.0; }");
  EXPECT_EQ(printed(defaultOf(sampler(2).get())), "{ float_texture = { float_texture = -1; }; " +
                                                      wrap +
                                                      "border = float4(0.0, 0.0, 0.0, 0.0); }");
  EXPECT_EQ(printed(defaultOf(sampler(3).get())),
            "{ spectrum_sphere_texture = { spectrum_sphere_texture = -1; }; }");
}

TEST(vrntTypeSampler, StartsWithABorderOfThreeFloats) {
  const TypeHandle type = sampler(VRNT_SAMPLER_SPECTRUM);
  const ValueHandle value = defaultOf(type.get());
  EXPECT_EQ(readAt<std::int32_t>(value, 0), -1);
  EXPECT_EQ(readAt<std::int32_t>(value, 4), VRNT_WRAP_MODE_REPEAT);
  EXPECT_EQ(readAt<std::int32_t>(value, 8), VRNT_WRAP_MODE_REPEAT);
  EXPECT_EQ(readAt<std::int32_t>(value, 16), VRNT_ENCODING_RGB);
  const TypeHandle reference = fieldOf(vrntValueType(value.get()), {2, 1});
  const vrntValueView_t place{reference.get(), 24};
  const ValueHandle channels(vrntValueDereference(value.get(), &place));
  ASSERT_NE(channels, nullptr);
  EXPECT_EQ(typeTextOf(channels), "float[3]");
  EXPECT_EQ((readAt<std::array<float, 3>>(channels)), (std::array<float, 3>{}));
}

TEST(vrntTypeSampler, IsNullForAnyOtherNumber) {
  for (const std::uint32_t number : {4u, 5u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(vrntTypeSampler(number), nullptr) << number;
  }
}

TEST(vrntTypeSamplerType, IsTheNumberOfTheSampler) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    EXPECT_EQ(vrntTypeSamplerType(sampler(number).get()), static_cast<int>(number));
  }
}

TEST(vrntTypeSamplerType, LeavesMetadataOut) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    EXPECT_EQ(vrntTypeSamplerType(parseType(kSamplers[number]).get()), static_cast<int>(number));
    EXPECT_EQ(vrntTypeSamplerType(
                  parseType(kSamplers[number] + " @alias=\"sampler\" @name=\"Other\"").get()),
              static_cast<int>(number));
  }
  // The samplers inside the parameters.
  EXPECT_EQ(vrntTypeSamplerType(fieldOf(parameter(0).get(), {2, 0}).get()), 0);
  EXPECT_EQ(vrntTypeSamplerType(fieldOf(parameter(1).get(), {2, 0}).get()), 2);
  EXPECT_EQ(vrntTypeSamplerType(fieldOf(parameter(2).get(), {1}).get()), 1);
}

TEST(vrntTypeSamplerType, IsMinusOneForEveryOtherType) {
  for (const char* text :
       {"int", "{ }", "void*",
        "{ { int float_sphere_texture; } "
        "float_sphere_texture; }",
        "{ { int index; } spectrum_sphere_texture; }",
        "{ { int spectrum_sphere_texture; } texture; }",
        // May stand for the sampler, but not the other way.
        "{ { enum { A; } spectrum_sphere_texture; } spectrum_sphere_texture; }"}) {
    EXPECT_EQ(vrntTypeSamplerType(parseType(text).get()), -1) << text;
  }
  for (std::uint32_t number = 0; number < 6; ++number) {
    EXPECT_EQ(vrntTypeSamplerType(parameter(number).get()), -1) << number;
  }
  EXPECT_EQ(vrntTypeSamplerType(TypeHandle(vrntTypeTexture()).get()), -1);
}

TEST(FixedTypes, AreThoseOfTheFirstCallWithOrWithoutAHandle) {
  for (const FixedType& fixed : kFixedTypes) {
    const vrntType_t* const address = destroyedAddress(fixed.get());
    const TypeHandle filler = parseType("{ int filler_of_" + std::to_string(vrntTypeSize(address)) +
                                        "_bytes; float @a=1.0 b; }");
    const TypeHandle again(fixed.get());
    const TypeHandle more(fixed.get());
    EXPECT_EQ(again.get(), address) << fixed.name;
    EXPECT_EQ(more.get(), address) << fixed.name;
  }
}

TEST(FixedTypes, HaveTextsThatParseToTheSame) {
  for (const FixedType& fixed : kFixedTypes) {
    const TypeHandle type(fixed.get());
    EXPECT_EQ(canonical(textOf(type.get())), textOf(type.get())) << fixed.name;
  }
}
