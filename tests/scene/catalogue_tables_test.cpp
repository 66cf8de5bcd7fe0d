// Every field of the catalogue against docs/catalogue.md: what a host finds out through the flat
// functions, and not how the schemas spell it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "field_walk.hpp"
#include "golden_catalogue.hpp"
#include "vornath_data/catalogue.h"

namespace {

using namespace vornath_test;

std::vector<std::string> constructorsOf(const GoldenField& field) {
  return golden::constructorsIn(field.type);
}

std::string plainEnumText(const GoldenField& field) {
  std::string text = "enum { ";
  for (const std::string& name : constructorsOf(field)) text += name + "; ";
  return text + "}";
}

Annotations expectedOf(const GoldenField& field) {
  Annotations annotations = field.annotations;
  const auto found = annotations.find("default");
  if (found != annotations.end() && field.isEnum()) found->second += " : " + plainEnumText(field);
  return annotations;
}

// What the library says, and that a default or limit of a field is of the field's own type.
Annotations actualOf(const vrntType_t* type) {
  Annotations annotations;
  for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
    const std::string key = vrntMetadataName(type, i);
    switch (vrntMetadataType(type, key.c_str())) {
      case VRNT_METADATA_FLAG:
        annotations[key] = "";
        break;
      case VRNT_METADATA_TEXT:
        annotations[key] = '"' + std::string(vrntMetadataString(type, key.c_str())) + '"';
        break;
      default: {
        const ValueHandle value(vrntMetadataValue(type, key.c_str()));
        EXPECT_EQ(vrntTypeIsEqual(vrntValueType(value.get()), type), 1) << key;
        annotations[key] = textOf(value);
      }
    }
  }
  return annotations;
}

// The type in the words of the page.
std::string describe(const vrntType_t* type) {
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_BASE: {
      const std::vector<std::string> families{"char", "half", "bool", "int", "float"};
      const std::uint32_t lanes = vrntTypeVectorDimension(type);
      return families.at(vrntTypeBasetype(type)) + (lanes == 1 ? "" : std::to_string(lanes));
    }
    case VRNT_DESCRIPTOR_STRUCT:
      return "struct";
    case VRNT_DESCRIPTOR_ARRAY: {
      if (vrntTypeArrayDimension(type) != 1) return "array of another rank";
      std::int32_t extent = 0;
      vrntTypeArrayShape(type, &extent);
      const TypeHandle element(vrntTypeElementType(type));
      return describe(element.get()) + "[" + std::to_string(extent) + "]";
    }
    case VRNT_DESCRIPTOR_ENUM: {
      const std::string whole = vrntTypeString(type);
      bool quoted = false;
      bool annotated = false;
      std::size_t end = 0;
      for (; quoted || whole.at(end) != '}'; ++end) {
        if (whole[end] == '"') quoted = !quoted;
        if (whole[end] == '@') annotated = true;
      }
      if (annotated) return whole.substr(0, end + 1);
      std::string text = "enum ";
      for (std::uint32_t i = 0; i < vrntTypeConstructorCount(type); ++i) {
        text += (i == 0 ? "" : ", ") + std::string(vrntTypeConstructorName(type, i));
      }
      return text;
    }
    default:
      return "another type";
  }
}

std::uint32_t classOf(const std::string& name) {
  if (name == "SceneData") return VRDM_CLASS_SCENE_DATA;
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    if (vrdmObjectName(i) == name) return i;
  }
  ADD_FAILURE() << "no class " << name;
  return vrdmObjectTypeCount();
}

// Calls `check(group, type)` for each group of each class that the page has, the scene's included.
template <typename Check>
void forEachListedGroup(Check&& check) {
  for (const GoldenClass& listed : goldenCatalogue().classes) {
    const std::uint32_t objectClass = classOf(listed.name);
    for (std::uint32_t i = 0; i < listed.groups.size(); ++i) {
      SCOPED_TRACE(listed.name + " \"" + listed.groups[i].name + '"');
      const TypeHandle type(vrdmFieldType(objectClass, i));
      ASSERT_NE(type, nullptr);
      check(listed.groups[i], type.get());
    }
  }
}

