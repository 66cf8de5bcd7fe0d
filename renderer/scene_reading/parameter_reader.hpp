/// Reads the parameters of materials and lights: colours, numbers and texture lookups.
#ifndef VRN_RENDER_SCENE_READING_PARAMETER_READER_HPP
#define VRN_RENDER_SCENE_READING_PARAMETER_READER_HPP

#include <optional>

#include "scene_reading/scene_description.hpp"
#include "scene_reading/value_reader.hpp"

namespace vrn_render {

/// What a colour is used for: how much a surface reflects, a factor, or light.
enum class ColourUse { Reflectance, Factor, Emission };

/// The unit of a light's emission; None for a radiance without one.
enum class LightUnit { None, Lumen, Candela, Lux, Nit };

struct EmissionParameter {
  ColourParameter colour;
  LightUnit unit = LightUnit::None;  ///< with a unit, the colour has a luminance of the value
};

/// Samples a spectrum, a number or three numbers; empty for another type.
std::optional<Spectrum> readSpectrum(const ValueReader& at, ColourUse use);

/// Reads a colour in one of its forms: what readSpectrum() reads, a texture, or a parameter type of
/// the library, whose mode selects the value or the texture.
std::optional<ColourParameter> readColour(const ValueReader& at, ColourUse use);
std::optional<NumberParameter> readNumber(const ValueReader& at);
/// Reads a colour of light, or the library's emission type.
std::optional<EmissionParameter> readEmission(const ValueReader& at);

/// Reads where a texture is looked up: from a reference, a sampler, or a struct that has one.
/// Empty if no texture is named.
std::optional<TextureLookup> readLookup(const ValueReader& at);

}  // namespace vrn_render

#endif
