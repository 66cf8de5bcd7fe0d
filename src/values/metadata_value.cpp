#include "types/metadata_value.hpp"

#include "values/dynamic_value.hpp"
#include "values/value_text.hpp"

namespace qex::vornath {

std::string metadataValueText(const DynamicValue& value) { return valueToString(value.view()); }

}  // namespace qex::vornath
