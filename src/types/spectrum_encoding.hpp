/// The encodings of a spectrum.
#ifndef VORNATH_TYPES_SPECTRUM_ENCODING_HPP
#define VORNATH_TYPES_SPECTRUM_ENCODING_HPP

#include <cstdint>

namespace qex::vornath {

/// The values are the codes of the spectrum type's enum.
enum class SpectrumEncoding : std::int32_t { Luminance = 0, Rgb = 1, Spectral = 2 };

}  // namespace qex::vornath

#endif
