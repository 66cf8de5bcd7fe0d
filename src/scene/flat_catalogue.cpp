// The flat queries of the catalogue. Each is a look-up in its tables, and accepts any code or
// index.
#include "scene/class_table.hpp"
#include "scene/group_type.hpp"
#include "vornath_data/catalogue.h"

using vrnt::data::ClassEntry;
using vrnt::data::findClass;
using vrnt::data::findClassOrSceneData;
using vrnt::data::findGroup;
using vrnt::data::findSlot;
using vrnt::data::GroupEntry;
using vrnt::data::kClassCount;
using vrnt::data::ObjectClass;
using vrnt::data::ReferenceKind;
using vrnt::data::SlotEntry;

namespace {

static_assert(VRDM_CLASS_SCENE_DATA == static_cast<std::uint32_t>(ObjectClass::SceneData),
              "the numbers in catalogue.h are those of the C++ enumerations");
static_assert(VRDM_REFERENCE_REQUIRED == static_cast<int>(ReferenceKind::Required) &&
                  VRDM_REFERENCE_OPTIONAL == static_cast<int>(ReferenceKind::Optional) &&
                  VRDM_REFERENCE_LIST == static_cast<int>(ReferenceKind::List) &&
                  VRDM_REFERENCE_ORDERED_DECAL == static_cast<int>(ReferenceKind::OrderedDecal) &&
                  VRDM_REFERENCE_EMITTER == static_cast<int>(ReferenceKind::Emitter) &&
                  VRDM_TARGET_EMITTER == static_cast<int>(vrnt::data::kEmitterTarget),
              "the numbers in catalogue.h are those of the C++ enumerations");

constexpr vrdmReferenceInfo kClassWithoutSlots{UINT32_MAX, UINT32_MAX, nullptr};
constexpr vrdmReferenceInfo kNoSuchSlot{0, 0, nullptr};

const GroupEntry* findGroupOf(std::uint32_t objectClass, std::uint32_t position) {
  const ClassEntry* const owner = findClassOrSceneData(objectClass);
  return owner ? findGroup(*owner, position) : nullptr;
}

}  // namespace

std::uint32_t vrdmObjectTypeCount() { return kClassCount; }

std::uint32_t vrdmObjectClass(std::uint32_t objectClass) {
  const ClassEntry* const found = findClass(objectClass);
  return found ? static_cast<std::uint32_t>(found->kind) : 0;
}

const char* vrdmObjectName(std::uint32_t objectClass) {
  const ClassEntry* const found = findClass(objectClass);
  return found ? found->name : nullptr;
}

std::uint32_t vrdmFieldCount(std::uint32_t objectClass) {
  const ClassEntry* const found = findClassOrSceneData(objectClass);
  return found ? static_cast<std::uint32_t>(found->groups.size()) : 0;
}

const char* vrdmFieldName(std::uint32_t objectClass, std::uint32_t field) {
  const GroupEntry* const group = findGroupOf(objectClass, field);
  return group ? group->name : nullptr;
}

vrntType_t* vrdmFieldType(std::uint32_t objectClass, std::uint32_t field) {
  const GroupEntry* const group = findGroupOf(objectClass, field);
  return group ? vrnt::data::newGroupType(*group).release() : nullptr;
}

std::uint32_t vrdmReferenceCount(std::uint32_t objectClass) {
  const ClassEntry* const found = findClass(objectClass);
  return found ? static_cast<std::uint32_t>(found->slots.size()) : 0;
}

vrdmReferenceInfo vrdmReferenceType(std::uint32_t objectClass, std::uint32_t slot) {
  const ClassEntry* const owner = findClassOrSceneData(objectClass);
  if (!owner) return kNoSuchSlot;
  // Hosts rely on two different results if there is no such slot: one for a class without slots,
  // and one for an index past the end.
  if (owner->slots.empty()) return kClassWithoutSlots;
  const SlotEntry* const found = findSlot(*owner, slot);
  if (!found) return kNoSuchSlot;
  return {static_cast<std::uint32_t>(found->kind), static_cast<std::uint32_t>(found->target),
          found->name};
}

bool vrdmHasValue(std::uint32_t objectClass) {
  const ClassEntry* const found = findClass(objectClass);
  return found && found->hasValue;
}
