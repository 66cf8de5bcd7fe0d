// Types that die while other threads look them up; built to run under a thread sanitizer too.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "threads/concurrency.hpp"
#include "type_support.hpp"
#include "types/make_type.hpp"
#include "types/type_text.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

// A thread that sets the first one stops at its next allocation until `goesOn`.
thread_local bool stopsAtNextAllocation = false;
std::atomic<bool> stopped{false};
std::atomic<bool> goesOn{false};

class LookUpsOnThreads : public ThreadsTest {};

// Texts of all lengths at which a look-up takes another way. Their types share parts, and the long
// ones share samples.
std::vector<std::string> texts() {
  std::vector<std::string> texts;
  for (int i = 0; i < 12; ++i) {
    const std::string number = std::to_string(10 + i);
    texts.push_back("float[" + number + "]");
    texts.push_back("{ float[" + number + "]* churn; { int part" + number + "; } @b part; }");
    texts.push_back("{ int " + std::string(100, 'x') + number + std::string(200, 'y') + "; }");
    texts.push_back("{ int " + std::string(1'000, 'x') + number + std::string(4'000, 'y') + "; }");
  }
  return texts;
}

}  // namespace

void* operator new(std::size_t size) {
  if (std::exchange(stopsAtNextAllocation, false)) {
    stopped = true;
    while (!goesOn.load()) std::this_thread::yield();
  }
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

TEST_F(LookUpsOnThreads, GiveOneTypeForEachTextWhileTypesDie) {
  const std::vector<std::string> all = texts();
  const TypePtr kept[] = {make(Base::Float), make(Base::Int)};
  const std::size_t before = factory().liveTypes();
  runConcurrently([&](int thread) {
    std::mt19937 random(static_cast<unsigned>(thread));
    std::array<TypePtr, 5> held;
    for (int round = 0; round < 3 * kRounds; ++round) {
      const std::string& text = all[random() % all.size()];
      TypePtr& place = held[random() % held.size()];
      place = parsed(text);
      check(place->text() == text);
      // While it lives, each way leads to it.
      check(parsed(text) == place);
      check(parsed(text + " ") == place);
      if (random() % 4 == 0) place.reset();
    }
  });
  EXPECT_EQ(factory().liveTypes(), before);
}

TEST_F(LookUpsOnThreads, ByDescriptionGiveOneTypeWhileTypesDie) {
  const TypePtr element = make(Base::Half);
  const std::size_t before = factory().liveTypes();
  runConcurrently([&](int thread) {
    std::mt19937 random(static_cast<unsigned>(thread));
    TypePtr held;
    for (int round = 0; round < 8 * kRounds; ++round) {
      const int extent = static_cast<int>(random() % 4);
      const TypePtr array = qex::vornath::makeArrayType(*element, extent);
      check(array->get<Array<int>>().shape == extent);
      check(makeArray(element, extent) == array);
      const TypePtr structure = makeStruct({{array, "a"}, {element, "b"}}, {{"k", text("v")}});
      check(makeStruct({{array, "a"}, {element, "b"}}, {{"k", text("v")}}) == structure);
      check(structure->stripped().metadata().empty());
      if (random() % 3 == 0) held = structure;
      if (random() % 7 == 0) held.reset();
    }
  });
  EXPECT_EQ(factory().liveTypes(), before);
}

TEST_F(LookUpsOnThreads, NeverGiveATypeThatDied) {
  // One thread makes and drops a type; the others look it up. Payloads take no part in identity, so
  // the payload tells one life of the type from another.
  std::atomic<bool> done{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!done.load()) {
        for (const char* canonical : {"enum { Life( int a ); }", "enum { Life( float b ); }"}) {
          const TypePtr type = parsed(canonical);
          const std::string& found = type->text();
          check(found == "enum { Life( int a ); }" || found == "enum { Life( float b ); }");
          // Whatever it is, it is the one that lives.
          check(makeEnum({{"Life", {}, {}}}) == type);
        }
      }
    });
  }
  for (int round = 0; round < 8 * kRounds; ++round) {
    const TypePtr type = parsed(round % 2 ? "enum { Life(int a); }" : "enum { Life(float b); }");
    check(type->get<Enum>().constructors.size() == 1);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
}

TEST_F(LookUpsOnThreads, GoOnWhileTheTablesGrowAndShrink) {
  const TypePtr kept = parsed("{ int kept; float[3] while_others_come; }");
  const std::size_t before = factory().liveTypes();
  std::atomic<bool> done{false};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      while (!done.load()) {
        check(parsed("{ int kept; float[3] while_others_come; }") == kept);
        check(makeArray(make(Base::Float), 3) == kept->get<Struct>().fields[1].type);
      }
    });
  }
  for (int round = 0; round < 3; ++round) {
    const TypePtr element = make(Base::Int);
    std::vector<TypePtr> types;
    for (int i = 0; i < 5'000; ++i) types.push_back(makeArray(element, i));
    for (int i = 0; i < 5'000; ++i)
      check(makeArray(element, i) == types[static_cast<std::size_t>(i)]);
  }
  done = true;
  for (std::thread& reader : readers) reader.join();
  EXPECT_LE(factory().liveTypes(), before + 1);
}

TEST_F(LookUpsOnThreads, ThatFindALivingTypeTakeNoLock) {
  const std::vector<std::string> all = texts();
  std::vector<TypePtr> types;
  for (const std::string& text : all) types.push_back(parsed(text));
  const TypePtr element = make(Base::Float);
  const TypePtr array = makeArray(element, 33);

  // A thread makes a type. It holds the factory's lock when it builds the type's text, and stays
  // there.
  std::thread maker([&] {
    qex::vornath::TypeDesc desc = Struct(Fields{{element, "held_up_in_the_making_of_its_text"}});
    stopsAtNextAllocation = true;
    const TypePtr made = factory().makeType(std::move(desc), {});
    check(made->text() == "{ float held_up_in_the_making_of_its_text; }");
  });
  while (!stopped.load()) std::this_thread::yield();
  std::atomic<int> answers{0};
  std::vector<std::thread> readers;
  for (int i = 0; i < 3; ++i) {
    readers.emplace_back([&] {
      for (std::size_t text = 0; text < all.size(); ++text) check(parsed(all[text]) == types[text]);
      check(makeArray(element, 33) == array);
      check(qex::vornath::makeArrayType(*element, 33) == array);
      ++answers;
    });
  }
  // Long enough for any machine; a look-up that waits for the lock never answers.
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (answers < 3 && std::chrono::steady_clock::now() < end) std::this_thread::yield();
  EXPECT_EQ(answers.load(), 3);
  goesOn = true;
  maker.join();
  for (std::thread& reader : readers) reader.join();
}
