// Scenes compared by content: what counts and what doesn't, for every field, slot and byte of the
// catalogue.
#include <sys/mman.h>

#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "scenes.hpp"

namespace {

using namespace vornath_test;
using vrnt::UniqueId;
using vrnt::data::Scene;
using vrnt::data::SceneData;

constexpr std::uint32_t kSceneGroups = 0xFFFFFFFFU;

// Asks both ways round.
bool equivalent(const Scene& a, const Scene& b) {
  const bool result = Scene::equivalent(a, b);
  EXPECT_EQ(Scene::equivalent(b, a), result) << "not symmetric";
  return result;
}

void setValue(Scene& scene, std::uint32_t objectClass, std::int32_t index,
              const std::string& text) {
  const ValueHandle value = parseValue(text);
  ASSERT_TRUE(vrdmSetInstanceValue(&scene, objectClass, index, value.get()));
}

constexpr char kValue[] = "{ a = 1.5; b = [ 1, 2 ]; c = TWO : enum { ONE; TWO; }; }";
constexpr std::int32_t kLive = 2;  // the slot behind a free one, in which the tests change things

// Three slots of each class, of which the second is free, with something in every part of them. Two
// of these share nothing.
Scene fullScene() {
  Scene scene;
  for (const std::uint32_t program : kPrograms) {
    for (const char* text : {"first", "gap", "a text"}) vrdmAddProgram(&scene, program, text);
  }
  for (const std::uint32_t asset : kAssets) {
    for (std::uint32_t i = 0; i < 3; ++i) {
      const std::array<std::uint32_t, 6> desc = {1, 2, 3, 0, 5, 6};
      const StorageHandle storage = newStorage("0123456789");
      AssetStorage* handle = storage.get();
      vrdmAddAsset(&scene, asset, desc.data(), &handle);
    }
  }
  for (const std::uint32_t instance : kInstances) {
    for (std::int32_t i = 0; i < 3; ++i) {
      addInstance(&scene, instance);
      for (std::uint32_t slot = 0; slot < vrdmReferenceCount(instance); ++slot) {
        if (vrdmReferenceType(instance, slot).kind >= VRDM_REFERENCE_LIST) {
          setList(&scene, instance, i, slot, {4, -1, 2});
        } else {
          vrdmSetReference(&scene, instance, i, slot, 10 + slot);
        }
      }
      if (vrdmHasValue(instance)) setValue(scene, instance, i, kValue);
    }
  }
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) vrdmRemove(&scene, i, 1);
  return scene;
}

// How the word at a place of a record is compared.
enum class Rule { Float, Bool, Exact, Byte };

struct Leaf {
  std::string path;
  Rule rule;
  std::size_t offset;
};

// The numbers that a type is made of, by the names of the types.
void collectLeaves(const vrntType_t* type, const std::string& path, std::size_t offset,
                   std::vector<Leaf>& leaves) {
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_STRUCT:
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
        vrntValueView_t field{};
        vrntValueStructField(&field, type, i);
        collectLeaves(field.type, path + "." + vrntTypeFieldLabel(type, i), offset + field.offset,
                      leaves);
      }
      return;
    case VRNT_DESCRIPTOR_ARRAY: {
      ASSERT_EQ(vrntTypeArrayDimension(type), 1U);
      std::int32_t count = 0;
      vrntTypeArrayShape(type, &count);
      for (std::int32_t i = 0; i < count; ++i) {
        vrntValueView_t element{};
        vrntValueArrayElement(&element, type, &i);
        collectLeaves(element.type, path + "[" + std::to_string(i) + "]", offset + element.offset,
                      leaves);
      }
      return;
    }
    case VRNT_DESCRIPTOR_ENUM:
      leaves.push_back({path, Rule::Exact, offset});
      return;
    default:
      break;
  }
  const TypeHandle plain(vrntTypeStripMetadata(type));
  const std::string name = vrntTypeString(plain.get());
  const std::size_t lanes = vrntTypeVectorDimension(type);
  Rule rule{};
  if (name == "char") {
    rule = Rule::Byte;
  } else if (name.rfind("float", 0) == 0) {
    rule = Rule::Float;
  } else if (name.rfind("int", 0) == 0) {
    rule = Rule::Exact;
  } else if (name == "bool") {
    rule = Rule::Bool;
  } else {
    FAIL() << path << " has an unknown type: " << name;
  }
  for (std::size_t lane = 0; lane < lanes; ++lane) {
    leaves.push_back({path + "/" + std::to_string(lane), rule, offset + 4 * lane});
  }
}

