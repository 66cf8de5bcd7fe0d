#include "shading/microfacets.hpp"

#include <tbb/parallel_for.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <tuple>

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

// Returns how much of white light goes on at once, of what comes from a direction.
float albedo(AlbedoTable::Kind kind, float eta, float cosine, float alpha) {
  using Kind = AlbedoTable::Kind;
  constexpr std::uint32_t kPoints = 512;
  const Microfacets facets{alpha};
  // In this plane, sampleVisible() has its first axis perpendicular to it, however narrow the
  // distribution is.
  const Vec3 from{0, std::sqrt(std::max(0.0F, 1 - cosine * cosine)), cosine};
  double sum = 0;
  for (std::uint32_t i = 0; i < kPoints; ++i) {
    // The two sides of the plane of incidence are alike, so one is enough.
    const Vec2 u = evenPoint(i, kPoints);
    const Vec3 half = facets.sampleVisible(from, {u.x, 0.25F + 0.5F * u.y});
    const float c = dot(from, half);
    const float reflected = kind == Kind::Mirror ? 1 : fresnelDielectric(c, eta);
    const Vec3 mirrored = 2 * c * half - from;
    if (mirrored.z > 0) {
      sum += reflected * facets.shadowing(from, mirrored) / facets.masking(from);
    }
    if (kind != Kind::Boundary) continue;
    const float sine2 = std::max(0.0F, 1 - c * c) / (eta * eta);
    if (sine2 >= 1) continue;
    const Vec3 through = (c / eta - std::sqrt(1 - sine2)) * half - from * (1 / eta);
    if (through.z < 0) sum += (1 - reflected) * facets.masking(through);
  }
  return static_cast<float>(sum / kPoints);
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

// Returns the first of the two rows between which a width lies.
int AlbedoTable::rowOf(float alpha) {
  const float y = std::sqrt(std::clamp(alpha, 0.0F, 1.0F)) * (kWidths - 1);
  return std::min(static_cast<int>(y), kWidths - 2);
}

void AlbedoTable::fillRow(Kind kind, float eta, int width) {
  const float share = static_cast<float>(width) / (kWidths - 1);
  const float alpha = std::max(share * share, 1e-3F);
  auto& row = table_[static_cast<std::size_t>(width)];
  for (int i = 0; i < kCosines; ++i) {
    // The cosines are denser near 0, where albedos change most.
    const float place = static_cast<float>(i) / (kCosines - 1);
    row[static_cast<std::size_t>(i)] = albedo(kind, eta, std::max(place * place, 1e-4F), alpha);
  }
  constexpr int kSteps = 512;
  double sum = 0;
  for (int step = 0; step < kSteps; ++step) {
    const float cosine = (static_cast<float>(step) + 0.5F) / kSteps;
    const float x = std::sqrt(cosine) * (kCosines - 1);
    const auto i = static_cast<std::size_t>(x);
    const float t = x - static_cast<float>(i);
    sum += 2.0 * cosine * (row[i] * (1 - t) + row[i + 1] * t) / kSteps;
  }
  means_[static_cast<std::size_t>(width)] = static_cast<float>(sum);
}

std::vector<std::shared_ptr<const AlbedoTable>> AlbedoTable::of(
    const std::vector<Request>& requests) {
  static std::map<std::pair<Kind, float>, std::shared_ptr<AlbedoTable>> tables;
  static std::mutex mutex;
  const std::lock_guard<std::mutex> lock(mutex);
  std::vector<std::shared_ptr<const AlbedoTable>> result;
  std::vector<std::tuple<AlbedoTable*, const Request*, int>> missing;
  for (const Request& request : requests) {
    std::shared_ptr<AlbedoTable>& table = tables[{request.kind, request.eta}];
    if (!table) table = std::make_shared<AlbedoTable>();
    for (int row = rowOf(request.narrowest); row <= rowOf(request.widest) + 1; ++row) {
      const std::uint32_t bit = std::uint32_t{1} << row;
      if (table->rows_ & bit) continue;
      table->rows_ |= bit;
      missing.emplace_back(table.get(), &request, row);
    }
    result.push_back(table);
  }
  tbb::parallel_for(std::size_t{0}, missing.size(), [&missing](std::size_t i) {
    const auto& [table, request, row] = missing[i];
    table->fillRow(request->kind, request->eta, row);
  });
  return result;
}

float AlbedoTable::at(float cosine, float alpha) const {
  const float x = std::sqrt(std::clamp(cosine, 0.0F, 1.0F)) * (kCosines - 1);
  const float y = std::sqrt(std::clamp(alpha, 0.0F, 1.0F)) * (kWidths - 1);
  const int i = std::min(static_cast<int>(x), kCosines - 2);
  const int j = rowOf(alpha);
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
  const int j = rowOf(alpha);
  const float t = y - static_cast<float>(j);
  return means_[static_cast<std::size_t>(j)] * (1 - t) +
         means_[static_cast<std::size_t>(j) + 1] * t;
}

}  // namespace vrn_render
