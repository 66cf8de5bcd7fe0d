// The layout of a scene file, as the catalogue and the library's own files tell it: what stands in
// the header, and in the record of an object of each class.
#ifndef VORNATH_TOOLKIT_CHECK_FILE_LAYOUT_HPP
#define VORNATH_TOOLKIT_CHECK_FILE_LAYOUT_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "check/asset_rules.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/handles.hpp"

namespace vrtk {

/// A group in the record of an object.
struct GroupLayout {
  std::string name;
  vrnt::UniqueType type;
  std::uint64_t offset;  ///< bytes from the start of the groups
  TypePlan plan;
  vrnt::UniqueValue defaults;

  const char* defaultBytes() const;
};

/// All groups of a class, in one piece.
struct GroupsLayout {
  /// `objectClass` may be VRDM_CLASS_SCENE_DATA.
  explicit GroupsLayout(std::uint32_t objectClass);

  std::vector<GroupLayout> groups;
  std::uint64_t size = 0;  ///< bytes
};

struct SlotLayout {
  vrdmReferenceInfo info;
  std::uint32_t slot;
  bool isForward;  ///< whether a target may come behind the object in a file
};

/// The record of an object: its single reference slots, its lists, its groups and its value; or for
/// a program its text, and for an asset its id, its record and its bytes.
struct ClassLayout {
  explicit ClassLayout(std::uint32_t objectClass);

  std::uint32_t objectClass;
  const char* name;
  std::uint32_t kind;
  std::vector<SlotLayout> singles;
  std::vector<SlotLayout> lists;
  bool hasValue;
  const AssetRule* asset;
  std::size_t slotMemory;  ///< bytes that the library takes for a slot
};

bool isList(const vrdmReferenceInfo& slot);

/// What a file that the library writes starts with.
struct HeaderLayout {
  static constexpr std::size_t kMagicSize = 8;
  static constexpr std::size_t kVersionOffset = 8;
  static constexpr std::size_t kIdOffset = 12;
  static constexpr std::size_t kGroupsOffset = 28;

  char magic[kMagicSize];
  std::uint32_t version;
};

/// Asks the library for a file of an empty scene. Throws Failure with VRTK_INTERNAL_ERROR if the
/// file is not what the catalogue lets expect.
HeaderLayout headerLayout();

}  // namespace vrtk

#endif
