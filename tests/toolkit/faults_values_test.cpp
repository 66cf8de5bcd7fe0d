// Each allocation of the functions that read, compare and convert scenes and values fails once.
#include "support/allocations.hpp"
#include "toolkit/failed_allocations.hpp"
#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

TEST(vrtkSceneDigest, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  failEachAllocation([&] {
    char hex[VRTK_DIGEST_LENGTH] = "";
    return vrtkSceneDigest(scene.get(), nullptr, hex, nullptr);
  });
}

std::vector<std::uint32_t> countsOf(const vrdmScene_t* scene) {
  std::vector<std::uint32_t> found;
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    found.push_back(vrdmCountReferences(scene, c, 0));
    found.push_back(vrdmCountReferences(scene, c, 2));
    found.push_back(scene->versions.classes[c]);
  }
  return found;
}

// The dump shows all slots, counters and contents of the scene.
TEST(vrtkSceneImport, TakesBackWhatItAddedBeforeAFailedAllocation) {
  const SceneHandle source = sceneOfAllClasses();
  vrdmAddProgram(source.get(), VRDM_CLASS_CAMERA_PROGRAM, "another program");
  std::uint64_t failures = 0;
  bool triggered = true;
  for (std::uint64_t number = 0; triggered; ++number) {
    const SceneHandle scene = sceneOfAllClasses();
    vrdmRemove(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
    const std::string before = dumpOf(*scene);
    const std::vector<std::uint32_t> countsBefore = countsOf(scene.get());
    const std::string leftText = vrdmGetProgramSource(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0);
    const vrntUniqueId_t leftId = *vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 1);
    std::uint32_t status = VRTK_OK;
    {
      const FailNthAllocation failing(number);
      status = vrtkSceneImport(scene.get(), source.get(), nullptr, nullptr);
      triggered = failing.triggered();
    }
    if (status == VRTK_OK) {
      EXPECT_EQ(vrdmContainerSize(scene.get(), VRDM_CLASS_CAMERA), 4U);
      continue;
    }
    ++failures;
    ASSERT_EQ(status, VRTK_OUT_OF_MEMORY);
    ASSERT_EQ(dumpOf(*scene), before) << number;
    ASSERT_EQ(countsOf(scene.get()), countsBefore) << number;
    ASSERT_STREQ(vrdmGetProgramSource(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, 0), leftText.c_str());
    ASSERT_EQ(*vrdmGetUniqueId(scene.get(), VRDM_CLASS_TEXTURE, 1), leftId);
    // The next addition takes the slot that it would have taken.
    ASSERT_EQ(vrdmAddProgram(scene.get(), VRDM_CLASS_CAMERA_PROGRAM, "third"), 0U);
    ASSERT_EQ(vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE), 1U);
    ASSERT_EQ(vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE), 2U);
    ASSERT_EQ(vrtkSceneImport(scene.get(), source.get(), nullptr, nullptr), VRTK_OK);
  }
  EXPECT_GT(failures, 20U);
}

TEST(vrtkSceneDiff, ReportsEachFailedAllocation) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  vrdmSetReference(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 4);
  b->data.raytracer.ray_epsilon = 0.5F;
  const ValueHandle value = parseValue("{ image = { texture_ref = 1; }; list = &[ 1, 2 ]; }");
  vrdmSetInstanceValue(b.get(), VRDM_CLASS_LIGHT, 0, value.get());
  failEachAllocation([&] {
    vrtkDiff* diff = nullptr;
    const std::uint32_t status = vrtkSceneDiff(a.get(), b.get(), nullptr, &diff, nullptr);
    EXPECT_EQ(diff != nullptr, status == VRTK_OK);
    vrtkDiffDestroy(diff);
    return status;
  });
  vrtkDiff* diff = nullptr;
  ASSERT_EQ(vrtkSceneDiff(a.get(), b.get(), nullptr, &diff, nullptr), VRTK_OK);
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkDiffJson(diff, &json, nullptr);
    vrtkStringDestroy(json);
    return status;
  });
  vrtkDiffDestroy(diff);
}

