// Which slot an addition takes, against the rule that says it in one step at a time, and how many
// slots are looked at to find it.
#include <algorithm>
#include <optional>
#include <random>
#include <set>
#include <sstream>

#include "scenes.hpp"
#include "vornath_data/detail/slot_set.hpp"

namespace {

using namespace vornath_test;
using vrnt::data::Container;
using vrnt::data::Scene;
using vrnt::detail::SlotSet;

std::uint32_t pick(std::mt19937& random, std::uint32_t count) {
  return std::uniform_int_distribution<std::uint32_t>(0, count - 1)(random);
}

TEST(SlotSet, AnswersLikeASetOfNumbers) {
  std::mt19937 random(1);
  for (const std::uint32_t most : {3U, 64U, 65U, 4096U, 5000U, 300000U}) {
    SlotSet set;
    std::set<std::uint32_t> model;
    EXPECT_EQ(set.next(0), SlotSet::kNone);
    for (int step = 0; step < 5000; ++step) {
      // Numbers in clusters and far ones, the largest late, so that the set grows with members.
      const std::uint32_t slot = pick(random, 1 + most * static_cast<std::uint32_t>(step) / 5000);
      if (pick(random, 3) != 0) {
        ASSERT_TRUE(set.insert(slot));
        model.insert(slot);
      } else {
        set.erase(slot);
        model.erase(slot);
      }
      const std::uint32_t from = pick(random, most + 2);
      const auto next = model.lower_bound(from);
      ASSERT_EQ(set.next(from), next == model.end() ? SlotSet::kNone : *next);
    }
    while (!model.empty()) {
      ASSERT_EQ(set.next(0), *model.begin());
      set.erase(*model.begin());
      model.erase(model.begin());
    }
    EXPECT_EQ(set.next(0), SlotSet::kNone);
  }
}

// The rule: what is taken next, by steps of one.
struct Model {
  std::vector<bool> live;
  std::uint32_t firstFree = 0;

  std::uint32_t allocate() {
    const std::uint32_t chosen = firstFree;
    if (chosen >= live.size()) {
      live.push_back(false);
      firstFree = chosen + 1;
    } else {
      step();
    }
    return chosen;
  }
  void step() {
    do {
      ++firstFree;
    } while (firstFree < live.size() && live[firstFree]);
  }
  void freed(std::uint32_t index) {
    live[index] = false;
    firstFree = std::min(firstFree, index);
  }
};

struct Probed {
  static inline std::uint64_t probes = 0;
  bool used = false;

