/// Meshes.
#ifndef VORNATH_DATA_CATALOGUE_MESH_HPP
#define VORNATH_DATA_CATALOGUE_MESH_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>

#include "vornath_data/asset_records.h"
#include "vornath_data/catalogue/class_info.hpp"
#include "vornath_data/catalogue/object_class.hpp"

namespace vrnt::detail {

/// Describes the bytes of a mesh.
struct MeshDesc {
  std::int32_t triangles = 0;
  std::int32_t vertices = 0;
  std::int32_t texcoordSets = 0;  ///< 0 counts as 1
  std::uint32_t flags = 0;        ///< bits 0 and 1 add a word for each triangle

  /// Returns the size of the mesh in bytes. A triangle takes three 32-bit indices, and one word for
  /// each flag that is set. A vertex takes nine words, and two words for each set of texture
  /// coordinates. Negative numbers, and products of more than 64 bits, wrap; the host must pass
  /// numbers for which they do not.
  constexpr std::size_t size() const {
    const auto wide = [](std::int32_t word) {
      return static_cast<std::uint64_t>(static_cast<std::int64_t>(word));
    };
    const std::uint64_t sets = texcoordSets == 0 ? 1 : wide(texcoordSets);
    const std::uint64_t flagWords = (flags & 1U) + ((flags >> 1U) & 1U);
    return static_cast<std::size_t>(
        4 * ((3 + flagWords) * wide(triangles) + (9 + 2 * sets) * wide(vertices)));
  }
};

static_assert(sizeof(MeshDesc) == 16 && sizeof(vrdmMeshDesc) == 16 &&
                  std::is_trivially_copyable_v<MeshDesc>,
              "the record of a mesh is four 32-bit words, for C as for C++");
static_assert(offsetof(MeshDesc, triangles) == 0 && offsetof(vrdmMeshDesc, triangles) == 0 &&
                  offsetof(MeshDesc, vertices) == 4 && offsetof(vrdmMeshDesc, vertices) == 4 &&
                  offsetof(MeshDesc, texcoordSets) == 8 &&
                  offsetof(vrdmMeshDesc, texcoordSets) == 8 && offsetof(MeshDesc, flags) == 12 &&
                  offsetof(vrdmMeshDesc, flags) == 12,
              "vrdmMeshDesc and MeshDesc have the same words in the same order");

}  // namespace vrnt::detail

namespace vrnt::data {

template <>
struct ClassInfo<vrnt::detail::MeshDesc> {
  static constexpr ObjectClass kClass = ObjectClass::Mesh;
  static constexpr ObjectKind kKind = ObjectKind::Asset;
  static constexpr const char* kName = "Mesh";
  static constexpr bool kHasValue = false;
  static constexpr std::tuple<> kGroups{};
  static constexpr std::tuple<> kSlots{};
};

}  // namespace vrnt::data

#endif
