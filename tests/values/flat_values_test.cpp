#include <array>
#include <optional>
#include <stdexcept>
#include <variant>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"

namespace {

using namespace vornath_test;

vrntValueView_t whole(const vrntValue_t* value) { return {vrntValueType(value), 0}; }

std::string text(const vrntValue_t* value, std::uint32_t flags = 0) {
  const vrntValueView_t view = whole(value);
  vrntValuesError_t* error = nullptr;
  const StringHandle words(vrntValueString(value, &view, flags, &error));
  const ErrorHandle owner(error);
  EXPECT_NE(words, nullptr) << (error ? vrntValuesErrorMessage(error) : "no error");
  return words ? words.get() : "";
}

ValueHandle create(const char* typeText) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueCreate(type.get(), &error));
  EXPECT_EQ(error, nullptr);
  return value;
}

ValueHandle createDefault(const char* typeText) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueCreateDefault(type.get(), &error));
  EXPECT_EQ(error, nullptr);
  return value;
}

vrntValueView_t fieldOf(const vrntValue_t* value, std::uint32_t field) {
  vrntValueView_t view;
  return *vrntValueStructField(&view, vrntValueType(value), field);
}

// Maps the view, calls the writer with its bytes, and unmaps.
template <typename Writer>
void write(vrntValue_t*& value, const vrntValueView_t& view, Writer writer) {
  vrntValuesError_t* error = nullptr;
  void* const bytes = vrntValueMap(&value, &view, &error);
  ASSERT_NE(bytes, nullptr);
  ASSERT_EQ(error, nullptr);
  writer(bytes);
  vrntValueUnmap(value, &view);
}

TEST(vrntValueCreate, GivesAllZero) {
  const ValueHandle value = create("{ float @default=1.0 a; int* b; }");
  EXPECT_EQ(text(value.get()), "{ a = 0.0; b = $(0x0000000000000000:int); }");
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntValueCreate, LaysOutTheBlockAsDeclared) {
  const ValueHandle value = create("int[3]");
  const auto* const bytes = reinterpret_cast<const unsigned char*>(value.get());
  EXPECT_EQ(std::memcmp(bytes, "vrntval\0", 8), 0);
  const char* typeText;
  std::memcpy(&typeText, bytes + 8, 8);
  EXPECT_STREQ(typeText, "int[3]");
  EXPECT_EQ(typeText, vrntTypeString(vrntValueType(value.get())));
  vrntType_t* type;
  std::memcpy(&type, bytes + 16, 8);
  EXPECT_EQ(type, vrntValueType(value.get()));
  const std::array<unsigned char, 8> null{};
  EXPECT_EQ(std::memcmp(bytes + 24, null.data(), 8), 0);
  std::uint32_t numbers[2];
  std::memcpy(numbers, bytes + 40, 8);
  EXPECT_EQ(numbers[0], 1u);
  EXPECT_EQ(numbers[1], 3u);
  EXPECT_EQ(vrntValueData(value.get()), bytes + 48);
}

