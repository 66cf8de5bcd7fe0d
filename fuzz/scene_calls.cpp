// Programs of calls on two scenes, against the model of support/scenes.hpp: after each step a scene
// must hold what the model says, to the last counter. Calls are valid where the headers leave that
// to the caller, and wrong only where an answer is promised.
#include <algorithm>
#include <array>

#include "support/scenes.hpp"

namespace vornath_fuzz {
namespace {

constexpr std::uint32_t kNothingAdded = UINT32_MAX;
constexpr std::uint32_t kNoClasses[] = {18, 100, UINT32_MAX};
constexpr std::size_t kMostSlots = 10;
constexpr std::size_t kMostWords = 6;
constexpr std::size_t kMostSteps = 96;

constexpr const char* kTexts[] = {"a", "b", "", "a longer program text\n", "c"};

constexpr const char* kValues[] = {"7",
                                   "{ a = 1; f = float2(-0.0, 0.25); }",
                                   "{ texture_ref = 1; }",
                                   "{ x = { texture_ref = 0; }; y = { normal_texture = 2; }; z = { "
                                   "w = { texture_ref = -1; }; }; }",
                                   "{ s = { spectrum_sphere_texture = { spectrum_sphere_texture = "
                                   "3; }; }; n = [ { texture_ref = 1;"
                                   " } ]; r = &{ texture_ref = 2; }; }",
                                   "{ f = 0x7fc00000.; k = HIGH : enum { LOW; HIGH; }; }",
                                   "{ }"};

// Words that mean something: no target, the ends, the first numbers and their complements.
std::int32_t someWord(Program& program) {
  const std::uint8_t choice = program.byte();
  if (choice < 8) return -1;
  if (choice < 16) return INT32_MIN;
  if (choice < 20) return INT32_MAX;
  const std::int32_t number = choice % static_cast<int>(kMostSlots);
  return choice % 2 == 0 ? number : ~number;
}

const std::vector<UniqueValue>& values() {
  static const auto& values = *[] {
    auto* made = new std::vector<UniqueValue>;
    for (const char* const text : kValues) {
      ErrorParameter error;
      made->push_back(parseValue(text, error));
      FUZZ_CHECK_NOTE(made->back() != nullptr, text);
    }
    return made;
  }();
  return values;
}

// The groups of each class in a new object, made once.
const ModelObject& defaults(std::uint32_t objectClass) {
  static const auto& defaults = *[] {
    auto* made = new std::vector<ModelObject>;
    for (std::uint32_t c = 0; c < kClasses; ++c) made->push_back(newInstance(c));
    return made;
  }();
  return defaults[objectClass];
}

bool isInstance(std::uint32_t c) {
  return c < kClasses && vrdmObjectClass(c) == VRDM_KIND_INSTANCE;
}
bool isAsset(std::uint32_t c) { return c < kClasses && vrdmObjectClass(c) == VRDM_KIND_ASSET; }
bool isProgram(std::uint32_t c) { return c < kClasses && vrdmObjectClass(c) == VRDM_KIND_PROGRAM; }

bool isCoded(std::uint32_t c, std::uint32_t slot) {
  const std::uint32_t kind = vrdmReferenceType(c, slot).kind;
  return kind == VRDM_REFERENCE_ORDERED_DECAL || kind == VRDM_REFERENCE_EMITTER;
}

const std::vector<std::string>& textureLabels() {
  static const std::vector<std::string> labels{
      "texture_ref",    "spectrum_texture", "spectrum_sphere_texture",
      "normal_texture", "float_texture",    "float_sphere_texture"};
  return labels;
}

// An asset's record and as many bytes as it says.
struct Description {
  std::string desc;
  std::string bytes;
};

template <typename Desc>
Description describe(const Desc& desc, Program& program) {
  return {std::string(reinterpret_cast<const char*>(&desc), sizeof(desc)),
          std::string(desc.size(), static_cast<char>(program.byte()))};
}

Description someAsset(std::uint32_t c, Program& program) {
  const std::uint8_t choice = program.byte();
  switch (c) {
    case VRDM_CLASS_MESH:
      return describe(vrnt::detail::MeshDesc{choice % 3, choice / 3 % 3, choice / 9 % 3,
                                             static_cast<std::uint32_t>(choice / 27)},
                      program);
    case VRDM_CLASS_TEXTURE:
      return describe(
          vrnt::detail::TextureDesc{
              choice % 4, choice / 4 % 4, choice / 16 % 3, vrnt::TextureFormat::SL8,
              choice < 128 ? vrnt::TextureLayout::Flat : vrnt::TextureLayout::FlatMipmap},
          program);
    default:
      return describe(vrnt::data::MaterialGraphDesc{choice % 40U, choice, 0}, program);
  }
}

class Side {
 public:
  Side() : scene_(vrdmCreateScene()) {
    if (!scene_) throw std::bad_alloc();
    model_ = modelOf(*scene_);
    FUZZ_CHECK(!model_.id.isNull() && model_.version == 0);
    for (const auto& objects : model_.classes) FUZZ_CHECK(objects.empty());
  }

