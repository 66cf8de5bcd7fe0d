// Reads objects and their parts from JSON into a scene.
#ifndef VORNATH_TOOLKIT_JSON_OBJECT_READER_HPP
#define VORNATH_TOOLKIT_JSON_OBJECT_READER_HPP

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "json/problems.hpp"
#include "json/tape.hpp"
#include "json/value_reader.hpp"
#include "scene/objects.hpp"
#include "vornath_data/value.hpp"

namespace vrtk {

struct ReadOptions {
  std::optional<std::string> assetFolder;
  bool enforceLimits = false;
  /// Finds the bytes of an asset that a document gives by their digest, or by their size alone;
  /// returns a new reference, or null.
  std::function<AssetStorage*(const std::string& digest, std::uint64_t size)> findBytes;
};

/// The 16 bytes of an id.
struct IdBytes {
  unsigned char bytes[16];
};

/// Reads the text of an id; nothing if it is none.
std::optional<IdBytes> readId(std::string_view text);

class ObjectReader {
 public:
  /// All must live as long as the reader. The tape may be filled anew between calls.
  ObjectReader(vrdmScene_t* scene, const Tape& tape, Problems& problems, Budget& budget,
               Catalogue& catalogue, const ReadOptions& options)
      : scene_(scene),
        tape_(tape),
        problems_(problems),
        budget_(budget),
        catalogue_(catalogue),
        options_(options),
        values_(tape, problems, budget) {}

  /// Adds a slot to a class, with an object or, for null, a free one, which finish() frees. The
  /// class must have no free slots.
  void add(std::uint32_t objectClass, std::uint32_t json);
  /// Adds a slot with the same as in another scene. Values and bytes are shared.
  void addCopy(std::uint32_t objectClass, const vrdmScene_t* source, std::int32_t index);
  void sceneGroups(std::uint32_t json);
  void sceneId(std::uint32_t json);

  /// Adds a free slot, which finish() frees.
  void addFree(std::uint32_t objectClass);
  /// Says how many slots each class is going to have.
  void expect(std::vector<std::uint32_t> sizes) { sizes_ = std::move(sizes); }

  /// From here on, changes of the scene wait for apply().
  void defer() { deferred_ = true; }
  /// Makes the changes. Throws std::bad_alloc, and then has changed nothing.
  void apply();

  // What replaces a part of the scene or of an object. Whatever is left out has its default.
  void allSceneGroups(std::uint32_t json);
  void sceneGroup(std::uint32_t group, std::uint32_t json);
  void groups(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  void group(std::uint32_t objectClass, std::int32_t index, std::uint32_t group,
             std::uint32_t json);
  void allSlots(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  void slot(std::uint32_t objectClass, std::int32_t index, const SlotLayout& slot,
            std::uint32_t json);
  void value(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  void program(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  /// Replaces all of an asset; a missing id stays.
  void asset(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  void allOfInstance(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);

  /// Frees the slots that are to be free, and looks at the references that led to objects that were
  /// not there yet.
  void finish();

 private:
  struct Pending {
    std::uint64_t offset;
    std::uint32_t objectClass;
    std::int32_t index;
  };
  struct Free {
    std::uint32_t objectClass;
    std::int32_t index;
  };
  // Another reference on a value, which a change can be copied with.
  class GroupValue {
   public:
    explicit GroupValue(const vrntValue_t* value) : value_(vrnt::Value::share(value)) {}
    const vrntValue_t* get() const { return value_.get(); }

   private:
    vrnt::Value value_;
  };
  // What a document says of an asset.
  struct AssetRead {
    char record[kLargestAssetRecord] = {};
    vrnt::UniqueAsset storage;
    std::optional<IdBytes> id;
  };

  // Calls a change of the scene at once or later, or not at all if something is wrong.
  template <typename Change>
  void change(Change&& change, bool allocates = false);
  std::uint32_t instance(std::uint32_t objectClass, std::int32_t index, std::uint32_t json,
                         bool isNew);
  std::uint64_t slots(std::uint32_t objectClass, std::int32_t index, std::uint32_t json);
  void resetGroup(std::uint32_t objectClass, std::int32_t index, std::uint32_t group);
  void resetSlots(std::uint32_t objectClass, std::int32_t index, std::uint64_t given);
  bool isObject(std::uint32_t json, const char* what);
  bool takeSlot(const ClassDescription& description, std::uint64_t offset);
  bool readGroups(const ClassDescription& description, std::uint32_t json,
                  const std::function<void(std::uint32_t group, std::uint32_t json)>& each);
  GroupValue writeGroup(const ClassDescription& description, std::uint32_t group,
                        const char* bytes);
  GroupValue readGroup(const ClassDescription& description, std::uint32_t group,
                       const char* initial, std::uint32_t json, const char* before);
  void requireLimits(const ClassDescription& description, std::uint32_t group, std::uint32_t json,
                     const char* before);
  void missingObject(std::uint64_t offset, std::uint32_t objectClass, std::int32_t index,
                     std::uint32_t slots);
  std::int32_t readWord(const vrdmReferenceInfo& slot, std::uint32_t json);
  std::int32_t readIndex(std::uint32_t objectClass, std::uint32_t json);
  std::optional<std::string> readText(std::uint32_t json);
  std::optional<std::string> readProgram(std::uint32_t json);
  std::optional<AssetRead> readAsset(const ClassDescription& description, std::uint32_t json);
  bool readRecord(std::uint32_t objectClass, std::uint32_t json, char* record);
  vrnt::UniqueAsset readBytes(std::uint32_t json);
  vrnt::UniqueAsset readFile(std::uint32_t json);
  void setId(std::uint32_t objectClass, std::int32_t index, const IdBytes& id);

  vrdmScene_t* scene_;
  const Tape& tape_;
  Problems& problems_;
  Budget& budget_;
  Catalogue& catalogue_;
  const ReadOptions& options_;
  ValueReader values_;
  std::vector<Pending> pending_;
  std::vector<Free> free_;
  std::vector<std::uint32_t> sizes_;  // empty if they are not known yet
  std::vector<char> buffer_;
  // A value of each group, which the bytes are written to.
  std::unordered_map<const GroupLayout*, vrnt::UniqueValue> groupValues_;
  vrnt::UniqueValue emptyValue_;
  bool deferred_ = false;
  std::vector<std::function<void()>> changes_;
  std::vector<std::function<void()>> firstChanges_;  // those that may lack memory
};

}  // namespace vrtk

#endif
