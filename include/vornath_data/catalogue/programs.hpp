/// The classes whose objects are program source texts.
#ifndef VORNATH_DATA_CATALOGUE_PROGRAMS_HPP
#define VORNATH_DATA_CATALOGUE_PROGRAMS_HPP

#include <tuple>

#include "vornath_data/catalogue/object_class.hpp"

namespace vrnt::data {

struct CameraSource {
  static constexpr ObjectClass kClass = ObjectClass::CameraProgram;
  static constexpr ObjectKind kKind = ObjectKind::Program;
  static constexpr const char* kName = "CameraProgram";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

struct MaterialSource {
  static constexpr ObjectClass kClass = ObjectClass::MaterialProgram;
  static constexpr ObjectKind kKind = ObjectKind::Program;
  static constexpr const char* kName = "MaterialProgram";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

struct LightSource {
  static constexpr ObjectClass kClass = ObjectClass::LightProgram;
  static constexpr ObjectKind kKind = ObjectKind::Program;
  static constexpr const char* kName = "LightProgram";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
