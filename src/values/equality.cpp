#include "values/equality.hpp"

#include <cmath>
#include <set>
#include <utility>

#include "types/base_types.hpp"
#include "types/parts.hpp"
#include "types/relations.hpp"
#include "types/walk.hpp"
#include "values/half.hpp"
#include "values/value_text.hpp"

namespace qex::vornath {
namespace {

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

bool floatsEqual(float a, float b, float tolerance) {
  if (std::isinf(a) && std::isinf(b)) return a == b;
  return tolerance >= std::fabs(a - b);
}

bool halfsEqual(Float16 a, Float16 b, float tolerance) {
  if (isInfinite(a) && isInfinite(b)) return a.bits == b.bits;
  return tolerance >= std::fabs(halfDifference(a, b));
}

struct Side {
  const InternedType* type;
  const char* data;
};

Side partOf(const Side& whole, const Part& place) {
  return {place.type, whole.data + place.offset};
}

// The types of both sides relate both ways, so that they have the same form; each side keeps its
// own for the words of a reason.
class Comparison {
 public:
  struct Node {
    Side a, b;
    Parts partsA{}, partsB{};
  };

  Comparison(float tolerance, std::string* reason) : tolerance_(tolerance), reason_(reason) {}

  bool run(const Side& a, const Side& b) {
    return sameType(*a.type, *b.type) && walk_.run(*this, {a, b});
  }

  // Compares values without parts, following references.
  Visit enter(Node& node) {
    for (;;) {
      switch (
          std::visit([&](const auto& desc) { return begin(desc, node); }, node.a.type->desc())) {
        case Outcome::Equal:
          return Visit::leaf();
        case Outcome::Parts:
          return partsFrom(firstToCompare(node), node.partsA.count());
        case Outcome::Unequal:
          explain(node.a, node.b);
          return Visit::stop();
        case Outcome::Unexplained:
          return Visit::stop();
        case Outcome::Referred:
          break;
      }
      vrntValue_t* const blockA = blockOfWord(loadWord(node.a.data));
      vrntValue_t* const blockB = blockOfWord(loadWord(node.b.data));
      if (wasVisited(blockA, blockB)) return Visit::leaf();
      node.a = {&blockType(blockA), blockData(blockA)};
      node.b = {&blockType(blockB), blockData(blockB)};
      if (!isSubType(*node.a.type, *node.b.type)) {
        explainTypes("Referenced type mismatch: ", *node.a.type, *node.b.type);
        return Visit::stop();
      }
      if (!sameType(*node.a.type, *node.b.type)) return Visit::stop();
    }
  }

  Node part(const Node& node, std::size_t i) {
    return {partOf(node.a, node.partsA[i]), partOf(node.b, node.partsB[i])};
  }

 private:
  enum class Outcome { Equal, Unequal, Unexplained, Parts, Referred };

  // Whether the pair was met before. It is then equal or the whole comparison fails on its account,
  // so it needs no second look: there are twice as many ways to a pair with each level that refers
  // to it twice. A pair of which nothing is shared can't be met again, and one that leads nowhere
  // is compared in no time.
  bool wasVisited(vrntValue_t* a, vrntValue_t* b) {
    if (isExclusive(a) && isExclusive(b)) return false;
    if (blockType(a).refSlotCount() == 0) return false;
    return !visited_.emplace(a, b).second;
  }

  static Outcome outcome(bool equal) { return equal ? Outcome::Equal : Outcome::Unequal; }

  Outcome begin(Type::TBasetype base, const Node& node) const {
    return outcome(basesEqual(baseTypeInfo(base), node.a.data, node.b.data));
  }

  Outcome begin(const Type::TEnum&, const Node& node) const {
    return outcome(load<std::int32_t>(node.a.data) == load<std::int32_t>(node.b.data));
  }

  Outcome begin(const Type::TStruct& structure, Node& node) const {
    node.partsA = Parts(structure);
    node.partsB = Parts(*node.b.type->getIf<Type::TStruct>());
    return Outcome::Parts;
  }

