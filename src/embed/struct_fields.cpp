// Fields by their labels. Flat functions take them by index.
#include "types/parts.hpp"
#include "types/type.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {

bool Type::TStruct::hasField(std::string_view label) const {
  for (const Field& field : fields) {
    if (field.label == label) return true;
  }
  return false;
}

std::size_t Type::TStruct::fieldIndex(std::string_view label) const {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    if (fields[i].label == label) return i;
  }
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, "Field not found in struct: {}.", label);
}

Part fieldPart(const InternedType& structType, std::string_view label) {
  return fieldPart(structType, std::get<Type::TStruct>(structType.desc()).fieldIndex(label));
}

}  // namespace qex::vornath
