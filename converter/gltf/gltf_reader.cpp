#include "gltf/gltf_reader.hpp"

#include <cmath>
#include <map>
#include <memory>
#include <set>
#include <tuple>

#include "gltf/accessors.hpp"
#include "gltf/deformation.hpp"
#include "gltf/gltf_file.hpp"
#include "gltf/materials.hpp"
#include "scene_plan/mesh_builder.hpp"

namespace vrn_convert {
namespace {

constexpr double kPi = 3.14159265358979323846;

std::string numbered(const char* what, std::size_t number) {
  return std::string(what) + " " + std::to_string(number);
}

// Directions without their lengths: lights and cameras have no size.
Transform withoutScale(const Transform& place) {
  Transform result;
  result.z = normalised(place.z, {0, 0, 1});
  result.x = normalised(place.x - result.z * dot(place.x, result.z), {1, 0, 0});
  result.y = cross(result.z, result.x);
  result.w = place.w;
  return result;
}

class Reader {
 public:
  Reader(const Source& source, Notices& notices)
      : model_(std::make_shared<tinygltf::Model>(loadGltf(source))),
        accessors_(*model_),
        source_(source),
        notices_(notices) {}

  ScenePlan read() {
    tellUnused();
    readImages();
    placeNodes();
    for (const int node : order_) readNode(static_cast<std::size_t>(node));
    if (leftOut_ > 0) {
      notices_.add(numbered("points and lines are left out:", leftOut_) + " primitives");
    }
    plan_.owner = model_;
    return std::move(plan_);
  }

 private:
  void tellUnused() {
    if (!model_->animations.empty()) {
      notices_.add("animations are not carried; the scene is that of the file without them");
    }
    if (model_->scenes.size() > 1) {
      notices_.add(numbered("only one scene is carried, of", model_->scenes.size()));
    }
  }

  void readImages() {
    for (std::size_t i = 0; i < model_->images.size(); ++i) {
      const tinygltf::Image& image = model_->images[i];
      ImagePlan plan;
      plan.name = !image.name.empty()  ? image.name
                  : !image.uri.empty() ? image.uri
                                       : numbered("image", i);
      if (image.bufferView >= 0) {
        const ByteRange range = accessors_.view(image.bufferView, numbered("image", i));
        plan.data = range.data;
        plan.size = range.size;
      } else if (!image.image.empty()) {
        plan.data = image.image.data();
        plan.size = image.image.size();
      }
      plan_.images.push_back(std::move(plan));
    }
  }

  // Nodes

  Transform localOf(const tinygltf::Node& node) const {
    if (node.matrix.size() == 16) {
      const std::vector<double>& m = node.matrix;
      return {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}, {m[12], m[13], m[14]}};
    }
    Transform place;
    if (node.rotation.size() == 4) {
      const std::vector<double>& q = node.rotation;
      place = Transform::rotation(q[0], q[1], q[2], q[3]);
    }
    if (node.scale.size() == 3) {
      place = place * Transform::scaling({node.scale[0], node.scale[1], node.scale[2]});
    }
    if (node.translation.size() == 3) {
      place.w = {node.translation[0], node.translation[1], node.translation[2]};
    }
    return place;
  }

  std::vector<int> roots() const {
    if (!model_->scenes.empty()) {
      const int wanted = std::max(0, model_->defaultScene);
      if (static_cast<std::size_t>(wanted) >= model_->scenes.size()) {
        throw Refused("there is no scene " + std::to_string(wanted));
      }
      return model_->scenes[static_cast<std::size_t>(wanted)].nodes;
    }
    std::vector<bool> isChild(model_->nodes.size());
    for (const tinygltf::Node& node : model_->nodes) {
      for (const int child : node.children) {
        if (child >= 0 && static_cast<std::size_t>(child) < isChild.size()) {
          isChild[static_cast<std::size_t>(child)] = true;
        }
      }
    }
    std::vector<int> found;
    for (std::size_t i = 0; i < isChild.size(); ++i) {
      if (!isChild[i]) found.push_back(static_cast<int>(i));
    }
    return found;
  }

