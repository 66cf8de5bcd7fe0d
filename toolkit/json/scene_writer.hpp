// Writes scenes, and parts of them, as JSON.
#ifndef VORNATH_TOOLKIT_JSON_SCENE_WRITER_HPP
#define VORNATH_TOOLKIT_JSON_SCENE_WRITER_HPP

#include <cstdint>
#include <string>

#include "json/asset_files.hpp"
#include "json/output.hpp"
#include "json/value_writer.hpp"
#include "scene/objects.hpp"

namespace vrtk {

/// What a document has of the bytes of assets.
enum class AssetBytes {
  Size,    ///< their size alone
  Digest,  ///< size and digest
  File,    ///< size, digest and the name of a file
  Inline   ///< size, digest and the bytes in base64
};

struct WriteOptions {
  bool full = false;
  AssetBytes assets = AssetBytes::Digest;
  std::string prefix;           ///< before the names of files
  AssetFiles* files = nullptr;  ///< where they are written, or null
};

/// Texts start in the middle of a line of depth `depth`, and end without a line feed.
class SceneWriter {
 public:
  SceneWriter(const vrdmScene_t* scene, Output& out, const WriteOptions& options,
              Catalogue& catalogue)
      : scene_(scene), out_(out), options_(options), catalogue_(catalogue), values_(out) {}

  /// The whole document, with a line feed at its end.
  void document();

  /// The members of the document without the objects, as an object.
  void head();
  /// All scene-wide groups.
  void sceneGroups(std::size_t depth);
  /// The array of all slots of a class.
  void objectsOfClass(std::uint32_t objectClass, std::size_t depth);
  /// An object, or null for a free slot.
  void object(std::uint32_t objectClass, std::int32_t index, std::size_t depth);
  /// One group; `bytes` is where all groups of the object are.
  void group(const ClassDescription& description, std::uint32_t group, const char* bytes,
             std::size_t depth);
  /// All groups of an object.
  void groups(std::uint32_t objectClass, std::int32_t index, std::size_t depth);
  void slots(const ClassDescription& description, std::int32_t index, std::size_t depth);
  void slot(const SlotLayout& slot, std::uint32_t objectClass, std::int32_t index,
            std::size_t depth);
  void value(std::uint32_t objectClass, std::int32_t index, std::size_t depth);

 private:
  // Starts the next member of an object on a line of its own.
  void member(bool& isFirst, std::string_view key, std::size_t depth);
  void string(std::string_view text);
  void headMembers(bool& isFirst);
  void instance(const ClassDescription& description, std::int32_t index, std::size_t depth);
  void groupsOf(const ClassDescription& description, const char* bytes, std::size_t depth);
  void slotWord(const vrdmReferenceInfo& slot, std::int32_t word);
  void program(std::uint32_t objectClass, std::int32_t index, std::size_t depth);
  void asset(const ClassDescription& description, std::int32_t index, std::size_t depth);
  void assetBytes(const AssetStorage& storage);

  const vrdmScene_t* scene_;
  Output& out_;
  const WriteOptions& options_;
  Catalogue& catalogue_;
  ValueWriter values_;
  std::string text_;
};

/// The text of an id, such as "883ff973-e105-4b5b-982a-4d2cb87d48ca".
std::string idText(const void* id);

}  // namespace vrtk

#endif
