#include "scene_reading/scene_reader.hpp"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include "scene_reading/parameter_reader.hpp"
#include "scene_reading/value_reader.hpp"
#include "shading/texture.hpp"
#include "vornath_data/handles.hpp"

namespace vrn_render {
namespace {

// The reflectance of what the renderer cannot understand.
constexpr float kNeutral = 0.5F;
// An index of refraction so high that nothing goes through.
constexpr float kReflectsAll = 1e5F;
// What stands for a texture that is not there.
constexpr char kGreyInstead[] = "neutral grey stands for it";
constexpr char kValueInstead[] = "the value without it is used";

// A group of an object with the reader of its fields.
class Group {
 public:
  Group(const vrdmScene_t* scene, std::uint32_t objectClass, int index, std::string_view name)
      : value_(load(scene, objectClass, index, name)) {}

  ValueReader fields() const { return ValueReader(value_.get()); }

 private:
  static vrntValue_t* load(const vrdmScene_t* scene, std::uint32_t objectClass, int index,
                           std::string_view name) {
    const std::uint32_t count = vrdmFieldCount(objectClass);
    for (std::uint32_t group = 0; group < count; ++group) {
      if (name != vrdmFieldName(objectClass, group)) continue;
      return objectClass == VRDM_CLASS_SCENE_DATA
                 ? vrdmGetSceneDataValue(scene, group)
                 : vrdmGetDataValue(scene, objectClass, index, group);
    }
    throw std::logic_error("there is no group " + std::string(name));
  }

  vrnt::UniqueValue value_;
};

// The first word of a program's text that is neither a comment nor the kind of program: its name.
std::string programName(std::string_view source, std::string_view kind) {
  std::size_t at = 0;
  while (at < source.size()) {
    if (source.substr(at, 2) == "//") {
      at = std::min(source.size(), source.find('\n', at));
    } else if (source.substr(at, 2) == "/*") {
      const std::size_t end = source.find("*/", at + 2);
      at = end == std::string_view::npos ? source.size() : end + 2;
    } else if (std::isalpha(static_cast<unsigned char>(source[at])) || source[at] == '_') {
      const std::size_t begin = at;
      while (at < source.size() &&
             (std::isalnum(static_cast<unsigned char>(source[at])) || source[at] == '_')) {
        ++at;
      }
      const std::string_view word = source.substr(begin, at - begin);
      if (word != kind) return std::string(word);
    } else {
      ++at;
    }
  }
  return {};
}

class Reader {
 public:
  Reader(const vrdmScene_t* scene, Notices& notices) : scene_(scene), notices_(notices) {}

  SceneDescription read(std::optional<int> task) {
    readTextures();
    readMaterials();
    chooseCoordinates();
    readMeshes();
    readLightGroups();
    readDecals();
    readShapes();
    readLights();
    readScene();
    readTask(task);
    tellUnused();
    return std::move(out_);
  }

 private:
  int count(std::uint32_t objectClass) const {
    return static_cast<int>(vrdmContainerSize(scene_, objectClass));
  }
  bool valid(std::uint32_t objectClass, int index) const {
    return vrdmValid(scene_, objectClass, index);
  }
  std::uint32_t slot(std::uint32_t objectClass, std::string_view name) const {
    for (std::uint32_t at = 0; at < vrdmReferenceCount(objectClass); ++at) {
      if (name == vrdmReferenceType(objectClass, at).name) return at;
    }
    throw std::logic_error("there is no slot " + std::string(name));
  }
  // Returns the index in a reference slot, or -1 if it leads to no live object.
  int reference(std::uint32_t objectClass, int index, std::string_view name) const {
    const std::uint32_t at = slot(objectClass, name);
    const int target = vrdmGetReference(scene_, objectClass, index, at);
    return valid(vrdmReferenceType(objectClass, at).targetClass, target) ? target : -1;
  }
  std::vector<std::int32_t> list(std::uint32_t objectClass, int index,
                                 std::string_view name) const {
    const std::uint32_t at = slot(objectClass, name);
    const int size = vrdmGetReferenceCount(scene_, objectClass, index, at);
    const std::int32_t* const words = vrdmGetReferenceList(scene_, objectClass, index, at);
    if (words == nullptr || size <= 0) return {};
    return {words, words + size};
  }
  Group group(std::uint32_t objectClass, int index, std::string_view name) const {
    return {scene_, objectClass, index, name};
  }
  std::string programOf(std::uint32_t objectClass, int index, std::uint32_t programClass,
                        std::string_view kind) const {
    const int program = reference(objectClass, index, "program");
    if (program < 0) return {};
    const char* const source = vrdmGetProgramSource(scene_, programClass, program);
    return source ? programName(source, kind) : std::string();
  }
  static std::string called(std::uint32_t objectClass, int index) {
    return std::string(vrdmObjectName(objectClass)) + " " + std::to_string(index);
  }

  // Assets

  template <typename Desc>
  const AssetStorage* asset(std::uint32_t objectClass, int index, Desc& desc) const {
    AssetStorage** const handle = vrdmGetAssetStorage(scene_, objectClass, index, &desc);
    return handle != nullptr ? *handle : nullptr;
  }

  void readTextures() {
    out_.textures.resize(static_cast<std::size_t>(count(VRDM_CLASS_TEXTURE)));
    for (int i = 0; i < count(VRDM_CLASS_TEXTURE); ++i) {
      if (!valid(VRDM_CLASS_TEXTURE, i)) continue;
      vrdmTextureDesc desc{};
      const AssetStorage* const storage = asset(VRDM_CLASS_TEXTURE, i, desc);
      TextureDescription& texture = out_.textures[static_cast<std::size_t>(i)];
      if (storage == nullptr || storage->data == nullptr) continue;
      texture.width = desc.width;
      texture.height = desc.height;
      texture.depth = std::max(desc.depth, 1);
      texture.format = desc.format;
      texture.layout = desc.layout;
      texture.bytes = static_cast<const unsigned char*>(storage->data);
      const std::string problem = textureProblem(texture, storage->size);
      if (!problem.empty()) {
        notices_.add(called(VRDM_CLASS_TEXTURE, i) + " is not read: " + problem +
                     "; neutral grey stands for it");
        texture.bytes = nullptr;
      }
    }
  }

  void readMeshes() {
    out_.meshes.resize(static_cast<std::size_t>(count(VRDM_CLASS_MESH)));
    for (int i = 0; i < count(VRDM_CLASS_MESH); ++i) {
      if (!valid(VRDM_CLASS_MESH, i)) continue;
      readMesh(i, out_.meshes[static_cast<std::size_t>(i)]);
    }
  }

