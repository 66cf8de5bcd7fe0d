// Descriptions of types and values, as JSON and as text for people.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include "check/type_plan.hpp"
#include "foundation/failure.hpp"
#include "json/output.hpp"
#include "json/text.hpp"
#include "json/value_writer.hpp"
#include "values/bounds.hpp"
#include "values/choices.hpp"
#include "values/value_layout.hpp"
#include "vornath_data/metadata.h"
#include "vornath_toolkit/vrtk_value.h"

namespace vrtk {
namespace {

// Appends a step to a path. One that nobody can read is cut.
std::string pathTo(const std::string& path, std::string_view step) {
  constexpr std::size_t kLongestPath = 4000;
  if (path.size() > kLongestPath) return path;
  std::string longer = path.empty() ? std::string(step) : path + "/" + std::string(step);
  if (longer.size() > kLongestPath) longer += "/...";
  return longer;
}

std::string textOfType(const vrntType_t* type) {
  const char* const text = vrntTypeString(type);
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

std::string plainTextOfType(const vrntType_t* type) {
  const vrnt::UniqueType plain(vrntTypeStripMetadata(type));
  return textOfType(plain.get());
}

// The text of the type of a part. Those of structs in structs would be long together.
std::string partTextOfType(const vrntType_t* type) {
  constexpr std::size_t kLongest = 1000;
  std::string text = plainTextOfType(type);
  if (text.size() > kLongest) {
    text.resize(kLongest);
    text += "...";
  }
  return text;
}

std::string jsonText(std::string_view text) {
  std::string json;
  appendJsonString(json, text);
  return json;
}

const char* kindOf(const vrntType_t* type) {
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
      break;
  }
  constexpr const char* kFamilies[] = {"char", "half", "bool", "int", "float"};
  return kFamilies[vrntTypeBasetype(type)];
}

std::optional<std::string> annotatedText(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_TEXT) {
    return std::nullopt;
  }
  return vrntMetadataString(type, key);
}

bool isArray(const vrntType_t* type) {
  return !isStruct(type) && vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY;
}

// The type of an array's elements, which lives as long as the array's.
const vrntType_t* elementOf(const vrntType_t* arrayType) {
  vrntType_t* const element = vrntTypeElementType(arrayType);
  vrntTypeDestroy(element);
  return element;
}

// An array of numbers or enums, of any dimensions, is one leaf.
bool isRow(const vrntType_t* arrayType) {
  const vrntType_t* element = elementOf(arrayType);
  while (isArray(element)) element = elementOf(element);
  const std::string_view kind = kindOf(element);
  return kind != "struct" && kind != "reference" && kind != "function";
}

// Writes data without references as JSON on one line.
class DataTexts {
 public:
  std::string of(const vrntType_t* type, const char* at) {
    std::string text;
    Output out([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
    writePart(out, *trees_.of(type), 0, at, nullptr, 0);
    out.flush();
    return text;
  }
  bool hasReferences(const vrntType_t* type) { return trees_.of(type)->hasReferences(); }

 private:
  TypeTrees trees_;
};

// The columns of a table, as wide as their widest cell.
class Table {
 public:
  explicit Table(std::vector<std::string> head) { add(std::move(head)); }
  void add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }

  std::string text(const std::vector<bool>& isNumber) const {
    constexpr std::size_t kWidest = 40;
    std::vector<std::size_t> widths(isNumber.size());
    for (const auto& row : rows_) {
      for (std::size_t i = 0; i < row.size(); ++i) {
        widths[i] = std::max(widths[i], std::min(row[i].size(), kWidest));
      }
    }
    std::string text;
    for (const auto& row : rows_) {
      std::string line;
      for (std::size_t i = 0; i < row.size(); ++i) {
        if (i != 0) line += "  ";
        line += isNumber[i] ? fmt::format("{:>{}}", row[i], widths[i])
                            : fmt::format("{:<{}}", row[i], widths[i]);
      }
      line.erase(line.find_last_not_of(' ') + 1);
      text += line + '\n';
    }
    return text;
  }

 private:
  std::vector<std::vector<std::string>> rows_;
};

// Types.

class TypeDescription {
 public:
  explicit TypeDescription(const vrntType_t* type) : type_(type) {
    concrete_ = !isArray(type) || isSized(type);
    listParts();
    // Defaults and limits of a type as large as a film are of no use to anybody.
    constexpr std::uint64_t kLargest = std::uint64_t{16} << 20;
    if (!concrete_ || vrntTypeSize(type) > kLargest) return;
    bounds_ = std::make_unique<BoundsBytes>(type);
    plain_.reset(vrntTypeStripMetadata(type));
    natural_ = std::make_unique<BoundsBytes>(plain_.get());
  }

