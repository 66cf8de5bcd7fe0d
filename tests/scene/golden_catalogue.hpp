// docs/catalogue.md as data: what the catalogue is said to be, for tests to compare the library
// with. The page is reviewed as a change of the catalogue is; scripts/write_catalogue.py writes it.
#ifndef VORNATH_TESTS_SCENE_GOLDEN_CATALOGUE_HPP
#define VORNATH_TESTS_SCENE_GOLDEN_CATALOGUE_HPP

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

namespace vornath_test {

// Annotations as key and content: nothing for a flag, a text in quotes, a value's text.
using Annotations = std::map<std::string, std::string>;

struct GoldenField {
  std::string path;
  std::uint64_t offset = 0;
  std::string type;
  Annotations annotations;

  bool isEnum() const { return type.rfind("enum ", 0) == 0; }
};

struct GoldenGroup {
  std::string name;
  std::uint64_t offset = 0;  // in the block of its class
  std::uint64_t size = 0;
  std::uint64_t alignment = 0;
  Annotations annotations;
  std::vector<GoldenField> fields;
};

struct GoldenSlot {
  std::string name;
  std::string holds;
  std::string target;
};

struct GoldenClass {
  std::string name;
  std::string kind;
  bool hasValue = false;
  std::uint64_t blockSize = 0;
  std::vector<GoldenSlot> slots;
  std::vector<GoldenGroup> groups;
};

struct GoldenCatalogue {
  std::uint32_t version = 0;         // of scene files
  std::vector<GoldenClass> classes;  // SceneData is the last
};

namespace golden {

inline std::string trimmed(const std::string& text) {
  const std::size_t begin = text.find_first_not_of(' ');
  if (begin == std::string::npos) return "";
  return text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

inline std::vector<std::string> split(const std::string& text, const std::string& separator) {
  std::vector<std::string> parts;
  std::size_t begin = 0;
  while (begin <= text.size()) {
    const std::size_t end = std::min(text.find(separator, begin), text.size());
    if (end > begin) parts.push_back(text.substr(begin, end - begin));
    begin = end + separator.size();
  }
  return parts;
}

// The cells of a table's row, trimmed; `\|` is a bar and `\\` a backslash.
inline std::vector<std::string> cellsOf(const std::string& row) {
  std::vector<std::string> cells;
  std::string cell;
  for (std::size_t i = 1; i < row.size(); ++i) {
    if (row[i] == '\\') {
      cell += row.at(++i);
    } else if (row[i] == '|') {
      cells.push_back(trimmed(cell));
      cell.clear();
    } else {
      cell += row[i];
    }
  }
  return cells;
}

inline std::string unquoted(const std::string& text) {
  if (text.size() < 2 || text.front() != '`' || text.back() != '`') {
    throw std::runtime_error("docs/catalogue.md: not in backticks: " + text);
  }
  return text.substr(1, text.size() - 2);
}

// A description, and behind it each further annotation: "`@flag`", "`@key` text", "`@key` `value`".
inline void readDescription(const std::string& text, Annotations& annotations) {
  const std::size_t end = std::min(text.find("`@"), text.size());
  const std::string description = trimmed(text.substr(0, end));
  if (!description.empty()) annotations["desc"] = '"' + description + '"';
  for (const std::string& part : split(text.substr(end), "`@")) {
    const std::size_t close = part.find('`');
    const std::string content = trimmed(part.substr(close + 1));
    std::string& annotation = annotations[part.substr(0, close)];
    if (content.empty()) continue;
    annotation = content[0] == '`' ? unquoted(content) : '"' + content + '"';
  }
}

// "from `0.0` to `1.0`; soft to `10.0`": each end may be missing.
inline void readLimits(const std::string& text, Annotations& annotations) {
  for (const std::string& part : split(text, ";")) {
    const std::string range = trimmed(part);
    const std::string prefix = range.rfind("soft ", 0) == 0 ? "soft_" : "";
    for (const auto& [word, key] : {std::pair("from `", "min"), std::pair("to `", "max")}) {
      const std::size_t at = range.find(word);
      if (at == std::string::npos) continue;
      const std::size_t begin = at + std::string(word).size();
      annotations[prefix + key] = range.substr(begin, range.find('`', begin) - begin);
    }
  }
}

inline GoldenField readField(const std::vector<std::string>& cells) {
  GoldenField field;
  field.path = unquoted(cells.at(0));
  field.offset = std::stoul(cells.at(1));
  field.type = cells.at(2).front() == '`' ? unquoted(cells.at(2)) : cells.at(2);
  if (!cells.at(3).empty()) field.annotations["default"] = unquoted(cells.at(3));
  readLimits(cells.at(4), field.annotations);
  if (!cells.at(5).empty()) field.annotations["name"] = '"' + cells.at(5) + '"';
  readDescription(cells.at(6), field.annotations);
  return field;
}

inline bool begins(const std::string& text, const std::string& start) {
  return text.rfind(start, 0) == 0;
}

inline GoldenCatalogue read() {
  std::ifstream file(SOURCE_FOLDER "/docs/catalogue.md");
  if (!file) throw std::runtime_error("cannot open docs/catalogue.md");
  GoldenCatalogue catalogue;
  bool description = false;  // the next text is that of a group
  for (std::string line; std::getline(file, line);) {
    auto& classes = catalogue.classes;
    if (begins(line, "Scene files: version ")) {
      catalogue.version = static_cast<std::uint32_t>(std::stoul(line.substr(21)));
    } else if (line == "## The scene as a whole") {
      classes.push_back({"SceneData", "", false, 0, {}, {}});
    } else if (begins(line, "## ")) {
      const std::string number = std::to_string(classes.size());
      if (!begins(line, "## " + number + ": ")) throw std::runtime_error("not in order: " + line);
      classes.push_back({line.substr(number.size() + 5), "", false, 0, {}, {}});
    } else if (begins(line, "Kind: ")) {
      const std::size_t end = line.find_first_of(",.");
      classes.back().kind = line.substr(6, end - 6);
      classes.back().hasValue = line.substr(end) == ", with a value for its program.";
    } else if (begins(line, "Its groups take ")) {
      classes.back().blockSize = std::stoul(line.substr(16));
    } else if (begins(line, "### Group ")) {
      auto& groups = classes.back().groups;
      const std::string number = std::to_string(groups.size());
      if (!begins(line, "### Group " + number + ": ")) {
        throw std::runtime_error("not in order: " + line);
      }
      groups.emplace_back();
      groups.back().name = line.substr(number.size() + 12);
      groups.back().annotations["name"] = '"' + groups.back().name + '"';
      description = true;
    } else if (line.find(" bytes at ") != std::string::npos && std::isdigit(line.front()) != 0) {
      GoldenGroup& group = classes.back().groups.back();
      group.size = std::stoul(line);
      group.offset = std::stoul(line.substr(line.find(" at ") + 4));
      group.alignment = std::stoul(line.substr(line.find(" to ") + 4));
      description = false;
    } else if (begins(line, "| `")) {
      classes.back().groups.back().fields.push_back(readField(cellsOf(line)));
    } else if (begins(line, "| ") && line.find(" `") != std::string::npos) {
      const std::vector<std::string> cells = cellsOf(line);
      classes.back().slots.push_back({unquoted(cells.at(1)), cells.at(2), cells.at(3)});
    } else if (description && !line.empty()) {
      readDescription(line, classes.back().groups.back().annotations);
    }
  }
  return catalogue;
}

}  // namespace golden

inline const GoldenCatalogue& goldenCatalogue() {
  static const GoldenCatalogue catalogue = golden::read();
  return catalogue;
}

inline const GoldenClass& goldenClass(const std::string& name) {
  for (const GoldenClass& found : goldenCatalogue().classes) {
    if (found.name == name) return found;
  }
  throw std::runtime_error("docs/catalogue.md has no class " + name);
}

}  // namespace vornath_test

#endif
