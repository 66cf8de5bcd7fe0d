/// Numbers for the choices along a path: points of the sequence of Sobol, scrambled after Owen.
#ifndef VRN_RENDER_INTEGRATOR_SAMPLER_HPP
#define VRN_RENDER_INTEGRATOR_SAMPLER_HPP

#include <cstdint>

#include "geometry/vector.hpp"

namespace vrn_render {

/// The numbers of one sample of one pixel. They depend on the seed, the pixel and the sample only,
/// so that it does not matter which thread asks, and when. Each call takes the next pair of a
/// sequence of its own; the samples of a pixel together cover the unit square evenly in each pair.
class Sampler {
 public:
  Sampler(std::uint32_t seed, std::uint32_t x, std::uint32_t y, std::uint32_t sample)
      : key_(mixed(mixed(mixed(seed) ^ x) ^ (y + 0x9e3779b9U))), sample_(reversed(sample)) {}

  /// Returns a number from 0 up to 1.
  float one() {
    const std::uint32_t key = nextKey();
    return toFloat(reversed(permuted(reversed(permuted(sample_, key)), mixed(key ^ 0x68bc21ebU))));
  }

  /// Returns two numbers from 0 up to 1.
  Vec2 two() {
    const std::uint32_t key = nextKey();
    const std::uint32_t index = reversed(permuted(sample_, key));
    const std::uint32_t x = permuted(index, mixed(key ^ 0x68bc21ebU));
    const std::uint32_t y = permuted(sobol(index), mixed(key ^ 0x02e5be93U));
    return {toFloat(reversed(x)), toFloat(reversed(y))};
  }

  /// Takes the next sequence without asking for its numbers, which has no influence on the others.
  void skip() { ++dimension_; }

 private:
  std::uint32_t nextKey() { return mixed(key_ + 0x85ebca6bU * ++dimension_); }
  static float toFloat(std::uint32_t bits) {
    return static_cast<float>(static_cast<std::int32_t>(bits >> 8)) * 0x1p-24F;  // exact
  }
  static std::uint32_t mixed(std::uint32_t a) {
    a ^= a >> 16;
    a *= 0x21f0aaadU;
    a ^= a >> 15;
    a *= 0x735a2d97U;
    return a ^ (a >> 15);
  }
  static std::uint32_t reversed(std::uint32_t a) {
    a = __builtin_bswap32(a);
    a = ((a & 0x0f0f0f0fU) << 4) | ((a & 0xf0f0f0f0U) >> 4);
    a = ((a & 0x33333333U) << 2) | ((a & 0xccccccccU) >> 2);
    return ((a & 0x55555555U) << 1) | ((a & 0xaaaaaaaaU) >> 1);
  }
  // The second dimension of the sequence, with its digits reversed. Its matrix is Pascal's triangle
  // modulo 2: digit j is the sum of the digits of the index at all places whose binary digits
  // include those of j.
  static std::uint32_t sobol(std::uint32_t index) {
    index ^= (index >> 1) & 0x55555555U;
    index ^= (index >> 2) & 0x33333333U;
    index ^= (index >> 4) & 0x0f0f0f0fU;
    index ^= (index >> 8) & 0x00ff00ffU;
    index ^= (index >> 16) & 0x0000ffffU;
    return index;
  }
  // Permutes so that each bit depends on the bits below it only (Laine and Karras, 2011). Numbers
  // are kept with their digits reversed, so that these are the more significant ones.
  static std::uint32_t permuted(std::uint32_t a, std::uint32_t key) {
    a ^= a * 0x3d20adeaU;
    a += key;
    a *= (key >> 16) | 1U;
    a ^= a * 0x05526c56U;
    a ^= a * 0x53a22864U;
    return a;
  }

  std::uint32_t key_;
  std::uint32_t sample_;  // with its digits reversed
  std::uint32_t dimension_ = 0;
};

}  // namespace vrn_render

#endif
