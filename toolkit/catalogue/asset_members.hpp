// The members of the records of assets, for the schema of scenes in JSON.
#ifndef VORNATH_TOOLKIT_CATALOGUE_ASSET_MEMBERS_HPP
#define VORNATH_TOOLKIT_CATALOGUE_ASSET_MEMBERS_HPP

#include <cstdint>
#include <string>
#include <vector>

namespace vrtk {

struct AssetMember {
  const char* name;    ///< as in the C declaration of the record
  std::string schema;  ///< JSON Schema
};

/// Returns the members of a class's record, in order; none for a class that is no asset.
std::vector<AssetMember> assetMembers(std::uint32_t objectClass);

}  // namespace vrtk

#endif