TEST(vrntValueCreate, OfAHugeTypeIsOutOfMemory) {
  const TypeHandle type = parseType("char[2147483647][2147483647][3]");
  for (const auto make : {&vrntValueCreate, &vrntValueCreateDefault}) {
    vrntValuesError_t* error = nullptr;
    EXPECT_EQ(make(type.get(), &error), nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(vrntValuesErrorCode(error), 1u);
    EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.");
    vrntValuesErrorDestroy(error);
  }
}

TEST(vrntValueCreateDefault, AppliesDefaults) {
  EXPECT_EQ(text(createDefault("{ float @default=1.5 a; { bool @default=true b; int c; } d; "
                               "enum { A; B; } @default=B : enum { A; B; } e; }")
                     .get()),
            "{ a = 1.5; d = { b = true; c = 0; }; e = B : enum { A; B; }; }");
}

TEST(vrntValueCreateDefault, StoresATrueBoolAsAllOnes) {
  EXPECT_EQ(readAt<std::uint32_t>(createDefault("bool @default=true")), 0xFFFFFFFFu);
}

TEST(vrntValueCreateDefault, IgnoresADefaultOfAnUnrelatedType) {
  EXPECT_EQ(text(createDefault("float @default=1").get()), "0.0");
}

TEST(vrntValueCreateDefault, LetsTheOuterDefaultWin) {
  EXPECT_EQ(text(createDefault("{ float @default=1.0 x; } @default={ x = 2.0; }").get()),
            "{ x = 2.0; }");
}

TEST(vrntValueCreateDefault, GivesEachCallABlockOfItsOwn) {
  const TypeHandle type = parseType("{ float @default=1.5 a; float[]* @default=&[ 1.0, 2.0 ] b; }");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* first = vrntValueCreateDefault(type.get(), &error);
  const ValueHandle second(vrntValueCreateDefault(type.get(), &error));
  EXPECT_NE(first, second.get());
  EXPECT_EQ(first->refCount, 1u);
  EXPECT_EQ(second->refCount, 1u);
  vrntValue_t* const before = first;
  const vrntValueView_t view = whole(first);
  write(first, view, [](void* bytes) {
    const float a = 2.5F;
    std::memcpy(bytes, &a, sizeof(a));
    std::memset(static_cast<char*>(bytes) + 8, 0, 8);
  });
  EXPECT_EQ(first, before);
  vrntValueDestroy(first);
  const ValueHandle third(vrntValueCreateDefault(type.get(), &error));
  for (const ValueHandle* value : {&second, &third}) {
    EXPECT_EQ(text(value->get()), "{ a = 1.5; b = &[ 1.0, 2.0 ]; }");
  }
}

// The default that a type keeps ends with the type, and what it refers to with it.
TEST(vrntValueCreateDefault, LeavesNothingBehindWhenTheTypeEnds) {
  TypeHandle type = parseType("int[]* @default=&[ 1, 2 ] @desc=\"short-lived\"");
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueCreateDefault(type.get(), &error));
  const vrntValueView_t view = whole(value.get());
  const ValueHandle target(vrntValueDereference(value.get(), &view));
  EXPECT_GT(target->refCount, 2u);
  type.reset();
  EXPECT_EQ(target->refCount, 2u);
}

TEST(vrntValueParse, ReadsAText) { EXPECT_EQ(text(parseValue("[ 1, 2 ]").get()), "[ 1, 2 ]"); }

TEST(vrntValueParse, SharesABlock) {
  const ValueHandle value = parseValue("{ a = 1; }");
  vrntValuesError_t* error = nullptr;
  const ValueHandle shared(vrntValueParse(value.get(), &error));
  EXPECT_EQ(shared.get(), value.get());
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(value->refCount, 2u);
}

TEST(vrntValueParse, ReportsATextThatDoesNotParse) {
  const auto failure = valueFailure("{ a = }");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->kind, 0u);
  EXPECT_EQ(failure->message.rfind("Unable to parse value: { a = }.\nsyntax error, ", 0), 0u)
      << failure->message;
}

TEST(vrntValueParse, ReportsWhatAConstructionRefusesInItsOwnWords) {
  const std::pair<const char*, const char*> cases[] = {
      {"X : enum { A; }", "Invalid enum constructor: X"},
      {"[ 1, 2 | 3 ]", "Empty array without type is not allowed."},
      {"[ 1, 2, 3 | 1, 2 ]", "Empty array without type is not allowed."},
      {"[ 1, 2.0 ]", "Incompatible type for value -> type float does not match type int."},
      {"{ a = 1; a = 2; }", "Duplicate struct field: a."},
      {"[ : int | -1 ]", "negative array length"},
      {"[ : int[] ]", "concrete type required"},
  };
  for (const auto& [words, message] : cases) {
    const auto failure = valueFailure(words);
    ASSERT_TRUE(failure) << words;
    EXPECT_EQ(failure->kind, 0u) << words;
    EXPECT_EQ(failure->message, message) << words;
  }
}

