#include "scene_plan/smooth_normals.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "scene_plan/transform.hpp"

namespace vrn_convert {
namespace {

Vector positionAt(const Attribute& positions, std::size_t vertex) {
  float p[3];
  positions.read(vertex, p, 3);
  return {p[0], p[1], p[2]};
}

// Gives the same number to all vertices at the same point.
std::vector<std::uint32_t> pointsOf(const Attribute& positions) {
  std::vector<std::uint32_t> order(positions.count);
  std::iota(order.begin(), order.end(), 0U);
  const auto less = [&](std::uint32_t a, std::uint32_t b) {
    // By their bits, which also order what is not a number.
    return std::memcmp(positions.at(a), positions.at(b), 3 * sizeof(float)) < 0;
  };
  std::sort(order.begin(), order.end(), less);
  std::vector<std::uint32_t> points(positions.count);
  std::uint32_t point = 0;
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (i > 0 && less(order[i - 1], order[i])) ++point;
    points[order[i]] = point;
  }
  return points;
}

}  // namespace

void addSmoothNormals(MeshSource& source, double angle, SmoothArrays& arrays) {
  const std::size_t corners = source.indices.count / 3 * 3;
  const std::vector<std::uint32_t> points = pointsOf(source.positions);
  const auto vertexOf = [&](std::size_t corner) { return source.indices.index(corner); };

  // The normal of each triangle, as long as twice its area, and with a length of 1.
  std::vector<Vector> areas(corners / 3), units(corners / 3);
  for (std::size_t i = 0; i < areas.size(); ++i) {
    const Vector origin = positionAt(source.positions, vertexOf(3 * i));
    areas[i] = cross(positionAt(source.positions, vertexOf(3 * i + 1)) - origin,
                     positionAt(source.positions, vertexOf(3 * i + 2)) - origin);
    if (!isFinite(areas[i])) areas[i] = {};
    units[i] = normalised(areas[i], {});
  }
  // The corners around each point, one point behind the other.
  std::vector<std::uint32_t> starts(source.positions.count + 1), around(corners);
  for (std::size_t i = 0; i < corners; ++i) ++starts[points[vertexOf(i)] + 1];
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  std::vector<std::uint32_t> ends(starts.begin(), starts.end() - 1);
  for (std::size_t i = 0; i < corners; ++i) {
    around[ends[points[vertexOf(i)]]++] = static_cast<std::uint32_t>(i);
  }

  const double least = std::cos(angle);
  // Around some points there are very many triangles. Beyond this number, all count for all.
  constexpr std::size_t kMost = 64;
  std::vector<Vector> normals(corners);
  for (std::size_t point = 0; point + 1 < starts.size(); ++point) {
    const std::size_t begin = starts[point], end = starts[point + 1];
    Vector all;
    for (std::size_t i = begin; i < end; ++i) all = all + areas[around[i] / 3];
    for (std::size_t i = begin; i < end; ++i) {
      const std::size_t own = around[i] / 3;
      Vector sum = all;
      if (end - begin <= kMost) {
        sum = {};
        for (std::size_t j = begin; j < end; ++j) {
          const std::size_t other = around[j] / 3;
          if (other == own || dot(units[own], units[other]) >= least) sum = sum + areas[other];
        }
      }
      normals[around[i]] = normalised(sum, normalised(areas[own], {0, 0, 1}));
    }
  }

  // A vertex for each normal that it has.
  struct Vertex {
    float normal[3];
    std::uint32_t number;
    std::uint32_t next;  // with the same origin
  };
  constexpr std::uint32_t kNone = ~0U;
  std::vector<std::uint32_t> first(source.positions.count, kNone), origins;
  std::vector<Vertex> made;
  arrays.indices.reserve(corners);
  for (std::size_t i = 0; i < corners; ++i) {
    const std::uint32_t origin = vertexOf(i);
    Vertex vertex{{static_cast<float>(normals[i].x), static_cast<float>(normals[i].y),
                   static_cast<float>(normals[i].z)},
                  static_cast<std::uint32_t>(made.size()),
                  first[origin]};
    std::uint32_t at = first[origin];
    while (at != kNone && !std::equal(vertex.normal, vertex.normal + 3, made[at].normal)) {
      at = made[at].next;
    }
    if (at == kNone) {
      at = vertex.number;
      first[origin] = at;
      made.push_back(vertex);
      origins.push_back(origin);
    }
    arrays.indices.push_back(at);
  }
  const auto copy = [&origins](Attribute& attribute, std::vector<float>& to, int lanes) {
    const auto size = static_cast<std::size_t>(lanes);
    to.resize(size * origins.size());
    for (std::size_t i = 0; i < origins.size(); ++i) {
      attribute.read(origins[i], to.data() + size * i, lanes);
    }
    attribute = {reinterpret_cast<const unsigned char*>(to.data()),
                 size * sizeof(float),
                 origins.size(),
                 Component::Float,
                 false,
                 lanes};
  };
  copy(source.positions, arrays.positions, 3);
  arrays.coordinates.resize(source.coordinates.size());
  for (std::size_t set = 0; set < source.coordinates.size(); ++set) {
    copy(source.coordinates[set], arrays.coordinates[set], 2);
  }
  arrays.normals.reserve(3 * made.size());
  for (const Vertex& vertex : made) {
    arrays.normals.insert(arrays.normals.end(), vertex.normal, vertex.normal + 3);
  }
  source.normals = {reinterpret_cast<const unsigned char*>(arrays.normals.data()),
                    3 * sizeof(float),
                    made.size(),
                    Component::Float,
                    false,
                    3};
  source.tangents = {};
  source.indices.data = reinterpret_cast<const unsigned char*>(arrays.indices.data());
  source.indices.count = arrays.indices.size();
  source.indices.stride = sizeof(std::uint32_t);
  source.indices.component = Component::UInt32;
}

}  // namespace vrn_convert
