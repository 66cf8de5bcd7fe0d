// Checks that a scene file holds what the tables say. To be independent of build_scene, this
// program shares only the table reader and the handles with it. It derives positions, spectra and
// groups again from the text of the tables, and it makes groups from value texts instead of writing
// fields.
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "csv.hpp"
#include "run_host.hpp"
#include "vornath_data/host.hpp"

namespace cornell_box {
namespace {

using vrnt::TypeHandle;
using vrnt::Value;
using vrnt::host::Scene;

[[noreturn]] void fail(const std::string& message) { throw std::runtime_error(message); }

// Returns the shortest text that reads back as the same number.
template <typename Number>
std::string show(Number number) {
  char text[32];
  return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

// Converts a text in millimetres, from a table, to a text in metres.
std::string metres(const std::string& millimetres) { return millimetres + "e-3"; }
float single(const std::string& text) { return std::strtof(text.c_str(), nullptr); }

struct Vector {
  double x, y, z;
};
Vector operator-(const Vector& a, const Vector& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Vector cross(const Vector& a, const Vector& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

class Checker {
 public:
  Checker(const vrdmScene_t* scene, const std::string& data, const std::string& programs)
      : scene_(scene),
        programs_(programs),
        geometry_(data + "/cornell_box_geometry.csv",
                  {"object", "face", "material", "corner", "x", "y", "z"}),
        reflectance_(data + "/cornell_box_reflectance.csv",
                     {"wavelength", "white", "green", "red"}),
        light_(data + "/cornell_box_light.csv", {"wavelength", "emission"}),
        camera_(data + "/cornell_box_camera.csv", {"quantity", "unit", "x", "y", "z"}) {
    for (std::size_t row = 0; row < geometry_.rows(); ++row) {
      const std::string& object = geometry_.text(row, "object");
      if (rowsOf_.count(object) == 0) parts_.push_back(object);
      rowsOf_[object].push_back(row);
      const std::string& material = geometry_.text(row, "material");
      if (materialNumbers_.count(material) == 0) {
        const auto number = static_cast<std::int32_t>(materialNumbers_.size());
        materialNumbers_[material] = number;
        materials_.push_back(material);
      }
    }
  }

  void check() {
    checkCounts();
    checkPrograms();
    checkMeshes();
    checkReferences();
    checkGroups();
    checkCameraValue();
    checkReflectances();
    checkLamp();
  }

  const std::string& report() const { return report_; }

 private:
  void note(const std::string& text) { report_ += "  " + text + "\n"; }

  void checkCounts() {
    const auto parts = static_cast<std::uint32_t>(parts_.size());
    const std::map<std::string, std::uint32_t> expected = {
        {"CameraProgram", 1},
        {"MaterialProgram", 2},
        {"LightProgram", 1},
        {"Mesh", parts},
        {"Texture", 0},
        {"MaterialGraph", 0},
        {"Keyframe", 0},
        {"KeyframeList", 0},
        {"Camera", 1},
        {"TransformationGroup", 4},
        {"LightGroup", 1},
        {"Light", 1},
        {"Material", static_cast<std::uint32_t>(materials_.size())},
        {"Decal", 0},
        {"DecalList", 0},
        {"Shape", parts},
        {"ImageTask", 1},
        {"BakeTask", 0}};
    if (vrdmObjectTypeCount() != expected.size()) fail("there are not 18 classes");
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      const std::string name = vrdmObjectName(objectClass);
      const std::uint32_t slots = vrdmContainerSize(scene_, objectClass);
      if (slots != expected.at(name)) {
        fail(name + ": " + std::to_string(slots) + " objects instead of " +
             std::to_string(expected.at(name)));
      }
      for (std::uint32_t index = 0; index < slots; ++index) {
        if (!vrdmValid(scene_, objectClass, static_cast<std::int32_t>(index))) {
          fail(name + " " + std::to_string(index) + " is a free slot");
        }
        ++objects_;
      }
    }
    note(std::to_string(objects_) + " objects, the counts of all 18 classes");
  }

  void checkPrograms() {
    checkProgram(VRDM_CLASS_CAMERA_PROGRAM, 0, "pinhole.camera");
    checkProgram(VRDM_CLASS_MATERIAL_PROGRAM, 0, "diffuse.material");
    checkProgram(VRDM_CLASS_MATERIAL_PROGRAM, 1, "glowing.material");
    checkProgram(VRDM_CLASS_LIGHT_PROGRAM, 0, "rectangle.light");
    note("4 programs, character by character");
  }

  void checkProgram(std::uint32_t objectClass, std::int32_t index, const std::string& file) {
    std::ifstream stream(programs_ + "/" + file, std::ios::binary);
    if (!stream) fail(programs_ + "/" + file + ": cannot open the file");
    const std::string source{std::istreambuf_iterator<char>(stream), {}};
    if (source != vrdmGetProgramSource(scene_, objectClass, index)) {
      fail(std::string(vrdmObjectName(objectClass)) + " " + std::to_string(index) +
           " is not the text of " + file);
    }
  }

  void checkMeshes() {
    std::size_t vertices = 0;
    for (std::size_t part = 0; part < parts_.size(); ++part) {
      vertices += checkMesh(static_cast<std::int32_t>(part), rowsOf_.at(parts_[part]));
    }
    note(std::to_string(parts_.size()) + " meshes: every index, and " + std::to_string(vertices) +
         " positions");
  }

  std::size_t checkMesh(std::int32_t index, const std::vector<std::size_t>& rows) {
    const std::string name = "Mesh " + std::to_string(index);
    const std::size_t vertices = rows.size();
    const std::size_t triangles = vertices / 4 * 2;
    std::uint32_t descriptor[4] = {};
    const AssetStorage* const storage =
        *vrdmGetAssetStorage(scene_, VRDM_CLASS_MESH, index, descriptor);
    if (descriptor[0] != triangles || descriptor[1] != vertices || descriptor[2] != 1 ||
        descriptor[3] != 0) {
      fail(name + ": the descriptor is not that of " + std::to_string(triangles) + " triangles");
    }
    if (storage->size != 4 * (3 * triangles + 9 * vertices + 2 * vertices)) {
      fail(name + ": " + std::to_string(storage->size) + " bytes don't fit its descriptor");
    }
    const auto* const words = static_cast<const unsigned char*>(storage->data);
    const auto number = [words](std::size_t word) {
      float value;
      std::memcpy(&value, words + 4 * word, sizeof value);
      return value;
    };
    for (std::size_t face = 0; face < vertices / 4; ++face) {
      const std::size_t corners[6] = {0, 1, 2, 0, 2, 3};
      for (std::size_t i = 0; i < 6; ++i) {
        std::uint32_t corner;
        std::memcpy(&corner, words + 4 * (6 * face + i), sizeof corner);
        if (corner != 4 * face + corners[i]) {
          fail(name + ": index " + std::to_string(6 * face + i) + " is " + std::to_string(corner));
        }
      }
    }
    const std::size_t first = 3 * triangles;
    const auto position = [&](std::size_t vertex) {
      const std::size_t word = first + 9 * vertex;
      return Vector{number(word), number(word + 1), number(word + 2)};
    };
    for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
      const char* const axes[3] = {"x", "y", "z"};
      for (std::size_t axis = 0; axis < 3; ++axis) {
        const float expected = single(metres(geometry_.text(rows[vertex], axes[axis])));
        const float found = number(first + 9 * vertex + axis);
        if (!(found == expected)) {
          fail(name + ": vertex " + std::to_string(vertex) + " has " + axes[axis] + " = " +
               show(found) + " instead of " + show(expected));
        }
      }
      checkFrame(name, vertex, position, number, first + 9 * vertex + 3);
      const std::size_t coordinates = first + 9 * vertices + 2 * vertex;
      const std::size_t corner = vertex % 4;
      if (!(number(coordinates) == (corner == 1 || corner == 2 ? 1.0F : 0.0F)) ||
          !(number(coordinates + 1) == (corner < 2 ? 0.0F : 1.0F))) {
        fail(name + ": vertex " + std::to_string(vertex) + " has wrong texture coordinates");
      }
    }
    return vertices;
  }

  // Checks the normal and the tangent of a vertex. Both have length 1 and are perpendicular. The
  // normal points to the front of the face; the tangent points from corner 0 to 1 or from 3 to 2.
  template <typename Position, typename Number>
  void checkFrame(const std::string& mesh, std::size_t vertex, const Position& position,
                  const Number& number, std::size_t word) {
    constexpr double kTolerance = 1e-6;  // for vectors of length 1 in single precision
    const std::size_t face = vertex / 4 * 4;
    const Vector here = position(vertex);
    const Vector next = position(face + (vertex + 1) % 4) - here;
    const Vector previous = position(face + (vertex + 3) % 4) - here;
    const Vector along = vertex % 4 < 2 ? position(face + 1) - position(face)
                                        : position(face + 2) - position(face + 3);
    const Vector normal{number(word), number(word + 1), number(word + 2)};
    const Vector tangent{number(word + 3), number(word + 4), number(word + 5)};
    const auto isZero = [](double distance) { return std::abs(distance) <= kTolerance; };
    if (!isZero(dot(normal, normal) - 1) || !isZero(dot(normal, next)) ||
        !isZero(dot(normal, previous)) || !(dot(normal, cross(next, previous)) > 0)) {
      fail(mesh + ": vertex " + std::to_string(vertex) + " has a wrong normal");
    }
    if (!isZero(dot(tangent, tangent) - 1) ||
        !isZero(dot(tangent, along) - std::sqrt(dot(along, along)))) {
      fail(mesh + ": vertex " + std::to_string(vertex) + " has a wrong tangent");
    }
  }

  // The expected words of each slot, by name: those of a list, or one word for a single slot.
  using Slots = std::map<std::string, std::vector<std::int32_t>>;

  void checkSlots(std::uint32_t objectClass, std::int32_t index, const Slots& expected) {
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(objectClass, slot);
      const bool isList =
          info.kind != VRDM_REFERENCE_REQUIRED && info.kind != VRDM_REFERENCE_OPTIONAL;
      std::vector<std::int32_t> found(1, vrdmGetReference(scene_, objectClass, index, slot));
      if (isList) {
        const std::int32_t* const words = vrdmGetReferenceList(scene_, objectClass, index, slot);
        found.assign(words, words + found[0]);
      }
      const auto entry = expected.find(info.name);
      const std::vector<std::int32_t> unset(isList ? 0U : 1U, -1);
      if (found != (entry == expected.end() ? unset : entry->second)) {
        fail(std::string(vrdmObjectName(objectClass)) + " " + std::to_string(index) +
             ": the slot '" + info.name + "' doesn't hold what was written");
      }
      ++slots_;
    }
  }

  // Returns the slot of the shape of a part.
  std::int32_t shapeNumber(const std::string& part) const {
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      if (parts_[i] == part) return static_cast<std::int32_t>(i);
    }
    fail("there is no '" + part + "' in the geometry");
  }

