/* A host in C: makes a scene, writes it to the file named by its argument, reads it back, and
   compares. It ends with 0 if all is as it should be. */
#include <stdio.h>
#include <string.h>

#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

#if VORNATH_DATA_VERSION < VORNATH_DATA_VERSION_NUMBER(1, 0, 0)
#error "a version has a number to compare with"
#endif

static int failures = 0;

#define CHECK(condition)                                                        \
  do {                                                                          \
    if (!(condition)) {                                                         \
      fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                               \
    }                                                                           \
  } while (0)

static const char kSource[] = "camera pinhole { }";
/* One triangle, three vertices, one set of texture coordinates. */
static const vrdmMeshDesc kMesh = {1, 3, 0, 0};
enum { kMeshBytes = 4 * (3 * 1 + 9 * 3 + 2 * 3) };
/* Two by two pixels of four bytes, and one of them. */
static const vrdmTextureDesc kTexture = {2, 2, 1, VRNT_TEXTURE_FORMAT_SRGBA8,
                                         VRNT_TEXTURE_LAYOUT_2D_MIPMAP};
enum { kTextureBytes = 4 * (2 * 2 + 1) };
static const vrdmMaterialGraphDesc kGraph = {7, 2, 5};

static uint32_t groupNamed(uint32_t objectClass, const char* name) {
  uint32_t field;
  for (field = 0; field < vrdmFieldCount(objectClass); ++field) {
    if (strcmp(vrdmFieldName(objectClass, field), name) == 0) return field;
  }
  fprintf(stderr, "no group %s\n", name);
  ++failures;
  return 0;
}

static uint32_t fieldNamed(const vrntType_t* type, const char* label) {
  uint32_t field;
  for (field = 0; field < vrntTypeFieldCount(type); ++field) {
    if (strcmp(vrntTypeFieldLabel(type, field), label) == 0) return field;
  }
  fprintf(stderr, "no field %s\n", label);
  ++failures;
  return 0;
}

static vrntValue_t* parameters(float number) {
  vrntValuesError_t* error = NULL;
  vrntType_t* type = vrntTypeParse("{ float number; int[3] triple; }", &error);
  vrntValue_t* value = vrntValueCreate(type, &error);
  CHECK(error == NULL);
  vrntValueWrite(&value, 0, &number, sizeof number, &error);
  CHECK(error == NULL);
  vrntTypeDestroy(type);
  return value;
}

/* The bytes of "infinite_ground" in the scene-wide group "General". */
static uint32_t readGround(const vrdmScene_t* scene) {
  const uint32_t group = groupNamed(VRDM_CLASS_SCENE_DATA, "General");
  vrntValue_t* value = vrdmGetSceneDataValue(scene, group);
  vrntValueView_t view;
  uint32_t ground = 0;
  const vrntType_t* type = vrntValueType(value);
  vrntValueStructField(&view, type, fieldNamed(type, "infinite_ground"));
  memcpy(&ground, (const char*)vrntValueData(value) + view.offset, vrntTypeSize(view.type));
  vrntValueDestroy(value);
  return ground;
}

