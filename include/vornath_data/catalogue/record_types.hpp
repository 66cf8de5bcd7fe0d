/// The fixed-width members of group records. A record is what the group's schema says in bytes: its
/// members are in the schema's order, and padding is named and zero, since it goes to file.
#ifndef VORNATH_DATA_CATALOGUE_RECORD_TYPES_HPP
#define VORNATH_DATA_CATALOGUE_RECORD_TYPES_HPP

#include <cstddef>
#include <cstdint>

namespace vrnt::data {

/// 0 is false, all ones is true.
using Bool32 = std::int32_t;
inline constexpr Bool32 kFalse = 0;
inline constexpr Bool32 kTrue = -1;

/// The position of a constructor in its enum.
using EnumCode = std::int32_t;

/// The position of a constructor in "A; B; C;"; -1 for a text that is none.
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

/// A code that is known at compile time.
template <EnumCode Code>
struct EnumConstant {
  static constexpr EnumCode kCode = Code;
};

/// Zero bytes that bring the next member, or the record's end, to its alignment; nothing if there
/// are none to fill. The record and the offset make it a type of its own, so that it never needs a
/// byte.
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

/// A texture named from within a group; -1 for none, which a parsed default (0) doesn't say.
struct TextureRef {
  std::int32_t index = -1;
};

static_assert(sizeof(Int2) == 8 && sizeof(Int4) == 16 && sizeof(Float2) == 8 &&
                  sizeof(Float3) == 16 && sizeof(Float4) == 16 && sizeof(TextureRef) == 4,
              "its bytes go to scene files: another size is another file version");

}  // namespace vrnt::data

#endif
