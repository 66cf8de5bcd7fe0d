#include "types/type_queries.hpp"

#include <cstddef>

#include "foundation/half.hpp"
#include "foundation/load.hpp"

namespace vrtk {

bool isStruct(const vrntType_t* type) {
  const std::uint32_t kind = vrntTypeDescriptor(type);
  return kind == VRNT_DESCRIPTOR_STRUCT ||
         (kind == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
}

std::uint64_t elementCount(const vrntType_t* arrayType) {
  std::int32_t shape[4] = {1, 1, 1, 1};
  vrntTypeArrayShape(arrayType, shape);
  // The library multiplies extents in 32 bits, and lays out no element if the product is negative.
  std::uint32_t product = 1;
  for (const std::int32_t extent : shape) {
    if (extent < 0) return 0;
    product *= static_cast<std::uint32_t>(extent);
  }
  const auto count = static_cast<std::int32_t>(product);
  return count < 0 ? 0 : static_cast<std::uint64_t>(count);
}

std::optional<LaneType> laneType(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_BASE) return std::nullopt;
  const std::uint32_t family = vrntTypeBasetype(type);
  if (family == VRNT_BASETYPE_STRUCT) return std::nullopt;
  const std::uint32_t size = family == VRNT_BASETYPE_CHAR   ? 1
                             : family == VRNT_BASETYPE_HALF ? 2
                                                            : 4;
  return LaneType{family, vrntTypeVectorDimension(type), size};
}

double laneNumber(const LaneType& type, const char* bytes, std::uint32_t lane) {
  const char* const at = bytes + std::size_t{lane} * type.size;
  switch (type.family) {
    case VRNT_BASETYPE_CHAR:
      return load<std::uint8_t>(at);
    case VRNT_BASETYPE_HALF:
      return halfToFloat(load<std::uint16_t>(at));
    case VRNT_BASETYPE_FLOAT:
      return load<float>(at);
    default:
      return load<std::int32_t>(at);
  }
}

const char* compoundName(const vrntType_t* type) {
  if (isStruct(type)) return "struct";
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ARRAY:
      return "array";
    case VRNT_DESCRIPTOR_REFERENCE:
      return "reference";
    case VRNT_DESCRIPTOR_ENUM:
      return "enum";
    case VRNT_DESCRIPTOR_FUNCTION:
      return "function";
    default:
      return nullptr;
  }
}

}  // namespace vrtk
