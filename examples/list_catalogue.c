/*
 * Prints the catalogue as Markdown: the version of scene files, each class with its reference slots
 * and groups, and for each group the offset, type, default, limits, label and description of its
 * fields. It gets all of this from the discovery queries, so the program knows no class and no field
 * by name.
 */
#define _POSIX_C_SOURCE 200809L
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include "vornath_data/catalogue.h"
#include "vornath_data/metadata.h"
#include "vornath_data/scene_interface.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

/* Prints a text in a cell of a table. */
static void printCell(const char* text) {
  for (; *text; ++text) {
    if (*text == '|' || *text == '\\') putchar('\\');
    putchar(*text);
  }
}

static void printValue(const vrntValue_t* value) {
  vrntValuesError_t* error = NULL;
  const vrntValueView_t whole = {vrntValueType(value), 0};
  char* text = vrntValueString(value, &whole, 0, &error);
  if (text) {
    /* The value of an enum repeats its type. The name of the constructor is enough here. */
    char* type = strstr(text, " : enum");
    if (type) *type = '\0';
    printf("`%s`", text);
  } else {
    fprintf(stderr, "%s\n", vrntValuesErrorMessage(error));
  }
  vrntDestroyString(text);
  vrntValuesErrorDestroy(error);
}

/* Prints the value of an annotation, if there is one. */
static int printAnnotation(const vrntType_t* type, const char* key, const char* before) {
  vrntValue_t* value;
  if (!vrntMetadataExists(type, key) || vrntMetadataType(type, key) != VRNT_METADATA_VALUE) {
    return 0;
  }
  fputs(before, stdout);
  value = vrntMetadataValue(type, key);
  printValue(value);
  vrntValueDestroy(value);
  return 1;
}

static void printText(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) && vrntMetadataType(type, key) == VRNT_METADATA_TEXT) {
    printCell(vrntMetadataString(type, key));
  }
}

static void printRange(const vrntType_t* type, const char* name, const char* low,
                       const char* high) {
  if (!vrntMetadataExists(type, low) && !vrntMetadataExists(type, high)) return;
  fputs(name, stdout);
  printAnnotation(type, low, "from ");
  if (vrntMetadataExists(type, low) && vrntMetadataExists(type, high)) putchar(' ');
  printAnnotation(type, high, "to ");
}

/* Prints the annotations other than label, description, default and limits. */
static void printFurther(const vrntType_t* type) {
  static const char* const told[] = {"default", "desc",     "max",     "min",
                                     "name",    "soft_max", "soft_min"};
  uint32_t i;
  for (i = 0; i < vrntMetadataSize(type); ++i) {
    const char* key = vrntMetadataName(type, i);
    size_t t = 0;
    while (t < sizeof told / sizeof told[0] && strcmp(key, told[t]) != 0) ++t;
    if (t < sizeof told / sizeof told[0]) continue;
    printf(" `@%s`", key);
    if (vrntMetadataType(type, key) == VRNT_METADATA_TEXT) {
      putchar(' ');
      printText(type, key);
    } else {
      printAnnotation(type, key, " ");
    }
  }
}

/* Prints the constructors of an enum. Their annotations are only in the text of the type, up to the
 * first closing brace outside of quotes. */
static void printEnum(const vrntType_t* type) {
  const char* text = vrntTypeString(type);
  const char* end = text;
  int quoted = 0;
  int annotated = 0;
  uint32_t i;
  for (; *end && (quoted || *end != '}'); ++end) {
    if (*end == '"') quoted = !quoted;
    if (*end == '@') annotated = 1;
  }
  if (annotated) {
    printf("`%.*s}`", (int)(end - text), text);
    return;
  }
  fputs("enum", stdout);
  for (i = 0; i < vrntTypeConstructorCount(type); ++i) {
    printf("%s%s", i ? ", " : " ", vrntTypeConstructorName(type, i));
  }
}

