// The flat functions over types: what each returns, which kinds of type it accepts, who owns what.
#include "vornath_data/types.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"

namespace {

using vornath_test::canonical;
using vornath_test::parseType;
using vornath_test::StringHandle;
using vornath_test::TypeHandle;

constexpr std::array<const char*, 20> kBaseSpellings{
    "bool",   "bool2",  "bool3", "bool4", "int",   "int2",  "int3", "int4",  "float", "float2",
    "float3", "float4", "char",  "char2", "char3", "char4", "half", "half2", "half3", "half4"};

// One type text for each kind of type.
constexpr const char* kBase = "float3";
constexpr const char* kEnum = "enum { A; B; C; }";
constexpr const char* kStruct = "{ int a; float b; }";
constexpr const char* kArray = "float[3]";
constexpr const char* kArray2 = "float[2,3]";
constexpr const char* kArray3 = "float[2,3,4]";
constexpr const char* kArray4 = "float[2,3,4,5]";
constexpr const char* kReference = "float*";
constexpr const char* kFunction = "((int, float) => bool)";
constexpr std::array<const char*, 9> kAllKinds{kBase,   kEnum,   kStruct,    kArray,   kArray2,
                                               kArray3, kArray4, kReference, kFunction};

// The kinds that a function refuses raise the assertion failure through to the host.
template <typename Call>
void expectAccepts(Call call, const std::vector<const char*>& accepted) {
  for (const char* text : kAllKinds) {
    const TypeHandle type = parseType(text);
    bool isAccepted = false;
    for (const char* each : accepted) isAccepted = isAccepted || each == std::string(text);
    if (isAccepted) {
      EXPECT_NO_THROW(call(type.get())) << text;
    } else {
      EXPECT_THROW(call(type.get()), VornathValuesAssertionFailure) << text;
    }
  }
}

std::vector<std::int32_t> shapeOf(const std::string& text) {
  const TypeHandle type = parseType(text);
  std::array<std::int32_t, 5> shape{77, 77, 77, 77, 77};
  vrntTypeArrayShape(type.get(), shape.data());
  std::vector<std::int32_t> result;
  for (const std::int32_t extent : shape) {
    if (extent == 77) break;
    result.push_back(extent);
  }
  return result;
}

using Shape = std::vector<std::int32_t>;

}  // namespace

TEST(vrntTypeCopy, ReturnsTheHandleThatItWasGiven) {
  const TypeHandle type = parseType("float[7]");
  const TypeHandle copy(vrntTypeCopy(type.get()));
  EXPECT_EQ(copy.get(), type.get());
}

TEST(vrntTypeCopy, AddsAReferenceThatKeepsTheTypeAlive) {
  // The annotation's value is shared with the type, so its count tells whether the type lives.
  TypeHandle type = parseType("float @copy_probe=1.5");
  TypeHandle copy(vrntTypeCopy(type.get()));
  const vornath_test::ValueHandle probe(vrntMetadataValue(type.get(), "copy_probe"));
  EXPECT_EQ(probe->refCount, 2u);
  type.reset();
  EXPECT_EQ(probe->refCount, 2u);
  EXPECT_STREQ(vrntTypeString(copy.get()), "float @copy_probe=1.5");
  copy.reset();
  EXPECT_EQ(probe->refCount, 1u);
}

TEST(vrntTypeDestroy, DestroysATypeWithItsLastReference) {
  TypeHandle type = parseType("float @destroy_probe=2.5");
  const vornath_test::ValueHandle probe(vrntMetadataValue(type.get(), "destroy_probe"));
  EXPECT_EQ(probe->refCount, 2u);
  type.reset();
  EXPECT_EQ(probe->refCount, 1u);
}

TEST(vrntTypeDestroy, KeepsAPartThatHasAnotherReference) {
  TypeHandle type = parseType("{ float @part_probe=2.5 x; }[4]*");
  TypeHandle array(vrntTypeElementType(type.get()));
  TypeHandle element(vrntTypeElementType(array.get()));
  TypeHandle field(vrntTypeFieldType(element.get(), 0));
  const vornath_test::ValueHandle probe(vrntMetadataValue(field.get(), "part_probe"));
  field.reset();
  array.reset();
  type.reset();
  EXPECT_EQ(probe->refCount, 2u);
  EXPECT_STREQ(vrntTypeString(element.get()), "{ float @part_probe=2.5 x; }");
  element.reset();
  EXPECT_EQ(probe->refCount, 1u);
}

