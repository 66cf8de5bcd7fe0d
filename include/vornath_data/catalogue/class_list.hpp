/// The classes of the catalogue in file order, and the ways to walk them, their groups and slots.
#ifndef VORNATH_DATA_CATALOGUE_CLASS_LIST_HPP
#define VORNATH_DATA_CATALOGUE_CLASS_LIST_HPP

#include <cstddef>
#include <cstdint>
#include <tuple>
#include <type_traits>
#include <utility>

#include "vornath_data/catalogue/camera.hpp"
#include "vornath_data/catalogue/class_info.hpp"
#include "vornath_data/catalogue/decal.hpp"
#include "vornath_data/catalogue/keyframe.hpp"
#include "vornath_data/catalogue/light.hpp"
#include "vornath_data/catalogue/material.hpp"
#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/catalogue/object_class.hpp"
#include "vornath_data/catalogue/programs.hpp"
#include "vornath_data/catalogue/scene_data.hpp"
#include "vornath_data/catalogue/shape.hpp"
#include "vornath_data/catalogue/tasks.hpp"
#include "vornath_data/catalogue/texture.hpp"
#include "vornath_data/catalogue/transformation_group.hpp"

namespace vrnt::data {

namespace detail {

template <typename First, typename... Rest>
struct TupleOfRest {
  using Type = std::tuple<Rest...>;
};

}  // namespace detail

/// What describes an object of each class. The order is that of classes.def, of ObjectClass and of
/// the file.
using ClassList = detail::TupleOfRest<void
#define VRNT_CLASS(number, name, constant, Desc) , Desc
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
                                      >::Type;

template <std::size_t Index>
using ClassAt = std::tuple_element_t<Index, ClassList>;

/// A class as an argument of generic code: `using Desc = typename decltype(tag)::Desc;`.
template <typename DescType>
struct ClassTag {
  using Desc = DescType;
};

#define VRNT_CLASS(number, name, constant, Desc)                          \
  static_assert(std::is_same_v<ClassAt<number>, Desc>,                    \
                #name ": its number is not its position in classes.def"); \
  static_assert(ClassInfo<Desc>::kClass == ObjectClass::name,             \
                #name ": " #Desc " names another class than its row in classes.def does");
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS

/// The groups of a class, or of SceneData.
template <typename Desc>
inline constexpr std::size_t kGroupCount =
    std::tuple_size_v<std::decay_t<decltype(ClassInfo<Desc>::kGroups)>>;

template <typename Desc>
inline constexpr std::size_t kSlotCount =
    std::tuple_size_v<std::decay_t<decltype(ClassInfo<Desc>::kSlots)>>;

/// What the container of a class stores: Program, Asset or Instance of its Desc.
template <typename Desc>
using Stored = std::conditional_t<
    ClassInfo<Desc>::kKind == ObjectKind::Program, Program<Desc>,
    std::conditional_t<ClassInfo<Desc>::kKind == ObjectKind::Asset, Asset<Desc>, Instance<Desc>>>;

namespace detail {

template <typename Callback, std::size_t... Indices>
constexpr void forEachClassAt(Callback&& callback, std::index_sequence<Indices...>) {
  (callback(ClassTag<ClassAt<Indices>>{}), ...);
}

}  // namespace detail

/// Calls `callback(ClassTag<Desc>{})` for each class in file order.
template <typename Callback>
constexpr void forEachClass(Callback&& callback) {
  detail::forEachClassAt(std::forward<Callback>(callback),
                         std::make_index_sequence<std::tuple_size_v<ClassList>>{});
}

/// Calls `onClass(ClassTag<Desc>{})` for the class of that number, and `otherwise()` for a number
/// that is none; both return the same type, which is the result. The only switch on a class number.
template <typename OnClass, typename Otherwise>
constexpr auto visitClass(std::uint32_t number, OnClass&& onClass, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  switch (number) {
#define VRNT_CLASS(number, name, constant, Desc) \
  case number:                                   \
    return onClass(ClassTag<Desc>{});
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
    default:
      return otherwise();
  }
}

/// visitClass(), with SceneData as `onClass(ClassTag<SceneData>{})` for all bits set: for what the
/// scene-wide groups have in common with those of a class.
template <typename OnClass, typename Otherwise>
constexpr auto visitClassOrSceneData(std::uint32_t number, OnClass&& onClass, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  if (number == static_cast<std::uint32_t>(ObjectClass::SceneData)) {
    return onClass(ClassTag<SceneData>{});
  }
  return visitClass(number, std::forward<OnClass>(onClass), std::forward<Otherwise>(otherwise));
}

/// A position in a tuple of groups or slots, as a constant of its type.
template <std::size_t Index>
using Position = std::integral_constant<std::size_t, Index>;

namespace detail {

template <std::size_t Index, typename Tuple, typename OnItem, typename Otherwise>
constexpr auto visitItem([[maybe_unused]] const Tuple& items,
                         [[maybe_unused]] std::uint32_t position, [[maybe_unused]] OnItem&& onItem,
                         [[maybe_unused]] Otherwise&& otherwise) -> decltype(otherwise()) {
  if constexpr (Index == std::tuple_size_v<Tuple>) {
    return otherwise();
  } else {
    if (position == Index) return onItem(std::get<Index>(items), Position<Index>{});
    return visitItem<Index + 1>(items, position, std::forward<OnItem>(onItem),
                                std::forward<Otherwise>(otherwise));
  }
}

template <typename Tuple, typename Callback, std::size_t... Indices>
constexpr void forEachItem([[maybe_unused]] const Tuple& items,
                           [[maybe_unused]] Callback&& callback, std::index_sequence<Indices...>) {
  (callback(std::get<Indices>(items), Position<Indices>{}), ...);
}

}  // namespace detail

/// Calls `callback(group, Position{})` for each Group of a Desc, or of SceneData, in order.
template <typename Desc, typename Callback>
constexpr void forEachGroup(Callback&& callback) {
  detail::forEachItem(ClassInfo<Desc>::kGroups, std::forward<Callback>(callback),
                      std::make_index_sequence<kGroupCount<Desc>>{});
}

/// Calls `onGroup(group, Position{})` for the Group at a position, and `otherwise()` past the end.
template <typename Desc, typename OnGroup, typename Otherwise>
constexpr auto visitGroup(std::uint32_t position, OnGroup&& onGroup, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  return detail::visitItem<0>(ClassInfo<Desc>::kGroups, position, std::forward<OnGroup>(onGroup),
                              std::forward<Otherwise>(otherwise));
}

/// Calls `callback(slot, Position{})` for each Slot of a Desc, in order.
template <typename Desc, typename Callback>
constexpr void forEachSlot(Callback&& callback) {
  detail::forEachItem(ClassInfo<Desc>::kSlots, std::forward<Callback>(callback),
                      std::make_index_sequence<kSlotCount<Desc>>{});
}

/// Calls `onSlot(slot, Position{})` for the Slot at a position, and `otherwise()` past the end.
template <typename Desc, typename OnSlot, typename Otherwise>
constexpr auto visitSlot(std::uint32_t position, OnSlot&& onSlot, Otherwise&& otherwise)
    -> decltype(otherwise()) {
  return detail::visitItem<0>(ClassInfo<Desc>::kSlots, position, std::forward<OnSlot>(onSlot),
                              std::forward<Otherwise>(otherwise));
}

namespace detail {

template <typename Desc, std::size_t... Indices>
constexpr std::size_t groupsBefore(std::index_sequence<Indices...>) {
  constexpr auto number = static_cast<std::size_t>(ClassInfo<Desc>::kClass);
  return (std::size_t{0} + ... + (Indices < number ? kGroupCount<ClassAt<Indices>> : 0));
}

}  // namespace detail

/// All groups of the catalogue are numbered through, in class order with those of SceneData last:
/// the number of the first group of a class.
template <typename Desc>
inline constexpr std::size_t kFirstGroupOrdinal =
    detail::groupsBefore<Desc>(std::make_index_sequence<kClassCount>{});

inline constexpr std::size_t kTotalGroupCount =
    kFirstGroupOrdinal<SceneData> + kGroupCount<SceneData>;

// A slot's member refers to what the slot declares as its target, in the form of its kind.
namespace detail {

template <typename Desc>
constexpr bool slotsMatchTheirMembers() {
  bool match = true;
  forEachSlot<Desc>([&match](const auto& slot, auto) {
    using Link = typename std::decay_t<decltype(slot)>::Member;
    using Target = typename Link::Target;
    const bool single = std::is_same_v<Link, Ref<Target>>;
    const bool list = std::is_same_v<Link, RefList<Target>>;
    const bool coded = std::is_same_v<Link, CodedRefList<Target>>;
    switch (slot.kind) {
      case ReferenceKind::Required:
      case ReferenceKind::Optional:
        match = match && single;
        break;
      case ReferenceKind::List:
        match = match && list;
        break;
      case ReferenceKind::OrderedDecal:
        match = match && coded && std::is_same_v<Target, Instance<DecalDesc>>;
        break;
      case ReferenceKind::Emitter:
        match = match && coded && std::is_same_v<Target, Emitter>;
        break;
    }
    const bool known = visitClass(
        static_cast<std::uint32_t>(slot.target),
        [](auto tag) { return std::is_same_v<Target, Stored<typename decltype(tag)::Desc>>; },
        [&slot] { return slot.target == kEmitterTarget && std::is_same_v<Target, Emitter>; });
    match = match && known;
  });
  return match;
}

constexpr bool allSlotsMatchTheirMembers() {
  bool match = true;
  forEachClass([&match](auto tag) {
    match = match && slotsMatchTheirMembers<typename decltype(tag)::Desc>();
  });
  return match;
}

static_assert(allSlotsMatchTheirMembers(), "a slot's kind and target are those of its member");

}  // namespace detail

}  // namespace vrnt::data

#endif
