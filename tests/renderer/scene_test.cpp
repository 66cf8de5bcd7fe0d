// Scenes that a renderer can make nothing of are rendered all the same.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "renderer/support.hpp"

namespace {

using namespace vrn_render_tests;

bool isFinite(const Picture& picture) {
  for (const float channel : picture.colour) {
    if (!std::isfinite(channel)) return false;
  }
  return true;
}

TEST(EmptyScene, IsABlackPicture) {
  const vrnt::host::Scene scene;
  Ready ready(scene.get());
  EXPECT_EQ(ready.notices.messages().size(), 2U);
  const Picture picture = ready.picture(4, 4, 2);
  EXPECT_EQ(picture.colour[0], 0);
}

TEST(UnknownMaterial, IsNeutralGreyAndToldOnce) {
  Maker maker;
  const Object odd = maker.material(Record::ofType("{ int strangeness; }"));
  const Object mesh = maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}});
  maker.shape(odd, mesh);
  maker.shape(odd, mesh);
  maker.light("environment", flat(1));
  maker.camera({0, 0, 1}, 0.035F, {1, 1}, "orthographic");
  maker.bounces(1);
  Ready ready(maker.scene.get());
  const std::vector<std::string> expected{
      "the material field 'strangeness' is not used",
      "Material 0 has no field that the renderer understands; it is neutral grey"};
  EXPECT_EQ(ready.notices.messages(), expected);
  EXPECT_NEAR(meanOfBand(ready.picture(4, 4, 256), 20), 0.5, 0.01);
}

// Renders a square of a material in white light from everywhere; returns the mean of a band.
double inWhiteLight(Maker& maker, const Object& material) {
  maker.shape(material, maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}}));
  maker.light("environment", flat(1));
  maker.camera({0, 0, 1}, 0.035F, {1, 1}, "orthographic");
  maker.bounces(1);
  Ready own(maker.scene.get());
  return meanOfBand(own.picture(4, 4, 256), 20);
}

TEST(AMaterialThatOnlyShines, ReflectsNothing) {
  Maker shining;
  EXPECT_NEAR(
      inWhiteLight(shining, shining.material(Record::ofType("{ " + kSpectrumType + " emission; }")
                                                 .set("emission", flat(3)))),
      3, 1e-4);
  Maker dark;
  EXPECT_EQ(inWhiteLight(dark, dark.material(Record::ofType("{ " + kSpectrumType + " emission; }")
                                                 .set("emission", flat(0)))),
            0);
  // With a colour, or with what tells that there is one, it reflects.
  Maker coloured;
  EXPECT_NEAR(
      inWhiteLight(coloured, coloured.material(Record::ofType("{ float reflectance; " +
                                                              kSpectrumType + " emission; }")
                                                   .set("reflectance", 0.25F)
                                                   .set("emission", flat(3)))),
      3.25, 0.01);
  Maker rough;
  EXPECT_GT(inWhiteLight(rough, rough.material(Record::ofType("{ float roughness; " +
                                                              kSpectrumType + " emission; }")
                                                   .set("roughness", 1.0F)
                                                   .set("emission", flat(3)))),
            3.4);
}

TEST(AMissingTexture, IsNeutralGreyUnlessThereIsAColour) {
  const struct {
    std::string type;
    double expected;
    std::string told;
  } kCases[] = {
      {"{ { int texture_ref; } map; }", 0.5, "neutral grey stands for it"},
      {"{ { int texture_ref; } map; float reflectance; }", 0.25, "the colour without it is used"}};
  for (const auto& one : kCases) {
    Maker maker;
    Record record = Record::ofType(one.type);
    record.set("map.texture_ref", 7);
    if (one.expected == 0.25) record.set("reflectance", 0.25F);
    EXPECT_NEAR(inWhiteLight(maker, maker.material(record)), one.expected, 0.01);
    const Ready ready(maker.scene.get());
    const std::vector<std::string> told{"Material 0 names texture 7, which is not there; " +
                                        one.told};
    EXPECT_EQ(ready.notices.messages(), told);
  }
  Maker maker;
  EXPECT_NEAR(inWhiteLight(maker, maker.material(Record::ofType("{ { int texture_ref; } "
                                                                "reflectance; }")
                                                     .set("reflectance.texture_ref", 7))),
              0.5, 0.01);
}

TEST(NoIndexOfRefraction, ReflectsAllLight) {
  Maker maker;
  const Object material =
      maker.material(Record::ofType("{ float reflectance; float ior; float roughness; }")
                         .set("reflectance", 0.0F)
                         .set("ior", 0.0F)
                         .set("roughness", 0.0F));
  EXPECT_NEAR(inWhiteLight(maker, material), 1, 0.001);
}

