/* Files that are written whole or not at all. vrtk.h has the rules for all functions. */
#ifndef VORNATH_TOOLKIT_FILE_H
#define VORNATH_TOOLKIT_FILE_H

#include <stdint.h>

#include "vornath_toolkit/vrtk_error.h"
#include "vornath_toolkit/vrtk_scene.h"

VRNT_BEGIN_DECLS

/**
 * Writes bytes to a file, whole or not at all, as vrtkSceneSave() writes a scene. `bytes` may be
 * null only if `size` is 0. `options` may be null.
 * Errors: VRTK_SAVE_NO_FOLDER, VRTK_SAVE_DENIED, VRTK_SAVE_NO_SPACE, VRTK_SAVE_FAILED;
 * VRTK_FILE_IS_FOLDER and VRTK_FILE_NOT_REGULAR for a target that is one; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkFileSave(const void* bytes, uint64_t size, const char* path,
                               const vrtkSaveOptions* options, vrtkError** error);

VRNT_END_DECLS

#endif
