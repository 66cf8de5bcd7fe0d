/*
 * Values: create, read, write, compare, print and stream them.
 *
 * A value is a block of memory: a header, followed by the bytes of one value, laid out as its type
 * says. A vrntValue_t* is a reference-counted handle to a block. Blocks are copied on write: a
 * block with more than one reference is never written. A function that writes to such a block
 * copies it first, and moves the caller's handle to the copy. That is why it takes the handle by
 * pointer. The type of a value never has metadata.
 *
 * These rules hold for all functions in this header, unless a function says otherwise:
 *
 *  - A value argument must not be null. It stays the caller's.
 *  - A function that returns a vrntValue_t* returns a new reference. The caller owns it and
 *    releases it with vrntValueDestroy().
 *  - `error` is an error out-parameter (errors.h). It must not be null, and is set only on failure.
 *  - Views are not checked: the type and the offset must describe a part of the value.
 *
 * Threads: any number of threads may read, copy and destroy handles to one block, since the
 * reference count is atomic. While one thread writes through a handle, no other thread may use or
 * copy that handle.
 */
#ifndef VORNATH_DATA_VALUES_H
#define VORNATH_DATA_VALUES_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/errors.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/**
 * The header of a block, 48 bytes. The bytes of the value follow directly.
 *
 * A reference in these bytes is an 8-byte word:
 *
 *  - 0 is a null reference.
 *  - An odd word is a foreign pointer: an address that the host manages, stored as
 *    address * 2 + 1 without its highest bit. It is not counted.
 *  - Any other word is the address of the first value byte of another block, and holds one
 *    reference to that block.
 *
 * A function value is two words that only the host interprets.
 */
typedef struct vrntValue_t {
  char magic[8];         /**< "vrntval" and a zero byte; distinguishes a block from a text */
  const char* typeText;  /**< the canonical text of the type; belongs to the type. Set in each block
                              that a function returned, and in the blocks that its words refer to.
                              Null only in the middle of a chain of more than 64 references, in a
                              block that a host reached by reading words instead of calling
                              vrntValueDereference() */
  vrntType_t* type;      /**< the block holds one reference */
  uint64_t* shadowRefs;  /**< null, or one word per reference in the type, zero unless the block is
                              mapped */
  void (*freeFn)(void*); /**< frees this block and shadowRefs */
  uint32_t refCount;     /**< the number of references to this block; only changed atomically */
  uint32_t length;       /**< used elements of a one-dimensional array, else 0 */
} vrntValue_t;

/** A part of a value: its type (borrowed) and its offset in bytes from the value's first byte. */
typedef struct vrntValueView_t {
  vrntType_t* type;
  uint64_t offset;
} vrntValueView_t;

/**
 * Consumes `size` bytes of a stream, all of them. Only a C++ exception can report a failure. `user`
 * is the pointer that was passed with the callback.
 */
typedef void (*vrntWriteFn)(const void* bytes, uint64_t size, void* user);

/**
 * Fills `bytes` with the next `size` bytes of a stream, all of them: a short read is not detected.
 * `user` is the pointer that was passed with the callback.
 */
typedef void (*vrntReadFn)(void* bytes, uint64_t size, void* user);

/** Flags of vrntValueString(). All other bits are ignored. */
enum {
  VRNT_STRING_EXACT = 1,    /**< prints the bits of a float or half; not for vectors */
  VRNT_STRING_MULTILINE = 4 /**< prints each field of a struct on its own line */
};

/*
 * Create values. On failure, each of these functions returns null and stores an error:
 * VRNT_LIBRARY_ERROR for a vrnt::Exception, the out-of-memory object, or VRNT_OTHER_ERROR for any
 * other exception.
 */

/** Creates a value of the type with all bytes zero. The type must be concrete. */
VRNT_API vrntValue_t* vrntValueCreate(const vrntType_t* type, vrntValuesError_t** error);

/**
 * Creates the default value of a type: the values of its `@default` annotations and those of its
 * parts, where an outer annotation overrides the inner ones. A `@default` is ignored if its type is
 * not a subtype of the annotated type. Zero if no default is given, except for spectra. The type
 * must be concrete.
 *
 * The default of a spectrum is a reference to a new `float[1]` with the element 0. A spectrum is
 * the struct of vrntTypeSpectrum(), or one of its subtypes if its array may be a `float[1]`.
 */
VRNT_API vrntValue_t* vrntValueCreateDefault(const vrntType_t* type, vrntValuesError_t** error);

/**
 * Creates a value from its text, such as `{ a = 1; b = [ 1.0, 2.0 ]; }`. `textOrBlock` is a
 * NUL-terminated string or a block. If it starts with the eight magic bytes of a block, nothing is
 * parsed: the result is a new reference to that block.
 *
 * Errors:
 *  - VRNT_LIBRARY_ERROR with "Unable to parse value: {}.\n{}", where the text and the parser's
 *    message replace the braces.
 *  - VRNT_LIBRARY_ERROR with the message of a violated rule alone, such as
 *    "Invalid enum constructor: X".
 *  - The out-of-memory object.
 *  - VRNT_OTHER_ERROR with "No text." for a null pointer.
 *
 * Threads: as vrntTypeParse().
 */
