#include "writing/scene_writer.hpp"

#include <array>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <tuple>
#include <utility>

#include "scene_plan/text.hpp"
#include "vornath_data/host.hpp"
#include "writing/equal_bytes.hpp"
#include "writing/images.hpp"

namespace vrn_convert {
namespace {

using vrnt::host::Object;
using vrnt::host::Record;
using vrnt::host::RgbSpectrum;
using vrnt::host::Scene;
using vrnt::host::Storage;

constexpr char kSpectrum[] = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";

constexpr char kMaterialProgram[] =
    "// A metal, or a diffuse or transparent ground with a coat. It has the parameters that its\n"
    "// value has: the ground, the metal or what goes through has the colour base_color. A "
    "texture\n"
    "// multiplies the parameter that it is named after.\n"
    "material metallic_roughness()\n"
    "{\n"
    "    scatter(mix(coated(base_color, roughness, index_of_refraction, transmission),\n"
    "                metal(base_color, roughness), metallic));\n"
    "    emit(emission * emission_strength);\n"
    "}\n";
constexpr char kPinhole[] =
    "// Rays of a pinhole camera: the film is behind the hole, and the camera looks along its own "
    "-z.\n"
    "camera pinhole(float focal_length, float2 film_size)\n"
    "{\n"
    "    ray.origin = float3(0.0, 0.0, 0.0);\n"
    "    ray.direction = normalize(float3((film.position - 0.5) * film_size, -focal_length));\n"
    "}\n";
constexpr char kOrthographic[] =
    "// Parallel rays along the camera's own -z, from a film in its plane z = 0.\n"
    "camera orthographic(float2 film_size)\n"
    "{\n"
    "    ray.origin = float3((film.position - 0.5) * film_size, 0.0);\n"
    "    ray.direction = float3(0.0, 0.0, -1.0);\n"
    "}\n";
constexpr char kPoint[] =
    "// Light from the light's origin: the same intensity in all directions.\n"
    "light point(spectrum emission)\n"
    "{\n"
    "    emit(emission);\n"
    "}\n";
constexpr char kSpot[] =
    "// Light from the light's origin, around its own +z: the whole intensity inside of the inner\n"
    "// cone, and none outside of the outer one. Angles are in radians from the axis.\n"
    "light spot(spectrum emission, float inner_cone_angle, float outer_cone_angle)\n"
    "{\n"
    "    emit(emission * smoothstep(cos(outer_cone_angle), cos(inner_cone_angle), direction.z));\n"
    "}\n";
constexpr char kDirectional[] =
    "// Light along the light's own +z: its irradiance on a surface that faces it.\n"
    "light directional(spectrum emission)\n"
    "{\n"
    "    emit(emission);\n"
    "}\n";
constexpr char kRectangle[] =
    "// The unit square around the light's origin, which shines along its own +z.\n"
    "light rectangle(spectrum emission)\n"
    "{\n"
    "    surface.position = float3(sample.position - 0.5, 0.0);\n"
    "    surface.normal = float3(0.0, 0.0, 1.0);\n"
    "    emit(emission * max(dot(surface.normal, direction), 0.0));\n"
    "}\n";
constexpr char kEnvironment[] =
    "// Light from everywhere.\n"
    "light environment(spectrum emission)\n"
    "{\n"
    "    emit(emission);\n"
    "}\n";

// Runs a function for the numbers below `count` on all processors. The first exception is thrown
// again.
template <typename Function>
void forEach(std::size_t count, const Function& function) {
  std::atomic<std::size_t> next{0};
  std::exception_ptr thrown;
  std::mutex mutex;
  const auto work = [&] {
    try {
      for (std::size_t i = next++; i < count; i = next++) function(i);
    } catch (...) {
      const std::lock_guard<std::mutex> lock(mutex);
      if (!thrown) thrown = std::current_exception();
      next = count;
    }
  };
  const std::size_t most = std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::thread> threads;
  for (std::size_t i = 1; i < std::min(most, count); ++i) {
    try {
      threads.emplace_back(work);
    } catch (const std::system_error&) {
      break;
    }
  }
  work();
  for (std::thread& thread : threads) thread.join();
  if (thrown) std::rethrow_exception(thrown);
}

vrnt::TypeHandle takeType(vrntType_t* type) { return vrnt::TypeHandle::adopt(type); }

std::string textOf(const vrnt::TypeHandle& type) { return vrntTypeString(type.get()); }

std::array<float, 4> row(const Vector& vector, double last) {
  // Adding zero turns -0.0 into 0.0.
  return {static_cast<float>(vector.x + 0.0), static_cast<float>(vector.y + 0.0),
          static_cast<float>(vector.z + 0.0), static_cast<float>(last)};
}

class Writer {
 public:
  Writer(ScenePlan&& plan, Notices& notices) : plan_(std::move(plan)), notices_(notices) {}

