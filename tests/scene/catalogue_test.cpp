// The catalogue's queries, and the agreement of each group's schema with its record.
#include "vornath_data/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <type_traits>
#include <vector>

#include "field_walk.hpp"
#include "golden_catalogue.hpp"
#include "record_members.hpp"
#include "vornath_data/catalogue/class_list.hpp"
#include "vornath_data/scene_interface.h"

namespace {

using namespace vornath_test;
using vrnt::data::ClassInfo;
using vrnt::data::ClassTag;
using vrnt::data::SceneData;

constexpr std::uint32_t kAllBits = 0xFFFFFFFF;

struct SlotRow {
  std::string name;
  std::uint32_t kind;
  std::uint32_t target;
};

struct ClassRow {
  std::string name;
  std::uint32_t kind;
  std::vector<std::string> groups;
  std::vector<SlotRow> slots;
  bool hasValue;
};

// A position in a list of words, as the page has them; a failure for a word that isn't there.
std::uint32_t positionOf(const std::string& word, const std::vector<std::string>& words) {
  const auto found = std::find(words.begin(), words.end(), word);
  EXPECT_NE(found, words.end()) << "docs/catalogue.md: " << word;
  return static_cast<std::uint32_t>(found - words.begin());
}

std::vector<std::string> groupNamesOf(const GoldenClass& listed) {
  std::vector<std::string> names;
  for (const GoldenGroup& group : listed.groups) names.push_back(group.name);
  return names;
}

// The classes as docs/catalogue.md has them.
const std::vector<ClassRow> kClasses = [] {
  std::vector<std::string> names;
  for (const GoldenClass& listed : goldenCatalogue().classes) names.push_back(listed.name);
  std::vector<ClassRow> rows;
  for (const GoldenClass& listed : goldenCatalogue().classes) {
    if (listed.name == "SceneData") continue;
    ClassRow row{listed.name,
                 positionOf(listed.kind, {"program", "asset", "instance"}),
                 groupNamesOf(listed),
                 {},
                 listed.hasValue};
    for (const GoldenSlot& slot : listed.slots) {
      const bool emitters = slot.holds == "list, coded: lights and shapes";
      row.slots.push_back({slot.name,
                           emitters
                               ? 100
                               : positionOf(slot.holds, {"one, required", "one, optional", "list",
                                                         "list, coded: front and back"}),
                           slot.target == "Light or Shape" ? 100 : positionOf(slot.target, names)});
    }
    rows.push_back(row);
  }
  return rows;
}();

const std::vector<std::string> kSceneGroupNames = groupNamesOf(goldenClass("SceneData"));

const auto kCount = static_cast<std::uint32_t>(kClasses.size());

// Numbers that are no class. -1 is one for every query that knows no scene-wide groups.
const std::vector<std::uint32_t> kNoClasses{kCount,     kCount + 1, 100,
                                            0x7FFFFFFF, 0x80000000, 0xFFFFFFFE};

std::uint32_t numberOf(const std::string& name) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    if (kClasses[i].name == name) return i;
  }
  return name == "SceneData" ? kAllBits : kCount;
}

TypeHandle typeOf(std::uint32_t objectClass, std::uint32_t group) {
  return TypeHandle(vrdmFieldType(objectClass, group));
}

void expectNoSlot(std::uint32_t objectClass, std::uint32_t slot, std::uint32_t numbers) {
  const vrdmReferenceInfo info = vrdmReferenceType(objectClass, slot);
  EXPECT_EQ(info.kind, numbers) << objectClass << " " << slot;
  EXPECT_EQ(info.targetClass, numbers) << objectClass << " " << slot;
  EXPECT_EQ(info.name, nullptr) << objectClass << " " << slot;
}

TEST(vrdmObjectTypeCount, IsEighteen) {
  EXPECT_EQ(vrdmObjectTypeCount(), 18U);
  EXPECT_EQ(kClasses.size(), 18U);
}

TEST(vrdmObjectName, GivesTheNamesInTheOrderOfTheClasses) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    ASSERT_NE(vrdmObjectName(i), nullptr) << i;
    EXPECT_EQ(vrdmObjectName(i), kClasses[i].name);
  }
}