  static std::int32_t transformationGroup(const std::string& part) {
    if (part == "light") return 1;
    if (part == "short_block") return 2;
    return part == "tall_block" ? 3 : 0;
  }

  void checkReferences() {
    checkSlots(VRDM_CLASS_CAMERA, 0, {{"program", {0}}});
    checkSlots(VRDM_CLASS_IMAGE_TASK, 0, {{"camera", {0}}});
    checkSlots(VRDM_CLASS_LIGHT, 0, {{"program", {0}}, {"transformationGroup", {1}}});
    // Light 0 is coded as the complement of its index, the shape as its plain index.
    checkSlots(VRDM_CLASS_LIGHT_GROUP, 0, {{"emitters", {-1, shapeNumber("light")}}});
    for (std::size_t i = 0; i < materials_.size(); ++i) {
      checkSlots(VRDM_CLASS_MATERIAL, static_cast<std::int32_t>(i),
                 {{"program", {materials_[i] == "light" ? 1 : 0}}});
    }
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      const auto number = static_cast<std::int32_t>(i);
      const std::string& material = geometry_.text(rowsOf_.at(parts_[i])[0], "material");
      checkSlots(VRDM_CLASS_SHAPE, number,
                 {{"material", {materialNumbers_.at(material)}},
                  {"mesh", {number}},
                  {"lightGroup", {0}},
                  {"transformationGroup", {transformationGroup(parts_[i])}}});
    }
    note(std::to_string(slots_) + " reference slots");
  }