  // Goes through the tree without recursion, so that its depth takes no stack.
  void placeNodes() {
    places_.resize(model_->nodes.size());
    std::vector<bool> isPlaced(model_->nodes.size());
    std::vector<std::pair<int, Transform>> waiting;
    const auto add = [&](int node, const Transform& parent) {
      if (node < 0 || static_cast<std::size_t>(node) >= model_->nodes.size()) {
        throw Refused("there is no node " + std::to_string(node));
      }
      if (isPlaced[static_cast<std::size_t>(node)]) {
        throw Refused(numbered("the node", static_cast<std::size_t>(node)) +
                      " is in the tree twice, so it is no tree");
      }
      isPlaced[static_cast<std::size_t>(node)] = true;
      waiting.emplace_back(node, parent);
    };
    const std::vector<int> first = roots();
    for (auto at = first.rbegin(); at != first.rend(); ++at) add(*at, source_.root);
    while (!waiting.empty()) {
      const auto [number, parent] = waiting.back();
      waiting.pop_back();
      const tinygltf::Node& node = model_->nodes[static_cast<std::size_t>(number)];
      const Transform place = parent * localOf(node);
      places_[static_cast<std::size_t>(number)] = place;
      order_.push_back(number);
      for (auto at = node.children.rbegin(); at != node.children.rend(); ++at) add(*at, place);
    }
  }

  void readNode(std::size_t number) {
    const tinygltf::Node& node = model_->nodes[number];
    const Transform& place = places_[number];
    if (!place.fitsFloats()) {
      notices_.add(numbered("the node", number) +
                   " has a matrix that is not finite, or too large; what is at " +
                   "this node is left out");
      return;
    }
    if (node.mesh >= 0) readMeshNode(number, node, place);
    if (node.camera >= 0) readCamera(node, place);
    const auto light = node.extensions.find("KHR_lights_punctual");
    if (light != node.extensions.end()) {
      readLight(static_cast<int>(numberAt(light->second, "light", -1)), node, place);
    }
  }

  // Meshes

  void readMeshNode(std::size_t number, const tinygltf::Node& node, const Transform& place) {
    if (static_cast<std::size_t>(node.mesh) >= model_->meshes.size()) {
      throw Refused("there is no mesh " + std::to_string(node.mesh));
    }
    const tinygltf::Mesh& mesh = model_->meshes[static_cast<std::size_t>(node.mesh)];
    const std::string name = !node.name.empty()   ? node.name
                             : !mesh.name.empty() ? mesh.name
                                                  : numbered("node", number);
    const std::vector<Transform> joints = jointsOf(node);
    const std::vector<double>& weights = node.weights.empty() ? mesh.weights : node.weights;
    std::vector<std::pair<std::size_t, ShapePlan>> parts;
    for (std::size_t i = 0; i < mesh.primitives.size(); ++i) {
      ShapePlan shape;
      shape.name = mesh.primitives.size() == 1 ? name : name + "/" + std::to_string(i);
      if (readPrimitive(static_cast<std::size_t>(node.mesh), i, weights, joints, shape)) {
        parts.emplace_back(i, std::move(shape));
      }
    }
    if (parts.empty()) return;
    if (!joints.empty()) {
      // The joints place the vertices in the world.
      for (auto& [index, shape] : parts) plan_.shapes.push_back(std::move(shape));
      return;
    }
    for (const Transform& instance : instancesOf(number, node, place)) {
      const int group = static_cast<int>(plan_.groups.size());
      plan_.groups.push_back({name, instance});
      for (const auto& [index, part] : parts) {
        ShapePlan shape = part;
        shape.group = group;
        plan_.shapes.push_back(std::move(shape));
      }
    }
  }

