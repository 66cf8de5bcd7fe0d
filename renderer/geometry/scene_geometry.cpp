#include "geometry/scene_geometry.hpp"

#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include "geometry/forms.hpp"

namespace vrn_render {
namespace {

constexpr std::uint32_t kLargeMesh = 2'000'000;  // triangles

// What a filter knows of the ray that is traced.
struct Context {
  RTCIntersectContext base;
  const SceneGeometry* geometry;
  const Ray* ray;
  PassedLights* lights;
};

void fill(RTCRay& out, const Ray& ray) {
  out.org_x = ray.origin.x;
  out.org_y = ray.origin.y;
  out.org_z = ray.origin.z;
  out.dir_x = ray.direction.x;
  out.dir_y = ray.direction.y;
  out.dir_z = ray.direction.z;
  out.tnear = ray.near;
  out.tfar = ray.far;
  out.time = ray.time;
  out.mask = ray.kind;
  out.id = 0;
  out.flags = 0;
}

// Embree must not be given a ray that has no end or no direction.
bool canBeTraced(const Ray& ray) {
  constexpr float kFar = 1e9F;  // metres
  const auto isNear = [](Vec3 v) {
    return std::abs(v.x) < kFar && std::abs(v.y) < kFar && std::abs(v.z) < kFar;
  };
  return isNear(ray.origin) && isNear(ray.direction) && ray.near >= 0 && ray.far >= ray.near &&
         ray.near < kFar && std::isfinite(ray.time);
}

Vec3 vertexAt(const MeshDescription& mesh, std::uint32_t vertex, int offset) {
  const float* const p = mesh.vertices + std::size_t{9} * vertex + offset;
  return {p[0], p[1], p[2]};
}

Transform mixed(const Transform& a, const Transform& b, float t) {
  const auto mix = [t](Vec3 from, Vec3 to) { return from * (1 - t) + to * t; };
  return {mix(a.x, b.x), mix(a.y, b.y), mix(a.z, b.z), mix(a.w, b.w)};
}

Form formOf(LightKind kind) {
  if (kind == LightKind::Rectangle) return Form::Rectangle;
  return kind == LightKind::Disk ? Form::Disk : Form::Sphere;
}

}  // namespace

void PassedLights::add(std::uint32_t light, float distance) {
  Passed* const all = many_.empty() ? few_.data() : many_.data();
  for (Passed* at = all; at != all + count_; ++at) {
    if (at->light == light) {
      at->distance = std::min(at->distance, distance);
      return;
    }
  }
  if (count_ < kFew) {
    few_[count_] = {light, distance};
  } else {
    if (many_.empty()) many_.assign(few_.begin(), few_.end());
    many_.push_back({light, distance});
  }
  ++count_;
}

SceneGeometry::SceneGeometry(const SceneDescription& scene) : scene_(scene) {
  device_ = rtcNewDevice(nullptr);
  if (device_ == nullptr) throw std::runtime_error("Embree cannot be started");
  top_ = rtcNewScene(device_);
  try {
    flattened_.resize(scene.shapes.size());
    isInWorld_.resize(scene.shapes.size());
    for (std::uint32_t i = 0; i < scene.shapes.size(); ++i) attachShape(i);
    for (std::uint32_t i = 0; i < scene.lights.size(); ++i) attachLight(i);
    setFlags(top_, direct_);
    rtcCommitScene(top_);
    check();
  } catch (...) {
    for (const auto& part : parts_) rtcReleaseScene(part.second);
    rtcReleaseScene(top_);
    rtcReleaseDevice(device_);
    throw;
  }
  RTCBounds bounds;
  rtcGetSceneBounds(top_, &bounds);
  low_ = {bounds.lower_x, bounds.lower_y, bounds.lower_z};
  high_ = {bounds.upper_x, bounds.upper_y, bounds.upper_z};
  if (!(low_.x <= high_.x) || !isFinite(low_) || !isFinite(high_)) low_ = high_ = {};
}

SceneGeometry::~SceneGeometry() {
  rtcReleaseScene(top_);
  for (const auto& part : parts_) rtcReleaseScene(part.second);
  rtcReleaseDevice(device_);
}

void SceneGeometry::check() const {
  const RTCError error = rtcGetDeviceError(device_);
  if (error == RTC_ERROR_NONE) return;
  if (error == RTC_ERROR_OUT_OF_MEMORY) throw std::bad_alloc();
  throw std::runtime_error("Embree reports error " + std::to_string(static_cast<int>(error)));
}

bool SceneGeometry::needsFilter(const ShapeDescription& shape) const {
  return shape.culling != Culling::None || shape.cutBy != 0;
}

void SceneGeometry::setFilter(RTCGeometry geometry) const {
  rtcSetGeometryIntersectFilterFunction(geometry, filter);
  rtcSetGeometryOccludedFilterFunction(geometry, filter);
}

// Called for each place where a ray meets a light or a shape that some rays pass.
void SceneGeometry::filter(const RTCFilterFunctionNArguments* arguments) {
  const auto& context = *reinterpret_cast<const Context*>(arguments->context);
  const SceneGeometry& self = *context.geometry;
  RTCHitN* const hit = arguments->hit;
  const unsigned instance = RTCHitN_instID(hit, arguments->N, 0, 0);
  const unsigned geometry = RTCHitN_geomID(hit, arguments->N, 0);
  const Attached& met = self.attached_[instance != RTC_INVALID_GEOMETRY_ID ? instance : geometry];
  // In an instance, the ray and the normal are in the space of the instance.
  const Vec3 direction{RTCRayN_dir_x(arguments->ray, arguments->N, 0),
                       RTCRayN_dir_y(arguments->ray, arguments->N, 0),
                       RTCRayN_dir_z(arguments->ray, arguments->N, 0)};
  const Vec3 normal{RTCHitN_Ng_x(hit, arguments->N, 0), RTCHitN_Ng_y(hit, arguments->N, 0),
                    RTCHitN_Ng_z(hit, arguments->N, 0)};
  const bool isFront = dot(direction, normal) < 0;
  const float distance = RTCRayN_tfar(arguments->ray, arguments->N, 0);
  if (met.light != Hit::kNone) {
    if (isFront && context.lights != nullptr) context.lights->add(met.light, distance);
    arguments->valid[0] = 0;
    return;
  }
  const ShapeDescription& shape = self.scene_.shapes[met.shape];
  const bool isCamera = context.ray->kind == kCameraRay;
  if (shape.culling != Culling::None && (isCamera || !shape.cullsOnlyCamera) &&
      (shape.culling == Culling::Front) == isFront) {
    arguments->valid[0] = 0;
    return;
  }
  if (shape.cutBy == 0 || (self.scene_.task.cutsOnlyCamera && !isCamera)) return;
  const Vec3 point = context.ray->origin + distance * context.ray->direction;
  for (std::size_t i = 0; i < self.scene_.cutPlanes.size(); ++i) {
    const CutPlane& plane = self.scene_.cutPlanes[i];
    if ((shape.cutBy >> i & 1U) && dot(point - plane.origin, plane.normal) > 0) {
      arguments->valid[0] = 0;
      return;
    }
  }
}

// Large meshes are traced in the bytes of the scene. For others, Embree keeps the corners of the
// triangles a second time, side by side, which is faster.
void SceneGeometry::setFlags(RTCScene scene, std::uint64_t triangles) const {
  int flags = RTC_SCENE_FLAG_NONE;
  if (scene_.isRobust) flags |= RTC_SCENE_FLAG_ROBUST;
  if (triangles > kLargeMesh) flags |= RTC_SCENE_FLAG_COMPACT;
  rtcSetSceneFlags(scene, static_cast<RTCSceneFlags>(flags));
}

RTCGeometry SceneGeometry::makeMesh(const MeshDescription& mesh) const {
  RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
  rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_VERTEX, 0, RTC_FORMAT_FLOAT3, mesh.vertices,
                             0, 9 * sizeof(float), mesh.vertexCount);
  rtcSetSharedGeometryBuffer(geometry, RTC_BUFFER_TYPE_INDEX, 0, RTC_FORMAT_UINT3, mesh.indices, 0,
                             3 * sizeof(std::uint32_t), mesh.triangles);
  if (mesh.triangles <= kLargeMesh) rtcSetGeometryBuildQuality(geometry, RTC_BUILD_QUALITY_HIGH);
  return geometry;
}

