// The pixels of images as textures.
#ifndef VRN_CONVERT_WRITING_IMAGES_HPP
#define VRN_CONVERT_WRITING_IMAGES_HPP

#include <string>

#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// A texture as a scene stores it, or the reason why there is none.
struct TextureAsset {
  vrdmTextureDesc desc{};
  Bytes bytes;
  std::size_t size = 0;
  int channels = 0;
  std::string problem;  ///< empty if there are pixels
};

/// Decodes an image. The pixels keep their number of channels and their size: 8 bits stay 8 bits,
/// integers of 16 bits become halves, and floats stay floats. Colours of 8 bits stay gamma-encoded,
/// those of 16 bits become linear, since textures of halves are. A normal map loses its alpha.
/// Any thread may call it. Throws std::bad_alloc.
TextureAsset decodeImage(const ImagePlan& image, PixelUse use);

}  // namespace vrn_convert

#endif