  std::string json() {
    std::string json = "{\n  \"type\": " + jsonText(textOfType(type_));
    json += ",\n  \"canonical\": " + jsonText(plainTextOfType(type_));
    json += fmt::format(
        ",\n  \"kind\": \"{}\",\n  \"concrete\": {},\n  \"size\": {},\n  \"alignment\": {},\n"
        "  \"layout\": [",
        kindOf(type_), concrete_, vrntTypeSize(type_), vrntTypeAlignment(type_));
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      json += i == 0 ? "\n    " : ",\n    ";
      json += jsonOf(parts_[i]);
    }
    json += parts_.empty() ? "]\n}\n" : "\n  ]\n}\n";
    return json;
  }

  std::string text() {
    std::string text = textOfType(type_) + "\n";
    text += concrete_ ? fmt::format("{} bytes, aligned to {}\n", vrntTypeSize(type_),
                                    vrntTypeAlignment(type_))
                      : "without a size\n";
    if (parts_.empty()) return text;
    Table table({"OFFSET", "SIZE", "TYPE", "PART", "DEFAULT", "LIMITS", "UNIT"});
    for (const Part& part : parts_) {
      table.add({std::to_string(part.offset), std::to_string(vrntTypeSize(part.type)),
                 partTextOfType(part.type), part.path, valueText(part), limitsText(part),
                 annotatedText(part.type, "unit").value_or("")});
    }
    return text + "\n" + table.text({true, true, false, false, false, false, false});
  }

 private:
  struct Part {
    const vrntType_t* type;
    std::uint64_t offset;
    std::string path;
  };

  static bool isSized(const vrntType_t* arrayType) {
    std::int32_t shape[4] = {0, 0, 0, 0};
    vrntTypeArrayShape(arrayType, shape);
    return shape[0] >= 0;
  }

  // No recursion: types may nest as deeply as a text is long.
  void listParts() {
    std::vector<Part> open;
    const auto openParts = [&open](const Part& part) {
      const std::size_t first = open.size();
      vrntValueView_t view{};
      if (isStruct(part.type)) {
        for (std::uint32_t i = 0; i < vrntTypeFieldCount(part.type); ++i) {
          vrntValueStructField(&view, part.type, i);
          open.push_back({view.type, part.offset + view.offset,
                          pathTo(part.path, vrntTypeFieldLabel(part.type, i))});
        }
      } else if (isArray(part.type)) {
        const vrntType_t* element = elementOf(part.type);
        std::string path = part.path + "[]";
        while (isArray(element)) {
          element = elementOf(element);
          path += "[]";
        }
        if (!isStruct(element)) return;
        for (std::uint32_t i = 0; i < vrntTypeFieldCount(element); ++i) {
          vrntValueStructField(&view, element, i);
          open.push_back(
              {view.type, part.offset + view.offset, pathTo(path, vrntTypeFieldLabel(element, i))});
        }
      }
      std::reverse(open.begin() + static_cast<std::ptrdiff_t>(first), open.end());
    };
    const Part whole{type_, 0, ""};
    if (!isStruct(type_)) parts_.push_back(whole);
    openParts(whole);
    while (!open.empty()) {
      Part part = std::move(open.back());
      open.pop_back();
      parts_.push_back(part);
      openParts(part);
    }
  }

  // Whether the texts of the part's data are to be shown: those of fields, not those of what
  // contains others, and of arrays only if they are short.
  bool isShown(const Part& part) {
    constexpr std::uint64_t kLongestArray = 64;
    if (!bounds_ || isStruct(part.type) || vrntTypeSize(part.type) == 0) return false;
    if (isArray(part.type)) {
      if (elementCount(part.type) > kLongestArray || !isRow(part.type)) return false;
    }
    return !texts_.hasReferences(part.type);
  }

  std::string valueText(const Part& part) {
    if (!isShown(part)) return "";
    return texts_.of(
        part.type, static_cast<const char*>(vrntValueData(bounds_->defaults.get())) + part.offset);
  }

  using Bytes = std::vector<char> BoundsBytes::*;

