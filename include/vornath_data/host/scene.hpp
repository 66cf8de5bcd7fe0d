/// Scenes with automatic lifetime. Objects are named by class and index, their parts by name.
#ifndef VORNATH_DATA_HOST_SCENE_HPP
#define VORNATH_DATA_HOST_SCENE_HPP

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <ios>
#include <iterator>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/host/record.hpp"
#include "vornath_data/host/span.hpp"
#include "vornath_data/host/storage.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/texture.hpp"
#include "vornath_data/vrdm.h"

namespace vrnt::host {

/// Names an object of a scene by its class, VRDM_CLASS_*, and its slot index.
struct Object {
  std::uint32_t objectClass = 0;
  std::int32_t index = -1;  ///< -1 for none

  friend bool operator==(const Object& a, const Object& b) noexcept {
    return a.objectClass == b.objectClass && a.index == b.index;
  }
  friend bool operator!=(const Object& a, const Object& b) noexcept { return !(a == b); }
};

/// Return the words that put a decal on the back or on the front side, for the list of a DecalList.
inline std::int32_t onBack(const Object& decal) noexcept { return decal.index; }
inline std::int32_t onFront(const Object& decal) noexcept { return ~decal.index; }

/// Returns the name of a class, for example "Camera"; "SceneData" for VRDM_CLASS_SCENE_DATA.
inline std::string className(std::uint32_t objectClass) {
  const char* const name = vrdmObjectName(objectClass);
  if (name != nullptr) return name;
  return objectClass == VRDM_CLASS_SCENE_DATA ? "SceneData"
                                              : "class " + std::to_string(objectClass);
}

/// Returns the index of a group in its class. A host that uses a group often can keep the index.
/// Errors: throws Exception "There is no group {} in {}.".
inline std::uint32_t groupNumber(std::uint32_t objectClass, std::string_view name) {
  const std::uint32_t count = vrdmFieldCount(objectClass);
  for (std::uint32_t group = 0; group < count; ++group) {
    if (name == vrdmFieldName(objectClass, group)) return group;
  }
  throw Exception(ErrorCode::InvalidArguments, "There is no group {} in {}.", name,
                  className(objectClass));
}

/// Returns the index of a reference slot in its class.
/// Errors: throws Exception "There is no slot {} in {}.".
inline std::uint32_t slotNumber(std::uint32_t objectClass, std::string_view name) {
  const std::uint32_t count = vrdmReferenceCount(objectClass);
  for (std::uint32_t slot = 0; slot < count; ++slot) {
    if (name == vrdmReferenceType(objectClass, slot).name) return slot;
  }
  throw Exception(ErrorCode::InvalidArguments, "There is no slot {} in {}.", name,
                  className(objectClass));
}

/// Returns the type of a group with its annotations, for Field and for defaults and limits.
/// Errors: as groupNumber(); throws std::bad_alloc.
inline TypeHandle groupType(std::uint32_t objectClass, std::string_view name) {
  return TypeHandle::adopt(vrdmFieldType(objectClass, groupNumber(objectClass, name)));
}

/// A range of the live objects of a class, in ascending order of their indices:
///
///     for (Object shape : scene.objects(VRDM_CLASS_SHAPE)) ...
///
/// The loop may add and remove objects. It does not visit objects in slots that were added after
/// the range was made.
class Objects {
 public:
  class iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Object;
    using difference_type = std::ptrdiff_t;
    using pointer = const Object*;
    using reference = Object;

    iterator(const vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
             std::int32_t end)
        : scene_(scene), object_{objectClass, index}, end_(end) {
      skipFree();
    }
    Object operator*() const noexcept { return object_; }
    iterator& operator++() {
      ++object_.index;
      skipFree();
      return *this;
    }
    iterator operator++(int) {
      const iterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const iterator& a, const iterator& b) { return a.object_ == b.object_; }
    friend bool operator!=(const iterator& a, const iterator& b) { return !(a == b); }