  template <typename D>
  Outcome begin(const Type::TArrayND<D>& array, Node& node) const {
    // Any number of elements without bytes may stand in a value, and they are all equal.
    if (array.element->size() == 0) return Outcome::Equal;
    node.partsA = Parts(array);
    node.partsB = Parts(*node.b.type->getIf<Type::TArrayND<D>>());
    return Outcome::Parts;
  }

  Outcome begin(const Type::TRef&, const Node& node) const {
    const std::uint64_t wordA = loadWord(node.a.data);
    const std::uint64_t wordB = loadWord(node.b.data);
    if (wordA == wordB) return Outcome::Equal;
    return isBlockWord(wordA) && isBlockWord(wordB) ? Outcome::Referred : Outcome::Unexplained;
  }

  Outcome begin(const Type::TFun&, const Node& node) const {
    return outcome(std::memcmp(node.a.data, node.b.data, 2 * kWordSize) == 0);
  }

  static Visit partsFrom(std::size_t first, std::size_t count) {
    return first == count ? Visit::leaf() : Visit::parts(count, first);
  }

  // Numbers are the most of what is compared: the equal ones that an array begins with are passed
  // over here.
  std::size_t firstToCompare(const Node& node) const {
    std::size_t first = 0;
    if (node.partsA.structure() != nullptr) return first;
    if (const auto* base = node.partsA.element().getIf<Type::TBasetype>()) {
      const std::uint64_t size = node.partsA.stride();
      const BaseTypeInfo& info = baseTypeInfo(*base);
      while (first < node.partsA.count() &&
             basesEqual(info, node.a.data + first * size, node.b.data + first * size)) {
        ++first;
      }
    }
    return first;
  }

  bool basesEqual(const BaseTypeInfo& info, const char* a, const char* b) const {
    for (std::uint32_t lane = 0; lane < info.lanes; ++lane) {
      const std::uint64_t offset = lane * info.laneSize;
      if (!lanesEqual(info.family, a + offset, b + offset)) return false;
    }
    return true;
  }

  bool lanesEqual(BaseFamily family, const char* a, const char* b) const {
    switch (family) {
      case BaseFamily::Bool:
        return (load<std::uint32_t>(a) != 0) == (load<std::uint32_t>(b) != 0);
      case BaseFamily::Int:
        return load<std::int32_t>(a) == load<std::int32_t>(b);
      case BaseFamily::Char:
        return *a == *b;
      case BaseFamily::Float:
        return floatsEqual(load<float>(a), load<float>(b), tolerance_);
      case BaseFamily::Half:
        break;
    }
    return halfsEqual(halfFromBits(load<std::uint16_t>(a)), halfFromBits(load<std::uint16_t>(b)),
                      tolerance_);
  }

  bool sameType(const InternedType& a, const InternedType& b) const {
    if (isSameType(a, b)) return true;
    explainTypes("Type mismatch: ", a, b);
    return false;
  }

  void explainTypes(const char* start, const InternedType& a, const InternedType& b) const {
    if (reason_ != nullptr) setReason(start, a.text(), b.text());
  }

  void explain(const Side& a, const Side& b) const {
    if (reason_ == nullptr) return;
    std::string start = path();
    if (!start.empty()) start += ": ";
    setReason(start, valueToString(*a.type, a.data), valueToString(*b.type, b.data));
  }

  void setReason(const std::string& start, const std::string& a, const std::string& b) const {
    *reason_ = start + a + " != " + b;
  }

  // The parts that are open, outermost first.
  std::string path() const {
    std::string path;
    for (const auto& level : walk_.levels()) {
      const std::size_t part = level.current();
      if (const auto* const structure = level.node.partsA.structure()) {
        path.append(".").append(structure->fields[part].label);
      } else {
        path.append("[").append(std::to_string(part)).append("]");
      }
    }
    return path;
  }

  float tolerance_;
  std::string* reason_;
  Walk<Node> walk_;
  std::set<std::pair<const vrntValue_t*, const vrntValue_t*>> visited_;
};

}  // namespace

bool valuesEqual(const ConstView& a, const ConstView& b, float tolerance, std::string* reason) {
  return Comparison(tolerance, reason).run({a.type, a.data()}, {b.type, b.data()});
}

}  // namespace qex::vornath
