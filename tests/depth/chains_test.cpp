// A chain of a million references between values of one short type. What it takes to print, compare
// and stream one is tested beside the values.

#include "nests.hpp"
#include "peak_bytes.hpp"
#include "support/flat_handles.hpp"
#include "support/value_stream.hpp"

namespace {

using namespace vornath_test;

constexpr char kLink[] = "{ void* next; int number; }";

class MillionLinks : public testing::Test {
 protected:
  void SetUp() override {
    const TypeHandle type = parseType(kLink);
    const TypeHandle reference = parseType("void*");
    const vrntValueView_t view{reference.get(), 0};
    vrntValuesError_t* error = nullptr;
    for (int i = 0; i < kLinks; ++i) {
      vrntValue_t* link = vrntValueCreate(type.get(), &error);
      if (chain_) vrntValueSetReference(&link, &view, chain_.get(), &error);
      chain_.reset(link);
    }
    ASSERT_EQ(error, nullptr);
  }
  void TearDown() override {
    runOnWorkerStack([this] { chain_.reset(); });
  }

  std::uint32_t references() const {
    const std::uint64_t word = readAt<std::uint64_t>(chain_);
    const auto* target = reinterpret_cast<const char*>(word) - sizeof(vrntValue_t);
    return reinterpret_cast<const vrntValue_t*>(target)->refCount;
  }

  ValueHandle chain_;
};

TEST_F(MillionLinks, AreSharedByACopyThatIsWritten) {
  runOnWorkerStack([this] {
    ValueHandle copy(vrntValueCopy(chain_.get()));
    const std::int32_t number = 7;
    vrntValuesError_t* error = nullptr;
    vrntValue_t* handle = copy.release();
    vrntValueWrite(&handle, 8, &number, sizeof(number), &error);
    copy.reset(handle);
    EXPECT_NE(copy, chain_);
    EXPECT_EQ(readAt<std::int32_t>(copy, 8), 7);
    EXPECT_EQ(readAt<std::int32_t>(chain_, 8), 0);
    EXPECT_EQ(references(), 2u);
    copy.reset();
    EXPECT_EQ(references(), 1u);
  });
}

TEST_F(MillionLinks, EndWhenTheFirstOneIsOverwritten) {
  runOnWorkerStack([this] {
    const std::uint64_t null = 0;
    vrntValuesError_t* error = nullptr;
    vrntValue_t* handle = chain_.release();
    vrntValueWrite(&handle, 0, &null, sizeof(null), &error);
    chain_.reset(handle);
    EXPECT_EQ(readAt<std::uint64_t>(chain_), 0u);
  });
}

TEST_F(MillionLinks, AreCoercedAndSpecialized) {
  runOnMainStack([this] {
    const TypeHandle longer = parseType("{ int number; void* next; }");
    const TypeHandle annotated = parseType("{ void* next; int @no_specialize number; }");
    vrntValuesError_t* error = nullptr;
    const ValueHandle coerced(vrntCoerce(longer.get(), chain_.get(), &error));
    ASSERT_NE(coerced, nullptr);
    EXPECT_EQ(readAt<std::uint64_t>(coerced, 8), readAt<std::uint64_t>(chain_));
    const ValueHandle special(
        vrntBuildSpecializationParameters(annotated.get(), chain_.get(), &error));
    ASSERT_NE(special, nullptr);
    EXPECT_EQ(readAt<std::uint64_t>(special), readAt<std::uint64_t>(chain_));
    EXPECT_EQ(references(), 3u);
  });
}

// A value that refers to the next one twice, and so on: what went all ways would never end.
class SharedOnEachLevel : public testing::Test {
 protected:
  static constexpr int kLevels = kDepth;

