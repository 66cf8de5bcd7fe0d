/// Transformations at points in time, and lists of them.
#ifndef VORNATH_DATA_CATALOGUE_KEYFRAME_HPP
#define VORNATH_DATA_CATALOGUE_KEYFRAME_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/slot.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

inline constexpr char kKeyframeTransformation[] =
    R"s({ float @default=0.0 @name="Pivot x" px; )s"
    R"s(float @default=0.0 @name="Pivot y" py; )s"
    R"s(float @default=0.0 @name="Pivot z" pz; )s"
    R"s(float @default=1.0 @name="Scaling x" sx; )s"
    R"s(float @default=1.0 @name="Scaling y" sy; )s"
    R"s(float @default=1.0 @name="Scaling z" sz; )s"
    R"s(float @default=0.0 @name="Rotation i" qi; )s"
    R"s(float @default=0.0 @name="Rotation j" qj; )s"
    R"s(float @default=0.0 @name="Rotation k" qk; )s"
    R"s(float @default=1.0 @name="Rotation r" qr; )s"
    R"s(float @default=0.0 @name="Translation x" tx; )s"
    R"s(float @default=0.0 @name="Translation y" ty; )s"
    R"s(float @default=0.0 @name="Translation z" tz; )s"
    R"s(} @desc="A transformation keyframe" @mlcc_keep_alive @name="Transformation")s";
struct KeyframeTransformationData {
  float px = 0.0F;
  float py = 0.0F;
  float pz = 0.0F;
  float sx = 1.0F;
  float sy = 1.0F;
  float sz = 1.0F;
  float qi = 0.0F;
  float qj = 0.0F;
  float qk = 0.0F;
  float qr = 1.0F;
  float tx = 0.0F;
  float ty = 0.0F;
  float tz = 0.0F;
};
static_assert(sizeof(KeyframeTransformationData) == 52,
              "its bytes go to scene files: another size is another file version");

struct KeyframeDesc {
  struct Groups {
    KeyframeTransformationData transformation;
  };

  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::Keyframe;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "Keyframe";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups =
      std::tuple{Group{"Transformation", kKeyframeTransformation, &Groups::transformation}};
  static constexpr std::tuple<> kSlots{};
};
static_assert(sizeof(KeyframeDesc::Groups) == 52 &&
                  std::is_trivially_copyable_v<KeyframeDesc::Groups>,
              "its bytes go to scene files: another size is another file version");

struct KeyframeListDesc {
  RefList<Instance<KeyframeDesc>> keyframes;

  static constexpr ObjectClass kClass = ObjectClass::KeyframeList;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "KeyframeList";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr auto kSlots = std::tuple{
      Slot{"keyframes", ReferenceKind::List, ObjectClass::Keyframe, &KeyframeListDesc::keyframes}};
};

}  // namespace vrnt::data

#endif
