#include "scene_plan/mesh_builder.hpp"

#include <cmath>
#include <cstring>
#include <limits>
#include <new>

#include "scene_plan/large_memory.hpp"

namespace vrn_convert {
namespace {

constexpr std::size_t kVertexFloats = 9;  // position, normal, tangent

struct Float3 {
  float x = 0, y = 0, z = 0;

  friend Float3 operator-(Float3 a, Float3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
  friend Float3 operator+(Float3 a, Float3 b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
  friend Float3 operator*(Float3 a, float s) { return {a.x * s, a.y * s, a.z * s}; }
};

float dot(Float3 a, Float3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
Float3 cross(Float3 a, Float3 b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
// A sum of numbers is finite only if each of them is. Differences of large ones cannot hide that.
bool isFinite(Float3 a) { return std::isfinite(a.x) && std::isfinite(a.y) && std::isfinite(a.z); }

// Returns the vector with a length of 1, or `otherwise` if it has no direction. One that is long
// or short is scaled first, so that its square is neither infinite nor zero.
Float3 normalised(Float3 a, Float3 otherwise) {
  float square = dot(a, a);
  // What a file has already normalised keeps its bits.
  if (std::abs(square - 1) < 1e-6F) return a;
  if (!(square > 1e-30F) || !(square < 1e30F)) {
    const float most = std::max({std::abs(a.x), std::abs(a.y), std::abs(a.z)});
    if (!(most > 0) || !std::isfinite(most)) return otherwise;
    a = {a.x / most, a.y / most, a.z / most};
    square = dot(a, a);
  }
  return a * (1 / std::sqrt(square));
}

// A direction that is perpendicular to a unit vector (Duff et al., 2017).
Float3 perpendicular(Float3 n) {
  const float sign = std::copysign(1.0F, n.z);
  const float a = -1 / (sign + n.z);
  return {1 + sign * n.x * n.x * a, sign * n.x * n.y * a, -sign * n.x};
}

Float3 load(const float* from) { return {from[0], from[1], from[2]}; }
void store(float* to, Float3 a) {
  to[0] = a.x;
  to[1] = a.y;
  to[2] = a.z;
}
Float3 read(const Attribute& attribute, std::size_t element) {
  float numbers[3];
  attribute.read(element, numbers, 3);
  return load(numbers);
}

std::size_t triangleCount(const MeshSource& source) {
  const std::size_t corners = source.indices ? source.indices.count : source.positions.count;
  if (source.topology == Topology::Triangles) return corners / 3;
  return corners < 3 ? 0 : corners - 2;
}

// Reads the corners of a mesh's triangles. In a strip, every other triangle is turned, so that all
// have the same front.
class Corners {
 public:
  explicit Corners(const MeshSource& source) : source_(source) {}

  void triangle(std::size_t number, std::uint32_t* corners) const {
    switch (source_.topology) {
      case Topology::Triangles:
        for (std::size_t i = 0; i < 3; ++i) corners[i] = index(3 * number + i);
        return;
      case Topology::Strip:
        corners[0] = index(number);
        corners[1] = index(number + 1 + number % 2);
        corners[2] = index(number + 2 - number % 2);
        return;
      case Topology::Fan:
        corners[0] = index(number + 1);
        corners[1] = index(number + 2);
        corners[2] = index(0);
        return;
    }
  }

 private:
  std::uint32_t index(std::size_t at) const {
    return source_.indices ? source_.indices.index(at) : static_cast<std::uint32_t>(at);
  }
  const MeshSource& source_;
};

// Writes all indices and returns the largest.
std::uint32_t writeIndices(const MeshSource& source, std::size_t triangles, std::uint32_t* out) {
  std::uint32_t largest = 0;
  const std::size_t words = 3 * triangles;
  const Attribute& indices = source.indices;
  if (source.topology == Topology::Triangles && indices.component == Component::UInt32 && indices &&
      indices.stride == sizeof(std::uint32_t)) {
    std::memcpy(out, indices.data, words * sizeof(std::uint32_t));
  } else {
    const Corners corners(source);
    for (std::size_t i = 0; i < triangles; ++i) corners.triangle(i, out + 3 * i);
  }
  for (std::size_t i = 0; i < words; ++i) largest = std::max(largest, out[i]);
  return largest;
}

class Builder {
 public:
  Builder(const MeshSource& source, Notices& notices)
      : source_(source), notices_(notices), vertices_(source.positions.count) {}

  MeshPlan build() {
    triangles_ = triangleCount(source_);
    plan_.name = source_.name;
    if (triangles_ == 0 || vertices_ == 0) return std::move(plan_);
    isFlat_ = !source_.normals;
    if (isFlat_) {
      checkCount(triangles_ * 3);
    } else {
      checkCount(vertices_);
    }
    checkCount(triangles_);
    allocate(isFlat_ ? 3 * triangles_ : vertices_);
    if (isFlat_) {
      buildFlat();
    } else {
      buildShared();
    }
    if (!areFinite_) leaveOut();
    if (triangles_ == 0) return MeshPlan{};
    if (source_.needsTangents && !hasTangents()) computeTangents();
    plan_.desc.triangles = static_cast<std::int32_t>(triangles_);
    plan_.desc.vertices = static_cast<std::int32_t>(count_);
    plan_.desc.texcoordSets = static_cast<std::int32_t>(sets_);
    return std::move(plan_);
  }

 private:
  static void checkCount(std::size_t count) {
    if (count > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
      throw Refused("a mesh has more than 2147483647 vertices or triangles; split it");
    }
  }
  // glTF ignores tangents without normals.
  bool hasTangents() const { return source_.tangents && !isFlat_; }

  void allocate(std::size_t count) {
    count_ = count;
    sets_ = std::max<std::size_t>(1, source_.coordinates.size());
    plan_.size = sizeof(float) * (3 * triangles_ + (kVertexFloats + 2 * sets_) * count_);
    plan_.bytes.reset(static_cast<unsigned char*>(allocateLarge(plan_.size)));
    if (!plan_.bytes) throw std::bad_alloc();
    indices_ = reinterpret_cast<std::uint32_t*>(plan_.bytes.get());
    place();
  }
  void place() {
    floats_ = reinterpret_cast<float*>(indices_ + 3 * triangles_);
    coordinates_ = floats_ + kVertexFloats * count_;
  }

  void requireVertex(std::uint32_t index) const {
    if (index < vertices_) return;
    throw Refused(source_.name + ": the index " + std::to_string(index) +
                  " has no vertex; there are " + std::to_string(vertices_));
  }

  void writePosition(std::size_t to, Float3 p) {
    if (isFinite(p)) {
      low_ = {std::min(low_.x, p.x), std::min(low_.y, p.y), std::min(low_.z, p.z)};
      high_ = {std::max(high_.x, p.x), std::max(high_.y, p.y), std::max(high_.z, p.z)};
    } else {
      areFinite_ = false;
    }
    store(floats_ + kVertexFloats * to, p);
  }
  void finishBox() {
    if (!(low_.x <= high_.x)) return;
    plan_.box.low = {low_.x, low_.y, low_.z};
    plan_.box.high = {high_.x, high_.y, high_.z};
  }

  void buildShared() {
    requireVertex(writeIndices(source_, triangles_, indices_));
    const bool isGiven = hasTangents();
    for (std::size_t i = 0; i < count_; ++i) {
      writePosition(i, read(source_.positions, i));
      const Float3 normal = normalised(read(source_.normals, i), {0, 0, 1});
      float* const vertex = floats_ + kVertexFloats * i;
      store(vertex + 3, normal);
      store(vertex + 6, isGiven ? normalised(read(source_.tangents, i), perpendicular(normal))
                                : perpendicular(normal));
    }
    finishBox();
    if (source_.coordinates.empty()) {
      std::memset(coordinates_, 0, sizeof(float) * 2 * count_);
      return;
    }
    for (std::size_t set = 0; set < sets_; ++set) {
      const Attribute& from = source_.coordinates[set];
      float* const to = coordinates_ + 2 * set * count_;
      if (from.component == Component::Float && from.stride == 2 * sizeof(float)) {
        std::memcpy(to, from.data, 2 * sizeof(float) * count_);
      } else {
        for (std::size_t i = 0; i < count_; ++i) from.read(i, to + 2 * i, 2);
      }
      makeFinite(to);
    }
  }

  void makeFinite(float* coordinates) const {
    for (std::size_t i = 0; i < 2 * count_; ++i) {
      if (!std::isfinite(coordinates[i])) coordinates[i] = 0;
    }
  }

  void buildFlat() {
    const Corners corners(source_);
    for (std::size_t i = 0; i < triangles_; ++i) {
      std::uint32_t from[3];
      corners.triangle(i, from);
      Float3 p[3];
      for (std::size_t corner = 0; corner < 3; ++corner) {
        requireVertex(from[corner]);
        p[corner] = read(source_.positions, from[corner]);
      }
      const Float3 normal = normalised(cross(p[1] - p[0], p[2] - p[0]), {0, 0, 1});
      const Float3 tangent = perpendicular(normal);
      for (std::size_t corner = 0; corner < 3; ++corner) {
        const std::size_t to = 3 * i + corner;
        indices_[to] = static_cast<std::uint32_t>(to);
        writePosition(to, p[corner]);
        store(floats_ + kVertexFloats * to + 3, normal);
        store(floats_ + kVertexFloats * to + 6, tangent);
        if (source_.coordinates.empty()) coordinates_[2 * to] = coordinates_[2 * to + 1] = 0;
        for (std::size_t set = 0; set < source_.coordinates.size(); ++set) {
          source_.coordinates[set].read(from[corner], coordinates_ + 2 * (set * count_ + to), 2);
        }
      }
    }
    for (std::size_t set = 0; set < sets_; ++set) makeFinite(coordinates_ + 2 * set * count_);
    finishBox();
  }

  // Leaves out the triangles with a vertex that is not finite, which no renderer can place.
  void leaveOut() {
    const auto isGood = [this](std::uint32_t vertex) {
      return isFinite(load(floats_ + kVertexFloats * vertex));
    };
    std::size_t kept = 0;
    for (std::size_t i = 0; i < triangles_; ++i) {
      const std::uint32_t* const corners = indices_ + 3 * i;
      if (!isGood(corners[0]) || !isGood(corners[1]) || !isGood(corners[2])) continue;
      std::memmove(indices_ + 3 * kept++, corners, 3 * sizeof(std::uint32_t));
    }
    notices_.add(source_.name + " has vertices that are not finite; " +
                 std::to_string(triangles_ - kept) + " of its triangles are left out");
    for (std::size_t i = 0; i < count_; ++i) {
      float* const vertex = floats_ + kVertexFloats * i;
      if (!isFinite(load(vertex))) store(vertex, {});
    }
    const float* const from = floats_;
    triangles_ = kept;
    place();
    const std::size_t behind = sizeof(float) * (kVertexFloats + 2 * sets_) * count_;
    std::memmove(floats_, from, behind);
    plan_.size = sizeof(std::uint32_t) * 3 * triangles_ + behind;
  }

  // The tangent of a vertex is the mean of the directions in which u increases on its triangles,
  // weighted by their areas.
  void computeTangents() {
    if (source_.coordinates.empty()) return;
    const std::size_t set = std::min(source_.tangentSet, sets_ - 1);
    const float* const uv = coordinates_ + 2 * set * count_;
    std::vector<Float3> sums(count_);
    for (std::size_t i = 0; i < triangles_; ++i) {
      const std::uint32_t* const corners = indices_ + 3 * i;
      const Float3 origin = load(floats_ + kVertexFloats * corners[0]);
      const Float3 a = load(floats_ + kVertexFloats * corners[1]) - origin;
      const Float3 b = load(floats_ + kVertexFloats * corners[2]) - origin;
      const float* const t0 = uv + 2 * std::size_t{corners[0]};
      const float* const t1 = uv + 2 * std::size_t{corners[1]};
      const float* const t2 = uv + 2 * std::size_t{corners[2]};
      const float v1 = t1[1] - t0[1], v2 = t2[1] - t0[1];
      const float area = (t1[0] - t0[0]) * v2 - (t2[0] - t0[0]) * v1;
      if (area == 0 || !std::isfinite(area)) continue;
      // The length of this vector is in proportion to the triangle's area.
      const Float3 along = normalised((a * v2 - b * v1) * (area < 0 ? -1.0F : 1.0F), {});
      const Float3 normal = cross(a, b);
      const Float3 weighted = along * std::sqrt(dot(normal, normal));
      if (!isFinite(weighted)) continue;
      for (std::size_t corner = 0; corner < 3; ++corner) {
        sums[corners[corner]] = sums[corners[corner]] + weighted;
      }
    }
    for (std::size_t i = 0; i < count_; ++i) {
      float* const vertex = floats_ + kVertexFloats * i;
      const Float3 normal = load(vertex + 3);
      const Float3 along = sums[i] - normal * dot(normal, sums[i]);
      store(vertex + 6, normalised(along, perpendicular(normal)));
    }
  }

  const MeshSource& source_;
  Notices& notices_;
  std::size_t vertices_;  // of the source
  std::size_t triangles_ = 0;
  std::size_t count_ = 0;  // vertices of the mesh
  std::size_t sets_ = 1;
  bool isFlat_ = false;
  bool areFinite_ = true;
  MeshPlan plan_;
  std::uint32_t* indices_ = nullptr;
  float* floats_ = nullptr;
  float* coordinates_ = nullptr;
  Float3 low_{std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(),
              std::numeric_limits<float>::infinity()};
  Float3 high_{-std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
               -std::numeric_limits<float>::infinity()};
};

}  // namespace

MeshPlan buildMesh(const MeshSource& source, Notices& notices) {
  return Builder(source, notices).build();
}

}  // namespace vrn_convert
