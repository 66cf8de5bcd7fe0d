// Scenes with a value that is nested deeply, and with one that begins a long chain of references:
// printed, written, read, compared, imported and ended on the stack of a host's worker thread.
#include "scene/scenes.hpp"

#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>

#include "nests.hpp"

namespace {

using namespace vornath_test;
using vrnt::data::Scene;

ValueHandle zerosOf(const std::string& typeText) {
  const TypeHandle type = parseType(typeText);
  vrntValuesError_t* error = nullptr;
  return ValueHandle(vrntValueCreate(type.get(), &error));
}

// The field or word at the offset is where each value refers to the next. The last has the number.
ValueHandle chain(const char* typeText, std::uint64_t offset, std::int32_t number) {
  const TypeHandle type = parseType(typeText);
  const TypeHandle reference = parseType("void*");
  const vrntValueView_t view{reference.get(), offset};
  ValueHandle chain = parseValue(std::to_string(number));
  vrntValuesError_t* error = nullptr;
  for (int i = 0; i < kLinks; ++i) {
    vrntValue_t* link = vrntValueCreate(type.get(), &error);
    vrntValueSetReference(&link, &view, chain.get(), &error);
    chain.reset(link);
  }
  EXPECT_EQ(error, nullptr);
  return chain;
}

// Makes a value of any depth with a number in the innermost part.
struct Deep {
  const char* name;
  std::function<ValueHandle(std::int32_t)> make;
};

ValueHandle nest(const std::string& before, const std::string& behind, std::int32_t number) {
  return parseValue(nested(before, std::to_string(number), behind, kDepth));
}

const Deep kStructValues{"structs",
                         [](std::int32_t number) { return nest("{ a = ", "; }", number); }};
const Deep kGridValues{"grids",
                       [](std::int32_t number) { return nest("[ ", " | 1, 1 ]", number); }};
const Deep kReferenceValues{"structs with references", [](std::int32_t number) {
                              return nest("{ b = &1; a = ", "; c = &[ 2 ]; }", number);
                            }};
const Deep kBareChain{"chain", [](std::int32_t number) { return chain("void*", 0, number); }};
const Deep kChainWithMore{"chain of structs with more behind", [](std::int32_t number) {
                            return chain("{ void* next; int n; }", 0, number);
                          }};

void PrintTo(const Deep& deep, std::ostream* stream) { *stream << deep.name; }

class DeepScene : public testing::TestWithParam<Deep> {
 protected:
  void SetUp() override {
    runOnMainStack([this] {
      value_ = GetParam().make(5);
      scene_ = sceneWith(value_);
    });
    ASSERT_NE(scene_, nullptr);
  }
  void TearDown() override {
    runOnWorkerStack([this] {
      value_.reset();
      scene_.reset();
    });
  }

  static SceneHandle sceneWith(const ValueHandle& value) {
    SceneHandle scene = newScene();
    const std::int32_t index = addInstance(scene.get(), VRDM_CLASS_MATERIAL);
    EXPECT_TRUE(vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, index, value.get()));
    return scene;
  }

  static ValueHandle valueOf(const SceneHandle& scene) {
    return ValueHandle(vrdmGetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0));
  }

  ValueHandle value_;
  SceneHandle scene_;
};

TEST_P(DeepScene, IsPrinted) {
  runOnWorkerStack([this] {
    std::ostringstream stream;
    stream << *scene_;
    const std::string words = stream.str();
    const std::string text = textOf(value_);
    EXPECT_GT(text.size(), std::size_t{kDepth});
    EXPECT_NE(words.find("] " + text + "\n"), std::string::npos);
  });
}

TEST_P(DeepScene, IsWrittenAndReadAndComparedWithWhatWasRead) {
  runOnWorkerStack([this] {
    std::stringstream file;
    Scene::serialize(*scene_, file);
    vrnt::Result<Scene> read = Scene::deserialize(file, vrnt::UniqueId::null());
    ASSERT_TRUE(read.hasValue());
    EXPECT_TRUE(Scene::equivalent(*scene_, read.value()));
    EXPECT_EQ(file.tellg(), file.tellp());
  });
}

TEST_P(DeepScene, GoesToAFileAndBack) {
  runOnWorkerStack([this] {
    const std::string path = testing::TempDir() + "vornath_deep_scene" + std::to_string(getpid());
    vrdmSerialize(scene_.get(), path.c_str());
    const SceneHandle back(vrdmDeserialize(path.c_str()));
    std::remove(path.c_str());
    ASSERT_NE(back, nullptr);
    const vrntValueView_t view{vrntValueType(value_.get()), 0};
    const ValueHandle value = valueOf(back);
    EXPECT_EQ(vrntValueEqual(value.get(), &view, value_.get(), &view, 0, nullptr), 1);
  });
}

