/// Textures.
#ifndef VORNATH_DATA_CATALOGUE_TEXTURE_HPP
#define VORNATH_DATA_CATALOGUE_TEXTURE_HPP

#include <tuple>

#include "vornath_data/catalogue/class_info.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/texture.hpp"

namespace vrnt::data {

template <>
struct ClassInfo<vrnt::detail::TextureDesc> {
  static constexpr ObjectClass kClass = ObjectClass::Texture;
  static constexpr ObjectKind kKind = ObjectKind::Asset;
  static constexpr const char* kName = "Texture";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