  std::vector<Transform> jointsOf(const tinygltf::Node& node) {
    std::vector<Transform> joints;
    if (node.skin < 0) return joints;
    if (static_cast<std::size_t>(node.skin) >= model_->skins.size()) {
      throw Refused("there is no skin " + std::to_string(node.skin));
    }
    notices_.add("skins are carried in the pose that the nodes of the file have");
    const tinygltf::Skin& skin = model_->skins[static_cast<std::size_t>(node.skin)];
    Attribute matrices;
    if (skin.inverseBindMatrices >= 0) {
      matrices = accessors_.get(skin.inverseBindMatrices, 16, "a skin");
      if (matrices.count < skin.joints.size()) {
        throw Refused("a skin has more joints than matrices");
      }
    }
    for (std::size_t i = 0; i < skin.joints.size(); ++i) {
      const int joint = skin.joints[i];
      if (joint < 0 || static_cast<std::size_t>(joint) >= places_.size()) {
        throw Refused("there is no node " + std::to_string(joint));
      }
      Transform bind;
      if (matrices) {
        float m[16];
        matrices.read(i, m, 16);
        bind = {{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}, {m[12], m[13], m[14]}};
      }
      joints.push_back(places_[static_cast<std::size_t>(joint)] * bind);
    }
    return joints;
  }

  // The places of a node's mesh: its own, or one for each of EXT_mesh_gpu_instancing.
  std::vector<Transform> instancesOf(std::size_t number, const tinygltf::Node& node,
                                     const Transform& place) {
    const auto found = node.extensions.find("EXT_mesh_gpu_instancing");
    if (found == node.extensions.end() || !found->second.Has("attributes")) return {place};
    const tinygltf::Value& attributes = found->second.Get("attributes");
    const std::string what = numbered("the instances of node", number);
    std::size_t count = 0;
    const auto array = [&](const char* name, int lanes) {
      if (!attributes.Has(name)) return Attribute{};
      const Attribute view =
          accessors_.get(static_cast<int>(numberAt(attributes, name, -1)), lanes, what);
      if (count != 0 && view.count != count) throw Refused(what + " have arrays of other lengths");
      count = view.count;
      return view;
    };
    const Attribute moves = array("TRANSLATION", 3);
    const Attribute turns = array("ROTATION", 4);
    const Attribute sizes = array("SCALE", 3);
    std::vector<Transform> places;
    for (std::size_t i = 0; i < count; ++i) {
      Transform instance;
      float n[4];
      if (turns) {
        turns.read(i, n, 4);
        instance = Transform::rotation(n[0], n[1], n[2], n[3]);
      }
      if (sizes) {
        sizes.read(i, n, 3);
        instance = instance * Transform::scaling({n[0], n[1], n[2]});
      }
      if (moves) {
        moves.read(i, n, 3);
        instance.w = {n[0], n[1], n[2]};
      }
      const Transform whole = place * instance;
      if (whole.fitsFloats()) {
        places.push_back(whole);
      } else {
        notices_.add(what + ": some are not finite, or too large, and are left out");
      }
    }
    return places;
  }

  // Returns whether there are triangles.
  bool readPrimitive(std::size_t mesh, std::size_t index, const std::vector<double>& weights,
                     const std::vector<Transform>& joints, ShapePlan& shape) {
    const tinygltf::Primitive& primitive = model_->meshes[mesh].primitives[index];
    if (primitive.mode >= TINYGLTF_MODE_POINTS && primitive.mode < TINYGLTF_MODE_TRIANGLES) {
      if (countedPrimitives_.emplace(mesh, index).second) ++leftOut_;
      return false;
    }
    if (primitive.mode > TINYGLTF_MODE_TRIANGLE_FAN) {
      throw Refused(numbered("mesh", mesh) + ": the mode " + std::to_string(primitive.mode) +
                    " of a primitive does not exist");
    }
    if (primitive.attributes.count("POSITION") == 0) {
      notices_.add(numbered("mesh", mesh) + " has a primitive without positions; it is left out");
      return false;
    }
    const std::string what = numbered("mesh", mesh) + numbered(", primitive", index);
    shape.material = materialOf(primitive, what);
    const std::optional<TexturePlan>& normals =
        plan_.materials[static_cast<std::size_t>(shape.material)].normalTexture;
    const bool needsTangents = normals.has_value();
    const int tangentSet = needsTangents ? normals->set : 0;

    const bool isMorphed = !primitive.targets.empty();
    if (isMorphed) notices_.add("morph targets are carried with the weights that the file has");
    // A mesh that nothing bends is built once, however many nodes and primitives use its arrays.
    Key key;
    if (joints.empty()) {
      key = keyOf(primitive, needsTangents, tangentSet);
      if (isMorphed) key.weights = weights;
      if (isMorphed) key.targets = {mesh, index};
      const auto found = built_.find(key);
      if (found != built_.end()) {
        shape.mesh = found->second;
        return shape.mesh >= 0;
      }
    }
    MeshPlan built = build(primitive, what, needsTangents, tangentSet, weights, joints);
    accessors_.clear();
    if (built.desc.triangles > 0) {
      built.name = model_->meshes[mesh].name;
      shape.mesh = static_cast<int>(plan_.meshes.size());
      plan_.meshes.push_back(std::move(built));
    }
    if (joints.empty()) built_[key] = shape.mesh;
    return shape.mesh >= 0;
  }

