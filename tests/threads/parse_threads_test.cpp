// Parses of texts that no table holds from many threads at once, with errors among them.
#include <gtest/gtest.h>

#include <atomic>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "concurrency.hpp"
#include "support/flat_handles.hpp"
#include "vornath_data/type_library.hpp"

namespace {

using vornath_test::check;
using vornath_test::ErrorHandle;
using vornath_test::kRounds;
using vornath_test::kThreads;
using vornath_test::readAt;
using vornath_test::runConcurrently;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

ValueHandle quietValue(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  check(value && !error);
  return value;
}

// The message of a type text that does not parse.
std::string quietFailure(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  const TypeHandle type(vrntTypeParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  check(!type && error != nullptr);
  return error != nullptr ? vrntValuesErrorMessage(error) : "";
}

class ParsesOnThreads : public vornath_test::ThreadsTest {};

}  // namespace

TEST_F(ParsesOnThreads, BuildTheirOwnValues) {
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      const int number = i * kRounds + round;
      const std::string text =
          "{ a = " + std::to_string(number) + "; b = [ 1.0, 2.0 ]; c = &{ d = 3; }; }";
      const ValueHandle value = quietValue(text);
      check(readAt<std::int32_t>(value) == number);
      check(readAt<float>(value, 8) == 2.0F);
    }
  });
}

TEST_F(ParsesOnThreads, BuildWhileOthersReportErrors) {
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      const std::string name = "x" + std::to_string((i + round) % 5);
      if (i % 2 == 0) {
        check(quietFailure("{ int " + name + " }") ==
              "Unable to parse type: { int " + name +
                  " }.\nsyntax error, unexpected }, expecting ;");
        check(quietFailure("{ int " + name + "; int " + name + "; }") ==
              "Duplicate struct field: " + name + ".");
      } else {
        vrntValuesError_t* error = nullptr;
        const TypeHandle type(
            vrntTypeParse(("{  float @default=0.5 @name=\"" + name + "\" y; }").c_str(), &error));
        const ErrorHandle owner(error);
        check(type && !error);
        check(type &&
              vrntTypeString(type.get()) == "{ float @default=0.5 @name=\"" + name + "\" y; }");
      }
    }
  });
}

TEST_F(ParsesOnThreads, WaitForAHostThatHoldsTheParser) {
  std::atomic<int> answers{0};
  std::vector<std::thread> threads;
  {
    const boost::unique_lock<boost::mutex> parser(qex::vornath::parser_mutex);
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&, i] {
        if (i % 2 == 0) {
          quietValue("[ 1, 2, 3 ]");
        } else {
          quietFailure("{ int");
        }
        ++answers;
      });
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_EQ(answers.load(), 0);
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(answers.load(), kThreads);
}
