/// A read-only spectrum: an encoding and borrowed floats. It has all functions that read spectra;
/// embed/spectrum.hpp has a spectrum that owns its floats.
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

/// One luminance, linear red, green and blue, or spectral pairs (see step_function.hpp). A spectrum
/// without floats is black in every encoding. A view is valid as long as the floats.
class SpectrumView {
 public:
  /// Unless `floats` is empty, it must have at least 1 float for Luminance and 3 for Rgb.
  SpectrumView(SpectrumEncoding encoding, std::span<const float> floats) noexcept
      : encoding_(encoding), floats_(floats) {}

  SpectrumEncoding encoding() const noexcept { return encoding_; }
  std::span<const float> floats() const noexcept { return floats_; }
  bool empty() const noexcept { return floats_.empty(); }

  /// Returns the mean amplitude between each two adjacent wavelengths, under D65: one fewer than
  /// there are wavelengths.
  /// Errors: throws as requireWavelengths() does, even for an empty spectrum.
  std::vector<float> sampleAt(std::span<const float> lambdas) const;

  /// Returns the colour as XYZ. Luminance is converted like a grey Rgb. Only a spectral
  /// distribution depends on the illuminant.
  Xyz toXyz(Illuminant illuminant) const noexcept;
  /// Returns the stored triple, or the colour of a spectral distribution, unclamped.
  Rgb toRgb(Illuminant illuminant) const noexcept;
  /// Returns the Y of toXyz().
  float toLuminance(Illuminant illuminant) const noexcept;

  /// Returns the stored triple, or the luminance as a grey. Undefined for a spectral or empty
  /// spectrum.
  Rgb storedRgb() const noexcept;

  // The functions below are for programs that build the library in. They are defined in
  // embed/spectrum_sampling.cpp.

  /// Returns the mean amplitude from `lambda` to `lambda + deltaLambda` nm. Luminance is the same
  /// at every wavelength. Rgb is reconstructed, and only this depends on the illuminant. Errors:
  /// throws as the functions of embed/wavelength.hpp do, in every encoding, but not for an empty
  /// spectrum.
  float bandAverage(float lambda, float deltaLambda, Illuminant illuminant) const;

  /// Returns `count` mean amplitudes, under D65; band i begins at i * deltaLambda + lambda0.
  /// Errors: throws as bandAverage() does.
  std::vector<float> sampleUniform(float lambda0, float deltaLambda, std::size_t count) const;

  /// Does the same on a fixed grid: `Bands` bands of equal width from 400 to 720 nm.
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
