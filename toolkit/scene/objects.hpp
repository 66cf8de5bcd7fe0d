// The objects of scenes by class, as the catalogue describes them: their groups in memory, the
// members of the records of assets, and the words of reference slots.
#ifndef VORNATH_TOOLKIT_SCENE_OBJECTS_HPP
#define VORNATH_TOOLKIT_SCENE_OBJECTS_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "check/file_layout.hpp"
#include "json/type_tree.hpp"
#include "vornath_data/scene_interface.h"

namespace vrtk {

/// A member of the record of an asset.
struct RecordMember {
  const char* name;
  std::uint32_t offset;
  std::uint32_t size;  ///< 4 or 8 bytes
  bool isSigned;
  const char* (*nameOf)(std::int32_t code);  ///< null for a number; a code without a name has null
  std::int32_t (*codeOf)(const char* name);  ///< -1 for a name that there is not
};

/// Returns the members of the record of a class of assets, in their order.
const std::vector<RecordMember>& recordMembers(std::uint32_t objectClass);

/// All names that a member of a record takes.
std::vector<std::string> recordNames(const RecordMember& member);

/// What the catalogue says of a class, or of the scene as a whole.
struct ClassDescription {
  explicit ClassDescription(std::uint32_t objectClass);

  ClassLayout layout;  ///< its name is null for the scene
  GroupsLayout groups;
  std::vector<std::unique_ptr<TypeTree>> trees;  ///< one for each group
  std::vector<SlotLayout> slots;                 ///< single ones and lists, in their order
  std::vector<char> defaults;                    ///< the groups of a new object

  /// Returns what a group of a new object has.
  const char* defaultsOf(std::uint32_t group) const {
    return defaults.data() + groups.groups[group].offset;
  }
  bool isInstance() const { return layout.kind == VRDM_KIND_INSTANCE; }
};

/// The descriptions of all classes, each made when it is first needed.
class Catalogue {
 public:
  const ClassDescription& of(std::uint32_t objectClass);

 private:
  std::vector<std::unique_ptr<ClassDescription>> classes_;
  std::unique_ptr<ClassDescription> scene_;
};

/// Returns the groups of an object in one piece, laid out as GroupsLayout says. Null for a class
/// without groups. The object must be a live instance.
const char* groupBytes(const vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index);

/// Returns the scene-wide groups in one piece.
const char* sceneGroupBytes(const vrdmScene_t* scene);

/// The word of a coded list that refers to nothing.
inline constexpr std::int32_t kNoTarget = INT32_MIN;

/// What a word of a reference slot stands for.
struct Target {
  enum class Kind : std::uint8_t { None, Object, Word } kind;
  std::uint32_t objectClass = 0;
  std::int32_t index = 0;      ///< an object's slot
  const char* side = nullptr;  ///< the key of an element of a coded list: "front", "back", a class
};

/// Reads a word. An index beyond the slots of its class is a mere word.
Target targetOf(const vrdmScene_t* scene, const vrdmReferenceInfo& slot, std::int32_t word);

/// Replace the text of a live program, or the record and the bytes of a live asset, which keeps its
/// id. They count as changes of the class and of the scene. Throw std::bad_alloc and change
/// nothing.
void replaceProgram(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                    const std::string& text);
void replaceAsset(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                  const void* record, AssetStorage* storage);

/// Sets the id of a live asset.
void setAssetId(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index, const void* id);

}  // namespace vrtk

#endif
