// Vectors and affine maps, in double precision until a scene is written.
#ifndef VRN_CONVERT_SCENE_PLAN_TRANSFORM_HPP
#define VRN_CONVERT_SCENE_PLAN_TRANSFORM_HPP

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrn_convert {

struct Vector {
  double x = 0, y = 0, z = 0;

  friend Vector operator+(Vector a, Vector b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend Vector operator-(Vector a, Vector b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend Vector operator*(Vector a, double s) { return {a.x * s, a.y * s, a.z * s}; }
};

inline double dot(Vector a, Vector b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline Vector cross(Vector a, Vector b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(Vector a) { return std::sqrt(dot(a, a)); }
inline bool isFinite(Vector a) { return std::isfinite(a.x + a.y + a.z); }
inline bool fitsFloats(Vector a) {
  constexpr double kMost = std::numeric_limits<float>::max();
  return std::abs(a.x) <= kMost && std::abs(a.y) <= kMost && std::abs(a.z) <= kMost;
}
/// Returns the vector with a length of 1, or `otherwise` if it has no direction.
inline Vector normalised(Vector a, Vector otherwise) {
  const double size = length(a);
  return size > 0 && std::isfinite(size) ? a * (1 / size) : otherwise;
}

/// An affine map: the images of the axes and of the origin.
struct Transform {
  Vector x{1, 0, 0}, y{0, 1, 0}, z{0, 0, 1}, w{0, 0, 0};

  Vector direction(Vector a) const { return x * a.x + y * a.y + z * a.z; }
  Vector point(Vector a) const { return direction(a) + w; }
  /// Whether all numbers are finite as floats, as which a scene stores them.
  bool fitsFloats() const {
    return vrn_convert::fitsFloats(x) && vrn_convert::fitsFloats(y) && vrn_convert::fitsFloats(z) &&
           vrn_convert::fitsFloats(w);
  }
  /// The map that applies `b` first, and then `a`.
  friend Transform operator*(const Transform& a, const Transform& b) {
    return {a.direction(b.x), a.direction(b.y), a.direction(b.z), a.point(b.w)};
  }

  /// Returns the map of a unit quaternion; one of another length is normalised.
  static Transform rotation(double i, double j, double k, double r) {
    const double size = std::sqrt(i * i + j * j + k * k + r * r);
    if (!(size > 0) || !std::isfinite(size)) return {};
    i /= size, j /= size, k /= size, r /= size;
    return {{1 - 2 * (j * j + k * k), 2 * (i * j + k * r), 2 * (i * k - j * r)},
            {2 * (i * j - k * r), 1 - 2 * (i * i + k * k), 2 * (j * k + i * r)},
            {2 * (i * k + j * r), 2 * (j * k - i * r), 1 - 2 * (i * i + j * j)},
            {}};
  }
  static Transform scaling(Vector s) { return {{s.x, 0, 0}, {0, s.y, 0}, {0, 0, s.z}, {}}; }
};

/// A box along the axes. It is empty at first.
struct Box {
  Vector low{std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity(),
             std::numeric_limits<double>::infinity()};
  Vector high{-std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
              -std::numeric_limits<double>::infinity()};

  bool isEmpty() const { return !(low.x <= high.x); }
  void add(Vector p) {
    low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
  }
  /// Adds the eight corners of a box as a map moves them.
  void add(const Box& box, const Transform& place) {
    if (box.isEmpty()) return;
    for (unsigned i = 0; i < 8; ++i) {
      add(place.point({i & 1U ? box.high.x : box.low.x, i & 2U ? box.high.y : box.low.y,
                       i & 4U ? box.high.z : box.low.z}));
    }
  }
};

}  // namespace vrn_convert

#endif
