// The types of the catalogue's groups, each parsed once.
#ifndef VORNATH_SCENE_GROUP_TYPE_HPP
#define VORNATH_SCENE_GROUP_TYPE_HPP

#include <array>
#include <atomic>

#include "scene/class_table.hpp"
#include "vornath_data/types.h"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// The type of a group in its two forms. Both handles are borrowed: the library holds them until it
/// is unloaded.
struct GroupType {
  vrntType_t* annotated;  ///< what the schema says, with defaults, limits and labels
  vrntType_t* plain;      ///< the same without metadata: the type that values of the group have
};

/// The type of a group of kGroupTable. The first call for a group parses its schema, later ones
/// read two words. Errors: throws the vrnt::Exception of TypeHandle::parse(); the next call then
/// tries again. Threads: any.
GroupType groupType(const GroupEntry& group);

namespace detail {

// `annotated` is stored last: whoever reads it can read the other one.
struct CachedGroupType {
  std::atomic<vrntType_t*> annotated{nullptr};
  std::atomic<vrntType_t*> plain{nullptr};
};

/// By the ordinals of groups; null before the first use of a group.
extern std::array<CachedGroupType, kTotalGroupCount> cachedGroupTypes;

bool isGroupTypeApartFromCache(const vrntType_t* type, const GroupEntry& group);

}  // namespace detail

/// Whether a value of the type, which has no metadata, may be written to the group: it is the
/// group's type. Errors: as groupType(). Threads: any.
inline bool isGroupType(const vrntType_t* type, const GroupEntry& group) {
  // Two types without metadata are equal only if they are one.
  const auto& cached = detail::cachedGroupTypes[group.ordinal];
  return type == cached.plain.load(std::memory_order_relaxed) ||
         detail::isGroupTypeApartFromCache(type, group);
}

/// The annotated type as a parse of the schema gives it at this moment, for a host of its own. That
/// is the type that groupType() holds, unless a parse of another spelling took its text's place in
/// the table of types.
/// Errors: as groupType(). Threads: any.
TypeHandle newGroupType(const GroupEntry& group);

}  // namespace vrnt::data

#endif