static void printType(const vrntType_t* type) {
  uint32_t i;
  vrntType_t* plain;
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_STRUCT:
      fputs("struct", stdout);
      break;
    case VRNT_DESCRIPTOR_ENUM:
      printEnum(type);
      break;
    case VRNT_DESCRIPTOR_ARRAY: {
      int32_t shape[4] = {0, 0, 0, 0};
      vrntType_t* element = vrntTypeElementType(type);
      vrntTypeArrayShape(type, shape);
      printType(element);
      vrntTypeDestroy(element);
      for (i = 0; i < vrntTypeArrayDimension(type); ++i) {
        printf("%s%d", i ? "," : "[", (int)shape[i]);
      }
      putchar(']');
      break;
    }
    default:
      plain = vrntTypeStripMetadata(type);
      printCell(vrntTypeString(plain));
      vrntTypeDestroy(plain);
  }
}

static void printFields(const vrntType_t* structType, const char* path, uint64_t base) {
  uint32_t i;
  for (i = 0; i < vrntTypeFieldCount(structType); ++i) {
    char fieldPath[512];
    vrntValueView_t view;
    vrntType_t* type = vrntTypeFieldType(structType, i);
    vrntValueStructField(&view, structType, i);
    snprintf(fieldPath, sizeof fieldPath, "%s%s", path, vrntTypeFieldLabel(structType, i));

    printf("| `%s` | %llu | ", fieldPath, (unsigned long long)(base + view.offset));
    printType(type);
    fputs(" | ", stdout);
    printAnnotation(type, "default", "");
    fputs(" | ", stdout);
    printRange(type, "", "min", "max");
    if ((vrntMetadataExists(type, "min") || vrntMetadataExists(type, "max")) &&
        (vrntMetadataExists(type, "soft_min") || vrntMetadataExists(type, "soft_max"))) {
      fputs("; ", stdout);
    }
    printRange(type, "soft ", "soft_min", "soft_max");
    fputs(" | ", stdout);
    printText(type, "name");
    fputs(" | ", stdout);
    printText(type, "desc");
    printFurther(type);
    fputs(" |\n", stdout);

    if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT) {
      strncat(fieldPath, ".", sizeof fieldPath - strlen(fieldPath) - 1);
      printFields(type, fieldPath, base + view.offset);
    } else if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
      vrntType_t* element = vrntTypeElementType(type);
      if (vrntTypeDescriptor(element) == VRNT_DESCRIPTOR_STRUCT) {
        strncat(fieldPath, "[0].", sizeof fieldPath - strlen(fieldPath) - 1);
        printFields(element, fieldPath, base + view.offset);
      }
      vrntTypeDestroy(element);
    }
    vrntTypeDestroy(type);
  }
}

static uint64_t alignedTo(uint64_t alignment, uint64_t offset) {
  return (offset + alignment - 1) / alignment * alignment;
}

/* The groups of an object are one block: each stands at the alignment of its type behind the one
 * before. */
static uint64_t offsetOfGroup(uint32_t objectClass, uint32_t group) {
  uint64_t offset = 0;
  uint64_t largest = 1;
  uint32_t i;
  for (i = 0; i < vrdmFieldCount(objectClass); ++i) {
    vrntType_t* type = vrdmFieldType(objectClass, i);
    const uint64_t alignment = vrntTypeAlignment(type);
    if (alignment > largest) largest = alignment;
    offset = alignedTo(alignment, offset);
    if (i < group) offset += vrntTypeSize(type);
    vrntTypeDestroy(type);
    if (i == group) return offset;
  }
  return alignedTo(largest, offset);
}

