#include "value_printer.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace cornell_box {
namespace {

using vrnt::TypeHandle;
using vrnt::Value;

constexpr std::size_t kLineWidth = 100;
constexpr int kDeepestReference = 8;  // because a value may refer to itself

// Returns true for a struct. The spectrum is a struct, although its descriptor is a base type.
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

// Returns the text of a part. The text of a vector starts with its type, so the annotations of the
// type are removed first.
std::string textOf(const vrntValue_t* value, const vrntValueView_t& view) {
  const TypeHandle plain = TypeHandle::adopt(vrntTypeStripMetadata(view.type));
  const Value held = Value::share(value);
  std::string text;
  try {
    text = vrnt::ConstView(&held, plain, view.offset).text();
  } catch (const vrnt::Exception& error) {
    return std::string("(") + error.what() + ")";
  }
  // The text of an enum continues with its whole type.
  if (vrntTypeDescriptor(view.type) == VRNT_DESCRIPTOR_ENUM) text.resize(text.find(' '));
  return text;
}

// Returns the characters of a `char` array up to the first zero.
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

bool isSpectrum(const vrntType_t* type) {
  const TypeHandle spectrum = TypeHandle::adopt(vrntTypeSpectrum());
  return vrntTypeIsSubType(type, spectrum.get()) != 0;
}

// Returns the text of a spectrum's colour, or an empty string if it has none.
std::string rgbText(const vrntValue_t* value, const vrntValueView_t& view,
                    std::int32_t colourSpace) {
  std::array<float, 3> rgb{};
  if (vrntValueToRGB(value, &view, colourSpace, rgb.data()) != 0) return "";
  std::array<char, 128> text{};
  std::snprintf(text.data(), text.size(), "%.5f %.5f %.5f", static_cast<double>(rgb[0]),
                static_cast<double>(rgb[1]), static_cast<double>(rgb[2]));
  return text.data();
}

}  // namespace

void ValuePrinter::add(const vrntValue_t* value) {
  changedOnly_ = false;
  walk({value, nullptr, {vrntValueType(value), 0}, {}});
}

void ValuePrinter::add(const vrntValue_t* value, const vrntType_t* annotated,
                       const vrntValue_t* standard, bool changedOnly) {
  changedOnly_ = changedOnly;
  walk({value, standard, {const_cast<vrntType_t*>(annotated), 0}, {}});
}