static void build(vrdmScene_t* scene) {
  unsigned char bytes[kMeshBytes];
  AssetStorage* storage;
  vrntValue_t* value;
  vrntValuesError_t* error = NULL;
  vrntValueView_t view;
  const uint32_t on = 0xFFFFFFFFu;
  int32_t* keyframes;
  int i;

  for (i = 0; i < kMeshBytes; ++i) bytes[i] = (unsigned char)i;
  storage = vrdmAssetStorageCopy(bytes, sizeof bytes);
  CHECK(storage != NULL);
  CHECK(vrdmAddProgram(scene, VRDM_CLASS_CAMERA_PROGRAM, kSource) == 0);
  CHECK(vrdmAddAsset(scene, VRDM_CLASS_MESH, &kMesh, &storage) == 0);
  vrdmAssetStorageRelease(storage);

  CHECK(vrdmCreateInstance(scene, VRDM_CLASS_CAMERA) == 0);
  CHECK(vrdmSetReference(scene, VRDM_CLASS_CAMERA, 0, 0, 0));
  value = parameters(1.5f);
  CHECK(vrdmSetInstanceValue(scene, VRDM_CLASS_CAMERA, 0, value));
  vrntValueDestroy(value);

  CHECK(vrdmCreateInstance(scene, VRDM_CLASS_KEYFRAME) == 0);
  CHECK(vrdmCreateInstance(scene, VRDM_CLASS_KEYFRAME) == 1);
  CHECK(vrdmRemove(scene, VRDM_CLASS_KEYFRAME, 0));
  CHECK(vrdmCreateInstance(scene, VRDM_CLASS_KEYFRAME_LIST) == 0);
  CHECK(vrdmSetReferenceCount(scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0, 2));
  keyframes = vrdmModifyReferenceList(scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0);
  CHECK(keyframes != NULL);
  if (keyframes) keyframes[1] = 1;

  value = vrdmGetSceneDataValue(scene, groupNamed(VRDM_CLASS_SCENE_DATA, "General"));
  vrntValueStructField(&view, vrntValueType(value),
                       fieldNamed(vrntValueType(value), "infinite_ground"));
  vrntValueWrite(&value, view.offset, &on, vrntTypeSize(view.type), &error);
  CHECK(error == NULL);
  CHECK(vrdmSetSceneDataValue(scene, groupNamed(VRDM_CLASS_SCENE_DATA, "General"), value));
  CHECK(!vrdmSetSceneDataValue(scene, groupNamed(VRDM_CLASS_SCENE_DATA, "Raytracer"), value));
  vrntValueDestroy(value);
}

/* Each record goes in and comes back by its C name, with as many bytes as it says. */
static void assets(void) {
  vrdmScene_t* scene = vrdmCreateScene();
  unsigned char bytes[kMeshBytes] = {0};
  AssetStorage* storage = vrdmAssetStorageCopy(bytes, kTextureBytes);
  vrdmMeshDesc mesh = {0, 0, 0, 0};
  vrdmTextureDesc texture = {0, 0, 0, 0, 0};
  vrdmMaterialGraphDesc graph = {0, 0, 0};

  CHECK(vrdmAddAsset(scene, VRDM_CLASS_MESH, &mesh, &storage) == 0);
  CHECK(vrdmAddAsset(scene, VRDM_CLASS_TEXTURE, &texture, &storage) == 0);
  CHECK(vrdmAddAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, &graph, &storage) == 0);
  vrdmAssetStorageRelease(storage);
  CHECK(vrdmUpdateAsset(scene, VRDM_CLASS_MESH, 0, &kMesh, bytes));
  CHECK(vrdmUpdateAsset(scene, VRDM_CLASS_TEXTURE, 0, &kTexture, bytes));
  CHECK(vrdmUpdateAsset(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, &kGraph, bytes));
  CHECK((*vrdmGetAssetStorage(scene, VRDM_CLASS_MESH, 0, &mesh))->size == kMeshBytes);
  CHECK(mesh.triangles == 1 && mesh.vertices == 3 && mesh.texcoordSets == 0 && mesh.flags == 0);
  CHECK((*vrdmGetAssetStorage(scene, VRDM_CLASS_TEXTURE, 0, &texture))->size == kTextureBytes);
  CHECK(texture.width == 2 && texture.height == 2 && texture.depth == 1);
  CHECK(texture.format == 3 && texture.layout == 0x8000);
  CHECK((*vrdmGetAssetStorage(scene, VRDM_CLASS_MATERIAL_GRAPH, 0, &graph))->size == 7);
  CHECK(graph.binarySize == 7 && graph.rootOffset == 2 && graph.parameterOffset == 5);
  CHECK(VRNT_TEXTURE_FORMAT_BC3U == 95 && VRNT_TEXTURE_TYPE_SPHERE_DATA == 4);
  vrdmDestroyScene(scene);
}

