// The yardstick of vrn-convert: loads a .glb with tinygltf, and does nothing with it.
#define TINYGLTF_IMPLEMENTATION
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#include <tiny_gltf.h>

#include <cstdio>

int main(int count, char** words) {
  if (count != 2) return 2;
  tinygltf::TinyGLTF loader;
  tinygltf::Model model;
  std::string error;
  std::string warning;
  if (!loader.LoadBinaryFromFile(&model, &error, &warning, words[1])) {
    std::fprintf(stderr, "load_gltf: %s\n", error.c_str());
    return 1;
  }
  return 0;
}
