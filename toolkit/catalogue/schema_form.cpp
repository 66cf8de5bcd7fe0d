// The JSON Schema of scenes in JSON (docs/scene_json.md).
#include <fmt/format.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <functional>
#include <limits>

#include "catalogue/asset_members.hpp"
#include "catalogue/forms.hpp"
#include "catalogue/json_writer.hpp"
#include "catalogue/value_text.hpp"
#include "check/type_plan.hpp"

namespace vrtk {
namespace {

using Lines = JsonWriter::Lines;

constexpr double kLargestHalf = 65504.0;

// The limits of a number, or of a part of an array of numbers, in the layout of its type.
struct Limits {
  const char* min = nullptr;
  const char* max = nullptr;
  const char* byDefault = nullptr;

  Limits behind(std::uint64_t offset) const {
    const auto moved = [offset](const char* at) { return at == nullptr ? at : at + offset; };
    return {moved(min), moved(max), moved(byDefault)};
  }
};

const char* bytesOf(const vrnt::UniqueValue& value) {
  return value ? static_cast<const char*>(vrntValueData(value.get())) : nullptr;
}

class Schema {
 public:
  explicit Schema(const CatalogueModel& catalogue) : catalogue_(catalogue), writer_(text) {
    writer_.beginObject();
    writer_.member("$schema", "https://json-schema.org/draft/2020-12/schema");
    if (catalogue.filter.empty()) {
      document();
    } else {
      part();
    }
    definitions();
    writer_.endObject();
    text += '\n';
  }

  std::string text;

