/// Formats, layouts and types of textures with their names, and the descriptor of a texture asset.
#ifndef VORNATH_DATA_TEXTURE_HPP
#define VORNATH_DATA_TEXTURE_HPP

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "vornath_data/api.h"
#include "vornath_data/asset_records.h"

namespace vrnt {

/// The storage of a pixel: its channels, and the bits of each channel. Names that begin with S are
/// gamma-encoded; L and RGB are linear. H is a height, N a normal, NH a normal with a height. X to
/// XYZW hold data. Formats of 16 and 32 bits hold half and float channels. BC1 to BC7 are the
/// block-compressed formats, where a suffix N means normal and a suffix U means unsigned.
/// asset_records.h defines the codes, and scene files store them. Codes without a name are
/// reserved.
enum class TextureFormat : std::int32_t {
  SL8 = VRNT_TEXTURE_FORMAT_SL8,
  SLA8 = VRNT_TEXTURE_FORMAT_SLA8,
  SRGB8 = VRNT_TEXTURE_FORMAT_SRGB8,
  SRGBA8 = VRNT_TEXTURE_FORMAT_SRGBA8,
  H8 = VRNT_TEXTURE_FORMAT_H8,
  N8 = VRNT_TEXTURE_FORMAT_N8,
  NH8 = VRNT_TEXTURE_FORMAT_NH8,
  X8 = VRNT_TEXTURE_FORMAT_X8,
  XY8 = VRNT_TEXTURE_FORMAT_XY8,
  XYZ8 = VRNT_TEXTURE_FORMAT_XYZ8,
  XYZW8 = VRNT_TEXTURE_FORMAT_XYZW8,
  L16 = VRNT_TEXTURE_FORMAT_L16,
  LA16 = VRNT_TEXTURE_FORMAT_LA16,
  RGB16 = VRNT_TEXTURE_FORMAT_RGB16,
  RGBA16 = VRNT_TEXTURE_FORMAT_RGBA16,
  H16 = VRNT_TEXTURE_FORMAT_H16,
  N16 = VRNT_TEXTURE_FORMAT_N16,
  NH16 = VRNT_TEXTURE_FORMAT_NH16,
  X16 = VRNT_TEXTURE_FORMAT_X16,
  XY16 = VRNT_TEXTURE_FORMAT_XY16,
  XYZ16 = VRNT_TEXTURE_FORMAT_XYZ16,
  XYZW16 = VRNT_TEXTURE_FORMAT_XYZW16,
  L32 = VRNT_TEXTURE_FORMAT_L32,
  LA32 = VRNT_TEXTURE_FORMAT_LA32,
  RGB32 = VRNT_TEXTURE_FORMAT_RGB32,
  RGBA32 = VRNT_TEXTURE_FORMAT_RGBA32,
  H32 = VRNT_TEXTURE_FORMAT_H32,
  N32 = VRNT_TEXTURE_FORMAT_N32,
  NH32 = VRNT_TEXTURE_FORMAT_NH32,
  X32 = VRNT_TEXTURE_FORMAT_X32,
  XY32 = VRNT_TEXTURE_FORMAT_XY32,
  XYZ32 = VRNT_TEXTURE_FORMAT_XYZ32,
  XYZW32 = VRNT_TEXTURE_FORMAT_XYZW32,
  BC1 = VRNT_TEXTURE_FORMAT_BC1,
  BC2 = VRNT_TEXTURE_FORMAT_BC2,
  BC3 = VRNT_TEXTURE_FORMAT_BC3,
  BC4 = VRNT_TEXTURE_FORMAT_BC4,
  BC5 = VRNT_TEXTURE_FORMAT_BC5,
  BC5N = VRNT_TEXTURE_FORMAT_BC5N,
  BC6H = VRNT_TEXTURE_FORMAT_BC6H,
  BC7 = VRNT_TEXTURE_FORMAT_BC7,
  BC1N = VRNT_TEXTURE_FORMAT_BC1N,
  BC1U = VRNT_TEXTURE_FORMAT_BC1U,
  BC2N = VRNT_TEXTURE_FORMAT_BC2N,
  BC2U = VRNT_TEXTURE_FORMAT_BC2U,
  BC3N = VRNT_TEXTURE_FORMAT_BC3N,
  BC3U = VRNT_TEXTURE_FORMAT_BC3U
};

/// The layout of an image. A code combines a shape (0 flat, 1 latitude-longitude, 2 cube map) with
/// the flags 0x4000 DirectX orientation, 0x8000 mipmapped, 0x10000 spectral and 0x20000 array. Only
/// the combinations below have a name.
enum class TextureLayout : std::int32_t {
  Flat = VRNT_TEXTURE_LAYOUT_2D,
  LatLong = VRNT_TEXTURE_LAYOUT_LAT_LONG,
  Cube = VRNT_TEXTURE_LAYOUT_CUBE,
  LatLongDirectX = VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX,
  CubeDirectX = VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX,
  FlatMipmap = VRNT_TEXTURE_LAYOUT_2D_MIPMAP,
  LatLongMipmap = VRNT_TEXTURE_LAYOUT_LAT_LONG_MIPMAP,
  CubeMipmap = VRNT_TEXTURE_LAYOUT_CUBE_MIPMAP,
  LatLongDirectXMipmap = VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX_MIPMAP,
  CubeDirectXMipmap = VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX_MIPMAP,
  FlatSpectral = VRNT_TEXTURE_LAYOUT_2D_SPECTRAL,
  FlatArray = VRNT_TEXTURE_LAYOUT_2D_ARRAY,
  FlatArrayMipmap = VRNT_TEXTURE_LAYOUT_2D_ARRAY_MIPMAP
};

/// The meaning of a texture's pixels.
enum class TextureType : std::int32_t {
  Spectrum = VRNT_TEXTURE_TYPE_SPECTRUM,
  Sphere = VRNT_TEXTURE_TYPE_SPHERE,
  Normal = VRNT_TEXTURE_TYPE_NORMAL,
  Data = VRNT_TEXTURE_TYPE_DATA,
  SphereData = VRNT_TEXTURE_TYPE_SPHERE_DATA
};

/// Returns the code of the TextureFormat with exactly this name, for example "SRGB8", or -1 if
/// there is none. The name must not be null.
VRNT_API std::int32_t parseTextureFormat(const char* name);

/// Returns the code of the TextureLayout with exactly this name, for example "2D-Mipmap", or -1 if
/// there is none. The name must not be null.
VRNT_API std::int32_t parseTextureLayout(const char* name);

/// Returns the code of the TextureType with exactly this name, for example "Sphere data", or -1 if
/// there is none. The name must not be null.
VRNT_API std::int32_t parseTextureType(const char* name);

/// Returns the name, or "Unknown" for a code without a name. The string is static.
VRNT_API const char* toString(TextureFormat format);
/// Returns the name of a layout; as for a format.
VRNT_API const char* toString(TextureLayout layout);
/// Returns the name of a texture type; as for a format.
VRNT_API const char* toString(TextureType type);

namespace detail {

/// The descriptor of a texture asset: five 32-bit words that describe its bytes.
struct TextureDesc {
  std::int32_t width = 0;   ///< pixels
  std::int32_t height = 0;  ///< pixels
  std::int32_t depth = 0;   ///< slices; equal at every level of a mip chain. The faces of a cube
                            ///< and the layers of an array count as slices
  TextureFormat format = TextureFormat::SL8;
  TextureLayout layout = TextureLayout::Flat;

  /// Returns the size of the texture in bytes. A mipmapped layout counts the whole chain, down to
  /// 1 by 1. Returns 0 if the depth is zero or negative; without a mip chain, also if the width or
  /// height is. Returns SIZE_MAX if the size overflows.
  VRNT_API std::size_t size() const;
};

static_assert(sizeof(TextureDesc) == 20 && sizeof(vrdmTextureDesc) == 20 &&
                  std::is_trivially_copyable_v<TextureDesc>,
              "the record of a texture is five 32-bit words, for C as for C++");
static_assert(offsetof(TextureDesc, width) == 0 && offsetof(vrdmTextureDesc, width) == 0 &&
                  offsetof(TextureDesc, height) == 4 && offsetof(vrdmTextureDesc, height) == 4 &&
                  offsetof(TextureDesc, depth) == 8 && offsetof(vrdmTextureDesc, depth) == 8 &&
                  offsetof(TextureDesc, format) == 12 && offsetof(vrdmTextureDesc, format) == 12 &&
                  offsetof(TextureDesc, layout) == 16 && offsetof(vrdmTextureDesc, layout) == 16,
              "vrdmTextureDesc and TextureDesc have the same words in the same order");

}  // namespace detail
}  // namespace vrnt

#endif
