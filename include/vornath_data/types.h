/*
 * Run-time types: create a type from its text, inspect it, and test whether a value of one type may
 * be used where another type is expected.
 *
 * A vrntType_t* is a reference-counted handle to an immutable, interned type. Two types with the
 * same description and the same metadata are one object, so two handles to one type are equal as
 * pointers. There are two exceptions:
 *
 *  - A type with a value among its annotations (metadata.h) is a new object for each parse, unless
 *    vrntTypeParse() finds its text in the table of living types.
 *  - The fields of an enum's constructors are not compared. Of two enums that differ only in these
 *    fields, the one created first is used for both.
 *
 * A fixed type is one that the library creates on its first use and keeps until
 * vrntValuesShutdown().
 *
 * These rules hold for all functions in this header:
 *
 *  - A type argument must not be null. It stays the caller's.
 *  - "Returns a new reference": the caller owns the reference and releases it with
 *    vrntTypeDestroy().
 *  - A string "belongs to the type": it is valid as long as the type, and the caller does not
 *    destroy it.
 *  - "Accepts ..." names the kinds of type that a function can be called with. For another kind,
 *    the function throws VornathValuesAssertionFailure, a C++ exception that passes through to the
 *    host. Its what() names the function and the type, as in "vrntTypeFieldType: takes a struct or
 *    a function, was given the enum { A; }".
 *  - Indices are not checked.
 *
 * Threads: any thread may call any function. Reading a type takes no lock.
 */
#ifndef VORNATH_DATA_TYPES_H
#define VORNATH_DATA_TYPES_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/errors.h"

VRNT_BEGIN_DECLS

/** A type. The handle is the address of the qex::vornath::Type object. */
typedef struct vrntType_t vrntType_t;

/** Scalar families, as vrntTypeBasetype() returns them. */
enum {
  VRNT_BASETYPE_CHAR = 0,
  VRNT_BASETYPE_HALF = 1,
  VRNT_BASETYPE_BOOL = 2,
  VRNT_BASETYPE_INT = 3,
  VRNT_BASETYPE_FLOAT = 4,
  VRNT_BASETYPE_STRUCT = 5
};

/** Kinds of type, as vrntTypeDescriptor() returns them. */
enum {
  VRNT_DESCRIPTOR_BASE = 0, /**< a scalar or a vector; also the spectrum struct */
  VRNT_DESCRIPTOR_STRUCT = 1,
  VRNT_DESCRIPTOR_ARRAY = 2, /**< of any rank */
  VRNT_DESCRIPTOR_REFERENCE = 3,
  VRNT_DESCRIPTOR_ENUM = 4,
  VRNT_DESCRIPTOR_FUNCTION = 5
};

/**
 * Creates a type from its text, such as `{ float @default=1.0 x; int[3] n; } @name="Thing"`.
 * `text` is a NUL-terminated string; the library keeps no pointer to it.
 * Returns a new reference, or null on failure.
 *
 * A text in canonical form, as vrntTypeString() returns it, is looked up in a table of the living
 * types first. If it is found there, nothing is parsed and nothing is allocated.
 *
 * Errors:
 *  - VRNT_LIBRARY_ERROR with "Unable to parse type: {}.\n{}", where the text and the parser's
 *    message ("syntax error, unexpected END, expecting ..." or "Illegal character: ...") replace
 *    the braces.
 *  - VRNT_LIBRARY_ERROR with the message of a violated rule alone, such as
 *    "Duplicate struct field: x.".
 *  - The out-of-memory object.
 *  - VRNT_OTHER_ERROR with "Unknown error." for anything else, such as a null text.
 *
 * Threads: only one thread parses at a time in the whole process. Answers from the table do not
 * wait for a parse.
 */
VRNT_API vrntType_t* vrntTypeParse(const char* text, vrntValuesError_t** error);

/** Adds a reference and returns the same handle. The result is a new reference. Errors: none. */
VRNT_API vrntType_t* vrntTypeCopy(const vrntType_t* type);

/**
 * Releases a reference. Releasing the last reference destroys the type; the library's own reference
 * keeps a fixed type alive.
 * Errors: none.
 */
VRNT_API void vrntTypeDestroy(const vrntType_t* type);

/**
 * Returns the size of a value of the type in bytes. Zero for a type that is not concrete, such as
 * `float[]`; 2^64 - 1 for a size that 64 bits cannot represent.
 * Errors: none.
 */
VRNT_API uint64_t vrntTypeSize(const vrntType_t* type);

/** Returns the alignment of a value of the type in bytes. Errors: none. */
VRNT_API uint64_t vrntTypeAlignment(const vrntType_t* type);

/**
 * Returns the canonical text of the type, a NUL-terminated string that belongs to the type. Parsing
 * it returns the same type, with one exception: for a type with a value among its annotations, only
 * until another type with the same text is created.
 * Errors: null if there is no memory to build the text. This can only happen for a type that is
 * part of another type and whose text has several thousand characters.
 */
