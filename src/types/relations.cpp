#include "types/relations.hpp"

#include <algorithm>
#include <utility>

#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/type_text.hpp"
#include "types/walk.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using TEnum = Type::TEnum;
using TStruct = Type::TStruct;
using TRef = Type::TRef;
using TFun = Type::TFun;

bool sameNames(const TEnum& a, const TEnum& b) {
  return std::equal(a.constructors.begin(), a.constructors.end(), b.constructors.begin(),
                    b.constructors.end(),
                    [](const auto& left, const auto& right) { return left.name == right.name; });
}

bool sameLabels(const TStruct& a, const TStruct& b) {
  return std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(), b.fields.end(),
                    [](const auto& left, const auto& right) { return left.label == right.label; });
}

// The rules: whether a value of one description may stand where the other is expected (leaf) or not
// (stop), or whether that is up to the pairs of their parts, all of which must relate then.

Visit decided(bool related) { return related ? Visit::leaf() : Visit::stop(); }

Visit rule(Type::TBasetype a, Type::TBasetype b) { return decided(a == b); }

Visit rule(const TEnum&, Type::TBasetype b) { return decided(b == Type::TBasetype::Int); }

Visit rule(const TEnum& a, const TEnum& b) { return decided(sameNames(a, b)); }

Visit rule(const TStruct& a, const TStruct& b) {
  if (!sameLabels(a, b)) return Visit::stop();
  // Most fields are of one type on both sides: the walk needs those from the first to the last
  // that aren't.
  const auto alike = [&](std::size_t i) { return a.fields[i].type == b.fields[i].type; };
  std::size_t first = 0;
  std::size_t end = a.fields.size();
  while (first < end && alike(first)) ++first;
  if (first == end) return Visit::leaf();
  while (alike(end - 1)) --end;
  return Visit::parts(end, first);
}

template <typename D>
Visit rule(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) {
  return b.shape && Extents(a) != Extents(b) ? Visit::stop() : Visit::parts(1);
}

Visit rule(const TRef& a, const TRef& b) {
  if (!b.target) return Visit::leaf();
  return a.target ? Visit::parts(1) : Visit::stop();
}

Visit rule(const TFun& a, const TFun& b) {
  return a.domain.size() == b.domain.size() ? Visit::parts(a.domain.size() + 1) : Visit::stop();
}

template <typename A, typename B>
Visit rule(const A&, const B&) {
  return decided(false);
}

Visit ruleOf(const InternedType& a, const InternedType& b) {
  return std::visit([](const auto& x, const auto& y) { return rule(x, y); }, a.desc(), b.desc());
}

// The first of a pair must relate to the second.
struct Pair {
  const InternedType* a;
  const InternedType* b;
};

Pair part(const TStruct& a, const TStruct& b, std::size_t i) {
  return {a.fields[i].type.get(), b.fields[i].type.get()};
}
template <typename D>
Pair part(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b, std::size_t) {
  return {a.element.get(), b.element.get()};
}
Pair part(const TRef& a, const TRef& b, std::size_t) { return {a.target.get(), b.target.get()}; }
// What a function takes may be more than what is expected of it, what it gives may be less.
Pair part(const TFun& a, const TFun& b, std::size_t i) {
  if (i == a.domain.size()) return {a.codomain.get(), b.codomain.get()};
  return {b.domain[i].get(), a.domain[i].get()};
}
template <typename Leaf>
Pair part(const Leaf&, const Leaf&, std::size_t) {
  return {};  // has no parts
}

Pair partOf(const Pair& pair, std::size_t i) {
  // A pair with parts is of one kind.
  return std::visit(
      [&](const auto& a) { return part(a, *pair.b->getIf<std::decay_t<decltype(a)>>(), i); },
      pair.a->desc());
}

// The words of a reason: those that lead to a part, and those that tell why a pair itself doesn't
// relate.

