#include "fixed_types.hpp"

#include <utility>

#include "base_types.hpp"
#include "make_type.hpp"

namespace qex::vornath {
namespace {

template <std::size_t Base>
const Type& fixedBaseType() {
  static const Type& type = permanentType(makeType(static_cast<Type::TBasetype>(Base)));
  return type;
}

using Getter = const Type& (*)();

template <std::size_t... Bases>
constexpr std::array<Getter, sizeof...(Bases)> getters(std::index_sequence<Bases...>) {
  return {&fixedBaseType<Bases>...};
}

constexpr auto kGetters = getters(std::make_index_sequence<kBaseTypes.size()>());

}  // namespace

const Type& baseType(Type::TBasetype base) {
  baseTypeInfo(base);
  return kGetters[static_cast<std::size_t>(base)]();
}

const Type& voidReferenceType() {
  static const Type& type = permanentType(makeType(Type::TRef{}));
  return type;
}

}  // namespace qex::vornath
