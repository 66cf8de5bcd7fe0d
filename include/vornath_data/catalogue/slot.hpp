/// How a class declares its reference slots.
#ifndef VORNATH_DATA_CATALOGUE_SLOT_HPP
#define VORNATH_DATA_CATALOGUE_SLOT_HPP

#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/ref.hpp"

namespace vrnt::data {

/// A reference slot of a class. `name` is a static string, `target` is the class that the slot
/// refers to (or kEmitterTarget), and `member` is the Desc's Ref, RefList or CodedRefList.
template <typename Desc, typename Link>
struct Slot {
  using Member = Link;

  constexpr Slot(const char* slotName, ReferenceKind slotKind, ObjectClass slotTarget,
                 Link Desc::*slotMember)
      : name(slotName), kind(slotKind), target(slotTarget), member(slotMember) {}

  const char* name;
  ReferenceKind kind;
  ObjectClass target;
  Link Desc::*member;
};

}  // namespace vrnt::data

#endif
