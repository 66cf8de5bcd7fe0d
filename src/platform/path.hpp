// File paths as the system wants them.
#ifndef VORNATH_PLATFORM_PATH_HPP
#define VORNATH_PLATFORM_PATH_HPP

#include <filesystem>

namespace vrnt::detail {

/// The path that a UTF-8 text names, in the system's own form: wide characters where the system
/// opens files by them, else the bytes as they stand.
/// Errors: throws std::system_error where the text has no such form; std::bad_alloc.
std::filesystem::path pathFromUtf8(const char* text);

}  // namespace vrnt::detail

#endif