  // Returns the texts of the groups that the scene changes, keyed by class, index and group. All
  // other groups must have their defaults.
  std::map<std::string, std::string> changedGroups() const {
    std::map<std::string, std::string> texts;
    texts["SceneData 0 Raytracer"] =
        "{ ray_epsilon = 0.00001; bvh_mode = AUTOMATIC : " + typeOf("Raytracer", "bvh_mode") +
        "; }";
    // The camera looks along the box's z. So its own x, to its right, is the box's -x, and its z is
    // the box's -z.
    const std::string axes = cameraText("direction", "x") + cameraText("direction", "y") +
                             cameraText("direction", "z") + cameraText("up", "x") +
                             cameraText("up", "y") + cameraText("up", "z");
    if (axes != "001010") fail("the camera of the table doesn't look along z with y upwards");
    texts["Camera 0 Transformation"] =
        matrix("-1.0, 0.0, 0.0", "0.0, 1.0, 0.0", "0.0, 0.0, -1.0",
               metres(cameraText("position", "x")) + ", " + metres(cameraText("position", "y")) +
                   ", " + metres(cameraText("position", "z")));
    texts["Camera 0 General"] =
        "{ near_distance = 0.5; shutter_open = 0.0; shutter_close = 0.0; time_start = 0.0;"
        " time_end = 1.0; }";
    texts["Camera 0 Background"] = "{ active = true; red = 0.0; green = 0.0; blue = 0.0; }";
    texts["TransformationGroup 1 Transformation"] =
        matrix("1.0, 0.0, 0.0", "0.0, 1.0, 0.0", "0.0, 0.0, 1.0", "0.0, -0.0005, 0.0");
    texts["Light 0 Transformation"] = lampMatrix();
    texts["Light 0 Target"] = target("lamp");
    texts["Light 0 Visibility"] =
        "{ visible_to = { camera = false; reflection = TRUE : " + kSeen +
        "; refraction = TRUE : " + kSeen + "; transmission = TRUE : " + kSeen +
        "; diffuse_glossy = true; indirect_illumination = true; direct_light = true; };"
        " cast = { shadow = true; caustics = true; }; }";
    for (std::size_t i = 0; i < parts_.size(); ++i) {
      texts["Shape " + std::to_string(i) + " Target"] = target(parts_[i]);
    }
    const std::string lamp = "Shape " + std::to_string(shapeNumber("light"));
    texts[lamp + " Sampling probability"] = "{ multiplier = 0.0; }";
    texts[lamp + " Visibility"] =
        "{ visible_to = { camera = true; reflection = TRUE : " + kSeen +
        "; refraction = TRUE : " + kSeen + "; transmission = TRUE : " + kSeen +
        "; indirect_illumination = false; photons = true; direct_light = true;"
        " light_tracing = true; };"
        " cast = { direct_shadow = true; indirect_illumination = false; caustics = true; };"
        " receive = { shadow = true; indirect_illumination = true; caustics = true; }; }";
    texts["ImageTask 0 Wavefront"] =
        "{ max_bounces = 16; sample_IBL = true; light_tracing = false;"
        " lighttracing_visualisation = ALL : enum { ALL; PATHTRACING; LIGHTTRACING; PHOTONMAPPING;"
        " PATHTRACING_MIS; LIGHTTRACING_MIS; PHOTONMAPPING_MIS; PT_MIS_PASS; LTPM_PASS; };"
        " sss_next_ee = true; photon_mapping = false; photon_radius = 0.01;"
        " refraction_in_alpha = false; glossy_photon_mapping = true; gloss_pdf = 1.0;"
        " rounded_edges = true; focused_light_particles = false; spectral_wavelength = 1.0;"
        " refraction_override = false; }";
    return texts;
  }

