// Plots the results of the colour functions: the Planckian locus, and measured reflectances beside
// the distributions that are reconstructed from their colours.
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "csv.hpp"
#include "run_host.hpp"
#include "svg.hpp"
#include "vornath_data/host.hpp"

namespace blackbody {
namespace {

using cornell_box::Csv;
using vrnt::TypeHandle;
using vrnt::Value;
using Rgb = std::array<float, 3>;

// Spectra

template <typename Spectrum>
Value makeSpectrum(const Spectrum& spectrum) {
  const TypeHandle type = TypeHandle::adopt(vrntTypeSpectrum());
  Value value = Value::create(type.get(), false).value();
  vrnt::host::SpectrumField(type, "").set(value, spectrum);
  return value;
}

// Reads a measured column. Each amplitude holds up to the wavelength of the next row.
Value measuredSpectrum(const Csv& table, const std::string& column) {
  vrnt::host::SampledSpectrum spectrum;
  for (std::size_t row = 0; row < table.rows(); ++row) {
    spectrum.wavelengths.push_back(table.single(row, "wavelength"));
    spectrum.amplitudes.push_back(table.single(row, column));
  }
  const std::size_t count = table.rows();
  const float before = count > 1 ? spectrum.wavelengths[count - 2] : 0.0F;
  spectrum.end = 2.0F * spectrum.wavelengths[count - 1] - before;
  return makeSpectrum(spectrum);
}

Rgb colourOf(const Value& spectrum) {
  const vrntValueView_t view{vrntValueType(spectrum.get()), 0};
  Rgb rgb{};
  if (vrntValueToRGB(spectrum.get(), &view, VRNT_COLOUR_SPACE_D65, rgb.data()) != 0) {
    throw std::runtime_error("a spectrum has no colour");
  }
  return rgb;
}

// Returns the distribution in bands of 5 nm, each drawn as a step.
std::vector<Point> curveOf(const Value& spectrum) {
  std::vector<float> pairs;
  for (int i = 0; i < 60; ++i)
    pairs.insert(pairs.end(), {400.0F + 5.0F * static_cast<float>(i), 0});
  const vrntValueView_t view{vrntValueType(spectrum.get()), 0};
  if (vrntValueToSPD(spectrum.get(), &view, static_cast<std::int32_t>(pairs.size()),
                     pairs.data()) != 0) {
    throw std::runtime_error("a spectrum can't be sampled");
  }
  std::vector<Point> curve;
  for (std::size_t i = 0; i < pairs.size(); i += 2) {
    const auto wavelength = static_cast<double>(pairs[i]);
    const auto amplitude = static_cast<double>(pairs[i + 1]);
    curve.push_back({wavelength, amplitude});
    curve.push_back({wavelength + 5.0, amplitude});
  }
  return curve;
}

// Returns the chromaticity of a linear sRGB colour (IEC 61966-2-1).
Point chromaticity(const Rgb& rgb) {
  const double r = static_cast<double>(rgb[0]);
  const double g = static_cast<double>(rgb[1]);
  const double b = static_cast<double>(rgb[2]);
  const double x = 0.4124564 * r + 0.3575761 * g + 0.1804375 * b;
  const double y = 0.2126729 * r + 0.7151522 * g + 0.072175 * b;
  const double z = 0.0193339 * r + 0.119192 * g + 0.9503041 * b;
  return {x / (x + y + z), y / (x + y + z)};
}

// Plots

void drawLocus(Picture& picture) {
  Plot plot(picture, {70, 50}, 460, 460, {0.1, 0.7, 0.1, "%.1f", "x"}, {0.0, 0.6, 0.1, "%.1f", "y"},
            "Black body from 1000 K to 20000 K, CIE 1931 xy");
  const Point red = chromaticity({1, 0, 0});
  const Point green = chromaticity({0, 1, 0});
  const Point blue = chromaticity({0, 0, 1});
  plot.line({red, green, blue, red}, "#888", 1.0, "5,4");
  plot.text({red.x - 0.15, red.y - 0.03}, "gamut of sRGB");

  std::vector<Point> locus;
  for (float kelvin = 1000.0F; kelvin <= 20000.0F; kelvin += 100.0F) {
    Rgb rgb{};
    vrntBlackbodyToRGB(rgb.data(), kelvin);
    locus.push_back(chromaticity(rgb));
  }
  plot.line(locus, "#444", 1.2);
  for (const int kelvin : {1000, 2000, 2856, 4000, 5000, 6500, 10000, 20000}) {
    Rgb rgb{};
    vrntBlackbodyToRGB(rgb.data(), static_cast<float>(kelvin));
    const Point at = chromaticity(rgb);
    plot.dot(at, screenColour(rgb), 6.0);
    plot.text({at.x + 0.015, at.y - 0.02}, std::to_string(kelvin) + " K");
  }
}

void drawReflectances(Picture& picture, const Csv& table) {
  Plot plot(picture, {620, 50}, 520, 460, {400, 700, 50, "%.0f", "wavelength in nm"},
            {0.0, 1.0, 0.2, "%.1f", "reflectance"},
            "Measured (whole lines) and reconstructed from RGB under D65 (dashed)");
  for (const char* const name : {"white", "green", "red"}) {
    const Value measured = measuredSpectrum(table, name);
    const Rgb rgb = colourOf(measured);
    const Value reconstructed = makeSpectrum(vrnt::host::RgbSpectrum{rgb[0], rgb[1], rgb[2]});
    const bool isWhite = std::strcmp(name, "white") == 0;
    const std::string colour = isWhite ? "#999" : screenColour(rgb);
    const std::vector<Point> curve = curveOf(measured);
    plot.line(curve, colour, 2.0);
    plot.line(curveOf(reconstructed), colour, 2.0, "6,3");
    plot.text({655, curve[102].y + 0.045}, name);  // index 102 is 655 nm
  }
}

constexpr char kUsage[] =
    "usage: blackbody [FILE [TABLE]]\n"
    "\n"
    "Plots the Planckian locus, and measured reflectances beside the distributions that are\n"
    "reconstructed from their colours. Writes an SVG file.\n"
    "\n"
    "  FILE   the SVG file, by default blackbody.svg\n"
    "  TABLE  a comma-separated file with the columns wavelength, white, green and red\n";

int run(const std::vector<std::string>& arguments) {
  if (!arguments.empty() && arguments[0] == "--help") {
    std::cout << kUsage;
    return 0;
  }
  if (arguments.size() > 2 || (!arguments.empty() && arguments[0].rfind("--", 0) == 0)) {
    std::cerr << kUsage;
    return 2;
  }
  const std::string path = arguments.empty() ? "blackbody.svg" : arguments[0];
  const Csv table(
      arguments.size() < 2 ? CORNELL_BOX_DATA "/cornell_box_reflectance.csv" : arguments[1],
      {"wavelength", "white", "green", "red"});
  std::ofstream file(path);
  {
    Picture picture(file, 1180, 580);
    drawLocus(picture);
    drawReflectances(picture, table);
  }
  file.close();
  if (!file) throw std::runtime_error(path + ": the file can't be written");
  std::cout << "wrote " << path << '\n';
  return 0;
}

}  // namespace
}  // namespace blackbody

int main(int count, char** arguments) {
  return cornell_box::runHost("blackbody", count, arguments, blackbody::run);
}
