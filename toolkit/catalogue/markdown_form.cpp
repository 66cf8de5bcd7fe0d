// The catalogue as Markdown: the page docs/catalogue.md, which tests read.
#include <fmt/format.h>

#include <iterator>

#include "catalogue/forms.hpp"
#include "foundation/failure.hpp"
#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/metadata.h"

namespace vrtk {
namespace {

class Page {
 public:
  std::string text;

  template <typename... Arguments>
  void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
  }

  // Prints a text in a cell of a table.
  void cell(std::string_view words) {
    for (const char c : words) {
      if (c == '|' || c == '\\') text += '\\';
      text += c;
    }
  }

  void value(const vrntValue_t* value) {
    vrntValuesError_t* error = nullptr;
    const vrntValueView_t whole = {vrntValueType(value), 0};
    const vrnt::UniqueString printed(vrntValueString(value, &whole, 0, &error));
    if (!printed) vrnt::detail::raiseError(error);
    std::string_view words = printed.get();
    // The value of an enum repeats its type. The name of the constructor is enough here.
    words = words.substr(0, words.find(" : enum"));
    print("`{}`", words);
  }

  void annotation(const vrntType_t* type, const char* key, std::string_view before) {
    const vrnt::UniqueValue found = annotationValue(type, key);
    if (!found) return;
    text += before;
    value(found.get());
  }

  void range(const vrntType_t* type, std::string_view name, const char* low, const char* high) {
    const bool both = vrntMetadataExists(type, low) != 0 && vrntMetadataExists(type, high) != 0;
    text += name;
    annotation(type, low, "from ");
    if (both) text += ' ';
    annotation(type, high, "to ");
  }

  void limits(const vrntType_t* type) {
    const auto has = [type](const char* key) { return vrntMetadataExists(type, key) != 0; };
    const bool hard = has("min") || has("max");
    const bool soft = has("soft_min") || has("soft_max");
    if (hard) range(type, "", "min", "max");
    if (hard && soft) text += "; ";
    if (soft) range(type, "soft ", "soft_min", "soft_max");
  }

  // Prints the annotations that have no column.
  void further(const vrntType_t* type) {
    for (std::uint32_t i = 0; i < vrntMetadataSize(type); ++i) {
      const char* const key = vrntMetadataName(type, i);
      const std::string_view name = key;
      if (!isFurtherAnnotation(name) && name != "si_unit") continue;
      print(" `@{}`", name);
      if (vrntMetadataType(type, key) == VRNT_METADATA_TEXT) {
        text += ' ';
        cell(annotationText(type, key));
      } else {
        annotation(type, key, " ");
      }
    }
  }

  void constructors(const FieldModel& field, const vrntType_t* type) {
    bool annotated = false;
    for (const ConstructorModel& constructor : field.constructors) {
      annotated = annotated || constructor.annotations;
    }
    if (annotated) {
      // Up to the closing brace, so without the annotations of the enum itself.
      const std::string_view words = vrntTypeString(type);
      bool quoted = false;
      std::size_t end = 0;
      for (; end < words.size() && (quoted || words[end] != '}'); ++end) {
        if (words[end] == '"') quoted = !quoted;
      }
      print("`{}}}`", words.substr(0, end));
      return;
    }
    text += "enum";
    for (const ConstructorModel& constructor : field.constructors) {
      print("{}{}", constructor.code != 0 ? ", " : " ", constructor.label);
    }
  }

  void typeOf(const FieldModel& field, const vrntType_t* type) {
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_STRUCT:
        text += "struct";
        return;
      case VRNT_DESCRIPTOR_ENUM:
        constructors(field, type);
        return;
      case VRNT_DESCRIPTOR_ARRAY: {
        std::int32_t shape[4] = {};
        vrntTypeArrayShape(type, shape);
        const vrnt::UniqueType element(vrntTypeElementType(type));
        typeOf(field, element.get());
        for (std::uint32_t i = 0; i < vrntTypeArrayDimension(type); ++i) {
          print("{}{}", i != 0 ? "," : "[", shape[i]);
        }
        text += ']';
        return;
      }
      default:
        cell(plainTypeText(type));
    }
  }

  // A path as a host of C writes it: planes[0].origin.
  void path(std::string_view words) {
    while (!words.empty()) {
      const std::size_t end = words.find('/');
      const std::string_view part = words.substr(0, end);
      const bool isIndex = part.front() >= '0' && part.front() <= '9';
      if (isIndex) {
        print("[{}]", part);
      } else {
        print("{}{}", text.back() == '`' ? "" : ".", part);
      }
      words.remove_prefix(end == std::string_view::npos ? words.size() : end + 1);
    }
  }

  void field(const FieldModel& field) {
    const vrntType_t* const type = field.type.get();
    text += "| `";
    path(field.path);
    print("` | {} | ", field.offset);
    typeOf(field, type);
    text += " | ";
    annotation(type, "default", "");
    text += " | ";
    limits(type);
    text += " | ";
    cell(annotationText(type, "name"));
    text += " | ";
    cell(annotationText(type, "desc"));
    further(type);
    text += " |\n";
  }

  void groups(const ClassModel& model) {
    if (model.groups.empty()) return;
    print("\nIts groups take {} bytes.\n", model.groupsSize);
    for (const GroupModel& group : model.groups) {
      const vrntType_t* const type = group.type.get();
      print("\n### Group {}: {}\n\n", group.number, group.name);
      cell(annotationText(type, "desc"));
      further(type);
      print("\n\n{} bytes at {}, aligned to {}.\n\n", vrntTypeSize(type), group.offset,
            vrntTypeAlignment(type));
      text += "| Field | Offset | Type | Default | Limits | Label | Description |\n";
      text += "|---|---|---|---|---|---|---|\n";
      for (const FieldModel& each : group.fields) field(each);
    }
  }

  void slots(const ClassModel& model) {
    if (model.slots.empty()) return;
    text += "\n| Slot | Name | Holds | Target |\n|---|---|---|---|\n";
    for (const SlotModel& slot : model.slots) {
      print("| {} | `{}` | {} | {} |\n", slot.number, slot.info.name, holds(slot.info.kind),
            slotTarget(slot.info));
    }
  }

 private:
  static std::string_view holds(std::uint32_t kind) {
    switch (kind) {
      case VRDM_REFERENCE_REQUIRED:
        return "one, required";
      case VRDM_REFERENCE_OPTIONAL:
        return "one, optional";
      case VRDM_REFERENCE_ORDERED_DECAL:
        return "list, coded: front and back";
      case VRDM_REFERENCE_EMITTER:
        return "list, coded: lights and shapes";
      default:
        return "list";
    }
  }
};

}  // namespace

std::string catalogueMarkdown(const CatalogueModel& catalogue) {
  Page page;
  page.print("# The catalogue\n\nScene files: version {}.\n\n", catalogue.sceneVersion);
  page.text +=
      "Printed by `vrn catalogue --format markdown` from the discovery queries; offsets and sizes "
      "are in bytes.\n"
      "`scripts/write_catalogue.py` writes this page anew.\n";
  for (const ClassModel& model : catalogue.classes) {
    page.print("\n## {}: {}\n\nKind: {}{}.\n", model.number, model.name, kindName(model.kind),
               model.hasValue ? ", with a value for its program" : "");
    page.slots(model);
    page.groups(model);
  }
  if (catalogue.scene) {
    page.text += "\n## The scene as a whole\n";
    page.groups(*catalogue.scene);
  }
  return std::move(page.text);
}

}  // namespace vrtk
