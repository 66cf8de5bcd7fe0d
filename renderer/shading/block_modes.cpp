#include "shading/block_modes.hpp"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace vrn_render {
namespace {

// To which of two parts of a block its pixels belong: a bit for each pixel. BC6H has the first 32.
constexpr std::array<std::uint16_t, 64> kTwoParts = {
    0xcccc, 0x8888, 0xeeee, 0xecc8, 0xc880, 0xfeec, 0xfec8, 0xec80, 0xc800, 0xffec, 0xfe80,
    0xe800, 0xffe8, 0xff00, 0xfff0, 0xf000, 0xf710, 0x008e, 0x7100, 0x08ce, 0x008c, 0x7310,
    0x3100, 0x8cce, 0x088c, 0x3110, 0x6666, 0x366c, 0x17e8, 0x0ff0, 0x718e, 0x399c, 0xaaaa,
    0xf0f0, 0x5a5a, 0x33cc, 0x3c3c, 0x55aa, 0x9696, 0xa55a, 0x73ce, 0x13c8, 0x324c, 0x3bdc,
    0x6996, 0xc33c, 0x9966, 0x0660, 0x0272, 0x04e4, 0x4e40, 0x2720, 0xc936, 0x936c, 0x39c6,
    0x639c, 0x9336, 0x9cc6, 0x817e, 0xe718, 0xccf0, 0x0fcc, 0x7744, 0xee22};
// The same for three parts: two bits for each pixel.
constexpr std::array<std::uint32_t, 64> kThreeParts = {
    0xaa685050, 0x6a5a5040, 0x5a5a4200, 0x5450a0a8, 0xa5a50000, 0xa0a05050, 0x5555a0a0, 0x5a5a5050,
    0xaa550000, 0xaa555500, 0xaaaa5500, 0x90909090, 0x94949494, 0xa4a4a4a4, 0xa9a59450, 0x2a0a4250,
    0xa5945040, 0x0a425054, 0xa5a5a500, 0x55a0a0a0, 0xa8a85454, 0x6a6a4040, 0xa4a45000, 0x1a1a0500,
    0x0050a4a4, 0xaaa59090, 0x14696914, 0x69691400, 0xa08585a0, 0xaa821414, 0x50a4a450, 0x6a5a0200,
    0xa9a58000, 0x5090a0a8, 0xa8a09050, 0x24242424, 0x00aa5500, 0x24924924, 0x24499224, 0x50a50a50,
    0x500aa550, 0xaaaa4444, 0x66660000, 0xa5a0a5a0, 0x50a050a0, 0x69286928, 0x44aaaa44, 0x66666600,
    0xaa444444, 0x54a854a8, 0x95809580, 0x96969600, 0xa85454a8, 0x80959580, 0xaa141414, 0x96960000,
    0xaaaa1414, 0xa05050a0, 0xa0a5a5a0, 0x96000000, 0x40804080, 0xa9a8a9a8, 0xaaaaaa44, 0x2a4a5254};
// The pixels, besides the first, whose index lacks its highest bit, which is 0: one for each part.
constexpr std::array<std::uint8_t, 64> kSecondOfTwo = {
    15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 2,  8, 2, 2, 8,
    8,  15, 2,  8,  2,  2,  8,  8,  2,  2,  15, 15, 6,  8,  2,  8,  15, 15, 2, 8, 2, 2,
    2,  15, 15, 6,  6,  2,  6,  8,  15, 15, 2,  2,  15, 15, 15, 15, 15, 2,  2, 15};
constexpr std::array<std::uint8_t, 64> kSecondOfThree = {
    3,  3,  15, 15, 8, 3,  15, 15, 8,  8,  6, 6,  6, 5,  3, 3,  3,  3,  8,  15, 3,  3,
    6,  10, 5,  8,  8, 6,  8,  5,  15, 15, 8, 15, 3, 5,  6, 10, 8,  15, 15, 3,  15, 5,
    15, 15, 15, 15, 3, 15, 5,  5,  5,  8,  5, 10, 5, 10, 8, 13, 15, 12, 3,  3};
constexpr std::array<std::uint8_t, 64> kThirdOfThree = {
    15, 8, 8, 3,  15, 15, 3,  8,  15, 15, 15, 15, 15, 15, 15, 8,  15, 8,  15, 3,  15, 8,
    15, 8, 3, 15, 6,  10, 15, 15, 10, 8,  15, 3,  15, 10, 10, 8,  9,  10, 6,  15, 8,  15,
    3,  6, 6, 8,  15, 3,  15, 15, 15, 15, 15, 15, 15, 15, 15, 15, 3,  15, 15, 8};

// The parts of the way from one end of a line of colours to the other, of 64, by the bits of an
// index.
constexpr std::array<unsigned, 4> kWeights2 = {0, 21, 43, 64};
constexpr std::array<unsigned, 8> kWeights3 = {0, 9, 18, 27, 37, 46, 55, 64};
constexpr std::array<unsigned, 16> kWeights4 = {0,  4,  9,  13, 17, 21, 26, 30,
                                                34, 38, 43, 47, 51, 55, 60, 64};

unsigned weightOf(unsigned index, unsigned bits) {
  return bits == 2 ? kWeights2[index] : bits == 3 ? kWeights3[index] : kWeights4[index];
}

class Bits {
 public:
  explicit Bits(const unsigned char* block) : block_(block) {}
  unsigned next(unsigned count) {
    unsigned result = 0;
    for (unsigned i = 0; i < count; ++i, ++at_) {
      result |= (block_[at_ / 8] >> (at_ % 8) & 1U) << i;
    }
    return result;
  }
  void skip(unsigned count) { at_ += count; }

