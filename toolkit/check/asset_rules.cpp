#include "check/asset_rules.hpp"

#include <fmt/format.h>

#include <cstring>
#include <limits>
#include <string_view>

#include "foundation/load.hpp"
#include "vornath_data/asset_records.h"
#include "vornath_data/catalogue.h"
#include "vornath_data/texture.hpp"

namespace vrtk {
namespace {

AssetContent inspectMesh(const char* bytes, const ReportFinding& report) {
  const auto mesh = load<vrdmMeshDesc>(bytes);
  AssetContent content;
  const struct {
    std::int32_t number;
    std::uint32_t offset;
    const char* member;
  } counts[] = {{mesh.triangles, offsetof(vrdmMeshDesc, triangles), "triangles"},
                {mesh.vertices, offsetof(vrdmMeshDesc, vertices), "vertices"},
                {mesh.texcoordSets, offsetof(vrdmMeshDesc, texcoordSets), "texcoordSets"}};
  for (const auto& count : counts) {
    if (count.number >= 0) continue;
    content.valid = false;
    report({Code::MESH_EXTENTS, count.offset, count.member,
            fmt::format("{} is a negative number", count.number)});
  }
  if (!content.valid) return content;
  const auto triangles = static_cast<std::uint64_t>(mesh.triangles);
  const auto vertices = static_cast<std::uint64_t>(mesh.vertices);
  const auto sets = mesh.texcoordSets == 0 ? 1 : static_cast<std::uint64_t>(mesh.texcoordSets);
  const std::uint64_t flags = (mesh.flags & 1U) + ((mesh.flags >> 1U) & 1U);
  // Below 2^64: each factor is below 2^33 and 2^31.
  const std::uint64_t words = (3 + flags) * triangles + (9 + 2 * sets) * vertices;
  if (words > std::numeric_limits<std::uint64_t>::max() / 4) {
    content.valid = false;
    report({Code::MESH_EXTENTS, counts[2].offset, counts[2].member,
            fmt::format("{} vertices with {} sets of texture coordinates take more bytes than 64 "
                        "bits can count",
                        vertices, sets)});
    return content;
  }
  content.bytes = words * 4;
  content.indices = 3 * triangles;
  content.indexLimit = static_cast<std::uint32_t>(vertices);
  return content;
}

AssetContent inspectTexture(const char* bytes, const ReportFinding& report) {
  const auto texture = load<vrdmTextureDesc>(bytes);
  AssetContent content;
  const struct {
    std::int32_t extent;
    std::uint32_t offset;
    const char* member;
  } extents[] = {{texture.width, offsetof(vrdmTextureDesc, width), "width"},
                 {texture.height, offsetof(vrdmTextureDesc, height), "height"},
                 {texture.depth, offsetof(vrdmTextureDesc, depth), "depth"}};
  for (const auto& extent : extents) {
    if (extent.extent > 0) continue;
    if (extent.extent < 0) content.valid = false;
    report(
        {extent.extent < 0 ? Code::TEXTURE_EXTENTS : Code::TEXTURE_EMPTY, extent.offset,
         extent.member,
         fmt::format("the {} is {}, and at least 1 was expected", extent.member, extent.extent)});
  }
  if (!content.valid) return content;
  const auto format = static_cast<vrnt::TextureFormat>(texture.format);
  if (std::string_view(vrnt::toString(format)) == "Unknown") {
    report({Code::TEXTURE_FORMAT_UNKNOWN, offsetof(vrdmTextureDesc, format), "format",
            fmt::format("no format has the code {}", texture.format)});
  }
  const auto layout = static_cast<vrnt::TextureLayout>(texture.layout);
  if (std::string_view(vrnt::toString(layout)) == "Unknown") {
    report({Code::TEXTURE_LAYOUT_UNKNOWN, offsetof(vrdmTextureDesc, layout), "layout",
            fmt::format("no layout has the code {}", texture.layout)});
  } else if ((texture.layout & 3) == VRNT_TEXTURE_LAYOUT_CUBE &&
             (texture.width != texture.height || texture.depth % 6 != 0)) {
    report({Code::TEXTURE_CUBE_EXTENTS, offsetof(vrdmTextureDesc, width), "width",
            fmt::format("a cube map has square faces, and six of them in its depth, but this is "
                        "{} x {} x {}",
                        texture.width, texture.height, texture.depth)});
  }
  const auto desc = load<vrnt::detail::TextureDesc>(bytes);
  content.bytes = desc.size();
  if (content.bytes == std::numeric_limits<std::size_t>::max()) {
    content.valid = false;
    report({Code::TEXTURE_EXTENTS, 0, "width",
            fmt::format("{} x {} x {} pixels take more bytes than 64 bits can count", texture.width,
                        texture.height, texture.depth)});
  }
  return content;
}

AssetContent inspectGraph(const char* bytes, const ReportFinding& report) {
  const auto graph = load<vrdmMaterialGraphDesc>(bytes);
  const struct {
    std::uint64_t place;
    std::uint32_t offset;
    const char* member;
  } places[] = {
      {graph.rootOffset, offsetof(vrdmMaterialGraphDesc, rootOffset), "rootOffset"},
      {graph.parameterOffset, offsetof(vrdmMaterialGraphDesc, parameterOffset), "parameterOffset"}};
  for (const auto& place : places) {
    if (place.place <= graph.binarySize) continue;
    report({Code::GRAPH_OFFSET_OUT_OF_RANGE, place.offset, place.member,
            fmt::format("{} is behind the {} bytes of the graph", place.place, graph.binarySize)});
  }
  AssetContent content;
  content.bytes = graph.binarySize;
  return content;
}

constexpr AssetRule kRules[] = {
    {VRDM_CLASS_MESH, sizeof(vrdmMeshDesc), inspectMesh},
    {VRDM_CLASS_TEXTURE, sizeof(vrdmTextureDesc), inspectTexture},
    {VRDM_CLASS_MATERIAL_GRAPH, sizeof(vrdmMaterialGraphDesc), inspectGraph},
};

}  // namespace

const AssetRule* assetRule(std::uint32_t objectClass) {
  for (const AssetRule& rule : kRules) {
    if (rule.objectClass == objectClass) return &rule;
  }
  return nullptr;
}

}  // namespace vrtk
