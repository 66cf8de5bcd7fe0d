// Values of types that are nested deeply, and values whose texts are.
#include <cstring>

#include "nests.hpp"
#include "peak_bytes.hpp"
#include "support/flat_handles.hpp"
#include "support/value_stream.hpp"

namespace {

using namespace vornath_test;

vrntValueView_t whole(const ValueHandle& value) { return {vrntValueType(value.get()), 0}; }

bool equal(const ValueHandle& a, const ValueHandle& b) {
  const vrntValueView_t viewA = whole(a);
  const vrntValueView_t viewB = whole(b);
  return vrntValueEqual(a.get(), &viewA, b.get(), &viewB, 0, nullptr) == 1;
}

std::string printed(const ValueHandle& value) {
  const vrntValueView_t view = whole(value);
  vrntValuesError_t* error = nullptr;
  const StringHandle text(vrntValueString(value.get(), &view, 0, &error));
  return text ? text.get() : "";
}

ValueHandle create(const TypeHandle& type) {
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueCreateDefault(type.get(), &error));
  EXPECT_NE(value, nullptr);
  return value;
}

// Sets the last four bytes, or for a reference the word, to something else than zero.
void change(ValueHandle& value) {
  const std::uint64_t size = vrntTypeSize(vrntValueType(value.get()));
  const std::uint64_t word = 3;  // as a reference word the embedder's own address 1
  const std::uint64_t count = size < 8 ? size : 8;
  vrntValuesError_t* error = nullptr;
  vrntValue_t* handle = value.release();
  vrntValueWrite(&handle, size - count, &word, count, &error);
  value.reset(handle);
  EXPECT_EQ(error, nullptr);
}

class DeepValue : public testing::TestWithParam<TypeNest> {
 protected:
  std::string text(const char* innermost = "int") const { return GetParam().text(innermost); }
};

TEST_P(DeepValue, IsMadePrintedAndCompared) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text());
    const PeakBytes peak;
    ValueHandle value = create(type);
    EXPECT_TRUE(vrntValueBinary(value.get())->typeText == text());
    ValueHandle same = create(type);
    EXPECT_FALSE(printed(value).empty());
    EXPECT_EQ(printed(value), printed(same));
    EXPECT_TRUE(equal(value, same));
    EXPECT_FALSE(equal(value, create(parseType(text("float")))));
    runOnWorkerStack([&] {
      value.reset();
      same.reset();
    });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST_P(DeepValue, IsCopiedAndWritten) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text());
    runOnWorkerStack([&type] {
      const ValueHandle original = create(type);
      ValueHandle copy(vrntValueCopy(original.get()));
      EXPECT_TRUE(equal(original, copy));
      change(copy);
      EXPECT_NE(copy, original);
      const std::uint64_t size = vrntTypeSize(type.get());
      EXPECT_NE(std::memcmp(vrntValueData(copy.get()), vrntValueData(original.get()), size), 0);
      EXPECT_EQ(vrntValueBinary(copy.get())->typeText, vrntValueBinary(original.get())->typeText);
      vrntValuesError_t* error = nullptr;
      const vrntValueView_t view = whole(copy);
      const ValueHandle again(vrntValueFromView(copy.get(), &view, &error));
      EXPECT_EQ(std::memcmp(vrntValueData(copy.get()), vrntValueData(again.get()), size), 0);
    });
  });
}

TEST_P(DeepValue, IsCoerced) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text());
    const TypeHandle other = parseType(text("float"));
    const ValueHandle value = create(type);
    vrntValuesError_t* error = nullptr;
    const ValueHandle same(vrntCoerce(type.get(), value.get(), &error));
    EXPECT_TRUE(same && equal(same, value));
    const ValueHandle unlike(vrntCoerce(other.get(), value.get(), &error));
    ASSERT_NE(unlike, nullptr);
    EXPECT_EQ(vrntValueType(unlike.get()), other.get());
  });
}

TEST_P(DeepValue, IsSpecialized) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text());
    const TypeHandle annotated = parseType(text("int @a"));
    const ValueHandle value = create(type);
    vrntValuesError_t* error = nullptr;
    const ValueHandle result(
        vrntBuildSpecializationParameters(annotated.get(), value.get(), &error));
    ASSERT_NE(result, nullptr);
    EXPECT_EQ(vrntValueType(result.get()), type.get());
    EXPECT_TRUE(equal(result, value));
  });
}