  // In sequence: the indices, a word per triangle for each flag, 9 floats for each vertex, and the
  // texture coordinates.
  void readMesh(int index, MeshDescription& mesh) {
    vrdmMeshDesc desc{};
    const AssetStorage* const storage = asset(VRDM_CLASS_MESH, index, desc);
    if (storage == nullptr || storage->data == nullptr) return;
    if (desc.triangles <= 0 || desc.vertices <= 0) return;
    const auto triangles = static_cast<std::uint64_t>(desc.triangles);
    const auto vertices = static_cast<std::uint64_t>(desc.vertices);
    const auto sets = static_cast<std::uint64_t>(std::max(desc.texcoordSets, 1));
    const std::uint64_t extra = (desc.flags & 1U) + ((desc.flags >> 1) & 1U);
    const std::uint64_t words = (3 + extra) * triangles + (9 + 2 * sets) * vertices;
    if (desc.texcoordSets < 0 || storage->size / 4 < words) {
      notices_.add(called(VRDM_CLASS_MESH, index) + " has fewer bytes than its record says; " +
                   "it is left out");
      return;
    }
    if (reinterpret_cast<std::uintptr_t>(storage->data) % 4 != 0) {
      notices_.add(called(VRDM_CLASS_MESH, index) + " is not aligned to words; it is left out");
      return;
    }
    const auto* const first = static_cast<const std::uint32_t*>(storage->data);
    mesh.indices = first;
    mesh.vertices = reinterpret_cast<const float*>(first + (3 + extra) * triangles);
    mesh.coordinates = mesh.vertices + 9 * vertices;
    mesh.triangles = static_cast<std::uint32_t>(triangles);
    mesh.vertexCount = static_cast<std::uint32_t>(vertices);
    mesh.sets = static_cast<std::uint32_t>(sets);
    const auto isInside = [vertices](std::uint32_t corner) { return corner < vertices; };
    if (std::all_of(first, first + 3 * triangles, isInside)) return;
    notices_.add(called(VRDM_CLASS_MESH, index) +
                 " has triangles with vertices that it does not have; they are left out");
    mesh.ownIndices = std::make_shared<std::vector<std::uint32_t>>();
    for (std::uint64_t at = 0; at < 3 * triangles; at += 3) {
      if (!std::all_of(first + at, first + at + 3, isInside)) continue;
      mesh.ownIndices->insert(mesh.ownIndices->end(), first + at, first + at + 3);
    }
    mesh.indices = mesh.ownIndices->data();
    mesh.triangles = static_cast<std::uint32_t>(mesh.ownIndices->size() / 3);
  }

  // Parameters

  // Takes away a texture that is not there. Returns whether it did.
  bool checkLookup(TextureLookup& lookup, const std::string& owner, const char* instead) {
    if (lookup.texture < 0) return false;
    if (valid(VRDM_CLASS_TEXTURE, lookup.texture)) return false;
    notices_.add(owner + " names texture " + std::to_string(lookup.texture) +
                 ", which is not there; " + instead);
    lookup.texture = -1;
    return true;
  }
  // A parameter with a texture has no colour of its own.
  void checkColour(ColourParameter& parameter, const std::string& owner) {
    if (checkLookup(parameter.lookup, owner, kGreyInstead)) parameter.value *= kNeutral;
  }

  // Material 0 is the neutral one.
  void readMaterials() {
    out_.materials.resize(static_cast<std::size_t>(count(VRDM_CLASS_MATERIAL)) + 1);
    for (MaterialDescription& material : out_.materials) {
      material.reflectance.value = Spectrum(kNeutral);
      material.roughness.value = 0;
      material.opacity.value = 1;
      material.indices = Spectrum(material.indexOfRefraction);
    }
    for (int i = 0; i < count(VRDM_CLASS_MATERIAL); ++i) {
      if (!valid(VRDM_CLASS_MATERIAL, i)) continue;
      const std::string name = called(VRDM_CLASS_MATERIAL, i);
      const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, VRDM_CLASS_MATERIAL, i));
      MaterialDescription& material = out_.materials[static_cast<std::size_t>(i) + 1];
      if (!value) {
        notices_.add(name + " has no value; it is neutral grey");
        continue;
      }
      if (!readMaterial(ValueReader(value.get()), name, material)) {
        notices_.add(name + " has no field that the renderer understands; it is neutral grey");
        material = out_.materials[0];
      }
    }
  }

