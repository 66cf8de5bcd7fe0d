/// Draws pictures in a terminal.
#ifndef VRN_RENDER_FILM_PREVIEW_HPP
#define VRN_RENDER_FILM_PREVIEW_HPP

#include <string>

#include "film/film.hpp"

namespace vrn_render {

/// Returns the text that draws a picture of at most `columns` by `rows` characters, two pixels in
/// each, with colours of 24 bits.
std::string halfBlocks(const Picture& picture, float exposure, int columns, int rows);

/// Returns a picture of at most `columns` by `rows` characters in letters, without colours.
std::string letters(const Picture& picture, float exposure, int columns, int rows);

/// Returns the sixels that draw a picture of at most `width` pixels, with a palette of 216 colours.
std::string sixels(const Picture& picture, float exposure, int width);

}  // namespace vrn_render

#endif