std::size_t sizeOf(Rule rule) { return rule == Rule::Byte ? 1 : 4; }

// A group of the object in slot kLive of a class, or of the scene.
struct GroupPlace {
  std::uint32_t objectClass;
  std::uint32_t group;

  std::string name() const {
    const char* className = vrdmObjectName(objectClass);
    return std::string(className ? className : "Scene") + " " + vrdmFieldName(objectClass, group);
  }

  std::string read(const Scene& scene) const {
    if (objectClass != kSceneGroups) return groupBytes(&scene, objectClass, kLive, group);
    const ValueHandle value(vrdmGetSceneDataValue(&scene, group));
    return std::string(static_cast<const char*>(vrntValueData(value.get())),
                       vrntTypeSize(vrntValueType(value.get())));
  }

  void write(Scene& scene, const std::string& bytes) const {
    const ValueHandle value = groupValue(objectClass, group, bytes);
    const bool stored = objectClass == kSceneGroups
                            ? vrdmSetSceneDataValue(&scene, group, value.get())
                            : vrdmSetDataValue(&scene, objectClass, kLive, group, value.get());
    ASSERT_TRUE(stored);
  }

  std::vector<Leaf> leaves() const {
    std::vector<Leaf> found;
    const TypeHandle type(vrdmFieldType(objectClass, group));
    collectLeaves(type.get(), name(), 0, found);
    return found;
  }
};

std::vector<GroupPlace> allGroups() {
  std::vector<GroupPlace> places;
  for (std::uint32_t i = 0; i < 4; ++i) places.push_back({kSceneGroups, i});
  for (const std::uint32_t instance : kInstances) {
    for (std::uint32_t i = 0; i < vrdmFieldCount(instance); ++i) places.push_back({instance, i});
  }
  return places;
}

template <typename T>
std::string with(std::string bytes, std::size_t offset, T word) {
  std::memcpy(bytes.data() + offset, &word, sizeof(word));
  return bytes;
}

class Equivalence : public testing::Test {
 protected:
  // Writes a record to both scenes, and asks.
  bool equivalentWith(const GroupPlace& place, const std::string& inA, const std::string& inB) {
    place.write(a, inA);
    place.write(b, inB);
    return equivalent(a, b);
  }

  Scene a = fullScene();
  Scene b = fullScene();
};

TEST_F(Equivalence, HoldsForASceneAndItself) {
  EXPECT_TRUE(equivalent(a, a));
  const Scene empty;
  EXPECT_TRUE(equivalent(empty, empty));
}

TEST_F(Equivalence, HoldsForScenesThatShareNothing) {
  EXPECT_TRUE(equivalent(a, b));
  EXPECT_TRUE(equivalent(Scene(), Scene()));
  EXPECT_FALSE(equivalent(a, Scene()));
}

TEST_F(Equivalence, HoldsAfterARoundThroughAFile) {
  std::stringstream file;
  Scene scene;
  vrdmAddProgram(&scene, VRDM_CLASS_LIGHT_PROGRAM, "text");
  addGraph(&scene, "bytes");
  for (const std::uint32_t instance : kInstances) {
    addInstance(&scene, instance);
    addInstance(&scene, instance);
    vrdmRemove(&scene, instance, 0);
    if (vrdmHasValue(instance)) setValue(scene, instance, 1, kValue);
  }
  Scene::serialize(scene, file);
  const Scene read = Scene::deserialize(file, UniqueId::generate()).value();
  EXPECT_NE(read.id, scene.id);
  EXPECT_TRUE(equivalent(scene, read));
}

