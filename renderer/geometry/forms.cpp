#include "geometry/forms.hpp"

#include <cmath>
#include <cstdint>
#include <utility>

namespace vrn_render {
namespace {

constexpr float kRadius = 0.5F;

struct FlatForm {
  std::vector<std::uint32_t> indices;
  std::vector<float> vertices, coordinates;
  MeshDescription mesh;

  void addFace(Vec3 centre, Vec3 right, Vec3 up) {
    const auto first = static_cast<std::uint32_t>(vertices.size() / 9);
    const Vec3 normal = normalised(cross(right, up));
    const float uv[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
    for (const auto& corner : uv) {
      const Vec3 p = centre + right * (corner[0] - 0.5F) + up * (corner[1] - 0.5F);
      for (const Vec3& v : {p, normal, right}) vertices.insert(vertices.end(), {v.x, v.y, v.z});
      coordinates.insert(coordinates.end(), {corner[0], corner[1]});
    }
    for (const std::uint32_t corner : {0U, 1U, 2U, 0U, 2U, 3U}) indices.push_back(first + corner);
  }
  void finish() {
    // The renderer reads whole vectors, so there must be bytes behind the last vertex.
    vertices.reserve(vertices.size() + 8);
    mesh.indices = indices.data();
    mesh.vertices = vertices.data();
    mesh.coordinates = coordinates.data();
    mesh.triangles = static_cast<std::uint32_t>(indices.size() / 3);
    mesh.vertexCount = static_cast<std::uint32_t>(vertices.size() / 9);
  }
};

struct FormRay {
  Vec3 origin, direction;
  float near, far;
};

struct FormHit {
  float distance;
  Vec3 normal;
};

bool within(const FormRay& ray, float distance) {
  return distance > ray.near && distance < ray.far;
}

// Reports the nearest of up to three distances. Returns how many there are.
int meetDisk(const FormRay& ray, float height, float side, FormHit* hits) {
  if (ray.direction.z == 0) return 0;
  const float t = (height - ray.origin.z) / ray.direction.z;
  const Vec3 p = ray.origin + t * ray.direction;
  if (!(p.x * p.x + p.y * p.y <= kRadius * kRadius) || !within(ray, t)) return 0;
  hits[0] = {t, {0, 0, side}};
  return 1;
}

// Solves a t^2 + 2 h t + c = 0 without a loss of digits.
int roots(float a, float h, float c, float* t) {
  const float discriminant = h * h - a * c;
  if (!(discriminant >= 0) || a == 0) return 0;
  const float q = -(h + std::copysign(std::sqrt(discriminant), h));
  t[0] = q / a;
  t[1] = q != 0 ? c / q : t[0];
  return 2;
}

int meetSphere(const FormRay& ray, FormHit* hits) {
  // From the point nearest to the centre, so that far origins keep their digits.
  const float a = dot(ray.direction, ray.direction);
  const float middle = -dot(ray.origin, ray.direction) / a;
  const Vec3 nearest = ray.origin + middle * ray.direction;
  const float rest = kRadius * kRadius - dot(nearest, nearest);
  if (!(rest >= 0)) return 0;
  const float half = std::sqrt(rest / a);
  int count = 0;
  for (const float t : {middle - half, middle + half}) {
    if (!within(ray, t)) continue;
    hits[count++] = {t, ray.origin + t * ray.direction};
  }
  return count;
}

int meetCylinder(const FormRay& ray, FormHit* hits) {
  int count = meetDisk(ray, kRadius, 1, hits);
  count += meetDisk(ray, -kRadius, -1, hits + count);
  const Vec3& o = ray.origin;
  const Vec3& d = ray.direction;
  float t[2];
  const int found = roots(d.x * d.x + d.y * d.y, o.x * d.x + o.y * d.y,
                          o.x * o.x + o.y * o.y - kRadius * kRadius, t);
  for (int i = 0; i < found; ++i) {
    const Vec3 p = o + t[i] * d;
    if (std::abs(p.z) <= kRadius && within(ray, t[i])) hits[count++] = {t[i], {p.x, p.y, 0}};
  }
  return count;
}

int meet(Form form, const FormRay& ray, FormHit* hits) {
  switch (form) {
    case Form::Disk:
      return meetDisk(ray, 0, 1, hits);
    case Form::Sphere:
      return meetSphere(ray, hits);
    case Form::Cylinder:
      return meetCylinder(ray, hits);
    default:
      return 0;
  }
}

// A code of a form as the data pointer of a geometry.
const Form kForms[] = {Form::Mesh,   Form::Rectangle, Form::Disk,
                       Form::Sphere, Form::Cylinder,  Form::Cube};

void bounds(const RTCBoundsFunctionArguments* arguments) {
  const Form form = *static_cast<const Form*>(arguments->geometryUserPtr);
  RTCBounds& box = *arguments->bounds_o;
  box.lower_x = box.lower_y = box.lower_z = -kRadius;
  box.upper_x = box.upper_y = box.upper_z = kRadius;
  if (form == Form::Disk) box.lower_z = box.upper_z = 0;
}

FormRay rayOf(RTCRayN* ray, unsigned count, unsigned lane) {
  return {{RTCRayN_org_x(ray, count, lane), RTCRayN_org_y(ray, count, lane),
           RTCRayN_org_z(ray, count, lane)},
          {RTCRayN_dir_x(ray, count, lane), RTCRayN_dir_y(ray, count, lane),
           RTCRayN_dir_z(ray, count, lane)},
          RTCRayN_tnear(ray, count, lane),
          RTCRayN_tfar(ray, count, lane)};
}

// Only single rays are traced, so a packet has one lane.
template <typename Arguments>
void makeHit(const Arguments* arguments, const FormHit& found, RTCHit& hit) {
  hit.Ng_x = found.normal.x;
  hit.Ng_y = found.normal.y;
  hit.Ng_z = found.normal.z;
  hit.u = hit.v = 0;
  hit.primID = arguments->primID;
  hit.geomID = arguments->geomID;
  hit.instID[0] = arguments->context->instID[0];
}

void sortByDistance(FormHit* hits, int count) {
  for (int i = 1; i < count; ++i) {
    for (int j = i; j > 0 && hits[j].distance < hits[j - 1].distance; --j) {
      std::swap(hits[j], hits[j - 1]);
    }
  }
}

void intersectForm(const RTCIntersectFunctionNArguments* arguments) {
  if (arguments->valid[0] == 0) return;
  RTCRayN* const ray = RTCRayHitN_RayN(arguments->rayhit, arguments->N);
  RTCHitN* const hit = RTCRayHitN_HitN(arguments->rayhit, arguments->N);
  FormHit hits[4];
  const int count = meet(*static_cast<const Form*>(arguments->geometryUserPtr),
                         rayOf(ray, arguments->N, 0), hits);
  sortByDistance(hits, count);
  for (int i = 0; i < count; ++i) {
    const float before = RTCRayN_tfar(ray, arguments->N, 0);
    RTCHit found;
    makeHit(arguments, hits[i], found);
    int accepted = -1;
    RTCRayN_tfar(ray, arguments->N, 0) = hits[i].distance;
    RTCFilterFunctionNArguments filter{
        &accepted, arguments->geometryUserPtr,         arguments->context,
        ray,       reinterpret_cast<RTCHitN*>(&found), 1};
    rtcFilterIntersection(arguments, &filter);
    if (accepted == 0) {
      RTCRayN_tfar(ray, arguments->N, 0) = before;
      continue;
    }
    rtcCopyHitToHitN(hit, &found, arguments->N, 0);
    return;
  }
}

void occludedForm(const RTCOccludedFunctionNArguments* arguments) {
  if (arguments->valid[0] == 0) return;
  FormHit hits[4];
  const int count = meet(*static_cast<const Form*>(arguments->geometryUserPtr),
                         rayOf(arguments->ray, arguments->N, 0), hits);
  for (int i = 0; i < count; ++i) {
    const float before = RTCRayN_tfar(arguments->ray, arguments->N, 0);
    RTCHit found;
    makeHit(arguments, hits[i], found);
    int accepted = -1;
    RTCRayN_tfar(arguments->ray, arguments->N, 0) = hits[i].distance;
    RTCFilterFunctionNArguments filter{
        &accepted,      arguments->geometryUserPtr,         arguments->context,
        arguments->ray, reinterpret_cast<RTCHitN*>(&found), 1};
    rtcFilterOcclusion(arguments, &filter);
    if (accepted != 0) {
      RTCRayN_tfar(arguments->ray, arguments->N, 0) = -std::numeric_limits<float>::infinity();
      return;
    }
    RTCRayN_tfar(arguments->ray, arguments->N, 0) = before;
  }
}

}  // namespace

const MeshDescription* meshOfForm(Form form) {
  static const FlatForm rectangle = [] {
    FlatForm result;
    result.addFace({0, 0, 0}, {1, 0, 0}, {0, 1, 0});
    result.finish();
    return result;
  }();
  static const FlatForm cube = [] {
    FlatForm result;
    result.addFace({0, 0, 0.5F}, {1, 0, 0}, {0, 1, 0});
    result.addFace({0, 0, -0.5F}, {-1, 0, 0}, {0, 1, 0});
    result.addFace({0.5F, 0, 0}, {0, 0, -1}, {0, 1, 0});
    result.addFace({-0.5F, 0, 0}, {0, 0, 1}, {0, 1, 0});
    result.addFace({0, 0.5F, 0}, {1, 0, 0}, {0, 0, -1});
    result.addFace({0, -0.5F, 0}, {1, 0, 0}, {0, 0, 1});
    result.finish();
    return result;
  }();
  if (form == Form::Rectangle) return &rectangle.mesh;
  return form == Form::Cube ? &cube.mesh : nullptr;
}

void setFormFunctions(RTCGeometry geometry, Form form) {
  rtcSetGeometryUserPrimitiveCount(geometry, 1);
  rtcSetGeometryUserData(geometry, const_cast<Form*>(&kForms[static_cast<std::size_t>(form)]));
  rtcSetGeometryBoundsFunction(geometry, bounds, nullptr);
  rtcSetGeometryIntersectFunction(geometry, intersectForm);
  rtcSetGeometryOccludedFunction(geometry, occludedForm);
}

Vec2 formCoordinates(Form form, Vec3 p) {
  if (form == Form::Disk) return {p.x + 0.5F, p.y + 0.5F};
  const float around = 0.5F + std::atan2(p.y, p.x) / (2 * kPi);
  if (form == Form::Cylinder) return {around, p.z + 0.5F};
  return {around, std::acos(std::clamp(-p.z / kRadius, -1.0F, 1.0F)) / kPi};
}

}  // namespace vrn_render
