// What the tests of the value layer share: types and values from text, and the words of a failure.
#ifndef VORNATH_TESTS_VALUES_SUPPORT_HPP
#define VORNATH_TESTS_VALUES_SUPPORT_HPP

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "types/type_factory.hpp"
#include "values/dynamic_value.hpp"
#include "values/value_parser.hpp"
#include "values/value_text.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath::test {

inline TypePtr type(const std::string& text) { return Type::get_factory(true)->parseType(text); }

inline DynamicValue value(const std::string& text) { return parseValue(text); }

inline std::string text(const DynamicValue& v) { return valueToString(v.view()); }

template <typename T>
T at(const DynamicValue& v, std::uint64_t offset = 0) {
  T result;
  std::memcpy(&result, v.data() + offset, sizeof(result));
  return result;
}

// The number of handles and references on a value's block, the handle itself included.
inline std::uint32_t count(const DynamicValue& v) { return v.block()->refCount; }

// Expects a vrnt::Exception of code InvalidArguments with these words.
#define EXPECT_REFUSED(statement, words)                          \
  try {                                                           \
    statement;                                                    \
    ADD_FAILURE() << "nothing was thrown";                        \
  } catch (const vrnt::Exception& refusal) {                      \
    EXPECT_STREQ(refusal.what(), words);                          \
    EXPECT_EQ(refusal.code(), vrnt::ErrorCode::InvalidArguments); \
  }

}  // namespace qex::vornath::test

#endif
