// The materials of a glTF file.
#ifndef VRN_CONVERT_GLTF_MATERIALS_HPP
#define VRN_CONVERT_GLTF_MATERIALS_HPP

#include "gltf/tiny_gltf.hpp"
#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// Returns whether alpha belongs to a material: one that is OPAQUE ignores it.
bool isTransparent(const tinygltf::Material& material);

/// Returns the material that glTF gives to primitives without one.
MaterialPlan defaultGltfMaterial();

/// Returns a material in the terms of a plan. The images of the plan are those of the file.
/// Throws Refused for a texture or an image that the file does not have.
MaterialPlan gltfMaterial(const tinygltf::Model& model, const tinygltf::Material& material,
                          Notices& notices);

/// Returns a number of an object, or `otherwise` if it has none or one that is not finite.
double numberAt(const tinygltf::Value& object, const char* key, double otherwise);

}  // namespace vrn_convert

#endif
