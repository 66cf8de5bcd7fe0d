// Imports, comparisons and print-outs of scenes.
#include <algorithm>

#include "toolkit/support.hpp"

namespace vornath_test {
namespace {

struct RenumberingDeleter {
  void operator()(vrtkRenumbering* renumbering) const { vrtkRenumberingDestroy(renumbering); }
};
using Renumbering = std::unique_ptr<vrtkRenumbering, RenumberingDeleter>;

Renumbering import(vrdmScene_t* scene, const vrdmScene_t* source) {
  vrtkRenumbering* renumbering = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status = vrtkSceneImport(scene, source, &renumbering, &error);
  const ToolkitError owner(error);
  EXPECT_EQ(status, VRTK_OK) << (error != nullptr ? vrtkErrorMessage(error) : "");
  return Renumbering(renumbering);
}

std::vector<std::int32_t> slotsOf(const Renumbering& renumbering, std::uint32_t objectClass) {
  std::uint64_t count = 99;
  const std::int32_t* const slots = vrtkRenumberingSlots(renumbering.get(), objectClass, &count);
  return slots != nullptr ? std::vector<std::int32_t>(slots, slots + count)
                          : std::vector<std::int32_t>();
}

std::uint32_t append(const void* bytes, std::uint64_t size, void* context) {
  static_cast<std::string*>(context)->append(static_cast<const char*>(bytes), size);
  return 0;
}

std::string dump(const vrdmScene_t* scene) {
  std::string text;
  EXPECT_EQ(vrtkSceneDump(scene, append, &text, nullptr), VRTK_OK);
  return text;
}

TEST(vrtkSceneImport, DoesWhatTheLibraryDoes) {
  const SceneHandle source = sceneOfAllClasses();
  const SceneHandle scene = sceneOfAllClasses();
  const SceneHandle expected(vrdmDeserialize([&] {
    static const TemporaryFolder folder;
    static const std::string path = folder.file("scene");
    vrdmSerialize(scene.get(), path.c_str());
    return path.c_str();
  }()));
  import(scene.get(), source.get());
  expected->import(*source);
  EXPECT_TRUE(vrnt::data::Scene::equivalent(*scene, *expected));
}

TEST(vrtkSceneImport, RenumbersEachClass) {
  const SceneHandle source = sceneOfAllClasses();  // slot 1 of each class is free
  const SceneHandle scene = sceneOfAllClasses();
  const Renumbering renumbering = import(scene.get(), source.get());
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    const std::vector<std::int32_t> slots = slotsOf(renumbering, c);
    ASSERT_EQ(slots.size(), 2U);
    // The text of the program is in the scene; an asset takes the free slot; an instance is added
    // behind the two slots.
    const std::int32_t expected = vrdmObjectClass(c) == VRDM_KIND_PROGRAM ? 0
                                  : vrdmObjectClass(c) == VRDM_KIND_ASSET ? 1
                                                                          : 2;
    EXPECT_EQ(slots[0], expected) << vrdmObjectName(c);
    EXPECT_EQ(slots[1], -1);
  }
  std::uint64_t count = 7;
  EXPECT_EQ(vrtkRenumberingSlots(renumbering.get(), kClasses, &count), nullptr);
  EXPECT_EQ(count, 0U);
}

TEST(vrtkSceneImport, TakesTheSceneItselfAndNoRenumbering) {
  const SceneHandle scene = sceneOfAllClasses();
  EXPECT_EQ(vrtkSceneImport(scene.get(), scene.get(), nullptr, nullptr), VRTK_OK);
  EXPECT_EQ(vrdmContainerSize(scene.get(), VRDM_CLASS_CAMERA), 4U);
}

TEST(vrtkSceneImport, TellsWhichObjectHasNoValueAndChangesNothing) {
  const SceneHandle source(vrdmCreateScene());
  vrdmCreateInstance(source.get(), VRDM_CLASS_LIGHT);
  const SceneHandle scene = sceneOfAllClasses();
  const std::string before = dumpOf(*scene);
  vrtkRenumbering* renumbering = nullptr;
  vrtkError* error = nullptr;
  EXPECT_EQ(vrtkSceneImport(scene.get(), source.get(), &renumbering, &error),
            VRTK_SCENE_INCOMPLETE);
  const ToolkitError owner(error);
  EXPECT_NE(std::string_view(vrtkErrorMessage(error)).find("Light/0"), std::string_view::npos);
  EXPECT_EQ(renumbering, nullptr);
  EXPECT_EQ(dumpOf(*scene), before);
}

TEST(vrtkRenumberingJson, HasAnArrayForEachClassWithSlots) {
  const SceneHandle source(vrdmCreateScene());
  const SceneHandle scene(vrdmCreateScene());
  for (int i = 0; i < 3; ++i) vrdmCreateInstance(source.get(), VRDM_CLASS_DECAL);
  vrdmRemove(source.get(), VRDM_CLASS_DECAL, 1);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_DECAL);
  vrdmAddProgram(source.get(), VRDM_CLASS_LIGHT_PROGRAM, "light()");
  const Renumbering renumbering = import(scene.get(), source.get());
  char* json = nullptr;
  ASSERT_EQ(vrtkRenumberingJson(renumbering.get(), &json, nullptr), VRTK_OK);
  EXPECT_STREQ(json, "{\n  \"LightProgram\": [0],\n  \"Decal\": [1, null, 2]\n}\n");
  vrtkStringDestroy(json);
  const SceneHandle empty(vrdmCreateScene());
  ASSERT_EQ(vrtkRenumberingJson(import(scene.get(), empty.get()).get(), &json, nullptr), VRTK_OK);
  EXPECT_STREQ(json, "{}\n");
  vrtkStringDestroy(json);
}

