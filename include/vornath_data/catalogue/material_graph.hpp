/// Compiled material graphs.
#ifndef VORNATH_DATA_CATALOGUE_MATERIAL_GRAPH_HPP
#define VORNATH_DATA_CATALOGUE_MATERIAL_GRAPH_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/asset_records.h"
#include "vornath_data/catalogue/object_class.hpp"

namespace vrnt::data {

/// Offsets into the bytes of a material graph. The library itself never reads these bytes.
struct MaterialGraphDesc {
  std::uint64_t binarySize = 0;       ///< bytes
  std::uint64_t rootOffset = 0;       ///< bytes
  std::uint64_t parameterOffset = 0;  ///< bytes

  /// Returns the size of the graph in bytes.
  constexpr std::size_t size() const { return static_cast<std::size_t>(binarySize); }

  static constexpr ObjectClass kClass = ObjectClass::MaterialGraph;
  static constexpr ObjectKind kKind = ObjectKind::Asset;
  static constexpr const char* kName = "MaterialGraph";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

static_assert(sizeof(MaterialGraphDesc) == 24 && sizeof(vrdmMaterialGraphDesc) == 24 &&
                  std::is_trivially_copyable_v<MaterialGraphDesc>,
              "the record of a material graph is three 64-bit words, for C as for C++");
static_assert(offsetof(MaterialGraphDesc, binarySize) == 0 &&
                  offsetof(vrdmMaterialGraphDesc, binarySize) == 0 &&
                  offsetof(MaterialGraphDesc, rootOffset) == 8 &&
                  offsetof(vrdmMaterialGraphDesc, rootOffset) == 8 &&
                  offsetof(MaterialGraphDesc, parameterOffset) == 16 &&
                  offsetof(vrdmMaterialGraphDesc, parameterOffset) == 16,
              "vrdmMaterialGraphDesc and MaterialGraphDesc have the same words in the same order");

}  // namespace vrnt::data

#endif