TEST(vrdmObjectName, IsNullForNumbersThatAreNoClass) {
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmObjectName(number), nullptr);
  EXPECT_EQ(vrdmObjectName(VRDM_CLASS_SCENE_DATA), nullptr);
}

TEST(vrdmObjectName, IsTheSameTextAtEachCall) { EXPECT_EQ(vrdmObjectName(8), vrdmObjectName(8)); }

TEST(vrdmObjectClass, GivesTheKindOfEachClass) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    EXPECT_EQ(vrdmObjectClass(i), kClasses[i].kind) << kClasses[i].name;
  }
}

TEST(vrdmObjectClass, IsZeroForNumbersThatAreNoClass) {
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmObjectClass(number), 0U);
  EXPECT_EQ(vrdmObjectClass(VRDM_CLASS_SCENE_DATA), 0U);
}

TEST(vrdmFieldCount, GivesTheNumberOfGroupsOfEachClass) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    EXPECT_EQ(vrdmFieldCount(i), kClasses[i].groups.size()) << kClasses[i].name;
  }
}

TEST(vrdmFieldCount, IsFourForTheSceneAndZeroForNumbersThatAreNoClass) {
  EXPECT_EQ(vrdmFieldCount(VRDM_CLASS_SCENE_DATA), 4U);
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmFieldCount(number), 0U);
}

TEST(vrdmFieldName, GivesTheGroupsOfEachClassByPosition) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    const auto& groups = kClasses[i].groups;
    for (std::uint32_t g = 0; g < groups.size(); ++g) {
      ASSERT_NE(vrdmFieldName(i, g), nullptr) << kClasses[i].name << " " << g;
      EXPECT_EQ(vrdmFieldName(i, g), groups[g]) << kClasses[i].name << " " << g;
    }
  }
}

TEST(vrdmFieldName, GivesTheGroupsOfTheScene) {
  for (std::uint32_t g = 0; g < 4; ++g) {
    ASSERT_NE(vrdmFieldName(VRDM_CLASS_SCENE_DATA, g), nullptr) << g;
    EXPECT_EQ(vrdmFieldName(VRDM_CLASS_SCENE_DATA, g), kSceneGroupNames[g]);
  }
  EXPECT_STREQ(vrdmFieldName(VRDM_CLASS_SCENE_DATA, 3), "General");
}

TEST(vrdmFieldName, IsNullPastTheEndAndWhereThereAreNoGroups) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    const auto count = static_cast<std::uint32_t>(kClasses[i].groups.size());
    EXPECT_EQ(vrdmFieldName(i, count), nullptr) << kClasses[i].name;
    EXPECT_EQ(vrdmFieldName(i, kAllBits), nullptr) << kClasses[i].name;
  }
  EXPECT_EQ(vrdmFieldName(VRDM_CLASS_SCENE_DATA, 4), nullptr);
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmFieldName(number, 0), nullptr);
}

TEST(vrdmFieldType, IsNullPastTheEndAndWhereThereAreNoGroups) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    const auto count = static_cast<std::uint32_t>(kClasses[i].groups.size());
    EXPECT_EQ(vrdmFieldType(i, count), nullptr) << kClasses[i].name;
    EXPECT_EQ(vrdmFieldType(i, kAllBits), nullptr) << kClasses[i].name;
  }
  EXPECT_EQ(vrdmFieldType(VRDM_CLASS_SCENE_DATA, 4), nullptr);
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmFieldType(number, 0), nullptr);
}

TEST(vrdmFieldType, GivesAStructWithTheGroupsNameForEveryGroup) {
  const auto check = [](std::uint32_t objectClass) {
    for (std::uint32_t g = 0; g < vrdmFieldCount(objectClass); ++g) {
      const TypeHandle type = typeOf(objectClass, g);
      ASSERT_NE(type, nullptr) << objectClass << " " << g;
      EXPECT_EQ(vrntTypeDescriptor(type.get()), std::uint32_t{VRNT_DESCRIPTOR_STRUCT});
      ASSERT_EQ(vrntMetadataExists(type.get(), "name"), 1U);
      EXPECT_STREQ(vrntMetadataString(type.get(), "name"), vrdmFieldName(objectClass, g));
    }
  };
  for (std::uint32_t i = 0; i < kCount; ++i) check(i);
  check(VRDM_CLASS_SCENE_DATA);
}