TEST(ARenderRegionWithoutAnExtent, IsTold) {
  for (const float width : {0.0F, std::numeric_limits<float>::quiet_NaN()}) {
    Maker maker;
    maker.camera({0, 0, 1});
    maker.scene.setGroup(maker.task, "Render region",
                         maker.scene.group(maker.task, "Render region").set("width", width));
    const Ready ready(maker.scene.get());
    const std::vector<std::string> told{
        "ImageTask 0 has a render region without an extent; the whole picture is rendered"};
    EXPECT_EQ(ready.notices.messages(), told);
  }
}

TEST(MaterialParameters, AreReadInEachOfTheLibrarysTypes) {
  for (const std::uint32_t number :
       {VRNT_MATERIAL_PARAM_COLOUR, VRNT_MATERIAL_PARAM_SIMPLE_COLOUR}) {
    Maker maker;
    const vrnt::TypeHandle parameter = vrnt::TypeHandle::adopt(vrntTypeMaterialParam(number));
    const std::string text =
        std::string("{ ") + vrntTypeString(parameter.get()) + " reflectance; }";
    Record record = Record::ofType(text);
    record.set(number == VRNT_MATERIAL_PARAM_COLOUR ? "reflectance.color" : "reflectance.value",
               flat(0.25F));
    if (number == VRNT_MATERIAL_PARAM_SIMPLE_COLOUR)
      record.set("reflectance.texture.texture_ref", -1);
    maker.material(record);
    const Ready ready(maker.scene.get());
    EXPECT_FLOAT_EQ(ready.description.materials[1].reflectance.value[7], 0.25F);
  }
}

TEST(Meshes, StayInTheBytesOfTheScene) {
  Maker maker;
  const Object mesh = maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}});
  const Ready ready(maker.scene.get());
  const unsigned char* const bytes = maker.scene.bytes(mesh).data();
  const MeshDescription& found = ready.description.meshes[0];
  EXPECT_EQ(static_cast<const void*>(found.indices), bytes);
  EXPECT_EQ(static_cast<const void*>(found.vertices), bytes + 6 * 4);
  EXPECT_EQ(static_cast<const void*>(found.coordinates), bytes + 6 * 4 + 4 * 9 * 4);
}

TEST(Keyframes, TurnAtAnEvenSpeed) {
  Maker maker;
  const Object shape = maker.form(maker.diffuse(flat(1)), "CUBE", 1);
  std::vector<Object> keys;
  for (const float angle : {0.0F, kPi / 2}) {
    const Object key = maker.scene.create(VRDM_CLASS_KEYFRAME);
    maker.scene.setGroup(key, "Transformation",
                         maker.scene.group(key, "Transformation")
                             .set("qk", std::sin(angle / 2))
                             .set("qr", std::cos(angle / 2)));
    keys.push_back(key);
  }
  const Object list = maker.scene.create(VRDM_CLASS_KEYFRAME_LIST);
  maker.scene.setList(list, "keyframes", vrnt::host::Span<const Object>(keys.data(), keys.size()));
  maker.scene.refer(shape, "keyframes", list);
  const Ready ready(maker.scene.get());
  const SceneGeometry geometry(ready.description);
  for (const float time : {0.0F, 0.25F, 0.5F, 1.0F}) {
    const Transform place = geometry.placeAt(0, time);
    EXPECT_NEAR(place.x.x, std::cos(time * kPi / 2), 1e-4);
    EXPECT_NEAR(place.x.y, std::sin(time * kPi / 2), 1e-4);
  }
}

// Adds keyframes that turn around z by a multiple of an angle, and move by a multiple of a way.
Object keyframes(Maker& maker, int count, float angle, float way) {
  std::vector<Object> keys;
  for (int i = 0; i < count; ++i) {
    const float half = static_cast<float>(i) * angle / 2;
    const Object key = maker.scene.create(VRDM_CLASS_KEYFRAME);
    maker.scene.setGroup(key, "Transformation",
                         maker.scene.group(key, "Transformation")
                             .set("qk", std::sin(half))
                             .set("qr", std::cos(half))
                             .set("tx", static_cast<float>(i) * way));
    keys.push_back(key);
  }
  const Object list = maker.scene.create(VRDM_CLASS_KEYFRAME_LIST);
  maker.scene.setList(list, "keyframes", vrnt::host::Span<const Object>(keys.data(), keys.size()));
  return list;
}

