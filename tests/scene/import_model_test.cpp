// Random scenes imported into random scenes, against a plain model of what an import does: the
// model keeps objects in vectors, searches from the front, and knows nothing of the library but its
// discovery queries.
#include <algorithm>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::data::RefMap;

using Words = std::vector<std::int32_t>;
using Pairs = std::vector<std::pair<std::int32_t, std::int32_t>>;
using AllPairs = std::vector<Pairs>;

constexpr std::uint32_t kClasses = vrnt::data::kClassCount;

// --- Values ---

// A value's text with textures in it: `#` stands for one that an import renumbers, `%` for one that
// it doesn't.
constexpr std::array<const char*, 9> kForms = {
    "7",
    "{ a = 1; }",
    "{ texture_ref = #; }",
    "{ x = { texture_ref = #; }; y = { f = 1.0; z = { texture_ref = #; }; }; }",
    "{ s = { spectrum_sphere_texture = { spectrum_sphere_texture = #; }; }; n = { texture_ref = #; "
    "}; }",
    "{ float_texture = { float_texture = #; }; wrapmode = { u = CLAMP : enum { CLAMP; BORDER; "
    "REPEAT; MIRROR; }; v = REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; }; }; border = "
    "float4(0.0, 0.5, 0.0, 1.0); }",
    "{ p = { t = { normal_texture = %; }; q = { texture_ref = #; }; }; }",
    "{ l = [ { texture_ref = % ; }, { texture_ref = %; } ]; r = &{ texture_ref = %; }; t = { "
    "texture_ref = #; }; }",
    "{ float_sphere_texture = { float_sphere_texture = %; }; }"};

struct ModelValue {
  std::size_t form = 0;
  Words numbers;  // one for each mark

  std::string text() const {
    std::string text;
    std::size_t next = 0;
    for (const char c : std::string(kForms[form])) {
      if (c == '#' || c == '%') {
        text += std::to_string(numbers[next++]);
      } else {
        text += c;
      }
    }
    return text;
  }

  // The marks in order.
  std::string marks() const {
    std::string marks;
    for (const char c : std::string(kForms[form])) {
      if (c == '#' || c == '%') marks += c;
    }
    return marks;
  }
};

std::string printed(const vrntValue_t* value) {
  vrntValuesError_t* error = nullptr;
  const vrntValueView_t whole{vrntValueType(value), 0};
  const StringHandle text(vrntValueString(value, &whole, 0, &error));
  EXPECT_NE(text, nullptr);
  return text ? text.get() : "";
}

// --- Scenes ---

struct ModelObject {
  bool live = false;
  std::string text;  // programs
  std::string id;    // programs and assets
  std::string desc;  // assets
  const AssetStorage* block = nullptr;
  std::vector<std::string> groups;  // instances
  std::vector<Words> slots;         // a single slot is a list of one
  std::optional<ModelValue> value;
  const vrntValue_t* valueBlock = nullptr;   // null for a copy of
  const vrntValue_t* formerBlock = nullptr;  // this one
};

using ModelScene = std::vector<std::vector<ModelObject>>;

bool isList(std::uint32_t objectClass, std::uint32_t slot) {
  return vrdmReferenceType(objectClass, slot).kind >= VRDM_REFERENCE_LIST;
}

struct RandomScene {
  SceneHandle scene = newScene();
  // What no query tells: the forms of the values, by block, which `keep` keeps alive.
  std::map<const vrntValue_t*, ModelValue> values;
  std::vector<ValueHandle> keep;
};

class Maker {
 public:
  explicit Maker(unsigned seed) : random_(seed) {}

  int below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
  bool chance(int percent) { return below(100) < percent; }

  RandomScene scene() {
    RandomScene made;
    for (std::uint32_t i = 0; i < kClasses; ++i) {
      const int count = chance(15) ? 0 : below(8);
      for (int k = 0; k < count; ++k) object(made, i);
      for (int k = 0; k < count; ++k) {
        if (chance(25)) vrdmRemove(made.scene.get(), i, k);
      }
      // Into the gaps.
      if (chance(30)) object(made, i);
    }
    return made;
  }

