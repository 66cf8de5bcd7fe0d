// Meshes of glTF files: arrays in all their forms become the vertices and triangles that they mean.
#include <gtest/gtest.h>

#include <cmath>

#include "converter/support.hpp"

namespace {

using namespace vrn_convert_tests;
using Indices = std::vector<std::uint32_t>;

// A primitive with positions and normals of four corners of a square, and any indices and mode.
std::string square(const std::string& mode, const std::string& indexAccessor, Buffer buffer,
                   const std::string& attributes = "") {
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0});
  const int normals = buffer.add<float>({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
  return gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 4, "VEC3") + ", " +
              accessor(normals, 5126, 4, "VEC3") + indexAccessor +
              " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, "
              "\"NORMAL\": 1" +
              attributes + " }" + mode + " } ] } ], " + kOneNode);
}

TEST(GltfMesh, KeepsPositionsNormalsAndIndicesBitByBit) {
  const Converted made = convertGltf(triangleGltf(kOneNode));
  ASSERT_EQ(made.count(VRDM_CLASS_MESH), 1U);
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.triangles, 1);
  EXPECT_EQ(mesh.desc.vertices, 3);
  EXPECT_EQ(mesh.desc.texcoordSets, 1);
  EXPECT_EQ(mesh.indices(), (Indices{0, 1, 2}));
  EXPECT_EQ(mesh.position(1), (Float3{2, 0, 0}));
  EXPECT_EQ(mesh.position(2), (Float3{0, 1, 0}));
  EXPECT_EQ(mesh.normal(2), (Float3{0, 0, 1}));
  EXPECT_EQ(mesh.uv(0, 1), (Float2{0, 0}));
  EXPECT_EQ(checked(made), "");
}

TEST(GltfMesh, TangentsThatNothingNeedsArePerpendicularUnitVectors) {
  const Converted made = convertGltf(triangleGltf(kOneNode));
  const Float3 t = meshOf(made, 0).tangent(0);
  EXPECT_FLOAT_EQ(t[0] * t[0] + t[1] * t[1] + t[2] * t[2], 1);
  EXPECT_FLOAT_EQ(t[2], 0);
}

TEST(GltfMesh, AStripTurnsEveryOtherTriangle) {
  const Converted made = convertGltf(square(", \"mode\": 5", "", Buffer()));
  EXPECT_EQ(meshOf(made, 0).indices(), (Indices{0, 1, 2, 1, 3, 2}));
}

TEST(GltfMesh, AFanHasItsFirstVertexInAllTriangles) {
  Buffer buffer;
  const int indices = buffer.add<std::uint8_t>({0, 1, 3, 2});
  const Converted made = convertGltf(
      square(", \"mode\": 6, \"indices\": 2", ", " + accessor(indices, 5121, 4, "SCALAR"), buffer));
  EXPECT_EQ(meshOf(made, 0).indices(), (Indices{1, 3, 0, 3, 2, 0}));
}

TEST(GltfMesh, IndicesOf32BitsAndNoIndicesAreRead) {
  Buffer buffer;
  const int indices = buffer.add<std::uint32_t>({2, 1, 3, 0, 1, 2});
  const Converted made =
      convertGltf(square(", \"indices\": 2", ", " + accessor(indices, 5125, 6, "SCALAR"), buffer));
  EXPECT_EQ(meshOf(made, 0).indices(), (Indices{2, 1, 3, 0, 1, 2}));
  // Four vertices make one triangle; the fourth is left over.
  EXPECT_EQ(meshOf(convertGltf(square("", "", Buffer())), 0).desc.triangles, 1);
}

TEST(GltfMesh, WithoutNormalsEachTriangleIsFlatWithItsOwnVertices) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1});
  const int indices = buffer.add<std::uint16_t>({0, 1, 2, 0, 2, 3});
  const Converted made = convertGltf(
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 4, "VEC3") + ", " +
           accessor(indices, 5123, 6, "SCALAR") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 }, "
           "\"indices\": 1 } ] } ], " +
           kOneNode));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.vertices, 6);
  EXPECT_EQ(mesh.normal(0), (Float3{0, 0, 1}));
  EXPECT_EQ(mesh.normal(2), (Float3{0, 0, 1}));
  EXPECT_EQ(mesh.normal(3), (Float3{1, 0, 0}));
  EXPECT_EQ(mesh.position(5), (Float3{0, 0, 1}));
}

