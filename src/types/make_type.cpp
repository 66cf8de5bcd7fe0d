#include "types/make_type.hpp"

#include <utility>

#include "types/type_factory.hpp"

namespace qex::vornath {
namespace {

Type::Factory& factory() { return *Type::get_factory(true); }

}  // namespace

TypePtr makeType(TypeDesc&& desc, const Metadata& metadata) {
  return factory().makeType(std::move(desc), metadata);
}

TypePtr makeType(TypeDesc&& desc, Metadata&& metadata) {
  return factory().makeType(std::move(desc), std::move(metadata));
}

TypePtr makeType(const TypeDesc& desc, const Metadata& metadata) {
  return factory().makeType(desc, metadata);
}

TypePtr makeArrayType(const InternedType& element, std::int32_t extent) {
  if (TypePtr found = factory().findArray(element, extent)) return found;
  return makeType(Type::TArrayND<int>(TypePtr(&element), extent));
}

const InternedType& permanentType(const TypePtr& type) {
  return *factory().makePermanent(type.get());
}

}  // namespace qex::vornath
