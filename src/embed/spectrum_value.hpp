/// Values of the universal spectrum type.
#ifndef VORNATH_EMBED_SPECTRUM_VALUE_HPP
#define VORNATH_EMBED_SPECTRUM_VALUE_HPP

#include <span>

#include "types/spectrum_encoding.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

/// A spectrum with a new array of the floats behind its reference. The number of floats is not
/// compared with the encoding.
DynamicValue makeSpectrumValue(SpectrumEncoding encoding, std::span<const float> floats);

}  // namespace qex::vornath

#endif