TEST(vrtkSceneEquivalent, SaysWhetherTheContentIsTheSame) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  bool equivalent = false;
  EXPECT_EQ(vrtkSceneEquivalent(a.get(), b.get(), &equivalent, nullptr), VRTK_OK);
  EXPECT_TRUE(equivalent);
  vrdmSetReference(b.get(), VRDM_CLASS_SHAPE, 0, 0, 5);
  EXPECT_EQ(vrtkSceneEquivalent(a.get(), b.get(), &equivalent, nullptr), VRTK_OK);
  EXPECT_FALSE(equivalent);
}

TEST(vrtkSceneEquivalent, ReportsWhatCannotBeCompared) {
  const SceneHandle a = sceneOfAllClasses();
  const SceneHandle b = sceneOfAllClasses();
  bool equivalent = true;
  const ValueHandle unnamed = parseValue("{ e = A : enum { A; }; }");
  const std::int32_t code = 7;
  std::memcpy(vrntValueData(unnamed.get()), &code, sizeof(code));
  vrdmSetInstanceValue(a.get(), VRDM_CLASS_LIGHT, 0, unnamed.get());
  EXPECT_EQ(vrtkSceneEquivalent(a.get(), b.get(), &equivalent, nullptr), VRTK_LIBRARY_ERROR);
  // The free slot keeps its former value.
  vrdmCreateInstance(a.get(), VRDM_CLASS_CAMERA);
  vrdmCreateInstance(a.get(), VRDM_CLASS_CAMERA);
  EXPECT_EQ(vrtkSceneEquivalent(b.get(), a.get(), &equivalent, nullptr), VRTK_SCENE_INCOMPLETE);
  EXPECT_EQ(vrtkSceneEquivalent(nullptr, a.get(), &equivalent, nullptr), VRTK_INVALID_ARGUMENT);
  EXPECT_TRUE(equivalent);
}

TEST(vrtkSceneDump, PrintsWhatTheStreamOperatorPrints) {
  const SceneHandle scene = sceneOfAllClasses();
  // More than a piece.
  for (int i = 0; i < 100; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  EXPECT_EQ(dump(scene.get()), dumpOf(*scene));
  EXPECT_GT(dump(scene.get()).size(), 100000U);
}

TEST(vrtkSceneDump, StopsWhereTheFunctionAsks) {
  const SceneHandle scene = sceneOfAllClasses();
  for (int i = 0; i < 100; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  int calls = 0;
  const auto stop = [](const void*, std::uint64_t, void* context) -> std::uint32_t {
    return ++*static_cast<int*>(context) == 2 ? 1 : 0;
  };
  EXPECT_EQ(vrtkSceneDump(scene.get(), stop, &calls, nullptr), VRTK_WRITE_STOPPED);
  EXPECT_EQ(calls, 2);
}

TEST(vrtkSceneDump, RefusesASceneWithoutAValue) {
  const SceneHandle scene(vrdmCreateScene());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  std::string text;
  EXPECT_EQ(vrtkSceneDump(scene.get(), append, &text, nullptr), VRTK_SCENE_INCOMPLETE);
  EXPECT_EQ(vrtkSceneDump(scene.get(), nullptr, &text, nullptr), VRTK_INVALID_ARGUMENT);
}

}  // namespace
}  // namespace vornath_test
