// The types of the catalogue's groups, each parsed once.
#ifndef VORNATH_SCENE_GROUP_TYPE_HPP
#define VORNATH_SCENE_GROUP_TYPE_HPP

#include <array>
#include <atomic>

#include "scene/class_table.hpp"
#include "vornath_data/types.h"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// The type of a group, with and without metadata. Both handles are borrowed: the library holds
/// them until it is unloaded.
struct GroupType {
  vrntType_t* annotated;  ///< the type of the schema, with defaults, limits and labels
  vrntType_t* plain;      ///< the same type without metadata, which values of the group have
};

/// Returns the type of a group of kGroupTable. The first call for a group parses its schema, later
/// calls read two words.
/// Errors: throws the vrnt::Exception of TypeHandle::parse(); the next call then tries again.
/// Threads: any.
GroupType groupType(const GroupEntry& group);

namespace detail {

// `annotated` is stored last: a thread that finds it can also read `plain`.
struct CachedGroupType {
  std::atomic<vrntType_t*> annotated{nullptr};
  std::atomic<vrntType_t*> plain{nullptr};
};

/// Indexed by the ordinals of groups. Null before the first use of a group.
extern std::array<CachedGroupType, kTotalGroupCount> cachedGroupTypes;

bool isGroupTypeApartFromCache(const vrntType_t* type, const GroupEntry& group);

}  // namespace detail

/// Returns whether `type`, which has no metadata, is the type of the group's values.
/// Errors: as groupType().
/// Threads: any.
inline bool isGroupType(const vrntType_t* type, const GroupEntry& group) {
  // Two types without metadata are equal only if they are identical.
  const auto& cached = detail::cachedGroupTypes[group.ordinal];
  return type == cached.plain.load(std::memory_order_relaxed) ||
         detail::isGroupTypeApartFromCache(type, group);
}

/// Parses the schema and returns the type, with a new reference, for a host. This is the annotated
/// type that groupType() holds, unless the parse of another spelling has replaced it in the table
/// of canonical texts.
/// Errors: as groupType(). Threads: any.
TypeHandle newGroupType(const GroupEntry& group);

}  // namespace vrnt::data

#endif
