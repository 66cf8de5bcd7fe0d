#include "catalogue/asset_members.hpp"

#include <string_view>

#include "json/text.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/texture.hpp"

namespace vrtk {
namespace {

constexpr const char* kCount = R"({ "type": "integer", "minimum": 0, "maximum": 2147483647 })";
constexpr const char* kWord = R"({ "type": "integer", "minimum": 0, "maximum": 4294967295 })";
constexpr const char* kSize =
    R"({ "type": "integer", "minimum": 0, "maximum": 18446744073709551615 })";

// The names of all codes up to a bound, and the numbers, since a code without a name is a number.
template <typename Code>
std::string names(std::int32_t bound, std::int32_t step) {
  std::string list;
  for (std::int32_t code = 0; code < bound; code += step) {
    // A layout has its shape in the lowest bits.
    for (std::int32_t low = 0; low < (step == 1 ? 1 : 3); ++low) {
      const std::string_view name = vrnt::toString(static_cast<Code>(code + low));
      if (name == "Unknown") continue;
      list += list.empty() ? "" : ", ";
      appendJsonString(list, name);
    }
  }
  return R"({ "anyOf": [{ "enum": [)" + list +
         R"(] }, { "type": "integer", "minimum": -2147483648, "maximum": 2147483647 }] })";
}

}  // namespace

std::vector<AssetMember> assetMembers(std::uint32_t objectClass) {
  constexpr std::int32_t kFormats = 128;
  constexpr std::int32_t kLayouts = 0x40000;
  constexpr std::int32_t kLayoutFlag = 0x4000;
  switch (objectClass) {
    case VRDM_CLASS_MESH:
      return {
          {"triangles", kCount}, {"vertices", kCount}, {"texcoordSets", kCount}, {"flags", kWord}};
    case VRDM_CLASS_TEXTURE:
      return {{"width", kCount},
              {"height", kCount},
              {"depth", kCount},
              {"format", names<vrnt::TextureFormat>(kFormats, 1)},
              {"layout", names<vrnt::TextureLayout>(kLayouts, kLayoutFlag)}};
    case VRDM_CLASS_MATERIAL_GRAPH:
      return {{"binarySize", kSize}, {"rootOffset", kSize}, {"parameterOffset", kSize}};
    default:
      return {};
  }
}

}  // namespace vrtk