  void call(std::uint8_t operation, Side& other, Program& program) {
    const std::uint8_t choice = program.byte();
    const std::uint32_t c =
        choice < 250 ? choice % kClasses : kNoClasses[choice % std::size(kNoClasses)];
    switch (operation % 16) {
      case 0:
      case 1:
        return add(c, program);
      case 2:
        return wrongAddition(c, program);
      case 10:
        return setSceneGroup(program);
      case 11:
        return import(operation < 128 ? other : *this);
      case 12:
        return reload(operation < 128 ? *this : other);
      case 13:
        return compare(operation < 128 ? other : *this);
      default:
        break;
    }
    // An index isn't checked.
    if (c >= kClasses) return noClass(c);
    if (objects(c).empty()) return add(c, program);
    const std::size_t index = program.below(objects(c).size());
    ModelObject& object = objects(c)[index];
    const auto i = static_cast<std::int32_t>(index);
    switch (operation % 16) {
      case 3:
        return remove(c, i, object);
      case 4:
        return setGroup(c, i, object, program);
      case 5:
        return setReference(c, i, object, program);
      case 6:
        return modifyList(c, i, object, program);
      case 7:
        return setValue(c, i, object, program);
      case 8:
        return updateAsset(c, i, object, program);
      case 9:
        return updateTextures(c, i, object);
      case 14:
        return withoutData(c, program);
      default:
        return query(c);
    }
  }

  void check() const { checkSame(model_, modelOf(*scene_)); }

  void queryAll() const {
    for (std::uint32_t c = 0; c < kClasses; ++c) query(c);
    for (std::uint32_t g = 0; g <= kSceneGroups; ++g) {
      const UniqueValue value(vrdmGetSceneDataValue(scene_.get(), g));
      FUZZ_CHECK((value != nullptr) == (g < kSceneGroups));
      if (value) FUZZ_CHECK(bytesOf(value.get()) == model_.groups[g]);
    }
    FUZZ_CHECK(*vrdmSceneId(scene_.get()) == model_.id);
  }

 private:
  std::vector<ModelObject>& objects(std::uint32_t c) { return model_.classes[c]; }

  void rise(std::uint32_t c) {
    ++model_.version;
    ++model_.classVersions[c];
  }
  static void riseReferences(ModelObject& object) {
    ++object.version;
    ++object.referencesVersion;
  }

  // The lowest free slot, or a new one.
  std::size_t place(std::uint32_t c) {
    std::size_t index = 0;
    while (index < objects(c).size() && objects(c)[index].live) ++index;
    return index;
  }

