// What the check looks at in the values of a type.
#include "check/type_plan.hpp"

#include <set>

#include "check/file_layout.hpp"
#include "check/type_cache.hpp"
#include "foundation/half.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

using vrtk::TypePlan;

TypePlan planOf(const TypeHandle& type) { return TypePlan(type.get(), TypePlan::Numbers::Bare); }

std::string pathOf(const std::string& text, std::uint64_t offset) {
  const TypeHandle type = parseType(text);
  std::string path;
  vrtk::appendPath(path, type.get(), offset);
  return path;
}

std::vector<std::uint64_t> referencesOf(const std::string& text) {
  const TypeHandle type = parseType(text);
  const TypePlan plan = planOf(type);
  std::vector<std::uint64_t> offsets;
  for (std::uint64_t i = 0; i < plan.references(); ++i) {
    offsets.push_back(plan.reference(i).offset);
  }
  return offsets;
}

TEST(TypePlan, FindsAllReferencesInOrder) {
  using Offsets = std::vector<std::uint64_t>;
  EXPECT_EQ(referencesOf("int"), Offsets{});
  EXPECT_EQ(referencesOf("int*"), Offsets{0});
  EXPECT_EQ(referencesOf("{ int a; void* b; float c; int** d; }"), (Offsets{8, 24}));
  EXPECT_EQ(referencesOf("void*[3]"), (Offsets{0, 8, 16}));
  EXPECT_EQ(referencesOf("((int) => int)"), (Offsets{0, 8}));
  EXPECT_EQ(referencesOf("{ int x; { int y; void*[2] r; }[2] a; int z; void* e; }"),
            (Offsets{16, 24, 40, 48, 64}));
  EXPECT_EQ(referencesOf("{ void* a; { int y; void* b; }[2,2] c; ((int) => int)[2] f; }"),
            (Offsets{0, 16, 32, 48, 64, 72, 80, 88, 96}));
  EXPECT_EQ(referencesOf("{ void*[0] a; void* b; }"), Offsets{0});
}

TEST(TypePlan, FindsTheReferencesThatTheLibraryCounts) {
  // The library serializes a block for each of them.
  const TypeHandle type = parseType("{ int n; { void*[3] a; bool b; }[2][3] s; }");
  const TypePlan plan = planOf(type);
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  const TypeHandle any = parseType("void*");
  const ValueHandle target = parseValue("7");
  std::set<std::uint64_t> offsets;
  for (std::uint64_t i = 0; i < plan.references(); ++i) {
    const std::uint64_t offset = plan.reference(i).offset;
    EXPECT_TRUE(offsets.insert(offset).second);
    const vrntValueView_t view{any.get(), offset};
    vrntValueSetReference(&value, &view, target.get(), &error);
  }
  EXPECT_EQ(plan.references(), 18U);
  EXPECT_EQ(target->refCount, 19U);
  vrntValueDestroy(value);
  EXPECT_EQ(target->refCount, 1U);
}

TEST(TypePlan, CountsThePartsOfAText) {
  const auto parts = [](const std::string& text) { return planOf(parseType(text)).parts(); };
  EXPECT_EQ(parts("int"), 1);
  EXPECT_EQ(parts("{ int a; float b; }"), 3);
  EXPECT_EQ(parts("int[10]"), 11);
  EXPECT_EQ(parts("{ int a; float b; }[10]"), 31);
  EXPECT_EQ(parts("int[0]"), 1);
  EXPECT_EQ(parts("int[0][1000]"), 1001);
  EXPECT_EQ(parts("int[0][10][1000]"), 10001);
  EXPECT_EQ(parts("int[65536,65536]"), 1) << "the library lays out no element of it";
}

