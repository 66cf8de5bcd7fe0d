// Pictures whose pixels are known: motion, instances, textures, passes; and what they depend on.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>

#include "film/tile_file.hpp"
#include "renderer/support.hpp"
#include "shading/block_modes.hpp"

namespace {

using namespace vrn_render_tests;

constexpr int kMiddle = 30;

Record glowing(float radiance) {
  return Record::ofType("{ " + kSpectrumType + " reflectance; " + kSpectrumType + " emission; }")
      .set("reflectance", flat(0))
      .set("emission", flat(radiance));
}

Quad square(Vec3 centre, float side) {
  const float h = side / 2;
  return {{{centre.x - h, centre.y - h, centre.z},
           {centre.x + h, centre.y - h, centre.z},
           {centre.x + h, centre.y + h, centre.z},
           {centre.x - h, centre.y + h, centre.z}}};
}

float bandAt(const Picture& picture, int x, int y) {
  return picture.spectrum[static_cast<std::size_t>(y * picture.width + x) * kBands + kMiddle];
}

Object moved(Maker& maker, const std::vector<Vec3>& places) {
  std::vector<Object> keys;
  for (const Vec3& place : places) {
    const Object key = maker.scene.create(VRDM_CLASS_KEYFRAME);
    maker.scene.setGroup(key, "Transformation",
                         maker.scene.group(key, "Transformation")
                             .set("tx", place.x)
                             .set("ty", place.y)
                             .set("tz", place.z));
    keys.push_back(key);
  }
  const Object list = maker.scene.create(VRDM_CLASS_KEYFRAME_LIST);
  maker.scene.setList(list, "keyframes", vrnt::host::Span<const Object>(keys.data(), keys.size()));
  return list;
}

void openShutter(Maker& maker, const Object& camera, float open, float close) {
  maker.scene.setGroup(
      camera, "General",
      maker.scene.group(camera, "General").set("shutter_open", open).set("shutter_close", close));
}

// The standard error of an edge that moves is 0.28 over the root of this: 0.0022.
constexpr int kManySamples = 16384;

// A square of width 1 moves by 1 while the shutter is open: each place is covered for a part of the
// time that grows and falls along a line.
TEST(MotionBlur, CoversEachPixelForTheTimeThatTheShapeIsThere) {
  Maker maker;
  const Object shape =
      maker.shape(maker.material(glowing(1)), maker.mesh({square({-0.5F, 0, 0}, 1)}));
  maker.scene.refer(shape, "keyframes", moved(maker, {{0, 0, 0}, {1, 0, 0}}));
  const Object camera = maker.camera({0, 0, 2}, 0.035F, {3, 3}, "orthographic");
  openShutter(maker, camera, 0, 1);
  const Picture picture = Ready(maker.scene.get()).picture(6, 6, kManySamples);
  const float expected[] = {0, 0.25F, 0.75F, 0.75F, 0.25F, 0};
  for (int x = 0; x < 6; ++x) {
    EXPECT_NEAR(bandAt(picture, x, 2), expected[x], 0.01) << x;
    EXPECT_EQ(bandAt(picture, x, 0), 0);
  }
}

TEST(MotionBlur, OfTheCameraIsThatOfAShapeThatMovesTheOtherWay) {
  Maker maker;
  maker.shape(maker.material(glowing(1)), maker.mesh({square({0.5F, 0, 0}, 1)}));
  const Object camera = maker.camera({0, 0, 2}, 0.035F, {3, 3}, "orthographic");
  maker.scene.refer(camera, "keyframes", moved(maker, {{0, 0, 0}, {1, 0, 0}}));
  openShutter(maker, camera, 0, 1);
  const Picture picture = Ready(maker.scene.get()).picture(6, 6, kManySamples);
  const float expected[] = {0, 0.25F, 0.75F, 0.75F, 0.25F, 0};
  for (int x = 0; x < 6; ++x) EXPECT_NEAR(bandAt(picture, x, 2), expected[x], 0.01) << x;
}

TEST(MotionBlur, IsNotThereIfTheShutterClosesAsItOpens) {
  Maker maker;
  const Object shape =
      maker.shape(maker.material(glowing(1)), maker.mesh({square({-0.5F, 0, 0}, 1)}));
  maker.scene.refer(shape, "keyframes", moved(maker, {{0, 0, 0}, {1, 0, 0}}));
  const Object camera = maker.camera({0, 0, 2}, 0.035F, {3, 3}, "orthographic");
  openShutter(maker, camera, 0.5F, 0.5F);
  const Picture picture = Ready(maker.scene.get()).picture(6, 6, 16);
  const float expected[] = {0, 0, 1, 1, 0, 0};
  for (int x = 0; x < 6; ++x) EXPECT_FLOAT_EQ(bandAt(picture, x, 2), expected[x]) << x;
}

// Two shapes and one mesh; one is moved by its matrix, the other by its group, which applies last.
TEST(Instances, StandWhereTheirMatricesAndGroupsPutThem) {
  Maker maker;
  const Object mesh = maker.mesh({square({0, 0, 0}, 1)});
  const Object bright = maker.material(glowing(2));
  const Object dim = maker.material(glowing(1));
  const Object left = maker.shape(bright, mesh);
  maker.place(left, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {-1, 1, 0});
  const Object right = maker.shape(dim, mesh);
  maker.place(right, {2, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0.5F, 0, 0});
  const Object group = maker.scene.create(VRDM_CLASS_TRANSFORMATION_GROUP);
  maker.place(group, {0, 1, 0}, {-1, 0, 0}, {0, 0, 1}, {1, -1, 0.5F});
  maker.scene.refer(right, "transformationGroup", group);
  maker.camera({0, 0, 3}, 0.035F, {3, 3}, "orthographic");
  const Picture picture = Ready(maker.scene.get()).picture(3, 3, 16);
  const float expected[3][3] = {{2, 0, 0}, {0, 0, 1}, {0, 0, 1}};
  for (int y = 0; y < 3; ++y) {
    for (int x = 0; x < 3; ++x) EXPECT_FLOAT_EQ(bandAt(picture, x, y), expected[y][x]) << x << y;
  }
  EXPECT_FLOAT_EQ(picture.depth[0], 3);
  EXPECT_FLOAT_EQ(picture.depth[5], 2.5F);
  EXPECT_TRUE(std::isinf(picture.depth[1]));
  EXPECT_EQ(picture.object[0], static_cast<std::uint32_t>(left.index) + 1);
  EXPECT_EQ(picture.object[8], static_cast<std::uint32_t>(right.index) + 1);
  EXPECT_EQ(picture.object[4], 0U);
  EXPECT_FLOAT_EQ(picture.normal[2], 1);
}

// Lamps do not stop rays, so all that lie behind each other are seen.
TEST(Lamps, BehindEachOtherAddTheirLight) {
  for (const bool isSpread : {true, false}) {
    Maker maker;
    constexpr int kLamps = 40;
    for (int i = 0; i < kLamps; ++i) {
      const Object lamp = maker.light("rectangle", flat(1));
      maker.place(lamp, {1, 0, 0}, {0, 1, 0}, {0, 0, 1},
                  {0, 0, isSpread ? -0.1F * static_cast<float>(i) : 0});
    }
    maker.camera({0, 0, 3}, 0.035F, {0.5F, 0.5F}, "orthographic");
    const Picture picture = Ready(maker.scene.get()).picture(2, 2, 4);
    for (int x = 0; x < 2; ++x) EXPECT_FLOAT_EQ(bandAt(picture, x, 0), kLamps);
  }
}

TEST(Forms, HaveTheirSilhouettes) {
  const struct {
    const char* name;
    double area;
  } kForms[] = {{"RECTANGLE", 1},
                {"DISK", M_PI / 4},
                {"SPHERE", M_PI / 4},
                {"CYLINDER", M_PI / 4},
                {"CUBE", 1}};
  for (const auto& form : kForms) {
    Maker maker;
    maker.form(maker.material(glowing(1)), form.name, 1);
    maker.camera({0, 0, 3}, 0.035F, {1.25F, 1.25F}, "orthographic");
    const Picture picture = Ready(maker.scene.get()).picture(16, 16, 64);
    EXPECT_NEAR(meanOfBand(picture, kMiddle) * 1.25 * 1.25, form.area, 0.004) << form.name;
  }
}

// The picture of a square with an image is the image.
TEST(Textures, ShowTheirPixels) {
  Maker maker;
  const std::vector<unsigned char> pixels{255, 0, 0, 0, 255, 0, 0, 0, 255, 188, 188, 188};
  const Object texture = maker.scene.addAsset(
      vrdmTextureDesc{2, 2, 1, VRNT_TEXTURE_FORMAT_SRGB8, VRNT_TEXTURE_LAYOUT_2D},
      vrnt::host::copyBytes(pixels.data(), pixels.size()));
  const Object material = maker.material(
      Record::ofType("{ " + kSpectrumType + " reflectance; { int texture_ref; } map; }")
          .set("reflectance", flat(0.5F))
          .set("map.texture_ref", texture.index));
  maker.shape(material, maker.mesh({square({0, 0, 0}, 1)}));
  maker.light("environment", flat(1));
  maker.camera({0, 0, 3}, 0.035F, {1, 1}, "orthographic");
  maker.bounces(1);
  Ready ready(maker.scene.get());
  EXPECT_TRUE(ready.notices.messages().empty());
  const Picture picture = ready.picture(2, 2, 1024);
  // Between the middles of the image's pixels their colours mix, also across its border, since it
  // repeats. The first row of the image is at v = 0, which is below.
  constexpr double kGrey = 0.50289;  // 188 without its transfer curve
  constexpr double kTexels[2][2][3] = {{{1, 0, 0}, {0, 1, 0}}, {{0, 0, 1}, {kGrey, kGrey, kGrey}}};
  constexpr int kSteps = 32;
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 2; ++x) {
      Spectrum expected;
      for (int i = 0; i < kSteps * kSteps; ++i) {
        const double u = x - 0.5 + (i % kSteps + 0.5) / kSteps;
        const double v = (1 - y) - 0.5 + (i / kSteps + 0.5) / kSteps;
        const int column = static_cast<int>(std::floor(u)), row = static_cast<int>(std::floor(v));
        double rgb[3] = {};
        for (int corner = 0; corner < 4; ++corner) {
          const double s = corner & 1 ? u - column : 1 - (u - column);
          const double t = corner & 2 ? v - row : 1 - (v - row);
          for (std::size_t k = 0; k < 3; ++k) {
            rgb[k] += s * t * kTexels[(row + (corner >> 1)) & 1][(column + (corner & 1)) & 1][k];
          }
        }
        expected.add(
            Colours::get().reflectance({static_cast<float>(rgb[0]), static_cast<float>(rgb[1]),
                                        static_cast<float>(rgb[2])}),
            0.5F / (kSteps * kSteps));
      }
      for (const int band : {2, 30, 50}) {
        EXPECT_NEAR(picture.spectrum[static_cast<std::size_t>(2 * y + x) * kBands +
                                     static_cast<std::size_t>(band)],
                    expected[band], 0.005);
      }
    }
  }
}

