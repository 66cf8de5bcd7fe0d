// Normals for meshes that have none.
#ifndef VRN_CONVERT_SCENE_PLAN_SMOOTH_NORMALS_HPP
#define VRN_CONVERT_SCENE_PLAN_SMOOTH_NORMALS_HPP

#include <cstdint>
#include <vector>

#include "scene_plan/mesh_builder.hpp"

namespace vrn_convert {

/// The arrays of a mesh with computed normals. They must outlive the source that refers to them.
struct SmoothArrays {
  std::vector<float> positions, normals;
  std::vector<std::vector<float>> coordinates;
  std::vector<std::uint32_t> indices;
};

/// Computes the normals of a mesh of triangles whose indices are all those of vertices: the mean of
/// the triangles around a point, weighted by their areas. Where two of them meet at more than
/// `angle` (radians), the edge stays an edge, and its vertices are doubled. Vertices at the same
/// point belong together, also where their texture coordinates differ.
void addSmoothNormals(MeshSource& source, double angle, SmoothArrays& arrays);

}  // namespace vrn_convert

#endif
