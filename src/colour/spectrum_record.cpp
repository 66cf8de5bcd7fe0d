#include "colour/spectrum_record.hpp"

#include <span>
#include <vector>

#include "colour/step_function.hpp"

namespace qex::vornath {
namespace {

std::span<float> recordFloats(const vrntSpectrumRec& record) {
  return {record.data, record.count < 0 ? 0 : static_cast<std::size_t>(record.count)};
}

// Returns the wavelengths of a record's pairs, without the first and the last pair, which close the
// step function. The vector has room for one more wavelength.
std::vector<float> innerWavelengths(SpectralPairs pairs) {
  std::vector<float> lambdas;
  if (pairs.size() < 3) return lambdas;
  lambdas.reserve(pairs.size() - 1);
  for (std::size_t pair = 1; pair + 1 < pairs.size(); ++pair) {
    lambdas.push_back(pairs.wavelength(pair));
  }
  return lambdas;
}

// Gives the last wavelength a band, which is as wide as the whole range divided by the number of
// wavelengths.
void closeLastBand(std::vector<float>& lambdas) {
  if (lambdas.empty()) return;
  const auto count = static_cast<float>(lambdas.size());
  lambdas.push_back(lambdas.back() + (lambdas.back() - lambdas.front()) / count);
}

std::vector<float> pairsOfRecord(const vrntSpectrumRec& record) {
  const SpectralPairs pairs(recordFloats(record));
  std::vector<float> lambdas = innerWavelengths(pairs);
  std::vector<float> amplitudes;
  amplitudes.reserve(lambdas.size());
  for (std::size_t i = 0; i < lambdas.size(); ++i) amplitudes.push_back(pairs.amplitude(i + 1));
  closeLastBand(lambdas);
  return pairsFromSamples(lambdas, amplitudes);
}

// Stores amplitudes in the pairs from `first` on.
void putAmplitudes(const std::vector<float>& amplitudes, float* pairs, std::size_t first) {
  for (std::size_t i = 0; i < amplitudes.size(); ++i) pairs[2 * (first + i) + 1] = amplitudes[i];
}

// Converts the spectrum to the encoding of the record and writes it there.
void convertTo(const SpectrumView& spectrum, Illuminant illuminant, vrntSpectrumRec& out) {
  switch (out.encoding) {
    case VRNT_ENCODING_LUMINANCE:
      out.data[0] = spectrum.toLuminance(illuminant);
      break;
    case VRNT_ENCODING_SPECTRAL: {
      std::vector<float> lambdas = innerWavelengths(SpectralPairs(recordFloats(out)));
      if (!lambdas.empty()) lambdas.push_back(lambdas.back() + 5.0F);
      putAmplitudes(spectrum.sampleAt(lambdas), out.data, 1);
      break;
    }
    default: {
      const Rgb colour = spectrum.toRgb(illuminant);
      out.data[0] = colour.r;
      out.data[1] = colour.g;
      out.data[2] = colour.b;
    }
  }
}

}  // namespace

void convertRecord(const vrntSpectrumRec& in, vrntSpectrumRec& out, Illuminant illuminant) {
  switch (in.encoding) {
    case VRNT_ENCODING_LUMINANCE:
      return convertTo({SpectrumEncoding::Luminance, {in.data, 1}}, illuminant, out);
    case VRNT_ENCODING_SPECTRAL:
      return convertTo({SpectrumEncoding::Spectral, pairsOfRecord(in)}, illuminant, out);
    default:
      return convertTo({SpectrumEncoding::Rgb, {in.data, 3}}, illuminant, out);
  }
}

void fillPairs(const SpectrumView& spectrum, float* pairs, std::int32_t count) {
  std::vector<float> lambdas;
  lambdas.reserve(count > 0 ? static_cast<std::size_t>(count) : 0);
  for (std::int32_t pair = 0; pair < count; ++pair) lambdas.push_back(pairs[2 * pair]);
  closeLastBand(lambdas);
  putAmplitudes(spectrum.sampleAt(lambdas), pairs, 0);
}

}  // namespace qex::vornath
