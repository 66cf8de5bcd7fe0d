#include "core/parts.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vornath_data/handles.hpp>

#include "core/spectra.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

constexpr int kDeepestReference = 16;  // since a value may refer to itself
constexpr std::int64_t kShortArray = 8;
constexpr std::size_t kMostLines = 100000;  // of one value

struct Place {
  const vrntValue_t* value;
  const vrntValue_t* standard;
  vrntValueView_t view;
  std::string path;
  int references;
};

const char* bytesAt(const vrntValue_t* value, std::uint64_t offset) {
  return static_cast<const char*>(vrntValueData(value)) + offset;
}

template <typename T>
T load(const char* bytes) {
  T value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

float halfToFloat(std::uint16_t bits) {
  const int exponent = (bits >> 10) & 31;
  const int fraction = bits & 1023;
  float value = 0;
  if (exponent == 31) {
    value = fraction != 0 ? NAN : INFINITY;
  } else if (exponent == 0) {
    value = std::ldexp(static_cast<float>(fraction), -24);
  } else {
    value = std::ldexp(static_cast<float>(fraction + 1024), exponent - 25);
  }
  return (bits & 0x8000) != 0 ? -value : value;
}

std::uint64_t laneSize(std::uint32_t basetype) {
  switch (basetype) {
    case VRNT_BASETYPE_CHAR:
      return 1;
    case VRNT_BASETYPE_HALF:
      return 2;
    default:
      return 4;
  }
}

std::string laneText(std::uint32_t basetype, const char* bytes) {
  switch (basetype) {
    case VRNT_BASETYPE_CHAR:
      return std::to_string(load<unsigned char>(bytes));
    case VRNT_BASETYPE_HALF:
      return numberText(halfToFloat(load<std::uint16_t>(bytes)));
    case VRNT_BASETYPE_BOOL:
      return load<std::uint32_t>(bytes) != 0 ? "true" : "false";
    case VRNT_BASETYPE_INT:
      return std::to_string(load<std::int32_t>(bytes));
    default:
      return numberText(load<float>(bytes));
  }
}

std::string unitOf(const vrntType_t* type) {
  constexpr const char* kKey = "si_unit";
  if (vrntMetadataExists(type, kKey) == 0 || vrntMetadataType(type, kKey) != VRNT_METADATA_TEXT) {
    return "";
  }
  return std::string(" ") + vrntMetadataString(type, kKey);
}

bool isChar(const vrntType_t* type) {
  return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_BASE && !isStruct(type) &&
         vrntTypeBasetype(type) == VRNT_BASETYPE_CHAR && vrntTypeVectorDimension(type) == 1;
}

bool isFloats(const vrntType_t* type, std::uint32_t lanes) {
  return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_BASE && !isStruct(type) &&
         vrntTypeBasetype(type) == VRNT_BASETYPE_FLOAT && vrntTypeVectorDimension(type) == lanes;
}

// Returns whether the type is a leaf: a scalar, a vector, an enum or a function.
bool isLeaf(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return (descriptor == VRNT_DESCRIPTOR_BASE && !isStruct(type)) ||
         descriptor == VRNT_DESCRIPTOR_ENUM || descriptor == VRNT_DESCRIPTOR_FUNCTION;
}

std::string leafText(const vrntType_t* type, const char* bytes) {
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ENUM: {
      const auto code = load<std::uint32_t>(bytes);
      if (code < vrntTypeConstructorCount(type)) return vrntTypeConstructorName(type, code);
      return std::to_string(load<std::int32_t>(bytes)) + " (no choice of the enum)";
    }
    case VRNT_DESCRIPTOR_FUNCTION:
      return "function";
    default:
      break;
  }
  const std::uint32_t basetype = vrntTypeBasetype(type);
  const std::uint32_t lanes = vrntTypeVectorDimension(type);
  if (lanes == 1) return laneText(basetype, bytes);
  std::string text = "(";
  for (std::uint32_t i = 0; i < lanes; ++i) {
    if (i != 0) text += ", ";
    text += laneText(basetype, bytes + i * laneSize(basetype));
  }
  return text + ")";
}

