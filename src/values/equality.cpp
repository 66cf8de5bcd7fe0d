#include "equality.hpp"

#include <boost/container/small_vector.hpp>
#include <cmath>
#include <set>
#include <utility>

#include "base_types.hpp"
#include "half.hpp"
#include "relations.hpp"
#include "value_text.hpp"

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
  if (a.isInfinity() && b.isInfinity()) return a.isNegative() == b.isNegative();
  const Float16 difference = halfFromFloat(halfToFloat(a) + halfToFloat(-b));
  return tolerance >= std::fabs(halfToFloat(difference));
}

struct Side {
  const Type* type;
  const char* data;
};

Side partOf(const Side& whole, const Place& place) {
  return {place.type, whole.data + place.offset};
}

// The types of both sides relate both ways, so that they have the same form; each side keeps its
// own for the words of a reason.
class Comparison {
 public:
  Comparison(float tolerance, std::string* reason) : tolerance_(tolerance), reason_(reason) {}

  bool run(const Side& a, const Side& b) {
    if (!sameType(*a.type, *b.type) || !open(a, b)) return false;
    while (!frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.count) {
        frames_.pop_back();
        continue;
      }
      const std::size_t part = frame.next++;
      if (frame.a.type->getIf<Type::TStruct>() != nullptr) {
        const Side partA = partOf(frame.a, fieldPlace(*frame.a.type, part));
        const Side partB = partOf(frame.b, fieldPlace(*frame.b.type, part));
        if (!open(partA, partB)) return false;
      } else {
        const Type* elementA = arrayElements(*frame.a.type).element;
        const Type* elementB = arrayElements(*frame.b.type).element;
        const std::uint64_t offset = part * elementA->size();
        if (!open({elementA, frame.a.data + offset}, {elementB, frame.b.data + offset})) {
          return false;
        }
      }
    }
    return true;
  }

 private:
  struct Frame {
    Side a, b;
    std::size_t count;
    std::size_t next;
  };

  enum class Outcome { Equal, Unequal, Unexplained, Parts, Referred };

  // Compares values without parts, following references; with parts they become the topmost frame.
  // False on a mismatch.
  bool open(Side a, Side b) {
    for (;;) {
      const Outcome outcome =
          std::visit([&](const auto& desc) { return begin(desc, a, b); }, a.type->desc());
      switch (outcome) {
        case Outcome::Equal:
        case Outcome::Parts:
          return true;
        case Outcome::Unequal:
          explain(a, b);
          return false;
        case Outcome::Unexplained:
          return false;
        case Outcome::Referred:
          break;
      }
      vrntValue_t* const blockA = blockOfWord(loadWord(a.data));
      vrntValue_t* const blockB = blockOfWord(loadWord(b.data));
      if (wasMet(blockA, blockB)) return true;
      a = {&blockType(blockA), blockData(blockA)};
      b = {&blockType(blockB), blockData(blockB)};
      if (!isSubType(*a.type, *b.type)) {
        explainTypes("Referenced type mismatch: ", *a.type, *b.type);
        return false;
      }
      if (!sameType(*a.type, *b.type)) return false;
    }
  }

  // Whether the pair was met before. It is then equal or the whole comparison fails on its account,
  // so it needs no second look: there are twice as many ways to a pair with each level that refers
  // to it twice. A pair of which nothing is shared can't be met again, and one that leads nowhere
  // is compared in no time.
  bool wasMet(vrntValue_t* a, vrntValue_t* b) {
    if (isExclusive(a) && isExclusive(b)) return false;
    if (blockType(a).refSlotCount() == 0) return false;
    return !met_.emplace(a, b).second;
  }

  static Outcome outcome(bool equal) { return equal ? Outcome::Equal : Outcome::Unequal; }

  Outcome begin(Type::TBasetype base, const Side& a, const Side& b) const {
    return outcome(basesEqual(baseTypeInfo(base), a.data, b.data));
  }

  Outcome begin(const Type::TEnum&, const Side& a, const Side& b) const {
    return outcome(load<std::int32_t>(a.data) == load<std::int32_t>(b.data));
  }

  Outcome begin(const Type::TStruct& structure, const Side& a, const Side& b) {
    frames_.push_back({a, b, structure.fields.size(), 0});
    return Outcome::Parts;
  }

  template <typename D>
  Outcome begin(const Type::TArrayND<D>& array, const Side& a, const Side& b) {
    if (!array.shape) return Outcome::Equal;
    // Any number of elements without bytes may stand in a value, and they are all equal.
    const std::size_t count = array.element->size() == 0 ? 0 : Extents(array).elements();
    std::size_t first = 0;
    // Numbers are the most of what is compared: the equal ones among them are passed over here.
    if (const auto* base = array.element->template getIf<Type::TBasetype>()) {
      const std::uint64_t size = array.element->size();
      const BaseTypeInfo& info = baseTypeInfo(*base);
      while (first < count && basesEqual(info, a.data + first * size, b.data + first * size))
        ++first;
    }
    frames_.push_back({a, b, count, first});
    return Outcome::Parts;
  }

  Outcome begin(const Type::TRef&, const Side& a, const Side& b) const {
    const std::uint64_t wordA = loadWord(a.data);
    const std::uint64_t wordB = loadWord(b.data);
    if (wordA == wordB) return Outcome::Equal;
    return isBlockWord(wordA) && isBlockWord(wordB) ? Outcome::Referred : Outcome::Unexplained;
  }

  Outcome begin(const Type::TFun&, const Side& a, const Side& b) const {
    return outcome(std::memcmp(a.data, b.data, 2 * kWordSize) == 0);
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

  bool sameType(const Type& a, const Type& b) const {
    if (isSameType(a, b)) return true;
    explainTypes("Type mismatch: ", a, b);
    return false;
  }

  void explainTypes(const char* start, const Type& a, const Type& b) const {
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
    for (const Frame& frame : frames_) {
      const std::size_t part = frame.next - 1;
      if (const auto* structure = frame.a.type->getIf<Type::TStruct>()) {
        path.append(".").append(structure->fields[part].label);
      } else {
        path.append("[").append(std::to_string(part)).append("]");
      }
    }
    return path;
  }

  float tolerance_;
  std::string* reason_;
  boost::container::small_vector<Frame, 16> frames_;  // on the stack as long as they are few
  std::set<std::pair<const vrntValue_t*, const vrntValue_t*>> met_;
};

}  // namespace

bool valuesEqual(const ConstView& a, const ConstView& b, float tolerance, std::string* reason) {
  return Comparison(tolerance, reason).run({a.type, a.data()}, {b.type, b.data()});
}

}  // namespace qex::vornath