TEST(vrtkRenumberingJson, ReportsEachFailedAllocation) {
  const SceneHandle source = sceneOfAllClasses();
  const SceneHandle scene = sceneOfAllClasses();
  vrtkRenumbering* renumbering = nullptr;
  ASSERT_EQ(vrtkSceneImport(scene.get(), source.get(), &renumbering, nullptr), VRTK_OK);
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkRenumberingJson(renumbering, &json, nullptr);
    vrtkStringDestroy(json);
    return status;
  });
  vrtkRenumberingDestroy(renumbering);
}

TEST(vrtkSceneEquivalent, ReportsEachFailedAllocation) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  failEachAllocation([&] {
    bool equivalent = false;
    return vrtkSceneEquivalent(a.get(), b.get(), &equivalent, nullptr);
  });
}

TEST(vrtkSceneDump, ReportsEachFailedAllocation) {
  const SceneHandle scene = sceneOfAllClasses();
  const auto take = [](const void*, std::uint64_t, void*) -> std::uint32_t { return 0; };
  failEachAllocation([&] { return vrtkSceneDump(scene.get(), take, nullptr, nullptr); });
}

TEST(vrtkSceneDiffPatch, ReportsEachFailedAllocation) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  vrdmSetReference(b.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0, 4);
  failEachAllocation([&] {
    char* json = nullptr;
    const std::uint32_t status = vrtkSceneDiffPatch(a.get(), b.get(), nullptr, &json, nullptr);
    EXPECT_EQ(json != nullptr, status == VRTK_OK);
    vrtkStringDestroy(json);
    return status;
  });
}

// A type with all that its values are described by.
TypeHandle annotatedType() {
  return parseType(
      "{ float @max=1.0 @min=0.0 a; enum { A @name=\"First\"; B; } e; float[]* p; int[3] @max=[ 1, "
      "1, "
      "1 ] n; { half h; }[2] s; }");
}

constexpr char kTyped[] = "{ a = 2; e = B; p = &[1, 2]; n = [1, 2, 3]; s = [{ h = 1; }, { }]; }";

ValueHandle typedValue() {
  vrntValue_t* value = nullptr;
  EXPECT_EQ(vrtkValueParseAs(annotatedType().get(), kTyped, &value, nullptr), VRTK_OK);
  return ValueHandle(value);
}

TEST(vrtkTypeParse, ReportsEachFailedAllocation) {
  failEachAllocation([&] {
    vrntType_t* type = nullptr;
    const std::uint32_t status = vrtkTypeParse("{ float abcdefghij; int k; }", &type, nullptr);
    EXPECT_EQ(type != nullptr, status == VRTK_OK);
    if (type != nullptr) vrntTypeDestroy(type);
    return status;
  });
  // With an error in the text.
  failEachAllocation([&] {
    vrntType_t* type = nullptr;
    vrtkError* error = nullptr;
    const std::uint32_t status = vrtkTypeParse("{ float abcdefghij; int; }", &type, &error);
    const ToolkitError owner(error);
    EXPECT_EQ(type, nullptr);
    return status == VRTK_TEXT_INVALID ? std::uint32_t{VRTK_OK} : status;
  });
}

TEST(vrtkValueParse, ReportsEachFailedAllocation) {
  failEachAllocation([&] {
    vrntValue_t* value = nullptr;
    const std::uint32_t status = vrtkValueParse("{ a = &[ 1, 2 ]; }", &value, nullptr);
    EXPECT_EQ(value != nullptr, status == VRTK_OK);
    if (value != nullptr) vrntValueDestroy(value);
    return status;
  });
}

TEST(vrtkValueParseAs, ReportsEachFailedAllocation) {
  const TypeHandle type = annotatedType();
  for (const char* const text : {kTyped, "{ e = C; }"}) {
    failEachAllocation([&] {
      vrntValue_t* value = nullptr;
      vrtkError* error = nullptr;
      const std::uint32_t status = vrtkValueParseAs(type.get(), text, &value, &error);
      const ToolkitError owner(error);
      EXPECT_EQ(value != nullptr, status == VRTK_OK);
      if (value != nullptr) vrntValueDestroy(value);
      return status == VRTK_TEXT_INVALID ? std::uint32_t{VRTK_OK} : status;
    });
  }
}

