// The text of its type stands in each block that a host can see: in those that it was given, and in
// those that it finds behind their words. Short texts are there from the start; these are long
// ones.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/flat_handles.hpp"
#include "support/value_stream.hpp"

namespace {

using namespace vornath_test;

const std::string kLabel(5000, 'x');

// A reference to a reference, and so on, to a struct whose type has a long text.
std::string chain(int references, const std::string& innermost = "{ " + kLabel + " = 1; }") {
  return std::string(static_cast<std::size_t>(references), '&') + innermost;
}

std::string chainType(int references) {
  return "{ int " + kLabel + "; }" + std::string(static_cast<std::size_t>(references), '*');
}

void expectShown(const vrntValue_t* block, const std::string& text) {
  ASSERT_NE(block->typeText, nullptr);
  EXPECT_TRUE(block->typeText == text) << std::string(block->typeText).substr(0, 60);
}

// All blocks of a chain, the outermost one first.
void expectChainShown(const vrntValue_t* block, int references) {
  for (int left = references; left >= 0; --left) {
    expectShown(block, chainType(left));
    if (left > 0) block = referencedBlock(block);
  }
}

TEST(ShownTypeTexts, StandInAllBlocksOfAChain) {
  for (const int references : {0, 1, 2, 3, 10, 64}) {
    SCOPED_TRACE(references);
    expectChainShown(parseValue(chain(references)).get(), references);
  }
}

TEST(ShownTypeTexts, StandInAllBlocksOfAValueThatWasRead) {
  const ValueHandle value = parseValue(chain(3));
  Stream stream;
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(value.get(), Stream::write, &stream, &error);
  const ValueHandle read(vrntValueDeserialize(Stream::read, &stream, &error));
  ASSERT_NE(read, nullptr);
  expectChainShown(read.get(), 3);
}

TEST(ShownTypeTexts, StandInWhatIsMadeOfAnotherValue) {
  const ValueHandle value = parseValue("{ a = " + chain(2) + "; b = 1; }");
  const std::string type = "{ " + chainType(2) + " a; int b; }";
  expectShown(value.get(), type);
  vrntValuesError_t* error = nullptr;

  vrntValueView_t view{};
  vrntValueStructField(&view, vrntValueType(value.get()), 0);
  const ValueHandle part(vrntValueFromView(value.get(), &view, &error));
  expectChainShown(part.get(), 2);

  const TypeHandle wider = parseType("{ int @default=2 c; " + chainType(2) + " a; }");
  const ValueHandle coerced(vrntCoerce(wider.get(), value.get(), &error));
  expectShown(coerced.get(), "{ int c; " + chainType(2) + " a; }");
  expectChainShown(referencedBlock(coerced.get(), 8), 1);

  const TypeHandle open = parseType("{ void* a; }");
  const ValueHandle opened(vrntCoerce(open.get(), value.get(), &error));
  expectShown(opened.get(), "{ void* a; }");
  expectChainShown(referencedBlock(opened.get()), 1);

  const TypeHandle marked = parseType("{ " + chainType(2) + " a; int @no_specialize b; }");
  const ValueHandle special(vrntBuildSpecializationParameters(marked.get(), value.get(), &error));
  expectShown(special.get(), "{ " + chainType(2) + " a; }");
  expectChainShown(referencedBlock(special.get()), 1);
}

TEST(ShownTypeTexts, StandInDefaultsAndInValuesOfMetadata) {
  const TypeHandle type = parseType(chainType(2) + " @default=" + chain(2));
  vrntValuesError_t* error = nullptr;
  const ValueHandle value(vrntValueCreateDefault(type.get(), &error));
  expectChainShown(value.get(), 2);
  const ValueHandle entry(vrntMetadataValue(type.get(), "default"));
  expectChainShown(entry.get(), 2);
}

TEST(ShownTypeTexts, StandInACopyThatAMapMoves) {
  const ValueHandle value = parseValue(chain(3));
  vrntValue_t* inner = vrntValueCopy(referencedBlock(value.get()));
  const vrntValueView_t view{vrntValueType(inner), 0};
  vrntValuesError_t* error = nullptr;
  ASSERT_NE(vrntValueMap(&inner, &view, &error), nullptr);
  EXPECT_NE(inner, referencedBlock(value.get()));
  expectChainShown(inner, 2);
  vrntValueUnmap(inner, &view);
  vrntValueDestroy(inner);
}

// More references than are shown at once: a host sees the text in what it was given, and in what it
// finds behind the words of that.

constexpr int kMany = 200;

TEST(ShownTypeTexts, OfALongChainStandInTheBlockThatIsGivenAndBehindItsWords) {
  const ValueHandle value = parseValue(chain(kMany));
  expectShown(value.get(), chainType(kMany));
  expectShown(referencedBlock(value.get()), chainType(kMany - 1));
  // The innermost ones are no long chain.
  const vrntValue_t* block = value.get();
  for (int left = kMany; left > 64; --left) block = referencedBlock(block);
  expectChainShown(block, 64);
}

TEST(ShownTypeTexts, OfALongChainStandWhereverADereferenceLeads) {
  ValueHandle value = parseValue(chain(kMany));
  for (int left = kMany; left > 0; --left) {
    expectShown(value.get(), chainType(left));
    expectShown(referencedBlock(value.get()), chainType(left - 1));
    const vrntValueView_t view{vrntValueType(value.get()), 0};
    value.reset(vrntValueDereference(value.get(), &view));
  }
  expectShown(value.get(), chainType(0));
}

TEST(ShownTypeTexts, StandBehindAWordOfAnyType) {
  const ValueHandle value = parseValue("[ " + chain(kMany) + ", " + chain(2) + " : void* ]");
  expectShown(value.get(), "void*[2]");
  expectShown(referencedBlock(value.get()), chainType(kMany - 1));
  expectChainShown(referencedBlock(value.get(), 8), 1);
  // Nobody was given the inner value, but the outer one leads there.
  const ValueHandle twice = parseValue("&[ " + chain(kMany) + " : void* ]");
  expectShown(referencedBlock(referencedBlock(twice.get())), chainType(kMany - 1));
}

TEST(ShownTypeTexts, StandInAnyBlockThatAFunctionIsGiven) {
  const auto inner = [](const ValueHandle& value) {
    vrntValue_t* block = referencedBlock(referencedBlock(referencedBlock(value.get())));
    EXPECT_EQ(block->typeText, nullptr);  // three words away from what was given
    return block;
  };
  vrntValuesError_t* error = nullptr;
  {
    const ValueHandle value = parseValue(chain(kMany));
    const ValueHandle shared(vrntValueParse(inner(value), &error));
    expectShown(shared.get(), chainType(kMany - 3));
    expectShown(referencedBlock(shared.get()), chainType(kMany - 4));
  }
  {
    const ValueHandle value = parseValue(chain(kMany));
    const ValueHandle copy(vrntValueCopy(inner(value)));
    expectShown(copy.get(), chainType(kMany - 3));
    expectShown(referencedBlock(copy.get()), chainType(kMany - 4));
  }
  {
    const ValueHandle value = parseValue(chain(kMany));
    const vrntValue_t* const block = vrntValueBinary(inner(value));
    expectShown(block, chainType(kMany - 3));
    expectShown(referencedBlock(block), chainType(kMany - 4));
  }
  {
    const ValueHandle value = parseValue(chain(kMany));
    vrntValue_t* moved =
        vrntValueCopy(referencedBlock(value.get()));  // shared, so that a map copies it
    const vrntValueView_t view{vrntValueType(moved), 0};
    ASSERT_NE(vrntValueMap(&moved, &view, &error), nullptr);
    vrntValueUnmap(moved, &view);
    expectShown(moved, chainType(kMany - 1));
    expectShown(referencedBlock(moved), chainType(kMany - 2));
    vrntValueDestroy(moved);
  }
  {
    // As the word of another value.
    const ValueHandle value = parseValue(chain(kMany));
    ValueHandle any = parseValue("$0x0000000000000000");
    const vrntValueView_t view{vrntValueType(any.get()), 0};
    vrntValue_t* handle = any.release();
    auto* const word = static_cast<char*>(vrntValueMap(&handle, &view, &error));
    const auto address = reinterpret_cast<std::uintptr_t>(inner(value)) + sizeof(vrntValue_t);
    std::memcpy(word, &address, sizeof address);
    vrntValueUnmap(handle, &view);
    any.reset(handle);
    expectShown(referencedBlock(any.get()), chainType(kMany - 3));
  }
}

}  // namespace