  void add(std::uint32_t c, Program& program) {
    if (c >= kClasses) return noClass(c);
    const std::size_t index = place(c);
    if (index >= kMostSlots) return;
    if (index == objects(c).size()) objects(c).emplace_back();
    ModelObject& object = objects(c)[index];
    rise(c);
    std::uint32_t answer = 0;
    if (isProgram(c)) {
      object.text = kTexts[program.below(std::size(kTexts))];
      object.id = vrnt::UniqueId::hash(object.text.c_str());
      object.live = true;
      answer = vrdmAddProgram(scene_.get(), c, object.text.c_str());
    } else if (isAsset(c)) {
      const Description asset = someAsset(c, program);
      const vrnt::UniqueAsset storage(vrdmAssetStorageCopy(asset.bytes.data(), asset.bytes.size()));
      if (!storage) throw std::bad_alloc();
      AssetStorage* const handle = storage.get();
      answer = vrdmAddAsset(scene_.get(), c, asset.desc.data(), &handle);
      FUZZ_CHECK(storage->references == 2);
      takeAsset(c, static_cast<std::int32_t>(index), object, asset.desc, storage.get());
    } else {
      answer = vrdmCreateInstance(scene_.get(), c);
      const ModelObject& fresh = defaults(c);
      object.live = true;
      object.groups = fresh.groups;
      object.slots = fresh.slots;
      object.groupVersions.resize(fresh.groups.size());
      for (std::uint32_t& version : object.groupVersions) ++version;
      if (!fresh.slots.empty()) ++object.referencesVersion;
      ++object.version;
    }
    FUZZ_CHECK(answer == index);
  }

  // A new asset's id is any that isn't another's.
  void takeAsset(std::uint32_t c, std::int32_t index, ModelObject& object, const std::string& desc,
                 const AssetStorage* storage) {
    const vrnt::UniqueId id = *vrdmGetUniqueId(scene_.get(), c, index);
    FUZZ_CHECK(!id.isNull());
    for (const ModelObject& known : objects(c)) FUZZ_CHECK(known.id != id);
    object.live = storage->data != nullptr;
    object.id = id;
    object.desc = desc;
    object.block = storage;
  }

  void wrongAddition(std::uint32_t c, Program& program) {
    const std::uint32_t answer = c < kClasses ? kNothingAdded : 0;
    AssetStorage* none = nullptr;
    if (!isProgram(c)) FUZZ_CHECK(vrdmAddProgram(scene_.get(), c, "a") == answer);
    if (!isInstance(c)) FUZZ_CHECK(vrdmCreateInstance(scene_.get(), c) == answer);
    if (isAsset(c)) return add(c, program);
    const std::string desc(24, '\0');
    FUZZ_CHECK(vrdmAddAsset(scene_.get(), c, desc.data(), &none) == answer);
  }

