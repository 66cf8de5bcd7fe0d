// Spectra: read from values and from tables, and measured with the colour functions of the library.
#ifndef VRN_CORE_SPECTRA_HPP
#define VRN_CORE_SPECTRA_HPP

#include <vornath_data/values.h>

#include <array>
#include <string>
#include <vector>
#include <vornath_data/handles.hpp>

namespace vrn {

/// A wavelength (nm) and an amplitude, which holds up to the next wavelength.
struct Sample {
  float wavelength = 0;
  float amplitude = 0;
};

/// A spectrum and what it is called.
struct Spectrum {
  std::string name;
  std::string encoding;         ///< "spectral", "RGB" or "luminance"
  std::vector<float> data;      ///< as the library has it, with closing pairs if it is spectral
  std::vector<Sample> samples;  ///< to print and to plot; the last amplitude is 0
};

/// The mean amplitude of a range of wavelengths.
struct Band {
  float from = 0;
  float to = 0;
  float mean = 0;
};

struct Measures {
  std::array<float, 3> rgb{};   ///< under D65
  std::array<float, 3> rgbE{};  ///< under equal energy
  float luminance = 0;
  std::vector<Band> bands;
};

/// Makes a spectrum of the text of a value: a spectrum struct, an array of pairs of a wavelength
/// and an amplitude, a float3 as RGB, or a float as a luminance. Throws Trouble.
Spectrum spectrumOfText(const std::string& text);

/// Computes the colour of the spectrum struct at a view, under D65. Returns false for a place that
/// holds none.
bool colourOf(const vrntValue_t* value, const vrntValueView_t& view, std::array<float, 3>& rgb);

/// Makes a spectrum of each column of a table but the first, which has the wavelengths in nm. The
/// first line names the columns. `joined` cuts the lines between the points into steps; otherwise
/// an amplitude holds up to the next wavelength. Throws Trouble, with `name` in front.
std::vector<Spectrum> spectraOfTable(const std::string& name, const std::string& table,
                                     bool joined);

/// Measures a spectrum in bands of `width` nm from 400 to 700 nm. Samples that are more than 5 nm
/// apart are first cut into steps of 5 nm, since the library takes each sample for one wavelength.
Measures measure(const Spectrum& spectrum, float width);

/// Draws spectra as an SVG document.
std::string plotOf(const std::string& title, const std::vector<Spectrum>& spectra);

}  // namespace vrn

#endif