TEST(vrntValueFromView, CopiesAPartWithItsReferences) {
  const ValueHandle value = parseValue("{ a = 1; b = { c = &2; }; }");
  const vrntValueView_t b = fieldOf(value.get(), 1);
  vrntValuesError_t* error = nullptr;
  const ValueHandle part(vrntValueFromView(value.get(), &b, &error));
  EXPECT_EQ(text(part.get()), "{ c = &2; }");
  const vrntValueView_t c = whole(part.get());
  const ValueHandle target(vrntValueDereference(part.get(), &c));
  EXPECT_EQ(target->refCount, 3u);
}

TEST(vrntValueCopy, ReturnsThePointerThatItWasGiven) {
  const ValueHandle value = parseValue("1");
  const ValueHandle copy(vrntValueCopy(value.get()));
  EXPECT_EQ(copy.get(), value.get());
  EXPECT_EQ(value->refCount, 2u);
}

TEST(vrntValueDestroy, DropsOneReference) {
  const ValueHandle value = parseValue("1");
  vrntValueDestroy(vrntValueCopy(value.get()));
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntValueType, IsTheStrippedTypeBorrowed) {
  const ValueHandle value = createDefault("int @default=3");
  const TypeHandle type = parseType("int");
  EXPECT_EQ(vrntValueType(value.get()), type.get());
}

TEST(vrntValueBinary, IsTheBlockItself) {
  const ValueHandle value = parseValue("1");
  EXPECT_EQ(vrntValueBinary(value.get()), value.get());
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntValueDereference, OfNullIsNull) {
  const ValueHandle value = create("int*");
  const vrntValueView_t view = whole(value.get());
  EXPECT_EQ(vrntValueDereference(value.get(), &view), nullptr);
}

TEST(vrntValueDereference, OfABlockIsThatBlock) {
  const ValueHandle value = parseValue("{ a = &[ 1, 2 ]; }");
  const vrntValueView_t a = fieldOf(value.get(), 0);
  const ValueHandle first(vrntValueDereference(value.get(), &a));
  const ValueHandle second(vrntValueDereference(value.get(), &a));
  EXPECT_EQ(first.get(), second.get());
  EXPECT_EQ(first->refCount, 3u);
  EXPECT_EQ(readAt<std::uint64_t>(value),
            reinterpret_cast<std::uintptr_t>(vrntValueData(first.get())));
  EXPECT_EQ(text(first.get()), "[ 1, 2 ]");
}

TEST(vrntValueDereference, OfAForeignAddressIsACopy) {
  std::int32_t foreign[2] = {11, 12};
  const TypeHandle type = parseType("int[2]*");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const vrntValueView_t view = whole(value);
  const std::uint64_t word = reinterpret_cast<std::uintptr_t>(foreign) * 2 + 1;
  vrntValueWrite(&value, 0, &word, sizeof(word), &error);
  const ValueHandle holder(value);
  vrntValue_t* copy = vrntValueDereference(value, &view);
  EXPECT_EQ(text(copy), "[ 11, 12 ]");
  const std::int32_t changed = 99;
  vrntValueWrite(&copy, 0, &changed, sizeof(changed), &error);
  EXPECT_EQ(text(copy), "[ 99, 12 ]");
  EXPECT_EQ(foreign[0], 11);
  vrntValueDestroy(copy);
}

TEST(vrntValueDereference, OfAForeignAddressNeedsAReferenceType) {
  const ValueHandle value = parseValue("{ f = $0x0000000000000008; }");
  const vrntValueView_t view = whole(value.get());
  EXPECT_THROW(vrntValueDereference(value.get(), &view), std::bad_variant_access);
  const vrntValueView_t untyped = fieldOf(value.get(), 0);
  EXPECT_THROW(vrntValueDereference(value.get(), &untyped), VornathValuesAssertionFailure);
}

TEST(vrntValueStructField, GivesTypeAndOffset) {
  const TypeHandle type = parseType("{ char a; float3 @name=\"x\" b; }");
  vrntValueView_t view{};
  EXPECT_EQ(vrntValueStructField(&view, type.get(), 1), &view);
  EXPECT_STREQ(vrntTypeString(view.type), "float3 @name=\"x\"");
  EXPECT_EQ(view.offset, 16u);
}

