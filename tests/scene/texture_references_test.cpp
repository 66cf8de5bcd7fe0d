// The textures that values name: the list that is read from a value, and the slots that follow it.
#include "vornath_data/texture_references.hpp"

#include <string>
#include <vector>

#include "../support/small_stack.hpp"
#include "deep_types.hpp"
#include "scenes.hpp"
#include "vornath_data/parameters.h"

namespace {

using namespace vornath_test;
using vrnt::Value;
using vrnt::data::extractTextureReferences;

using Numbers = std::vector<std::int32_t>;

Numbers texturesIn(const Value& value) {
  Numbers numbers;
  for (const auto texture : extractTextureReferences(value)) numbers.push_back(texture.index);
  return numbers;
}

Numbers texturesIn(const std::string& text) {
  return texturesIn(Value::adopt(parseValue(text).release()));
}

// The value of a type with an int written at an offset.
ValueHandle valueWith(const vrntType_t* type, std::uint64_t offset, std::int32_t number) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreateDefault(type, &error);
  EXPECT_NE(value, nullptr);
  vrntValueWrite(&value, offset, &number, sizeof(number), &error);
  EXPECT_EQ(error, nullptr);
  return ValueHandle(value);
}

TEST(ExtractTextureReferences, OfAValueWithoutStructIsEmpty) {
  for (const char* text : {"3", "float3(1.0, 2.0, 3.0)", "[ 1, 2 ]", "&{ texture_ref = 1; }",
                           "HIGH : enum { LOW; HIGH; }", "{ }", "{ a = 1; b = [ 2 ]; }"}) {
    EXPECT_EQ(texturesIn(text), Numbers{}) << text;
  }
}

TEST(ExtractTextureReferences, KnowsTheSixKindsByTheirField) {
  for (const char* kind : {"spectrum_texture", "spectrum_sphere_texture", "normal_texture",
                           "float_texture", "float_sphere_texture", "texture_ref"}) {
    EXPECT_EQ(texturesIn(std::string("{ ") + kind + " = 4; }"), Numbers{4}) << kind;
    EXPECT_EQ(texturesIn(std::string("{ a = { ") + kind + " = 0; }; }"), Numbers{0}) << kind;
  }
}

TEST(ExtractTextureReferences, LeavesOtherStructsAlone) {
  for (const char* text :
       {"{ index = 4; }", "{ texture = 4; }", "{ texture_refs = 4; }", "{ textureRef = 4; }",
        "{ texture_ref = 4.0; }", "{ texture_ref = int2(4, 4); }", "{ texture_ref = true; }",
        "{ texture_ref = 4; other = 5; }", "{ other = 5; texture_ref = 4; }",
        "{ texture_ref = [ 4 ]; }", "{ texture_ref = B : enum { A; B; }; }"}) {
    EXPECT_EQ(texturesIn(text), Numbers{}) << text;
  }
  // The label alone doesn't make it one, and doesn't keep the inside from being looked at.
  EXPECT_EQ(texturesIn("{ texture_ref = { texture_ref = 4; }; }"), Numbers{4});
  EXPECT_EQ(texturesIn("{ index = { float_texture = 4; }; }"), Numbers{4});
}

TEST(ExtractTextureReferences, LeavesOutNegativeNumbers) {
  EXPECT_EQ(texturesIn("{ texture_ref = -1; }"), Numbers{});
  EXPECT_EQ(
      texturesIn("{ a = { texture_ref = -2147483648; }; b = { texture_ref = 2147483647; }; }"),
      Numbers{2147483647});
}

TEST(ExtractTextureReferences, GoesInFieldOrderDepthFirstAndKeepsDuplicates) {
  EXPECT_EQ(texturesIn("{ z = { texture_ref = 9; }; y = { deep = { a = { normal_texture = 3; }; "
                       "x = 1; }; b = { float_texture = 9; }; }; a = { spectrum_texture = 3; }; }"),
            (Numbers{9, 3, 9, 3}));
}

