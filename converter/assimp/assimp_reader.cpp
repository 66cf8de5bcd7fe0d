#include "assimp/assimp_reader.hpp"

#include <assimp/DefaultIOSystem.h>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cmath>
#include <deque>
#include <map>
#include <memory>
#include <new>
#include <set>

#include "assimp/materials.hpp"
#include "assimp/ply_check.hpp"
#include "scene_plan/mesh_builder.hpp"
#include "scene_plan/smooth_normals.hpp"
#include "scene_plan/text.hpp"

namespace vrn_convert {
namespace {

constexpr double kPi = 3.14159265358979323846;
// Beyond this angle, an edge of a mesh without normals is an edge. In radians.
constexpr double kSmoothingAngle = 66 * kPi / 180;

Vector vectorOf(const aiVector3D& v) { return {v.x, v.y, v.z}; }

Transform transformOf(const aiMatrix4x4& m) {
  return {{m.a1, m.b1, m.c1}, {m.a2, m.b2, m.c2}, {m.a3, m.b3, m.c3}, {m.a4, m.b4, m.c4}};
}

// Returns a map whose z axis has a direction, and whose y axis is as near to `up` as it can be.
Transform turnedTo(Vector z, Vector up) {
  Transform place;
  place.z = normalised(z, {0, 0, 1});
  const Vector side = std::abs(place.z.x) < 0.9 ? Vector{1, 0, 0} : Vector{0, 1, 0};
  place.x = normalised(cross(up, place.z), normalised(cross(side, place.z), {1, 0, 0}));
  place.y = cross(place.z, place.x);
  return place;
}

// Opens the files that a file names, and notes those that cannot be opened: Assimp's readers go on
// without them, and tell nobody.
class NotingFiles : public Assimp::DefaultIOSystem {
 public:
  // A file without a path finds others in its folder, or, if that is empty, none.
  NotingFiles(const Source& source, bool isFile) : source_(source), isFile_(isFile) {}

  // Tells of the files that were not found in any of the places where a reader looks for them.
  void tell(Notices& notices) const {
    for (const std::string& path : missing_) {
      if (found_.count(nameOf(path)) != 0) continue;
      notices.add("the file " + asUtf8(path) + " cannot be opened; what it holds is left out");
    }
  }

  Assimp::IOStream* Open(const char* file, const char* mode) override {
    std::string path = file;
    if (!isFile_ && !path.empty() && path[0] != '/') path = source_.folder + "/" + path;
    Assimp::IOStream* const stream =
        isFile_ || !source_.folder.empty() ? DefaultIOSystem::Open(path.c_str(), mode) : nullptr;
    if (stream == nullptr) {
      note(file);
    } else {
      found_.insert(nameOf(path));
    }
    return stream;
  }

 private:
  static std::string nameOf(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);  // all of it if there is no folder
  }

  void note(std::string path) {
    // Readers look for animations that no file names.
    for (const std::string end : {".md5anim", ".md5camera", "_animation.txt"}) {
      if (path.size() > end.size() &&
          path.compare(path.size() - end.size(), end.size(), end) == 0) {
        return;
      }
    }
    const std::string folder = source_.folder + "/";
    // Where an OBJ names materials that are not there, its reader looks for some with its own name.
    const std::string guess = source_.path.substr(0, source_.path.rfind('.')) + ".mtl";
    if (path == guess && isLibrary_) return;
    isLibrary_ = path.size() > 4 && path.compare(path.size() - 4, 4, ".mtl") == 0;
    if (folder.size() > 1 && path.compare(0, folder.size(), folder) == 0) {
      path.erase(0, folder.size());
    }
    missing_.push_back(std::move(path));
  }

  const Source& source_;
  bool isFile_;
  bool isLibrary_ = false;  // the last file that could not be opened
  std::vector<std::string> missing_;
  std::set<std::string> found_;  // names without folders
};

// What a plan refers to.
struct Owned {
  Assimp::Importer importer;
  std::deque<std::vector<unsigned char>> files;
};

class Reader {
 public:
  Reader(const Source& source, Notices& notices)
      : owned_(std::make_shared<Owned>()), source_(source), notices_(notices) {}

