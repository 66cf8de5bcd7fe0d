/// Render tasks: one renders the image of a camera, the other bakes light onto shapes.
#ifndef VORNATH_DATA_CATALOGUE_TASKS_HPP
#define VORNATH_DATA_CATALOGUE_TASKS_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>

#include "vornath_data/catalogue/camera.hpp"
#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/shape.hpp"
#include "vornath_data/catalogue/shared.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

// Each row of tasks.def is a field. Declares the record and the schema of each group, TaskGroups (a
// struct of all records) and kTaskGroups (a tuple of a Group for each).
#define VRNT_FIELDS "vornath_data/catalogue/tasks.def"
#define VRNT_BLOCK TaskGroups
#include "vornath_data/catalogue/declare_groups.inc"

struct ImageTaskDesc {
  using Groups = TaskGroups;

  Ref<Instance<CameraDesc>> camera;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::ImageTask;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "ImageTask";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kTaskGroups;
  static constexpr auto kSlots = std::tuple{
      Slot{"camera", ReferenceKind::Required, ObjectClass::Camera, &ImageTaskDesc::camera}};
};

struct BakeTaskDesc {
  using Groups = TaskGroups;

  RefList<Instance<ShapeDesc>> shapes;
  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::BakeTask;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "BakeTask";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = kTaskGroups;
  static constexpr auto kSlots =
      std::tuple{Slot{"shapes", ReferenceKind::List, ObjectClass::Shape, &BakeTaskDesc::shapes}};
};

}  // namespace vrnt::data

#endif