   private:
    void skipFree() {
      while (object_.index < end_ && !vrdmValid(scene_, object_.objectClass, object_.index)) {
        ++object_.index;
      }
    }

    const vrdmScene_t* scene_;
    Object object_;
    std::int32_t end_;
  };

  Objects(const vrdmScene_t* scene, std::uint32_t objectClass)
      : scene_(scene),
        objectClass_(objectClass),
        end_(static_cast<std::int32_t>(vrdmContainerSize(scene, objectClass))) {}

  iterator begin() const { return {scene_, objectClass_, 0, end_}; }
  iterator end() const { return {scene_, objectClass_, end_, end_}; }

 private:
  const vrdmScene_t* scene_;
  std::uint32_t objectClass_;
  std::int32_t end_;
};

/// Owns a scene and destroys it. A moved-from Scene owns none; it can only be assigned to or
/// destroyed.
///
/// Errors of all members: besides the errors that each function documents, throws Exception "There
/// is no {} {}." if an object is not live, "{} is no class of {}." if an object or class is of the
/// wrong kind, and std::bad_alloc. Nothing is changed then.
/// Threads: use a scene on one thread at a time.
class Scene {
 public:
  /// Creates an empty scene with the default settings.
  Scene() : Scene(vrdmCreateScene()) {}

  /// Takes over the caller's scene. Throws std::bad_alloc if it is null.
  explicit Scene(vrdmScene_t* scene) : scene_(scene) {
    if (scene == nullptr) throw std::bad_alloc();
  }

  /// Reads a scene file. The path is UTF-8. If the file ends early, the rest of the scene is empty.
  /// Errors: throws Exception "{}: there is no scene file that this program can read ({})." with
  /// the path and the reason. Its code is FileNotFound, AccessDenied, IoError, InvalidArguments
  /// (not a scene file) or VersionMismatch. Throws Exception "{}: {}" if a stored value cannot be
  /// read.
  static Scene read(const std::string& path) {
    vrdmScene_t* scene = nullptr;
    try {
      scene = vrdmDeserialize(path.c_str());
    } catch (const Exception& failure) {
      throw Exception(failure.code(), "{}: {}", path, failure.what());
    }
    if (scene == nullptr) raiseUnreadable(path);
    return Scene(scene);
  }

  /// Writes the scene to a file and replaces an existing file. The path is UTF-8.
  /// Errors: throws Exception "{}: cannot write the file" of code IoError if the file cannot be
  /// opened or not be written completely; a partly written file stays. Throws Exception "{} {} has
  /// no value." if a Camera, Light or Material has no value, before anything is written. Also
  /// throws the exception of a value that cannot be written.
  void write(const std::string& path) const {
    requireValues();
    constexpr std::size_t kBufferSize = std::size_t{1} << 20;
    const std::unique_ptr<char[]> buffer(new char[kBufferSize]);
    std::ofstream stream;
    stream.rdbuf()->pubsetbuf(buffer.get(), static_cast<std::streamsize>(kBufferSize));
    stream.open(path, std::ios::binary | std::ios::out | std::ios::trunc);
    if (stream) data::Scene::serialize(*scene_, stream);
    stream.close();
    if (!stream) throw Exception(ErrorCode::IoError, "{}: cannot write the file", path);
  }

  /// Returns the scene for the flat functions. This object keeps ownership.
  vrdmScene_t* get() const noexcept { return scene_.get(); }
  /// Gives the scene to the caller, who must release it with vrdmDestroyScene().
  vrdmScene_t* release() noexcept { return scene_.release(); }

  const UniqueId& id() const { return *vrdmSceneId(get()); }

  // Objects

  /// Adds a program. The class is CameraProgram, MaterialProgram or LightProgram.
  Object addProgram(std::uint32_t objectClass, const std::string& source) {
    requireKind(objectClass, VRDM_KIND_PROGRAM);
    return added(objectClass, vrdmAddProgram(get(), objectClass, source.c_str()));
  }