TEST(GltfMesh, SparseAccessorsReplaceElementsOfABase) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int at = buffer.add<std::uint8_t>({2});
  const int values = buffer.add<float>({5, 6, 7});
  const std::string sparse =
      ", \"sparse\": { \"count\": 1, \"indices\": { \"bufferView\": " + std::to_string(at) +
      ", \"componentType\": 5121 }, \"values\": { \"bufferView\": " + std::to_string(values) +
      " } }";
  const auto with = [&](const std::string& first) {
    return convertGltf(gltf(buffer.json() + ", \"accessors\": [ " + first +
                            " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { "
                            "\"POSITION\": 0 } } ] } ], " +
                            kOneNode));
  };
  const Converted made = with(accessor(positions, 5126, 3, "VEC3", sparse));
  EXPECT_EQ(meshOf(made, 0).position(1), (Float3{1, 0, 0}));
  EXPECT_EQ(meshOf(made, 0).position(2), (Float3{5, 6, 7}));
  // Without a buffer view, the base is zero.
  const Converted zeros =
      with("{ \"componentType\": 5126, \"count\": 3, \"type\": \"VEC3\"" + sparse + " }");
  EXPECT_EQ(meshOf(zeros, 0).position(1), (Float3{0, 0, 0}));
  EXPECT_EQ(meshOf(zeros, 0).position(2), (Float3{5, 6, 7}));
}

TEST(GltfMesh, QuantisedAttributesAreReadByTheRulesOfTheirTypes) {
  Buffer buffer;
  const int positions = buffer.add<std::int16_t>({0, 0, 0, 0, 300, 0, 0, 0, 0, -400, 0, 0}, 8);
  const int normals = buffer.add<std::int8_t>({0, 0, 127, 0, 0, 0, 127, 0, 0, -128, 0, 0}, 4);
  const int uv8 = buffer.add<std::uint8_t>({0, 255, 0, 0, 51, 102, 0, 0, 0, 0, 0, 0}, 4);
  const int uv16 = buffer.add<std::uint16_t>({0, 65535, 13107, 0, 0, 0});
  const Converted made = convertGltf(gltf(
      buffer.json() + ", \"extensionsRequired\": [ \"KHR_mesh_quantization\" ], \"accessors\": [ " +
      accessor(positions, 5122, 3, "VEC3") + ", " +
      accessor(normals, 5120, 3, "VEC3", ", \"normalized\": true") + ", " +
      accessor(uv8, 5121, 3, "VEC2", ", \"normalized\": true") + ", " +
      accessor(uv16, 5123, 3, "VEC2", ", \"normalized\": true") +
      " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, \"NORMAL\": 1, "
      "\"TEXCOORD_0\": 2, \"TEXCOORD_1\": 3 } } ] } ], " +
      kOneNode));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.position(1), (Float3{300, 0, 0}));
  EXPECT_EQ(mesh.position(2), (Float3{0, -400, 0}));
  EXPECT_EQ(mesh.normal(0), (Float3{0, 0, 1}));
  EXPECT_EQ(mesh.normal(2), (Float3{0, -1, 0}));
  EXPECT_EQ(mesh.desc.texcoordSets, 2);
  EXPECT_EQ(mesh.uv(0, 0), (Float2{0, 1}));
  EXPECT_FLOAT_EQ(mesh.uv(0, 1)[0], 0.2F);
  EXPECT_FLOAT_EQ(mesh.uv(0, 1)[1], 0.4F);
  EXPECT_EQ(mesh.uv(1, 0), (Float2{0, 1}));
  EXPECT_FLOAT_EQ(mesh.uv(1, 1)[0], 0.2F);
}

