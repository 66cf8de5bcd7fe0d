// Makes a scene of the measured box and writes it to a file.
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "box.hpp"
#include "run_host.hpp"
#include "vornath_data/host.hpp"

namespace cornell_box {
namespace {

using vrnt::host::FlatSpectrum;
using vrnt::host::Object;
using vrnt::host::Record;
using vrnt::host::Scene;
using Float2 = std::array<float, 2>;
using Float4 = std::array<float, 4>;

// The parameter types of the programs, with the fields in the order of the program sources. An
// object that uses a program has a value of its type.
constexpr char kSpectrum[] = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";
constexpr char kPinhole[] =
    R"({ float @default=0.035 @desc="Distance of the film from the hole" @min=0.0)"
    R"( @name="Focal length" @si_unit="m" focal_length;)"
    R"( float2 @desc="Width and height of the film" @name="Film size" @si_unit="m" film_size; })";
const std::string kDiffuse =
    std::string("{ ") + kSpectrum +
    R"( @desc="Fraction of the light that comes back" @name="Reflectance" reflectance; })";
const std::string kGlowing =
    std::string("{ ") + kSpectrum +
    R"( @desc="Fraction of the light that comes back" @name="Reflectance" reflectance; )" +
    kSpectrum + R"( @desc="Light given by the surface, relative" @name="Emission" emission; })";
const std::string kRectangle =
    std::string("{ ") + kSpectrum +
    R"( @desc="Light given by the surface, relative" @name="Emission" emission; })";

// The surface of the lamp has the same reflectance at all wavelengths.
constexpr float kLampReflectance = 0.78F;

// The ceiling has no hole for the lamp, so the lamp hangs a little below it. In metres.
constexpr float kLampDrop = 0.0005F;

class SceneBuilder {
 public:
  SceneBuilder(Scene& scene, std::string programFolder)
      : scene_(scene), programFolder_(std::move(programFolder)) {}

  /// Adds all objects of the box.
  void build(const Box& box) {
    addCamera(box.camera);
    addMaterials(box);
    addTransformationGroups();
    addShapes(box.parts);
    addLamp(box);
    addTask();
    // Small compared with the distance of the lamp from the ceiling.
    scene_.setGroup("Raytracer", scene_.group("Raytracer").set("ray_epsilon", 0.00001F));
  }

 private:
  Object addProgram(std::uint32_t objectClass, const std::string& file) {
    const std::string path = programFolder_ + "/" + file;
    std::ifstream stream(path, std::ios::binary);
    const std::string source{std::istreambuf_iterator<char>(stream), {}};
    if (source.empty()) throw std::runtime_error(path + ": there is no program");
    return scene_.addProgram(objectClass, source);
  }

  // The camera's x axis points to its right, y points up, and it looks along -z.
  void addCamera(const BoxCamera& measured) {
    camera_ = scene_.create(VRDM_CLASS_CAMERA);
    scene_.refer(camera_, "program", addProgram(VRDM_CLASS_CAMERA_PROGRAM, "pinhole.camera"));

    const Vector z = normalised(measured.direction) * -1.0;
    const Vector x = normalised(cross(measured.up, z));
    scene_.setGroup(camera_, "Transformation",
                    scene_.group(camera_, "Transformation")
                        .set("matrix.x", row(x, 0.0F))
                        .set("matrix.y", row(cross(z, x), 0.0F))
                        .set("matrix.z", row(z, 0.0F))
                        .set("matrix.w", row(measured.position, 1.0F)));
    // There is nothing between the camera and the open side of the box.
    scene_.setGroup(camera_, "General",
                    scene_.group(camera_, "General").set("near_distance", 0.5F));
    // The background is black, for rays that leave the box.
    scene_.setGroup(camera_, "Background", scene_.group(camera_, "Background").set("active", true));

    scene_.setValue(camera_,
                    Record::ofType(kPinhole)
                        .set("focal_length", static_cast<float>(measured.focalLength))
                        .set("film_size", Float2{static_cast<float>(measured.filmWidth),
                                                 static_cast<float>(measured.filmHeight)}));
  }