  /// Adds an asset. The type of the descriptor selects the class. The scene shares the bytes.
  /// Errors: throws Exception "The record of a {} asks for {} bytes, not {}." if the block has
  /// fewer bytes than the descriptor needs.
  Object addAsset(const vrdmMeshDesc& desc, const Storage& bytes) {
    const vrnt::detail::MeshDesc record{desc.triangles, desc.vertices, desc.texcoordSets,
                                        desc.flags};
    return addAsset(VRDM_CLASS_MESH, record, bytes);
  }
  Object addAsset(const vrdmTextureDesc& desc, const Storage& bytes) {
    const vrnt::detail::TextureDesc record{desc.width, desc.height, desc.depth,
                                           static_cast<TextureFormat>(desc.format),
                                           static_cast<TextureLayout>(desc.layout)};
    return addAsset(VRDM_CLASS_TEXTURE, record, bytes);
  }
  Object addAsset(const vrdmMaterialGraphDesc& desc, const Storage& bytes) {
    const data::MaterialGraphDesc record{desc.binarySize, desc.rootOffset, desc.parameterOffset};
    return addAsset(VRDM_CLASS_MATERIAL_GRAPH, record, bytes);
  }

  /// Adds an object of any other class with its default settings.
  Object create(std::uint32_t objectClass) {
    requireKind(objectClass, VRDM_KIND_INSTANCE);
    return added(objectClass, vrdmCreateInstance(get(), objectClass));
  }

  /// Returns true if the object is live.
  bool valid(const Object& object) const {
    return vrdmValid(get(), object.objectClass, object.index);
  }
  /// Frees the object's slot. References to the object are not changed.
  void remove(const Object& object) {
    require(object);
    vrdmRemove(get(), object.objectClass, object.index);
  }
  /// Returns the live objects of a class.
  Objects objects(std::uint32_t objectClass) const { return {get(), objectClass}; }

  /// Returns the text of a program, borrowed until the next addition of a program of its class.
  const char* source(const Object& program) const {
    require(program, VRDM_KIND_PROGRAM);
    return vrdmGetProgramSource(get(), program.objectClass, program.index);
  }

  /// Returns the descriptor of an asset: a vrdmMeshDesc, vrdmTextureDesc or vrdmMaterialGraphDesc.
  /// Errors: throws Exception "The record of a {} is not that of a {}." if the asset has another
  /// class.
  template <typename Desc>
  Desc desc(const Object& asset) const {
    requireClass(asset, classOf<Desc>());
    Desc desc{};
    vrdmGetAssetStorage(get(), asset.objectClass, asset.index, &desc);
    return desc;
  }
  /// Returns the bytes of an asset, borrowed until the asset is removed or updated.
  Span<const unsigned char> bytes(const Object& asset) const {
    const AssetStorage* const block = blockOf(asset);
    return {static_cast<const unsigned char*>(block->data), static_cast<std::size_t>(block->size)};
  }
  /// Returns a handle on the bytes of an asset, which it shares with the scene.
  Storage storage(const Object& asset) const { return Storage::share(blockOf(asset)); }

  // Groups and values

  /// Returns a copy of a group. Change it and pass it to setGroup().
  /// Errors: as groupNumber().
  Record group(const Object& object, std::string_view name) const {
    require(object);
    return Record(Value::adopt(vrdmGetDataValue(get(), object.objectClass, object.index,
                                                groupNumber(object.objectClass, name))));
  }
  /// Writes a whole group.
  /// Errors: as groupNumber(); throws Exception "The group {} of {} does not take {}." if the
  /// record has another type or was moved from.
  void setGroup(const Object& object, std::string_view name, const Record& record) {
    require(object);
    const std::uint32_t group = groupNumber(object.objectClass, name);
    if (!record.value() ||
        !vrdmSetDataValue(get(), object.objectClass, object.index, group, record.value().get())) {
      raiseOtherType(object.objectClass, name, record);
    }
  }
  /// Returns a copy of a scene-wide group, for example "General".
  Record group(std::string_view name) const {
    return Record(Value::adopt(vrdmGetSceneDataValue(get(), groupNumber(sceneData(), name))));
  }
  /// Writes a whole scene-wide group.
  /// Errors: as the other setGroup().
  void setGroup(std::string_view name, const Record& record) {
    const std::uint32_t group = groupNumber(sceneData(), name);
    if (!record.value() || !vrdmSetSceneDataValue(get(), group, record.value().get())) {
      raiseOtherType(sceneData(), name, record);
    }
  }