TEST(Textures, OfAllFormatsThatHavePixelsAreRead) {
  for (int format = 0; format < 36; ++format) {
    if (format % 12 == 5) continue;
    const std::vector<unsigned char> bytes(64, 0);
    TextureDescription texture;
    texture.bytes = bytes.data();
    texture.width = texture.height = 2;
    texture.format = format;
    EXPECT_EQ(textureProblem(texture, 64), "") << format;
    EXPECT_EQ(texelAt(texture, 1, 1, 0)[0], 0) << format;
  }
  const float pixels[] = {0.25F, 0.5F, 2, 0.75F};
  TextureDescription texture;
  texture.bytes = reinterpret_cast<const unsigned char*>(pixels);
  texture.width = texture.height = 1;
  texture.format = VRNT_TEXTURE_FORMAT_RGBA32;
  EXPECT_EQ(texelAt(texture, 0, 0, 0), (Texel{0.25F, 0.5F, 2, 0.75F}));
  const std::uint16_t halves[] = {0x3800, 0x4000};
  texture.bytes = reinterpret_cast<const unsigned char*>(halves);
  texture.format = VRNT_TEXTURE_FORMAT_LA16;
  EXPECT_EQ(texelAt(texture, 0, 0, 0), (Texel{0.5F, 0.5F, 0.5F, 2}));
}

