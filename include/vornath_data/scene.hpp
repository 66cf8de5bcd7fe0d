/// The scene: a container of objects for each of the 18 classes.
#ifndef VORNATH_DATA_SCENE_HPP
#define VORNATH_DATA_SCENE_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <utility>

#include "vornath_data/api.h"
#include "vornath_data/catalogue/class_list.hpp"
#include "vornath_data/container.hpp"
#include "vornath_data/detail/scene_containers.hpp"
#include "vornath_data/elements.hpp"
#include "vornath_data/ref_map.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/tuple_of_class.hpp"
#include "vornath_data/unique_id.hpp"

namespace vrnt::data {

/// Change counters. A client keeps a copy of a counter; if the counter differs later, that part of
/// the scene has changed. Counters are only incremented, and wrap around.
struct SceneVersions {
  std::uint32_t version = 0;  ///< incremented together with every counter below
  std::array<std::uint32_t, kGroupCount<SceneData>> groups{};
  std::array<std::uint32_t, kClassCount> classes{};
};

/// A scene: an id, scene-wide settings, and one container for each class. Objects refer to each
/// other by slot index only, and no reference is checked. A scene can be moved, which leaves the
/// source empty, but not copied.
///
/// Give every Camera, Light and Material a value before you write, import, compare or print the
/// scene.
/// Threads: a scene has no lock. Use it on one thread at a time; calls that take it const may run
/// at the same time. Scenes that share asset bytes or values may be used on different threads.
class Scene {
 public:
  /// Creates an empty scene with the default settings and a random id, or with the given id.
  /// Errors: throws boost::uuids::entropy_error if the system cannot provide random bytes.
  explicit Scene(const UniqueId& sceneId = UniqueId::generate()) : id(sceneId) {}

  Scene(Scene&& other) noexcept
      : id(other.id),
        data(other.data),
        versions(other.versions),
        containers(std::move(other.containers)) {}
  Scene& operator=(Scene&& other) noexcept {
    id = other.id;
    data = other.data;
    versions = other.versions;
    containers = std::move(other.containers);
    return *this;
  }
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;
  ~Scene() = default;

  /// Writes a scene to a binary stream. Leaves the stream behind the last byte. Does not check the
  /// stream: if a write fails, the stream stays in its failed state, for the caller to check.
  /// Errors: throws vrnt::Exception if a value cannot be written, and std::bad_alloc.
  VRNT_API static void serialize(const Scene& scene, std::ostream& stream);

  /// Reads a scene from a binary stream. The scene takes the id `id`; if that is the null id, it
  /// takes the id in the stream. Leaves the stream behind the last byte. If the stream ends within
  /// the classes, the rest of the scene is empty.
  /// Errors, returned: IoError without a message if the stream has fewer than eight bytes.
  /// InvalidArguments with "Bad header: this is not a Vornath scene binary."; the stream is then at
  /// its original position. VersionMismatch with "Vornath data model binary version mismatch:
  /// source has version {}, current version is {}", where the current version is the one that
  /// serialize() writes.
  /// Errors, thrown: vrnt::Exception if a stored value cannot be read; std::bad_alloc, also if a
  /// damaged stream asks for too much memory.
  VRNT_API static Result<Scene> deserialize(std::istream& stream, const UniqueId& id);

  /// Adds the content of another scene to this scene. Returns, for each class, a map from the slots
  /// of the source to the slots of this scene.
  ///
  /// Programs: if this scene already has a program with the same id, the source's program maps to
  /// the first such program. Otherwise its text up to the first NUL is added, with the id of that
  /// text. Assets are added with their ids and share their bytes. Each addition takes the lowest
  /// free slot.
  ///
  /// Instances are added in order behind the last slot of their class. The class grows by as many
  /// slots as the source has; the slots that are free in the source become free slots at the end. A
  /// value is shared. But if it refers to textures, by vrntTypeTexture() or by a sampler of
  /// vrntTypeSampler(), it is copied, and the copy gets the new texture indices.
  ///
  /// References are translated. A reference to a slot that is not live becomes -1. In a coded list,
  /// the complement of such a reference becomes the complement of -1, which is 0. So the coded word
  /// 0x80000000, which refers to nothing, also becomes 0.
  ///
  /// The id and the settings of this scene do not change, nor does the source. The source may be
  /// this scene; then everything except programs is duplicated.
  ///
  /// Counters: each added object increments the counters of its class and of the scene. An instance
  /// also increments all its own counters. When the list of a LightGroup is filled, its version,
  /// its references version, and the counters of its class and of the scene are incremented once
  /// more.
  ///
  /// Errors: throws std::bad_alloc, and vrnt::Exception if a value cannot be written. This scene
  /// then holds a part of the source.
  /// Threads: reads the source and writes this scene.
  VRNT_API detail::TupleOfClass<RefMap> import(const Scene& source);

  /// Returns true if two scenes have the same content in the same slots. Compares the scene-wide
  /// groups and, for each class, the number of slots, which slots are live, and the content of live
  /// slots. Ignores the ids of scenes, programs and assets, the counters, and the content of free
  /// slots. Groups are compared field by field: floats as numbers, bools by truth value, everything
  /// else exactly. So an object that holds a NaN is not equivalent to itself. Programs are compared
  /// by their text up to the first NUL, assets by descriptor and bytes, references word by word,
  /// and values by their printed text. Bytes that both scenes share are not read.
  /// Errors: throws vrnt::Exception if the comparison reaches a value that cannot be printed, even
  /// if both scenes share it; std::bad_alloc.
  /// Threads: reads both scenes.
  VRNT_API static bool equivalent(const Scene& a, const Scene& b);

  /// Returns the container of a class, which is selected by its Desc.
  /// The container of a non-const scene allows writes for as long as the scene lives. So once it
  /// was handed out, vrdmCountReferences() must read all objects of that class on each call that
  /// depends on their references. To avoid this cost, a host that only reads takes the container
  /// from a const scene.
  template <typename Desc>
  Container<Stored<Desc>>& container() noexcept {
    return containers.template get<Desc>();
  }
  template <typename Desc>
  const Container<Stored<Desc>>& container() const noexcept {
    return containers.template get<Desc>();
  }

  UniqueId id;  ///< the first member: the flat functions read it through the scene's address
  SceneData data;
  SceneVersions versions;
  /// `containers.get<Desc>()` returns container<Desc>().
  detail::SceneContainers containers;
};

/// Prints a whole scene, for people to read and to compare two runs: all counters, slots,
/// references, groups and values, and a SHA-256 digest of the bytes of each asset. Addresses serve
/// as the versions of assets and values, so these differ from run to run. An asset without bytes
/// prints as a free slot. Numbers use the stream's format settings, except in the text of groups
/// and values. Flushes every line. Does not check the stream: if a write fails, the stream stays in
/// its failed state.
/// Errors: throws vrnt::Exception if a group or value cannot be printed (an enum field holds a code
/// that the enum does not have); everything before it is then printed. Throws std::bad_alloc.
/// Threads: reads the scene.
VRNT_API std::ostream& operator<<(std::ostream& stream, const Scene& scene);

}  // namespace vrnt::data

#endif
