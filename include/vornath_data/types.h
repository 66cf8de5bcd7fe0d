/*
 * Run-time types: making them from text, taking them apart, and asking whether a value of one may
 * stand where another is expected.
 *
 * A vrntType_t* is a counted handle on an immutable, interned type. Two handles on one type compare
 * equal as pointers, and two types whose description and metadata agree are one type. Two things
 * are apart from this: a type with a value among its metadata is one of its own for each parse that
 * the table of living types' texts doesn't answer; and the payloads of an enum's constructors don't
 * count, so that of two enums that differ in them alone the first made stands for both.
 *
 * Shared by all functions here: a type argument is not null; a "new reference" is ended by the
 * caller with vrntTypeDestroy(); a text that "belongs to the type" lives as long as the type. An
 * accessor that is given a type of a kind that it doesn't accept throws
 * VornathValuesAssertionFailure through to the host, whose what() says so, as in "vrntTypeFieldType:
 * takes a struct or a function, was given the enum { A; }"; and no index is checked.
 * Threads: every function may be called from any thread; reading a type takes no lock.
 */
#ifndef VORNATH_DATA_TYPES_H
#define VORNATH_DATA_TYPES_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/errors.h"

VRNT_BEGIN_DECLS

/** A type. The handle is the address of the qex::vornath::Type itself. */
typedef struct vrntType_t vrntType_t;

/** The scalar family that vrntTypeBasetype() returns. */
enum {
  VRNT_BASETYPE_CHAR = 0,
  VRNT_BASETYPE_HALF = 1,
  VRNT_BASETYPE_BOOL = 2,
  VRNT_BASETYPE_INT = 3,
  VRNT_BASETYPE_FLOAT = 4,
  VRNT_BASETYPE_STRUCT = 5
};

/** The kind of type that vrntTypeDescriptor() returns. */
enum {
  VRNT_DESCRIPTOR_BASE = 0, /**< a scalar or short vector; also the spectrum struct */
  VRNT_DESCRIPTOR_STRUCT = 1,
  VRNT_DESCRIPTOR_ARRAY = 2, /**< of any rank */
  VRNT_DESCRIPTOR_REFERENCE = 3,
  VRNT_DESCRIPTOR_ENUM = 4,
  VRNT_DESCRIPTOR_FUNCTION = 5
};

/**
 * Makes a type from its text, as in `{ float @default=1.0 x; int[3] n; } @name="Thing"`.
 * Argument: a NUL-terminated text. Result: a new reference, or null on failure.
 * A text in canonical form (what vrntTypeString() returns) whose type is alive is answered from a
 * table, without a parse and without an allocation.
 * Errors: kind 0 with "Unable to parse type: {}.\n{}", the text and the parser's message ("syntax
 * error, unexpected END, expecting ..." or "Illegal character: ..."); kind 0 with the words of a
 * violated rule alone, such as "Duplicate struct field: x."; the out-of-memory object; kind 2 with
 * "Unknown error." for anything else, such as no text at all.
 * Threads: parses are serial in the whole process, answers from the table are not.
 */
VRNT_API vrntType_t* vrntTypeParse(const char* text, vrntValuesError_t** error);

/** Adds a reference and returns the handle that it was given. Errors: none. */
VRNT_API vrntType_t* vrntTypeCopy(const vrntType_t* type);

/** Drops a reference; the last one ends the type unless it is a permanent one. Errors: none. */
VRNT_API void vrntTypeDestroy(const vrntType_t* type);

/** The bytes of one value; 0 for a type that isn't concrete, as `float[]`. Errors: none. */
VRNT_API uint64_t vrntTypeSize(const vrntType_t* type);

/** The alignment of a value in bytes. Errors: none. */
VRNT_API uint64_t vrntTypeAlignment(const vrntType_t* type);

/**
 * The canonical text. It belongs to the type. It parses back to the same type; if there is a value
 * among the metadata, while no other living type has taken over the same text.
 * Errors: none; null if there is no memory to put together the text of several thousand characters
 * that a part of a type has.
 */
VRNT_API const char* vrntTypeString(const vrntType_t* type);