TEST(vrntTypeDestroy, DestroysPartsThatHaveNoOtherReference) {
  TypeHandle type = parseType("{ int n; { float @child_probe=2.5 x; }[4]* r; } @outer");
  TypeHandle reference(vrntTypeFieldType(type.get(), 1));
  TypeHandle array(vrntTypeElementType(reference.get()));
  TypeHandle element(vrntTypeElementType(array.get()));
  TypeHandle field(vrntTypeFieldType(element.get(), 0));
  const vornath_test::ValueHandle probe(vrntMetadataValue(field.get(), "child_probe"));
  field.reset();
  element.reset();
  array.reset();
  reference.reset();
  EXPECT_EQ(probe->refCount, 2u);
  type.reset();
  EXPECT_EQ(probe->refCount, 1u);
}

TEST(vrntTypeDestroy, KeepsAFixedTypeAlive) {
  vrntType_t* const first = vrtnTypeFloatArray(3);
  vrntTypeDestroy(first);
  const TypeHandle again(vrtnTypeFloatArray(3));
  EXPECT_EQ(again.get(), first);
  EXPECT_STREQ(vrntTypeString(again.get()), "float[3]");
}

TEST(vrntTypeSize, OfABaseTypeCountsThreeLanesAsFour) {
  constexpr std::array<std::uint64_t, 20> sizes{4,  8,  16, 16, 4, 8, 16, 16, 4, 8,
                                                16, 16, 1,  2,  4, 4, 2,  4,  8, 8};
  for (std::size_t i = 0; i < kBaseSpellings.size(); ++i) {
    const TypeHandle type = parseType(kBaseSpellings[i]);
    EXPECT_EQ(vrntTypeSize(type.get()), sizes[i]) << kBaseSpellings[i];
    EXPECT_EQ(vrntTypeAlignment(type.get()), sizes[i]) << kBaseSpellings[i];
  }
}

TEST(vrntTypeSize, OfEachOtherKindFollowsItsLayout) {
  const std::vector<std::pair<const char*, std::uint64_t>> sizes{
      {"enum { A; }", 4},
      {"enum { A(float4 x, float4 y); B; }", 4},
      {"{ }", 4},
      {"{ char a; }", 4},
      {"{ char a; int b; }", 8},
      {"{ float3 a; float b; }", 32},
      {"{ int a; void* b; char c; }", 24},
      {"float[3]", 12},
      {"float[0]", 0},
      {"float[2,3]", 24},
      {"char[2,3,4]", 24},
      {"half3[2,3,4,5]", 960},
      {"{ char a; }[3]", 12},
      {"void*", 8},
      {"float[]*", 8},
      {"(() => int)", 16},
      {"((int, float) => int)", 16}};
  for (const auto& [text, size] : sizes) {
    EXPECT_EQ(vrntTypeSize(parseType(text).get()), size) << text;
  }
}

TEST(vrntTypeSize, OfATypeWithoutADefiniteSizeIsZero) {
  for (const char* text : {"float[]", "float[,]", "void*[,,]", "{ int a; }[,,,]"}) {
    EXPECT_EQ(vrntTypeSize(parseType(text).get()), 0u) << text;
  }
}

TEST(vrntTypeAlignment, OfEachKindFollowsItsLayout) {
  const std::vector<std::pair<const char*, std::uint64_t>> alignments{
      {"enum { A; }", 4},    {"{ }", 4},           {"{ char a; }", 4}, {"{ half4 a; char b; }", 8},
      {"{ float3 a; }", 16}, {"char[3]", 1},       {"float[]", 4},     {"float3[0]", 16},
      {"half[2,3]", 2},      {"void*", 8},         {"char*", 8},       {"(() => char)", 8},
      {"float[3]", 4},       {"{ char a; }[9]", 4}};
  for (const auto& [text, alignment] : alignments) {
    EXPECT_EQ(vrntTypeAlignment(parseType(text).get()), alignment) << text;
  }
}