RTCGeometry SceneGeometry::makeForm(Form form) const {
  if (const MeshDescription* const mesh = meshOfForm(form); mesh != nullptr) return makeMesh(*mesh);
  RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_USER);
  setFormFunctions(geometry, form);
  return geometry;
}

// The parts that instances share: a mesh or a form, with and without a filter.
RTCScene SceneGeometry::partScene(const MeshDescription* mesh, Form form, bool isFiltered) {
  const void* const key = mesh != nullptr
                              ? static_cast<const void*>(mesh)
                              : reinterpret_cast<const void*>(static_cast<std::uintptr_t>(form));
  RTCScene& scene = parts_[{key, isFiltered}];
  if (scene != nullptr) return scene;
  scene = rtcNewScene(device_);
  RTCGeometry geometry = mesh != nullptr ? makeMesh(*mesh) : makeForm(form);
  if (isFiltered) setFilter(geometry);
  rtcCommitGeometry(geometry);
  rtcAttachGeometry(scene, geometry);
  rtcReleaseGeometry(geometry);
  setFlags(scene, mesh != nullptr ? mesh->triangles : 0);
  rtcCommitScene(scene);
  check();
  return scene;
}

void SceneGeometry::attach(RTCGeometry geometry, std::uint32_t mask, Attached record) {
  rtcSetGeometryMask(geometry, mask);
  rtcCommitGeometry(geometry);
  const unsigned id = rtcAttachGeometry(top_, geometry);
  rtcReleaseGeometry(geometry);
  if (attached_.size() <= id) attached_.resize(id + 1);
  attached_[id] = record;
}

