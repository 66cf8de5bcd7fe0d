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

/// What describes an object of each class. The order is that of ObjectClass and of the file.
using ClassList =
    std::tuple<CameraSource, MaterialSource, LightSource, vrnt::detail::MeshDesc,
               vrnt::detail::TextureDesc, MaterialGraphDesc, KeyframeDesc, KeyframeListDesc,
               CameraDesc, TransformationGroupDesc, LightGroupDesc, LightDesc, MaterialDesc,
               DecalDesc, DecalListDesc, ShapeDesc, ImageTaskDesc, BakeTaskDesc>;

template <std::size_t Index>
using ClassAt = std::tuple_element_t<Index, ClassList>;

/// A class as an argument of generic code: `using Desc = typename decltype(tag)::Desc;`.
template <typename DescType>
struct ClassTag {
  using Desc = DescType;
};

// A class stands in the list at its number.
static_assert(std::tuple_size_v<ClassList> == kClassCount, "ClassList has each class once");
static_assert(ClassInfo<ClassAt<0>>::kClass == ObjectClass::CameraProgram, "ClassList order");
static_assert(ClassInfo<ClassAt<1>>::kClass == ObjectClass::MaterialProgram, "ClassList order");
static_assert(ClassInfo<ClassAt<2>>::kClass == ObjectClass::LightProgram, "ClassList order");
static_assert(ClassInfo<ClassAt<3>>::kClass == ObjectClass::Mesh, "ClassList order");
static_assert(ClassInfo<ClassAt<4>>::kClass == ObjectClass::Texture, "ClassList order");
static_assert(ClassInfo<ClassAt<5>>::kClass == ObjectClass::MaterialGraph, "ClassList order");
static_assert(ClassInfo<ClassAt<6>>::kClass == ObjectClass::Keyframe, "ClassList order");
static_assert(ClassInfo<ClassAt<7>>::kClass == ObjectClass::KeyframeList, "ClassList order");
static_assert(ClassInfo<ClassAt<8>>::kClass == ObjectClass::Camera, "ClassList order");
static_assert(ClassInfo<ClassAt<9>>::kClass == ObjectClass::TransformationGroup, "ClassList order");
static_assert(ClassInfo<ClassAt<10>>::kClass == ObjectClass::LightGroup, "ClassList order");
static_assert(ClassInfo<ClassAt<11>>::kClass == ObjectClass::Light, "ClassList order");
static_assert(ClassInfo<ClassAt<12>>::kClass == ObjectClass::Material, "ClassList order");
static_assert(ClassInfo<ClassAt<13>>::kClass == ObjectClass::Decal, "ClassList order");
static_assert(ClassInfo<ClassAt<14>>::kClass == ObjectClass::DecalList, "ClassList order");
static_assert(ClassInfo<ClassAt<15>>::kClass == ObjectClass::Shape, "ClassList order");
static_assert(ClassInfo<ClassAt<16>>::kClass == ObjectClass::ImageTask, "ClassList order");
static_assert(ClassInfo<ClassAt<17>>::kClass == ObjectClass::BakeTask, "ClassList order");

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
    case 0:
      return onClass(ClassTag<ClassAt<0>>{});
    case 1:
      return onClass(ClassTag<ClassAt<1>>{});
    case 2:
      return onClass(ClassTag<ClassAt<2>>{});
    case 3:
      return onClass(ClassTag<ClassAt<3>>{});
    case 4:
      return onClass(ClassTag<ClassAt<4>>{});
    case 5:
      return onClass(ClassTag<ClassAt<5>>{});
    case 6:
      return onClass(ClassTag<ClassAt<6>>{});
    case 7:
      return onClass(ClassTag<ClassAt<7>>{});
    case 8:
      return onClass(ClassTag<ClassAt<8>>{});
    case 9:
      return onClass(ClassTag<ClassAt<9>>{});
    case 10:
      return onClass(ClassTag<ClassAt<10>>{});
    case 11:
      return onClass(ClassTag<ClassAt<11>>{});
    case 12:
      return onClass(ClassTag<ClassAt<12>>{});
    case 13:
      return onClass(ClassTag<ClassAt<13>>{});
    case 14:
      return onClass(ClassTag<ClassAt<14>>{});
    case 15:
      return onClass(ClassTag<ClassAt<15>>{});
    case 16:
      return onClass(ClassTag<ClassAt<16>>{});
    case 17:
      return onClass(ClassTag<ClassAt<17>>{});
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

/// Calls `callback(slot, Position{})` for each Slot of a Desc, in order.
template <typename Desc, typename Callback>
constexpr void forEachSlot(Callback&& callback) {
  detail::forEachItem(ClassInfo<Desc>::kSlots, std::forward<Callback>(callback),
                      std::make_index_sequence<kSlotCount<Desc>>{});
}

/// The groups of all classes and of SceneData.
inline constexpr std::size_t kTotalGroupCount = [] {
  std::size_t count = kGroupCount<SceneData>;
  forEachClass([&count](auto tag) { count += kGroupCount<typename decltype(tag)::Desc>; });
  return count;
}();

}  // namespace vrnt::data

#endif
