// tinygltf with the settings of this program.
#ifndef VRN_CONVERT_GLTF_TINY_GLTF_HPP
#define VRN_CONVERT_GLTF_TINY_GLTF_HPP

#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#define TINYGLTF_NO_FS
#include <tiny_gltf.h>

#endif
