// vrdmCountReferences against a count that reads every object each time, whatever was called or
// written before.
#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <tuple>

#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::data::Scene;

constexpr std::uint32_t kNumberOfClasses = vrnt::data::kClassCount;

// What hosts would have to read without the call.
std::uint32_t readReferences(const vrdmScene_t* scene, std::uint32_t target, std::int32_t index) {
  std::uint32_t count = 0;
  for (std::uint32_t c = 0; c < kNumberOfClasses; ++c) {
    const auto size = static_cast<std::int32_t>(vrdmContainerSize(scene, c));
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(c, slot);
      if (info.targetClass != target || info.kind == VRDM_REFERENCE_ORDERED_DECAL) continue;
      if (info.kind == VRDM_REFERENCE_OPTIONAL && index == -1) continue;
      for (std::int32_t i = 0; i < size; ++i) {
        if (!vrdmValid(scene, c, i)) continue;
        if (info.kind == VRDM_REFERENCE_LIST) {
          const std::int32_t* const words = vrdmGetReferenceList(scene, c, i, slot);
          const std::int32_t length = vrdmGetReferenceCount(scene, c, i, slot);
          count += static_cast<std::uint32_t>(words ? std::count(words, words + length, index) : 0);
        } else if (vrdmGetReference(scene, c, i, slot) == index) {
          ++count;
        }
      }
    }
  }
  return count;
}

constexpr std::int32_t kStrange[] = {-1, -2, 1000, 1000000, INT32_MAX, INT32_MIN, 12};

class Host {
 public:
  explicit Host(std::uint32_t seed) : random_(seed), scene_(newScene()) {
    // Some classes are counted from the start, some late, and some never while the scene changes.
    for (bool& counted : counted_) counted = pick(2) == 0;
  }

  void step() {
    // Few instances of many classes, so that slots are used again and again.
    const std::uint32_t c = kInstances[pick(kInstances.size())];
    const std::uint32_t slots = vrdmReferenceCount(c);
    const std::uint32_t slot = slots == 0 ? 0 : pick(slots);
    const std::uint32_t size = vrdmContainerSize(scene_.get(), c);
    const auto index = static_cast<std::int32_t>(size == 0 ? 0 : pick(size));
    const bool list = isList(c, slot);
    switch (pick(24)) {
      case 0:
      case 1:
      case 2:
        if (size < 12) add(c);
        break;
      case 3:
        addObject(scene_.get(), pick(VRDM_CLASS_KEYFRAME));
        break;
      case 4:
      case 5:
        if (size != 0) vrdmRemove(scene_.get(), c, index);
        break;
      case 6:
      case 7:
      case 8:
      case 9:
        if (size == 0 || slots == 0) break;
        if (list) {
          setLength(c, index, slot, pick(6));
        } else {
          vrdmSetReference(scene_.get(), c, index, slot, static_cast<std::uint32_t>(word()));
        }
        break;
      case 10:
      case 11:
      case 12:
        if (size != 0 && slots != 0) modify(c, index, slot);
        break;
      case 13:
      case 14:
      case 15:
      case 16:
        writeThroughAPointer();
        break;
      case 17:
        if (size != 0) updateTextures(c, index);
        break;
      case 18:
        if (pick(4) == 0) import();
        break;
      case 19:
        if (pick(4) == 0) throughAFile();
        break;
      case 20:
        if (pick(4) == 0) move();
        break;
      case 21:
        if (pick(20) == 0) openToWriting();
        break;
      case 22:
        writeWhatIsOpen();
        break;
      default:
        for (bool& counted : counted_) counted = counted || pick(40) == 0;
    }
  }

  void compare() {
    for (std::uint32_t c = 0; c < kNumberOfClasses; ++c) {
      if (!counted_[c]) continue;
      const auto size = static_cast<std::int32_t>(vrdmContainerSize(scene_.get(), c));
      for (std::int32_t index = 0; index < size + 2; ++index) compare(c, index);
      for (const std::int32_t index : kStrange) compare(c, index);
    }
  }

  void countAll() { counted_.fill(true); }

 private:
  using Place = std::tuple<std::uint32_t, std::int32_t, std::uint32_t>;  // class, index, slot

  std::uint32_t pick(std::size_t count) {
    return std::uniform_int_distribution<std::uint32_t>(
        0, static_cast<std::uint32_t>(count) - 1)(random_);
  }

  std::int32_t word() {
    if (pick(6) == 0) return kStrange[pick(std::size(kStrange))];
    return static_cast<std::int32_t>(pick(8));
  }

  static bool isList(std::uint32_t c, std::uint32_t slot) {
    const std::uint32_t kind = vrdmReferenceType(c, slot).kind;
    return kind != VRDM_REFERENCE_REQUIRED && kind != VRDM_REFERENCE_OPTIONAL;
  }

  void compare(std::uint32_t c, std::int32_t index) {
    ASSERT_EQ(vrdmCountReferences(scene_.get(), c, index), readReferences(scene_.get(), c, index))
        << vrdmObjectName(c) << " " << index;
  }

