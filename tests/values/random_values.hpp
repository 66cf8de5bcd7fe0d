// Random pairs of types that have something to do with each other, and random values of them, for
// tests that hold a fast walk against a slow one.
#ifndef VORNATH_TESTS_RANDOM_VALUES_HPP
#define VORNATH_TESTS_RANDOM_VALUES_HPP

#include <algorithm>
#include <random>

#include "values_support.hpp"

namespace qex::vornath::test {

class Random {
 public:
  explicit Random(std::uint32_t seed) : random_(seed) {}

  std::uint32_t bits() { return static_cast<std::uint32_t>(random_()); }
  int below(int limit) { return static_cast<int>(bits() % static_cast<std::uint32_t>(limit)); }
  bool once(int in) { return below(in) == 0; }

  template <typename T>
  void shuffle(std::vector<T>& items) {
    for (std::size_t i = items.size(); i > 1; --i) {
      std::swap(items[i - 1], items[static_cast<std::size_t>(below(static_cast<int>(i)))]);
    }
  }

  std::string base() {
    static const char* const kBases[] = {"bool", "int",   "float",  "char",  "half",
                                         "int3", "half3", "float3", "char3", "float2"};
    return kBases[below(10)];
  }

  std::string enumeration() {
    std::vector<std::string> names{"A", "B", "C", "D", "E"};
    shuffle(names);
    std::string text = "enum {";
    for (int i = 1 + below(4); i > 0; --i) text += " " + names[static_cast<std::size_t>(i)] + ";";
    return text + " }";
  }

  std::string extents(int rank) {
    std::string text = "[";
    for (int i = 0; i < rank; ++i) text += (i == 0 ? "" : ",") + std::to_string(below(4));
    return text + "]";
  }

  // Fills a value's bytes, padding included. Reference words lead to the given values, or are
  // addresses of somebody's own, or null.
  DynamicValue valueOf(const TypePtr& t, const std::vector<DynamicValue>& referees,
                       bool strayCodes = false) {
    return DynamicValue::filled(t, [&](const InternedType& of, char* data) {
      for (std::uint64_t i = 0; i < of.size(); ++i) data[i] = static_cast<char>(bits());
      fill(of, data, referees, strayCodes);
    });
  }

 private:
  void fill(const InternedType& t, char* data, const std::vector<DynamicValue>& referees,
            bool strayCodes) {
    if (const auto* enumeration = t.getIf<Type::TEnum>()) {
      const int codes = static_cast<int>(enumeration->constructors.size());
      const std::int32_t code =
          strayCodes && once(8) ? (once(2) ? -1 - below(9) : codes + below(9)) : below(codes);
      std::memcpy(data, &code, sizeof(code));
    } else if (const auto* structure = t.getIf<Type::TStruct>()) {
      for (std::size_t i = 0; i < structure->fields.size(); ++i) {
        fill(*structure->fields[i].type, data + structure->offsets[i], referees, strayCodes);
      }
    } else if (t.getIf<Type::TRef>() != nullptr) {
      const auto i = static_cast<std::size_t>(below(static_cast<int>(referees.size()) + 2));
      storeWord(data, i < referees.size()    ? wordOfBlock(referees[i].block())
                      : i == referees.size() ? 0
                                             : foreignWord(bits()));
    } else if (t.getIf<Type::TFun>() != nullptr) {
      storeWord(data, foreignWord(bits()));
      storeWord(data + kWordSize, foreignWord(bits()));
    } else if (t.getIf<Type::TBasetype>() == nullptr) {
      const ArrayElements elements = arrayElements(t);
      for (int i = 0; i < elements.count; ++i) {
        fill(*elements.element, data + static_cast<std::uint64_t>(i) * elements.element->size(),
             referees, strayCodes);
      }
    }
  }

  std::mt19937 random_;
};

inline std::vector<std::uint32_t> counts(const std::vector<DynamicValue>& values) {
  std::vector<std::uint32_t> all;
  for (const DynamicValue& v : values) all.push_back(count(v));
  return all;
}

inline bool sameBytes(const DynamicValue& a, const DynamicValue& b) {
  return a.type() == b.type() && std::memcmp(a.data(), b.data(), a.typeOf().size()) == 0;
}

// Levels: one call for each would take far more than kSmallStack.
inline constexpr int kDepth = 4000;

inline TypePtr makeType(TypeDesc desc, const Metadata& metadata = {}) {
  return Type::get_factory(true)->makeType(std::move(desc), metadata);
}

// Levels of structs and arrays of one element around a type.
inline TypePtr nested(TypePtr t, int levels = kDepth) {
  for (int i = 0; i < levels; ++i) {
    if (i % 2 == 0) {
      t = makeType(Type::TStruct({Type::Field(t, "a")}));
    } else {
      t = makeType(Type::TArrayND<int>(t, 1));
    }
  }
  return t;
}

}  // namespace qex::vornath::test

#endif
