/// Cameras.
#ifndef VORNATH_DATA_CATALOGUE_CAMERA_HPP
#define VORNATH_DATA_CATALOGUE_CAMERA_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/keyframe.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// Each row of camera.def is a field. Declares the record and the schema of each group, CameraGroups
// (a struct of all records) and kCameraGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/camera.def"
#define VRNT_BLOCK CameraGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct CameraDesc {
  using Groups = CameraGroups;

  Ref<Program<CameraSource>> program;
  Ref<Asset<vrnt::detail::TextureDesc>> backplate;
  Ref<Instance<KeyframeListDesc>> keyframes;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Camera;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Camera";
  static constexpr bool kHasValue = true;
  static constexpr auto kGroups = kCameraGroups;
  static constexpr auto kSlots = std::tuple{
      Slot{"program", ReferenceKind::Required, ObjectClass::CameraProgram, &CameraDesc::program},
      Slot{"backplate", ReferenceKind::Optional, ObjectClass::Texture, &CameraDesc::backplate},
      Slot{"keyframes", ReferenceKind::Optional, ObjectClass::KeyframeList,
           &CameraDesc::keyframes}};
};

}  // namespace vrnt::data

#endif
