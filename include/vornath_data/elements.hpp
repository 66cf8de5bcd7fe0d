/// The elements of a scene's containers: programs, assets and instances.
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

/// The source text of a program.
template <typename Source>
struct Program {
  char* text = nullptr;      ///< owned, zero-terminated, allocated by malloc; null if there is none
  std::uint64_t length = 0;  ///< in bytes, without the terminator
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

  /// Frees the slot. Keeps the text until the slot is used again.
  void markFree() noexcept { id = UniqueId(); }

  /// Returns the text, or an empty string if there is none. Never null.
  const char* source() const noexcept { return text ? text : ""; }
};

/// An asset: a descriptor and the bytes that it describes.
template <typename Desc>
struct Asset {
  UniqueId id;  ///< random, set on addition; removal and update keep it
  Desc desc;
  AssetHandle storage;

  bool live() const noexcept { return storage.hasData(); }

  /// Frees the slot and releases the bytes. Keeps the id and the descriptor.
  void markFree() noexcept { storage = AssetHandle(); }
};

namespace detail {

// Parts of an instance that only some classes have. An empty part takes no memory.
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
  std::uint32_t referencesVersion = 0;  ///< incremented by any change to a reference slot
};

template <std::size_t Count>
struct InstanceGroupVersions {
  std::array<std::uint32_t, Count> groupVersions{};  ///< one per group; incremented by each write
};
template <>
struct InstanceGroupVersions<0> {};

// Only in classes that have a list of plain slot indices, the only lists whose references are
// counted.
template <bool Present>
struct InstanceListHandedOut {};
template <>
struct InstanceListHandedOut<true> {
  std::uint32_t listHandedOut = 0;  ///< internal: when a host could last write to the list
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
  std::uint32_t version = 0;  ///< incremented by every change to the object
};

}  // namespace detail

/// An object with reference slots and groups. Its counters never decrease, and continue when the
/// slot is used again.
template <typename Desc>
struct Instance : detail::InstanceDesc<Desc>,
                  detail::InstanceValue<ClassInfo<Desc>::kHasValue>,
                  detail::InstanceVersion,
                  detail::InstanceReferencesVersion<kSlotCount<Desc> != 0>,
                  detail::InstanceGroupVersions<kGroupCount<Desc>>,
                  detail::InstanceListHandedOut<detail::hasPlainList<Desc>()> {
  bool deleted = true;

  // Not defaulted, because then a container would zero each new element before it initialises it.
  Instance() noexcept {}

  bool live() const noexcept { return !deleted; }

  /// Frees the slot. Keeps the content until the slot is used again, and the value even then.
  void markFree() noexcept { deleted = true; }
};

}  // namespace vrnt::data

#endif
