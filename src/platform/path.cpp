#include "platform/path.hpp"

#include <cstring>
#include <string>

namespace vrnt::detail {

std::filesystem::path pathFromUtf8(const char* text) {
  // The type of the characters is what tells the path that they are UTF-8 and not in the narrow
  // encoding of the process.
  return std::u8string(text, text + std::strlen(text));
}

}  // namespace vrnt::detail