TEST(GltfMesh, InterleavedArraysAreRead) {
  Buffer buffer;
  // Position and normal of each vertex, 24 bytes apart.
  const int view = buffer.add<float>({0, 0, 0, 0, 0, 1, 4, 0, 0, 0, 0, 1, 0, 3, 0, 0, 0, 1}, 24);
  const Converted made =
      convertGltf(gltf(buffer.json() + ", \"accessors\": [ " + accessor(view, 5126, 3, "VEC3") +
                       ", " + accessor(view, 5126, 3, "VEC3", ", \"byteOffset\": 12") +
                       " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, "
                       "\"NORMAL\": 1 } } ] } ], " +
                       kOneNode));
  EXPECT_EQ(meshOf(made, 0).position(2), (Float3{0, 3, 0}));
  EXPECT_EQ(meshOf(made, 0).normal(1), (Float3{0, 0, 1}));
}

TEST(GltfMesh, ANormalMapMakesTangentsAlongTheCoordinateU) {
  // u increases along -y on the square, v along x.
  Buffer buffer;
  const int uv = buffer.add<float>({1, 0, 1, 1, 0, 0, 0, 1});
  const int indices = buffer.add<std::uint8_t>({0, 1, 2, 2, 1, 3});
  const std::string text =
      square(", \"indices\": 3, \"material\": 0",
             ", " + accessor(uv, 5126, 4, "VEC2") + ", " + accessor(indices, 5121, 6, "SCALAR"),
             buffer, ", \"TEXCOORD_0\": 2");
  const std::string members =
      ", \"materials\": [ { \"normalTexture\": { \"index\": 0 } } ], \"textures\": [ { \"source\": "
      "0 } ], \"images\": [ { \"uri\": \"missing.png\" } ] }";
  const Converted made = convertGltf(text.substr(0, text.size() - 1) + members);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(meshOf(made, 0).tangent(i), (Float3{0, -1, 0}));
}

TEST(GltfMesh, PrimitivesOfTheSameArraysShareAMesh) {
  const std::string text = triangleGltf(
      "\"nodes\": [ { \"mesh\": 0 }, { \"mesh\": 1 } ], \"materials\": [ { \"name\": \"a\" } ]");
  // A second mesh of the same accessors, with a material.
  std::string twice = text;
  const std::string end = " } ] } ], \"nodes\"";
  twice.replace(twice.find(end), end.size(),
                " } ] }, { \"primitives\": [ { \"attributes\": { \"NORMAL\": 1, \"POSITION\": 0 }, "
                "\"indices\": 2, \"material\": 0 } ] } ], \"nodes\"");
  const Converted made = convertGltf(twice);
  EXPECT_EQ(made.count(VRDM_CLASS_MESH), 1U);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 2U);
}

TEST(GltfMesh, EqualMeshesOfDifferentArraysBecomeOneAsset) {
  Buffer buffer;
  const int first = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int second = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int other = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 1});
  const Converted made = convertGltf(gltf(
      buffer.json() + ", \"accessors\": [ " + accessor(first, 5126, 3, "VEC3") + ", " +
      accessor(second, 5126, 3, "VEC3") + ", " + accessor(other, 5126, 3, "VEC3") +
      " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 } }, { "
      "\"attributes\": { \"POSITION\": 1 } }, { \"attributes\": { \"POSITION\": 2 } } ] } ], " +
      kOneNode));
  EXPECT_EQ(made.count(VRDM_CLASS_MESH), 2U);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 3U);
  EXPECT_EQ(made.reference(VRDM_CLASS_SHAPE, 0, "mesh"),
            made.reference(VRDM_CLASS_SHAPE, 1, "mesh"));
  EXPECT_NE(made.reference(VRDM_CLASS_SHAPE, 0, "mesh"),
            made.reference(VRDM_CLASS_SHAPE, 2, "mesh"));
}

TEST(GltfMesh, TrianglesWithVerticesThatAreNotFiniteAreLeftOut) {
  Buffer buffer;
  const float none = std::nanf("");
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0, none, 0, 0});
  const int indices = buffer.add<std::uint16_t>({1, 2, 3, 0, 1, 2});
  const int normals = buffer.add<float>({0, 0, 1, 0, 0, 1, 0, 0, 1, 0, 0, 1});
  const Converted made = convertGltf(
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 4, "VEC3") + ", " +
           accessor(indices, 5123, 6, "SCALAR") + ", " + accessor(normals, 5126, 4, "VEC3") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, "
           "\"NORMAL\": 2 }, \"indices\": 1 } ] } ], " +
           kOneNode));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.indices(), (Indices{0, 1, 2}));
  EXPECT_EQ(mesh.position(1), (Float3{1, 0, 0}));
  EXPECT_EQ(mesh.normal(1), (Float3{0, 0, 1}));
  EXPECT_TRUE(made.tells("1 of its triangles are left out"));
  EXPECT_EQ(checked(made), "");
}

