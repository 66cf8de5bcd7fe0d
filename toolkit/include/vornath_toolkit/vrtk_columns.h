/*
 * Columns: a part of one group of many objects as one array, read and written with one call; and a
 * group of one object, written by a call with one argument. vrtk.h has the rules for all functions.
 *
 * A part is given by its offset and its size in bytes in the group, as vrntValueStructField() tells
 * them. Its bytes are copied as they are: a column of a float field is an array of floats.
 */
#ifndef VORNATH_TOOLKIT_COLUMNS_H
#define VORNATH_TOOLKIT_COLUMNS_H

#include <stdint.h>

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/**
 * Lists the slots of a class that have a live object, in ascending order. `*count` receives the
 * number of live objects. `slots` receives as many of their slots as `capacity` allows; it may be
 * null if `capacity` is 0.
 * Errors: VRTK_INVALID_ARGUMENT for a number that is no class.
 */
VRTK_API uint32_t vrtkSceneLiveSlots(const vrdmScene_t* scene, uint32_t objectClass, int32_t* slots,
                                     uint64_t capacity, uint64_t* count, vrtkError** error);

/**
 * Reads the same part of a group of many objects. `slots` are the slots of `count` live objects, in
 * any order. The part of object i is written to `bytes` at i times `stride`; the bytes between the
 * parts are not changed. `stride` is 0 for parts that stand one behind the other, or at least
 * `size`.
 * Errors: VRTK_INVALID_ARGUMENT for a class that has no such group, a part that is not inside of
 * the group, a slot without a live object, and a stride that is too small; VRTK_OUT_OF_MEMORY,
 * after which some parts may be written.
 */
VRTK_API uint32_t vrtkSceneColumnGet(const vrdmScene_t* scene, uint32_t objectClass, uint32_t group,
                                     uint64_t offset, uint64_t size, const int32_t* slots,
                                     uint64_t count, void* bytes, uint64_t stride,
                                     vrtkError** error);

/**
 * Writes the same part of a group of many objects, as vrtkSceneColumnGet() reads it. The other
 * bytes of the groups stay as they are. If a slot occurs more than once, the last part counts.
 * Increments the change counters as vrdmSetDataValue() does. Errors: as vrtkSceneColumnGet().
 * Nothing is written then.
 */
VRTK_API uint32_t vrtkSceneColumnSet(vrdmScene_t* scene, uint32_t objectClass, uint32_t group,
                                     uint64_t offset, uint64_t size, const int32_t* slots,
                                     uint64_t count, const void* bytes, uint64_t stride,
                                     vrtkError** error);

/** A group of one object, or of the whole scene, and the value to write to it. */
typedef struct vrtkGroupPlace {
  vrdmScene_t* scene;
  const vrntValue_t* value; /**< of the group's type; borrowed during the call */
  uint32_t objectClass;     /**< VRDM_CLASS_SCENE_DATA for a group of the whole scene */
  int32_t index;            /**< the slot of the object; not read for VRDM_CLASS_SCENE_DATA */
  uint32_t group;
} vrtkGroupPlace;

/**
 * Writes a group as vrdmSetDataValue() and vrdmSetSceneDataValue() do. For hosts in other
 * languages, for which a call with one argument is quicker: they prepare the place once, change the
 * value, and call this after each change. Errors: VRTK_INVALID_ARGUMENT for null, a null member, a
 * class that has no such group, a slot without a live object, and a value of another type;
 * VRTK_OUT_OF_MEMORY. Nothing is written then; the change counters of the class and of the scene
 * may count the attempt.
 */
VRTK_API uint32_t vrtkSceneGroupSet(const vrtkGroupPlace* place);

VRNT_END_DECLS

#endif
