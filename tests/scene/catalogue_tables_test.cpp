// Every field of the catalogue against a table of facts of its own: what a host finds out through
// the flat functions, and not how the schemas spell it.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "field_walk.hpp"
#include "vornath_data/catalogue.h"

namespace {

using namespace vornath_test;

struct FieldRow {
  std::string path;
  std::string type;
  std::string defaultText;
  std::string limits;
  std::string label;
  std::string description;
  std::string further;
};

struct ValueRow {
  std::string path;
  std::string name;
  std::string description;
  std::string label;
};

struct GroupRow {
  std::string classes;
  std::string name;
  std::string description;
  std::string further;
  std::vector<FieldRow> fields;
  std::vector<ValueRow> values;
};

enum class LineKind { Group, Field, Values };

struct Line {
  LineKind kind;
  const char* cells[7];
};

const Line kLines[] = {
#define GROUP(classes, name, description, further) \
  {LineKind::Group, {classes, name, description, further}},
#define FIELD(path, type, defaultText, limits, label, description, further) \
  {LineKind::Field, {path, type, defaultText, limits, label, description, further}},
#define VALUES(path, name, description, label) {LineKind::Values, {path, name, description, label}},
#include "data/catalogue_tables.inc"
#undef GROUP
#undef FIELD
#undef VALUES
};

const std::vector<GroupRow>& groupRows() {
  static const std::vector<GroupRow> rows = [] {
    std::vector<GroupRow> groups;
    for (const auto& [kind, cells] : kLines) {
      switch (kind) {
        case LineKind::Group:
          groups.push_back({cells[0], cells[1], cells[2], cells[3], {}, {}});
          break;
        case LineKind::Field:
          groups.back().fields.push_back(
              {cells[0], cells[1], cells[2], cells[3], cells[4], cells[5], cells[6]});
          break;
        case LineKind::Values:
          groups.back().values.push_back({cells[0], cells[1], cells[2], cells[3]});
          break;
      }
    }
    return groups;
  }();
  return rows;
}

std::vector<std::string> split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    if (end > begin) parts.push_back(text.substr(begin, end - begin));
    begin = end + separator.size();
  }
  return parts;
}

std::string trim(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

// Annotations as key and content: nothing for a flag, a text in quotes, a value's text.
using Annotations = std::map<std::string, std::string>;

void addLimits(const std::string& limits, Annotations& annotations) {
  for (const std::string& part : split(limits, ";")) {
    std::string range = trim(part);
    std::string prefix;
    if (range.rfind("soft ", 0) == 0) {
      prefix = "soft_";
      range = range.substr(5);
    }
    range = " " + range + " ";
    const std::size_t to = range.find(" to ");
    ASSERT_NE(to, std::string::npos) << limits;
    const std::string low = trim(range.substr(0, to));
    const std::string high = trim(range.substr(to + 4));
    if (!low.empty()) annotations[prefix + "min"] = low;
    if (!high.empty()) annotations[prefix + "max"] = high;
  }
}

void addFurther(const std::string& further, Annotations& annotations) {
  for (const std::string& part : split(further, "@")) {
    const std::string annotation = trim(part);
    const std::size_t equals = annotation.find('=');
    annotations[annotation.substr(0, equals)] =
        equals == std::string::npos ? "" : annotation.substr(equals + 1);
  }
}

void addTexts(const std::string& label, const std::string& description, Annotations& annotations) {
  if (!label.empty()) annotations["name"] = '"' + label + '"';
  if (!description.empty()) annotations["desc"] = '"' + description + '"';
}

bool isEnum(const FieldRow& row) { return row.type.rfind("enum ", 0) == 0; }

std::vector<std::string> constructorsOf(const FieldRow& row) {
  return split(row.type.substr(5), ", ");
}

std::string plainEnumText(const FieldRow& row) {
  std::string text = "enum { ";
  for (const std::string& name : constructorsOf(row)) text += name + "; ";
  return text + "}";
}

// The enum's text with what is known of its constructors, up to the annotations of the field.
std::string annotatedEnumText(const FieldRow& row, const std::vector<ValueRow>& values) {
  std::string text = "enum { ";
  for (const std::string& name : constructorsOf(row)) {
    text += name;
    for (const ValueRow& value : values) {
      if (value.path != row.path || value.name != name) continue;
      if (!value.description.empty()) text += " @desc=\"" + value.description + "\"";
      if (!value.label.empty()) text += " @name=\"" + value.label + "\"";
    }
    text += "; ";
  }
  return text + "}";
}

Annotations expectedOf(const FieldRow& row) {
  Annotations annotations;
  if (!row.defaultText.empty()) {
    annotations["default"] =
        isEnum(row) ? row.defaultText + " : " + plainEnumText(row) : row.defaultText;
  }
  addLimits(row.limits, annotations);
  addTexts(row.label, row.description, annotations);
  addFurther(row.further, annotations);
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

// The type in the words of the table.
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

std::uint32_t groupOf(std::uint32_t objectClass, const std::string& name) {
  for (std::uint32_t i = 0; i < vrdmFieldCount(objectClass); ++i) {
    if (vrdmFieldName(objectClass, i) == name) return i;
  }
  return vrdmFieldCount(objectClass);
}

// Calls `check(row, type)` for each group that the table lists, once for each class that has it.
template <typename Check>
void forEachListedGroup(Check&& check) {
  for (const GroupRow& row : groupRows()) {
    for (const std::string& className : split(row.classes, " ")) {
      SCOPED_TRACE(className + " \"" + row.name + "\"");
      const std::uint32_t objectClass = classOf(className);
      const TypeHandle type(vrdmFieldType(objectClass, groupOf(objectClass, row.name)));
      ASSERT_NE(type, nullptr);
      check(row, type.get());
    }
  }
}

TEST(CatalogueTables, ListEveryGroupOnce) {
  std::set<std::pair<std::uint32_t, std::uint32_t>> listed;
  std::size_t fields = 0;
  for (const GroupRow& row : groupRows()) {
    fields += row.fields.size();
    for (const std::string& className : split(row.classes, " ")) {
      const std::uint32_t objectClass = classOf(className);
      const std::uint32_t group = groupOf(objectClass, row.name);
      EXPECT_LT(group, vrdmFieldCount(objectClass)) << className << " " << row.name;
      EXPECT_TRUE(listed.emplace(objectClass, group).second) << className << " " << row.name;
    }
  }
  EXPECT_EQ(fields, 314U) << "the fields in data/catalogue_tables.inc";
  std::size_t groups = vrdmFieldCount(VRDM_CLASS_SCENE_DATA);
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) groups += vrdmFieldCount(i);
  EXPECT_EQ(listed.size(), groups);
}

TEST(CatalogueTables, GiveTheMetadataOfEveryGroup) {
  forEachListedGroup([](const GroupRow& row, const vrntType_t* type) {
    Annotations expected;
    addTexts(row.name, row.description, expected);
    addFurther(row.further, expected);
    EXPECT_EQ(actualOf(type), expected);
  });
}

std::string differenceOf(const std::vector<WalkedField>& fields, const GroupRow& row) {
  std::vector<std::string> listed;
  for (const FieldRow& field : row.fields) listed.push_back(field.path);
  return firstDifference(pathsOf(fields), "the schema", listed, "data/catalogue_tables.inc");
}

TEST(CatalogueTables, GiveTheFieldsOfEveryGroupInOrder) {
  forEachListedGroup([](const GroupRow& row, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), row.fields.size()) << differenceOf(fields, row);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      EXPECT_EQ(fields[i].path, row.fields[i].path);
      EXPECT_EQ(describe(fields[i].type.get()), row.fields[i].type) << row.fields[i].path;
    }
  });
}

