// Files that Assimp reads: their vertices, their axes, their colours and their textures.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "converter/images.hpp"
#include "converter/support.hpp"

namespace {

using namespace vrn_convert_tests;

constexpr char kObj[] =
    "v 0 0 0\nv 2 0 0\nv 2 3 0\nv 0 3 0\nvt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n"
    "f 1/1/1 2/2/1 3/3/1 4/4/1\n";

// The vertex of a mesh at a position; -1 if there is none.
int vertexAt(const MeshBytes& mesh, const Float3& position) {
  for (int i = 0; i < mesh.desc.vertices; ++i) {
    if (mesh.position(i) == position) return i;
  }
  return -1;
}

TEST(AssimpFiles, AnObjKeepsItsVerticesAndTurnsItsCoordinatesV) {
  const Converted made = convert(sourceOf(kObj, "obj"));
  ASSERT_EQ(made.count(VRDM_CLASS_MESH), 1U);
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.triangles, 2);
  EXPECT_EQ(mesh.desc.vertices, 4);
  const int corner = vertexAt(mesh, {2, 3, 0});
  ASSERT_GE(corner, 0);
  EXPECT_EQ(mesh.normal(corner), (Float3{0, 0, 1}));
  // The first row of an image is at v = 0 in a scene, and at v = 1 in an OBJ.
  EXPECT_EQ(mesh.uv(0, corner), (Float2{1, 0}));
  EXPECT_EQ(mesh.uv(0, vertexAt(mesh, {0, 0, 0})), (Float2{0, 1}));
  EXPECT_EQ(checked(made), "");
}

TEST(AssimpFiles, FacesKeepTheirFront) {
  const Converted made = convert(sourceOf(kObj, "obj"));
  const MeshBytes mesh = meshOf(made, 0);
  for (std::size_t i = 0; i < 2; ++i) {
    const auto corner = [&](std::size_t at) {
      return mesh.position(static_cast<int>(mesh.indices()[3 * i + at]));
    };
    const Float3 a = corner(0), b = corner(1), c = corner(2);
    EXPECT_GT((b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]), 0);
  }
}

TEST(AssimpFiles, SmallTrianglesStayAndThoseWithoutAnAreaDoNot) {
  const Converted made = convert(sourceOf(
      "v 0 0 0\nv 0.00001 0 0\nv 0 0.00001 0\nv 1 1 1\nv 2 2 2\nvn 0 0 1\nf 1//1 2//1 3//1\nf "
      "1//1 4//1 5//1\n",
      "obj"));
  EXPECT_EQ(meshOf(made, 0).desc.triangles, 1);
}

TEST(AssimpFiles, AnStlIsReadWithItsNormals) {
  const std::string stl =
      "solid s\nfacet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 4 0 0\nvertex 0 5 0\nendloop\n"
      "endfacet\nendsolid s\n";
  const Converted made = convert(sourceOf(stl, "stl"));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.triangles, 1);
  ASSERT_GE(vertexAt(mesh, {0, 5, 0}), 0);
  EXPECT_EQ(mesh.normal(0), (Float3{0, 0, 1}));
}

TEST(AssimpFiles, AnEdgeOfAMeshWithoutNormalsStaysAnEdge) {
  // Two triangles that meet in an edge at a right angle, which stays an edge.
  const std::string ply =
      "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float "
      "z\nelement face 2\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 0 0\n0 1 "
      "0\n0 "
      "0 1\n3 0 1 2\n3 0 3 1\n";
  const Converted made = convert(sourceOf(ply, "ply"));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.triangles, 2);
  EXPECT_EQ(mesh.desc.vertices, 6);
  const int top = vertexAt(mesh, {0, 1, 0});
  ASSERT_GE(top, 0);
  EXPECT_EQ(mesh.normal(top), (Float3{0, 0, 1}));
}