TEST(TypePlan, LooksAtNeighbouringNumbersAtOnce) {
  const auto operations = [](const std::string& text) {
    return planOf(parseType(text)).operations().size();
  };
  EXPECT_EQ(operations("int[1000]"), 0U);
  EXPECT_EQ(operations("float[1000]"), 1U);
  EXPECT_EQ(operations("{ float a; float b; float[6] c; }"), 2U);
  EXPECT_EQ(operations("{ int a; float b; }[1000]"), 1U);
  EXPECT_EQ(operations("{ bool a; float b; }[1000]"), 3U);
}

TEST(appendPath, NamesEachPlaceAsAnAddressDoes) {
  EXPECT_EQ(pathOf("int", 0), "");
  EXPECT_EQ(pathOf("float4", 8), "/2");
  EXPECT_EQ(pathOf("{ int a; { float2 b; } c; }", 12), "/c/b/1");
  EXPECT_EQ(pathOf("int[5]", 12), "/3");
  EXPECT_EQ(pathOf("float3[5]", 36), "/2/1");
  EXPECT_EQ(pathOf("int[3,2]", 16), "/1/1");
  EXPECT_EQ(pathOf("int[3][2]", 16), "/1/1");
  EXPECT_EQ(pathOf("{ int[0] nothing; int a; }", 0), "/a");
  EXPECT_EQ(pathOf("{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }", 8),
            "/spectrum");
}

TEST(halfToFloat, AgreesWithTheLibraryForAllBits) {
  const TypeHandle type = parseType("half");
  vrntValuesError_t* error = nullptr;
  for (std::uint32_t bits = 0; bits < 0x10000; bits += 7) {
    vrntValue_t* value = vrntValueCreate(type.get(), &error);
    const auto half = static_cast<std::uint16_t>(bits);
    vrntValueWrite(&value, 0, &half, sizeof(half), &error);
    const vrntValueView_t view{type.get(), 0};
    const StringHandle text(vrntValueString(value, &view, 0, &error));
    vrntValueDestroy(value);
    const float number = vrtk::halfToFloat(half);
    if (number != number) {
      EXPECT_STREQ(text.get(), "NaNh");
    } else {
      EXPECT_EQ(std::strtof(text.get(), nullptr), number) << text.get();
    }
  }
}

TEST(GroupsLayout, HasTheSizesOfTheLibrarysRecords) {
  vrnt::data::forEachClass([](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      const vrtk::GroupsLayout layout(
          static_cast<std::uint32_t>(vrnt::data::ClassInfo<Desc>::kClass));
      EXPECT_EQ(layout.size, sizeof(Desc::groups)) << vrnt::data::ClassInfo<Desc>::kName;
    }
  });
  EXPECT_EQ(vrtk::GroupsLayout(VRDM_CLASS_SCENE_DATA).size, sizeof(vrnt::data::SceneData));
}

TEST(ClassLayout, HasASizeAndARuleForEachClass) {
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    const vrtk::ClassLayout layout(i);
    EXPECT_GT(layout.slotMemory, 0U);
    EXPECT_EQ(layout.asset != nullptr, layout.kind == VRDM_KIND_ASSET) << layout.name;
    EXPECT_EQ(layout.singles.size() + layout.lists.size(), vrdmReferenceCount(i));
  }
}

TEST(TypeCache, ForgetsTypesWhenThereAreManyAndFindsThemAgain) {
  vrtk::TypeCache cache;
  vrtk::TypeFault fault{};
  const auto first = cache.find("{ int first; }", fault);
  ASSERT_NE(first.type, nullptr);
  EXPECT_GT(first.added, 0U);
  EXPECT_EQ(cache.find("{ int first; }", fault).added, 0U);
  for (int i = 0; i < 5000; ++i) {
    ASSERT_NE(cache.find("{ int a" + std::to_string(i) + "; }", fault).type, nullptr);
  }
  EXPECT_EQ(cache.find(first.number), nullptr);
  EXPECT_GT(cache.find("{ int first; }", fault).added, 0U);
}

}  // namespace
}  // namespace vornath_test
