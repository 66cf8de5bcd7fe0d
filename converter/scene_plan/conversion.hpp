// What a reader is given.
#ifndef VRN_CONVERT_SCENE_PLAN_CONVERSION_HPP
#define VRN_CONVERT_SCENE_PLAN_CONVERSION_HPP

#include <cstddef>
#include <string>

#include "scene_plan/transform.hpp"

namespace vrn_convert {

/// The bytes of a file, and how to read it.
struct Source {
  std::string path;    ///< empty for standard input
  std::string folder;  ///< where other files are looked for; empty for none
  std::string format;  ///< the extension that tells the format, in lower case, without a full stop
  const unsigned char* bytes = nullptr;
  std::size_t size = 0;
  Transform root;    ///< a map of the whole scene: its unit and its axes
  double scale = 1;  ///< the scale of `root`
};

}  // namespace vrn_convert

#endif