TEST(vrdmFieldType, GivesAReferenceOfItsOwnAtEachCall) {
  const TypeHandle kept = typeOf(8, 3);
  const std::string text = vrntTypeString(kept.get());
  for (int i = 0; i < 3; ++i) {
    const TypeHandle dropped = typeOf(8, 3);
    EXPECT_EQ(vrntTypeIsEqual(kept.get(), dropped.get()), 1);
  }
  EXPECT_EQ(text, vrntTypeString(kept.get()));
  EXPECT_EQ(text, vrntTypeString(typeOf(8, 3).get()));
}

TEST(vrdmFieldType, IsTheSameForTheGroupsThatBothTasksHave) {
  for (std::uint32_t g = 0; g < 11; ++g) {
    const TypeHandle image = typeOf(numberOf("ImageTask"), g);
    const TypeHandle bake = typeOf(numberOf("BakeTask"), g);
    EXPECT_EQ(vrntTypeIsEqual(image.get(), bake.get()), 1) << g;
    EXPECT_STREQ(vrntTypeString(image.get()), vrntTypeString(bake.get())) << g;
  }
}

TEST(vrdmFieldType, IsTheSameForTheTargetOfLightAndShape) {
  const TypeHandle light = typeOf(numberOf("Light"), 2);
  const TypeHandle shape = typeOf(numberOf("Shape"), 2);
  EXPECT_EQ(vrntTypeIsEqual(light.get(), shape.get()), 1);
  EXPECT_STREQ(vrntTypeString(light.get()), vrntTypeString(shape.get()));
}

// A parse of another spelling makes a type of its own, which takes the text over and, at its end,
// out of the table; the group's type is then what the next parse of the text gives.
TEST(vrdmFieldType, IsWhatAParseOfItsTextGives) {
  for (std::uint32_t c = 0; c <= vrdmObjectTypeCount(); ++c) {
    const std::uint32_t number = c < vrdmObjectTypeCount() ? c : VRDM_CLASS_SCENE_DATA;
    for (std::uint32_t g = 0; g < vrdmFieldCount(number); ++g) {
      const std::string text = vrntTypeString(typeOf(number, g).get());
      EXPECT_NE(parseType(" " + text), nullptr);
      const TypeHandle type = typeOf(number, g);
      EXPECT_EQ(type, parseType(text)) << text;
      EXPECT_EQ(type, typeOf(number, g)) << text;
    }
  }
  const TypeHandle image = typeOf(numberOf("ImageTask"), 0);
  EXPECT_EQ(image, typeOf(numberOf("BakeTask"), 0));
}

TEST(vrdmFieldType, TellsTransformationsApartByDescriptionOnly) {
  const TypeHandle camera = typeOf(numberOf("Camera"), 0);
  for (const char* name : {"TransformationGroup", "Light", "Decal", "Shape"}) {
    const TypeHandle other = typeOf(numberOf(name), 0);
    EXPECT_EQ(vrntTypeIsEqual(camera.get(), other.get()), 1) << name;
    EXPECT_STRNE(vrntMetadataString(camera.get(), "desc"), vrntMetadataString(other.get(), "desc"));
  }
  const TypeHandle keyframe = typeOf(numberOf("Keyframe"), 0);
  EXPECT_EQ(vrntTypeIsEqual(camera.get(), keyframe.get()), 0);
}

TEST(vrdmReferenceCount, GivesTheNumberOfSlotsOfEachClass) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    EXPECT_EQ(vrdmReferenceCount(i), kClasses[i].slots.size()) << kClasses[i].name;
  }
  EXPECT_EQ(vrdmReferenceCount(VRDM_CLASS_SCENE_DATA), 0U);
  for (const std::uint32_t number : kNoClasses) EXPECT_EQ(vrdmReferenceCount(number), 0U);
}

TEST(vrdmReferenceType, GivesNameKindAndTargetOfEachSlot) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    const auto& slots = kClasses[i].slots;
    for (std::uint32_t s = 0; s < slots.size(); ++s) {
      const vrdmReferenceInfo info = vrdmReferenceType(i, s);
      ASSERT_NE(info.name, nullptr) << kClasses[i].name << " " << s;
      EXPECT_EQ(info.name, slots[s].name) << kClasses[i].name << " " << s;
      EXPECT_EQ(info.kind, slots[s].kind) << kClasses[i].name << " " << s;
      EXPECT_EQ(info.targetClass, slots[s].target) << kClasses[i].name << " " << s;
    }
  }
}

