// Fields that hold a text: arrays of `char` with the annotation `@string`. As JSON they are arrays
// of numbers; people want to read and to type texts.
#ifndef VRN_CORE_CHARS_HPP
#define VRN_CORE_CHARS_HPP

#include <vornath_data/scene_interface.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vrn {

/// A field that holds a text.
struct CharsField {
  std::uint32_t objectClass;  ///< VRDM_CLASS_*, also VRDM_CLASS_SCENE_DATA
  std::int32_t index;
  std::uint32_t group;
  std::uint64_t offset;  ///< in the group, in bytes
  std::uint64_t size;    ///< in bytes
};

/// Returns the field that an address names if it holds a text.
std::optional<CharsField> charsFieldAt(std::string_view address);

/// Returns the text of a field in quotes, up to its first zero.
std::string charsText(const vrdmScene_t* scene, const CharsField& field);

/// Returns a JSON string as the JSON array of numbers that stands for it in the field. Returns
/// nothing for what is no JSON string. Throws Trouble for one that is too long or has no bytes of
/// its own for a character.
std::optional<std::string> charsJson(std::string_view json, const CharsField& field);

}  // namespace vrn

#endif
