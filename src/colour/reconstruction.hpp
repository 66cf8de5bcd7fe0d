/// Reconstructs a spectral distribution from an RGB triple.
#ifndef VORNATH_COLOUR_RECONSTRUCTION_HPP
#define VORNATH_COLOUR_RECONSTRUCTION_HPP

#include "colour/colour_space.hpp"
#include "colour/illuminant.hpp"
#include "colour/tables/grid.hpp"

namespace qex::vornath {

/// The reconstruction of one colour after B. Smits, "An RGB-to-spectrum conversion for
/// reflectances", 1999: a weighted sum of white, one of cyan, magenta and yellow, and one of red,
/// green and blue. It is defined on the 61 samples of the grid, and constant from each sample to
/// the next.
class Reconstruction {
 public:
  /// Reconstructs `colour`. Under D65, adapts it to the equal-energy white first.
  Reconstruction(const Rgb& colour, Illuminant illuminant) noexcept;

  /// Returns the mean amplitude from `lambda` to `lambda + deltaLambda` nm; outside the grid, the
  /// amplitude is 0. Checks nothing. Returns NaN for NaN.
  float average(float lambda, float deltaLambda) const noexcept;

 private:
  float sample(std::size_t index) const noexcept;

  // The weights of the three curves.
  float white_, secondary_, primary_;
  const GridRow* secondaryCurve_;
  const GridRow* primaryCurve_;
};

}  // namespace qex::vornath

#endif