TEST(vrdmReferenceType, HasAllBitsSetForAClassWithoutSlots) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    if (!kClasses[i].slots.empty()) continue;
    expectNoSlot(i, 0, kAllBits);
    expectNoSlot(i, 5, kAllBits);
  }
  expectNoSlot(numberOf("Keyframe"), 0, kAllBits);
  expectNoSlot(VRDM_CLASS_SCENE_DATA, 0, kAllBits);
}

TEST(vrdmReferenceType, IsZeroPastTheLastSlotAndForNumbersThatAreNoClass) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    if (kClasses[i].slots.empty()) continue;
    expectNoSlot(i, static_cast<std::uint32_t>(kClasses[i].slots.size()), 0);
    expectNoSlot(i, kAllBits, 0);
  }
  expectNoSlot(numberOf("KeyframeList"), 1, 0);
  for (const std::uint32_t number : kNoClasses) expectNoSlot(number, 0, 0);
}

TEST(vrdmHasValue, IsTrueForCameraLightAndMaterial) {
  for (std::uint32_t i = 0; i < kClasses.size(); ++i) {
    EXPECT_EQ(vrdmHasValue(i), kClasses[i].hasValue) << kClasses[i].name;
  }
  EXPECT_FALSE(vrdmHasValue(VRDM_CLASS_SCENE_DATA));
  for (const std::uint32_t number : kNoClasses) EXPECT_FALSE(vrdmHasValue(number));
}

// The classes as the Descs declare them, for hosts in C++.

TEST(ObjectClass, NumbersTheClassesAsTheQueriesDo) {
  std::uint32_t number = 0;
  vrnt::data::forEachClass([&number](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    EXPECT_EQ(static_cast<std::uint32_t>(ClassInfo<Desc>::kClass), number);
    EXPECT_EQ(ClassInfo<Desc>::kName, kClasses[number].name);
    ++number;
  });
  EXPECT_EQ(number, kCount);
}

TEST(Ref, OfANewShapeIsUnsetInAllNineSlots) {
  const vrnt::data::ShapeDesc shape;
  int slots = 0;
  vrnt::data::forEachSlot<vrnt::data::ShapeDesc>([&](const auto& slot, auto) {
    EXPECT_EQ((shape.*slot.member).index, -1) << slot.name;
    ++slots;
  });
  EXPECT_EQ(slots, 9);
}

TEST(CodedRefList, TellsTwoTargetsApartBySign) {
  using Emitters = vrnt::CodedRefList<vrnt::data::Emitter>;
  EXPECT_EQ(Emitters::negative(0), -1);
  EXPECT_EQ(Emitters::nonNegative(0), 0);
  EXPECT_EQ(Emitters::negative(7), -8);
  EXPECT_EQ(static_cast<std::uint32_t>(Emitters::kNoTarget), 0x80000000U);
  EXPECT_EQ(vrnt::RefList<void>::kNoTarget, -1);
}

TEST(MeshDesc, MeasuresItsBytes) {
  using vrnt::detail::MeshDesc;
  EXPECT_EQ((MeshDesc{1, 3, 0, 3}.size()), 152U);
  EXPECT_EQ((MeshDesc{0, 0, 0, 0}.size()), 0U);
  EXPECT_EQ((MeshDesc{1, 0, 0, 0}.size()), 12U);
  EXPECT_EQ((MeshDesc{1, 0, 0, 1}.size()), 16U);
  EXPECT_EQ((MeshDesc{1, 0, 0, 2}.size()), 16U);
  EXPECT_EQ((MeshDesc{1, 0, 0, 0xFFFFFFFC}.size()), 12U);
  // Nine words a vertex, and two for each set; no set counts as one.
  EXPECT_EQ((MeshDesc{0, 1, 0, 0}.size()), 44U);
  EXPECT_EQ((MeshDesc{0, 1, 1, 0}.size()), 44U);
  EXPECT_EQ((MeshDesc{0, 1, 3, 0}.size()), 60U);
  // 4 * 3 * (2^31 - 1) bytes don't fit 32 bits.
  EXPECT_EQ((MeshDesc{0x7FFFFFFF, 0, 0, 0}.size()), 25769803764U);
}

