#include "value_printer.hpp"

#include <algorithm>
#include <cstring>
#include <iomanip>

namespace cornell_box {
namespace {

constexpr std::size_t kLineWidth = 100;
constexpr std::size_t kLongestPath = 44;  // a longer one pushes its value to the right
constexpr int kDeepestReference = 8;      // a value may lead to itself

// The type of a spectrum counts among the base types, though it is a struct.
bool isStruct(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return descriptor == VRNT_DESCRIPTOR_STRUCT ||
         (descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
}

bool isScalarOrEnum(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return (descriptor == VRNT_DESCRIPTOR_BASE && !isStruct(type)) ||
         descriptor == VRNT_DESCRIPTOR_ENUM;
}

bool hasEntry(const vrntType_t* type, const char* key, std::uint32_t kind) {
  return vrntMetadataExists(type, key) && vrntMetadataType(type, key) == kind;
}

std::string textOf(const vrntValue_t* value, const vrntValueView_t& view) {
  vrntValuesError_t* error = nullptr;
  const String string(vrntValueString(value, &view, 0, &error));
  if (error) {
    const std::string message = vrntValuesErrorMessage(error);
    vrntValuesErrorDestroy(error);
    return "(" + message + ")";
  }
  std::string text = string.get();
  // An enum's text goes on with its whole type.
  if (vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_ENUM) text.resize(text.find(' '));
  return text;
}

// The characters of a `char` array up to the first zero.
std::string quoted(const vrntValue_t* value, const vrntValueView_t& view) {
  const char* const bytes = static_cast<const char*>(vrntValueData(value)) + view.offset;
  std::string text = "\"";
  for (std::uint64_t i = 0; i < vrntTypeSize(view.type) && bytes[i] != '\0'; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    text += byte < 0x20 || byte == 0x7F ? '?' : bytes[i];
  }
  return text + "\"";
}

std::uint64_t wordAt(const vrntValue_t* value, const vrntValueView_t& view) {
  std::uint64_t word = 0;
  std::memcpy(&word, static_cast<const char*>(vrntValueData(value)) + view.offset, sizeof word);
  return word;
}

}  // namespace

void ValuePrinter::add(const vrntValue_t* value) {
  changedOnly_ = false;
  walk({value, nullptr, {vrntValueType(value), 0}, {}});
}

void ValuePrinter::add(const vrntValue_t* value, const vrntType_t* annotated, bool changedOnly) {
  changedOnly_ = changedOnly;
  const Value standard = defaultValue(annotated);
  walk({value, standard.get(), {const_cast<vrntType_t*>(annotated), 0}, {}});
}

void ValuePrinter::walk(const Place& place) {
  if (isStruct(place.view.type)) {
    walkStruct(place);
  } else if (vrntTypeDescriptor(place.view.type) == VRNT_DESCRIPTOR_ARRAY) {
    walkArray(place);
  } else if (vrntTypeDescriptor(place.view.type) == VRNT_DESCRIPTOR_REFERENCE) {
    walkReference(place);
  } else {
    addLine(place, textOf(place.value, place.view),
            place.standard ? textOf(place.standard, place.view) : "");
  }
}

void ValuePrinter::walkStruct(const Place& place) {
  for (std::uint32_t field = 0; field < vrntTypeFieldCount(place.view.type); ++field) {
    // A view borrows the type that it stands on, so this reference holds it.
    const Type type(vrntTypeFieldType(place.view.type, field));
    vrntValueView_t child;
    vrntValueStructField(&child, place.view.type, field);
    walk({place.value,
          place.standard,
          {type.get(), place.view.offset + child.offset},
          (place.path.empty() ? "" : place.path + ".") +
              vrntTypeFieldLabel(place.view.type, field)});
  }
}

void ValuePrinter::walkArray(const Place& place) {
  const Type element(vrntTypeElementType(place.view.type));
  std::int32_t extents[4] = {};
  vrntTypeArrayShape(place.view.type, extents);
  const bool isList = vrntTypeArrayDimension(place.view.type) == 1;

  if (isList && hasEntry(place.view.type, "string", VRNT_METADATA_FLAG) &&
      std::strcmp(vrntTypeString(element.get()), "char") == 0) {
    addLine(place, quoted(place.value, place.view),
            place.standard ? quoted(place.standard, place.view) : "");
  } else if (isList && !isScalarOrEnum(element.get())) {
    for (std::int32_t i = 0; i < extents[0]; ++i) {
      vrntValueView_t child;
      vrntValueArrayElement(&child, place.view.type, &i);
      walk({place.value,
            place.standard,
            {element.get(), place.view.offset + child.offset},
            place.path + "[" + std::to_string(i) + "]"});
    }
  } else {
    const std::string text = textOf(place.value, place.view);
    if (!isList || text.size() <= kLineWidth / 2) {
      addLine(place, text, place.standard ? textOf(place.standard, place.view) : "");
      return;
    }
    const std::size_t count = lines_.size();
    addLine(place, vrntTypeString(place.view.type), "");
    if (lines_.size() > count) lines_.back().block = columns(elements(place, extents[0]));
  }
}

void ValuePrinter::walkReference(const Place& place) {
  // Null, or an odd word, which is an address of the embedder's own and not this program's to read.
  const std::uint64_t word = wordAt(place.value, place.view);
  if (word == 0 || word % 2 != 0) {
    addLine(place, word == 0 ? "null" : textOf(place.value, place.view), "");
    return;
  }
  if (depth_ == kDeepestReference) {
    addLine(place, "-> ...", "");
    return;
  }
  const Value target(vrntValueDereference(place.value, &place.view));
  ++depth_;
  const std::size_t first = lines_.size();
  walk({target.get(), nullptr, {vrntValueType(target.get()), 0}, place.path});
  --depth_;
  if (first < lines_.size()) lines_[first].text.insert(0, "-> ");
}

void ValuePrinter::addLine(const Place& place, const std::string& text,
                           const std::string& standardText) {
  const bool isChanged =
      !place.standard ||
      !vrntValueEqual(place.value, &place.view, place.standard, &place.view, 0.0F, nullptr);
  if (changedOnly_ && !isChanged) return;
  Line line{place.path.empty() ? "(value)" : place.path, text, {}, {}};
  if (hasEntry(place.view.type, "si_unit", VRNT_METADATA_TEXT)) {
    line.text += std::string(" ") + vrntMetadataString(place.view.type, "si_unit");
  }
  if (isChanged && place.standard && !standardText.empty()) {
    line.note = "(default " + standardText + ")";
  }
  lines_.push_back(std::move(line));
}

std::vector<std::string> ValuePrinter::elements(const Place& place, std::int32_t count) const {
  std::vector<std::string> texts;
  for (std::int32_t i = 0; i < count; ++i) {
    vrntValueView_t child;
    vrntValueArrayElement(&child, place.view.type, &i);
    child.offset += place.view.offset;
    texts.push_back(textOf(place.value, child));
  }
  return texts;
}

// As many in a line as fit, an even number, since what comes in pairs is then seen in pairs.
std::vector<std::string> ValuePrinter::columns(const std::vector<std::string>& texts) const {
  std::size_t width = 0;
  for (const std::string& text : texts) width = std::max(width, text.size());
  const std::size_t room = kLineWidth - indent_.size() - 2;
  std::size_t perLine = std::max<std::size_t>(room / (width + 2), 1);
  if (perLine > 1) perLine -= perLine % 2;
  std::vector<std::string> lines;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (i % perLine == 0) lines.emplace_back();
    lines.back() += std::string(width + 2 - texts[i].size(), ' ') + texts[i];
  }
  return lines;
}

void ValuePrinter::print(std::ostream& out) const {
  std::size_t pathWidth = 0;
  std::size_t textWidth = 0;
  for (const Line& line : lines_) {
    pathWidth = std::max(pathWidth, std::min(line.path.size(), kLongestPath));
    if (!line.note.empty()) textWidth = std::max(textWidth, line.text.size());
  }
  for (const Line& line : lines_) {
    const auto width = static_cast<int>(std::max(pathWidth, line.path.size()));
    out << indent_ << std::left << std::setw(width) << line.path << "  ";
    if (line.note.empty()) {
      out << line.text << '\n';
    } else {
      out << std::setw(static_cast<int>(textWidth)) << line.text << "  " << line.note << '\n';
    }
    for (const std::string& text : line.block) out << indent_ << text << '\n';
  }
}

}  // namespace cornell_box