TEST_F(Equivalence, LooksAtEachFieldOfEachGroup) {
  std::size_t count = 0;
  for (const GroupPlace& place : allGroups()) {
    const std::string before = place.read(b);
    for (const Leaf& leaf : place.leaves()) {
      SCOPED_TRACE(leaf.path);
      ++count;
      const std::size_t at = leaf.offset;
      const auto word = [at](std::uint32_t bits) {
        return [at, bits](const std::string& bytes) { return with(bytes, at, bits); };
      };
      const auto asked = [&](auto inA, auto inB) {
        return equivalentWith(place, inA(before), inB(before));
      };
      switch (leaf.rule) {
        case Rule::Float:
          EXPECT_TRUE(asked(word(0x3FC00000), word(0x3FC00000)));
          EXPECT_FALSE(asked(word(0x3FC00000), word(0x3FC00001)));
          EXPECT_FALSE(asked(word(0x3FC00000), word(0xBFC00000)));
          EXPECT_TRUE(asked(word(0), word(0x80000000)));
          EXPECT_FALSE(asked(word(0x7FC00000), word(0x7FC00000)));
          EXPECT_FALSE(Scene::equivalent(a, a)) << "with a NaN";
          break;
        case Rule::Bool:
          EXPECT_FALSE(asked(word(0), word(1)));
          EXPECT_FALSE(asked(word(0x80000000), word(0)));
          EXPECT_TRUE(asked(word(1), word(0xFFFFFFFF)));
          EXPECT_TRUE(asked(word(0), word(0)));
          break;
        case Rule::Exact:
          for (std::uint32_t bit = 0; bit < 32; ++bit) {
            EXPECT_FALSE(asked(word(0), word(1U << bit))) << bit;
          }
          EXPECT_TRUE(asked(word(0x7FC00000), word(0x7FC00000)));
          break;
        case Rule::Byte:
          for (unsigned bit = 0; bit < 8; ++bit) {
            const auto changed = static_cast<char>(1U << bit);
            EXPECT_FALSE(equivalentWith(place, with(before, at, '\0'), with(before, at, changed)));
          }
          break;
      }
      ASSERT_TRUE(equivalentWith(place, before, before));
    }
  }
  // 6 planes of 7 numbers and 7 words of the scene alone.
  EXPECT_GT(count, 49U);
}

TEST_F(Equivalence, LooksAtNoPaddingWithinAGroup) {
  std::size_t padding = 0;
  for (const GroupPlace& place : allGroups()) {
    const std::string before = place.read(b);
    std::string covered(before.size(), '.');
    for (const Leaf& leaf : place.leaves()) {
      covered.replace(leaf.offset, sizeOf(leaf.rule), sizeOf(leaf.rule), '1');
    }
    for (std::size_t i = 0; i < covered.size(); ++i) {
      if (covered[i] == '1') continue;
      ++padding;
      EXPECT_TRUE(equivalentWith(place, before, with(before, i, '\x55')))
          << place.name() << " byte " << i;
    }
    place.write(b, before);
  }
  // The planes alone have 6 times 4 + 4 + 12 bytes.
  EXPECT_GE(padding, 120U);
}

TEST_F(Equivalence, LooksAtNoPaddingBetweenGroups) {
  std::size_t padding = 0;
  const auto walk = [&](auto tag, auto& inA, const auto& inB) {
    using Desc = typename decltype(tag)::Desc;
    auto* const bytes = reinterpret_cast<char*>(&inA);
    EXPECT_EQ(std::memcmp(bytes, &inB, sizeof(inA)), 0);
    std::string covered(sizeof(inA), '.');
    vrnt::data::forEachGroup<Desc>([&](const auto& group, auto) {
      const auto& record = inA.*group.member;
      const auto at = reinterpret_cast<const char*>(&record) - bytes;
      covered.replace(static_cast<std::size_t>(at), sizeof(record), sizeof(record), '1');
    });
    for (std::size_t i = 0; i < covered.size(); ++i) {
      if (covered[i] == '1') continue;
      ++padding;
      bytes[i] = '\x55';
      EXPECT_TRUE(equivalent(a, b)) << i;
      bytes[i] = '\0';
    }
  };
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      walk(tag, a.container<Desc>().at(kLive).desc.groups,
           b.container<Desc>().at(kLive).desc.groups);
    }
  });
  walk(vrnt::data::ClassTag<SceneData>{}, a.data, b.data);
  // Camera and shape have 12 bytes before a matrix, and the scene 4 at its end.
  EXPECT_GE(padding, 28U);
}

