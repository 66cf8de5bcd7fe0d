/*
 * Scene files, opened and saved safely. vrtk.h has the rules for all functions.
 *
 * A scene that a function returns is a scene of vornath_data: use it with the vrdm functions, and
 * destroy it with vrdmDestroyScene().
 */
#ifndef VORNATH_TOOLKIT_SCENE_H
#define VORNATH_TOOLKIT_SCENE_H

#include <stdint.h>

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_check.h"
#include "vornath_toolkit/vrtk_error.h"
#include "vornath_toolkit/vrtk_json.h"

VRNT_BEGIN_DECLS

/** How a scene is saved. */
typedef struct vrtkSaveOptions {
  uint64_t structSize; /**< sizeof(vrtkSaveOptions) */
  uint32_t skipSync; /**< not 0: does not wait until the bytes are on the device. Faster, but after
                          a crash of the system the file may be empty */
} vrtkSaveOptions;

/** The default options, as in `vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;`. */
#define VRTK_SAVE_OPTIONS_INIT \
  { sizeof(vrtkSaveOptions), 0 }

/**
 * Checks a scene file, and reads it if it has no errors. The file is opened once: if another file
 * takes its place meanwhile, what was checked is still what is read. `limits` may be null.
 *
 * `*scene` receives a new scene that the caller owns. `report` may be null; otherwise `*report`
 * receives a new report, also if the function fails with VRTK_FILE_NO_SCENE, VRTK_FILE_VERSION,
 * VRTK_FILE_DAMAGED or VRTK_FILE_TOO_LARGE.
 *
 * Errors: those of vrtkCheckFile(); VRTK_FILE_NO_SCENE, VRTK_FILE_VERSION, VRTK_FILE_DAMAGED and
 * VRTK_FILE_TOO_LARGE for an error in the report, whose words the message contains.
 */
VRTK_API uint32_t vrtkSceneOpen(const char* path, const vrtkLimits* limits, vrdmScene_t** scene,
                                vrtkReport** report, vrtkError** error);

/** Another name for vrtkSceneOpen(). */
VRTK_API uint32_t vrtkOpenFile(const char* path, const vrtkLimits* limits, vrdmScene_t** scene,
                               vrtkReport** report, vrtkError** error);

/**
 * Checks the bytes of a scene file in memory, and reads them if they have no errors, as
 * vrtkSceneOpen() does. The scene keeps no pointer to the bytes.
 * Errors: as vrtkSceneOpen(), without those of files.
 */
VRTK_API uint32_t vrtkSceneOpenBytes(const void* bytes, uint64_t size, const vrtkLimits* limits,
                                     vrdmScene_t** scene, vrtkReport** report, vrtkError** error);

/**
 * Writes a scene to a file, whole or not at all: beside the target, to the device, and then under
 * the name of the target. Until then, a file that was there stays as it was; if the function fails
 * or is interrupted, it still does, and nothing new is beside it.
 *
 * A target that exists keeps its permissions and, where the system allows it, its owner and group;
 * a new one gets those that the process gives to new files. If the path is a symbolic link, the
 * file that it leads to is replaced, and the link stays. `options` may be null.
 *
 * Errors: VRTK_SCENE_INCOMPLETE with the first object that cannot be written;
 * VRTK_SAVE_NO_FOLDER, VRTK_SAVE_DENIED, VRTK_SAVE_NO_SPACE, VRTK_SAVE_FAILED;
 * VRTK_FILE_IS_FOLDER and VRTK_FILE_NOT_REGULAR for a target that is one; VRTK_LIBRARY_ERROR for a
 * value that cannot be written; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneSave(const vrdmScene_t* scene, const char* path,
                                const vrtkSaveOptions* options, vrtkError** error);

/**
 * Writes a scene to memory. `*bytes` receives a new block of `*size` bytes; free it with
 * vrtkBytesDestroy().
 * Errors: VRTK_SCENE_INCOMPLETE, VRTK_LIBRARY_ERROR, VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneSaveBytes(const vrdmScene_t* scene, void** bytes, uint64_t* size,
                                     vrtkError** error);

/** What became of the objects of a scene that was imported: for each class, an array of slots. */
typedef struct vrtkRenumbering vrtkRenumbering;

/**
 * Adds the content of `source` to `scene`, as Scene::import() does in C++:
 *
 *  - A program whose text the scene already has becomes the first such program. Assets share their
 *    bytes and keep their ids. Programs and assets take the lowest free slots.
 *  - Instances are added behind the last slot of their class, in order; the slots that are free in
 *    the source become free slots at the end. References, and the textures that values name, are
 *    translated. A reference to a slot that is not live becomes -1.
 *  - The id and the scene-wide groups of `scene` stay. The source may be the scene itself.
 *
 * `renumbering` may be null. Otherwise, `*renumbering` receives a new object that says which slot
 * became which; destroy it with vrtkRenumberingDestroy().
 *
 * If the function fails, the scene has its former content and counters again.
 * Errors: VRTK_SCENE_INCOMPLETE for an object of the source that has no value; VRTK_LIBRARY_ERROR
 * for a value that cannot be copied; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneImport(vrdmScene_t* scene, const vrdmScene_t* source,
                                  vrtkRenumbering** renumbering, vrtkError** error);

/** Destroys a renumbering. Does nothing for null. Errors: none. */
VRTK_API void vrtkRenumberingDestroy(vrtkRenumbering* renumbering);

/**
 * Returns the renumbering of a class, VRDM_CLASS_*: an array with an element for each slot of the
 * source, which is the slot in the scene, or -1 for a free slot. `*count` receives the number of
 * elements; `count` may be null. Null, with a count of 0, for a class without slots and for another
 * number.
 * Ownership: belongs to the renumbering and is valid as long as it.
 * Errors: none.
 */
VRTK_API const int32_t* vrtkRenumberingSlots(const vrtkRenumbering* renumbering,
                                             uint32_t objectClass, uint64_t* count);

/**
 * Writes a renumbering as a JSON document: an object with a member for each class that has slots,
 * such as `{"Camera": [0, null, 1]}`, with null for a free slot. `*json` receives a new string;
 * free it with vrtkStringDestroy().
 * Errors: VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkRenumberingJson(const vrtkRenumbering* renumbering, char** json,
                                      vrtkError** error);

/**
 * Compares two scenes as Scene::equivalent() does in C++: `*equivalent` receives whether they have
 * the same content in the same slots. Ids, counters and free slots do not count. Floats in groups
 * are equal as numbers, so that a scene with a NaN in a group is not equivalent to itself; values
 * are equal if their texts are.
 * Errors: VRTK_SCENE_INCOMPLETE for an object without its value; VRTK_LIBRARY_ERROR for a value
 * that has no text, such as one with an enum code without a name; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneEquivalent(const vrdmScene_t* a, const vrdmScene_t* b, bool* equivalent,
                                      vrtkError** error);

/**
 * Prints a whole scene for people, as the stream operator of Scene does in C++: all counters,
 * slots, references, groups and values, and a digest of the bytes of each asset. The addresses in
 * it differ from run to run. Calls `write` with the text in pieces, in order, as vrtkSceneExport()
 * does.
 * Errors: as vrtkSceneEquivalent(); VRTK_WRITE_STOPPED. Pieces were written then.
 */
VRTK_API uint32_t vrtkSceneDump(const vrdmScene_t* scene, vrtkWriteFunction write, void* context,
                                vrtkError** error);

VRNT_END_DECLS

#endif
