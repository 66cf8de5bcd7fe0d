// Vertices that morph targets and skins move: their places in the rest pose of a file.
#ifndef VRN_CONVERT_GLTF_DEFORMATION_HPP
#define VRN_CONVERT_GLTF_DEFORMATION_HPP

#include <string>
#include <vector>

#include "gltf/accessors.hpp"
#include "scene_plan/mesh_builder.hpp"
#include "scene_plan/transform.hpp"

namespace vrn_convert {

/// The moved arrays of a mesh. They must outlive the source that refers to them.
struct Deformation {
  std::vector<float> positions, normals, tangents;
};

/// Adds morph targets with their weights to a mesh. Throws Refused.
void addTargets(const tinygltf::Primitive& primitive, const std::vector<double>& weights,
                Accessors& accessors, MeshSource& source, Deformation& moved);

/// Moves a mesh by its joints, whose maps lead from the mesh into the world. Throws Refused for a
/// joint that the skin does not have.
void bendSkin(const tinygltf::Primitive& primitive, const std::vector<Transform>& joints,
              Accessors& accessors, MeshSource& source, Deformation& moved);

}  // namespace vrn_convert

#endif
