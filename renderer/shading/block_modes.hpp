/// The two block formats whose blocks have modes: BC6H and BC7.
#ifndef VRN_RENDER_SHADING_BLOCK_MODES_HPP
#define VRN_RENDER_SHADING_BLOCK_MODES_HPP

#include <array>

namespace vrn_render {

/// Decode the pixel of an index, 0 to 15 along the rows, of a block of 16 bytes. A block of a
/// reserved mode is black.

/// BC6H with unsigned halves: red, green and blue, linear; alpha is 1.
std::array<float, 4> decodeBC6H(const unsigned char* block, int index);

/// BC7: four codes from 0 to 1, as they are stored.
std::array<float, 4> decodeBC7(const unsigned char* block, int index);

}  // namespace vrn_render

#endif
