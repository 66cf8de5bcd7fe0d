// The scene file: every byte of it as written, what a reader makes of it whole, cut and damaged,
// and the flat functions around it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <streambuf>

#include "golden_catalogue.hpp"
#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::ErrorCode;
using vrnt::Result;
using vrnt::UniqueId;
using vrnt::data::CameraDesc;
using vrnt::data::Scene;

constexpr char kId[] = "000102030405060708090a0b0c0d0e0f";

// Bytes of a file, put together item by item.
class Bytes {
 public:
  Bytes& text(const std::string& bytes) {
    bytes_ += bytes;
    return *this;
  }
  Bytes& flag(char value) { return text(std::string(1, value)); }
  Bytes& word(std::uint32_t value) { return raw(value); }
  Bytes& words(std::initializer_list<std::int32_t> values) {
    for (const std::int32_t value : values) raw(value);
    return *this;
  }
  Bytes& longWord(std::uint64_t value) { return raw(value); }
  Bytes& floats(std::initializer_list<float> values) {
    for (const float value : values) raw(value);
    return *this;
  }
  Bytes& zeros(std::size_t count) { return text(std::string(count, '\0')); }

  std::size_t size() const { return bytes_.size(); }
  const std::string& str() const { return bytes_; }

 private:
  template <typename T>
  Bytes& raw(T value) {
    bytes_.append(reinterpret_cast<const char*>(&value), sizeof(value));
    return *this;
  }

  std::string bytes_;
};

// The version of the files that are written and read.
const std::uint32_t kVersion = goldenCatalogue().version;

// The counts of an empty scene's sections.
constexpr std::size_t kCounts = 4 * vrnt::data::kClassCount;

// Magic, version, the id of kId, and the default scene-wide groups: 348 bytes.
void appendHeader(Bytes& bytes) {
  bytes.text("VRNSCENE").word(kVersion);
  for (char i = 0; i < 16; ++i) bytes.flag(i);
  for (int plane = 0; plane < 6; ++plane) {
    bytes.floats({0, 0, 0}).zeros(4).floats({0, 0, 1}).zeros(4).word(0).zeros(12);
  }
  bytes.words({128, 0});
  bytes.word(0x38D1B717U).words({2});
  bytes.words({0, 0, 0}).zeros(4);
}

void appendIdentity(Bytes& bytes) {
  bytes.floats({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
}

Scene sceneWithId() { return Scene(*UniqueId::parse(kId)); }

std::string serialized(const Scene& scene) {
  std::ostringstream stream;
  Scene::serialize(scene, stream);
  EXPECT_TRUE(stream.good());
  return stream.str();
}

Result<Scene> deserialized(const std::string& bytes, const UniqueId& id = UniqueId::null()) {
  std::istringstream stream(bytes);
  return Scene::deserialize(stream, id);
}

std::string where(const std::string& a, const std::string& b) {
  const auto at = std::mismatch(
      a.begin(), a.begin() + static_cast<std::ptrdiff_t>(std::min(a.size(), b.size())), b.begin());
  return "differs at " + std::to_string(at.first - a.begin()) + " of " + std::to_string(a.size()) +
         " and " + std::to_string(b.size());
}

// A value of the type `{ int a; }`.
ValueHandle smallValue(std::int32_t a) {
  const TypeHandle type = parseType("{ int a; }");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  vrntValueWrite(&value, 0, &a, sizeof(a), &error);
  return ValueHandle(value);
}

void setValue(Scene& scene, std::uint32_t objectClass, std::int32_t index, std::int32_t a) {
  const ValueHandle value = smallValue(a);
  vrdmSetInstanceValue(&scene, objectClass, index, value.get());
}

// A scene with all forms of record in it but the largest group blocks, and the file that it makes.
struct Golden {
  Scene scene = sceneWithId();
  Bytes file;
  // For each value: where its object's flag stands, and where its type's text ends.
  std::vector<std::pair<std::size_t, std::size_t>> values;

  Golden() {
    appendHeader(file);
    programs();
    assets();
    keyframes();
    camera();
    transformationGroup();
    lightGroup();
    file.word(0);  // lights
    material();
    decals();
    file.zeros(kCounts - 15 * 4);  // from shapes on
  }

 private:
  std::string id(std::uint32_t objectClass, std::int32_t index) const {
    return idText(vrdmGetUniqueId(&scene, objectClass, index));
  }

  void programs() {
    vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "removed");
    vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "abc");
    vrdmRemove(&scene, VRDM_CLASS_CAMERA_PROGRAM, 0);
    vrdmAddProgram(&scene, VRDM_CLASS_MATERIAL_PROGRAM, "");
    file.word(2).flag(0).flag(1).word(3).text("abc");
    file.word(1).flag(1).word(0);
    file.word(0);
  }

  void add(std::uint32_t objectClass, const void* desc, const std::string& bytes) {
    const StorageHandle storage = newStorage(bytes);
    AssetStorage* handle = storage.get();
    vrdmAddAsset(&scene, objectClass, desc, &handle);
  }

  void assets() {
    // One vertex, no triangle: nine words and two for the texture coordinate set that 0 stands for.
    const std::array<std::int32_t, 4> mesh = {0, 1, 0, 0};
    add(VRDM_CLASS_MESH, mesh.data(), std::string(44, 'm'));
    file.word(1).flag(1).text(id(VRDM_CLASS_MESH, 0)).words({0, 1, 0, 0});
    file.text(std::string(44, 'm'));

    // One pixel of "SRGB8", flat.
    const std::array<std::int32_t, 5> texture = {1, 1, 1, 2, 0};
    add(VRDM_CLASS_TEXTURE, texture.data(), "rgb");
    file.word(1).flag(1).text(id(VRDM_CLASS_TEXTURE, 0)).words({1, 1, 1, 2, 0}).text("rgb");

    const std::array<std::uint64_t, 3> graph = {2, 7, 9};
    add(VRDM_CLASS_MATERIAL_GRAPH, graph.data(), "gg");
    addGraph(&scene, "removed");
    vrdmRemove(&scene, VRDM_CLASS_MATERIAL_GRAPH, 1);
    file.word(2).flag(1).text(id(VRDM_CLASS_MATERIAL_GRAPH, 0));
    file.longWord(2).longWord(7).longWord(9).text("gg").flag(0);
  }

  void keyframes() {
    vrdmCreateInstance(&scene, VRDM_CLASS_KEYFRAME);
    file.word(1).flag(1).floats({0, 0, 0, 1, 1, 1, 0, 0, 0, 1, 0, 0, 0});
    vrdmCreateInstance(&scene, VRDM_CLASS_KEYFRAME_LIST);
    setList(&scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0, {0, -1});
    vrdmCreateInstance(&scene, VRDM_CLASS_KEYFRAME_LIST);
    vrdmRemove(&scene, VRDM_CLASS_KEYFRAME_LIST, 1);
    file.word(2).flag(1).word(2).words({0, -1}).flag(0);
  }

  void appendValue(std::uint32_t objectClass, std::size_t flagPlace) {
    const ValueHandle value(vrdmGetInstanceValue(&scene, objectClass, 0));
    file.longWord(10).text("{ int a; }");
    values.emplace_back(flagPlace, file.size());
    file.longWord(reinterpret_cast<std::uint64_t>(vrntValueData(value.get())));
    file.words({readAt<std::int32_t>(value)});
  }

  void camera() {
    vrdmCreateInstance(&scene, VRDM_CLASS_CAMERA);
    vrdmSetReference(&scene, VRDM_CLASS_CAMERA, 0, 0, 1);
    vrdmSetReference(&scene, VRDM_CLASS_CAMERA, 0, 2, 5);
    setValue(scene, VRDM_CLASS_CAMERA, 0, 7);
    file.word(1);
    const std::size_t flagPlace = file.size();
    file.flag(1).words({1, -1, 5});
    file.text(goldenBlock("Camera"));
    appendValue(VRDM_CLASS_CAMERA, flagPlace);
  }

  void transformationGroup() {
    vrdmCreateInstance(&scene, VRDM_CLASS_TRANSFORMATION_GROUP);
    file.word(1).flag(1);
    appendIdentity(file);
  }

  void lightGroup() {
    vrdmCreateInstance(&scene, VRDM_CLASS_LIGHT_GROUP);
    setList(&scene, VRDM_CLASS_LIGHT_GROUP, 0, 0, {kNoTarget, 2});
    file.word(1).flag(1).word(2).word(0x80000000U).word(2);
  }

  void material() {
    vrdmCreateInstance(&scene, VRDM_CLASS_MATERIAL);
    vrdmSetReference(&scene, VRDM_CLASS_MATERIAL, 0, 0, 0);
    setList(&scene, VRDM_CLASS_MATERIAL, 0, 2, {3});
    setValue(scene, VRDM_CLASS_MATERIAL, 0, -1);
    file.word(1);
    const std::size_t flagPlace = file.size();
    file.flag(1).words({0, -1}).word(1).words({3});
    appendValue(VRDM_CLASS_MATERIAL, flagPlace);
  }

  void decals() {
    vrdmCreateInstance(&scene, VRDM_CLASS_DECAL);
    vrdmSetReference(&scene, VRDM_CLASS_DECAL, 0, 0, 2);
    vrdmSetReference(&scene, VRDM_CLASS_DECAL, 0, 2, 0);
    const float infinity = std::numeric_limits<float>::infinity();
    file.word(1).flag(1).words({2, -1, 0});
    appendIdentity(file);
    file.words({3, 0}).floats({-infinity, -infinity, -infinity, infinity, infinity, infinity});
    vrdmCreateInstance(&scene, VRDM_CLASS_DECAL_LIST);
    setList(&scene, VRDM_CLASS_DECAL_LIST, 0, 0, {~1, 1});
    file.word(1).flag(1).word(2).words({-2, 1});
  }
};

