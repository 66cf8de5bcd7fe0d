/// What metadata need of the value layer, above this one: the text of a boxed value.
#ifndef VORNATH_TYPES_METADATA_VALUE_HPP
#define VORNATH_TYPES_METADATA_VALUE_HPP

#include <string>

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the text of the value, without options.
std::string metadataValueText(const DynamicValue& value);

}  // namespace qex::vornath

#endif