TEST(Keyframes, MoveToTheLastOfManyInTheirTime) {
  Maker maker;
  const Object shape = maker.form(maker.diffuse(flat(1)), "CUBE", 1);
  maker.scene.refer(shape, "keyframes", keyframes(maker, 201, 0, 1));
  maker.camera({0, 0, 3});
  const Ready ready(maker.scene.get());
  const SceneGeometry geometry(ready.description);
  for (const float time : {0.0F, 0.3F, 0.65F, 0.9F, 1.0F}) {
    EXPECT_NEAR(geometry.placeAt(0, time).w.x, 200 * time, 1e-3) << time;
  }
  const std::vector<std::string> told{
      "Shape 0 has 201 keyframes; it moves along straight lines between 129 times"};
  EXPECT_EQ(ready.notices.messages(), told);
}

// A point on a circle stays on it: of 28 turns by 40 degrees, each is 4 steps of 10 degrees, and
// the straight line between two of them is nearer to the middle by 1 - cos(5 degrees) = 0.004.
TEST(Keyframes, TurnAtAnEvenSpeedIfThereAreMany) {
  Maker maker;
  const float angle = 2 * kPi / 9;
  const Object shape = maker.form(maker.diffuse(flat(1)), "CUBE", 1);
  maker.scene.refer(shape, "keyframes", keyframes(maker, 29, angle, 0));
  maker.camera({0, 0, 3});
  const Ready ready(maker.scene.get());
  EXPECT_TRUE(ready.notices.messages().empty());
  const SceneGeometry geometry(ready.description);
  for (int i = 0; i <= 224; ++i) {
    const float time = static_cast<float>(i) / 224;
    const Transform place = geometry.placeAt(0, time);
    EXPECT_NEAR(place.x.x, std::cos(28 * angle * time), 0.005) << i;
    EXPECT_NEAR(place.x.y, std::sin(28 * angle * time), 0.005) << i;
  }
}

TEST(Keyframes, OfACameraTurnItExactlyHoweverManyThereAre) {
  Maker maker;
  const float angle = 2 * kPi / 9;
  const Object camera = maker.camera({0, 0, 0});
  maker.scene.refer(camera, "keyframes", keyframes(maker, 301, angle, 2));
  Ready ready(maker.scene.get());
  CameraDescription& seen = ready.description.camera;
  for (int i = 0; i <= 900; ++i) {
    seen.shutterOpen = seen.shutterClose = static_cast<float>(i) / 900;
    const PathTracer tracer(ready.description, 0.035F);
    // The ray through the middle of the right edge of the film.
    const Ray ray = tracer.cameraRay({1, 0.5F}, Sampler(0, 0, 0, 0));
    const double turned = 300 * static_cast<double>(angle) * i / 900;
    EXPECT_NEAR(ray.direction.x * std::sqrt(5.0), std::cos(turned), 2e-4) << i;
    EXPECT_NEAR(ray.direction.y * std::sqrt(5.0), std::sin(turned), 2e-4) << i;
    EXPECT_NEAR(ray.origin.x, 600.0 * i / 900, 1e-3) << i;
  }
}

// Fills objects with numbers, codes and references that make no sense.
class Confusion {
 public:
  explicit Confusion(std::uint32_t seed) : random_(seed) {}