// The bytes of a leaf without the padding behind the lanes of a vector.
std::uint64_t leafSize(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_BASE) return vrntTypeSize(type);
  return laneSize(vrntTypeBasetype(type)) * vrntTypeVectorDimension(type);
}

std::int64_t elementCount(const vrntType_t* array) {
  std::int32_t extents[4] = {};
  vrntTypeArrayShape(array, extents);
  std::int64_t count = 1;
  for (std::uint32_t i = 0; i < vrntTypeArrayDimension(array); ++i) {
    count *= std::max(extents[i], 0);
  }
  return count;
}

// Returns whether two parts of one type are equal bit by bit, leaving out padding.
bool sameBytes(const vrntType_t* type, const char* a, const char* b) {
  const std::uint64_t size = vrntTypeSize(type);
  if (std::memcmp(a, b, static_cast<std::size_t>(size)) == 0) return true;
  if (isLeaf(type)) return std::memcmp(a, b, static_cast<std::size_t>(leafSize(type))) == 0;
  if (isStruct(type)) {
    for (std::uint32_t field = 0; field < vrntTypeFieldCount(type); ++field) {
      vrntValueView_t child;
      vrntValueStructField(&child, type, field);
      if (!sameBytes(child.type, a + child.offset, b + child.offset)) return false;
    }
    return true;
  }
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
    const vrnt::UniqueType element(vrntTypeElementType(type));
    const std::uint64_t step = vrntTypeSize(element.get());
    for (std::int64_t i = 0; i < elementCount(type); ++i) {
      const std::uint64_t offset = static_cast<std::uint64_t>(i) * step;
      if (!sameBytes(element.get(), a + offset, b + offset)) return false;
    }
    return true;
  }
  return false;
}

bool isColourName(const std::string& label) {
  return label.find("spectrum") != std::string::npos || label.find("color") != std::string::npos ||
         label.find("colour") != std::string::npos;
}

class PartLister {
 public:
  explicit PartLister(const PartChoice& choice) : choice_(choice) {}

  std::vector<PartLine> list(const Place& place) {
    walk(place);
    // Stable, so that each half stays in the order of the type.
    std::stable_partition(lines_.begin(), lines_.end(),
                          [](const PartLine& line) { return line.changed; });
    return std::move(lines_);
  }

 private:
  // Whether a part is, contains, or is in what was asked for.
  bool onTheWay(const std::string& path) const {
    const std::string& asked = choice_.path;
    if (asked.empty() || path.empty()) return true;
    const std::size_t common = std::min(asked.size(), path.size());
    if (asked.compare(0, common, path, 0, common) != 0) return false;
    return asked.size() == path.size() ||
           (asked.size() > path.size() ? asked[common] : path[common]) == '/';
  }
  bool inside(const std::string& path) const {
    return onTheWay(path) && path.size() >= choice_.path.size();
  }

