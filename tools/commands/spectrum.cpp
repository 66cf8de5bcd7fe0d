// vrn spectrum: the colour of a spectrum.
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "command.hpp"
#include "core/spectra.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string source;
  std::string plot;
  double band = 50;
  bool joined = false;
};

bool isTable(const std::string& source) {
  constexpr std::string_view kEnd = ".csv";
  if (isStream(source)) return true;
  if (source.size() >= kEnd.size() &&
      source.compare(source.size() - kEnd.size(), kEnd.size(), kEnd) == 0) {
    return true;
  }
  struct stat status {};
  return stat(source.c_str(), &status) == 0;
}

std::string tripleText(const std::array<float, 3>& rgb) {
  return padded(roundedText(rgb[0], 6), 11) + padded(roundedText(rgb[1], 6), 11) +
         roundedText(rgb[2], 6);
}

std::string tripleJson(const std::array<float, 3>& rgb) {
  return "[" + jsonNumber(rgb[0]) + ", " + jsonNumber(rgb[1]) + ", " + jsonNumber(rgb[2]) + "]";
}

std::string jsonOf(const Spectrum& spectrum, const Measures& measures) {
  std::string text = "{ \"name\": " + jsonString(spectrum.name) +
                     ", \"encoding\": " + jsonString(spectrum.encoding) +
                     ",\n    \"rgb\": " + tripleJson(measures.rgb) +
                     ", \"rgbE\": " + tripleJson(measures.rgbE) +
                     ", \"luminance\": " + jsonNumber(measures.luminance) + ",\n    \"bands\": [";
  for (std::size_t i = 0; i < measures.bands.size(); ++i) {
    const Band& band = measures.bands[i];
    text += (i == 0 ? "" : ",") + std::string("\n      { \"from\": ") + jsonNumber(band.from) +
            ", \"to\": " + jsonNumber(band.to) + ", \"mean\": " + jsonNumber(band.mean) + " }";
  }
  return text + " ] }";
}

void print(Session& session, const Spectrum& spectrum, const Measures& measures) {
  Output& out = session.out();
  const Colours& colours = session.colours();
  out << colours.ink(Ink::Heading, spectrum.name) << "  " << spectrum.encoding;
  if (spectrum.encoding == "spectral" && !spectrum.samples.empty()) {
    out << ", " << counted(spectrum.samples.size() - 1, "sample") << " from "
        << numberText(spectrum.samples.front().wavelength) << " to "
        << numberText(spectrum.samples.back().wavelength) << " nm";
  }
  out << "\n";
  const auto line = [&](const char* label, const std::string& text) {
    out << "  " << padded(label, 16) << text << "\n";
  };
  line("RGB", colours.swatch(measures.rgb) + tripleText(measures.rgb));
  line("RGB under E", colours.swatch(measures.rgbE) + tripleText(measures.rgbE));
  line("luminance", roundedText(measures.luminance, 6));
  constexpr std::size_t kBar = 40;
  float highest = 0;
  for (const Band& band : measures.bands) highest = std::max(highest, band.mean);
  for (const Band& band : measures.bands) {
    const std::string label = numberText(band.from) + " to " + numberText(band.to) + " nm";
    const float part = highest > 0 && band.mean > 0 ? band.mean / highest : 0;
    const auto cells = static_cast<std::size_t>(std::lround(part * kBar));
    out << "  " << padded(label, 16) << padded(roundedText(band.mean, 6), 11)
        << colours.ink(Ink::Faint, std::string(cells, '#')) << "\n";
  }
}

int describe(Session& session, const Choices& choices) {
  if (choices.band < 5 || choices.band > 300) {
    throw Trouble("--band: it takes a width from 5 to 300 nm, not " + roundedText(choices.band, 6));
  }
  const bool table = isTable(choices.source);
  if (choices.joined && !table) {
    throw Trouble("--linear: it is for CSV files; leave it out for a value");
  }
  std::vector<Spectrum> spectra;
  if (table) {
    spectra = spectraOfTable(nameOf(choices.source), readAll(choices.source), choices.joined);
  } else {
    if (choices.source.find('\0') != std::string::npos) throw Trouble("VALUE: it has a NUL");
    spectra.push_back(spectrumOfText(choices.source));
  }
  std::string documents;
  std::vector<Measures> measured;
  measured.reserve(spectra.size());
  for (const Spectrum& spectrum : spectra) {
    measured.push_back(measure(spectrum, static_cast<float>(choices.band)));
  }
  if (!choices.plot.empty()) {
    const std::string name = nameOf(choices.source);
    const std::string title = table ? name.substr(name.rfind('/') + 1) : "spectrum";
    session.saveBytes(plotOf(title, spectra), choices.plot);
    if (choices.plot == "-") return kSame;
  }
  for (std::size_t i = 0; i < spectra.size(); ++i) {
    if (session.json()) {
      documents += (i == 0 ? "" : ",\n    ") + jsonOf(spectra[i], measured[i]);
    } else {
      if (i != 0) session.out() << "\n";
      print(session, spectra[i], measured[i]);
    }
  }
  if (session.json()) {
    session.out() << (table ? "{ \"file\": " + jsonString(choices.source) +
                                  ",\n  \"spectra\": [\n    " + documents + " ] }\n"
                            : documents + "\n");
  }
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("VALUE|FILE.csv", Kind::File, true, choices->source,
                   "a value, or a table whose first column is the wavelength in nm; - for a table "
                   "on standard input");
  options.text("--plot", "OUT.svg", Kind::File, choices->plot,
               "draw the spectra; - for standard output, without the text");
  options.number("--band", "NM", choices->band, "the width of the bands, 50 by default");
  options.flag("--linear", choices->joined,
               "join the samples of a table by lines; without it, a sample holds up to the next");
  return [choices](Session& session) { return describe(session, *choices); };
}

}  // namespace

const Command kSpectrum = {
    "spectrum",
    "tell the colour of a spectrum, and plot it",
    "Prints the RGB triple of a spectrum under D65, and under equal energy (E), its luminance (Y), "
    "and "
    "its "
    "mean amplitude in bands from 400 to 700 nm. All are computed by the colour functions of the "
    "library.\n\n"
    "A value is a spectrum struct, an array of pairs of a wavelength and an amplitude, a float3 as "
    "RGB, or a float as a luminance. Each column of a table is a spectrum of its own.",
    "The last sample of a table holds as long as the one before it.",
    "vrn spectrum reflectance.csv --plot reflectance.svg\n"
    "vrn spectrum '[ 400.0, 0.2, 500.0, 0.9, 600.0, 0.3 ]'\n"
    "vrn spectrum 'float3(0.8, 0.2, 0.1)'",
    kJson,
    declare};

}  // namespace vrn