  WrittenScene write() {
    writeMeshes();
    decodeImages();
    writeMaterials();
    writeGroups();
    writeLights();
    writeShapes();
    writeCameras();
    out_.scene.reset(scene_.release());
    return std::move(out_);
  }

 private:
  void name(const Object& object, const std::string& text) {
    std::vector<std::string>& names = out_.names[vrnt::host::className(object.objectClass)];
    const auto index = static_cast<std::size_t>(object.index);
    if (names.size() <= index) names.resize(index + 1);
    if (names[index].empty()) names[index] = text;
  }

  Object program(std::uint32_t objectClass, const char* source) {
    Object& found = programs_[source];
    if (found.index < 0) found = scene_.addProgram(objectClass, source);
    return found;
  }

  void place(const Object& object, const Transform& transform) {
    scene_.setGroup(object, "Transformation",
                    scene_.group(object, "Transformation")
                        .set("matrix.x", row(transform.x, 0))
                        .set("matrix.y", row(transform.y, 0))
                        .set("matrix.z", row(transform.z, 0))
                        .set("matrix.w", row(transform.w, 1)));
  }

  void tag(const Object& object, const std::string& given) {
    const std::string text = asUtf8(given);
    name(object, text);
    if (text.empty()) return;
    constexpr std::size_t kMost = 63;
    std::string cut = text.substr(0, text.find('\0'));
    if (cut.size() > kMost) {
      // Not within a character of UTF-8.
      std::size_t end = kMost;
      while (end > 0 && (static_cast<unsigned char>(cut[end]) & 0xC0U) == 0x80U) --end;
      cut.resize(end);
    }
    if (cut.size() != text.size()) notices_.add("names of more than 63 bytes are cut in tags");
    scene_.setGroup(object, "Target", scene_.group(object, "Target").set("tag", cut));
  }

  Storage storageOf(Bytes& bytes, std::size_t size) {
    Storage storage = Storage::adopt(vrdmAssetStorageWrap(bytes.get(), size, std::free));
    if (storage.get() == nullptr) throw std::bad_alloc();
    static_cast<void>(bytes.release());
    return storage;
  }

  // Meshes

  void writeMeshes() {
    using Key = std::tuple<int, int, int>;
    EqualBytes<Key> known;
    for (std::size_t i = 0; i < plan_.meshes.size(); ++i) {
      MeshPlan& mesh = plan_.meshes[i];
      const unsigned char* const bytes = mesh.bytes.get();
      const int number = static_cast<int>(i);
      const int same = known.add({mesh.desc.triangles, mesh.desc.vertices, mesh.desc.texcoordSets},
                                 bytes, mesh.size, number);
      if (same != number) {
        meshes_.push_back(meshes_[static_cast<std::size_t>(same)]);
        name(meshes_.back(), mesh.name);
        continue;
      }
      out_.triangles += static_cast<std::uint64_t>(mesh.desc.triangles);
      out_.vertices += static_cast<std::uint64_t>(mesh.desc.vertices);
      meshes_.push_back(scene_.addAsset(mesh.desc, storageOf(mesh.bytes, mesh.size)));
      name(meshes_.back(), mesh.name);
    }
  }

  // Textures

  struct Texture {
    Object object;
    int channels = 0;  // 0 for none
  };

  template <typename Function>
  void forEachTexture(const Function& function) {
    for (MaterialPlan& material : plan_.materials) {
      for (std::optional<TexturePlan>* texture :
           {&material.baseTexture, &material.roughnessTexture, &material.metallicTexture,
            &material.emissionTexture, &material.normalTexture, &material.opacityTexture}) {
        if (*texture) function(**texture);
      }
    }
  }