 private:
  // Mostly a number that some class has, sometimes anything.
  std::int32_t word() {
    switch (below(10)) {
      case 0:
        return -1;
      case 1:
        return kNoTarget;
      case 2:
        return INT32_MAX - below(2);
      case 3:
        return -2 - below(9);
      default:
        return below(9);
    }
  }

  void object(RandomScene& made, std::uint32_t objectClass) {
    vrdmScene_t* const scene = made.scene.get();
    switch (vrdmObjectClass(objectClass)) {
      case VRDM_KIND_PROGRAM:
        vrdmAddProgram(scene, objectClass,
                       std::string(1, static_cast<char>('a' + below(6))).c_str());
        break;
      case VRDM_KIND_ASSET: {
        std::array<std::uint64_t, 3> desc{};
        for (std::uint64_t& part : desc) part = static_cast<std::uint64_t>(below(1000));
        const StorageHandle storage = newStorage(std::string(1, static_cast<char>(below(100))));
        AssetStorage* handle = storage.get();
        vrdmAddAsset(scene, objectClass, desc.data(), &handle);
        break;
      }
      default:
        instance(made, objectClass);
    }
  }

  void instance(RandomScene& made, std::uint32_t objectClass) {
    vrdmScene_t* const scene = made.scene.get();
    const std::int32_t index = addInstance(scene, objectClass);
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      if (chance(50)) continue;
      std::string bytes = groupBytes(scene, objectClass, index, group);
      for (char& byte : bytes) byte = static_cast<char>(below(256));
      const ValueHandle value = groupValue(objectClass, group, bytes);
      EXPECT_TRUE(vrdmSetDataValue(scene, objectClass, index, group, value.get()));
    }
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
      if (isList(objectClass, slot)) {
        Words words(static_cast<std::size_t>(below(6)));
        for (std::int32_t& element : words) element = coded(word());
        setList(scene, objectClass, index, slot, words);
      } else {
        vrdmSetReference(scene, objectClass, index, slot, static_cast<std::uint32_t>(word()));
      }
    }
    if (vrdmHasValue(objectClass)) {
      ModelValue model{static_cast<std::size_t>(below(kForms.size())), {}};
      for (std::size_t i = model.marks().size(); i > 0; --i) model.numbers.push_back(word());
      ValueHandle value = parseValue(model.text());
      EXPECT_TRUE(vrdmSetInstanceValue(scene, objectClass, index, value.get()));
      made.values[value.get()] = model;
      made.keep.push_back(std::move(value));
    }
  }

  std::int32_t coded(std::int32_t word) { return chance(50) ? word : ~word; }

  std::mt19937 random_;
};

ModelObject read(const RandomScene& from, std::uint32_t objectClass, std::int32_t index) {
  const vrdmScene_t* const scene = from.scene.get();
  ModelObject object;
  object.live = vrdmValid(scene, objectClass, index);
  if (!object.live) return object;
  switch (vrdmObjectClass(objectClass)) {
    case VRDM_KIND_PROGRAM:
      object.text = vrdmGetProgramSource(scene, objectClass, index);
      object.id = idText(vrdmGetUniqueId(scene, objectClass, index));
      return object;
    case VRDM_KIND_ASSET:
      object.id = idText(vrdmGetUniqueId(scene, objectClass, index));
      object.desc.resize(24);
      object.block = *vrdmGetAssetStorage(scene, objectClass, index, object.desc.data());
      return object;
    default:
      break;
  }
  for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
    object.groups.push_back(groupBytes(scene, objectClass, index, group));
  }
  for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
    object.slots.push_back(isList(objectClass, slot)
                               ? listOf(scene, objectClass, index, slot)
                               : Words{vrdmGetReference(scene, objectClass, index, slot)});
  }
  if (vrdmHasValue(objectClass)) {
    const ValueHandle value(vrdmGetInstanceValue(scene, objectClass, index));
    object.valueBlock = value.get();
    const auto known = from.values.find(value.get());
    if (known != from.values.end()) object.value = known->second;
  }
  return object;
}

