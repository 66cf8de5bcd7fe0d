// Types nested deeply. Each is checked against the text that it was made from.
#include <cstring>

#include "nests.hpp"
#include "peak_bytes.hpp"
#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

class DeepType : public testing::TestWithParam<TypeNest> {
 protected:
  std::string text(const char* innermost = "int") const { return GetParam().text(innermost); }
};

TEST_P(DeepType, IsParsedPrintedAndReleased) {
  runOnMainStack([this] {
    const std::string expected = text();
    const PeakBytes peak;
    TypeHandle type = parseType(expected);
    EXPECT_TRUE(vrntTypeString(type.get()) == expected);
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST_P(DeepType, IsOneTypeWithItselfAndFoundAgain) {
  runOnMainStack([this] {
    const TypeHandle first = parseType(text());
    EXPECT_EQ(parseType(text()), first);
    EXPECT_EQ(parseType(" " + text()), first);
    const TypeHandle stripped(vrntTypeStripMetadata(first.get()));
    EXPECT_EQ(stripped, first);
  });
}

TEST_P(DeepType, IsToldFromATypeThatDiffersInside) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text("int"));
    const TypeHandle other = parseType(text("float"));
    ASSERT_NE(type, other);
    const PeakBytes peak;
    EXPECT_EQ(vrntTypeIsSubType(type.get(), other.get()), 0);
    EXPECT_EQ(vrntTypeIsEqual(type.get(), other.get()), 0);
    vrntValuesError_t* error = nullptr;
    const StringHandle reason(vrntTypeCheckSubType(type.get(), other.get(), &error));
    ASSERT_NE(reason, nullptr);
    EXPECT_EQ(error, nullptr);
    // Each level of a domain turns the two sides around, and there are as many as make no change.
    const std::string why = "type int does not match type float";
    const std::size_t length = std::strlen(reason.get());
    ASSERT_GT(length, why.size());
    EXPECT_STREQ(reason.get() + length - why.size(), why.c_str());
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST_P(DeepType, LosesItsAnnotations) {
  runOnMainStack([this] {
    const TypeHandle annotated = parseType(text("int @a @b=\"words\""));
    const TypeHandle plain = parseType(text());
    EXPECT_TRUE(vrntTypeString(annotated.get()) == text("int @a @b=\"words\""));
    EXPECT_EQ(TypeHandle(vrntTypeStripMetadata(annotated.get())), plain);
    EXPECT_EQ(vrntTypeIsEqual(annotated.get(), plain.get()), 1);
    EXPECT_EQ(vrntTypeIsSubType(annotated.get(), plain.get()), 1);
  });
}

TEST_P(DeepType, IsRefusedIfItDoesNotEnd) {
  runOnMainStack([this] {
    std::string broken = text();
    broken += " %";
    const auto failure = typeFailure(broken);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->message, "Unable to parse type: " + broken + ".\nIllegal character: %");
  });
}

INSTANTIATE_TEST_SUITE_P(Nests, DeepType,
                         testing::Values(kReferences, kArrays, kOpenArrayReferences, kStructs,
                                         kLastFields, kReferencesAtEachLevel, kDomains, kCodomains,
                                         kMixed));

// Of a type whose annotations hold a value the text is another one's after each parse, so these
// stand apart.

TEST(DeepAnnotations, AtEachLevelAreKeptAndLost) {
  runOnMainStack([] {
    const std::string text = "int @n=1" + repeated("* @a=\"b\"", kDepth);
    const PeakBytes peak;
    TypeHandle type = parseType(text);
    EXPECT_TRUE(vrntTypeString(type.get()) == text);
    EXPECT_EQ(TypeHandle(vrntTypeStripMetadata(type.get())), parseType(kReferences.text()));
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), 2 * kMaxMemory);  // two types a level
  });
}

TEST(DeepAnnotations, MayBeReferencesToReferences) {
  runOnMainStack([] {
    const std::string text = "int @default=" + repeated("&", kDepth) + "1";
    const PeakBytes peak;
    TypeHandle type = parseType(text);
    EXPECT_TRUE(vrntTypeString(type.get()) == text);
    EXPECT_EQ(parseType(text), type);
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST(DeepAnnotations, MayBeStructsInStructs) {
  runOnMainStack([] {
    const std::string value = nested("{ a = ", "1", "; }", kDepth);
    const std::string text = kStructs.text() + " @default=" + value;
    const PeakBytes peak;
    TypeHandle type = parseType(text);
    EXPECT_TRUE(vrntTypeString(type.get()) == text);
    vrntValuesError_t* error = nullptr;
    const ValueHandle made(vrntValueCreateDefault(type.get(), &error));
    EXPECT_EQ(readAt<std::int32_t>(made), 1);
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST(DeepAnnotations, MayHoldTypesWithAnnotations) {
  runOnMainStack([] {
    const std::string text = "int " + nested("@a=[: int ", "", "]", kDepth);
    const PeakBytes peak;
    TypeHandle type = parseType(text);
    EXPECT_STREQ(vrntTypeString(type.get()), "int @a=[ : int ]");
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST(DeepEnum, OfPayloadsInPayloadsIsParsedPrintedAndReleased) {
  runOnMainStack([] {
    std::string text;
    for (int i = 0; i < kDepth; ++i) text += "enum { A" + std::to_string(i) + "( ";
    text += "int" + repeated(" x ); }", kDepth);
    const PeakBytes peak;
    TypeHandle type = parseType(text);
    EXPECT_TRUE(vrntTypeString(type.get()) == text);
    EXPECT_EQ(parseType(text), type);
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreate(type.get(), &error));
    const vrntValueView_t view{type.get(), 0};
    const StringHandle printed(vrntValueString(value.get(), &view, 0, &error));
    EXPECT_TRUE("A0 : " + text == printed.get());
    runOnWorkerStack([&type] { type.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

// The parts of a type are found by their texts, long and short ones.
TEST(DeepParts, AreFoundByTheirTexts) {
  runOnMainStack([] {
    const TypeHandle outer = parseType(kReferences.text("int", kDepth));
    TypeHandle part(vrntTypeReferencedType(outer.get()));
    for (int depth = kDepth - 1; depth > 0; --depth) {
      if (depth % 10'000 == 0 || depth < 10 || depth == 4093 || depth == 4094) {
        EXPECT_EQ(parseType(kReferences.text("int", depth)), part) << depth;
        EXPECT_TRUE(vrntTypeString(part.get()) == kReferences.text("int", depth)) << depth;
      }
      part.reset(vrntTypeReferencedType(part.get()));
    }
    EXPECT_STREQ(vrntTypeString(part.get()), "int");
  });
}

TEST(DeepParts, OutliveTheWhole) {
  runOnMainStack([] {
    TypeHandle outer = parseType(kStructs.text());
    const TypeHandle part(vrntTypeFieldType(outer.get(), 0));
    runOnWorkerStack([&outer] { outer.reset(); });
    EXPECT_TRUE(vrntTypeString(part.get()) == kStructs.text("int", kDepth - 1));
    EXPECT_EQ(parseType(kStructs.text("int", kDepth - 1)), part);
  });
}

TEST(DeepParts, BecomeAUniversalSpectrum) {
  runOnMainStack([] {
    const TypeHandle type = parseType(kStructs.text());
    EXPECT_EQ(TypeHandle(vrntTypeToUniversalSpectrum(type.get())), type);
  });
}

}  // namespace
