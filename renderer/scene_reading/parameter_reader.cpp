#include "scene_reading/parameter_reader.hpp"

#include <cmath>

namespace vrn_render {
namespace {

Spectrum colourFor(const Rgb& rgb, ColourUse use) {
  const Colours& colours = Colours::get();
  switch (use) {
    case ColourUse::Reflectance:
      return colours.reflectance(rgb);
    case ColourUse::Factor:
      return colours.factor(rgb);
    case ColourUse::Emission:
      return colours.emission(rgb);
  }
  return Spectrum();
}

void makeUsable(Spectrum& spectrum, ColourUse use) {
  for (int band = 0; band < kBands; ++band) {
    if (!std::isfinite(spectrum[band])) spectrum[band] = 0;
  }
  spectrum.clamp(0, use == ColourUse::Reflectance ? 1.0F : 1e30F);
}

std::optional<Spectrum> readUniversal(const ValueReader& at, ColourUse use) {
  const std::optional<ValueReader> encoding = at.find("encoding");
  const bool isSampled = encoding && encoding->integer() == VRNT_ENCODING_SPECTRAL;
  Spectrum result;
  // The colour of light is a colour on a screen: white is daylight, not equal energy.
  if (use == ColourUse::Emission && !isSampled) {
    float rgb[3] = {};
    if (vrntValueToRGB(at.value(), &at.place(), VRNT_COLOUR_SPACE_D65, rgb) != 0)
      return std::nullopt;
    result = colourFor({rgb[0], rgb[1], rgb[2]}, use);
  } else {
    std::array<float, 2 * kBands> pairs{};
    for (int band = 0; band < kBands; ++band) {
      pairs[2 * static_cast<std::size_t>(band)] = bandBegin(band);
    }
    if (vrntValueToSPD(at.value(), &at.place(), static_cast<std::int32_t>(pairs.size()),
                       pairs.data()) != 0) {
      return std::nullopt;
    }
    for (int band = 0; band < kBands; ++band) {
      result[band] = pairs[2 * static_cast<std::size_t>(band) + 1];
    }
  }
  makeUsable(result, use);
  return result;
}

Wrap wrapOf(const ValueReader& at, Wrap otherwise) {
  const std::string_view name = at.constructor();
  if (sameLabel(name, "clamp")) return Wrap::Clamp;
  if (sameLabel(name, "border")) return Wrap::Border;
  if (sameLabel(name, "repeat")) return Wrap::Repeat;
  if (sameLabel(name, "mirror")) return Wrap::Mirror;
  return otherwise;
}

bool endsWith(std::string_view text, std::string_view end) {
  return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

bool namesTexture(std::string_view label) {
  return label == "texture_ref" || label == "index" || label == "texture" ||
         endsWith(label, "_texture");
}

void readMap(const ValueReader& at, TextureLookup& lookup) {
  const auto column = [&at](const char* label) {
    const std::optional<ValueReader> found = at.find(label);
    const auto lanes = found ? found->lanes() : std::nullopt;
    return lanes ? Vec2{(*lanes)[0], (*lanes)[1]} : Vec2{};
  };
  const Vec2 x = column("x");
  const Vec2 y = column("y");
  const Vec2 z = column("z");
  // A map that nobody set is all zero.
  const bool isSet = x.x != 0 || x.y != 0 || y.x != 0 || y.y != 0;
  if (!isSet || !std::isfinite(x.x + x.y + y.x + y.y + z.x + z.y)) return;
  lookup.x = x;
  lookup.y = y;
  lookup.z = z;
}

void collectLookup(const ValueReader& at, TextureLookup& lookup, int depth) {
  const std::uint32_t count = at.fieldCount();
  if (depth > 4) return;
  for (std::uint32_t index = 0; index < count; ++index) {
    const ValueReader field = at.field(index);
    const std::string_view label = at.label(index);
    if (const std::optional<std::int32_t> number = field.integer(); number) {
      if (namesTexture(label)) lookup.texture = std::max(lookup.texture, *number);
      if (sameLabel(label, "texcoord") || sameLabel(label, "texcoord_set"))
        lookup.set = std::max(0, *number);
      if (label == "u" || label == "wrap_u") lookup.u = wrapOf(field, lookup.u);
      if (label == "v" || label == "wrap_v") lookup.v = wrapOf(field, lookup.v);
      continue;
    }
    if (sameLabel(label, "uvTransformation") || sameLabel(label, "transformation")) {
      readMap(field, lookup);
      continue;
    }
    if (label.substr(0, 6) == "border") {
      if (const auto lanes = field.lanes(); lanes) {
        for (std::size_t i = 0; i < static_cast<std::size_t>(field.laneCount()); ++i)
          lookup.border[i] = (*lanes)[i];
      } else if (const auto number = field.number(); number && label == "border_alpha") {
        lookup.border[3] = *number;
      } else if (field.isSpectrum()) {
        float rgb[3];
        if (vrntValueToRGB(field.value(), &field.place(), VRNT_COLOUR_SPACE_D65, rgb) == 0) {
          for (std::size_t i = 0; i < 3; ++i) lookup.border[i] = rgb[i];
        }
      }
      continue;
    }
    if (!field.isSpectrum()) collectLookup(field, lookup, depth + 1);
  }
  for (float& lane : lookup.border) {
    if (!std::isfinite(lane)) lane = 0;
  }
}

// Which of the two a parameter uses. One that has no mode uses a texture that is there.
bool usesTexture(const ValueReader& at, const std::optional<TextureLookup>& lookup) {
  if (!lookup) return false;
  const std::optional<ValueReader> mode = at.find("mode");
  return !mode || sameLabel(mode->constructor(), "texture");
}

// The `scale` and `offset` of a texture: in the parameter itself or in its struct `texture`.
std::optional<ValueReader> ofTexture(const ValueReader& at, std::string_view shortLabel,
                                     std::string_view label) {
  if (const auto found = at.findAny({label, shortLabel}); found) return found;
  const std::optional<ValueReader> texture = at.find("texture");
  return texture ? texture->findAny({label, shortLabel}) : std::nullopt;
}

}  // namespace

std::optional<Spectrum> readSpectrum(const ValueReader& at, ColourUse use) {
  if (at.isSpectrum()) return readUniversal(at, use);
  std::optional<std::array<float, 4>> lanes = at.lanes();
  if (lanes && at.laneCount() < 3) return std::nullopt;
  if (!lanes) {
    if (const std::optional<float> number = at.number(); number) {
      lanes = {*number, *number, *number, 0};
      if (use != ColourUse::Emission) {
        Spectrum grey(*number);
        makeUsable(grey, use);
        return grey;
      }
    } else if (at.fieldCount() == 1 && at.label(0) == "spectrum") {
      lanes = at.field(0).lanes();
    }
  }
  if (!lanes) return std::nullopt;
  for (float& lane : *lanes) lane = std::isfinite(lane) ? std::max(lane, 0.0F) : 0.0F;
  Spectrum result = colourFor({(*lanes)[0], (*lanes)[1], (*lanes)[2]}, use);
  makeUsable(result, use);
  return result;
}

std::optional<TextureLookup> readLookup(const ValueReader& at) {
  TextureLookup lookup;
  if (const std::optional<std::int32_t> index = at.integer(); index) {
    lookup.texture = *index;
  } else {
    collectLookup(at, lookup, 0);
  }
  if (lookup.texture < 0) return std::nullopt;
  return lookup;
}

std::optional<ColourParameter> readColour(const ValueReader& at, ColourUse use) {
  ColourParameter result;
  if (const std::optional<Spectrum> plain = readSpectrum(at, use); plain) {
    result.value = *plain;
    return result;
  }
  if (at.fieldCount() == 0) return std::nullopt;
  const std::optional<TextureLookup> lookup = readLookup(at);
  const std::optional<ValueReader> value = at.findAny({"color", "colour", "value"});
  const std::optional<Spectrum> colour = value ? readSpectrum(*value, use) : std::nullopt;
  if (!lookup && !colour) return std::nullopt;
  if (!usesTexture(at, lookup)) {
    if (colour) result.value = *colour;
    return result;
  }
  result.lookup = *lookup;
  if (use == ColourUse::Emission) result.value = Colours::get().daylight();
  if (const auto scale = ofTexture(at, "scale", "colorScale"); scale) {
    result.scale = readSpectrum(*scale, ColourUse::Factor).value_or(Spectrum(1.0F));
    result.isScaled = true;
  }
  if (const auto offset = ofTexture(at, "offset", "colorOffset"); offset) {
    result.offset = readSpectrum(*offset, ColourUse::Factor).value_or(Spectrum(0.0F));
    result.isScaled = true;
  }
  return result;
}

std::optional<NumberParameter> readNumber(const ValueReader& at) {
  NumberParameter result;
  const auto finite = [](float number) { return std::isfinite(number) ? number : 0.0F; };
  if (const std::optional<float> plain = at.number(); plain) {
    result.value = finite(*plain);
    return result;
  }
  if (at.isSpectrum()) {
    const std::optional<Spectrum> spectrum = readUniversal(at, ColourUse::Factor);
    if (!spectrum) return std::nullopt;
    result.value = spectrum->mean();
    return result;
  }
  if (at.fieldCount() == 0) return std::nullopt;
  const std::optional<TextureLookup> lookup = readLookup(at);
  const std::optional<ValueReader> value = at.find("value");
  const std::optional<float> number = value ? value->number() : std::nullopt;
  if (!lookup && !number) return std::nullopt;
  if (!usesTexture(at, lookup)) {
    result.value = finite(number.value_or(0));
    return result;
  }
  result.value = 1;
  result.lookup = *lookup;
  if (const auto scale = ofTexture(at, "scale", "valueScale"); scale)
    result.scale = finite(scale->number().value_or(1));
  if (const auto offset = ofTexture(at, "offset", "valueOffset"); offset)
    result.offset = finite(offset->number().value_or(0));
  return result;
}

std::optional<EmissionParameter> readEmission(const ValueReader& at) {
  EmissionParameter result;
  const std::optional<ValueReader> unit = at.find("unit");
  const std::optional<ValueReader> colour = at.findAny({"color", "colour"});
  if (unit && colour) {
    const std::optional<ColourParameter> read = readColour(*colour, ColourUse::Emission);
    if (!read) return std::nullopt;
    result.colour = *read;
    const float luminance = Colours::get().luminance(result.colour.value);
    const float value = at.numberAt("value", 1);
    result.colour.value *=
        luminance > 0 && std::isfinite(value) ? std::max(value, 0.0F) / luminance : 0.0F;
    switch (unit->integer().value_or(-1)) {
      case VRNT_LIGHT_UNIT_LUMEN:
        result.unit = LightUnit::Lumen;
        break;
      case VRNT_LIGHT_UNIT_CANDELA:
        result.unit = LightUnit::Candela;
        break;
      case VRNT_LIGHT_UNIT_LUX:
        result.unit = LightUnit::Lux;
        break;
      default:
        result.unit = LightUnit::Nit;
        break;
    }
    return result;
  }
  const std::optional<ColourParameter> read = readColour(at, ColourUse::Emission);
  if (!read) return std::nullopt;
  result.colour = *read;
  return result;
}

}  // namespace vrn_render