ModelScene read(const RandomScene& from) {
  ModelScene model(kClasses);
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    const auto count = static_cast<std::int32_t>(vrdmContainerSize(from.scene.get(), i));
    for (std::int32_t k = 0; k < count; ++k) model[i].push_back(read(from, i, k));
  }
  return model;
}

// --- The rules ---

std::int32_t lookup(const Pairs& pairs, std::int32_t number) {
  for (const auto& [source, target] : pairs) {
    if (source == number) return target;
  }
  return -1;
}

std::int32_t lowestFree(const std::vector<ModelObject>& objects) {
  for (std::size_t i = 0; i < objects.size(); ++i) {
    if (!objects[i].live) return static_cast<std::int32_t>(i);
  }
  return static_cast<std::int32_t>(objects.size());
}

std::int32_t place(std::vector<ModelObject>& objects, const ModelObject& object) {
  const std::int32_t index = lowestFree(objects);
  if (static_cast<std::size_t>(index) == objects.size()) objects.emplace_back();
  objects[static_cast<std::size_t>(index)] = object;
  return index;
}

std::int32_t translated(const AllPairs& pairs, const vrdmReferenceInfo& info, std::int32_t word) {
  if (info.kind <= VRDM_REFERENCE_LIST) return lookup(pairs[info.targetClass], word);
  const bool emitter = info.kind == VRDM_REFERENCE_EMITTER;
  const std::uint32_t nonNegative = emitter ? VRDM_CLASS_SHAPE : VRDM_CLASS_DECAL;
  const std::uint32_t negative = emitter ? VRDM_CLASS_LIGHT : VRDM_CLASS_DECAL;
  return word >= 0 ? lookup(pairs[nonNegative], word) : ~lookup(pairs[negative], ~word);
}

struct Expected {
  ModelScene scene;
  AllPairs pairs = AllPairs(kClasses);
  std::vector<std::uint32_t> raised = std::vector<std::uint32_t>(kClasses);
};

Expected expectedImport(const ModelScene& source, const ModelScene& target) {
  Expected result;
  result.scene = target;
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    const std::size_t before = target[i].size();
    std::size_t next = before;
    if (vrdmObjectClass(i) == VRDM_KIND_INSTANCE) {
      result.scene[i].resize(before + source[i].size());
    }
    for (std::size_t k = 0; k < source[i].size(); ++k) {
      const ModelObject& object = source[i][k];
      if (!object.live) continue;
      const auto number = static_cast<std::int32_t>(k);
      auto& objects = result.scene[i];
      switch (vrdmObjectClass(i)) {
        case VRDM_KIND_PROGRAM: {
          std::int32_t found = -1;
          for (std::size_t n = objects.size(); n > 0; --n) {
            if (objects[n - 1].live && objects[n - 1].id == object.id) {
              found = static_cast<std::int32_t>(n - 1);
            }
          }
          if (found == -1) {
            found = place(objects, object);
            ++result.raised[i];
          }
          result.pairs[i].emplace_back(number, found);
          break;
        }
        case VRDM_KIND_ASSET:
          result.pairs[i].emplace_back(number, place(objects, object));
          ++result.raised[i];
          break;
        default:
          objects[next] = object;
          result.pairs[i].emplace_back(number, static_cast<std::int32_t>(next));
          ++next;
          result.raised[i] += i == VRDM_CLASS_LIGHT_GROUP ? 2 : 1;
      }
    }
  }
  // What refers to what, when all has its place.
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    if (vrdmObjectClass(i) != VRDM_KIND_INSTANCE) continue;
    for (const auto& [from, to] : result.pairs[i]) {
      ModelObject& object = result.scene[i][static_cast<std::size_t>(to)];
      for (std::uint32_t slot = 0; slot < object.slots.size(); ++slot) {
        for (std::int32_t& word : object.slots[slot]) {
          word = translated(result.pairs, vrdmReferenceType(i, slot), word);
        }
      }
      if (!object.value) continue;
      const std::string marks = object.value->marks();
      for (std::size_t m = 0; m < marks.size(); ++m) {
        std::int32_t& number = object.value->numbers[m];
        if (marks[m] != '#' || number < 0) continue;
        number = lookup(result.pairs[VRDM_CLASS_TEXTURE], number);
        if (object.valueBlock) object.formerBlock = object.valueBlock;
        object.valueBlock = nullptr;
      }
    }
  }
  return result;
}

