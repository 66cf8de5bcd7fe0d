// Nodes, cameras and lights of glTF files.
#include <gtest/gtest.h>

#include <cmath>

#include "converter/support.hpp"

namespace {

using namespace vrn_convert_tests;

void expectNear(const Float4& found, const Float4& expected) {
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(found[i], expected[i], 1e-6F) << i;
}

TEST(GltfNodes, ANestedNodeHasTheProductOfAllMatricesInItsGroup) {
  // The parent turns by 90 degrees about z and moves by (10, 0, 0); the child is twice as large and
  // one along x: the child's x axis is (0, 2, 0), and its origin is at (10, 1, 0).
  const Converted made = convertGltf(triangleGltf(
      "\"nodes\": [ { \"children\": [ 1 ], \"rotation\": [ 0, 0, 0.70710678118, 0.70710678118 ], "
      "\"translation\": [ 10, 0, 0 ] }, { \"mesh\": 0, \"name\": \"child\", \"scale\": [ 2, 2, 2 "
      "], \"translation\": [ 1, 0, 0 ] } ], \"scenes\": [ { \"nodes\": [ 0 ] } ], \"scene\": 0"));
  ASSERT_EQ(made.count(VRDM_CLASS_TRANSFORMATION_GROUP), 1U);
  ASSERT_EQ(made.reference(VRDM_CLASS_SHAPE, 0, "transformationGroup"), 0);
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "x"), {0, 2, 0, 0});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "y"), {-2, 0, 0, 0});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "z"), {0, 0, 2, 0});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "w"), {10, 1, 0, 1});
  expectNear(made.row(VRDM_CLASS_SHAPE, 0, "x"), {1, 0, 0, 0});
  EXPECT_EQ(made.group(VRDM_CLASS_SHAPE, 0, "Target").get<std::string>("tag"), "child");
}

TEST(GltfNodes, AMatrixIsReadByColumns) {
  const Converted made = convertGltf(triangleGltf(
      "\"nodes\": [ { \"mesh\": 0, \"matrix\": [ 1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 10, 0, 11, 12, 13, "
      "1 ] } ]"));
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "x"), {1, 2, 3, 0});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "z"), {7, 8, 10, 0});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "w"), {11, 12, 13, 1});
}

TEST(GltfNodes, NodesOfTheSameMeshShareIt) {
  const Converted made = convertGltf(triangleGltf(
      "\"nodes\": [ { \"mesh\": 0 }, { \"mesh\": 0, \"translation\": [ 1, 2, 3 ] } ]"));
  EXPECT_EQ(made.count(VRDM_CLASS_MESH), 1U);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 2U);
  EXPECT_EQ(made.count(VRDM_CLASS_TRANSFORMATION_GROUP), 2U);
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 1, "w"), {1, 2, 3, 1});
}

TEST(GltfNodes, InstancesAreShapesOfOneMesh) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 1, 0});
  const int moves = buffer.add<float>({0, 0, 0, 0, 0, 5});
  const int sizes = buffer.add<float>({1, 1, 1, 2, 3, 4});
  const Converted made = convertGltf(
      gltf(buffer.json() +
           ", \"extensionsRequired\": [ \"EXT_mesh_gpu_instancing\" ], "
           "\"accessors\": [ " +
           accessor(positions, 5126, 3, "VEC3") + ", " + accessor(moves, 5126, 2, "VEC3") + ", " +
           accessor(sizes, 5126, 2, "VEC3") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 } } ] } ], "
           "\"nodes\": [ { \"mesh\": 0, \"translation\": [ 1, 0, 0 ], \"extensions\": { "
           "\"EXT_mesh_gpu_instancing\": { \"attributes\": { \"TRANSLATION\": 1, \"SCALE\": 2 } } "
           "} } ]"));
  EXPECT_EQ(made.count(VRDM_CLASS_MESH), 1U);
  ASSERT_EQ(made.count(VRDM_CLASS_SHAPE), 2U);
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "w"), {1, 0, 0, 1});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 1, "w"), {1, 0, 5, 1});
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 1, "y"), {0, 3, 0, 0});
}

TEST(GltfNodes, OnlyTheDefaultSceneIsCarried) {
  const Converted made = convertGltf(triangleGltf(
      "\"nodes\": [ { \"mesh\": 0, \"name\": \"a\" }, { \"mesh\": 0, \"name\": \"b\" } ], "
      "\"scenes\": [ { \"nodes\": [ 0 ] }, { \"nodes\": [ 1 ] } ], \"scene\": 1"));
  ASSERT_EQ(made.count(VRDM_CLASS_SHAPE), 1U);
  EXPECT_EQ(made.group(VRDM_CLASS_SHAPE, 0, "Target").get<std::string>("tag"), "b");
  EXPECT_TRUE(made.tells("only one scene is carried, of 2"));
}

