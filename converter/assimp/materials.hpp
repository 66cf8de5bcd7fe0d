// The materials of a file that Assimp has read.
#ifndef VRN_CONVERT_ASSIMP_MATERIALS_HPP
#define VRN_CONVERT_ASSIMP_MATERIALS_HPP

#include <assimp/scene.h>

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// Finds the images of a file: those in the file itself, and those beside it.
class AssimpImages {
 public:
  /// `images` receives the images. The bytes of files belong to `files`, which must live as long.
  AssimpImages(const aiScene& scene, std::string folder, std::vector<ImagePlan>& images,
               std::deque<std::vector<unsigned char>>& files)
      : scene_(scene), folder_(std::move(folder)), images_(images), files_(files) {}

  /// Returns the number of the image of a path that a material names.
  int find(const std::string& path);

 private:
  void readEmbedded(const aiTexture& texture, ImagePlan& image);
  void readFile(const std::string& path, ImagePlan& image);

  const aiScene& scene_;
  std::string folder_;
  std::vector<ImagePlan>& images_;
  std::deque<std::vector<unsigned char>>& files_;
  std::map<std::string, int> found_;
};

/// Returns a material in the terms of a plan.
MaterialPlan assimpMaterial(const aiMaterial& material, AssimpImages& images, Notices& notices);

}  // namespace vrn_convert

#endif