  static std::string matrix(const std::string& x, const std::string& y, const std::string& z,
                            const std::string& w) {
    return "{ matrix = { x = float4(" + x + ", 0.0); y = float4(" + y + ", 0.0); z = float4(" + z +
           ", 0.0); w = float4(" + w + ", 1.0); }; }";
  }

  static std::string target(const std::string& tag) {
    std::string text = "{ tag = [ ";
    for (std::size_t i = 0; i < 64; ++i) {
      const int byte = i < tag.size() ? static_cast<unsigned char>(tag[i]) : 0;
      text += (i == 0 ? "" : ", ") + std::to_string(byte) + "c";
    }
    return text + " ]; custom_data = 0; visible_in_mask = true; }";
  }

  // The lamp is a rectangle parallel to the axes. Its sides go from corner 0 to 1 and from corner 1
  // to 2, its centre is half way between corners 0 and 2, and it faces down.
  std::string lampMatrix() const {
    const std::vector<std::size_t>& rows = rowsOf_.at("light");
    const auto millimetres = [&](std::size_t corner, const char* axis) {
      return std::strtod(geometry_.text(rows[corner], axis).c_str(), nullptr);
    };
    std::string sides[2];
    std::string middle;
    for (const char* const axis : {"x", "y", "z"}) {
      const std::string comma = middle.empty() ? "" : ", ";
      for (std::size_t side = 0; side < 2; ++side) {
        sides[side] += comma + show(millimetres(side + 1, axis) - millimetres(side, axis)) + "e-3";
      }
      middle += comma + show((millimetres(0, axis) + millimetres(2, axis)) / 2) + "e-3";
    }
    return matrix(sides[0], sides[1], "0.0, -1.0, 0.0", middle);
  }

