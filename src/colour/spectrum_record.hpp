/// Conversions of spectrum records, the plain structs in which hosts pass spectra.
#ifndef VORNATH_COLOUR_SPECTRUM_RECORD_HPP
#define VORNATH_COLOUR_SPECTRUM_RECORD_HPP

#include <cstdint>

#include "colour/illuminant.hpp"
#include "colour/spectrum_view.hpp"
#include "vornath_data/colour.h"

namespace qex::vornath {

/// Converts `in` to the encoding of `out` and writes the floats of `out`. If `out` is spectral, its
/// wavelengths do not change.
/// Errors: throws as SpectrumView::sampleAt() and pairsFromSamples() do.
void convertRecord(const vrntSpectrumRec& in, vrntSpectrumRec& out, Illuminant illuminant);

/// Writes the amplitudes of `count` pairs. `pairs` contains their wavelengths, in nm.
/// Errors: throws as SpectrumView::sampleAt() does.
void fillPairs(const SpectrumView& spectrum, float* pairs, std::int32_t count);

}  // namespace qex::vornath

#endif