TEST(GltfNodes, TheRootMapScalesAndTurnsTheWholeScene) {
  const std::string text = triangleGltf(
      "\"nodes\": [ { \"mesh\": 0, \"translation\": [ 1, 2, 3 ] "
      "} ]");
  vrn_convert::Source source = sourceOf(text, "gltf");
  source.scale = 0.01;
  source.root = {{0.01, 0, 0}, {0, 0, -0.01}, {0, 0.01, 0}, {}};
  const Converted made = convert(source);
  expectNear(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "w"), {0.01F, 0.03F, -0.02F, 1});
}

TEST(GltfCameras, APerspectiveCameraHasTheAngleAndTheShapeOfItsFilm) {
  const Converted made = convertGltf(triangleGltf(
      "\"cameras\": [ { \"type\": \"perspective\", \"perspective\": { \"yfov\": 1.0, "
      "\"aspectRatio\": 2.0, \"znear\": 0.25 } } ], \"nodes\": [ { \"mesh\": 0 }, { \"camera\": 0, "
      "\"scale\": [ 3, 3, 3 ], \"translation\": [ 0, 0, 9 ] } ]"));
  ASSERT_EQ(made.count(VRDM_CLASS_CAMERA), 1U);
  const Record lens = made.value(VRDM_CLASS_CAMERA, 0);
  EXPECT_EQ(lens.get<Float2>("film_size"), (Float2{0.048F, 0.024F}));
  EXPECT_NEAR(lens.get<float>("focal_length"), 0.012 / std::tan(0.5), 1e-7);
  // A camera has no size.
  expectNear(made.row(VRDM_CLASS_CAMERA, 0, "x"), {1, 0, 0, 0});
  expectNear(made.row(VRDM_CLASS_CAMERA, 0, "z"), {0, 0, 1, 0});
  expectNear(made.row(VRDM_CLASS_CAMERA, 0, "w"), {0, 0, 9, 1});
  EXPECT_EQ(made.group(VRDM_CLASS_CAMERA, 0, "General").get<float>("near_distance"), 0.25F);
  ASSERT_EQ(made.count(VRDM_CLASS_IMAGE_TASK), 1U);
  EXPECT_EQ(made.reference(VRDM_CLASS_IMAGE_TASK, 0, "camera"), 0);
}

TEST(GltfCameras, AnOrthographicCameraHasItsFilmInTheWorld) {
  const Converted made = convertGltf(triangleGltf(
      "\"cameras\": [ { \"type\": \"orthographic\", \"orthographic\": { \"xmag\": 3, \"ymag\": 2, "
      "\"znear\": 0.5, \"zfar\": 9 } } ], \"nodes\": [ { \"mesh\": 0 }, { \"camera\": 0 } ]"));
  EXPECT_EQ(made.value(VRDM_CLASS_CAMERA, 0).get<Float2>("film_size"), (Float2{6, 4}));
  EXPECT_NE(made.program(VRDM_CLASS_CAMERA, VRDM_CLASS_CAMERA_PROGRAM, 0).find("orthographic"),
            std::string::npos);
}