std::string differenceOf(const std::vector<WalkedField>& fields, const GoldenGroup& group) {
  std::vector<std::string> listed;
  for (const GoldenField& field : group.fields) listed.push_back(field.path);
  return firstDifference(pathsOf(fields), "the schema", listed, "docs/catalogue.md");
}

TEST(CatalogueTables, ListEveryGroupOnce) {
  const auto& classes = goldenCatalogue().classes;
  ASSERT_EQ(classes.size(), vrdmObjectTypeCount() + 1);
  EXPECT_EQ(classes.back().name, "SceneData");
  for (const GoldenClass& listed : classes) {
    SCOPED_TRACE(listed.name);
    const std::uint32_t objectClass = classOf(listed.name);
    ASSERT_EQ(listed.groups.size(), vrdmFieldCount(objectClass));
    for (std::uint32_t i = 0; i < listed.groups.size(); ++i) {
      EXPECT_EQ(listed.groups[i].name, vrdmFieldName(objectClass, i));
    }
  }
}

TEST(CatalogueTables, GiveTheMetadataOfEveryGroup) {
  forEachListedGroup([](const GoldenGroup& group, const vrntType_t* type) {
    EXPECT_EQ(actualOf(type), group.annotations);
  });
}

TEST(CatalogueTables, GiveTheFieldsOfEveryGroupInOrder) {
  forEachListedGroup([](const GoldenGroup& group, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), group.fields.size()) << differenceOf(fields, group);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      EXPECT_EQ(fields[i].path, group.fields[i].path);
      EXPECT_EQ(describe(fields[i].type.get()), group.fields[i].type) << group.fields[i].path;
    }
  });
}

TEST(CatalogueTables, GiveDefaultLimitsAndLabelsOfEveryField) {
  forEachListedGroup([](const GoldenGroup& group, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), group.fields.size()) << differenceOf(fields, group);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      SCOPED_TRACE(group.fields[i].path);
      EXPECT_EQ(actualOf(fields[i].type.get()), expectedOf(group.fields[i]));
    }
  });
}

TEST(CatalogueTables, GiveTheLabelsOfEveryConstructor) {
  std::vector<std::string> labelled;
  forEachListedGroup([&labelled](const GoldenGroup& group, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), group.fields.size()) << differenceOf(fields, group);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const GoldenField& field = group.fields[i];
      if (!field.isEnum()) continue;
      const bool annotated = field.type.find('@') != std::string::npos;
      const std::string expected = annotated ? field.type : plainEnumText(field);
      const std::string text = vrntTypeString(fields[i].type.get());
      EXPECT_EQ(text.substr(0, expected.size()), expected) << field.path;
      if (annotated) labelled.push_back(field.path);
    }
  });
  const std::vector<std::string> expected{
      "image.wrapmode.u",      "image.wrapmode.v",        "visible_to.reflection",
      "visible_to.refraction", "visible_to.transmission",  // of a light
      "visible_to.reflection", "visible_to.refraction",   "visible_to.transmission"};
  EXPECT_EQ(labelled, expected);
}

TEST(CatalogueTables, GiveEveryFieldItsDefaultInANewValue) {
  forEachListedGroup([](const GoldenGroup& group, const vrntType_t* type) {
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreateDefault(type, &error));
    ASSERT_NE(value, nullptr);
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), group.fields.size()) << differenceOf(fields, group);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const GoldenField& field = group.fields[i];
      if (field.type.rfind("struct", 0) == 0) continue;
      const TypeHandle plain(vrntTypeStripMetadata(fields[i].type.get()));
      const vrntValueView_t view{plain.get(), fields[i].offset};
      const StringHandle text(vrntValueString(value.get(), &view, 0, &error));
      ASSERT_NE(text, nullptr) << field.path;
      Annotations annotations = expectedOf(field);
      std::string expected = annotations["default"];
      if (expected.empty() && field.isEnum()) {
        expected = constructorsOf(field).front() + " : " + plainEnumText(field);
      } else if (expected.empty()) {
        vrntValuesError_t* zeroError = nullptr;
        expected = textOf(ValueHandle(vrntValueCreate(plain.get(), &zeroError)));
      }
      EXPECT_EQ(text.get(), expected) << field.path;
    }
  });
}

}  // namespace