TEST(vrntTypeString, IsTheCanonicalText) {
  EXPECT_EQ(canonical("float   [ 3 ]  *"), "float[3]*");
  EXPECT_EQ(canonical("float @b @a=1.0"), "float @a=1.0 @b");
  EXPECT_EQ(canonical("enum { A(int x float y) ; B ; }"), "enum { A( int x, float y ); B; }");
}

TEST(vrntTypeString, BelongsToTheType) {
  const TypeHandle type = parseType("{ int a; }[2]");
  EXPECT_EQ(vrntTypeString(type.get()), vrntTypeString(type.get()));
}

TEST(vrntTypeStripMetadata, RemovesMetadataAtEveryDepth) {
  const TypeHandle type = parseType(
      "{ float @default=1.0 @name=\"X\" x; { int @a y; }[3] @b z; enum { A @name=\"a\"; B; }* @c "
      "e; "
      "((int @d) => float @e) f; } @name=\"S\"");
  const TypeHandle plain(vrntTypeStripMetadata(type.get()));
  EXPECT_STREQ(vrntTypeString(plain.get()),
               "{ float x; { int y; }[3] z; enum { A; B; }* e; ((int) => float) f; }");
}

TEST(vrntTypeStripMetadata, ReturnsTheSameHandleIfThereIsNoMetadata) {
  for (const char* text : kAllKinds) {
    const TypeHandle type = parseType(text);
    const TypeHandle plain(vrntTypeStripMetadata(type.get()));
    EXPECT_EQ(plain.get(), type.get()) << text;
  }
}

TEST(vrntTypeStripMetadata, ReturnsTheTypeOfTheTextWithoutAnnotations) {
  const TypeHandle plain = parseType("float[3]");
  const TypeHandle annotated = parseType("float[3] @a");
  EXPECT_NE(annotated.get(), plain.get());
  const TypeHandle stripped(vrntTypeStripMetadata(annotated.get()));
  EXPECT_EQ(stripped.get(), plain.get());
}

TEST(vrntTypeStripMetadata, ReturnsANewReference) {
  TypeHandle annotated = parseType("{ int strip_probe; } @a");
  const TypeHandle stripped(vrntTypeStripMetadata(annotated.get()));
  annotated.reset();
  EXPECT_STREQ(vrntTypeString(stripped.get()), "{ int strip_probe; }");
}

TEST(vrntTypeStripMetadata, RemovesTheConstructorFieldsOfAnEnumWithAnnotations) {
  const TypeHandle type = parseType("enum { StripA(int x) @k; StripB; }");
  const TypeHandle plain(vrntTypeStripMetadata(type.get()));
  EXPECT_STREQ(vrntTypeString(plain.get()), "enum { StripA; StripB; }");
}

TEST(vrtnTypeFloatArray, ReturnsTheTypeThatTheParserReturns) {
  for (const unsigned count : {1u, 2u, 3u, 61u, 166u, 0u}) {
    const TypeHandle made(vrtnTypeFloatArray(count));
    const TypeHandle parsed = parseType("float[" + std::to_string(count) + "]");
    EXPECT_EQ(made.get(), parsed.get()) << count;
    EXPECT_EQ(vrntTypeSize(made.get()), 4u * count) << count;
    EXPECT_EQ(vrntTypeAlignment(made.get()), 4u) << count;
  }
}

TEST(vrtnTypeFloatArray, UsesTheLowBitsOfTheCountAsTheExtent) {
  const TypeHandle five(vrtnTypeFloatArray(0x100000005u));
  EXPECT_STREQ(vrntTypeString(five.get()), "float[5]");
  const TypeHandle largest(vrtnTypeFloatArray(0x7fffffffu));
  EXPECT_STREQ(vrntTypeString(largest.get()), "float[2147483647]");
  EXPECT_EQ(vrntTypeSize(largest.get()), 8589934588u);
}

TEST(vrtnTypeFloatArray, ThrowsIfTheLowBitsOfTheCountAreNegative) {
  for (const std::uint64_t count :
       {std::uint64_t{0x80000000u}, std::uint64_t{0xffffffffu}, ~std::uint64_t{0}}) {
    try {
      vrtnTypeFloatArray(count);
      ADD_FAILURE() << count;
    } catch (const vrnt::Exception& failure) {
      EXPECT_STREQ(failure.what(), "negative array length");
      EXPECT_EQ(failure.code(), vrnt::ErrorCode::InvalidArguments);
    }
  }
}

