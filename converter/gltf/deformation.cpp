#include "gltf/deformation.hpp"

#include "scene_plan/notices.hpp"

namespace vrn_convert {
namespace {

// Replaces an array of vectors by a copy that can be written.
void own(Attribute& attribute, std::vector<float>& copy) {
  if (!attribute) return;
  if (attribute.data == reinterpret_cast<const unsigned char*>(copy.data())) return;
  copy.resize(3 * attribute.count);
  for (std::size_t i = 0; i < attribute.count; ++i) attribute.read(i, copy.data() + 3 * i, 3);
  attribute = {reinterpret_cast<const unsigned char*>(copy.data()),
               3 * sizeof(float),
               attribute.count,
               Component::Float,
               false,
               3};
}

Vector vectorAt(const std::vector<float>& numbers, std::size_t i) {
  return {numbers[3 * i], numbers[3 * i + 1], numbers[3 * i + 2]};
}
void store(std::vector<float>& numbers, std::size_t i, Vector v) {
  numbers[3 * i] = static_cast<float>(v.x);
  numbers[3 * i + 1] = static_cast<float>(v.y);
  numbers[3 * i + 2] = static_cast<float>(v.z);
}

}  // namespace

void addTargets(const tinygltf::Primitive& primitive, const std::vector<double>& weights,
                Accessors& accessors, MeshSource& source, Deformation& moved) {
  struct Array {
    const char* name;
    Attribute* attribute;
    std::vector<float>* copy;
  };
  const Array arrays[] = {{"POSITION", &source.positions, &moved.positions},
                          {"NORMAL", &source.normals, &moved.normals},
                          {"TANGENT", &source.tangents, &moved.tangents}};
  for (std::size_t target = 0; target < primitive.targets.size(); ++target) {
    const double weight = target < weights.size() ? weights[target] : 0;
    if (weight == 0 || !std::isfinite(weight)) continue;
    for (const Array& array : arrays) {
      const auto found = primitive.targets[target].find(array.name);
      if (found == primitive.targets[target].end() || !*array.attribute) continue;
      const std::string what = source.name + ", morph target " + std::to_string(target);
      const Attribute steps = accessors.get(found->second, 3, what);
      if (steps.count != array.attribute->count) {
        throw Refused(what + " has " + std::to_string(steps.count) + " vertices, not " +
                      std::to_string(array.attribute->count));
      }
      own(*array.attribute, *array.copy);
      for (std::size_t i = 0; i < steps.count; ++i) {
        float step[3];
        steps.read(i, step, 3);
        store(*array.copy, i,
              vectorAt(*array.copy, i) + Vector{step[0], step[1], step[2]} * weight);
      }
    }
  }
}

void bendSkin(const tinygltf::Primitive& primitive, const std::vector<Transform>& joints,
              Accessors& accessors, MeshSource& source, Deformation& moved) {
  std::vector<std::pair<Attribute, Attribute>> sets;
  for (int set = 0;; ++set) {
    const auto joint = primitive.attributes.find("JOINTS_" + std::to_string(set));
    const auto weight = primitive.attributes.find("WEIGHTS_" + std::to_string(set));
    if (joint == primitive.attributes.end() || weight == primitive.attributes.end()) break;
    sets.emplace_back(accessors.get(joint->second, 4, source.name + ", joints"),
                      accessors.get(weight->second, 4, source.name + ", weights"));
    if (sets.back().first.count != source.positions.count ||
        sets.back().second.count != source.positions.count) {
      throw Refused(source.name + ": there are not as many joints and weights as vertices");
    }
  }
  if (sets.empty() || joints.empty()) return;
  own(source.positions, moved.positions);
  own(source.normals, moved.normals);
  own(source.tangents, moved.tangents);
  for (std::size_t i = 0; i < source.positions.count; ++i) {
    Transform place{{}, {}, {}, {}};
    double sum = 0;
    for (const auto& [joint, weight] : sets) {
      float numbers[4];
      float weights[4];
      joint.read(i, numbers, 4);
      weight.read(i, weights, 4);
      for (int lane = 0; lane < 4; ++lane) {
        const double part = weights[lane];
        if (part == 0 || !std::isfinite(part)) continue;
        if (!(numbers[lane] >= 0) || numbers[lane] >= static_cast<float>(joints.size())) {
          throw Refused(source.name + ": the skin has no joint " +
                        std::to_string(static_cast<long long>(numbers[lane])));
        }
        const Transform& by = joints[static_cast<std::size_t>(numbers[lane])];
        place = {place.x + by.x * part, place.y + by.y * part, place.z + by.z * part,
                 place.w + by.w * part};
        sum += part;
      }
    }
    if (sum == 0) continue;  // nothing moves this vertex
    const double one = 1 / sum;
    place = {place.x * one, place.y * one, place.z * one, place.w * one};
    store(moved.positions, i, place.point(vectorAt(moved.positions, i)));
    if (source.normals) {
      // Normals go by the cross products of the axes, so that they stay perpendicular.
      const Vector n = vectorAt(moved.normals, i);
      const Vector turned = cross(place.y, place.z) * n.x + cross(place.z, place.x) * n.y +
                            cross(place.x, place.y) * n.z;
      store(moved.normals, i, normalised(turned, n));
    }
    if (source.tangents) {
      const Vector t = vectorAt(moved.tangents, i);
      store(moved.tangents, i, normalised(place.direction(t), t));
    }
  }
}

}  // namespace vrn_convert
