/// Reads spectra that are stored in values.
#ifndef VORNATH_COLOUR_SPECTRUM_READING_HPP
#define VORNATH_COLOUR_SPECTRUM_READING_HPP

#include <span>

#include "colour/spectrum_view.hpp"
#include "types/type.hpp"
#include "values/block.hpp"

namespace qex::vornath {

/// The contents of a spectrum in a value: its encoding (Rgb for an unknown code) and the block of
/// its floats, null for none. Borrowed.
struct StoredSpectrum {
  SpectrumEncoding encoding;
  const vrntValue_t* array;
};

/// Reads the spectrum at `data`. `type` must be a subtype of the spectrum type.
/// Errors: throws as readSpectrum() does for the target of the reference.
StoredSpectrum storedSpectrum(const InternedType& type, const char* data);

std::span<const float> floatsOf(const StoredSpectrum& stored);

/// Returns the spectrum at `data`, which has the layout of `type`. A null reference is a spectrum
/// without floats; an unknown code of the encoding is read as Rgb.
/// Ownership: the view is borrowed, and valid as long as the bytes.
/// Errors: throws "Incompatible type for accessor -> {}." if `type` is not accepted for the
/// spectrum type, or if the reference leads to something else than floats; "Incompatible type for
/// value -> {}." if there are fewer floats than the encoding needs; an Exception with the message
/// of its code if the reference is a foreign pointer, which is never followed.
SpectrumView readSpectrum(const InternedType& type, const char* data);

}  // namespace qex::vornath

#endif