  void decodeImages() {
    // Equal files are decoded once.
    EqualBytes<int> files;
    std::vector<int> sameFile(plan_.images.size());
    for (std::size_t i = 0; i < plan_.images.size(); ++i) {
      const ImagePlan& image = plan_.images[i];
      sameFile[i] = files.add(image.width, image.data, image.data != nullptr ? image.size : 0,
                              static_cast<int>(i));
      if (image.data == nullptr) sameFile[i] = static_cast<int>(i);
    }
    std::map<std::pair<int, PixelUse>, std::size_t> jobs;
    std::vector<std::pair<int, PixelUse>> order;
    forEachTexture([&](TexturePlan& texture) {
      texture.image = sameFile[static_cast<std::size_t>(texture.image)];
      if (jobs.emplace(std::pair{texture.image, texture.use}, order.size()).second) {
        order.emplace_back(texture.image, texture.use);
      }
    });
    std::vector<TextureAsset> assets(order.size());
    forEach(order.size(), [&](std::size_t i) {
      assets[i] =
          decodeImage(plan_.images[static_cast<std::size_t>(order[i].first)], order[i].second);
    });
    using Key = std::tuple<int, int, int>;
    EqualBytes<Key> known;
    std::vector<Texture> written(order.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
      TextureAsset& asset = assets[i];
      const ImagePlan& image = plan_.images[static_cast<std::size_t>(order[i].first)];
      if (!asset.problem.empty()) {
        notices_.add("the image " + image.name + " is left out: " + asset.problem);
        continue;
      }
      const int number = static_cast<int>(i);
      const int same = known.add({asset.desc.width, asset.desc.height, asset.desc.format},
                                 asset.bytes.get(), asset.size, number);
      if (same != number) {
        written[i] = written[static_cast<std::size_t>(same)];
      } else {
        written[i] = {scene_.addAsset(asset.desc, storageOf(asset.bytes, asset.size)),
                      asset.channels};
      }
      name(written[i].object, image.name);
    }
    for (const auto& [key, job] : jobs) textures_[key] = written[job];
  }

  const Texture* textureOf(const std::optional<TexturePlan>& plan) const {
    if (!plan) return nullptr;
    const auto found = textures_.find({plan->image, plan->use});
    return found == textures_.end() || found->second.channels == 0 ? nullptr : &found->second;
  }

  // Materials

  // The text of a type and the calls that fill its value, in the same order.
  class Value {
   public:
    template <typename T>
    void add(const std::string& type, const std::string& label, const T& number) {
      text_ += type + " " + label + "; ";
      fills_.push_back([label, number](Record& record) { record.set(label, number); });
    }
    void addSpectrum(const std::string& label, const Colour& colour) {
      add(kSpectrum, label, RgbSpectrum{colour[0], colour[1], colour[2]});
    }
    void addTexture(const std::string& type, const std::string& label,
                    std::function<void(Record&)> fill) {
      text_ += type + " " + label + "; ";
      fills_.push_back(std::move(fill));
    }
    Record make() const {
      Record record = Record::ofType("{ " + text_ + "}");
      for (const auto& fill : fills_) fill(record);
      return record;
    }

   private:
    std::string text_;
    std::vector<std::function<void(Record&)>> fills_;
  };

  enum class SamplerKind : std::uint8_t { Spectrum, Number, Normal };

  static void addTexture(Value& value, const std::string& label, const TexturePlan& plan,
                         const Texture& texture, SamplerKind kind) {
    const bool isNumber = kind == SamplerKind::Number;
    const vrnt::TypeHandle sampler =
        takeType(vrntTypeSampler(kind == SamplerKind::Spectrum ? VRNT_SAMPLER_SPECTRUM
                                 : isNumber                    ? VRNT_SAMPLER_FLOAT
                                                               : VRNT_SAMPLER_NORMAL));
    const std::string index = kind == SamplerKind::Spectrum ? "spectrum_texture"
                              : isNumber                    ? "float_texture"
                                                            : "normal_texture";
    const std::string type = "{ " + textOf(sampler) + " sampler; int texcoord; " +
                             textOf(takeType(vrntTypeUVTransformation())) + " uv_transformation; }";
    value.addTexture(type, label, [=, object = texture.object](Record& record) {
      const auto wrap = [](Wrap mode) {
        return mode == Wrap::Clamp ? "CLAMP" : mode == Wrap::Mirror ? "MIRROR" : "REPEAT";
      };
      const std::array<float, 6>& map = plan.map;
      record.set(label + ".sampler." + index + "." + index, object.index)
          .set(label + ".sampler.wrapmode.u", std::string_view(wrap(plan.u)))
          .set(label + ".sampler.wrapmode.v", std::string_view(wrap(plan.v)))
          .set(label + ".texcoord", plan.set)
          .set(label + ".uv_transformation.x", std::array<float, 2>{map[0], map[1]})
          .set(label + ".uv_transformation.y", std::array<float, 2>{map[2], map[3]})
          .set(label + ".uv_transformation.z", std::array<float, 2>{map[4], map[5]});
    });
  }