TEST(GltfLights, EachKindHasItsProgramItsColourAndItsDirection) {
  const Converted made = convertGltf(triangleGltf(
      "\"extensions\": { \"KHR_lights_punctual\": { \"lights\": [ { \"type\": \"point\", "
      "\"color\": [ 1, 0.5, 0.25 ], \"intensity\": 8 }, { \"type\": \"spot\", \"spot\": { "
      "\"innerConeAngle\": 0.25, \"outerConeAngle\": 0.5 }, \"intensity\": 3 }, { \"type\": "
      "\"directional\", \"name\": \"sun\" } ] } }, \"nodes\": [ { \"mesh\": 0 }, { \"extensions\": "
      "{ \"KHR_lights_punctual\": { \"light\": 0 } }, \"translation\": [ 0, 4, 0 ] }, { "
      "\"extensions\": { \"KHR_lights_punctual\": { \"light\": 1 } } }, { \"rotation\": [ "
      "-0.70710678118, 0, 0, 0.70710678118 ], \"extensions\": { \"KHR_lights_punctual\": { "
      "\"light\": 2 } } } ]"));
  ASSERT_EQ(made.count(VRDM_CLASS_LIGHT), 3U);
  EXPECT_EQ(rgb(made.value(VRDM_CLASS_LIGHT, 0), "emission"), (Float3{8, 4, 2}));
  expectNear(made.row(VRDM_CLASS_LIGHT, 0, "w"), {0, 4, 0, 1});
  const Record spot = made.value(VRDM_CLASS_LIGHT, 1);
  EXPECT_EQ(rgb(spot, "emission"), (Float3{3, 3, 3}));
  EXPECT_EQ(spot.get<float>("inner_cone_angle"), 0.25F);
  EXPECT_EQ(spot.get<float>("outer_cone_angle"), 0.5F);
  // Both shine along the -z of their nodes; a light of a scene shines along its +z.
  expectNear(made.row(VRDM_CLASS_LIGHT, 1, "z"), {0, 0, -1, 0});
  expectNear(made.row(VRDM_CLASS_LIGHT, 2, "z"), {0, -1, 0, 0});
  EXPECT_EQ(made.group(VRDM_CLASS_LIGHT, 2, "Target").get<std::string>("tag"), "sun");
  for (const auto& [light, name] : {std::pair{0, "light point("}, std::pair{1, "light spot("},
                                    std::pair{2, "light directional("}}) {
    EXPECT_NE(made.program(VRDM_CLASS_LIGHT, VRDM_CLASS_LIGHT_PROGRAM, light).find(name),
              std::string::npos);
  }
  // All lights are in the group of the shape.
  const std::int32_t group = made.reference(VRDM_CLASS_SHAPE, 0, "lightGroup");
  ASSERT_EQ(group, 0);
  const auto words = made.scene.list({VRDM_CLASS_LIGHT_GROUP, group}, "emitters");
  EXPECT_EQ(std::vector<std::int32_t>(words.begin(), words.end()),
            (std::vector<std::int32_t>{~0, ~1, ~2}));
}

TEST(GltfBinary, AGlbIsReadWithItsBuffer) {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 1, 0, 0, 0, 7, 0});
  const std::string json =
      gltf(buffer.jsonWithout() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") +
           " ], \"meshes\": [ { \"primitives\": [ { \"attributes\": { \"POSITION\": 0 } } ] } ], " +
           kOneNode);
  const std::string bytes = glb(json, buffer.bytes());
  EXPECT_EQ(meshOf(convert(sourceOf(bytes, "glb")), 0).desc.triangles, 1);
  const Converted made = convert(sourceOf(bytes, "glb"));
  EXPECT_EQ(meshOf(made, 0).position(2), (Float3{0, 7, 0}));
}

TEST(GltfScene, WhatStandsBeyondTheRangeOfFloatsIsLeftOutWithANotice) {
  const std::string far = "\"translation\": [ 1e39, 0, 0 ]";
  const std::string members =
      ", \"cameras\": [ { \"type\": \"perspective\", \"perspective\": { \"yfov\": 0.8, \"znear\": "
      "0.1 } } ], \"extensions\": { \"KHR_lights_punctual\": { \"lights\": [ { \"type\": \"point\" "
      "} ] "
      "} }";
  const std::string light = "\"extensions\": { \"KHR_lights_punctual\": { \"light\": 0 } }";
  const Converted made =
      convertGltf(triangleGltf("\"nodes\": [ { \"mesh\": 0 }, { \"mesh\": 0, " + far +
                               " }, { \"camera\": 0, " + far + " }, { " + light + ", " + far +
                               " }, { \"mesh\": 0, \"scale\": [ 1, -1e39, 1 ] }, { \"mesh\": 0, " +
                               "\"translation\": [ 1e38, 0, 0 ] } ]" + members));
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 2U);
  EXPECT_EQ(made.count(VRDM_CLASS_CAMERA), 0U);
  EXPECT_EQ(made.count(VRDM_CLASS_LIGHT), 0U);
  for (const char* node : {"node 1", "node 2", "node 3", "node 4"}) {
    EXPECT_TRUE(
        made.tells(std::string("the ") + node + " has a matrix that is not finite, or too large"))
        << node;
  }
  EXPECT_EQ(made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 1, "w")[0], 1e38F);
  EXPECT_EQ(checked(made), "");
}

TEST(GltfScene, APlaceThatIsTooLargeOnlyWithTheScaleIsLeftOut) {
  const std::string text =
      triangleGltf("\"nodes\": [ { \"mesh\": 0, \"translation\": [ 1e38, 0, 0 ] } ]");
  vrn_convert::Source source = sourceOf(text, "gltf");
  source.scale = 10;
  source.root = vrn_convert::Transform::scaling({10, 10, 10});
  const Converted made = convert(source);
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 0U);
  EXPECT_TRUE(made.tells("too large"));
}

}  // namespace
