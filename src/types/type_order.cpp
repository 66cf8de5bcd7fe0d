#include "types/type_order.hpp"

#include <algorithm>
#include <functional>
#include <utility>

#include "types/extents.hpp"

namespace qex::vornath {
namespace {

// Where two descriptions differ: either decided, or in a pair of children that are different
// objects. Interning makes different children unequal in the order, so the comparison goes on in
// the first such pair and never comes back, and needs no stack.
struct Difference {
  int sign = 0;
  const InternedType* a = nullptr;
  const InternedType* b = nullptr;

  bool found() const { return sign != 0 || a != nullptr; }
};

template <typename T>
int threeWay(const T& a, const T& b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

int sign(int comparison) { return (comparison > 0) - (comparison < 0); }

Difference difference(const TypePtr& a, const TypePtr& b) {
  if (a == b) return {};
  if (!a) return {-1};
  if (!b) return {1};
  return {0, a.get(), b.get()};
}

int compareEntries(const MetadataEntry& a, const MetadataEntry& b) {
  if (a.index() != b.index()) return threeWay(a.index(), b.index());
  if (const auto* text = std::get_if<std::string>(&a)) {
    return sign(text->compare(std::get<std::string>(b)));
  }
  if (const auto* value = std::get_if<HeapValue<DynamicValue>>(&a)) {
    const std::less<const DynamicValue*> before;
    const DynamicValue* left = value->get();
    const DynamicValue* right = std::get<HeapValue<DynamicValue>>(b).get();
    return before(left, right) ? -1 : (before(right, left) ? 1 : 0);
  }
  return 0;
}

int compareMetadata(const Metadata& a, const Metadata& b) {
  auto left = a.begin();
  auto right = b.begin();
  for (; left != a.end() && right != b.end(); ++left, ++right) {
    if (const int keys = sign(left->first.compare(right->first))) return keys;
    if (const int entries = compareEntries(left->second, right->second)) return entries;
  }
  return threeWay(left != a.end(), right != b.end());
}

template <typename T, typename Compare>
Difference compareLists(const std::vector<T>& a, const std::vector<T>& b, Compare compare) {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (const Difference d = compare(a[i], b[i]); d.found()) return d;
  }
  return {threeWay(a.size(), b.size())};
}

Difference compare(Type::TBasetype a, Type::TBasetype b) { return {threeWay(a, b)}; }

Difference compare(const Type::TEnum& a, const Type::TEnum& b) {
  return compareLists(
      a.constructors, b.constructors,
      [](const Type::Constructor& left, const Type::Constructor& right) {
        const int names = sign(left.name.compare(right.name));
        return Difference{names ? names : compareMetadata(left.metadata, right.metadata)};
      });
}

Difference compare(const Type::TStruct& a, const Type::TStruct& b) {
  return compareLists(a.fields, b.fields, [](const Type::Field& left, const Type::Field& right) {
    const Difference types = difference(left.type, right.type);
    return types.found() ? types : Difference{sign(left.label.compare(right.label))};
  });
}

template <typename D>
Difference compare(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) {
  const Difference elements = difference(a.element, b.element);
  if (elements.found()) return elements;
  return {threeWay(Extents(a), Extents(b))};
}

Difference compare(const Type::TRef& a, const Type::TRef& b) {
  return difference(a.target, b.target);
}

Difference compare(const Type::TFun& a, const Type::TFun& b) {
  const Difference codomains = difference(a.codomain, b.codomain);
  if (codomains.found()) return codomains;
  return compareLists(a.domain, b.domain, difference);
}

Difference compareDescs(const TypeDesc& a, const TypeDesc& b) {
  if (a.index() != b.index()) return {threeWay(a.index(), b.index())};
  return std::visit(
      [&b](const auto& left) { return compare(left, std::get<std::decay_t<decltype(left)>>(b)); },
      a);
}

// Equality of descriptions whose parts are interned.

bool equal(const Metadata& a, const Metadata& b) {
  if (a.size() != b.size()) return false;
  return a.empty() || compareMetadata(a, b) == 0;
}

template <typename T, typename Equal>
bool equalLists(const std::vector<T>& a, const std::vector<T>& b, Equal equalItems) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), equalItems);
}

bool equal(Type::TBasetype a, Type::TBasetype b) { return a == b; }

bool equal(const Type::TEnum& a, const Type::TEnum& b) {
  return equalLists(a.constructors, b.constructors,
                    [](const Type::Constructor& left, const Type::Constructor& right) {
                      return left.name == right.name && equal(left.metadata, right.metadata);
                    });
}

bool equal(const Type::TStruct& a, const Type::TStruct& b) {
  return equalLists(a.fields, b.fields, [](const Type::Field& left, const Type::Field& right) {
    return left.type == right.type && left.label == right.label;
  });
}

template <typename D>
bool equal(const Type::TArrayND<D>& a, const Type::TArrayND<D>& b) {
  return a.element == b.element && a.shape == b.shape;
}

bool equal(const Type::TRef& a, const Type::TRef& b) { return a.target == b.target; }

bool equal(const Type::TFun& a, const Type::TFun& b) {
  return a.codomain == b.codomain && a.domain == b.domain;
}

}  // namespace

int compareTypes(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                 const Metadata& metadataB) {
  const Metadata* annotationsA = &metadataA;
  const Metadata* annotationsB = &metadataB;
  Difference d = compareDescs(descA, descB);
  while (d.a != nullptr) {
    annotationsA = &d.a->metadata();
    annotationsB = &d.b->metadata();
    d = compareDescs(d.a->desc(), d.b->desc());
  }
  return d.sign != 0 ? d.sign : compareMetadata(*annotationsA, *annotationsB);
}

bool equalInterned(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                   const Metadata& metadataB) noexcept {
  if (descA.index() != descB.index()) return false;
  const bool alike = std::visit(
      [&descB](const auto& a) { return equal(a, *std::get_if<std::decay_t<decltype(a)>>(&descB)); },
      descA);
  return alike && equal(metadataA, metadataB);
}

}  // namespace qex::vornath
