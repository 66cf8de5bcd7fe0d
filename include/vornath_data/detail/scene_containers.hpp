/// The containers of a scene, and what is known of who may change their objects.
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

/// What the library keeps beside the containers of a scene so that it need not read them; a host
/// only ends it.
class Kept {
 public:
  Kept() = default;
  Kept(const Kept&) = delete;
  Kept& operator=(const Kept&) = delete;
  virtual ~Kept() = default;
};

/// The container of each class: `get<Desc>()` is that of a class. A class whose container was once
/// handed out for writing is one of which the library knows nothing without reading it.
class SceneContainers {
 public:
  SceneContainers() noexcept { additions_.fill(1); }
  SceneContainers(SceneContainers&& other) noexcept : SceneContainers() {
    *this = std::move(other);
  }
  SceneContainers& operator=(SceneContainers&& other) noexcept {
    containers_ = std::exchange(other.containers_, TupleOfClass<Container>());
    // What a host was handed out may be an object, which moves, or a container, which stays.
    handedOut_.fetch_or(other.handedOut_.load(std::memory_order_relaxed),
                        std::memory_order_relaxed);
    additions_ = other.additions_;
    delete kept_.exchange(other.kept_.exchange(nullptr, std::memory_order_relaxed),
                          std::memory_order_relaxed);
    return *this;
  }
  ~SceneContainers() { delete kept_.load(std::memory_order_relaxed); }

  /// For writing. Whoever only reads takes the container of a const scene.
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
  // For each class the additions so far and one: what an Instance remembers of its list.
  std::array<std::uint32_t, kClassCount> additions_;
  // Made when it is first needed, by a call that only reads the scene.
  mutable std::atomic<Kept*> kept_{nullptr};
};

}  // namespace vrnt::data::detail

#endif
