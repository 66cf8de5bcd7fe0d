/*
 * Metadata: the annotations of a type, written with `@` in the type's text. They hold defaults,
 * limits, labels and flags. Each annotation has a key and is a flag, a text or a value.
 *
 * A function reads the annotations of exactly the type that it is given, not those of its fields or
 * constructors. To read those of a field, pass the type that vrntTypeFieldType() returns.
 *
 * These rules hold for all functions in this header: type and key must not be null, and both stay
 * the caller's; a returned string belongs to the type and is valid as long as the type.
 *
 * Threads: metadata never changes. Any thread may call any function.
 */
#ifndef VORNATH_DATA_METADATA_H
#define VORNATH_DATA_METADATA_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

VRNT_BEGIN_DECLS

/** Kinds of annotation, as vrntMetadataType() returns them. */
enum {
  VRNT_METADATA_FLAG = 0, /**< `@key` */
  VRNT_METADATA_TEXT = 1, /**< `@key="text"` */
  VRNT_METADATA_VALUE = 2 /**< `@key=value` */
};

/** Returns the number of annotations. Errors: none. */
VRNT_API uint32_t vrntMetadataSize(const vrntType_t* type);

/**
 * Returns the key of the annotation at an index. Keys are in ascending byte order. Null if `index`
 * is vrntMetadataSize() or greater.
 * Errors: none.
 */
VRNT_API const char* vrntMetadataName(const vrntType_t* type, uint32_t index);

/** Returns 1 if the type has an annotation with the key, else 0. Errors: none. */
VRNT_API uint32_t vrntMetadataExists(const vrntType_t* type, const char* key);

/** Returns the kind of an annotation, VRNT_METADATA_*. Undefined if the key does not exist. */
VRNT_API uint32_t vrntMetadataType(const vrntType_t* type, const char* key);

/**
 * Returns the text of an annotation. Undefined if the key does not exist.
 * Errors: throws VornathValuesAssertionFailure for an annotation of another kind; what() is as in
 * "vrntMetadataString: takes an annotation with a text, was given the flag @hide".
 */
VRNT_API const char* vrntMetadataString(const vrntType_t* type, const char* key);

/**
 * Returns the value of an annotation. Undefined if the key does not exist.
 * The result is a new reference; release it with vrntValueDestroy(). The type and the caller share
 * the value; the first write copies it.
 * Errors: throws VornathValuesAssertionFailure for an annotation of another kind, as
 * vrntMetadataString() does, and std::bad_alloc if the text of the value's type is long, was never
 * built, and there is no memory for it.
 */
VRNT_API vrntValue_t* vrntMetadataValue(const vrntType_t* type, const char* key);

VRNT_END_DECLS

#endif