  void walk(const Place& place) {
    if (!onTheWay(place.path) || lines_.size() >= kMostLines) return;
    const vrntType_t* const type = place.view.type;
    if (!choice_.all && place.standard != nullptr &&
        sameBytes(type, bytesAt(place.value, place.view.offset),
                  bytesAt(place.standard, place.view.offset))) {
      return;
    }
    if (isStruct(type)) {
      walkStruct(place);
    } else if (isLeaf(type)) {
      add(place, leafText(type, bytesAt(place.value, place.view.offset)),
          place.standard != nullptr ? leafText(type, bytesAt(place.standard, place.view.offset))
                                    : "");
    } else if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_REFERENCE) {
      walkReference(place);
    } else {
      walkArray(place);
    }
  }

  Place childOf(const Place& place, const std::string& label, const vrntValueView_t& view) {
    Place child = place;
    child.path = place.path.empty() ? label : place.path + "/" + label;
    child.view = {view.type, place.view.offset + view.offset};
    return child;
  }

  void walkStruct(const Place& place) {
    if (walkSpectrum(place)) return;
    const std::uint32_t count = vrntTypeFieldCount(place.view.type);
    if (count == 0) {
      if (inside(place.path) && !place.path.empty()) add(place, "{ }", "{ }");
      return;
    }
    const std::size_t first = lines_.size();
    for (std::uint32_t field = 0; field < count; ++field) {
      // A view only borrows its type. This reference keeps the type with its annotations.
      const vrnt::UniqueType type(vrntTypeFieldType(place.view.type, field));
      vrntValueView_t child;
      vrntValueStructField(&child, place.view.type, field);
      child.type = type.get();
      walk(childOf(place, vrntTypeFieldLabel(place.view.type, field), child));
    }
    if (lines_.size() > first && !lines_[first].colour) addTriple(place, lines_[first]);
  }

  // A struct with the numbers red, green and blue is a colour, which the first of its lines shows.
  void addTriple(const Place& place, PartLine& line) {
    constexpr const char* kLabels[] = {"red", "green", "blue"};
    std::array<float, 3> rgb{};
    std::size_t found = 0;
    for (std::uint32_t field = 0; field < vrntTypeFieldCount(place.view.type); ++field) {
      vrntValueView_t child;
      vrntValueStructField(&child, place.view.type, field);
      if (found == 3 || !isFloats(child.type, 1) ||
          std::strcmp(vrntTypeFieldLabel(place.view.type, field), kLabels[found]) != 0) {
        continue;
      }
      rgb[found++] = load<float>(bytesAt(place.value, place.view.offset + child.offset));
    }
    if (found == 3) line.colour = rgb;
  }

  // Shows a spectrum as its colour. Returns false for another struct.
  bool walkSpectrum(const Place& place) {
    const vrnt::UniqueType spectrum(vrntTypeSpectrum());
    if (vrntTypeFieldCount(place.view.type) != 2 ||
        vrntTypeIsSubType(place.view.type, spectrum.get()) == 0) {
      return false;
    }
    std::array<float, 3> rgb{};
    if (!colourOf(place.value, place.view, rgb)) return false;
    // The parts are for who asks for them.
    if (!inside(place.path)) return false;
    vrntValueView_t reference;
    vrntValueStructField(&reference, place.view.type, 1);
    reference.offset += place.view.offset;
    const vrnt::UniqueValue target(vrntValueDereference(place.value, &reference));
    std::string text = "RGB " + roundedText(rgb[0], 4) + " " + roundedText(rgb[1], 4) + " " +
                       roundedText(rgb[2], 4);
    vrntValueView_t encoding;
    vrntValueStructField(&encoding, place.view.type, 0);
    const auto code =
        load<std::uint32_t>(bytesAt(place.value, place.view.offset + encoding.offset));
    if (code == VRNT_ENCODING_SPECTRAL && target) text += ", " + spectralText(target.get());
    if (code == VRNT_ENCODING_LUMINANCE) text += ", a luminance";
    add(place, text, "");
    lines_.back().colour = rgb;
    if (choice_.wholeArrays && target) {
      addElements(lines_.back(), target.get(), {vrntValueType(target.get()), 0});
    }
    return true;
  }

  static std::string spectralText(const vrntValue_t* pairs) {
    const std::int64_t count = elementCount(vrntValueType(pairs)) / 2;
    std::string text = counted(static_cast<std::uint64_t>(count), "pair");
    if (count > 2) {
      // The first pair and the last one are there to close the distribution.
      const float from = load<float>(bytesAt(pairs, 8));
      const float to = load<float>(bytesAt(pairs, static_cast<std::uint64_t>(count - 1) * 8));
      text += " from " + numberText(from) + " to " + numberText(to) + " nm";
    }
    return text;
  }

  void walkArray(const Place& place) {
    const vrntType_t* const type = place.view.type;
    const vrnt::UniqueType element(vrntTypeElementType(type));
    const std::int64_t count = elementCount(type);
    const std::uint64_t step = vrntTypeSize(element.get());
    if (isChar(element.get()) && vrntTypeArrayDimension(type) == 1) {
      const auto size = static_cast<std::size_t>(count);
      add(place, charsText(bytesAt(place.value, place.view.offset), size),
          place.standard != nullptr ? charsText(bytesAt(place.standard, place.view.offset), size)
                                    : "");
      return;
    }
    const bool single = vrntTypeArrayDimension(type) == 1;
    if (isLeaf(element.get()) && single && inside(place.path)) {
      PartLine& line = add(place, arrayText(place.value, place.view, element.get(), count),
                           place.standard != nullptr
                               ? arrayText(place.standard, place.view, element.get(), count)
                               : "");
      if (count > kShortArray && choice_.wholeArrays) addElements(line, place.value, place.view);
      return;
    }
    if (count == 0 && inside(place.path)) add(place, "[ ]", "");
    std::int32_t extents[4] = {};
    vrntTypeArrayShape(type, extents);
    for (std::int64_t i = 0; i < count; ++i) {
      // Addresses name the slowest dimension first.
      std::string label;
      std::int64_t rest = i;
      for (std::uint32_t d = 0; d < vrntTypeArrayDimension(type); ++d) {
        std::string outer = std::to_string(rest % extents[d]);
        if (d != 0) outer.append("/").append(label);
        label = std::move(outer);
        rest /= extents[d];
      }
      walk(childOf(place, label, {element.get(), static_cast<std::uint64_t>(i) * step}));
      if (lines_.size() >= kMostLines) return;
    }
  }

  static std::string arrayText(const vrntValue_t* value, const vrntValueView_t& view,
                               const vrntType_t* element, std::int64_t count) {
    const std::uint64_t step = vrntTypeSize(element);
    std::string text = "[";
    for (std::int64_t i = 0; i < count; ++i) {
      if (count > kShortArray && i == 3) {
        text += ", ...] " + counted(static_cast<std::uint64_t>(count), "element");
        return text;
      }
      text += i == 0 ? "" : ", ";
      text += leafText(element, bytesAt(value, view.offset + static_cast<std::uint64_t>(i) * step));
    }
    return text + "]";
  }

  static void addElements(PartLine& line, const vrntValue_t* value, const vrntValueView_t& view) {
    const vrnt::UniqueType element(vrntTypeElementType(view.type));
    const std::uint64_t step = vrntTypeSize(element.get());
    for (std::int64_t i = 0; i < elementCount(view.type); ++i) {
      line.block.push_back(leafText(
          element.get(), bytesAt(value, view.offset + static_cast<std::uint64_t>(i) * step)));
    }
  }

  void walkReference(const Place& place) {
    const auto word = load<std::uint64_t>(bytesAt(place.value, place.view.offset));
    // An odd word is an address of the process that wrote it.
    if (word == 0 || word % 2 != 0) {
      add(place, word == 0 ? "null" : "an address of another process", "");
      return;
    }
    if (place.references == kDeepestReference) {
      add(place, "-> ...", "");
      return;
    }
    const vrnt::UniqueValue target(vrntValueDereference(place.value, &place.view));
    if (!target) return;
    Place child = place;
    child.value = target.get();
    child.standard = nullptr;
    child.view = {vrntValueType(target.get()), 0};
    child.path = place.path.empty() ? "to" : place.path + "/to";
    ++child.references;
    walk(child);
  }

  PartLine& add(const Place& place, std::string text, const std::string& standard) {
    PartLine line;
    line.path = place.path;
    const std::string unit = unitOf(place.view.type);
    line.text = std::move(text) + unit;
    line.changed = place.standard == nullptr ||
                   !sameBytes(place.view.type, bytesAt(place.value, place.view.offset),
                              bytesAt(place.standard, place.view.offset));
    if (line.changed && !standard.empty()) line.standard = standard + unit;
    if (isFloats(place.view.type, 3) && isColourName(line.path.substr(line.path.rfind('/') + 1))) {
      std::array<float, 3> rgb{};
      std::memcpy(rgb.data(), bytesAt(place.value, place.view.offset), sizeof rgb);
      line.colour = rgb;
    }
    lines_.push_back(std::move(line));
    return lines_.back();
  }

  PartChoice choice_;
  std::vector<PartLine> lines_;
};

}  // namespace

bool isStruct(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return descriptor == VRNT_DESCRIPTOR_STRUCT ||
         (descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
}

std::string charsText(const char* bytes, std::size_t size) {
  return "\"" + oneLine({bytes, strnlen(bytes, size)}) + "\"";
}

std::vector<PartLine> partsOf(const vrntValue_t* value, const vrntType_t* annotated,
                              const vrntValue_t* standard, const PartChoice& choice) {
  PartLister lister(choice);
  return lister.list({value, standard, {const_cast<vrntType_t*>(annotated), 0}, "", 0});
}

}  // namespace vrn
