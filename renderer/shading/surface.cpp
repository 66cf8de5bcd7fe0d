#include "shading/surface.hpp"

#include <cmath>

namespace vrn_render {
namespace {

constexpr float kLargestShare = 0.999999F;

// The approximation of Schlick: a metal reflects edge + (1 - edge) R.
float schlickEdge(float cosine) {
  const float a = std::clamp(1 - cosine, 0.0F, 1.0F);
  return a * a * a * a * a;
}

Vec3 cosineDirection(Vec2 u) {
  const float radius = std::sqrt(u.x);
  const Vec2 around = turnedBy(u.y);
  return {radius * around.x, radius * around.y, std::sqrt(std::max(0.0F, 1 - u.x))};
}

}  // namespace

std::vector<MaterialTables> makeMaterialTables(const SceneDescription& scene) {
  std::vector<MaterialTables> result(scene.materials.size());
  std::vector<AlbedoTable::Request> requests;
  std::vector<std::shared_ptr<const AlbedoTable>*> wanted;
  for (std::size_t i = 0; i < result.size(); ++i) {
    const MaterialDescription& material = scene.materials[i];
    const auto isZero = [](const NumberParameter& number) {
      return number.lookup.texture < 0 && number.value <= 0;
    };
    result[i].isDiffuse =
        !material.hasCoat && isZero(material.metallic) && isZero(material.transmission);
    result[i].ground = material.reflectance.value.mean();
    const Colours& colours = Colours::get();
    result[i].colour = colours.toRgb(material.reflectance.value * colours.daylight());
    result[i].usesCoordinates = material.normalMap.texture >= 0;
    for (const int texture :
         {material.reflectance.lookup.texture, material.emission.lookup.texture,
          material.roughness.lookup.texture, material.metallic.lookup.texture,
          material.transmission.lookup.texture, material.opacity.lookup.texture}) {
      result[i].usesCoordinates |= texture >= 0;
    }
    const auto isTextured = [](const NumberParameter& number) {
      return number.lookup.texture >= 0;
    };
    const auto isWhole = [&](const NumberParameter& number) {
      return !isTextured(number) && number.value >= 1;
    };
    const bool hasRough = isTextured(material.roughness);
    const float roughness = std::clamp(material.roughness.value, 0.0F, 1.0F);
    const float narrowest = hasRough ? 0 : roughness * roughness;
    const float widest = hasRough ? 1 : roughness * roughness;
    const bool isRough = widest >= kSmoothAlpha;
    const float eta = material.indexOfRefraction;
    const auto request = [&](AlbedoTable::Kind kind, float of,
                             std::shared_ptr<const AlbedoTable>& table) {
      requests.push_back({kind, of, narrowest, widest});
      wanted.push_back(&table);
    };
    if (material.hasCoat && !isWhole(material.metallic) && !isWhole(material.transmission)) {
      request(AlbedoTable::Kind::Coat, eta, result[i].coat);
    }
    if (!isRough) continue;
    if (!isZero(material.metallic)) request(AlbedoTable::Kind::Mirror, 1, result[i].mirror);
    if (!isZero(material.transmission) && !isWhole(material.metallic)) {
      request(AlbedoTable::Kind::Boundary, eta, result[i].outside);
      request(AlbedoTable::Kind::Boundary, 1 / eta, result[i].inside);
    }
  }
  const auto tables = AlbedoTable::of(requests);
  for (std::size_t i = 0; i < tables.size(); ++i) *wanted[i] = tables[i];
  return result;
}

Surface::Surface(const SceneDescription& scene, const MaterialDescription& material,
                 const MaterialTables& tables, const TextureCoordinates& coordinates, Vec3 normal,
                 Vec3 geometric, Vec3 view)
    : material_(material),
      tables_(tables),
      frame_(normal),
      geometric_(geometric),
      isInside_(dot(geometric, view) < 0) {
  if (isInside_) {
    geometric_ = -geometric;
    frame_ = Frame(-normal);
  }
  // An interpolated normal may turn away from the view; the geometry does not.
  if (dot(frame_.normal, view) <= 1e-4F) frame_ = Frame(geometric_);
  view_ = frame_.toLocal(view);
  view_.z = std::max(view_.z, 1e-5F);

  reflectance_ = &vrn_render::evaluate(scene, material.reflectance, coordinates, true, scratch_);
  const float ground = reflectance_ == &scratch_ ? reflectance_->mean() : tables.ground;
  if (tables.isDiffuse) {
    weights_[kDiffuse] = 1;
    shares_[kDiffuse] = ground > 0 ? 1.0F : 0.0F;
    isSmooth_ = true;
    return;
  }
  const auto number = [&](const NumberParameter& parameter) {
    return std::clamp(vrn_render::evaluate(scene, parameter, coordinates), 0.0F, 1.0F);
  };
  const float roughness = number(material.roughness);
  const float metallic = number(material.metallic);
  const float transmission = number(material.transmission);
  alpha_ = roughness * roughness;
  isSmooth_ = alpha_ < kSmoothAlpha;
  eta_ = isInside_ ? 1 / material.indexOfRefraction : material.indexOfRefraction;

  weights_[kMetal] = metallic;
  weights_[kBoundary] = (1 - metallic) * transmission;
  weights_[kDiffuse] = (1 - metallic) * (1 - transmission);
  weights_[kCoat] = material.hasCoat ? weights_[kDiffuse] : 0;

  const float coated = tables_.coat ? tables_.coat->at(view_.z, alpha_) : 0;
  shares_[kDiffuse] = weights_[kDiffuse] * (1 - coated) * ground;
  shares_[kCoat] = weights_[kCoat] * coated;
  shares_[kMetal] = weights_[kMetal] * std::max(ground, 0.05F);
  shares_[kBoundary] = weights_[kBoundary];
  float sum = 0;
  for (const float share : shares_) sum += share;
  for (float& share : shares_) share = sum > 0 ? share / sum : 0;
}

Rgb Surface::colour() const {
  if (reflectance_ != &scratch_) return tables_.colour;
  const Colours& colours = Colours::get();
  return colours.toRgb(*reflectance_ * colours.daylight());
}

float Surface::evaluateLobes(Vec3 view, Vec3 to, std::uint32_t kinds, Scattering& value) const {
  value = Scattering();
  float density = 0;
  const float cosine = std::abs(to.z);
  if (tables_.isDiffuse) {
    if (!(to.z > 0) || !(kinds & kDiffuseRay) || shares_[kDiffuse] <= 0) return 0;
    return value.once = cosine * (1 / kPi);
  }
  if (to.z > 0) {
    if ((kinds & kDiffuseRay) && shares_[kDiffuse] > 0) {
      float scale = weights_[kDiffuse] * cosine / kPi;
      if (weights_[kCoat] > 0) {
        // What the coat does not reflect on the way in and out, so that a white ground loses
        // nothing, and that view and light may be exchanged.
        const AlbedoTable& coat = *tables_.coat;
        scale *= (1 - coat.at(view.z, alpha_)) * (1 - coat.at(to.z, alpha_)) /
                 std::max(1e-4F, 1 - coat.mean(alpha_));
      }
      value.once += scale;
      density += shares_[kDiffuse] * cosine / kPi;
    }
    if ((kinds & kReflectionRay) && !isSmooth_) {
      const Microfacets facets{alpha_};
      const Vec3 half = normalised(view + to);
      const float visible = facets.visibleDensity(view, half);
      const float c = dot(view, half);
      const float shape = facets.density(half) * facets.shadowing(view, to) / (4 * view.z);
      const float sampled = visible / (4 * std::max(c, 1e-7F));
      if (shares_[kCoat] > 0) {
        value.white += weights_[kCoat] * fresnelDielectric(c, eta_ < 1 ? 1 / eta_ : eta_) * shape;
        density += shares_[kCoat] * sampled;
      }
      if (shares_[kMetal] > 0) {
        // Light that is scattered more than once is reflected more than once, too.
        const float once = tables_.mirror->at(view.z, alpha_);
        const float more = (1 - once) / std::max(once, 1e-3F);
        const float edge = schlickEdge(c);
        const float scale = weights_[kMetal] * shape;
        value.white += scale * edge;
        value.once += scale * (1 - edge + edge * more);
        value.twice += scale * (1 - edge) * more;
        density += shares_[kMetal] * sampled;
      }
      if (shares_[kBoundary] > 0 && !material_.isDispersive) {
        const float whole = (isInside_ ? tables_.inside : tables_.outside)->at(view.z, alpha_);
        const float reflected = fresnelDielectric(c, eta_);
        value.white += weights_[kBoundary] * reflected * shape / std::max(whole, 1e-3F);
        density += shares_[kBoundary] * reflected * sampled;
      }
    }
  } else if (to.z < 0 && (kinds & kRefractionRay) && !isSmooth_ && shares_[kBoundary] > 0 &&
             !material_.isDispersive) {
    const Microfacets facets{alpha_};
    Vec3 half = normalised(view + to * eta_);
    if (half.z < 0) half = -half;
    const float c = dot(view, half);
    const float d = dot(to, half);
    if (c > 0 && d < 0) {
      const float reflected = fresnelDielectric(c, eta_);
      const float root = c + eta_ * d;
      const float turn = eta_ * eta_ * std::abs(d) / std::max(root * root, 1e-12F);
      const float whole = (isInside_ ? tables_.inside : tables_.outside)->at(view.z, alpha_);
      const float shape = (1 - reflected) * facets.density(half) *
                          facets.transmissionShadowing(view, to) * c * turn / view.z;
      value.once += weights_[kBoundary] * shape / std::max(whole, 1e-3F);
      density += shares_[kBoundary] * (1 - reflected) * facets.visibleDensity(view, half) * turn;
    }
  }
  return density;
}

float Surface::evaluate(Vec3 direction, std::uint32_t kinds, Scattering& value) const {
  const Vec3 to = frame_.toLocal(direction);
  // Light must not leak through by the difference of the two normals.
  if ((dot(direction, geometric_) > 0) != (to.z > 0)) {
    value = Scattering();
    return 0;
  }
  return evaluateLobes(view_, to, kinds, value);
}

Scattered Surface::sampleBoundary(Vec3 view, float choice, Vec2 u, int band) const {
  Scattered out;
  const Microfacets facets{alpha_};
  const Vec3 half = isSmooth_ ? Vec3{0, 0, 1} : facets.sampleVisible(view, u);
  const float c = dot(view, half);
  float eta = eta_;
  if (material_.isDispersive) {
    // One band goes on, for all of them would part here. The choice also selects what happens.
    out.band = band;
    if (band < 0) {
      const float at = choice * kBands;
      out.band = std::min(static_cast<int>(at), kBands - 1);
      choice = std::min(at - static_cast<float>(out.band), kLargestShare);
    }
    eta = isInside_ ? 1 / material_.indices[out.band] : material_.indices[out.band];
  }
  const float reflected = fresnelDielectric(c, eta);
  Vec3 to;
  const bool isReflected = choice < reflected;
  if (isReflected) {
    to = 2 * c * half - view;
    out.kind = kReflectionRay;
  } else {
    const float sine2 = std::max(0.0F, 1 - c * c) / (eta * eta);
    to = (c / eta - std::sqrt(std::max(0.0F, 1 - sine2))) * half - view * (1 / eta);
    out.kind = kRefractionRay;
  }
  if (isReflected != (to.z > 0)) {
    out.kind = 0;
    return out;
  }
  out.direction = frame_.toWorld(normalised(to));
  if ((dot(out.direction, geometric_) > 0) != isReflected) {
    out.kind = 0;
    return out;
  }
  if (!isSmooth_ && !material_.isDispersive) {
    out.density = 1;  // the caller evaluates all lobes
    return out;
  }
  out.isSingular = true;
  float scale = 1;
  if (!isSmooth_) {
    const float whole = (isInside_ ? tables_.inside : tables_.outside)->at(view.z, alpha_);
    const float seen =
        isReflected ? facets.shadowing(view, to) / facets.masking(view) : facets.masking(to);
    scale = seen / std::max(whole, 1e-3F);
  }
  // One band stands for all.
  if (out.band >= 0 && band < 0) scale *= kBands;
  (isReflected ? out.weight.white : out.weight.once) = scale;
  return out;
}

Scattered Surface::sample(float choice, Vec2 u, int band) const {
  Scattered out;
  if (tables_.isDiffuse) {
    const Vec3 to = cosineDirection(u);
    out.direction = frame_.toWorld(to);
    if (shares_[kDiffuse] <= 0 || !(to.z > 0) || dot(out.direction, geometric_) <= 0) return out;
    out.kind = kDiffuseRay;
    out.density = to.z * (1 / kPi);
    out.weight.once = 1;
    return out;
  }
  std::size_t lobe = 0;
  while (lobe < kLobes && choice >= shares_[lobe]) choice -= shares_[lobe++];
  if (lobe == kLobes) {
    // Rounding, or a black surface.
    lobe = kLobes - 1;
    while (lobe > 0 && shares_[lobe] <= 0) --lobe;
    choice = 0;
  }
  if (shares_[lobe] <= 0) return out;
  choice = std::clamp(choice / shares_[lobe], 0.0F, kLargestShare);

  Vec3 to;
  if (lobe == kDiffuse) {
    to = cosineDirection(u);
    out.kind = kDiffuseRay;
    out.direction = frame_.toWorld(to);
  } else if (lobe == kBoundary) {
    out = sampleBoundary(view_, choice, u, band);
    if (out.kind == 0) return out;
    if (out.isSingular) {
      out.weight *= weights_[kBoundary] / shares_[kBoundary];
      return out;
    }
    to = frame_.toLocal(out.direction);
  } else {
    const Microfacets facets{alpha_};
    const Vec3 half = isSmooth_ ? Vec3{0, 0, 1} : facets.sampleVisible(view_, u);
    to = 2 * dot(view_, half) * half - view_;
    out.kind = kReflectionRay;
    out.direction = frame_.toWorld(to);
    // Below the surface, the density would be that of the boundary alone.
    if (to.z <= 0) out.kind = 0;
    if (isSmooth_) {
      out.isSingular = true;
      if (lobe == kMetal) {
        const float edge = schlickEdge(view_.z);
        out.weight = {edge, 1 - edge, 0};
      } else {
        out.weight.white = fresnelDielectric(view_.z, eta_ < 1 ? 1 / eta_ : eta_);
      }
      out.weight *= weights_[lobe] / shares_[lobe];
      if (dot(out.direction, geometric_) <= 0) out.kind = 0;
      return out;
    }
  }
  if (out.kind == 0) return out;
  if ((dot(out.direction, geometric_) > 0) != (to.z > 0) || to.z == 0) {
    out.kind = 0;
    return out;
  }
  out.density = evaluateLobes(view_, to, kScatteredRays, out.weight);
  if (!(out.density > 0)) {
    out.kind = 0;
    return out;
  }
  out.weight *= 1 / out.density;
  return out;
}

}  // namespace vrn_render