static void printGroups(uint32_t objectClass) {
  const uint32_t count = vrdmFieldCount(objectClass);
  uint32_t i;
  if (count == 0) return;
  printf("\nIts groups take %llu bytes.\n", (unsigned long long)offsetOfGroup(objectClass, count));
  for (i = 0; i < count; ++i) {
    vrntType_t* type = vrdmFieldType(objectClass, i);
    printf("\n### Group %u: %s\n\n", (unsigned)i, vrdmFieldName(objectClass, i));
    printText(type, "desc");
    printFurther(type);
    printf("\n\n%llu bytes at %llu, aligned to %llu.\n\n", (unsigned long long)vrntTypeSize(type),
           (unsigned long long)offsetOfGroup(objectClass, i),
           (unsigned long long)vrntTypeAlignment(type));
    fputs("| Field | Offset | Type | Default | Limits | Label | Description |\n", stdout);
    fputs("|---|---|---|---|---|---|---|\n", stdout);
    printFields(type, "", 0);
    vrntTypeDestroy(type);
  }
}

static const char* kindOfReference(uint32_t kind) {
  switch (kind) {
    case VRDM_REFERENCE_REQUIRED:
      return "one, required";
    case VRDM_REFERENCE_OPTIONAL:
      return "one, optional";
    case VRDM_REFERENCE_LIST:
      return "list";
    case VRDM_REFERENCE_ORDERED_DECAL:
      return "list, coded: front and back";
    case VRDM_REFERENCE_EMITTER:
      return "list, coded: lights and shapes";
    default:
      return "unknown";
  }
}

static void printSlots(uint32_t objectClass) {
  uint32_t i;
  if (vrdmReferenceCount(objectClass) == 0) return;
  fputs("\n| Slot | Name | Holds | Target |\n|---|---|---|---|\n", stdout);
  for (i = 0; i < vrdmReferenceCount(objectClass); ++i) {
    const vrdmReferenceInfo info = vrdmReferenceType(objectClass, i);
    const char* target = info.targetClass == VRDM_TARGET_EMITTER ? "Light or Shape"
                                                                 : vrdmObjectName(info.targetClass);
    printf("| %u | `%s` | %s | %s |\n", (unsigned)i, info.name, kindOfReference(info.kind), target);
  }
}

/* The version of the scene files that the library writes: the word behind the first eight bytes. 0
 * if no file can be written. */
static uint32_t versionOfSceneFiles(void) {
  char path[] = "/tmp/list_catalogue.XXXXXX";
  unsigned char bytes[12] = {0};
  uint32_t version = 0;
  vrdmScene_t* scene;
  FILE* file;
  const int descriptor = mkstemp(path);
  if (descriptor < 0) return 0;
  close(descriptor);
  scene = vrdmCreateScene();
  vrdmSerialize(scene, path);
  vrdmDestroyScene(scene);
  file = fopen(path, "rb");
  if (file) {
    if (fread(bytes, 1, sizeof bytes, file) == sizeof bytes) {
      version = bytes[8] | (uint32_t)bytes[9] << 8 | (uint32_t)bytes[10] << 16 |
                (uint32_t)bytes[11] << 24;
    }
    fclose(file);
  }
  remove(path);
  return version;
}

int main(void) {
  static const char* const kinds[] = {"program", "asset", "instance"};
  uint32_t i;
  printf("# The catalogue\n\nScene files: version %u.\n\n", (unsigned)versionOfSceneFiles());
  fputs(
      "Printed by `examples/list_catalogue.c` from the discovery queries; offsets and sizes are in "
      "bytes.\n"
      "`scripts/write_catalogue.py` writes this page anew.\n",
      stdout);
  for (i = 0; i < vrdmObjectTypeCount(); ++i) {
    printf("\n## %u: %s\n\nKind: %s%s.\n", (unsigned)i, vrdmObjectName(i),
           kinds[vrdmObjectClass(i)], vrdmHasValue(i) ? ", with a value for its program" : "");
    printSlots(i);
    printGroups(i);
  }
  fputs("\n## The scene as a whole\n", stdout);
  printGroups(VRDM_CLASS_SCENE_DATA);
  return ferror(stdout) ? 1 : 0;
}
