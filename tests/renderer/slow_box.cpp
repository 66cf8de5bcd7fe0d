#include "slow_box.hpp"

#include <cmath>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>

namespace {

constexpr int kCount = 61;
using Bands = std::array<double, kCount>;

struct V {
  double x, y, z;
};
V operator+(V a, V b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
V operator-(V a, V b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
V operator*(V a, double s) { return {a.x * s, a.y * s, a.z * s}; }
double dotOf(V a, V b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
V crossOf(V a, V b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
V unit(V a) { return a * (1 / std::sqrt(dotOf(a, a))); }

using Row = std::vector<std::string>;

std::vector<Row> readTable(const std::string& name) {
  std::ifstream stream(std::string(BOX_DATA) + "/cornell_box_" + name + ".csv");
  if (!stream) throw std::runtime_error("there is no table " + name);
  std::vector<Row> rows;
  std::string line;
  std::getline(stream, line);
  while (std::getline(stream, line)) {
    std::istringstream cells(line);
    Row row;
    std::string cell;
    while (std::getline(cells, cell, ',')) row.push_back(cell);
    if (!row.empty()) rows.push_back(row);
  }
  return rows;
}

struct Triangle {
  V corner, edge1, edge2, normal;
  int object;
};

class Box {
 public:
  Box() {
    readSpectra();
    readGeometry();
  }

  std::vector<SlowObject> render(int width, int height, int samples, int bounces, unsigned seed) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> uniform(0, 1);
    const V eye = {0.278, 0.273, -0.8};
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        for (int sample = 0; sample < samples; ++sample) {
          // The camera looks along z, and x increases to its left.
          const double right = ((x + uniform(random)) / width - 0.5) * 0.025;
          const double up = (0.5 - (y + uniform(random)) / height) * 0.025;
          trace(eye, unit({-right, up, 0.035}), bounces, random);
        }
      }
    }
    return objects_;
  }

 private:
  void readSpectra() {
    const std::vector<Row> rows = readTable("reflectance");
    for (int material = 0; material < 3; ++material) {
      for (int band = 0; band < kCount; ++band) {
        // Each row holds for 4 nm.
        double sum = 0;
        const double begin = 400 + 5 * band;
        for (const Row& row : rows) {
          const double from = std::max(begin, std::stod(row[0]));
          const double to = std::min(begin + 5, std::stod(row[0]) + 4);
          if (to > from) {
            sum += (to - from) * std::stod(row[static_cast<std::size_t>(material) + 1]) / 5;
          }
        }
        reflectances_[static_cast<std::size_t>(material)][static_cast<std::size_t>(band)] = sum;
      }
    }
    reflectances_[3].fill(0.78);
    const std::vector<Row> lamp = readTable("light");
    for (int band = 0; band < kCount; ++band) {
      const double middle = 402.5 + 5 * band;
      double amplitude = 0;
      for (std::size_t i = 0; i + 1 < lamp.size(); ++i) {
        const double a = std::stod(lamp[i][0]), b = std::stod(lamp[i + 1][0]);
        if (middle < a || middle >= b) continue;
        const double t = (middle - a) / (b - a);
        amplitude = std::stod(lamp[i][1]) * (1 - t) + std::stod(lamp[i + 1][1]) * t;
      }
      emission_[static_cast<std::size_t>(band)] = amplitude;
    }
  }

  void readGeometry() {
    const std::vector<Row> rows = readTable("geometry");
    const std::map<std::string, int> materials{
        {"white", 0}, {"green", 1}, {"red", 2}, {"light", 3}};
    for (std::size_t i = 0; i + 3 < rows.size(); i += 4) {
      const std::string& name = rows[i][0];
      if (objects_.empty() || objects_.back().name != name) {
        objects_.push_back({});
        objects_.back().name = name;
        materialOf_.push_back(materials.at(rows[i][2]));
      }
      V corners[4];
      for (std::size_t k = 0; k < 4; ++k) {
        const Row& row = rows[i + k];
        corners[k] = V{std::stod(row[4]), std::stod(row[5]), std::stod(row[6])} * 0.001;
        if (name == "light") corners[k].y -= 0.0005;
      }
      for (const auto& [b, c] : {std::pair{1, 2}, std::pair{2, 3}}) {
        Triangle t{};
        t.corner = corners[0];
        t.edge1 = corners[b] - corners[0];
        t.edge2 = corners[c] - corners[0];
        t.normal = unit(crossOf(t.edge1, t.edge2));
        t.object = static_cast<int>(objects_.size()) - 1;
        triangles_.push_back(t);
      }
    }
  }

  static bool meets(const Triangle& t, V origin, V direction, double& distance) {
    const V p = crossOf(direction, t.edge2);
    const double determinant = dotOf(t.edge1, p);
    if (determinant == 0) return false;
    const V s = origin - t.corner;
    const double u = dotOf(s, p) / determinant;
    if (u < 0 || u > 1) return false;
    const V q = crossOf(s, t.edge1);
    const double v = dotOf(direction, q) / determinant;
    if (v < 0 || u + v > 1) return false;
    const double found = dotOf(t.edge2, q) / determinant;
    if (found <= 1e-6 || found >= distance) return false;
    distance = found;
    return true;
  }

  void trace(V origin, V direction, int bounces, std::mt19937_64& random) {
    std::uniform_real_distribution<double> uniform(0, 1);
    Bands throughput, radiance{};
    throughput.fill(1);
    int first = -1;
    for (int bounce = 0;; ++bounce) {
      double distance = 1e30, lampDistance = 1e30;
      const Triangle* hit = nullptr;
      bool seesLamp = false;
      for (const Triangle& t : triangles_) {
        const bool isLamp = materialOf_[static_cast<std::size_t>(t.object)] == 3;
        if (isLamp && bounce > 0) {
          // The lamp does not stop light that comes from a surface, but shines on its lower side.
          if (meets(t, origin, direction, lampDistance)) seesLamp = dotOf(t.normal, direction) < 0;
        } else if (meets(t, origin, direction, distance)) {
          hit = &t;
        }
      }
      const bool isLit = seesLamp && lampDistance < distance;
      const bool isLamp = hit != nullptr && bounce == 0 &&
                          materialOf_[static_cast<std::size_t>(hit->object)] == 3 &&
                          dotOf(hit->normal, direction) < 0;
      if (isLit || isLamp) {
        for (std::size_t i = 0; i < kCount; ++i) radiance[i] += throughput[i] * emission_[i];
      }
      if (hit == nullptr) break;
      if (bounce == 0) first = hit->object;
      if (bounce == bounces) break;
      const Bands& reflectance = reflectances_[static_cast<std::size_t>(
          materialOf_[static_cast<std::size_t>(hit->object)])];
      for (std::size_t i = 0; i < kCount; ++i) throughput[i] *= reflectance[i];
      V n = hit->normal;
      if (dotOf(n, direction) > 0) n = n * -1;
      origin = origin + direction * distance;
      // A point on the unit sphere around the tip of the normal gives a cosine.
      const double z = 1 - 2 * uniform(random);
      const double r = std::sqrt(1 - z * z);
      const double angle = 2 * M_PI * uniform(random);
      direction = unit(n + V{r * std::cos(angle), r * std::sin(angle), z});
    }
    if (first < 0) return;
    SlowObject& object = objects_[static_cast<std::size_t>(first)];
    double brightness = 0;
    for (std::size_t i = 0; i < kCount; ++i) {
      object.sum[i] += radiance[i];
      brightness += radiance[i] / kCount;
    }
    object.count += 1;
    object.brightness += brightness;
    object.squares += brightness * brightness;
  }

  std::array<Bands, 4> reflectances_{};
  Bands emission_{};
  std::vector<Triangle> triangles_;
  std::vector<SlowObject> objects_;
  std::vector<int> materialOf_;
};

}  // namespace

std::vector<SlowObject> renderSlowBox(int width, int height, int samples, int bounces,
                                      unsigned seed) {
  return Box().render(width, height, samples, bounces, seed);
}
