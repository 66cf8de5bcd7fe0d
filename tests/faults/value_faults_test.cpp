// Values made from other values, and colours, in memory that runs out.
#include <gtest/gtest.h>

#include <string>

#include "fail_each_allocation.hpp"
#include "support/flat_handles.hpp"

namespace {

using vornath_test::failEachAllocation;
using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::textOf;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

std::uint32_t countOf(const ValueHandle& value) { return vrntValueBinary(value.get())->refCount; }

TEST(vrntCoerce, ReportsEachFailedAllocationAndThenSucceeds) {
  const ValueHandle source = parseValue(
      "{ a = 1; c = &[ 1.0, 2.0 ]; e = B : enum { A; B; }; l = [ { x = 1; y = 2; } ]; }");
  const TypeHandle target = parseType(
      "{ int @default=9 z; enum { B; A; } e; float[]* c; { int y; int w; }[3] l; int a; }");
  EXPECT_GT(
      failEachAllocation(
          [&](vrntValuesError_t** error) { return vrntCoerce(target.get(), source.get(), error); },
          [](vrntValue_t* value) {
            EXPECT_EQ(textOf(value),
                      "{ z = 9; e = B : enum { B; A; }; c = &[ 1.0, 2.0 ]; l = [ { y = 2; w "
                      "= 0; }, { y = 0; w = 0; }, { y = 0; w = 0; } ]; a = 1; }");
            vrntValueDestroy(value);
          }),
      0u);
  EXPECT_EQ(countOf(source), 1u);
}

TEST(vrntBuildSpecializationParameters, ReportsEachFailedAllocationAndThenSucceeds) {
  const ValueHandle source =
      parseValue("{ a = 1; b = &[ 1.0 ]; l = [ { x = 1; y = 2.0; }, { x = 3; y = 4.0; } ]; }");
  const TypeHandle type =
      parseType("{ int @no_specialize a; float[]* b; { int @no_specialize x; float y; }[2] l; }");
  EXPECT_GT(failEachAllocation(
                [&](vrntValuesError_t** error) {
                  return vrntBuildSpecializationParameters(type.get(), source.get(), error);
                },
                [](vrntValue_t* value) {
                  EXPECT_EQ(textOf(value), "{ b = &[ 1.0 ]; l = [ { y = 2.0; }, { y = 4.0; } ]; }");
                  vrntValueDestroy(value);
                }),
            0u);
  EXPECT_EQ(countOf(source), 1u);
}

TEST(vrntValueCreateDefault, OfSpectraReportsEachFailedAllocationAndThenSucceeds) {
  const TypeHandle type = parseType(
      "{ { enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }[2] s; int @default=3 "
      "n; }");
  EXPECT_GT(
      failEachAllocation(
          [&](vrntValuesError_t** error) { return vrntValueCreateDefault(type.get(), error); },
          [](vrntValue_t* value) { vrntValueDestroy(value); }),
      0u);
}

// The elements refer to more than a short list has room for, by a type that nobody has asked for
// the list of yet.
TEST(vrntValueCreateDefault, OfLongStructsInAnArrayKeepsTheCountsOfWhatTheyShare) {
  const TypeHandle spectrum(vrntTypeSpectrum());
  int failures = 0;
  for (bool done = false; !done; ++failures) {
    ASSERT_LT(failures, 1000);
    std::string text = "{ ";
    for (int i = 0; i < 65; ++i) {
      text += std::string(vrntTypeString(spectrum.get())) + " @label=\"" +
              std::to_string(failures) + "\" a" + std::to_string(i) + "; ";
    }
    const TypeHandle type = parseType(text + "}[2]");
    vrntValuesError_t* error = nullptr;
    vrntValue_t* value = nullptr;
    {
      const vornath_test::FailNthAllocation failure(static_cast<std::uint64_t>(failures));
      value = vrntValueCreateDefault(type.get(), &error);
    }
    done = value != nullptr;
    if (done) {
      vrntValueDestroy(value);
    } else {
      ASSERT_NE(error, nullptr);
      EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY});
    }
  }
  EXPECT_GT(failures, 10);
}

// The conversion has no error location: a failed allocation passes as it is, and nothing is
// written.
TEST(vrntSpectrumConvert, LetsAFailedAllocationThrough) {
  float in[]{0, 0, 400, 1, 500, 2, 0, 0};
  float out[]{0, 0, 400, 9, 500, 9, 0, 0};
  const vrntSpectrumRec from{VRNT_ENCODING_SPECTRAL, 8, in};
  vrntSpectrumRec to{VRNT_ENCODING_SPECTRAL, 8, out};
  int failures = 0;
  for (bool done = false; !done; ++failures) {
    ASSERT_LT(failures, 100);
    try {
      const vornath_test::FailNthAllocation failure(static_cast<std::uint64_t>(failures));
      vrntSpectrumConvert(&from, &to, VRNT_COLOUR_SPACE_E);
      done = true;
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(out[3], 9.0F);
      EXPECT_EQ(out[5], 9.0F);
    }
  }
  EXPECT_GT(failures, 1);
  EXPECT_EQ(out[3], 1.0F);
  EXPECT_EQ(out[5], 2.0F);
}

}  // namespace
