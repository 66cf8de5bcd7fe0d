/* Error objects of the vrnt functions, strings that the caller destroys, and shutdown. */
#ifndef VORNATH_DATA_ERRORS_H
#define VORNATH_DATA_ERRORS_H

#include <stdint.h>

#include "vornath_data/api.h"

VRNT_BEGIN_DECLS

/**
 * Error codes, as vrntValuesErrorCode() returns them. Which code a failure gets also depends on the
 * function that reports it: vrntValueMap(), vrntValueWrite(), vrntValueSetReference(),
 * vrntValueString() and vrntValueSerialize() report a vrnt::Exception as VRNT_OTHER_ERROR.
 */
enum {
  VRNT_LIBRARY_ERROR = 0, /**< the library threw a vrnt::Exception */
  VRNT_OUT_OF_MEMORY = 1, /**< an allocation failed */
  VRNT_OTHER_ERROR = 2    /**< any other exception, including one thrown by a host's callback */
};

/**
 * An error object: a code and a message.
 *
 * A function that reports errors takes a `vrntValuesError_t**` as its last argument, the error
 * out-parameter. It must not be null. On failure the function stores an error object there; on
 * success it leaves the pointer as it was. So set the pointer to null before the call, and test it
 * afterwards.
 *
 * Ownership: the caller owns the stored error object and destroys it with vrntValuesErrorDestroy().
 * Every failed allocation is reported with the same object, the out-of-memory object; reporting it
 * allocates nothing. It is also stored if there is no memory for another error object.
 *
 * Threads: an error object belongs to the thread that received it. The out-of-memory object is
 * constant, and any number of threads may hold it.
 */
typedef struct vrntValuesError_t vrntValuesError_t;

/**
 * Returns the error code: VRNT_LIBRARY_ERROR, VRNT_OUT_OF_MEMORY or VRNT_OTHER_ERROR. This is not
 * a vrnt::ErrorCode: the error object keeps the message of a vrnt::Exception, but not its code.
 * `error` must not be null.
 * Errors: none.
 */
VRNT_API uint32_t vrntValuesErrorCode(const vrntValuesError_t* error);

/**
 * Returns the message, a NUL-terminated string. `error` must not be null.
 * Ownership: the string belongs to the error object and is valid until the object is destroyed.
 * Errors: none.
 */
VRNT_API const char* vrntValuesErrorMessage(const vrntValuesError_t* error);

/**
 * Destroys an error object. Does nothing for null and for the out-of-memory object, so a caller may
 * destroy every error object that it receives.
 * Errors: none.
 */
VRNT_API void vrntValuesErrorDestroy(vrntValuesError_t* error);

/**
 * Destroys a string that a vrnt function returned as a new string: from vrntTypeCheckSubType(),
 * vrntValueString(), or the reason from vrntValueEqual(). Does nothing for null.
 * Errors: none.
 */
VRNT_API void vrntDestroyString(const char* string);

/**
 * Releases the references that the library itself holds on its fixed types (types.h). This is the
 * last call of a host: destroy all handles before it, and call no function that returns or reads a
 * fixed type after it. It cannot be undone. Does nothing if no type was ever used.
 *
 * The types of scene groups that were in use stay alive until the library is unloaded.
 * Errors: none.
 * Threads: must not run at the same time as any other call of the library.
 */
VRNT_API void vrntValuesShutdown(void);

VRNT_END_DECLS

#endif
