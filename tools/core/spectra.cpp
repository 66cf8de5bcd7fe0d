#include "core/spectra.hpp"

#include <vornath_data/vrnt.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <sstream>
#include <utility>

#include "core/text.hpp"
#include "core/trouble.hpp"
#include "core/typed_text.hpp"

namespace vrn {
namespace {

constexpr float kShortest = 400;  // nm, where the colour functions of the library begin
constexpr float kLongest = 700;
constexpr float kStep = 5;

std::uint32_t codeOf(const std::string& encoding) {
  if (encoding == "spectral") return VRNT_ENCODING_SPECTRAL;
  return encoding == "RGB" ? VRNT_ENCODING_RGB : VRNT_ENCODING_LUMINANCE;
}

vrntSpectrumRec recordOf(std::vector<float>& data, std::uint32_t encoding) {
  return {encoding, static_cast<std::int32_t>(data.size()), data.data()};
}

void convert(const Spectrum& spectrum, std::uint32_t encoding, std::int32_t space,
             std::vector<float>& out) {
  std::vector<float> data = spectrum.data;
  const vrntSpectrumRec from = recordOf(data, codeOf(spectrum.encoding));
  vrntSpectrumRec to = recordOf(out, encoding);
  vrntSpectrumConvert(&from, &to, space);
}

bool isClosed(const std::vector<float>& pairs) {
  return pairs.size() >= 4 && pairs[0] == 0 && pairs[1] == 0 && pairs.back() == 0;
}

// Sets the data and the samples of a spectrum from samples without an end: the last amplitude holds
// as long as the one before.
void setSamples(Spectrum& spectrum, std::vector<Sample> samples) {
  const std::size_t count = samples.size();
  const float last = samples.back().wavelength;
  const float step = count > 1 ? last - samples[count - 2].wavelength : kStep;
  samples.push_back({last + step, 0});
  spectrum.encoding = "spectral";
  spectrum.data = {0, 0};
  for (const Sample& sample : samples) {
    spectrum.data.push_back(sample.wavelength);
    spectrum.data.push_back(sample.amplitude);
  }
  spectrum.samples = std::move(samples);
}

void requireRising(const std::string& name, const std::vector<Sample>& samples) {
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const float before = i == 0 ? 0 : samples[i - 1].wavelength;
    if (!(samples[i].wavelength > before)) {
      throw Trouble(name + ": the wavelength " + numberText(samples[i].wavelength) +
                    " is not greater than " + numberText(before) +
                    "; sort the samples by wavelength");
    }
  }
}

// Returns the mean amplitudes of a spectrum in steps of 5 nm, with closing pairs.
std::vector<float> resampled(const Spectrum& spectrum) {
  std::vector<float> pairs = {0, 0};
  const int steps = static_cast<int>((kLongest - kShortest) / kStep);
  for (int i = 0; i <= steps; ++i) {
    pairs.push_back(kShortest + kStep * static_cast<float>(i));
    pairs.push_back(0);
  }
  pairs.push_back(kLongest + kStep);
  pairs.push_back(0);
  convert(spectrum, VRNT_ENCODING_SPECTRAL, VRNT_COLOUR_SPACE_E, pairs);
  return pairs;
}

// The library takes the observer's sensitivity at each sample, which is right only for samples that
// are as close to each other as the numbers of the observer.
bool isCoarse(const Spectrum& spectrum) {
  for (std::size_t i = 1; i < spectrum.samples.size(); ++i) {
    if (spectrum.samples[i].wavelength - spectrum.samples[i - 1].wavelength > kStep * 1.01F) {
      return spectrum.encoding == "spectral";
    }
  }
  return false;
}

// Fills in what is drawn of a colour that has no samples.
void sampleColour(Spectrum& spectrum) {
  const std::vector<float> pairs = resampled(spectrum);
  for (std::size_t i = 2; i + 1 < pairs.size(); i += 2) {
    spectrum.samples.push_back({pairs[i], pairs[i + 1]});
  }
}

std::vector<float> floatsOf(const vrntValue_t* value) {
  const vrntType_t* const type = vrntValueType(value);
  std::vector<float> data(static_cast<std::size_t>(vrntTypeSize(type) / sizeof(float)));
  if (!data.empty()) std::memcpy(data.data(), vrntValueData(value), data.size() * sizeof(float));
  return data;
}

// Reads a struct with an encoding and a reference to its data.
void readStruct(Spectrum& spectrum, const vrntValue_t* value, const vrntValueView_t& place) {
  vrntValueView_t view;
  vrntValueStructField(&view, place.type, 0);
  std::uint32_t code = 0;
  std::memcpy(&code, static_cast<const char*>(vrntValueData(value)) + place.offset + view.offset,
              sizeof code);
  vrntValueStructField(&view, place.type, 1);
  view.offset += place.offset;
  const vrnt::UniqueValue target(vrntValueDereference(value, &view));
  const std::vector<float> data = target ? floatsOf(target.get()) : std::vector<float>();
  const std::size_t needed = code == VRNT_ENCODING_LUMINANCE  ? 1
                             : code == VRNT_ENCODING_SPECTRAL ? 4
                                                              : 3;
  if (data.size() < needed) {
    throw Trouble("VALUE: a spectrum of this encoding takes " + counted(needed, "float") +
                  (needed == 4 ? " at least" : "") + ", not " + std::to_string(data.size()) +
                  "; complete the array");
  }
  spectrum.data = data;
  if (code != VRNT_ENCODING_SPECTRAL) {
    spectrum.encoding = code == VRNT_ENCODING_LUMINANCE ? "luminance" : "RGB";
    return;
  }
  spectrum.encoding = "spectral";
  for (std::size_t i = 2; i + 1 < data.size(); i += 2) {
    spectrum.samples.push_back({data[i], data[i + 1]});
  }
}

bool isFloatType(const vrntType_t* type, std::uint32_t lanes) {
  return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_BASE &&
         vrntTypeBasetype(type) == VRNT_BASETYPE_FLOAT && vrntTypeVectorDimension(type) == lanes;
}

bool isFloatArray(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY || vrntTypeArrayDimension(type) != 1) {
    return false;
  }
  const vrnt::UniqueType element(vrntTypeElementType(type));
  return isFloatType(element.get(), 1);
}

