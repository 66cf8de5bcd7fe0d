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
