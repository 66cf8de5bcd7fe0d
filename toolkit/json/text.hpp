// Texts and numbers of JSON documents.
#ifndef VORNATH_TOOLKIT_JSON_TEXT_HPP
#define VORNATH_TOOLKIT_JSON_TEXT_HPP

#include <string>
#include <string_view>

namespace vrtk {

/// How line feeds, carriage returns and tabs are escaped: by their codes, or short as "\n".
enum class LineFeeds { Code, Short };

/// Appends a text as a JSON string, in quotes. Bytes that are no UTF-8 become U+FFFD, since a JSON
/// document must be UTF-8.
void appendJsonString(std::string& out, std::string_view text,
                      LineFeeds lineFeeds = LineFeeds::Code);

/// Returns whether a text is UTF-8.
bool isUtf8(std::string_view text);

}  // namespace vrtk

#endif