TEST(SceneSerialize, WritesTheVersionThatTheseTestsAreAbout) {
  const std::string file = serialized(Scene());
  std::uint32_t version = 0;
  std::memcpy(&version, file.data() + 8, sizeof version);
  ASSERT_EQ(version, kVersion)
      << "docs/catalogue.md is that of another version: run scripts/write_catalogue.py";
}

TEST(SceneSerialize, WritesAnEmptySceneAsHeaderAndZeroCounts) {
  Bytes expected;
  appendHeader(expected);
  EXPECT_EQ(expected.size(), 348U);
  expected.zeros(kCounts);
  const std::string file = serialized(sceneWithId());
  EXPECT_EQ(file.size(), 420U);
  EXPECT_TRUE(file == expected.str()) << where(file, expected.str());
}

TEST(SceneSerialize, WritesEveryFormOfRecordByteForByte) {
  const Golden golden;
  const std::string file = serialized(golden.scene);
  EXPECT_TRUE(file == golden.file.str()) << where(file, golden.file.str());
}

TEST(SceneSerialize, GivesRecordsTheirFixedSizes) {
  for (const std::uint32_t c : kInstances) {
    // Behind the flag, with empty lists, and without the value where there is one.
    const std::string name = vrdmObjectName(c);
    const std::size_t bytes = 4 * goldenClass(name).slots.size() + goldenClass(name).blockSize;
    Scene scene = sceneWithId();
    vrdmCreateInstance(&scene, c);
    const bool hasValue = vrdmHasValue(c);
    if (hasValue) setValue(scene, c, 0, 1);
    // Length, text, id and four bytes of data.
    const std::size_t value = hasValue ? 8 + 10 + 8 + 4 : 0;
    EXPECT_EQ(serialized(scene).size(), 348 + kCounts + 1 + bytes + value) << name;
  }
}

TEST(SceneSerialize, WritesTheGroupsOfANewObjectAtTheirDefaults) {
  for (const std::uint32_t c : kInstances) {
    Scene scene = sceneWithId();
    vrdmCreateInstance(&scene, c);
    if (vrdmHasValue(c)) setValue(scene, c, 0, 1);
    const std::string block = goldenBlock(vrdmObjectName(c));
    // Header, counts up to this class's, flag, slots.
    const std::size_t begin = 348 + (c + 1) * 4 + 1 + vrdmReferenceCount(c) * 4;
    const std::string file = serialized(scene).substr(begin, block.size());
    EXPECT_TRUE(file == block) << vrdmObjectName(c) << " " << where(file, block);
  }
}

// Where a class's groups begin in its block: each at its type's alignment behind the one before.
std::vector<std::size_t> groupOffsets(std::uint32_t objectClass) {
  std::vector<std::size_t> offsets;
  std::size_t end = 0;
  for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
    const TypeHandle type(vrdmFieldType(objectClass, group));
    const std::size_t alignment = vrntTypeAlignment(type.get());
    end = (end + alignment - 1) / alignment * alignment;
    offsets.push_back(end);
    end += vrntTypeSize(type.get());
  }
  return offsets;
}

