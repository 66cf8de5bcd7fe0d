#include "light_types.hpp"

#include "fixed_struct_types.hpp"
#include "type_making.hpp"

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

const Type& lightUnitType() {
  static const Type& type = permanentType(makeLightUnit());
  return type;
}

const Type& emissionType() {
  static const Type& type = permanentType(makeEmission());
  return type;
}

}  // namespace qex::vornath