  static ValueHandle make(std::int32_t number, int levels = kLevels) {
    const TypeHandle type = parseType("{ void* a; int n; void* b; }");
    const TypeHandle reference = parseType("void*");
    vrntValuesError_t* error = nullptr;
    ValueHandle value = parseValue(std::to_string(number));
    for (int i = 0; i < levels; ++i) {
      vrntValue_t* both = vrntValueCreate(type.get(), &error);
      for (const std::uint64_t offset : {0U, 16U}) {
        const vrntValueView_t view{reference.get(), offset};
        vrntValueSetReference(&both, &view, value.get(), &error);
      }
      value.reset(both);
    }
    EXPECT_EQ(error, nullptr);
    return value;
  }

  static bool equal(const ValueHandle& a, const ValueHandle& b) {
    const vrntValueView_t viewA{vrntValueType(a.get()), 0};
    const vrntValueView_t viewB{vrntValueType(b.get()), 0};
    return vrntValueEqual(a.get(), &viewA, b.get(), &viewB, 0, nullptr) == 1;
  }
};

TEST_F(SharedOnEachLevel, IsComparedOncePerValue) {
  runOnWorkerStack([] {
    const ValueHandle value = make(1);
    EXPECT_TRUE(equal(value, make(1)));
    EXPECT_FALSE(equal(value, make(2)));
  });
}

TEST_F(SharedOnEachLevel, IsStreamedOncePerValueAndStaysShared) {
  runOnWorkerStack([] {
    Stream stream;
    const ValueHandle value = make(1);
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(value.get(), Stream::write, &stream, &error);
    // A length, a text, an id and three words for each level; and the number.
    EXPECT_EQ(stream.bytes.size(), std::size_t{kLevels} * (8 + 28 + 8 + 24) + 8 + 3 + 8 + 4);
    const ValueHandle back(vrntValueDeserialize(Stream::read, &stream, &error));
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(stream.position, stream.bytes.size());
    EXPECT_EQ(readAt<std::uint64_t>(back, 0), readAt<std::uint64_t>(back, 16));
    EXPECT_TRUE(equal(back, value));
  });
}

TEST_F(SharedOnEachLevel, IsCopiedCoercedAndSpecializedAtItsFirstLevelAlone) {
  runOnWorkerStack([] {
    const ValueHandle value = make(1);
    const std::uint64_t next = readAt<std::uint64_t>(value);
    const auto references = [next] {
      const auto* target = reinterpret_cast<const char*>(next) - sizeof(vrntValue_t);
      return reinterpret_cast<const vrntValue_t*>(target)->refCount;
    };
    vrntValuesError_t* error = nullptr;
    const TypeHandle other = parseType("{ void* b; float n; void* a; void* c; }");
    const TypeHandle annotated = parseType("{ void* @no_specialize a; int n; void* b; }");
    const vrntValueView_t whole{vrntValueType(value.get()), 0};
    EXPECT_EQ(references(), 2u);
    const ValueHandle copy(vrntValueFromView(value.get(), &whole, &error));
    EXPECT_EQ(references(), 4u);
    const ValueHandle coerced(vrntCoerce(other.get(), value.get(), &error));
    EXPECT_EQ(references(), 6u);
    EXPECT_EQ(readAt<std::uint64_t>(coerced, 0), next);
    EXPECT_EQ(readAt<std::uint64_t>(coerced, 16), next);
    const ValueHandle special(
        vrntBuildSpecializationParameters(annotated.get(), value.get(), &error));
    EXPECT_EQ(references(), 7u);
    EXPECT_EQ(readAt<std::uint64_t>(special, 8), next);
    EXPECT_EQ(error, nullptr);
  });
}

// Unlike all else, a text repeats what is shared.
TEST_F(SharedOnEachLevel, IsPrintedOncePerWay) {
  const std::string text = textOf(make(12345, 10));
  std::size_t ways = 0;
  for (std::size_t at = 0; (at = text.find("&12345", at)) != std::string::npos; ++at) ++ways;
  EXPECT_EQ(ways, std::size_t{1} << 10);
}

}  // namespace
