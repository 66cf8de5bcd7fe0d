#include "types/make_type.hpp"

#include <utility>

#include "types/type_factory.hpp"

namespace qex::vornath {
namespace {

Type::Factory& factory() { return *Type::get_factory(true); }

}  // namespace

TypePtr makeType(TypeDesc desc, const Metadata& metadata) {
  return factory().makeType(std::move(desc), metadata);
}

const InternedType& permanentType(const TypePtr& type) {
  return *factory().makePermanent(type.get());
}

}  // namespace qex::vornath
