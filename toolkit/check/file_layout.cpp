#include "check/file_layout.hpp"

#include <algorithm>
#include <cstring>
#include <sstream>
#include <utility>

#include "foundation/failure.hpp"
#include "vornath_data/catalogue/class_list.hpp"
#include "vornath_data/scene.hpp"

namespace vrtk {
namespace {

std::uint64_t alignUp(std::uint64_t offset, std::uint64_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

bool isForwardSlot(std::uint32_t objectClass, const vrdmReferenceInfo& slot) {
  if (slot.kind == VRDM_REFERENCE_EMITTER) {
    return objectClass <= std::max<std::uint32_t>(VRDM_CLASS_LIGHT, VRDM_CLASS_SHAPE);
  }
  return objectClass <= slot.targetClass;
}

std::size_t slotMemoryOf(std::uint32_t objectClass) {
  return vrnt::data::visitClass(
      objectClass,
      [](auto tag) { return sizeof(vrnt::data::Stored<typename decltype(tag)::Desc>); },
      []() -> std::size_t { return 0; });
}

HeaderLayout askLibrary() {
  std::ostringstream stream;
  vrnt::data::Scene::serialize(vrnt::data::Scene(vrnt::UniqueId::null()), stream);
  const std::string file = stream.str();
  const std::size_t counts = sizeof(std::uint32_t) * vrdmObjectTypeCount();
  const GroupsLayout groups(VRDM_CLASS_SCENE_DATA);
  if (file.size() != HeaderLayout::kGroupsOffset + groups.size + counts) {
    throw Failure(VRTK_INTERNAL_ERROR,
                  "the library writes scene files of another layout than the toolkit knows; use a "
                  "toolkit of the library's version");
  }
  HeaderLayout header{};
  std::memcpy(header.magic, file.data(), sizeof(header.magic));
  std::memcpy(&header.version, file.data() + HeaderLayout::kVersionOffset, sizeof(header.version));
  return header;
}

}  // namespace

bool isList(const vrdmReferenceInfo& slot) {
  return slot.kind != VRDM_REFERENCE_REQUIRED && slot.kind != VRDM_REFERENCE_OPTIONAL;
}

const char* GroupLayout::defaultBytes() const {
  return static_cast<const char*>(vrntValueData(defaults.get()));
}

GroupsLayout::GroupsLayout(std::uint32_t objectClass) {
  const std::uint32_t count = vrdmFieldCount(objectClass);
  groups.reserve(count);
  std::uint64_t alignment = 1;
  for (std::uint32_t i = 0; i < count; ++i) {
    vrnt::UniqueType type(vrdmFieldType(objectClass, i));
    const vrntType_t* const described = type.get();
    alignment = std::max(alignment, vrntTypeAlignment(described));
    size = alignUp(size, vrntTypeAlignment(described));
    vrntValuesError_t* error = nullptr;
    vrnt::UniqueValue defaults(vrntValueCreateDefault(described, &error));
    if (!defaults) vrnt::detail::raiseError(error);
    groups.push_back({vrdmFieldName(objectClass, i), std::move(type), size,
                      TypePlan(described, TypePlan::Numbers::Annotated), std::move(defaults)});
    size += groups.back().plan.size();
  }
  size = alignUp(size, alignment);
}

ClassLayout::ClassLayout(std::uint32_t number)
    : objectClass(number),
      name(vrdmObjectName(number)),
      kind(vrdmObjectClass(number)),
      hasValue(vrdmHasValue(number)),
      asset(assetRule(number)),
      slotMemory(slotMemoryOf(number)) {
  for (std::uint32_t i = 0; i < vrdmReferenceCount(number); ++i) {
    const vrdmReferenceInfo info = vrdmReferenceType(number, i);
    (isList(info) ? lists : singles).push_back({info, i, isForwardSlot(number, info)});
  }
}

HeaderLayout headerLayout() {
  static const HeaderLayout header = askLibrary();
  return header;
}

}  // namespace vrtk
