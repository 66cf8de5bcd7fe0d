// The walks over a scene that write and read its file. docs/scene_format.md has the layout.
#ifndef VORNATH_SCENE_SCENE_FILE_HPP
#define VORNATH_SCENE_SCENE_FILE_HPP

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <vector>

#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// Writes the parts of a scene to a stream, each item by one call. The stream isn't tested.
class SerializeObjects {
 public:
  SerializeObjects(const Scene& scene, std::ostream& stream) : scene_(scene), stream_(stream) {}

  /// Magic, version, id and the scene-wide groups.
  void header();

  /// The section of a class.
  template <typename Desc>
  void section();

  /// The value of a camera, light or material, which must have one.
  /// Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
  template <typename Desc>
  void handle(Ref<Instance<Desc>> ref);

 private:
  template <typename Source>
  void record(const Program<Source>& program);
  template <typename Desc>
  void record(const Asset<Desc>& asset);
  template <typename Desc>
  void references(const Instance<Desc>& object);
  void list(const std::vector<std::int32_t>& words);
  void write(const void* bytes, std::size_t size);

  const Scene& scene_;
  std::ostream& stream_;
};

/// Reads what SerializeObjects writes into a new scene, each item by one call. What the stream no
/// longer delivers keeps its preset: 0 for counts and flags, -1 for references, zero bytes.
class DeserializeObjects {
 public:
  DeserializeObjects(Scene& scene, std::istream& stream) : scene_(scene), stream_(stream) {}

  /// The scene-wide groups.
  void sceneData();

  /// The section of a class.
  template <typename Desc>
  void section();

  /// The value of a camera, light or material.
  /// Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
  template <typename Desc>
  void handle(Ref<Instance<Desc>> ref);

 private:
  template <typename Source>
  void record(Program<Source>& program);
  template <typename Desc>
  void record(Asset<Desc>& asset);
  template <typename Desc>
  void references(Instance<Desc>& object);
  void list(std::vector<std::int32_t>& words);
  void read(void* bytes, std::size_t size);
  std::uint32_t readCount();

  Scene& scene_;
  std::istream& stream_;
};

}  // namespace vrnt::data

#endif
