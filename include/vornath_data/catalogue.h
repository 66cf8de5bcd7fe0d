/*
 * The catalogue: the 18 classes of objects that a scene holds, with their groups of fields and
 * their reference slots. With these queries a host discovers everything that an object can be told,
 * so it needs no compiled-in knowledge of any class.
 *
 * A class is given by its number, VRDM_CLASS_*, and where a function says so by
 * VRDM_CLASS_SCENE_DATA, which stands for the settings of the scene as a whole. A field, in the
 * words of these functions, is a group: a struct that is read and written as one value of the type
 * vrdmFieldType(); its members are found through that type.
 *
 * Shared by all functions here: any class number and any position is allowed and has an answer. No
 * scene takes part: the catalogue is fixed. Texts are static and never freed.
 * Threads: all may be called from any thread.
 */
#ifndef VORNATH_DATA_CATALOGUE_H
#define VORNATH_DATA_CATALOGUE_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_data/api.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/** The class numbers, in the order of a scene file's sections: VRDM_CLASS_CAMERA_PROGRAM = 0 and so
   on, as catalogue/classes.def lists them. */
enum {
/* NOLINTNEXTLINE(bugprone-macro-parentheses) */
#define VRNT_CLASS(number, name, constant, Desc) constant = number,
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
};

/** In place of a class number: the scene-wide groups. It is -1 in 32 bits. */
static const uint32_t VRDM_CLASS_SCENE_DATA = UINT32_MAX;

/** What the objects of a class are, as vrdmObjectClass() returns it. */
enum {
  VRDM_KIND_PROGRAM = 0, /**< a source text */
  VRDM_KIND_ASSET = 1,   /**< a descriptor and a block of bytes */
  VRDM_KIND_INSTANCE = 2 /**< references, groups, and for some classes a value */
};

/** What a reference slot holds. */
enum {
  VRDM_REFERENCE_REQUIRED = 0,      /**< one slot number, -1 while unset; an object needs one */
  VRDM_REFERENCE_OPTIONAL = 1,      /**< one slot number, -1 for none */
  VRDM_REFERENCE_LIST = 2,          /**< any number of slot numbers */
  VRDM_REFERENCE_ORDERED_DECAL = 3, /**< decals in order: v >= 0 is decal v on the back, v < 0 is
                                         decal ~v on the front, 0x80000000 is none */
  VRDM_REFERENCE_EMITTER = 100      /**< lights and shapes mixed: v >= 0 is shape v, v < 0 is light
                                         ~v, 0x80000000 is none */
};

/** In place of a target class: lights and shapes. */
enum { VRDM_TARGET_EMITTER = 100 };

/** A reference slot of a class. */
typedef struct vrdmReferenceInfo {
  uint32_t kind;        /**< VRDM_REFERENCE_*; whether a required slot is set is never checked */
  uint32_t targetClass; /**< VRDM_CLASS_* or VRDM_TARGET_EMITTER */
  const char* name;     /**< null if there is no such slot */
} vrdmReferenceInfo;

/** The number of classes: 18. Errors: none. */
VRNT_API uint32_t vrdmObjectTypeCount(void);

/** What the objects of a class are, VRDM_KIND_*; 0 for a number that is no class. Errors: none. */
VRNT_API uint32_t vrdmObjectClass(uint32_t objectClass);

/**
 * The name of a class, as "Camera"; null for a number that is no class, VRDM_CLASS_SCENE_DATA
 * included. Errors: none.
 */
VRNT_API const char* vrdmObjectName(uint32_t objectClass);

/**
 * The number of groups of a class or of VRDM_CLASS_SCENE_DATA; 0 for a class without groups and a
 * number that is no class. Errors: none.
 */
VRNT_API uint32_t vrdmFieldCount(uint32_t objectClass);

/**
 * The name of the group at a position from 0, of a class or of VRDM_CLASS_SCENE_DATA: the `@name`
 * of its type. Null past the last one. Errors: none.
 */
VRNT_API const char* vrdmFieldName(uint32_t objectClass, uint32_t field);

/**
 * The type of the group at a position from 0, of a class or of VRDM_CLASS_SCENE_DATA: a struct
 * whose metadata gives labels, descriptions, defaults and limits (metadata.h).
 * Result: a new reference, ended with vrntTypeDestroy(); null past the last group.
 * It is what vrntTypeParse() gives for the group's schema: while one is held, the same one again.
 * Errors: throws std::bad_alloc if there is no memory for it.
 * Threads: the first call for a group parses, and so waits for other parses; a later one finds the
 * type by its text.
 */
VRNT_API vrntType_t* vrdmFieldType(uint32_t objectClass, uint32_t field);

/**
 * The number of reference slots of a class; 0 for VRDM_CLASS_SCENE_DATA and a number that is no
 * class. Errors: none.
 */
VRNT_API uint32_t vrdmReferenceCount(uint32_t objectClass);

/**
 * The reference slot at a position from 0. Where there is none the name is null, and the numbers
 * tell why: all bits set for a class that has no slots at all and for VRDM_CLASS_SCENE_DATA; zero
 * past the last slot of a class that has some, and for a number that is no class. Errors: none.
 */
VRNT_API vrdmReferenceInfo vrdmReferenceType(uint32_t objectClass, uint32_t slot);

/**
 * Whether the objects of a class carry a value with the parameters of their program: true for
 * Camera, Light and Material. Errors: none.
 */
VRNT_API bool vrdmHasValue(uint32_t objectClass);

VRNT_END_DECLS

#endif
