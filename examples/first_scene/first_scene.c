/* A first scene: a textured floor and a lamp. Writes the scene to a file and reads it again. */
#include <stdio.h>
#include <string.h>
#include <vornath_data/vrdm.h>
#include <vornath_data/vrnt.h>

/* The types of the program parameters. An object with a program has one value of such a type. */
#define SPECTRUM "{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }"
static const char kPinhole[] = "{ float @default=0.035 focal_length; float2 film_size; }";
static const char kPainted[] =
    "{ " SPECTRUM " reflectance; { int @default=-1 texture_ref; } map; }";
static const char kSquare[] = "{ " SPECTRUM " emission; }";

static vrntValuesError_t* error = NULL;

static uint32_t groupNamed(uint32_t objectClass, const char* name) {
  uint32_t group = 0;
  while (strcmp(vrdmFieldName(objectClass, group), name) != 0) ++group;
  return group;
}

/* Writes the field `a.b` of a struct value. `bytes` has the size of the field. */
static void setField(vrntValue_t** value, const char* a, const char* b, const void* bytes) {
  vrntValueView_t place = {vrntValueType(*value), 0};
  const char* labels[2] = {a, b};
  for (int depth = 0; depth < 2 && labels[depth]; ++depth) {
    uint32_t field = 0;
    vrntValueView_t part;
    while (strcmp(vrntTypeFieldLabel(place.type, field), labels[depth]) != 0) ++field;
    vrntValueStructField(&part, place.type, field);
    place.type = part.type;
    place.offset += part.offset;
  }
  vrntValueWrite(value, place.offset, bytes, vrntTypeSize(place.type), &error);
}

/* Parses the text of a value and coerces it to a type. Fields that the text leaves out get their
   defaults. */
static vrntValue_t* valueOf(const char* typeText, const char* text) {
  vrntType_t* type = vrntTypeParse(typeText, &error);
  vrntValue_t* read = vrntValueParse(text, &error);
  vrntValue_t* value = vrntCoerce(type, read, &error);
  vrntValueDestroy(read);
  vrntTypeDestroy(type);
  return value;
}

static void setValue(vrdmScene_t* scene, uint32_t objectClass, int32_t index, vrntValue_t* value) {
  vrdmSetInstanceValue(scene, objectClass, index, value); /* the scene adds its own reference */
  vrntValueDestroy(value);
}

static uint32_t addAsset(vrdmScene_t* scene, uint32_t objectClass, const void* record,
                         const void* bytes, size_t size) {
  AssetStorage* storage = vrdmAssetStorageCopy(bytes, size);
  const uint32_t index = vrdmAddAsset(scene, objectClass, record, &storage);
  vrdmAssetStorageRelease(storage);
  return index;
}

