/* A host that knows the library by its path only: loads it, finds the functions by name, makes a
   type, a value and a scene, and either unloads it or leaves it loaded at the end of the process.
   usage: dlopen_host LIBRARY unload|keep */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

static void* library;
static int failures = 0;

#define CHECK(condition)                                                        \
  do {                                                                          \
    if (!(condition)) {                                                         \
      fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                               \
    }                                                                           \
  } while (0)

/* A pointer to a function, out of the pointer to an object that dlsym() has. */
static void find(const char* name, void* function) {
  void* symbol = dlsym(library, name);
  if (!symbol) {
    fprintf(stderr, "%s is missing: %s\n", name, dlerror());
    ++failures;
  }
  memcpy(function, &symbol, sizeof symbol);
}

static void typesAndValues(void) {
  vrntType_t* (*typeParse)(const char*, vrntValuesError_t**);
  const char* (*typeString)(const vrntType_t*);
  void (*typeDestroy)(const vrntType_t*);
  vrntType_t* (*floatArray)(uint64_t);
  vrntValue_t* (*createDefault)(const vrntType_t*, vrntValuesError_t**);
  const void* (*data)(const vrntValue_t*);
  void (*valueDestroy)(vrntValue_t*);
  const char* (*errorMessage)(const vrntValuesError_t*);
  void (*errorDestroy)(vrntValuesError_t*);
  vrntValuesError_t* error = NULL;
  vrntType_t* type;
  vrntValue_t* value;
  float x = 0;

  find("vrntTypeParse", &typeParse);
  find("vrntTypeString", &typeString);
  find("vrntTypeDestroy", &typeDestroy);
  find("vrtnTypeFloatArray", &floatArray);
  find("vrntValueCreateDefault", &createDefault);
  find("vrntValueData", &data);
  find("vrntValueDestroy", &valueDestroy);
  find("vrntValuesErrorMessage", &errorMessage);
  find("vrntValuesErrorDestroy", &errorDestroy);
  if (failures) return;

  type = typeParse("{ float @default=2.5 x; }", &error);
  CHECK(type != NULL && error == NULL);
  if (!type) return;
  CHECK(strcmp(typeString(type), "{ float @default=2.5 x; }") == 0);
  value = createDefault(type, &error);
  CHECK(value != NULL && error == NULL);
  if (value) {
    memcpy(&x, data(value), sizeof x);
    CHECK(x == 2.5f);
    valueDestroy(value);
  }
  typeDestroy(type);

  type = floatArray(3);
  CHECK(strcmp(typeString(type), "float[3]") == 0);
  typeDestroy(type);

  /* An exception inside must find its handler in a library that was loaded without its symbols. */
  CHECK(typeParse("{ int a; int a; }", &error) == NULL);
  CHECK(error != NULL);
  if (error) {
    CHECK(strcmp(errorMessage(error), "Duplicate struct field: a.") == 0);
    errorDestroy(error);
  }
}

static void scenes(void) {
  vrdmScene_t* (*createScene)(void);
  void (*destroyScene)(vrdmScene_t*);
  uint32_t (*createInstance)(vrdmScene_t*, uint32_t);
  uint32_t (*containerSize)(const vrdmScene_t*, uint32_t);
  const char* (*objectName)(uint32_t);
  vrdmScene_t* scene;

  find("vrdmCreateScene", &createScene);
  find("vrdmDestroyScene", &destroyScene);
  find("vrdmCreateInstance", &createInstance);
  find("vrdmContainerSize", &containerSize);
  find("vrdmObjectName", &objectName);
  if (failures) return;

  scene = createScene();
  CHECK(scene != NULL);
  CHECK(createInstance(scene, VRDM_CLASS_SHAPE) == 0);
  CHECK(containerSize(scene, VRDM_CLASS_SHAPE) == 1);
  CHECK(strcmp(objectName(VRDM_CLASS_SHAPE), "Shape") == 0);
  destroyScene(scene);
}

int main(int argc, char** argv) {
  void (*shutdown)(void);
  if (argc != 3) {
    fprintf(stderr, "usage: dlopen_host LIBRARY unload|keep\n");
    return 2;
  }
  library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (!library) {
    fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  typesAndValues();
  scenes();
  find("vrntValuesShutdown", &shutdown);
  if (failures) return 1;
  shutdown();
  if (strcmp(argv[2], "unload") == 0) CHECK(dlclose(library) == 0);
  return failures == 0 ? 0 : 1;
}
