// Scene files against scene streams: the two are written and read on different ways, and must agree
// in every byte and for every length to which a file is cut.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::UniqueId;
using vrnt::data::Scene;

constexpr std::size_t kMiB = std::size_t{1} << 20;

std::uint32_t pick(std::mt19937& random, std::uint32_t count) {
  return std::uniform_int_distribution<std::uint32_t>(0, count - 1)(random);
}

// Most sizes are small. Some are around the size of a buffer.
std::size_t pickSize(std::mt19937& random) {
  if (pick(random, 12) != 0) return pick(random, 700);
  return pick(random, 3) * (kMiB / 2) + pick(random, 9) + kMiB / 2 - 4;
}

std::string pickBytes(std::mt19937& random, std::size_t size) {
  std::string bytes(size, '\0');
  const auto first = static_cast<std::uint32_t>(random());
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>('0' + (first + i * 7 + (i >> 10)) % 64);
  }
  return bytes;
}

ValueHandle pickValue(std::mt19937& random) {
  std::string elements = "1";
  for (std::size_t i = pickSize(random) / 20; i != 0; --i) {
    elements += ", " + std::to_string(pick(random, 1000));
  }
  const std::string text =
      "{ a = " + std::to_string(pick(random, 1000)) + "; b = &[ " + elements + " ]; }";
  vrntValuesError_t* error = nullptr;
  ValueHandle value(vrntValueParse(text.c_str(), &error));
  EXPECT_NE(value, nullptr);
  return value;
}

void fill(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index, std::mt19937& random) {
  for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
    const std::uint32_t kind = vrdmReferenceType(objectClass, slot).kind;
    if (kind == VRDM_REFERENCE_REQUIRED || kind == VRDM_REFERENCE_OPTIONAL) {
      vrdmSetReference(scene, objectClass, index, slot, pick(random, 50));
    } else {
      std::vector<std::int32_t> words(pickSize(random) / (pick(random, 3) + 1));
      for (std::int32_t& word : words) word = static_cast<std::int32_t>(random());
      setList(scene, objectClass, index, slot, words);
    }
  }
  if (vrdmHasValue(objectClass)) {
    vrdmSetInstanceValue(scene, objectClass, index, pickValue(random).get());
  }
}

SceneHandle pickScene(std::uint32_t seed) {
  std::mt19937 random(seed);
  SceneHandle scene = newScene();
  for (const std::uint32_t objectClass : kPrograms) {
    for (std::uint32_t i = pick(random, 5); i != 0; --i) {
      vrdmAddProgram(scene.get(), objectClass, pickBytes(random, pickSize(random)).c_str());
    }
  }
  for (std::uint32_t i = pick(random, 12); i != 0; --i) {
    addGraph(scene.get(), pickBytes(random, pickSize(random)));
  }
  for (const std::uint32_t objectClass : kInstances) {
    for (std::uint32_t i = pick(random, 8); i != 0; --i) {
      fill(scene.get(), objectClass, addInstance(scene.get(), objectClass), random);
    }
  }
  for (std::uint32_t i = pick(random, 6000); i != 0; --i)
    addInstance(scene.get(), VRDM_CLASS_SHAPE);
  for (std::uint32_t objectClass = 0; objectClass < vrnt::data::kClassCount; ++objectClass) {
    const std::uint32_t size = vrdmContainerSize(scene.get(), objectClass);
    for (std::uint32_t i = 0; size != 0 && i < 3; ++i) {
      vrdmRemove(scene.get(), objectClass, static_cast<std::int32_t>(pick(random, size)));
    }
  }
  return scene;
}

std::string serialized(const Scene& scene) {
  std::ostringstream stream;
  Scene::serialize(scene, stream);
  return stream.str();
}

class SceneFiles : public testing::TestWithParam<std::uint32_t> {
 protected:
  void TearDown() override { std::filesystem::remove(path_); }

  void writeFile(const std::string& bytes) const {
    std::ofstream(path_, std::ios::binary) << bytes;
  }
  std::string readFile() const {
    std::ifstream stream(path_, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

  const std::string path_ =
      (std::filesystem::temp_directory_path() /
       ("scene_stream_test_" + std::to_string(GetParam()) + "_" +
        std::to_string(std::hash<std::string>()(idText(vrdmSceneId(newScene().get()))))))
          .string();
};

TEST_P(SceneFiles, HoldTheBytesThatAStreamGets) {
  const SceneHandle scene = pickScene(GetParam());
  const std::string bytes = serialized(*scene);
  vrdmSerialize(scene.get(), path_.c_str());
  const std::string file = readFile();
  ASSERT_EQ(file.size(), bytes.size());
  EXPECT_TRUE(file == bytes);
  // Over a longer file.
  writeFile(bytes + std::string(3 * kMiB, 'x'));
  vrdmSerialize(scene.get(), path_.c_str());
  EXPECT_TRUE(readFile() == bytes);
}

// What reading gave: a scene, no scene, or an exception.
struct Outcome {
  SceneHandle scene;
  bool thrown = false;
};

template <typename Read>
Outcome outcomeOf(const Read& read) {
  Outcome outcome;
  try {
    outcome.scene = read();
  } catch (const vrnt::Exception&) {
    outcome.thrown = true;
  }
  return outcome;
}

void expectEqual(const Outcome& a, const Outcome& b) {
  EXPECT_EQ(a.thrown, b.thrown);
  ASSERT_EQ(a.scene == nullptr, b.scene == nullptr);
  if (!a.scene) return;
  EXPECT_EQ(idText(vrdmSceneId(a.scene.get())), idText(vrdmSceneId(b.scene.get())));
  EXPECT_TRUE(Counters(a.scene.get()) == Counters(b.scene.get()));
  EXPECT_TRUE(Scene::equivalent(*a.scene, *b.scene));
}

TEST_P(SceneFiles, AreReadAsAStreamIsWhereverTheyAreCut) {
  std::mt19937 random(GetParam());
  const SceneHandle scene = pickScene(GetParam());
  const std::string bytes = serialized(*scene);
  std::vector<std::size_t> cuts = {bytes.size(), bytes.size() - 1, 27, 28, 347};
  for (std::size_t end = kMiB; end < bytes.size(); end += kMiB) {
    cuts.insert(cuts.end(), {end - 1, end, end + 1});
  }
  for (int i = 0; i < 12; ++i)
    cuts.push_back(pick(random, static_cast<std::uint32_t>(bytes.size())));
  for (const std::size_t cut : cuts) {
    SCOPED_TRACE(cut);
    const std::string part = bytes.substr(0, cut);
    writeFile(part);
    const Outcome file = outcomeOf([&] { return SceneHandle(vrdmDeserialize(path_.c_str())); });
    const Outcome stream = outcomeOf([&] {
      std::istringstream input(part);
      auto read = Scene::deserialize(input, UniqueId::null());
      return SceneHandle(read ? new Scene(std::move(*read)) : nullptr);
    });
    expectEqual(file, stream);
  }
}

INSTANTIATE_TEST_SUITE_P(Generated, SceneFiles, testing::Range(1U, 7U));

TEST(SceneFile, CanBeADeviceThatTakesNothing) {
  const SceneHandle scene = pickScene(1);
  for (const char* const device : {"/dev/full", "/dev/null"}) {
    if (std::filesystem::exists(device)) vrdmSerialize(scene.get(), device);
  }
  // The scene is as it was.
  EXPECT_TRUE(Scene::equivalent(*scene, *scene));
  EXPECT_EQ(vrdmDeserialize("/dev/null"), nullptr);
  EXPECT_EQ(vrdmDeserialize("/"), nullptr);
}

}  // namespace