  // A number past the last class has an answer to everything, and nothing happens.
  void noClass(std::uint32_t c) {
    vrdmScene_t* const scene = scene_.get();
    const vrntValue_t* const value = values()[0].get();
    const std::string desc(24, '\0');
    AssetStorage* none = nullptr;
    FUZZ_CHECK(vrdmContainerSize(scene, c) == 0);
    FUZZ_CHECK(!vrdmValid(scene, c, 0));
    FUZZ_CHECK(vrdmGetUniqueId(scene, c, 0) == nullptr);
    FUZZ_CHECK(!vrdmRemove(scene, c, 0));
    FUZZ_CHECK(vrdmCountReferences(scene, c, 0) == 0);
    FUZZ_CHECK(vrdmAddProgram(scene, c, "a") == 0);
    FUZZ_CHECK(vrdmGetProgramSource(scene, c, 0) == nullptr);
    FUZZ_CHECK(vrdmAddAsset(scene, c, desc.data(), &none) == 0);
    FUZZ_CHECK(vrdmGetAssetStorage(scene, c, 0, nullptr) == nullptr);
    FUZZ_CHECK(!vrdmUpdateAsset(scene, c, 0, desc.data(), nullptr));
    FUZZ_CHECK(vrdmCreateInstance(scene, c) == 0);
    FUZZ_CHECK(vrdmGetDataValue(scene, c, 0, 0) == nullptr);
    FUZZ_CHECK(!vrdmSetDataValue(scene, c, 0, 0, value));
    FUZZ_CHECK(vrdmGetInstanceValue(scene, c, 0) == nullptr);
    FUZZ_CHECK(!vrdmSetInstanceValue(scene, c, 0, value));
    FUZZ_CHECK(vrdmGetReference(scene, c, 0, 0) == 0);
    FUZZ_CHECK(vrdmGetReferenceCount(scene, c, 0, 0) == 0);
    FUZZ_CHECK(!vrdmSetReference(scene, c, 0, 0, 1));
    FUZZ_CHECK(!vrdmSetReferenceCount(scene, c, 0, 0, 1));
    FUZZ_CHECK(vrdmGetReferenceList(scene, c, 0, 0) == nullptr);
    FUZZ_CHECK(vrdmModifyReferenceList(scene, c, 0, 0) == nullptr);
    vrdmUpdateTextureReferences(scene, c, 0);
  }

  void remove(std::uint32_t c, std::int32_t i, ModelObject& object) {
    FUZZ_CHECK(vrdmRemove(scene_.get(), c, i));
    rise(c);
    object.live = false;
    object.block = nullptr;
    if (isProgram(c)) object.id = vrnt::UniqueId();
  }

  // A value of a group's type with the record as it is but for one word. Empty if the type isn't
  // the group's by the program's choice.
  static std::string changed(std::string record, Program& program) {
    constexpr std::uint32_t kWords[] = {0,           1,           2,           0x3F800000U,
                                        0x80000000U, 0x7FC00000U, 0xFFFFFFFFU, 0x3C007E00U};
    const std::uint8_t choice = program.byte();
    const std::uint32_t word = kWords[choice % std::size(kWords)];
    const std::size_t place = program.byte() % (record.size() / 4);
    if (choice < 200) std::memcpy(record.data() + 4 * place, &word, sizeof(word));
    return record;
  }

  static UniqueValue recordValue(std::uint32_t c, std::uint32_t group, const std::string& record) {
    ErrorParameter error;
    const UniqueType type(vrdmFieldType(c, group));
    vrntValue_t* block = vrntValueCreate(type.get(), error);
    if (block == nullptr) throw std::bad_alloc();
    vrntValueWrite(&block, 0, record.data(), record.size(), error);
    error.check(true);
    return UniqueValue(block);
  }

  void setGroup(std::uint32_t c, std::int32_t i, ModelObject& object, Program& program) {
    const auto group = static_cast<std::uint32_t>(program.below(vrdmFieldCount(c) + 1));
    if (isInstance(c)) rise(c);
    if (group == vrdmFieldCount(c) || program.byte() % 8 == 7) {
      const vrntValue_t* const value = values()[program.below(values().size())].get();
      FUZZ_CHECK(!vrdmSetDataValue(scene_.get(), c, i, group, value));
      return;
    }
    object.groups[group] = changed(object.groups[group], program);
    const UniqueValue value = recordValue(c, group, object.groups[group]);
    FUZZ_CHECK(vrdmSetDataValue(scene_.get(), c, i, group, value.get()));
    FUZZ_CHECK(value->refCount == 1);
    ++object.groupVersions[group];
    ++object.version;
  }

