// A first scene: a textured floor and a lamp. Writes the scene to a file and reads it again.
#include <cstdio>
#include <exception>
#include <string>
#include <vector>
#include <vornath_data/host.hpp>

namespace host = vrnt::host;

// The types of the program parameters. An object with a program has one value of such a type.
const std::string kSpectrum = "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";
const std::string kPinhole = "{ float @default=0.035 focal_length; float2 film_size; }";
const std::string kPainted =
    "{ " + kSpectrum + " reflectance; { int @default=-1 texture_ref; } map; }";
const std::string kSquare = "{ " + kSpectrum + " emission; }";

using Row = std::array<float, 4>;

// A square of 2 m, made of two triangles: the vertex indices, then position, normal and tangent of
// each vertex, then the texture coordinates.
struct FloorMesh {
  std::int32_t corners[2][3] = {{0, 1, 2}, {0, 2, 3}};
  float vertices[4][9] = {{-1, 0, 1, 0, 1, 0, 1, 0, 0},
                          {1, 0, 1, 0, 1, 0, 1, 0, 0},
                          {1, 0, -1, 0, 1, 0, 1, 0, 0},
                          {-1, 0, -1, 0, 1, 0, 1, 0, 0}};
  float coordinates[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
};

host::Scene makeScene() {
  host::Scene scene;

  // Programs: source texts that only the renderer interprets.
  const auto pinhole = scene.addProgram(VRDM_CLASS_CAMERA_PROGRAM, "pinhole");
  const auto painted = scene.addProgram(VRDM_CLASS_MATERIAL_PROGRAM, "painted");
  const auto square = scene.addProgram(VRDM_CLASS_LIGHT_PROGRAM, "square");

  const auto mesh =
      scene.addAsset(vrdmMeshDesc{2, 4, 1, 0}, host::moveBytes(std::vector<FloorMesh>(1)));
  // A chequered image of 2 by 2 pixels.
  std::vector<std::uint8_t> pixels = {230, 230, 230, 40, 40, 40, 40, 40, 40, 230, 230, 230};
  const auto chequers =
      scene.addAsset(vrdmTextureDesc{2, 2, 1, VRNT_TEXTURE_FORMAT_SRGB8, VRNT_TEXTURE_LAYOUT_2D},
                     host::moveBytes(std::move(pixels)));

  // A material refers to its program, has a value with the parameters, and lists the textures that
  // the value refers to.
  const auto material = scene.create(VRDM_CLASS_MATERIAL);
  auto paint = host::Record::ofType(kPainted);
  paint.set("reflectance", host::RgbSpectrum{0.8F, 0.7F, 0.6F})
      .set("map.texture_ref", chequers.index);
  scene.setValue(material, paint);
  scene.refer(material, "program", painted);
  scene.setList(material, "textures", {chequers});

  // A lamp of 0.5 m, 2 m above the floor, that shines down. The rows of the matrix are the images
  // of the x, y and z axes and of the origin.
  const auto light = scene.create(VRDM_CLASS_LIGHT);
  auto place = scene.group(light, "Transformation");
  place.set("matrix.x", Row{0.5F, 0, 0, 0}).set("matrix.y", Row{0, 0, 0.5F, 0});
  place.set("matrix.z", Row{0, -1, 0, 0}).set("matrix.w", Row{0, 2, 0, 1});
  scene.setGroup(light, "Transformation", place);
  auto glow = host::Record::ofType(kSquare);
  glow.set("emission", host::SampledSpectrum{{400, 500, 600}, {8, 10, 12}, 705});
  scene.setValue(light, glow);
  scene.refer(light, "program", square);

  // A light lights the shapes that refer to a light group that contains it.
  const auto lamps = scene.create(VRDM_CLASS_LIGHT_GROUP);
  scene.setList(lamps, "emitters", {light});

  const auto shape = scene.create(VRDM_CLASS_SHAPE);
  scene.refer(shape, "material", material);
  scene.refer(shape, "mesh", mesh);
  scene.refer(shape, "lightGroup", lamps);

  // A camera 4 m in front and 1 m up that looks along its own -z axis, and a task to render its
  // image.
  const auto camera = scene.create(VRDM_CLASS_CAMERA);
  place = scene.group(camera, "Transformation");
  place.set("matrix.w", Row{0, 1, 4, 1});
  scene.setGroup(camera, "Transformation", place);
  auto lens = host::Record::ofType(kPinhole);
  lens.set("film_size", std::array<float, 2>{0.036F, 0.024F});
  scene.setValue(camera, lens);
  scene.refer(camera, "program", pinhole);
  // A new camera has this value: no texture. The default of the group's type would refer to texture
  // 0.
  auto backplate = host::Record::ofType(host::groupType(VRDM_CLASS_CAMERA, "Backplate").get());
  backplate.set("image.spectrum_texture.index", std::int32_t{-1});
  scene.setGroup(camera, "Backplate", backplate);
  const auto task = scene.create(VRDM_CLASS_IMAGE_TASK);
  scene.refer(task, "camera", camera);
  return scene;
}

int main(int argc, char** argv) {
  int status = 0;
  try {
    const std::string path = argc > 1 ? argv[1] : "first_scene.vrnscene";
    makeScene().write(path);
    const auto scene = host::Scene::read(path);
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
      const std::uint32_t count = vrdmContainerSize(scene.get(), i);
      if (count != 0) std::printf("%u %s\n", count, vrdmObjectName(i));
    }
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    status = 1;
  }
  vrntValuesShutdown();
  return status;
}