  /// Returns the value of a Camera, Light or Material, which it shares with the scene.
  /// Errors: throws Exception "{} {} has no value." if none was set.
  Record value(const Object& object) const {
    requireHasValue(object);
    Value value = Value::adopt(vrdmGetInstanceValue(get(), object.objectClass, object.index));
    if (!value) raiseNoValue(object);
    return Record(std::move(value));
  }
  /// Sets the value of a Camera, Light or Material. The scene shares it.
  /// Errors: throws Exception "{} {} has no value." if the record was moved from.
  void setValue(const Object& object, const Record& record) {
    requireHasValue(object);
    if (!record.value()) raiseNoValue(object);
    vrdmSetInstanceValue(get(), object.objectClass, object.index, record.value().get());
  }

  // References

  /// Makes a single slot refer to an object.
  /// Errors: as slotNumber(); throws Exception "The slot {} of {} does not take {}." if the target
  /// has another class, and "The slot {} of {} is a list.".
  void refer(const Object& object, std::string_view slot, const Object& target) {
    const std::uint32_t number = requireSlot(object, slot, false);
    require(target);
    const vrdmReferenceInfo info = vrdmReferenceType(object.objectClass, number);
    if (info.targetClass != target.objectClass) raiseOtherTarget(object, slot, target);
    vrdmSetReference(get(), object.objectClass, object.index, number,
                     static_cast<std::uint32_t>(target.index));
  }
  /// Makes a single slot refer to nothing.
  /// Errors: as slotNumber(); throws Exception "The slot {} of {} is a list.".
  void clear(const Object& object, std::string_view slot) {
    const std::uint32_t number = requireSlot(object, slot, false);
    vrdmSetReference(get(), object.objectClass, object.index, number, UINT32_MAX);
  }
  /// Returns the object that a single slot refers to. Its index is -1 if the slot refers to
  /// nothing.
  /// Errors: as clear().
  Object target(const Object& object, std::string_view slot) const {
    const std::uint32_t number = requireSlot(object, slot, false);
    return {vrdmReferenceType(object.objectClass, number).targetClass,
            vrdmGetReference(get(), object.objectClass, object.index, number)};
  }

