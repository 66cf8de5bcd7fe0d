#include "platform/path.hpp"

#include <cstring>
#include <string>

namespace vrnt::detail {

std::filesystem::path pathFromUtf8(const char* text) {
  // The character type tells the path that the text is UTF-8 and not in the narrow encoding of the
  // process.
  return std::u8string(text, text + std::strlen(text));
}

}  // namespace vrnt::detail