TEST_P(DeepValue, IsWrittenToAStreamAndRead) {
  runOnMainStack([this] {
    const TypeHandle type = parseType(text());
    const ValueHandle value = create(type);
    Stream stream;
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(value.get(), Stream::write, &stream, &error);
    ASSERT_EQ(error, nullptr);
    EXPECT_EQ(stream.bytes.size(), 16 + text().size() + vrntTypeSize(type.get()));
    const ValueHandle back(vrntValueDeserialize(Stream::read, &stream, &error));
    ASSERT_EQ(error, nullptr);
    EXPECT_EQ(stream.position, stream.bytes.size());
    EXPECT_TRUE(equal(back, value));
  });
}

INSTANTIATE_TEST_SUITE_P(Nests, DeepValue,
                         testing::Values(kReferences, kArrays, kOpenArrayReferences, kStructs,
                                         kLastFields, kReferencesAtEachLevel, kDomains, kCodomains,
                                         kMixed));

// Each level has another type on the other side and relates to it, or doesn't: what is worked out
// for a level must not hold all that lies in it.
TEST(DeepCoercion, OfRelatedAndUnrelatedLevelsTakesNoListsOfReferences) {
  runOnMainStack([] {
    const TypeNest before{"", "{ int* r; ", " a; }"};
    const TypeNest more{"", "{ int k; ", " a; void* r; }"};
    const PeakBytes peak;
    const ValueHandle value = create(parseType(before.text()));
    for (const TypeNest& after : {kReferencesAtEachLevel, more}) {
      const TypeHandle type = parseType(after.text());
      vrntValuesError_t* error = nullptr;
      const ValueHandle result(vrntCoerce(type.get(), value.get(), &error));
      ASSERT_NE(result, nullptr);
      EXPECT_EQ(vrntValueType(result.get()), type.get());
    }
    EXPECT_LT(peak.value(), 2 * kMaxMemory);
  });
}

// Texts of values: each is canonical, so that it prints as it was read.
struct ValueNest {
  const char* name;
  std::string before;
  std::string behind;
  int levels = kDepth;
};

const ValueNest kLists{"lists", "[ ", " ]"};
const ValueNest kStructTexts{"structs", "{ a = ", "; }"};
const ValueNest kGrids{"grids", "[ ", " | 1, 1 ]"};
const ValueNest kReferenceTexts{"references", "&", ""};
const ValueNest kReferredStructs{"referred structs", "&{ a = ", "; }"};
const ValueNest kReferredLists{"referred lists", "[ &", " ]"};
// A reference at each level: what a level copies of the next, or lists of it, adds up.
const ValueNest kWordsInStructs{"words in structs", "{ b = $0x0000000000000000; a = ", "; }"};
const ValueNest kReferencesInStructs{"references in structs", "{ b = &1; a = ", "; }"};
const ValueNest kReferencesBehind{"references behind", "{ a = ", "; b = &1; }"};
const ValueNest kReferencesInReferred{"references in referred structs", "{ b = &1; a = &", "; }"};
const ValueNest kMixedTexts{"mixed", "{ b = &[ &1 ]; a = [ { c = 1; d = ", "; } | 1, 1 ]; }",
                            kDepth / 3};

void PrintTo(const ValueNest& nest, std::ostream* stream) { *stream << nest.name; }

class DeepValueText : public testing::TestWithParam<ValueNest> {
 protected:
  std::string text(const char* innermost = "1") const {
    return nested(GetParam().before, innermost, GetParam().behind, GetParam().levels);
  }
};