  // The text of a limit, unless it is that of the bare type.
  std::string limitText(const Part& part, Bytes member) {
    const std::string_view kind = kindOf(part.type);
    if (!isShown(part) || kind == "bool" || kind == "enum") return "";
    const auto size = static_cast<std::size_t>(vrntTypeSize(part.type));
    const char* const own = ((*bounds_).*member).data() + part.offset;
    if (std::memcmp(own, ((*natural_).*member).data() + part.offset, size) == 0) return "";
    return texts_.of(part.type, own);
  }

  std::string limitsText(const Part& part) {
    const auto rangeText = [&](Bytes least, Bytes most) -> std::string {
      const std::string min = limitText(part, least);
      const std::string max = limitText(part, most);
      if (min.empty() && max.empty()) return "";
      if (min.empty()) return "up to " + max;
      if (max.empty()) return "from " + min;
      return min + " to " + max;
    };
    std::string hard = rangeText(&BoundsBytes::min, &BoundsBytes::max);
    const std::string soft = rangeText(&BoundsBytes::softMin, &BoundsBytes::softMax);
    if (soft.empty() || soft == hard) return hard;
    return hard.empty() ? "soft " + soft : hard + ", soft " + soft;
  }

  std::string jsonOf(const Part& part) {
    std::string json = fmt::format(
        "{{ \"path\": {}, \"offset\": {}, \"size\": {}, \"alignment\": {}, \"type\": "
        "{}, \"kind\": \"{}\"",
        jsonText(part.path), part.offset, vrntTypeSize(part.type), vrntTypeAlignment(part.type),
        jsonText(partTextOfType(part.type)), kindOf(part.type));
    const auto member = [&json](const char* key, const std::string& text) {
      if (!text.empty()) json += fmt::format(", \"{}\": {}", key, text);
    };
    member("default", valueText(part));
    member("min", limitText(part, &BoundsBytes::min));
    member("max", limitText(part, &BoundsBytes::max));
    member("softMin", limitText(part, &BoundsBytes::softMin));
    member("softMax", limitText(part, &BoundsBytes::softMax));
    for (const auto& [key, annotation] :
         {std::pair("name", "name"), std::pair("description", "desc"), std::pair("unit", "unit")}) {
      if (const auto text = annotatedText(part.type, annotation)) member(key, jsonText(*text));
    }
    if (std::string_view(kindOf(part.type)) == "enum") member("choices", choices(part.type));
    return json + " }";
  }

  static std::string choices(const vrntType_t* type) {
    std::string json;
    for (const Choice& choice : choicesOf(type)) {
      json += json.empty() ? "[" : ", ";
      json += "{ \"label\": " + jsonText(choice.label);
      if (choice.name != choice.label) json += ", \"name\": " + jsonText(choice.name);
      if (!choice.description.empty()) {
        json += ", \"description\": " + jsonText(choice.description);
      }
      json += " }";
    }
    return json + "]";
  }

  const vrntType_t* type_;
  bool concrete_ = true;
  std::vector<Part> parts_;
  std::unique_ptr<BoundsBytes> bounds_;
  vrnt::UniqueType plain_;
  std::unique_ptr<BoundsBytes> natural_;
  DataTexts texts_;
};

// Values.

class ValueDescription {
 public:
  // Writes the data first: the library prints no value whose references form a cycle.
  ValueDescription(const vrntValue_t* value, const vrntType_t* type)
      : value_(value), data_(data()) {
    if (type != nullptr) {
      requireType(type, value);
      bounds_ = std::make_unique<BoundsBytes>(type);
      const auto* const data = static_cast<const char*>(vrntValueData(value));
      findOutside(ValueLayout(vrntValueType(value)), *bounds_, data, [&](const Outside& outside) {
        outside_.emplace(outside.offset, outsideText(outside));
      });
    }
    listLeaves();
  }

  std::string json() {
    const vrntType_t* const type = vrntValueType(value_);
    std::string json = "{\n  \"type\": " + jsonText(textOfType(type));
    json +=
        fmt::format(",\n  \"size\": {},\n  \"alignment\": {},\n  \"text\": ", vrntTypeSize(type),
                    vrntTypeAlignment(type));
    const std::optional<std::string> text = valueText();
    json += text ? jsonText(*text) : "null";
    json += ",\n  \"data\": " + data_ + ",\n  \"leaves\": [";
    for (std::size_t i = 0; i < leaves_.size(); ++i) {
      const Leaf& leaf = leaves_[i];
      json += i == 0 ? "\n    " : ",\n    ";
      json += fmt::format("{{ \"path\": {}, \"offset\": {}, \"type\": {}, \"value\": {}",
                          jsonText(leaf.path), leaf.offset, jsonText(leaf.type), leaf.value);
      if (!leaf.standard.empty()) json += ", \"default\": " + leaf.standard;
      if (!leaf.outside.empty()) json += ", \"outside\": " + jsonText(leaf.outside);
      json += " }";
    }
    json += leaves_.empty() ? "]\n}\n" : "\n  ]\n}\n";
    return json;
  }