TEST_F(Equivalence, LooksAtEachSlotAndEachElementOfAList) {
  std::size_t slots = 0;
  for (const std::uint32_t instance : kInstances) {
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(instance); ++slot) {
      SCOPED_TRACE(std::string(vrdmObjectName(instance)) + " " +
                   vrdmReferenceType(instance, slot).name);
      ++slots;
      if (vrdmReferenceType(instance, slot).kind < VRDM_REFERENCE_LIST) {
        for (const std::uint32_t word : {0U, 0xFFFFFFFFU, (10 + slot) ^ 0x80000000U}) {
          vrdmSetReference(&b, instance, kLive, slot, word);
          EXPECT_FALSE(equivalent(a, b)) << word;
        }
        vrdmSetReference(&b, instance, kLive, slot, 10 + slot);
      } else {
        for (const std::vector<std::int32_t>& words : {std::vector<std::int32_t>{},
                                                       {4},
                                                       {4, -1},
                                                       {4, -1, 2, -1},
                                                       {4, -1, 2, kNoTarget},
                                                       {3, -1, 2},
                                                       {4, 1, 2},
                                                       {4, -1, -2},
                                                       {4, 2, -1},
                                                       {2, -1, 4}}) {
          setList(&b, instance, kLive, slot, words);
          EXPECT_FALSE(equivalent(a, b)) << testing::PrintToString(words);
        }
        setList(&b, instance, kLive, slot, {4, -1, 2});
      }
      ASSERT_TRUE(equivalent(a, b));
    }
  }
  EXPECT_EQ(slots, 26U);
}

TEST_F(Equivalence, TellsAnEmptyListFromOneOfNoTarget) {
  Scene empty;
  Scene one;
  addInstance(&empty, VRDM_CLASS_KEYFRAME_LIST);
  addInstance(&one, VRDM_CLASS_KEYFRAME_LIST);
  EXPECT_TRUE(equivalent(empty, one));
  setList(&one, VRDM_CLASS_KEYFRAME_LIST, 0, 0, {-1});
  EXPECT_FALSE(equivalent(empty, one));
}

TEST_F(Equivalence, TellsScenesApartByTheirNumbering) {
  Scene ab;
  Scene ba;
  vrdmAddProgram(&ab, VRDM_CLASS_CAMERA_PROGRAM, "a");
  vrdmAddProgram(&ab, VRDM_CLASS_CAMERA_PROGRAM, "b");
  vrdmAddProgram(&ba, VRDM_CLASS_CAMERA_PROGRAM, "b");
  vrdmAddProgram(&ba, VRDM_CLASS_CAMERA_PROGRAM, "a");
  EXPECT_FALSE(equivalent(ab, ba));
}

TEST_F(Equivalence, ComparesValuesByTheirText) {
  struct Case {
    const char* a;
    const char* b;
    bool equivalent;
  };
  const Case cases[] = {
      {kValue, kValue, true},
      {"{ a = 1.5; }", "{ a = 1.25; }", false},
      {"{ a = 1; }", "{ b = 1; }", false},
      {"{ a = 1; }", "{ a = 1.0; }", false},
      {"{ a = 0.0; }", "{ a = -0.0; }", false},
      {"{ a = NaN; }", "{ a = NaN; }", true},
      {"1", "1", true},
      {"1", "{ a = 1; }", false},
      {"[ 1, 2 ]", "[ 1, 2, 3 ]", false},
      {"[ 1, 2 ]", "[ 1, 3 ]", false},
      {"ONE : enum { ONE; TWO; }", "TWO : enum { ONE; TWO; }", false},
      {"ONE : enum { ONE; TWO; }", "ONE : enum { ONE; }", false},
      {"{ a = &1; }", "{ a = &1; }", true},
      {"{ a = &1; }", "{ a = &2; }", false},
  };
  for (const std::uint32_t instance : kWithValue) {
    for (const Case& each : cases) {
      setValue(a, instance, kLive, each.a);
      setValue(b, instance, kLive, each.b);
      EXPECT_EQ(equivalent(a, b), each.equivalent) << each.a << " and " << each.b;
    }
    setValue(a, instance, kLive, kValue);
    setValue(b, instance, kLive, kValue);
    ASSERT_TRUE(equivalent(a, b));
  }
}

// A value of the type with these bytes.
ValueHandle valueOfBytes(const std::string& typeText, const std::string& bytes) {
  const TypeHandle type = parseType(typeText);
  EXPECT_EQ(vrntTypeSize(type.get()), bytes.size());
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type.get(), &error);
  vrntValueWrite(&value, 0, bytes.data(), bytes.size(), &error);
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

std::string words(std::initializer_list<std::uint32_t> list) {
  std::string bytes;
  for (const std::uint32_t word : list) {
    bytes.append(reinterpret_cast<const char*>(&word), sizeof(word));
  }
  return bytes;
}

