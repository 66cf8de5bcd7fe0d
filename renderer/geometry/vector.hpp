/// Vectors of three floats, and affine maps as the scene stores them.
#ifndef VRN_RENDER_GEOMETRY_VECTOR_HPP
#define VRN_RENDER_GEOMETRY_VECTOR_HPP

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace vrn_render {

inline constexpr float kPi = 3.14159265358979323846F;

struct Vec2 {
  float x = 0, y = 0;
};

struct Vec3 {
  float x = 0, y = 0, z = 0;
};

inline Vec3 operator+(Vec3 a, Vec3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline Vec3 operator-(Vec3 a, Vec3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline Vec3 operator-(Vec3 a) { return {-a.x, -a.y, -a.z}; }
inline Vec3 operator*(Vec3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
inline Vec3 operator*(float s, Vec3 a) { return a * s; }
inline float dot(Vec3 a, Vec3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vec3 cross(Vec3 a, Vec3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline float length(Vec3 a) { return std::sqrt(dot(a, a)); }
inline bool isFinite(Vec3 a) { return std::isfinite(a.x + a.y + a.z); }

/// Returns the cosine and the sine of a part of a full turn, from 0 to 1. Within 1e-7.
inline Vec2 turnedBy(float part) {
  // The nearest quarter, and series for the angle that is left, of an eighth of a turn at most. The
  // terms are paired, so that few have to wait for others.
  const auto quarters = static_cast<std::uint32_t>((static_cast<int>(8 * part) + 1) / 2);
  const float x = (part - 0.25F * static_cast<float>(static_cast<int>(quarters))) * (2 * kPi);
  const float xx = x * x;
  const float x4 = xx * xx;
  const float sine =
      x * ((1 - xx * (1.0F / 6)) + x4 * ((1.0F / 120 - xx * (1.0F / 5040)) + x4 * (1.0F / 362880)));
  const float cosine =
      (1 - xx * 0.5F) + x4 * ((1.0F / 24 - xx * (1.0F / 720)) + x4 * (1.0F / 40320));
  // Quarters are random, and a processor foresees no branch by them. An odd number exchanges the
  // two, and bits of the number are their signs.
  std::uint32_t a, b;
  std::memcpy(&a, &cosine, sizeof a);
  std::memcpy(&b, &sine, sizeof b);
  const std::uint32_t exchanged = (a ^ b) & (0 - (quarters & 1));
  a ^= exchanged ^ ((quarters + 1) & 2) << 30;
  b ^= exchanged ^ (quarters & 2) << 30;
  Vec2 result;
  std::memcpy(&result.x, &a, sizeof a);
  std::memcpy(&result.y, &b, sizeof b);
  return result;
}

/// Returns the vector at length 1, or `otherwise` for a vector without a length.
inline Vec3 normalised(Vec3 a, Vec3 otherwise = {0, 0, 1}) {
  const float size = length(a);
  return size > 0 && std::isfinite(size) ? a * (1 / size) : otherwise;
}

/// An affine map. The members are the images of the three axes and of the origin, as the rows of a
/// matrix in a scene.
struct Transform {
  Vec3 x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1}, w{0, 0, 0};

  Vec3 vector(Vec3 a) const { return a.x * x + a.y * y + a.z * z; }
  Vec3 point(Vec3 a) const { return vector(a) + w; }
  float determinant() const { return dot(x, cross(y, z)); }

  /// Maps a normal: not of length 1. The side that it points to stays the same side.
  Vec3 normal(Vec3 a) const {
    const Vec3 mapped = a.x * cross(y, z) + a.y * cross(z, x) + a.z * cross(x, y);
    return determinant() < 0 ? -mapped : mapped;
  }

  bool isIdentity() const {
    return x.x == 1 && x.y == 0 && x.z == 0 && y.x == 0 && y.y == 1 && y.z == 0 && z.x == 0 &&
           z.y == 0 && z.z == 1 && w.x == 0 && w.y == 0 && w.z == 0;
  }
  bool isFinite() const {
    return vrn_render::isFinite(x) && vrn_render::isFinite(y) && vrn_render::isFinite(z) &&
           vrn_render::isFinite(w);
  }
  /// True if the map turns space into a plane, a line or a point.
  bool isFlat() const {
    const float sizes = length(x) * length(y) * length(z);
    return !(std::abs(determinant()) > 1e-7F * sizes);
  }
};

/// Returns the map that first applies `inner` and then `outer`.
inline Transform operator*(const Transform& outer, const Transform& inner) {
  return {outer.vector(inner.x), outer.vector(inner.y), outer.vector(inner.z),
          outer.point(inner.w)};
}

/// Returns the inverse of a map that is not flat.
inline Transform inverse(const Transform& map) {
  const float scale = 1 / map.determinant();
  const Vec3 a = cross(map.y, map.z) * scale;
  const Vec3 b = cross(map.z, map.x) * scale;
  const Vec3 c = cross(map.x, map.y) * scale;
  Transform result;
  result.x = {a.x, b.x, c.x};
  result.y = {a.y, b.y, c.y};
  result.z = {a.z, b.z, c.z};
  result.w = -result.vector(map.w);
  return result;
}

/// Returns whether rays can be mapped into the space of a map and stay within the range of floats:
/// the map is not flat, and neither far larger nor far smaller than what a scene in metres needs.
inline bool canBeEntered(const Transform& map) {
  constexpr float kLargest = 1e8F;
  const auto isModest = [](const Transform& m) {
    const auto is = [](Vec3 v) {
      return std::abs(v.x) <= kLargest && std::abs(v.y) <= kLargest && std::abs(v.z) <= kLargest;
    };
    return is(m.x) && is(m.y) && is(m.z);
  };
  if (!map.isFinite() || map.isFlat() || !isModest(map)) return false;
  const Transform back = inverse(map);
  return back.isFinite() && isModest(back) && length(map.w) <= 1e9F && length(back.w) <= 1e17F;
}

/// Three perpendicular directions around a normal, which is the local z.
struct Frame {
  Vec3 tangent, bitangent, normal;

  explicit Frame(Vec3 n) : normal(n) {
    const float sign = std::copysign(1.0F, n.z);
    const float a = -1 / (sign + n.z);
    const float b = n.x * n.y * a;
    tangent = {1 + sign * n.x * n.x * a, sign * b, -sign * n.x};
    bitangent = {b, sign + n.y * n.y * a, -n.y};
  }
  Vec3 toLocal(Vec3 v) const { return {dot(v, tangent), dot(v, bitangent), dot(v, normal)}; }
  Vec3 toWorld(Vec3 v) const { return v.x * tangent + v.y * bitangent + v.z * normal; }
};

}  // namespace vrn_render

#endif