TEST(AssimpFiles, TrianglesThatMeetAtASmallAngleShareTheirNormals) {
  // A roof of 45 degrees on each side: the normals of the ridge are the mean, which points up.
  const std::string ply =
      "ply\nformat ascii 1.0\nelement vertex 6\nproperty float x\nproperty float y\nproperty float "
      "z\nelement face 2\nproperty list uchar int vertex_indices\nend_header\n0 0 4\n4 0 4\n2 -2 "
      "3\n2 2 3\n0 0 0\n0 0 0\n3 0 2 1\n3 0 1 3\n";
  const Converted made = convert(sourceOf(ply, "ply"));
  const MeshBytes mesh = meshOf(made, 0);
  EXPECT_EQ(mesh.desc.vertices, 4);
  const int ridge = vertexAt(mesh, {0, 0, 4});
  ASSERT_GE(ridge, 0);
  EXPECT_NEAR(mesh.normal(ridge)[1], 0, 1e-6);
  EXPECT_NEAR(mesh.normal(ridge)[2], 1, 1e-6);
}

TEST(AssimpFiles, ColoursOfVerticesMultiplyTheColourOfTheMaterial) {
  const std::string ply =
      "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float "
      "z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nelement face 1\nproperty "
      "list uchar int vertex_indices\nend_header\n0 0 0 255 0 0\n1 0 0 255 0 0\n0 1 0 255 0 0\n3 0 "
      "1 "
      "2\n";
  const Converted made = convert(sourceOf(ply, "ply"));
  const Float3 colour = rgb(made.value(VRDM_CLASS_MATERIAL, 0), "base_color");
  EXPECT_GT(colour[0], 0.1F);
  EXPECT_EQ(colour[1], 0);
  EXPECT_EQ(colour[2], 0);
  EXPECT_FALSE(made.tells("colours of vertices"));
}

TEST(AssimpFiles, AlphasOfVerticesMultiplyTheOpacityOfTheMaterial) {
  const auto ply = [](const char* a, const char* b, const char* c) {
    const std::string colour = " 255 0 0 ";
    return std::string(
               "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float "
               "y\nproperty float z\nproperty uchar red\nproperty uchar green\nproperty uchar "
               "blue\nproperty uchar alpha\nelement face 1\nproperty list uchar int "
               "vertex_indices\nend_header\n") +
           "0 0 0" + colour + a + "\n1 0 0" + colour + b + "\n0 1 0" + colour + c + "\n3 0 1 2\n";
  };
  const Converted uniform = convert(sourceOf(ply("51", "51", "51"), "ply"));
  EXPECT_FLOAT_EQ(uniform.value(VRDM_CLASS_MATERIAL, 0).get<float>("opacity"), 0.2F);
  EXPECT_FALSE(uniform.tells("vertices"));
  const Converted varying = convert(sourceOf(ply("0", "51", "102"), "ply"));
  EXPECT_FLOAT_EQ(varying.value(VRDM_CLASS_MATERIAL, 0).get<float>("opacity"), 0.2F);
  EXPECT_TRUE(varying.tells("alphas of vertices"));
  const Converted opaque = convert(sourceOf(ply("255", "255", "255"), "ply"));
  EXPECT_FALSE(has(opaque.value(VRDM_CLASS_MATERIAL, 0), "opacity"));
  const Converted zero = convert(sourceOf(ply("0", "0", "0"), "ply"));
  EXPECT_FALSE(has(zero.value(VRDM_CLASS_MATERIAL, 0), "opacity"));
  EXPECT_TRUE(zero.tells("an alpha of 0"));
}

TEST(AssimpFiles, AnEmptyMeshDoesNotKeepOthersFromBeingRead) {
  const Converted made =
      convert(sourceOf("solid empty\nendsolid empty\nsolid s\nfacet normal 0 0 1\nouter "
                       "loop\nvertex 0 0 0\nvertex 4 "
                       "0 0\nvertex 0 5 0\nendloop\nendfacet\nendsolid s\n",
                       "stl"));
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 1U);
}

