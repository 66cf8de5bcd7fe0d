/* Status codes and error objects of the toolkit, and what frees its strings. vrtk.h has the rules.
 */
#ifndef VORNATH_TOOLKIT_ERROR_H
#define VORNATH_TOOLKIT_ERROR_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_toolkit/vrtk_api.h"

VRNT_BEGIN_DECLS

/** Status codes. The numbers are part of the interface; new codes get new numbers. */
enum {
  VRTK_OK = 0,
  VRTK_INVALID_ARGUMENT = 1,   /**< a null or an unknown argument */
  VRTK_OUT_OF_MEMORY = 2,      /**< an allocation failed */
  VRTK_LIBRARY_ERROR = 3,      /**< vornath_data reported or threw an error */
  VRTK_INTERNAL_ERROR = 4,     /**< a defect of the toolkit or of a library below it */
  VRTK_FILE_MISSING = 10,      /**< there is no such file, or no such folder on the path */
  VRTK_FILE_UNREADABLE = 11,   /**< no permission to read, or the device reported an error */
  VRTK_FILE_IS_FOLDER = 12,    /**< the path names a folder */
  VRTK_FILE_NOT_REGULAR = 13,  /**< the path names a FIFO, a socket or a device */
  VRTK_FILE_NO_SCENE = 14,     /**< the file does not start as a scene file does */
  VRTK_FILE_VERSION = 15,      /**< the scene file has another version than the library reads */
  VRTK_FILE_DAMAGED = 16,      /**< the check found an error; the report says which */
  VRTK_FILE_TOO_LARGE = 17,    /**< reading the file would take more memory than the limit */
  VRTK_FILE_CHANGED = 18,      /**< the file was changed while it was checked or read */
  VRTK_SAVE_NO_FOLDER = 30,    /**< the folder of the target does not exist */
  VRTK_SAVE_DENIED = 31,       /**< no permission to write there, or a read-only file system */
  VRTK_SAVE_NO_SPACE = 32,     /**< no space left, a quota or a limit on the size of files */
  VRTK_SAVE_FAILED = 33,       /**< the device reported another error */
  VRTK_SCENE_INCOMPLETE = 40,  /**< an object without its value, or an asset of too few bytes */
  VRTK_CATALOGUE_UNKNOWN = 60, /**< the catalogue has no class or group of that name */
  VRTK_CATALOGUE_INVALID = 61, /**< the text is no catalogue in the form of JSON */
  VRTK_JSON_INVALID = 50,      /**< something is wrong with a JSON text; the report says what */
  VRTK_ADDRESS_UNKNOWN = 51,   /**< an address names nothing in the scene */
  VRTK_PATCH_FAILED = 52,      /**< a path of a patch leads nowhere, or a test in it fails */
  VRTK_WRITE_STOPPED = 53,     /**< a function of the caller that takes bytes asked to stop */
  VRTK_VALUE_CYCLE = 54,       /**< the references of a value form a cycle */
  VRTK_TEXT_INVALID = 70,      /**< the text of a type or a value has an error; see
                                    vrtkErrorPlace() */
  VRTK_VALUE_TYPE = 71         /**< a value is not of the type that is expected */
};

/** An error object: a code and a message. */
typedef struct vrtkError vrtkError;

/** Returns the status code of an error, not VRTK_OK. Errors: none. */
VRTK_API uint32_t vrtkErrorCode(const vrtkError* error);

/**
 * Returns the message of an error: what happened, where, and what to do about it. It is one line
 * without a full stop at its end, such as "box.vrnscene: there is no such file; check the path".
 * Ownership: belongs to the error and is valid as long as the error.
 * Errors: none.
 */
VRTK_API const char* vrtkErrorMessage(const vrtkError* error);

/** A place in a text. */
typedef struct vrtkTextPlace {
  uint64_t line;   /**< 1 for the first line. Only a line feed ends a line */
  uint64_t column; /**< 1 for the first character of the line. Counts characters, not bytes */
  uint64_t offset; /**< bytes from the start of the text */
} vrtkTextPlace;

/**
 * Returns whether an error belongs to a place in a text, and then writes the place to `*place`,
 * unless `place` is null. Otherwise, leaves it unchanged. At the end of a text, the place is behind its last character.
 * Errors: none.
 */
VRTK_API bool vrtkErrorPlace(const vrtkError* error, vrtkTextPlace* place);

/** Destroys an error object. Does nothing for null. Errors: none. */
VRTK_API void vrtkErrorDestroy(vrtkError* error);

/**
 * Returns the name of a status code without its prefix, such as "FILE_MISSING"; null for a number
 * that is no status code. The string is static.
 * Errors: none.
 */
VRTK_API const char* vrtkStatusName(uint32_t status);

/** Frees a string that a function of the toolkit returned. Does nothing for null. Errors: none. */
VRTK_API void vrtkStringDestroy(char* string);

/** Frees bytes that a function of the toolkit returned. Does nothing for null. Errors: none. */
VRTK_API void vrtkBytesDestroy(void* bytes);

/**
 * Returns the version of the toolkit that the program runs with, such as "1.0.0". The string is
 * static.
 * Errors: none.
 */
VRTK_API const char* vrtkVersion(void);

VRNT_END_DECLS

#endif