  const std::string& cameraText(const std::string& quantity, const char* column) const {
    for (std::size_t row = 0; row < camera_.rows(); ++row) {
      if (camera_.text(row, "quantity") == quantity) return camera_.text(row, column);
    }
    fail("there is no '" + quantity + "' among the camera's figures");
  }

  // Returns the text of the unannotated type of a field of a scene-wide group.
  static std::string typeOf(const std::string& group, const std::string& field) {
    for (std::uint32_t i = 0; i < vrdmFieldCount(VRDM_CLASS_SCENE_DATA); ++i) {
      if (group != vrdmFieldName(VRDM_CLASS_SCENE_DATA, i)) continue;
      const TypeHandle annotated = TypeHandle::adopt(vrdmFieldType(VRDM_CLASS_SCENE_DATA, i));
      const TypeHandle type = TypeHandle::adopt(vrntTypeStripMetadata(annotated.get()));
      for (std::uint32_t j = 0; j < vrntTypeFieldCount(type.get()); ++j) {
        if (field != vrntTypeFieldLabel(type.get(), j)) continue;
        const TypeHandle fieldType = TypeHandle::adopt(vrntTypeFieldType(type.get(), j));
        return vrntTypeString(fieldType.get());
      }
    }
    fail("there is no field '" + field + "' in '" + group + "'");
  }

