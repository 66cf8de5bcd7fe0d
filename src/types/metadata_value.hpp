/// What metadata asks of the value layer, above it: the text of a boxed value.
#ifndef VORNATH_TYPES_METADATA_VALUE_HPP
#define VORNATH_TYPES_METADATA_VALUE_HPP

#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// The value in the text form, all options off.
std::string metadataValueText(const DynamicValue& value);

}  // namespace qex::vornath

#endif