 private:
  const unsigned char* block_;
  unsigned at_ = 0;
};

unsigned partOf(unsigned parts, unsigned partition, unsigned pixel) {
  if (parts == 2) return kTwoParts[partition] >> pixel & 1U;
  return parts == 3 ? kThreeParts[partition] >> (2 * pixel) & 3U : 0;
}

bool isShort(unsigned parts, unsigned partition, unsigned pixel) {
  if (pixel == 0) return true;
  if (parts == 2) return pixel == kSecondOfTwo[partition];
  return parts == 3 && (pixel == kSecondOfThree[partition] || pixel == kThirdOfThree[partition]);
}

// Reads the indices of all pixels, and returns that of one.
unsigned readIndex(Bits& bits, unsigned parts, unsigned partition, unsigned width, unsigned pixel) {
  unsigned result = 0;
  for (unsigned i = 0; i < 16; ++i) {
    const unsigned index = bits.next(isShort(parts, partition, i) ? width - 1 : width);
    if (i == pixel) result = index;
  }
  return result;
}

// A mode of BC7: how many bits there are of each kind.
struct Mode7 {
  unsigned parts, partition, rotation, selection, colour, alpha, endBit, partBit, index, second;
};
constexpr std::array<Mode7, 8> kModes7 = {{{3, 4, 0, 0, 4, 0, 1, 0, 3, 0},
                                           {2, 6, 0, 0, 6, 0, 0, 1, 3, 0},
                                           {3, 6, 0, 0, 5, 0, 0, 0, 2, 0},
                                           {2, 6, 0, 0, 7, 0, 1, 0, 2, 0},
                                           {1, 0, 2, 1, 5, 6, 0, 0, 2, 3},
                                           {1, 0, 2, 0, 7, 8, 0, 0, 2, 2},
                                           {1, 0, 0, 0, 7, 7, 1, 0, 4, 0},
                                           {2, 6, 0, 0, 5, 5, 1, 0, 2, 0}}};

// A mode of BC6H. `fields` names the bits in their order: a colour, an end (w and x of the first
// part, y and z of the second), and the bits from low to high or, if the first number is smaller,
// from high to low.
struct Mode6 {
  unsigned code, codeBits;
  bool isTwoParts, isDelta;
  unsigned precision;
  std::array<unsigned, 3> deltas;  // red, green and blue
  std::string_view fields;
};
constexpr std::array<Mode6, 14> kModes6 = {{
    {0x00,
     2,
     true,
     true,
     10,
     {5, 5, 5},
     "gy4 by4 bz4 rw9:0 gw9:0 bw9:0 rx4:0 gz4 gy3:0 gx4:0 bz0 gz3:0 bx4:0 bz1 by3:0 ry4:0 bz2 "
     "rz4:0 bz3"},
    {0x01,
     2,
     true,
     true,
     7,
     {6, 6, 6},
     "gy5 gz4 gz5 rw6:0 bz0 bz1 by4 gw6:0 by5 bz2 gy4 bw6:0 bz3 bz5 bz4 rx5:0 gy3:0 gx5:0 gz3:0 "
     "bx5:0 by3:0 ry5:0 rz5:0"},
    {0x02,
     5,
     true,
     true,
     11,
     {5, 4, 4},
     "rw9:0 gw9:0 bw9:0 rx4:0 rw10 gy3:0 gx3:0 gw10 bz0 gz3:0 bx3:0 bw10 bz1 by3:0 ry4:0 bz2 rz4:0 "
     "bz3"},
    {0x06,
     5,
     true,
     true,
     11,
     {4, 5, 4},
     "rw9:0 gw9:0 bw9:0 rx3:0 rw10 gz4 gy3:0 gx4:0 gw10 gz3:0 bx3:0 bw10 bz1 by3:0 ry3:0 bz0 bz2 "
     "rz3:0 gy4 bz3"},
    {0x0a,
     5,
     true,
     true,
     11,
     {4, 4, 5},
     "rw9:0 gw9:0 bw9:0 rx3:0 rw10 by4 gy3:0 gx3:0 gw10 bz0 gz3:0 bx4:0 bw10 by3:0 ry3:0 bz1 bz2 "
     "rz3:0 bz4 bz3"},
    {0x0e,
     5,
     true,
     true,
     9,
     {5, 5, 5},
     "rw8:0 by4 gw8:0 gy4 bw8:0 bz4 rx4:0 gz4 gy3:0 gx4:0 bz0 gz3:0 bx4:0 bz1 by3:0 ry4:0 bz2 "
     "rz4:0 "
     "bz3"},
    {0x12,
     5,
     true,
     true,
     8,
     {6, 5, 5},
     "rw7:0 gz4 by4 gw7:0 bz2 gy4 bw7:0 bz3 bz4 rx5:0 gy3:0 gx4:0 bz0 gz3:0 bx4:0 bz1 by3:0 ry5:0 "
     "rz5:0"},
    {0x16,
     5,
     true,
     true,
     8,
     {5, 6, 5},
     "rw7:0 bz0 by4 gw7:0 gy5 gy4 bw7:0 gz5 bz4 rx4:0 gz4 gy3:0 gx5:0 gz3:0 bx4:0 bz1 by3:0 ry4:0 "
     "bz2 rz4:0 bz3"},
    {0x1a,
     5,
     true,
     true,
     8,
     {5, 5, 6},
     "rw7:0 bz1 by4 gw7:0 by5 gy4 bw7:0 bz5 bz4 rx4:0 gz4 gy3:0 gx4:0 bz0 gz3:0 bx5:0 by3:0 ry4:0 "
     "bz2 rz4:0 bz3"},
    {0x1e,
     5,
     true,
     false,
     6,
     {6, 6, 6},
     "rw5:0 gz4 bz0 bz1 by4 gw5:0 gy5 by5 bz2 gy4 bw5:0 gz5 bz3 bz5 bz4 rx5:0 gy3:0 gx5:0 gz3:0 "
     "bx5:0 by3:0 ry5:0 rz5:0"},
    {0x03, 5, false, false, 10, {10, 10, 10}, "rw9:0 gw9:0 bw9:0 rx9:0 gx9:0 bx9:0"},
    {0x07, 5, false, true, 11, {9, 9, 9}, "rw9:0 gw9:0 bw9:0 rx8:0 rw10 gx8:0 gw10 bx8:0 bw10"},
    {0x0b,
     5,
     false,
     true,
     12,
     {8, 8, 8},
     "rw9:0 gw9:0 bw9:0 rx7:0 rw10:11 gx7:0 gw10:11 bx7:0 bw10:11"},
    {0x0f,
     5,
     false,
     true,
     16,
     {4, 4, 4},
     "rw9:0 gw9:0 bw9:0 rx3:0 rw10:15 gx3:0 gw10:15 bx3:0 bw10:15"},
}};

// Where each bit of a mode's fields goes.
struct Target {
  std::uint8_t end, colour, bit;
};

std::vector<Target> targetsOf(std::string_view fields) {
  std::vector<Target> result;
  const auto number = [&fields] {
    unsigned value = 0;
    while (!fields.empty() && fields[0] >= '0' && fields[0] <= '9') {
      value = 10 * value + static_cast<unsigned>(fields[0] - '0');
      fields.remove_prefix(1);
    }
    return value;
  };
  while (!fields.empty()) {
    const auto colour = static_cast<std::uint8_t>(fields[0] == 'r' ? 0 : fields[0] == 'g' ? 1 : 2);
    const auto end = static_cast<std::uint8_t>(fields[1] - 'w');
    fields.remove_prefix(2);
    const unsigned first = number();
    unsigned last = first;
    if (!fields.empty() && fields[0] == ':') {
      fields.remove_prefix(1);
      last = number();
    }
    // From the second number to the first.
    for (unsigned bit = last;; bit = last > first ? bit - 1 : bit + 1) {
      result.push_back({end, colour, static_cast<std::uint8_t>(bit)});
      if (bit == first) break;
    }
    if (!fields.empty()) fields.remove_prefix(1);
  }
  return result;
}

int extended(unsigned value, unsigned bits) {
  const unsigned sign = 1U << (bits - 1);
  return static_cast<int>((value & (2 * sign - 1)) ^ sign) - static_cast<int>(sign);
}

unsigned widened(unsigned value, unsigned bits) {
  if (bits >= 15) return value;
  if (value == 0) return 0;
  if (value == (1U << bits) - 1) return 0xffff;
  return ((value << 16) + 0x8000) >> bits;
}

float halfAt(unsigned bits) {
  const auto mantissa = static_cast<float>(bits & 1023U);
  const int exponent = static_cast<int>(bits >> 10);
  return exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(mantissa + 1024, exponent - 25);
}

}  // namespace