VRNT_API vrntValue_t* vrntValueParse(const void* textOrBlock, vrntValuesError_t** error);

/** Creates a value of the view's type with a copy of the bytes at the view. */
VRNT_API vrntValue_t* vrntValueFromView(const vrntValue_t* value, const vrntValueView_t* view,
                                        vrntValuesError_t** error);

/**
 * Reads a value and everything that it refers to from a stream that vrntValueSerialize() wrote.
 * Calls `read` until the last byte of the value is read, and no further.
 * Errors: also those of vrntTypeParse() for a type text in the stream, and what the callback
 * throws.
 */
VRNT_API vrntValue_t* vrntValueDeserialize(vrntReadFn read, void* user, vrntValuesError_t** error);

/**
 * Converts a value to another type. Starts from the default value of `type`, as
 * vrntValueCreateDefault() creates it, and copies the parts of `value` that fit:
 *
 *  - A part whose type is a subtype of the target's is copied as it is, including references.
 *  - Struct fields are matched by label, array elements by index, in each dimension up to the
 *    smaller extent.
 *  - An enum keeps the label of its constructor, not its code. A label that the target does not
 *    have gives the default.
 *  - Any other part keeps the default: numbers are not converted and references are not followed.
 *  - A target that is an unsized array receives no elements.
 *
 * `value` is not changed.
 * Errors: VRNT_LIBRARY_ERROR with "Enum code out of range: {}" for a code that the enum in `value`
 * does not have, unless the enum is copied as it is; VRNT_OTHER_ERROR for two arrays of the same
 * rank that are not related and of which one is unsized; the out-of-memory object.
 */
VRNT_API vrntValue_t* vrntCoerce(const vrntType_t* type, const vrntValue_t* value,
                                 vrntValuesError_t** error);

/**
 * Creates a copy of a value without the struct fields that `type` marks with `@no_specialize`. The
 * result contains what a program may compile in as constants.
 *
 * `type` is the annotated type that describes the value, since a value's own type has no
 * annotations. Fields of nested structs and of array elements are removed too. The mark has an
 * effect on the type of a field only, not on the type of the whole value or of an array element.
 * References are copied as they are. `value` is not changed.
 *
 * Errors: VRNT_LIBRARY_ERROR with "Incompatible type for value -> {}." and the reason if the
 * value's type is not a subtype of `type`; VRNT_OTHER_ERROR if `type` is an unsized array, whatever
 * the value is; the out-of-memory object.
 */
VRNT_API vrntValue_t* vrntBuildSpecializationParameters(const vrntType_t* type,
                                                        const vrntValue_t* value,
                                                        vrntValuesError_t** error);

/* Lifetime. */

/**
 * Adds a reference and returns the same pointer. The cost is one atomic increment.
 * Errors: none.
 */
VRNT_API vrntValue_t* vrntValueCopy(const vrntValue_t* value);

/**
 * Releases a reference. The cost is one atomic decrement. Releasing the last reference destroys the
 * block and releases the references in it, without recursion, so that a chain of references may be
 * as long as memory allows.
 * Errors: none.
 */
VRNT_API void vrntValueDestroy(vrntValue_t* value);

/* Read values. */

/** Returns the value's type, borrowed: valid as long as the value. Errors: none. */
VRNT_API vrntType_t* vrntValueType(const vrntValue_t* value);

/** Returns the value's block, borrowed: the same pointer. Errors: none. */
VRNT_API vrntValue_t* vrntValueBinary(const vrntValue_t* value);

/**
 * Returns the value's bytes, borrowed: vrntTypeSize() bytes, 48 bytes after the start of the block.
 * Only read them, since other handles may share the block; use vrntValueMap() to write.
 * Errors: none.
 */
VRNT_API void* vrntValueData(const vrntValue_t* value);

/**
 * Follows the reference at a view. Returns null for a null reference, a new reference to the block
 * that the word refers to, or, for a foreign pointer, a new value of the referenced type with a
 * copy of the bytes at that address.
 * Errors: throws std::bad_alloc. For a foreign pointer, throws std::bad_variant_access if the
 * view's type is not a reference, and VornathValuesAssertionFailure if it is `void*`.
 */
VRNT_API vrntValue_t* vrntValueDereference(const vrntValue_t* value, const vrntValueView_t* view);

/**
 * Writes the type and the offset of a struct's field to `out`, and returns `out`. The type is
 * borrowed from `structType`. The offset counts from the start of the struct; if the struct is part
 * of a value, add its own offset. `field` must be less than vrntTypeFieldCount(); it is not
 * checked. Errors: throws VornathValuesAssertionFailure for a type that is not a struct.
 */