bool equivalentWithValues(const ValueHandle& first, const ValueHandle& second) {
  Scene a;
  Scene b;
  addInstance(&a, VRDM_CLASS_MATERIAL);
  addInstance(&b, VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(&a, VRDM_CLASS_MATERIAL, 0, first.get());
  vrdmSetInstanceValue(&b, VRDM_CLASS_MATERIAL, 0, second.get());
  return equivalent(a, b);
}

TEST(EquivalenceOfValues, HoldsForTwoTypesThatPrintAlike) {
  // A reference to a block prints as what it leads to, whatever it is declared to lead to.
  const ValueHandle one = parseValue("1");
  vrntValuesError_t* error = nullptr;
  const auto reference = [&](const char* typeText) {
    const TypeHandle type = parseType(typeText);
    vrntValue_t* value = vrntValueCreate(type.get(), &error);
    const vrntValueView_t whole{vrntValueType(value), 0};
    vrntValueSetReference(&value, &whole, one.get(), &error);
    EXPECT_EQ(error, nullptr);
    return ValueHandle(value);
  };
  const ValueHandle typed = reference("int*");
  const ValueHandle untyped = reference("void*");
  EXPECT_NE(vrntValueType(typed.get()), vrntValueType(untyped.get()));
  EXPECT_TRUE(equivalentWithValues(typed, untyped));
}

TEST(EquivalenceOfValues, HoldsForBytesThatPrintAlike) {
  EXPECT_TRUE(equivalentWithValues(valueOfBytes("{ float a; }", words({0x7FC00000})),
                                   valueOfBytes("{ float a; }", words({0xFFC00001}))));
  EXPECT_TRUE(equivalentWithValues(valueOfBytes("{ bool a; }", words({1})),
                                   valueOfBytes("{ bool a; }", words({0xFFFFFFFF}))));
  EXPECT_TRUE(equivalentWithValues(valueOfBytes("{ char a; int b; }", words({0x11111101, 2})),
                                   valueOfBytes("{ char a; int b; }", words({0x22222201, 2}))));
}

TEST(EquivalenceOfValues, HoldsForTheSameNanAndTheSameBlock) {
  const ValueHandle nan = valueOfBytes("{ float a; }", words({0x7FC00000}));
  EXPECT_TRUE(equivalentWithValues(nan, nan));
  EXPECT_TRUE(equivalentWithValues(nan, valueOfBytes("{ float a; }", words({0x7FC00000}))));
}

TEST(EquivalenceOfValues, HoldsForNestedTypesOfEveryKind) {
  const char* const text =
      "{ a = [ { b = 1.0; c = [ true, false ]; }, { b = 2.0; c = [ true, true ]; } ]; "
      "d = float3(1.0, 2.0, 3.0); f = 1.0h; g = &{ h = 1; }; i = TWO : enum { ONE; "
      "TWO; }; }";
  const std::string other = std::string(text).replace(std::string(text).find("h = 1"), 5, "h = 2");
  EXPECT_TRUE(equivalentWithValues(parseValue(text), parseValue(text)));
  EXPECT_FALSE(equivalentWithValues(parseValue(text), parseValue(other)));
}

TEST(EquivalenceOfValues, RaisesForOneThatCannotBePrinted) {
  const char* const type = "{ enum { ONE; TWO; } a; }";
  const ValueHandle good = valueOfBytes(type, words({1}));
  const ValueHandle bad = valueOfBytes(type, words({2}));
  const ValueHandle alike = valueOfBytes(type, words({2}));
  const auto expectRaised = [](const ValueHandle& first, const ValueHandle& second) {
    try {
      equivalentWithValues(first, second);
      ADD_FAILURE() << "nothing was raised";
    } catch (const vrnt::Exception& exception) {
      EXPECT_STREQ(exception.what(), "Enum code out of range: 2");
    }
  };
  expectRaised(bad, good);
  expectRaised(good, bad);
  expectRaised(bad, alike);
  expectRaised(bad, bad);
}

TEST_F(Equivalence, StopsAtTheFirstDifference) {
  const ValueHandle bad = valueOfBytes("{ enum { ONE; } a; }", words({1}));
  vrdmSetInstanceValue(&b, VRDM_CLASS_LIGHT, kLive, bad.get());
  EXPECT_THROW(Scene::equivalent(a, b), vrnt::Exception);
  // Each of these is come to before the value.
  vrdmSetReference(&b, VRDM_CLASS_LIGHT, kLive, 0, 77);
  EXPECT_FALSE(equivalent(a, b));
  vrdmSetReference(&b, VRDM_CLASS_LIGHT, kLive, 0, 10);
  EXPECT_THROW(Scene::equivalent(a, b), vrnt::Exception);
  b.data.general.subdivision_memory_limit = 1;
  EXPECT_FALSE(equivalent(a, b));
  b.data.general.subdivision_memory_limit = 0;
  vrdmRemove(&b, VRDM_CLASS_LIGHT, 0);
  EXPECT_FALSE(equivalent(a, b));
}

TEST_F(Equivalence, LooksAtEachCharacterOfAProgram) {
  const auto walk = [&](auto& program) {
    for (std::size_t i = 0; i <= program.length; ++i) {
      if (i == program.length) break;
      const char before = program.text[i];
      for (const char changed : {'\0', 'X', static_cast<char>(before ^ 1)}) {
        program.text[i] = changed;
        EXPECT_FALSE(equivalent(a, b)) << i;
      }
      program.text[i] = before;
    }
    ASSERT_TRUE(equivalent(a, b));
  };
  walk(b.container<vrnt::data::CameraSource>().at(kLive));
  walk(b.container<vrnt::data::MaterialSource>().at(kLive));
  walk(b.container<vrnt::data::LightSource>().at(kLive));
}

TEST_F(Equivalence, ComparesProgramsUpToTheFirstNulAndNotTheirIds) {
  auto& program = b.container<vrnt::data::LightSource>().at(kLive);
  program.id = UniqueId::generate();
  EXPECT_TRUE(equivalent(a, b));
  program.text[1] = '\0';
  EXPECT_FALSE(equivalent(a, b));
  auto& other = a.container<vrnt::data::LightSource>().at(kLive);
  other.text[1] = '\0';
  other.text[2] = 'X';
  other.length = 2;
  EXPECT_TRUE(equivalent(a, b));
}

TEST_F(Equivalence, TakesAProgramWithoutATextAsAnEmptyOne) {
  Scene none;
  Scene empty;
  vrdmAddProgram(&none, VRDM_CLASS_LIGHT_PROGRAM, "");
  vrdmAddProgram(&empty, VRDM_CLASS_LIGHT_PROGRAM, "");
  auto& program = none.container<vrnt::data::LightSource>().at(0);
  std::free(std::exchange(program.text, nullptr));
  EXPECT_TRUE(equivalent(none, empty));
}

TEST_F(Equivalence, LooksAtEachByteOfAnAssetAndEachWordOfItsDescriptor) {
  const auto walk = [&](auto& asset) {
    auto* const bytes = static_cast<char*>(asset.storage.get()->data);
    for (std::uint64_t i = 0; i < asset.storage.get()->size; ++i) {
      bytes[i] = static_cast<char>(bytes[i] ^ 1);
      EXPECT_FALSE(equivalent(a, b)) << "byte " << i;
      bytes[i] = static_cast<char>(bytes[i] ^ 1);
    }
    auto* const desc = reinterpret_cast<char*>(&asset.desc);
    for (std::size_t i = 0; i < sizeof(asset.desc); ++i) {
      desc[i] = static_cast<char>(desc[i] ^ 1);
      EXPECT_FALSE(equivalent(a, b)) << "byte " << i << " of the descriptor";
      desc[i] = static_cast<char>(desc[i] ^ 1);
    }
    // The size that is compared is the block's.
    --asset.storage.get()->size;
    EXPECT_FALSE(equivalent(a, b));
    ++asset.storage.get()->size;
    asset.id = UniqueId::generate();
    ASSERT_TRUE(equivalent(a, b));
  };
  walk(b.container<vrnt::detail::MeshDesc>().at(kLive));
  walk(b.container<vrnt::detail::TextureDesc>().at(kLive));
  walk(b.container<vrnt::data::MaterialGraphDesc>().at(kLive));
}

TEST(EquivalenceOfAssets, DoesNotReadBytesThatAreShared) {
  constexpr std::size_t size = 4096;
  void* const unreadable = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(unreadable, MAP_FAILED);
  {
    const StorageHandle storage(vrdmAssetStorageWrap(unreadable, size, nullptr));
    AssetStorage* handle = storage.get();
    const std::array<std::uint64_t, 3> desc = {size, 0, 0};
    Scene a;
    Scene b;
    vrdmAddAsset(&a, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
    vrdmAddAsset(&b, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
    EXPECT_TRUE(equivalent(a, b));
    EXPECT_TRUE(equivalent(a, a));
  }
  munmap(unreadable, size);
}

TEST(EquivalenceOfAssets, ComparesTheDescriptorsOfSharedBytes) {
  const std::array<char, 64> bytes{};
  const StorageHandle storage(vrdmAssetStorageCopy(bytes.data(), bytes.size()));
  AssetStorage* handle = storage.get();
  Scene a;
  Scene b;
  for (const auto& [scene, root] : {std::pair(&a, 0), std::pair(&b, 16)}) {
    const std::array<std::uint64_t, 3> desc = {64, 0, static_cast<std::uint64_t>(root)};
    vrdmAddAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, desc.data(), &handle);
  }
  EXPECT_FALSE(equivalent(a, b));
  EXPECT_TRUE(equivalent(b, b));
}

TEST(EquivalenceOfAssets, HoldsForAssetsOfNoBytes) {
  Scene a;
  Scene b;
  addGraph(&a, "");
  addGraph(&b, "");
  EXPECT_TRUE(equivalent(a, b));
  vrdmRemove(&b, VRDM_CLASS_MATERIAL_GRAPH, 0);
  EXPECT_FALSE(equivalent(a, b));
}

TEST_F(Equivalence, LooksAtWhichSlotsAreLive) {
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    Scene less = fullScene();
    vrdmRemove(&less, i, kLive);
    EXPECT_FALSE(equivalent(a, less)) << vrdmObjectName(i);
    Scene filled = fullScene();
    addObject(&filled, i);
    EXPECT_FALSE(equivalent(a, filled)) << vrdmObjectName(i);
    // A free slot at the end counts, as a gap does.
    Scene longer = fullScene();
    for (const std::uint32_t added : {addObject(&longer, i), addObject(&longer, i)}) {
      vrdmRemove(&longer, i, static_cast<std::int32_t>(added));
    }
    EXPECT_EQ(vrdmContainerSize(&longer, i), 4U);
    EXPECT_FALSE(equivalent(a, longer)) << vrdmObjectName(i);
  }
}

TEST_F(Equivalence, LooksAtNothingInFreeSlots) {
  // What was in the second slot differs in everything.
  Scene other = fullScene();
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    switch (vrdmObjectClass(i)) {
      case VRDM_KIND_PROGRAM:
        vrdmAddProgram(&other, i, "another gap");
        break;
      case VRDM_KIND_ASSET: {
        const std::array<std::uint64_t, 3> desc = {7, 7, 7};
        const StorageHandle storage = newStorage("other");
        AssetStorage* handle = storage.get();
        vrdmAddAsset(&other, i, desc.data(), &handle);
        break;
      }
      default:
        addInstance(&other, i);
        if (vrdmHasValue(i)) setValue(other, i, 1, "{ other = 1; }");
        break;
    }
    vrdmRemove(&other, i, 1);
  }
  EXPECT_TRUE(equivalent(a, other));
  other.container<vrnt::data::ShapeDesc>().at(1).desc.groups.nestedPriority.priority = 99;
  other.container<vrnt::data::ShapeDesc>().at(1).desc.groups.general.edge_radius =
      std::numeric_limits<float>::quiet_NaN();
  EXPECT_TRUE(equivalent(a, other));
}

TEST_F(Equivalence, LooksAtNeitherIdsNorCountersNorTheNextFreeSlot) {
  EXPECT_NE(a.id, b.id);
  ++b.versions.version;
  for (std::uint32_t& counter : b.versions.groups) counter += 5;
  for (std::uint32_t& counter : b.versions.classes) counter += 7;
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    auto& container = b.container<Desc>();
    container.firstFree = 3;
    auto& element = container.at(kLive);
    if constexpr (vrnt::data::ClassInfo<Desc>::kKind == vrnt::data::ObjectKind::Instance) {
      element.version += 1;
      if constexpr (vrnt::data::kSlotCount<Desc> != 0) element.referencesVersion += 2;
      if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
        for (std::uint32_t& counter : element.groupVersions) counter += 3;
      }
    } else {
      element.id = UniqueId::generate();
    }
  });
  EXPECT_TRUE(equivalent(a, b));
}

}  // namespace