  void add(std::uint32_t c) {
    const std::int32_t added = addInstance(scene_.get(), c);
    forget(c);
    if (vrdmHasValue(c)) {
      vrdmSetInstanceValue(scene_.get(), c, added, values_[pick(values_.size())].get());
    }
  }

  // The pointers to the lists of a class end with an addition to it.
  void forget(std::uint32_t c) {
    for (auto pointer = pointers_.begin(); pointer != pointers_.end();) {
      pointer = std::get<0>(pointer->first) == c ? pointers_.erase(pointer) : std::next(pointer);
    }
  }

  void setLength(std::uint32_t c, std::int32_t index, std::uint32_t slot, std::uint32_t length) {
    const std::int32_t former = vrdmGetReferenceCount(scene_.get(), c, index, slot);
    ASSERT_TRUE(vrdmSetReferenceCount(scene_.get(), c, index, slot, length));
    if (former != static_cast<std::int32_t>(length)) pointers_.erase({c, index, slot});
  }

  void modify(std::uint32_t c, std::int32_t index, std::uint32_t slot) {
    std::int32_t* const words = vrdmModifyReferenceList(scene_.get(), c, index, slot);
    if (words) pointers_[{c, index, slot}] = words;
  }

  void writeThroughAPointer() {
    if (pointers_.empty()) return;
    auto pointer = pointers_.begin();
    std::advance(pointer, pick(pointers_.size()));
    const auto [c, index, slot] = pointer->first;
    const std::int32_t length = vrdmGetReferenceCount(scene_.get(), c, index, slot);
    ASSERT_GT(length, 0);
    pointer->second[pick(static_cast<std::size_t>(length))] = word();
  }

  void updateTextures(std::uint32_t c, std::int32_t index) {
    vrdmUpdateTextureReferences(scene_.get(), c, index);
    if (c == VRDM_CLASS_LIGHT || c == VRDM_CLASS_MATERIAL) pointers_.erase({c, index, 2});
  }

  void import() {
    if (pick(4) == 0) {
      for (const std::uint32_t c : kInstances) {
        if (vrdmContainerSize(scene_.get(), c) > 12) return;
      }
      scene_->import(*scene_);
    } else {
      Host other(pick(1000));
      for (int i = 0; i < 60; ++i) other.step();
      scene_->import(*other.scene_);
    }
    pointers_.clear();
  }

  void throughAFile() {
    std::stringstream stream;
    Scene::serialize(*scene_, stream);
    auto read = Scene::deserialize(stream, vrnt::UniqueId());
    ASSERT_TRUE(read);
    *scene_ = std::move(read).value();
    pointers_.clear();
  }

  // Pointers to elements stay good: no element moves.
  void move() {
    if (pick(2) == 0) {
      const SceneHandle moved(new Scene(std::move(*scene_)));
      EXPECT_EQ(vrdmContainerSize(scene_.get(), VRDM_CLASS_SHAPE), 0U);
      EXPECT_EQ(vrdmCountReferences(scene_.get(), VRDM_CLASS_MATERIAL, -1), 0U);
      *scene_ = std::move(*moved);
    } else {
      SceneHandle moved(new Scene(std::move(*scene_)));
      if (shapes_ || bakes_) {
        // What was handed out belongs to the former scene: back with it.
        *scene_ = std::move(*moved);
      } else {
        scene_ = std::move(moved);
      }
    }
  }

  // A C++ host takes a container to write to, and keeps it.
  void openToWriting() {
    if (pick(2) == 0) {
      shapes_ = &scene_->container<vrnt::data::ShapeDesc>();
    } else {
      bakes_ = &scene_->containers.get<vrnt::data::BakeTaskDesc>();
    }
  }

  void writeWhatIsOpen() {
    if (shapes_ && shapes_->size() != 0) {
      auto& shape = shapes_->slots[pick(shapes_->size())];
      shape.desc.material.index = word();
      shape.desc.mesh.index = word();
      shape.deleted = pick(4) == 0;
      if (shape.deleted) shapes_->freed(static_cast<std::int32_t>(&shape - shapes_->slots.begin()));
    }
    if (bakes_ && bakes_->size() != 0) {
      const std::uint32_t index = pick(bakes_->size());
      bakes_->slots[index].desc.shapes.words.assign(pick(4), word());
      pointers_.erase({VRDM_CLASS_BAKE_TASK, static_cast<std::int32_t>(index), 0});
    }
  }

  std::mt19937 random_;
  SceneHandle scene_;
  std::array<ValueHandle, 3> values_ = {
      parseValue("{ a = { texture_ref = 3; }; b = { float_texture = 3; }; }"),
      parseValue("{ a = { normal_texture = 1000000; }; b = { texture_ref = 1; }; }"),
      parseValue("{ a = 3; }")};
  std::array<bool, kNumberOfClasses> counted_{};
  std::map<Place, std::int32_t*> pointers_;
  vrnt::data::Container<vrnt::data::Instance<vrnt::data::ShapeDesc>>* shapes_ = nullptr;
  vrnt::data::Container<vrnt::data::Instance<vrnt::data::BakeTaskDesc>>* bakes_ = nullptr;
};