  bool live() const {
    ++probes;
    return used;
  }
};

TEST(Container, TakesTheSlotsThatStepsOfOneWouldTake) {
  for (std::uint32_t seed = 0; seed < 200; ++seed) {
    std::mt19937 random(seed);
    Container<Probed> container;
    Model model;
    const std::uint32_t kinds = 4 + pick(random, 7);
    for (int step = 0; step < 600; ++step) {
      const auto size = static_cast<std::uint32_t>(model.live.size());
      switch (pick(random, kinds)) {
        case 0:
        case 1:
        case 2: {
          const std::uint32_t chosen = model.allocate();
          ASSERT_EQ(container.allocate(), chosen) << "seed " << seed << " step " << step;
          container.slots[chosen].used = true;
          model.live[chosen] = true;
          break;
        }
        case 3:
        case 4:
        case 5:
          if (size == 0) break;
          {
            const std::uint32_t index = pick(random, size);
            container.slots[index].used = false;
            container.freed(static_cast<std::int32_t>(index));
            model.freed(index);
          }
          break;
        case 6: {  // what is placed isn't live
          const std::uint32_t chosen = model.allocate();
          ASSERT_EQ(container.allocate(), chosen) << "seed " << seed << " step " << step;
          container.leftFree(chosen);
          container.slots[chosen].used = model.live[chosen] = false;
          break;
        }
        case 7:  // free slots behind the last
          if (pick(random, 8) != 0) break;
          container.grow(size + pick(random, 40));
          model.live.resize(container.size());
          break;
        case 8:  // a free slot is filled, and the container told
          if (size == 0) break;
          {
            const std::uint32_t index = pick(random, size);
            container.slots[index].used = model.live[index] = true;
            container.occupied(index);
            if (model.firstFree == index) model.step();
          }
          break;
        case 9:  // a free slot comes to life unnoticed
          if (size == 0) break;
          {
            const std::uint32_t index = pick(random, size);
            container.slots[index].used = model.live[index] = true;
          }
          break;
        default: {  // another owner
          Container<Probed> moved(std::move(container));
          EXPECT_EQ(container.size(), 0U);
          EXPECT_EQ(container.firstFree, 0U);
          container = std::move(moved);
        }
      }
      ASSERT_EQ(container.firstFree, model.firstFree) << "seed " << seed << " step " << step;
      ASSERT_EQ(container.size(), model.live.size());
    }
  }
}

std::uint32_t add(Container<Probed>& container) {
  const std::uint32_t chosen = container.allocate();
  container.slots[chosen].used = true;
  return chosen;
}

void remove(Container<Probed>& container, std::uint32_t index) {
  container.slots[index].used = false;
  container.freed(static_cast<std::int32_t>(index));
}

TEST(Container, LooksAtOneSlotToFindTheNextFreeOne) {
  constexpr std::uint32_t kSlots = 100000;
  Container<Probed> container;
  Probed::probes = 0;
  for (std::uint32_t i = 0; i < kSlots; ++i) add(container);
  EXPECT_EQ(Probed::probes, 0U);
  // The first slot again and again, beside all others.
  for (int i = 0; i < 1000; ++i) {
    remove(container, 0);
    ASSERT_EQ(add(container), 0U);
  }
  EXPECT_EQ(Probed::probes, 0U);
  EXPECT_EQ(container.firstFree, kSlots);
  // Gaps that lie far apart: each is looked at once.
  for (std::uint32_t i = 0; i < kSlots; i += 1000) remove(container, i);
  for (std::uint32_t i = 0; i < kSlots; i += 1000) ASSERT_EQ(add(container), i);
  EXPECT_LE(Probed::probes, kSlots / 1000);
  // All of them, from behind.
  Probed::probes = 0;
  for (std::uint32_t i = kSlots; i-- != 0;) remove(container, i);
  for (std::uint32_t i = 0; i < kSlots; ++i) ASSERT_EQ(add(container), i);
  EXPECT_LE(Probed::probes, kSlots);
  remove(container, 0);
  Probed::probes = 0;
  EXPECT_EQ(add(container), 0U);
  EXPECT_EQ(Probed::probes, 0U);
}

TEST(Container, LooksOnceAtEachSlotThatCameToLifeUnnoticed) {
  constexpr std::uint32_t kSlots = 1000;
  Container<Probed> container;
  container.grow(kSlots);
  for (std::uint32_t i = 0; i < kSlots; ++i) container.slots[i].used = true;
  EXPECT_EQ(container.allocate(), 0U);
  EXPECT_EQ(container.firstFree, kSlots);
  Probed::probes = 0;
  for (int i = 0; i < 100; ++i) {
    remove(container, 0);
    ASSERT_EQ(add(container), 0U);
  }
  EXPECT_EQ(Probed::probes, 0U);
}

// The same through the calls of hosts, with a model for each class of the scene.
class SceneModel {
 public:
  explicit SceneModel(std::uint32_t seed) : random_(seed), scene_(newScene()) {}

  void step() {
    static constexpr std::uint32_t kClasses[] = {
        VRDM_CLASS_CAMERA_PROGRAM, VRDM_CLASS_LIGHT_PROGRAM,  VRDM_CLASS_MESH,
        VRDM_CLASS_TEXTURE,        VRDM_CLASS_MATERIAL_GRAPH, VRDM_CLASS_KEYFRAME,
        VRDM_CLASS_DECAL_LIST,     VRDM_CLASS_SHAPE};
    const std::uint32_t c = kClasses[pick(random_, std::size(kClasses))];
    Model& model = models_[c];
    const auto size = static_cast<std::uint32_t>(model.live.size());
    switch (pick(random_, 40)) {
      case 0:
        throughAFile();
        break;
      case 1:
        import();
        break;
      case 2:
      case 3:
      case 4:
        if (vrdmObjectClass(c) == VRDM_KIND_ASSET) addWithoutData(c);
        break;
      case 5:
      case 6:
      case 7:
      case 8:
        if (vrdmObjectClass(c) == VRDM_KIND_ASSET && size != 0) update(c, pick(random_, size));
        break;
      default:
        if (size < 3 || pick(random_, 2) == 0) {
          const std::uint32_t chosen = model.allocate();
          ASSERT_EQ(addObject(scene_.get(), c), chosen);
          model.live[chosen] = true;
        } else {
          const std::uint32_t index = pick(random_, size);
          ASSERT_TRUE(vrdmRemove(scene_.get(), c, static_cast<std::int32_t>(index)));
          model.freed(index);
        }
    }
  }

