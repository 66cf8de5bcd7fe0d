// The rewriting of types on what would be hard for a plain recursion.
#include "colour/universal_spectrum.hpp"

#include <gtest/gtest.h>

#include "support/small_stack.hpp"
#include "types/fixed_struct_types.hpp"
#include "types/type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::compactSpectrumType;
using qex::vornath::spectrumType;
using qex::vornath::toUniversalSpectrum;

// Structs and arrays in turn, this many of them around the core.
TypePtr nested(const InternedType& core, int depth) {
  TypePtr type(&core);
  for (int i = 0; i < depth; ++i) {
    type = i % 2 == 0 ? makeArray(type, 1) : makeStruct({{type, "a"}});
  }
  return type;
}

}  // namespace

TEST(CompactSpectrum, IsAStructOfThreeChannels) {
  EXPECT_EQ(compactSpectrumType().text(), "{ float3 spectrum; }");
  EXPECT_EQ(&compactSpectrumType(), parsed("{ float3 spectrum; }").get());
}

TEST(UniversalSpectrum, IsReachedAtAnyDepth) {
  constexpr int kDepth = 4000;
  const TypePtr compact = nested(compactSpectrumType(), kDepth);
  const TypePtr universal = nested(spectrumType(), kDepth);
  const TypePtr other = nested(*make(Base::Float3), kDepth);
  TypePtr fromCompact;
  TypePtr fromOther;
  runOnStack(256 * 1024, [&] {
    fromCompact = toUniversalSpectrum(*compact);
    fromOther = toUniversalSpectrum(*other);
  });
  EXPECT_EQ(fromCompact, universal);
  EXPECT_EQ(fromOther, other);
}

TEST(UniversalSpectrum, RewritesASharedPartOnce) {
  // A value among the metadata: each rewriting of the part would make another type.
  Metadata metadata = parsed("float @default=1.0")->metadata();
  const TypePtr part = makeStruct({{TypePtr(&compactSpectrumType()), "color"}}, metadata);
  const TypePtr pair = makeStruct({{part, "left"}, {part, "right"}, {makeArray(part, 3), "list"}});
  const TypePtr type = makeStruct({{pair, "x"}, {part, "y"}, {pair, "z"}});
  const TypePtr result = toUniversalSpectrum(*type);
  const auto field = [](const TypePtr& structure, std::size_t index) {
    return std::get<Struct>(structure->desc()).fields[index].type;
  };
  const TypePtr newPart = field(result, 1);
  EXPECT_EQ(newPart->text(), "{ " + spectrumType().text() + " color; } @default=1.0");
  EXPECT_EQ(field(field(result, 0), 0), newPart);
  EXPECT_EQ(field(field(result, 0), 1), newPart);
  EXPECT_EQ(std::get<Array<int>>(field(field(result, 0), 2)->desc()).element, newPart);
  EXPECT_EQ(field(result, 2), field(result, 0));
}

TEST(UniversalSpectrum, LeavesNothingBehind) {
  spectrumType();
  compactSpectrumType();
  const std::size_t before = factory().liveTypes();
  for (int i = 0; i < 3; ++i) {
    const TypePtr type = parsed("{ { float3 spectrum; } @a=1.0 c; float @default=0.5 x; }[2]");
    toUniversalSpectrum(*type);
  }
  EXPECT_EQ(factory().liveTypes(), before);
}
