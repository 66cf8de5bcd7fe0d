// Coercion and specialization on many threads, which share the plans that are kept with types,
// while types come and go; built to run under a thread sanitizer too.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>

#include "concurrency.hpp"
#include "support/flat_handles.hpp"

namespace {

using vornath_test::check;
using vornath_test::ErrorHandle;
using vornath_test::kRounds;
using vornath_test::runConcurrently;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

template <typename Handle, typename Call, typename... Arguments>
Handle quietly(Call call, Arguments... arguments) {
  vrntValuesError_t* error = nullptr;
  Handle result(call(arguments..., &error));
  const ErrorHandle owner(error);
  check(result && !error);
  return result;
}

TypeHandle parse(const std::string& text) {
  return quietly<TypeHandle>(vrntTypeParse, text.c_str());
}

// A struct of ints and floats in which field `fN` of int type holds N.
constexpr int kFields = 12;

std::string structText(int variant, bool backwards) {
  std::string text = "{ ";
  for (int i = 0; i < kFields; ++i) {
    const int field = backwards ? kFields - 1 - i : i;
    text += "int f" + std::to_string(field) + "; ";
  }
  return text + "int v" + std::to_string(variant) + "; }";
}

ValueHandle numbered(const TypeHandle& type) {
  ValueHandle value = quietly<ValueHandle>(vrntValueCreate, type.get());
  auto* const words = static_cast<std::int32_t*>(
      const_cast<void*>(static_cast<const void*>(vrntValueData(value.get()))));
  for (int i = 0; i < kFields; ++i) words[i] = i;
  return value;
}

bool isReversed(const ValueHandle& value) {
  const auto* const words = static_cast<const std::int32_t*>(vrntValueData(value.get()));
  for (int i = 0; i < kFields; ++i) {
    if (words[i] != kFields - 1 - i) return false;
  }
  return true;
}

class PlansOnThreads : public vornath_test::ThreadsTest {};

}  // namespace

TEST_F(PlansOnThreads, ServeAllThreadsFromTheFirstValueOn) {
  for (int round = 0; round < 20; ++round) {
    const TypeHandle from = parse(structText(0, false));
    const TypeHandle to = parse(structText(1, true));
    const TypeHandle marked =
        parse("{ int a; float @no_specialize b; int c" + std::to_string(round) + "; }");
    const ValueHandle whole = quietly<ValueHandle>(vrntValueCreate, marked.get());
    const ValueHandle value = numbered(from);
    runConcurrently([&](int) {
      for (int i = 0; i < kRounds; ++i) {
        check(isReversed(quietly<ValueHandle>(vrntCoerce, to.get(), value.get())));
        const ValueHandle special =
            quietly<ValueHandle>(vrntBuildSpecializationParameters, marked.get(), whole.get());
        check(vrntTypeSize(vrntValueType(special.get())) == 8);
      }
    });
  }
}

// All threads use the same few texts, so that a type of one thread is at times that of others and
// at times destroyed, with its plans, between two uses.
TEST_F(PlansOnThreads, AreDroppedWithTypesThatOtherThreadsMakeAnew) {
  runConcurrently([](int thread) {
    std::uint32_t state = static_cast<std::uint32_t>(thread) * 7919 + 1;
    const auto below = [&](std::uint32_t limit) {
      state = state * 1664525 + 1013904223;
      return static_cast<int>((state >> 16) % limit);
    };
    for (int i = 0; i < 2 * kRounds; ++i) {
      const TypeHandle from = parse(structText(below(3), false));
      const TypeHandle to = parse(structText(3 + below(3), true));
      const ValueHandle value = numbered(from);
      for (int j = below(4); j >= 0; --j) {
        check(isReversed(quietly<ValueHandle>(vrntCoerce, to.get(), value.get())));
      }
      const TypeHandle marked = parse("{ int a; { int @no_specialize b; int c; }[3] d" +
                                      std::to_string(below(3)) + "; }");
      const ValueHandle whole = quietly<ValueHandle>(vrntValueCreate, marked.get());
      for (int j = below(3); j >= 0; --j) {
        const ValueHandle special =
            quietly<ValueHandle>(vrntBuildSpecializationParameters, marked.get(), whole.get());
        check(vrntTypeSize(vrntValueType(special.get())) == 16);
      }
    }
  });
}