std::array<float, 4> decodeBC7(const unsigned char* block, int index) {
  unsigned number = 0;
  while (number < 8 && !(block[0] >> number & 1U)) ++number;
  if (number == 8) return {0, 0, 0, 0};
  const Mode7& mode = kModes7[number];
  const auto pixel = static_cast<unsigned>(index);
  Bits bits(block);
  bits.skip(number + 1);
  const unsigned partition = bits.next(mode.partition);
  const unsigned rotation = bits.next(mode.rotation);
  const unsigned selection = bits.next(mode.selection);
  const unsigned ends = 2 * mode.parts;
  std::array<std::array<unsigned, 4>, 6> codes{};
  for (std::size_t channel = 0; channel < 4; ++channel) {
    for (std::size_t end = 0; end < ends; ++end) {
      codes[end][channel] = bits.next(channel < 3 ? mode.colour : mode.alpha);
    }
  }
  unsigned lowBits = 0;  // one for each end
  if (mode.endBit) {
    lowBits = bits.next(ends);
  } else if (mode.partBit) {
    const unsigned shared = bits.next(mode.parts);
    lowBits = (shared & 1U) * 3U | (shared >> 1) * 12U;
  }
  const unsigned low = mode.endBit | mode.partBit;
  const unsigned first = readIndex(bits, mode.parts, partition, mode.index, pixel);
  const unsigned second = mode.second ? readIndex(bits, 1, 0, mode.second, pixel) : 0;
  const unsigned colourWeight =
      selection ? weightOf(second, mode.second) : weightOf(first, mode.index);
  const unsigned alphaWeight =
      mode.second && !selection ? weightOf(second, mode.second) : weightOf(first, mode.index);
  const std::size_t part = partOf(mode.parts, partition, pixel);
  std::array<float, 4> result{0, 0, 0, 1};
  for (std::size_t channel = 0; channel < 4; ++channel) {
    const unsigned stored = channel < 3 ? mode.colour : mode.alpha;
    if (stored == 0) continue;
    const unsigned width = stored + low;
    const auto code = [&](std::size_t end) {
      unsigned value = codes[end][channel];
      if (low) value = value << 1 | (lowBits >> end & 1U);
      value <<= 8 - width;
      return value | value >> width;
    };
    const unsigned weight = channel < 3 ? colourWeight : alphaWeight;
    const unsigned mixed = ((64 - weight) * code(2 * part) + weight * code(2 * part + 1) + 32) >> 6;
    result[channel] = static_cast<float>(mixed) / 255;
  }
  if (rotation != 0) std::swap(result[rotation - 1], result[3]);
  return result;
}

