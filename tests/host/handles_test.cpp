#include "vornath_data/handles.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "support/allocations.hpp"
#include "vornath_data/vrdm.h"

namespace {

using namespace vrnt;

// How many allocations are live after `use` that were not before. The first run makes what the
// library keeps.
template <typename Use>
std::int64_t leftBehind(Use use) {
  use();
  const std::int64_t before = vornath_test::liveAllocations();
  use();
  return vornath_test::liveAllocations() - before;
}

UniqueValue parseValue(const char* text) {
  vrntValuesError_t* error = nullptr;
  return UniqueValue(vrntValueParse(text, &error));
}

template <typename Handle>
constexpr bool kIsThin = sizeof(Handle) == sizeof(void*) && !std::is_copy_constructible_v<Handle>;

}  // namespace

TEST(Handles, AreOneNonCopyablePointerEach) {
  EXPECT_TRUE(kIsThin<UniqueType>);
  EXPECT_TRUE(kIsThin<UniqueValue>);
  EXPECT_TRUE(kIsThin<UniqueError>);
  EXPECT_TRUE(kIsThin<UniqueString>);
  EXPECT_TRUE(kIsThin<UniqueScene>);
  EXPECT_TRUE(kIsThin<UniqueAsset>);
}

TEST(Handles, MayBeEmpty) {
  EXPECT_EQ(leftBehind([] {
              UniqueType().reset();
              UniqueValue().reset();
              UniqueError().reset();
              UniqueString().reset();
              UniqueScene().reset();
              UniqueAsset().reset();
            }),
            0);
}

TEST(UniqueType, ReleasesItsReference) {
  // A type of its own in each run: one that the first run left alive would be found again.
  std::string text = "{ float field; }";
  EXPECT_EQ(leftBehind([&text] {
              text.insert(text.find(';'), "_");
              vrntValuesError_t* error = nullptr;
              const UniqueType type(vrntTypeParse(text.c_str(), &error));
              const UniqueType copy(vrntTypeCopy(type.get()));
              EXPECT_EQ(vrntTypeString(copy.get()), text);
            }),
            0);
}

TEST(UniqueValue, ReleasesItsReference) {
  EXPECT_EQ(leftBehind([] {
              const UniqueValue value = parseValue("{ a = 1; }");
              {
                const UniqueValue copy(vrntValueCopy(value.get()));
                EXPECT_EQ(value->refCount, 2U);
              }
              EXPECT_EQ(value->refCount, 1U);
            }),
            0);
}

TEST(UniqueValue, TakesTheHandleThatAWriteReplaces) {
  EXPECT_EQ(leftBehind([] {
              const UniqueValue shared = parseValue("{ a = 1; }");
              UniqueValue written(vrntValueCopy(shared.get()));
              vrntValuesError_t* error = nullptr;
              vrntValue_t* handle = written.release();
              const std::int32_t two = 2;
              vrntValueWrite(&handle, 0, &two, sizeof(two), &error);
              written.reset(handle);
              EXPECT_NE(written, shared);
              EXPECT_EQ(shared->refCount, 1U);
            }),
            0);
}

TEST(UniqueError, DestroysItsErrorObject) {
  EXPECT_EQ(leftBehind([] {
              vrntValuesError_t* error = nullptr;
              const UniqueType type(vrntTypeParse("{ int a; int a; }", &error));
              const UniqueError owner(error);
              EXPECT_EQ(type, nullptr);
              EXPECT_NE(owner, nullptr);
            }),
            0);
}

TEST(UniqueString, DestroysItsString) {
  EXPECT_EQ(leftBehind([] {
              const UniqueValue value = parseValue("[ 1, 2, 3 ]");
              const vrntValueView_t whole{vrntValueType(value.get()), 0};
              vrntValuesError_t* error = nullptr;
              const UniqueString text(vrntValueString(value.get(), &whole, 0, &error));
              EXPECT_STREQ(text.get(), "[ 1, 2, 3 ]");
            }),
            0);
}

TEST(UniqueScene, DestroysItsSceneWithTheAssets) {
  EXPECT_EQ(leftBehind([] {
              const UniqueAsset asset(vrdmAssetStorageCopy("bytes", 5));
              {
                const UniqueScene scene(vrdmCreateScene());
                const vrdmMaterialGraphDesc desc{5, 0, 0};
                AssetStorage* const storage = asset.get();
                vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
                EXPECT_EQ(asset->references, 2U);
              }
              EXPECT_EQ(asset->references, 1U);
            }),
            0);
}
