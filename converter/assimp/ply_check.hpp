// Checks of a PLY file that Assimp's reader does not make.
#ifndef VRN_CONVERT_ASSIMP_PLY_CHECK_HPP
#define VRN_CONVERT_ASSIMP_PLY_CHECK_HPP

#include <string_view>

namespace vrn_convert {

/// Throws Refused if the header of a PLY file does not end, or tells of more data than the file
/// has: Assimp's reader would then wait for ever, or read behind the end of its memory. Does
/// nothing for files of other formats, and leaves headers that it does not understand to the
/// reader.
void checkPly(std::string_view bytes);

}  // namespace vrn_convert

#endif