  bool readMaterial(const ValueReader& value, const std::string& name,
                    MaterialDescription& material) {
    const std::initializer_list<std::string_view> colourLabels = {
        "reflectance",   "base_color", "base_colour", "diffuse",
        "diffuse_color", "albedo",     "color",       "colour"};
    const std::initializer_list<std::string_view> colourMapLabels = {"map",
                                                                     "reflectance_map",
                                                                     "reflectance_texture",
                                                                     "base_color_texture",
                                                                     "base_color_map",
                                                                     "diffuse_texture",
                                                                     "diffuse_map"};
    const std::initializer_list<std::string_view> emissionLabels = {
        "emission", "emissive", "emission_color", "emissive_color"};
    std::uint32_t used = 0;
    const auto colour = [&](std::initializer_list<std::string_view> labels, ColourUse use,
                            ColourParameter& out) {
      const std::optional<ValueReader> at = value.findAny(labels);
      if (!at) return false;
      const std::optional<ColourParameter> found = readColour(*at, use);
      if (!found) return false;
      out = *found;
      checkColour(out, name);
      ++used;
      return true;
    };
    const auto number = [&](std::initializer_list<std::string_view> labels, NumberParameter& out) {
      const std::optional<ValueReader> at = value.findAny(labels);
      const std::optional<NumberParameter> found = at ? readNumber(*at) : std::nullopt;
      if (!found) return false;
      out = *found;
      checkLookup(out.lookup, name, kValueInstead);
      ++used;
      return true;
    };
    const auto map = [&](std::initializer_list<std::string_view> labels, TextureLookup& out,
                         const char* instead = kValueInstead) {
      const std::optional<ValueReader> at = value.findAny(labels);
      std::optional<TextureLookup> found = at ? readLookup(*at) : std::nullopt;
      if (!found) return false;
      checkLookup(*found, name, instead);
      out = *found;
      ++used;
      return true;
    };
    const auto channel = [&](std::string_view label, NumberParameter& out) {
      const std::optional<ValueReader> at = value.findAny({label});
      const auto found = at ? at->integer() : std::nullopt;
      if (found && *found >= 0 && *found < 4) out.channel = *found;
    };

    const bool hasTransmission = number({"transmission", "transmittance"}, material.transmission);
    if (hasTransmission) material.reflectance.value = Spectrum(1.0F);
    const bool hasColour = colour(colourLabels, ColourUse::Reflectance, material.reflectance);
    const bool hasMap = map(colourMapLabels, material.reflectance.lookup,
                            hasColour ? "the colour without it is used" : kGreyInstead);
    // A texture alone is the colour.
    if (hasMap && !hasColour) {
      material.reflectance.value =
          Spectrum(material.reflectance.lookup.texture >= 0 ? 1.0F : kNeutral);
    }
    material.hasCoat = number({"roughness"}, material.roughness);
    map({"roughness_texture", "roughness_map"}, material.roughness.lookup);
    channel("roughness_channel", material.roughness);
    number({"metallic", "metalness"}, material.metallic);
    map({"metallic_texture", "metallic_map"}, material.metallic.lookup);
    channel("metallic_channel", material.metallic);
    number({"opacity", "alpha"}, material.opacity);
    map({"opacity_texture", "opacity_map", "alpha_texture"}, material.opacity.lookup);
    channel("opacity_channel", material.opacity);
    if (const auto cutoff = value.findAny({"opacity_cutoff", "alpha_cutoff"}); cutoff) {
      material.opacityCutoff = cutoff->number().value_or(-1);
    }
    if (const auto at = value.findAny({"index_of_refraction", "refractive_index", "ior"}); at) {
      if (const std::optional<Spectrum> indices = readSpectrum(*at, ColourUse::Factor); indices) {
        ++used;
        material.hasCoat = true;
        material.indices = *indices;
        material.indices.clamp(1.0001F, 10);
        // By convention no index stands for a boundary that reflects all light.
        for (int band = 0; band < kBands; ++band) {
          if ((*indices)[band] <= 0) material.indices[band] = kReflectsAll;
        }
        material.indexOfRefraction = material.indices.mean();
        for (int band = 0; band < kBands; ++band) {
          material.isDispersive |= std::abs(material.indices[band] - material.indices[0]) > 1e-5F;
        }
      }
    }
    if (const auto at = value.findAny({"normal", "normal_map", "normal_texture"}); at) {
      const bool isEnabled = at->booleanAt("enabled", true);
      if (isEnabled && map({"normal", "normal_map", "normal_texture"}, material.normalMap)) {
        const auto lanes = [&at](std::string_view longLabel, std::string_view label, Vec3& out) {
          const auto field = at->findAny({longLabel, label});
          const auto found = field ? field->lanes() : std::nullopt;
          if (found) out = {(*found)[0], (*found)[1], (*found)[2]};
        };
        lanes("normalScale", "scale", material.normalScale);
        lanes("normalOffset", "offset", material.normalOffset);
      }
    }
    if (const auto at = value.findAny({"normal_scale"}); at) {
      if (const auto scale = at->number(); scale) {
        material.normalScale.x *= *scale;
        material.normalScale.y *= *scale;
      }
    }
    material.emission.value = Spectrum();
    bool hasEmission = false;
    const auto emissionField = value.findAny(emissionLabels);
    if (emissionField) {
      if (const std::optional<EmissionParameter> emission = readEmission(*emissionField);
          emission) {
        ++used;
        hasEmission = true;
        material.emission = emission->colour;
        checkColour(material.emission, name);
      }
    }
    TextureLookup& emissionMap = material.emission.lookup;
    if (map({"emission_texture", "emission_map", "emissive_texture"}, emissionMap,
            emissionField ? kValueInstead : kGreyInstead)) {
      hasEmission = true;
      if (!emissionField) {
        material.emission.value = Colours::get().daylight();
        if (emissionMap.texture < 0) material.emission.value *= kNeutral;
      }
    }
    // What only shines reflects nothing.
    if (hasEmission && !hasTransmission && !value.findAny(colourLabels) &&
        !value.findAny(colourMapLabels) &&
        !value.findAny({"roughness", "roughness_texture", "roughness_map", "metallic", "metalness",
                        "metallic_texture", "metallic_map"})) {
      material.reflectance.value = Spectrum();
    }
    if (const auto at = value.findAny({"emission_strength", "emissive_strength"}); at) {
      const float strength = at->number().value_or(1);
      material.emission.value *= std::isfinite(strength) ? std::max(strength, 0.0F) : 0.0F;
    }
    material.emits = !material.emission.value.isZero();
    if (const auto at = value.findAny({"double_sided", "two_sided"}); at) {
      material.emitsOnBothSides = at->boolean().value_or(false);
    }
    tellUnknown(value);
    return used != 0;
  }

  // A point of a surface has room for some sets of coordinates: those that materials use.
  void chooseCoordinates() {
    std::vector<int>& sets = out_.coordinateSets;
    for (MaterialDescription& material : out_.materials) {
      for (TextureLookup* const lookup :
           {&material.reflectance.lookup, &material.emission.lookup, &material.roughness.lookup,
            &material.metallic.lookup, &material.transmission.lookup, &material.opacity.lookup,
            &material.normalMap}) {
        if (lookup->texture < 0) continue;
        auto found = std::find(sets.begin(), sets.end(), lookup->set);
        if (found == sets.end() && sets.size() == TextureCoordinates::kMostSets) {
          notices_.add("the materials use more than " +
                       std::to_string(TextureCoordinates::kMostSets) +
                       " sets of texture coordinates; set " + std::to_string(sets.front()) +
                       " stands for set " + std::to_string(lookup->set));
          found = sets.begin();
        } else if (found == sets.end()) {
          found = sets.insert(sets.end(), lookup->set);
        }
        lookup->set = static_cast<int>(found - sets.begin());
      }
    }
  }

  void tellUnknown(const ValueReader& value) {
    static constexpr std::string_view kKnown[] = {"reflectance",
                                                  "base_color",
                                                  "base_colour",
                                                  "diffuse",
                                                  "diffuse_color",
                                                  "albedo",
                                                  "color",
                                                  "colour",
                                                  "map",
                                                  "reflectance_map",
                                                  "reflectance_texture",
                                                  "base_color_texture",
                                                  "base_color_map",
                                                  "diffuse_texture",
                                                  "diffuse_map",
                                                  "roughness",
                                                  "roughness_texture",
                                                  "roughness_map",
                                                  "roughness_channel",
                                                  "metallic",
                                                  "metalness",
                                                  "metallic_texture",
                                                  "metallic_map",
                                                  "metallic_channel",
                                                  "transmission",
                                                  "transmittance",
                                                  "opacity",
                                                  "alpha",
                                                  "opacity_texture",
                                                  "opacity_map",
                                                  "alpha_texture",
                                                  "opacity_channel",
                                                  "opacity_cutoff",
                                                  "alpha_cutoff",
                                                  "index_of_refraction",
                                                  "refractive_index",
                                                  "ior",
                                                  "normal",
                                                  "normal_map",
                                                  "normal_texture",
                                                  "normal_scale",
                                                  "emission",
                                                  "emissive",
                                                  "emission_color",
                                                  "emissive_color",
                                                  "emission_texture",
                                                  "emission_map",
                                                  "emissive_texture",
                                                  "emission_strength",
                                                  "emissive_strength",
                                                  "double_sided",
                                                  "two_sided"};
    for (std::uint32_t i = 0; i < value.fieldCount(); ++i) {
      const std::string_view label = value.label(i);
      const bool isKnown =
          std::any_of(std::begin(kKnown), std::end(kKnown),
                      [&](std::string_view known) { return sameLabel(known, label); });
      if (!isKnown) {
        notices_.add("the material field '" + std::string(label) + "' is not used");
      }
    }
  }

  // Groups

  void readLightGroups() {
    out_.lightGroups.resize(static_cast<std::size_t>(count(VRDM_CLASS_LIGHT_GROUP)));
    for (int i = 0; i < count(VRDM_CLASS_LIGHT_GROUP); ++i) {
      if (!valid(VRDM_CLASS_LIGHT_GROUP, i)) continue;
      LightGroupDescription& group = out_.lightGroups[static_cast<std::size_t>(i)];
      for (const std::int32_t word : list(VRDM_CLASS_LIGHT_GROUP, i, "emitters")) {
        if (word == std::numeric_limits<std::int32_t>::min()) continue;
        if (word < 0 && valid(VRDM_CLASS_LIGHT, ~word)) group.lights.push_back(~word);
        if (word >= 0 && valid(VRDM_CLASS_SHAPE, word)) group.shapes.push_back(word);
      }
    }
  }