TEST(vrntValueStructField, RefusesOtherThanStructs) {
  vrntValueView_t view{};
  for (const char* text : {"int", "int[2]", "int*", "enum { A; }", "(() => int)"}) {
    const TypeHandle type = parseType(text);
    EXPECT_THROW(vrntValueStructField(&view, type.get(), 0), VornathValuesAssertionFailure) << text;
  }
}

TEST(vrntValueArrayElement, GivesTypeAndOffsetForEachRank) {
  const std::int32_t index[] = {1, 2, 1, 3};
  const std::pair<const char*, std::uint64_t> cases[] = {
      {"float[3]", 1 * 4},
      {"float[3,4]", (2 * 3 + 1) * 4},
      {"float[3,4,2]", ((1 * 4 + 2) * 3 + 1) * 4},
      {"float[3,4,2,5]", (((3 * 2 + 1) * 4 + 2) * 3 + 1) * 4},
  };
  for (const auto& [typeText, offset] : cases) {
    const TypeHandle type = parseType(typeText);
    vrntValueView_t view{};
    EXPECT_EQ(vrntValueArrayElement(&view, type.get(), index), &view);
    EXPECT_STREQ(vrntTypeString(view.type), "float");
    EXPECT_EQ(view.offset, offset) << typeText;
  }
}

TEST(vrntValueArrayElement, TakesTheFirstElementsOfARowAsNeighbours) {
  const TypeHandle type = parseType("float[4,4,4]");
  const std::int32_t first[] = {0, 0, 0}, second[] = {1, 0, 0};
  vrntValueView_t a{}, b{};
  vrntValueArrayElement(&a, type.get(), first);
  vrntValueArrayElement(&b, type.get(), second);
  EXPECT_EQ(b.offset - a.offset, 4u);
}

TEST(vrntValueArrayElement, RefusesOtherThanArrays) {
  const std::int32_t index = 0;
  vrntValueView_t view{};
  for (const char* text : {"int", "{ int a; }", "int*", "enum { A; }", "(() => int)"}) {
    const TypeHandle type = parseType(text);
    EXPECT_THROW(vrntValueArrayElement(&view, type.get(), &index), VornathValuesAssertionFailure)
        << text;
  }
}

TEST(vrntValueMap, GivesTheBytesOfAnExclusiveBlock) {
  const ValueHandle value = parseValue("{ a = 1; b = 2; }");
  vrntValue_t* handle = value.get();
  const vrntValueView_t b = fieldOf(handle, 1);
  write(handle, b, [&](void* bytes) {
    EXPECT_EQ(bytes, static_cast<const char*>(vrntValueData(handle)) + 4);
    const std::int32_t number = 5;
    std::memcpy(bytes, &number, sizeof(number));
  });
  EXPECT_EQ(handle, value.get());
  EXPECT_EQ(text(handle), "{ a = 1; b = 5; }");
}

TEST(vrntValueMap, MovesAHandleOnASharedBlock) {
  const ValueHandle other = parseValue("{ a = 1; b = &2; }");
  vrntValue_t* handle = vrntValueCopy(other.get());
  const vrntValueView_t a = fieldOf(handle, 0);
  write(handle, a, [](void* bytes) {
    const std::int32_t number = 5;
    std::memcpy(bytes, &number, sizeof(number));
  });
  const ValueHandle owner(handle);
  EXPECT_NE(handle, other.get());
  EXPECT_EQ(handle->refCount, 1u);
  EXPECT_EQ(other->refCount, 1u);
  EXPECT_EQ(text(handle), "{ a = 5; b = &2; }");
  EXPECT_EQ(text(other.get()), "{ a = 1; b = &2; }");
}