  // Makes one material for each name in the geometry. All painted materials share a program.
  void addMaterials(const Box& box) {
    const Object diffuse = addProgram(VRDM_CLASS_MATERIAL_PROGRAM, "diffuse.material");
    const Object glowing = addProgram(VRDM_CLASS_MATERIAL_PROGRAM, "glowing.material");
    for (const Part& part : box.parts) {
      if (materials_.count(part.material)) continue;
      const Object material = scene_.create(VRDM_CLASS_MATERIAL);
      const auto measured = box.reflectances.find(part.material);
      if (measured != box.reflectances.end()) {
        scene_.refer(material, "program", diffuse);
        scene_.setValue(material, Record::ofType(kDiffuse).set("reflectance", measured->second));
      } else if (part.material == "light") {
        scene_.refer(material, "program", glowing);
        scene_.setValue(material, Record::ofType(kGlowing)
                                      .set("reflectance", FlatSpectrum{kLampReflectance})
                                      .set("emission", box.emission));
      } else {
        throw std::runtime_error("there is no reflectance for the material '" + part.material +
                                 "'");
      }
      materials_[part.material] = material;
    }
  }

  // Makes groups, so that the lamp and each block can be moved on their own.
  void addTransformationGroups() {
    room_ = scene_.create(VRDM_CLASS_TRANSFORMATION_GROUP);
    for (const char* part : {"light", "short_block", "tall_block"}) {
      moved_[part] = scene_.create(VRDM_CLASS_TRANSFORMATION_GROUP);
    }
    const Object lamp = moved_["light"];
    scene_.setGroup(
        lamp, "Transformation",
        scene_.group(lamp, "Transformation").set("matrix.w", Float4{0.0F, -kLampDrop, 0.0F, 1.0F}));
  }

  Object transformationGroupOf(const std::string& part) const {
    const auto found = moved_.find(part);
    return found == moved_.end() ? room_ : found->second;
  }

  void addShapes(const std::vector<Part>& parts) {
    lightGroup_ = scene_.create(VRDM_CLASS_LIGHT_GROUP);
    for (const Part& part : parts) {
      Mesh mesh = buildMesh(part.faces);
      const Object asset =
          scene_.addAsset(mesh.descriptor, vrnt::host::moveBytes(std::move(mesh.words)));

      const Object shape = scene_.create(VRDM_CLASS_SHAPE);
      scene_.refer(shape, "material", materials_.at(part.material));
      scene_.refer(shape, "mesh", asset);
      scene_.refer(shape, "lightGroup", lightGroup_);
      scene_.refer(shape, "transformationGroup", transformationGroupOf(part.name));
      scene_.setGroup(shape, "Target", scene_.group(shape, "Target").set("tag", part.name));
      shapes_[part.name] = shape;
    }
  }

  // The lamp is in the scene twice: as a shape, which the camera sees, and as a light, which lights
  // the box. The groups below prevent that both light the box.
  void addLamp(const Box& box) {
    const Part* part = nullptr;
    for (const Part& each : box.parts) {
      if (each.name == "light") part = &each;
    }
    if (!part) throw std::runtime_error("there is no 'light' in the geometry");
    const Quad& face = part->faces.front();

    const Object light = scene_.create(VRDM_CLASS_LIGHT);
    scene_.refer(light, "program", addProgram(VRDM_CLASS_LIGHT_PROGRAM, "rectangle.light"));
    scene_.refer(light, "transformationGroup", transformationGroupOf("light"));
    scene_.setValue(light, Record::ofType(kRectangle).set("emission", box.emission));
    // The light is the program's unit square, scaled to the lamp, with its front side down.
    const Vector centre = (face[0] + face[1] + face[2] + face[3]) * 0.25;
    const Vector x = face[1] - face[0];
    const Vector y = face[2] - face[1];
    scene_.setGroup(light, "Transformation",
                    scene_.group(light, "Transformation")
                        .set("matrix.x", row(x, 0.0F))
                        .set("matrix.y", row(y, 0.0F))
                        .set("matrix.z", row(normalised(cross(x, y)), 0.0F))
                        .set("matrix.w", row(centre, 1.0F)));
    scene_.setGroup(light, "Target", scene_.group(light, "Target").set("tag", "lamp"));
    scene_.setGroup(light, "Visibility",
                    scene_.group(light, "Visibility").set("visible_to.camera", false));

    const Object shape = shapes_.at("light");
    scene_.setGroup(shape, "Sampling probability",
                    scene_.group(shape, "Sampling probability").set("multiplier", 0.0F));
    scene_.setGroup(shape, "Visibility",
                    scene_.group(shape, "Visibility")
                        .set("visible_to.indirect_illumination", false)
                        .set("cast.indirect_illumination", false));

    scene_.setList(lightGroup_, "emitters", {light, shape});
  }