 private:
  // A whole document.
  void document() {
    writer_.member("title", fmt::format("A scene, version {}", catalogue_.sceneVersion));
    writer_.member("type", "object");
    writer_.key("required");
    writer_.json(R"(["format", "formatVersion"])");
    writer_.key("properties");
    writer_.beginObject();
    writer_.jsonMember("format", R"({ "const": "vornath-scene" })");
    writer_.jsonMember("formatVersion", R"({ "const": 1 })");
    writer_.jsonMember("sceneVersion",
                       fmt::format(R"({{ "const": {} }})", catalogue_.sceneVersion));
    writer_.jsonMember("id", R"({ "$ref": "#/$defs/id" })");
    writer_.jsonMember("scene", R"({ "$ref": "#/$defs/scene" })");
    writer_.key("objects");
    writer_.beginObject();
    writer_.member("type", "object");
    writer_.key("properties");
    writer_.beginObject();
    for (const ClassModel& model : catalogue_.classes) {
      writer_.jsonMember(
          model.name,
          fmt::format(R"({{ "type": "array", "items": {{ "$ref": "#/$defs/{}" }} }})", model.name));
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
    writer_.endObject();
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  // What the filter selects.
  void part() {
    const ClassModel& model = catalogue_.scene ? *catalogue_.scene : catalogue_.classes.front();
    writer_.member("title", catalogue_.filter);
    if (catalogue_.filter.find('/') != std::string::npos) {
      groupMembers(model.groups.front());
    } else {
      writer_.jsonMember("$ref", "\"#/$defs/" + model.name + "\"");
    }
  }

  void definitions() {
    writer_.key("$defs");
    writer_.beginObject();
    if (catalogue_.filter.find('/') == std::string::npos) {
      if (catalogue_.scene) define("scene", [this] { groupsMembers(*catalogue_.scene); });
      for (const ClassModel& model : catalogue_.classes) {
        define(model.name, [this, &model] { object(model); });
      }
    }
    writer_.jsonMember(
        "id",
        R"({ "type": "string", "pattern": "^[0-9A-Fa-f]{8}(-[0-9A-Fa-f]{4}){3}-[0-9A-Fa-f]{12}$" })");
    writer_.jsonMember("slot", kSlot);
    writer_.jsonMember("bytes", kBytes);
    writer_.jsonMember("value", kValue);
    writer_.jsonMember("reference", kReference);
    writer_.endObject();
  }

  void define(std::string_view name, const std::function<void()>& members) {
    writer_.key(name);
    writer_.beginObject();
    members();
    writer_.endObject();
  }

  void property(std::string_view name, const std::function<void()>& members) {
    define(name, members);
  }

  // An object of a class; null for a free slot.
  void object(const ClassModel& model) {
    writer_.jsonMember("type", R"(["object", "null"])");
    if (const auto& members = assetMembers(model.number); !members.empty()) {
      writer_.jsonMember("required", R"(["desc"])");
    }
    if (model.kind == VRDM_KIND_PROGRAM) writer_.jsonMember("required", R"(["text"])");
    writer_.key("properties");
    writer_.beginObject();
    if (model.kind == VRDM_KIND_PROGRAM) {
      writer_.jsonMember("text", kProgramText);
    } else if (model.kind == VRDM_KIND_ASSET) {
      writer_.jsonMember("id", R"({ "$ref": "#/$defs/id" })");
      property("desc", [this, &model] { record(model); });
      writer_.jsonMember("bytes", R"({ "$ref": "#/$defs/bytes" })");
    } else {
      if (!model.groups.empty()) property("groups", [this, &model] { groupsMembers(model); });
      if (!model.slots.empty()) property("slots", [this, &model] { slots(model); });
      if (model.hasValue) writer_.jsonMember("value", R"({ "$ref": "#/$defs/value" })");
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  void record(const ClassModel& model) {
    writer_.member("type", "object");
    writer_.key("properties");
    writer_.beginObject();
    for (const AssetMember& member : assetMembers(model.number)) {
      writer_.jsonMember(member.name, member.schema);
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  void slots(const ClassModel& model) {
    writer_.member("type", "object");
    writer_.key("properties");
    writer_.beginObject();
    for (const SlotModel& slot : model.slots) {
      property(slot.info.name, [this, &slot] { slotMembers(slot.info); });
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  void slotMembers(const vrdmReferenceInfo& info) {
    const bool isSingle =
        info.kind == VRDM_REFERENCE_REQUIRED || info.kind == VRDM_REFERENCE_OPTIONAL;
    writer_.member(
        "description",
        fmt::format("{} of {}", isSingle ? slotKindName(info.kind) : "a list", slotTarget(info)));
    if (isSingle) {
      writer_.member("$ref", "#/$defs/slot");
      return;
    }
    writer_.member("type", "array");
    writer_.key("items");
    switch (info.kind) {
      case VRDM_REFERENCE_EMITTER:
        coded(vrdmObjectName(VRDM_CLASS_LIGHT), vrdmObjectName(VRDM_CLASS_SHAPE));
        return;
      case VRDM_REFERENCE_ORDERED_DECAL:
        coded("front", "back");
        return;
      default:
        writer_.json(R"({ "$ref": "#/$defs/slot" })");
    }
  }

  // An element of a coded list: one of two members, or null. A word that leads nowhere stands as it
  // is.
  void coded(std::string_view one, std::string_view other) {
    constexpr std::string_view kIndex =
        R"({ "type": "integer", "minimum": 0, "maximum": 2147483647 })";
    constexpr std::string_view kWord =
        R"({ "type": "integer", "minimum": -2147483648, "maximum": 2147483647 })";
    writer_.json(fmt::format(R"({{ "type": ["object", "null"], "minProperties": 1, )"
                             R"("maxProperties": 1, "properties": {{ "{}": {}, "{}": {}, )"
                             R"("word": {} }}, "additionalProperties": false }})",
                             one, kIndex, other, kIndex, kWord));
  }

  void groupsMembers(const ClassModel& model) {
    writer_.member("type", "object");
    writer_.key("properties");
    writer_.beginObject();
    for (const GroupModel& group : model.groups) {
      property(group.name, [this, &group] { groupMembers(group); });
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  void groupMembers(const GroupModel& group) {
    describe(group.type.get());
    structMembers(group.type.get(), {nullptr, nullptr, bytesOf(group.defaults)});
  }

  void structMembers(const vrntType_t* type, const Limits& limits) {
    writer_.member("type", "object");
    writer_.key("properties");
    writer_.beginObject();
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, type, i);
      property(vrntTypeFieldLabel(type, i), [this, &field, &limits] {
        fieldMembers(field.type, limits.behind(field.offset).byDefault);
      });
    }
    writer_.endObject();
    writer_.member("additionalProperties", false);
  }

  void describe(const vrntType_t* type) {
    if (const auto title = annotationText(type, "name"); !title.empty()) {
      writer_.member("title", title);
    }
    if (const auto words = annotationText(type, "desc"); !words.empty()) {
      writer_.member("description", words);
    }
  }

  void fieldMembers(const vrntType_t* type, const char* byDefault) {
    describe(type);
    // The fields of a struct have their own.
    const vrnt::UniqueType element = innermostElement(type);
    if (!isStruct(element.get())) writer_.jsonMember("default", valueJson(type, byDefault));
    const vrnt::UniqueValue min = limitOf(type, "min");
    const vrnt::UniqueValue max = limitOf(type, "max");
    typeMembers(type, {bytesOf(min), bytesOf(max), byDefault});
  }

  // A part of a type. Its own annotations are limits, where the whole has none.
  void partMembers(const vrntType_t* type, const Limits& limits) {
    if (limits.min != nullptr || limits.max != nullptr) {
      typeMembers(type, limits);
      return;
    }
    const vrnt::UniqueValue min = limitOf(type, "min");
    const vrnt::UniqueValue max = limitOf(type, "max");
    typeMembers(type, {bytesOf(min), bytesOf(max), limits.byDefault});
  }

  void typeMembers(const vrntType_t* type, const Limits& limits) {
    if (isStruct(type)) {
      structMembers(type, limits);
      return;
    }
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_ARRAY:
        arrayMembers(type, limits);
        return;
      case VRNT_DESCRIPTOR_ENUM:
        enumMembers(type);
        return;
      case VRNT_DESCRIPTOR_BASE:
        break;
      default:
        writer_.member("$ref", "#/$defs/reference");
        return;
    }
    const Numbers numbers = *numbersOf(type);
    if (numbers.lanes == 1) {
      laneMembers(numbers, limits, 0);
      return;
    }
    beginArray(numbers.lanes);
    elements(numbers.lanes, [&](std::uint64_t lane) {
      laneMembers(numbers, limits, static_cast<std::uint32_t>(lane));
    });
  }

  void beginArray(std::uint64_t length) {
    writer_.member("type", "array");
    writer_.member("minItems", length);
    writer_.member("maxItems", length);
  }

  // Writes the schema of the elements: one for all, if they have the same.
  void elements(std::uint64_t count, const std::function<void(std::uint64_t)>& members) {
    constexpr std::uint64_t kMost = 64;
    std::vector<std::string> schemas;
    bool isSame = true;
    for (std::uint64_t i = 0; i < std::min(count, kMost); ++i) {
      std::string element;
      JsonWriter inner(element);
      std::swap(inner, writer_);
      writer_.beginObject(Lines::One);
      members(i);
      writer_.endObject();
      std::swap(inner, writer_);
      isSame = isSame && (schemas.empty() || schemas.front() == element);
      schemas.push_back(std::move(element));
    }
    if (schemas.empty()) return;
    if (isSame) {
      writer_.jsonMember("items", schemas.front());
      return;
    }
    writer_.key("prefixItems");
    writer_.beginArray();
    for (const std::string& schema : schemas) writer_.json(schema);
    writer_.endArray();
  }

  void arrayMembers(const vrntType_t* type, const Limits& limits) {
    std::array<std::int32_t, 4> shape = {1, 1, 1, 1};
    vrntTypeArrayShape(type, shape.data());
    std::array<std::int32_t, 4> index{};
    // The last dimension, which runs slowest, is the outermost array.
    const std::function<void(std::uint32_t)> dimension = [&](std::uint32_t d) {
      const auto extent = static_cast<std::uint64_t>(std::max(shape[d], 0));
      beginArray(extent);
      elements(extent, [&](std::uint64_t i) {
        index[d] = static_cast<std::int32_t>(i);
        if (d != 0) {
          dimension(d - 1);
          return;
        }
        vrntValueView_t element{};
        vrntValueArrayElement(&element, type, index.data());
        partMembers(element.type, limits.behind(element.offset));
      });
    };
    dimension(vrntTypeArrayDimension(type) - 1);
  }

  // A label, or the number of a code that has none.
  void enumMembers(const vrntType_t* type) {
    const std::uint32_t count = vrntTypeConstructorCount(type);
    writer_.key("anyOf");
    writer_.beginArray(Lines::One);
    writer_.beginObject(Lines::One);
    writer_.key("enum");
    writer_.beginArray(Lines::One);
    for (std::uint32_t i = 0; i < count; ++i) writer_.string(vrntTypeConstructorName(type, i));
    writer_.endArray();
    writer_.endObject();
    writer_.json(
        fmt::format(R"({{ "type": "integer", "minimum": {}, "maximum": 2147483647 }})", count));
    writer_.json(R"({ "type": "integer", "minimum": -2147483648, "maximum": -1 })");
    writer_.endArray();
  }

  void laneMembers(const Numbers& numbers, const Limits& limits, std::uint32_t lane) {
    if (numbers.family == VRNT_BASETYPE_BOOL) {
      // A word that is neither 0 nor all ones is a string.
      writer_.jsonMember("type", R"(["boolean", "string"])");
      writer_.member("pattern", "^bool:[0-9a-f]{8}$");
      return;
    }
    const bool isReal =
        numbers.family == VRNT_BASETYPE_FLOAT || numbers.family == VRNT_BASETYPE_HALF;
    const double infinity = std::numeric_limits<double>::infinity();
    const double min = limits.min != nullptr ? laneNumber(numbers, limits.min, lane) : -infinity;
    const double max = limits.max != nullptr ? laneNumber(numbers, limits.max, lane) : infinity;
    const double byDefault =
        limits.byDefault != nullptr ? laneNumber(numbers, limits.byDefault, lane) : min;
    // The default of a field is right, even if it is outside of the limits.
    const bool isOutside = byDefault < min || byDefault > max;
    if (isOutside) {
      writer_.key("anyOf");
      writer_.beginArray(Lines::One);
      writer_.json(fmt::format(R"({{ "const": {} }})", laneJson(numbers, limits.byDefault, lane)));
      writer_.beginObject(Lines::One);
    }
    if (isReal) {
      realMembers(numbers, limits, lane, min, max);
    } else {
      writer_.member("type", "integer");
      const bool isChar = numbers.family == VRNT_BASETYPE_CHAR;
      writer_.jsonMember("minimum", std::isinf(min) ? (isChar ? "0" : "-2147483648")
                                                    : laneJson(numbers, limits.min, lane));
      writer_.jsonMember("maximum", std::isinf(max) ? (isChar ? "255" : "2147483647")
                                                    : laneJson(numbers, limits.max, lane));
    }
    if (isOutside) {
      writer_.endObject();
      writer_.endArray();
    }
  }

  // A number within the limits. What is no number of JSON is a string, and allowed where no limit
  // forbids it.
  void realMembers(const Numbers& numbers, const Limits& limits, std::uint32_t lane, double min,
                   double max) {
    const bool isHalf = numbers.family == VRNT_BASETYPE_HALF;
    std::string strings;
    if (std::isinf(max)) strings = "inf";
    if (std::isinf(min)) strings += strings.empty() ? "-inf" : "|-inf";
    if (limits.min == nullptr && limits.max == nullptr) {
      strings += isHalf ? "|nan(:[0-9a-f]{4})?" : "|nan(:[0-9a-f]{8})?";
    }
    writer_.jsonMember("type", strings.empty() ? R"("number")" : R"(["number", "string"])");
    writer_.jsonMember("minimum", std::isinf(min)
                                      ? "-" + floatJson(static_cast<float>(largest(isHalf)))
                                      : laneJson(numbers, limits.min, lane));
    writer_.jsonMember("maximum", std::isinf(max) ? floatJson(static_cast<float>(largest(isHalf)))
                                                  : laneJson(numbers, limits.max, lane));
    if (!strings.empty()) writer_.member("pattern", "^(" + strings + ")$");
  }

  static double largest(bool isHalf) { return isHalf ? kLargestHalf : double{FLT_MAX}; }

  static constexpr std::string_view kSlot =
      R"({ "type": ["integer", "object", "null"], "minimum": 0, "maximum": 2147483647, )"
      R"("properties": { "word": { "type": "integer", "minimum": -2147483648, )"
      R"("maximum": 2147483647 } }, "required": ["word"], "additionalProperties": false })";
  // A text that is not UTF-8 is in base64.
  static constexpr std::string_view kProgramText =
      R"({ "type": ["string", "object"], "properties": { "base64": { "type": "string", )"
      R"("pattern": "^[A-Za-z0-9+/]*={0,2}$" } }, "required": ["base64"], )"
      R"("additionalProperties": false })";
  static constexpr std::string_view kBytes =
      R"({ "type": "object", "properties": { "file": { "type": "string" }, )"
      R"("base64": { "type": "string", "pattern": "^[A-Za-z0-9+/]*={0,2}$" }, )"
      R"("size": { "type": "integer", "minimum": 0 }, )"
      R"("sha256": { "type": "string", "pattern": "^[0-9A-Fa-f]{64}$" } }, )"
      R"("not": { "required": ["file", "base64"] }, "additionalProperties": false })";
  static constexpr std::string_view kValue =
      R"({ "type": ["object", "null"], "properties": { "type": { "type": "string" }, )"
      R"("data": true, "shared": { "type": "string" } }, "anyOf": [{ "required": ["type", "data"] }, )"
      R"({ "required": ["shared"] }], "additionalProperties": false })";
  static constexpr std::string_view kReference =
      R"({ "type": ["object", "null"], "properties": { "to": true, "type": { "type": "string" }, )"
      R"("shared": { "type": "string" }, "address": { "type": "string", "pattern": "^0x[0-9a-f]+$" } }, )"
      R"("additionalProperties": false })";

  const CatalogueModel& catalogue_;
  JsonWriter writer_;
};

}  // namespace

std::string catalogueSchema(const CatalogueModel& catalogue) {
  return std::move(Schema(catalogue).text);
}

}  // namespace vrtk