TEST(MaterialGraphDesc, MeasuresItsBytesByItsFirstWord) {
  EXPECT_EQ((vrnt::data::MaterialGraphDesc{1000, 16, 64}.size()), 1000U);
}

// Schema against record, for every group.

template <typename Desc>
std::string nameOf() {
  if constexpr (std::is_same_v<Desc, SceneData>) {
    return "SceneData";
  } else {
    return ClassInfo<Desc>::kName;
  }
}

// Calls `check(className, group)` for every group of every class and of the scene.
template <typename Check>
void forEveryGroup(Check&& check) {
  vrnt::data::forEachClass([&check](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    vrnt::data::forEachGroup<Desc>(
        [&check](const auto& group, auto) { check(std::string(ClassInfo<Desc>::kName), group); });
  });
  vrnt::data::forEachGroup<SceneData>(
      [&check](const auto& group, auto) { check(std::string("SceneData"), group); });
}

TEST(Catalogue, DeclaresTheGroupsThatItsPageLists) {
  std::vector<std::string> listed;
  for (const GoldenClass& object : goldenCatalogue().classes) {
    for (const GoldenGroup& group : object.groups) listed.push_back(object.name + " " + group.name);
  }
  std::vector<std::string> declared;
  forEveryGroup([&declared](const std::string& className, const auto& group) {
    declared.push_back(className + " " + group.name);
  });
  EXPECT_EQ(declared, listed);
  EXPECT_EQ(vrnt::data::kTotalGroupCount, listed.size());
  EXPECT_GE(listed.size(), 54U);
}

TEST(Catalogue, WritesEverySchemaInCanonicalText) {
  forEveryGroup([](const std::string& className, const auto& group) {
    SCOPED_TRACE(className + " \"" + group.name + "\"");
    const TypeHandle type = parseType(group.schema);
    ASSERT_NE(type, nullptr);
    EXPECT_STREQ(vrntTypeString(type.get()), group.schema);
  });
}

TEST(Catalogue, NamesEveryGroupByItsMetadata) {
  forEveryGroup([](const std::string& className, const auto& group) {
    SCOPED_TRACE(className + " \"" + group.name + "\"");
    const TypeHandle type = parseType(group.schema);
    ASSERT_NE(type, nullptr);
    ASSERT_EQ(vrntMetadataExists(type.get(), "name"), 1U);
    EXPECT_STREQ(vrntMetadataString(type.get(), "name"), group.name);
  });
}

template <typename T>
std::vector<unsigned char> freshBytes() {
  const T object{};
  std::vector<unsigned char> bytes(sizeof(T));
  std::memcpy(bytes.data(), &object, sizeof(T));
  return bytes;
}

#if defined(__has_builtin)
#if __has_builtin(__builtin_clear_padding)
#define VORNATH_TESTS_SEE_PADDING 1
#endif
#endif

// The bytes of an object that belong to no member are zero here, all others aren't. Where the
// compiler can't tell, none is zero.
template <typename T>
std::vector<unsigned char> memberBytes() {
  alignas(T) unsigned char memory[sizeof(T)];
  std::memset(memory, 0xFF, sizeof memory);
#ifdef VORNATH_TESTS_SEE_PADDING
  __builtin_clear_padding(reinterpret_cast<T*>(memory));
#endif
  return std::vector<unsigned char>(memory, memory + sizeof memory);
}

// The bytes that a part covers, and its name.
struct Part {
  std::string name;
  std::size_t offset;
  std::size_t size;
};

// Padding goes to file: it is zero, and named, since nothing else makes it so in every copy.
template <typename T>
void expectNamedZeroPadding(const std::vector<Part>& parts) {
  const std::vector<unsigned char> fresh = freshBytes<T>();
  const std::vector<unsigned char> members = memberBytes<T>();
  std::vector<bool> covered(sizeof(T));
  for (const Part& part : parts) {
    for (std::size_t i = 0; i < part.size; ++i) covered[part.offset + i] = true;
  }
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    const bool named = members[i] != 0;
    if (named && (covered[i] || fresh[i] == 0)) continue;
    const Part* before = nullptr;
    for (const Part& part : parts) {
      if (part.offset <= i && (!before || part.offset >= before->offset)) before = &part;
    }
    ADD_FAILURE() << "the padding at byte " << i << ", behind "
                  << (before ? before->name : "nothing")
                  << (named ? ", isn't zero in a new record"
                            : ", has no name: VRNT_FILL or VRNT_FILL_END gives it one");
    return;
  }
}

