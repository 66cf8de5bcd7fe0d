// Work on many threads at once, and what the tests of it have in common.
#ifndef VORNATH_TESTS_THREADS_CONCURRENCY_HPP
#define VORNATH_TESTS_THREADS_CONCURRENCY_HPP

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

namespace vornath_test {

inline constexpr int kThreads = 8;
inline constexpr int kRounds = 200;

// Runs the work on all threads, each told its number, and lets them begin together.
inline void runConcurrently(const std::function<void(int)>& work) {
  std::atomic<int> waiting{kThreads};
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      work(i);
    });
  }
  for (std::thread& thread : threads) thread.join();
}

// The assertions of the test library would lock; threads count what went wrong instead.
inline std::atomic<int> wrong{0};
inline void check(bool right) {
  if (!right) ++wrong;
}

class ThreadsTest : public testing::Test {
 protected:
  void SetUp() override { wrong = 0; }
  void TearDown() override { EXPECT_EQ(wrong.load(), 0); }
};

}  // namespace vornath_test

#endif
