// Types and values from many threads at once; built to run under a thread sanitizer too.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <boost/thread/lock_types.hpp>
#include <boost/thread/mutex.hpp>
#include <chrono>
#include <functional>
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
using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::readAt;
using vornath_test::runConcurrently;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

TypeHandle quietParse(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  TypeHandle type(vrntTypeParse(text.c_str(), &error));
  const ErrorHandle owner(error);
  check(type && !error);
  return type;
}

bool prints(const TypeHandle& type, const std::string& text) {
  return type && vrntTypeString(type.get()) == text;
}

class TypesOnThreads : public vornath_test::ThreadsTest {};

}  // namespace

TEST_F(TypesOnThreads, ShareThePreparedArraysFromTheirFirstUse) {
  std::array<vrntType_t*, kThreads> ones{};
  std::array<vrntType_t*, kThreads> threes{};
  std::array<vrntType_t*, kThreads> many{};
  runConcurrently([&](int i) {
    const auto at = static_cast<std::size_t>(i);
    ones[at] = vrtnTypeFloatArray(1);
    threes[at] = vrtnTypeFloatArray(3);
    many[at] = vrtnTypeFloatArray(166);
    const TypeHandle other(vrtnTypeFloatArray(static_cast<std::uint64_t>(10 + i % 2)));
    check(prints(other, i % 2 ? "float[11]" : "float[10]"));
  });
  for (std::size_t i = 0; i < kThreads; ++i) {
    EXPECT_EQ(ones[i], ones[0]);
    EXPECT_EQ(threes[i], threes[0]);
    EXPECT_EQ(many[i], many[0]);
  }
  EXPECT_STREQ(vrntTypeString(threes[0]), "float[3]");
  for (std::size_t i = 0; i < kThreads; ++i) {
    vrntTypeDestroy(ones[i]);
    vrntTypeDestroy(threes[i]);
    vrntTypeDestroy(many[i]);
  }
}

TEST_F(TypesOnThreads, ComeFromOneTextThatNobodyHolds) {
  // The last release on one thread meets the look-up of the same text on another.
  const std::string text = "{ int race_a; { float @race x; }[3]* race_b; } @name=\"Race\"";
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) check(prints(quietParse(text), text));
  });
}

TEST_F(TypesOnThreads, ComeFromOneTextThatSomebodyHolds) {
  const std::string text = "{ int held; float @name=\"Held\" x; }";
  const TypeHandle held = parseType(text);
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      const TypeHandle type = quietParse(i % 2 ? text : "{ int held; float  @name=\"Held\" x; }");
      check(type.get() == held.get());
    }
  });
}

TEST_F(TypesOnThreads, ComeFromTheTableWhileTheParserIsTaken) {
  const std::string text = "{ int taken; float @default=1.0 x; }";
  const TypeHandle held = parseType(text);
  std::atomic<int> answers{0};
  std::vector<std::thread> threads;
  {
    const boost::unique_lock<boost::mutex> parser(qex::vornath::parser_mutex);
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        check(quietParse(text).get() == held.get());
        ++answers;
      });
    }
    // Long enough for any machine; a look-up that waits for the parser never answers.
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (answers < kThreads && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    EXPECT_EQ(answers.load(), kThreads);
  }
  for (std::thread& thread : threads) thread.join();
}

TEST_F(TypesOnThreads, ComeFromDifferentTextsWithPartsInCommon) {
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      const std::string own = std::to_string(i) + "_" + std::to_string(round % 7);
      const std::string text = "{ { int common; float @min=0.0 part; } a; float[" +
                               std::to_string(i + 1) + "] own" + own + "; }";
      const TypeHandle type = quietParse(text);
      check(prints(type, text));
      const TypeHandle twin(vrntTypeStripMetadata(type.get()));
      check(vrntTypeIsEqual(twin.get(), type.get()) != 0);
      const TypeHandle part(vrntTypeFieldType(type.get(), 0));
      check(prints(part, "{ int common; float @min=0.0 part; }"));
    }
  });
}

TEST_F(TypesOnThreads, PrintAlikeAndEndApart) {
  // Values in metadata: every parse of a text that isn't in the table makes a type of its own.
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const TypeHandle spaced = quietParse("float  @max=8.0 @twin");
      const TypeHandle canonical = quietParse("float @max=8.0 @twin");
      check(prints(spaced, "float @max=8.0 @twin"));
      check(prints(canonical, "float @max=8.0 @twin"));
    }
  });
}

TEST_F(TypesOnThreads, AreCopiedAndDestroyed) {
  TypeHandle type = parseType("{ int copied_on_threads; }[2]");
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds * 10; ++round) {
      vrntType_t* const copy = vrntTypeCopy(type.get());
      check(vrntTypeSize(copy) == 8);
      vrntTypeDestroy(copy);
    }
  });
  EXPECT_STREQ(vrntTypeString(type.get()), "{ int copied_on_threads; }[2]");
}

