// The first use of every fixed type, on many threads at once, and later uses beside a parse.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <chrono>
#include <thread>
#include <vector>

#include "colour/fixed_types_list.hpp"
#include "vornath_data/type_library.hpp"

namespace {

using vornath_test::kFixedTypes;

constexpr std::size_t kThreads = 8;
constexpr std::size_t kTypes = std::size(kFixedTypes);

using Handles = std::array<vrntType_t*, kTypes>;

// Half of the threads go through the list backwards, so that parts and wholes meet.
Handles allHandles(bool backwards) {
  Handles handles{};
  for (std::size_t i = 0; i < kTypes; ++i) {
    const std::size_t at = backwards ? kTypes - 1 - i : i;
    handles[at] = kFixedTypes[at].get();
  }
  return handles;
}

void destroy(const Handles& handles) {
  for (const vrntType_t* handle : handles) vrntTypeDestroy(handle);
}

}  // namespace

TEST(FixedTypes, AreMadeOnceByThreadsThatAskTogether) {
  std::array<Handles, kThreads> handles{};
  std::atomic<std::size_t> waiting{kThreads};
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting.load() > 0) std::this_thread::yield();
      handles[i] = allHandles(i % 2 != 0);
      vrntTypeMaterialParamType(handles[i][0]);
      vrntTypeSamplerType(handles[i][0]);
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Handles& own : handles) EXPECT_EQ(own, handles[0]);
  for (const Handles& own : handles) destroy(own);

  // From now on nobody waits for the parser.
  std::atomic<std::size_t> answers{0};
  threads.clear();
  {
    const boost::unique_lock<boost::mutex> parser(qex::vornath::parser_mutex);
    for (std::size_t i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        const Handles again = allHandles(false);
        if (again == handles[0]) ++answers;
        destroy(again);
      });
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (answers < kThreads && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    EXPECT_EQ(answers.load(), kThreads);
  }
  for (std::thread& thread : threads) thread.join();
}