  std::string text() {
    const vrntType_t* const type = vrntValueType(value_);
    const std::optional<std::string> whole = valueText();
    std::string text = whole ? *whole + "\n" : "without a text\n";
    text += textOfType(type) + "\n";
    text += fmt::format("{} bytes, aligned to {}\n", vrntTypeSize(type), vrntTypeAlignment(type));
    if (leaves_.empty()) return text;
    Table table({"OFFSET", "TYPE", "PART", "VALUE", "DEFAULT", ""});
    for (const Leaf& leaf : leaves_) {
      table.add({std::to_string(leaf.offset), leaf.type, leaf.path, leaf.value, leaf.standard,
                 leaf.outside});
    }
    return text + "\n" + table.text({true, false, false, false, false, false});
  }

 private:
  struct Leaf {
    std::string path;
    std::uint64_t offset;
    std::string type;
    std::string value;     // as JSON
    std::string standard;  // as JSON; empty if it is the value or unknown
    std::string outside;
  };
  struct Part {
    const vrntType_t* type;
    const char* block;  // where the offset counts from
    std::uint64_t offset;
    std::string path;
  };

  static const vrntValue_t* blockOf(std::uint64_t word) {
    const auto* const data =
        reinterpret_cast<const char*>(word);  // NOLINT(performance-no-int-to-ptr)
    return reinterpret_cast<const vrntValue_t*>(data - sizeof(vrntValue_t));
  }

  void listLeaves() {
    const auto* const root = static_cast<const char*>(vrntValueData(value_));
    open_.push_back({vrntValueType(value_), root, 0, ""});
    std::unordered_set<const char*> seen{root};
    while (!open_.empty()) {
      const Part part = std::move(open_.back());
      open_.pop_back();
      const std::size_t first = open_.size();
      if (isStruct(part.type)) {
        openFields(part);
      } else if (isArray(part.type) && !isRow(part.type)) {
        openElements(part);
      } else {
        leaf(part, root, seen);
      }
      std::reverse(open_.begin() + static_cast<std::ptrdiff_t>(first), open_.end());
    }
  }

  void openFields(const Part& part) {
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(part.type); ++i) {
      vrntValueView_t view{};
      vrntValueStructField(&view, part.type, i);
      open_.push_back({view.type, part.block, part.offset + view.offset,
                       pathTo(part.path, vrntTypeFieldLabel(part.type, i))});
    }
  }

  void openElements(const Part& part) {
    const std::uint64_t count = elementCount(part.type);
    if (count == 0 || vrntTypeSize(part.type) == 0) return;
    const std::uint64_t size = vrntTypeSize(part.type) / count;
    const vrntType_t* const element = elementOf(part.type);
    for (std::uint64_t i = 0; i < count; ++i) {
      std::string path;
      std::int32_t shape[4] = {1, 1, 1, 1};
      vrntTypeArrayShape(part.type, shape);
      std::uint64_t rest = i;
      for (std::uint32_t d = 0; d < vrntTypeArrayDimension(part.type); ++d) {
        const auto extent = static_cast<std::uint64_t>(std::max(shape[d], 1));
        // The last dimension, which runs slowest, is the first step.
        if (!path.empty()) path.insert(0, 1, '/');
        path.insert(0, std::to_string(rest % extent));
        rest /= extent;
      }
      open_.push_back({element, part.block, part.offset + i * size, pathTo(part.path, path)});
    }
  }