// --- The comparison ---

AllPairs pairsOf(const vrnt::data::detail::TupleOfClass<RefMap>& maps) {
  AllPairs pairs;
  vrnt::data::forEachClass(
      [&](auto tag) { pairs.push_back(maps.get<typename decltype(tag)::Desc>().pairs()); });
  return pairs;
}

// The value as it prints, since not every form here is canonical.
std::string printed(const ModelValue& value) { return printed(parseValue(value.text()).get()); }

void expectScene(const RandomScene& from, const ModelScene& expected) {
  const ModelScene found = read(from);
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    SCOPED_TRACE(vrdmObjectName(i));
    ASSERT_EQ(found[i].size(), expected[i].size());
    for (std::size_t k = 0; k < expected[i].size(); ++k) {
      SCOPED_TRACE(k);
      const ModelObject& object = found[i][k];
      const ModelObject& wanted = expected[i][k];
      ASSERT_EQ(object.live, wanted.live);
      if (!wanted.live) continue;
      EXPECT_EQ(object.text, wanted.text);
      EXPECT_EQ(object.id, wanted.id);
      EXPECT_EQ(object.desc, wanted.desc);
      EXPECT_EQ(object.block, wanted.block);
      EXPECT_EQ(object.groups, wanted.groups);
      EXPECT_EQ(object.slots, wanted.slots);
      if (!wanted.value) continue;
      ASSERT_NE(object.valueBlock, nullptr);
      EXPECT_EQ(printed(object.valueBlock), printed(*wanted.value));
      if (wanted.valueBlock) {
        EXPECT_EQ(object.valueBlock, wanted.valueBlock);
      } else {
        EXPECT_NE(object.valueBlock, wanted.formerBlock);
      }
    }
  }
}

void expectImport(RandomScene& source, RandomScene& target) {
  const ModelScene sourceBefore = read(source);
  const Expected expected = expectedImport(sourceBefore, read(target));
  Counters counters(target.scene.get());
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    counters = afterClassChange(counters, i, expected.raised[i]);
  }
  const bool same = &source == &target;
  const auto maps = target.scene->import(*source.scene);
  EXPECT_EQ(pairsOf(maps), expected.pairs);
  EXPECT_EQ(Counters(target.scene.get()), counters);
  expectScene(target, expected.scene);
  if (!same) expectScene(source, sourceBefore);
  // What is added next goes where the model says.
  for (std::uint32_t i = 0; i < kClasses; ++i) {
    EXPECT_EQ(static_cast<std::int32_t>(addObject(target.scene.get(), i)),
              lowestFree(expected.scene[i]))
        << vrdmObjectName(i);
  }
}

TEST(SceneImportModel, AgreesOnRandomScenes) {
  int objects = 0;
  for (unsigned seed = 1; seed <= 600; ++seed) {
    SCOPED_TRACE(seed);
    Maker maker(seed);
    RandomScene source = maker.scene();
    RandomScene target = maker.scene();
    for (const auto& ofClass : read(source)) objects += static_cast<int>(ofClass.size());
    expectImport(source, target);
    if (testing::Test::HasFailure()) return;
  }
  EXPECT_GT(objects, 20'000);
}

TEST(SceneImportModel, AgreesOnImportsOfASceneIntoItself) {
  for (unsigned seed = 1001; seed <= 1100; ++seed) {
    SCOPED_TRACE(seed);
    RandomScene scene = Maker(seed).scene();
    expectImport(scene, scene);
    if (testing::Test::HasFailure()) return;
  }
}

}  // namespace