  // The channel of a texture that holds one of R, G, B and A; -1 if it has no alpha.
  static int channelOf(int wanted, int channels) {
    if (wanted == 3) return channels == 2 || channels == 4 ? 3 : -1;
    return channels < 3 ? 0 : wanted;
  }

  void addNumberTexture(Value& value, const std::string& label,
                        const std::optional<TexturePlan>& plan) const {
    const Texture* const texture = textureOf(plan);
    if (texture == nullptr) return;
    const int channel = channelOf(plan->channel, texture->channels);
    if (channel < 0) return;
    addTexture(value, label + "_texture", *plan, *texture, SamplerKind::Number);
    if (channel != 0) value.add("int", label + "_channel", channel);
  }

  Record valueOf(const MaterialPlan& plan) const {
    Value value;
    value.addSpectrum("base_color", plan.baseColour);
    if (const Texture* const texture = textureOf(plan.baseTexture); texture != nullptr) {
      addTexture(value, "base_color_texture", *plan.baseTexture, *texture, SamplerKind::Spectrum);
    }
    if (plan.roughness) {
      value.add("float", "roughness", *plan.roughness);
      addNumberTexture(value, "roughness", plan.roughnessTexture);
    }
    if (plan.metallic) {
      value.add("float", "metallic", *plan.metallic);
      addNumberTexture(value, "metallic", plan.metallicTexture);
    }
    if (plan.indexOfRefraction) {
      value.add("float", "index_of_refraction", *plan.indexOfRefraction);
    }
    if (plan.transmission) value.add("float", "transmission", *plan.transmission);
    if (plan.emits()) {
      value.addSpectrum("emission", plan.emission);
      value.add("float", "emission_strength", plan.emissionStrength);
      if (const Texture* const texture = textureOf(plan.emissionTexture); texture != nullptr) {
        addTexture(value, "emission_texture", *plan.emissionTexture, *texture,
                   SamplerKind::Spectrum);
      }
    }
    const Texture* const opacity = textureOf(plan.opacityTexture);
    const bool hasOpacity =
        opacity != nullptr && channelOf(plan.opacityTexture->channel, opacity->channels) >= 0;
    if (plan.opacity != 1 || hasOpacity) {
      value.add("float", "opacity", plan.opacity);
      if (hasOpacity) addNumberTexture(value, "opacity", plan.opacityTexture);
      if (plan.opacityCutoff) value.add("float", "opacity_cutoff", *plan.opacityCutoff);
    }
    if (const Texture* const texture = textureOf(plan.normalTexture); texture != nullptr) {
      addTexture(value, "normal_texture", *plan.normalTexture, *texture, SamplerKind::Normal);
      value.add("float", "normal_scale", plan.normalScale);
    }
    if (plan.isDoubleSided) value.add("bool", "double_sided", true);
    return value.make();
  }

  void writeMaterials() {
    std::map<std::string, Object> known;  // by the text of the value
    for (const MaterialPlan& plan : plan_.materials) {
      const Record value = valueOf(plan);
      Object& material = known[value.text()];
      if (material.index < 0) {
        material = scene_.create(VRDM_CLASS_MATERIAL);
        scene_.refer(material, "program", program(VRDM_CLASS_MATERIAL_PROGRAM, kMaterialProgram));
        scene_.setValue(material, value);
        vrdmUpdateTextureReferences(scene_.get(), VRDM_CLASS_MATERIAL, material.index);
      }
      name(material, plan.name);
      materials_.push_back(material);
    }
  }

  // Objects in the world

  void writeGroups() {
    for (const GroupPlan& plan : plan_.groups) {
      const Object group = scene_.create(VRDM_CLASS_TRANSFORMATION_GROUP);
      place(group, plan.place);
      name(group, plan.name);
      groups_.push_back(group);
    }
  }