void ValuePrinter::walk(const Place& place) {
  if (isStruct(place.view.type) && vrntTypeFieldCount(place.view.type) != 0) {
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
  const std::size_t heading = lines_.size();
  addHeading(place);
  for (std::uint32_t field = 0; field < vrntTypeFieldCount(place.view.type); ++field) {
    // A view only borrows its type, so this handle keeps the type alive.
    const TypeHandle type = TypeHandle::adopt(vrntTypeFieldType(place.view.type, field));
    vrntValueView_t child;
    vrntValueStructField(&child, place.view.type, field);
    walk({place.value,
          place.standard,
          {type.get(), place.view.offset + child.offset},
          vrntTypeFieldLabel(place.view.type, field)});
  }
  if (lines_.size() > heading + 1 && isSpectrum(place.view.type)) addColour(place);
  dropEmptyHeading(place, heading);
}

// Adds the colour of a spectrum below its fields.
void ValuePrinter::addColour(const Place& place) {
  const std::string indent(2 * depth_, ' ');
  const std::string underE = rgbText(place.value, place.view, VRNT_COLOUR_SPACE_E);
  const std::string underD65 = rgbText(place.value, place.view, VRNT_COLOUR_SPACE_D65);
  if (underE.empty()) return;
  if (underE == underD65) {
    lines_.push_back({indent + "RGB", underE, {}, {}});
  } else {
    lines_.push_back({indent + "RGB under E", underE, {}, {}});
    lines_.push_back({indent + "RGB under D65", underD65, {}, {}});
  }
}

// Adds the heading of a struct or list. The whole value has no label, so it has no heading and does
// not indent its parts.
void ValuePrinter::addHeading(const Place& place) {
  if (place.label.empty()) return;
  lines_.push_back({std::string(2 * depth_, ' ') + place.label, {}, {}, {}});
  ++depth_;
}

void ValuePrinter::dropEmptyHeading(const Place& place, std::size_t heading) {
  if (place.label.empty()) return;
  --depth_;
  if (lines_.size() == heading + 1) lines_.pop_back();
}

void ValuePrinter::walkArray(const Place& place) {
  const TypeHandle element = TypeHandle::adopt(vrntTypeElementType(place.view.type));
  std::int32_t extents[4] = {};
  vrntTypeArrayShape(place.view.type, extents);
  const bool isList = vrntTypeArrayDimension(place.view.type) == 1;

  if (isList && hasEntry(place.view.type, "string", VRNT_METADATA_FLAG) &&
      std::strcmp(vrntTypeString(element.get()), "char") == 0) {
    addLine(place, quoted(place.value, place.view),
            place.standard ? quoted(place.standard, place.view) : "");
  } else if (isList && extents[0] != 0 && !isScalarOrEnum(element.get())) {
    walkList(place, element.get(), extents[0]);
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

// Adds the elements of an array, each with its own parts.
void ValuePrinter::walkList(const Place& place, const vrntType_t* element, std::int32_t count) {
  const std::size_t heading = lines_.size();
  addHeading(place);
  for (std::int32_t i = 0; i < count; ++i) {
    vrntValueView_t child;
    vrntValueArrayElement(&child, place.view.type, &i);
    walk({place.value,
          place.standard,
          {const_cast<vrntType_t*>(element), place.view.offset + child.offset},
          "[" + std::to_string(i) + "]"});
  }
  dropEmptyHeading(place, heading);
}

void ValuePrinter::walkReference(const Place& place) {
  // An odd word is a foreign pointer, which this program must not read.
  const std::uint64_t word = wordAt(place.value, place.view);
  if (word == 0 || word % 2 != 0) {
    addLine(place, word == 0 ? "null" : textOf(place.value, place.view), "");
    return;
  }
  if (references_ == kDeepestReference) {
    addLine(place, "-> ...", "");
    return;
  }
  const Value target = Value::adopt(vrntValueDereference(place.value, &place.view));
  ++references_;
  const std::size_t first = lines_.size();
  walk({target.get(), nullptr, {vrntValueType(target.get()), 0}, place.label});
  --references_;
  if (first < lines_.size()) {
    std::string& text = lines_[first].text;
    text.insert(0, text.empty() ? "->" : "-> ");
  }
}

void ValuePrinter::addLine(const Place& place, const std::string& text,
                           const std::string& standardText) {
  const bool isChanged =
      !place.standard ||
      !vrntValueEqual(place.value, &place.view, place.standard, &place.view, 0.0F, nullptr);
  if (changedOnly_ && !isChanged) return;
  Line line{std::string(2 * depth_, ' ') + place.label, text, {}, {}};
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

// Arranges texts in lines of kLineWidth. The number per line is even, so that pairs stay together.
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
  std::size_t labelWidth = 0;
  std::size_t textWidth = 0;
  for (const Line& line : lines_) {
    if (!line.text.empty()) labelWidth = std::max(labelWidth, line.label.size());
    if (!line.note.empty()) textWidth = std::max(textWidth, line.text.size());
  }
  for (const Line& line : lines_) {
    std::string printed = line.label;
    if (!line.text.empty()) {
      printed.resize(std::max(labelWidth, printed.size()), ' ');
      printed += (printed.empty() ? "" : "  ") + line.text;
    }
    if (!line.note.empty()) {
      printed.resize(std::max(printed.size(), labelWidth + 2 + textWidth), ' ');
      printed += "  " + line.note;
    }
    out << indent_ << printed << '\n';
    for (const std::string& text : line.block) out << indent_ << text << '\n';
  }
}

}  // namespace cornell_box
