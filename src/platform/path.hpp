// Converts file paths to the system's form.
#ifndef VORNATH_PLATFORM_PATH_HPP
#define VORNATH_PLATFORM_PATH_HPP

#include <filesystem>

namespace vrnt::detail {

/// Converts a UTF-8 path to the system's own form: wide characters if the system opens files by
/// them, else the unchanged bytes.
/// Errors: throws std::system_error if the path cannot be converted; std::bad_alloc.
std::filesystem::path pathFromUtf8(const char* text);

}  // namespace vrnt::detail

#endif