TEST(AssimpFiles, PointsAloneAreRefused) {
  const std::string ply =
      "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty float "
      "z\nend_header\n0 0 0\n1 0 0\n0 1 0\n";
  vrn_convert::Notices notices;
  std::string reason;
  try {
    EXPECT_TRUE(vrn_convert::readAssimp(sourceOf(ply, "ply"), notices).shapes.empty());
  } catch (const vrn_convert::Refused& refused) {
    reason = refused.what();
  }
  EXPECT_EQ(reason.find('\n'), std::string::npos);
}

TEST(AssimpFiles, AFaceThatNamesAVertexThatDoesNotExistIsRefusedWithItsIndex) {
  const auto ply = [](const std::string& last) {
    return "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
           "float z\nelement face 2\nproperty list uchar int vertex_indices\nend_header\n0 0 0\n1 "
           "0 "
           "0\n0 1 0\n3 0 1 2\n3 0 1 " +
           last + "\n";
  };
  EXPECT_EQ(refusal(ply("2"), "ply"), "");
  EXPECT_EQ(refusal(ply("3"), "ply"), "mesh 0, face 1: the index 3 has no vertex; there are 3");
  EXPECT_EQ(refusal(ply("900000000"), "ply"),
            "mesh 0, face 1: the index 900000000 has no vertex; there are 3");
  // -1 as an unsigned number.
  EXPECT_EQ(refusal(ply("-1"), "ply"),
            "mesh 0, face 1: the index 4294967295 has no vertex; there are 3");
}

std::string facet(const std::string& normal, const std::string& corner) {
  return "facet normal " + normal + "\nouter loop\nvertex " + corner +
         "\nvertex 4 0 0\nvertex 0 5 0\nendloop\nendfacet\n";
}

TEST(AssimpFiles, ATriangleWithAVertexThatIsNotFiniteIsLeftOutWithANoticeAndTheOthersStay) {
  for (const char* bad : {"inf 0 0", "0 -inf 0", "0 0 nan", "1e39 0 0"}) {
    for (const bool isFirst : {false, true}) {
      const std::string good = facet("0 0 1", "0 0 0");
      const std::string other = facet("0 0 1", bad);
      const Converted made = convert(
          sourceOf("solid s\n" + (isFirst ? other + good : good + other) + "endsolid s\n", "stl"));
      ASSERT_EQ(made.count(VRDM_CLASS_MESH), 1U) << bad;
      const MeshBytes mesh = meshOf(made, 0);
      ASSERT_EQ(mesh.desc.triangles, 1) << bad;
      const std::vector<std::uint32_t> corners = mesh.indices();
      const auto corner = [&](std::size_t at) {
        return mesh.position(static_cast<int>(corners[at]));
      };
      EXPECT_EQ(corner(0), (Float3{0, 0, 0})) << bad;
      EXPECT_EQ(corner(1), (Float3{4, 0, 0})) << bad;
      EXPECT_EQ(corner(2), (Float3{0, 5, 0})) << bad;
      EXPECT_TRUE(made.tells("not finite; 1 of its triangles are left out")) << bad;
      EXPECT_TRUE(made.hasLoss);
      EXPECT_EQ(checked(made), "");
    }
  }
}

TEST(AssimpFiles, NormalsThatAreNoDirectionsAreComputed) {
  const auto ply = [](const std::string& first) {
    return "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
           "float z\nproperty float nx\nproperty float ny\nproperty float nz\nelement face "
           "1\nproperty list uchar int vertex_indices\nend_header\n0 0 0 " +
           first + "\n1 0 0 0 0 0\n0 1 0 0 0 0\n3 0 2 1\n";
  };
  // Clockwise, so the normal points down. Zeros stand for no normals.
  const Converted none = convert(sourceOf(ply("0 0 0"), "ply"));
  EXPECT_EQ(meshOf(none, 0).normal(0), (Float3{0, 0, -1}));
  EXPECT_FALSE(none.tells("normals"));
  const Converted some = convert(sourceOf(ply("1 0 0"), "ply"));
  EXPECT_EQ(meshOf(some, 0).normal(0), (Float3{0, 0, -1}));
  EXPECT_TRUE(some.tells("normals that are no directions"));
}