  /// Returns the words of a list, borrowed until the length of the list changes or an object of the
  /// class is added. A word is a slot index. In the lists of emitters and decals it is coded, see
  /// VRDM_REFERENCE_*.
  /// Errors: as slotNumber(); throws Exception "The slot {} of {} is no list.".
  Span<const std::int32_t> list(const Object& object, std::string_view slot) const {
    const std::uint32_t number = requireSlot(object, slot, true);
    const std::int32_t count =
        vrdmGetReferenceCount(get(), object.objectClass, object.index, number);
    return {vrdmGetReferenceList(get(), object.objectClass, object.index, number),
            static_cast<std::size_t>(count)};
  }
  /// Replaces a list by words, which are stored unchanged.
  /// Errors: as list().
  void setWords(const Object& object, std::string_view slot, Span<const std::int32_t> words) {
    const std::uint32_t number = requireSlot(object, slot, true);
    // The words may be those of this list, which moves when its length changes.
    const std::vector<std::int32_t> copies(words.begin(), words.end());
    vrdmSetReferenceCount(get(), object.objectClass, object.index, number,
                          static_cast<std::uint32_t>(copies.size()));
    std::int32_t* const place =
        vrdmModifyReferenceList(get(), object.objectClass, object.index, number);
    if (!copies.empty()) std::memcpy(place, copies.data(), copies.size() * sizeof(std::int32_t));
  }
  void setWords(const Object& object, std::string_view slot,
                std::initializer_list<std::int32_t> words) {
    setWords(object, slot, Span<const std::int32_t>(words.begin(), words.size()));
  }
  /// Replaces a list by objects. Codes the lights and shapes of a LightGroup as needed. Does not
  /// take the list of a DecalList, where each decal needs a side: use setWords() with onFront() and
  /// onBack().
  /// Errors: as list(); throws Exception "The slot {} of {} does not take {}." if an object has the
  /// wrong class.
  void setList(const Object& object, std::string_view slot, Span<const Object> targets) {
    const vrdmReferenceInfo info =
        vrdmReferenceType(object.objectClass, requireSlot(object, slot, true));
    std::vector<std::int32_t> words;
    words.reserve(targets.size());
    for (const Object& target : targets) {
      require(target);
      const bool isLight = target.objectClass == VRDM_CLASS_LIGHT;
      const bool fits =
          info.kind == VRDM_REFERENCE_EMITTER
              ? isLight || target.objectClass == VRDM_CLASS_SHAPE
              : info.kind == VRDM_REFERENCE_LIST && info.targetClass == target.objectClass;
      if (!fits) raiseOtherTarget(object, slot, target);
      const bool isCoded = info.kind == VRDM_REFERENCE_EMITTER && isLight;
      words.push_back(isCoded ? ~target.index : target.index);
    }
    setWords(object, slot, Span<const std::int32_t>(words.data(), words.size()));
  }
  void setList(const Object& object, std::string_view slot, std::initializer_list<Object> targets) {
    setList(object, slot, Span<const Object>(targets.begin(), targets.size()));
  }

 private:
  static std::uint32_t sceneData() noexcept { return VRDM_CLASS_SCENE_DATA; }

  template <typename Desc>
  static constexpr std::uint32_t classOf() {
    if constexpr (std::is_same_v<Desc, vrdmMeshDesc>) {
      return VRDM_CLASS_MESH;
    } else if constexpr (std::is_same_v<Desc, vrdmTextureDesc>) {
      return VRDM_CLASS_TEXTURE;
    } else {
      static_assert(std::is_same_v<Desc, vrdmMaterialGraphDesc>,
                    "a record is a vrdmMeshDesc, vrdmTextureDesc or vrdmMaterialGraphDesc");
      return VRDM_CLASS_MATERIAL_GRAPH;
    }
  }

  template <typename Desc>
  Object addAsset(std::uint32_t objectClass, const Desc& desc, const Storage& bytes) {
    const std::size_t needed = desc.size();
    const std::uint64_t given = bytes.hasData() ? bytes.get()->size : 0;
    if (!bytes.hasData() || given < needed) {
      throw Exception(ErrorCode::InvalidArguments, "The record of a {} asks for {} bytes, not {}.",
                      className(objectClass), needed, given);
    }
    AssetStorage* const handle = bytes.get();
    return added(objectClass, vrdmAddAsset(get(), objectClass, &desc, &handle));
  }

  static Object added(std::uint32_t objectClass, std::uint32_t index) noexcept {
    return {objectClass, static_cast<std::int32_t>(index)};
  }

  AssetStorage* blockOf(const Object& asset) const {
    require(asset, VRDM_KIND_ASSET);
    return *vrdmGetAssetStorage(get(), asset.objectClass, asset.index, nullptr);
  }

