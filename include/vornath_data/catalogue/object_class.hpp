/// The classes of objects that a scene holds, and the kinds of objects and references.
#ifndef VORNATH_DATA_CATALOGUE_OBJECT_CLASS_HPP
#define VORNATH_DATA_CATALOGUE_OBJECT_CLASS_HPP

#include <cstdint>

namespace vrnt::data {

// NOLINTBEGIN(bugprone-macro-parentheses): an enumerator and a part of a sum
/// The classes, in the order of the scene file's sections. The numbers are part of the flat
/// interface and of the file: never change or reuse one. classes.def lists them.
enum class ObjectClass : std::int32_t {
  SceneData = -1,  ///< the scene-wide settings: groups, but no objects
#define VRNT_CLASS(number, name, constant, Desc) name = number,
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
};

inline constexpr std::uint32_t kClassCount = 0
#define VRNT_CLASS(number, name, constant, Desc) +1
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
    ;
// NOLINTEND(bugprone-macro-parentheses)

/// The target of an Emitter slot. It is not the code of a class: the slot refers to lights and
/// shapes.
inline constexpr ObjectClass kEmitterTarget{100};

/// What an object of a class consists of.
enum class ObjectKind : std::uint32_t {
  Program = 0,  ///< a source text
  Asset = 1,    ///< a descriptor and a block of bytes
  Instance = 2  ///< references and groups of fields
};

/// What a reference slot holds. The difference between Required and Optional is for hosts: in a new
/// object, slots of both kinds are unset. The library itself distinguishes them only when it counts
/// the references to index -1: an unset Required slot counts, an unset Optional slot does not.
enum class ReferenceKind : std::uint32_t {
  Required = 0,      ///< the index of an object
  Optional = 1,      ///< the index of an object, or -1 for none
  List = 2,          ///< indices of objects
  OrderedDecal = 3,  ///< ordered decals: an index is on the back, a complement on the front
  Emitter = 100      ///< an index is a shape, a complement is a light
};

// The objects in the container of a class.
template <typename Source>
struct Program;
template <typename Desc>
struct Asset;
template <typename Desc>
struct Instance;

/// The target of a list that mixes shapes and lights.
struct Emitter;

}  // namespace vrnt::data

#endif
