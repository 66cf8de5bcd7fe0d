#include "catalogue/model.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "catalogue/nearest.hpp"
#include "check/file_layout.hpp"
#include "check/type_plan.hpp"
#include "foundation/failure.hpp"
#include "json/text.hpp"
#include "vornath_data/metadata.h"
#include "vornath_data/values.h"

namespace vrtk {
namespace {

constexpr std::string_view kSceneName = "scene";

class FieldReader {
 public:
  explicit FieldReader(GroupModel& group)
      : group_(group), defaults_(static_cast<const char*>(vrntValueData(group.defaults.get()))) {}

  void addFields(const vrntType_t* structType, const std::string& path, std::uint64_t base) {
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(structType); ++i) {
      vrntValueView_t view{};
      vrntValueStructField(&view, structType, i);
      const std::string name = vrntTypeFieldLabel(structType, i);
      const std::uint64_t offset = base + view.offset;
      FieldModel field{
          path + name,        name, offset, vrnt::UniqueType(vrntTypeFieldType(structType, i)),
          defaults_ + offset, {}};
      std::string inside = field.path;
      const vrnt::UniqueType element = innermostElement(field.type.get(), inside);
      if (vrntTypeDescriptor(element.get()) == VRNT_DESCRIPTOR_ENUM) {
        field.constructors = constructorsOf(element.get());
      }
      group_.fields.push_back(std::move(field));
      if (isStruct(element.get())) addFields(element.get(), inside + '/', offset);
    }
  }

 private:
  // As vrtk::innermostElement(). Appends to `path` the first index of each array.
  static vrnt::UniqueType innermostElement(const vrntType_t* type, std::string& path) {
    vrnt::UniqueType element(vrntTypeCopy(type));
    while (vrntTypeDescriptor(element.get()) == VRNT_DESCRIPTOR_ARRAY) {
      for (std::uint32_t i = 0; i < vrntTypeArrayDimension(element.get()); ++i) path += "/0";
      element.reset(vrntTypeElementType(element.get()));
    }
    return element;
  }

  GroupModel& group_;
  const char* defaults_;
};

ClassModel readClass(std::uint32_t number) {
  const bool isScene = number == VRDM_CLASS_SCENE_DATA;
  ClassModel model{number,
                   isScene ? std::string(kSceneName) : std::string(vrdmObjectName(number)),
                   vrdmObjectClass(number),
                   vrdmHasValue(number),
                   {},
                   {},
                   0,
                   1};
  for (std::uint32_t i = 0; i < vrdmReferenceCount(number); ++i) {
    model.slots.push_back({i, vrdmReferenceType(number, i)});
  }
  GroupsLayout layout(number);
  model.groupsSize = layout.size;
  for (GroupLayout& group : layout.groups) {
    const auto index = static_cast<std::uint32_t>(model.groups.size());
    model.groups.push_back({index,
                            std::move(group.name),
                            group.offset,
                            std::move(group.type),
                            std::move(group.defaults),
                            {}});
    GroupModel& added = model.groups.back();
    model.groupsAlignment = std::max(model.groupsAlignment, vrntTypeAlignment(added.type.get()));
    FieldReader(added).addFields(added.type.get(), "", 0);
  }
  return model;
}

// A name that a person typed, for a message of one line.
std::string quoted(std::string_view name) {
  constexpr std::size_t kMost = 60;
  std::string text;
  appendJsonString(text, name.substr(0, kMost));
  return name.size() > kMost ? text + "..." : text;
}

std::string choices(const std::vector<std::string>& names, std::string_view wanted) {
  const std::string nearest = nearestName(names, wanted);
  if (!nearest.empty()) return fmt::format("did you mean \"{}\"?", nearest);
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return "it has " + list;
}

// Leaves the chosen group of a class.
void chooseGroup(ClassModel& chosen, std::string_view name) {
  const auto found = std::find_if(chosen.groups.begin(), chosen.groups.end(),
                                  [&](const GroupModel& group) { return group.name == name; });
  if (found == chosen.groups.end()) {
    std::vector<std::string> names;
    for (const GroupModel& group : chosen.groups) names.push_back(group.name);
    throw Failure(VRTK_CATALOGUE_UNKNOWN, names.empty()
                                              ? fmt::format("{} has no groups, and so no group {}",
                                                            chosen.name, quoted(name))
                                              : fmt::format("{} has no group {}; {}", chosen.name,
                                                            quoted(name), choices(names, name)));
  }
  GroupModel group = std::move(*found);
  chosen.groups.clear();
  chosen.groups.push_back(std::move(group));
  chosen.slots.clear();
}

}  // namespace

