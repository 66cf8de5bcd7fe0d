// No light is lost or made: the materials, the furnace, and the light of a lamp.
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

#include "renderer/support.hpp"

namespace {

using namespace vrn_render_tests;

struct NamedMaterial {
  const char* name;
  float reflectance, roughness, metallic, transmission, index;
  bool hasCoat;
};

// White materials of all kinds.
constexpr NamedMaterial kWhite[] = {{"diffuse", 1, 0, 0, 0, 1.5F, false},
                                    {"mirror", 1, 0, 1, 0, 1.5F, true},
                                    {"smooth metal", 1, 0.15F, 1, 0, 1.5F, true},
                                    {"rough metal", 1, 0.5F, 1, 0, 1.5F, true},
                                    {"dull metal", 1, 1, 1, 0, 1.5F, true},
                                    {"coat", 1, 0, 0, 0, 1.5F, true},
                                    {"rough coat", 1, 0.4F, 0, 0, 1.5F, true},
                                    {"dull coat", 1, 1, 0, 0, 1.8F, true},
                                    {"glass", 1, 0, 0, 1, 1.5F, true},
                                    {"rough glass", 1, 0.3F, 0, 1, 1.5F, true},
                                    {"frosted glass", 1, 0.8F, 0, 1, 1.33F, true},
                                    {"mix", 1, 0.5F, 0.3F, 0.4F, 1.5F, true}};

MaterialDescription describe(const NamedMaterial& named) {
  MaterialDescription material;
  material.reflectance.value = Spectrum(named.reflectance);
  material.emission.value = Spectrum();
  material.roughness.value = named.roughness;
  material.metallic.value = named.metallic;
  material.transmission.value = named.transmission;
  material.opacity.value = 1;
  material.indexOfRefraction = named.index;
  material.indices = Spectrum(named.index);
  material.hasCoat = named.hasCoat;
  return material;
}

constexpr int kMiddle = 30;

// The part of the light that goes on from a point, by sampling.
double sampledAlbedo(const Surface& surface, int samples) {
  double sum = 0;
  for (int i = 0; i < samples; ++i) {
    const Sampler sampler(1, 2, 3, static_cast<std::uint32_t>(i));
    const float choice = sampler.one(Choice::Lobe);
    const Scattered next = surface.sample(choice, sampler.two(Choice::Direction));
    if (next.kind != 0) sum += next.weight.at(surface.reflectance()[kMiddle]);
  }
  return sum / samples;
}

TEST(PartsOfATurn, HaveTheirCosineAndSine) {
  for (int i = 0; i <= 4096; ++i) {
    const float part = static_cast<float>(i) / 4096;
    const Vec2 found = turnedBy(part);
    const double angle = 2 * 3.14159265358979 * static_cast<double>(part);
    EXPECT_NEAR(found.x, std::cos(angle), 2e-7) << part;
    EXPECT_NEAR(found.y, std::sin(angle), 2e-7) << part;
  }
}

// What each material needs is computed before the first ray. All tables of 20 indices of refraction
// would take many seconds.
TEST(Materials, OfManyIndicesOfRefractionAreReadySoon) {
  SceneDescription scene;
  for (int i = 0; i < 20; ++i) {
    const float index = 1.301F + 0.01F * static_cast<float>(i);
    scene.materials.push_back(describe({"glass", 1, 0.3F, 0, 1, index, true}));
    scene.materials.push_back(describe({"coat", 1, 0.3F, 0, 0, index, true}));
  }
  const std::clock_t begin = std::clock();
  const auto tables = makeMaterialTables(scene);
  EXPECT_LT(static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC, 2);
  EXPECT_EQ(tables.size(), 40U);
}

TEST(Materials, WhiteOnesScatterAllLight) {
  for (const NamedMaterial& named : kWhite) {
    SceneDescription scene;
    scene.materials = {describe(named)};
    const auto tables = makeMaterialTables(scene);
    for (const float cosine : {1.0F, 0.7F, 0.3F, 0.1F}) {
      for (const float side : {1.0F, -1.0F}) {
        const Vec3 view{std::sqrt(1 - cosine * cosine), 0, cosine * side};
        const Surface surface(scene, scene.materials[0], tables[0], {}, {0, 0, 1}, {0, 0, 1}, view);
        // The tables of what is scattered once are interpolated.
        EXPECT_NEAR(sampledAlbedo(surface, 1 << 14), 1, named.roughness > 0 ? 0.006 : 0.002)
            << named.name << " at a cosine of " << cosine * side;
      }
    }
  }
}

TEST(Materials, DoNotScatterMoreThanTheyReceive) {
  for (NamedMaterial named : kWhite) {
    for (const float reflectance : {0.0F, 0.2F, 0.8F}) {
      named.reflectance = reflectance;
      SceneDescription scene;
      scene.materials = {describe(named)};
      const auto tables = makeMaterialTables(scene);
      for (const float cosine : {0.9F, 0.4F, 0.05F}) {
        const Vec3 view{0, std::sqrt(1 - cosine * cosine), cosine};
        const Surface surface(scene, scene.materials[0], tables[0], {}, {0, 0, 1}, {0, 0, 1}, view);
        EXPECT_LE(sampledAlbedo(surface, 1 << 12), 1.01) << named.name << " " << reflectance;
      }
    }
  }
}

// What evaluate() tells is what sample() does: the densities of a rough surface fill the sphere,
// and the integral of the scattered part is the mean of the samples' weights.
TEST(Materials, SampleDirectionsWithTheDensitiesThatTheyTell) {
  for (const NamedMaterial& named : kWhite) {
    if (named.roughness < 0.3F) continue;
    SceneDescription scene;
    scene.materials = {describe(named)};
    const auto tables = makeMaterialTables(scene);
    for (const float cosine : {0.8F, 0.35F}) {
      const Vec3 view{std::sqrt(1 - cosine * cosine), 0, cosine};
      const Surface surface(scene, scene.materials[0], tables[0], {}, {0, 0, 1}, {0, 0, 1}, view);
      double density = 0;
      double scattered = 0;
      constexpr int kRows = 400, kColumns = 400;
      for (int row = 0; row < kRows; ++row) {
        const float z = -1 + 2 * (static_cast<float>(row) + 0.5F) / kRows;
        for (int column = 0; column < kColumns; ++column) {
          const float angle = 2 * kPi * (static_cast<float>(column) + 0.5F) / kColumns;
          const float radius = std::sqrt(1 - z * z);
          Scattering value;
          density += static_cast<double>(surface.evaluate(
              {radius * std::cos(angle), radius * std::sin(angle), z}, kScatteredRays, value));
          scattered += value.at(surface.reflectance()[kMiddle]);
        }
      }
      const double cell = 4 * 3.14159265358979 / (kRows * kColumns);
      int lost = 0;
      constexpr int kSamples = 1 << 14;
      for (int i = 0; i < kSamples; ++i) {
        const Sampler sampler(7, 0, 0, static_cast<std::uint32_t>(i));
        const float choice = sampler.one(Choice::Lobe);
        lost += surface.sample(choice, sampler.two(Choice::Direction)).kind == 0;
      }
      // A direction below the surface is sampled, but leads nowhere.
      EXPECT_NEAR(density * cell + static_cast<double>(lost) / kSamples, 1, 0.02) << named.name;
      EXPECT_NEAR(scattered * cell, sampledAlbedo(surface, kSamples), 0.02) << named.name;
    }
  }
}

Record glassLike(const NamedMaterial& named) {
  return Record::ofType("{ " + kSpectrumType +
                        " reflectance; float roughness; float metallic; float transmission;"
                        " float index_of_refraction; }")
      .set("reflectance", flat(named.reflectance))
      .set("roughness", named.roughness)
      .set("metallic", named.metallic)
      .set("transmission", named.transmission)
      .set("index_of_refraction", named.index);
}

// In light of the same radiance from everywhere, a white object cannot be seen.
TEST(WhiteFurnace, HidesAWhiteSphere) {
  for (const NamedMaterial& named : kWhite) {
    if (named.roughness > 0) continue;
    Maker maker;
    maker.form(named.hasCoat ? maker.material(glassLike(named)) : maker.diffuse(flat(1)), "SPHERE",
               2);
    maker.light("environment", flat(1));
    maker.camera({0, 0, 3});
    maker.bounces(64);
    Ready ready(maker.scene.get());
    EXPECT_TRUE(ready.notices.messages().empty());
    const Picture picture = ready.picture(12, 12, 256);
    for (const int band : {0, kMiddle, kBands - 1}) {
      EXPECT_NEAR(meanOfBand(picture, band), 1, 0.002) << named.name;
    }
  }
}

TEST(WhiteFurnace, HidesWhiteSpheresOfRoughMaterials) {
  for (const NamedMaterial& named : kWhite) {
    if (named.roughness == 0) continue;
    Maker maker;
    maker.form(maker.material(glassLike(named)), "SPHERE", 2);
    maker.light("environment", flat(1));
    maker.camera({0, 0, 3});
    maker.bounces(64);
    const Picture picture = Ready(maker.scene.get()).picture(12, 12, 1024);
    EXPECT_NEAR(meanOfBand(picture, kMiddle), 1, 0.002) << named.name;
  }
}

// A room with white walls that emit 0.5 and reflect 0.5: each reflection adds half of the one
// before, so the radiance is 1 everywhere.
TEST(WhiteFurnace, FillsAGlowingRoom) {
  Maker maker;
  const Record glowing = Record::ofType("{ " + kSpectrumType + " reflectance; " + kSpectrumType +
                                        " emission; bool double_sided; }")
                             .set("reflectance", flat(0.5F))
                             .set("emission", flat(0.5F))
                             .set("double_sided", true);
  maker.form(maker.material(glowing), "CUBE", 2);
  maker.camera({0.1F, 0.2F, 0.3F});
  maker.bounces(64);
  const Picture picture = Ready(maker.scene.get()).picture(12, 12, 64);
  EXPECT_NEAR(meanOfBand(picture, kMiddle), 1, 0.002);
}

// The irradiance at a point below the middle of a square lamp, by the form factor of a
// rectangle to a parallel surface.
double irradianceUnder(double side, double height, double radiance) {
  const double a = 0.5 * side / height;
  const double root = std::sqrt(1 + a * a);
  const double corner = 2 * (a / root) * std::atan(a / root) / (2 * M_PI);
  return M_PI * radiance * 4 * corner;
}

void expectIrradiance(bool asShape) {
  constexpr float kSide = 0.8F, kHeight = 0.5F, kRadiance = 3, kReflectance = 0.6F;
  Maker maker;
  maker.shape(maker.diffuse(flat(kReflectance)),
              maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}}));
  // The lamp is behind the camera and shines down.
  if (asShape) {
    const Record lamp =
        Record::ofType("{ " + kSpectrumType + " reflectance; " + kSpectrumType + " emission; }")
            .set("reflectance", flat(0))
            .set("emission", flat(kRadiance));
    const float h = kSide / 2;
    maker.shape(
        maker.material(lamp),
        maker.mesh({{{{-h, h, kHeight}, {h, h, kHeight}, {h, -h, kHeight}, {-h, -h, kHeight}}}}));
  } else {
    const Object lamp = maker.light("rectangle", flat(kRadiance));
    maker.place(lamp, {kSide, 0, 0}, {0, -kSide, 0}, {0, 0, -1}, {0, 0, kHeight});
  }
  // A long lens sees a point.
  maker.camera({0, 0, 0.4F}, 1.0F, {0.001F, 0.001F});
  maker.bounces(1);
  const Picture picture = Ready(maker.scene.get()).picture(8, 8, 256);
  const double expected = irradianceUnder(kSide, kHeight, kRadiance) * kReflectance / M_PI;
  EXPECT_NEAR(meanOfBand(picture, kMiddle) / expected, 1, 0.005);
}