VRNT_API const char* vrntTypeString(const vrntType_t* type);

/**
 * Returns the type without metadata, its own and that of all its parts; the same handle if there is
 * no metadata. An enum that has annotations also loses the fields of its constructors.
 * The result is a new reference. Errors: none.
 */
VRNT_API vrntType_t* vrntTypeStripMetadata(const vrntType_t* type);

/**
 * Returns the type `float[count]`. The extent is the low 32 bits of `count`, as a signed integer.
 * The result is a new reference. `float[1]`, `float[3]` and `float[166]` are fixed types.
 * Errors: throws vrnt::Exception with "negative array length" for a negative extent, and
 * std::bad_alloc.
 */
VRNT_API vrntType_t* vrtnTypeFloatArray(uint64_t count);

/** Returns the scalar family, VRNT_BASETYPE_*. Accepts base types and structs. */
VRNT_API uint32_t vrntTypeBasetype(const vrntType_t* type);

/**
 * Returns the kind of the type, VRNT_DESCRIPTOR_*. Accepts every type. For the spectrum struct and
 * its subtypes it returns VRNT_DESCRIPTOR_BASE.
 * Errors: as vrntTypeIsSubType().
 */
VRNT_API uint32_t vrntTypeDescriptor(const vrntType_t* type);

/** Returns the lane count of a base type, 1 to 4; 1 for every other kind of type. Errors: none. */
VRNT_API uint32_t vrntTypeVectorDimension(const vrntType_t* type);

/** Returns the rank of an array, 1 to 4. Accepts arrays. */
VRNT_API uint32_t vrntTypeArrayDimension(const vrntType_t* type);

/**
 * Writes the extents of an array to `shape`: one 32-bit integer per dimension, starting with the
 * first dimension. Each is -1 for an unsized array. `shape` must have room for as many integers as
 * vrntTypeArrayDimension() returns. Accepts arrays.
 */
VRNT_API void vrntTypeArrayShape(const vrntType_t* type, int32_t* shape);

/**
 * Returns the element type of an array or the referenced type of a reference, as a new reference.
 * Accepts arrays and references. Undefined for `void*`; use vrntTypeReferencedType().
 */
VRNT_API vrntType_t* vrntTypeElementType(const vrntType_t* type);

/** Returns the same as vrntTypeElementType(), but null for `void*`. */
VRNT_API vrntType_t* vrntTypeReferencedType(const vrntType_t* type);

/**
 * Returns the number of fields of a struct, of constructors of an enum, or of arguments of a
 * function. Accepts these three kinds.
 */
VRNT_API uint32_t vrntTypeFieldCount(const vrntType_t* type);

/** Another name for vrntTypeFieldCount(). Accepts the same types. */
VRNT_API uint32_t vrntTypeConstructorCount(const vrntType_t* type);

/**
 * Returns the label of a struct's field or the name of an enum's constructor. The string belongs to
 * the type. `index` must be less than vrntTypeFieldCount(). Accepts structs and enums.
 */
VRNT_API const char* vrntTypeFieldLabel(const vrntType_t* type, uint32_t index);

/** Another name for vrntTypeFieldLabel(). Accepts the same types. */
VRNT_API const char* vrntTypeConstructorName(const vrntType_t* type, uint32_t index);

/**
 * Returns the type of a struct's field, including its metadata, or of a function's argument, as a
 * new reference. `index` must be less than vrntTypeFieldCount(). Accepts structs and functions.
 */
VRNT_API vrntType_t* vrntTypeFieldType(const vrntType_t* type, uint32_t index);

/**
 * Returns 1 if `a` is a subtype of `b`, else 0. A value of a subtype may be used where `b` is
 * expected. Metadata is not compared. For example, `float[3]` is a subtype of `float[]`, every
 * reference is one of `void*`, and every enum is one of `int`; but `int` is not one of `float`.
 * Errors: throws std::bad_alloc. Memory is needed only if the comparison has to keep more than 32
 * pairs of parts at once.
 */
VRNT_API int32_t vrntTypeIsSubType(const vrntType_t* a, const vrntType_t* b);

/**
 * Returns 1 if each type is a subtype of the other, else 0.
 * Errors: as vrntTypeIsSubType().
 */
VRNT_API int32_t vrntTypeIsEqual(const vrntType_t* a, const vrntType_t* b);

/**
 * Returns null if `a` is a subtype of `b`, else a message with the first reason why it is not. The
 * message is a new string; destroy it with vrntDestroyString().
 * Errors: stores the out-of-memory object and returns null. So the types are related only if the
 * result is null and no error was stored.
 */
VRNT_API char* vrntTypeCheckSubType(const vrntType_t* a, const vrntType_t* b,
                                    vrntValuesError_t** error);

VRNT_END_DECLS

#endif
