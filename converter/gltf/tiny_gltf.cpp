// The code of tinygltf. Images are left to the caller.
#include "gltf/tiny_gltf.hpp"

#include <fstream>

#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
