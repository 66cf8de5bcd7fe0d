// The catalogue as the library tells it, ready to be written in a form.
#ifndef VORNATH_TOOLKIT_CATALOGUE_MODEL_HPP
#define VORNATH_TOOLKIT_CATALOGUE_MODEL_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "catalogue/constructors.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/handles.hpp"

namespace vrtk {

/// A field of a group, or a field inside of one.
struct FieldModel {
  std::string path;  ///< from the group, as in an address: "planes/0/origin"
  std::string name;
  std::uint64_t offset;                        ///< bytes from the start of the group
  vrnt::UniqueType type;                       ///< with its annotations
  const char* defaultBytes;                    ///< in the default of the group
  std::vector<ConstructorModel> constructors;  ///< of an enum, or of an array's elements
};

struct GroupModel {
  std::uint32_t number;
  std::string name;
  std::uint64_t offset;  ///< bytes from the start of the groups of an object
  vrnt::UniqueType type;
  vrnt::UniqueValue defaults;
  std::vector<FieldModel> fields;  ///< a struct before its own fields
};

struct SlotModel {
  std::uint32_t number;
  vrdmReferenceInfo info;
};

struct ClassModel {
  std::uint32_t number;  ///< VRDM_CLASS_*, or VRDM_CLASS_SCENE_DATA
  std::string name;      ///< "scene" for the settings of the whole scene
  std::uint32_t kind;    ///< VRDM_KIND_*
  bool hasValue;
  std::vector<SlotModel> slots;
  std::vector<GroupModel> groups;
  std::uint64_t groupsSize;
  std::uint64_t groupsAlignment;
};

struct CatalogueModel {
  std::uint32_t sceneVersion;
  std::string filter;  ///< empty for the whole catalogue
  std::vector<ClassModel> classes;
  std::optional<ClassModel> scene;
};

/// Asks the library. `filter` is null, "CLASS" or "CLASS/GROUP". Throws Failure with
/// VRTK_CATALOGUE_UNKNOWN.
CatalogueModel readCatalogue(const char* filter);

/// Returns the text of an annotation; empty if there is none.
std::string_view annotationText(const vrntType_t* type, const char* key);

/// Returns the value of an annotation; null if there is none.
vrnt::UniqueValue annotationValue(const vrntType_t* type, const char* key);

/// Returns a limit, "min", "max", "soft_min" or "soft_max"; null if there is none of the same type.
vrnt::UniqueValue limitOf(const vrntType_t* type, const char* key);

/// Whether an annotation is none of label, description, default, limits and unit, which each form
/// treats by itself.
bool isFurtherAnnotation(std::string_view key);

/// Returns the text of a type without annotations.
std::string plainTypeText(const vrntType_t* type);

/// Returns the type of the elements of an array of any depth; a copy of the type for no array.
vrnt::UniqueType innermostElement(const vrntType_t* type);

/// Returns "program", "asset" or "instance".
std::string_view kindName(std::uint32_t kind);

/// Returns "required", "optional", "list", "decals" or "emitters".
std::string_view slotKindName(std::uint32_t kind);

/// Returns the name of the class that a slot leads to, or "Light or Shape".
std::string slotTarget(const vrdmReferenceInfo& info);

}  // namespace vrtk

#endif
