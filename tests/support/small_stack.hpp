// A thread with as much stack as a test gives it, for what must not recurse.
#ifndef VORNATH_TESTS_SUPPORT_SMALL_STACK_HPP
#define VORNATH_TESTS_SUPPORT_SMALL_STACK_HPP

#include <gtest/gtest.h>
#include <pthread.h>

#include <cstddef>
#include <functional>

namespace vornath_test {

inline constexpr std::size_t kMainStack = 8 * 1024 * 1024;
inline constexpr std::size_t kWorkerStack = 512 * 1024;  // of a host's worker thread
// Far less than one call a level takes in some thousand levels.
inline constexpr std::size_t kSmallStack = 160 * 1024;

// Runs the work on a thread with so many bytes of stack, to its end.
inline void runOnStack(std::size_t bytes, const std::function<void()>& work) {
  pthread_attr_t attributes;
  ASSERT_EQ(pthread_attr_init(&attributes), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&attributes, bytes), 0);
  pthread_t thread;
  const auto run = [](void* user) -> void* {
    (*static_cast<const std::function<void()>*>(user))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&work)),
            0);
  ASSERT_EQ(pthread_join(thread, nullptr), 0);
  pthread_attr_destroy(&attributes);
}

}  // namespace vornath_test

#endif
