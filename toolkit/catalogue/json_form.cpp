// The catalogue as JSON, for programs. docs/catalogue_forms.md lists the members.
#include <fmt/format.h>

#include "catalogue/forms.hpp"
#include "catalogue/json_writer.hpp"
#include "catalogue/value_text.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/metadata.h"

namespace vrtk {
namespace {

using Lines = JsonWriter::Lines;

// What a program has to do with a field.
std::string_view fieldKind(const vrntType_t* type) {
  if (isStruct(type)) return "struct";
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ARRAY:
      return "array";
    case VRNT_DESCRIPTOR_REFERENCE:
      return "reference";
    case VRNT_DESCRIPTOR_ENUM:
      return "enum";
    case VRNT_DESCRIPTOR_FUNCTION:
      return "function";
    default:
      return vrntTypeVectorDimension(type) > 1 ? "vector" : "scalar";
  }
}

void writeTextMember(JsonWriter& writer, std::string_view name, const vrntType_t* type,
                     const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_TEXT) {
    return;
  }
  writer.member(name, annotationText(type, key));
}

// The shown name, as the member `shown`, the description, the flags and all other annotations.
void writeAnnotations(JsonWriter& writer, const vrntType_t* type,
                      std::string_view shown = "label") {
  writeTextMember(writer, "unit", type, "si_unit");
  writeTextMember(writer, shown, type, "name");
  writeTextMember(writer, "description", type, "desc");
  bool flags = false;
  bool others = false;
  for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
    const char* const key = vrntMetadataName(type, i);
    const bool isFlag = vrntMetadataType(type, key) == VRNT_METADATA_FLAG;
    flags = flags || isFlag;
    others = others || (!isFlag && isFurtherAnnotation(key));
  }
  if (flags) {
    writer.key("flags");
    writer.beginArray(Lines::One);
    for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
      const char* const key = vrntMetadataName(type, i);
      if (vrntMetadataType(type, key) == VRNT_METADATA_FLAG) writer.string(key);
    }
    writer.endArray();
  }
  if (!others) return;
  writer.key("metadata");
  writer.beginObject(Lines::One);
  for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
    const char* const key = vrntMetadataName(type, i);
    if (!isFurtherAnnotation(key)) continue;
    if (vrntMetadataType(type, key) == VRNT_METADATA_TEXT) {
      writer.member(key, annotationText(type, key));
    } else if (const vrnt::UniqueValue value = annotationValue(type, key)) {
      writer.jsonMember(key, valueJson(value.get()));
    }
  }
  writer.endObject();
}

void writeConstructors(JsonWriter& writer, const std::vector<ConstructorModel>& constructors) {
  writer.key("constructors");
  writer.beginArray(Lines::One);
  for (const ConstructorModel& constructor : constructors) {
    writer.beginObject(Lines::One);
    writer.member("code", std::uint64_t{constructor.code});
    writer.member("label", constructor.label);
    if (!constructor.fields.empty()) writer.member("fields", constructor.fields);
    if (constructor.annotations) writeAnnotations(writer, constructor.annotations.get(), "name");
    writer.endObject();
  }
  writer.endArray();
}

void writeExtents(JsonWriter& writer, const vrntType_t* type) {
  std::int32_t shape[4] = {};
  vrntTypeArrayShape(type, shape);
  writer.key("extents");
  writer.beginArray(Lines::One);
  for (std::uint32_t i = 0; i < vrntTypeArrayDimension(type); ++i) {
    writer.json(std::to_string(shape[i]));
  }
  writer.endArray();
  const vrnt::UniqueType element(vrntTypeElementType(type));
  writer.member("stride", vrntTypeSize(element.get()));
}

void writeField(JsonWriter& writer, const FieldModel& field) {
  const vrntType_t* const type = field.type.get();
  writer.beginObject(Lines::One);
  writer.member("path", field.path);
  writer.member("offset", field.offset);
  writer.member("size", vrntTypeSize(type));
  writer.member("kind", fieldKind(type));
  writer.member("type", plainTypeText(type));
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) writeExtents(writer, type);
  if (!field.constructors.empty()) writeConstructors(writer, field.constructors);
  writer.jsonMember("default", valueJson(type, field.defaultBytes));
  for (const char* const key : {"min", "max", "soft_min", "soft_max"}) {
    if (const vrnt::UniqueValue limit = limitOf(type, key)) {
      writer.jsonMember(key, valueJson(limit.get()));
    }
  }
  writeAnnotations(writer, type);
  writer.endObject();
}

void writeGroups(JsonWriter& writer, const ClassModel& model) {
  writer.member("groupsSize", model.groupsSize);
  writer.member("groupsAlignment", model.groupsAlignment);
  writer.key("groups");
  writer.beginObject();
  for (const GroupModel& group : model.groups) {
    const vrntType_t* const type = group.type.get();
    writer.key(group.name);
    writer.beginObject();
    writer.member("number", std::uint64_t{group.number});
    writer.member("offset", group.offset);
    writer.member("size", vrntTypeSize(type));
    writer.member("alignment", vrntTypeAlignment(type));
    writeAnnotations(writer, type);
    writer.member("type", vrntTypeString(type));
    writer.key("fields");
    writer.beginArray();
    for (const FieldModel& field : group.fields) writeField(writer, field);
    writer.endArray();
    writer.endObject();
  }
  writer.endObject();
}

void writeSlots(JsonWriter& writer, const ClassModel& model) {
  writer.key("slots");
  writer.beginObject();
  for (const SlotModel& slot : model.slots) {
    writer.key(slot.info.name);
    writer.beginObject(Lines::One);
    writer.member("number", std::uint64_t{slot.number});
    writer.member("kind", slotKindName(slot.info.kind));
    writer.key("targets");
    writer.beginArray(Lines::One);
    if (slot.info.targetClass == VRDM_TARGET_EMITTER) {
      writer.string(vrdmObjectName(VRDM_CLASS_LIGHT));
      writer.string(vrdmObjectName(VRDM_CLASS_SHAPE));
    } else {
      writer.string(vrdmObjectName(slot.info.targetClass));
    }
    writer.endArray();
    writer.endObject();
  }
  writer.endObject();
}

}  // namespace

std::string catalogueJson(const CatalogueModel& catalogue) {
  std::string out;
  JsonWriter writer(out);
  writer.beginObject();
  writer.member("format", "vornath-catalogue");
  writer.member("formatVersion", std::uint64_t{1});
  writer.member("sceneVersion", std::uint64_t{catalogue.sceneVersion});
  if (!catalogue.filter.empty()) writer.member("filter", catalogue.filter);
  writer.key("classes");
  writer.beginObject();
  for (const ClassModel& model : catalogue.classes) {
    writer.key(model.name);
    writer.beginObject();
    writer.member("number", std::uint64_t{model.number});
    writer.member("kind", kindName(model.kind));
    writer.member("hasValue", model.hasValue);
    writeSlots(writer, model);
    writeGroups(writer, model);
    writer.endObject();
  }
  writer.endObject();
  if (catalogue.scene) {
    writer.key("scene");
    writer.beginObject();
    writeGroups(writer, *catalogue.scene);
    writer.endObject();
  }
  writer.endObject();
  out += '\n';
  return out;
}

}  // namespace vrtk
