// The plot of spectra.
#include <vornath_data/vrnt.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "core/colour.hpp"
#include "core/spectra.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

// Lengths in pixels.
constexpr double kWidth = 800;
constexpr double kHeight = 480;
constexpr double kLeft = 70;
constexpr double kRight = 30;
constexpr double kBottom = 60;

constexpr double kTitle = 24;       // the line of the title
constexpr double kLegend = 20;      // the height of a row of the legend
constexpr std::size_t kPerRow = 5;  // the names in a row of the legend

// Spectra whose colours are alike are told apart by their dashes.
constexpr std::array<const char*, 4> kDashes = {"", "8 3", "2 3", "10 3 2 3"};

std::string xmlText(const std::string& text) {
  std::string out;
  for (const char c : oneLine(text)) {
    if (c == '&') {
      out += "&amp;";
    } else if (c == '<') {
      out += "&lt;";
    } else if (c == '>') {
      out += "&gt;";
    } else if (c == '"') {
      out += "&quot;";
    } else {
      out += c;
    }
  }
  return out;
}

// Returns a name that fits its place in the legend.
std::string shortened(const std::string& name) {
  constexpr std::size_t kMost = 11;
  std::string text;
  std::size_t count = 0;
  for (const char c : name) {
    const bool starts = (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
    if (starts && ++count > kMost) return text + "\xE2\x80\xA6";
    text += c;
  }
  return text;
}

std::string fixed(double value) {
  std::array<char, 48> text{};
  std::snprintf(text.data(), text.size(), "%.1f", value);
  return text.data();
}

std::string hexOf(const std::array<float, 3>& rgb) {
  const std::array<unsigned, 3> bytes = screenColour(rgb);
  std::array<char, 16> text{};
  std::snprintf(text.data(), text.size(), "#%02x%02x%02x", bytes[0], bytes[1], bytes[2]);
  return text.data();
}

// Returns a step between marks that gives about `count` of them: 1, 2 or 5 times a power of ten.
double stepOf(double range, double count) {
  const double rough = range / count;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= rough) return factor * power;
  }
  return 10 * power;
}

// The colour of light of one wavelength, for the strip below the plot.
std::array<float, 3> pureColour(float wavelength) {
  std::array<float, 8> pairs = {0, 0, wavelength, 1, wavelength + 5, 0, wavelength + 10, 0};
  std::array<float, 3> rgb{};
  const vrntSpectrumRec from = {VRNT_ENCODING_SPECTRAL, static_cast<std::int32_t>(pairs.size()),
                                pairs.data()};
  vrntSpectrumRec to = {VRNT_ENCODING_RGB, 3, rgb.data()};
  vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_D65);
  return rgb;
}

// A line in the colour of a spectrum, as bright as it can be on white.
std::string strokeOf(const std::array<float, 3>& rgb) {
  constexpr float kBrightest = 0.3F;
  const float largest = std::max({rgb[0], rgb[1], rgb[2], 0.0F});
  std::array<float, 3> scaled = rgb;
  for (float& component : scaled) {
    component = largest > 0 ? std::max(component, 0.0F) / largest * kBrightest : 0;
  }
  return hexOf(scaled);
}

struct Frame {
  double top = 0;
  double from = 0;
  double to = 1;
  double low = 0;
  double high = 1;

  double x(double wavelength) const {
    return kLeft + (wavelength - from) / (to - from) * (kWidth - kLeft - kRight);
  }
  double y(double amplitude) const {
    return kHeight - kBottom - (amplitude - low) / (high - low) * (kHeight - top - kBottom);
  }
};

Frame frameOf(const std::vector<Spectrum>& spectra) {
  Frame frame;
  bool first = true;
  for (const Spectrum& spectrum : spectra) {
    for (const Sample& sample : spectrum.samples) {
      if (first) frame.from = frame.to = sample.wavelength;
      first = false;
      frame.from = std::min<double>(frame.from, sample.wavelength);
      frame.to = std::max<double>(frame.to, sample.wavelength);
      if (!std::isfinite(sample.amplitude)) continue;
      frame.low = std::min<double>(frame.low, sample.amplitude);
      frame.high = std::max<double>(frame.high, sample.amplitude);
    }
  }
  // Amplitudes that are small on all wavelengths fill the height, too.
  double largest = 0;
  for (const Spectrum& spectrum : spectra) {
    for (const Sample& sample : spectrum.samples) {
      if (std::isfinite(sample.amplitude)) largest = std::max<double>(largest, sample.amplitude);
    }
  }
  if (largest > 0) frame.high = largest;
  if (frame.to <= frame.from) frame.to = frame.from + 1;
  const double step = stepOf(frame.high - frame.low, 5);
  frame.high = std::ceil(frame.high / step - 1e-9) * step;
  frame.low = std::floor(frame.low / step + 1e-9) * step;
  return frame;
}

}  // namespace

