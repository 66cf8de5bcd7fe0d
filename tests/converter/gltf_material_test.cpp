// Materials and textures of glTF files by the fields of a material's value.
#include <gtest/gtest.h>

#include <cmath>

#include "converter/images.hpp"
#include "converter/support.hpp"

namespace {

using namespace vrn_convert_tests;

// The value of the material of a triangle. `more` has other members of the file.
Converted material(const std::string& members, const std::string& more = "",
                   const std::string& ofPrimitive = "") {
  return convertGltf(triangleGltf(
      std::string(kOneNode) + ", \"materials\": [ { \"name\": \"m\", " + members + " } ]" + more,
      ", \"material\": 0" + ofPrimitive));
}

std::string images(const std::vector<std::string>& files, const std::string& samplers = "") {
  std::string text = ", \"images\": [ ";
  for (std::size_t i = 0; i < files.size(); ++i) {
    text += (i == 0 ? "" : ", ") + std::string("{ \"uri\": \"data:image/png;base64,") +
            base64(files[i]) + "\" }";
  }
  return text + " ]" + samplers;
}

TEST(GltfMaterial, FactorsBecomeFieldsOfTheirNames) {
  const Converted made = material(
      "\"pbrMetallicRoughness\": { \"baseColorFactor\": [ 0.5, 0.25, 0.125, 1 ], "
      "\"roughnessFactor\": 0.75, \"metallicFactor\": 0.5 }, \"emissiveFactor\": [ 1, 0.5, 0 ], "
      "\"doubleSided\": true, \"extensions\": { \"KHR_materials_emissive_strength\": { "
      "\"emissiveStrength\": 4 }, \"KHR_materials_ior\": { \"ior\": 1.25 }, "
      "\"KHR_materials_transmission\": { \"transmissionFactor\": 0.5 } }");
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(rgb(value, "base_color"), (Float3{0.5F, 0.25F, 0.125F}));
  EXPECT_EQ(value.get<float>("roughness"), 0.75F);
  EXPECT_EQ(value.get<float>("metallic"), 0.5F);
  EXPECT_EQ(rgb(value, "emission"), (Float3{1, 0.5F, 0}));
  EXPECT_EQ(value.get<float>("emission_strength"), 4);
  EXPECT_EQ(value.get<float>("index_of_refraction"), 1.25F);
  EXPECT_EQ(value.get<float>("transmission"), 0.5F);
  EXPECT_TRUE(value.get<bool>("double_sided"));
  EXPECT_FALSE(has(value, "opacity"));
  EXPECT_FALSE(made.hasLoss);
  EXPECT_EQ(made.names.at("Material"), (std::vector<std::string>{"m"}));
  // A shape that emits light is an emitter of the light group.
  EXPECT_EQ(vrdmGetReferenceCount(made.scene.get(), VRDM_CLASS_LIGHT_GROUP, 0, 0), 1);
}

TEST(GltfMaterial, WithoutAMaterialAPrimitiveHasTheDefaultOfGltf) {
  const Converted made = convertGltf(triangleGltf(kOneNode));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(rgb(value, "base_color"), (Float3{1, 1, 1}));
  EXPECT_EQ(value.get<float>("roughness"), 1);
  EXPECT_EQ(value.get<float>("metallic"), 1);
  EXPECT_FALSE(has(value, "emission"));
}

TEST(GltfMaterial, TheCameraDoesNotSeeTheBackOfASingleSidedSurface) {
  const auto mode = [](const Converted& made) {
    return made.group(VRDM_CLASS_SHAPE, 0, "Face culling").get<std::string>("mode");
  };
  EXPECT_EQ(mode(material("\"doubleSided\": false")), "BACK");
  EXPECT_EQ(mode(material("\"doubleSided\": true")), "DISABLED");
}

TEST(GltfMaterial, OpacityIsCarriedWhereTheModeUsesIt) {
  const std::string factor = "\"pbrMetallicRoughness\": { \"baseColorFactor\": [ 1, 1, 1, 0.5 ] }";
  EXPECT_FALSE(has(material(factor).value(VRDM_CLASS_MATERIAL, 0), "opacity"));
  const Record blend =
      material(factor + ", \"alphaMode\": \"BLEND\"").value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(blend.get<float>("opacity"), 0.5F);
  EXPECT_FALSE(has(blend, "opacity_cutoff"));
  const Record mask = material(factor + ", \"alphaMode\": \"MASK\", \"alphaCutoff\": 0.25")
                          .value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(mask.get<float>("opacity"), 0.5F);
  EXPECT_EQ(mask.get<float>("opacity_cutoff"), 0.25F);
}

TEST(GltfMaterial, TexturesHaveTheirSamplersTheirSetsAndTheirMaps) {
  const Converted made = material(
      "\"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0, \"texCoord\": 1, "
      "\"extensions\": { \"KHR_texture_transform\": { \"offset\": [ 0.25, 0.5 ], \"scale\": [ 2, 3 "
      "] } } } }",
      images({pngOf(1, 1, 2, 8, {10, 20, 30})},
             ", \"samplers\": [ { \"wrapS\": 33071, \"wrapT\": 33648 } ], \"textures\": [ { "
             "\"source\": 0, \"sampler\": 0 } ]"));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  ASSERT_TRUE(has(value, "base_color_texture"));
  EXPECT_EQ(value.get<std::int32_t>("base_color_texture.sampler.spectrum_texture.spectrum_texture"),
            0);
  EXPECT_EQ(value.get<std::string>("base_color_texture.sampler.wrapmode.u"), "CLAMP");
  EXPECT_EQ(value.get<std::string>("base_color_texture.sampler.wrapmode.v"), "MIRROR");
  EXPECT_EQ(value.get<std::int32_t>("base_color_texture.texcoord"), 1);
  EXPECT_EQ(value.get<Float2>("base_color_texture.uv_transformation.x"), (Float2{2, 0}));
  EXPECT_EQ(value.get<Float2>("base_color_texture.uv_transformation.y"), (Float2{0, 3}));
  EXPECT_EQ(value.get<Float2>("base_color_texture.uv_transformation.z"), (Float2{0.25F, 0.5F}));
  // The scene's list of textures follows from the value.
  EXPECT_EQ(vrdmGetReferenceCount(made.scene.get(), VRDM_CLASS_MATERIAL, 0,
                                  vrnt::host::slotNumber(VRDM_CLASS_MATERIAL, "textures")),
            1);
  EXPECT_EQ(checked(made), "");
}

TEST(GltfMaterial, ARotationOfATextureTurnsItsCoordinates) {
  // A quarter turn: u becomes v of the image's other direction, (1, 0) goes to (0, -1).
  const Converted made = material(
      "\"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0, \"extensions\": { "
      "\"KHR_texture_transform\": { \"rotation\": 1.57079632679 } } } }",
      images({pngOf(1, 1, 0, 8, {9})}, ", \"textures\": [ { \"source\": 0 } ]"));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  const Float2 x = value.get<Float2>("base_color_texture.uv_transformation.x");
  const Float2 y = value.get<Float2>("base_color_texture.uv_transformation.y");
  EXPECT_NEAR(x[0], 0, 1e-6);
  EXPECT_NEAR(x[1], -1, 1e-6);
  EXPECT_NEAR(y[0], 1, 1e-6);
  EXPECT_NEAR(y[1], 0, 1e-6);
}

TEST(GltfMaterial, MetalAndRoughnessAreTwoChannelsOfOneTexture) {
  const Converted made =
      material("\"pbrMetallicRoughness\": { \"metallicRoughnessTexture\": { \"index\": 0 } }",
               images({pngOf(1, 1, 2, 8, {10, 20, 30})}, ", \"textures\": [ { \"source\": 0 } ]"));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(value.get<std::int32_t>("roughness_texture.sampler.float_texture.float_texture"), 0);
  EXPECT_EQ(value.get<std::int32_t>("roughness_channel"), 1);
  EXPECT_EQ(value.get<std::int32_t>("metallic_texture.sampler.float_texture.float_texture"), 0);
  EXPECT_EQ(value.get<std::int32_t>("metallic_channel"), 2);
  ASSERT_EQ(made.count(VRDM_CLASS_TEXTURE), 1U);
  EXPECT_EQ(textureOf(made, 0).desc.format, VRNT_TEXTURE_FORMAT_XYZ8);
}

TEST(GltfMaterial, TheAlphaOfAColourIsItsFourthChannel) {
  const std::string mode =
      "\"alphaMode\": \"BLEND\", \"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0 "
      "} }";
  const std::string textures = ", \"textures\": [ { \"source\": 0 } ]";
  const Converted made = material(mode, images({pngOf(1, 1, 6, 8, {1, 2, 3, 4})}, textures));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(value.get<std::int32_t>("opacity_channel"), 3);
  EXPECT_EQ(made.count(VRDM_CLASS_TEXTURE), 1U);
  // Without an alpha, there is nothing to blend.
  const Converted opaque = material(mode, images({pngOf(1, 1, 2, 8, {1, 2, 3})}, textures));
  EXPECT_FALSE(has(opaque.value(VRDM_CLASS_MATERIAL, 0), "opacity_texture"));
}

TEST(GltfMaterial, EqualImagesBecomeOneTexture) {
  const std::string file = pngOf(1, 1, 2, 8, {10, 20, 30});
  const Converted made = material(
      "\"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0 } }, \"emissiveTexture\": "
      "{ "
      "\"index\": 1 }, \"emissiveFactor\": [ 1, 1, 1 ], \"normalTexture\": { \"index\": 0 }",
      images({file, file}, ", \"textures\": [ { \"source\": 0 }, { \"source\": 1 } ]"));
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(value.get<std::int32_t>("base_color_texture.sampler.spectrum_texture.spectrum_texture"),
            value.get<std::int32_t>("emission_texture.sampler.spectrum_texture.spectrum_texture"));
  // Pixels that are normals are another texture than the same pixels as colours.
  EXPECT_EQ(made.count(VRDM_CLASS_TEXTURE), 2U);
}

TEST(GltfMaterial, EqualMaterialsBecomeOne) {
  std::string text = triangleGltf(
      std::string(kOneNode) + ", \"materials\": [ { \"name\": \"a\" }, { \"name\": \"b\" } ]",
      ", \"material\": 0");
  const std::string end = " } ] } ], \"nodes\"";
  text.replace(text.find(end), end.size(),
               " }, { \"attributes\": { \"POSITION\": 0, \"NORMAL\": 1 }, \"material\": 1 } ] } ], "
               "\"nodes\"");
  const Converted made = convertGltf(text);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 2U);
  EXPECT_EQ(made.count(VRDM_CLASS_MATERIAL), 1U);
}