std::string trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const std::size_t first = text.find_first_not_of(kSpace);
  if (first == std::string_view::npos) return "";
  text = text.substr(first, text.find_last_not_of(kSpace) - first + 1);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') {
    text = text.substr(1, text.size() - 2);
  }
  return std::string(text);
}

std::vector<std::string> cellsOf(const std::string& line) {
  std::vector<std::string> cells;
  for (std::size_t start = 0; start <= line.size();) {
    const std::size_t end = std::min(line.find(',', start), line.size());
    cells.push_back(trimmed(std::string_view(line).substr(start, end - start)));
    start = end + 1;
  }
  return cells;
}

bool readNumber(const std::string& text, float& number) {
  const char* const first = text.data() + (!text.empty() && text[0] == '+' ? 1 : 0);
  const auto [end, error] = std::from_chars(first, text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && std::isfinite(number);
}

// Cuts the lines between samples into steps, each with the amplitude of its middle.
std::vector<Sample> cut(const std::vector<Sample>& samples) {
  std::vector<Sample> steps;
  for (std::size_t i = 0; i + 1 < samples.size(); ++i) {
    const Sample& a = samples[i];
    const Sample& b = samples[i + 1];
    const int count =
        std::max(1, static_cast<int>(std::lround((b.wavelength - a.wavelength) / kStep)));
    for (int k = 0; k < count; ++k) {
      const float at = static_cast<float>(k) / static_cast<float>(count);
      const float middle = (static_cast<float>(k) + 0.5F) / static_cast<float>(count);
      steps.push_back({a.wavelength + at * (b.wavelength - a.wavelength),
                       a.amplitude + middle * (b.amplitude - a.amplitude)});
    }
  }
  return steps;
}

}  // namespace

Spectrum spectrumOfText(const std::string& text) {
  vrntValue_t* made = nullptr;
  ErrorOut error;
  if (vrtkValueParse(text.c_str(), &made, error) != VRTK_OK) raiseAbout("VALUE", text, error);
  const vrnt::UniqueValue value(made);
  const vrntType_t* const type = vrntValueType(value.get());
  Spectrum spectrum;
  spectrum.name = "value";
  const vrnt::UniqueType whole(vrntTypeSpectrum());
  if (vrntTypeIsSubType(type, whole.get()) != 0) {
    readStruct(spectrum, value.get(), {vrntValueType(value.get()), 0});
  } else if (isFloatType(type, 1) || isFloatType(type, 3)) {
    spectrum.data = floatsOf(value.get());
    spectrum.encoding = spectrum.data.size() == 1 ? "luminance" : "RGB";
    if (spectrum.data.size() > 3) spectrum.data.resize(3);
  } else if (isFloatArray(type) && vrntTypeSize(type) % 8 == 0 && vrntTypeSize(type) != 0) {
    std::vector<float> pairs = floatsOf(value.get());
    if (isClosed(pairs)) pairs = {pairs.begin() + 2, pairs.end() - 2};
    std::vector<Sample> samples;
    for (std::size_t i = 0; i < pairs.size(); i += 2) samples.push_back({pairs[i], pairs[i + 1]});
    if (samples.empty()) throw Trouble("VALUE: there is no sample; give [ 400.0, 0.5, ... ]");
    requireRising("VALUE", samples);
    setSamples(spectrum, std::move(samples));
  } else {
    throw Trouble(std::string("VALUE: ") + oneLine(vrntTypeString(type)) +
                  " is no spectrum; give { encoding = ...; spectrum = &[ ... ]; }, pairs as in "
                  "[ 400.0, 0.5, 405.0, 0.6 ], float3(1.0, 1.0, 1.0), or the path of a CSV file");
  }
  if (spectrum.samples.empty()) sampleColour(spectrum);
  return spectrum;
}