  struct Key {
    std::vector<int> arrays;
    std::vector<double> weights;
    std::pair<std::size_t, std::size_t> targets;

    friend bool operator<(const Key& a, const Key& b) {
      return std::tie(a.arrays, a.weights, a.targets) < std::tie(b.arrays, b.weights, b.targets);
    }
  };

  static int arrayOf(const tinygltf::Primitive& primitive, const std::string& name) {
    const auto found = primitive.attributes.find(name);
    return found == primitive.attributes.end() ? -1 : found->second;
  }

  static Key keyOf(const tinygltf::Primitive& primitive, bool needsTangents, int tangentSet) {
    Key key;
    key.arrays = {primitive.indices,
                  primitive.mode,
                  arrayOf(primitive, "POSITION"),
                  arrayOf(primitive, "NORMAL"),
                  arrayOf(primitive, "TANGENT"),
                  needsTangents ? 1 + tangentSet : 0};
    for (int set = 0;; ++set) {
      const int array = arrayOf(primitive, "TEXCOORD_" + std::to_string(set));
      if (array < 0) break;
      key.arrays.push_back(array);
    }
    return key;
  }

  MeshPlan build(const tinygltf::Primitive& primitive, const std::string& what, bool needsTangents,
                 int tangentSet, const std::vector<double>& weights,
                 const std::vector<Transform>& joints) {
    MeshSource source;
    source.name = what;
    source.topology = primitive.mode == TINYGLTF_MODE_TRIANGLE_STRIP ? Topology::Strip
                      : primitive.mode == TINYGLTF_MODE_TRIANGLE_FAN ? Topology::Fan
                                                                     : Topology::Triangles;
    source.needsTangents = needsTangents;
    source.tangentSet = static_cast<std::size_t>(tangentSet);
    const auto array = [&](const std::string& name, int lanes) {
      const int accessor = arrayOf(primitive, name);
      if (accessor < 0) return Attribute{};
      const Attribute view = accessors_.get(accessor, lanes, what + ", " + name);
      if (source.positions && view.count != source.positions.count) {
        throw Refused(what + ": there are " + std::to_string(view.count) + " of " + name + " for " +
                      std::to_string(source.positions.count) + " vertices");
      }
      return view;
    };
    source.positions = array("POSITION", 3);
    source.normals = array("NORMAL", 3);
    source.tangents = array("TANGENT", 4);
    for (int set = 0;; ++set) {
      const Attribute view = array("TEXCOORD_" + std::to_string(set), 2);
      if (!view) break;
      source.coordinates.push_back(view);
    }
    if (primitive.indices >= 0) source.indices = accessors_.indices(primitive.indices, what);
    if (source.tangents && needsTangents) tellMirrored(source.tangents);

    Deformation moved;
    if (!primitive.targets.empty()) addTargets(primitive, weights, accessors_, source, moved);
    if (!joints.empty()) bendSkin(primitive, joints, accessors_, source, moved);
    return buildMesh(source, notices_);
  }

  void tellMirrored(const Attribute& tangents) {
    for (std::size_t i = 0; i < tangents.count; ++i) {
      float tangent[4];
      tangents.read(i, tangent, 4);
      if (tangent[3] >= 0) continue;
      notices_.add(
          "a normal map lies mirrored on a mesh; a scene has no place for this, so the "
          "map's second direction is turned there");
      return;
    }
  }

  // Materials

