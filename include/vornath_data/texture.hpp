/// Texture formats, layouts and types with their names, and the descriptor of a texture asset.
#ifndef VORNATH_DATA_TEXTURE_HPP
#define VORNATH_DATA_TEXTURE_HPP

#include <cstddef>
#include <cstdint>

#include "vornath_data/api.h"

namespace vrnt {

/// How one pixel is stored: the channels and the bits of each. SL and S... are gamma-encoded, L and
/// RGB linear, H is a height, N a normal, NH a normal with a height, X to XYZW are data; 16 and 32
/// are half and full floats. BC are the block-compressed formats, N normal and U unsigned variants.
/// The numbers are stored in scene files; those without a name are reserved.
enum class TextureFormat : std::int32_t {
  SL8 = 0,
  SLA8 = 1,
  SRGB8 = 2,
  SRGBA8 = 3,
  H8 = 4,
  N8 = 6,
  NH8 = 7,
  X8 = 8,
  XY8 = 9,
  XYZ8 = 10,
  XYZW8 = 11,
  L16 = 12,
  LA16 = 13,
  RGB16 = 14,
  RGBA16 = 15,
  H16 = 16,
  N16 = 18,
  NH16 = 19,
  X16 = 20,
  XY16 = 21,
  XYZ16 = 22,
  XYZW16 = 23,
  L32 = 24,
  LA32 = 25,
  RGB32 = 26,
  RGBA32 = 27,
  H32 = 28,
  N32 = 30,
  NH32 = 31,
  X32 = 32,
  XY32 = 33,
  XYZ32 = 34,
  XYZW32 = 35,
  BC1 = 67,
  BC2 = 71,
  BC3 = 75,
  BC4 = 76,
  BC5 = 77,
  BC5N = 78,
  BC6H = 82,
  BC7 = 83,
  BC1N = 86,
  BC1U = 87,
  BC2N = 90,
  BC2U = 91,
  BC3N = 94,
  BC3U = 95
};

/// How the image is arranged: a shape (0 flat, 1 latitude-longitude, 2 cube map) and the flags
/// 0x4000 DirectX orientation, 0x8000 mipmapped, 0x10000 spectral, 0x20000 array. Only these
/// combinations have a name.
enum class TextureLayout : std::int32_t {
  Flat = 0,
  LatLong = 1,
  Cube = 2,
  LatLongDirectX = 0x4001,
  CubeDirectX = 0x4002,
  FlatMipmap = 0x8000,
  LatLongMipmap = 0x8001,
  CubeMipmap = 0x8002,
  LatLongDirectXMipmap = 0xC001,
  CubeDirectXMipmap = 0xC002,
  FlatSpectral = 0x10000,
  FlatArray = 0x20000,
  FlatArrayMipmap = 0x28000
};

/// What a texture's pixels stand for.
enum class TextureType : std::int32_t {
  Spectrum = 0,
  Sphere = 1,
  Normal = 2,
  Data = 3,
  SphereData = 4
};

/// The number of the TextureFormat with that very name, as "SRGB8", or -1. The name is not null.
VRNT_API std::int32_t parseTextureFormat(const char* name);

/// The number of the TextureLayout with that very name, as "2D-Mipmap", or -1. The name is not
/// null.
VRNT_API std::int32_t parseTextureLayout(const char* name);

/// The number of the TextureType with that very name, as "Sphere data", or -1. The name is not
/// null.
VRNT_API std::int32_t parseTextureType(const char* name);

/// The name, or "Unknown" for a number without one. The text is static.
VRNT_API const char* toString(TextureFormat format);
/// The same for a layout.
VRNT_API const char* toString(TextureLayout layout);
/// The same for a type of texture.
VRNT_API const char* toString(TextureType type);

namespace detail {

/// What a texture asset's bytes hold: five 32-bit words.
struct TextureDesc {
  std::int32_t width = 0;   ///< pixels
  std::int32_t height = 0;  ///< pixels
  std::int32_t depth = 0;   ///< third extent; the same at every level of a mip chain. The
                            ///< faces of a cube and the layers of an array count here
  TextureFormat format = TextureFormat::SL8;
  TextureLayout layout = TextureLayout::Flat;

  /// The size of the texture's bytes: of its one image, or of the whole chain, down to 1 by 1, if
  /// the layout is mipmapped. 0 for a depth that isn't positive; the largest number if the size
  /// doesn't fit.
  VRNT_API std::size_t size() const;
};

}  // namespace detail
}  // namespace vrnt

#endif