std::string leadTo(const TStruct& a, std::size_t i) {
  return "Type mismatch for field " + a.fields[i].label + ": ";
}
template <typename D>
std::string leadTo(const Type::TArrayND<D>&, std::size_t) {
  return "Array type mismatch: ";
}
std::string leadTo(const TRef&, std::size_t) { return "Referenced type mismatch: "; }
std::string leadTo(const TFun& a, std::size_t i) {
  if (i == a.domain.size()) return "Function codomain mismatch: ";
  return "Mismatch in function domain[" + std::to_string(i) + "]: ";
}
template <typename Leaf>
std::string leadTo(const Leaf&, std::size_t) {
  return {};  // has no parts
}

// What a side is called in a reason; not always its text.
struct Label {
  std::string operator()(Type::TBasetype base) const { return baseTypeInfo(base).spelling; }
  std::string operator()(const TEnum& enumeration) const { return enumText(enumeration); }
  std::string operator()(const TStruct& structure) const {
    std::string text = "{ ";
    for (const Type::Field& field : structure.fields) text.append(field.label).append("; ");
    return text.append("}");
  }
  template <typename D>
  std::string operator()(const Type::TArrayND<D>& array) const {
    const std::size_t rank = Extents(array).rank();
    return rank == 1 ? "array" : "array" + std::to_string(rank) + "d";
  }
  std::string operator()(const TRef&) const { return "ref"; }
  std::string operator()(const TFun&) const { return "func"; }
};

template <typename A, typename B>
std::string reason(const A& a, const B& b) {
  return "type " + Label()(a) + " does not match type " + Label()(b);
}
template <typename D>
std::string reason(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) {
  return "Expected array of size: " + Extents(b).text() +
         " - provided array of size: " + Extents(a).text();
}
std::string reason(const TRef&, const TRef& b) {
  return "Provided reference is missing a reference type - expected: " + b.target->text();
}
std::string reason(const TFun& a, const TFun& b) {
  return "Expected function with domain size: " + std::to_string(b.domain.size()) +
         "  - function with domain size: " + std::to_string(a.domain.size());
}

// The walk through the pairs of twins, which ends at the first one that doesn't relate.
template <bool KeepsPath>
class Relation {
 public:
  bool holds(const InternedType& a, const InternedType& b) { return walk_.run(*this, {&a, &b}); }

  // After holds() was false.
  std::string reason() const {
    static_assert(KeepsPath);
    std::string text;
    for (const auto& level : walk_.levels()) {
      text += std::visit([&](const auto& a) { return leadTo(a, level.current()); },
                         level.node.a->desc());
    }
    return text + std::visit([](const auto& a, const auto& b) { return vornath::reason(a, b); },
                             unrelated_.a->desc(), unrelated_.b->desc());
  }

  Visit enter(const Pair& pair) {
    if (pair.a == pair.b) return Visit::leaf();
    const Visit visit = ruleOf(*pair.a, *pair.b);
    if (visit.isStop()) unrelated_ = pair;
    return visit;
  }
  Pair part(const Pair& pair, std::size_t i) { return partOf(pair, i); }

 private:
  Walk<Pair, KeepsPath> walk_;
  Pair unrelated_{};
};

}  // namespace

bool isSubTypeGivenParts(const InternedType& a, const InternedType& b) {
  return !ruleOf(a, b).isStop();
}

bool isSubType(const InternedType& a, const InternedType& b) {
  if (&a.stripped() == &b.stripped()) return true;
  Relation<false> relation;
  return relation.holds(a.stripped(), b.stripped());
}

std::optional<std::string> checkSubType(const InternedType& a, const InternedType& b) {
  Relation<true> relation;
  if (relation.holds(a.stripped(), b.stripped())) return std::nullopt;
  return relation.reason();
}

void requireRelated(const InternedType& a, const InternedType& b, const char* format) {
  if (isSubType(a, b)) return;
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, format, checkSubType(a, b).value());
}

}  // namespace qex::vornath
