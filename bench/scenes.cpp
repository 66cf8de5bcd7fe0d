#include "scenes.hpp"

#include <malloc.h>

#include <array>
#include <cstdint>

#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/parameters.h"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace bench {

using vrnt::UniqueScene;
using vrnt::UniqueValue;

namespace {

constexpr std::uint32_t kShape = VRDM_CLASS_SHAPE;

UniqueValue defaultOf(std::uint32_t objectClass, std::uint32_t group) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrdmFieldType(objectClass, group);
  UniqueValue value(vrntValueCreateDefault(type, &error));
  vrntTypeDestroy(type);
  return value;
}

}  // namespace

UniqueScene makeShapes(int shapes) {
  static const UniqueValue transformation = defaultOf(kShape, 0);
  static const UniqueValue general = defaultOf(kShape, 1);
  UniqueScene scene(vrdmCreateScene());
  for (int i = 0; i < shapes; ++i) {
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(scene.get(), kShape));
    vrdmSetDataValue(scene.get(), kShape, shape, 0, transformation.get());
    vrdmSetDataValue(scene.get(), kShape, shape, 1, general.get());
    vrdmSetReference(scene.get(), kShape, shape, 0, 1);
    vrdmSetReference(scene.get(), kShape, shape, 1, static_cast<std::uint32_t>(i));
    vrdmSetReference(scene.get(), kShape, shape, 3, 2);
  }
  return scene;
}

UniqueScene makeMeshes(int shapes) {
  UniqueScene made(vrdmCreateScene());
  vrdmScene_t* const scene = made.get();
  const int shared = shapes / 100;
  const vrnt::detail::MeshDesc mesh{0, 1, 0, 0};
  const std::array<char, 44> vertex{};
  const std::array<std::int32_t, 5> texture = {1, 1, 1, 2, 0};
  vrntValuesError_t* error = nullptr;
  vrntType_t* const type = vrntTypeMaterialParam(VRNT_MATERIAL_PARAM_COLOUR);
  for (int i = 0; i < shared; ++i) {
    AssetStorage* pixel = vrdmAssetStorageCopy("rgb", 3);
    vrdmAddAsset(scene, VRDM_CLASS_TEXTURE, texture.data(), &pixel);
    vrdmAssetStorageRelease(pixel);
    vrdmCreateInstance(scene, VRDM_CLASS_TRANSFORMATION_GROUP);
    const auto material = static_cast<std::int32_t>(vrdmCreateInstance(scene, VRDM_CLASS_MATERIAL));
    vrntValue_t* const value = vrntValueCreate(type, &error);
    vrdmSetInstanceValue(scene, VRDM_CLASS_MATERIAL, material, value);
    vrntValueDestroy(value);
  }
  vrntTypeDestroy(type);
  for (int i = 0; i < shapes; ++i) {
    AssetStorage* storage = vrdmAssetStorageCopy(vertex.data(), vertex.size());
    const std::uint32_t added = vrdmAddAsset(scene, VRDM_CLASS_MESH, &mesh, &storage);
    vrdmAssetStorageRelease(storage);
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(scene, VRDM_CLASS_SHAPE));
    const auto one = static_cast<std::uint32_t>(i % shared);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 0, one);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 1, added);
    vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 3, one);
  }
  return made;
}

void destroy(UniqueScene& scene) {
  scene.reset();
  malloc_trim(0);
}

}  // namespace bench
