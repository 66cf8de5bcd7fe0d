// Scenes that end themselves, and the calls that every test of them makes.
#ifndef VORNATH_TESTS_SCENE_SCENES_HPP
#define VORNATH_TESTS_SCENE_SCENES_HPP

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "../support/flat_handles.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {

constexpr std::uint32_t kNothingAdded = 0xFFFFFFFFU;
constexpr std::int32_t kNoTarget = INT32_MIN;

// The numbers of the classes of a kind.
template <vrnt::data::ObjectKind Kind>
constexpr auto classesOfKind() {
  constexpr auto forEachOfKind = [](auto&& callback) {
    vrnt::data::forEachClass([&callback](auto tag) {
      using Info = vrnt::data::ClassInfo<typename decltype(tag)::Desc>;
      if (Info::kKind == Kind) callback(static_cast<std::uint32_t>(Info::kClass));
    });
  };
  constexpr std::size_t count = [forEachOfKind] {
    std::size_t found = 0;
    forEachOfKind([&found](std::uint32_t) { ++found; });
    return found;
  }();
  std::array<std::uint32_t, count> numbers{};
  std::size_t next = 0;
  forEachOfKind([&](std::uint32_t number) { numbers[next++] = number; });
  return numbers;
}

inline constexpr auto kPrograms = classesOfKind<vrnt::data::ObjectKind::Program>();
inline constexpr auto kAssets = classesOfKind<vrnt::data::ObjectKind::Asset>();
inline constexpr auto kInstances = classesOfKind<vrnt::data::ObjectKind::Instance>();

inline constexpr std::array<std::uint32_t, 3> kWithValue = {VRDM_CLASS_CAMERA, VRDM_CLASS_LIGHT,
                                                            VRDM_CLASS_MATERIAL};

// Class numbers that are none.
inline constexpr std::array<std::uint32_t, 4> kNoClasses = {
    vrnt::data::kClassCount, vrnt::data::kClassCount + 1, 100, 0xFFFFFFFFU};

inline SceneHandle newScene() {
  SceneHandle scene(vrdmCreateScene());
  EXPECT_NE(scene, nullptr);
  return scene;
}

inline StorageHandle newStorage(const std::string& bytes) {
  StorageHandle storage(vrdmAssetStorageCopy(bytes.data(), bytes.size()));
  EXPECT_NE(storage, nullptr);
  return storage;
}

// Adds a material graph: the asset whose size is any number of bytes.
inline std::uint32_t addGraph(vrdmScene_t* scene, const std::string& bytes) {
  const std::array<std::uint64_t, 3> desc = {bytes.size(), 0, 0};
  const StorageHandle storage = newStorage(bytes);
  AssetStorage* handle = storage.get();
  return vrdmAddAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
}

// Adds an object of any class, with what that class needs.
inline std::uint32_t addObject(vrdmScene_t* scene, std::uint32_t objectClass) {
  switch (vrdmObjectClass(objectClass)) {
    case VRDM_KIND_PROGRAM:
      return vrdmAddProgram(scene, objectClass, "a program");
    case VRDM_KIND_ASSET: {
      const std::array<std::uint64_t, 3> desc = {};
      const StorageHandle storage = newStorage("");
      AssetStorage* handle = storage.get();
      return vrdmAddAsset(scene, objectClass, desc.data(), &handle);
    }
    default:
      return vrdmCreateInstance(scene, objectClass);
  }
}

inline std::int32_t addInstance(vrdmScene_t* scene, std::uint32_t objectClass) {
  return static_cast<std::int32_t>(vrdmCreateInstance(scene, objectClass));
}

// The bytes of a group of an object.
inline std::string groupBytes(const vrdmScene_t* scene, std::uint32_t objectClass,
                              std::int32_t index, std::uint32_t group) {
  const ValueHandle value(vrdmGetDataValue(scene, objectClass, index, group));
  if (!value) return "no value";
  return std::string(static_cast<const char*>(vrntValueData(value.get())),
                     vrntTypeSize(vrntValueType(value.get())));
}

// A value of a group's type with these bytes.
inline ValueHandle groupValue(std::uint32_t objectClass, std::uint32_t group,
                              const std::string& bytes) {
  const TypeHandle type(vrdmFieldType(objectClass, group));
  EXPECT_NE(type, nullptr);
  EXPECT_EQ(vrntTypeSize(type.get()), bytes.size());
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  EXPECT_NE(value, nullptr);
  vrntValueWrite(&value, 0, bytes.data(), bytes.size(), &error);
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

template <typename T>
T readBytes(const std::string& bytes, std::size_t offset) {
  T result{};
  EXPECT_LE(offset + sizeof(T), bytes.size());
  if (offset + sizeof(T) <= bytes.size()) std::memcpy(&result, bytes.data() + offset, sizeof(T));
  return result;
}

inline std::vector<std::int32_t> listOf(const vrdmScene_t* scene, std::uint32_t objectClass,
                                        std::int32_t index, std::uint32_t slot) {
  const std::int32_t* words = vrdmGetReferenceList(scene, objectClass, index, slot);
  const std::int32_t count = vrdmGetReferenceCount(scene, objectClass, index, slot);
  return words ? std::vector<std::int32_t>(words, words + count) : std::vector<std::int32_t>();
}

inline void setList(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                    std::uint32_t slot, const std::vector<std::int32_t>& words) {
  ASSERT_TRUE(vrdmSetReferenceCount(scene, objectClass, index, slot,
                                    static_cast<std::uint32_t>(words.size())));
  std::int32_t* place = vrdmModifyReferenceList(scene, objectClass, index, slot);
  for (std::size_t i = 0; i < words.size(); ++i) place[i] = words[i];
}

inline std::string idText(const vrnt::UniqueId* id) {
  return id ? std::string(reinterpret_cast<const char*>(id->begin()), 16) : "no id";
}

// All counters of a scene, to see which of them a call raised.
struct Counters {
  explicit Counters(const vrdmScene_t* scene) : versions(scene->versions) {}

  vrnt::data::SceneVersions versions;
};

inline bool operator==(const Counters& a, const Counters& b) {
  return a.versions.version == b.versions.version && a.versions.groups == b.versions.groups &&
         a.versions.classes == b.versions.classes;
}

// The counters that stand behind `before` once a class has changed that many times.
inline Counters afterClassChange(Counters before, std::uint32_t objectClass,
                                 std::uint32_t times = 1) {
  before.versions.version += times;
  before.versions.classes[objectClass] += times;
  return before;
}

}  // namespace vornath_test

#endif