  Transform groupOf(std::uint32_t objectClass, int index) const {
    const int group = reference(objectClass, index, "transformationGroup");
    if (group < 0) return {};
    return this->group(VRDM_CLASS_TRANSFORMATION_GROUP, group, "Transformation")
        .fields()
        .matrixAt("matrix");
  }

  static Transform keyframe(Vec3 pivot, Vec3 scale, const std::array<float, 4>& q, Vec3 move) {
    const float size = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    Transform turn;
    if (size > 0 && std::isfinite(size)) {
      const float i = q[0] / size, j = q[1] / size, k = q[2] / size, r = q[3] / size;
      turn.x = {1 - 2 * (j * j + k * k), 2 * (i * j + k * r), 2 * (i * k - j * r)};
      turn.y = {2 * (i * j - k * r), 1 - 2 * (i * i + k * k), 2 * (j * k + i * r)};
      turn.z = {2 * (i * k + j * r), 2 * (j * k - i * r), 1 - 2 * (i * i + j * j)};
    }
    Transform toPivot;
    toPivot.w = -pivot;
    Transform stretch{{scale.x, 0, 0}, {0, scale.y, 0}, {0, 0, scale.z}, {0, 0, 0}};
    Transform place;
    place.w = pivot + move;
    return place * turn * stretch * toPivot;
  }

  struct Key {
    Vec3 pivot, scale, move;
    std::array<float, 4> q;  // of length 1
  };

  std::vector<Key> keysOf(int keyframeList) const {
    std::vector<Key> keys;
    for (const std::int32_t index : list(VRDM_CLASS_KEYFRAME_LIST, keyframeList, "keyframes")) {
      if (!valid(VRDM_CLASS_KEYFRAME, index)) continue;
      const Group group = this->group(VRDM_CLASS_KEYFRAME, index, "Transformation");
      const ValueReader f = group.fields();
      std::array<float, 4> q{f.numberAt("qi"), f.numberAt("qj"), f.numberAt("qk"),
                             f.numberAt("qr")};
      const float size = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
      const bool turns = size > 0 && std::isfinite(size);
      for (float& lane : q) lane = turns ? lane / size : 0;
      if (!turns) q[3] = 1;
      keys.push_back({{f.numberAt("px"), f.numberAt("py"), f.numberAt("pz")},
                      {f.numberAt("sx"), f.numberAt("sy"), f.numberAt("sz")},
                      {f.numberAt("tx"), f.numberAt("ty"), f.numberAt("tz")},
                      q});
    }
    return keys;
  }

  // Returns the map at a fraction of the way from one key to the next.
  static Transform between(const Key& a, const Key& b, float t) {
    const auto mix = [t](Vec3 from, Vec3 to) { return from * (1 - t) + to * t; };
    return keyframe(mix(a.pivot, b.pivot), mix(a.scale, b.scale), turned(a.q, b.q, t),
                    mix(a.move, b.move));
  }

  // Returns the maps of keys at equal steps. Points move along straight lines from step to step, so
  // there are `turnSteps` of them between two keys that turn, or as many as the limit allows. If
  // the keys alone are more than that, the motion is taken at the most even times that there may
  // be.
  static std::vector<Transform> stepsOf(const std::vector<Key>& keys, std::size_t turnSteps,
                                        std::size_t most) {
    if (keys.empty()) return {};
    const std::size_t spans = keys.size() - 1;
    bool turns = false;
    for (std::size_t i = 0; i < spans; ++i) turns |= keys[i].q != keys[i + 1].q;
    std::size_t intervals = spans;
    if (spans > most - 1) {
      intervals = most - 1;
    } else if (turns) {
      intervals *= std::clamp((most - 1) / spans, std::size_t{1}, turnSteps);
    }
    std::vector<Transform> steps;
    for (std::size_t step = 0; step <= intervals; ++step) {
      // In whole numbers, so that a step at a key is the key.
      const std::size_t at = intervals > 0 ? step * spans / intervals : 0;
      const std::size_t rest = intervals > 0 ? step * spans % intervals : 0;
      const float t = rest == 0 ? 0 : static_cast<float>(rest) / static_cast<float>(intervals);
      steps.push_back(between(keys[at], keys[std::min(at + 1, spans)], t));
    }
    return steps;
  }

