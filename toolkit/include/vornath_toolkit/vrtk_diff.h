/*
 * Differences between two scenes, and the patch that leads from one to the other. vrtk.h has the
 * rules for all functions.
 */
#ifndef VORNATH_TOOLKIT_DIFF_H
#define VORNATH_TOOLKIT_DIFF_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/** How scenes are compared. */
typedef struct vrtkDiffOptions {
  uint64_t structSize; /**< sizeof(vrtkDiffOptions) */
  double relative;     /**< floats and halves are equal if they differ by no more than the larger of
                            `absolute` and `relative` times the larger of their magnitudes */
  double absolute;     /**< see `relative`. Both are finite and not negative */
  uint64_t maxEntries; /**< the differences that are kept; all are counted. 0 keeps all */
  uint32_t includeIds; /**< not 0: the ids of the scenes and of their assets are compared, too */
} vrtkDiffOptions;

/** The default options, as in `vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;`. */
#define VRTK_DIFF_OPTIONS_INIT \
  { sizeof(vrtkDiffOptions), 0.0, 0.0, 0, 0 }

/** Kinds of difference. */
enum {
  VRTK_DIFF_CHANGED = 0, /**< both scenes have it, with other content */
  VRTK_DIFF_REMOVED = 1, /**< only the first scene has it */
  VRTK_DIFF_ADDED = 2    /**< only the second scene has it */
};

/** A difference. The strings belong to the list that it is from. */
typedef struct vrtkDiffEntry {
  const char* address; /**< a path in the JSON form, such as "Camera/0/groups/General/near_distance"
                            or "Shape/3" for a whole object */
  uint32_t kind;       /**< VRTK_DIFF_* */
  const char* oldText; /**< what the first scene has there, as a JSON value such as "0.1"; null if
                            it has nothing there, and for a whole object */
  const char* newText; /**< what the second scene has there, likewise */
} vrtkDiffEntry;

/** The differences between two scenes. */
typedef struct vrtkDiff vrtkDiff;

/**
 * Compares two scenes. Goes through all parts in the order of the catalogue, and reports those that
 * differ with their addresses in the JSON form:
 *
 *  - "scene/GROUP/FIELD" and "CLASS/SLOT/groups/GROUP/FIELD": one entry for each number, vector,
 *    enum or array element that differs. Numbers are compared as the options say, NaNs bit by bit.
 *  - "CLASS/SLOT/slots/NAME", and behind it "/INDEX" for an element of a list: the references.
 *    An element of a list that is longer in one scene is added or removed.
 *  - "CLASS/SLOT/text": the text of a program.
 *  - "CLASS/SLOT/desc/MEMBER" and "CLASS/SLOT/bytes": the record of an asset, and its bytes, whose
 *    texts are their digests, such as "\"sha256:9f86...\"".
 *  - "CLASS/SLOT/value/type" and "CLASS/SLOT/value/data/PATH": a value. Values of two types are
 *    compared field by field as far as their fields have the same labels; what only one of them has
 *    comes first. The parts of a block come before those of the blocks that it refers to. A block
 * that several references lead to is compared once, where it is first met, and it makes no
 * difference whether references lead to one block or to two equal ones.
 *  - "CLASS/SLOT": an object that is live in one scene only.
 *  - "CLASS": the numbers of slots, where they differ by free slots behind the last object.
 *
 * `*diff` receives a new list; destroy it with vrtkDiffDestroy(). `options` may be null.
 * Errors: VRTK_INVALID_ARGUMENT for a tolerance that is negative or not finite;
 * VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneDiff(const vrdmScene_t* a, const vrdmScene_t* b,
                                const vrtkDiffOptions* options, vrtkDiff** diff, vrtkError** error);

/** Destroys a list of differences. Does nothing for null. Errors: none. */
VRTK_API void vrtkDiffDestroy(vrtkDiff* diff);

/** Returns the number of differences that were found; 0 for equal scenes. Errors: none. */
VRTK_API uint64_t vrtkDiffFound(const vrtkDiff* diff);

/** Returns the number of differences that the list keeps. Errors: none. */
VRTK_API uint64_t vrtkDiffCount(const vrtkDiff* diff);

/**
 * Returns a difference, in the order of the JSON form. Null if `index` is vrtkDiffCount() or
 * greater.
 * Ownership: belongs to the list and is valid as long as the list.
 * Errors: none.
 */
VRTK_API const vrtkDiffEntry* vrtkDiffEntryAt(const vrtkDiff* diff, uint64_t index);

/** Returns the name of a kind of difference, such as "changed"; null for another number. The string
    is static. Errors: none. */
VRTK_API const char* vrtkDiffKindName(uint32_t kind);

/**
 * Writes a list of differences as a JSON document: `{"equal": false, "differences": n, "truncated":
 * false, "entries": [{"address", "kind", "old", "new"}]}`, where "old" and "new" are JSON values,
 * and are left out where there is nothing. `*json` receives a new string; free it with
 * vrtkStringDestroy().
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkDiffJson(const vrtkDiff* diff, char** json, vrtkError** error);

/**
 * Writes a patch of RFC 6902 that leads from the full JSON form of one scene to that of another:
 * vrtkScenePatch() with it makes a scene of the first that is equivalent to the second and has its
 * free slots, its ids and its sharing of values. Bytes of assets that the first scene does not have
 * in the same place are in the patch, in base64.
 *
 * Of the options, only the tolerances count: a number of the first scene stays where it is equal
 * within them. With tolerances of 0, numbers are compared bit by bit.
 *
 * `*json` receives a new string, an array of operations, "[]" for scenes that do not differ; free
 * it with vrtkStringDestroy(). `options` may be null.
 * Errors: VRTK_INVALID_ARGUMENT as vrtkSceneDiff(); the errors of vrtkSceneExport() for a scene
 * that has no JSON form; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneDiffPatch(const vrdmScene_t* a, const vrdmScene_t* b,
                                     const vrtkDiffOptions* options, char** json,
                                     vrtkError** error);

VRNT_END_DECLS

#endif
