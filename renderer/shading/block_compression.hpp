/// Textures that are stored in compressed blocks of 4 by 4 pixels.
#ifndef VRN_RENDER_SHADING_BLOCK_COMPRESSION_HPP
#define VRN_RENDER_SHADING_BLOCK_COMPRESSION_HPP

#include <array>

namespace vrn_render {

/// Returns the bytes of a block of a texture format, or 0 if the format is none in blocks that this
/// can decode.
int blockBytes(int format);

/// Decodes the pixel at (x, y), 0 to 3, of a block: linear channels.
std::array<float, 4> decodeBlock(int format, const unsigned char* block, int x, int y);

}  // namespace vrn_render

#endif
