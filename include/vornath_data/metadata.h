/*
 * The annotations of a type: the defaults, limits, labels and flags that a type's text writes with
 * `@`. A function reads the entries of the very type that it is given, not those of its fields or
 * constructors; a field's entries are those of vrntTypeFieldType(). Type and key are never null.
 * Texts belong to the type. Threads: metadata is constant; all may be called from any thread.
 */
#ifndef VORNATH_DATA_METADATA_H
#define VORNATH_DATA_METADATA_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

VRNT_BEGIN_DECLS

/** The kinds of entry that vrntMetadataType() returns. */
enum {
  VRNT_METADATA_FLAG = 0,  /**< `@key` */
  VRNT_METADATA_TEXT = 1,  /**< `@key="text"` */
  VRNT_METADATA_VALUE = 2  /**< `@key=value` */
};

/** The number of entries. Errors: none. */
VRNT_API uint32_t vrntMetadataSize(const vrntType_t* type);

/** The key at a position, in ascending byte order; null at or past the end. Errors: none. */
VRNT_API const char* vrntMetadataName(const vrntType_t* type, uint32_t index);

/** 1 if there is an entry of that key, else 0. Errors: none. */
VRNT_API uint32_t vrntMetadataExists(const vrntType_t* type, const char* key);

/** The kind of an entry, VRNT_METADATA_*. The entry must exist. */
VRNT_API uint32_t vrntMetadataType(const vrntType_t* type, const char* key);

/**
 * The text of an entry. The entry must exist; of another kind it throws
 * VornathValuesAssertionFailure.
 */
VRNT_API const char* vrntMetadataString(const vrntType_t* type, const char* key);

/**
 * The value of an entry. The entry must exist; of another kind it throws
 * VornathValuesAssertionFailure. Result: a new reference, ended with vrntValueDestroy(); the value
 * is shared with the type and copied on the first write. Throws std::bad_alloc if there is no
 * memory for a long text of the value's type that nobody has asked for before.
 */
VRNT_API vrntValue_t* vrntMetadataValue(const vrntType_t* type, const char* key);

VRNT_END_DECLS

#endif