TEST(vrntValueMap, LeavesTheHandleWhenThereIsNoMemory) {
  // A block that looks shared and whose type can't be allocated again.
  const TypeHandle huge = parseType("char[2147483647][2147483647][3]");
  const ValueHandle value = parseValue("1");
  const ValueHandle other(vrntValueCopy(value.get()));
  vrntType_t* const type = value->type;
  value->type = huge.get();
  vrntValue_t* handle = value.get();
  const vrntValueView_t view{type, 0};
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntValueMap(&handle, &view, &error), nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 1u);
  EXPECT_EQ(handle, value.get());
  EXPECT_EQ(value->refCount, 2u);
  value->type = type;
}

int releases = 0;

TEST(vrntValueMap, CopiesTheReleaseFunctionOfASharedBlock) {
  vrntValue_t* handle = create("{ int* a; int b; }").release();
  handle->freeFn = [](void* memory) {
    ++releases;
    std::free(memory);
  };
  const ValueHandle other(vrntValueCopy(handle));
  write(handle, whole(handle), [](void*) {});
  EXPECT_NE(handle, other.get());
  EXPECT_EQ(handle->freeFn, other->freeFn);
  releases = 0;
  vrntValueDestroy(handle);
  EXPECT_EQ(releases, 2);  // the block and its shadow array
}

TEST(vrntValueUnmap, CountsTheReferencesThatTheWriterLeft) {
  const ValueHandle before = parseValue("1");
  const ValueHandle after = parseValue("2");
  vrntValue_t* handle = create("{ int* a; int* b; }").release();
  const vrntValueView_t a = fieldOf(handle, 0), b = fieldOf(handle, 1);
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&handle, &a, before.get(), &error);
  vrntValueSetReference(&handle, &b, before.get(), &error);
  EXPECT_EQ(before->refCount, 3u);
  write(handle, whole(handle), [&](void* bytes) {
    EXPECT_EQ(before->refCount, 3u);
    const void* const word = vrntValueData(after.get());
    std::memcpy(bytes, &word, sizeof(word));
  });
  EXPECT_EQ(before->refCount, 2u);
  EXPECT_EQ(after->refCount, 2u);
  EXPECT_EQ(handle->shadowRefs[0], 0u);
  EXPECT_EQ(handle->shadowRefs[1], 0u);
  vrntValueDestroy(handle);
  EXPECT_EQ(before->refCount, 1u);
  EXPECT_EQ(after->refCount, 1u);
}

TEST(vrntValueUnmap, OfAPartTouchesNoOtherReference) {
  vrntValue_t* handle = parseValue("{ a = &1; b = &2; c = &3; }").release();
  const vrntValueView_t b = fieldOf(handle, 1);
  write(handle, b, [](void* bytes) { std::memset(bytes, 0, 8); });
  EXPECT_EQ(text(handle), "{ a = &1; b = $(0x0000000000000000:int); c = &3; }");
  vrntValueDestroy(handle);
}

TEST(vrntValueDestroy, OfAMappedBlockReleasesWhatTheShadowArrayHolds) {
  const ValueHandle target = parseValue("1");
  vrntValue_t* handle = create("int*").release();
  const vrntValueView_t view = whole(handle);
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&handle, &view, target.get(), &error);
  void* const bytes = vrntValueMap(&handle, &view, &error);
  std::memset(bytes, 0, 8);
  EXPECT_EQ(target->refCount, 2u);
  vrntValueDestroy(handle);
  EXPECT_EQ(target->refCount, 1u);
}

TEST(vrntValueWrite, CopiesBytesToAnOffset) {
  vrntValue_t* handle = parseValue("[ 1, 2, 3 ]").release();
  const ValueHandle other(vrntValueCopy(handle));
  const std::int32_t numbers[] = {8, 9};
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&handle, 4, numbers, sizeof(numbers), &error);
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(text(handle), "[ 1, 8, 9 ]");
  EXPECT_EQ(text(other.get()), "[ 1, 2, 3 ]");
  vrntValueWrite(&handle, 0, nullptr, 0, &error);
  EXPECT_EQ(text(handle), "[ 1, 8, 9 ]");
  vrntValueDestroy(handle);
}

