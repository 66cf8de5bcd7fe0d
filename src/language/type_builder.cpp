#include "language/type_builder.hpp"

#include <utility>

#include "types/make_type.hpp"
#include "types/metadata.hpp"

namespace qex::vornath::build {

TypePtr type(TypeDesc desc, Metadata metadata) {
  return makeType(std::move(desc), std::move(metadata));
}

TypeDesc array(TypePtr element, const Extents& extents) {
  return makeArrayDesc(std::move(element), extents);
}

TypeDesc structure(Fields fields) { return Type::TStruct(std::move(fields)); }

TypeDesc reference(TypePtr target) { return Type::TRef{std::move(target)}; }

TypeDesc function(Types domain, TypePtr codomain) {
  return Type::TFun{std::move(domain), std::move(codomain)};
}

std::optional<Type::TEnum> enumeration(Constructors constructors) {
  return Type::TEnum(std::move(constructors));
}

Type::Constructor constructor(std::string name, Fields payload, Metadata metadata) {
  return {std::move(name), std::move(metadata), Type::TStruct(std::move(payload))};
}

MetadataEntry valueEntry(DynamicValue value) { return HeapValue<DynamicValue>(std::move(value)); }

Metadata annotate(Metadata metadata, std::string key, MetadataEntry entry) {
  setMetadata(metadata, std::move(key), std::move(entry));
  return metadata;
}

}  // namespace qex::vornath::build
