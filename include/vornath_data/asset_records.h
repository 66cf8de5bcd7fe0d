/*
 * Asset records: they describe the bytes of meshes, textures and material graphs. This header also
 * has the codes of texture formats, layouts and types. vrdmAddAsset() and vrdmUpdateAsset() copy a
 * record from the caller, and vrdmGetAssetStorage() copies one to the caller. Scene files store
 * records and codes. texture.hpp and catalogue/ have the C++ names for them.
 */
#ifndef VORNATH_DATA_ASSET_RECORDS_H
#define VORNATH_DATA_ASSET_RECORDS_H

#include <stdint.h>

/**
 * Texture formats: how a pixel is stored. A name lists the channels and the bits of each channel.
 *
 *  - SL, SLA, SRGB and SRGBA are gamma-encoded; L, LA, RGB and RGBA are linear.
 *  - H is a height, N a normal, NH a normal with a height. X, XY, XYZ and XYZW are data.
 *  - 16 bits are half floats, 32 bits are floats.
 *  - BC are block-compressed formats; a final N is a normal variant, a final U an unsigned one.
 *
 * Codes without a name are reserved.
 */
enum {
  VRNT_TEXTURE_FORMAT_SL8 = 0,
  VRNT_TEXTURE_FORMAT_SLA8 = 1,
  VRNT_TEXTURE_FORMAT_SRGB8 = 2,
  VRNT_TEXTURE_FORMAT_SRGBA8 = 3,
  VRNT_TEXTURE_FORMAT_H8 = 4,
  VRNT_TEXTURE_FORMAT_N8 = 6,
  VRNT_TEXTURE_FORMAT_NH8 = 7,
  VRNT_TEXTURE_FORMAT_X8 = 8,
  VRNT_TEXTURE_FORMAT_XY8 = 9,
  VRNT_TEXTURE_FORMAT_XYZ8 = 10,
  VRNT_TEXTURE_FORMAT_XYZW8 = 11,
  VRNT_TEXTURE_FORMAT_L16 = 12,
  VRNT_TEXTURE_FORMAT_LA16 = 13,
  VRNT_TEXTURE_FORMAT_RGB16 = 14,
  VRNT_TEXTURE_FORMAT_RGBA16 = 15,
  VRNT_TEXTURE_FORMAT_H16 = 16,
  VRNT_TEXTURE_FORMAT_N16 = 18,
  VRNT_TEXTURE_FORMAT_NH16 = 19,
  VRNT_TEXTURE_FORMAT_X16 = 20,
  VRNT_TEXTURE_FORMAT_XY16 = 21,
  VRNT_TEXTURE_FORMAT_XYZ16 = 22,
  VRNT_TEXTURE_FORMAT_XYZW16 = 23,
  VRNT_TEXTURE_FORMAT_L32 = 24,
  VRNT_TEXTURE_FORMAT_LA32 = 25,
  VRNT_TEXTURE_FORMAT_RGB32 = 26,
  VRNT_TEXTURE_FORMAT_RGBA32 = 27,
  VRNT_TEXTURE_FORMAT_H32 = 28,
  VRNT_TEXTURE_FORMAT_N32 = 30,
  VRNT_TEXTURE_FORMAT_NH32 = 31,
  VRNT_TEXTURE_FORMAT_X32 = 32,
  VRNT_TEXTURE_FORMAT_XY32 = 33,
  VRNT_TEXTURE_FORMAT_XYZ32 = 34,
  VRNT_TEXTURE_FORMAT_XYZW32 = 35,
  VRNT_TEXTURE_FORMAT_BC1 = 67,
  VRNT_TEXTURE_FORMAT_BC2 = 71,
  VRNT_TEXTURE_FORMAT_BC3 = 75,
  VRNT_TEXTURE_FORMAT_BC4 = 76,
  VRNT_TEXTURE_FORMAT_BC5 = 77,
  VRNT_TEXTURE_FORMAT_BC5N = 78,
  VRNT_TEXTURE_FORMAT_BC6H = 82,
  VRNT_TEXTURE_FORMAT_BC7 = 83,
  VRNT_TEXTURE_FORMAT_BC1N = 86,
  VRNT_TEXTURE_FORMAT_BC1U = 87,
  VRNT_TEXTURE_FORMAT_BC2N = 90,
  VRNT_TEXTURE_FORMAT_BC2U = 91,
  VRNT_TEXTURE_FORMAT_BC3N = 94,
  VRNT_TEXTURE_FORMAT_BC3U = 95
};

/**
 * Texture layouts: how an image is arranged. A code combines a shape (0 flat, 1 latitude-longitude,
 * 2 cube map) with the flags 0x4000 (DirectX orientation), 0x8000 (mipmaps), 0x10000 (spectral) and
 * 0x20000 (array). Only the combinations below exist.
 */
enum {
  VRNT_TEXTURE_LAYOUT_2D = 0,
  VRNT_TEXTURE_LAYOUT_LAT_LONG = 1,
  VRNT_TEXTURE_LAYOUT_CUBE = 2,
  VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX = 0x4001,
  VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX = 0x4002,
  VRNT_TEXTURE_LAYOUT_2D_MIPMAP = 0x8000,
  VRNT_TEXTURE_LAYOUT_LAT_LONG_MIPMAP = 0x8001,
  VRNT_TEXTURE_LAYOUT_CUBE_MIPMAP = 0x8002,
  VRNT_TEXTURE_LAYOUT_LAT_LONG_DIRECTX_MIPMAP = 0xC001,
  VRNT_TEXTURE_LAYOUT_CUBE_DIRECTX_MIPMAP = 0xC002,
  VRNT_TEXTURE_LAYOUT_2D_SPECTRAL = 0x10000,
  VRNT_TEXTURE_LAYOUT_2D_ARRAY = 0x20000,
  VRNT_TEXTURE_LAYOUT_2D_ARRAY_MIPMAP = 0x28000
};

/** Texture types: what the pixels of a texture mean. */
enum {
  VRNT_TEXTURE_TYPE_SPECTRUM = 0,
  VRNT_TEXTURE_TYPE_SPHERE = 1,
  VRNT_TEXTURE_TYPE_NORMAL = 2,
  VRNT_TEXTURE_TYPE_DATA = 3,
  VRNT_TEXTURE_TYPE_SPHERE_DATA = 4
};

/**
 * The record of a mesh. A mesh has 4 * (3T + fT + 9V + 2VS) bytes, for T triangles, V vertices, S
 * sets of texture coordinates, and f bits that are set among bits 0 and 1 of `flags`.
 */
typedef struct vrdmMeshDesc {
  int32_t triangles;
  int32_t vertices;
  int32_t texcoordSets; /**< 0 means 1 */
  uint32_t flags;       /**< bits 0 and 1 each add a word per triangle */
} vrdmMeshDesc;

/** The record of a texture. */
typedef struct vrdmTextureDesc {
  int32_t width;  /**< pixels */
  int32_t height; /**< pixels */
  int32_t depth;  /**< the third extent, the same for every mipmap level. It counts the faces of a
                       cube map and the layers of an array */
  int32_t format; /**< VRNT_TEXTURE_FORMAT_* */
  int32_t layout; /**< VRNT_TEXTURE_LAYOUT_* */
} vrdmTextureDesc;

/** The record of a material graph. The library does not interpret the bytes of a material graph. */
typedef struct vrdmMaterialGraphDesc {
  uint64_t binarySize;      /**< the number of bytes of the asset */
  uint64_t rootOffset;      /**< bytes */
  uint64_t parameterOffset; /**< bytes */
} vrdmMaterialGraphDesc;

#endif