TEST(Textures, InBlocksAreDecoded) {
  // Red and blue, and the four codes in the first row.
  const unsigned char block[] = {0x00, 0xf8, 0x1f, 0x00, 0xe4, 0, 0, 0};
  TextureDescription texture;
  texture.bytes = block;
  texture.width = texture.height = 4;
  texture.format = VRNT_TEXTURE_FORMAT_BC1U;
  ASSERT_EQ(textureProblem(texture, 8), "");
  EXPECT_EQ(texelAt(texture, 0, 0, 0), (Texel{1, 0, 0, 1}));
  EXPECT_EQ(texelAt(texture, 1, 0, 0), (Texel{0, 0, 1, 1}));
  EXPECT_NEAR(texelAt(texture, 2, 0, 0)[0], 2.0 / 3, 1e-6);
  EXPECT_NEAR(texelAt(texture, 3, 0, 0)[2], 2.0 / 3, 1e-6);
  EXPECT_EQ(texelAt(texture, 0, 3, 0), (Texel{1, 0, 0, 1}));
  const unsigned char number[] = {255, 0, 0x88, 0, 0, 0, 0, 0};  // the codes 0, 1 and 2
  texture.bytes = number;
  texture.format = VRNT_TEXTURE_FORMAT_BC4;
  EXPECT_FLOAT_EQ(texelAt(texture, 0, 0, 0)[0], 1);
  EXPECT_FLOAT_EQ(texelAt(texture, 1, 0, 0)[0], 0);
  EXPECT_NEAR(texelAt(texture, 2, 0, 0)[0], 6.0 / 7, 1e-6);
}