TEST(SceneSerialize, WritesGroupsInTheirOrder) {
  for (const std::uint32_t c : kInstances) {
    const std::vector<std::size_t> offsets = groupOffsets(c);
    const std::vector<GoldenGroup>& listed = goldenClass(vrdmObjectName(c)).groups;
    ASSERT_EQ(offsets.size(), listed.size());
    for (std::size_t i = 0; i < offsets.size(); ++i) EXPECT_EQ(offsets[i], listed[i].offset);
    if (offsets.empty()) continue;
    Scene scene = sceneWithId();
    vrdmCreateInstance(&scene, c);
    std::vector<std::string> groups;
    for (std::uint32_t group = 0; group < offsets.size(); ++group) {
      std::string bytes(groupBytes(&scene, c, 0, group).size(), '\0');
      for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7 + group * 31 + 1);
      }
      const ValueHandle value = groupValue(c, group, bytes);
      EXPECT_TRUE(vrdmSetDataValue(&scene, c, 0, group, value.get()));
      groups.push_back(bytes);
    }
    if (vrdmHasValue(c)) setValue(scene, c, 0, 1);
    const std::string file = serialized(scene);
    // Header, counts up to this class's, flag, slots.
    std::size_t block = 348 + (c + 1) * 4 + 1 + vrdmReferenceCount(c) * 4;
    for (std::uint32_t group = 0; group < offsets.size(); ++group) {
      EXPECT_EQ(file.substr(block + offsets[group], groups[group].size()), groups[group])
          << vrdmObjectName(c) << " " << vrdmFieldName(c, group);
    }
    const Result<Scene> read = deserialized(file);
    ASSERT_TRUE(read.hasValue());
    for (std::uint32_t group = 0; group < offsets.size(); ++group) {
      EXPECT_EQ(groupBytes(&*read, c, 0, group), groups[group]);
    }
  }
}

TEST(SceneSerialize, WritesSlotsInTheirOrder) {
  Scene scene = sceneWithId();
  vrdmCreateInstance(&scene, VRDM_CLASS_SHAPE);
  for (std::uint32_t slot = 0; slot < 9; ++slot) {
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, 0, slot, 100 + slot);
  }
  const std::string file = serialized(scene);
  Bytes words;
  words.words({100, 101, 102, 103, 104, 105, 106, 107, 108});
  EXPECT_EQ(file.substr(348 + 16 * 4 + 1, 36), words.str());
}

TEST(SceneSerialize, CutsAProgramAtItsFirstNul) {
  Bytes file;
  appendHeader(file);
  file.word(1).flag(1).word(7).text(std::string("abc\0def", 7)).zeros(kCounts - 4);
  const Result<Scene> read = deserialized(file.str());
  ASSERT_TRUE(read.hasValue());
  // Read at the length that stands there.
  EXPECT_TRUE(*vrdmGetUniqueId(&*read, 0, 0) == UniqueId::hash("abc\0def", 7));
  EXPECT_STREQ(vrdmGetProgramSource(&*read, 0, 0), "abc");
  Bytes written;
  appendHeader(written);
  written.word(1).flag(1).word(3).text("abc").zeros(kCounts - 4);
  EXPECT_EQ(serialized(*read), written.str());
}

TEST(SceneSerialize, WritesAnAssetWithoutDataAsAFreeSlot) {
  Scene scene = sceneWithId();
  const std::array<std::uint64_t, 3> desc = {};
  AssetStorage* empty = vrdmAssetStorageWrap(nullptr, 0, nullptr);
  vrdmAddAsset(&scene, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &empty);
  vrdmAssetStorageRelease(empty);
  addGraph(&scene, "removed");
  vrdmRemove(&scene, VRDM_CLASS_MATERIAL_GRAPH, 1);
  Bytes expected;
  appendHeader(expected);
  expected.zeros(5 * 4).word(2).flag(0).flag(0).zeros(kCounts - 6 * 4);
  EXPECT_EQ(serialized(scene), expected.str());
  const Result<Scene> read = deserialized(expected.str());
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(vrdmContainerSize(&*read, VRDM_CLASS_MATERIAL_GRAPH), 2U);
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(vrdmValid(&*read, VRDM_CLASS_MATERIAL_GRAPH, i));
    EXPECT_TRUE(vrdmGetUniqueId(&*read, VRDM_CLASS_MATERIAL_GRAPH, i)->isNull());
  }
}

TEST(SceneSerialize, WritesAsManyBytesAsTheDescriptorSays) {
  Scene scene = sceneWithId();
  const std::array<std::uint64_t, 3> desc = {2, 0, 0};
  const StorageHandle storage = newStorage("longer");
  AssetStorage* handle = storage.get();
  vrdmAddAsset(&scene, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  const std::string file = serialized(scene);
  EXPECT_EQ(file.size(), 348 + kCounts + 1 + 16 + 24 + 2);
  EXPECT_EQ(file.substr(348 + 6 * 4 + 1 + 16 + 24, 2), "lo");
}

TEST(SceneDeserialize, ReadsWhatWasWritten) {
  const Golden golden;
  const Result<Scene> read = deserialized(golden.file.str());
  ASSERT_TRUE(read.hasValue());
  const Scene& scene = *read;
  EXPECT_EQ(idText(vrdmSceneId(&scene)), idText(vrdmSceneId(&golden.scene)));
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    const std::uint32_t count = vrdmContainerSize(&golden.scene, c);
    ASSERT_EQ(vrdmContainerSize(&scene, c), count);
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(count); ++i) {
      EXPECT_EQ(vrdmValid(&scene, c, i), vrdmValid(&golden.scene, c, i));
    }
  }
  EXPECT_STREQ(vrdmGetProgramSource(&scene, VRDM_CLASS_CAMERA_PROGRAM, 1), "abc");
  EXPECT_TRUE(*vrdmGetUniqueId(&scene, VRDM_CLASS_CAMERA_PROGRAM, 1) == UniqueId::hash("abc"));
  for (const std::uint32_t c : kAssets) {
    EXPECT_EQ(idText(vrdmGetUniqueId(&scene, c, 0)), idText(vrdmGetUniqueId(&golden.scene, c, 0)));
    std::array<std::uint64_t, 3> a = {};
    std::array<std::uint64_t, 3> b = {};
    const AssetStorage* mine = *vrdmGetAssetStorage(&scene, c, 0, a.data());
    const AssetStorage* theirs = *vrdmGetAssetStorage(&golden.scene, c, 0, b.data());
    EXPECT_EQ(a, b);
    EXPECT_NE(mine, theirs);
    ASSERT_EQ(mine->size, theirs->size);
    EXPECT_EQ(std::memcmp(mine->data, theirs->data, mine->size), 0);
  }
  EXPECT_EQ(vrdmGetReference(&scene, VRDM_CLASS_CAMERA, 0, 0), 1);
  EXPECT_EQ(vrdmGetReference(&scene, VRDM_CLASS_CAMERA, 0, 1), -1);
  EXPECT_EQ(vrdmGetReference(&scene, VRDM_CLASS_CAMERA, 0, 2), 5);
  EXPECT_EQ(listOf(&scene, VRDM_CLASS_LIGHT_GROUP, 0, 0),
            (std::vector<std::int32_t>{kNoTarget, 2}));
  EXPECT_EQ(listOf(&scene, VRDM_CLASS_DECAL_LIST, 0, 0), (std::vector<std::int32_t>{-2, 1}));
  const ValueHandle camera(vrdmGetInstanceValue(&scene, VRDM_CLASS_CAMERA, 0));
  EXPECT_EQ(typeTextOf(camera), "{ int a; }");
  EXPECT_EQ(readAt<std::int32_t>(camera), 7);
  const ValueHandle material(vrdmGetInstanceValue(&scene, VRDM_CLASS_MATERIAL, 0));
  EXPECT_EQ(readAt<std::int32_t>(material), -1);
}