TEST_P(DeepValueText, IsParsedPrintedAndReleased) {
  runOnMainStack([this] {
    const std::string expected = text();
    const PeakBytes peak;
    ValueHandle value = parseValue(expected);
    EXPECT_TRUE(printed(value) == expected);
    runOnWorkerStack([&value] { value.reset(); });
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST_P(DeepValueText, IsCompared) {
  runOnMainStack([this] {
    const ValueHandle value = parseValue(text("1"));
    EXPECT_TRUE(equal(value, parseValue(text("1"))));
    const ValueHandle other = parseValue(text("2"));
    const vrntValueView_t view = whole(value);
    char* reason = nullptr;
    EXPECT_EQ(vrntValueEqual(value.get(), &view, other.get(), &view, 0, &reason), 0);
    const StringHandle owner(reason);
    ASSERT_NE(reason, nullptr);
    const std::string words = reason;
    EXPECT_EQ(words.substr(words.size() - 6), "1 != 2");
  });
}

TEST_P(DeepValueText, IsCopiedAndWritten) {
  runOnMainStack([this] {
    const ValueHandle value = parseValue(text());
    runOnWorkerStack([&value] {
      ValueHandle copy(vrntValueCopy(value.get()));
      vrntValuesError_t* error = nullptr;
      const vrntValueView_t view = whole(copy);
      vrntValue_t* handle = copy.release();
      EXPECT_NE(vrntValueMap(&handle, &view, &error), nullptr);
      vrntValueUnmap(handle, &view);
      copy.reset(handle);
      EXPECT_NE(copy, value);
      EXPECT_TRUE(equal(copy, value));
    });
  });
}

TEST_P(DeepValueText, IsCoercedAndSpecialized) {
  runOnMainStack([this] {
    const PeakBytes peak;
    const ValueHandle value = parseValue(text("1"));
    const ValueHandle other = parseValue(text("1.0"));
    vrntValuesError_t* error = nullptr;
    const ValueHandle same(vrntCoerce(vrntValueType(value.get()), value.get(), &error));
    EXPECT_TRUE(same && equal(same, value));
    const ValueHandle unlike(vrntCoerce(vrntValueType(other.get()), value.get(), &error));
    EXPECT_TRUE(unlike && vrntValueType(unlike.get()) == vrntValueType(other.get()));
    const ValueHandle special(
        vrntBuildSpecializationParameters(vrntValueType(value.get()), value.get(), &error));
    EXPECT_TRUE(special && equal(special, value));
    EXPECT_LT(peak.value(), 2 * kMaxMemory);
  });
}

TEST_P(DeepValueText, IsRefusedIfItDoesNotEnd) {
  runOnMainStack([this] {
    const std::string broken = text() + " %";
    const auto failure = valueFailure(broken);
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->message, "Unable to parse value: " + broken + ".\nIllegal character: %");
  });
}

TEST_P(DeepValueText, TellsItsTypeWhereverItIsHandedOut) {
  runOnMainStack([this] {
    const ValueHandle value = parseValue(text());
    EXPECT_STREQ(vrntValueBinary(value.get())->typeText,
                 vrntTypeString(vrntValueType(value.get())));
  });
}

INSTANTIATE_TEST_SUITE_P(Nests, DeepValueText,
                         testing::Values(kLists, kStructTexts, kGrids, kReferenceTexts,
                                         kReferredStructs, kReferredLists, kWordsInStructs,
                                         kReferencesInStructs, kReferencesBehind,
                                         kReferencesInReferred, kMixedTexts));

TEST(DeepReferences, TellTheTypeOfEachTarget) {
  runOnMainStack([] {
    ValueHandle value = parseValue(repeated("&", kDepth) + "1");
    for (int depth = kDepth; depth > kDepth - 10; --depth) {
      EXPECT_TRUE(vrntValueBinary(value.get())->typeText == kReferences.text("int", depth));
      const vrntValueView_t view = whole(value);
      value.reset(vrntValueDereference(value.get(), &view));
    }
  });
}

// The texts in the stream add up to the square of the depth, so this one is shallower, and nothing
// but the text at hand is kept.
TEST(DeepReferences, AreWrittenWithoutKeepingTheirTexts) {
  runOnMainStack([] {
    constexpr int kFew = 8'000;
    const ValueHandle value = parseValue(repeated("&", kFew) + "1");
    const PeakBytes peak;
    std::uint64_t written = 0;
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(
        value.get(),
        [](const void*, std::uint64_t size, void* user) {
          *static_cast<std::uint64_t*>(user) += size;
        },
        &written, &error);
    ASSERT_EQ(error, nullptr);
    // Records of 16 bytes and a word, the last one with a number; and "int" with 0 to kFew stars.
    const std::uint64_t records = kFew + 1;
    EXPECT_EQ(written, records * (16 + 8 + 3) - 4 + std::uint64_t{kFew} * records / 2);
    EXPECT_LT(peak.value(), 4'000'000u);  // of 32 million characters
  });
}

TEST(DeepReferences, AreReadBack) {
  runOnMainStack([] {
    const ValueHandle value = parseValue(repeated("&", 3'000) + "1");
    Stream stream;
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(value.get(), Stream::write, &stream, &error);
    const ValueHandle back(vrntValueDeserialize(Stream::read, &stream, &error));
    ASSERT_EQ(error, nullptr);
    EXPECT_TRUE(equal(back, value));
  });
}

}  // namespace