// Blocks of each mode, from a simple generator. The sums are those of the pixels that OpenImageIO
// reads from such blocks in a DDS file; each channel counts by its place, so that no two may be
// exchanged.
TEST(Textures, InBlocksWithModesAreThoseOfAnotherDecoder) {
  std::uint32_t state = 1;
  const auto makeBlocks = [&state](unsigned code, unsigned bits) {
    std::vector<unsigned char> blocks(std::size_t{64} * 16);
    for (unsigned char& byte : blocks) {
      state = state * 1664525U + 1013904223U;
      byte = static_cast<unsigned char>(state >> 24);
    }
    for (std::size_t i = 0; i < blocks.size(); i += 16) {
      blocks[i] = static_cast<unsigned char>((blocks[i] & ~((1U << bits) - 1)) | code);
    }
    return blocks;
  };
  const auto sum = [](const std::vector<unsigned char>& blocks, std::size_t channels, auto decode,
                      auto store) {
    std::uint32_t result = 0;
    for (std::size_t at = 0; at < blocks.size(); at += 16) {
      for (int pixel = 0; pixel < 16; ++pixel) {
        const std::array<float, 4> found = decode(blocks.data() + at, pixel);
        for (std::size_t channel = 0; channel < channels; ++channel) {
          result += store(found[channel]) * (4 * static_cast<std::uint32_t>(pixel) +
                                             static_cast<std::uint32_t>(channel) + 1);
        }
      }
    }
    return result;
  };
  const std::uint32_t sums7[] = {21336514, 21114541, 21603646, 20975877,
                                 17443984, 17028976, 16811200, 16664976};
  for (unsigned mode = 0; mode < 8; ++mode) {
    EXPECT_EQ(sum(makeBlocks(1U << mode, mode + 1), 4, decodeBC7,
                  [](float code) { return static_cast<std::uint32_t>(std::lround(code * 255)); }),
              sums7[mode])
        << mode;
  }
  const auto bitsOfHalf = [](float number) {
    int exponent = 0;
    const float part = std::frexp(number, &exponent);  // from 0.5 to 1
    if (number == 0 || exponent < -13) return static_cast<std::uint32_t>(std::ldexp(number, 24));
    return static_cast<std::uint32_t>((exponent + 14) << 10) +
           static_cast<std::uint32_t>((2 * part - 1) * 1024);
  };
  const unsigned codes[] = {0, 1, 2, 6, 10, 14, 18, 22, 26, 30, 3, 7, 11, 15};
  const std::uint32_t sums6[] = {1623490212, 1526915223, 1507674384, 1539876361, 1533876758,
                                 1635317289, 1566106058, 1631019593, 1700265862, 1552563307,
                                 1668946283, 1491668066, 1499434419, 1605665005};
  for (std::size_t mode = 0; mode < 14; ++mode) {
    EXPECT_EQ(sum(makeBlocks(codes[mode], codes[mode] < 2 ? 2 : 5), 3, decodeBC6H, bitsOfHalf),
              sums6[mode])
        << codes[mode];
  }
  const std::vector<unsigned char> reserved = makeBlocks(0, 8);
  EXPECT_EQ(decodeBC7(reserved.data(), 3), (Texel{0, 0, 0, 0}));
  TextureDescription texture;
  texture.bytes = reserved.data();
  texture.width = texture.height = 8;
  for (const int format : {VRNT_TEXTURE_FORMAT_BC6H, VRNT_TEXTURE_FORMAT_BC7}) {
    texture.format = format;
    EXPECT_EQ(textureProblem(texture, 64), "");
    EXPECT_NE(textureProblem(texture, 63), "");
  }
}

// A red square before a green one, with flags and sides that hide it.
TEST(Visibility, HidesShapesFromTheRaysThatTheirFieldsName) {
  for (const char* field : {"visible_to.camera", "visible_to.indirect_illumination"}) {
    Maker maker;
    const Object shape =
        maker.shape(maker.material(glowing(1)), maker.mesh({square({0, 0, 0}, 1)}));
    maker.scene.setGroup(shape, "Visibility",
                         maker.scene.group(shape, "Visibility").set(field, false));
    maker.camera({0, 0, 3}, 0.035F, {1, 1}, "orthographic");
    const Picture picture = Ready(maker.scene.get()).picture(2, 2, 4);
    EXPECT_EQ(bandAt(picture, 0, 0), std::string(field) == "visible_to.camera" ? 0 : 1);
  }
  for (const char* mode : {"FRONT", "BACK"}) {
    Maker maker;
    const Object shape =
        maker.shape(maker.material(glowing(1)), maker.mesh({square({0, 0, 0}, 1)}));
    maker.scene.setGroup(shape, "Face culling",
                         maker.scene.group(shape, "Face culling").set("mode", mode));
    maker.camera({0, 0, 3}, 0.035F, {1, 1}, "orthographic");
    const Picture picture = Ready(maker.scene.get()).picture(2, 2, 4);
    EXPECT_EQ(bandAt(picture, 0, 0), std::string(mode) == "FRONT" ? 0 : 1);
  }
}

TEST(LightGroups, DecideWhichLightsShineOnAShape) {
  Maker maker;
  const Object wall = maker.mesh({square({0, 0, 0}, 4)});
  const Object shape = maker.shape(maker.diffuse(flat(1)), wall);
  const Object lit = maker.light("point", flat(1));
  maker.place(lit, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1});
  const Object other = maker.light("point", flat(100));
  maker.place(other, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 1});
  const Object group = maker.scene.create(VRDM_CLASS_LIGHT_GROUP);
  maker.scene.setList(group, "emitters", {lit});
  maker.scene.refer(shape, "lightGroup", group);
  maker.camera({0, 0, 0.5F}, 1, {0.001F, 0.001F});
  maker.bounces(1);
  EXPECT_NEAR(meanOfBand(Ready(maker.scene.get()).picture(2, 2, 16), kMiddle), 1 / M_PI, 1e-3);
}