TEST(SceneDeserialize, GivesASceneThatIsWrittenAsTheSameBytes) {
  Scene scene = sceneWithId();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (vrdmHasValue(c)) continue;
    for (int i = 0; i < 5; ++i) addObject(&scene, c);
    vrdmRemove(&scene, c, 1);
    vrdmRemove(&scene, c, 4);
  }
  setList(&scene, VRDM_CLASS_BAKE_TASK, 2, 0, {0, 2, 3});
  addGraph(&scene, "some bytes");
  const std::string file = serialized(scene);
  const Result<Scene> read = deserialized(file);
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(serialized(*read), file);
}

TEST(SceneDeserialize, KeepsFreeSlotsAtTheirNumbers) {
  Scene scene = sceneWithId();
  for (int i = 0; i < 3; ++i) {
    addInstance(&scene, VRDM_CLASS_CAMERA);
    setValue(scene, VRDM_CLASS_CAMERA, i, i);
    addInstance(&scene, VRDM_CLASS_IMAGE_TASK);
    vrdmSetReference(&scene, VRDM_CLASS_IMAGE_TASK, i, 0, static_cast<std::uint32_t>(i));
  }
  vrdmRemove(&scene, VRDM_CLASS_CAMERA, 1);
  Result<Scene> read = deserialized(serialized(scene));
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(vrdmContainerSize(&*read, VRDM_CLASS_CAMERA), 3U);
  EXPECT_TRUE(vrdmValid(&*read, VRDM_CLASS_CAMERA, 0));
  EXPECT_FALSE(vrdmValid(&*read, VRDM_CLASS_CAMERA, 1));
  EXPECT_TRUE(vrdmValid(&*read, VRDM_CLASS_CAMERA, 2));
  const ValueHandle value(vrdmGetInstanceValue(&*read, VRDM_CLASS_CAMERA, 2));
  EXPECT_EQ(readAt<std::int32_t>(value), 2);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(vrdmGetReference(&*read, VRDM_CLASS_IMAGE_TASK, i, 0), i);
  }
  EXPECT_EQ(vrdmCreateInstance(&*read, VRDM_CLASS_CAMERA), 1U);
  EXPECT_EQ(vrdmCreateInstance(&*read, VRDM_CLASS_CAMERA), 3U);
}

TEST(SceneDeserialize, LeavesTheLowestFreeSlotToTheNextAdditionInEveryClass) {
  Scene scene = sceneWithId();
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    for (int i = 0; i < 5; ++i) {
      addObject(&scene, c);
      if (vrdmHasValue(c)) setValue(scene, c, i, i);
    }
    vrdmRemove(&scene, c, 2);
    vrdmRemove(&scene, c, 3);
  }
  Result<Scene> read = deserialized(serialized(scene));
  ASSERT_TRUE(read.hasValue());
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(addObject(&*read, c), 2U) << c;
    EXPECT_EQ(addObject(&*read, c), 3U) << c;
    EXPECT_EQ(addObject(&*read, c), 5U) << c;
  }
}

TEST(SceneDeserialize, TakesTheGivenIdUnlessItIsNull) {
  const std::string file = serialized(sceneWithId());
  const UniqueId other = UniqueId::hash("other");
  const Result<Scene> kept = deserialized(file);
  const Result<Scene> replaced = deserialized(file, other);
  EXPECT_TRUE(*vrdmSceneId(&*kept) == *UniqueId::parse(kId));
  EXPECT_TRUE(*vrdmSceneId(&*replaced) == other);
}

TEST(SceneDeserialize, StartsTheCountersByReading) {
  const Golden golden;
  const Result<Scene> read = deserialized(golden.file.str());
  ASSERT_TRUE(read.hasValue());
  std::uint32_t liveObjects = 0;
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    std::uint32_t live = 0;
    for (std::uint32_t i = 0; i < vrdmContainerSize(&golden.scene, c); ++i) {
      if (vrdmValid(&golden.scene, c, static_cast<std::int32_t>(i))) ++live;
    }
    EXPECT_EQ(read->versions.classes[c], live) << c;
    liveObjects += live;
  }
  EXPECT_EQ(read->versions.version, 1 + liveObjects);
  for (const std::uint32_t group : read->versions.groups) EXPECT_EQ(group, 1U);
  const auto& camera = read->container<CameraDesc>().slots[0];
  EXPECT_GT(camera.version, 0U);
  EXPECT_EQ(camera.referencesVersion, 1U);
  for (const std::uint32_t group : camera.groupVersions) EXPECT_EQ(group, 1U);
}

TEST(SceneDeserialize, ReadsTheSceneWideGroups) {
  std::string file = serialized(sceneWithId());
  for (std::size_t i = 28; i < 348; ++i) file[i] = static_cast<char>(i);
  const Result<Scene> read = deserialized(file);
  ASSERT_TRUE(read.hasValue());
  const std::size_t offsets[] = {28, 28 + 288, 28 + 296, 28 + 304};
  const std::size_t sizes[] = {288, 8, 8, 12};
  for (std::uint32_t group = 0; group < 4; ++group) {
    const ValueHandle value(vrdmGetSceneDataValue(&*read, group));
    EXPECT_EQ(std::string(static_cast<const char*>(vrntValueData(value.get())), sizes[group]),
              file.substr(offsets[group], sizes[group]));
  }
  EXPECT_EQ(serialized(*read), file);
}

TEST(SceneDeserialize, LeavesTheStreamBehindTheLastByte) {
  const Golden golden;
  std::istringstream stream(golden.file.str() + "behind");
  EXPECT_TRUE(Scene::deserialize(stream, UniqueId::null()).hasValue());
  EXPECT_EQ(static_cast<std::size_t>(stream.tellg()), golden.file.size());
  std::string rest;
  stream >> rest;
  EXPECT_EQ(rest, "behind");
}

