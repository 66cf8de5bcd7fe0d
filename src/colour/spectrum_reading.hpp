/// Reads the spectrum record that lies in a value.
#ifndef VORNATH_COLOUR_SPECTRUM_READING_HPP
#define VORNATH_COLOUR_SPECTRUM_READING_HPP

#include <span>

#include "colour/spectrum_view.hpp"
#include "types/type.hpp"
#include "values/block.hpp"

namespace qex::vornath {

/// What a record holds: its encoding (Rgb for a code without a name) and the block of its floats,
/// null for none. Borrowed.
struct StoredSpectrum {
  SpectrumEncoding encoding;
  const vrntValue_t* array;
};

/// Reads the record at `data`; `type` is a subtype of the spectrum type. Throws as readSpectrum()
/// does for what the reference leads to.
StoredSpectrum storedSpectrum(const InternedType& type, const char* data);

std::span<const float> floatsOf(const StoredSpectrum& stored);

/// Returns the spectrum at `data`, which is laid out as `type` says. Borrowed: the view lives no
/// longer than the bytes. A null reference is a spectrum without floats. A code without a name
/// reads as Rgb.
/// Throws "Incompatible type for accessor -> {}." if the type may not stand for the spectrum type
/// or the reference leads to something else than floats, "Incompatible type for value -> {}." for
/// fewer floats than the encoding needs, and an Exception with the message of the code for a
/// foreign pointer, which is never followed.
SpectrumView readSpectrum(const InternedType& type, const char* data);

}  // namespace qex::vornath

#endif