// A PLY of a triangle with a property that only some readers know.
std::string plyHeader(const std::string& encoding) {
  return "ply\nformat " + encoding +
         " 1.0\ncomment no end_header\nelement vertex 3\nproperty float x\nproperty float y\n"
         "property float z\nelement face 1\nproperty uchar flags\nproperty list uchar int "
         "vertex_indices\nend_header\n";
}

std::string plyBody(bool isBigEndian) {
  std::string bytes;
  const auto add = [&](const auto number) {
    std::string word(sizeof number, '\0');
    std::memcpy(word.data(), &number, sizeof number);
    if (isBigEndian) std::reverse(word.begin(), word.end());
    bytes += word;
  };
  for (const float number : {0.F, 0.F, 0.F, 2.F, 0.F, 0.F, 0.F, 3.F, 0.F}) add(number);
  bytes += std::string("\7\3", 2);
  for (const std::int32_t number : {0, 1, 2}) add(number);
  return bytes;
}

TEST(AssimpFiles, APlyThatIsCutAnywhereIsRefusedAtOnceAndAWholeOneIsRead) {
  const std::string text = plyHeader("ascii") + "0 0 0\n2 0 0\n0 3 0\n7 3 0 1 2\n";
  const std::string little = plyHeader("binary_little_endian") + plyBody(false);
  const std::string big = plyHeader("binary_big_endian") + plyBody(true);
  for (const std::string& whole : {text, little, big}) {
    const Converted made = convert(sourceOf(whole, "ply"));
    ASSERT_EQ(made.count(VRDM_CLASS_MESH), 1U);
    EXPECT_GE(vertexAt(meshOf(made, 0), {0, 3, 0}), 0);
    const std::size_t header = whole.find("\nend_header\n") + 12;
    for (std::size_t size = 18; size < header - 1; ++size) {
      EXPECT_EQ(refusal(whole.substr(0, size), "ply"),
                "it cannot be read: its header has no line end_header; the file may be cut")
          << size;
    }
  }
  for (const std::string& whole : {little, big}) {
    const std::size_t start = whole.find("\nend_header\n") + 12;
    for (std::size_t size = start; size < whole.size(); ++size) {
      const std::size_t vertices = (size - start) / 12;
      EXPECT_EQ(refusal(whole.substr(0, size), "ply"),
                "it cannot be read: its header tells of " +
                    (vertices < 3 ? "3 vertex elements, and there are " + std::to_string(vertices)
                                  : std::string("1 face elements, and there are 0")) +
                    "; the file may be cut")
          << size;
    }
  }
  EXPECT_EQ(refusal(text.substr(0, text.find("0 3 0")), "ply"),
            "it cannot be read: its header tells of 3 vertex elements, and there are 2; the file "
            "may be cut");
  EXPECT_EQ(refusal(text.substr(0, text.find("7 3")), "ply"),
            "it cannot be read: its header tells of 1 face elements, and there are 0; the file may "
            "be cut");
}

TEST(AssimpFiles, AListOfAPlyThatIsLongerThanTheFileIsRefused) {
  std::string bytes = plyHeader("binary_little_endian") + plyBody(false);
  bytes[bytes.size() - 13] = '\xff';
  EXPECT_EQ(refusal(bytes, "ply"),
            "it cannot be read: its header tells of 1 face elements, and there are 0; the file may "
            "be cut");
}

TEST(AssimpFiles, WhatIsNoModelIsRefused) {
  EXPECT_NE(refusal("nothing of the kind", "obj2"), "");
  EXPECT_EQ(refusal("nothing of the kind", "unheard"),
            "its format is not known; vrn convert --formats lists those that are");
}