TEST(GltfMaterial, AnImageThatIsNotThereIsLeftOutWithANotice) {
  const Converted made =
      material("\"pbrMetallicRoughness\": { \"baseColorTexture\": { \"index\": 0 } }",
               ", \"images\": [ { \"uri\": \"gone.png\" } ], \"textures\": [ { \"source\": 0 } ]");
  EXPECT_FALSE(has(made.value(VRDM_CLASS_MATERIAL, 0), "base_color_texture"));
  EXPECT_TRUE(made.tells("the image gone.png is left out: it was not found"));
}

TEST(GltfMaterial, AnUnlitMaterialEmitsItsColour) {
  const Converted made = material(
      "\"pbrMetallicRoughness\": { \"baseColorFactor\": [ 0.5, 0.25, 1, 1 ] }, \"extensions\": { "
      "\"KHR_materials_unlit\": {} }");
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(rgb(value, "emission"), (Float3{0.5F, 0.25F, 1}));
  EXPECT_EQ(rgb(value, "base_color"), (Float3{0, 0, 0}));
  EXPECT_FALSE(has(value, "roughness"));
}

TEST(GltfMaterial, SpecularAndGlossinessBecomeADielectric) {
  const Converted made = material(
      "\"extensions\": { \"KHR_materials_pbrSpecularGlossiness\": { \"diffuseFactor\": [ "
      "0.5, 0.25, 0, 1 ], \"glossinessFactor\": 0.75 } }");
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(rgb(value, "base_color"), (Float3{0.5F, 0.25F, 0}));
  EXPECT_EQ(value.get<float>("roughness"), 0.25F);
  EXPECT_EQ(value.get<float>("metallic"), 0);
  EXPECT_TRUE(made.hasLoss);
}

