#include "schemas.hpp"

#include <cstdio>
#include <cstdlib>

namespace bench {

const std::vector<std::string> kConstructors = {"PINHOLE", "THIN_LENS", "FISHEYE"};

namespace {

constexpr std::size_t kDigits = 8;
constexpr char kNumber[] = "_00000000";  // behind the first label of each part

Leaf number(const char* label, const char* name, const char* description, const char* value,
            const char* more = "@soft_max=1.0") {
  return {Leaf::Kind::Float, label, name, description, "@max=1000.0 @min=0.0", more, {value}};
}

std::vector<Leaf> leavesOfAPart() {
  return {
      number("near_distance", "Near distance",
             "Distance of the near plane from the position of the camera, in metres.", "0.05",
             "@si_unit=\"m\" @soft_max=1.0"),
      number("focal_length", "Focal length",
             "Distance between the lens and the film if the focus is at infinity.", "0.035",
             "@si_unit=\"m\" @soft_max=1.0"),
      number("exposure", "Exposure", "Factor of the radiance before the image is converted.",
             "1.0"),
      {Leaf::Kind::Float3,
       "tint",
       "Tint",
       "Colour by which each pixel is multiplied, in linear RGB.",
       "@max=float3(1.0, 1.0, 1.0) @min=float3(0.0, 0.0, 0.0)",
       "",
       {"1.0", "0.5", "0.25"}},
      {Leaf::Kind::Bool,
       "visible",
       "Visible to the camera",
       "Whether rays that start at the camera hit the object, apart from its shadow.",
       "",
       "",
       {"true"}},
      {Leaf::Kind::Int,
       "samples",
       "Samples",
       "Number of paths that start in each pixel of the image.",
       "@max=65536 @min=1",
       "@soft_max=4096",
       {"128"}},
      number("roughness", "Roughness", "Width of the lobe of reflection, zero for a mirror.",
             "0.3"),
      {Leaf::Kind::Enum,
       "projection",
       "Projection",
       "How directions from the camera fall on the film.",
       "",
       "",
       {"THIN_LENS"}},
      number("aperture", "Aperture",
             "Radius of the opening of the lens, which blurs what is not in focus.", "0.0125",
             "@si_unit=\"m\" @soft_max=1.0"),
      {Leaf::Kind::Float3,
       "offset",
       "Offset",
       "Translation of the object after its rotation, in metres.",
       "@max=float3(1000.0, 1000.0, 1000.0) @min=float3(-1000.0, -1000.0, -1000.0)",
       "@si_unit=\"m\"",
       {"0.0", "-1.5", "20.0"}},
      number("shutter_open", "Shutter opens", "Time at which the shutter opens, in frames.",
             "0.25"),
      number("shutter_close", "Shutter closes",
             "Time at which the shutter closes, in frames. There is no blur if both are equal.",
             "0.75"),
      {Leaf::Kind::Bool,
       "casts_shadow",
       "Casts shadow",
       "Whether the object hides lights from what is behind it.",
       "",
       "",
       {"false"}},
      number("temperature", "Temperature",
             "Temperature of the black body of this colour, in kelvin.", "650.0"),
  };
}

Schema withParts(const char* name, std::size_t leaves, std::size_t parts) {
  const std::vector<Leaf> some = leavesOfAPart();
  Schema schema{name, {}};
  for (std::size_t p = 0; p < parts; ++p) {
    Part part;
    if (parts > 1) part.label = "part_" + std::to_string(p);
    // The last part takes the leaves that remain.
    const std::size_t count = p + 1 < parts ? leaves / parts : leaves - leaves / parts * p;
    for (std::size_t i = 0; i < count; ++i) {
      Leaf leaf = some[i % some.size()];
      if (i >= some.size()) leaf.label += "_again";
      if (i == 0) leaf.label += kNumber;
      part.leaves.push_back(std::move(leaf));
    }
    schema.parts.push_back(std::move(part));
  }
  return schema;
}

std::string enumText() {
  std::string text = "enum {";
  for (const std::string& constructor : kConstructors) text += " " + constructor + ";";
  return text + " }";
}

std::string leafType(const Leaf& leaf) {
  switch (leaf.kind) {
    case Leaf::Kind::Float:
      return "float";
    case Leaf::Kind::Float3:
      return "float3";
    case Leaf::Kind::Int:
      return "int";
    case Leaf::Kind::Bool:
      return "bool";
    case Leaf::Kind::Enum:
      return enumText();
  }
  std::abort();
}

// With a blank in front of each annotation. Keys are in byte order, as in canonical text.
std::string annotations(const Leaf& leaf) {
  std::string text = " @default=" + defaultText(leaf) + " @desc=\"" + leaf.description + "\"";
  if (!leaf.limits.empty()) text += " " + leaf.limits;
  text += " @name=\"" + leaf.name + "\"";
  if (!leaf.more.empty()) text += " " + leaf.more;
  return text;
}

std::string partText(const Part& part, Form form) {
  std::string text = "{ ";
  const std::size_t count = part.leaves.size();
  for (std::size_t i = 0; i < count; ++i) {
    const Leaf& leaf = part.leaves[form == Form::Moved ? (i + 1) % count : i];
    text += leafType(leaf);
    if (form == Form::Annotated) text += annotations(leaf);
    if (form == Form::Specialized && (i == 3 || i == 9)) text += " @no_specialize";
    text += " " + leaf.label + "; ";
  }
  return text + "}";
}

}  // namespace

std::string defaultText(const Leaf& leaf) {
  const auto& c = leaf.components;
  switch (leaf.kind) {
    case Leaf::Kind::Float3:
      return "float3(" + c[0] + ", " + c[1] + ", " + c[2] + ")";
    case Leaf::Kind::Enum:
      return c[0] + " : " + enumText();
    default:
      return c[0];
  }
}

const Schema& schemaXS() {
  static const Schema schema = [] {
    Schema made = withParts("XS", 2, 1);
    for (Leaf& leaf : made.parts.front().leaves) leaf.more.clear();
    return made;
  }();
  return schema;
}

const Schema& schemaS() {
  static const Schema schema = withParts("S", 14, 1);
  return schema;
}

const Schema& schemaL() {
  static const Schema schema = withParts("L", 100, 7);
  return schema;
}

std::string typeText(const Schema& schema, Form form) {
  if (!schema.isNested()) return partText(schema.parts.front(), form);
  std::string text = "{ ";
  for (std::size_t p = 0; p < schema.parts.size(); ++p) {
    const Part& part = schema.parts[p];
    text += partText(part, form == Form::Moved && p > 0 ? Form::Plain : form);
    if (form == Form::Annotated) text += " @name=\"Part " + std::to_string(p) + "\"";
    text += " " + part.label + "; ";
  }
  return text + "}";
}

vrnt::UniqueType typeOf(const Schema& schema, Form form) {
  vrntValuesError_t* error = nullptr;
  vrnt::UniqueType type(vrntTypeParse(typeText(schema, form).c_str(), &error));
  if (!type) {
    std::fprintf(stderr, "%s\n", vrntValuesErrorMessage(error));
    std::abort();
  }
  return type;
}

vrnt::UniqueValue defaultOf(const Schema& schema) {
  vrntValuesError_t* error = nullptr;
  return vrnt::UniqueValue(vrntValueCreateDefault(typeOf(schema, Form::Annotated).get(), &error));
}

std::string valueText(const Schema& schema) {
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueValue value = defaultOf(schema);
  const vrntValueView_t view{vrntValueType(value.get()), 0};
  return vrnt::UniqueString(vrntValueString(value.get(), &view, 0, &error)).get();
}

NewTypeTexts::NewTypeTexts(const Schema& schema) : text_(typeText(schema, Form::Annotated)) {
  for (std::size_t at = 0; (at = text_.find(kNumber, at)) != std::string::npos; ++at) {
    numbers_.push_back(at + 1);
  }
}

const char* NewTypeTexts::next() {
  std::uint32_t rest = ++next_;
  char digits[kDigits];
  for (std::size_t i = kDigits; i > 0; --i, rest /= 10) {
    digits[i - 1] = static_cast<char>('0' + rest % 10);
  }
  for (const std::size_t at : numbers_) text_.replace(at, kDigits, digits, kDigits);
  return text_.c_str();
}

}  // namespace bench
