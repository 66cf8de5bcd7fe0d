/// Scenes.
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

/// Change counters: a client that took a snapshot of a part tells by inequality that the part has
/// changed since. They only ever rise, and wrap.
struct SceneVersions {
  std::uint32_t version = 0;  ///< rises together with every counter below
  std::array<std::uint32_t, kGroupCount<SceneData>> groups{};
  std::array<std::uint32_t, kClassCount> classes{};
};

/// A scene: its identity, its scene-wide settings, and one container for each class. Objects refer
/// to each other by slot number only, and nothing checks a reference. A scene can be moved, which
/// leaves the source empty, but not copied.
///
/// A Camera, Light or Material must have been given its value before the scene is written,
/// imported, compared or printed.
/// Threads: a scene has no lock and is used by one thread at a time, but calls on a const scene may
/// run side by side. Scenes that share asset bytes or values may be used on different threads.
class Scene {
 public:
  /// An empty scene with the default settings. The id is random unless one is given.
  /// Errors: throws boost::uuids::entropy_error if the system has no randomness to give.
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

  /// Writes a scene to a binary stream. Afterwards the stream stands behind the last byte. It isn't
  /// tested: a stream that fails midway is left failed, for the caller to see.
  /// Errors: throws vrnt::Exception if a value can't be written; std::bad_alloc.
  VRNT_API static void serialize(const Scene& scene, std::ostream& stream);

  /// Reads a scene from a binary stream. `id` becomes the scene's id; with the null id it takes the
  /// one that was written. Afterwards the stream stands behind the last byte. A stream that ends
  /// within the classes gives a scene in which the rest is empty.
  /// Errors: IoError with no text of its own if the stream can't give eight bytes; InvalidArguments
  /// with "Bad header: this is not a Vornath scene binary.", the stream then standing where it
  /// stood; VersionMismatch with "Vornath data model binary version mismatch: source has version ",
  /// its number, ", current version is " and the one that serialize() writes. Throws
  /// vrnt::Exception if a stored value can't be read, and std::bad_alloc, also for a damaged stream
  /// that asks for too much.
  VRNT_API static Result<Scene> deserialize(std::istream& stream, const UniqueId& id);

  /// Adds what another scene holds to this one. Result: for each class, where its objects went.
  ///
  /// A program of which this scene has the id already becomes its first one; others are added by
  /// their text up to the first NUL, with its id, and so are all assets, each to the lowest free
  /// slot, with its id and sharing its bytes. Instances go behind the last slot of their class, in
  /// order: the class grows by as many slots as the source has, of which those that the source has
  /// free stay free at the end. A value is shared, unless it names textures by vrntTypeTexture() or
  /// a sampler of vrntTypeSampler(): then it becomes a copy with their new numbers.
  ///
  /// References are translated; one to anything but a live object becomes -1, and a complement in a
  /// coded list that of -1, which is 0. So a coded word for no target, 0x80000000, comes out as 0.
  /// This scene's id and settings stay. The source isn't changed; it may be this scene, which then
  /// gets a copy of what it held but programs.
  ///
  /// Counters: each object that is added raises its class and the scene, an instance all of its own
  /// counters too, and a LightGroup once more when its list is filled.
  ///
  /// Errors: throws std::bad_alloc, and vrnt::Exception if a value can't be written; this scene
  /// then holds a part of the source. Threads: reads the source and writes this scene.
  VRNT_API detail::TupleOfClass<RefMap> import(const Scene& source);

  /// Whether two scenes have the same content at the same slots: the scene-wide groups, and for
  /// each class the number of slots, which of them are live, and what the live ones hold. Identity
  /// and history don't count: the ids of scenes, programs and assets, the counters, what free slots
  /// still hold.
  /// Groups are compared field by field: floats as numbers, so that an object with a NaN isn't even
  /// equivalent to itself, bools by truth, all else exactly. Programs are equal by their text up to
  /// the first NUL, assets by descriptor and bytes, references word by word, values by what they
  /// print as. Bytes that both scenes share aren't read.
  /// Errors: throws vrnt::Exception if a value that is come to can't be printed, also where both
  /// scenes share it; std::bad_alloc. Threads: both scenes are read.
  VRNT_API static bool equivalent(const Scene& a, const Scene& b);

  /// The container of a class, named by its Desc.
  /// Whoever is given it by a scene that isn't const may write to it, now and as long as the scene
  /// lives. So from then on vrdmCountReferences() reads all objects of that class each time, as far
  /// as their references are asked for; a host that only reads takes it from a const scene.
  template <typename Desc>
  Container<Stored<Desc>>& container() noexcept {
    return containers.template get<Desc>();
  }
  template <typename Desc>
  const Container<Stored<Desc>>& container() const noexcept {
    return containers.template get<Desc>();
  }

  UniqueId id;  ///< the flat interface reads it through the scene's address
  SceneData data;
  SceneVersions versions;
  /// `containers.get<Desc>()` is container<Desc>().
  detail::SceneContainers containers;
};

/// Prints a whole scene, for people and for comparing two runs: all counters, slots, references,
/// groups and values, and a SHA-256 digest of each asset's bytes. Addresses stand for the versions
/// of assets and values, so that these differ from run to run. An asset of no bytes prints as a
/// free slot. Numbers follow the stream's settings, but for those within the text of groups and
/// values. Every line is flushed. The stream isn't tested: one that fails midway is left failed.
/// Errors: throws vrnt::Exception if a group or value can't be printed (an enum's code that it
/// doesn't have), with all that stands before it printed; std::bad_alloc. Threads: the scene is
/// read.
VRNT_API std::ostream& operator<<(std::ostream& stream, const Scene& scene);

}  // namespace vrnt::data

#endif
