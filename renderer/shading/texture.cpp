#include "shading/texture.hpp"

#include <cmath>
#include <cstring>

#include "shading/block_compression.hpp"

namespace vrn_render {
namespace {

// The formats that are stored pixel by pixel come in three sizes of a channel, twelve codes each.
constexpr int kFormatsOfSize = 12;
constexpr int kPlainFormats = 36;
constexpr std::array<int, kFormatsOfSize> kChannels = {1, 2, 3, 4, 1, 0, 3, 4, 1, 2, 3, 4};

bool isPlain(int format) { return format >= 0 && format < kPlainFormats; }
int channelsOf(int format) { return kChannels[static_cast<std::size_t>(format % kFormatsOfSize)]; }
int bytesOfChannel(int format) { return format < 12 ? 1 : format < 24 ? 2 : 4; }
bool isLuminance(int format) {
  const int family = format % kFormatsOfSize;
  return family == 0 || family == 1 || family == 4 || family == 8;
}

float halfToFloat(std::uint16_t bits) {
  const float sign = bits & 0x8000U ? -1.0F : 1.0F;
  const int exponent = (bits >> 10) & 31;
  const auto mantissa = static_cast<float>(bits & 1023U);
  if (exponent == 0) return sign * std::ldexp(mantissa, -24);
  if (exponent == 31) return 0;  // neither infinite nor NaN is a colour
  return sign * std::ldexp(mantissa + 1024, exponent - 25);
}

const std::array<float, 256>& gammaTable() {
  static const std::array<float, 256> table = [] {
    std::array<float, 256> result{};
    for (std::size_t i = 0; i < result.size(); ++i) {
      const double code = static_cast<double>(i) / 255;
      result[i] = static_cast<float>(code <= 0.04045 ? code / 12.92
                                                     : std::pow((code + 0.055) / 1.055, 2.4));
    }
    return result;
  }();
  return table;
}

int wrapped(int at, int size, Wrap wrap) {
  switch (wrap) {
    case Wrap::Border:
      return at >= 0 && at < size ? at : -1;
    case Wrap::Clamp:
      return std::clamp(at, 0, size - 1);
    case Wrap::Repeat:
      return ((at % size) + size) % size;
    case Wrap::Mirror: {
      const int period = ((at % (2 * size)) + 2 * size) % (2 * size);
      return period < size ? period : 2 * size - 1 - period;
    }
  }
  return 0;
}

Texel mixed(const Texel& a, const Texel& b, float t) {
  Texel result;
  for (std::size_t i = 0; i < 4; ++i) result[i] = a[i] * (1 - t) + b[i] * t;
  return result;
}

// Interpolates between the four pixels around a point, whose wraps `fetch` resolves.
template <typename Fetch>
Texel interpolated(float x, float y, Fetch fetch) {
  constexpr float kFar = 1e6F;
  x = std::isfinite(x) ? std::clamp(x, -kFar, kFar) - 0.5F : 0;
  y = std::isfinite(y) ? std::clamp(y, -kFar, kFar) - 0.5F : 0;
  const float left = std::floor(x);
  const float top = std::floor(y);
  const int i = static_cast<int>(left);
  const int j = static_cast<int>(top);
  return mixed(mixed(fetch(i, j), fetch(i + 1, j), x - left),
               mixed(fetch(i, j + 1), fetch(i + 1, j + 1), x - left), y - top);
}

Texel sampleSlice(const TextureDescription& texture, const TextureLookup& lookup, Vec2 uv,
                  int slice) {
  const Vec2 at{lookup.x.x * uv.x + lookup.y.x * uv.y + lookup.z.x,
                lookup.x.y * uv.x + lookup.y.y * uv.y + lookup.z.y};
  // A repeated image is brought near the origin, where floats are exact enough.
  const auto near = [](float coordinate, Wrap wrap) {
    return wrap == Wrap::Repeat   ? coordinate - std::floor(coordinate)
           : wrap == Wrap::Mirror ? coordinate - 2 * std::floor(coordinate / 2)
                                  : coordinate;
  };
  return interpolated(near(at.x, lookup.u) * static_cast<float>(texture.width),
                      near(at.y, lookup.v) * static_cast<float>(texture.height), [&](int x, int y) {
                        const int i = wrapped(x, texture.width, lookup.u);
                        const int j = wrapped(y, texture.height, lookup.v);
                        return i < 0 || j < 0 ? lookup.border : texelAt(texture, i, j, slice);
                      });
}

}  // namespace

bool isDirectX(const TextureDescription& texture) { return (texture.layout & 0x4000) != 0; }
bool isCube(const TextureDescription& texture) { return (texture.layout & 3) == 2; }
bool isSpectral(const TextureDescription& texture) { return (texture.layout & 0x10000) != 0; }

std::string textureProblem(const TextureDescription& texture, std::uint64_t size) {
  if (texture.width <= 0 || texture.height <= 0) return "it has no pixels";
  const auto columns = static_cast<std::uint64_t>(texture.width);
  const auto rows = static_cast<std::uint64_t>(texture.height);
  std::uint64_t needed = 0;
  if (isPlain(texture.format) && channelsOf(texture.format) != 0) {
    needed =
        columns * rows *
        static_cast<std::uint64_t>(channelsOf(texture.format) * bytesOfChannel(texture.format));
  } else if (blockBytes(texture.format) != 0) {
    needed = ((columns + 3) / 4) * ((rows + 3) / 4) *
             static_cast<std::uint64_t>(blockBytes(texture.format));
  } else {
    return "its format " + std::to_string(texture.format) + " is not known";
  }
  if (isCube(texture) && texture.depth < 6) return "a cube map has six faces";
  if (size / static_cast<std::uint64_t>(texture.depth) < needed) {
    return "it has fewer bytes than its record says";
  }
  return {};
}

Texel texelAt(const TextureDescription& texture, int x, int y, int slice) {
  if (texture.bytes == nullptr) return {0.5F, 0.5F, 0.5F, 1};
  const auto column = static_cast<std::size_t>(x);
  const auto row = static_cast<std::size_t>(y);
  const auto columns = static_cast<std::size_t>(texture.width);
  const auto rows = static_cast<std::size_t>(texture.height);
  const auto layer = static_cast<std::size_t>(slice);
  if (!isPlain(texture.format)) {
    const std::size_t blocks = (columns + 3) / 4;
    const std::size_t index = (layer * ((rows + 3) / 4) + row / 4) * blocks + column / 4;
    return decodeBlock(texture.format,
                       texture.bytes + index * static_cast<std::size_t>(blockBytes(texture.format)),
                       x & 3, y & 3);
  }
  const auto channels = static_cast<std::size_t>(channelsOf(texture.format));
  const auto width = static_cast<std::size_t>(bytesOfChannel(texture.format));
  const unsigned char* const pixel =
      texture.bytes + ((layer * rows + row) * columns + column) * channels * width;
  const bool isGamma = texture.format < 4;
  const int family = texture.format % kFormatsOfSize;
  // The last of two and of four channels is alpha, where there are colours.
  const std::size_t alpha = family == 1 ? 1 : 3;
  Texel texel{0, 0, 0, 1};
  for (std::size_t channel = 0; channel < channels; ++channel) {
    float amplitude = 0;
    if (width == 1) {
      const unsigned char code = pixel[channel];
      amplitude = isGamma && channel != alpha ? gammaTable()[code]
                                              : static_cast<float>(code) * (1.0F / 255);
    } else if (width == 2) {
      std::uint16_t bits;
      std::memcpy(&bits, pixel + 2 * channel, sizeof bits);
      amplitude = halfToFloat(bits);
    } else {
      std::memcpy(&amplitude, pixel + 4 * channel, sizeof amplitude);
      if (!std::isfinite(amplitude)) amplitude = 0;
    }
    texel[family == 1 && channel == 1 ? 3 : channel] = amplitude;
  }
  if (isLuminance(texture.format)) texel[1] = texel[2] = texel[0];
  return texel;
}

Texel sampleFlat(const TextureDescription& texture, const TextureLookup& lookup, Vec2 uv) {
  if (texture.bytes == nullptr) return {0.5F, 0.5F, 0.5F, 1};
  return sampleSlice(texture, lookup, uv, 0);
}

Vec3 latLongDirection(Vec2 uv, bool isDirectX) {
  const float azimuth = (uv.x - 0.5F) * 2 * kPi * (isDirectX ? -1.0F : 1.0F);
  const float polar = uv.y * kPi;
  return {std::sin(polar) * std::sin(azimuth), std::cos(polar),
          -std::sin(polar) * std::cos(azimuth)};
}

Vec2 latLongPoint(Vec3 direction, bool isDirectX) {
  const float azimuth = std::atan2(direction.x, -direction.z) * (isDirectX ? -1.0F : 1.0F);
  return {0.5F + azimuth / (2 * kPi), std::acos(std::clamp(direction.y, -1.0F, 1.0F)) / kPi};
}

Texel sampleSphere(const TextureDescription& texture, Vec3 direction) {
  if (texture.bytes == nullptr) return {0.5F, 0.5F, 0.5F, 1};
  if (!isCube(texture)) {
    TextureLookup lookup;
    lookup.v = Wrap::Clamp;
    return sampleSlice(texture, lookup, latLongPoint(direction, isDirectX(texture)), 0);
  }
  // Faces in the order +x, -x, +y, -y, +z, -z.
  const float sign = isDirectX(texture) ? 1.0F : -1.0F;
  const Vec3 d = {direction.x, direction.y, direction.z * sign};
  const Vec3 size{std::abs(d.x), std::abs(d.y), std::abs(d.z)};
  int face;
  float major, s, t;
  if (size.x >= size.y && size.x >= size.z) {
    face = d.x > 0 ? 0 : 1;
    major = size.x;
    s = d.x > 0 ? -d.z : d.z;
    t = -d.y;
  } else if (size.y >= size.z) {
    face = d.y > 0 ? 2 : 3;
    major = size.y;
    s = d.x;
    t = d.y > 0 ? d.z : -d.z;
  } else {
    face = d.z > 0 ? 4 : 5;
    major = size.z;
    s = d.z > 0 ? d.x : -d.x;
    t = -d.y;
  }
  TextureLookup lookup;
  lookup.u = lookup.v = Wrap::Clamp;
  if (!(major > 0)) return texelAt(texture, 0, 0, 0);
  return sampleSlice(texture, lookup, {0.5F + 0.5F * s / major, 0.5F + 0.5F * t / major}, face);
}

const Spectrum& evaluateTexture(const SceneDescription& scene, const ColourParameter& parameter,
                                const TextureCoordinates& at, bool isReflectance,
                                Spectrum& scratch) {
  const TextureDescription& texture =
      scene.textures[static_cast<std::size_t>(parameter.lookup.texture)];
  const int set = std::min(parameter.lookup.set, TextureCoordinates::kMostSets - 1);
  const Vec2 uv = at.sets[static_cast<std::size_t>(set)];
  if (isSpectral(texture) && texture.bytes != nullptr) {
    // The slices are spread evenly over the grid. Between two of them, amplitudes lie on a line.
    int before = -1;
    float low = 0, high = 0;
    for (int band = 0; band < kBands; ++band) {
      const float place = static_cast<float>(band) * static_cast<float>(texture.depth - 1) /
                          static_cast<float>(kBands - 1);
      const int slice = std::min(static_cast<int>(place), std::max(0, texture.depth - 2));
      if (slice != before) {
        low = sampleSlice(texture, parameter.lookup, uv, slice)[0];
        high =
            sampleSlice(texture, parameter.lookup, uv, std::min(slice + 1, texture.depth - 1))[0];
        before = slice;
      }
      const float t = place - static_cast<float>(slice);
      scratch[band] = low * (1 - t) + high * t;
    }
  } else {
    const Texel texel = sampleFlat(texture, parameter.lookup, uv);
    const Rgb rgb{std::max(texel[0], 0.0F), std::max(texel[1], 0.0F), std::max(texel[2], 0.0F)};
    scratch = isReflectance ? Colours::get().reflectance(rgb) : Colours::get().factor(rgb);
  }
  if (parameter.isScaled) {
    scratch *= parameter.scale;
    scratch += parameter.offset;
  }
  scratch *= parameter.value;
  scratch.clamp(0, isReflectance ? 1.0F : 1e30F);
  return scratch;
}

float evaluateTexture(const SceneDescription& scene, const NumberParameter& parameter,
                      const TextureCoordinates& at) {
  const TextureDescription& texture =
      scene.textures[static_cast<std::size_t>(parameter.lookup.texture)];
  const int set = std::min(parameter.lookup.set, TextureCoordinates::kMostSets - 1);
  const Texel texel = sampleFlat(texture, parameter.lookup, at.sets[static_cast<std::size_t>(set)]);
  const float read = texel[static_cast<std::size_t>(parameter.channel)];
  return parameter.value * (read * parameter.scale + parameter.offset);
}

}  // namespace vrn_render