// An OBJ in a folder, with its materials and its images.
class ObjFolder : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = std::filesystem::temp_directory_path() /
              (std::string("converter_obj_") +
               testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(folder_);
    write("quad.obj", std::string("mtllib quad.mtl\nusemtl painted\n") + kObj);
    write("Paint.PNG", pngOf(1, 1, 2, 8, {10, 20, 30}));
  }
  void TearDown() override { std::filesystem::remove_all(folder_); }
  void write(const std::string& name, const std::string& bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
  }
  Converted convertFile() const {
    vrn_convert::Source source;
    source.path = (folder_ / "quad.obj").string();
    source.folder = folder_.string();
    source.format = "obj";
    return convert(source);
  }
  std::filesystem::path folder_;
};

TEST_F(ObjFolder, MaterialsBecomeFieldsAndTheirImagesTextures) {
  write("quad.mtl",
        "newmtl painted\nKd 0.5 0.25 0.125\nKs 1 1 1\nNs 30\nKe 0 0 2\nd 0.5\n"
        "map_Kd C:\\pictures\\paint.png\n");
  const Converted made = convertFile();
  const Record value = made.value(VRDM_CLASS_MATERIAL, 0);
  EXPECT_EQ(rgb(value, "base_color"), (Float3{0.5F, 0.25F, 0.125F}));
  EXPECT_EQ(rgb(value, "emission"), (Float3{0, 0, 2}));
  EXPECT_EQ(value.get<float>("opacity"), 0.5F);
  // (2 / (30 + 2)) ^ (1 / 4)
  EXPECT_NEAR(value.get<float>("roughness"), 0.5, 1e-6);
  EXPECT_FALSE(has(value, "metallic"));
  EXPECT_EQ(value.get<std::int32_t>("base_color_texture.sampler.spectrum_texture.spectrum_texture"),
            0);
  // The image is found by its name alone, whatever the case.
  const TextureBytes texture = textureOf(made, 0);
  EXPECT_EQ(texture.desc.format, VRNT_TEXTURE_FORMAT_SRGB8);
  EXPECT_EQ(texture.bytes, (std::vector<std::uint8_t>{10, 20, 30}));
  EXPECT_EQ(checked(made), "");
}

TEST_F(ObjFolder, AMaterialWithoutAHighlightIsDiffuse) {
  write("quad.mtl", "newmtl painted\nKd 1 1 1\nKs 0 0 0\nNs 30\n");
  EXPECT_FALSE(has(convertFile().value(VRDM_CLASS_MATERIAL, 0), "roughness"));
}

TEST_F(ObjFolder, AFileOfMaterialsThatIsNotThereIsToldOnce) {
  const Converted made = convertFile();
  EXPECT_EQ(made.count(VRDM_CLASS_SHAPE), 1U);
  const std::string words = " cannot be opened; what it holds is left out";
  EXPECT_EQ(made.notices.size(), 1U);
  EXPECT_TRUE(made.tells("the file quad.mtl" + words));
  EXPECT_TRUE(made.hasLoss);
  // The reader also looks for quad.mtl, which no file names.
  write("quad.obj", std::string("mtllib sub/gone.mtl\nusemtl painted\n") + kObj);
  const Converted other = convertFile();
  EXPECT_EQ(other.notices.size(), 1U);
  EXPECT_TRUE(other.tells("the file sub/gone.mtl" + words));
  write("quad.mtl", "newmtl painted\nKd 1 0 0\n");
  write("quad.obj", std::string("mtllib quad.mtl\nusemtl painted\n") + kObj);
  EXPECT_TRUE(convertFile().notices.empty());
}

TEST_F(ObjFolder, BytesWithoutAFolderFindNoFile) {
  write("quad.mtl", "newmtl painted\nKd 1 0 0\n");
  const std::string path = (folder_ / "quad.mtl").string();
  const Converted made = convert(sourceOf("mtllib " + path + "\nusemtl painted\n" + kObj, "obj"));
  EXPECT_TRUE(made.tells(path + " cannot be opened"));
}

