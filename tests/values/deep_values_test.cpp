// Long chains of references, on a thread with as little stack as a host may have.
#include <cstring>

#include "support/depth.hpp"
#include "support/flat_handles.hpp"
#include "support/small_stack.hpp"
#include "support/value_stream.hpp"

namespace {

using namespace vornath_test;

// A chain in which each value refers to the next through the field or word at `offset`.
ValueHandle chain(const char* typeText, std::uint64_t offset, int links) {
  const TypeHandle type = parseType(typeText);
  const TypeHandle reference = parseType("void*");
  vrntValuesError_t* error = nullptr;
  ValueHandle last(vrntValueCreate(type.get(), &error));
  for (int i = 1; i < links; ++i) {
    vrntValue_t* next = vrntValueCreate(type.get(), &error);
    const vrntValueView_t view{reference.get(), offset};
    vrntValueSetReference(&next, &view, last.get(), &error);
    last.reset(next);
  }
  EXPECT_EQ(error, nullptr);
  return last;
}

class LongChain : public testing::TestWithParam<std::pair<const char*, std::uint64_t>> {
 protected:
  ValueHandle make() const { return chain(GetParam().first, GetParam().second, kLinks); }
};

TEST_P(LongChain, IsReleased) {
  runOnStack(kWorkerStack, [this] { make().reset(); });
}

TEST_P(LongChain, IsPrinted) {
  runOnStack(kWorkerStack, [this] {
    const ValueHandle value = make();
    const vrntValueView_t view{vrntValueType(value.get()), 0};
    vrntValuesError_t* error = nullptr;
    const StringHandle text(vrntValueString(value.get(), &view, 0, &error));
    ASSERT_NE(text, nullptr);
    int references = 0;
    for (const char* at = text.get(); (at = std::strchr(at, '&')) != nullptr; ++at) ++references;
    EXPECT_EQ(references, kLinks - 1);
  });
}

TEST_P(LongChain, IsCompared) {
  runOnStack(kWorkerStack, [this] {
    const ValueHandle a = make();
    const ValueHandle b = make();
    const vrntValueView_t view{vrntValueType(a.get()), 0};
    EXPECT_EQ(vrntValueEqual(a.get(), &view, b.get(), &view, 0, nullptr), 1);
  });
}

TEST_P(LongChain, IsWrittenAndRead) {
  runOnStack(kWorkerStack, [this] {
    Stream stream;
    const ValueHandle value = make();
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(value.get(), Stream::write, &stream, &error);
    ASSERT_EQ(error, nullptr);
    const ValueHandle back(vrntValueDeserialize(Stream::read, &stream, &error));
    ASSERT_EQ(error, nullptr);
    EXPECT_EQ(stream.position, stream.bytes.size());
    const vrntValueView_t view{vrntValueType(value.get()), 0};
    EXPECT_EQ(vrntValueEqual(value.get(), &view, back.get(), &view, 0, nullptr), 1);
  });
}

// A reference alone, and references with something behind and before them.
INSTANTIATE_TEST_SUITE_P(Forms, LongChain,
                         testing::Values(std::pair<const char*, std::uint64_t>{"void*", 0},
                                         std::pair<const char*, std::uint64_t>{
                                             "{ void* next; int number; }", 0},
                                         std::pair<const char*, std::uint64_t>{
                                             "{ int number; void* other; void* next; }", 16}));

}  // namespace
