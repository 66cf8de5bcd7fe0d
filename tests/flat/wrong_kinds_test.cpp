// The words of what accessors throw for a type of a kind that they don't accept, as a host that
// links the shared library alone catches it.
#include <gtest/gtest.h>

#include <exception>
#include <string>

#include "support/flat_handles.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/vrnt.h"

namespace {

using vornath_test::parseType;
using vornath_test::parseValue;
using vornath_test::TypeHandle;
using vornath_test::ValueHandle;

// What the host reads, whichever of the two ways it catches.
template <typename Call>
std::string wordsOf(Call call) {
  std::string words;
  try {
    call();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const VornathValuesAssertionFailure& failure) {
    words = failure.what();
  }
  try {
    call();
  } catch (const std::exception& failure) {
    EXPECT_EQ(words, failure.what());
  }
  return words;
}

template <typename Function>
std::string wordsFor(Function function, const char* text) {
  const TypeHandle type = parseType(text);
  return wordsOf([&] { function(type.get()); });
}

constexpr char kEnum[] = "enum { A; }";

}  // namespace

TEST(WrongKinds, NameTheFunctionThatWasCalled) {
  std::int32_t shape[4];
  EXPECT_EQ(wordsFor(vrntTypeBasetype, kEnum),
            "vrntTypeBasetype: takes a base type or a struct, was given the enum { A; }");
  EXPECT_EQ(wordsFor(vrntTypeArrayDimension, "float3"),
            "vrntTypeArrayDimension: takes an array, was given the base type float3");
  EXPECT_EQ(wordsFor([&](const vrntType_t* type) { vrntTypeArrayShape(type, shape); }, "int*"),
            "vrntTypeArrayShape: takes an array, was given the reference int*");
  EXPECT_EQ(wordsFor(vrntTypeElementType, "{ int a; }"),
            "vrntTypeElementType: takes an array or a reference, was given the struct { int a; }");
  EXPECT_EQ(wordsFor(vrntTypeReferencedType, "((int) => bool)"),
            "vrntTypeReferencedType: takes an array or a reference, was given the function ((int) "
            "=> bool)");
  EXPECT_EQ(wordsFor(vrntTypeFieldCount, "int[2]"),
            "vrntTypeFieldCount: takes an enum, a struct or a function, was given the array "
            "int[2]");
  EXPECT_EQ(wordsFor(vrntTypeConstructorCount, "int[2,3]"),
            "vrntTypeConstructorCount: takes an enum, a struct or a function, was given the array "
            "int[2,3]");
  EXPECT_EQ(wordsFor([](const vrntType_t* type) { vrntTypeFieldLabel(type, 0); }, "void*"),
            "vrntTypeFieldLabel: takes an enum or a struct, was given the reference void*");
  EXPECT_EQ(
      wordsFor([](const vrntType_t* type) { vrntTypeConstructorName(type, 0); }, "int[2,3,4]"),
      "vrntTypeConstructorName: takes an enum or a struct, was given the array int[2,3,4]");
  EXPECT_EQ(wordsFor([](const vrntType_t* type) { vrntTypeFieldType(type, 0); }, kEnum),
            "vrntTypeFieldType: takes a struct or a function, was given the enum { A; }");
}

TEST(WrongKinds, OfAnAnnotationNameItsKey) {
  const TypeHandle type = parseType("float @flag @text=\"words\" @value=2.5");
  EXPECT_EQ(wordsOf([&] { vrntMetadataString(type.get(), "flag"); }),
            "vrntMetadataString: takes an annotation with a text, was given the flag @flag");
  EXPECT_EQ(wordsOf([&] { vrntMetadataString(type.get(), "value"); }),
            "vrntMetadataString: takes an annotation with a text, was given the value @value");
  EXPECT_EQ(wordsOf([&] { vrntMetadataValue(type.get(), "flag"); }),
            "vrntMetadataValue: takes an annotation with a value, was given the flag @flag");
  EXPECT_EQ(wordsOf([&] { vrntMetadataValue(type.get(), "text"); }),
            "vrntMetadataValue: takes an annotation with a value, was given the text @text");
}

TEST(WrongKinds, OfAViewNameTheFunctionToo) {
  vrntValueView_t view{};
  const std::int32_t index[4] = {};
  EXPECT_EQ(
      wordsFor([&](const vrntType_t* type) { vrntValueStructField(&view, type, 0); }, "float"),
      "vrntValueStructField: takes a struct, was given the base type float");
  EXPECT_EQ(
      wordsFor([&](const vrntType_t* type) { vrntValueArrayElement(&view, type, index); }, kEnum),
      "vrntValueArrayElement: takes an array, was given the enum { A; }");
  const ValueHandle value = parseValue("{ f = $0x0000000000000008; }");
  vrntValueStructField(&view, vrntValueType(value.get()), 0);
  EXPECT_EQ(wordsOf([&] { vrntValueDereference(value.get(), &view); }),
            "vrntValueDereference: takes a reference with a target, for a foreign address, was "
            "given the reference void*");
}

TEST(WrongKinds, QuoteTheStartOfALongTypeText) {
  const std::string name(118, 'n');
  EXPECT_EQ(wordsFor(vrntTypeArrayDimension, ("{ int " + name + "; }").c_str()),
            "vrntTypeArrayDimension: takes an array, was given the struct { int " +
                name.substr(0, 114) + "...");
  // The 120th character is the second byte of a letter.
  const std::string label = "float @name=\"" + std::string(106, 'm');
  EXPECT_EQ(wordsFor(vrntTypeArrayDimension, (label + "\xc3\xa9 and more\"").c_str()),
            "vrntTypeArrayDimension: takes an array, was given the base type " + label + "...");
}

TEST(WrongKinds, DoNotBuildTheTextOfAType) {
  std::string text = "{ ";
  for (int i = 0; i < 1000; ++i) text += "int f" + std::to_string(i) + "; ";
  EXPECT_EQ(wordsFor(vrntTypeArrayDimension, (text + "}").c_str()),
            "vrntTypeArrayDimension: takes an array, was given the struct with a long text");
  text = "enum { ";
  for (int i = 0; i < 1000; ++i) text += "C" + std::to_string(i) + "; ";
  EXPECT_EQ(wordsFor(vrntTypeBasetype, (text + "}").c_str()),
            "vrntTypeBasetype: takes a base type or a struct, was given the enum with a long text");
}

TEST(WrongKinds, KeepTheirMessageWhenTheTypeIsDestroyed) {
  std::exception_ptr kept;
  {
    const TypeHandle type = parseType("{ int ended; }");
    try {
      vrntTypeArrayDimension(type.get());
    } catch (...) {
      kept = std::current_exception();
    }
  }
  EXPECT_EQ(wordsOf([&] { std::rethrow_exception(kept); }),
            "vrntTypeArrayDimension: takes an array, was given the struct { int ended; }");
}