static void compare(const vrdmScene_t* scene, const vrdmScene_t* original) {
  uint32_t objectClass;
  vrdmMeshDesc desc = {0, 0, 0, 0};
  AssetStorage** storage;
  const int32_t* keyframes;
  const unsigned char* bytes;
  vrntValue_t* value;
  float number = 0;
  int i;

  CHECK(memcmp(vrdmSceneId(scene), vrdmSceneId(original), 16) == 0);
  for (objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
    CHECK(vrdmContainerSize(scene, objectClass) == vrdmContainerSize(original, objectClass));
  }
  CHECK(strcmp(vrdmGetProgramSource(scene, VRDM_CLASS_CAMERA_PROGRAM, 0), kSource) == 0);
  CHECK(memcmp(vrdmGetUniqueId(scene, VRDM_CLASS_CAMERA_PROGRAM, 0),
               vrdmGetUniqueId(original, VRDM_CLASS_CAMERA_PROGRAM, 0), 16) == 0);
  CHECK(vrdmGetUniqueId(scene, VRDM_CLASS_CAMERA, 0) == NULL);

  storage = vrdmGetAssetStorage(scene, VRDM_CLASS_MESH, 0, &desc);
  CHECK(memcmp(&desc, &kMesh, sizeof desc) == 0);
  CHECK(storage && *storage && (*storage)->size == kMeshBytes);
  bytes = (const unsigned char*)(*storage)->data;
  for (i = 0; i < kMeshBytes; ++i) CHECK(bytes[i] == i);

  CHECK(vrdmGetReference(scene, VRDM_CLASS_CAMERA, 0, 0) == 0);
  CHECK(vrdmGetReference(scene, VRDM_CLASS_CAMERA, 0, 1) == -1);
  CHECK(vrdmCountReferences(scene, VRDM_CLASS_CAMERA_PROGRAM, 0) == 1);
  value = vrdmGetInstanceValue(scene, VRDM_CLASS_CAMERA, 0);
  memcpy(&number, vrntValueData(value), sizeof number);
  CHECK(number == 1.5f);
  CHECK(strcmp(vrntTypeString(vrntValueType(value)), "{ float number; int[3] triple; }") == 0);
  vrntValueDestroy(value);

  CHECK(!vrdmValid(scene, VRDM_CLASS_KEYFRAME, 0));
  CHECK(vrdmValid(scene, VRDM_CLASS_KEYFRAME, 1));
  CHECK(!vrdmValid(scene, VRDM_CLASS_KEYFRAME, 2));
  CHECK(vrdmGetReferenceCount(scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0) == 2);
  keyframes = vrdmGetReferenceList(scene, VRDM_CLASS_KEYFRAME_LIST, 0, 0);
  CHECK(keyframes && keyframes[0] == -1 && keyframes[1] == 1);

  CHECK(readGround(scene) != 0);
}

int main(int argc, char** argv) {
  vrdmScene_t* scene;
  vrdmScene_t* copy;
  if (argc != 2) {
    fprintf(stderr, "usage: c11_host FILE\n");
    return 2;
  }
  CHECK(strchr(VORNATH_DATA_VERSION_STRING, '.') != NULL);
  remove(argv[1]);
  CHECK(vrdmDeserialize(argv[1]) == NULL);

  assets();
  scene = vrdmCreateScene();
  CHECK(scene != NULL);
  CHECK(readGround(scene) == 0);
  build(scene);
  compare(scene, scene);

  vrdmSerialize(scene, argv[1]);
  copy = vrdmDeserialize(argv[1]);
  CHECK(copy != NULL);
  if (copy) compare(copy, scene);

  vrdmDestroyScene(copy);
  vrdmDestroyScene(scene);
  vrntValuesShutdown();
  return failures == 0 ? 0 : 1;
}
