#include "colour/material_parameter_types.hpp"

#include <cstddef>

#include "colour/type_construction.hpp"

namespace qex::vornath {
namespace {

// A text of a fixed length and its terminating NUL.
template <std::size_t Length>
struct JoinedText {
  char text[Length + 1] = {};

  constexpr operator const char*() const { return text; }  // NOLINT(google-explicit-constructor)
};

template <std::size_t Length, std::size_t Size>
constexpr void appendText(JoinedText<Length>& joined, std::size_t& end, const char (&part)[Size]) {
  for (std::size_t i = 0; i + 1 < Size; ++i) joined.text[end++] = part[i];
}

// Joins texts, each an array that ends in a NUL.
template <std::size_t... Sizes>
constexpr auto joinText(const char (&... parts)[Sizes]) {
  JoinedText<(0 + ... + (Sizes - 1))> joined;
  std::size_t end = 0;
  (appendText(joined, end, parts), ...);
  return joined;
}

constexpr char kSpectrum[] = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";
constexpr char kWrapMode[] = "enum { CLAMP; BORDER; REPEAT; MIRROR; }";
constexpr char kTextureReference[] = "{ int texture_ref; }";
constexpr char kTransformation[] = "{ float2 x; float2 y; float2 z; }";
// The columns have three elements, unlike those of the transformation above.
constexpr char kUvTransformation[] = "{ float3 x; float3 y; float3 z; }";
constexpr auto kWrapModes = joinText("{ ", kWrapMode, " u; ", kWrapMode, " v; }");

constexpr auto kSpectrumSampler =
    joinText("{ { int spectrum_texture; } spectrum_texture; ", kWrapModes.text, " wrapmode; ",
             kSpectrum, " border_spectrum; float border_alpha; }");
constexpr auto kFloatSampler = joinText("{ { int float_texture; } float_texture; ", kWrapModes.text,
                                        " wrapmode; float4 border; }");
constexpr auto kNormalSampler =
    joinText("{ { int normal_texture; } normal_texture; ", kWrapModes.text,
             " wrapmode; float3 border_normal; float border_float; }");

// `mode` selects the value or the texture.
constexpr auto kColour =
    joinText("{ enum { VALUE; TEXTURE; } mode; ", kSpectrum, " color; { ", kSpectrumSampler.text,
             " sampler; ", kUvTransformation, " uvTransformation; ", kSpectrum, " colorOffset; ",
             kSpectrum, " colorScale; } texture; }");
constexpr auto kFloat = joinText("{ enum { VALUE; TEXTURE; } mode; float value; { ",
                                 kFloatSampler.text, " sampler; ", kUvTransformation,
                                 " uvTransformation; float valueOffset; float valueScale; } "
                                 "texture; }");
constexpr auto kNormal =
    joinText("{ bool enabled; ", kNormalSampler.text, " sampler; ", kUvTransformation,
             " uvTransformation; float3 normalOffset; float3 normalScale; }");

// The flat forms have the settings of the texture beside the value, in the same struct.
constexpr auto kTexturePlacement =
    joinText(kTextureReference, " texture; ", kTransformation, " transformation; ", kWrapMode,
             " wrap_u; ", kWrapMode, " wrap_v; ");
constexpr auto kSimpleColour = joinText("{ ", kSpectrum, " value; ", kTexturePlacement.text,
                                        kSpectrum, " scale; ", kSpectrum, " offset; }");
constexpr auto kSimpleFloat =
    joinText("{ float value; ", kTexturePlacement.text, "float scale; float offset; }");
constexpr auto kSimpleNormal =
    joinText("{ ", kTexturePlacement.text, "float3 scale; float3 offset; }");

// In the order of their codes.
constexpr std::array<const char*, kMaterialParameterCount> kTexts{
    kColour.text,       kFloat.text,       kNormal.text,
    kSimpleColour.text, kSimpleFloat.text, kSimpleNormal.text};

}  // namespace

const InternedType& materialParameterType(std::uint32_t code) {
  return ParsedTypes<kTexts>::at(code);
}

std::int32_t materialParameterCode(const InternedType& type) {
  return codeOfSameType(type, kMaterialParameterCount, materialParameterType);
}

}  // namespace qex::vornath
