/// Writes bytes to a file or to standard output.
#ifndef VRN_RENDER_FILM_SAVE_HPP
#define VRN_RENDER_FILM_SAVE_HPP

#include <string>
#include <string_view>

namespace vrn_render {

/// Writes a file whole or not at all, with the permissions of the file that it replaces; for the
/// path
/// "-", writes to standard output.
/// Errors: throws std::runtime_error with the path and what to do.
void saveBytes(const std::string& path, std::string_view bytes);

/// Returns if saveBytes() can write to a path, as far as one can know before. Leaves nothing
/// behind. Errors: as saveBytes().
void requireTarget(const std::string& path);

}  // namespace vrn_render

#endif