TEST(vrntValueSetReference, HoldsTheTargetAndDropsTheOldOne) {
  const ValueHandle first = parseValue("1");
  const ValueHandle second = parseValue("2");
  vrntValue_t* handle = create("int*").release();
  const vrntValueView_t view = whole(handle);
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&handle, &view, first.get(), &error);
  EXPECT_EQ(first->refCount, 2u);
  vrntValueSetReference(&handle, &view, second.get(), &error);
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(first->refCount, 1u);
  EXPECT_EQ(second->refCount, 2u);
  EXPECT_EQ(text(handle), "&2");
  vrntValueDestroy(handle);
}

TEST(vrntValueSetReference, ToNothingMakesANullReference) {
  const ValueHandle target = parseValue("1");
  vrntValue_t* handle = create("int*").release();
  const vrntValueView_t view = whole(handle);
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&handle, &view, target.get(), &error);
  vrntValueSetReference(&handle, &view, nullptr, &error);
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(target->refCount, 1u);
  EXPECT_EQ(text(handle), "$(0x0000000000000000:int)");
  vrntValueDestroy(handle);
}

TEST(vrntValueSetReference, ToItselfMakesACopyThatRefersToTheOriginal) {
  vrntValue_t* handle = create("void*").release();
  vrntValue_t* const original = handle;
  const vrntValueView_t view = whole(handle);
  vrntValuesError_t* error = nullptr;
  vrntValueSetReference(&handle, &view, handle, &error);
  EXPECT_NE(handle, original);
  EXPECT_EQ(text(handle), "&$0x0000000000000000");
  vrntValueDestroy(handle);
}

TEST(vrntValueParse, ReportsThatThereIsNoText) {
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntValueParse(nullptr, &error), nullptr);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OTHER_ERROR});
  vrntValuesErrorDestroy(error);
}

TEST(vrntValueEqual, ComparesTheValuesAtTheViews) {
  const ValueHandle a = parseValue("{ x = 1.0; y = 5; }");
  const ValueHandle b = parseValue("{ y = 5; x = 1.25; }");
  const vrntValueView_t ax = fieldOf(a.get(), 0), ay = fieldOf(a.get(), 1);
  const vrntValueView_t bx = fieldOf(b.get(), 1), by = fieldOf(b.get(), 0);
  EXPECT_EQ(vrntValueEqual(a.get(), &ay, b.get(), &by, 0, nullptr), 1);
  EXPECT_EQ(vrntValueEqual(a.get(), &ax, b.get(), &bx, 0, nullptr), 0);
  EXPECT_EQ(vrntValueEqual(a.get(), &ax, b.get(), &bx, 0.25f, nullptr), 1);
}

TEST(vrntValueEqual, GivesTheReasonIfThereIsOne) {
  const ValueHandle a = parseValue("{ a = [ { b = 1; }, { b = 1; } ]; }");
  const ValueHandle b = parseValue("{ a = [ { b = 1; }, { b = 2; } ]; }");
  const vrntValueView_t viewA = whole(a.get()), viewB = whole(b.get());
  char* reason = nullptr;
  EXPECT_EQ(vrntValueEqual(a.get(), &viewA, b.get(), &viewB, 0, &reason), 0);
  const StringHandle owner(reason);
  EXPECT_STREQ(reason, ".a[1].b: 1 != 2");

  char* none = nullptr;
  EXPECT_EQ(vrntValueEqual(a.get(), &viewA, a.get(), &viewA, 0, &none), 1);
  EXPECT_EQ(none, nullptr);
  const ValueHandle null = create("int*");
  const ValueHandle reference = parseValue("&1");
  const vrntValueView_t viewN = whole(null.get()), viewR = whole(reference.get());
  EXPECT_EQ(vrntValueEqual(null.get(), &viewN, reference.get(), &viewR, 0, &none), 0);
  EXPECT_EQ(none, nullptr);
}

