/// What the containers of a scene hold: programs, assets and instances.
#ifndef VORNATH_DATA_ELEMENTS_HPP
#define VORNATH_DATA_ELEMENTS_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "vornath_data/asset_handle.hpp"
#include "vornath_data/catalogue/class_list.hpp"
#include "vornath_data/unique_id.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

/// A source text.
template <typename Source>
struct Program {
  char* text = nullptr;      ///< owned, zero-terminated, from malloc; null for none
  std::uint64_t length = 0;  ///< bytes without the terminator
  UniqueId id;               ///< UniqueId::hash() of the text; null in a free slot

  Program() noexcept = default;
  Program(Program&& other) noexcept
      : text(std::exchange(other.text, nullptr)),
        length(std::exchange(other.length, 0)),
        id(std::exchange(other.id, UniqueId())) {}
  Program& operator=(Program&& other) noexcept {
    std::swap(text, other.text);
    std::swap(length, other.length);
    std::swap(id, other.id);
    return *this;
  }
  ~Program() { std::free(text); }

  bool live() const noexcept { return !id.isNull(); }

  /// Frees the slot. The text stays until the slot is used again.
  void markFree() noexcept { id = UniqueId(); }

  /// The text, empty if there is none. Never null.
  const char* source() const noexcept { return text ? text : ""; }
};

/// A descriptor and the bytes that it describes.
template <typename Desc>
struct Asset {
  UniqueId id;  ///< random at addition; it stays when the asset is removed or updated
  Desc desc;
  AssetHandle storage;

  bool live() const noexcept { return storage.hasData(); }

  /// Frees the slot and drops the bytes. Id and descriptor stay.
  void markFree() noexcept { storage = AssetHandle(); }
};

namespace detail {

// The parts of an instance that not every class has. An empty one takes no room.
template <bool Present>
struct InstanceValue {};
template <>
struct InstanceValue<true> {
  Value value;  ///< the parameters of the object's program; null until set
};

template <bool Present>
struct InstanceReferencesVersion {};
template <>
struct InstanceReferencesVersion<true> {
  std::uint32_t referencesVersion = 0;  ///< rises on any change to a slot
};

template <std::size_t Count>
struct InstanceGroupVersions {
  std::array<std::uint32_t, Count> groupVersions{};  ///< each rises when its group is written
};
template <>
struct InstanceGroupVersions<0> {};

// Of a class with a list of plain slot numbers, the only ones that are counted.
template <bool Present>
struct InstanceListHandedOut {};
template <>
struct InstanceListHandedOut<true> {
  std::uint32_t listHandedOut = 0;  ///< the library's own: when its elements could last be written
};

template <typename Desc>
constexpr bool hasPlainList() {
  bool has = false;
  forEachSlot<Desc>([&has](const auto& slot, auto) {
    if (slot.kind == ReferenceKind::List) has = true;
  });
  return has;
}

template <typename Desc>
struct InstanceDesc {
  Desc desc;
};

struct InstanceVersion {
  std::uint32_t version = 0;  ///< rises on every change to the object
};

}  // namespace detail

/// An object of references and groups. Its counters only ever rise, and go on when its slot is used
/// again.
template <typename Desc>
struct Instance : detail::InstanceDesc<Desc>,
                  detail::InstanceValue<ClassInfo<Desc>::kHasValue>,
                  detail::InstanceVersion,
                  detail::InstanceReferencesVersion<kSlotCount<Desc> != 0>,
                  detail::InstanceGroupVersions<kGroupCount<Desc>>,
                  detail::InstanceListHandedOut<detail::hasPlainList<Desc>()> {
  bool deleted = true;

  // Not defaulted: making an element in a container would then begin by zeroing all of it.
  Instance() noexcept {}

  bool live() const noexcept { return !deleted; }

  /// Frees the slot. All that it holds stays until the slot is used again, the value even then.
  void markFree() noexcept { deleted = true; }
};

}  // namespace vrnt::data

#endif
