/// Spectra on the library's grid: 61 bands of 5 nm from 400 nm.
#ifndef VRN_RENDER_SHADING_SPECTRUM_HPP
#define VRN_RENDER_SHADING_SPECTRUM_HPP

#include <algorithm>
#include <array>
#include <cstdint>

#include "geometry/vector.hpp"
#include "vornath_data/vrnt.h"

namespace vrn_render {

inline constexpr int kBands = 61;
/// A multiple of what a vector unit takes at once. The bands that do not exist are zero.
inline constexpr int kPaddedBands = 64;

/// Returns the wavelength at which a band begins, in nm.
inline constexpr float bandBegin(int band) { return 400.0F + 5.0F * static_cast<float>(band); }

/// The fraction of light that goes on at a surface, in the bands in which the surface has the
/// reflectance R: white + once R + twice R^2. So most of the work at a surface does not grow with
/// the number of bands.
struct Scattering {
  float white = 0, once = 0, twice = 0;

  float at(float reflectance) const { return white + (once + twice * reflectance) * reflectance; }
  bool isZero() const { return white == 0 && once == 0 && twice == 0; }
  Scattering& operator*=(float factor) {
    white *= factor;
    once *= factor;
    twice *= factor;
    return *this;
  }
};

/// An amplitude for each band. Arithmetic is band by band. Its alignment is that of the stack: for
/// more, GCC 12 misplaces some temporaries.
struct alignas(16) Spectrum {
  std::array<float, kPaddedBands> v;

  /// Selects the constructor that leaves the amplitudes unset, for a spectrum that is written next.
  struct Unset {};

  Spectrum() : v{} {}
  explicit Spectrum(Unset /*unset*/) {}  // NOLINT(cppcoreguidelines-pro-type-member-init)
  explicit Spectrum(float amplitude) {
    v.fill(amplitude);
    for (int i = kBands; i < kPaddedBands; ++i) v[static_cast<std::size_t>(i)] = 0;
  }

  float& operator[](int band) { return v[static_cast<std::size_t>(band)]; }
  float operator[](int band) const { return v[static_cast<std::size_t>(band)]; }

  Spectrum& operator+=(const Spectrum& other) {
    for (std::size_t i = 0; i < v.size(); ++i) v[i] += other.v[i];
    return *this;
  }
  Spectrum& operator*=(const Spectrum& other) {
    for (std::size_t i = 0; i < v.size(); ++i) v[i] *= other.v[i];
    return *this;
  }
  Spectrum& operator*=(float factor) {
    for (float& amplitude : v) amplitude *= factor;
    return *this;
  }
  /// Adds `factor` times the product of two spectra.
  void addProduct(const Spectrum& a, const Spectrum& b, float factor) {
    for (std::size_t i = 0; i < v.size(); ++i) v[i] += factor * a.v[i] * b.v[i];
  }
  /// Adds what of the light that comes along `throughput` a surface scatters.
  void addScattered(const Spectrum& throughput, const Spectrum& light, const Spectrum& reflectance,
                    Scattering scattering);
  /// Multiplies by what a surface scatters.
  void scatter(const Spectrum& reflectance, Scattering scattering);
  /// Adds `factor` times another spectrum.
  void add(const Spectrum& a, float factor) {
    for (std::size_t i = 0; i < v.size(); ++i) v[i] += factor * a.v[i];
  }

  // largest() and mean() keep eight results, which fit a register or two, and join them at the end.
  // The order is fixed.
  float largest() const {
    std::array<float, 8> most{};
    for (std::size_t lane = 0; lane < 8; ++lane) most[lane] = v[lane];
    for (std::size_t i = 8; i < v.size(); i += 8) {
      for (std::size_t lane = 0; lane < 8; ++lane) {
        most[lane] = v[i + lane] > most[lane] ? v[i + lane] : most[lane];
      }
    }
    return *std::max_element(most.begin(), most.end());
  }
  float mean() const {
    std::array<float, 8> sums{};
    for (std::size_t i = 0; i < v.size(); i += 8) {
      for (std::size_t lane = 0; lane < 8; ++lane) sums[lane] += v[i + lane];
    }
    return (((sums[0] + sums[1]) + (sums[2] + sums[3])) +
            ((sums[4] + sums[5]) + (sums[6] + sums[7]))) *
           (1.0F / kBands);
  }
  bool isZero() const { return largest() <= 0; }
  void clamp(float low, float high) {
    for (int i = 0; i < kBands; ++i) (*this)[i] = std::clamp((*this)[i], low, high);
  }
};

inline Spectrum operator*(const Spectrum& a, const Spectrum& b) {
  Spectrum product(a);
  product *= b;
  return product;
}
inline Spectrum operator*(const Spectrum& a, float b) {
  Spectrum product(a);
  product *= b;
  return product;
}
inline Spectrum operator+(const Spectrum& a, const Spectrum& b) {
  Spectrum sum(a);
  sum += b;
  return sum;
}

/// Linear RGB with the primaries and the white of sRGB.
struct Rgb {
  float r = 0, g = 0, b = 0;
};

struct ScreenColour {
  Rgb rgb;
  float luminance = 0;
};

/// Conversions by the library's colour functions, prepared so that each takes a few sums.
///
/// The conversions of the library are sums over the bands, or, for a spectrum of an RGB triple,
/// sums of the spectra of seven colours. So the library is asked once for each band and each of
/// these colours. Threads: immutable after the first call.
class Colours {
 public:
  /// Returns the only object. Throws what vrntSpectrumConvert() throws at the first call.
  static const Colours& get();

  /// Returns the colour of a radiance on a screen whose white is D65. It may be outside of 0 to 1.
  Rgb toRgb(const Spectrum& radiance) const;
  /// Returns the same, with the luminance.
  ScreenColour toScreen(const Spectrum& radiance) const;
  /// Returns the Y of CIE XYZ; 1 for a radiance of 1 in all bands.
  float luminance(const Spectrum& radiance) const;
  /// Returns the reflectance of a surface that has this colour under D65, within 0 to 1.
  Spectrum reflectance(const Rgb& colour) const;
  /// Returns a factor of light for a colour, which is not negative and may be above 1.
  Spectrum factor(const Rgb& colour) const;
  /// Returns light of this colour: white is D65.
  Spectrum emission(const Rgb& colour) const;
  /// Returns light that has exactly this colour on the screen, for what is seen and lights nothing:
  /// amplitudes may be a little negative.
  Spectrum background(const Rgb& colour) const;
  /// Returns light of one luminance with the spectrum of D65.
  const Spectrum& daylight() const { return daylight_; }

 private:
  Colours();
  Spectrum combined(const Rgb& colour) const;

  std::array<Spectrum, 4> screen_;  // red, green, blue and the luminance
  Spectrum daylight_;
  std::array<Spectrum, 8> colours_;    // by the bits r = 1, g = 2, b = 4
  std::array<Spectrum, 3> primaries_;  // light that is red, green and blue alone on the screen
};

}  // namespace vrn_render

#endif
