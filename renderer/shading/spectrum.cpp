#include "shading/spectrum.hpp"

#include <vector>

// Builds a function for two widths of vector units; the program takes the one that the processor
// has. Both round alike. A sanitizer would look at the choice before it is ready.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && \
    !defined(__SANITIZE_ADDRESS__)
#define VRN_RENDER_WIDE __attribute__((target_clones("avx2", "default")))
#else
#define VRN_RENDER_WIDE
#endif

namespace vrn_render {
namespace {

using Pairs = std::array<float, 2 * (kBands + 2)>;

// The grid with its closing pairs, and no light.
Pairs emptyPairs() {
  Pairs pairs{};
  for (int band = 0; band <= kBands; ++band) {
    pairs[2 * static_cast<std::size_t>(band) + 2] = bandBegin(band);
  }
  return pairs;
}

void convert(Pairs& pairs, std::uint32_t encoding, float* out, std::int32_t space) {
  vrntSpectrumRec from{VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()),
                       pairs.data()};
  vrntSpectrumRec to{encoding, 0, out};
  vrntSpectrumConvert(&from, &to, space);
}

// Eight amplitudes of a spectrum, which is not aligned to so many. A compiler makes them fit the
// vector units.
using Lanes __attribute__((vector_size(32), may_alias, aligned(16))) = float;

// Returns the means of the products of a spectrum with four others.
VRN_RENDER_WIDE void weigh(const Spectrum& a, const std::array<Spectrum, 4>& weights,
                           std::array<float, 4>& means) {
  // Eight sums for each, which fit a register or two. Their order is that of Spectrum::mean().
  const Lanes* const from = reinterpret_cast<const Lanes*>(a.v.data());
  const Lanes* const red = reinterpret_cast<const Lanes*>(weights[0].v.data());
  const Lanes* const green = reinterpret_cast<const Lanes*>(weights[1].v.data());
  const Lanes* const blue = reinterpret_cast<const Lanes*>(weights[2].v.data());
  const Lanes* const luminance = reinterpret_cast<const Lanes*>(weights[3].v.data());
  Lanes sums[4] = {};
  for (std::size_t i = 0; i < kPaddedBands / 8; ++i) {
    sums[0] += from[i] * red[i];
    sums[1] += from[i] * green[i];
    sums[2] += from[i] * blue[i];
    sums[3] += from[i] * luminance[i];
  }
  for (std::size_t k = 0; k < 4; ++k) {
    const Lanes& s = sums[k];
    means[k] =
        (((s[0] + s[1]) + (s[2] + s[3])) + ((s[4] + s[5]) + (s[6] + s[7]))) * (1.0F / kBands);
  }
}

VRN_RENDER_WIDE void addScatteredOnce(Spectrum& to, const Spectrum& throughput,
                                      const Spectrum& light, const Spectrum& reflectance,
                                      float once) {
  for (std::size_t i = 0; i < kPaddedBands; ++i) {
    to.v[i] += throughput.v[i] * light.v[i] * (once * reflectance.v[i]);
  }
}

VRN_RENDER_WIDE void addScatteredAll(Spectrum& to, const Spectrum& throughput,
                                     const Spectrum& light, const Spectrum& reflectance,
                                     Scattering s) {
  for (std::size_t i = 0; i < kPaddedBands; ++i) {
    const float r = reflectance.v[i];
    to.v[i] += throughput.v[i] * light.v[i] * (s.white + (s.once + s.twice * r) * r);
  }
}

VRN_RENDER_WIDE void scatterAll(Spectrum& throughput, const Spectrum& reflectance, Scattering s) {
  for (std::size_t i = 0; i < kPaddedBands; ++i) {
    const float r = reflectance.v[i];
    throughput.v[i] *= s.white + (s.once + s.twice * r) * r;
  }
}

}  // namespace

void Spectrum::addScattered(const Spectrum& throughput, const Spectrum& light,
                            const Spectrum& reflectance, Scattering scattering) {
  if (scattering.white == 0 && scattering.twice == 0) {
    addScatteredOnce(*this, throughput, light, reflectance, scattering.once);
  } else {
    addScatteredAll(*this, throughput, light, reflectance, scattering);
  }
}

void Spectrum::scatter(const Spectrum& reflectance, Scattering scattering) {
  scatterAll(*this, reflectance, scattering);
}

const Colours& Colours::get() {
  static const Colours colours;
  return colours;
}

Colours::Colours() {
  Spectrum underDaylight;
  for (int band = 0; band < kBands; ++band) {
    Pairs pairs = emptyPairs();
    // As many as there are bands, since mean() divides by them.
    pairs[2 * static_cast<std::size_t>(band) + 3] = kBands;
    float rgb[3] = {};
    convert(pairs, VRNT_ENCODING_RGB, rgb, VRNT_COLOUR_SPACE_E);
    for (std::size_t channel = 0; channel < 3; ++channel) screen_[channel][band] = rgb[channel];
    convert(pairs, VRNT_ENCODING_LUMINANCE, &screen_[3][band], VRNT_COLOUR_SPACE_E);
    convert(pairs, VRNT_ENCODING_LUMINANCE, &underDaylight[band], VRNT_COLOUR_SPACE_D65);
  }
  for (int band = 0; band < kBands; ++band) {
    // The light of a band under D65 beside that under equal energy is what D65 has of it.
    daylight_[band] = screen_[3][band] > 0 ? underDaylight[band] / screen_[3][band] : 0;
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
      colours_[bits][band] = pairs[2 * static_cast<std::size_t>(band) + 3];
    }
  }

  // Sums of red, green and blue light, by the inverse of the matrix of what they show.
  std::array<Spectrum, 3> lights;
  Transform shown;
  Vec3* const columns[] = {&shown.x, &shown.y, &shown.z};
  for (std::size_t k = 0; k < 3; ++k) {
    lights[k] = colours_[std::size_t{1} << k] * daylight_;
    const Rgb rgb = toRgb(lights[k]);
    *columns[k] = {rgb.r, rgb.g, rgb.b};
  }
  const Transform parts = inverse(shown);
  const Vec3 shares[] = {parts.x, parts.y, parts.z};
  for (std::size_t k = 0; k < 3; ++k) {
    primaries_[k].add(lights[0], shares[k].x);
    primaries_[k].add(lights[1], shares[k].y);
    primaries_[k].add(lights[2], shares[k].z);
  }
}

ScreenColour Colours::toScreen(const Spectrum& radiance) const {
  std::array<float, 4> means;
  weigh(radiance, screen_, means);
  return {{means[0], means[1], means[2]}, means[3]};
}

Rgb Colours::toRgb(const Spectrum& radiance) const { return toScreen(radiance).rgb; }

float Colours::luminance(const Spectrum& radiance) const { return toScreen(radiance).luminance; }

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

Spectrum Colours::background(const Rgb& colour) const {
  // Not in the result: GCC does not align every temporary that takes one as wide vectors need it.
  const Spectrum near = emission(colour);
  const Rgb shown = toRgb(near);
  Spectrum result = near;
  result.add(primaries_[0], colour.r - shown.r);
  result.add(primaries_[1], colour.g - shown.g);
  result.add(primaries_[2], colour.b - shown.b);
  return result;
}

}  // namespace vrn_render