  void leaf(const Part& part, const char* root, std::unordered_set<const char*>& seen) {
    const char* const at = part.block + part.offset;
    Leaf leaf{part.path, part.offset, textOfType(part.type), "", "", ""};
    const std::string_view kind = kindOf(part.type);
    if (kind == "reference" || kind == "function") {
      leaf.value = words(part, at, kind == "reference" ? 1 : 2, seen);
    } else {
      leaf.value = texts_.of(part.type, at);
      if (part.block == root && bounds_) {
        const auto size = static_cast<std::size_t>(vrntTypeSize(part.type));
        const char* const standard =
            static_cast<const char*>(vrntValueData(bounds_->defaults.get())) + part.offset;
        if (std::memcmp(at, standard, size) != 0) {
          std::string text = texts_.of(part.type, standard);
          if (text != leaf.value) leaf.standard = std::move(text);
        }
        for (auto found = outside_.lower_bound(part.offset);
             found != outside_.end() && found->first < part.offset + size; ++found) {
          leaf.outside += leaf.outside.empty() ? "" : "; ";
          leaf.outside += found->second;
        }
      }
    }
    leaves_.push_back(std::move(leaf));
  }

  // The text of reference words. What they lead to follows, each block once.
  std::string words(const Part& part, const char* at, int count,
                    std::unordered_set<const char*>& seen) {
    std::string text;
    for (int i = 0; i < count; ++i) {
      std::uint64_t word = 0;
      std::memcpy(&word, at + 8 * i, sizeof(word));
      std::string one = "null";
      if ((word & 1U) != 0) {
        one = fmt::format("{{ \"address\": \"0x{:x}\" }}", word >> 1U);
      } else if (word != 0) {
        const vrntValue_t* const block = blockOf(word);
        const vrntType_t* const type = vrntValueType(block);
        one = "{ \"type\": " + jsonText(textOfType(type)) + " }";
        const auto* const data = static_cast<const char*>(vrntValueData(block));
        const std::string path = count == 1 ? part.path : pathTo(part.path, std::to_string(i));
        if (seen.insert(data).second) open_.push_back({type, data, 0, pathTo(path, "to")});
      }
      text += i == 0 ? one : ", " + one;
    }
    return count == 1 ? text : "[" + text + "]";
  }

  std::optional<std::string> valueText() const {
    const vrntValueView_t whole{vrntValueType(value_), 0};
    vrntValuesError_t* error = nullptr;
    const vrnt::UniqueString text(vrntValueString(value_, &whole, 0, &error));
    if (text) return text.get();
    const vrnt::UniqueError owner(error);
    if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) throw std::bad_alloc();
    return std::nullopt;
  }

  // The data in the JSON form of a scene.
  std::string data() const {
    std::string text;
    Output out([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
    try {
      ValueWriter(out).write(value_, 0, 0, 0);
    } catch (const Failure& failure) {
      if (failure.status() != VRTK_VALUE_CYCLE) throw;
      throw Failure(VRTK_VALUE_CYCLE,
                    "the references of the value form a cycle, which JSON cannot hold; cut the "
                    "cycle");
    }
    out.flush();
    // The member behind the type, which is on one line.
    constexpr std::string_view kKey = "\n  \"data\": ";
    const std::size_t start = text.find(kKey) + kKey.size();
    return text.substr(start, text.size() - start - 2);
  }

  const vrntValue_t* value_;
  std::string data_;
  std::unique_ptr<BoundsBytes> bounds_;
  std::map<std::uint64_t, std::string> outside_;
  std::vector<Part> open_;
  std::vector<Leaf> leaves_;
  DataTexts texts_;
};

void requireForm(std::uint32_t form, const char* function) {
  if (form == VRTK_DESCRIPTION_TEXT || form == VRTK_DESCRIPTION_JSON) return;
  throw Failure(
      VRTK_INVALID_ARGUMENT,
      fmt::format("{}: there is no form {}; use a VRTK_DESCRIPTION_* code", function, form));
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkTypeDescribe(const vrntType_t* type, std::uint32_t form, char** description,
                               vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkTypeDescribe", "type");
    vrtk::requireArgument(description, "vrtkTypeDescribe", "description");
    vrtk::requireForm(form, "vrtkTypeDescribe");
    vrtk::TypeDescription described(type);
    *description =
        vrtk::copyString(form == VRTK_DESCRIPTION_JSON ? described.json() : described.text());
  });
}

std::uint32_t vrtkValueDescribe(const vrntValue_t* value, const vrntType_t* type,
                                std::uint32_t form, char** description, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(value, "vrtkValueDescribe", "value");
    vrtk::requireArgument(description, "vrtkValueDescribe", "description");
    vrtk::requireForm(form, "vrtkValueDescribe");
    vrtk::ValueDescription described(value, type);
    *description =
        vrtk::copyString(form == VRTK_DESCRIPTION_JSON ? described.json() : described.text());
  });
}
