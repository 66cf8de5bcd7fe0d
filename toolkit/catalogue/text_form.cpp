// The catalogue as text for a terminal: a line a field, and more of each field if there is only one
// group to tell of.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "catalogue/forms.hpp"
#include "catalogue/words.hpp"

namespace vrtk {
namespace {

constexpr std::size_t kLineLength = 100;

class Text {
 public:
  explicit Text(const CatalogueModel& catalogue)
      : isDetailed_(catalogue.filter.find('/') != std::string::npos) {
    bool isFirst = true;
    for (const ClassModel& model : catalogue.classes) addClass(model, isFirst);
    if (catalogue.scene) addClass(*catalogue.scene, isFirst);
  }

  std::string text;

 private:
  using Row = std::vector<std::string>;

  template <typename... Arguments>
  void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
    fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
  }

  void addClass(const ClassModel& model, bool& isFirst) {
    if (!isFirst) text += '\n';
    isFirst = false;
    if (model.number == VRDM_CLASS_SCENE_DATA) {
      text += "scene: the settings of the whole scene\n";
    } else {
      print("{}: class {}, {}{}\n", model.name, model.number, kindName(model.kind),
            model.hasValue ? " with a value for its program" : "");
    }
    if (!model.slots.empty()) {
      std::vector<Row> rows;
      for (const SlotModel& slot : model.slots) {
        rows.push_back(
            {slot.info.name, std::string(slotKindName(slot.info.kind)), slotTarget(slot.info)});
      }
      text += "\n  Slots\n";
      for (const std::string& line : aligned(rows)) print("    {}\n", line);
    }
    for (const GroupModel& group : model.groups) addGroup(group);
  }

  void addGroup(const GroupModel& group) {
    const vrntType_t* const type = group.type.get();
    print("\n  {}: {} bytes at {}, aligned to {}\n", group.name, vrntTypeSize(type), group.offset,
          vrntTypeAlignment(type));
    wrapped(annotationText(type, "desc"), "  ");
    std::vector<Row> rows;
    for (const FieldModel& field : group.fields) rows.push_back(rowOf(field));
    const std::vector<std::string> lines = aligned(rows);
    for (std::size_t i = 0; i < lines.size(); ++i) {
      print("    {}\n", lines[i]);
      addDetails(group.fields[i]);
    }
  }

  static Row rowOf(const FieldModel& field) {
    const vrntType_t* const type = field.type.get();
    const std::string words = typeWords(type);
    const std::string_view unit = annotationText(type, "si_unit");
    std::string limits = limitWords(type);
    if (!unit.empty()) {
      limits += limits.empty() ? "in " : ", in ";
      limits += unit;
    }
    return {fmt::format("+{}", field.offset), field.path, words,
            // The fields of a struct have their defaults in lines of their own.
            words.rfind("struct", 0) == 0 ? "" : valueWords(type, field.defaultBytes),
            std::move(limits), std::string(annotationText(type, "name"))};
  }

  void addDetails(const FieldModel& field) {
    constexpr std::string_view kIndent = "          ";
    const bool annotated = std::any_of(
        field.constructors.begin(), field.constructors.end(),
        [](const ConstructorModel& constructor) { return constructor.annotations != nullptr; });
    if (!field.constructors.empty() && !(isDetailed_ && annotated)) {
      std::string all;
      for (const ConstructorModel& constructor : field.constructors) {
        all += (all.empty() ? "" : ", ") + constructor.label;
      }
      wrapped(all, kIndent);
    }
    if (!isDetailed_) return;
    wrapped(annotationText(field.type.get(), "desc"), kIndent);
    std::string further;
    for (const std::string& words : furtherWords(field.type.get())) {
      further += (further.empty() ? "" : ", ") + words;
    }
    wrapped(further, kIndent);
    if (!annotated) return;
    std::vector<Row> rows;
    for (const ConstructorModel& constructor : field.constructors) {
      const vrntType_t* const told = constructor.annotations.get();
      rows.push_back({std::to_string(constructor.code), constructor.label + constructor.fields,
                      told != nullptr ? std::string(annotationText(told, "name")) : "",
                      told != nullptr ? std::string(annotationText(told, "desc")) : ""});
    }
    for (const std::string& line : aligned(rows)) print("{}{}\n", kIndent, line);
  }

  // Prints words in lines that a terminal shows whole.
  void wrapped(std::string_view words, std::string_view indent) {
    while (!words.empty()) {
      std::size_t end = words.size();
      if (end + indent.size() > kLineLength) {
        const std::size_t blank = words.rfind(' ', kLineLength - indent.size());
        if (blank != std::string_view::npos && blank != 0) end = blank;
      }
      print("{}{}\n", indent, words.substr(0, end));
      words.remove_prefix(std::min(words.size(), end + 1));
    }
  }

  // Returns the rows as lines, with their columns below each other. An entry that is wider than
  // most pushes the rest of its own line only.
  static std::vector<std::string> aligned(const std::vector<Row>& rows) {
    constexpr std::size_t kWidest = 44;
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
      widths.resize(std::max(widths.size(), row.size()));
      for (std::size_t i = 0; i < row.size(); ++i) {
        if (row[i].size() <= kWidest) widths[i] = std::max(widths[i], row[i].size());
      }
    }
    std::vector<std::string> lines;
    for (const Row& row : rows) {
      std::string line;
      std::size_t column = 0;
      for (std::size_t i = 0; i < row.size(); ++i) {
        if (widths[i] == 0 && row[i].empty()) continue;
        if (column != 0) line.append(line.size() + 2 <= column ? column - line.size() : 2, ' ');
        line += row[i];
        column += widths[i] + 2;
      }
      line.erase(line.find_last_not_of(' ') + 1);
      lines.push_back(std::move(line));
    }
    return lines;
  }

  bool isDetailed_;
};

}  // namespace

std::string catalogueText(const CatalogueModel& catalogue) {
  return std::move(Text(catalogue).text);
}

}  // namespace vrtk