std::array<float, 4> decodeBC6H(const unsigned char* block, int index) {
  static const std::array<std::vector<Target>, kModes6.size()> targets = [] {
    std::array<std::vector<Target>, kModes6.size()> result;
    for (std::size_t i = 0; i < result.size(); ++i) result[i] = targetsOf(kModes6[i].fields);
    return result;
  }();
  const unsigned code = (block[0] & 2U) != 0 ? block[0] & 31U : block[0] & 3U;
  std::size_t number = 0;
  while (number < kModes6.size() && kModes6[number].code != code) ++number;
  if (number == kModes6.size()) return {0, 0, 0, 1};
  const Mode6& mode = kModes6[number];
  Bits bits(block);
  bits.skip(mode.codeBits);
  std::array<std::array<unsigned, 3>, 4> ends{};
  for (const Target& target : targets[number]) {
    ends[target.end][target.colour] |= bits.next(1) << target.bit;
  }
  const auto pixel = static_cast<unsigned>(index);
  const unsigned parts = mode.isTwoParts ? 2 : 1;
  const unsigned partition = mode.isTwoParts ? bits.next(5) : 0;
  const unsigned width = mode.isTwoParts ? 3 : 4;
  const unsigned weight = weightOf(readIndex(bits, parts, partition, width, pixel), width);
  const std::size_t part = partOf(parts, partition, pixel);
  std::array<float, 4> result{0, 0, 0, 1};
  for (std::size_t colour = 0; colour < 3; ++colour) {
    const auto end = [&](std::size_t which) {
      unsigned value = ends[which][colour];
      if (mode.isDelta && which != 0) {
        value = static_cast<unsigned>(static_cast<int>(ends[0][colour]) +
                                      extended(value, mode.deltas[colour])) &
                ((1U << mode.precision) - 1);
      }
      return widened(value, mode.precision);
    };
    const unsigned mixed = ((64 - weight) * end(2 * part) + weight * end(2 * part + 1) + 32) >> 6;
    result[colour] = halfAt(mixed * 31 >> 6);
  }
  return result;
}

}  // namespace vrn_render