RTCGeometry SceneGeometry::makeInstance(RTCScene part, const Motion& motion) const {
  RTCGeometry instance = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_INSTANCE);
  rtcSetGeometryInstancedScene(instance, part);
  rtcSetGeometryTimeStepCount(instance, static_cast<unsigned>(motion.steps.size()));
  if (motion.moves()) rtcSetGeometryTimeRange(instance, motion.start, motion.end);
  for (unsigned step = 0; step < motion.steps.size(); ++step) {
    const Transform& m = motion.steps[step];
    const float columns[12] = {m.x.x, m.x.y, m.x.z, m.y.x, m.y.y, m.y.z,
                               m.z.x, m.z.y, m.z.z, m.w.x, m.w.y, m.w.z};
    rtcSetGeometryTransform(instance, step, RTC_FORMAT_FLOAT3X4_COLUMN_MAJOR, columns);
  }
  return instance;
}

void SceneGeometry::attachShape(std::uint32_t index) {
  const ShapeDescription& shape = scene_.shapes[index];
  const Attached record{index, Hit::kNone};
  const bool isFiltered = needsFilter(shape);
  const MeshDescription* const mesh = shape.form == Form::Mesh
                                          ? &scene_.meshes[static_cast<std::size_t>(shape.mesh)]
                                          : meshOfForm(shape.form);
  bool isFlat = false;
  for (const Transform& step : shape.motion.steps) isFlat |= !canBeEntered(step);
  if (mesh != nullptr && !shape.motion.moves() &&
      (isFlat || shape.motion.steps.front().isIdentity())) {
    RTCGeometry geometry = makeMesh(isFlat ? flatten(index, *mesh) : *mesh);
    if (isFiltered) setFilter(geometry);
    direct_ += mesh->triangles;
    isInWorld_[index] = 1;
    attach(geometry, shape.visibleTo, record);
    return;
  }
  if (isFlat) return;
  RTCScene part = partScene(mesh, shape.form, isFiltered);
  attach(makeInstance(part, shape.motion), shape.visibleTo, record);
}