TEST_F(TypesOnThreads, EndOnWhicheverThreadIsLast) {
  for (int round = 0; round < kRounds; ++round) {
    const std::string text = "{ int last" + std::to_string(round) + "; float @a=1.0 b; }";
    std::array<vrntType_t*, kThreads> handles{};
    {
      const TypeHandle first = parseType(text);
      for (auto& handle : handles) handle = vrntTypeCopy(first.get());
    }
    const TypeHandle field(vrntTypeFieldType(handles[0], 1));
    const ValueHandle probe(vrntMetadataValue(field.get(), "a"));
    std::vector<std::thread> threads;
    for (vrntType_t* handle : handles) threads.emplace_back([handle] { vrntTypeDestroy(handle); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(probe->refCount, 2u);
  }
}

TEST_F(TypesOnThreads, FailToParseWithoutDisturbingEachOther) {
  runConcurrently([&](int i) {
    const std::string label = "x" + std::to_string(i);
    const std::string twice = "{ int " + label + "; int " + label + "; }";
    const std::string open = "float @a=\"" + label;
    const std::string cut = "{ int " + label;
    for (int round = 0; round < kRounds; ++round) {
      const auto failure = [](const std::string& text) {
        vrntValuesError_t* error = nullptr;
        const TypeHandle type(vrntTypeParse(text.c_str(), &error));
        const ErrorHandle owner(error);
        return std::string(error ? vrntValuesErrorMessage(error) : "");
      };
      check(failure(twice) == "Duplicate struct field: " + label + ".");
      check(failure(open) == "Unable to parse type: " + open + ".\nIllegal character: \"");
      check(failure(cut) ==
            "Unable to parse type: " + cut + ".\nsyntax error, unexpected END, expecting ;");
      check(prints(quietParse("{ int " + label + "; }"), "{ int " + label + "; }"));
    }
  });
}

TEST_F(TypesOnThreads, GiveAwayTheirAnnotations) {
  const TypeHandle type = parseType("float @default=2.5 @name=\"Shared\"");
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds; ++round) {
      const ValueHandle value(vrntMetadataValue(type.get(), "default"));
      check(readAt<float>(value) == 2.5f);
      check(std::string(vrntMetadataString(type.get(), "name")) == "Shared");
    }
  });
  EXPECT_EQ(ValueHandle(vrntMetadataValue(type.get(), "default"))->refCount, 2u);
}

TEST_F(TypesOnThreads, RelateWhileOthersComeAndGo) {
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      const TypeHandle a = quietParse("{ float[" + std::to_string(round % 5) + "]* relation; }");
      const TypeHandle b = quietParse("{ float @t" + std::to_string(i) + "[]* relation; }");
      check(vrntTypeIsSubType(a.get(), b.get()) != 0);
      check(vrntTypeIsSubType(b.get(), a.get()) == 0);
    }
  });
}

TEST_F(TypesOnThreads, ShareOneValuesBlock) {
  const ValueHandle value = parseValue("{ a = [ 1, 2, 3 ]; b = &2.5; }");
  runConcurrently([&](int) {
    for (int round = 0; round < kRounds * 10; ++round) {
      const ValueHandle copy(vrntValueCopy(value.get()));
      check(readAt<std::int32_t>(copy, 4) == 2);
    }
  });
  EXPECT_EQ(value->refCount, 1u);
}

TEST_F(TypesOnThreads, EndOneValuesBlockOnWhicheverThreadIsLast) {
  const ValueHandle referee = parseValue("&7");
  const TypeHandle type = parseType("int*");
  const vrntValueView_t view{type.get(), 0};
  const ValueHandle target(vrntValueDereference(referee.get(), &view));
  for (int round = 0; round < kRounds; ++round) {
    vrntValue_t* holder = parseValue("$(0:int)").release();
    vrntValuesError_t* error = nullptr;
    vrntValueSetReference(&holder, &view, target.get(), &error);
    ASSERT_EQ(error, nullptr);
    for (int i = 1; i < kThreads; ++i) vrntValueCopy(holder);
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) threads.emplace_back([holder] { vrntValueDestroy(holder); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(target->refCount, 2u);
  }
}

TEST_F(TypesOnThreads, KeepAWriterApartFromTheReadersOfACopy) {
  const ValueHandle value = parseValue("[ 1, 2, 3, 4 ]");
  runConcurrently([&](int i) {
    vrntValue_t* own = nullptr;
    for (int round = 0; round < kRounds; ++round) {
      own = vrntValueCopy(value.get());
      const std::int32_t number = 100 * i + round;
      vrntValuesError_t* error = nullptr;
      vrntValueWrite(&own, 4, &number, sizeof number, &error);
      const ValueHandle owner(own);
      check(!error && own != value.get());
      check(readAt<std::int32_t>(owner, 4) == number && readAt<std::int32_t>(value, 4) == 2);
    }
  });
  EXPECT_EQ(value->refCount, 1u);
}

TEST_F(TypesOnThreads, ParseValuesAndTypesSideBySide) {
  runConcurrently([&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      vrntValuesError_t* error = nullptr;
      const std::string text = "{ a = " + std::to_string(i) + "; b = [ B : enum { A; B; } ]; }";
      const ValueHandle value(vrntValueParse(text.c_str(), &error));
      check(value && !error);
      check(readAt<std::int32_t>(value) == i && readAt<std::int32_t>(value, 4) == 1);
      check(
          prints(quietParse("{ int a; enum { A; B; }[1] b; }"), "{ int a; enum { A; B; }[1] b; }"));
    }
  });
}