VRNT_API vrntValueView_t* vrntValueStructField(vrntValueView_t* out, const vrntType_t* structType,
                                               uint32_t field);

/**
 * Writes the type and the offset of an array's element to `out`, and returns `out`. The type is
 * borrowed from `arrayType`. The offset counts from the start of the array. `index` points to one
 * 32-bit integer per dimension, the fastest-running one first; they are not checked against the
 * extents.
 * Errors: throws VornathValuesAssertionFailure for a type that is not an array, and
 * std::bad_optional_access for an unsized array of more than one dimension.
 */
VRNT_API vrntValueView_t* vrntValueArrayElement(vrntValueView_t* out, const vrntType_t* arrayType,
                                                const int32_t* index);

/* Write values. */

/**
 * Prepares a write of the bytes at a view and returns their address, borrowed until
 * vrntValueUnmap(). If the block is shared, `*value` moves to a copy. The caller may write the
 * bytes, including reference words, and then must call vrntValueUnmap() with the same view. A word
 * that the caller stores then holds a reference: vrntValueUnmap() adds it, and releases the
 * references of the words that were overwritten. Only one view of a block may be mapped at a time.
 * Errors: returns null and stores the out-of-memory object or VRNT_OTHER_ERROR; `*value` is not
 * changed.
 */
VRNT_API void* vrntValueMap(vrntValue_t** value, const vrntValueView_t* view,
                            vrntValuesError_t** error);

/**
 * Completes the write that vrntValueMap() prepared. `value` is the handle as vrntValueMap() left
 * it, and `view` is the same view.
 * Errors: none.
 */
VRNT_API void vrntValueUnmap(vrntValue_t* value, const vrntValueView_t* view);

/**
 * Copies `size` bytes from `source` to the value's bytes at `offset`. If the block is shared,
 * `*value` moves to a copy. Reference words are counted as in vrntValueUnmap(). `source` stays the
 * caller's.
 * Errors: as vrntValueMap(); nothing is written and `*value` is not changed.
 */
VRNT_API void vrntValueWrite(vrntValue_t** value, uint64_t offset, const void* source,
                             uint64_t size, vrntValuesError_t** error);

/**
 * Makes the reference at a view refer to `target`, or to nothing if `target` is null. If the block
 * is shared, `*value` moves to a copy. The block adds a reference to `target`, which stays the
 * caller's. The type of `target` is not checked. A value that is made to refer to itself becomes a
 * copy that refers to the original.
 * Errors: as vrntValueMap(); nothing is written and `*value` is not changed.
 */
VRNT_API void vrntValueSetReference(vrntValue_t** value, const vrntValueView_t* view,
                                    vrntValue_t* target, vrntValuesError_t** error);

/* Compare, print and stream values. */

/**
 * Returns 1 if the values at two views are equal, else 0. Floats are equal if they differ by
 * `tolerance` at most. A NaN is equal to nothing. References are equal if their words are the same
 * or if they lead to equal values. Do not compare values whose references form a cycle.
 *
 * `reason` may be null. Otherwise, if the values differ and the reason is known, `*reason` receives
 * a new string such as `.a[2].b: 1 != 2`; destroy it with vrntDestroyString().
 *
 * Errors: all exceptions pass through to the host. Throws std::bad_alloc for deeply nested values,
 * for shared values that contain references, or while it builds a reason, and vrnt::Exception with
 * "Enum code out of range: {}" if the reason would print such a code.
 */
VRNT_API int32_t vrntValueEqual(const vrntValue_t* a, const vrntValueView_t* viewA,
                                const vrntValue_t* b, const vrntValueView_t* viewB, float tolerance,
                                char** reason);

/**
 * Returns the text of the value at a view, in the language that vrntValueParse() reads. The text is
 * a new string; destroy it with vrntDestroyString(). `flags` is a combination of VRNT_STRING_*.
 *
 * Parsing the text gives an equal value, except for function values and for references to `int`
 * that refer to an enum: the text contains the type of the enum only, and a list of such references
 * with others may fail to parse.
 *
 * Errors: returns null and stores the out-of-memory object, or VRNT_OTHER_ERROR with the message of
 * any std::exception, such as "Enum code out of range: {}".
 */
VRNT_API char* vrntValueString(const vrntValue_t* value, const vrntValueView_t* view,
                               uint32_t flags, vrntValuesError_t** error);

/**
 * Writes a value and everything that it refers to. Each block is written once, with four calls of
 * the callback.
 * Errors: stores the out-of-memory object, or VRNT_OTHER_ERROR with the message of any
 * std::exception, including those of the callback. Anything else that the callback throws passes
 * through to the host. What was written before the failure remains written.
 */
VRNT_API void vrntValueSerialize(const vrntValue_t* value, vrntWriteFn write, void* user,
                                 vrntValuesError_t** error);

VRNT_END_DECLS

#endif