  void checkGroups() {
    std::map<std::string, std::string> changed = changedGroups();
    const std::size_t changes = changed.size();
    std::size_t groups = 0;
    std::uint64_t bytes = 0;
    const auto checkAll = [&](std::uint32_t objectClass, const std::string& object,
                              std::int32_t index) {
      for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
        const std::string name = object + " " + vrdmFieldName(objectClass, group);
        const TypeHandle type = TypeHandle::adopt(vrdmFieldType(objectClass, group));
        const auto text = changed.find(name);
        const Value expected =
            text == changed.end() ? untouched(name, type.get()) : parseValue(text->second);
        if (text != changed.end()) changed.erase(text);
        const Value found = Value::adopt(objectClass == VRDM_CLASS_SCENE_DATA
                                             ? vrdmGetSceneDataValue(scene_, group)
                                             : vrdmGetDataValue(scene_, objectClass, index, group));
        checkEqual(name, found, expected);
        ++groups;
        bytes += vrntTypeSize(type.get());
      }
    };
    checkAll(VRDM_CLASS_SCENE_DATA, "SceneData 0", 0);
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      for (std::uint32_t index = 0; index < vrdmContainerSize(scene_, objectClass); ++index) {
        checkAll(objectClass, vrdmObjectName(objectClass) + (" " + std::to_string(index)),
                 static_cast<std::int32_t>(index));
      }
    }
    if (!changed.empty()) fail("there is no group '" + changed.begin()->first + "'");
    note(std::to_string(groups) + " groups, " + std::to_string(bytes) + " bytes, " +
         std::to_string(changes) + " of them other than the defaults");
  }

  // Returns the defaults of a new object. They are those of the group's type, except for three
  // texture indices: a new object refers to no texture, so these are -1.
  static Value untouched(const std::string& name, const vrntType_t* type) {
    Value value = Value::create(type, true).value();
    const auto endsWith = [&name](const std::string& end) {
      return name.size() > end.size() && name.substr(name.size() - end.size()) == end;
    };
    std::vector<const char*> paths;
    if (endsWith(" Backplate")) paths = {"image.spectrum_texture.index"};
    if (endsWith(" Hemilux")) paths = {"texture.index", "tone_mapping_texture.index"};
    for (const char* const path : paths) {
      vrnt::host::Field<std::int32_t>(value.type(), path).set(value, -1);
    }
    return value;
  }

  static Value parseValue(const std::string& text) { return Value::parse(text.c_str()).value(); }

  // Compares two values and reports the library's reason, then compares all bytes.
  static void checkEqual(const std::string& name, const Value& found, const Value& expected) {
    std::string reason = "no reason given";
    if (!found.equal(expected, 0.0F, &reason)) fail(name + " differs: " + reason);
    if (std::memcmp(found.data(), expected.data(), vrntTypeSize(found.type())) != 0) {
      fail(name + " has equal fields, but other bytes");
    }
  }

  // Finds a field by its label. A value knows its own type.
  static vrntValueView_t fieldOf(const vrntValue_t* value, const vrntValueView_t& view,
                                 const std::string& label) {
    for (std::uint32_t field = 0; field < vrntTypeFieldCount(view.type); ++field) {
      if (label != vrntTypeFieldLabel(view.type, field)) continue;
      vrntValueView_t child;
      vrntValueStructField(&child, view.type, field);
      return {child.type, view.offset + child.offset};
    }
    fail("there is no field '" + label + "' in " + vrntTypeString(vrntValueType(value)));
  }

  struct Spectrum {
    std::string encoding;
    std::vector<float> numbers;
  };

  Spectrum readSpectrum(std::uint32_t objectClass, std::int32_t index, const char* label) const {
    const Value value = Value::adopt(vrdmGetInstanceValue(scene_, objectClass, index));
    const vrntValueView_t whole{vrntValueType(value.get()), 0};
    const vrntValueView_t record = fieldOf(value.get(), whole, label);
    const vrntValueView_t encoding = fieldOf(value.get(), record, "encoding");
    const vrntValueView_t reference = fieldOf(value.get(), record, "spectrum");
    std::uint32_t code = 0;
    std::memcpy(&code, static_cast<const char*>(vrntValueData(value.get())) + encoding.offset,
                sizeof code);
    if (code >= vrntTypeConstructorCount(encoding.type)) fail("a spectrum has a wrong encoding");
    const Value array = Value::adopt(vrntValueDereference(value.get(), &reference));
    if (!array) fail("a spectrum has no numbers");
    Spectrum spectrum{vrntTypeConstructorName(encoding.type, code), {}};
    spectrum.numbers.resize(vrntTypeSize(vrntValueType(array.get())) / sizeof(float));
    const TypeHandle expected = TypeHandle::adopt(vrtnTypeFloatArray(spectrum.numbers.size()));
    if (vrntValueType(array.get()) != expected.get()) fail("a spectrum is no array of floats");
    std::memcpy(spectrum.numbers.data(), vrntValueData(array.get()),
                spectrum.numbers.size() * sizeof(float));
    return spectrum;
  }

  void checkCameraValue() {
    const Value value = Value::adopt(vrdmGetInstanceValue(scene_, VRDM_CLASS_CAMERA, 0));
    const std::string text = "{ focal_length = " + cameraText("focal_length", "x") +
                             "; film_size = float2(" + cameraText("film_width", "x") + ", " +
                             cameraText("film_height", "x") + "); }";
    checkEqual("the value of Camera 0", value, parseValue(text));
    note("the camera's lens and film");
  }

  // Checks the first and the last pair of a step function, and that its wavelengths increase.
  static void checkSteps(const std::string& name, const Spectrum& spectrum, float end) {
    const std::vector<float>& numbers = spectrum.numbers;
    if (spectrum.encoding != "SPECTRAL") fail(name + " is not spectral");
    if (numbers.size() < 8 || numbers.size() % 2 != 0) fail(name + " is no list of pairs");
    if (numbers[0] != 0.0F || numbers[1] != 0.0F) fail(name + " doesn't begin with (0, 0)");
    if (numbers.back() != 0.0F || numbers[numbers.size() - 2] != end) {
      fail(name + " doesn't end with (" + show(end) + ", 0)");
    }
    for (std::size_t i = 2; i < numbers.size(); i += 2) {
      if (!(numbers[i] > numbers[i - 2])) fail(name + ": the wavelengths don't rise");
    }
  }

  void checkReflectances() {
    std::size_t figures = 0;
    const std::size_t rows = reflectance_.rows();
    for (const std::string& material : materials_) {
      if (material == "light") continue;
      if (!reflectance_.hasColumn(material)) fail("there is no reflectance of '" + material + "'");
      const std::string name = "the reflectance of " + material;
      const Spectrum found =
          readSpectrum(VRDM_CLASS_MATERIAL, materialNumbers_.at(material), "reflectance");
      const float last = single(reflectance_.text(rows - 1, "wavelength"));
      const float before = single(reflectance_.text(rows - 2, "wavelength"));
      checkSteps(name, found, last + (last - before));
      if (found.numbers.size() != 2 * (rows + 2)) {
        fail(name + " has not " + std::to_string(rows) + " rows");
      }
      for (std::size_t row = 0; row < rows; ++row) {
        const float wavelength = single(reflectance_.text(row, "wavelength"));
        const float reflectance = single(reflectance_.text(row, material));
        const float* const pair = &found.numbers[2 * (row + 1)];
        if (!(pair[0] == wavelength && pair[1] == reflectance)) {
          fail(name + ": (" + show(pair[0]) + " nm, " + show(pair[1]) + ") instead of (" +
               show(wavelength) + " nm, " + show(reflectance) + ")");
        }
        ++figures;
      }
    }
    const Spectrum lamp =
        readSpectrum(VRDM_CLASS_MATERIAL, materialNumbers_.at("light"), "reflectance");
    if (lamp.encoding != "LUMINANCE" || lamp.numbers != std::vector<float>{0.78F}) {
      fail("the reflectance of light is not 0.78");
    }
    note(std::to_string(figures) + " reflectances, bit by bit");
  }

  void checkLamp() {
    std::size_t steps = checkEmission("the emission of Light 0", VRDM_CLASS_LIGHT, 0);
    steps += checkEmission("the emission of the lamp's material", VRDM_CLASS_MATERIAL,
                           materialNumbers_.at("light"));
    note(std::to_string(steps) + " steps of the lamp's emission");
  }

  // Checks the emission. The line between two rows of the table is cut into equal steps of at most
  // 5 nm, and each step has the height of the line at the step's middle.
  std::size_t checkEmission(const std::string& name, std::uint32_t objectClass,
                            std::int32_t index) {
    const Spectrum found = readSpectrum(objectClass, index, "emission");
    checkSteps(name, found, single(light_.text(light_.rows() - 1, "wavelength")));
    const std::vector<float>& numbers = found.numbers;
    std::size_t at = 2;
    for (std::size_t row = 0; row + 1 < light_.rows(); ++row) {
      const double begin = light_.number(row, "wavelength");
      const double end = light_.number(row + 1, "wavelength");
      const double low = light_.number(row, "emission");
      const double high = light_.number(row + 1, "emission");
      const int steps = static_cast<int>(std::ceil((end - begin) / 5.0));
      const double width = (end - begin) / steps;
      for (int step = 0; step < steps; ++step, at += 2) {
        if (at + 2 >= numbers.size()) fail(name + " ends at " + show(numbers[at - 2]) + " nm");
        const auto left = static_cast<float>(begin + step * width);
        const double middle = begin + step * width + width / 2;
        const double line = (low * (end - middle) + high * (middle - begin)) / (end - begin);
        if (!(numbers[at] == left && numbers[at + 1] == static_cast<float>(line))) {
          fail(name + ": (" + show(numbers[at]) + " nm, " + show(numbers[at + 1]) +
               ") instead of (" + show(left) + " nm, " + show(static_cast<float>(line)) + ")");
        }
      }
    }
    if (at + 2 != numbers.size()) fail(name + " goes on past the table");
    return numbers.size() / 2 - 2;
  }

  inline static const std::string kSeen = "enum { FALSE; TRUE; ALL; }";

  const vrdmScene_t* const scene_;
  const std::string programs_;
  const Csv geometry_, reflectance_, light_, camera_;
  std::vector<std::string> parts_, materials_;  // in the order of the table
  std::map<std::string, std::vector<std::size_t>> rowsOf_;
  std::map<std::string, std::int32_t> materialNumbers_;
  std::size_t objects_ = 0, slots_ = 0;
  std::string report_;
};

