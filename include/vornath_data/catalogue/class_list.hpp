/// The classes of the catalogue in file order, and functions that visit classes, groups and slots.
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

/// The Desc of each class, in the order of classes.def, of ObjectClass and of scene files.
using ClassList = detail::TupleOfRest<void
#define VRNT_CLASS(number, name, constant, Desc) , Desc
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
                                      >::Type;

template <std::size_t Index>
using ClassAt = std::tuple_element_t<Index, ClassList>;

/// Passes a class to generic code, which reads it by `using Desc = typename decltype(tag)::Desc;`.
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

/// The number of groups of a class, or of SceneData.
template <typename Desc>
inline constexpr std::size_t kGroupCount =
    std::tuple_size_v<std::decay_t<decltype(ClassInfo<Desc>::kGroups)>>;

template <typename Desc>
inline constexpr std::size_t kSlotCount =
    std::tuple_size_v<std::decay_t<decltype(ClassInfo<Desc>::kSlots)>>;

/// The type of the objects in the container of a class: Program, Asset or Instance of its Desc.
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

/// Calls `onClass(ClassTag<Desc>{})` for the class whose code is `number`, or `otherwise()` if no
/// class has this code, and returns the result. Both must return the same type. This is the only
/// switch on a class code.
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

/// An index into a tuple of groups or slots, as a type.
template <std::size_t Index>
using Position = std::integral_constant<std::size_t, Index>;

namespace detail {

template <typename Tuple, typename Callback, std::size_t... Indices>
constexpr void forEachItem([[maybe_unused]] const Tuple& items,
                           [[maybe_unused]] Callback&& callback, std::index_sequence<Indices...>) {
  (callback(std::get<Indices>(items), Position<Indices>{}), ...);
}

}  // namespace detail

/// Calls `callback(group, Position<I>{})` for each Group of a Desc, or of SceneData, in order.
template <typename Desc, typename Callback>
constexpr void forEachGroup(Callback&& callback) {
  detail::forEachItem(ClassInfo<Desc>::kGroups, std::forward<Callback>(callback),
                      std::make_index_sequence<kGroupCount<Desc>>{});
}

/// Calls `callback(slot, Position<I>{})` for each Slot of a Desc, in order.
template <typename Desc, typename Callback>
constexpr void forEachSlot(Callback&& callback) {
  detail::forEachItem(ClassInfo<Desc>::kSlots, std::forward<Callback>(callback),
                      std::make_index_sequence<kSlotCount<Desc>>{});
}

/// The number of groups of all classes and of SceneData together.
inline constexpr std::size_t kTotalGroupCount = [] {
  std::size_t count = kGroupCount<SceneData>;
  forEachClass([&count](auto tag) { count += kGroupCount<typename decltype(tag)::Desc>; });
  return count;
}();

}  // namespace vrnt::data

#endif