TEST_P(DeepScene, DiffersFromOneThatIsOtherwiseInTheInnermostPart) {
  SceneHandle same;
  SceneHandle other;
  runOnMainStack([&] {
    same = sceneWith(GetParam().make(5));
    other = sceneWith(GetParam().make(6));
  });
  runOnWorkerStack([&] {
    EXPECT_TRUE(Scene::equivalent(*scene_, *scene_));
    EXPECT_TRUE(Scene::equivalent(*scene_, *same));
    EXPECT_FALSE(Scene::equivalent(*scene_, *other));
    same.reset();
    other.reset();
  });
}

TEST_P(DeepScene, IsImported) {
  runOnWorkerStack([this] {
    SceneHandle target = newScene();
    target->import(*scene_);
    EXPECT_EQ(valueOf(target), value_);
    EXPECT_TRUE(Scene::equivalent(*scene_, *target));
  });
}

INSTANTIATE_TEST_SUITE_P(Values, DeepScene,
                         testing::Values(kStructValues, kGridValues, kReferenceValues, kBareChain,
                                         kChainWithMore));

// Each value refers to the next twice: no number of bits tells how many ways lead to the last one.
// Its text is as long, so that such a scene can't be printed, but written, read and imported.
TEST(SharedScene, IsWrittenReadAndImportedAsManyTimesAsItHasValues) {
  constexpr int kLevels = 10'000;
  const TypeHandle type = parseType("{ void* a; void* b; }");
  const TypeHandle reference = parseType("void*");
  vrntValuesError_t* error = nullptr;
  ValueHandle value = parseValue("5");
  for (int i = 0; i < kLevels; ++i) {
    vrntValue_t* both = vrntValueCreate(type.get(), &error);
    for (const std::uint64_t offset : {0U, 8U}) {
      const vrntValueView_t view{reference.get(), offset};
      vrntValueSetReference(&both, &view, value.get(), &error);
    }
    value.reset(both);
  }
  const SceneHandle scene = newScene();
  addInstance(scene.get(), VRDM_CLASS_CAMERA);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_CAMERA, 0, value.get());
  std::stringstream file;
  Scene::serialize(*scene, file);
  // Records of a length, a text, an id and two words, and little around them.
  EXPECT_LT(file.str().size(), std::size_t{kLevels} * (8 + 21 + 8 + 16) + 10'000);
  vrnt::Result<Scene> read = Scene::deserialize(file, vrnt::UniqueId::null());
  ASSERT_TRUE(read.hasValue());
  SceneHandle target = newScene();
  target->import(read.value());
  const ValueHandle back(vrdmGetInstanceValue(target.get(), VRDM_CLASS_CAMERA, 0));
  const vrntValueView_t view{type.get(), 0};
  EXPECT_EQ(vrntValueEqual(back.get(), &view, value.get(), &view, 0, nullptr), 1);
  EXPECT_EQ(readAt<std::uint64_t>(back, 0), readAt<std::uint64_t>(back, 8));
}

// A texture in the innermost struct, and a chain or a nest beside it: the import writes a copy.
class DeepTexture : public testing::Test {
 protected:
  static void expectImported(ValueHandle value, std::uint64_t offset) {
    SceneHandle source = newScene();
    SceneHandle target = newScene();
    addObject(source.get(), VRDM_CLASS_TEXTURE);
    for (int i = 0; i < 3; ++i) addObject(target.get(), VRDM_CLASS_TEXTURE);
    addInstance(source.get(), VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(source.get(), VRDM_CLASS_MATERIAL, 0, value.get());
    runOnWorkerStack([&] {
      target->import(*source);
      const ValueHandle imported(vrdmGetInstanceValue(target.get(), VRDM_CLASS_MATERIAL, 0));
      EXPECT_NE(imported, value);
      EXPECT_EQ(readAt<std::int32_t>(imported, offset), 3);
      EXPECT_EQ(readAt<std::int32_t>(value, offset), 0);
      vrdmUpdateTextureReferences(target.get(), VRDM_CLASS_MATERIAL, 0);
      EXPECT_EQ(listOf(target.get(), VRDM_CLASS_MATERIAL, 0, 2), std::vector<std::int32_t>{3});
      value.reset();
      source.reset();
      target.reset();
    });
  }
};

TEST_F(DeepTexture, IsRenumberedInANest) {
  const std::string text = nested("{ void* r; ", "{ int texture_ref; }", " a; }", kDepth);
  ValueHandle value;
  runOnMainStack([&] { value = zerosOf(text); });
  expectImported(std::move(value), std::uint64_t{8} * kDepth);
}

TEST_F(DeepTexture, IsRenumberedBesideAChain) {
  ValueHandle value = zerosOf("{ void* r; { int texture_ref; } t; }");
  const ValueHandle links = chain("{ int n; void* next; }", 8, 1);
  const TypeHandle reference = parseType("void*");
  const vrntValueView_t view{reference.get(), 0};
  vrntValuesError_t* error = nullptr;
  vrntValue_t* handle = value.release();
  vrntValueSetReference(&handle, &view, links.get(), &error);
  value.reset(handle);
  expectImported(std::move(value), 8);
}

}  // namespace
