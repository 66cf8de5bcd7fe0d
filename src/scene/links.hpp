// The reference slots of objects, single ones and lists alike.
#ifndef VORNATH_SCENE_LINKS_HPP
#define VORNATH_SCENE_LINKS_HPP

#include <cstdint>
#include <vector>

#include "object_operations.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

/// The slot number in a single slot; the length of a list.
template <typename Target>
std::int32_t linkWord(const Ref<Target>& link) {
  return link.index;
}
template <typename List>
std::int32_t linkWord(const List& list) {
  return static_cast<std::int32_t>(list.words.size());
}

/// The first element of a list; null for an empty one and for a single slot.
template <typename Target>
std::int32_t* linkElements(Ref<Target>&) {
  return nullptr;
}
template <typename List>
std::int32_t* linkElements(List& list) {
  return list.words.empty() ? nullptr : list.words.data();
}
template <typename Target>
const std::int32_t* linkElements(const Ref<Target>&) {
  return nullptr;
}
template <typename List>
const std::int32_t* linkElements(const List& list) {
  return list.words.empty() ? nullptr : list.words.data();
}

/// Calls `onLink(link)` with what a slot of the object holds, and `otherwise()` past the last slot.
template <typename Object, typename OnLink, typename Otherwise>
auto visitLink(Object& object, std::uint32_t slot, OnLink&& onLink, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  using Desc = std::decay_t<decltype(object.desc)>;
  return visitSlot<Desc>(
      slot,
      [&](const auto& declared, auto) -> decltype(otherwise()) {
        return onLink(object.desc.*declared.member);
      },
      std::forward<Otherwise>(otherwise));
}

}  // namespace vrnt::data

#endif