TEST(CutPlanes, TakeAwayWhatLiesBeforeThem) {
  Maker maker;
  maker.shape(maker.material(glowing(1)), maker.mesh({square({0, 0, 0}, 2)}));
  maker.scene.setGroup("Cut planes", maker.scene.group("Cut planes")
                                         .set("planes[0].normal", std::array<float, 3>{1, 0, 0})
                                         .set("planes[0].enabled", true));
  maker.camera({0, 0, 3}, 0.035F, {2, 2}, "orthographic");
  const Picture picture = Ready(maker.scene.get()).picture(2, 2, 4);
  EXPECT_EQ(bandAt(picture, 0, 0), 1);
  EXPECT_EQ(bandAt(picture, 1, 0), 0);
}

// In metres of the scene, however large the camera is.
TEST(NearDistance, IsNotScaledWithTheCamera) {
  Maker maker;
  maker.shape(maker.material(glowing(1)), maker.mesh({square({0, 0, 0}, 1)}));
  maker.shape(maker.material(glowing(2)), maker.mesh({square({0, 0, -1}, 9)}));
  const Object camera = maker.camera({0, 0, 3});
  maker.place(camera, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {0, 0, 3});
  for (const bool isBehind : {false, true}) {
    maker.scene.setGroup(
        camera, "General",
        maker.scene.group(camera, "General").set("near_distance", isBehind ? 3.1F : 2.9F));
    EXPECT_FLOAT_EQ(bandAt(Ready(maker.scene.get()).picture(7, 7, 4), 3, 3), isBehind ? 2 : 1);
  }
}

// It appears at its first time and disappears at its last one.
TEST(ShapesWithATime, AreThereForThatTime) {
  Maker maker;
  const Object shape = maker.shape(maker.material(glowing(1)), maker.mesh({square({0, 0, 0}, 1)}));
  maker.scene.setGroup(
      shape, "General",
      maker.scene.group(shape, "General").set("time_start", 0.25F).set("time_end", 0.75F));
  const Object camera = maker.camera({0, 0, 3}, 0.035F, {0.5F, 0.5F}, "orthographic");
  for (const float time : {0.0F, 0.2F, 0.3F, 0.7F, 0.8F, 1.0F}) {
    openShutter(maker, camera, time, time);
    EXPECT_FLOAT_EQ(bandAt(Ready(maker.scene.get()).picture(2, 2, 4), 0, 0),
                    time > 0.25F && time < 0.75F ? 1 : 0)
        << time;
  }
  openShutter(maker, camera, 0, 1);
  EXPECT_NEAR(bandAt(Ready(maker.scene.get()).picture(2, 2, kManySamples), 0, 0), 0.5, 0.01);
}

// The middle of a square, lit from everywhere, with a texture as wide as the view on its sets.
TEST(Textures, UseTheSetOfCoordinatesThatIsAskedFor) {
  constexpr int kSets = 12;
  const float pixels[] = {0.2F, 0.8F};
  for (const int wanted : {0, 3, 4, 7, 11}) {
    Maker maker;
    const Object texture = maker.scene.addAsset(
        vrdmTextureDesc{2, 1, 1, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_2D},
        vrnt::host::copyBytes(reinterpret_cast<const unsigned char*>(pixels), sizeof pixels));
    const Object material =
        maker.material(Record::ofType("{ { int texture_ref; int texcoord; } map; }")
                           .set("map.texture_ref", texture.index)
                           .set("map.texcoord", wanted));
    std::vector<float> words(6);
    const std::uint32_t corners[] = {0, 1, 2, 0, 2, 3};
    std::memcpy(words.data(), corners, sizeof corners);
    for (const Vec3& p : square({0, 0, 0}, 8)) {
      words.insert(words.end(), {p.x, p.y, p.z, 0, 0, 1, 1, 0, 0});
    }
    // The middle of the left pixel; in the set that is wanted, of the right one.
    for (int set = 0; set < kSets; ++set) {
      for (int corner = 0; corner < 4; ++corner) {
        words.insert(words.end(), {set == wanted ? 0.75F : 0.25F, 0.5F});
      }
    }
    const Object mesh =
        maker.scene.addAsset(vrdmMeshDesc{2, 4, kSets, 0}, vrnt::host::moveBytes(std::move(words)));
    maker.shape(material, mesh);
    maker.light("environment", flat(1));
    maker.camera({0, 0, 3}, 0.035F, {0.01F, 0.01F}, "orthographic");
    maker.bounces(1);
    Ready ready(maker.scene.get());
    EXPECT_TRUE(ready.notices.messages().empty());
    EXPECT_NEAR(meanOfBand(ready.picture(2, 2, 256), kMiddle), 0.8, 0.01) << wanted;
  }
}

