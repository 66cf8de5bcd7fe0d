// Gives the library itself access to the containers of a scene, and to the records that the scene
// keeps of their use.
#ifndef VORNATH_SCENE_SCENE_ACCESS_HPP
#define VORNATH_SCENE_SCENE_ACCESS_HPP

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "vornath_data/scene.hpp"

namespace vrnt::data {

namespace detail {

class SceneAccess {
 public:
  template <typename Desc>
  static Container<Stored<Desc>>& container(Scene& scene) noexcept {
    return scene.containers.containers_.template get<Desc>();
  }

  /// Returns whether the container of a class was handed out to a host for writing.
  static bool handedOut(const Scene& scene, ObjectClass objectClass) noexcept {
    const std::uint32_t classes = scene.containers.handedOut_.load(std::memory_order_relaxed);
    return ((classes >> static_cast<unsigned>(objectClass)) & 1U) != 0;
  }

  /// Returns the number of additions to a class so far, plus one.
  static std::uint32_t& additions(Scene& scene, ObjectClass objectClass) noexcept {
    return scene.containers.additions_[static_cast<std::size_t>(objectClass)];
  }
  static std::uint32_t additions(const Scene& scene, ObjectClass objectClass) noexcept {
    return scene.containers.additions_[static_cast<std::size_t>(objectClass)];
  }

  static std::atomic<Kept*>& kept(const Scene& scene) noexcept { return scene.containers.kept_; }
};

}  // namespace detail

/// Returns the container of a class for changes by the library, which updates the reference counts
/// itself. Scene::container() would note that a host can change the container without a call.
template <typename Desc>
Container<Stored<Desc>>& writable(Scene& scene) noexcept {
  return detail::SceneAccess::container<Desc>(scene);
}

}  // namespace vrnt::data

#endif
