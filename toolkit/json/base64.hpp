// Bytes as text in base64 (RFC 4648, with padding).
#ifndef VORNATH_TOOLKIT_JSON_BASE64_HPP
#define VORNATH_TOOLKIT_JSON_BASE64_HPP

#include <cstddef>
#include <optional>
#include <string_view>

namespace vrtk {

/// Writes the text of `size` bytes, four characters for each three bytes begun; returns its end.
char* writeBase64(char* out, const void* bytes, std::size_t size);

/// Returns how many bytes a text stands for, or nothing if it is no base64.
std::optional<std::size_t> base64Size(std::string_view text);

/// Writes the bytes of a text that base64Size() has accepted.
void readBase64(std::string_view text, void* bytes);

}  // namespace vrtk

#endif