// Half of the light passes a surface of half opacity, in both ways to a point.
// A glowing square of side 1 with decals, seen as 4 by 4 pixels along parallel rays.
class Decals : public testing::Test {
 protected:
  void SetUp() override {
    shape_ = maker_.shape(maker_.material(glowing(1)), maker_.mesh({square({0, 0, 0}, 1)}));
    maker_.camera({0, 0, 3}, 0.035F, {1, 1}, "orthographic");
    maker_.bounces(0);
  }
  // A decal of side 1/2 around a place, that glows in front and, ten times as bright, on the back.
  Object decal(Vec3 at, float radiance, float opacity = 1) {
    const auto material = [&](float bright) {
      return maker_.material(Record::ofType("{ " + kSpectrumType + " reflectance; " +
                                            kSpectrumType +
                                            " emission; float opacity; bool "
                                            "double_sided; }")
                                 .set("reflectance", flat(0))
                                 .set("emission", flat(bright))
                                 .set("opacity", opacity)
                                 .set("double_sided", true));
    };
    const Object result = maker_.scene.create(VRDM_CLASS_DECAL);
    maker_.scene.refer(result, "frontMaterial", material(radiance));
    maker_.scene.refer(result, "backMaterial", material(10 * radiance));
    maker_.place(result, {0.5F, 0, 0}, {0, 0.5F, 0}, {0, 0, 0.5F}, at);
    const std::array<float, 3> low{-0.5F, -0.5F, -0.5F}, high{0.5F, 0.5F, 0.5F};
    maker_.scene.setGroup(result, "Projection",
                          maker_.scene.group(result, "Projection")
                              .set("clipping_box.min", low)
                              .set("clipping_box.max", high));
    return result;
  }
  void project(const Object& decal, const char* field, const char* constructor) {
    maker_.scene.setGroup(decal, "Projection",
                          maker_.scene.group(decal, "Projection").set(field, constructor));
  }
  // Lays decals on the shape, in their order.
  void lay(const std::vector<Object>& decals, bool onFront = true) {
    const Object list = maker_.scene.create(VRDM_CLASS_DECAL_LIST);
    const auto slot = std::uint32_t{0};
    const vrdmScene_t* const scene = maker_.scene.get();
    auto* const changed = const_cast<vrdmScene_t*>(scene);
    vrdmSetReference(changed, VRDM_CLASS_DECAL_LIST, list.index, slot,
                     static_cast<std::uint32_t>(decals.size()));
    std::int32_t* const words =
        vrdmModifyReferenceList(changed, VRDM_CLASS_DECAL_LIST, list.index, slot);
    for (std::size_t i = 0; i < decals.size(); ++i) {
      words[i] = onFront ? ~decals[i].index : decals[i].index;
    }
    maker_.scene.refer(shape_, "decals", list);
  }
  Picture picture(std::uint32_t samples = 4) {
    return Ready(maker_.scene.get()).picture(4, 4, samples);
  }

  Maker maker_;
  Object shape_{};
};

TEST_F(Decals, CoverWhatIsInTheirClippingBox) {
  lay({decal({0, 0, 0}, 3)});
  const Picture seen = picture();
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 4; ++x) {
      const bool isInside = x >= 1 && x <= 2 && y >= 1 && y <= 2;
      EXPECT_FLOAT_EQ(bandAt(seen, x, y), isInside ? 3.0F : 1.0F) << x << " " << y;
    }
  }
}

TEST_F(Decals, LieOverEachOtherInTheirOrder) {
  lay({decal({-0.25F, 0, 0}, 3), decal({0.25F, 0, 0}, 5), decal({0.25F, 0.25F, 0}, 7, 0.5F)});
  const Picture seen = picture(1024);
  EXPECT_FLOAT_EQ(bandAt(seen, 0, 2), 3);
  EXPECT_FLOAT_EQ(bandAt(seen, 3, 2), 5);
  EXPECT_NEAR(bandAt(seen, 3, 1), 6, 0.01);  // half of 7, and half of what is below
  EXPECT_NEAR(bandAt(seen, 3, 0), 4, 0.01);  // half of 7, and half of the shape
}

TEST_F(Decals, OnTheBackAreSeenFromThere) {
  const Object one = decal({0, 0, 0}, 3);
  project(one, "direction", "BIDIRECTIONAL");
  lay({one}, false);
  EXPECT_FLOAT_EQ(bandAt(picture(), 1, 1), 1);
  // Turned round, the shape is dark but for its decal.
  maker_.place(shape_, {-1, 0, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 0});
  const Picture seen = picture();
  EXPECT_FLOAT_EQ(bandAt(seen, 1, 1), 30);
  EXPECT_FLOAT_EQ(bandAt(seen, 0, 0), 0);
}

TEST_F(Decals, FallFromTheSideThatTheirDirectionSays) {
  const Object one = decal({0, 0, 0}, 3);
  lay({one});
  project(one, "direction", "INSIDE_OUT");
  EXPECT_FLOAT_EQ(bandAt(picture(), 1, 1), 1);
  maker_.place(one, {-0.5F, 0, 0}, {0, 0.5F, 0}, {0, 0, -0.5F}, {0, 0, 0});
  EXPECT_FLOAT_EQ(bandAt(picture(), 1, 1), 3);
  project(one, "direction", "OUTSIDE_IN");
  EXPECT_FLOAT_EQ(bandAt(picture(), 1, 1), 1);
  project(one, "direction", "BIDIRECTIONAL");
  EXPECT_FLOAT_EQ(bandAt(picture(), 1, 1), 3);
}