const MeshDescription& SceneGeometry::flatten(std::uint32_t index, const MeshDescription& mesh) {
  const Transform& place = scene_.shapes[index].motion.steps.front();
  auto copy = std::make_unique<Flattened>();
  copy->mesh = mesh;
  copy->vertices.resize(std::size_t{9} * mesh.vertexCount + 4);
  for (std::uint32_t vertex = 0; vertex < mesh.vertexCount; ++vertex) {
    const Vec3 parts[3] = {place.point(vertexAt(mesh, vertex, 0)), Vec3{0, 0, 0},
                           place.vector(vertexAt(mesh, vertex, 6))};
    // Without a normal, that of the geometry is used.
    std::memcpy(copy->vertices.data() + std::size_t{9} * vertex, parts, sizeof parts);
  }
  copy->mesh.vertices = copy->vertices.data();
  flattened_[index] = std::move(copy);
  return flattened_[index]->mesh;
}

void SceneGeometry::attachLight(std::uint32_t index) {
  const LightDescription& light = scene_.lights[index];
  const bool isSurface = light.kind == LightKind::Rectangle || light.kind == LightKind::Disk ||
                         light.kind == LightKind::Sphere;
  if (!isSurface) return;
  Motion motion;
  motion.steps = {surfacePlace(light)};
  if (!canBeEntered(motion.steps.front())) return;
  const Form form = formOf(light.kind);
  const std::uint32_t mask = light.visibleTo & ~static_cast<std::uint32_t>(kShadowRay);
  attach(makeInstance(partScene(meshOfForm(form), form, true), motion), mask, {Hit::kNone, index});
}

Transform SceneGeometry::surfacePlace(const LightDescription& light) {
  Transform place = light.place;
  // What a flat light does along its normal changes nothing.
  if (light.kind != LightKind::Sphere) {
    const Vec3 normal = normalised(cross(place.x, place.y));
    place.z = place.determinant() < 0 ? -normal : normal;
  }
  return place;
}

Hit SceneGeometry::intersect(const Ray& ray, PassedLights& lights) const {
  lights.clear();
  if (!canBeTraced(ray)) return {};
  Context context;
  rtcInitIntersectContext(&context.base);
  context.base.flags = RTC_INTERSECT_CONTEXT_FLAG_INCOHERENT;
  context.geometry = this;
  context.ray = &ray;
  context.lights = &lights;
  RTCRayHit query;
  fill(query.ray, ray);
  query.hit.geomID = query.hit.instID[0] = RTC_INVALID_GEOMETRY_ID;
  rtcIntersect1(top_, &context.base, &query);
  Hit hit;
  if (query.hit.geomID == RTC_INVALID_GEOMETRY_ID) return hit;
  const unsigned instance = query.hit.instID[0];
  const Attached& met =
      attached_[instance != RTC_INVALID_GEOMETRY_ID ? instance : query.hit.geomID];
  hit.shape = met.shape;
  hit.primitive = query.hit.primID;
  hit.distance = query.ray.tfar;
  hit.u = query.hit.u;
  hit.v = query.hit.v;
  hit.localNormal = {query.hit.Ng_x, query.hit.Ng_y, query.hit.Ng_z};
  return hit;
}

bool SceneGeometry::isOccluded(const Ray& ray) const {
  if (!canBeTraced(ray)) return true;
  Context context;
  rtcInitIntersectContext(&context.base);
  context.geometry = this;
  context.ray = &ray;
  context.lights = nullptr;
  RTCRay query;
  fill(query, ray);
  rtcOccluded1(top_, &context.base, &query);
  return query.tfar < 0;
}

Transform SceneGeometry::placeAt(std::uint32_t shape, float time) const {
  if (isInWorld_[shape]) return {};
  const Motion& motion = scene_.shapes[shape].motion;
  if (!motion.moves()) return motion.steps.front();
  const auto last = static_cast<float>(motion.steps.size() - 1);
  const float at =
      std::clamp((time - motion.start) / (motion.end - motion.start), 0.0F, 1.0F) * last;
  const auto step = std::min(static_cast<std::size_t>(at), motion.steps.size() - 2);
  return mixed(motion.steps[step], motion.steps[step + 1], at - static_cast<float>(step));
}

const MeshDescription* SceneGeometry::meshOf(std::uint32_t index) const {
  if (flattened_[index]) return &flattened_[index]->mesh;
  const ShapeDescription& shape = scene_.shapes[index];
  return shape.form == Form::Mesh ? &scene_.meshes[static_cast<std::size_t>(shape.mesh)]
                                  : meshOfForm(shape.form);
}