constexpr char kUsage[] =
    "usage: check_scene [--data FOLDER] [--programs FOLDER] [FILE]\n"
    "\n"
    "Compares a scene file with the tables of measurements. The default file is\n"
    "cornell_box.vrnscene. Prints the first difference and exits with status 1 if there is one.\n";

int run(const std::vector<std::string>& arguments) {
  std::string data = CORNELL_BOX_FOLDER "/data";
  std::string programs = CORNELL_BOX_FOLDER "/programs";
  std::string file;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (arguments[i] == "--data" && i + 1 < arguments.size()) {
      data = arguments[++i];
    } else if (arguments[i] == "--programs" && i + 1 < arguments.size()) {
      programs = arguments[++i];
    } else if (arguments[i].rfind("--", 0) == 0 || !file.empty()) {
      std::fputs(kUsage, stderr);
      return 2;
    } else {
      file = arguments[i];
    }
  }
  if (file.empty()) file = "cornell_box.vrnscene";
  const Scene scene = Scene::read(file);
  Checker checker(scene.get(), data, programs);
  checker.check();
  std::printf("%s holds what was measured:\n%s", file.c_str(), checker.report().c_str());
  return 0;
}

}  // namespace
}  // namespace cornell_box

int main(int count, char** arguments) {
  return cornell_box::runHost("check_scene", count, arguments, cornell_box::run);
}