  void fill(Maker& maker) {
    vrnt::host::Scene& scene = maker.scene;
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      const std::uint32_t kind = vrdmObjectClass(objectClass);
      if (kind == VRDM_KIND_PROGRAM) {
        for (const char* text :
             {"", "light sphere", "/* unfinished", "rectangle", "light spot { }"}) {
          if (any(2)) scene.addProgram(objectClass, text);
        }
      }
      if (kind != VRDM_KIND_INSTANCE) continue;
      for (int count = any(4); count > 0; --count) scene.create(objectClass);
    }
    const Object mesh = maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}});
    (void)mesh;
    std::vector<std::uint32_t> words(3 * 2 + 9 * 3 + 2 * 3);
    for (std::uint32_t& word : words) word = any(3) ? static_cast<std::uint32_t>(any(5)) : bits();
    scene.addAsset(vrdmMeshDesc{2, 3, 1, 0}, vrnt::host::moveBytes(std::move(words)));
    std::vector<std::uint32_t> pixels(64);
    for (std::uint32_t& word : pixels) word = bits();
    const int formats[] = {2, 14, 27, 67, 83, 30};
    scene.addAsset(vrdmTextureDesc{1, 2, 1, formats[any(6)], any(2) ? 0 : 1},
                   vrnt::host::moveBytes(std::move(pixels)));
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      if (vrdmObjectClass(objectClass) != VRDM_KIND_INSTANCE) continue;
      for (const Object object : scene.objects(objectClass)) confuse(scene, object);
    }
  }

 private:
  std::uint32_t bits() { return static_cast<std::uint32_t>(random_()); }
  int any(int count) { return static_cast<int>(bits() % static_cast<std::uint32_t>(count)); }

  float number() {
    constexpr float kNumbers[] = {0,
                                  1,
                                  -1,
                                  0.5F,
                                  1e30F,
                                  1e-30F,
                                  std::numeric_limits<float>::infinity(),
                                  std::numeric_limits<float>::quiet_NaN()};
    return any(3) ? std::uniform_real_distribution<float>(-2, 2)(random_) : kNumbers[any(8)];
  }

  void confuse(vrnt::host::Scene& scene, const Object& object) {
    vrdmScene_t* const raw = scene.get();
    for (std::uint32_t group = 0; group < vrdmFieldCount(object.objectClass); ++group) {
      vrntValue_t* value = vrdmGetDataValue(raw, object.objectClass, object.index, group);
      if (any(2)) {
        scramble(value);
        vrdmSetDataValue(raw, object.objectClass, object.index, group, value);
      }
      vrntValueDestroy(value);
    }
    for (std::uint32_t slot = 0; slot < vrdmReferenceCount(object.objectClass); ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(object.objectClass, slot);
      if (info.kind == VRDM_REFERENCE_REQUIRED || info.kind == VRDM_REFERENCE_OPTIONAL) {
        vrdmSetReference(raw, object.objectClass, object.index, slot,
                         static_cast<std::uint32_t>(any(5) - 1));
        continue;
      }
      const auto count = static_cast<std::uint32_t>(any(4));
      vrdmSetReferenceCount(raw, object.objectClass, object.index, slot, count);
      std::int32_t* const words =
          vrdmModifyReferenceList(raw, object.objectClass, object.index, slot);
      for (std::uint32_t i = 0; words != nullptr && i < count; ++i) words[i] = any(7) - 3;
    }
    if (!vrdmHasValue(object.objectClass)) return;
    const std::string types[] = {
        "{ " + kSpectrumType + " reflectance; " + kSpectrumType + " emission; float roughness; }",
        "{ float3 emission; float3 base_color; float transmission; float ior; }",
        "{ float focal_length; float2 film_size; float f_number; float focus_distance; }",
        "{ { int texture_ref; } emission; { int texture_ref; } map; float opacity; float "
        "alpha_cutoff; }",
        "{ int what; }"};
    Record record = Record::ofType(types[any(5)]);
    for (const char* label : {"roughness", "transmission", "ior", "focal_length", "f_number",
                              "focus_distance", "opacity", "alpha_cutoff"}) {
      try {
        record.set(label, number());
      } catch (const vrnt::Exception&) {
        continue;  // it has no such field
      }
    }
    for (const char* label : {"emission", "reflectance"}) {
      try {
        record.set(label, flat(number()));
      } catch (const vrnt::Exception&) {
        continue;
      }
    }
    for (const char* label : {"emission.texture_ref", "map.texture_ref"}) {
      try {
        record.set(label, any(4) - 1);
      } catch (const vrnt::Exception&) {
        continue;
      }
    }
    scene.setValue(object, record);
  }

  // Writes each word of a group, but keeps the codes of enums near those that there are.
  void scramble(vrntValue_t*& value) {
    const vrntValueView_t whole{vrntValueType(value), 0};
    const std::size_t words = static_cast<std::size_t>(vrntTypeSize(whole.type)) / 4;
    vrntValuesError_t* error = nullptr;
    auto* const bytes = static_cast<unsigned char*>(vrntValueMap(&value, &whole, &error));
    ASSERT_NE(bytes, nullptr);
    for (std::size_t i = 0; i < words; ++i) {
      if (any(3)) continue;
      std::uint32_t before;
      std::memcpy(&before, bytes + 4 * i, 4);
      const float other = number();
      std::uint32_t word;
      std::memcpy(&word, &other, 4);
      // Small integers are codes, flags and counts.
      if (before < 64) word = static_cast<std::uint32_t>(any(4));
      std::memcpy(bytes + 4 * i, &word, 4);
    }
    vrntValueUnmap(value, &whole);
  }

  std::mt19937 random_;
};

TEST(ConfusedScenes, AreRenderedToFinitePictures) {
  for (std::uint32_t seed = 0; seed < 150; ++seed) {
    Maker maker;
    Confusion(seed).fill(maker);
    Ready ready(maker.scene.get());
    ready.description.task.maxBounces = std::min(ready.description.task.maxBounces, 8);
    EXPECT_TRUE(isFinite(ready.picture(6, 4, 2))) << seed;
  }
}

}  // namespace