  ScenePlan read() {
    scene_ = import();
    AssimpImages images(*scene_, source_.folder, plan_.images, owned_->files);
    images_ = &images;
    meshes_.assign(scene_->mNumMeshes, kUnread);
    readNodes();
    tellUnused();
    readCameras();
    readLights();
    plan_.owner = owned_;
    return std::move(plan_);
  }

 private:
  static constexpr int kUnread = -2;
  static constexpr int kEmpty = -1;

  const aiScene* import() {
    Assimp::Importer& importer = owned_->importer;
    importer.SetPropertyInteger(AI_CONFIG_PP_SBP_REMOVE,
                                aiPrimitiveType_POINT | aiPrimitiveType_LINE);
    importer.SetPropertyBool(AI_CONFIG_PP_FD_REMOVE, true);
    // It would take all small triangles for those without an area.
    importer.SetPropertyBool(AI_CONFIG_PP_FD_CHECKAREA, false);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    // Not aiProcess_FindInvalidData: for one vertex that is not finite it drops the whole mesh,
    // and tells nobody.
    constexpr unsigned kSteps = aiProcess_Triangulate | aiProcess_SortByPType |
                                aiProcess_JoinIdenticalVertices | aiProcess_GenUVCoords |
                                aiProcess_TransformUVCoords | aiProcess_FlipUVs |
                                aiProcess_FindDegenerates | aiProcess_GlobalScale;
    if (source_.bytes != nullptr) {
      checkPly({reinterpret_cast<const char*>(source_.bytes), source_.size});
    }
    const bool isFile = !source_.path.empty() && source_.format == extension();
    auto* const files = new NotingFiles(source_, isFile);
    importer.SetIOHandler(files);  // takes it over
    const aiScene* scene = isFile ? importer.ReadFile(source_.path, 0)
                                  : importer.ReadFileFromMemory(source_.bytes, source_.size, 0,
                                                                source_.format.c_str());
    files->tell(notices_);
    if (scene != nullptr) {
      checkNumbers(*scene);
      // Assimp refuses meshes without faces, unless they are of points.
      for (unsigned i = 0; i < scene->mNumMeshes; ++i) {
        aiMesh* const mesh = scene->mMeshes[i];
        if (mesh != nullptr && mesh->mNumFaces == 0) mesh->mPrimitiveTypes = aiPrimitiveType_POINT;
      }
      scene = importer.ApplyPostProcessing(kSteps);
    }
    if (scene == nullptr || scene->mRootNode == nullptr) {
      refuse(oneLine(asUtf8(importer.GetErrorString())));
    }
    return scene;
  }

  // Some of Assimp's readers pass on the numbers of a file unchecked, and its steps behind them
  // read and write at these numbers. (A reader that uses such a number itself is bounded by the
  // child process alone.)
  static void checkNumbers(const aiScene& scene) {
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
      if (scene.mMeshes[i] != nullptr) checkMesh(*scene.mMeshes[i], i);
    }
    std::vector<const aiNode*> waiting{scene.mRootNode};
    while (!waiting.empty()) {
      const aiNode* const node = waiting.back();
      waiting.pop_back();
      if (node == nullptr) continue;
      for (unsigned i = 0; i < node->mNumMeshes; ++i) {
        if (node->mMeshes[i] < scene.mNumMeshes) continue;
        throw Refused("a node has the mesh " + std::to_string(node->mMeshes[i]) + "; there are " +
                      std::to_string(scene.mNumMeshes));
      }
      for (unsigned i = 0; i < node->mNumChildren; ++i) waiting.push_back(node->mChildren[i]);
    }
  }

  static void checkMesh(const aiMesh& mesh, unsigned number) {
    const auto check = [&](unsigned vertex, const std::string& what) {
      if (vertex < mesh.mNumVertices) return;
      throw Refused("mesh " + std::to_string(number) + ", " + what + ": the index " +
                    std::to_string(vertex) + " has no vertex; there are " +
                    std::to_string(mesh.mNumVertices));
    };
    for (unsigned i = 0; i < mesh.mNumFaces; ++i) {
      const aiFace& face = mesh.mFaces[i];
      for (unsigned corner = 0; corner < face.mNumIndices; ++corner) {
        if (face.mIndices[corner] >= mesh.mNumVertices) {
          check(face.mIndices[corner], "face " + std::to_string(i));
        }
      }
    }
    for (unsigned i = 0; i < mesh.mNumBones; ++i) {
      if (mesh.mBones[i] == nullptr) continue;
      for (unsigned weight = 0; weight < mesh.mBones[i]->mNumWeights; ++weight) {
        check(mesh.mBones[i]->mWeights[weight].mVertexId, "a bone");
      }
    }
  }

