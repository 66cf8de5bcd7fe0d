// Asked to, get_factory makes the factory, once for all threads. One case: it needs a fresh
// process.
#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "vornath_data/type_library.hpp"

using qex::vornath::Type;

TEST(get_factory, MakesOneFactoryForThreadsThatAskAtOnce) {
  EXPECT_EQ(Type::get_factory(false), nullptr);
  std::array<const Type::Factory*, 8> factories{};
  std::vector<std::thread> threads;
  for (auto& factory : factories) {
    threads.emplace_back([&factory] { factory = Type::get_factory(true).get(); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_NE(factories[0], nullptr);
  for (const Type::Factory* factory : factories) EXPECT_EQ(factory, factories[0]);
  EXPECT_EQ(Type::get_factory(false).get(), factories[0]);
}
