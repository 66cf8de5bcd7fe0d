#include "shading/microfacets.hpp"

#include <cstdint>
#include <map>
#include <mutex>

namespace vrn_render {
namespace {

float square(float a) { return a * a; }

// Points that cover the unit square evenly.
Vec2 evenPoint(std::uint32_t index, std::uint32_t count) {
  std::uint32_t reversed = index;
  reversed = (reversed << 16) | (reversed >> 16);
  reversed = ((reversed & 0x00ff00ffU) << 8) | ((reversed & 0xff00ff00U) >> 8);
  reversed = ((reversed & 0x0f0f0f0fU) << 4) | ((reversed & 0xf0f0f0f0U) >> 4);
  reversed = ((reversed & 0x33333333U) << 2) | ((reversed & 0xccccccccU) >> 2);
  reversed = ((reversed & 0x55555555U) << 1) | ((reversed & 0xaaaaaaaaU) >> 1);
  return {(static_cast<float>(index) + 0.5F) / static_cast<float>(count),
          std::min(static_cast<float>(reversed) * 0x1p-32F, 0x1.fffffep-1F)};
}

Vec3 directionAt(float cosine) {
  return {std::sqrt(std::max(0.0F, 1 - cosine * cosine)), 0, cosine};
}

}  // namespace

float fresnelDielectric(float cosine, float eta) {
  cosine = std::clamp(cosine, 0.0F, 1.0F);
  const float sine2 = (1 - cosine * cosine) / (eta * eta);
  if (sine2 >= 1) return 1;
  const float other = std::sqrt(1 - sine2);
  const float parallel = (eta * cosine - other) / (eta * cosine + other);
  const float perpendicular = (cosine - eta * other) / (cosine + eta * other);
  return 0.5F * (square(parallel) + square(perpendicular));
}

float Microfacets::density(Vec3 normal) const {
  if (normal.z <= 0) return 0;
  const float a2 = alpha * alpha;
  // In this form, a narrow distribution keeps its digits near its peak.
  const float sine2 = normal.x * normal.x + normal.y * normal.y;
  const float t = sine2 + a2 * normal.z * normal.z;
  return a2 / (kPi * t * t);
}

float Microfacets::maskedFraction(Vec3 d) const {
  const float cosine2 = d.z * d.z;
  if (cosine2 <= 0) return 1e10F;
  const float tangent2 = (d.x * d.x + d.y * d.y) / cosine2;
  return 0.5F * (std::sqrt(1 + alpha * alpha * tangent2) - 1);
}

float Microfacets::shadowing(Vec3 a, Vec3 b) const {
  return 1 / (1 + maskedFraction(a) + maskedFraction(b));
}

// Below the surface, heights are not correlated in the same way; the simple product is used, which
// never exceeds the masking of one direction.
float Microfacets::transmissionShadowing(Vec3 a, Vec3 b) const { return masking(a) * masking(b); }

Vec3 Microfacets::sampleVisible(Vec3 from, Vec2 u) const {
  const Vec3 stretched = normalised({alpha * from.x, alpha * from.y, from.z});
  const Frame frame(stretched);
  const float radius = std::sqrt(u.x);
  const Vec2 around = turnedBy(u.y);
  const float x = radius * around.x;
  float y = radius * around.y;
  // `frame` turns around its normal freely, so its second axis is brought into the plane of z.
  const Vec3 side =
      std::abs(stretched.z) < 0.9999F ? normalised(cross({0, 0, 1}, stretched)) : frame.tangent;
  const Vec3 up = cross(stretched, side);
  const float s = 0.5F * (1 + stretched.z);
  y = (1 - s) * std::sqrt(std::max(0.0F, 1 - x * x)) + s * y;
  const float z = std::sqrt(std::max(0.0F, 1 - x * x - y * y));
  const Vec3 normal = x * side + y * up + z * stretched;
  return normalised({alpha * normal.x, alpha * normal.y, std::max(normal.z, 1e-7F)});
}

float Microfacets::visibleDensity(Vec3 from, Vec3 normal) const {
  return masking(from) * std::max(0.0F, dot(from, normal)) * density(normal) / from.z;
}

template <typename Albedo>
AlbedoTable::AlbedoTable(Albedo albedo) {
  for (int width = 0; width < kWidths; ++width) {
    const float share = static_cast<float>(width) / (kWidths - 1);
    const float alpha = std::max(share * share, 1e-3F);
    auto& row = table_[static_cast<std::size_t>(width)];
    for (int i = 0; i < kCosines; ++i) {
      // The cosines are denser near 0, where albedos change most.
      const float place = static_cast<float>(i) / (kCosines - 1);
      row[static_cast<std::size_t>(i)] = albedo(std::max(place * place, 1e-4F), alpha);
    }
  }
  for (int width = 0; width < kWidths; ++width) {
    const float share = static_cast<float>(width) / (kWidths - 1);
    constexpr int kSteps = 512;
    double sum = 0;
    for (int i = 0; i < kSteps; ++i) {
      const float cosine = (static_cast<float>(i) + 0.5F) / kSteps;
      sum += 2.0 * cosine * at(cosine, share * share) / kSteps;
    }
    means_[static_cast<std::size_t>(width)] = static_cast<float>(sum);
  }
}

float AlbedoTable::at(float cosine, float alpha) const {
  const float x = std::sqrt(std::clamp(cosine, 0.0F, 1.0F)) * (kCosines - 1);
  const float y = std::sqrt(std::clamp(alpha, 0.0F, 1.0F)) * (kWidths - 1);
  const int i = std::min(static_cast<int>(x), kCosines - 2);
  const int j = std::min(static_cast<int>(y), kWidths - 2);
  const float s = x - static_cast<float>(i);
  const float t = y - static_cast<float>(j);
  const auto entry = [this](int row, int column) {
    return table_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
  };
  return (entry(j, i) * (1 - s) + entry(j, i + 1) * s) * (1 - t) +
         (entry(j + 1, i) * (1 - s) + entry(j + 1, i + 1) * s) * t;
}

float AlbedoTable::mean(float alpha) const {
  const float y = std::sqrt(std::clamp(alpha, 0.0F, 1.0F)) * (kWidths - 1);
  const int j = std::min(static_cast<int>(y), kWidths - 2);
  const float t = y - static_cast<float>(j);
  return means_[static_cast<std::size_t>(j)] * (1 - t) +
         means_[static_cast<std::size_t>(j) + 1] * t;
}

const AlbedoTable& AlbedoTable::ofMirror() {
  static const AlbedoTable table([](float cosine, float alpha) {
    constexpr std::uint32_t kPoints = 1024;
    const Microfacets facets{alpha};
    const Vec3 from = directionAt(cosine);
    double sum = 0;
    for (std::uint32_t i = 0; i < kPoints; ++i) {
      const Vec3 half = facets.sampleVisible(from, evenPoint(i, kPoints));
      const Vec3 to = 2 * dot(from, half) * half - from;
      if (to.z > 0) sum += facets.shadowing(from, to) / facets.masking(from);
    }
    return static_cast<float>(sum / kPoints);
  });
  return table;
}

namespace {

// A table for each index of refraction, as long as the program runs.
template <typename Make>
std::shared_ptr<const AlbedoTable> remembered(
    std::map<float, std::shared_ptr<const AlbedoTable>>& tables, float eta, Make make) {
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  auto& table = tables[eta];
  if (!table) table = make();
  return table;
}

}  // namespace

std::shared_ptr<const AlbedoTable> AlbedoTable::ofCoat(float eta) {
  static std::map<float, std::shared_ptr<const AlbedoTable>> tables;
  return remembered(tables, eta, [eta] {
    return std::shared_ptr<const AlbedoTable>(new AlbedoTable([eta](float cosine, float alpha) {
      constexpr std::uint32_t kPoints = 1024;
      const Microfacets facets{alpha};
      const Vec3 from = directionAt(cosine);
      double sum = 0;
      for (std::uint32_t i = 0; i < kPoints; ++i) {
        const Vec3 half = facets.sampleVisible(from, evenPoint(i, kPoints));
        const Vec3 to = 2 * dot(from, half) * half - from;
        if (to.z <= 0) continue;
        sum += fresnelDielectric(dot(from, half), eta) * facets.shadowing(from, to) /
               facets.masking(from);
      }
      return static_cast<float>(sum / kPoints);
    }));
  });
}

std::shared_ptr<const AlbedoTable> AlbedoTable::ofBoundary(float eta) {
  static std::map<float, std::shared_ptr<const AlbedoTable>> tables;
  return remembered(tables, eta, [eta] {
    return std::shared_ptr<const AlbedoTable>(new AlbedoTable([eta](float cosine, float alpha) {
      constexpr std::uint32_t kPoints = 1024;
      const Microfacets facets{alpha};
      const Vec3 from = directionAt(cosine);
      double sum = 0;
      for (std::uint32_t i = 0; i < kPoints; ++i) {
        const Vec3 half = facets.sampleVisible(from, evenPoint(i, kPoints));
        const float c = dot(from, half);
        const float reflected = fresnelDielectric(c, eta);
        const Vec3 mirrored = 2 * c * half - from;
        if (mirrored.z > 0)
          sum += reflected * facets.shadowing(from, mirrored) / facets.masking(from);
        const float sine2 = std::max(0.0F, 1 - c * c) / (eta * eta);
        if (sine2 >= 1) continue;
        const Vec3 through = (c / eta - std::sqrt(1 - sine2)) * half - from * (1 / eta);
        if (through.z < 0) sum += (1 - reflected) * facets.masking(through);
      }
      return static_cast<float>(sum / kPoints);
    }));
  });
}

}  // namespace vrn_render
