#include "vornath_data/texture.hpp"

#include <algorithm>
#include <bit>
#include <limits>
#include <string_view>

#include "image_format.hpp"

namespace vrnt {
namespace {

template <typename Enum>
struct Named {
  Enum number;
  std::string_view name;
};

constexpr Named<TextureFormat> kFormats[] = {
    {TextureFormat::SL8, "SL8"},       {TextureFormat::SLA8, "SLA8"},
    {TextureFormat::SRGB8, "SRGB8"},   {TextureFormat::SRGBA8, "SRGBA8"},
    {TextureFormat::H8, "H8"},         {TextureFormat::N8, "N8"},
    {TextureFormat::NH8, "NH8"},       {TextureFormat::X8, "X8"},
    {TextureFormat::XY8, "XY8"},       {TextureFormat::XYZ8, "XYZ8"},
    {TextureFormat::XYZW8, "XYZW8"},   {TextureFormat::L16, "L16"},
    {TextureFormat::LA16, "LA16"},     {TextureFormat::RGB16, "RGB16"},
    {TextureFormat::RGBA16, "RGBA16"}, {TextureFormat::H16, "H16"},
    {TextureFormat::N16, "N16"},       {TextureFormat::NH16, "NH16"},
    {TextureFormat::X16, "X16"},       {TextureFormat::XY16, "XY16"},
    {TextureFormat::XYZ16, "XYZ16"},   {TextureFormat::XYZW16, "XYZW16"},
    {TextureFormat::L32, "L32"},       {TextureFormat::LA32, "LA32"},
    {TextureFormat::RGB32, "RGB32"},   {TextureFormat::RGBA32, "RGBA32"},
    {TextureFormat::H32, "H32"},       {TextureFormat::N32, "N32"},
    {TextureFormat::NH32, "NH32"},     {TextureFormat::X32, "X32"},
    {TextureFormat::XY32, "XY32"},     {TextureFormat::XYZ32, "XYZ32"},
    {TextureFormat::XYZW32, "XYZW32"}, {TextureFormat::BC1, "BC1"},
    {TextureFormat::BC2, "BC2"},       {TextureFormat::BC3, "BC3"},
    {TextureFormat::BC4, "BC4"},       {TextureFormat::BC5, "BC5"},
    {TextureFormat::BC5N, "BC5N"},     {TextureFormat::BC6H, "BC6H"},
    {TextureFormat::BC7, "BC7"},       {TextureFormat::BC1N, "BC1N"},
    {TextureFormat::BC1U, "BC1U"},     {TextureFormat::BC2N, "BC2N"},
    {TextureFormat::BC2U, "BC2U"},     {TextureFormat::BC3N, "BC3N"},
    {TextureFormat::BC3U, "BC3U"},
};

constexpr Named<TextureLayout> kLayouts[] = {
    {TextureLayout::Flat, "2D"},
    {TextureLayout::LatLong, "LatLong"},
    {TextureLayout::Cube, "Cube"},
    {TextureLayout::LatLongDirectX, "LatLongDirectX"},
    {TextureLayout::CubeDirectX, "CubeDirectX"},
    {TextureLayout::FlatMipmap, "2D-Mipmap"},
    {TextureLayout::LatLongMipmap, "LatLong-Mipmap"},
    {TextureLayout::CubeMipmap, "Cube-Mipmap"},
    {TextureLayout::LatLongDirectXMipmap, "LatLongDirectX-Mipmap"},
    {TextureLayout::CubeDirectXMipmap, "CubeDirectX-Mipmap"},
    {TextureLayout::FlatSpectral, "2DSpectral"},
    {TextureLayout::FlatArray, "2D-Array"},
    // There is no second hyphen: hosts store the name in this form.
    {TextureLayout::FlatArrayMipmap, "2D-ArrayMipmap"},
};

constexpr Named<TextureType> kTypes[] = {
    {TextureType::Spectrum, "Spectrum"},      {TextureType::Sphere, "Sphere"},
    {TextureType::Normal, "Normal"},          {TextureType::Data, "Data"},
    {TextureType::SphereData, "Sphere data"},
};

template <typename Enum, std::size_t N>
std::int32_t numberOf(const Named<Enum> (&table)[N], std::string_view name) {
  for (const Named<Enum>& entry : table) {
    if (entry.name == name) return static_cast<std::int32_t>(entry.number);
  }
  return -1;
}

template <typename Enum, std::size_t N>
const char* nameOf(const Named<Enum> (&table)[N], Enum number) {
  for (const Named<Enum>& entry : table) {
    if (entry.number == number) return entry.name.data();
  }
  return "Unknown";
}

constexpr std::int32_t kMipmapped = 0x8000;
// Kinds of ImageFormat from this one on are stored in blocks of 4 by 4 pixels.
constexpr std::int32_t kFirstBlockKind = 5;

std::int32_t levelExtent(std::int32_t extent, int level, std::int32_t blockEdge) {
  const std::int64_t pixels = std::max(extent >> level, 1);
  const std::int64_t rounded = (pixels + blockEdge - 1) / blockEdge * blockEdge;
  // An extent that is too large to be rounded up is limited to the largest number; its last block
  // still counts as a whole one.
  constexpr std::int64_t kMax = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(rounded, kMax));
}

}  // namespace

std::int32_t parseTextureFormat(const char* name) { return numberOf(kFormats, name); }
std::int32_t parseTextureLayout(const char* name) { return numberOf(kLayouts, name); }
std::int32_t parseTextureType(const char* name) { return numberOf(kTypes, name); }

const char* toString(TextureFormat format) { return nameOf(kFormats, format); }
const char* toString(TextureLayout layout) { return nameOf(kLayouts, layout); }
const char* toString(TextureType type) { return nameOf(kTypes, type); }

namespace detail {

static_assert(sizeof(TextureDesc) == 20,
              "its bytes go to scene files: another size is another file version");

std::size_t TextureDesc::size() const {
  const qex::vornath::ImageFormat image(format, layout);
  if ((static_cast<std::int32_t>(layout) & kMipmapped) == 0) {
    return qex::vornath::imageSize({width, height, depth}, image);
  }
  const std::int32_t blockEdge = image.kind < kFirstBlockKind ? 1 : 4;
  const std::int32_t largest = std::max({width, height, 1});
  const auto levels = static_cast<int>(std::bit_width(static_cast<std::uint32_t>(largest)));
  std::size_t sum = 0;
  for (int level = 0; level < levels; ++level) {
    const std::size_t bytes = qex::vornath::imageSize(
        {levelExtent(width, level, blockEdge), levelExtent(height, level, blockEdge), depth},
        image);
    constexpr std::size_t kMax = std::numeric_limits<std::size_t>::max();
    sum = bytes > kMax - sum ? kMax : sum + bytes;
  }
  return sum;
}

}  // namespace detail
}  // namespace vrnt
