/// Texture formats, layouts and types with their names, and the descriptor of a texture asset.
#ifndef VORNATH_DATA_TEXTURE_HPP
#define VORNATH_DATA_TEXTURE_HPP

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "vornath_data/api.h"
#include "vornath_data/asset_records.h"

namespace vrnt {

/// How one pixel is stored: the channels and the bits of each. SL and S... are gamma-encoded, L and
/// RGB linear, H is a height, N a normal, NH a normal with a height, X to XYZW are data; 16 and 32
/// are half and full floats. BC are the block-compressed formats, N normal and U unsigned variants.
/// The numbers, which asset_records.h has, are stored in scene files; those without a name are
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

/// How the image is arranged: a shape (0 flat, 1 latitude-longitude, 2 cube map) and the flags
/// 0x4000 DirectX orientation, 0x8000 mipmapped, 0x10000 spectral, 0x20000 array. Only these
/// combinations have a name.
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

/// What a texture's pixels stand for.
enum class TextureType : std::int32_t {
  Spectrum = VRNT_TEXTURE_TYPE_SPECTRUM,
  Sphere = VRNT_TEXTURE_TYPE_SPHERE,
  Normal = VRNT_TEXTURE_TYPE_NORMAL,
  Data = VRNT_TEXTURE_TYPE_DATA,
  SphereData = VRNT_TEXTURE_TYPE_SPHERE_DATA
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
