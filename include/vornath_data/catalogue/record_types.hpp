/// The fixed-width members of group records. A record has the memory layout of the group's type:
/// its members are in the order of the schema. All padding has a name and is zero, since scene
/// files contain it.
#ifndef VORNATH_DATA_CATALOGUE_RECORD_TYPES_HPP
#define VORNATH_DATA_CATALOGUE_RECORD_TYPES_HPP

#include <cstddef>
#include <cstdint>

namespace vrnt::data {

/// A bool: 0 is false; true has all bits set.
using Bool32 = std::int32_t;
inline constexpr Bool32 kFalse = 0;
inline constexpr Bool32 kTrue = -1;

/// The index of a constructor in its enum.
using EnumCode = std::int32_t;

/// Returns the index of the constructor `name` in `constructors`, which has the form "A; B; C;";
/// -1 if there is no such constructor.
constexpr EnumCode codeOf(const char* constructors, const char* name) {
  EnumCode code = 0;
  while (*constructors != '\0') {
    const char* rest = name;
    while (*rest != '\0' && *rest == *constructors) ++rest, ++constructors;
    if (*rest == '\0' && *constructors == ';') return code;
    while (*constructors != ';') ++constructors;
    ++constructors;
    if (*constructors == ' ') ++constructors;
    ++code;
  }
  return -1;
}

/// An enum code that is known at compile time.
template <EnumCode Code>
struct EnumConstant {
  static constexpr EnumCode kCode = Code;
};

/// `Count` zero bytes that align the next member or the end of the record. With a count of 0 it is
/// empty. `Record` and `Offset` make each fill a distinct type: two empty members of the same type
/// would need different addresses, and so a byte.
template <std::size_t Count, typename Record, std::size_t Offset>
struct Fill {
  static constexpr std::size_t kSize = Count;
  unsigned char bytes[Count] = {};
};
template <typename Record, std::size_t Offset>
struct Fill<0, Record, Offset> {
  static constexpr std::size_t kSize = 0;
};

struct alignas(8) Int2 {
  std::int32_t x = 0, y = 0;
};

struct alignas(16) Int4 {
  std::int32_t x = 0, y = 0, z = 0, w = 0;
};

struct alignas(8) Float2 {
  float x = 0, y = 0;
};

struct alignas(16) Float3 {
  float x = 0, y = 0, z = 0;
  std::uint32_t padding = 0;
};

struct alignas(16) Float4 {
  float x = 0, y = 0, z = 0, w = 0;
};

/// A reference to a texture in a group: a texture index, or -1 for none. A record starts at -1,
/// while the default value of the group's type has 0 here.
struct TextureRef {
  std::int32_t index = -1;
};

static_assert(sizeof(Int2) == 8 && sizeof(Int4) == 16 && sizeof(Float2) == 8 &&
                  sizeof(Float3) == 16 && sizeof(Float4) == 16 && sizeof(TextureRef) == 4,
              "its bytes go to scene files: another size is another file version");

}  // namespace vrnt::data

#endif
