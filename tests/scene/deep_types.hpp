// Values of deeply nested types, and a stack on which a walk that recurses into them ends badly.
#ifndef VORNATH_TESTS_SCENE_DEEP_TYPES_HPP
#define VORNATH_TESTS_SCENE_DEEP_TYPES_HPP

#include <gtest/gtest.h>
#include <pthread.h>

#include <functional>
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

inline void onSmallStack(const std::function<void()>& work) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, 160 * 1024), 0);
  pthread_t thread;
  ASSERT_EQ(pthread_create(
                &thread, &attributes,
                [](void* given) -> void* {
                  (*static_cast<const std::function<void()>*>(given))();
                  return nullptr;
                },
                const_cast<std::function<void()>*>(&work)),
            0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

}  // namespace vornath_test

#endif