std::string plotOf(const std::string& title, const std::vector<Spectrum>& spectra) {
  Frame frame = frameOf(spectra);
  // The legend stands above the curves, and leaves them two thirds of the picture at least.
  const std::size_t rows = std::min<std::size_t>((spectra.size() + kPerRow - 1) / kPerRow, 5);
  frame.top = kTitle + 14 + kLegend * static_cast<double>(rows);
  std::string svg =
      "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"800\" height=\"480\" viewBox=\"0 0 800 "
      "480\" font-family=\"sans-serif\" font-size=\"13\" fill=\"#202020\" role=\"img\">\n<title>" +
      xmlText(title) + "</title>\n<rect width=\"800\" height=\"480\" fill=\"#ffffff\"/>\n";
  const auto text = [&](double x, double y, const char* anchor, const std::string& words) {
    svg += "<text x=\"" + fixed(x) + "\" y=\"" + fixed(y) + "\" text-anchor=\"" + anchor + "\">" +
           xmlText(words) + "</text>\n";
  };
  const auto line = [&](double x1, double y1, double x2, double y2, const char* stroke) {
    svg += "<line x1=\"" + fixed(x1) + "\" y1=\"" + fixed(y1) + "\" x2=\"" + fixed(x2) +
           "\" y2=\"" + fixed(y2) + "\" stroke=\"" + stroke + "\"/>\n";
  };
  text(kWidth / 2, kTitle, "middle", title);

  const double floor = kHeight - kBottom;
  const double step = stepOf(frame.high - frame.low, 5);
  for (int i = 0; frame.low + i * step <= frame.high + step * 1e-6; ++i) {
    const double mark = frame.low + i * step;
    line(kLeft, frame.y(mark), kWidth - kRight, frame.y(mark), "#e0e0e0");
    text(kLeft - 8, frame.y(mark) + 4, "end",
         roundedText(std::abs(mark) < step * 1e-6 ? 0 : mark, 6));
  }
  const double wide = stepOf(frame.to - frame.from, 8);
  const double firstMark = std::ceil(frame.from / wide) * wide;
  for (int i = 0; firstMark + i * wide <= frame.to; ++i) {
    const double mark = firstMark + i * wide;
    line(frame.x(mark), floor, frame.x(mark), floor + 14, "#808080");
    text(frame.x(mark), floor + 28, "middle", roundedText(mark, 6));
  }
  text((kLeft + kWidth - kRight) / 2, kHeight - 12, "middle", "wavelength (nm)");

  // What light of these wavelengths looks like.
  const double firstStep = std::max(frame.from, 400.0);
  for (int i = 0; firstStep + i * 5 < std::min(frame.to, 700.0); ++i) {
    const double at = firstStep + i * 5;
    const double end = std::min({at + 5, frame.to, 700.0});
    svg += "<rect x=\"" + fixed(frame.x(at)) + "\" y=\"" + fixed(floor + 2) + "\" width=\"" +
           fixed(frame.x(end) - frame.x(at) + 0.3) + "\" height=\"8\" fill=\"" +
           hexOf(pureColour(static_cast<float>(at))) + "\"/>\n";
  }

  for (std::size_t i = 0; i < spectra.size(); ++i) {
    const Measures measures = measure(spectra[i], 50);
    std::string path;
    for (std::size_t k = 0; k + 1 < spectra[i].samples.size(); ++k) {
      const Sample& sample = spectra[i].samples[k];
      if (!std::isfinite(sample.amplitude)) continue;
      path += (path.empty() ? "M" : "L") + fixed(frame.x(sample.wavelength)) + " " +
              fixed(frame.y(sample.amplitude)) + "H" +
              fixed(frame.x(spectra[i].samples[k + 1].wavelength));
    }
    const std::string look =
        "fill=\"none\" stroke=\"" + strokeOf(measures.rgb) + "\" stroke-width=\"2.2\"" +
        (*kDashes[i % kDashes.size()] != '\0'
             ? std::string(" stroke-dasharray=\"") + kDashes[i % kDashes.size()] + "\""
             : "") +
        "/>\n";
    append(svg, {"<path d=\"", path, "\" ", look});
    const std::size_t row = i / kPerRow;
    if (row >= rows) continue;
    const double y = kTitle + 24 + kLegend * static_cast<double>(row);
    const double x = kLeft + (kWidth - kLeft - kRight) / static_cast<double>(kPerRow) *
                                 static_cast<double>(i % kPerRow);
    svg += "<polyline points=\"" + fixed(x) + "," + fixed(y - 5) + " " + fixed(x + 26) + "," +
           fixed(y - 5) + "\" " + look;
    svg += "<rect x=\"" + fixed(x + 32) + "\" y=\"" + fixed(y - 12) +
           "\" width=\"18\" height=\"14\" stroke=\"#404040\" fill=\"" + hexOf(measures.rgb) +
           "\"/>\n";
    text(x + 56, y, "start", shortened(spectra[i].name));
  }
  line(kLeft, frame.top - 6, kLeft, floor, "#404040");
  line(kLeft, floor, kWidth - kRight, floor, "#404040");
  return svg + "</svg>\n";
}

}  // namespace vrn
