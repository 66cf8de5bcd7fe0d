#include "shading/spectrum.hpp"

#include <vector>

namespace vrn_render {
namespace {

using Pairs = std::array<float, 2 * (kBands + 2)>;

// The grid with its closing pairs, and no light.
Pairs emptyPairs() {
  Pairs pairs{};
  for (int band = 0; band <= kBands; ++band) {
    pairs[static_cast<std::size_t>(2 * band + 2)] = bandBegin(band);
  }
  return pairs;
}

void convert(Pairs& pairs, std::uint32_t encoding, float* out, std::int32_t space) {
  vrntSpectrumRec from{VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()),
                       pairs.data()};
  vrntSpectrumRec to{encoding, 0, out};
  vrntSpectrumConvert(&from, &to, space);
}

float weighted(const Spectrum& a, const Spectrum& weights) { return (a * weights).mean(); }

}  // namespace

const Colours& Colours::get() {
  static const Colours colours;
  return colours;
}

Colours::Colours() {
  Spectrum underDaylight;
  for (int band = 0; band < kBands; ++band) {
    Pairs pairs = emptyPairs();
    // As many as there are bands, since mean() divides by them.
    pairs[static_cast<std::size_t>(2 * band + 3)] = kBands;
    float rgb[3] = {};
    convert(pairs, VRNT_ENCODING_RGB, rgb, VRNT_COLOUR_SPACE_E);
    for (std::size_t channel = 0; channel < 3; ++channel) screen_[channel][band] = rgb[channel];
    convert(pairs, VRNT_ENCODING_LUMINANCE, &luminance_[band], VRNT_COLOUR_SPACE_E);
    convert(pairs, VRNT_ENCODING_LUMINANCE, &underDaylight[band], VRNT_COLOUR_SPACE_D65);
  }
  for (int band = 0; band < kBands; ++band) {
    // The light of a band under D65 beside that under equal energy is what D65 has of it.
    daylight_[band] = luminance_[band] > 0 ? underDaylight[band] / luminance_[band] : 0;
  }
  const float scale = luminance(daylight_);
  if (scale > 0) daylight_ *= 1 / scale;

  for (unsigned bits = 0; bits < colours_.size(); ++bits) {
    float rgb[3] = {bits & 1 ? 1.0F : 0.0F, bits & 2 ? 1.0F : 0.0F, bits & 4 ? 1.0F : 0.0F};
    Pairs pairs = emptyPairs();
    vrntSpectrumRec from{VRNT_ENCODING_RGB, 3, rgb};
    vrntSpectrumRec to{VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()),
                       pairs.data()};
    vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_D65);
    for (int band = 0; band < kBands; ++band) {
      colours_[bits][band] = pairs[static_cast<std::size_t>(2 * band + 3)];
    }
  }
}

Rgb Colours::toRgb(const Spectrum& radiance) const {
  return {weighted(radiance, screen_[0]), weighted(radiance, screen_[1]),
          weighted(radiance, screen_[2])};
}

float Colours::luminance(const Spectrum& radiance) const { return weighted(radiance, luminance_); }

// The part that all three channels have is white, what two have beyond it is cyan, magenta or
// yellow, and the rest is red, green or blue.
Spectrum Colours::combined(const Rgb& colour) const {
  std::array<std::pair<float, unsigned>, 3> parts{{{colour.r, 1U}, {colour.g, 2U}, {colour.b, 4U}}};
  std::sort(parts.begin(), parts.end());
  Spectrum result;
  result.add(colours_[7], parts[0].first);
  result.add(colours_[parts[1].second | parts[2].second], parts[1].first - parts[0].first);
  result.add(colours_[parts[2].second], parts[2].first - parts[1].first);
  return result;
}

Spectrum Colours::reflectance(const Rgb& colour) const {
  Spectrum result = combined(colour);
  result.clamp(0, 1);
  return result;
}

Spectrum Colours::factor(const Rgb& colour) const {
  Spectrum result = combined(colour);
  result.clamp(0, 3e38F);
  return result;
}

Spectrum Colours::emission(const Rgb& colour) const { return factor(colour) * daylight_; }

}  // namespace vrn_render