  // Returns the material of a primitive. Colours of vertices have no place in a scene; their mean
  // multiplies the colour of the material.
  int materialOf(const tinygltf::Primitive& primitive, const std::string& what) {
    if (primitive.material >= 0 &&
        static_cast<std::size_t>(primitive.material) >= model_->materials.size()) {
      throw Refused("there is no material " + std::to_string(primitive.material));
    }
    const Tint& tint = tintOf(primitive, what);
    const bool hasAlpha =
        primitive.material >= 0 &&
        isTransparent(model_->materials[static_cast<std::size_t>(primitive.material)]);
    if (hasAlpha && !tint.isAlphaUniform) notices_.add(kMeanAlphas);
    const float alpha = hasAlpha ? tint.alpha : 1;
    const auto [found, isNew] =
        materials_.emplace(std::tuple{std::max(-1, primitive.material), tint.colour, alpha}, 0);
    if (isNew) {
      MaterialPlan plan =
          primitive.material < 0
              ? defaultGltfMaterial()
              : gltfMaterial(*model_,
                             model_->materials[static_cast<std::size_t>(primitive.material)],
                             notices_);
      Colour& ground = plan.roughness ? plan.baseColour : plan.emission;  // of an unlit material
      for (std::size_t i = 0; i < 3; ++i) ground[i] *= tint.colour[i];
      plan.opacity *= alpha;
      found->second = static_cast<int>(plan_.materials.size());
      plan_.materials.push_back(std::move(plan));
    }
    return found->second;
  }

  // The means of the colours and the alphas of the vertices of a mesh.
  struct Tint {
    Colour colour{1, 1, 1};
    float alpha = 1;
    bool isAlphaUniform = true;
  };

  const Tint& tintOf(const tinygltf::Primitive& primitive, const std::string& what) {
    static const Tint kNone;
    const int accessor = arrayOf(primitive, "COLOR_0");
    if (accessor < 0) return kNone;
    const auto [known, isNew] = tints_.emplace(accessor, Tint{});
    Tint& tint = known->second;
    if (!isNew) return tint;
    const Attribute colours = accessors_.get(accessor, 0, what + ", COLOR_0");
    if (colours.lanes != 3 && colours.lanes != 4) {
      throw Refused(what + ": COLOR_0 has no elements of 3 or 4 numbers");
    }
    const auto lanes = static_cast<std::size_t>(colours.lanes);
    using Channels = std::array<float, 4>;
    Channels first{1, 1, 1, 1};
    std::array<double, 4> sum{};
    bool isUniform = true;
    for (std::size_t i = 0; i < colours.count; ++i) {
      Channels channels{1, 1, 1, 1};
      colours.read(i, channels.data(), colours.lanes);
      for (std::size_t lane = 0; lane < lanes; ++lane) {
        float& channel = channels[lane];
        channel = std::isfinite(channel) ? std::clamp(channel, 0.0F, 1.0F) : 0;
        sum[lane] += static_cast<double>(channel);
      }
      if (i == 0) first = channels;
      isUniform &= std::equal(channels.begin(), channels.begin() + 3, first.begin());
      tint.isAlphaUniform &= channels[3] == first[3];
    }
    const auto mean = [&](std::size_t lane) {
      return static_cast<float>(sum[lane] / static_cast<double>(colours.count));
    };
    if (!isUniform) notices_.add(kMeanColours);
    for (std::size_t lane = 0; lane < 3; ++lane) {
      tint.colour[lane] = isUniform ? first[lane] : mean(lane);
    }
    tint.alpha = tint.isAlphaUniform ? first[3] : mean(3);
    return tint;
  }

  // Cameras and lights