TEST(Projections, HaveTheCoordinatesOfTheirForms) {
  const auto at = [](Projection projection, Vec3 point, Vec3 normal) {
    const Vec2 uv = project(projection, point, normal).coordinates;
    return std::array<float, 2>{std::round(uv.x * 1e4F) / 1e4F, std::round(uv.y * 1e4F) / 1e4F};
  };
  using Uv = std::array<float, 2>;
  EXPECT_EQ(at(Projection::Planar, {0.25F, -0.5F, 7}, {0, 0, 1}), (Uv{0.75F, 0}));
  EXPECT_EQ(at(Projection::Box, {0.5F, 0.1F, 0.2F}, {1, 0, 0}), (Uv{0.3F, 0.6F}));
  EXPECT_EQ(at(Projection::Box, {0.1F, 0.5F, 0.2F}, {0, 1, 0}), (Uv{0.6F, 0.3F}));
  EXPECT_EQ(at(Projection::Cubic, {0.1F, 0.2F, -0.5F}, {1, 0, 0}), (Uv{0.4F, 0.7F}));
  EXPECT_EQ(at(Projection::Spherical, {0, 0.5F, 0}, {0, 1, 0}), (Uv{0.75F, 0.5F}));
  EXPECT_EQ(at(Projection::Spherical, {0, 0, 2}, {0, 0, 1}), (Uv{0.5F, 1}));
  EXPECT_EQ(at(Projection::Cylindrical, {0, -3, 0.25F}, {0, 1, 0}), (Uv{0.25F, 0.75F}));
  EXPECT_EQ(at(Projection::Radial, {0.3F, 0.4F, 9}, {0, 0, 1})[1], 1);
}

// A square without use for the coordinates of its mesh shows the image that lies in its plane.
TEST(ProceduralCoordinates, ReplaceThoseOfTheMesh) {
  Maker maker;
  const float pixels[] = {0.2F, 0.8F};
  const Object texture = maker.scene.addAsset(
      vrdmTextureDesc{2, 1, 1, VRNT_TEXTURE_FORMAT_L32, VRNT_TEXTURE_LAYOUT_2D},
      vrnt::host::copyBytes(reinterpret_cast<const unsigned char*>(pixels), sizeof pixels));
  const Object material = maker.material(
      Record::ofType("{ { int texture_ref; } map; }").set("map.texture_ref", texture.index));
  const Object shape = maker.shape(material, maker.mesh({square({0, 0, 0}, 8)}));
  // The image is as wide as the view, and its middle is that of the left pixel.
  maker.scene.setGroup(shape, "Procedural UVs",
                       maker.scene.group(shape, "Procedural UVs")
                           .set("mode", "PLANAR")
                           .set("uv_transformation.w", Float4{-0.25F, 0, 0, 1}));
  maker.light("environment", flat(1));
  maker.camera({0, 0, 3}, 0.035F, {0.01F, 0.01F}, "orthographic");
  maker.bounces(1);
  Ready ready(maker.scene.get());
  EXPECT_TRUE(ready.notices.messages().empty());
  // The point in the middle of the view has u = 0.75: the middle of the right pixel.
  EXPECT_NEAR(meanOfBand(ready.picture(2, 2, 256), kMiddle), 0.8, 0.01);
}

TEST(Opacity, LetsLightThrough) {
  Maker maker;
  maker.shape(maker.diffuse(flat(1)), maker.mesh({square({0, 0, 0}, 20)}));
  const Object sheet =
      maker.material(Record::ofType("{ " + kSpectrumType + " reflectance; float opacity; }")
                         .set("reflectance", flat(0))
                         .set("opacity", 0.5F));
  maker.shape(sheet, maker.mesh({square({0, 0, 1}, 20)}));
  const Object lamp = maker.light("point", flat(4));
  maker.place(lamp, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 0, 2});
  maker.camera({0, 0, 3}, 1, {0.001F, 0.001F});
  maker.bounces(1);
  EXPECT_NEAR(meanOfBand(Ready(maker.scene.get()).picture(4, 4, 1024), kMiddle), 0.25 / M_PI,
              0.002);
}

// Glass splits colours: below the critical angle of some bands only, these come through.
TEST(Dispersion, KeepsTheMeanOfEachBand) {
  Maker maker;
  Spectrum indices;
  for (int band = 0; band < kBands; ++band)
    indices[band] = 1.6F - 0.002F * static_cast<float>(band);
  const Object glass = maker.material(
      Record::ofType("{ " + kSpectrumType + " index_of_refraction; float transmission; }")
          .set("index_of_refraction", sampled(indices))
          .set("transmission", 1.0F));
  maker.form(glass, "SPHERE", 1);
  maker.light("environment", flat(1));
  maker.camera({0, 0, 3}, 0.035F, {0.8F, 0.8F}, "orthographic");
  maker.bounces(64);
  const Picture picture = Ready(maker.scene.get()).picture(8, 8, 4096);
  double mean = 0;
  for (int band = 0; band < kBands; ++band) mean += meanOfBand(picture, band) / kBands;
  EXPECT_NEAR(mean, 1, 0.02);
}