int main(int argc, char** argv) {
  const char* path = argc > 1 ? argv[1] : "first_scene.vrnscene";
  vrdmScene_t* scene = vrdmCreateScene();

  /* Programs: source texts that only the renderer interprets. */
  const uint32_t pinhole = vrdmAddProgram(scene, VRDM_CLASS_CAMERA_PROGRAM, "pinhole");
  const uint32_t painted = vrdmAddProgram(scene, VRDM_CLASS_MATERIAL_PROGRAM, "painted");
  const uint32_t square = vrdmAddProgram(scene, VRDM_CLASS_LIGHT_PROGRAM, "square");

  /* A square of 2 m, made of two triangles: the vertex indices, then position, normal and tangent
     of each vertex, then the texture coordinates. */
  struct {
    int32_t corners[2][3];
    float vertices[4][9];
    float coordinates[4][2];
  } mesh = {{{0, 1, 2}, {0, 2, 3}},
            {{-1, 0, 1, 0, 1, 0, 1, 0, 0},
             {1, 0, 1, 0, 1, 0, 1, 0, 0},
             {1, 0, -1, 0, 1, 0, 1, 0, 0},
             {-1, 0, -1, 0, 1, 0, 1, 0, 0}},
            {{0, 0}, {1, 0}, {1, 1}, {0, 1}}};
  const vrdmMeshDesc meshRecord = {2, 4, 1, 0};
  const uint32_t floorMesh = addAsset(scene, VRDM_CLASS_MESH, &meshRecord, &mesh, sizeof mesh);

  /* A chequered image of 2 by 2 pixels. */
  const uint8_t pixels[4][3] = {{230, 230, 230}, {40, 40, 40}, {40, 40, 40}, {230, 230, 230}};
  const vrdmTextureDesc textureRecord = {2, 2, 1, VRNT_TEXTURE_FORMAT_SRGB8,
                                         VRNT_TEXTURE_LAYOUT_2D};
  const int32_t chequers =
      (int32_t)addAsset(scene, VRDM_CLASS_TEXTURE, &textureRecord, pixels, sizeof pixels);

  /* A material refers to its program, has a value with the parameters, and lists the textures that
     the value refers to. */
  const int32_t material = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_MATERIAL);
  vrntValue_t* paint =
      valueOf(kPainted,
              "{ reflectance = { encoding = RGB : enum { LUMINANCE; RGB; SPECTRAL; };"
              "                  spectrum = &[ 0.8, 0.7, 0.6 ]; }; }");
  setField(&paint, "map", "texture_ref", &chequers);
  setValue(scene, VRDM_CLASS_MATERIAL, material, paint);
  vrdmSetReference(scene, VRDM_CLASS_MATERIAL, material, 0, painted);
  vrdmUpdateTextureReferences(scene, VRDM_CLASS_MATERIAL, material);

  /* A lamp of 0.5 m, 2 m above the floor, that shines down. The rows of the matrix are the images
     of the x, y and z axes and of the origin. */
  const int32_t light = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_LIGHT);
  const float lampRows[4][4] = {{0.5f, 0, 0, 0}, {0, 0, 0.5f, 0}, {0, -1, 0, 0}, {0, 2, 0, 1}};
  const uint32_t lightTransformation = groupNamed(VRDM_CLASS_LIGHT, "Transformation");
  vrntValue_t* group = vrdmGetDataValue(scene, VRDM_CLASS_LIGHT, light, lightTransformation);
  setField(&group, "matrix", NULL, lampRows);
  vrdmSetDataValue(scene, VRDM_CLASS_LIGHT, light, lightTransformation, group);
  vrntValueDestroy(group);
  setValue(scene, VRDM_CLASS_LIGHT, light,
           valueOf(kSquare,
                   "{ emission = { encoding = SPECTRAL : enum { LUMINANCE; RGB; SPECTRAL; };"
                   "  spectrum = &[ 0., 0., 400., 8., 500., 10., 600., 12., 705., 0. ]; }; }"));
  vrdmSetReference(scene, VRDM_CLASS_LIGHT, light, 0, square);

  /* A light lights the shapes that refer to a light group that contains it. In the list, a light is
     stored as the complement of its index. */
  const int32_t lamps = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_LIGHT_GROUP);
  vrdmSetReferenceCount(scene, VRDM_CLASS_LIGHT_GROUP, lamps, 0, 1);
  vrdmModifyReferenceList(scene, VRDM_CLASS_LIGHT_GROUP, lamps, 0)[0] = ~light;

  const int32_t shape = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_SHAPE);
  vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 0, (uint32_t)material);
  vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 1, floorMesh);
  vrdmSetReference(scene, VRDM_CLASS_SHAPE, shape, 2, (uint32_t)lamps);

  /* A camera 4 m in front and 1 m up that looks along its own -z axis, and a task to render its
     image. */
  const int32_t camera = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_CAMERA);
  const float place[4] = {0, 1, 4, 1};
  const uint32_t transformation = groupNamed(VRDM_CLASS_CAMERA, "Transformation");
  group = vrdmGetDataValue(scene, VRDM_CLASS_CAMERA, camera, transformation);
  setField(&group, "matrix", "w", place);
  vrdmSetDataValue(scene, VRDM_CLASS_CAMERA, camera, transformation, group);
  vrntValueDestroy(group);
  setValue(scene, VRDM_CLASS_CAMERA, camera,
           valueOf(kPinhole, "{ film_size = float2(0.036, 0.024); }"));
  vrdmSetReference(scene, VRDM_CLASS_CAMERA, camera, 0, pinhole);
  const int32_t task = (int32_t)vrdmCreateInstance(scene, VRDM_CLASS_IMAGE_TASK);
  vrdmSetReference(scene, VRDM_CLASS_IMAGE_TASK, task, 0, (uint32_t)camera);

  vrdmSerialize(scene, path); /* reports no errors; the read below shows whether it worked */
  vrdmDestroyScene(scene);
  scene = vrdmDeserialize(path);
  for (uint32_t i = 0; scene && i < vrdmObjectTypeCount(); ++i) {
    const uint32_t count = vrdmContainerSize(scene, i);
    if (count != 0) printf("%u %s\n", count, vrdmObjectName(i));
  }
  const int done = scene != NULL && error == NULL;
  if (error) fprintf(stderr, "%s\n", vrntValuesErrorMessage(error));
  vrntValuesErrorDestroy(error);
  vrdmDestroyScene(scene);
  vrntValuesShutdown();
  return done ? 0 : 1;
}
