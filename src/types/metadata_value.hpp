/// What metadata asks of the value layer, above it: the text of a boxed value, and a handle on it.
#ifndef VORNATH_TYPES_METADATA_VALUE_HPP
#define VORNATH_TYPES_METADATA_VALUE_HPP

#include <string>

#include "vornath_data/type_library.hpp"

namespace qex::vornath {

/// The value in the text form, all options off.
std::string metadataValueText(const DynamicValue& value);

/// allocateValue() for a host that reads metadata: without memory for a long text of its type it
/// gets the value all the same.
vrntValue_t* shareMetadataValue(const DynamicValue& value) noexcept;

}  // namespace qex::vornath

#endif
