/// Linear RGB with the primaries and D65 white of sRGB (IEC 61966-2-1, no transfer curve), CIE 1931
/// XYZ, and the matrices between them. All in 32-bit floats, each sum from left to right.
#ifndef VORNATH_COLOUR_COLOUR_SPACE_HPP
#define VORNATH_COLOUR_COLOUR_SPACE_HPP

namespace qex::vornath {

struct Rgb {
  float r, g, b;
};

struct Xyz {
  float x, y, z;
};

Xyz xyzFromRgb(const Rgb& colour) noexcept;
Rgb rgbFromXyz(const Xyz& colour) noexcept;

/// Returns the Y of xyzFromRgb().
float luminanceOfRgb(const Rgb& colour) noexcept;

/// Adapts a colour from the white D65 to the equal-energy white by the Bradford transform, so that
/// it looks the same. Grey stays grey.
Rgb adaptFromD65ToE(const Rgb& colour) noexcept;

}  // namespace qex::vornath

#endif
