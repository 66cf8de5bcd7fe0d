/*
 * The catalogue: the 18 classes of objects in a scene, with their groups and their reference slots.
 * A host that uses these queries needs no compiled-in knowledge of any class.
 *
 * A class is given by its code, VRDM_CLASS_*. Where a function says so, VRDM_CLASS_SCENE_DATA is
 * also allowed and selects the settings of the whole scene.
 *
 * A group is a struct of settings that is read and written as one value, of the type
 * vrdmFieldType(). The names of these functions call a group a field; the members of the struct are
 * found through its type.
 *
 * The catalogue is fixed: no function takes a scene. Every code and every index may be passed; a
 * code that no class has is called invalid. A returned string is static; the caller does not
 * destroy it.
 *
 * Threads: any thread may call any function.
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

/** Class codes, in the order of the sections of a scene file: VRDM_CLASS_CAMERA_PROGRAM = 0 and so
    on, as catalogue/classes.def lists them. */
enum {
/* NOLINTNEXTLINE(bugprone-macro-parentheses) */
#define VRNT_CLASS(number, name, constant, Desc) constant = number,
#include "vornath_data/catalogue/classes.def"
#undef VRNT_CLASS
};

/** Selects the scene-wide groups in place of a class: -1 as a 32-bit integer. */
static const uint32_t VRDM_CLASS_SCENE_DATA = UINT32_MAX;

/** Kinds of class, as vrdmObjectClass() returns them. */
enum {
  VRDM_KIND_PROGRAM = 0, /**< a source text */
  VRDM_KIND_ASSET = 1,   /**< a record and a block of bytes */
  VRDM_KIND_INSTANCE = 2 /**< references, groups and, for some classes, a value */
};

/** Kinds of reference slot: what a slot holds. */
enum {
  VRDM_REFERENCE_REQUIRED = 0,      /**< one object index; -1 while the slot is not set */
  VRDM_REFERENCE_OPTIONAL = 1,      /**< one object index; -1 for none */
  VRDM_REFERENCE_LIST = 2,          /**< any number of object indices */
  VRDM_REFERENCE_ORDERED_DECAL = 3, /**< a list of decals in order: v >= 0 is decal v on the back,
                                         v < 0 is decal ~v on the front, 0x80000000 is none */
  VRDM_REFERENCE_EMITTER = 100      /**< a list of lights and shapes: v >= 0 is shape v, v < 0 is
                                         light ~v, 0x80000000 is none */
};

/** The target of a VRDM_REFERENCE_EMITTER slot, in place of a class code: lights and shapes. */
enum { VRDM_TARGET_EMITTER = 100 };

/** A description of a reference slot. */
typedef struct vrdmReferenceInfo {
  uint32_t kind;        /**< VRDM_REFERENCE_*; nothing checks that a required slot is set */
  uint32_t targetClass; /**< VRDM_CLASS_* or VRDM_TARGET_EMITTER */
  const char* name;     /**< null if there is no such slot */
} vrdmReferenceInfo;

/** Returns the number of classes, 18. Errors: none. */
VRNT_API uint32_t vrdmObjectTypeCount(void);

/** Returns the kind of a class, VRDM_KIND_*; 0 for an invalid code. Errors: none. */
VRNT_API uint32_t vrdmObjectClass(uint32_t objectClass);

/**
 * Returns the name of a class, such as "Camera"; null for an invalid code and for
 * VRDM_CLASS_SCENE_DATA.
 * Errors: none.
 */
VRNT_API const char* vrdmObjectName(uint32_t objectClass);

/**
 * Returns the number of groups of a class or of VRDM_CLASS_SCENE_DATA. Zero for a class without
 * groups and for an invalid code.
 * Errors: none.
 */
VRNT_API uint32_t vrdmFieldCount(uint32_t objectClass);

/**
 * Returns the name of a group of a class or of VRDM_CLASS_SCENE_DATA: the `@name` of its type.
 * `field` is the index of the group. Null if there is no such group.
 * Errors: none.
 */
VRNT_API const char* vrdmFieldName(uint32_t objectClass, uint32_t field);

/**
 * Returns the type of a group of a class or of VRDM_CLASS_SCENE_DATA: a struct whose metadata
 * contains labels, descriptions, defaults and limits (metadata.h). `field` is the index of the
 * group.
 *
 * The result is a new reference; release it with vrntTypeDestroy(). Null if there is no such group.
 * It is the type that vrntTypeParse() returns for the group's schema: as long as a reference to it
 * is held, each call returns the same handle.
 *
 * Errors: throws std::bad_alloc.
 * Threads: the first call for a group parses its schema, and so waits for other parses. A later
 * call finds the type by its text.
 */
VRNT_API vrntType_t* vrdmFieldType(uint32_t objectClass, uint32_t field);

/**
 * Returns the number of reference slots of a class; 0 for VRDM_CLASS_SCENE_DATA and for an
 * invalid code.
 * Errors: none.
 */
VRNT_API uint32_t vrdmReferenceCount(uint32_t objectClass);

/**
 * Returns the description of a reference slot. `slot` is the index of the reference slot.
 *
 * If there is no such slot, `name` is null, and the other two members say why: both are UINT32_MAX
 * for a class without reference slots and for VRDM_CLASS_SCENE_DATA; both are 0 if `slot` is too
 * large for a class that has reference slots, and for an invalid code.
 * Errors: none.
 */
VRNT_API vrdmReferenceInfo vrdmReferenceType(uint32_t objectClass, uint32_t slot);

/**
 * Returns whether the objects of a class have a value with the parameters of their program: true
 * for Camera, Light and Material.
 * Errors: none.
 */
VRNT_API bool vrdmHasValue(uint32_t objectClass);

VRNT_END_DECLS

#endif