TEST_F(ObjFolder, AnImageThatIsNotThereIsLeftOutWithANotice) {
  write("quad.mtl", "newmtl painted\nKd 1 1 1\nmap_Kd gone.png\n");
  const Converted made = convertFile();
  EXPECT_TRUE(made.tells("the image gone.png is left out: it was not found"));
  EXPECT_EQ(made.count(VRDM_CLASS_TEXTURE), 0U);
}

TEST(AssimpFiles, AColladaFileHasItsUnitItsAxesAndThePlacesOfItsCameraAndItsLight) {
  // Centimetres, z up; a light of colour 0.5 shines down the file's z axis.
  const std::string dae =
      "<?xml version=\"1.0\"?><COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\" "
      "version=\"1.4.1\"><asset><unit name=\"cm\" meter=\"0.01\"/><up_axis>Z_UP</up_axis></asset>"
      "<library_cameras><camera id=\"c\"><optics><technique_common><perspective><xfov>60</xfov>"
      "<aspect_ratio>2</aspect_ratio><znear>1</znear><zfar>9</zfar></perspective>"
      "</technique_common></optics></camera></library_cameras>"
      "<library_lights><light id=\"l\"><technique_common><directional><color>0.5 0.5 0.5</color>"
      "</directional></technique_common></light></library_lights>"
      "<library_geometries><geometry id=\"g\"><mesh><source id=\"p\"><float_array id=\"pa\" "
      "count=\"9\">0 0 0 100 0 0 0 0 200</float_array><technique_common><accessor source=\"#pa\" "
      "count=\"3\" stride=\"3\"><param name=\"X\" type=\"float\"/><param name=\"Y\" "
      "type=\"float\"/>"
      "<param name=\"Z\" type=\"float\"/></accessor></technique_common></source><vertices id=\"v\">"
      "<input semantic=\"POSITION\" source=\"#p\"/></vertices><triangles count=\"1\"><input "
      "semantic=\"VERTEX\" source=\"#v\" offset=\"0\"/><p>0 1 2</p></triangles></mesh></geometry>"
      "</library_geometries><library_visual_scenes><visual_scene id=\"s\"><node id=\"n\" "
      "name=\"n\"><instance_geometry url=\"#g\"/></node><node id=\"cn\" name=\"cn\"><translate>0 "
      "-300 0</translate><instance_camera url=\"#c\"/></node><node id=\"ln\" name=\"ln\">"
      "<instance_light url=\"#l\"/></node></visual_scene></library_visual_scenes><scene>"
      "<instance_visual_scene url=\"#s\"/></scene></COLLADA>";
  const Converted made = convert(sourceOf(dae, "dae"));
  const MeshBytes mesh = meshOf(made, 0);
  // The vertex at z = 200 cm is 2 m up, which is along y.
  const Float4 y = made.row(VRDM_CLASS_TRANSFORMATION_GROUP, 0, "z");
  float highest = 0;
  for (int i = 0; i < 3; ++i) highest = std::max(highest, mesh.position(i)[2] * y[1]);
  EXPECT_NEAR(highest, 2, 1e-5);
  ASSERT_EQ(made.count(VRDM_CLASS_CAMERA), 1U);
  // The camera at y = -300 cm stands 3 m in front.
  EXPECT_NEAR(made.row(VRDM_CLASS_CAMERA, 0, "w")[2], 3, 1e-5);
  ASSERT_EQ(made.count(VRDM_CLASS_LIGHT), 1U);
  EXPECT_NEAR(rgb(made.value(VRDM_CLASS_LIGHT, 0), "emission")[0], 0.5 * 3.14159265, 1e-5);
  EXPECT_NEAR(made.row(VRDM_CLASS_LIGHT, 0, "z")[1], -1, 1e-5);
}

}  // namespace
