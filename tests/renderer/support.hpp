// Scenes for the tests of the renderer, and short ways to render them.
#ifndef VRN_RENDER_TESTS_SUPPORT_HPP
#define VRN_RENDER_TESTS_SUPPORT_HPP

#include <array>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "film/film.hpp"
#include "integrator/path_tracer.hpp"
#include "integrator/render.hpp"
#include "scene_reading/scene_reader.hpp"
#include "vornath_data/host.hpp"

namespace vrn_render_tests {

using namespace vrn_render;
using vrnt::host::FlatSpectrum;
using vrnt::host::Object;
using vrnt::host::Record;
using vrnt::host::SampledSpectrum;
using Float2 = std::array<float, 2>;
using Float4 = std::array<float, 4>;

inline const std::string kSpectrumType =
    "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }";

/// A spectrum of one amplitude from 400 to 705 nm.
inline SampledSpectrum flat(float amplitude) { return {{400.0F}, {amplitude}, 705.0F}; }

inline SampledSpectrum sampled(const Spectrum& amplitudes) {
  SampledSpectrum result;
  for (int band = 0; band < kBands; ++band) {
    result.wavelengths.push_back(bandBegin(band));
    result.amplitudes.push_back(amplitudes[band]);
  }
  result.end = 705.0F;
  return result;
}

/// A quadrilateral, counter-clockwise from its front.
using Quad = std::array<Vec3, 4>;

/// Builds a scene through the public interface.
class Maker {
 public:
  vrnt::host::Scene scene;

  Object material(const Record& value) {
    const Object object = scene.create(VRDM_CLASS_MATERIAL);
    scene.refer(object, "program", program(VRDM_CLASS_MATERIAL_PROGRAM, "material any { }"));
    scene.setValue(object, value);
    return object;
  }
  Object diffuse(const SampledSpectrum& reflectance) {
    return material(
        Record::ofType("{ " + kSpectrumType + " reflectance; }").set("reflectance", reflectance));
  }

  /// Adds a mesh of quadrilaterals with texture coordinates from 0 to 1.
  Object mesh(const std::vector<Quad>& quads) {
    std::vector<float> words;
    const auto put = [&words](const void* word) {
      float copy;
      std::memcpy(&copy, word, sizeof copy);
      words.push_back(copy);
    };
    for (std::uint32_t quad = 0; quad < quads.size(); ++quad) {
      for (const std::uint32_t corner : {0U, 1U, 2U, 0U, 2U, 3U}) {
        const std::uint32_t index = 4 * quad + corner;
        put(&index);
      }
    }
    for (const Quad& quad : quads) {
      const Vec3 normal = normalised(cross(quad[1] - quad[0], quad[3] - quad[0]));
      const Vec3 tangent = normalised(quad[1] - quad[0]);
      for (const Vec3& corner : quad) {
        for (const Vec3& v : {corner, normal, tangent}) {
          put(&v.x);
          put(&v.y);
          put(&v.z);
        }
      }
    }
    for (std::size_t quad = 0; quad < quads.size(); ++quad) {
      words.insert(words.end(), {0, 0, 1, 0, 1, 1, 0, 1});
    }
    const auto count = static_cast<std::int32_t>(quads.size());
    return scene.addAsset(vrdmMeshDesc{2 * count, 4 * count, 1, 0},
                          vrnt::host::moveBytes(std::move(words)));
  }

  Object shape(const Object& material, const Object& mesh) {
    const Object object = scene.create(VRDM_CLASS_SHAPE);
    scene.refer(object, "material", material);
    scene.refer(object, "mesh", mesh);
    return object;
  }
  Object form(const Object& material, const char* form, float size) {
    const Object object = scene.create(VRDM_CLASS_SHAPE);
    scene.refer(object, "material", material);
    scene.setGroup(object, "General",
                   scene.group(object, "General").set("geometric_representation", form));
    place(object, {size, 0, 0}, {0, size, 0}, {0, 0, size}, {0, 0, 0});
    return object;
  }
  void place(const Object& object, Vec3 x, Vec3 y, Vec3 z, Vec3 w) {
    const auto row = [](Vec3 v, float last) { return Float4{v.x, v.y, v.z, last}; };
    scene.setGroup(object, "Transformation",
                   scene.group(object, "Transformation")
                       .set("matrix.x", row(x, 0))
                       .set("matrix.y", row(y, 0))
                       .set("matrix.z", row(z, 0))
                       .set("matrix.w", row(w, 1)));
  }

  Object light(const char* name, const SampledSpectrum& emission) {
    const Object object = scene.create(VRDM_CLASS_LIGHT);
    scene.refer(object, "program",
                program(VRDM_CLASS_LIGHT_PROGRAM, std::string("light ") + name + " { }"));
    scene.setValue(object,
                   Record::ofType("{ " + kSpectrumType + " emission; }").set("emission", emission));
    return object;
  }

  /// Adds a camera at a place that looks along -z, and a task.
  Object camera(Vec3 at, float focalLength = 0.035F, Float2 film = {0.035F, 0.035F},
                const char* name = "pinhole") {
    const Object object = scene.create(VRDM_CLASS_CAMERA);
    scene.refer(object, "program",
                program(VRDM_CLASS_CAMERA_PROGRAM, std::string("camera ") + name + " { }"));
    scene.setValue(object, Record::ofType("{ float focal_length; float2 film_size; }")
                               .set("focal_length", focalLength)
                               .set("film_size", film));
    place(object, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, at);
    task = scene.create(VRDM_CLASS_IMAGE_TASK);
    scene.refer(task, "camera", object);
    return object;
  }

  void bounces(int count) {
    scene.setGroup(task, "Wavefront", scene.group(task, "Wavefront").set("max_bounces", count));
  }

  Object task{};

 private:
  Object program(std::uint32_t objectClass, const std::string& source) {
    return scene.addProgram(objectClass, source);
  }
};

/// A scene that is ready to be rendered.
struct Ready {
  explicit Ready(const vrdmScene_t* scene) : description(readScene(scene, std::nullopt, notices)) {
    description.task.rouletteStart = 4;
  }

  Film render(int width, int height, std::uint32_t samples, std::uint32_t seed = 0, int threads = 0,
              std::vector<int> tiles = {}) {
    const float filmHeight =
        description.camera.filmWidth * static_cast<float>(height) / static_cast<float>(width);
    const PathTracer tracer(description, filmHeight);
    Film film(width, height, true);
    RenderOptions options;
    options.samples = samples;
    options.seed = seed;
    options.threads = threads;
    options.tiles = std::move(tiles);
    vrn_render::render(tracer, description, options, film, nullptr);
    return film;
  }
  Picture picture(int width, int height, std::uint32_t samples, std::uint32_t seed = 0) {
    return render(width, height, samples, seed)
        .finish(description.task,
                {Pass::Depth, Pass::Normal, Pass::Albedo, Pass::Object, Pass::Spectrum});
  }

  Notices notices;
  SceneDescription description;
};

/// The mean of a band over a picture.
inline double meanOfBand(const Picture& picture, int band) {
  double sum = 0;
  const std::size_t pixels = picture.spectrum.size() / kBands;
  for (std::size_t i = 0; i < pixels; ++i) {
    sum += picture.spectrum[i * kBands + static_cast<std::size_t>(band)];
  }
  return sum / static_cast<double>(pixels);
}

}  // namespace vrn_render_tests

#endif
