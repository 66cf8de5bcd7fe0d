/// Transformations that several objects share.
#ifndef VORNATH_DATA_CATALOGUE_TRANSFORMATION_GROUP_HPP
#define VORNATH_DATA_CATALOGUE_TRANSFORMATION_GROUP_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/group.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/record_types.hpp"
#include "vornath_data/catalogue/schema_text.hpp"
#include "vornath_data/catalogue/shared.hpp"

namespace vrnt::data {

inline constexpr auto kTransformationGroupTransformation = vrnt::detail::joinText(
    R"s({ )s", kMatrix,
    R"s( matrix; )s"
    R"s(} @desc="The transformation which is applied to all members of the group" @mlcc_keep_alive @name="Transformation")s");

struct TransformationGroupDesc {
  struct Groups {
    TransformationData transformation;
  };

  Groups groups;

  static constexpr ObjectClass kClass = ObjectClass::TransformationGroup;
  static constexpr ObjectKind kKind = ObjectKind::Instance;
  static constexpr const char* kName = "TransformationGroup";
  static constexpr bool kHasValue = false;
  static constexpr auto kGroups = std::tuple{
      Group{"Transformation", kTransformationGroupTransformation, &Groups::transformation}};
  static constexpr std::tuple<> kSlots{};
};
static_assert(sizeof(TransformationGroupDesc::Groups) == 64 &&
                  std::is_trivially_copyable_v<TransformationGroupDesc::Groups>,
              "its bytes go to scene files: another size is another file version");

}  // namespace vrnt::data

#endif
