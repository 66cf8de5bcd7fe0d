/// Numbers for the choices along a path: points of the sequence of Sobol, scrambled after Owen.
#ifndef VRN_RENDER_INTEGRATOR_SAMPLER_HPP
#define VRN_RENDER_INTEGRATOR_SAMPLER_HPP

#include <cstdint>

#include "geometry/vector.hpp"

namespace vrn_render {

/// What a number is for. Each choice at each point of a path has a sequence of its own.
enum class Choice : std::uint32_t {
  Pixel,
  Lens,
  Time,
  Decal,
  Pass,  ///< whether a ray goes straight on
  Light,
  OnLight,
  Lobe,
  Direction,
  Roulette,
};

/// The numbers of one sample of one pixel. They depend on the seed, the pixel and the sample only,
/// so that it does not matter which thread asks, and when. The samples of a pixel together cover
/// the unit square evenly in each choice.
/// Threads: immutable.
class Sampler {
 public:
  Sampler(std::uint32_t seed, std::uint32_t x, std::uint32_t y, std::uint32_t sample)
      : key_(mixed(mixed((std::uint64_t{y} << 32) | x) ^ seed)), sample_(reversed(sample)) {}

  /// Returns a number from 0 up to 1. `point` counts the points of the path.
  float one(Choice choice, std::uint32_t point = 0) const {
    const std::uint64_t keys = keysOf(choice, point);
    return toFloat(reversed(permuted(index(keys), low(keys))));
  }

  /// Returns two numbers from 0 up to 1.
  Vec2 two(Choice choice, std::uint32_t point = 0) const {
    const std::uint64_t keys = keysOf(choice, point);
    const std::uint32_t at = index(keys);
    const std::uint64_t digits = reversedHalves(
        permuted(at, low(keys)) | std::uint64_t{permuted(sobol(at), high(keys))} << 32);
    return {toFloat(high(digits)), toFloat(low(digits))};
  }

 private:
  static std::uint32_t low(std::uint64_t bits) { return static_cast<std::uint32_t>(bits); }
  static std::uint32_t high(std::uint64_t bits) { return static_cast<std::uint32_t>(bits >> 32); }
  // Two keys, for the numbers of a pair; a third, for their order, comes from both.
  std::uint64_t keysOf(Choice choice, std::uint32_t point) const {
    constexpr std::uint64_t kMostChoices = 16;
    const std::uint64_t sequence = kMostChoices * point + static_cast<std::uint64_t>(choice);
    return mixed(key_ + 0x9e3779b97f4a7c15U * (sequence + 1));
  }
  std::uint32_t index(std::uint64_t keys) const {
    return reversed(permuted(sample_, high(keys * 0xd1342543de82ef95U)));
  }
  static float toFloat(std::uint32_t bits) {
    return static_cast<float>(static_cast<std::int32_t>(bits >> 8)) * 0x1p-24F;  // exact
  }
  static std::uint64_t mixed(std::uint64_t a) {
    a ^= a >> 32;
    a *= 0xe9846af9b1a615dU;
    a ^= a >> 32;
    a *= 0xe9846af9b1a615dU;
    return a ^ (a >> 28);
  }
  static std::uint32_t reversed(std::uint32_t a) { return high(reversedHalves(a)); }
  // Reverses 64 digits: the two numbers in the halves exchange their places, too.
  static std::uint64_t reversedHalves(std::uint64_t a) {
    a = __builtin_bswap64(a);
    a = ((a & 0x0f0f0f0f0f0f0f0fU) << 4) | ((a >> 4) & 0x0f0f0f0f0f0f0f0fU);
    a = ((a & 0x3333333333333333U) << 2) | ((a >> 2) & 0x3333333333333333U);
    return ((a & 0x5555555555555555U) << 1) | ((a >> 1) & 0x5555555555555555U);
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

  std::uint64_t key_;
  std::uint32_t sample_;  // with its digits reversed
};

}  // namespace vrn_render

#endif
