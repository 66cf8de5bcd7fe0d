#include "colour/colour_space.hpp"

#include <array>

namespace qex::vornath {
namespace {

using Row = std::array<float, 3>;
using Matrix = std::array<Row, 3>;

// From RGB to XYZ, with the primaries of IEC 61966-2-1.
constexpr Matrix kRgbToXyz{{{0.4124564F, 0.3575761F, 0.1804375F},
                            {0.2126729F, 0.7151522F, 0.072175F},
                            {0.0193339F, 0.119192F, 0.9503041F}}};
constexpr Matrix kXyzToRgb{{{3.2404542F, -1.5371385F, -0.4985314F},
                            {-0.969266F, 1.8760108F, 0.041556F},
                            {0.0556434F, -0.2040259F, 1.0572252F}}};
// The Bradford transform of XYZ from the white D65 to the white E.
constexpr Matrix kD65ToE{{{1.0502616F, 0.0270757F, -0.0232523F},
                          {0.039065F, 0.9729502F, -0.0092579F},
                          {-0.0024047F, 0.0026446F, 0.9180873F}}};
// From XYZ to RGB, with the same primaries and the white E.
constexpr Matrix kXyzToRgbUnderE{{{2.6896558F, -1.2758625F, -0.4137932F},
                                  {-1.0221083F, 1.9782869F, 0.0438216F},
                                  {0.0612244F, -0.2244897F, 1.1632653F}}};

float dot(const Row& row, float a, float b, float c) noexcept {
  return row[0] * a + row[1] * b + row[2] * c;
}

Rgb toRgb(const Matrix& matrix, const Xyz& colour) noexcept {
  return {dot(matrix[0], colour.x, colour.y, colour.z),
          dot(matrix[1], colour.x, colour.y, colour.z),
          dot(matrix[2], colour.x, colour.y, colour.z)};
}

}  // namespace

Xyz xyzFromRgb(const Rgb& colour) noexcept {
  return {dot(kRgbToXyz[0], colour.r, colour.g, colour.b),
          dot(kRgbToXyz[1], colour.r, colour.g, colour.b),
          dot(kRgbToXyz[2], colour.r, colour.g, colour.b)};
}

Rgb rgbFromXyz(const Xyz& colour) noexcept { return toRgb(kXyzToRgb, colour); }

float luminanceOfRgb(const Rgb& colour) noexcept {
  return dot(kRgbToXyz[1], colour.r, colour.g, colour.b);
}

Rgb adaptFromD65ToE(const Rgb& colour) noexcept {
  const Xyz xyz = xyzFromRgb(colour);
  return toRgb(kXyzToRgbUnderE,
               {dot(kD65ToE[0], xyz.x, xyz.y, xyz.z), dot(kD65ToE[1], xyz.x, xyz.y, xyz.z),
                dot(kD65ToE[2], xyz.x, xyz.y, xyz.z)});
}

}  // namespace qex::vornath