TEST(Catalogue, LaysEveryRecordOutAsItsType) {
  forEveryGroup([](const std::string& className, const auto& group) {
    using Record = typename std::decay_t<decltype(group)>::Record;
    SCOPED_TRACE(className + " \"" + group.name + "\"");
    const TypeHandle type = parseType(group.schema);
    ASSERT_NE(type, nullptr);
    EXPECT_EQ(vrntTypeSize(type.get()), sizeof(Record));
    EXPECT_EQ(vrntTypeAlignment(type.get()), alignof(Record));
    const std::vector<Member> members = membersOf<Record>();
    const std::vector<WalkedField> fields = walkFields(type.get());
    std::vector<std::string> named;
    for (const Member& member : members) named.push_back(member.path);
    ASSERT_EQ(members.size(), fields.size())
        << firstDifference(pathsOf(fields), "the schema", named, "the record");
    for (std::size_t i = 0; i < fields.size(); ++i) {
      EXPECT_EQ(members[i].path, fields[i].path) << "field " << i;
      EXPECT_EQ(members[i].offset, fields[i].offset) << fields[i].path;
      EXPECT_EQ(members[i].size, vrntTypeSize(fields[i].type.get())) << fields[i].path;
    }
  });
}

TEST(Catalogue, StartsEveryRecordAtTheDefaultsOfItsType) {
  forEveryGroup([](const std::string& className, const auto& group) {
    using Record = typename std::decay_t<decltype(group)>::Record;
    SCOPED_TRACE(className + " \"" + group.name + "\"");
    const TypeHandle type = parseType(group.schema);
    ASSERT_NE(type, nullptr);
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreateDefault(type.get(), &error));
    ASSERT_NE(value, nullptr);
    std::vector<unsigned char> expected(sizeof(Record));
    std::memcpy(expected.data(), vrntValueData(value.get()), sizeof(Record));

    const std::vector<WalkedField> fields = walkFields(type.get());
    for (const WalkedField& field : fields) {
      // A texture is the one thing whose new record differs from its type's default: none, not 0.
      if (vrntMetadataExists(field.type.get(), "alias") == 0 ||
          std::string(vrntMetadataString(field.type.get(), "alias")) != "texture_ref") {
        continue;
      }
      std::int32_t index = -1;
      std::memcpy(&index, expected.data() + field.offset, sizeof index);
      EXPECT_EQ(index, 0) << field.path;
      index = -1;
      std::memcpy(expected.data() + field.offset, &index, sizeof index);
    }

    const std::vector<unsigned char> bytes = freshBytes<Record>();
    std::vector<Part> leaves;
    for (const WalkedField& field : fields) {
      const std::size_t size = vrntTypeSize(field.type.get());
      const bool isStruct =
          vrntTypeDescriptor(field.type.get()) == std::uint32_t{VRNT_DESCRIPTOR_STRUCT};
      if (isStruct) continue;
      EXPECT_EQ(std::memcmp(bytes.data() + field.offset, expected.data() + field.offset, size), 0)
          << "\"" << field.path << "\" starts at another value than its schema says";
      leaves.push_back({'"' + field.path + '"', field.offset, size});
    }
    expectNamedZeroPadding<Record>(leaves);
  });
}

TEST(Catalogue, StartsTheBlocksOfEveryClassWithZeroPadding) {
  // A block is its records with zeros between them.
  const auto check = [](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      using Groups = typename Desc::Groups;
      SCOPED_TRACE(nameOf<Desc>());
      const Groups groups{};
      const std::vector<unsigned char> bytes = freshBytes<Groups>();
      std::vector<Part> records;
      vrnt::data::forEachGroup<Desc>([&](const auto& group, auto) {
        using Record = typename std::decay_t<decltype(group)>::Record;
        const auto offset = static_cast<std::size_t>(
            reinterpret_cast<const unsigned char*>(&(groups.*group.member)) -
            reinterpret_cast<const unsigned char*>(&groups));
        const std::vector<unsigned char> record = freshBytes<Record>();
        EXPECT_EQ(std::memcmp(bytes.data() + offset, record.data(), record.size()), 0)
            << '"' << group.name << '"';
        records.push_back({"the group \"" + std::string(group.name) + '"', offset, record.size()});
      });
      expectNamedZeroPadding<Groups>(records);
    }
  };
  vrnt::data::forEachClass(check);
  check(ClassTag<SceneData>{});
}

