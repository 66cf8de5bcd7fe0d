#include "relations.hpp"

#include <algorithm>
#include <boost/container/small_vector.hpp>
#include <utility>
#include <vector>

#include "base_types.hpp"
#include "extents.hpp"
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
  return !b.shape || Extents(a) == Extents(b);
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
  template <typename D>
  std::string operator()(const Type::TArrayND<D>& array) const {
    const std::size_t rank = Extents(array).rank();
    return rank == 1 ? "array" : "array" + std::to_string(rank) + "d";
  }
  std::string operator()(const TRef&) const { return "ref"; }
  std::string operator()(const TFun&) const { return "func"; }
};

std::string unrelated(const TypeDesc& a, const TypeDesc& b) {
  return "type " + std::visit(Label{}, a) + " does not match type " + std::visit(Label{}, b);
}

// The walk to the first pair of parts that doesn't relate, in the order of the parts. The pairs
// that lead to it are those that are open then.
class FirstReason {
 public:
  // The reason, or nothing.
  std::optional<std::string> of(const Type& a, const Type& b) {
    bool related = open(a, b);
    while (related && !frames_.empty()) {
      Frame& frame = frames_.back();
      if (frame.next == frame.count) {
        frames_.pop_back();
      } else {
        const auto [partA, partB] = part(frame, frame.next++);
        related = partA == partB || open(*partA, *partB);
      }
    }
    if (related) return std::nullopt;
    std::string text;
    for (const Frame& frame : frames_) {
      const std::size_t at = frame.next - 1;
      std::visit([&](const auto& desc) { lead(desc, at, text); }, frame.a->desc());
    }
    return text.append(reason_);
  }

 private:
  using Pair = std::pair<const Type*, const Type*>;

  // Two types of the same alternative, all of whose parts must relate.
  struct Frame {
    const Type* a;
    const Type* b;
    std::size_t count;
    std::size_t next;
  };

  // False with the last words of the reason, if that lies in the pair itself.
  bool open(const Type& a, const Type& b) {
    reason_ = std::visit([&](const auto& x, const auto& y) { return begin(a, b, x, y); }, a.desc(),
                         b.desc());
    return reason_.empty();
  }

  // Each begin() returns the last words of a reason, or none, with the pair's parts to follow.

  std::string begin(const Type& a, const Type& b, const TStruct& x, const TStruct& y) {
    if (!sameLabels(x, y)) return unrelated(a.desc(), b.desc());
    frames_.push_back({&a, &b, x.fields.size(), 0});
    return {};
  }

  template <typename D>
  std::string begin(const Type& a, const Type& b, const Type::TArrayND<D>& x,
                    const Type::TArrayND<D>& y) {
    if (!extentsFit(x, y)) {
      return "Expected array of size: " + Extents(y).text() +
             " - provided array of size: " + Extents(x).text();
    }
    frames_.push_back({&a, &b, 1, 0});
    return {};
  }

  std::string begin(const Type& a, const Type& b, const TRef& x, const TRef& y) {
    if (!y.target) return {};
    if (!x.target) {
      return "Provided reference is missing a reference type - expected: " + y.target->text();
    }
    frames_.push_back({&a, &b, 1, 0});
    return {};
  }

  std::string begin(const Type& a, const Type& b, const TFun& x, const TFun& y) {
    if (x.domain.size() != y.domain.size()) {
      return "Expected function with domain size: " + std::to_string(y.domain.size()) +
             "  - function with domain size: " + std::to_string(x.domain.size());
    }
    frames_.push_back({&a, &b, x.domain.size() + 1, 0});
    return {};
  }

  template <typename A, typename B>
  std::string begin(const Type& a, const Type& b, const A& x, const B& y) {
    OpenPairs none;
    return relate(x, y, none) ? std::string() : unrelated(a.desc(), b.desc());
  }

  static Pair part(const Frame& frame, std::size_t i) {
    return std::visit(
        [&](const auto& x) {
          return partOf(x, std::get<std::decay_t<decltype(x)>>(frame.b->desc()), i);
        },
        frame.a->desc());
  }

  static Pair partOf(const TStruct& x, const TStruct& y, std::size_t i) {
    return {x.fields[i].type.get(), y.fields[i].type.get()};
  }
  template <typename D>
  static Pair partOf(const Type::TArrayND<D>& x, const Type::TArrayND<D>& y, std::size_t) {
    return {x.element.get(), y.element.get()};
  }
  static Pair partOf(const TRef& x, const TRef& y, std::size_t) {
    return {x.target.get(), y.target.get()};
  }
  static Pair partOf(const TFun& x, const TFun& y, std::size_t i) {
    if (i == x.domain.size()) return {x.codomain.get(), y.codomain.get()};
    return {y.domain[i].get(), x.domain[i].get()};
  }
  template <typename Leaf>
  static Pair partOf(const Leaf&, const Leaf&, std::size_t) {
    return {};  // never open
  }

  // The words that lead to a part.
  static void lead(const TStruct& x, std::size_t i, std::string& text) {
    text.append("Type mismatch for field ").append(x.fields[i].label).append(": ");
  }
  template <typename D>
  static void lead(const Type::TArrayND<D>&, std::size_t, std::string& text) {
    text.append("Array type mismatch: ");
  }
  static void lead(const TRef&, std::size_t, std::string& text) {
    text.append("Referenced type mismatch: ");
  }
  static void lead(const TFun& x, std::size_t i, std::string& text) {
    if (i == x.domain.size()) {
      text.append("Function codomain mismatch: ");
    } else {
      text.append("Mismatch in function domain[").append(std::to_string(i)).append("]: ");
    }
  }
  template <typename Leaf>
  static void lead(const Leaf&, std::size_t, std::string&) {}

  std::string reason_;
  std::vector<Frame> frames_;
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
  const Type& left = a.stripped();
  const Type& right = b.stripped();
  return &left == &right ? std::nullopt : FirstReason().of(left, right);
}

void requireRelated(const Type& a, const Type& b, const char* format) {
  if (&a.stripped() == &b.stripped() || isSubType(a, b)) return;
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments, format,
                        checkSubType(a, b).value_or(std::string()));
}

}  // namespace qex::vornath
