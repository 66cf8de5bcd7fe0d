/// Pictures as files.
#ifndef VRN_RENDER_FILM_IMAGE_FILES_HPP
#define VRN_RENDER_FILM_IMAGE_FILES_HPP

#include <set>
#include <string>
#include <vector>

#include "film/film.hpp"

namespace vrn_render {

/// Returns a PNG of 8 bits with the transfer curve of sRGB. With a pass, that is drawn instead of
/// the colours: depths from white (near) to black, normals as colours, objects in colours of their
/// own. `exposure` multiplies colours by 2 to its power.
/// Errors: throws std::runtime_error.
std::string makePng(const Picture& picture, float exposure, const std::set<Pass>& passes);

/// Returns an EXR: R, G, B and A, and channels for each pass: depth.Z, normal.X, .Y and .Z,
/// albedo.R, .G and .B, object.id, and spectrum.400nm to spectrum.700nm. All are floats of 32 bits
/// but object.id, which is an integer.
/// Errors: throws std::runtime_error.
std::string makeExr(Picture picture, float exposure, const std::set<Pass>& passes);

/// Returns a picture as bytes, 4 for each pixel, as makePng() takes them.
std::vector<unsigned char> screenBytes(const Picture& picture, float exposure,
                                       const std::set<Pass>& passes);

}  // namespace vrn_render

#endif