  void setSceneGroup(Program& program) {
    const auto group = static_cast<std::uint32_t>(program.below(kSceneGroups + 1));
    if (group == kSceneGroups || program.byte() % 8 == 7) {
      const vrntValue_t* const value = values()[program.below(values().size())].get();
      FUZZ_CHECK(!vrdmSetSceneDataValue(scene_.get(), group, value));
      return;
    }
    std::string& record = model_.groups[group];
    record = changed(record, program);
    const UniqueValue value = recordValue(VRDM_CLASS_SCENE_DATA, group, record);
    FUZZ_CHECK(vrdmSetSceneDataValue(scene_.get(), group, value.get()));
    ++model_.groupVersions[group];
    ++model_.version;
  }

  void setReference(std::uint32_t c, std::int32_t i, ModelObject& object, Program& program) {
    const auto set = program.byte() % 2 == 0 ? vrdmSetReference : vrdmSetReferenceCount;
    const auto slot = static_cast<std::uint32_t>(program.below(vrdmReferenceCount(c) + 1));
    std::int32_t word = someWord(program);
    if (isInstance(c)) rise(c);
    if (slot == vrdmReferenceCount(c)) {
      FUZZ_CHECK(!set(scene_.get(), c, i, slot, static_cast<std::uint32_t>(word)));
      return;
    }
    if (isList(c, slot)) {
      word = static_cast<std::int32_t>(static_cast<std::uint32_t>(word) % (kMostWords + 1));
      object.slots[slot].resize(static_cast<std::size_t>(word), isCoded(c, slot) ? INT32_MIN : -1);
    } else {
      object.slots[slot] = {word};
    }
    FUZZ_CHECK(set(scene_.get(), c, i, slot, static_cast<std::uint32_t>(word)));
    riseReferences(object);
  }

  void modifyList(std::uint32_t c, std::int32_t i, ModelObject& object, Program& program) {
    const auto slot = static_cast<std::uint32_t>(program.below(vrdmReferenceCount(c) + 1));
    std::int32_t* const place = vrdmModifyReferenceList(scene_.get(), c, i, slot);
    if (isInstance(c)) rise(c);
    if (slot == vrdmReferenceCount(c)) {
      FUZZ_CHECK(place == nullptr);
      return;
    }
    riseReferences(object);
    Words& words = object.slots[slot];
    FUZZ_CHECK((place == nullptr) == (!isList(c, slot) || words.empty()));
    if (place == nullptr) return;
    for (std::size_t k = 0; k < words.size(); ++k) {
      FUZZ_CHECK(place[k] == words[k]);
      place[k] = words[k] = someWord(program);
    }
  }

  void setValue(std::uint32_t c, std::int32_t i, ModelObject& object, Program& program) {
    const vrntValue_t* const value = values()[program.below(values().size())].get();
    FUZZ_CHECK(vrdmSetInstanceValue(scene_.get(), c, i, value) == isInstance(c));
    if (!vrdmHasValue(c)) return;
    rise(c);
    ++object.version;
    object.value = value;
  }

  void updateAsset(std::uint32_t c, std::int32_t i, ModelObject& object, Program& program) {
    if (!isAsset(c)) {
      const std::string desc(24, '\0');
      FUZZ_CHECK(!vrdmUpdateAsset(scene_.get(), c, i, desc.data(), nullptr));
      return;
    }
    const bool wasLive = object.live;
    const Description asset = someAsset(c, program);
    FUZZ_CHECK(vrdmUpdateAsset(scene_.get(), c, i, asset.desc.data(), asset.bytes.data()));
    rise(c);
    object.live = true;
    object.desc = asset.desc;
    object.block = *vrdmGetAssetStorage(scene_.get(), c, i, nullptr);
    FUZZ_CHECK(object.block->references == 1 && object.bytes() == asset.bytes);
    // The next addition might take a slot that came to life like this, or not.
    if (!wasLive) {
      check();
      remove(c, i, object);
    }
  }