TEST(vrtnTypeFloatArray, KeepsItsFixedTypesAliveWithoutAHandle) {
  // 166 and 1 are kept too, whichever count was asked for.
  const vrntType_t* one = nullptr;
  const vrntType_t* many = nullptr;
  {
    const TypeHandle unprepared(vrtnTypeFloatArray(9));
    one = parseType("float[1]").get();
    many = parseType("float[166]").get();
  }
  const TypeHandle filler = parseType("float[1] @filler");
  EXPECT_EQ(TypeHandle(vrtnTypeFloatArray(1)).get(), one);
  EXPECT_EQ(TypeHandle(vrtnTypeFloatArray(166)).get(), many);
}

TEST(vrntTypeBasetype, IsTheScalarFamily) {
  constexpr std::array<std::uint32_t, 20> families{2, 2, 2, 2, 3, 3, 3, 3, 4, 4,
                                                   4, 4, 0, 0, 0, 0, 1, 1, 1, 1};
  for (std::size_t i = 0; i < kBaseSpellings.size(); ++i) {
    EXPECT_EQ(vrntTypeBasetype(parseType(kBaseSpellings[i]).get()), families[i])
        << kBaseSpellings[i];
  }
}

TEST(vrntTypeBasetype, OfAnyStructIsFive) {
  EXPECT_EQ(vrntTypeBasetype(parseType("{ }").get()), 5u);
  EXPECT_EQ(vrntTypeBasetype(parseType("{ float x; } @a").get()), 5u);
}

TEST(vrntTypeBasetype, AcceptsBaseTypesAndStructs) {
  expectAccepts([](const vrntType_t* type) { vrntTypeBasetype(type); }, {kBase, kStruct});
}

TEST(vrntTypeDescriptor, GroupsTheKindsOfType) {
  const std::vector<std::pair<const char*, std::uint32_t>> descriptors{
      {kBase, 0},      {kStruct, 1},
      {"{ }", 1},      {kArray, 2},
      {kArray2, 2},    {kArray3, 2},
      {kArray4, 2},    {"int[]", 2},
      {kReference, 3}, {"void*", 3},
      {kEnum, 4},      {kFunction, 5},
      {"half4", 0},    {"{ float[]* s; int i; }", 1}};
  for (const auto& [text, descriptor] : descriptors) {
    EXPECT_EQ(vrntTypeDescriptor(parseType(text).get()), descriptor) << text;
  }
}

TEST(vrntTypeDescriptor, TakesASpectrumAndItsSubtypesForBaseTypes) {
  for (const char* text :
       {"{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }",
        "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; } @name=\"Other\"",
        "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[3]* spectrum; }"}) {
    EXPECT_EQ(vrntTypeDescriptor(parseType(text).get()), 0u) << text;
    EXPECT_EQ(vrntTypeBasetype(parseType(text).get()), 5u) << text;
  }
  for (const char* text : {"{ enum { LUMINANCE; RGB; } encoding; float[]* spectrum; }",
                           "{ int encoding; float[]* spectrum; }",
                           "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; void* spectrum; }",
                           "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* samples; }"}) {
    EXPECT_EQ(vrntTypeDescriptor(parseType(text).get()), 1u) << text;
  }
}

TEST(vrntTypeVectorDimension, IsTheNumberOfLanes) {
  for (std::size_t i = 0; i < kBaseSpellings.size(); ++i) {
    EXPECT_EQ(vrntTypeVectorDimension(parseType(kBaseSpellings[i]).get()), i % 4 + 1)
        << kBaseSpellings[i];
  }
}

TEST(vrntTypeVectorDimension, IsOneForEveryOtherKind) {
  for (const char* text : {kEnum, kStruct, kArray, kArray2, kArray3, kArray4, kReference, kFunction,
                           "float4[3]", "void*"}) {
    EXPECT_EQ(vrntTypeVectorDimension(parseType(text).get()), 1u) << text;
  }
}

