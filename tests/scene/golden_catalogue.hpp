// docs/catalogue.md as data: what the catalogue is said to be, for tests to compare the library
// with. The page is reviewed as a change of the catalogue is; scripts/write_catalogue.py writes it.
#ifndef VORNATH_TESTS_SCENE_GOLDEN_CATALOGUE_HPP
#define VORNATH_TESTS_SCENE_GOLDEN_CATALOGUE_HPP

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
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

inline const GoldenGroup& goldenGroup(const std::string& className, const std::string& name) {
  for (const GoldenGroup& found : goldenClass(className).groups) {
    if (found.name == name) return found;
  }
  throw std::runtime_error("docs/catalogue.md has no group " + name + " of " + className);
}

namespace golden {

// The names in an enum's type, "enum A, B" or "enum { A @name="..."; B; }".
inline std::vector<std::string> constructorsIn(const std::string& type) {
  std::vector<std::string> names;
  if (type.rfind("enum { ", 0) != 0) return split(type.substr(5), ", ");
  for (const std::string& part : split(type.substr(7, type.size() - 8), "; ")) {
    if (part != " ") names.push_back(part.substr(0, part.find(' ')));
  }
  return names;
}

// A number, or true or false, as its four bytes.
inline std::string wordOf(const std::string& text, bool isFloat) {
  std::int32_t word = text == "true" ? -1 : text == "false" ? 0 : 1;
  if (isFloat) {
    const float number = std::stof(text);
    std::memcpy(&word, &number, sizeof word);
  } else if (text != "true" && text != "false") {
    word = std::stoi(text);
  }
  return {reinterpret_cast<const char*>(&word), sizeof word};
}

// The bytes of a field that starts as the page says; none for a struct, and for what starts at
// zero.
inline std::string bytesOf(const GoldenField& field) {
  const auto found = field.annotations.find("default");
  if (found == field.annotations.end()) return "";
  const std::string& text = found->second;
  if (field.isEnum()) {
    const std::vector<std::string> names = constructorsIn(field.type);
    const auto at = std::find(names.begin(), names.end(), text);
    if (at == names.end()) throw std::runtime_error(field.path + ": no constructor " + text);
    return wordOf(std::to_string(at - names.begin()), false);
  }
  // "float3(0.0, 0.0, 1.0)", "[ true, true ]" or one number.
  const std::size_t open = text.find_first_of("([");
  const std::string list =
      open == std::string::npos ? text : text.substr(open + 1, text.size() - open - 2);
  std::string bytes;
  for (const std::string& number : split(list, ",")) {
    bytes += wordOf(trimmed(number), field.type.rfind("float", 0) == 0);
  }
  return bytes;
}

}  // namespace golden

// The groups of a new object as the page has them: zeros where it gives no default, and no texture.
// Of an array of structs it has the first element.
inline std::string goldenBlock(const std::string& className) {
  const GoldenClass& listed = goldenClass(className);
  std::string block(listed.blockSize, '\0');
  for (const GoldenGroup& group : listed.groups) {
    for (const GoldenField& field : group.fields) {
      const auto alias = field.annotations.find("alias");
      const bool texture = alias != field.annotations.end() && alias->second == "\"texture_ref\"";
      const std::string bytes = texture ? golden::wordOf("-1", false) : golden::bytesOf(field);
      block.replace(group.offset + field.offset, bytes.size(), bytes);
    }
  }
  return block;
}

// The text of a group's value in a new object, with some fields of its own at another value.
inline std::string goldenText(const std::string& className, const std::string& group,
                              const std::map<std::string, std::string>& changed = {}) {
  const std::vector<GoldenField>& fields = goldenGroup(className, group).fields;
  std::string text = "{ ";
  std::string structs;  // the prefix of the path that the text is in
  const auto leaveFor = [&](const std::string& path) {
    while (path.rfind(structs, 0) != 0) {
      text += "}; ";
      structs.erase(structs.find_last_of('.', structs.size() - 2) + 1);
    }
  };
  for (const GoldenField& field : fields) {
    leaveFor(field.path);
    text += field.path.substr(structs.size()) + " = ";
    if (field.type == "struct") {
      text += "{ ";
      structs = field.path + ".";
      continue;
    }
    const auto change = changed.find(field.path);
    const auto found = field.annotations.find("default");
    if (change != changed.end()) {
      text += change->second;
    } else if (field.isEnum()) {
      const std::vector<std::string> names = golden::constructorsIn(field.type);
      text += (found == field.annotations.end() ? names.front() : found->second) + " : enum { ";
      for (const std::string& name : names) text += name + "; ";
      text += "}";
    } else if (found != field.annotations.end()) {
      text += found->second;
    } else if (field.path == structs + "index") {
      text += "-1";  // no texture
    } else {
      text += field.type == "bool" ? "false" : field.type == "float" ? "0.0" : "0";
    }
    text += "; ";
  }
  leaveFor("");
  return text + "}";
}

}  // namespace vornath_test

#endif
