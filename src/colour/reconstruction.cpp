#include "colour/reconstruction.hpp"

#include <cmath>
#include <cstddef>

#include "colour/tables/reconstruction_curves.hpp"

namespace qex::vornath {
namespace {

// A position on the grid, in samples: its integer part, rounded toward zero, and its fraction.
struct GridPlace {
  int index;
  float fraction;

  bool belowGrid() const noexcept { return index < 0 || (index == 0 && fraction < 0.0F); }
};

GridPlace split(float samples) noexcept {
  // Outside the grid, only the side matters. The limit keeps the number in the range of an int.
  constexpr float kFarOutside = 1000.0F;
  if (samples > kFarOutside) samples = kFarOutside;
  if (samples < -kFarOutside) samples = -kFarOutside;
  const int index = static_cast<int>(samples);
  return {index, samples - static_cast<float>(index)};
}

constexpr int kSamples = static_cast<int>(kGridSize);

}  // namespace

Reconstruction::Reconstruction(const Rgb& colour, Illuminant illuminant) noexcept {
  const auto [r, g, b] = illuminant == Illuminant::D65 ? adaptFromD65ToE(colour) : colour;
  // The smallest channel weighs white. What the middle channel has above it weighs the secondary
  // colour of the two larger channels. What the largest channel has above that weighs its own
  // primary. A NaN is not above any number.
  const auto mix = [&](float least, const GridRow& secondaryCurve, float first,
                       const GridRow& firstCurve, float second, const GridRow& secondCurve) {
    const bool secondIsLarger = !(first > second);
    const float middle = secondIsLarger ? first : second;
    white_ = least;
    secondary_ = middle - least;
    primary_ = (secondIsLarger ? second : first) - middle;
    secondaryCurve_ = &secondaryCurve;
    primaryCurve_ = secondIsLarger ? &secondCurve : &firstCurve;
  };
  if (!(r > g) && !(r > b)) {
    mix(r, kCyanCurve, g, kGreenCurve, b, kBlueCurve);
  } else if (!(g > r) && !(g > b)) {
    mix(g, kMagentaCurve, r, kRedCurve, b, kBlueCurve);
  } else {
    mix(b, kYellowCurve, r, kRedCurve, g, kGreenCurve);
  }
}

float Reconstruction::sample(std::size_t index) const noexcept {
  float sum = white_ * kWhiteCurve[index];
  sum += secondary_ * (*secondaryCurve_)[index];
  sum += primary_ * (*primaryCurve_)[index];
  return sum;
}

float Reconstruction::average(float lambda, float deltaLambda) const noexcept {
  if (std::isnan(lambda) || std::isnan(deltaLambda)) return lambda + deltaLambda;

  // A band ends this much earlier, so that a band that ends on the edge of a sample does not reach
  // into the sample.
  constexpr float kEndMargin = 1.1920929e-7F;
  // The weight of the last sample if a band extends beyond it.
  constexpr float kAlmostWhole = 0.9999999F;

  GridPlace first = split((lambda - kGridFirst) / kGridStep);
  GridPlace last = split((lambda + deltaLambda - kGridFirst) / kGridStep - kEndMargin);
  if (first.belowGrid()) first = {0, 0.0F};
  if (last.belowGrid()) return 0.0F;
  if (last.index >= kSamples) last = {kSamples - 1, kAlmostWhole};
  if (last.index < first.index) return 0.0F;

  float sum = 0.0F;
  for (int i = first.index; i <= last.index; ++i) {
    float weight = 1.0F;
    if (first.index == last.index) {
      weight = last.fraction - first.fraction;
    } else if (i == first.index) {
      weight = 1.0F - first.fraction;
    } else if (i == last.index) {
      weight = last.fraction;
    }
    sum += weight * sample(static_cast<std::size_t>(i)) * kGridStep;
  }
  return sum / deltaLambda;
}

}  // namespace qex::vornath