TEST(ExtractTextureReferences, PassesOverArraysAndReferences) {
  EXPECT_EQ(texturesIn("{ a = [ { texture_ref = 1; }, { texture_ref = 2; } ]; "
                       "b = &{ texture_ref = 3; }; c = { texture_ref = 4; }; }"),
            Numbers{4});
}

TEST(ExtractTextureReferences, FindsTheTexturesOfSamplers) {
  for (std::uint32_t number = 0; number < 4; ++number) {
    const TypeHandle sampler(vrntTypeSampler(number));
    const ValueHandle value = valueWith(sampler.get(), 0, 5);
    EXPECT_EQ(texturesIn(Value::share(value.get())), Numbers{5}) << number;
  }
  EXPECT_EQ(texturesIn("{ float_sphere_texture = { float_sphere_texture = 6; }; }"), Numbers{6});
  const std::string sampler = "{ spectrum_sphere_texture = { spectrum_sphere_texture = 7; }; }";
  EXPECT_EQ(texturesIn("{ a = " + sampler + "; b = " + sampler + "; }"), (Numbers{7, 7}));
}

TEST(ExtractTextureReferences, FindsThoseOfAMaterialParameter) {
  for (std::uint32_t number = 0; number < 6; ++number) {
    const TypeHandle type(vrntTypeMaterialParam(number));
    vrntValuesError_t* error = nullptr;
    Value value = Value::adopt(vrntValueCreate(type.get(), &error));
    EXPECT_EQ(texturesIn(value), Numbers{0}) << number;
  }
}

TEST(ExtractTextureReferences, GoesAsDeepAsTheValueOnASmallStack) {
  for (const auto& [innermost, expected] :
       {std::pair{"{ int texture_ref; }", Numbers{0}}, std::pair{"{ int texture; }", Numbers{}}}) {
    const Value value = zerosWithin(kDeep, innermost);
    Numbers found = {-1};
    runOnStack(kSmallStack, [&] { found = texturesIn(value); });
    EXPECT_EQ(found, expected) << innermost;
  }
}

// An object of a class with a value that says `text`.
std::int32_t addWithValue(vrdmScene_t* scene, std::uint32_t objectClass, const std::string& text) {
  const std::int32_t index = addInstance(scene, objectClass);
  const ValueHandle value = parseValue(text);
  EXPECT_TRUE(vrdmSetInstanceValue(scene, objectClass, index, value.get()));
  return index;
}

constexpr char kTwice[] =
    "{ a = { texture_ref = 3; }; b = { float_texture = 1; }; "
    "c = { none = { texture_ref = -1; }; d = { texture_ref = 3; }; }; }";

TEST(vrdmUpdateTextureReferences, ReplacesTheTexturesOfLightsAndMaterials) {
  for (const std::uint32_t objectClass : {VRDM_CLASS_LIGHT, VRDM_CLASS_MATERIAL}) {
    const SceneHandle scene = newScene();
    addWithValue(scene.get(), objectClass, "{ a = { texture_ref = 8; }; }");
    const std::int32_t index = addWithValue(scene.get(), objectClass, kTwice);
    setList(scene.get(), objectClass, index, 2, {7, 7, 7, 7, 7});
    vrdmUpdateTextureReferences(scene.get(), objectClass, index);
    EXPECT_EQ(listOf(scene.get(), objectClass, index, 2), (Numbers{3, 1, 3}));
    EXPECT_EQ(listOf(scene.get(), objectClass, 0, 2), Numbers{});
    // The single slots stay.
    EXPECT_EQ(vrdmGetReference(scene.get(), objectClass, index, 0), -1);

    const ValueHandle none = parseValue("{ a = 1; }");
    vrdmSetInstanceValue(scene.get(), objectClass, index, none.get());
    vrdmUpdateTextureReferences(scene.get(), objectClass, index);
    EXPECT_EQ(listOf(scene.get(), objectClass, index, 2), Numbers{});
  }
}

