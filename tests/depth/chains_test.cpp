// A chain of a million references between values of one short type. What it takes to print, compare
// and stream one is tested beside the values.
#include <cstring>

#include "nests.hpp"
#include "peak_bytes.hpp"
#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

constexpr int kLinks = 1'000'000;
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
    onWorkerStack([this] { chain_.reset(); });
  }

  std::uint32_t references() const {
    const std::uint64_t word = readAt<std::uint64_t>(chain_);
    const auto* target = reinterpret_cast<const char*>(word) - sizeof(vrntValue_t);
    return reinterpret_cast<const vrntValue_t*>(target)->refCount;
  }

  ValueHandle chain_;
};

TEST_F(MillionLinks, AreSharedByACopyThatIsWritten) {
  onWorkerStack([this] {
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
  onWorkerStack([this] {
    const std::uint64_t null = 0;
    vrntValuesError_t* error = nullptr;
    vrntValue_t* handle = chain_.release();
    vrntValueWrite(&handle, 0, &null, sizeof(null), &error);
    chain_.reset(handle);
    EXPECT_EQ(readAt<std::uint64_t>(chain_), 0u);
  });
}

TEST_F(MillionLinks, AreCoercedAndSpecialized) {
  onMainStack([this] {
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

}  // namespace