TEST(vrtkValueBounds, ReportsEachFailedAllocation) {
  const TypeHandle type = annotatedType();
  failEachAllocation([&] {
    vrtkBounds bounds = VRTK_BOUNDS_INIT;
    const std::uint32_t status = vrtkValueBounds(type.get(), &bounds, nullptr);
    EXPECT_EQ(bounds.softMax != nullptr, status == VRTK_OK);
    EXPECT_EQ(bounds.min != nullptr, status == VRTK_OK);
    vrtkBoundsRelease(&bounds);
    return status;
  });
}

TEST(vrtkValueClamp, ReportsEachFailedAllocationAndChangesNothing) {
  const TypeHandle type = annotatedType();
  const ValueHandle shared = typedValue();
  failEachAllocation([&] {
    vrntValue_t* value = vrntValueCopy(shared.get());
    std::uint64_t changed = 99;
    const std::uint32_t status = vrtkValueClamp(type.get(), &value, &changed, nullptr);
    EXPECT_EQ(changed, status == VRTK_OK ? 3U : 99U);
    EXPECT_EQ(value == shared.get(), status != VRTK_OK);
    vrntValueDestroy(value);
    return status;
  });
}

TEST(vrtkValueCheck, ReportsEachFailedAllocation) {
  const TypeHandle type = annotatedType();
  const ValueHandle value = typedValue();
  failEachAllocation([&] {
    vrtkOutsideList* list = nullptr;
    const std::uint32_t status = vrtkValueCheck(type.get(), value.get(), &list, nullptr);
    EXPECT_EQ(list != nullptr, status == VRTK_OK);
    vrtkOutsideListDestroy(list);
    return status;
  });
}

TEST(vrtkValueCoerce, ReportsEachFailedAllocation) {
  const TypeHandle type = parseType("{ float a; int[2] n; }");
  const ValueHandle value = typedValue();
  failEachAllocation([&] {
    vrntValue_t* result = nullptr;
    const std::uint32_t status = vrtkValueCoerce(type.get(), value.get(), 0, &result, nullptr);
    EXPECT_EQ(result != nullptr, status == VRTK_OK);
    if (result != nullptr) vrntValueDestroy(result);
    return status;
  });
}

TEST(vrtkEnumChoicesOf, ReportsEachFailedAllocation) {
  const TypeHandle type = parseType("enum { FIRST @name=\"A long enough name to allocate\"; B; }");
  failEachAllocation([&] {
    vrtkEnumChoices* choices = nullptr;
    const std::uint32_t status = vrtkEnumChoicesOf(type.get(), &choices, nullptr);
    EXPECT_EQ(choices != nullptr, status == VRTK_OK);
    vrtkEnumChoicesDestroy(choices);
    return status;
  });
}

TEST(vrtkTypeDescribe, ReportsEachFailedAllocation) {
  const TypeHandle type = annotatedType();
  for (const std::uint32_t form : {VRTK_DESCRIPTION_TEXT, VRTK_DESCRIPTION_JSON}) {
    failEachAllocation([&] {
      char* text = nullptr;
      const std::uint32_t status = vrtkTypeDescribe(type.get(), form, &text, nullptr);
      EXPECT_EQ(text != nullptr, status == VRTK_OK);
      vrtkStringDestroy(text);
      return status;
    });
  }
}

TEST(vrtkValueDescribe, ReportsEachFailedAllocation) {
  const TypeHandle type = annotatedType();
  const ValueHandle value = typedValue();
  for (const std::uint32_t form : {VRTK_DESCRIPTION_TEXT, VRTK_DESCRIPTION_JSON}) {
    failEachAllocation([&] {
      char* text = nullptr;
      const std::uint32_t status = vrtkValueDescribe(value.get(), type.get(), form, &text, nullptr);
      EXPECT_EQ(text != nullptr, status == VRTK_OK);
      vrtkStringDestroy(text);
      return status;
    });
  }
}

}  // namespace
}  // namespace vornath_test
