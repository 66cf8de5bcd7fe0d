/// A spectral distribution for an RGB triple.
#ifndef VORNATH_COLOUR_RECONSTRUCTION_HPP
#define VORNATH_COLOUR_RECONSTRUCTION_HPP

#include "colour/colour_space.hpp"
#include "colour/illuminant.hpp"
#include "colour/tables/grid.hpp"

namespace qex::vornath {

/// The reconstruction of one colour after B. Smits, "An RGB-to-spectrum conversion for
/// reflectances", 1999: a weighted sum of white, one of cyan, magenta and yellow, and one of red,
/// green and blue. It stands on the grid's 61 samples and is constant from each to the next.
class Reconstruction {
 public:
  /// Under D65 the colour is adapted to the equal-energy white first.
  Reconstruction(const Rgb& colour, Illuminant illuminant) noexcept;

  /// The mean over `lambda` to `lambda + deltaLambda` nm; what lies outside the grid counts as 0.
  /// Nothing is checked. A NaN gives NaN.
  float average(float lambda, float deltaLambda) const noexcept;

 private:
  float sample(std::size_t index) const noexcept;

  // What each curve is multiplied with.
  float white_, secondary_, primary_;
  const GridRow* secondaryCurve_;
  const GridRow* primaryCurve_;
};

}  // namespace qex::vornath

#endif