  // Says some of Assimp's reasons in the words of this program.
  [[noreturn]] static void refuse(const std::string& reason) {
    const auto has = [&reason](const char* words) {
      return reason.find(words) != std::string::npos;
    };
    if (has("No suitable reader found")) {
      throw Refused("its format is not known; vrn convert --formats lists those that are");
    }
    if (has("bad_alloc")) throw std::bad_alloc();
    if (reason.empty() || has("No meshes remaining")) throw Refused(kNoTriangles);
    throw Refused("it cannot be read: " + reason);
  }

  std::string extension() const {
    const std::size_t dot = source_.path.rfind('.');
    std::string text = dot == std::string::npos ? "" : source_.path.substr(dot + 1);
    if (text.find('/') != std::string::npos) text.clear();
    std::transform(text.begin(), text.end(), text.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return text;
  }

  // Nodes and meshes

  void readNodes() {
    std::vector<std::pair<const aiNode*, Transform>> waiting;
    waiting.emplace_back(scene_->mRootNode, source_.root);
    while (!waiting.empty()) {
      const auto [node, parent] = waiting.back();
      waiting.pop_back();
      const Transform place = parent * transformOf(node->mTransformation);
      places_.emplace(node->mName.C_Str(), place);
      readNode(*node, place);
      for (unsigned i = node->mNumChildren; i > 0; --i) {
        if (node->mChildren[i - 1] != nullptr) waiting.emplace_back(node->mChildren[i - 1], place);
      }
    }
  }

  void readNode(const aiNode& node, const Transform& place) {
    const std::string name = asUtf8(node.mName.C_Str());
    if (!place.fitsFloats()) {
      notices_.add(
          "the node " + name +
          " has a matrix that is not finite, or too large; what is at this node is left out");
      return;
    }
    int group = -1;
    for (unsigned i = 0; i < node.mNumMeshes; ++i) {
      const unsigned number = node.mMeshes[i];
      if (number >= scene_->mNumMeshes) continue;
      ShapePlan shape;
      shape.mesh = meshOf(number);
      if (shape.mesh < 0) continue;
      if (group < 0) {
        group = static_cast<int>(plan_.groups.size());
        plan_.groups.push_back({name, place});
      }
      shape.group = group;
      shape.material = shapeMaterials_[number];
      shape.name = name;
      if (node.mNumMeshes > 1) shape.name += "/" + std::to_string(i);
      plan_.shapes.push_back(std::move(shape));
    }
  }

  int meshOf(unsigned number) {
    int& known = meshes_[number];
    if (known != kUnread) return known;
    known = kEmpty;
    const aiMesh* const mesh = scene_->mMeshes[number];
    if (mesh == nullptr || !mesh->HasPositions() || !mesh->HasFaces()) return known;
    std::vector<std::uint32_t> indices;
    indices.reserve(3 * std::size_t{mesh->mNumFaces});
    for (unsigned i = 0; i < mesh->mNumFaces; ++i) {
      const aiFace& face = mesh->mFaces[i];
      if (face.mNumIndices == 3 && face.mIndices != nullptr && hasArea(*mesh, face)) {
        indices.insert(indices.end(), face.mIndices, face.mIndices + face.mNumIndices);
      }
    }
    if (indices.empty()) return known;

    const int material = materialOf(*mesh);
    const std::optional<TexturePlan>& normals =
        plan_.materials[static_cast<std::size_t>(material)].normalTexture;
    MeshSource source;
    source.name = "mesh " + std::to_string(number);
    const std::size_t count = mesh->mNumVertices;
    source.positions = viewOf(mesh->mVertices, count, 3);
    if (hasNormals(*mesh, indices, source.name)) {
      source.normals = viewOf(mesh->mNormals, count, 3);
    }
    if (mesh->HasTangentsAndBitangents()) source.tangents = viewOf(mesh->mTangents, count, 3);
    for (unsigned set = 0; set < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++set) {
      if (!mesh->HasTextureCoords(set)) break;
      source.coordinates.push_back(viewOf(mesh->mTextureCoords[set], count, 3));
    }
    source.indices = {reinterpret_cast<const unsigned char*>(indices.data()),
                      sizeof(std::uint32_t),
                      indices.size(),
                      Component::UInt32,
                      false,
                      1};
    source.needsTangents = normals.has_value();
    source.tangentSet = normals ? static_cast<std::size_t>(normals->set) : 0;
    SmoothArrays smooth;
    if (!source.normals) addSmoothNormals(source, kSmoothingAngle, smooth);
    if (mesh->HasBones()) notices_.add("skins are carried in the pose that the mesh has");
    if (mesh->mNumAnimMeshes > 0) notices_.add("morph targets are not carried");
    MeshPlan built = buildMesh(source, notices_);
    if (built.desc.triangles == 0) return known;
    built.name = asUtf8(mesh->mName.C_Str());
    known = static_cast<int>(plan_.meshes.size());
    shapeMaterials_[number] = material;
    plan_.meshes.push_back(std::move(built));
    return known;
  }

  // Returns whether the normals of a mesh are directions. Some programs write zeros for none. If
  // only some are directions, all are computed, so that they fit to each other.
  bool hasNormals(const aiMesh& mesh, const std::vector<std::uint32_t>& indices,
                  const std::string& name) {
    if (!mesh.HasNormals()) return false;
    bool hasSome = false, hasAll = true;
    for (const std::uint32_t index : indices) {
      // Triangles with a vertex that is not finite are left out.
      if (!isFinite(vectorOf(mesh.mVertices[index]))) continue;
      const double size = length(vectorOf(mesh.mNormals[index]));
      const bool isDirection = size > 0 && std::isfinite(size);
      hasSome |= isDirection;
      hasAll &= isDirection;
    }
    if (hasSome && !hasAll) {
      notices_.add(name + " has normals that are no directions; all of its normals are computed");
    }
    return hasAll;
  }

  // Returns whether a triangle has an area, whatever its size is. One with a vertex that is not
  // finite is for others to leave out, who tell so.
  static bool hasArea(const aiMesh& mesh, const aiFace& face) {
    const Vector origin = vectorOf(mesh.mVertices[face.mIndices[0]]);
    const Vector a = vectorOf(mesh.mVertices[face.mIndices[1]]) - origin;
    const Vector b = vectorOf(mesh.mVertices[face.mIndices[2]]) - origin;
    constexpr double kLeast = 1e-10;  // of the product of two sides
    const double area = length(cross(a, b));
    return !std::isfinite(area) || area > kLeast * length(a) * length(b);
  }

  // Returns the material of a mesh, multiplied by the mean of the colours of its vertices.
  int materialOf(const aiMesh& mesh) {
    const std::array<float, 4> tint = tintOf(mesh);
    const auto [found, isNew] = materials_.emplace(std::pair{mesh.mMaterialIndex, tint}, 0);
    if (!isNew) return found->second;
    MaterialPlan plan;
    if (mesh.mMaterialIndex < scene_->mNumMaterials &&
        scene_->mMaterials[mesh.mMaterialIndex] != nullptr) {
      plan = assimpMaterial(*scene_->mMaterials[mesh.mMaterialIndex], *images_, notices_);
      plan.name = asUtf8(plan.name);
    } else {
      plan.baseColour = {0.6F, 0.6F, 0.6F};
    }
    for (std::size_t i = 0; i < 3; ++i) plan.baseColour[i] *= tint[i];
    plan.opacity *= tint[3];
    found->second = static_cast<int>(plan_.materials.size());
    plan_.materials.push_back(std::move(plan));
    return found->second;
  }

  // Returns the means of the colours and the alphas of the vertices of a mesh.
  std::array<float, 4> tintOf(const aiMesh& mesh) {
    std::array<float, 4> tint{1, 1, 1, 1};
    if (!mesh.HasVertexColors(0)) return tint;
    const aiColor4D* const colours = mesh.mColors[0];
    std::array<double, 4> sum{};
    bool isUniform = true, isAlphaUniform = true;
    for (unsigned i = 0; i < mesh.mNumVertices; ++i) {
      const aiColor4D& colour = colours[i];
      const float channels[4] = {colour.r, colour.g, colour.b, colour.a};
      for (std::size_t lane = 0; lane < 4; ++lane) {
        if (std::isfinite(channels[lane])) {
          sum[lane] += std::clamp(static_cast<double>(channels[lane]), 0.0, 1.0);
        }
      }
      const aiColor4D& first = colours[0];
      isUniform &= colour.r == first.r && colour.g == first.g && colour.b == first.b;
      isAlphaUniform &= colour.a == first.a;
    }
    const auto mean = [&](std::size_t lane) {
      return static_cast<float>(sum[lane] / mesh.mNumVertices);
    };
    const bool isBlack = sum[0] + sum[1] + sum[2] == 0;
    // Some formats have the colour black for none.
    if (!isBlack) {
      if (!isUniform) notices_.add(kMeanColours);
      for (std::size_t lane = 0; lane < 3; ++lane) tint[lane] = mean(lane);
    }
    if (sum[3] > 0) {
      if (!isAlphaUniform) notices_.add(kMeanAlphas);
      tint[3] = mean(3);
    } else if (!isBlack) {
      notices_.add(
          "colours of vertices with an alpha of 0 are carried as opaque; the formats disagree "
          "about what it means");
    }
    return tint;
  }

  void tellUnused() {
    if (scene_->mNumAnimations > 0) {
      notices_.add("animations are not carried; the scene is that of the file without them");
    }
  }

  // Cameras and lights stand at the node of their name.

  Transform placeOf(const aiString& name) const {
    const auto found = places_.find(name.C_Str());
    return found == places_.end() ? source_.root : found->second;
  }

  void readCameras() {
    for (unsigned i = 0; i < scene_->mNumCameras; ++i) {
      if (scene_->mCameras[i] == nullptr) continue;
      const aiCamera& from = *scene_->mCameras[i];
      const Transform node = placeOf(from.mName);
      CameraPlan camera;
      camera.name = asUtf8(from.mName.C_Str());
      camera.place =
          turnedTo(node.direction(vectorOf(from.mLookAt)) * -1, node.direction(vectorOf(from.mUp)));
      camera.place.w = node.point(vectorOf(from.mPosition));
      if (!camera.place.fitsFloats()) {
        notices_.add("a camera has a place that is not finite, or too large; it is left out");
        continue;
      }
      const float aspect = from.mAspect > 0 && from.mAspect < 1e3F ? from.mAspect : 1.5F;
      camera.filmWidth = camera.filmHeight * aspect;
      if (from.mOrthographicWidth > 0 && std::isfinite(from.mOrthographicWidth)) {
        camera.isOrthographic = true;
        camera.filmWidth = 2 * from.mOrthographicWidth * static_cast<float>(source_.scale);
        camera.filmHeight = camera.filmWidth / aspect;
      } else {
        const double angle = from.mHorizontalFOV;
        // Some of Assimp's readers lose the angle, and then tell less than a degree.
        const bool isAngle = angle > kPi / 180 && angle < kPi - 0.001;
        if (!isAngle) notices_.add("the angle of view of a camera is lost; it has 45 degrees");
        camera.focalLength = static_cast<float>(0.5 * static_cast<double>(camera.filmWidth) /
                                                std::tan(isAngle ? 0.5 * angle : kPi / 8));
      }
      plan_.cameras.push_back(std::move(camera));
    }
  }

  void readLights() {
    const Box box = plan_.box();
    for (unsigned i = 0; i < scene_->mNumLights; ++i) {
      if (scene_->mLights[i] != nullptr) readLight(*scene_->mLights[i], box);
    }
  }

  void readLight(const aiLight& from, const Box& box) {
    LightPlan light;
    light.name = asUtf8(from.mName.C_Str());
    const Transform node = placeOf(from.mName);
    light.place =
        turnedTo(node.direction(vectorOf(from.mDirection)), node.direction(vectorOf(from.mUp)));
    light.place.w = node.point(vectorOf(from.mPosition));
    const aiColor3D& colour =
        from.mType == aiLightSource_AMBIENT ? from.mColorAmbient : from.mColorDiffuse;
    light.emission = {colour.r, colour.g, colour.b};
    for (float& channel : light.emission) {
      channel = std::isfinite(channel) ? std::clamp(channel, 0.0F, 1e9F) : 0;
    }
    if (!light.place.fitsFloats() || light.emission == Colour{0, 0, 0}) {
      notices_.add(
          "lights without a colour, or without a place that floats can hold, are left out");
      return;
    }
    // In these formats, a white surface that faces a light of colour 1 has the radiance 1.
    double factor = kPi;
    switch (from.mType) {
      case aiLightSource_DIRECTIONAL:
        light.kind = LightKind::Directional;
        break;
      case aiLightSource_AMBIENT:
        light.kind = LightKind::Environment;
        light.isSeenByCamera = false;
        factor = 1;
        break;
      case aiLightSource_AREA:
        light.kind = LightKind::Rectangle;
        light.place.x = light.place.x * std::max(1e-6, static_cast<double>(from.mSize.x));
        light.place.y = light.place.y * std::max(1e-6, static_cast<double>(from.mSize.y));
        factor = 1;
        break;
      case aiLightSource_SPOT: {
        light.kind = LightKind::Spot;
        const auto angle = [](float whole) {
          return std::isfinite(whole) ? std::clamp(0.5F * whole, 0.0F, 1.57F) : 0.785F;
        };
        light.innerConeAngle = angle(from.mAngleInnerCone);
        light.outerConeAngle = std::max(angle(from.mAngleOuterCone), light.innerConeAngle);
        if (light.outerConeAngle == 0) light.outerConeAngle = 0.785F;
        factor *= falloff(from, light.place.w, box);
        break;
      }
      default:
        factor *= falloff(from, light.place.w, box);
        break;
    }
    for (float& channel : light.emission) {
      channel = static_cast<float>(std::min(static_cast<double>(channel) * factor, 1e30));
    }
    plan_.lights.push_back(std::move(light));
  }

  // Light falls off with the square of the distance. One that does not in its file is as strong as
  // there at the middle of the scene.
  double falloff(const aiLight& from, Vector place, const Box& box) {
    const double constant = std::max(0.0F, from.mAttenuationConstant);
    const double linear = std::max(0.0F, from.mAttenuationLinear);
    const double square = std::max(0.0F, from.mAttenuationQuadratic);
    if (constant == 0 && linear == 0 && square > 0) return source_.scale * source_.scale / square;
    notices_.add(
        "lights fall off with the square of the distance; those that do not in the file "
        "are as strong as there at the middle of the scene");
    const Vector centre = box.isEmpty() ? Vector{} : (box.low + box.high) * 0.5;
    const double distance = std::max(length(place - centre), 1e-6);
    const double units = distance / source_.scale;
    const double attenuation = constant + linear * units + square * units * units;
    return distance * distance / (attenuation > 0 ? attenuation : 1);
  }

  std::shared_ptr<Owned> owned_;
  const Source& source_;
  Notices& notices_;
  const aiScene* scene_ = nullptr;
  AssimpImages* images_ = nullptr;
  ScenePlan plan_;
  std::vector<int> meshes_;                 // of the plan, by the meshes of the file
  std::map<unsigned, int> shapeMaterials_;  // of the plan, by the meshes of the file
  std::map<std::pair<unsigned, std::array<float, 4>>, int> materials_;
  std::map<std::string, Transform> places_;
};

}  // namespace

bool assimpReads(const std::string& extension) {
  return !extension.empty() && Assimp::Importer().IsExtensionSupported("." + extension);
}

std::string formatsText() {
  aiString list;
  Assimp::Importer().GetExtensionList(list);
  std::vector<std::string> extensions = {"glb", "gltf"};
  const std::string text = list.C_Str();
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find(';', start), text.size());
    const std::size_t name = start + 2;  // behind *.
    if (name < end) extensions.push_back(text.substr(name, end - name));
    start = end + 1;
  }
  std::sort(extensions.begin(), extensions.end());
  extensions.erase(std::unique(extensions.begin(), extensions.end()), extensions.end());
  std::string lines;
  for (const std::string& extension : extensions) lines += extension + "\n";
  return lines;
}

ScenePlan readAssimp(const Source& source, Notices& notices) {
  return Reader(source, notices).read();
}

}  // namespace vrn_convert