bool colourOf(const vrntValue_t* value, const vrntValueView_t& view, std::array<float, 3>& rgb) {
  // Answers whether there is a spectrum that can be read.
  if (vrntValueToRGB(value, &view, VRNT_COLOUR_SPACE_D65, rgb.data()) != 0) return false;
  Spectrum spectrum;
  try {
    readStruct(spectrum, value, view);
    if (isCoarse(spectrum)) rgb = measure(spectrum, kLongest - kShortest).rgb;
  } catch (const Trouble&) {
    // An empty spectrum is black.
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    // Wavelengths that do not rise: the library has its own reading of them.
  }
  return true;
}

std::vector<Spectrum> spectraOfTable(const std::string& name, const std::string& table,
                                     bool joined) {
  std::istringstream stream(table);
  std::vector<std::string> titles;
  std::vector<std::vector<Sample>> columns;
  std::size_t number = 0;
  std::string line;
  while (std::getline(stream, line)) {
    ++number;
    if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
    if (trimmed(line).empty() || line[0] == '#') continue;
    const std::vector<std::string> cells = cellsOf(line);
    const std::string where = name + ": line " + std::to_string(number) + ": ";
    if (titles.empty()) {
      float unused = 0;
      if (cells.size() < 2 || readNumber(cells[0], unused)) {
        throw Trouble(where +
                      "the names of the columns are missing; the first line must be as in "
                      "wavelength,white,green");
      }
      titles = cells;
      columns.resize(titles.size() - 1);
      continue;
    }
    if (cells.size() != titles.size()) {
      throw Trouble(where + "there are " + std::to_string(cells.size()) + " cells, not " +
                    std::to_string(titles.size()) + " as in the first line; complete the line");
    }
    std::vector<float> numbers(cells.size());
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (!readNumber(cells[i], numbers[i])) {
        throw Trouble(where + "'" + oneLine(cells[i]) + "' in the column " + oneLine(titles[i]) +
                      " is no number; correct the cell");
      }
    }
    for (std::size_t i = 1; i < numbers.size(); ++i) {
      columns[i - 1].push_back({numbers[0], numbers[i]});
    }
  }
  if (columns.empty() || columns[0].size() < 2) {
    throw Trouble(name + ": a spectrum takes two rows at least; give more samples");
  }
  requireRising(name, columns[0]);
  std::vector<Spectrum> spectra;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    Spectrum spectrum;
    spectrum.name = titles[i + 1];
    setSamples(spectrum, joined ? cut(columns[i]) : columns[i]);
    spectra.push_back(std::move(spectrum));
  }
  return spectra;
}

Measures measure(const Spectrum& given, float width) {
  Spectrum spectrum = given;
  if (isCoarse(spectrum)) spectrum.data = resampled(given);
  Measures measures;
  std::vector<float> rgb(3);
  convert(spectrum, VRNT_ENCODING_RGB, VRNT_COLOUR_SPACE_D65, rgb);
  std::copy(rgb.begin(), rgb.end(), measures.rgb.begin());
  convert(spectrum, VRNT_ENCODING_RGB, VRNT_COLOUR_SPACE_E, rgb);
  std::copy(rgb.begin(), rgb.end(), measures.rgbE.begin());
  std::vector<float> luminance(1);
  convert(spectrum, VRNT_ENCODING_LUMINANCE, VRNT_COLOUR_SPACE_E, luminance);
  measures.luminance = luminance[0];

  // The library gives the mean from each wavelength up to the next one, but not for closing pairs.
  std::vector<float> pairs = {0, 0};
  const int bands = static_cast<int>(std::ceil((kLongest - kShortest) / width));
  for (int i = 0; i < bands; ++i) {
    const float from = kShortest + width * static_cast<float>(i);
    measures.bands.push_back({from, std::min(from + width, kLongest), 0});
    pairs.push_back(from);
    pairs.push_back(0);
  }
  for (const float end : {kLongest, kLongest + width}) {
    pairs.push_back(end);
    pairs.push_back(0);
  }
  convert(given, VRNT_ENCODING_SPECTRAL, VRNT_COLOUR_SPACE_E, pairs);
  for (std::size_t i = 0; i < measures.bands.size(); ++i) measures.bands[i].mean = pairs[2 * i + 3];
  return measures;
}

}  // namespace vrn
