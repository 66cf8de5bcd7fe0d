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

/// The target of an Emitter slot: lights and shapes, so it is no class.
inline constexpr ObjectClass kEmitterTarget{100};

/// What an object of a class is.
enum class ObjectKind : std::uint32_t {
  Program = 0,  ///< a source text
  Asset = 1,    ///< a descriptor and a block of bytes
  Instance = 2  ///< references and groups of fields
};

/// What a reference slot holds. Nothing in the library tells Required from Optional: a new object
/// has all its slots unset. The difference is there for hosts to read.
enum class ReferenceKind : std::uint32_t {
  Required = 0,      ///< one slot number
  Optional = 1,      ///< one slot number
  List = 2,          ///< slot numbers
  OrderedDecal = 3,  ///< decals in order: 0 or more on the back, a complement on the front
  Emitter = 100      ///< 0 or more is a shape, a complement is a light
};

// What the container of a class stores.
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
