// Values of deeply nested types.
#ifndef VORNATH_TESTS_SCENE_DEEP_TYPES_HPP
#define VORNATH_TESTS_SCENE_DEEP_TYPES_HPP

#include <gtest/gtest.h>

#include <string>

#include "../support/flat_handles.hpp"
#include "vornath_data/value.hpp"

namespace vornath_test {

constexpr int kDeep = 5000;

// A value of zeros of the type, within as many structs of one field.
inline vrnt::Value zerosWithin(int depth, const std::string& innermost) {
  std::string text = innermost;
  for (int i = 0; i < depth; ++i) text = "{ " + text + " a; }";
  const TypeHandle type = parseType(text);
  vrntValuesError_t* error = nullptr;
  vrnt::Value value = vrnt::Value::adopt(vrntValueCreate(type.get(), &error));
  EXPECT_TRUE(value);
  return value;
}

}  // namespace vornath_test

#endif
