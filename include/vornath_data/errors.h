/* Error objects of the vrnt family, strings that the caller frees, and shutdown. */
#ifndef VORNATH_DATA_ERRORS_H
#define VORNATH_DATA_ERRORS_H

#include <stdint.h>

#include "vornath_data/api.h"

VRNT_BEGIN_DECLS

/** What a flat function caught, as vrntValuesErrorCode() returns it. */
enum {
  VRNT_LIBRARY_ERROR = 0, /**< the library raised a vrnt::Exception */
  VRNT_OUT_OF_MEMORY = 1, /**< an allocation failed */
  VRNT_OTHER_ERROR = 2    /**< any other exception, one of a host's callback included */
};

/**
 * An error object. A function that can fail takes a `vrntValuesError_t**` as its last argument: on
 * failure it stores an object there that the caller owns, on success it leaves the location
 * untouched, so the caller sets the location to null before the call.
 *
 * Threads: an error object belongs to the thread that received it; the out-of-memory object is one
 * constant object that any number of threads may hold.
 */
typedef struct vrntValuesError_t vrntValuesError_t;

/**
 * Reads what was caught: VRNT_LIBRARY_ERROR, VRNT_OUT_OF_MEMORY or VRNT_OTHER_ERROR. This isn't a
 * vrnt::ErrorCode; the code of a library exception survives only in the words of the message.
 * Argument: not null. Errors: none.
 */
VRNT_API uint32_t vrntValuesErrorCode(const vrntValuesError_t* error);

/**
 * Reads the message. Argument: not null.
 * Ownership: the text belongs to the error object and is valid until that is destroyed.
 * Errors: none.
 */
VRNT_API const char* vrntValuesErrorMessage(const vrntValuesError_t* error);

/**
 * Ends an error object. Null and the out-of-memory object are allowed and left alone, so that a
 * caller destroys whatever it was given, any number of times for the out-of-memory object.
 * Errors: none.
 */
VRNT_API void vrntValuesErrorDestroy(vrntValuesError_t* error);

/**
 * Frees a string that a flat function returned as the caller's to free (vrntTypeCheckSubType(),
 * vrntValueString(), the reason of vrntValueEqual()). Null is allowed. Errors: none.
 */
VRNT_API void vrntDestroyString(const char* string);

/**
 * Ends the library's permanent hold on the fixed types. This is the host's last call: every handle
 * is destroyed before it, and no flat function that hands out or reads a fixed type may follow it.
 * There is no way back. Without a type ever used it does nothing.
 * Errors: none. Threads: must not run beside any other call of the library.
 */
VRNT_API void vrntValuesShutdown(void);

VRNT_END_DECLS

#endif
