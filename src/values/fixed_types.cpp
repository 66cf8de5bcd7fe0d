#include "values/fixed_types.hpp"

#include <utility>

#include "types/base_types.hpp"
#include "types/make_type.hpp"

namespace qex::vornath {
namespace {

template <std::size_t Base>
const InternedType& fixedBaseType() {
  static const InternedType& type = permanentType(makeType(static_cast<Type::TBasetype>(Base)));
  return type;
}

using Getter = const InternedType& (*)();

template <std::size_t... Bases>
constexpr std::array<Getter, sizeof...(Bases)> getters(std::index_sequence<Bases...>) {
  return {&fixedBaseType<Bases>...};
}

constexpr auto kGetters = getters(std::make_index_sequence<kBaseTypes.size()>());

}  // namespace

const InternedType& baseType(Type::TBasetype base) {
  baseTypeInfo(base);
  return kGetters[static_cast<std::size_t>(base)]();
}

const InternedType& voidReferenceType() {
  static const InternedType& type = permanentType(makeType(Type::TRef{}));
  return type;
}

}  // namespace qex::vornath