TEST(SceneDeserialize, ReadsTwoScenesFromOneStream) {
  std::stringstream stream;
  const Golden golden;
  Scene::serialize(golden.scene, stream);
  Scene::serialize(sceneWithId(), stream);
  const Result<Scene> first = Scene::deserialize(stream, UniqueId::null());
  const Result<Scene> second = Scene::deserialize(stream, UniqueId::null());
  ASSERT_TRUE(first.hasValue());
  ASSERT_TRUE(second.hasValue());
  EXPECT_EQ(vrdmContainerSize(&*first, VRDM_CLASS_DECAL), 1U);
  EXPECT_EQ(vrdmContainerSize(&*second, VRDM_CLASS_DECAL), 0U);
}

TEST(SceneDeserialize, ReportsAStreamThatCannotGiveTheMagic) {
  for (std::size_t size = 0; size < 8; ++size) {
    std::istringstream stream(std::string("VRNSCENE").substr(0, size));
    const Result<Scene> read = Scene::deserialize(stream, UniqueId::null());
    ASSERT_FALSE(read.hasValue());
    EXPECT_EQ(read.error().code(), ErrorCode::IoError);
    EXPECT_EQ(read.error().message(), nullptr);
    EXPECT_TRUE(stream.fail());
  }
}

TEST(SceneDeserialize, ReportsAnotherMagicAndGoesBack) {
  std::istringstream stream("beforeVRNSCENEbehind");
  // Starts in the middle: it goes back to where it stood, not to the beginning.
  stream.seekg(3);
  const Result<Scene> read = Scene::deserialize(stream, UniqueId::null());
  ASSERT_FALSE(read.hasValue());
  EXPECT_EQ(read.error().code(), ErrorCode::InvalidArguments);
  EXPECT_STREQ(read.error().message(), "Bad header: this is not a Vornath scene binary.");
  EXPECT_TRUE(stream.good());
  EXPECT_EQ(stream.tellg(), 3);

  std::istringstream eight("VRNSCENF");
  EXPECT_FALSE(Scene::deserialize(eight, UniqueId::null()).hasValue());
  EXPECT_TRUE(eight.good());
  EXPECT_EQ(eight.tellg(), 0);
}

TEST(SceneDeserialize, ReportsAnotherVersion) {
  struct Case {
    std::string bytes;
    std::uint32_t version;
  };
  const auto bytesOf = [](std::uint32_t version) {
    return std::string(reinterpret_cast<const char*>(&version), sizeof version);
  };
  const Case cases[] = {{bytesOf(kVersion - 1), kVersion - 1},
                        {bytesOf(kVersion + 1), kVersion + 1},
                        {bytesOf(UINT32_MAX), UINT32_MAX},
                        {"", 0},
                        {std::string("\5", 1), 5},
                        {std::string("\0\1", 2), 256}};
  for (const Case& wrong : cases) {
    std::istringstream stream("VRNSCENE" + wrong.bytes);
    const Result<Scene> read = Scene::deserialize(stream, UniqueId::null());
    ASSERT_FALSE(read.hasValue());
    EXPECT_EQ(read.error().code(), ErrorCode::VersionMismatch);
    EXPECT_EQ(read.error().message(),
              "Vornath data model binary version mismatch: source has version " +
                  std::to_string(wrong.version) + ", current version is " +
                  std::to_string(kVersion));
  }
}

TEST(SceneDeserialize, LeavesTheStreamBehindAWrongVersion) {
  std::istringstream stream(std::string("VRNSCENE\xAC\0\0\0rest", 16));
  EXPECT_FALSE(Scene::deserialize(stream, UniqueId::null()).hasValue());
  EXPECT_EQ(stream.tellg(), 12);
}

TEST(SceneDeserialize, TakesOnlyAFlagOfOneAsLive) {
  for (const char flag : {'\0', '\2', '\x7F', '\x80', '\xFF'}) {
    Bytes file;
    appendHeader(file);
    file.zeros(9 * 4).word(2).flag(flag).flag(1);
    appendIdentity(file);
    file.zeros(8 * 4);
    const Result<Scene> read = deserialized(file.str());
    ASSERT_TRUE(read.hasValue());
    EXPECT_EQ(vrdmContainerSize(&*read, VRDM_CLASS_TRANSFORMATION_GROUP), 2U);
    EXPECT_FALSE(vrdmValid(&*read, VRDM_CLASS_TRANSFORMATION_GROUP, 0));
    EXPECT_TRUE(vrdmValid(&*read, VRDM_CLASS_TRANSFORMATION_GROUP, 1));
  }
}

TEST(SceneDeserialize, ReadsAnEmptyProgramAsALiveOne) {
  Scene scene = sceneWithId();
  vrdmAddProgram(&scene, VRDM_CLASS_LIGHT_PROGRAM, "");
  const Result<Scene> read = deserialized(serialized(scene));
  ASSERT_TRUE(read.hasValue());
  EXPECT_TRUE(vrdmValid(&*read, VRDM_CLASS_LIGHT_PROGRAM, 0));
  EXPECT_STREQ(vrdmGetProgramSource(&*read, VRDM_CLASS_LIGHT_PROGRAM, 0), "");
  // The published digest of no bytes.
  EXPECT_TRUE(*vrdmGetUniqueId(&*read, VRDM_CLASS_LIGHT_PROGRAM, 0) ==
              *UniqueId::parse("2ac0ee3f15aeaf1a502fad4ae7a98832"));
}

TEST(SceneDeserialize, TakesAFileThatIsCutAtAnyByte) {
  const Golden golden;
  const std::string& file = golden.file.str();
  for (std::size_t size = 0; size < file.size(); ++size) {
    SCOPED_TRACE(size);
    // An object whose flag was delivered has its value due, up to the end of the type's text.
    bool valueDue = false;
    for (const auto& [flagPlace, textEnd] : golden.values) {
      valueDue = valueDue || (size > flagPlace && size < textEnd);
    }
    const std::string cut = file.substr(0, size);
    if (valueDue) {
      EXPECT_THROW(deserialized(cut), vrnt::Exception);
      continue;
    }
    const Result<Scene> read = deserialized(cut);
    if (size < 8) {
      ASSERT_FALSE(read.hasValue());
      EXPECT_EQ(read.error().code(), ErrorCode::IoError);
    } else if (size == 8) {
      ASSERT_FALSE(read.hasValue());
      EXPECT_EQ(read.error().code(), ErrorCode::VersionMismatch);
    } else {
      // One byte of the version says it all.
      ASSERT_TRUE(read.hasValue());
      for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
        EXPECT_LE(vrdmContainerSize(&*read, c), vrdmContainerSize(&golden.scene, c));
      }
    }
  }
}

