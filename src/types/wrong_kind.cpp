#include "types/wrong_kind.hpp"

#include "vornath_data/detail/wrong_kind.hpp"

namespace qex::vornath {

using vrnt::detail::WrongKind;

namespace {

struct KindName {
  const char* operator()(Type::TBasetype) const { return "the base type "; }
  const char* operator()(const Type::TStruct&) const { return "the struct "; }
  const char* operator()(const Type::TRef&) const { return "the reference "; }
  const char* operator()(const Type::TFun&) const { return "the function "; }
  // The text of an enum begins with the kind's name.
  const char* operator()(const Type::TEnum&) const { return "the "; }
  template <typename D>
  const char* operator()(const Type::TArrayND<D>&) const {
    return "the array ";
  }
};

}  // namespace

void raiseWrongKind(const char* function, const char* takes, const InternedType& given) {
  const char* const kind = std::visit(KindName(), given.desc());
  if (!given.hasLongText()) throw WrongKind(function, takes, kind, given.text());
  const bool isEnum = given.getIf<Type::TEnum>() != nullptr;
  throw WrongKind(function, takes, kind, isEnum ? "enum with a long text" : "with a long text");
}

}  // namespace qex::vornath
