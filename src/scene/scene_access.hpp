// The library's own way to the containers of a scene.
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

  /// Whether a host was handed out the class's container for writing.
  template <typename Desc>
  static bool handedOut(const Scene& scene) noexcept {
    return (scene.containers.handedOut_.load(std::memory_order_relaxed) &
            SceneContainers::classBit<Desc>()) != 0;
  }

  template <typename Desc>
  static std::uint32_t& additions(Scene& scene) noexcept {
    return scene.containers.additions_[static_cast<std::size_t>(ClassInfo<Desc>::kClass)];
  }
  template <typename Desc>
  static std::uint32_t additions(const Scene& scene) noexcept {
    return scene.containers.additions_[static_cast<std::size_t>(ClassInfo<Desc>::kClass)];
  }

  static std::atomic<Kept*>& kept(const Scene& scene) noexcept { return scene.containers.kept_; }
};

}  // namespace detail

/// The container of a class for the library's own writing, which keeps count of what it changes.
/// Through Scene::container() a host gets to write, and what it changes isn't known.
template <typename Desc>
Container<Stored<Desc>>& writable(Scene& scene) noexcept {
  return detail::SceneAccess::container<Desc>(scene);
}

}  // namespace vrnt::data

#endif