TEST(vrdmCountReferences, GivesWhatReadingEveryObjectGives) {
  for (std::uint32_t seed = 0; seed < 40; ++seed) {
    Host host(seed);
    for (int step = 0; step < 1200; ++step) {
      host.step();
      if (step % 3 == 0) host.compare();
      if (testing::Test::HasFatalFailure()) FAIL() << "seed " << seed << " step " << step;
    }
    host.countAll();
    host.compare();
    if (testing::Test::HasFatalFailure()) FAIL() << "seed " << seed;
  }
}

TEST(vrdmCountReferences, SeesWhatIsWrittenThroughAPointerToAList) {
  const SceneHandle scene = newScene();
  for (int i = 0; i < 2; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0, 3);
  std::int32_t* const words = vrdmModifyReferenceList(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, 7), 0U);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, -1), 3U);
  words[1] = 7;
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, 7), 1U);
  // Calls for other objects and slots leave the pointer good.
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 1, 0, 3);
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_KEYFRAME_LIST, 0, 0, 3);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME);
  vrdmRemove(scene.get(), VRDM_CLASS_KEYFRAME, 0);
  words[2] = 7;
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, 7), 2U);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, -1), 4U);
  // The addition ends it. What was written before counts.
  words[0] = 8;
  vrdmCreateInstance(scene.get(), VRDM_CLASS_KEYFRAME_LIST);
  vrdmRemove(scene.get(), VRDM_CLASS_KEYFRAME, 0);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, 7), 2U);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_KEYFRAME, 8), 1U);
}

TEST(vrdmCountReferences, SeesWhatIsWrittenToAContainer) {
  const SceneHandle scene = newScene();
  for (int i = 0; i < 2; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 5), 0U);
  auto& shapes = scene->container<vrnt::data::ShapeDesc>();
  shapes.at(0).desc.mesh.index = 5;
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 5), 1U);
  auto& shape = scene->containers.get<vrnt::data::ShapeDesc>().at(1);
  shape.desc.mesh.index = 5;
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 5), 2U);
  // The object moves along with its scene, the container stays behind.
  Scene moved(std::move(*scene));
  EXPECT_EQ(vrdmCountReferences(&moved, VRDM_CLASS_MESH, 5), 2U);
  shape.desc.mesh.index = 6;
  EXPECT_EQ(vrdmCountReferences(&moved, VRDM_CLASS_MESH, 5), 1U);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, -1), 0U);
  vrdmCreateInstance(scene.get(), VRDM_CLASS_SHAPE);
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 9), 0U);
  shapes.at(0).desc.mesh.index = 9;
  EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 9), 1U);
}

TEST(vrdmCountReferences, TakesAnyNumberOfWordsThatReferToNothing) {
  // Each of another number, so that no record of them is worth its memory.
  constexpr std::uint32_t kWords = 50000;
  const SceneHandle scene = newScene();
  const std::int32_t task = addInstance(scene.get(), VRDM_CLASS_BAKE_TASK);
  vrdmSetReferenceCount(scene.get(), VRDM_CLASS_BAKE_TASK, task, 0, kWords);
  std::int32_t* words = vrdmModifyReferenceList(scene.get(), VRDM_CLASS_BAKE_TASK, task, 0);
  for (std::uint32_t i = 0; i < kWords; ++i) words[i] = INT32_MIN + static_cast<int>(i * 3);
  const std::int32_t other = addInstance(scene.get(), VRDM_CLASS_BAKE_TASK);
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_SHAPE, INT32_MIN + 3), 1U);
    EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_SHAPE, INT32_MIN + 4), 0U);
    vrdmSetReferenceCount(scene.get(), VRDM_CLASS_BAKE_TASK, other, 0,
                          static_cast<std::uint32_t>(round) + 1);
    EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_SHAPE, -1),
              static_cast<std::uint32_t>(round) + 1);
  }
}

TEST(vrdmCountReferences, FollowsWordsOfTargetsThatAreAddedLater) {
  const SceneHandle scene = newScene();
  for (std::uint32_t i = 0; i < 300; ++i) {
    vrdmCreateInstance(scene.get(), VRDM_CLASS_IMAGE_TASK);
    vrdmSetReference(scene.get(), VRDM_CLASS_IMAGE_TASK, static_cast<std::int32_t>(i), 0, i / 2);
    EXPECT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_CAMERA, static_cast<int>(i / 2)),
              i % 2 + 1);
  }
  for (std::uint32_t i = 0; i < 150; ++i) {
    vrdmCreateInstance(scene.get(), VRDM_CLASS_CAMERA);
    vrdmSetReference(scene.get(), VRDM_CLASS_IMAGE_TASK, static_cast<std::int32_t>(2 * i), 0,
                     149 - i);
    for (std::int32_t camera = 0; camera < 150; ++camera) {
      ASSERT_EQ(vrdmCountReferences(scene.get(), VRDM_CLASS_CAMERA, camera),
                readReferences(scene.get(), VRDM_CLASS_CAMERA, camera));
    }
  }
}

}  // namespace