TEST(SceneDeserialize, LeavesWhatIsCutOffEmpty) {
  const Golden golden;
  // Behind the header, within the first count.
  const Result<Scene> read = deserialized(golden.file.str().substr(0, 350));
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(vrdmContainerSize(&*read, VRDM_CLASS_CAMERA_PROGRAM), 2U);
  EXPECT_FALSE(vrdmValid(&*read, VRDM_CLASS_CAMERA_PROGRAM, 0));
  EXPECT_FALSE(vrdmValid(&*read, VRDM_CLASS_CAMERA_PROGRAM, 1));
  for (std::uint32_t c = 1; c < vrdmObjectTypeCount(); ++c) {
    EXPECT_EQ(vrdmContainerSize(&*read, c), 0U);
  }
}

TEST(SceneDeserialize, LeavesSlotWordsThatAreCutOffUnset) {
  Scene scene = sceneWithId();
  vrdmCreateInstance(&scene, VRDM_CLASS_SHAPE);
  for (std::uint32_t slot = 0; slot < 9; ++slot) {
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, 0, slot, 0x01020300 + slot);
  }
  const std::string file = serialized(scene);
  const std::size_t slots = 348 + 16 * 4 + 1;
  for (std::size_t size = slots; size <= slots + 36; ++size) {
    const Result<Scene> read = deserialized(file.substr(0, size));
    ASSERT_TRUE(read.hasValue());
    EXPECT_TRUE(vrdmValid(&*read, VRDM_CLASS_SHAPE, 0));
    for (std::uint32_t slot = 0; slot < 9; ++slot) {
      // Bytes of a word that were delivered stand over those of -1.
      Bytes expected;
      expected.words({-1});
      std::string word = expected.str();
      for (std::size_t i = 0; i < 4; ++i) {
        if (slots + slot * 4 + i < size) word[i] = file[slots + slot * 4 + i];
      }
      EXPECT_EQ(vrdmGetReference(&*read, VRDM_CLASS_SHAPE, 0, slot),
                readBytes<std::int32_t>(word, 0))
          << size << " " << slot;
    }
  }
}

TEST(SceneDeserialize, LeavesListElementsThatAreCutOffUnset) {
  Scene scene = sceneWithId();
  vrdmCreateInstance(&scene, VRDM_CLASS_KEYFRAME_LIST);
  setList(&scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0, {4, 5, 6});
  const std::string file = serialized(scene);
  const std::size_t words = 348 + 8 * 4 + 1 + 4;
  const Result<Scene> read = deserialized(file.substr(0, words + 4));
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(listOf(&*read, VRDM_CLASS_KEYFRAME_LIST, 0, 0), (std::vector<std::int32_t>{4, -1, -1}));
}

TEST(SceneDeserialize, LeavesGroupsThatAreCutOffAtTheirDefaults) {
  Scene scene = sceneWithId();
  vrdmCreateInstance(&scene, VRDM_CLASS_KEYFRAME);
  const std::string defaults = groupBytes(&scene, VRDM_CLASS_KEYFRAME, 0, 0);
  const ValueHandle value = groupValue(VRDM_CLASS_KEYFRAME, 0, std::string(52, 'x'));
  vrdmSetDataValue(&scene, VRDM_CLASS_KEYFRAME, 0, 0, value.get());
  const std::string file = serialized(scene);
  const Result<Scene> read = deserialized(file.substr(0, 348 + 7 * 4 + 1 + 20));
  ASSERT_TRUE(read.hasValue());
  EXPECT_EQ(groupBytes(&*read, VRDM_CLASS_KEYFRAME, 0, 0),
            std::string(20, 'x') + defaults.substr(20));
}

TEST(SceneDeserialize, ZeroesAssetBytesThatAreCutOff) {
  Scene scene = sceneWithId();
  addGraph(&scene, "0123456789");
  const std::string file = serialized(scene);
  const Result<Scene> read = deserialized(file.substr(0, 348 + 6 * 4 + 1 + 16 + 24 + 4));
  ASSERT_TRUE(read.hasValue());
  const AssetStorage* storage = *vrdmGetAssetStorage(&*read, VRDM_CLASS_MATERIAL_GRAPH, 0, nullptr);
  EXPECT_EQ(std::string(static_cast<const char*>(storage->data), storage->size),
            std::string("0123\0\0\0\0\0\0", 10));
}

TEST(SceneDeserialize, ZeroesTextThatIsCutOff) {
  Scene scene = sceneWithId();
  vrdmAddProgram(&scene, VRDM_CLASS_CAMERA_PROGRAM, "program");
  const std::string file = serialized(scene);
  const Result<Scene> read = deserialized(file.substr(0, 348 + 4 + 1 + 4 + 4));
  ASSERT_TRUE(read.hasValue());
  EXPECT_STREQ(vrdmGetProgramSource(&*read, VRDM_CLASS_CAMERA_PROGRAM, 0), "prog");
  EXPECT_TRUE(*vrdmGetUniqueId(&*read, VRDM_CLASS_CAMERA_PROGRAM, 0) ==
              UniqueId::hash("prog\0\0\0", 7));
}

TEST(SceneDeserialize, RunsOutOfMemoryOnImpossibleAssets) {
  // Sizes that no memory holds, with descriptors whose numbers are negative or too large.
  const auto fileWith = [](std::uint32_t objectClass, const std::function<void(Bytes&)>& desc) {
    Bytes file;
    appendHeader(file);
    file.zeros(objectClass * 4).word(1).flag(1).zeros(16);
    desc(file);
    return file.str();
  };
  const std::string files[] = {
      fileWith(VRDM_CLASS_MESH,
               [](Bytes& file) {
                 file.words({-1, 0, 0, 0});
               }),
      fileWith(VRDM_CLASS_MESH,
               [](Bytes& file) {
                 file.words({0, -1, 0, 0});
               }),
      fileWith(VRDM_CLASS_MESH,
               [](Bytes& file) {
                 file.words({0, 1, -9, 0});
               }),
      fileWith(VRDM_CLASS_MESH,
               [](Bytes& file) {
                 file.words({INT32_MIN, 0, 0, 3});
               }),
      fileWith(VRDM_CLASS_TEXTURE,
               [](Bytes& file) {
                 file.words({INT32_MAX, INT32_MAX, INT32_MAX, 27, 0x8000});
               }),
      fileWith(VRDM_CLASS_MATERIAL_GRAPH, [](Bytes& file) { file.longWord(UINT64_MAX).zeros(16); }),
      fileWith(VRDM_CLASS_MATERIAL_GRAPH,
               [](Bytes& file) { file.longWord(UINT64_MAX - 32).zeros(16); })};
  for (const std::string& file : files) EXPECT_THROW(deserialized(file), std::bad_alloc);
}