/**
 * The type without metadata, at every depth; the same handle if there is none to take off.
 * Result: a new reference. Errors: none.
 */
VRNT_API vrntType_t* vrntTypeStripMetadata(const vrntType_t* type);

/**
 * The type `float[count]`. The low 32 bits of count are the extent, as a signed number.
 * Result: a new reference. 1, 3 and 166 are permanent types.
 * Errors: throws vrnt::Exception "negative array length" for a negative extent.
 */
VRNT_API vrntType_t* vrtnTypeFloatArray(uint64_t count);

/** The scalar family, VRNT_BASETYPE_*. Accepts base types and structs. */
VRNT_API uint32_t vrntTypeBasetype(const vrntType_t* type);

/** The kind of type, VRNT_DESCRIPTOR_*. Accepts every type. Errors: as vrntTypeIsSubType(). */
VRNT_API uint32_t vrntTypeDescriptor(const vrntType_t* type);

/** The lanes of a base type, 1 to 4; 1 for every other kind of type. Errors: none. */
VRNT_API uint32_t vrntTypeVectorDimension(const vrntType_t* type);

/** The rank of an array, 1 to 4. Accepts arrays. */
VRNT_API uint32_t vrntTypeArrayDimension(const vrntType_t* type);

/**
 * Writes the extents of an array, one 32-bit integer a dimension, the first first; -1 for each if
 * the array type leaves them open. Accepts arrays. `shape` has room for the array's rank.
 */
VRNT_API void vrntTypeArrayShape(const vrntType_t* type, int32_t* shape);

/**
 * The element type of an array, or the target of a reference, which must have one: the target of
 * `void*` is the caller's to avoid. Accepts arrays and references. Result: a new reference.
 */
VRNT_API vrntType_t* vrntTypeElementType(const vrntType_t* type);

/** As vrntTypeElementType(), but null for `void*`. */
VRNT_API vrntType_t* vrntTypeReferencedType(const vrntType_t* type);

/** The number of a struct's fields, an enum's constructors, or a function's arguments. */
VRNT_API uint32_t vrntTypeFieldCount(const vrntType_t* type);

/** vrntTypeFieldCount() under a second name. */
VRNT_API uint32_t vrntTypeConstructorCount(const vrntType_t* type);

/**
 * The label of a struct's field or the name of an enum's constructor. Accepts structs and enums.
 * The text belongs to the type. The index is below vrntTypeFieldCount().
 */
VRNT_API const char* vrntTypeFieldLabel(const vrntType_t* type, uint32_t index);

/** vrntTypeFieldLabel() under a second name. */
VRNT_API const char* vrntTypeConstructorName(const vrntType_t* type, uint32_t index);

/**
 * The type of a struct's field, its metadata included, or of a function's argument. Accepts structs
 * and functions. The index is below vrntTypeFieldCount(). Result: a new reference.
 */
VRNT_API vrntType_t* vrntTypeFieldType(const vrntType_t* type, uint32_t index);

/**
 * Whether a value of `a` may stand where `b` is expected: 1 or 0. Metadata plays no part.
 * `float[3]` may stand for `float[]`, any reference for `void*`, an enum for `int`; an `int` never
 * for a `float`.
 * Errors: throws std::bad_alloc where more than 32 pairs of parts are open at once and there is no
 * memory for them.
 */
VRNT_API int32_t vrntTypeIsSubType(const vrntType_t* a, const vrntType_t* b);

/** Whether each may stand for the other: 1 or 0. Errors: as vrntTypeIsSubType(). */
VRNT_API int32_t vrntTypeIsEqual(const vrntType_t* a, const vrntType_t* b);

/**
 * vrntTypeIsSubType() with the first reason against it in words.
 * Result: null if `a` may stand for `b`; else a new string for vrntDestroyString().
 * Errors: null with the out-of-memory object stored, if the string can't be made; so a null with an
 * untouched location means yes.
 */
VRNT_API char* vrntTypeCheckSubType(const vrntType_t* a, const vrntType_t* b,
                                    vrntValuesError_t** error);

VRNT_END_DECLS

#endif