TEST(Catalogue, StoresTrueAsAllOnes) {
  const vrnt::data::CameraBackplateData backplate;
  EXPECT_EQ(backplate.visible_to_reflection, -1);
  EXPECT_EQ(backplate.visible_to_refraction, 0);
}

TEST(Catalogue, StartsTextureIndicesAtNone) {
  EXPECT_EQ(vrnt::data::CameraBackplateData{}.image.spectrum_texture.index, -1);
  EXPECT_EQ(vrnt::data::ShapeHemiluxData{}.texture.index, -1);
  EXPECT_EQ(vrnt::data::ShapeHemiluxData{}.tone_mapping_texture.index, -1);
}

// The layout of the records is that of the files of one version.

// The version that the library writes, behind the eight bytes of the magic.
std::uint32_t writtenVersion() {
  const std::string path = testing::TempDir() + "catalogue_test_version.vrnscene";
  vrdmScene_t* scene = vrdmCreateScene();
  vrdmSerialize(scene, path.c_str());
  vrdmDestroyScene(scene);
  std::ifstream file(path, std::ios::binary);
  std::uint32_t version = 0;
  file.seekg(8);
  file.read(reinterpret_cast<char*>(&version), sizeof version);
  file.close();
  std::remove(path.c_str());
  return version;
}

TEST(Catalogue, HasItsLayoutRecordedForTheVersionThatIsWritten) {
  EXPECT_EQ(writtenVersion(), goldenCatalogue().version)
      << "docs/catalogue.md is that of another file version: run scripts/write_catalogue.py";
}

TEST(Catalogue, KeepsTheLayoutThatTheFileVersionStandsFor) {
  const std::string version = std::to_string(goldenCatalogue().version);
  const std::string advice =
      "; a file of version " + version +
      " has it elsewhere. Raise kVersion in src/scene/scene_file.cpp, and run "
      "scripts/write_catalogue.py";
  const auto check = [&advice](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      using Groups = typename Desc::Groups;
      const GoldenClass& listed = goldenClass(nameOf<Desc>());
      EXPECT_EQ(sizeof(Groups), listed.blockSize) << "the groups of " << listed.name << advice;
      const Groups groups{};
      vrnt::data::forEachGroup<Desc>([&](const auto& group, auto position) {
        using Record = typename std::decay_t<decltype(group)>::Record;
        const std::string place = listed.name + " \"" + group.name + '"';
        ASSERT_LT(position, listed.groups.size()) << place << advice;
        const GoldenGroup& layout = listed.groups[position];
        ASSERT_EQ(group.name, layout.name) << place << advice;
        EXPECT_EQ(sizeof(Record), layout.size) << place << advice;
        EXPECT_EQ(alignof(Record), layout.alignment) << place << advice;
        EXPECT_EQ(static_cast<std::uint64_t>(
                      reinterpret_cast<const unsigned char*>(&(groups.*group.member)) -
                      reinterpret_cast<const unsigned char*>(&groups)),
                  layout.offset)
            << place << advice;
        const TypeHandle type = parseType(group.schema);
        ASSERT_NE(type, nullptr);
        const std::vector<WalkedField> fields = walkFields(type.get());
        std::vector<std::string> recorded;
        for (const GoldenField& field : layout.fields) recorded.push_back(field.path);
        ASSERT_EQ(layout.fields.size(), fields.size())
            << place << ": "
            << firstDifference(pathsOf(fields), "the schema", recorded, "docs/catalogue.md")
            << advice;
        for (std::size_t i = 0; i < fields.size(); ++i) {
          const std::string field = place + ": " + fields[i].path + advice;
          EXPECT_EQ(layout.fields[i].path, fields[i].path) << field;
          EXPECT_EQ(layout.fields[i].offset, fields[i].offset) << field;
        }
      });
    }
  };
  vrnt::data::forEachClass(check);
  check(ClassTag<SceneData>{});
}

}  // namespace