#if !defined(__SANITIZE_THREAD__)
// The thread sanitizer ends the process instead.
TEST(SceneDeserialize, RunsOutOfMemoryOnAnImpossibleSlotCount) {
  Bytes file;
  appendHeader(file);
  file.zeros(15 * 4).word(0xFFFFFFFFU);
  EXPECT_THROW(deserialized(file.str()), std::bad_alloc);
}
#endif

TEST(SceneDeserialize, RaisesTheErrorOfAValueThatCannotBeRead) {
  const Golden golden;
  std::string file = golden.file.str();
  const std::size_t text = golden.values[0].second - 10;
  file[text] = '?';
  try {
    deserialized(file);
    ADD_FAILURE() << "no exception";
  } catch (const vrnt::Exception& caught) {
    EXPECT_EQ(caught.code(), ErrorCode::UnknownError);
    EXPECT_EQ(std::string(caught.what()).rfind("Unable to parse type: ? int a; }", 0), 0U)
        << caught.what();
  }
}

// A value of `{ int* a; int* b; }` whose references lead to one block.
ValueHandle sharingValue(std::int32_t target) {
  const TypeHandle intType = parseType("int");
  const TypeHandle type = parseType("{ int* a; int* b; }");
  vrntValuesError_t* error = nullptr;
  vrntValue_t* referee = vrntValueCreate(intType.get(), &error);
  vrntValueWrite(&referee, 0, &target, sizeof(target), &error);
  const ValueHandle owner(referee);
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  for (std::uint32_t field = 0; field < 2; ++field) {
    vrntValueView_t view;
    vrntValueStructField(&view, type.get(), field);
    vrntValueSetReference(&value, &view, owner.get(), &error);
  }
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

TEST(SceneDeserialize, KeepsTheSharingWithinAValue) {
  Scene scene = sceneWithId();
  for (std::int32_t i = 0; i < 2; ++i) {
    addInstance(&scene, VRDM_CLASS_LIGHT);
    const ValueHandle value = sharingValue(40 + i);
    vrdmSetInstanceValue(&scene, VRDM_CLASS_LIGHT, i, value.get());
  }
  const Result<Scene> read = deserialized(serialized(scene));
  ASSERT_TRUE(read.hasValue());
  for (std::int32_t i = 0; i < 2; ++i) {
    const ValueHandle value(vrdmGetInstanceValue(&*read, VRDM_CLASS_LIGHT, i));
    EXPECT_EQ(typeTextOf(value), "{ int* a; int* b; }");
    EXPECT_NE(readAt<std::uint64_t>(value, 0), 0U);
    EXPECT_EQ(readAt<std::uint64_t>(value, 0), readAt<std::uint64_t>(value, 8));
    vrntValueView_t view;
    vrntValueStructField(&view, vrntValueType(value.get()), 1);
    const ValueHandle referee(vrntValueDereference(value.get(), &view));
    EXPECT_EQ(readAt<std::int32_t>(referee), 40 + i);
  }
}

TEST(SceneDeserialize, GivesEachObjectAValueOfItsOwn) {
  Scene scene = sceneWithId();
  const ValueHandle value = smallValue(3);
  for (std::int32_t i = 0; i < 2; ++i) {
    addInstance(&scene, VRDM_CLASS_MATERIAL);
    vrdmSetInstanceValue(&scene, VRDM_CLASS_MATERIAL, i, value.get());
  }
  EXPECT_EQ(value->refCount, 3U);
  const Result<Scene> read = deserialized(serialized(scene));
  EXPECT_EQ(value->refCount, 3U);
  const ValueHandle a(vrdmGetInstanceValue(&*read, VRDM_CLASS_MATERIAL, 0));
  const ValueHandle b(vrdmGetInstanceValue(&*read, VRDM_CLASS_MATERIAL, 1));
  EXPECT_NE(a, b);
  EXPECT_EQ(readAt<std::int32_t>(a), 3);
  EXPECT_EQ(readAt<std::int32_t>(b), 3);
}

// Notes the size of each call and takes or gives the bytes until a limit.
class CallBuffer : public std::streambuf {
 public:
  explicit CallBuffer(std::size_t limit = SIZE_MAX) : limit_(limit) {}
  explicit CallBuffer(std::string bytes) : bytes_(std::move(bytes)) {}

  const std::vector<std::size_t>& calls() const { return calls_; }
  const std::string& bytes() const { return bytes_; }

 protected:
  std::streamsize xsputn(const char* bytes, std::streamsize size) override {
    calls_.push_back(static_cast<std::size_t>(size));
    const std::size_t room = std::min(static_cast<std::size_t>(size), limit_ - bytes_.size());
    bytes_.append(bytes, room);
    return static_cast<std::streamsize>(room);
  }
  std::streamsize xsgetn(char* bytes, std::streamsize size) override {
    calls_.push_back(static_cast<std::size_t>(size));
    const std::size_t given = std::min(static_cast<std::size_t>(size), bytes_.size() - next_);
    bytes_.copy(bytes, given, next_);
    next_ += given;
    return static_cast<std::streamsize>(given);
  }
  int_type underflow() override { return traits_type::eof(); }

 private:
  std::size_t limit_ = SIZE_MAX;
  std::size_t next_ = 0;
  std::string bytes_;
  std::vector<std::size_t> calls_;
};

// A scene of one camera, and the calls that its items take.
struct CallScene {
  Scene scene = sceneWithId();
  std::vector<std::size_t> calls;

  CallScene() {
    addGraph(&scene, "0123456789");
    addInstance(&scene, VRDM_CLASS_CAMERA);
    setValue(scene, VRDM_CLASS_CAMERA, 0, 1);
    calls = {8, 4, 16, 320};
    calls.insert(calls.end(), 5, 4);
    calls.insert(calls.end(), {4, 1, 16, 24, 10});
    calls.insert(calls.end(), 2, 4);
    calls.insert(calls.end(), {4, 1, 12, 208, 8, 10, 8, 4});
    calls.insert(calls.end(), 9, 4);
  }
};

TEST(SceneSerialize, TakesOneCallForEachItem) {
  const CallScene expected;
  CallBuffer buffer;
  std::ostream stream(&buffer);
  Scene::serialize(expected.scene, stream);
  EXPECT_EQ(buffer.calls(), expected.calls);
}

TEST(SceneDeserialize, TakesOneCallForEachItem) {
  const CallScene expected;
  CallBuffer buffer(serialized(expected.scene));
  std::istream stream(&buffer);
  EXPECT_TRUE(Scene::deserialize(stream, UniqueId::null()).hasValue());
  EXPECT_EQ(buffer.calls(), expected.calls);
}

TEST(SceneSerialize, LeavesAStreamFailedThatFailsAtAnyByte) {
  const Golden golden;
  for (std::size_t limit = 0; limit < golden.file.size(); limit += 3) {
    CallBuffer buffer(limit);
    std::ostream stream(&buffer);
    Scene::serialize(golden.scene, stream);
    EXPECT_TRUE(stream.fail());
    const std::string expected = golden.file.str().substr(0, limit);
    ASSERT_TRUE(buffer.bytes() == expected) << where(buffer.bytes(), expected);
  }
}

TEST(SceneSerialize, LetsAStreamsOwnExceptionsPass) {
  const Golden golden;
  CallBuffer buffer(100);
  std::ostream stream(&buffer);
  stream.exceptions(std::ios::badbit);
  EXPECT_THROW(Scene::serialize(golden.scene, stream), std::ios::failure);
}

TEST(SceneSerialize, RaisesAStreamsFailureWithinAValueAsTheValueLayersError) {
  const Golden golden;
  CallBuffer buffer(golden.values[0].second);
  std::ostream stream(&buffer);
  stream.exceptions(std::ios::badbit);
  EXPECT_THROW(Scene::serialize(golden.scene, stream), vrnt::Exception);
}

TEST(SceneDeserialize, LetsAStreamsOwnExceptionsPass) {
  const Golden golden;
  std::istringstream stream(golden.file.str().substr(0, 400));
  stream.exceptions(std::ios::failbit);
  EXPECT_THROW(Scene::deserialize(stream, UniqueId::null()), std::ios::failure);
}

// A folder that goes with all that is in it.
class SceneFile : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() /
              ("scene_file_test_" +
               std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) + "_" +
               std::to_string(std::hash<std::string>()(idText(&unique_))));
    std::filesystem::create_directories(folder_);
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }

  std::string path(const char* name) const {
    const std::u8string text = (folder_ / reinterpret_cast<const char8_t*>(name)).u8string();
    return std::string(text.begin(), text.end());
  }
  std::filesystem::path place(const char* name) const {
    return folder_ / reinterpret_cast<const char8_t*>(name);
  }

  void writeFile(const char* name, const std::string& bytes) const {
    std::ofstream(place(name), std::ios::binary) << bytes;
  }
  std::string readFile(const char* name) const {
    std::ifstream stream(place(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  }

 private:
  UniqueId unique_ = UniqueId::generate();
  std::filesystem::path folder_;
};

TEST_F(SceneFile, HoldsWhatTheStreamWouldHold) {
  const Golden golden;
  vrdmSerialize(&golden.scene, path("scene.vrnscene").c_str());
  EXPECT_EQ(readFile("scene.vrnscene"), golden.file.str());
  const SceneHandle read(vrdmDeserialize(path("scene.vrnscene").c_str()));
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(idText(vrdmSceneId(read.get())), idText(vrdmSceneId(&golden.scene)));
  EXPECT_EQ(vrdmGetReference(read.get(), VRDM_CLASS_CAMERA, 0, 2), 5);
}

TEST_F(SceneFile, IsNamedInUtf8) {
  const char name[] = "sz\xC3\xA9ne \xE5\xA0\xB4\xE9\x9D\xA2.vrnscene";
  const SceneHandle scene = newScene();
  vrdmSerialize(scene.get(), path(name).c_str());
  EXPECT_TRUE(std::filesystem::exists(place(name)));
  const SceneHandle read(vrdmDeserialize(path(name).c_str()));
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(idText(vrdmSceneId(read.get())), idText(vrdmSceneId(scene.get())));
}

TEST_F(SceneFile, IsReplacedWhole) {
  writeFile("scene", std::string(100000, 'x'));
  const Scene scene = sceneWithId();
  vrdmSerialize(&scene, path("scene").c_str());
  EXPECT_EQ(readFile("scene"), serialized(scene));
}

TEST_F(SceneFile, IsNotMadeInAFolderThatDoesNotExist) {
  const SceneHandle scene = newScene();
  vrdmSerialize(scene.get(), path("none/scene").c_str());
  EXPECT_FALSE(std::filesystem::exists(place("none/scene")));
  EXPECT_FALSE(std::filesystem::exists(place("none")));
}

TEST_F(SceneFile, IsNullIfItCannotBeRead) {
  EXPECT_EQ(vrdmDeserialize(path("none").c_str()), nullptr);
  EXPECT_EQ(vrdmDeserialize(path("").c_str()), nullptr);
  EXPECT_EQ(vrdmDeserialize(""), nullptr);
  writeFile("empty", "");
  EXPECT_EQ(vrdmDeserialize(path("empty").c_str()), nullptr);
  writeFile("short", "VRNS");
  EXPECT_EQ(vrdmDeserialize(path("short").c_str()), nullptr);
  writeFile("header", "not a scene at all");
  EXPECT_EQ(vrdmDeserialize(path("header").c_str()), nullptr);
  writeFile("version", std::string("VRNSCENE\xAC\0\0\0", 12));
  EXPECT_EQ(vrdmDeserialize(path("version").c_str()), nullptr);
}

TEST_F(SceneFile, RaisesTheErrorOfAValueThatCannotBeRead) {
  const Golden golden;
  writeFile("cut", golden.file.str().substr(0, golden.values[0].second - 1));
  EXPECT_THROW(vrdmDeserialize(path("cut").c_str()), vrnt::Exception);
}

TEST_F(SceneFile, HoldsLargeAssetsAmongSmallItems) {
  Scene scene = sceneWithId();
  // Around the sizes of stream buffers and of blocks that are allocated apart.
  std::vector<std::string> contents;
  for (const std::size_t size : {std::size_t{100}, (std::size_t{1} << 20) - 1, std::size_t{1} << 20,
                                 (std::size_t{9} << 20) + 3}) {
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(i * 31 + (i >> 12));
    addGraph(&scene, bytes);
    contents.push_back(std::move(bytes));
  }
  for (int i = 0; i < 3000; ++i) vrdmCreateInstance(&scene, VRDM_CLASS_SHAPE);
  vrdmSerialize(&scene, path("scene").c_str());
  const SceneHandle read(vrdmDeserialize(path("scene").c_str()));
  ASSERT_NE(read, nullptr);
  for (std::size_t i = 0; i < contents.size(); ++i) {
    const AssetStorage* storage = *vrdmGetAssetStorage(read.get(), VRDM_CLASS_MATERIAL_GRAPH,
                                                       static_cast<std::int32_t>(i), nullptr);
    ASSERT_EQ(storage->size, contents[i].size());
    EXPECT_EQ(std::memcmp(storage->data, contents[i].data(), contents[i].size()), 0) << i;
  }
  EXPECT_EQ(serialized(*read), serialized(scene));
}

}  // namespace