  void writeLights() {
    for (const LightPlan& plan : plan_.lights) {
      const Object light = scene_.create(VRDM_CLASS_LIGHT);
      Value value;
      value.addSpectrum("emission", plan.emission);
      const char* source = kPoint;
      switch (plan.kind) {
        case LightKind::Point:
          break;
        case LightKind::Spot:
          source = kSpot;
          value.add("float", "inner_cone_angle", plan.innerConeAngle);
          value.add("float", "outer_cone_angle", plan.outerConeAngle);
          break;
        case LightKind::Directional:
          source = kDirectional;
          break;
        case LightKind::Rectangle:
          source = kRectangle;
          break;
        case LightKind::Environment:
          source = kEnvironment;
          break;
      }
      scene_.refer(light, "program", program(VRDM_CLASS_LIGHT_PROGRAM, source));
      scene_.setValue(light, value.make());
      place(light, plan.place);
      tag(light, plan.name);
      if (!plan.isSeenByCamera) {
        scene_.setGroup(light, "Visibility",
                        scene_.group(light, "Visibility").set("visible_to.camera", false));
      }
      emitters_.push_back(light);
    }
  }

  void writeShapes() {
    // All lights shine on all shapes, so one group has them all.
    const bool hasLight = !emitters_.empty() || plan_.hasLight();
    const Object lights = hasLight ? scene_.create(VRDM_CLASS_LIGHT_GROUP) : Object{};
    for (const ShapePlan& plan : plan_.shapes) {
      const Object shape = scene_.create(VRDM_CLASS_SHAPE);
      const auto material = static_cast<std::size_t>(plan.material);
      scene_.refer(shape, "material", materials_[material]);
      scene_.refer(shape, "mesh", meshes_[static_cast<std::size_t>(plan.mesh)]);
      if (hasLight) scene_.refer(shape, "lightGroup", lights);
      if (plan.group >= 0) {
        scene_.refer(shape, "transformationGroup", groups_[static_cast<std::size_t>(plan.group)]);
      }
      tag(shape, plan.name);
      if (plan_.materials[material].hidesBack) {
        scene_.setGroup(shape, "Face culling",
                        scene_.group(shape, "Face culling").set("mode", std::string_view("BACK")));
      }
      if (plan_.materials[material].emits()) emitters_.push_back(shape);
    }
    if (hasLight) {
      scene_.setList(lights, "emitters",
                     vrnt::host::Span<const Object>(emitters_.data(), emitters_.size()));
    }
  }

  void writeCameras() {
    for (const CameraPlan& plan : plan_.cameras) {
      const Object camera = scene_.create(VRDM_CLASS_CAMERA);
      const std::array<float, 2> film{plan.filmWidth, plan.filmHeight};
      Value value;
      if (!plan.isOrthographic) value.add("float", "focal_length", plan.focalLength);
      value.add("float2", "film_size", film);
      scene_.refer(
          camera, "program",
          program(VRDM_CLASS_CAMERA_PROGRAM, plan.isOrthographic ? kOrthographic : kPinhole));
      scene_.setValue(camera, value.make());
      place(camera, plan.place);
      scene_.setGroup(camera, "General",
                      scene_.group(camera, "General").set("near_distance", plan.nearDistance));
      scene_.setGroup(camera, "Background", scene_.group(camera, "Background").set("active", true));
      name(camera, plan.name);
      const Object task = scene_.create(VRDM_CLASS_IMAGE_TASK);
      scene_.refer(task, "camera", camera);
      // A wavelength outside of 400 to 700 nm selects spectral rendering.
      scene_.setGroup(task, "Wavefront",
                      scene_.group(task, "Wavefront").set("spectral_wavelength", 1.0F));
    }
  }

  ScenePlan plan_;
  Notices& notices_;
  Scene scene_;
  WrittenScene out_;
  std::map<const char*, Object> programs_;
  std::vector<Object> meshes_, materials_, groups_, emitters_;
  std::map<std::pair<int, PixelUse>, Texture> textures_;
};

}  // namespace

WrittenScene writeScene(ScenePlan&& plan, Notices& notices) {
  return Writer(std::move(plan), notices).write();
}

}  // namespace vrn_convert