TEST(GltfMesh, PointsAndLinesAreLeftOutWithANotice) {
  std::string text = triangleGltf(kOneNode);
  const std::string end = " } ] } ], \"nodes\"";
  text.replace(text.find(end), end.size(),
               " }, { \"mode\": 1, \"attributes\": { \"POSITION\": 0 } }, { \"mode\": 0, "
               "\"attributes\": { \"POSITION\": 0 } } ] } ], \"nodes\"");
  const Converted made = convertGltf(text);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 1U);
  EXPECT_TRUE(made.tells("points and lines are left out: 2 primitives"));
  EXPECT_TRUE(made.hasLoss);
}

TEST(GltfMesh, MorphTargetsHaveTheWeightsOfTheFile) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int steps = buffer.add<float>({0, 0, 8, 0, 0, 0, 0, 0, 4});
  const Converted made = convertGltf(
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
           accessor(steps, 5126, 3, "VEC3") +
           " ], \"meshes\": [ { \"weights\": [ 0.25 ], \"primitives\": [ { \"attributes\": { "
           "\"POSITION\": 0 }, \"targets\": [ { \"POSITION\": 1 } ] } ] } ], "
           "\"nodes\": [ { \"mesh\": 0 }, { \"mesh\": 0, \"weights\": [ 0 ] } ]"));
  EXPECT_EQ(meshOf(made, made.reference(VRDM_CLASS_SHAPE, 0, "mesh")).position(0),
            (Float3{0, 0, 2}));
  EXPECT_EQ(meshOf(made, made.reference(VRDM_CLASS_SHAPE, 0, "mesh")).position(2),
            (Float3{0, 1, 1}));
  EXPECT_EQ(meshOf(made, made.reference(VRDM_CLASS_SHAPE, 1, "mesh")).position(0),
            (Float3{0, 0, 0}));
  EXPECT_TRUE(made.tells("morph targets"));
}

TEST(GltfMesh, ASkinPlacesVerticesByItsJoints) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int joints = buffer.add<std::uint8_t>({0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0});
  const int weights = buffer.add<float>({1, 0, 0, 0, 1, 0, 0, 0, 0.5F, 0.5F, 0, 0});
  // The second joint is bound at x = 1, and stands at x = 3.
  const int bind = buffer.add<float>({1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0,  0, 0, 1,
                                      1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, -1, 0, 0, 1});
  const Converted made = convertGltf(
      gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
           accessor(joints, 5121, 3, "VEC4") + ", " + accessor(weights, 5126, 3, "VEC4") + ", " +
           accessor(bind, 5126, 2, "MAT4") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0, "
           "\"JOINTS_0\": 1, \"WEIGHTS_0\": 2 } } ] } ], \"skins\": [ { \"joints\": [ 1, 2 ], "
           "\"inverseBindMatrices\": 3 } ], \"nodes\": [ { \"mesh\": 0, \"skin\": 0, "
           "\"translation\": [ 100, 0, 0 ] }, { \"translation\": [ 0, 5, 0 ] }, { \"translation\": "
           "[ 3, 0, 0 ] } ]"));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.position(0), (Float3{0, 5, 0}));
  EXPECT_EQ(mesh.position(1), (Float3{3, 0, 0}));
  // The mean of (0, 6, 0) and (2, 1, 0).
  EXPECT_EQ(mesh.position(2), (Float3{1, 3.5F, 0}));
  // The place of the node itself does not count.
  EXPECT_EQ(made.reference(VRDM_CLASS_SHAPE, 0, "transformationGroup"), -1);
  EXPECT_TRUE(made.tells("skins"));
}

}  // namespace