TEST(SquareLamp, GivesTheIrradianceOfItsClosedForm) { expectIrradiance(false); }
TEST(SquareLamp, GivesTheSameIrradianceAsAShape) { expectIrradiance(true); }

// A disk and a sphere have closed forms on their axis, too; a sphere as if all came from its
// centre.
TEST(RoundLamps, GiveTheIrradianceOfTheirClosedForms) {
  for (const bool isSphere : {false, true}) {
    constexpr float kRadius = 0.3F, kHeight = 0.7F;
    Maker maker;
    maker.shape(maker.diffuse(flat(1)),
                maker.mesh({{{{-1, -1, 0}, {1, -1, 0}, {1, 1, 0}, {-1, 1, 0}}}}));
    const Object lamp = maker.light(isSphere ? "sphere" : "disk", flat(1));
    maker.place(lamp, {2 * kRadius, 0, 0}, {0, -2 * kRadius, 0}, {0, 0, -2 * kRadius},
                {0, 0, kHeight});
    maker.camera({0, 0, 0.2F}, 1.0F, {0.001F, 0.001F});
    maker.bounces(1);
    const Picture picture = Ready(maker.scene.get()).picture(8, 8, 256);
    const double r2 = kRadius * kRadius;
    const double h2 = kHeight * kHeight;
    const double expected = isSphere ? r2 / h2 : r2 / (r2 + h2);
    EXPECT_NEAR(meanOfBand(picture, kMiddle) / expected, 1, 0.005) << isSphere;
  }
}

// The inverse square law, and the cosine.
TEST(PointLight, GivesItsIntensityOverTheSquareOfTheDistance) {
  Maker maker;
  maker.shape(maker.diffuse(flat(0.5F)),
              maker.mesh({{{{-9, -9, 0}, {9, -9, 0}, {9, 9, 0}, {-9, 9, 0}}}}));
  const Object lamp = maker.light("point", flat(7));
  maker.place(lamp, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {3, 0, 4});
  maker.camera({0, 0, 1}, 1.0F, {0.0001F, 0.0001F});
  maker.bounces(1);
  const Picture picture = Ready(maker.scene.get()).picture(4, 4, 4);
  EXPECT_NEAR(meanOfBand(picture, kMiddle), 7.0 / 25 * 0.8 * 0.5 / M_PI, 1e-4);
}

}  // namespace