  void addTask() {
    const Object task = scene_.create(VRDM_CLASS_IMAGE_TASK);
    scene_.refer(task, "camera", camera_);
    // White walls reflect light many times, but after 16 reflections little is left. A wavelength
    // outside 400 to 700 nm selects spectral rendering instead of three colours.
    scene_.setGroup(
        task, "Wavefront",
        scene_.group(task, "Wavefront").set("max_bounces", 16).set("spectral_wavelength", 1.0F));
  }

  // Adding zero turns -0.0 into 0.0.
  static Float4 row(const Vector& vector, float last) {
    return {static_cast<float>(vector[0] + 0.0), static_cast<float>(vector[1] + 0.0),
            static_cast<float>(vector[2] + 0.0), last};
  }

  Scene& scene_;
  const std::string programFolder_;
  Object camera_{}, room_{}, lightGroup_{};
  std::map<std::string, Object> materials_, moved_, shapes_;
};

void printSummary(const Scene& scene, const std::string& path) {
  std::uint32_t total = 0;
  std::string counts;
  for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
    const std::uint32_t count = vrdmContainerSize(scene.get(), objectClass);
    if (count == 0) continue;
    total += count;
    counts += "  " + std::to_string(count) + " " + vrdmObjectName(objectClass) + "\n";
  }
  std::printf("%s: %ju bytes, %u objects\n%s", path.c_str(),
              static_cast<std::uintmax_t>(std::filesystem::file_size(path)), total, counts.c_str());
}

constexpr char kUsage[] =
    "usage: build_scene [option value]... [output]\n"
    "\n"
    "Makes a scene of the measured box and writes it to a file. The default file is\n"
    "cornell_box.vrnscene.\n"
    "\n"
    "  --data FOLDER        the folder of the four tables\n"
    "  --geometry FILE      one table from another place\n"
    "  --reflectance FILE\n"
    "  --light FILE\n"
    "  --camera FILE\n"
    "  --programs FOLDER    the folder of the program sources\n";

int run(const std::vector<std::string>& arguments) {
  std::string data = CORNELL_BOX_FOLDER "/data";
  std::string programs = CORNELL_BOX_FOLDER "/programs";
  std::string output = "cornell_box.vrnscene";
  BoxFiles files;
  const std::map<std::string, std::string*> options = {{"--data", &data},
                                                       {"--programs", &programs},
                                                       {"--geometry", &files.geometry},
                                                       {"--reflectance", &files.reflectance},
                                                       {"--light", &files.light},
                                                       {"--camera", &files.camera}};
  bool outputIsNamed = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--help") {
      std::fputs(kUsage, stdout);
      return 0;
    }
    const auto option = options.find(arguments[i]);
    if (option != options.end() && i + 1 < arguments.size()) {
      *option->second = arguments[++i];
    } else if (arguments[i].rfind("--", 0) == 0 || outputIsNamed) {
      std::fputs(kUsage, stderr);
      return 2;
    } else {
      output = arguments[i];
      outputIsNamed = true;
    }
  }
  if (files.geometry.empty()) files.geometry = data + "/cornell_box_geometry.csv";
  if (files.reflectance.empty()) files.reflectance = data + "/cornell_box_reflectance.csv";
  if (files.light.empty()) files.light = data + "/cornell_box_light.csv";
  if (files.camera.empty()) files.camera = data + "/cornell_box_camera.csv";

  const Box box = readBox(files);
  Scene scene;
  SceneBuilder(scene, programs).build(box);
  scene.write(output);
  printSummary(scene, output);
  return 0;
}

}  // namespace
}  // namespace cornell_box

int main(int count, char** arguments) {
  return cornell_box::runHost("build_scene", count, arguments, cornell_box::run);
}