// A scene with all kinds of choices along a path.
void fill(Maker& maker) {
  maker.shape(maker.diffuse(flat(0.7F)), maker.mesh({square({0, 0, -1}, 4)}));
  const Object gloss = maker.material(
      Record::ofType("{ " + kSpectrumType + " reflectance; float roughness; float metallic; }")
          .set("reflectance", flat(0.6F))
          .set("roughness", 0.3F)
          .set("metallic", 0.5F));
  maker.form(gloss, "SPHERE", 1);
  const Object lamp = maker.light("rectangle", flat(5));
  maker.place(lamp, {1, 0, 0}, {0, -1, 0}, {0, 0, -1}, {0.5F, 0.5F, 2});
  maker.light("environment", flat(0.2F));
  maker.camera({0, 0, 3});
  maker.bounces(6);
}

bool same(const Film& a, const Film& b) {
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) {
      if (std::memcmp(&a.at(x, y), &b.at(x, y), sizeof(Pixel)) != 0) return false;
    }
  }
  return true;
}

TEST(Pixels, DoNotDependOnTheNumberOfThreads) {
  Maker maker;
  fill(maker);
  Ready ready(maker.scene.get());
  const Film one = ready.render(50, 40, 8, 3, 1);
  EXPECT_TRUE(same(one, ready.render(50, 40, 8, 3, 2)));
  EXPECT_TRUE(same(one, ready.render(50, 40, 8, 3, 5)));
  EXPECT_FALSE(same(one, ready.render(50, 40, 8, 4, 1)));
}

TEST(Tiles, OfSharesMakeTheSamePicture) {
  Maker maker;
  fill(maker);
  Ready ready(maker.scene.get());
  const Film whole = ready.render(50, 40, 4);
  ASSERT_EQ(whole.tiles(), 12);
  const std::string folder = std::filesystem::temp_directory_path().string();
  const std::string first = folder + "/renderer_share_a", second = folder + "/renderer_share_b";
  TileHeader header;
  header.width = 50;
  header.height = 40;
  header.samples = 4;
  const std::vector<int> some{0, 3, 4, 11}, others{1, 2, 5, 6, 7, 8, 9, 10};
  writeTiles(first, header, ready.render(50, 40, 4, 0, 2, some), some);
  writeTiles(second, header, ready.render(50, 40, 4, 0, 1, others), others);
  TileHeader found;
  EXPECT_TRUE(same(assemble({second, first}, found), whole));
  EXPECT_THROW(assemble({first}, found), std::runtime_error);
  EXPECT_THROW(assemble({first, first, second}, found), std::runtime_error);
  header.seed = 1;
  writeTiles(second, header, whole, others);
  EXPECT_THROW(assemble({first, second}, found), std::runtime_error);
  std::filesystem::resize_file(first, 200);
  EXPECT_THROW(assemble({first}, found), std::runtime_error);
  std::filesystem::remove(first);
  std::filesystem::remove(second);
}

TEST(Passes, AreOnlyMadeIfTheyAreAskedFor) {
  Maker maker;
  fill(maker);
  Ready ready(maker.scene.get());
  const Film film = ready.render(5, 3, 1);
  const Picture bare = film.finish(ready.description.task, {});
  EXPECT_EQ(bare.colour.size(), 60U);
  EXPECT_EQ(bare.depth.capacity() + bare.normal.capacity() + bare.albedo.capacity() +
                bare.object.capacity() + bare.spectrum.capacity(),
            0U);
  const Picture some = film.finish(ready.description.task, {Pass::Normal, Pass::Object});
  EXPECT_EQ(some.colour, bare.colour);
  EXPECT_EQ(some.normal.size(), 45U);
  EXPECT_EQ(some.object.size(), 15U);
  EXPECT_EQ(some.depth.capacity() + some.albedo.capacity() + some.spectrum.capacity(), 0U);
}

TEST(NoiseLimit, EndsTilesThatAreQuietAndGoesOnWithTheOthers) {
  Maker maker;
  const Object lamp = maker.light("rectangle", flat(50));
  maker.place(lamp, {0.2F, 0, 0}, {0, -0.2F, 0}, {0, 0, -1}, {0, 0, 1});
  maker.form(maker.diffuse(flat(0.5F)), "SPHERE", 1);
  maker.camera({0, 0, 3}, 0.035F, {0.05F, 0.05F});
  Ready ready(maker.scene.get());
  const PathTracer tracer(ready.description, 0.05F);
  Film film(64, 64, false);
  RenderOptions options;
  options.samples = 256;
  options.noise = 0.01F;
  render(tracer, ready.description, options, film, nullptr);
  EXPECT_LT(film.at(0, 0).samples, 64U);
  std::uint32_t most = 0;
  for (int y = 0; y < 64; ++y) {
    for (int x = 0; x < 64; ++x) most = std::max(most, film.at(x, y).samples);
  }
  EXPECT_GT(most, film.at(0, 0).samples);
}

}  // namespace