  void readCamera(const tinygltf::Node& node, const Transform& place) {
    if (static_cast<std::size_t>(node.camera) >= model_->cameras.size()) {
      throw Refused("there is no camera " + std::to_string(node.camera));
    }
    const tinygltf::Camera& from = model_->cameras[static_cast<std::size_t>(node.camera)];
    CameraPlan camera;
    camera.name = node.name.empty() ? from.name : node.name;
    camera.place = withoutScale(place);
    const auto isPositive = [](double number) { return number > 0 && number < 1e6; };
    if (from.type == "orthographic") {
      const tinygltf::OrthographicCamera& lens = from.orthographic;
      if (!isPositive(std::abs(lens.xmag)) || !isPositive(std::abs(lens.ymag))) {
        notices_.add("an orthographic camera has no extent; it is left out");
        return;
      }
      camera.isOrthographic = true;
      camera.filmWidth = static_cast<float>(2 * std::abs(lens.xmag) * source_.scale);
      camera.filmHeight = static_cast<float>(2 * std::abs(lens.ymag) * source_.scale);
      camera.nearDistance = nearOf(lens.znear);
    } else {
      const tinygltf::PerspectiveCamera& lens = from.perspective;
      if (!(lens.yfov > 0) || !(lens.yfov < kPi)) {
        notices_.add("a camera has no angle of view that it can have; it is left out");
        return;
      }
      const double half = 0.5 * static_cast<double>(camera.filmHeight);
      if (isPositive(lens.aspectRatio)) {
        camera.filmWidth = static_cast<float>(2 * half * lens.aspectRatio);
      }
      camera.focalLength = static_cast<float>(half / std::tan(0.5 * lens.yfov));
      camera.nearDistance = nearOf(lens.znear);
    }
    plan_.cameras.push_back(std::move(camera));
  }

  float nearOf(double distance) const {
    const double metres = distance * source_.scale;
    return metres > 0 && metres < 1e30 ? static_cast<float>(metres) : 0.0F;
  }

  void readLight(int number, const tinygltf::Node& node, const Transform& place) {
    if (number < 0 || static_cast<std::size_t>(number) >= model_->lights.size()) {
      throw Refused("there is no light " + std::to_string(number));
    }
    const tinygltf::Light& from = model_->lights[static_cast<std::size_t>(number)];
    LightPlan light;
    light.name = node.name.empty() ? from.name : node.name;
    const double intensity =
        std::isfinite(from.intensity) ? std::clamp(from.intensity, 0.0, 1e30) : 0;
    for (std::size_t i = 0; i < 3; ++i) {
      const double channel = i < from.color.size() && std::isfinite(from.color[i])
                                 ? std::clamp(from.color[i], 0.0, 1e6)
                                 : 1.0;
      light.emission[i] = static_cast<float>(std::min(channel * intensity, 1e30));
    }
    if (from.type == "directional") {
      light.kind = LightKind::Directional;
    } else if (from.type == "spot") {
      light.kind = LightKind::Spot;
      const auto angle = [](double radians) {
        return static_cast<float>(std::isfinite(radians) ? std::clamp(radians, 0.0, kPi / 2) : 0);
      };
      light.innerConeAngle = angle(from.spot.innerConeAngle);
      light.outerConeAngle = angle(from.spot.outerConeAngle);
    } else if (from.type != "point") {
      notices_.add("the type " + from.type + " of a light is not known; it shines as a point");
    }
    if (light.kind != LightKind::Directional) {
      // Candela are lumens for each angle, whatever the unit of length; so with a larger unit, the
      // same picture needs more of them.
      const double square = source_.scale * source_.scale;
      for (float& channel : light.emission) {
        channel = static_cast<float>(std::min(static_cast<double>(channel) * square, 1e30));
      }
    }
    if (from.range > 0) {
      notices_.add("ranges of lights are not carried; they shine as far as they reach");
    }
    // A light of glTF shines along its -z, one of a scene along its +z.
    static const Transform kTurned{{-1, 0, 0}, {0, 1, 0}, {0, 0, -1}, {}};
    light.place = withoutScale(place) * kTurned;
    plan_.lights.push_back(std::move(light));
  }

  std::shared_ptr<tinygltf::Model> model_;
  Accessors accessors_;
  const Source& source_;
  Notices& notices_;
  ScenePlan plan_;
  std::vector<Transform> places_;  // of the nodes in the world
  std::vector<int> order_;         // the nodes of the scene, parents first
  std::map<Key, int> built_;       // the meshes by their arrays
  std::map<std::tuple<int, Colour, float>, int> materials_;  // by number, colour and alpha
  std::map<int, Tint> tints_;                                // by accessor
  std::set<std::pair<std::size_t, std::size_t>> countedPrimitives_;
  std::size_t leftOut_ = 0;
};

}  // namespace

ScenePlan readGltf(const Source& source, Notices& notices) {
  return Reader(source, notices).read();
}

}  // namespace vrn_convert
