#include "metadata_value.hpp"

#include "dynamic_value.hpp"
#include "value_text.hpp"

namespace qex::vornath {

std::string metadataValueText(const DynamicValue& value) { return valueToString(value.view()); }

}  // namespace qex::vornath
