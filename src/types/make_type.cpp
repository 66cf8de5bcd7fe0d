#include "make_type.hpp"

#include <utility>

#include "type_factory.hpp"

namespace qex::vornath {
namespace {

Type::Factory& factory() { return *Type::get_factory(true); }

}  // namespace

TypePtr makeType(TypeDesc desc, const Metadata& metadata) {
  return factory().makeType(std::move(desc), metadata);
}

const Type& permanentType(const TypePtr& type) { return *factory().makePermanent(type.get()); }

}  // namespace qex::vornath