  static void requireKind(std::uint32_t objectClass, std::uint32_t kind) {
    constexpr const char* kKinds[] = {"programs", "assets", "instances"};
    if (objectClass >= vrdmObjectTypeCount() || vrdmObjectClass(objectClass) != kind) {
      throw Exception(ErrorCode::InvalidArguments, "{} is no class of {}.", className(objectClass),
                      kKinds[kind]);
    }
  }
  void require(const Object& object) const {
    if (!valid(object)) {
      throw Exception(ErrorCode::InvalidArguments, "There is no {} {}.",
                      className(object.objectClass), object.index);
    }
  }
  void require(const Object& object, std::uint32_t kind) const {
    requireKind(object.objectClass, kind);
    require(object);
  }
  void requireClass(const Object& object, std::uint32_t objectClass) const {
    if (object.objectClass != objectClass) {
      throw Exception(ErrorCode::InvalidArguments, "The record of a {} is not that of a {}.",
                      className(object.objectClass), className(objectClass));
    }
    require(object);
  }
  void requireHasValue(const Object& object) const {
    if (!vrdmHasValue(object.objectClass)) {
      throw Exception(ErrorCode::InvalidArguments, "{} is no class of objects with values.",
                      className(object.objectClass));
    }
    require(object);
  }
  void requireValues() const {
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      if (!vrdmHasValue(objectClass)) continue;
      for (const Object object : objects(objectClass)) static_cast<void>(value(object));
    }
  }
  std::uint32_t requireSlot(const Object& object, std::string_view slot, bool isList) const {
    require(object);
    const std::uint32_t number = slotNumber(object.objectClass, slot);
    const std::uint32_t kind = vrdmReferenceType(object.objectClass, number).kind;
    const bool isSingle = kind == VRDM_REFERENCE_REQUIRED || kind == VRDM_REFERENCE_OPTIONAL;
    if (isSingle == isList) {
      throw Exception(ErrorCode::InvalidArguments, "The slot {} of {} is {}.", slot,
                      className(object.objectClass), isList ? "no list" : "a list");
    }
    return number;
  }

  [[noreturn]] static void raiseOtherTarget(const Object& object, std::string_view slot,
                                            const Object& target) {
    throw Exception(ErrorCode::InvalidArguments, "The slot {} of {} does not take {}.", slot,
                    className(object.objectClass),
                    className(target.objectClass) + " " + std::to_string(target.index));
  }
  [[noreturn]] static void raiseOtherType(std::uint32_t objectClass, std::string_view name,
                                          const Record& record) {
    throw Exception(
        ErrorCode::InvalidArguments, "The group {} of {} does not take {}.", name,
        className(objectClass),
        record.value() ? vrnt::detail::shownText(record.value().type()) : std::string("no value"));
  }
  [[noreturn]] static void raiseNoValue(const Object& object) {
    throw Exception(ErrorCode::InvalidOperation, "{} {} has no value.",
                    className(object.objectClass), object.index);
  }

  // Finds out why a file cannot be read: it does not exist, is not a scene, or has another version.
  [[noreturn]] static void raiseUnreadable(const std::string& path) {
    constexpr char kWords[] = "{}: there is no scene file that this program can read ({}).";
    errno = 0;
    std::ifstream stream(path, std::ios::binary);
    char header[12] = {};
    if (!stream.read(header, sizeof(header))) {
      const int error = errno;
      if (error == 0) throw Exception(ErrorCode::IoError, kWords, path, "it is too short");
      const ErrorCode code = error == ENOENT   ? ErrorCode::FileNotFound
                             : error == EACCES ? ErrorCode::AccessDenied
                                               : ErrorCode::IoError;
      throw Exception(code, kWords, path, std::generic_category().message(error));
    }
    if (std::memcmp(header, "VRNSCENE", 8) != 0) {
      throw Exception(ErrorCode::InvalidArguments, kWords, path, "it is none");
    }
    std::uint32_t version = 0;
    std::memcpy(&version, header + 8, sizeof(version));
    throw Exception(ErrorCode::VersionMismatch, kWords, path,
                    "it has version " + std::to_string(version));
  }

  UniqueScene scene_;
};

}  // namespace vrnt::host

#endif
