/*
 * All functions of the toolkit, which stands beside vornath_data for hosts that cannot trust their
 * files: it checks a scene file before it is read, and writes files whole or not at all. It also
 * writes the catalogue in several forms.
 *
 * These rules hold for all functions, unless a function says otherwise:
 *
 *  - A function that can fail returns a status, VRTK_OK or one of the other VRTK_* codes
 *    (vrtk_error.h), and has as its last argument a pointer to an error object. That pointer may be
 *    null. If it is not, and the function fails, `*error` receives a new error object with the code
 *    and a message; destroy it with vrtkErrorDestroy(). On success, `*error` is left unchanged.
 *  - A function that fails leaves all its arguments as they were, and every out-parameter
 *    unchanged.
 *  - No C++ exception leaves a function, and no function ends the process, whatever a file
 *    contains. What vornath_data throws becomes an error.
 *  - A null argument of a function that returns a status is VRTK_INVALID_ARGUMENT, unless the
 *    function allows it. Functions that read an error, a report or a message must not be given
 * null.
 *  - A string or a block of bytes that a function returns through an out-parameter is the caller's;
 *    free it with vrtkStringDestroy() or vrtkBytesDestroy().
 *  - Paths are NUL-terminated UTF-8 strings. All other strings are UTF-8, too, as far as the file
 *    they come from is.
 *  - A struct with options has a member `structSize`, which the macro of its initial value sets. So
 *    later versions may add members. A null pointer stands for the default options.
 *
 * Threads: any thread may call any function. An object, such as a report or a scene, belongs to one
 * thread at a time; functions that take it const may run at the same time.
 */
#ifndef VORNATH_TOOLKIT_VRTK_H
#define VORNATH_TOOLKIT_VRTK_H

#include "vornath_toolkit/version.h"
#include "vornath_toolkit/vrtk_catalogue.h"
#include "vornath_toolkit/vrtk_check.h"
#include "vornath_toolkit/vrtk_diff.h"
#include "vornath_toolkit/vrtk_digest.h"
#include "vornath_toolkit/vrtk_error.h"
#include "vornath_toolkit/vrtk_file.h"
#include "vornath_toolkit/vrtk_json.h"
#include "vornath_toolkit/vrtk_scene.h"
#include "vornath_toolkit/vrtk_value.h"

#endif