TEST(vrdmUpdateTextureReferences, EmptiesTheTexturesOfAnObjectWithoutValue) {
  const SceneHandle scene = newScene();
  const std::int32_t index = addInstance(scene.get(), VRDM_CLASS_MATERIAL);
  setList(scene.get(), VRDM_CLASS_MATERIAL, index, 2, {1, 2});
  vrdmUpdateTextureReferences(scene.get(), VRDM_CLASS_MATERIAL, index);
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_MATERIAL, index, 2), Numbers{});
}

TEST(vrdmUpdateTextureReferences, DoesNotLookIntoTheValueOfACamera) {
  const SceneHandle scene = newScene();
  const std::int32_t index = addWithValue(scene.get(), VRDM_CLASS_CAMERA, kTwice);
  vrdmSetReference(scene.get(), VRDM_CLASS_CAMERA, index, 1, 6);
  vrdmUpdateTextureReferences(scene.get(), VRDM_CLASS_CAMERA, index);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, index, 0), -1);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, index, 1), 6);
  EXPECT_EQ(vrdmGetReference(scene.get(), VRDM_CLASS_CAMERA, index, 2), -1);
}

TEST(vrdmUpdateTextureReferences, KeepsTheListsOfOtherClasses) {
  const SceneHandle scene = newScene();
  const std::int32_t index = addInstance(scene.get(), VRDM_CLASS_BAKE_TASK);
  setList(scene.get(), VRDM_CLASS_BAKE_TASK, index, 0, {1, 2});
  vrdmUpdateTextureReferences(scene.get(), VRDM_CLASS_BAKE_TASK, index);
  EXPECT_EQ(listOf(scene.get(), VRDM_CLASS_BAKE_TASK, index, 0), (Numbers{1, 2}));
}

// version and referencesVersion of an object, as far as it has them, and the sum of its groups'.
Numbers objectCounters(const vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index) {
  Numbers counters;
  vrnt::data::visitClass(
      objectClass,
      [&](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (vrnt::data::ClassInfo<Desc>::kKind == vrnt::data::ObjectKind::Instance) {
          const auto& object = scene->container<Desc>().at(index);
          counters.push_back(static_cast<std::int32_t>(object.version));
          if constexpr (vrnt::data::kSlotCount<Desc> != 0) {
            counters.push_back(static_cast<std::int32_t>(object.referencesVersion));
          }
          if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
            for (const std::uint32_t version : object.groupVersions) {
              counters.push_back(static_cast<std::int32_t>(version));
            }
          }
        }
      },
      [] {});
  return counters;
}

TEST(vrdmUpdateTextureReferences, RaisesTheCountersOfInstances) {
  for (const std::uint32_t objectClass : kInstances) {
    const SceneHandle scene = newScene();
    const std::int32_t index = addInstance(scene.get(), objectClass);
    const Counters before(scene.get());
    Numbers expected = objectCounters(scene.get(), objectClass, index);
    if (vrdmReferenceCount(objectClass) != 0) {
      ++expected.at(0);
      ++expected.at(1);
    }
    vrdmUpdateTextureReferences(scene.get(), objectClass, index);
    EXPECT_EQ(Counters(scene.get()), afterClassChange(before, objectClass)) << objectClass;
    EXPECT_EQ(objectCounters(scene.get(), objectClass, index), expected) << objectClass;
  }
}

TEST(vrdmUpdateTextureReferences, DoesNothingToProgramsAndAssetsAndPastTheLastClass) {
  const SceneHandle scene = newScene();
  for (std::uint32_t objectClass = 0; objectClass < 6; ++objectClass) {
    addObject(scene.get(), objectClass);
  }
  const Counters before(scene.get());
  for (std::uint32_t objectClass = 0; objectClass < 6; ++objectClass) {
    vrdmUpdateTextureReferences(scene.get(), objectClass, 0);
  }
  for (const std::uint32_t noClass : kNoClasses) {
    vrdmUpdateTextureReferences(scene.get(), noClass, 0);
  }
  EXPECT_EQ(Counters(scene.get()), before);
}

}  // namespace
