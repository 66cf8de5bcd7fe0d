// Addresses of values in a scene: paths in its JSON form.
#ifndef VORNATH_TOOLKIT_SCENE_ADDRESS_HPP
#define VORNATH_TOOLKIT_SCENE_ADDRESS_HPP

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scene/objects.hpp"
#include "vornath_data/scene_interface.h"

namespace vrtk {

/// What an address names, down to the smallest part that is read and written as one.
struct Address {
  enum class Part : std::uint8_t {
    Document,     ///< the whole scene
    Head,         ///< "format", "formatVersion", "sceneVersion"
    SceneId,      ///< "id"
    SceneGroups,  ///< "scene"
    SceneGroup,
    Class,     ///< all objects of a class
    FreeSlot,  ///< an object that is not live
    Program,
    Asset,
    Instance,
    Groups,
    Group,
    Slots,
    Slot,
    Value
  };

  Part part = Part::Document;
  std::uint32_t objectClass = 0;
  std::int32_t index = -1;
  std::uint32_t item = 0;         ///< of a group or a slot: its number
  std::string path;               ///< the address down to this part
  std::vector<std::string> rest;  ///< the names below it
};

/// Finds what an address names. Throws Failure with VRTK_ADDRESS_UNKNOWN.
Address resolveAddress(const vrdmScene_t* scene, Catalogue& catalogue, std::string_view address);

/// Throws Failure with VRTK_ADDRESS_UNKNOWN: `name` is nothing below `path`. The names that there
/// are may be many.
[[noreturn]] void failUnknown(std::string_view address, const std::string& path,
                              std::string_view name, const std::vector<std::string_view>& names);

/// Splits a path at its slashes. "~1" stands for a slash in a name, and "~0" for a tilde.
std::vector<std::string> splitPath(std::string_view path);

}  // namespace vrtk

#endif