  // The rotation at a fraction of the way, at an even speed along the shorter way.
  static std::array<float, 4> turned(const std::array<float, 4>& a, std::array<float, 4> b,
                                     float t) {
    float cosine = a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3];
    if (cosine < 0) {
      cosine = -cosine;
      for (float& lane : b) lane = -lane;
    }
    float from = 1 - t;
    float to = t;
    if (cosine < 0.9995F) {
      const float angle = std::acos(cosine);
      from = std::sin((1 - t) * angle) / std::sin(angle);
      to = std::sin(t * angle) / std::sin(angle);
    }
    std::array<float, 4> result;
    for (std::size_t lane = 0; lane < 4; ++lane) result[lane] = from * a[lane] + to * b[lane];
    return result;
  }

  Motion motionOf(std::uint32_t objectClass, int index, const ValueReader& general,
                  const Transform& outer) {
    Motion motion;
    const Transform own = group(objectClass, index, "Transformation").fields().matrixAt("matrix");
    motion.steps = {outer * own};
    const int keyframes = reference(objectClass, index, "keyframes");
    std::vector<Key> keys;
    if (keyframes >= 0) keys = keysOf(keyframes);
    motion.start = general.numberAt("time_start", 0);
    motion.end = general.numberAt("time_end", 1);
    const bool hasTime = motion.end > motion.start && std::isfinite(motion.end - motion.start);
    // Embree moves shapes, and takes so many steps. A camera has no such limit.
    const bool isCamera = objectClass == VRDM_CLASS_CAMERA;
    constexpr std::size_t kMostSteps = 129, kTurnSteps = 8, kCameraTurnSteps = 64;
    const std::size_t most =
        isCamera ? std::max(keys.size() * kTurnSteps, std::size_t{1} << 16) : kMostSteps;
    if (keys.size() > most) {
      notices_.add(called(objectClass, index) + " has " + std::to_string(keys.size()) +
                   " keyframes; it moves along straight lines between " + std::to_string(most) +
                   " times");
    }
    std::vector<Transform> steps = stepsOf(keys, isCamera ? kCameraTurnSteps : kTurnSteps, most);
    for (Transform& step : steps) step = outer * step * own;
    if (!steps.empty()) motion.steps = std::move(steps);
    if (!hasTime) {
      motion.steps.resize(1);
    } else if (!isCamera && !motion.moves() && (motion.start > 0 || motion.end < 1)) {
      // A shape that stands still is there from the first time to the last.
      motion.steps.push_back(motion.steps.front());
    }
    return motion;
  }

  // Objects

  static Projection projectionOf(std::string_view mode) {
    static constexpr std::pair<std::string_view, Projection> kProjections[] = {
        {"BOX", Projection::Box},
        {"CUBIC", Projection::Cubic},
        {"PLANAR", Projection::Planar},
        {"SPHERICAL", Projection::Spherical},
        {"CYLINDRICAL", Projection::Cylindrical},
        {"RADIAL", Projection::Radial}};
    for (const auto& [label, projection] : kProjections) {
      // The variants of a mode begin with its name.
      if (mode.substr(0, label.size()) == label) return projection;
    }
    return Projection::Keep;
  }

  void readDecals() {
    constexpr std::uint32_t kClass = VRDM_CLASS_DECAL;
    out_.decals.resize(static_cast<std::size_t>(count(kClass)));
    isUsable_.resize(out_.decals.size());
    for (int i = 0; i < count(kClass); ++i) {
      if (!valid(kClass, i)) continue;
      DecalDescription& decal = out_.decals[static_cast<std::size_t>(i)];
      decal.place =
          groupOf(kClass, i) * group(kClass, i, "Transformation").fields().matrixAt("matrix");
      if (!canBeEntered(decal.place)) {
        notices_.add(called(kClass, i) + " has a projection without an extent; it is left out");
        continue;
      }
      isUsable_[static_cast<std::size_t>(i)] = true;
      decal.toLocal = inverse(decal.place);
      const Group projection = group(kClass, i, "Projection");
      const ValueReader p = projection.fields();
      decal.projection = projectionOf(p.constructorAt("mode"));
      const std::string_view direction = p.constructorAt("direction");
      decal.fromOutside = direction != "INSIDE_OUT";
      decal.fromInside = direction != "OUTSIDE_IN";
      const auto corner = [&p](std::string_view label, float otherwise) {
        const auto at = p.find(label);
        const auto lanes = at ? at->lanes() : std::nullopt;
        const auto known = [otherwise](float x) { return std::isnan(x) ? otherwise : x; };
        return lanes ? Vec3{known((*lanes)[0]), known((*lanes)[1]), known((*lanes)[2])}
                     : Vec3{otherwise, otherwise, otherwise};
      };
      constexpr float kFar = std::numeric_limits<float>::infinity();
      decal.low = corner("clipping_box.min", -kFar);
      decal.high = corner("clipping_box.max", kFar);
      decal.frontMaterial = reference(kClass, i, "frontMaterial") + 1;
      decal.backMaterial = reference(kClass, i, "backMaterial") + 1;
    }
  }

  void readShapes() {
    out_.shapes.reserve(static_cast<std::size_t>(count(VRDM_CLASS_SHAPE)));
    for (int i = 0; i < count(VRDM_CLASS_SHAPE); ++i) {
      if (valid(VRDM_CLASS_SHAPE, i)) readShape(i);
    }
  }

  void readShape(int index) {
    constexpr std::uint32_t kClass = VRDM_CLASS_SHAPE;
    const std::string name = called(kClass, index);
    ShapeDescription shape;
    shape.object = static_cast<std::uint32_t>(index);
    const Group general = group(kClass, index, "General");
    const std::string_view form = general.fields().constructorAt("geometric_representation");
    static constexpr std::pair<std::string_view, Form> kForms[] = {
        {"MESH", Form::Mesh},     {"RECTANGLE", Form::Rectangle}, {"DISK", Form::Disk},
        {"SPHERE", Form::Sphere}, {"CYLINDER", Form::Cylinder},   {"CUBE", Form::Cube}};
    for (const auto& [label, code] : kForms) {
      if (form == label) shape.form = code;
    }
    shape.mesh = reference(kClass, index, "mesh");
    if (shape.form == Form::Mesh &&
        (shape.mesh < 0 || !out_.meshes[static_cast<std::size_t>(shape.mesh)].isUsable())) {
      notices_.add(name + " has no mesh with triangles; it is left out");
      return;
    }
    shape.motion = motionOf(kClass, index, general.fields(), groupOf(kClass, index));
    if (!checkMotion(name, shape)) return;
    const int material = reference(kClass, index, "material");
    if (material < 0) notices_.add(name + " has no material; it is neutral grey");
    shape.material = material + 1;
    shape.lightGroup = reference(kClass, index, "lightGroup");
    shape.tag = group(kClass, index, "Target").fields().find("tag")->text();

    const Group visibility = group(kClass, index, "Visibility");
    const ValueReader v = visibility.fields();
    shape.visibleTo = 0;
    if (v.booleanAt("visible_to.camera", true)) shape.visibleTo |= kCameraRay;
    if (v.numberAt("visible_to.reflection", 1) != 0) shape.visibleTo |= kReflectionRay;
    if (v.numberAt("visible_to.refraction", 1) != 0) shape.visibleTo |= kRefractionRay;
    if (v.numberAt("visible_to.transmission", 1) != 0) shape.visibleTo |= kTransmissionRay;
    if (v.booleanAt("visible_to.indirect_illumination", true)) shape.visibleTo |= kDiffuseRay;
    if (v.booleanAt("visible_to.direct_light", true) && v.booleanAt("cast.direct_shadow", true)) {
      shape.visibleTo |= kShadowRay;
    }
    shape.castsIndirect = v.booleanAt("cast.indirect_illumination", true);
    shape.castsCaustics = v.booleanAt("cast.caustics", true);
    shape.receivesShadow = v.booleanAt("receive.shadow", true);
    shape.receivesIndirect = v.booleanAt("receive.indirect_illumination", true);
    shape.receivesCaustics = v.booleanAt("receive.caustics", true);

    shape.isMatte = group(kClass, index, "Matte objects").fields().booleanAt("matte", false);
    const Group culling = group(kClass, index, "Face culling");
    const std::string_view mode = culling.fields().constructorAt("mode");
    if (mode == "FRONT") shape.culling = Culling::Front;
    if (mode == "BACK") shape.culling = Culling::Back;
    shape.cullsOnlyCamera = culling.fields().booleanAt("only_primary_rays", true);
    shape.samplingMultiplier = std::max(
        0.0F, group(kClass, index, "Sampling probability").fields().numberAt("multiplier", 1));
    if (!std::isfinite(shape.samplingMultiplier)) shape.samplingMultiplier = 1;

    const Group cutting = group(kClass, index, "Cut planes");
    if (const auto cut = cutting.fields().find("cut"); cut) shape.cutBy = bits(*cut);
    if (cutting.fields().booleanAt("capped", false)) {
      notices_.add("caps of cut planes are not rendered");
    }
    if (const int decals = reference(kClass, index, "decals"); decals >= 0) {
      for (const std::int32_t word : list(VRDM_CLASS_DECAL_LIST, decals, "decals")) {
        if (word == std::numeric_limits<std::int32_t>::min()) continue;
        const std::int32_t decal = word < 0 ? ~word : word;
        if (!valid(VRDM_CLASS_DECAL, decal) || !isUsable_[static_cast<std::size_t>(decal)])
          continue;
        shape.decals.push_back({decal, word < 0});
      }
    }
    if (general.fields().numberAt("edge_radius") > 0)
      notices_.add("rounded edges are not rendered");
    const Group procedural = group(kClass, index, "Procedural UVs");
    shape.projection = projectionOf(procedural.fields().constructorAt("mode"));
    if (shape.projection != Projection::Keep) {
      const Transform place = procedural.fields().matrixAt("uv_transformation");
      if (canBeEntered(place)) {
        shape.toProjection = inverse(place);
      } else {
        notices_.add(name + " has a projection without an extent; the mesh's coordinates are used");
        shape.projection = Projection::Keep;
      }
    }
    out_.shapes.push_back(std::move(shape));
  }

  // Returns whether the shape can be rendered. A shape that moves must have an extent at all times.
  bool checkMotion(const std::string& name, ShapeDescription& shape) {
    constexpr int kChecks = 16;
    std::vector<Transform>& steps = shape.motion.steps;
    bool canMove = true;
    for (std::size_t i = 0; i + 1 < steps.size(); ++i) {
      for (int check = 0; check <= kChecks && canMove; ++check) {
        const float t = static_cast<float>(check) / kChecks;
        const auto mix = [t](Vec3 a, Vec3 b) { return a * (1 - t) + b * t; };
        const Transform& a = steps[i];
        const Transform& b = steps[i + 1];
        const Transform between{mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.w, b.w)};
        canMove = canBeEntered(between) && (between.determinant() > 0) == (a.determinant() > 0);
      }
    }
    if (!canMove) {
      notices_.add(name + " has no extent at a time of its motion; it stands still");
      steps.resize(1);
    }
    if (!steps.front().isFinite()) {
      notices_.add(name + " has a transformation that is not finite; it is left out");
      return false;
    }
    const bool hasMesh =
        shape.form == Form::Mesh || shape.form == Form::Rectangle || shape.form == Form::Cube;
    if (hasMesh || canBeEntered(steps.front())) return true;
    notices_.add(name + " has a form without an extent; it is left out");
    return false;
  }

  // Reads an array of bool as bits.
  static std::uint32_t bits(const ValueReader& array) {
    std::uint32_t result = 0;
    for (std::int32_t i = 0; i < 6; ++i) {
      vrntValueView_t element;
      vrntValueArrayElement(&element, array.place().type, &i);
      element.offset += array.place().offset;
      if (ValueReader(array.value(), element).boolean().value_or(false)) result |= 1U << i;
    }
    return result;
  }

  void readLights() {
    for (int i = 0; i < count(VRDM_CLASS_LIGHT); ++i) {
      if (valid(VRDM_CLASS_LIGHT, i)) readLight(i);
    }
  }

  void readLight(int index) {
    constexpr std::uint32_t kClass = VRDM_CLASS_LIGHT;
    const std::string name = called(kClass, index);
    LightDescription light;
    light.object = static_cast<std::uint32_t>(index);
    const Group transformation = group(kClass, index, "Transformation");
    light.place = groupOf(kClass, index) * transformation.fields().matrixAt("matrix");
    if (!light.place.isFinite()) {
      notices_.add(name + " has a transformation that is not finite; it is left out");
      return;
    }
    const std::string program = programOf(kClass, index, VRDM_CLASS_LIGHT_PROGRAM, "light");
    static constexpr std::pair<std::string_view, LightKind> kKinds[] = {
        {"rectangle", LightKind::Rectangle},
        {"square", LightKind::Rectangle},
        {"quad", LightKind::Rectangle},
        {"area", LightKind::Rectangle},
        {"disk", LightKind::Disk},
        {"disc", LightKind::Disk},
        {"sphere", LightKind::Sphere},
        {"point", LightKind::Point},
        {"spot", LightKind::Spot},
        {"directional", LightKind::Directional},
        {"distant", LightKind::Directional},
        {"sun", LightKind::Directional},
        {"environment", LightKind::Environment},
        {"dome", LightKind::Environment},
        {"sky", LightKind::Environment},
        {"ibl", LightKind::Environment}};
    bool isKnown = false;
    for (const auto& [label, kind] : kKinds) {
      if (!sameLabel(program, label)) continue;
      light.kind = kind;
      isKnown = true;
    }
    if (!isKnown) {
      light.kind = LightKind::Point;
      notices_.add("the light program '" + program + "' is not known; its lights shine as points");
    }
    const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, kClass, index));
    if (!value || !readEmissionOf(ValueReader(value.get()), name, light)) {
      notices_.add(name + " has no emission that the renderer understands; it is left out");
      return;
    }

    const Group visibility = group(kClass, index, "Visibility");
    const ValueReader v = visibility.fields();
    light.visibleTo = 0;
    if (v.booleanAt("visible_to.camera", true)) light.visibleTo |= kCameraRay;
    if (v.numberAt("visible_to.reflection", 1) != 0) light.visibleTo |= kReflectionRay;
    if (v.numberAt("visible_to.refraction", 1) != 0) light.visibleTo |= kRefractionRay;
    if (v.numberAt("visible_to.transmission", 1) != 0) light.visibleTo |= kTransmissionRay;
    if (v.booleanAt("visible_to.diffuse_glossy", true) &&
        v.booleanAt("visible_to.indirect_illumination", true)) {
      light.visibleTo |= kDiffuseRay;
    }
    light.castsShadow =
        v.booleanAt("visible_to.direct_light", true) && v.booleanAt("cast.shadow", true);
    light.castsCaustics = v.booleanAt("cast.caustics", true);
    light.samplingMultiplier = std::max(
        0.0F, group(kClass, index, "Sampling probability").fields().numberAt("multiplier", 1));
    if (!std::isfinite(light.samplingMultiplier)) light.samplingMultiplier = 1;
    light.tag = group(kClass, index, "Target").fields().find("tag")->text();
    out_.lights.push_back(std::move(light));
  }

  bool readEmissionOf(const ValueReader& value, const std::string& name, LightDescription& light) {
    const std::optional<ValueReader> at = value.findAny(
        {"emission", "radiance", "color", "colour", "intensity", "spectrum", "environment"});
    std::optional<EmissionParameter> emission = at ? readEmission(*at) : readEmission(value);
    if (!emission) return false;
    light.emission = emission->colour;
    checkColour(light.emission, name);
    for (const char* label : {"intensity", "strength", "multiplier"}) {
      const std::optional<ValueReader> factor = value.findAny({label});
      if (!factor || factor->place().offset == (at ? at->place().offset : ~0ULL)) continue;
      const float number = factor->number().value_or(1);
      light.emission.value *= std::isfinite(number) ? std::max(number, 0.0F) : 0.0F;
    }
    // A struct of a texture alone is a map of radiance: white is daylight.
    const float area = lightArea(light);
    switch (emission->unit) {
      case LightUnit::None:
      case LightUnit::Nit:
        break;
      case LightUnit::Lumen:
        light.emission.value *= isSurface(light) ? 1 / (kPi * area) : 1 / (4 * kPi);
        break;
      case LightUnit::Candela:
        if (isSurface(light)) {
          light.emission.value *= (light.kind == LightKind::Sphere ? 4.0F : 1.0F) / area;
        }
        break;
      case LightUnit::Lux:
        if (light.kind == LightKind::Environment) light.emission.value *= 1 / kPi;
        if (isSurface(light)) light.emission.value *= 1 / area;
        break;
    }
    const auto angle = [&value](std::initializer_list<std::string_view> labels, float otherwise) {
      const std::optional<ValueReader> found = value.findAny(labels);
      const float radians = found ? found->number().value_or(otherwise) : otherwise;
      return std::clamp(std::isfinite(radians) ? radians : otherwise, 0.0F, kPi);
    };
    const float outer = angle({"outer_cone_angle", "cone_angle"}, kPi / 4);
    light.cosOuter = std::cos(outer);
    light.cosInner = std::cos(std::min(outer, angle({"inner_cone_angle"}, 0)));
    return true;
  }

  static bool isSurface(const LightDescription& light) {
    return light.kind == LightKind::Rectangle || light.kind == LightKind::Disk ||
           light.kind == LightKind::Sphere;
  }
  static float lightArea(const LightDescription& light) {
    const float square = length(cross(light.place.x, light.place.y));
    float area = square;
    if (light.kind == LightKind::Disk) area = square * kPi / 4;
    if (light.kind == LightKind::Sphere) area = square * kPi;
    return area > 0 ? area : 1;
  }

  void readScene() {
    const Group raytracer = group(VRDM_CLASS_SCENE_DATA, 0, "Raytracer");
    const float epsilon = raytracer.fields().numberAt("ray_epsilon", 1e-4F);
    if (std::isfinite(epsilon) && epsilon >= 0) out_.rayEpsilon = epsilon;
    out_.isRobust = raytracer.fields().constructorAt("bvh_mode") == "ROBUST";

    const Group planes = group(VRDM_CLASS_SCENE_DATA, 0, "Cut planes");
    const std::optional<ValueReader> array = planes.fields().find("planes");
    std::uint32_t enabled = 0;
    for (std::int32_t i = 0; array && i < 6; ++i) {
      vrntValueView_t element;
      vrntValueArrayElement(&element, array->place().type, &i);
      element.offset += array->place().offset;
      const ValueReader plane(array->value(), element);
      const auto origin = plane.find("origin")->lanes();
      const auto normal = plane.find("normal")->lanes();
      CutPlane cut{{0, 0, 0}, {0, 0, 1}};
      if (origin) cut.origin = {(*origin)[0], (*origin)[1], (*origin)[2]};
      if (normal) cut.normal = {(*normal)[0], (*normal)[1], (*normal)[2]};
      if (plane.booleanAt("enabled", false)) enabled |= 1U << i;
      out_.cutPlanes.push_back(cut);
    }
    for (ShapeDescription& shape : out_.shapes) shape.cutBy &= enabled;
    const unsigned char* const id = reinterpret_cast<const unsigned char*>(vrdmSceneId(scene_));
    std::memcpy(out_.id.data(), id, out_.id.size());
  }

  // The camera and the task

  void readCamera(int index) {
    constexpr std::uint32_t kClass = VRDM_CLASS_CAMERA;
    CameraDescription& camera = out_.camera;
    const std::string name = called(kClass, index);
    const Group general = group(kClass, index, "General");
    camera.motion = motionOf(kClass, index, general.fields(), Transform{});
    for (const Transform& step : camera.motion.steps) {
      if (canBeEntered(step)) continue;
      notices_.add(name + " has a transformation that it cannot have; it is seen from the origin");
      camera.motion = Motion();
      break;
    }
    const auto number = [&general](const char* label) {
      const float found = general.fields().numberAt(label, 0);
      return std::isfinite(found) ? found : 0;
    };
    camera.nearDistance = std::max(0.0F, number("near_distance"));
    camera.shutterOpen = number("shutter_open");
    camera.shutterClose = std::max(camera.shutterOpen, number("shutter_close"));

    const Group background = group(kClass, index, "Background");
    const ValueReader b = background.fields();
    camera.hasBackground = b.booleanAt("active", false);
    const auto channel = [&b](const char* label) {
      const float found = b.numberAt(label);
      return std::isfinite(found) ? std::max(found, 0.0F) : 0.0F;
    };
    camera.background =
        Colours::get().background({channel("red"), channel("green"), channel("blue")});
    readBackplate(index);

    const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, kClass, index));
    if (!value) {
      notices_.add(name + " has no value; its lens has 35 mm and its film 36 by 24 mm");
      return;
    }
    const ValueReader lens(value.get());
    const auto read = [&lens](std::initializer_list<std::string_view> labels, float& out) {
      const std::optional<ValueReader> at = lens.findAny(labels);
      const std::optional<float> found = at ? at->number() : std::nullopt;
      if (!found || !std::isfinite(*found)) return false;
      out = *found;
      return true;
    };
    const bool hasLength = read({"focal_length"}, camera.focalLength);
    bool hasFilm = false;
    if (const auto film = lens.findAny({"film_size", "sensor_size"}); film) {
      const auto lanes = film->lanes();
      if (lanes && (*lanes)[0] > 0 && (*lanes)[1] > 0) {
        camera.filmWidth = (*lanes)[0];
        camera.filmHeight = (*lanes)[1];
        hasFilm = true;
      }
    }
    float angle = 0;
    if (read({"field_of_view", "fov", "vertical_field_of_view"}, angle) && angle > 0 &&
        angle < kPi) {
      camera.focalLength = 0.5F * camera.filmHeight / std::tan(0.5F * angle);
    } else if (!hasLength && !hasFilm) {
      notices_.add(name + " has no focal length and no film size; it has 35 mm and 36 by 24 mm");
    }
    if (!(camera.focalLength > 0)) camera.focalLength = 0.035F;
    camera.focusDistance = camera.focalLength;
    const bool hasFocus = read({"focus_distance", "focal_distance"}, camera.focusDistance);
    float stop = 0;
    read({"aperture_radius", "lens_radius"}, camera.lensRadius);
    if (read({"f_number", "f_stop"}, stop) && stop > 0)
      camera.lensRadius = 0.5F * camera.focalLength / stop;
    if (!hasFocus || !(camera.focusDistance > 0)) camera.lensRadius = 0;
    camera.lensRadius = std::max(camera.lensRadius, 0.0F);
    const std::string program = programOf(kClass, index, VRDM_CLASS_CAMERA_PROGRAM, "camera");
    camera.isOrthographic = sameLabel(program, "orthographic") || sameLabel(program, "parallel");
    if (!camera.isOrthographic && !sameLabel(program, "pinhole") &&
        !sameLabel(program, "perspective") && !sameLabel(program, "thin_lens")) {
      notices_.add("the camera program '" + program + "' is not known; it is used as a pinhole");
    }
  }

  void readBackplate(int index) {
    CameraDescription& camera = out_.camera;
    const Group backplate = group(VRDM_CLASS_CAMERA, index, "Backplate");
    const ValueReader b = backplate.fields();
    const std::string_view mode = b.constructorAt("mode");
    if (mode.empty() || mode == "DISABLED") return;
    camera.backplate = reference(VRDM_CLASS_CAMERA, index, "backplate");
    if (const auto image = b.find("image"); image) {
      TextureLookup lookup;
      if (const std::optional<TextureLookup> found = readLookup(*image); found) lookup = *found;
      if (camera.backplate < 0) camera.backplate = lookup.texture;
      camera.backplateLookup = lookup;
    }
    if (camera.backplate < 0 || !valid(VRDM_CLASS_TEXTURE, camera.backplate)) {
      notices_.add(called(VRDM_CLASS_CAMERA, index) + " has a backplate without an image");
      return;
    }
    camera.backplateLookup.texture = camera.backplate;
    camera.hasBackplate = true;
    using Fit = CameraDescription::Fit;
    camera.backplateFit = mode == "FIT_WIDTH"    ? Fit::Width
                          : mode == "FIT_HEIGHT" ? Fit::Height
                          : mode == "MANUAL"     ? Fit::Manual
                                                 : Fit::Size;
    camera.backplateBrightness = std::clamp(b.numberAt("brightness", 1), 0.0F, 1e6F);
    if (!std::isfinite(camera.backplateBrightness)) camera.backplateBrightness = 1;
    const auto corner = [&b](const char* label, Vec2& out) {
      const auto at = b.find(label);
      const auto lanes = at ? at->lanes() : std::nullopt;
      if (lanes) out = {(*lanes)[0], (*lanes)[1]};
    };
    corner("region.min", camera.backplateMin);
    corner("region.max", camera.backplateMax);
    camera.backplateInReflection = b.booleanAt("visible_to_reflection", true);
    camera.backplateInRefraction = b.booleanAt("visible_to_refraction", false);
  }

  void readTask(std::optional<int> wanted) {
    constexpr std::uint32_t kClass = VRDM_CLASS_IMAGE_TASK;
    int index = -1;
    if (wanted) {
      index = *wanted;
      if (!valid(kClass, index)) {
        throw std::out_of_range("there is no image task " + std::to_string(index));
      }
    } else {
      for (int i = count(kClass) - 1; i >= 0; --i) {
        if (valid(kClass, i)) index = i;
      }
    }
    int camera = index >= 0 ? reference(kClass, index, "camera") : -1;
    if (index < 0) notices_.add("there is no image task; the defaults of one are used");
    for (int i = 0; camera < 0 && i < count(VRDM_CLASS_CAMERA); ++i) {
      if (valid(VRDM_CLASS_CAMERA, i)) camera = i;
    }
    if (camera >= 0) {
      readCamera(camera);
    } else {
      notices_.add("there is no camera; the shapes are seen from the front");
      seeFromFront();
    }
    if (index >= 0) readTaskGroups(index);
  }

  void readTaskGroups(int index) {
    constexpr std::uint32_t kClass = VRDM_CLASS_IMAGE_TASK;
    TaskDescription& task = out_.task;
    const Group accumulation = group(kClass, index, "Accumulation");
    const ValueReader a = accumulation.fields();
    task.hasGaussFilter = a.booleanAt("reconstruction_gauss_filter.enable", false);
    task.gaussAlpha = std::clamp(a.numberAt("reconstruction_gauss_filter.alpha", 1.7F), 0.1F, 3.0F);
    task.gaussRadius =
        std::clamp(a.numberAt("reconstruction_gauss_filter.radius", 1.5F), 0.5F, 3.0F);
    task.clampsLuminance = a.constructorAt("clamping_technique") != "EQUAL";
    task.clampValue = std::max(0.0F, a.numberAt("clamp_value", task.clampValue));
    task.brightness = std::clamp(a.numberAt("brightness", 1), 0.0F, 1e6F);
    if (!std::isfinite(task.brightness)) task.brightness = 1;
    task.hasTransparentBackground = a.booleanAt("transparent_background", false);
    task.seed = static_cast<std::uint32_t>(a.find("base_seed")->integer().value_or(0));

    const Group region = group(kClass, index, "Render region");
    const ValueReader r = region.fields();
    const float left = r.numberAt("left"), bottom = r.numberAt("bottom");
    const float width = r.numberAt("width", 1), height = r.numberAt("height", 1);
    if (width > 0 && height > 0 && std::isfinite(left + bottom + width + height)) {
      task.regionOrigin = {left, bottom};
      task.regionSize = {width, height};
    } else {
      notices_.add(called(kClass, index) +
                   " has a render region without an extent; the whole picture is rendered");
    }
    const Group wavefront = group(kClass, index, "Wavefront");
    const ValueReader w = wavefront.fields();
    task.maxBounces = std::clamp(static_cast<int>(w.numberAt("max_bounces", 32)), 0, 4096);
    const float wavelength = w.numberAt("spectral_wavelength");
    if (wavelength >= 400 && wavelength <= 700) {
      task.wavelengths = Wavelengths::One;
      task.band = std::clamp(static_cast<int>((wavelength - 400) / 5), 0, kBands - 1);
    }
    const Group gi = group(kClass, index, "Global illumination");
    const ValueReader g = gi.fields();
    task.rouletteStart =
        std::max(0, static_cast<int>(g.numberAt("russian_roulette_termination.start_depth", 2)));
    task.hasFixedRoulette = g.constructorAt("russian_roulette_termination.scheme") == "FIXED";
    task.fixedRoulette =
        std::clamp(g.numberAt("russian_roulette_termination.fixed_probability", 0.1F), 0.0F, 0.95F);
    const Group general = group(kClass, index, "General");
    task.cutsOnlyCamera = general.fields().booleanAt("cut_planes.only_primary", false);
  }

  void seeFromFront() {
    Vec3 low{1e30F, 1e30F, 1e30F};
    Vec3 high = -low;
    const auto grow = [&](Vec3 p) {
      if (!isFinite(p)) return;
      low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
      high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    };
    for (const ShapeDescription& shape : out_.shapes) {
      const Transform& place = shape.motion.steps.front();
      if (shape.form != Form::Mesh) {
        for (int i = 0; i < 8; ++i) {
          grow(place.point({i & 1 ? 0.5F : -0.5F, i & 2 ? 0.5F : -0.5F, i & 4 ? 0.5F : -0.5F}));
        }
        continue;
      }
      const MeshDescription& mesh = out_.meshes[static_cast<std::size_t>(shape.mesh)];
      for (std::uint32_t i = 0; i < mesh.vertexCount; ++i) {
        const float* const p = mesh.vertices + std::size_t{9} * i;
        grow(place.point({p[0], p[1], p[2]}));
      }
    }
    if (!(low.x <= high.x)) low = high = Vec3{};
    const Vec3 size = high - low;
    const float distance = 2.0F * std::max({size.x * 24.0F / 36.0F, size.y, 1e-3F});
    Transform& place = out_.camera.motion.steps.front();
    place.w = (low + high) * 0.5F + Vec3{0, 0, 0.5F * size.z + distance};
  }

  void tellUnused() {
    if (count(VRDM_CLASS_MATERIAL_GRAPH) > 0) {
      notices_.add("material graphs are not interpreted; the values of materials are used");
    }
  }

  SceneDescription out_;
  const vrdmScene_t* scene_;
  Notices& notices_;
  std::vector<bool> isUsable_;  // by decal
};

}  // namespace

SceneDescription readScene(const vrdmScene_t* scene, std::optional<int> task, Notices& notices) {
  return Reader(scene, notices).read(task);
}

}  // namespace vrn_render
