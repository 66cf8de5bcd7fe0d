// Meshes from the arrays of a file.
#ifndef VRN_CONVERT_SCENE_PLAN_MESH_BUILDER_HPP
#define VRN_CONVERT_SCENE_PLAN_MESH_BUILDER_HPP

#include <string>
#include <vector>

#include "scene_plan/attribute.hpp"
#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

enum class Topology : std::uint8_t { Triangles, Strip, Fan };

/// The arrays of a mesh. Arrays of vertices have as many elements as `positions`.
struct MeshSource {
  std::string name;  ///< for messages and for the plan
  Attribute positions;
  Attribute normals;   ///< none: each triangle is flat, with vertices of its own
  Attribute tangents;  ///< none: see `needsTangents`
  std::vector<Attribute> coordinates;
  Attribute indices;  ///< none: the vertices in their order
  Topology topology = Topology::Triangles;
  /// Compute tangents from the first set of texture coordinates. Otherwise, tangents that the file
  /// does not have are any directions that are perpendicular to the normals.
  bool needsTangents = false;
  std::size_t tangentSet = 0;  ///< the set of texture coordinates that tangents follow
};

/// Builds a mesh. Triangles with a vertex that is not finite are left out with a notice.
/// Returns a mesh without triangles if none is left. Throws Refused for an index that has no vertex
/// and for more than 2^31 - 1 vertices, and std::bad_alloc.
MeshPlan buildMesh(const MeshSource& source, Notices& notices);

}  // namespace vrn_convert

#endif