  // A block without data leaves its slot free; to free it says so to the next addition.
  void withoutData(std::uint32_t c, Program& program) {
    const std::size_t index = isAsset(c) ? place(c) : kMostSlots;
    if (index >= kMostSlots) return;
    const Description asset = someAsset(c, program);
    const vrnt::UniqueAsset storage(vrdmAssetStorageWrap(nullptr, 0, nullptr));
    if (!storage) throw std::bad_alloc();
    AssetStorage* const handle = storage.get();
    rise(c);
    FUZZ_CHECK(vrdmAddAsset(scene_.get(), c, asset.desc.data(), &handle) == index);
    if (index == objects(c).size()) objects(c).emplace_back();
    const auto i = static_cast<std::int32_t>(index);
    takeAsset(c, i, objects(c)[index], asset.desc, storage.get());
    check();
    remove(c, i, objects(c)[index]);
    FUZZ_CHECK(storage->references == 1);
  }

  void updateTextures(std::uint32_t c, std::int32_t i, ModelObject& object) {
    vrdmUpdateTextureReferences(scene_.get(), c, i);
    if (!isInstance(c)) return;
    rise(c);
    if (vrdmReferenceCount(c) == 0) return;
    riseReferences(object);
    if (c != VRDM_CLASS_LIGHT && c != VRDM_CLASS_MATERIAL) return;
    for (std::uint32_t slot = 0; slot < object.slots.size(); ++slot) {
      if (std::string("textures") != vrdmReferenceType(c, slot).name) continue;
      object.slots[slot].clear();
      if (object.value == nullptr) continue;
      for (const std::uint64_t place : singleInts(vrntValueType(object.value), textureLabels())) {
        std::int32_t word = 0;
        std::memcpy(&word, bytesOf(object.value).data() + place, sizeof(word));
        if (word >= 0) object.slots[slot].push_back(word);
      }
    }
  }

  void import(const Side& source) {
    if (!isComplete(source.model_)) return;
    for (std::uint32_t c = 0; c < kClasses; ++c) {
      if (model_.classes[c].size() + source.model_.classes[c].size() > kMostSlots) return;
    }
    const ModelScene from = source.model_;
    const auto maps = scene_->import(*source.scene_);
    importInto(model_, from, maps, modelOf(*scene_));
    source.check();
  }

  // Through a file in memory, in place of a scene.
  void reload(Side& target) {
    if (!isComplete(model_)) return;
    Scene read = readBack(write(*scene_));
    const ModelScene model = modelOf(read);
    checkSameContent(model_, model);
    check();
    *target.scene_ = std::move(read);
    for (const auto& objects : modelOf(read).classes) FUZZ_CHECK(objects.empty());
    target.model_ = model;
  }

  void compare(const Side& other) const {
    if (!isComplete(model_) || !isComplete(other.model_)) return;
    const std::optional<bool> expected = naiveEquivalence(model_, other.model_);
    FUZZ_CHECK(expected.has_value());
    FUZZ_CHECK(equivalent(*scene_, *other.scene_) == expected);
    FUZZ_CHECK(equivalent(*other.scene_, *scene_) == expected);
    const std::optional<std::string> text = dump(*scene_);
    FUZZ_CHECK(text.has_value() == isPrintable(model_));
    FUZZ_CHECK(text == dump(*scene_));
    other.check();
  }

  std::uint32_t references(std::uint32_t target, std::int32_t index) const {
    std::uint32_t count = 0;
    for (std::uint32_t c = 0; c < kClasses; ++c) {
      for (std::uint32_t slot = 0; slot < vrdmReferenceCount(c); ++slot) {
        const vrdmReferenceInfo info = vrdmReferenceType(c, slot);
        if (info.targetClass != target || isCoded(c, slot)) continue;
        if (info.kind == VRDM_REFERENCE_OPTIONAL && index == -1) continue;
        for (const ModelObject& object : model_.classes[c]) {
          if (!object.live) continue;
          const Words& words = object.slots[slot];
          count += static_cast<std::uint32_t>(std::count(words.begin(), words.end(), index));
        }
      }
    }
    return count;
  }