TEST(CatalogueTables, GiveDefaultLimitsAndLabelsOfEveryField) {
  forEachListedGroup([](const GroupRow& row, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), row.fields.size()) << differenceOf(fields, row);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      SCOPED_TRACE(row.fields[i].path);
      EXPECT_EQ(actualOf(fields[i].type.get()), expectedOf(row.fields[i]));
    }
  });
}

TEST(CatalogueTables, GiveTheLabelsOfEveryConstructor) {
  std::size_t labelled = 0;
  forEachListedGroup([&labelled](const GroupRow& row, const vrntType_t* type) {
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), row.fields.size()) << differenceOf(fields, row);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!isEnum(row.fields[i])) continue;
      const std::string expected = annotatedEnumText(row.fields[i], row.values);
      const std::string text = vrntTypeString(fields[i].type.get());
      EXPECT_EQ(text.substr(0, expected.size()), expected) << row.fields[i].path;
      if (expected != plainEnumText(row.fields[i])) ++labelled;
    }
  });
  // u and v of the backplate, and three kinds of ray for lights and for shapes.
  EXPECT_EQ(labelled, 8U);
}

TEST(CatalogueTables, GiveEveryFieldItsDefaultInANewValue) {
  forEachListedGroup([](const GroupRow& row, const vrntType_t* type) {
    vrntValuesError_t* error = nullptr;
    const ValueHandle value(vrntValueCreateDefault(type, &error));
    ASSERT_NE(value, nullptr);
    const std::vector<WalkedField> fields = walkFields(type);
    ASSERT_EQ(fields.size(), row.fields.size()) << differenceOf(fields, row);
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const FieldRow& field = row.fields[i];
      if (field.type.rfind("struct", 0) == 0) continue;
      const TypeHandle plain(vrntTypeStripMetadata(fields[i].type.get()));
      const vrntValueView_t view{plain.get(), fields[i].offset};
      const StringHandle text(vrntValueString(value.get(), &view, 0, &error));
      ASSERT_NE(text, nullptr) << field.path;
      std::string expected = field.defaultText;
      if (isEnum(field)) {
        if (expected.empty()) expected = constructorsOf(field).front();
        expected += " : " + plainEnumText(field);
      } else if (expected.empty()) {
        vrntValuesError_t* zeroError = nullptr;
        expected = textOf(ValueHandle(vrntValueCreate(plain.get(), &zeroError)));
      }
      EXPECT_EQ(text.get(), expected) << field.path;
    }
  });
}

}  // namespace
