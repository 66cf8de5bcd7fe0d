// Files of glTF 2.0, .gltf and .glb, with the buffers and images that they refer to.
#ifndef VRN_CONVERT_GLTF_GLTF_FILE_HPP
#define VRN_CONVERT_GLTF_GLTF_FILE_HPP

#include <optional>
#include <string>

#include "gltf/tiny_gltf.hpp"
#include "scene_plan/conversion.hpp"

namespace vrn_convert {

/// Returns the version of a glTF file, such as "2.0"; none if the bytes are no glTF.
std::optional<std::string> gltfVersion(const Source& source);

/// Reads a file with all its buffers. Images stay encoded: in the file's buffers, or in the `image`
/// of a tinygltf::Image, which is empty if there is no such file.
/// Throws Refused with the reason.
tinygltf::Model loadGltf(const Source& source);

}  // namespace vrn_convert

#endif