TEST(vrntValueString, ReadsBitZeroAndBitTwoOnly) {
  const ValueHandle value = parseValue("{ a = 1.0; }");
  EXPECT_EQ(text(value.get(), 0), "{ a = 1.0; }");
  EXPECT_EQ(text(value.get(), 1), "{ a = 0x3f800000.; }");
  EXPECT_EQ(text(value.get(), 4), "{\n  a = 1.0;\n}");
  EXPECT_EQ(text(value.get(), 5), "{\n  a = 0x3f800000.;\n}");
  EXPECT_EQ(text(value.get(), 2), "{ a = 1.0; }");
  EXPECT_EQ(text(value.get(), 0xFFFFFFFA), "{ a = 1.0; }");
}

TEST(vrntValueString, ReportsEveryFailureAsKindTwo) {
  vrntValue_t* handle = create("enum { A; }").release();
  const vrntValueView_t view = whole(handle);
  vrntValuesError_t* error = nullptr;
  const std::int32_t code = 7;
  vrntValueWrite(&handle, 0, &code, sizeof(code), &error);
  EXPECT_EQ(vrntValueString(handle, &view, 0, &error), nullptr);
  const ErrorHandle owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 2u);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "Enum code out of range: 7");
  vrntValueDestroy(handle);

  const TypeHandle open = parseType("int[]");
  const ValueHandle value = create("int[2]");
  const vrntValueView_t openView{open.get(), 0};
  error = nullptr;
  EXPECT_EQ(vrntValueString(value.get(), &openView, 0, &error), nullptr);
  const ErrorHandle second(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 2u);
  EXPECT_STREQ(vrntValuesErrorMessage(error), std::bad_optional_access().what());
}

// An enum may stand for an int. What a reference leads to prints with its own type, and a list
// shows the type of its elements only if their texts leave something of it open.
TEST(vrntValueString, OfAnEnumBehindAReferenceToIntSaysOnlyTheEnum) {
  const ValueHandle list = parseValue("[ &A : enum { A; }, &1 : int* ]");
  EXPECT_EQ(typeTextOf(list), "int*[2]");
  EXPECT_EQ(textOf(list), "[ &A : enum { A; }, &1 ]");
  const auto failure = valueFailure(textOf(list));
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->message,
            "Incompatible type for value -> Referenced type mismatch: type int does not match type "
            "enum { A; }.");

  // The other way round the first element says the type of both.
  const ValueHandle reversed = parseValue("[ &1, &A : enum { A; } ]");
  EXPECT_EQ(typeTextOf(reversed), "int*[2]");
  EXPECT_EQ(typeTextOf(parseValue(textOf(reversed))), "int*[2]");

  const ValueHandle alone = parseValue("[ &A : enum { A; } : int* ]");
  EXPECT_EQ(typeTextOf(alone), "int*[1]");
  EXPECT_EQ(textOf(alone), "[ &A : enum { A; } ]");
  const ValueHandle read = parseValue(textOf(alone));
  EXPECT_EQ(typeTextOf(read), "enum { A; }*[1]");
  // Its type brings the value back.
  const TypeHandle type = parseType("int*[1]");
  vrntValuesError_t* error = nullptr;
  const ValueHandle back(vrntCoerce(type.get(), read.get(), &error));
  ASSERT_NE(back, nullptr);
  EXPECT_EQ(typeTextOf(back), "int*[1]");
  EXPECT_EQ(textOf(back), textOf(alone));
}

struct Stream {
  std::string bytes;
  std::size_t position = 0;
  int calls = 0;
};

void writeTo(const void* bytes, std::uint64_t size, void* user) {
  auto& stream = *static_cast<Stream*>(user);
  ++stream.calls;
  stream.bytes.append(static_cast<const char*>(bytes), size);
}

void readFrom(void* bytes, std::uint64_t size, void* user) {
  auto& stream = *static_cast<Stream*>(user);
  if (size > stream.bytes.size() - stream.position) throw std::runtime_error("the end");
  std::memcpy(bytes, stream.bytes.data() + stream.position, size);
  stream.position += size;
}