TEST(vrntTypeArrayDimension, IsTheRank) {
  const std::vector<std::pair<const char*, std::uint32_t>> ranks{
      {"int[3]", 1},  {"int[]", 1},        {"int[3,3]", 2}, {"int[,]", 2},     {"int[1,2,3]", 3},
      {"int[,,]", 3}, {"int[1,2,3,4]", 4}, {"int[,,,]", 4}, {"int[3][4,5]", 2}};
  for (const auto& [text, rank] : ranks) {
    EXPECT_EQ(vrntTypeArrayDimension(parseType(text).get()), rank) << text;
  }
}

TEST(vrntTypeArrayDimension, AcceptsArrays) {
  expectAccepts([](const vrntType_t* type) { vrntTypeArrayDimension(type); },
                {kArray, kArray2, kArray3, kArray4});
}

TEST(vrntTypeArrayShape, WritesTheExtentsInTheOrderOfTheDimensions) {
  EXPECT_EQ(shapeOf("int[9]"), (Shape{9}));
  EXPECT_EQ(shapeOf("int[2,3]"), (Shape{2, 3}));
  EXPECT_EQ(shapeOf("int[2,3,4]"), (Shape{2, 3, 4}));
  EXPECT_EQ(shapeOf("int[5,4,3,2]"), (Shape{5, 4, 3, 2}));
  EXPECT_EQ(shapeOf("int[2][0]"), (Shape{0}));
}

TEST(vrntTypeArrayShape, WritesMinusOneForEachDimensionOfAnUnsizedArray) {
  EXPECT_EQ(shapeOf("float[]"), (Shape{-1}));
  EXPECT_EQ(shapeOf("float[,]"), (Shape{-1, -1}));
  EXPECT_EQ(shapeOf("float[,,]"), (Shape{-1, -1, -1}));
  EXPECT_EQ(shapeOf("float[,,,]"), (Shape{-1, -1, -1, -1}));
}

TEST(vrntTypeArrayShape, AcceptsArrays) {
  expectAccepts(
      [](const vrntType_t* type) {
        std::array<std::int32_t, 4> shape{};
        vrntTypeArrayShape(type, shape.data());
      },
      {kArray, kArray2, kArray3, kArray4});
}

TEST(vrntTypeElementType, IsTheElementOfAnArrayAndTheTargetOfAReference) {
  const std::vector<std::pair<const char*, const char*>> elements{
      {"float[3] @a", "float"},       {"float @a[3] @b", "float @a"},
      {"int[2][3]", "int[2]"},        {"half[,]", "half"},
      {"char4[2,3,4]", "char4"},      {"{ int a; }[1,2,3,4]", "{ int a; }"},
      {"float[]* @a", "float[]"},     {"void**", "void*"},
      {"enum { A; }*", "enum { A; }"}};
  for (const auto& [text, element] : elements) {
    const TypeHandle type = parseType(text);
    const TypeHandle found(vrntTypeElementType(type.get()));
    EXPECT_STREQ(vrntTypeString(found.get()), element) << text;
    EXPECT_EQ(found.get(), parseType(element).get()) << text;
  }
}

TEST(vrntTypeElementType, ReturnsANewReference) {
  TypeHandle type = parseType("{ int element_probe; }[3]");
  const TypeHandle element(vrntTypeElementType(type.get()));
  type.reset();
  EXPECT_STREQ(vrntTypeString(element.get()), "{ int element_probe; }");
}

TEST(vrntTypeElementType, AcceptsArraysAndReferences) {
  expectAccepts([](const vrntType_t* type) { TypeHandle{vrntTypeElementType(type)}; },
                {kArray, kArray2, kArray3, kArray4, kReference});
}

TEST(vrntTypeReferencedType, IsTheTargetOfAReferenceAndTheElementOfAnArray) {
  EXPECT_STREQ(vrntTypeString(TypeHandle(vrntTypeReferencedType(parseType("int[4]*").get())).get()),
               "int[4]");
  EXPECT_STREQ(vrntTypeString(TypeHandle(vrntTypeReferencedType(parseType("int[4]").get())).get()),
               "int");
}

TEST(vrntTypeReferencedType, IsNullForAReferenceToVoid) {
  EXPECT_EQ(vrntTypeReferencedType(parseType("void*").get()), nullptr);
  EXPECT_EQ(vrntTypeReferencedType(parseType("void* @a").get()), nullptr);
}

TEST(vrntTypeReferencedType, AcceptsArraysAndReferences) {
  expectAccepts([](const vrntType_t* type) { TypeHandle{vrntTypeReferencedType(type)}; },
                {kArray, kArray2, kArray3, kArray4, kReference});
}