  void compare() const {
    vrnt::data::forEachClass([this](auto tag) {
      using Desc = typename decltype(tag)::Desc;
      const auto c = static_cast<std::uint32_t>(vrnt::data::ClassInfo<Desc>::kClass);
      const auto& container = std::as_const(*scene_).template container<Desc>();
      ASSERT_EQ(container.size(), models_[c].live.size()) << c;
      ASSERT_EQ(container.firstFree, models_[c].firstFree) << c;
      for (std::uint32_t i = 0; i < container.size(); ++i) {
        ASSERT_EQ(container.slots[i].live(), models_[c].live[i]) << c << " " << i;
      }
    });
  }

 private:
  void addWithoutData(std::uint32_t c) {
    const std::array<std::uint64_t, 3> desc = {};
    const StorageHandle storage(vrdmAssetStorageWrap(nullptr, 0, nullptr));
    AssetStorage* handle = pick(random_, 2) == 0 ? storage.get() : nullptr;
    const std::uint32_t chosen = models_[c].allocate();
    ASSERT_EQ(vrdmAddAsset(scene_.get(), c, desc.data(), &handle), chosen);
    // It may have been brought to life in place.
    models_[c].live[chosen] = false;
  }

  void update(std::uint32_t c, std::uint32_t index) {
    const std::array<std::uint64_t, 3> desc = {};
    ASSERT_TRUE(
        vrdmUpdateAsset(scene_.get(), c, static_cast<std::int32_t>(index), desc.data(), ""));
    models_[c].live[index] = true;
  }

  // A reader makes all slots free and fills those that were live in order.
  void throughAFile() {
    std::stringstream stream;
    Scene::serialize(*scene_, stream);
    auto read = Scene::deserialize(stream, vrnt::UniqueId());
    ASSERT_TRUE(read);
    *scene_ = std::move(read).value();
    for (Model& model : models_) {
      Model fresh;
      for (std::uint32_t i = 0; i < model.live.size(); ++i) {
        fresh.live.push_back(model.live[i]);
        if (model.live[i] && fresh.firstFree == i) fresh.step();
      }
      model = fresh;
    }
  }

  // Another scene's assets fill gaps; its instances come behind the last slot, the live ones first.
  void import() {
    Scene source;
    for (std::uint32_t i = 0; i < 3; ++i) {
      addObject(&source, VRDM_CLASS_MESH);
      addObject(&source, VRDM_CLASS_SHAPE);
      addObject(&source, VRDM_CLASS_KEYFRAME);
    }
    vrdmRemove(&source, VRDM_CLASS_SHAPE, 1);
    scene_->import(source);
    for (int i = 0; i < 3; ++i) {
      Model& meshes = models_[VRDM_CLASS_MESH];
      meshes.live[meshes.allocate()] = true;
    }
    placeBehind(models_[VRDM_CLASS_KEYFRAME], 3, 3);
    placeBehind(models_[VRDM_CLASS_SHAPE], 3, 2);
  }

  static void placeBehind(Model& model, std::size_t slots, std::size_t live) {
    const std::size_t first = model.live.size();
    model.live.resize(first + slots);
    for (std::size_t i = first; i < first + live; ++i) {
      model.live[i] = true;
      if (model.firstFree == i) model.step();
    }
  }

  std::mt19937 random_;
  SceneHandle scene_;
  std::array<Model, vrnt::data::kClassCount> models_;
};

TEST(Slots, AreTakenInTheOrderOfStepsOfOneInEveryKindOfClass) {
  for (std::uint32_t seed = 0; seed < 40; ++seed) {
    SceneModel model(seed);
    for (int step = 0; step < 1500; ++step) {
      model.step();
      if (testing::Test::HasFatalFailure()) {
        FAIL() << "seed " << seed << " step " << step;
      }
      if (step % 50 == 0) model.compare();
    }
    model.compare();
    if (testing::Test::HasFatalFailure()) FAIL() << "seed " << seed;
  }
}

TEST(Assets, WithoutDataAreTakenByTheNextAdditionThatComesBy) {
  const SceneHandle scene = newScene();
  const std::array<std::uint64_t, 3> desc = {};
  for (std::uint32_t i = 0; i < 5; ++i) {
    AssetStorage* none = nullptr;
    const StorageHandle storage = newStorage("x");
    AssetStorage* some = storage.get();
    EXPECT_EQ(
        vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, desc.data(), i == 2 ? &none : &some),
        i);
  }
  EXPECT_EQ(addGraph(scene.get(), "y"), 5U);
  vrdmRemove(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, 1);
  EXPECT_EQ(addGraph(scene.get(), "y"), 1U);
  EXPECT_EQ(addGraph(scene.get(), "y"), 2U);
  EXPECT_EQ(addGraph(scene.get(), "y"), 6U);
}

}  // namespace
