#include "relations.hpp"

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <utility>

#include "base_types.hpp"
#include "type_text.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using TEnum = Type::TEnum;
using TStruct = Type::TStruct;
using TRef = Type::TRef;
using TFun = Type::TFun;

// Pairs of twins that must still relate for the whole question to be answered with yes. All of them
// must, so their order is free, and a nest of types of any depth needs no call stack.
class OpenPairs {
 public:
  void add(const TypePtr& a, const TypePtr& b) {
    if (a != b) pairs_.emplace_back(a.get(), b.get());
  }
  bool take(const Type*& a, const Type*& b) {
    if (pairs_.empty()) return false;
    a = pairs_.back().first;
    b = pairs_.back().second;
    pairs_.pop_back();
    return true;
  }

 private:
  // On the stack as long as they are few: the common question allocates nothing.
  boost::container::small_vector<std::pair<const Type*, const Type*>, 32> pairs_;
};

bool sameNames(const TEnum& a, const TEnum& b) {
  return std::equal(a.constructors.begin(), a.constructors.end(), b.constructors.begin(),
                    b.constructors.end(),
                    [](const auto& left, const auto& right) { return left.name == right.name; });
}

bool sameLabels(const TStruct& a, const TStruct& b) {
  return std::equal(a.fields.begin(), a.fields.end(), b.fields.begin(), b.fields.end(),
                    [](const auto& left, const auto& right) { return left.label == right.label; });
}

template <typename D>
bool extentsFit(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) {
  return !b.shape || (a.shape && *a.shape == *b.shape);
}

// Whether two different descriptions relate, provided that the pairs added to `open` do.
bool relate(Type::TBasetype a, Type::TBasetype b, OpenPairs&) { return a == b; }

bool relate(const TEnum&, Type::TBasetype b, OpenPairs&) { return b == Type::TBasetype::Int; }

bool relate(const TEnum& a, const TEnum& b, OpenPairs&) { return sameNames(a, b); }

bool relate(const TStruct& a, const TStruct& b, OpenPairs& open) {
  if (!sameLabels(a, b)) return false;
  for (std::size_t i = 0; i < a.fields.size(); ++i) open.add(a.fields[i].type, b.fields[i].type);
  return true;
}

template <typename D>
bool relate(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b, OpenPairs& open) {
  if (!extentsFit(a, b)) return false;
  open.add(a.element, b.element);
  return true;
}

bool relate(const TRef& a, const TRef& b, OpenPairs& open) {
  if (!b.target) return true;
  if (!a.target) return false;
  open.add(a.target, b.target);
  return true;
}

bool relate(const TFun& a, const TFun& b, OpenPairs& open) {
  if (a.domain.size() != b.domain.size()) return false;
  for (std::size_t i = 0; i < a.domain.size(); ++i) open.add(b.domain[i], a.domain[i]);
  open.add(a.codomain, b.codomain);
  return true;
}

template <typename A, typename B>
bool relate(const A&, const B&, OpenPairs&) {
  return false;
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
  std::string operator()(const Type::TArrayND<int>&) const { return "array"; }
  std::string operator()(const Type::TArrayND<index2>&) const { return "array2d"; }
  std::string operator()(const Type::TArrayND<index3>&) const { return "array3d"; }
  std::string operator()(const Type::TArrayND<index4>&) const { return "array4d"; }
  std::string operator()(const TRef&) const { return "ref"; }
  std::string operator()(const TFun&) const { return "func"; }
};

// One step of the search for the first reason: either the reason's last words, or the inner pair of
// twins in which it lies, with the words that lead there. A pair that relates gives neither.
struct Reason {
  std::string words;
  const Type* a = nullptr;
  const Type* b = nullptr;
};

Reason unrelated(const Type& a, const Type& b) {
  return {"type " + std::visit(Label{}, a.desc()) + " does not match type " +
          std::visit(Label{}, b.desc())};
}

template <typename D>
std::string shapeText(const std::optional<D>& shape) {
  if (shape) return extentsText(*shape);
  // As the flat interface tells unknown extents: -1 for each.
  std::string text = "-1";
  for (std::size_t i = sizeof(std::int32_t); i < sizeof(D); i += sizeof(std::int32_t)) {
    text.append(",-1");
  }
  return text;
}

struct NextReason {
  const Type& typeA;
  const Type& typeB;

  Reason operator()(const TStruct& a, const TStruct& b) const {
    if (!sameLabels(a, b)) return unrelated(typeA, typeB);
    for (std::size_t i = 0; i < a.fields.size(); ++i) {
      const Type& fieldA = *a.fields[i].type;
      const Type& fieldB = *b.fields[i].type;
      if (!isSubType(fieldA, fieldB)) {
        return {"Type mismatch for field " + a.fields[i].label + ": ", &fieldA, &fieldB};
      }
    }
    return {};
  }

  template <typename D>
  Reason operator()(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) const {
    if (!extentsFit(a, b)) {
      return {"Expected array of size: " + shapeText(b.shape) +
              " - provided array of size: " + shapeText(a.shape)};
    }
    return {"Array type mismatch: ", a.element.get(), b.element.get()};
  }

  Reason operator()(const TRef& a, const TRef& b) const {
    if (!b.target) return {};
    if (!a.target) {
      return {"Provided reference is missing a reference type - expected: " + b.target->text()};
    }
    return {"Referenced type mismatch: ", a.target.get(), b.target.get()};
  }

  Reason operator()(const TFun& a, const TFun& b) const {
    if (a.domain.size() != b.domain.size()) {
      return {"Expected function with domain size: " + std::to_string(b.domain.size()) +
              "  - function with domain size: " + std::to_string(a.domain.size())};
    }
    for (std::size_t i = 0; i < a.domain.size(); ++i) {
      if (!isSubType(*b.domain[i], *a.domain[i])) {
        return {"Mismatch in function domain[" + std::to_string(i) + "]: ", b.domain[i].get(),
                a.domain[i].get()};
      }
    }
    return {"Function codomain mismatch: ", a.codomain.get(), b.codomain.get()};
  }

  template <typename A, typename B>
  Reason operator()(const A& a, const B& b) const {
    OpenPairs none;
    return relate(a, b, none) ? Reason{} : unrelated(typeA, typeB);
  }
};

}  // namespace

bool isSubType(const Type& a, const Type& b) {
  const Type* left = &a.stripped();
  const Type* right = &b.stripped();
  if (left == right) return true;
  OpenPairs open;
  do {
    const bool possible =
        std::visit([&open](const auto& x, const auto& y) { return relate(x, y, open); },
                   left->desc(), right->desc());
    if (!possible) return false;
  } while (open.take(left, right));
  return true;
}

std::optional<std::string> checkSubType(const Type& a, const Type& b) {
  const Type* left = &a.stripped();
  const Type* right = &b.stripped();
  std::string text;
  while (left != right) {
    Reason reason = std::visit(NextReason{*left, *right}, left->desc(), right->desc());
    if (reason.words.empty()) return std::nullopt;
    text.append(reason.words);
    if (!reason.a) return text;
    left = reason.a;
    right = reason.b;
  }
  return std::nullopt;
}

void requireRelated(const Type& a, const Type& b, const char* format) {
  if (&a.stripped() == &b.stripped() || isSubType(a, b)) return;
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, format,
                        checkSubType(a, b).value_or(std::string()));
}

}  // namespace qex::vornath