TEST(vrntValueSerialize, WritesWhatDeserializeReads) {
  const ValueHandle value = parseValue("{ a = &[ 1.0, 2.0 ]; b = [ &1, &2 ]; }");
  Stream stream;
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(value.get(), &writeTo, &stream, &error);
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(stream.calls, 16);
  stream.bytes += "next";
  const ValueHandle back(vrntValueDeserialize(&readFrom, &stream, &error));
  EXPECT_EQ(error, nullptr);
  EXPECT_EQ(stream.bytes.substr(stream.position), "next");
  EXPECT_EQ(text(back.get()), text(value.get()));
  EXPECT_EQ(back->refCount, 1u);
  const vrntValueView_t viewA = whole(value.get()), viewB = whole(back.get());
  EXPECT_EQ(vrntValueEqual(value.get(), &viewA, back.get(), &viewB, 0, nullptr), 1);
}

TEST(vrntValueSerialize, ReportsWhatTheCallbackThrowsAsKindTwo) {
  const ValueHandle value = parseValue("1");
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(
      value.get(),
      [](const void*, std::uint64_t, void*) {
        throw vrnt::Exception(vrnt::ErrorCode::IoError, "disk full");
      },
      nullptr, &error);
  const ErrorHandle owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 2u);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "disk full");
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntValueSerialize, ReportsAFailedAllocationOfTheCallback) {
  const ValueHandle value = parseValue("1");
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(
      value.get(), [](const void*, std::uint64_t, void*) { throw std::bad_alloc(); }, nullptr,
      &error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 1u);
}

TEST(vrntValueSerialize, LetsOtherThanStandardExceptionsPass) {
  const ValueHandle value = parseValue("1");
  vrntValuesError_t* error = nullptr;
  EXPECT_THROW(
      vrntValueSerialize(
          value.get(), [](const void*, std::uint64_t, void*) { throw 5; }, nullptr, &error),
      int);
  EXPECT_EQ(value->refCount, 1u);
}

TEST(vrntValueDeserialize, ReportsATypeThatDoesNotParse) {
  Stream stream;
  const std::uint64_t length = 3;
  writeTo(&length, sizeof(length), &stream);
  writeTo("in!", 3, &stream);
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntValueDeserialize(&readFrom, &stream, &error), nullptr);
  const ErrorHandle owner(error);
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(vrntValuesErrorCode(error), 0u);
  EXPECT_EQ(std::string(vrntValuesErrorMessage(error)).rfind("Unable to parse type: in!.\n", 0),
            0u);
}

TEST(vrntValueDeserialize, ReportsWhatTheCallbackThrows) {
  Stream empty;
  vrntValuesError_t* error = nullptr;
  EXPECT_EQ(vrntValueDeserialize(&readFrom, &empty, &error), nullptr);
  ErrorHandle owner(error);
  EXPECT_EQ(vrntValuesErrorCode(error), 2u);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "the end");

  error = nullptr;
  EXPECT_EQ(vrntValueDeserialize([](void*, std::uint64_t, void*) { throw 5; }, nullptr, &error),
            nullptr);
  owner.reset(error);
  EXPECT_EQ(vrntValuesErrorCode(error), 2u);
  EXPECT_STREQ(vrntValuesErrorMessage(error), "Unknown error.");

  error = nullptr;
  EXPECT_EQ(vrntValueDeserialize([](void*, std::uint64_t, void*) { throw std::bad_alloc(); },
                                 nullptr, &error),
            nullptr);
  owner.reset(error);
  EXPECT_EQ(vrntValuesErrorCode(error), 1u);
}

TEST(vrntMetadataValue, IsSharedWithTheTypeAndCopiedOnWrite) {
  const TypeHandle type = parseType("int @default=3");
  vrntValue_t* value = vrntMetadataValue(type.get(), "default");
  EXPECT_EQ(text(value), "3");
  const std::int32_t number = 4;
  vrntValuesError_t* error = nullptr;
  vrntValueWrite(&value, 0, &number, sizeof(number), &error);
  EXPECT_EQ(text(value), "4");
  vrntValueDestroy(value);
  const ValueHandle again(vrntMetadataValue(type.get(), "default"));
  EXPECT_EQ(text(again.get()), "3");
}

}  // namespace
