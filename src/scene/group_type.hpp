// The types of the catalogue's groups, each parsed once.
#ifndef VORNATH_SCENE_GROUP_TYPE_HPP
#define VORNATH_SCENE_GROUP_TYPE_HPP

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

/// Parses the schema and returns the type, with a new reference, for a host. This is the annotated
/// type that groupType() holds, unless the parse of another spelling has replaced it in the table
/// of canonical texts.
/// Errors: as groupType(). Threads: any.
TypeHandle newGroupType(const GroupEntry& group);

}  // namespace vrnt::data

#endif
