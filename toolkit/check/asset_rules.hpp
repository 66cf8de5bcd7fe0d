// The records of assets: the one table that says how many bytes an asset has, and what is wrong
// with a record.
#ifndef VORNATH_TOOLKIT_CHECK_ASSET_RULES_HPP
#define VORNATH_TOOLKIT_CHECK_ASSET_RULES_HPP

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "check/report.hpp"

namespace vrtk {

/// Something wrong with a record.
struct RecordFinding {
  Code code;
  std::uint32_t offset;  ///< bytes from the start of the record
  const char* member;    ///< its name in the C declaration of the record
  std::string message;
};
using ReportFinding = std::function<void(const RecordFinding&)>;

/// What a record says of the bytes behind it.
struct AssetContent {
  bool valid = true;  ///< false if the number of bytes is unknown
  std::uint64_t bytes = 0;
  std::uint64_t indices = 0;     ///< 32-bit indices at the start of the bytes
  std::uint32_t indexLimit = 0;  ///< each is to be below
};

struct AssetRule {
  std::uint32_t objectClass;
  std::size_t recordSize;
  AssetContent (*inspect)(const char* record, const ReportFinding& report);
};

/// The largest record of an asset.
inline constexpr std::size_t kLargestAssetRecord = 24;

/// Returns the rule of a class of assets; null for another class.
const AssetRule* assetRule(std::uint32_t objectClass);

}  // namespace vrtk

#endif
