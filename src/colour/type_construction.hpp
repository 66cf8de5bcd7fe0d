/// How the fixed types of this layer are made: each once, on its first use, and kept from then on;
/// see permanentType().
#ifndef VORNATH_COLOUR_TYPE_CONSTRUCTION_HPP
#define VORNATH_COLOUR_TYPE_CONSTRUCTION_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "types/make_type.hpp"
#include "types/relations.hpp"
#include "types/type.hpp"

namespace qex::vornath {

inline TypePtr makeStruct(std::vector<Type::Field> fields, const Metadata& metadata = {}) {
  return makeType(Type::TStruct(std::move(fields)), metadata);
}

inline Type::Field makeField(const InternedType& type, const char* label) {
  return {TypePtr(&type), label};
}

/// The types of a table of texts. Each is made on its first use, without the others.
template <const auto& kTexts>
class ParsedTypes {
 public:
  static constexpr std::size_t kCount = std::size(kTexts);

  /// Returns the type with an index below kCount.
  static const InternedType& at(std::size_t index) { return kGetters[index](); }

 private:
  using Getter = const InternedType& (*)();

  template <std::size_t Index>
  static const InternedType& get() {
    static const InternedType& type = permanentType(InternedType::parse(kTexts[Index]));
    return type;
  }

  template <std::size_t... Indices>
  static constexpr std::array<Getter, kCount> getters(std::index_sequence<Indices...>) {
    return {&get<Indices>...};
  }

  static constexpr std::array<Getter, kCount> kGetters =
      getters(std::make_index_sequence<kCount>());
};

/// Returns the lowest code whose type equals `type` except for metadata; -1 if there is none.
template <typename TypeAt>
std::int32_t codeOfSameType(const InternedType& type, std::uint32_t count, TypeAt typeAt) {
  for (std::uint32_t code = 0; code < count; ++code) {
    if (isSameType(type, typeAt(code))) return static_cast<std::int32_t>(code);
  }
  return -1;
}

}  // namespace qex::vornath

#endif
