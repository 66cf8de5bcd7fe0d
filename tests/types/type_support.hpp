// Short ways of making types from their parts, and of catching what a construction raises.
#ifndef VORNATH_TESTS_TYPES_TYPE_SUPPORT_HPP
#define VORNATH_TESTS_TYPES_TYPE_SUPPORT_HPP

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "types/type_factory.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/type_library.hpp"

namespace vornath_test {

using qex::vornath::index2;
using qex::vornath::index3;
using qex::vornath::index4;
using qex::vornath::InternedType;
using qex::vornath::Metadata;
using qex::vornath::MetadataEntry;
using qex::vornath::Type;
using qex::vornath::TypePtr;

using Base = Type::TBasetype;
using Field = Type::Field;
using Fields = std::vector<Type::Field>;
using Constructor = Type::Constructor;
using Constructors = std::vector<Type::Constructor>;
using Struct = Type::TStruct;
using Enum = Type::TEnum;
template <typename D>
using Array = Type::TArrayND<D>;

inline Type::Factory& factory() { return *Type::get_factory(true); }

template <typename Desc>
TypePtr make(Desc desc, const Metadata& metadata = {}) {
  return factory().makeType(std::move(desc), metadata);
}

inline TypePtr makeStruct(Fields fields, const Metadata& metadata = {}) {
  return make(Struct(std::move(fields)), metadata);
}
inline TypePtr makeEnum(Constructors constructors, const Metadata& metadata = {}) {
  return make(Enum(std::move(constructors)), metadata);
}
inline TypePtr makeArray(TypePtr element, std::optional<int> extent,
                         const Metadata& metadata = {}) {
  return make(Array<int>(std::move(element), extent), metadata);
}
inline TypePtr makeReference(TypePtr target, const Metadata& metadata = {}) {
  return make(Type::TRef{std::move(target)}, metadata);
}
inline TypePtr makeFunction(std::vector<TypePtr> domain, TypePtr codomain,
                            const Metadata& metadata = {}) {
  return make(Type::TFun{std::move(domain), std::move(codomain)}, metadata);
}

inline TypePtr parsed(std::string_view text) { return factory().parseType(text); }

inline MetadataEntry flag() { return std::monostate{}; }
inline MetadataEntry text(std::string words) { return words; }

// The code and the words of the exception that a call raises; NoError if it raises none.
struct Thrown {
  vrnt::ErrorCode code = vrnt::ErrorCode::NoError;
  std::string message;
};
template <typename Call>
Thrown thrownBy(Call call) {
  try {
    call();
  } catch (const vrnt::Exception& failure) {
    return {failure.code(), failure.what()};
  }
  return {};
}

template <typename Call>
void expectThrows(Call call, const std::string& message) {
  const Thrown failure = thrownBy(call);
  EXPECT_EQ(failure.code, vrnt::ErrorCode::InvalidArguments) << message;
  EXPECT_EQ(failure.message, message);
}

}  // namespace vornath_test

#endif
