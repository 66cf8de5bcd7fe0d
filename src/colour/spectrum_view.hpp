/// A spectrum to read: an encoding and borrowed floats. Here are all readings of it; spectrum.hpp
/// has the one that owns its floats.
#ifndef VORNATH_COLOUR_SPECTRUM_VIEW_HPP
#define VORNATH_COLOUR_SPECTRUM_VIEW_HPP

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "colour/colour_space.hpp"
#include "colour/illuminant.hpp"
#include "types/spectrum_encoding.hpp"

namespace qex::vornath {

/// One luminance, linear red, green and blue, or spectral pairs (see step_function.hpp). Without
/// floats it is black in every encoding. Plain data: it lives no longer than the floats.
class SpectrumView {
 public:
  /// At least 1 float for Luminance and 3 for Rgb, unless there are none.
  SpectrumView(SpectrumEncoding encoding, std::span<const float> floats) noexcept
      : encoding_(encoding), floats_(floats) {}

  SpectrumEncoding encoding() const noexcept { return encoding_; }
  std::span<const float> floats() const noexcept { return floats_; }
  bool empty() const noexcept { return floats_.empty(); }

  /// The band averages between adjacent wavelengths, one fewer than these, under D65. Throws what
  /// requireWavelengths() does, and for an empty spectrum as well.
  std::vector<float> sampleAt(std::span<const float> lambdas) const;

  /// Luminance counts as a grey Rgb; a spectral one is seen under the illuminant.
  Xyz toXyz(Illuminant illuminant) const noexcept;
  /// The stored triple, or the spectral colour, unclamped.
  Rgb toRgb(Illuminant illuminant) const noexcept;
  /// The Y of toXyz().
  float toLuminance(Illuminant illuminant) const noexcept;

  /// The stored triple, or the luminance as a grey. Undefined for a spectral or empty spectrum.
  Rgb storedRgb() const noexcept;

  // For programs that build the library in; defined in embed/spectrum_sampling.cpp.

  /// The mean amplitude from `lambda` to `lambda + deltaLambda` nm. Luminance is the same at every
  /// wavelength; Rgb is reconstructed, and only there the illuminant counts. Throws what
  /// wavelengths.hpp says, in every encoding, but not for an empty spectrum.
  float bandAverage(float lambda, float deltaLambda, Illuminant illuminant) const;

  /// `count` band averages; band i begins at i * deltaLambda + lambda0. Under D65. Throws as
  /// bandAverage() does.
  std::vector<float> sampleUniform(float lambda0, float deltaLambda, std::size_t count) const;

  /// sampleUniform() on the fixed grids of compact spectra: Bands bands over 320 nm from 400 nm.
  template <std::size_t Bands>
  std::array<float, Bands> sampleCompact() const {
    static_assert(Bands == 8 || Bands == 16 || Bands == 32);
    std::array<float, Bands> bands;
    fillUniform(400.0F, 320.0F / static_cast<float>(Bands), bands);
    return bands;
  }

 private:
  void fillUniform(float lambda0, float deltaLambda, std::span<float> bands) const;

  SpectrumEncoding encoding_;
  std::span<const float> floats_;
};

}  // namespace qex::vornath

#endif