TEST(GltfMaterial, AnExtensionWithoutAFieldIsTold) {
  EXPECT_TRUE(material("\"extensions\": { \"KHR_materials_sheen\": {} }")
                  .tells("the material extension KHR_materials_sheen is not carried"));
}

TEST(GltfMaterial, TheMeanOfTheColoursOfVerticesMultipliesTheBaseColour) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int colours = buffer.add<float>({1, 0, 0.5F, 0, 1, 0.5F, 0.5F, 0.5F, 0.5F});
  const Converted made = convertGltf(gltf(
      buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
      accessor(colours, 5126, 3, "VEC3") +
      " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, \"COLOR_0\": "
      "1 } } ] } ], " +
      kOneNode));
  EXPECT_EQ(rgb(made.value(VRDM_CLASS_MATERIAL, 0), "base_color"), (Float3{0.5F, 0.5F, 0.5F}));
  EXPECT_TRUE(made.tells("colours of vertices"));
}

// A triangle with colours and alphas of its vertices, and a material with an opacity of 0.8.
Converted withAlphas(const std::string& mode, const std::vector<float>& alphas) {
  Buffer buffer;
  std::vector<float> colours;
  for (const float alpha : alphas) colours.insert(colours.end(), {0.5F, 0.5F, 0.5F, alpha});
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int view = buffer.add<float>(colours);
  return convertGltf(
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
           accessor(view, 5126, 3, "VEC4") + " ], \"materials\": [ { \"alphaMode\": \"" + mode +
           "\", \"pbrMetallicRoughness\": { \"baseColorFactor\": [ 1, 1, 1, 0.8 ] } } ], "
           "\"meshes\": [ { "
           "\"primitives\": [ { \"attributes\": { \"POSITION\": 0, \"COLOR_0\": 1 }, \"material\": "
           "0 } ] "
           "} ], " +
           kOneNode));
}

TEST(GltfMaterial, TheMeanAlphaOfTheVerticesMultipliesTheOpacity) {
  for (const char* mode : {"BLEND", "MASK"}) {
    const Converted uniform = withAlphas(mode, {0.25F, 0.25F, 0.25F});
    EXPECT_FLOAT_EQ(uniform.value(VRDM_CLASS_MATERIAL, 0).get<float>("opacity"), 0.2F);
    EXPECT_FALSE(uniform.tells("vertices"));
    const Converted varying = withAlphas(mode, {0, 0.5F, 1});
    EXPECT_FLOAT_EQ(varying.value(VRDM_CLASS_MATERIAL, 0).get<float>("opacity"), 0.4F);
    EXPECT_TRUE(varying.tells("alphas of vertices"));
    EXPECT_FALSE(varying.tells("colours of vertices"));
  }
  // An opaque material has no alpha.
  const Converted opaque = withAlphas("OPAQUE", {0, 0.5F, 1});
  EXPECT_FALSE(has(opaque.value(VRDM_CLASS_MATERIAL, 0), "opacity"));
  EXPECT_FALSE(opaque.tells("vertices"));
}

}  // namespace
