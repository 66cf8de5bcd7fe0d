/// The containers of a scene, and a record of which of them a host may write to.
#ifndef VORNATH_DATA_DETAIL_SCENE_CONTAINERS_HPP
#define VORNATH_DATA_DETAIL_SCENE_CONTAINERS_HPP

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "vornath_data/container.hpp"
#include "vornath_data/elements.hpp"
#include "vornath_data/tuple_of_class.hpp"

namespace vrnt::data::detail {

/// Data that the library keeps beside the containers of a scene, to avoid reading them. A host only
/// destroys it.
class Kept {
 public:
  Kept() = default;
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;
  virtual ~Kept() = default;
};

/// Holds the container of each class; `get<Desc>()` returns one. Once a container was handed out
/// for writing, the library must read its objects to know their state.
class SceneContainers {
 public:
  SceneContainers() noexcept { additions_.fill(1); }
  SceneContainers(SceneContainers&& other) noexcept : SceneContainers() {
    *this = std::move(other);
  }
  SceneContainers& operator=(SceneContainers&& other) noexcept {
    containers_ = std::exchange(other.containers_, TupleOfClass<Container>());
    // A host may hold a pointer to an object, which moves, or to a container, which stays. So both
    // scenes stay marked.
    handedOut_.fetch_or(other.handedOut_.load(std::memory_order_relaxed),
                        std::memory_order_relaxed);
    additions_ = other.additions_;
    delete kept_.exchange(other.kept_.exchange(nullptr, std::memory_order_relaxed),
                          std::memory_order_relaxed);
    return *this;
  }
  ~SceneContainers() { delete kept_.load(std::memory_order_relaxed); }

  /// Returns the container for writing. To only read, use the container of a const scene.
  template <typename Desc>
  Container<Stored<Desc>>& get() noexcept {
    constexpr std::uint32_t bit = classBit<Desc>();
    if ((handedOut_.load(std::memory_order_relaxed) & bit) == 0) {
      handedOut_.fetch_or(bit, std::memory_order_relaxed);
    }
    return containers_.template get<Desc>();
  }
  template <typename Desc>
  const Container<Stored<Desc>>& get() const noexcept {
    return containers_.template get<Desc>();
  }

 private:
  friend class SceneAccess;

  template <typename Desc>
  static constexpr std::uint32_t classBit() {
    static_assert(kClassCount <= 32);
    return std::uint32_t{1} << static_cast<unsigned>(ClassInfo<Desc>::kClass);
  }

  TupleOfClass<Container> containers_;
  std::atomic<std::uint32_t> handedOut_{0};
  // For each class, the number of additions so far plus one. An Instance stores it with its list.
  std::array<std::uint32_t, kClassCount> additions_;
  // Created on first use, by a call that takes the scene const.
  mutable std::atomic<Kept*> kept_{nullptr};
};

}  // namespace vrnt::data::detail

#endif