CatalogueModel readCatalogue(const char* filter) {
  const bool isWhole = filter == nullptr;
  const std::string_view names = isWhole ? "" : filter;
  CatalogueModel model{headerLayout().version, std::string(names), {}, std::nullopt};
  const std::size_t slash = names.find('/');
  const std::string_view className = names.substr(0, slash);
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
    if (isWhole || className == vrdmObjectName(i)) model.classes.push_back(readClass(i));
  }
  if (isWhole || className == kSceneName) model.scene = readClass(VRDM_CLASS_SCENE_DATA);
  if (isWhole) return model;
  if (model.classes.empty() && !model.scene) {
    std::vector<std::string> known;
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) known.emplace_back(vrdmObjectName(i));
    known.emplace_back(kSceneName);
    throw Failure(VRTK_CATALOGUE_UNKNOWN,
                  fmt::format("the catalogue has no class {}; {}", quoted(className),
                              choices(known, className)));
  }
  if (slash != std::string_view::npos) {
    chooseGroup(model.scene ? *model.scene : model.classes.front(), names.substr(slash + 1));
  }
  return model;
}

std::string_view annotationText(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_TEXT) {
    return {};
  }
  return vrntMetadataString(type, key);
}

vrnt::UniqueValue annotationValue(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_VALUE) {
    return nullptr;
  }
  return vrnt::UniqueValue(vrntMetadataValue(type, key));
}

vrnt::UniqueValue limitOf(const vrntType_t* type, const char* key) {
  vrnt::UniqueValue value = annotationValue(type, key);
  if (value && vrntTypeIsEqual(vrntValueType(value.get()), type) == 0) value.reset();
  return value;
}

bool isFurtherAnnotation(std::string_view key) {
  constexpr std::array<std::string_view, 8> kTold = {"default", "desc",     "max",      "min",
                                                     "name",    "soft_max", "soft_min", "si_unit"};
  return std::find(kTold.begin(), kTold.end(), key) == kTold.end();
}

std::string plainTypeText(const vrntType_t* type) {
  const vrnt::UniqueType plain(vrntTypeStripMetadata(type));
  const char* const text = vrntTypeString(plain.get());
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

vrnt::UniqueType innermostElement(const vrntType_t* type) {
  vrnt::UniqueType element(vrntTypeCopy(type));
  while (vrntTypeDescriptor(element.get()) == VRNT_DESCRIPTOR_ARRAY) {
    element.reset(vrntTypeElementType(element.get()));
  }
  return element;
}

std::string_view kindName(std::uint32_t kind) {
  switch (kind) {
    case VRDM_KIND_PROGRAM:
      return "program";
    case VRDM_KIND_ASSET:
      return "asset";
    default:
      return "instance";
  }
}

std::string_view slotKindName(std::uint32_t kind) {
  switch (kind) {
    case VRDM_REFERENCE_REQUIRED:
      return "required";
    case VRDM_REFERENCE_OPTIONAL:
      return "optional";
    case VRDM_REFERENCE_ORDERED_DECAL:
      return "decals";
    case VRDM_REFERENCE_EMITTER:
      return "emitters";
    default:
      return "list";
  }
}

std::string slotTarget(const vrdmReferenceInfo& info) {
  return info.targetClass == VRDM_TARGET_EMITTER ? "Light or Shape"
                                                 : vrdmObjectName(info.targetClass);
}

}  // namespace vrtk
