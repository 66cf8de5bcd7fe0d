// Texts of files of any encoding, as UTF-8 and as JSON.
#ifndef VRN_CONVERT_SCENE_PLAN_TEXT_HPP
#define VRN_CONVERT_SCENE_PLAN_TEXT_HPP

#include <string>
#include <string_view>

namespace vrn_convert {

/// Returns a text with U+FFFD in place of each byte that is not part of a character of UTF-8.
std::string asUtf8(std::string_view text);

/// Returns a text as a string of JSON, with its quotes.
std::string jsonString(std::string_view text);

}  // namespace vrn_convert

#endif