std::array<Vec3, 3> SceneGeometry::corners(const MeshDescription& mesh, std::uint32_t triangle) {
  const std::uint32_t* const index = mesh.indices + std::size_t{3} * triangle;
  return {vertexAt(mesh, index[0], 0), vertexAt(mesh, index[1], 0), vertexAt(mesh, index[2], 0)};
}

SurfacePoint SceneGeometry::pointAt(const Ray& ray, const Hit& hit, bool wantsCoordinates) const {
  SurfacePoint point;
  const MeshDescription* const mesh = meshOf(hit.shape);
  const bool isInWorld = isInWorld_[hit.shape] != 0;
  const Transform place = isInWorld ? Transform() : placeAt(hit.shape, ray.time);
  if (mesh == nullptr) {
    const Form form = scene_.shapes[hit.shape].form;
    Vec3 local = inverse(place).point(ray.origin + hit.distance * ray.direction);
    // Back onto the surface, from where the rounding of the distance has left it.
    const Vec3 normal = normalised(hit.localNormal);
    if (form == Form::Sphere) local = normal * 0.5F;
    if (form == Form::Disk) local.z = 0;
    point.position = place.point(local);
    point.geometricNormal = point.normal = normalised(place.normal(normal));
    point.tangent = form == Form::Disk ? place.x : place.vector(cross({0, 0, 1}, normal));
    point.coordinates.sets.fill(formCoordinates(form, local));
    if (wantsCoordinates) addProjection(hit.shape, local, normal, point);
    return point;
  }
  const std::uint32_t* const index = mesh->indices + std::size_t{3} * hit.primitive;
  const std::array<Vec3, 3> p = corners(*mesh, hit.primitive);
  const float w = 1 - hit.u - hit.v;
  const auto mix = [&](Vec3 a, Vec3 b, Vec3 c) { return w * a + hit.u * b + hit.v * c; };
  point.position = mix(p[0], p[1], p[2]);
  if (!isInWorld) point.position = place.point(point.position);
  const Vec3 flat = cross(p[1] - p[0], p[2] - p[0]);
  point.geometricNormal = isInWorld ? normalised(flat, -ray.direction)
                                    : normalised(place.normal(normalised(flat)), -ray.direction);
  const auto part = [&](int offset) {
    return mix(vertexAt(*mesh, index[0], offset), vertexAt(*mesh, index[1], offset),
               vertexAt(*mesh, index[2], offset));
  };
  point.normal = normalised(isInWorld ? part(3) : place.normal(part(3)), point.geometricNormal);
  if (!isFinite(point.normal)) point.normal = point.geometricNormal;
  if (dot(point.normal, point.geometricNormal) < 0) point.normal = -point.normal;
  if (!wantsCoordinates) return point;
  point.tangent = place.vector(part(6));
  for (std::size_t slot = 0; slot < scene_.coordinateSets.size(); ++slot) {
    const auto set = static_cast<std::size_t>(scene_.coordinateSets[slot]);
    if (set >= mesh->sets) continue;
    const float* const first = mesh->coordinates + 2 * set * mesh->vertexCount;
    Vec2& uv = point.coordinates.sets[slot];
    for (int axis = 0; axis < 2; ++axis) {
      const auto at = [&](int corner) {
        return first[std::size_t{2} * index[corner] + static_cast<std::size_t>(axis)];
      };
      (axis == 0 ? uv.x : uv.y) = w * at(0) + hit.u * at(1) + hit.v * at(2);
    }
  }
  addProjection(hit.shape, mix(p[0], p[1], p[2]), flat, point);
  return point;
}

// Replaces the coordinates of a shape whose field says so. The point and the normal are in the
// space of the shape.
void SceneGeometry::addProjection(std::uint32_t index, Vec3 local, Vec3 normal,
                                  SurfacePoint& point) const {
  const ShapeDescription& shape = scene_.shapes[index];
  if (shape.projection == Projection::Keep) return;
  const Transform& map = shape.toProjection;
  point.coordinates.sets.fill(
      project(shape.projection, map.point(local), map.normal(normal)).coordinates);
}

}  // namespace vrn_render
