#include "colour/light_types.hpp"

#include "colour/type_construction.hpp"
#include "types/fixed_struct_types.hpp"

namespace qex::vornath {
namespace {

TypePtr makeLightUnit() {
  std::vector<Type::Constructor> units;
  for (const char* name : {"LUMEN", "CANDELA", "LUX", "NIT"}) units.push_back({name, {}, {}});
  return makeType(Type::TEnum(std::move(units)));
}

TypePtr makeEmission() {
  std::vector<Type::Field> fields;
  fields.push_back(makeField(spectrumType(), "color"));
  fields.emplace_back(makeType(Type::TBasetype::Float), "value");
  fields.push_back(makeField(lightUnitType(), "unit"));
  return makeStruct(std::move(fields));
}

}  // namespace

const InternedType& lightUnitType() {
  static const InternedType& type = permanentType(makeLightUnit());
  return type;
}

const InternedType& emissionType() {
  static const InternedType& type = permanentType(makeEmission());
  return type;
}

}  // namespace qex::vornath
