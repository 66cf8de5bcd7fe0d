// The flat queries of the catalogue. Each goes from a class number to the class's declarations; all
// of them answer any number.
#include <type_traits>

#include "group_type.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/catalogue/class_list.hpp"

using vrnt::data::ClassInfo;
using vrnt::data::kClassCount;
using vrnt::data::kGroupCount;
using vrnt::data::kSlotCount;
using vrnt::data::ObjectClass;
using vrnt::data::ReferenceKind;
using vrnt::data::SceneData;
using vrnt::data::visitClass;
using vrnt::data::visitClassOrSceneData;
using vrnt::data::visitGroup;
using vrnt::data::visitSlot;

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

}  // namespace

std::uint32_t vrdmObjectTypeCount() { return kClassCount; }

std::uint32_t vrdmObjectClass(std::uint32_t objectClass) {
  return visitClass(
      objectClass,
      [](auto tag) {
        return static_cast<std::uint32_t>(ClassInfo<typename decltype(tag)::Desc>::kKind);
      },
      [] { return std::uint32_t{0}; });
}

const char* vrdmObjectName(std::uint32_t objectClass) {
  return visitClass(
      objectClass, [](auto tag) { return ClassInfo<typename decltype(tag)::Desc>::kName; },
      []() -> const char* { return nullptr; });
}

std::uint32_t vrdmFieldCount(std::uint32_t objectClass) {
  return visitClassOrSceneData(
      objectClass,
      [](auto tag) {
        return static_cast<std::uint32_t>(kGroupCount<typename decltype(tag)::Desc>);
      },
      [] { return std::uint32_t{0}; });
}

const char* vrdmFieldName(std::uint32_t objectClass, std::uint32_t field) {
  const auto none = []() -> const char* { return nullptr; };
  return visitClassOrSceneData(
      objectClass,
      [&](auto tag) {
        return visitGroup<typename decltype(tag)::Desc>(
            field, [](const auto& group, auto) { return group.name; }, none);
      },
      none);
}

vrntType_t* vrdmFieldType(std::uint32_t objectClass, std::uint32_t field) {
  return visitClassOrSceneData(
      objectClass,
      [field](auto tag) -> vrntType_t* {
        using Desc = typename decltype(tag)::Desc;
        if (field >= kGroupCount<Desc>) return nullptr;
        return vrnt::data::newGroupType(vrnt::data::kFirstGroupOrdinal<Desc> + field).release();
      },
      []() -> vrntType_t* { return nullptr; });
}

std::uint32_t vrdmReferenceCount(std::uint32_t objectClass) {
  return visitClass(
      objectClass,
      [](auto tag) { return static_cast<std::uint32_t>(kSlotCount<typename decltype(tag)::Desc>); },
      [] { return std::uint32_t{0}; });
}

vrdmReferenceInfo vrdmReferenceType(std::uint32_t objectClass, std::uint32_t slot) {
  return visitClassOrSceneData(
      objectClass,
      [slot](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        // Hosts rely on two different answers for no slot: they tell a class without any from a
        // position past the end.
        if constexpr (kSlotCount<Desc> == 0) {
          return kClassWithoutSlots;
        } else {
          return visitSlot<Desc>(
              slot,
              [](const auto& found, auto) {
                return vrdmReferenceInfo{static_cast<std::uint32_t>(found.kind),
                                         static_cast<std::uint32_t>(found.target), found.name};
              },
              [] { return kNoSuchSlot; });
        }
      },
      [] { return kNoSuchSlot; });
}

bool vrdmHasValue(std::uint32_t objectClass) {
  return visitClass(
      objectClass, [](auto tag) { return ClassInfo<typename decltype(tag)::Desc>::kHasValue; },
      [] { return false; });
}
