// The types of the catalogue's groups, each parsed once.
#ifndef VORNATH_SCENE_GROUP_TYPE_HPP
#define VORNATH_SCENE_GROUP_TYPE_HPP

#include <cstddef>

#include "vornath_data/catalogue/class_list.hpp"
#include "vornath_data/types.h"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// The type of a group in its two forms. Both handles are borrowed: they are held until the library
/// is unloaded.
struct GroupType {
  vrntType_t* annotated;  ///< what the schema says, with defaults, limits and labels
  vrntType_t* plain;      ///< the same without metadata: the type that values of the group have
};

/// The type of the group with that ordinal (kFirstGroupOrdinal, plus its position in the class),
/// below kTotalGroupCount. The first call for a group parses its schema, later ones read two words.
/// Errors: throws the vrnt::Exception of TypeHandle::parse(); the next call then tries again.
/// Threads: any.
GroupType groupType(std::size_t ordinal);

/// The annotated type as a parse of the schema gives it at this moment, for a host of its own. That
/// is the held one, unless a parse of another spelling took its text's place in the table of types.
/// Errors: as groupType(). Threads: any.
TypeHandle newGroupType(std::size_t ordinal);

/// The type of a group of a Desc, or of SceneData.
template <typename Desc>
GroupType groupType(std::size_t position) {
  return groupType(kFirstGroupOrdinal<Desc> + position);
}

}  // namespace vrnt::data

#endif