TEST(vrntTypeFieldCount, CountsFieldsConstructorsAndArguments) {
  const std::vector<std::pair<const char*, std::uint32_t>> counts{
      {"enum { A; B; C; }", 3},
      {"enum { A(int x, int y); }", 1},
      {"{ }", 0},
      {"{ int a; }", 1},
      {"{ int a; { int c; int d; } b; }", 2},
      {"(() => int)", 0},
      {"((int, int, int) => int)", 3}};
  for (const auto& [text, count] : counts) {
    EXPECT_EQ(vrntTypeFieldCount(parseType(text).get()), count) << text;
    EXPECT_EQ(vrntTypeConstructorCount(parseType(text).get()), count) << text;
  }
}

TEST(vrntTypeFieldCount, AcceptsEnumsStructsAndFunctions) {
  expectAccepts([](const vrntType_t* type) { vrntTypeFieldCount(type); },
                {kEnum, kStruct, kFunction});
}

TEST(vrntTypeConstructorCount, AcceptsEnumsStructsAndFunctions) {
  expectAccepts([](const vrntType_t* type) { vrntTypeConstructorCount(type); },
                {kEnum, kStruct, kFunction});
}

TEST(vrntTypeFieldLabel, NamesFieldsAndConstructors) {
  const TypeHandle record = parseType("{ int first; float @name=\"Other\" second'; }");
  EXPECT_STREQ(vrntTypeFieldLabel(record.get(), 0), "first");
  EXPECT_STREQ(vrntTypeFieldLabel(record.get(), 1), "second'");
  const TypeHandle choice = parseType("enum { One; Two(int x) @name=\"2\"; }");
  EXPECT_STREQ(vrntTypeFieldLabel(choice.get(), 0), "One");
  EXPECT_STREQ(vrntTypeFieldLabel(choice.get(), 1), "Two");
  EXPECT_EQ(vrntTypeFieldLabel(choice.get(), 1), vrntTypeFieldLabel(choice.get(), 1));
}

TEST(vrntTypeFieldLabel, AcceptsEnumsAndStructs) {
  expectAccepts([](const vrntType_t* type) { vrntTypeFieldLabel(type, 0); }, {kEnum, kStruct});
}

TEST(vrntTypeConstructorName, NamesFieldsAndConstructors) {
  EXPECT_STREQ(vrntTypeConstructorName(parseType(kEnum).get(), 2), "C");
  EXPECT_STREQ(vrntTypeConstructorName(parseType(kStruct).get(), 1), "b");
}

TEST(vrntTypeConstructorName, AcceptsEnumsAndStructs) {
  expectAccepts([](const vrntType_t* type) { vrntTypeConstructorName(type, 0); }, {kEnum, kStruct});
}

TEST(vrntTypeFieldType, IsTheTypeOfAFieldWithItsAnnotations) {
  const TypeHandle type = parseType("{ int a; float @default=1.0 @name=\"B\" b; }");
  const TypeHandle plain(vrntTypeFieldType(type.get(), 0));
  EXPECT_EQ(plain.get(), parseType("int").get());
  const TypeHandle annotated(vrntTypeFieldType(type.get(), 1));
  EXPECT_STREQ(vrntTypeString(annotated.get()), "float @default=1.0 @name=\"B\"");
}

TEST(vrntTypeFieldType, IsTheTypeOfAnArgument) {
  const TypeHandle type = parseType("((int, float[3]) => bool)");
  const TypeHandle second(vrntTypeFieldType(type.get(), 1));
  EXPECT_STREQ(vrntTypeString(second.get()), "float[3]");
}

TEST(vrntTypeFieldType, ReturnsANewReference) {
  TypeHandle type = parseType("{ { int field_probe; } a; }");
  const TypeHandle field(vrntTypeFieldType(type.get(), 0));
  type.reset();
  EXPECT_STREQ(vrntTypeString(field.get()), "{ int field_probe; }");
}

TEST(vrntTypeFieldType, AcceptsStructsAndFunctions) {
  expectAccepts([](const vrntType_t* type) { TypeHandle{vrntTypeFieldType(type, 0)}; },
                {kStruct, kFunction});
}