  void query(std::uint32_t c) const {
    const vrdmScene_t* const scene = scene_.get();
    const auto size = static_cast<std::int32_t>(model_.classes[c].size());
    FUZZ_CHECK(vrdmContainerSize(scene, c) == static_cast<std::uint32_t>(size));
    for (const std::int32_t i : {-1, INT32_MIN, INT32_MAX, size}) {
      FUZZ_CHECK(!vrdmValid(scene, c, i));
    }
    FUZZ_CHECK(vrdmCountReferences(scene, c, -1) == references(c, -1));
    for (std::int32_t i = 0; i < size; ++i) {
      FUZZ_CHECK(vrdmCountReferences(scene, c, i) == references(c, i));
      queryObject(c, i, model_.classes[c][static_cast<std::size_t>(i)]);
    }
  }

  void queryObject(std::uint32_t c, std::int32_t i, const ModelObject& object) const {
    const vrdmScene_t* const scene = scene_.get();
    FUZZ_CHECK(vrdmValid(scene, c, i) == object.live);

    const vrnt::UniqueId* const id = vrdmGetUniqueId(scene, c, i);
    FUZZ_CHECK((id == nullptr) == isInstance(c));
    if (id != nullptr) FUZZ_CHECK(*id == object.id);

    const char* const source = vrdmGetProgramSource(scene, c, i);
    FUZZ_CHECK((source != nullptr) == isProgram(c));
    if (source != nullptr) FUZZ_CHECK(object.text == source);

    std::string desc(24, '?');
    AssetStorage** const storage = vrdmGetAssetStorage(scene, c, i, desc.data());
    FUZZ_CHECK((storage != nullptr) == isAsset(c));
    if (storage != nullptr) FUZZ_CHECK(*storage == object.block);
    FUZZ_CHECK(desc == object.desc + std::string(24 - object.desc.size(), '?'));

    for (std::uint32_t group = 0; group <= vrdmFieldCount(c); ++group) {
      const UniqueValue value(vrdmGetDataValue(scene, c, i, group));
      FUZZ_CHECK((value != nullptr) == (group < vrdmFieldCount(c)));
      if (value) FUZZ_CHECK(bytesOf(value.get()) == object.groups[group]);
    }
    const UniqueValue value(vrdmGetInstanceValue(scene, c, i));
    FUZZ_CHECK(value.get() == object.value);

    const std::uint32_t slots = vrdmReferenceCount(c);
    for (std::uint32_t slot = 0; slot <= slots; ++slot) {
      const std::int32_t* const list = vrdmGetReferenceList(scene, c, i, slot);
      std::int32_t expected = isInstance(c) ? 0 : -1;
      if (slot < slots) {
        const Words& words = object.slots[slot];
        expected = isList(c, slot) ? static_cast<std::int32_t>(words.size()) : words[0];
        FUZZ_CHECK((list != nullptr) == (isList(c, slot) && !words.empty()));
        if (list != nullptr) FUZZ_CHECK(std::equal(words.begin(), words.end(), list));
      } else {
        FUZZ_CHECK(list == nullptr);
      }
      FUZZ_CHECK(vrdmGetReference(scene, c, i, slot) == expected);
      FUZZ_CHECK(vrdmGetReferenceCount(scene, c, i, slot) == expected);
    }
  }

  vrnt::UniqueScene scene_;
  ModelScene model_;
};

}  // namespace

void runInput(std::string_view bytes) {
  Program program(bytes);
  std::array<Side, 2> sides;
  for (std::size_t step = 0; step < kMostSteps && !program.atEnd(); ++step) {
    const std::uint8_t operation = program.byte();
    const std::size_t chosen = program.below(2);
    sides[chosen].call(operation, sides[1 - chosen], program);
    sides[chosen].check();
  }
  for (const Side& side : sides) {
    side.check();
    side.queryAll();
  }
}

}  // namespace vornath_fuzz