TEST(vrntTypeIsSubType, FollowsTheRelationOfTypes) {
  const std::vector<std::pair<const char*, const char*>> related{
      {"float[3]", "float[]"},
      {"float[3]*", "void*"},
      {"float[3]*", "float[]*"},
      {"enum { A; B; }", "int"},
      {"void*", "void*"},
      {"{ float[3]* a; }", "{ void* a; }"},
      {"((int) => enum { A; })", "((enum { A; }) => int)"},
      {"int @a", "int @b"}};
  for (const auto& [a, b] : related) {
    EXPECT_NE(vrntTypeIsSubType(parseType(a).get(), parseType(b).get()), 0) << a << " / " << b;
  }
  const std::vector<std::pair<const char*, const char*>> unrelated{
      {"float[]", "float[3]"},  {"void*", "float*"},       {"int", "enum { A; B; }"},
      {"int", "float"},         {"float[2,3]", "float[]"}, {"{ int a; }", "{ int b; }"},
      {"float[]*", "float[3]*"}};
  for (const auto& [a, b] : unrelated) {
    EXPECT_EQ(vrntTypeIsSubType(parseType(a).get(), parseType(b).get()), 0) << a << " / " << b;
  }
}

TEST(vrntTypeIsSubType, IsTrueOfATypeAndItself) {
  for (const char* text : kAllKinds) {
    const TypeHandle type = parseType(text);
    EXPECT_NE(vrntTypeIsSubType(type.get(), type.get()), 0) << text;
  }
}

TEST(vrntTypeIsEqual, IsTrueIfEachTypeIsASubtypeOfTheOther) {
  EXPECT_EQ(vrntTypeIsEqual(parseType("float[3]").get(), parseType("float[]").get()), 0);
  EXPECT_EQ(vrntTypeIsEqual(parseType("float[]").get(), parseType("float[3]").get()), 0);
  EXPECT_EQ(vrntTypeIsEqual(parseType("enum { A; }").get(), parseType("int").get()), 0);
  EXPECT_NE(vrntTypeIsEqual(parseType("int[2,3]").get(), parseType("int[2,3]").get()), 0);
}

TEST(vrntTypeIsEqual, IgnoresAnnotationsAndConstructorFields) {
  const TypeHandle a = parseType("{ float @min=0.0 x; } @name=\"a\"");
  const TypeHandle b = parseType("{ float @max=9.0 x; }");
  ASSERT_NE(a.get(), b.get());
  EXPECT_NE(vrntTypeIsEqual(a.get(), b.get()), 0);
  const TypeHandle plain = parseType("enum { EqA; EqB; } @a");
  const TypeHandle loaded = parseType("enum { EqA(int x); EqB; } @b");
  ASSERT_NE(plain.get(), loaded.get());
  EXPECT_NE(vrntTypeIsEqual(plain.get(), loaded.get()), 0);
}

TEST(vrntTypeCheckSubType, IsNullWithoutAnErrorForASubtype) {
  auto* const untouched = reinterpret_cast<vrntValuesError_t*>(0x10);
  vrntValuesError_t* error = untouched;
  EXPECT_EQ(vrntTypeCheckSubType(parseType("float[3]").get(), parseType("float[]").get(), &error),
            nullptr);
  EXPECT_EQ(error, untouched);
}

TEST(vrntTypeCheckSubType, DoesNotUseTheErrorOutParameterForOneType) {
  const TypeHandle type = parseType("float");
  EXPECT_EQ(vrntTypeCheckSubType(type.get(), type.get(), nullptr), nullptr);
}

TEST(vrntTypeCheckSubType, ReturnsTheReasonAsANewString) {
  auto* const untouched = reinterpret_cast<vrntValuesError_t*>(0x10);
  vrntValuesError_t* error = untouched;
  const TypeHandle a = parseType("float[3]");
  const TypeHandle b = parseType("float[4]");
  const StringHandle first(vrntTypeCheckSubType(a.get(), b.get(), &error));
  const StringHandle second(vrntTypeCheckSubType(a.get(), b.get(), &error));
  EXPECT_STREQ(first.get(), "Expected array of size: 4 - provided array of size: 3");
  EXPECT_STREQ(second.get(), first.get());
  EXPECT_NE(second.get(), first.get());
  EXPECT_EQ(error, untouched);
}
