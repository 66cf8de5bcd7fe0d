/*
 * Values: making, reading, writing, comparing, printing and streaming them.
 *
 * A vrntValue_t* is a counted handle on a block: a type and the bytes of one value laid out as the
 * type says. Blocks are copied on write: a block that more than one handle holds is never written,
 * the writer's handle moves to a copy, which is why the writing functions take the handle by
 * pointer. A value's type never carries metadata.
 *
 * Shared by all functions here: a value argument is not null; a result of pointer type is a new
 * reference that the caller ends with vrntValueDestroy(), unless the function says otherwise; an
 * error location is set only on failure and is not null. A view is trusted: a type or offset that
 * doesn't lie within the value is not detected.
 * Threads: any number of threads may read one value; a handle being written belongs to one thread,
 * and no other thread may take a reference to its block meanwhile. Reference counts are atomic.
 */
#ifndef VORNATH_DATA_VALUES_H
#define VORNATH_DATA_VALUES_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/errors.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/**
 * A value's block: this header of 48 bytes, directly followed by the value's bytes.
 *
 * In the bytes, a reference is one 8-byte word: 0 is null; an odd word is an address of the
 * embedder's own, stored as address * 2 + 1; any other is the address of the bytes of another block
 * and holds one reference on it. A function value is two words of the embedder's own.
 */
typedef struct vrntValue_t {
  char magic[8];         /**< "vrntval" and a zero byte: tells a block from a text */
  const char* typeText;  /**< the canonical text of the type, inside the type: in each block that a
                              function handed out and in those that its words lead to. Null only in
                              the middle of a nest of more than 64 references, which a host walks by
                              reading words instead of vrntValueDereference() */
  vrntType_t* type;      /**< holds one reference */
  uint64_t* shadowRefs;  /**< a word for each reference in the type, zero between writes, or null */
  void (*freeFn)(void*); /**< releases this block and shadowRefs */
  uint32_t refCount;     /**< handles and references; changed atomically only */
  uint32_t length;       /**< used elements of a one-dimensional array, else 0 */
} vrntValue_t;

/** A place in a value: a type (borrowed) and the byte offset from the value's first byte. */
typedef struct vrntValueView_t {
  vrntType_t* type;
  uint64_t offset;
} vrntValueView_t;

/** Takes `size` bytes of a stream; must take all. A failure is reported by a C++ exception only. */
typedef void (*vrntWriteFn)(const void* bytes, uint64_t size, void* user);

/** Fills `size` bytes from a stream, all of them: a short read is not detected. */
typedef void (*vrntReadFn)(void* bytes, uint64_t size, void* user);

/** Flags of vrntValueString(); all other bits have no meaning. */
enum {
  VRNT_STRING_EXACT = 1,     /**< a scalar float or half prints as its bits */
  VRNT_STRING_MULTILINE = 4  /**< struct fields stand on lines of their own */
};

/*
 * Making values. On failure each returns null and stores an error: kind 0 for what the library
 * raises, the out-of-memory object, kind 2 for any other exception.
 */

/** A value of the type with all bytes zero. The type is concrete. */
VRNT_API vrntValue_t* vrntValueCreate(const vrntType_t* type, vrntValuesError_t** error);

/**
 * The default value of the type: what `@default` says, of the type and of its parts, an outer one
 * over the inner ones; zero where nothing is said, but for a spectrum (the struct of
 * vrntTypeSpectrum(), or one of its subtypes whose array may be a `float[1]`), which refers to a
 * `float[1]` of 0. A `@default` whose type may not stand for the annotated one is ignored. The type
 * is concrete.
 */
VRNT_API vrntValue_t* vrntValueCreateDefault(const vrntType_t* type, vrntValuesError_t** error);

/**
 * Reads a value's text, as in `{ a = 1; b = [ 1.0, 2.0 ]; }`. An argument that begins with the
 * eight bytes of a block's magic is taken as a block: the result is that block with one more
 * reference.
 * Errors: kind 0 with "Unable to parse value: {}.\n{}", the text and the parser's message, or with
 * the words of a violated rule, such as "Invalid enum constructor: X".
 */
VRNT_API vrntValue_t* vrntValueParse(const void* textOrBlock, vrntValuesError_t** error);

/** A new value of the view's type with a copy of the view's bytes. */
VRNT_API vrntValue_t* vrntValueFromView(const vrntValue_t* value, const vrntValueView_t* view,
                                        vrntValuesError_t** error);

/**
 * Reads a value, with all that it refers to, from what vrntValueSerialize() wrote. Afterwards the
 * reader stands right behind the value's last byte.
 * Errors: also those of vrntTypeParse() for a type text in the stream, and what the callback
 * throws.
 */
VRNT_API vrntValue_t* vrntValueDeserialize(vrntReadFn read, void* user, vrntValuesError_t** error);

/**
 * Carries a value over to another type: a new value that starts as vrntValueCreateDefault() of the
 * type gives it and takes from `value` what fits. Struct fields go by label and array elements by
 * index, on each dimension up to the smaller extent; enums keep the label of their constructor, not
 * the code. A part whose type may stand for that of its counterpart goes over as it is, references
 * included. Numbers aren't converted and references aren't followed: a part of another kind keeps
 * the default, as does a label that the target's enum doesn't have. A target that is an array
 * without extents takes no elements. `value` stays as it is, and the caller's.
 * Errors: kind 0 with "Enum code out of range: {}" for a code that the enum in `value` doesn't
 * have, unless its type goes over as it is; kind 2 for two arrays of one rank that don't fit and
 * one of which has no extents; the out-of-memory object.
 */
VRNT_API vrntValue_t* vrntCoerce(const vrntType_t* type, const vrntValue_t* value,
                                 vrntValuesError_t** error);

/**
 * Reduces a value to what a consumer bakes in: a new value without the struct fields that `type`
 * marks with `@no_specialize`, also those in nested structs and in array elements. The mark counts
 * on the type of a field only, not on that of the whole value or of an element; what is referred to
 * stays whole. A value's own type carries no marks, so `type` is the annotated type that describes
 * it. `value` stays as it is, and the caller's.
 * Errors: kind 0 with "Incompatible type for value -> {}." and the reason if the value may not
 * stand for `type`; kind 2 if `type` is an array without extents, whatever the value has; the
 * out-of-memory object.
 */
VRNT_API vrntValue_t* vrntBuildSpecializationParameters(const vrntType_t* type,
                                                        const vrntValue_t* value,
                                                        vrntValuesError_t** error);

/* Lifetime. */

/** Adds a reference and returns the pointer that it was given: one atomic increment. Errors: none. */
VRNT_API vrntValue_t* vrntValueCopy(const vrntValue_t* value);

/**
 * Drops a reference: one atomic decrement unless it was the last one, which releases the block and
 * its references, however long the chain of them is, without recursion. Errors: none.
 */
VRNT_API void vrntValueDestroy(vrntValue_t* value);

/* Reading. */

/** The value's type: borrowed, it lives as long as the value. Errors: none. */
VRNT_API vrntType_t* vrntValueType(const vrntValue_t* value);

/** The block: borrowed. Errors: none. */
VRNT_API vrntValue_t* vrntValueBinary(const vrntValue_t* value);

/**
 * The value's bytes, vrntTypeSize() of them, at 48 bytes behind the block: borrowed, and only for
 * reading, since others may hold the block; vrntValueMap() is the way to write. Errors: none.
 */
VRNT_API void* vrntValueData(const vrntValue_t* value);

/**
 * Follows the reference at a view. Null for a null reference; for a block that very block with a
 * new reference; for an address of the embedder's own a new value of the referred type, copied from
 * that address.
 * Errors: throws, for an embedder's address, std::bad_variant_access if the view's type is not a
 * reference, and VornathValuesAssertionFailure if it is `void*`; std::bad_alloc.
 */
VRNT_API vrntValue_t* vrntValueDereference(const vrntValue_t* value, const vrntValueView_t* view);

/**
 * Fills `out` with the type (borrowed from the struct type) and offset of a field within its
 * struct; a caller whose struct lies deeper adds its own offset. Result: `out`.
 * Errors: throws VornathValuesAssertionFailure on a type that is not a struct. The index isn't
 * checked.
 */
VRNT_API vrntValueView_t* vrntValueStructField(vrntValueView_t* out, const vrntType_t* structType,
                                               uint32_t field);

/**
 * Fills `out` with the type (borrowed) and offset of an element within its array. `index` points to
 * as many 32-bit integers as the array has dimensions, the fastest running one first; they are not
 * checked against the extents. Result: `out`.
 * Errors: throws VornathValuesAssertionFailure on a type that is not an array, and
 * std::bad_optional_access on one of more than one dimension whose extents are open.
 */
VRNT_API vrntValueView_t* vrntValueArrayElement(vrntValueView_t* out, const vrntType_t* arrayType,
                                                const int32_t* index);

/* Writing. */

/**
 * Prepares a write of the bytes at a view and returns their address; the handle moves to a copy if
 * the block is shared. Until vrntValueUnmap() with the same view the caller may write these bytes,
 * reference words included: the references then count as the caller left them. One map may be open
 * on a block at a time.
 * Errors: null with the out-of-memory object, or kind 2; the handle is then as it was.
 */
VRNT_API void* vrntValueMap(vrntValue_t** value, const vrntValueView_t* view,
                            vrntValuesError_t** error);

/** Ends what vrntValueMap() began, on the handle as the map left it. Errors: none. */
VRNT_API void vrntValueUnmap(vrntValue_t* value, const vrntValueView_t* view);

/**
 * Copies `size` bytes from `source` to the value's bytes at `offset`, as a map of the whole value.
 * Errors: as vrntValueMap(); nothing is written then.
 */
VRNT_API void vrntValueWrite(vrntValue_t** value, uint64_t offset, const void* source,
                             uint64_t size, vrntValuesError_t** error);

/**
 * Makes the reference word at a view refer to `target`, which stays the caller's; null makes it a
 * null reference. The type of the target isn't checked. A value that is made to refer to itself
 * becomes a copy that refers to the original.
 * Errors: as vrntValueMap(); nothing is written then.
 */
VRNT_API void vrntValueSetReference(vrntValue_t** value, const vrntValueView_t* view,
                                    vrntValue_t* target, vrntValuesError_t** error);

/* Comparing, printing, streaming. */

/**
 * Whether the values at two views are equal, floats within an absolute tolerance: 1 or 0. A NaN is
 * unequal to everything; references are equal when they are the same word or lead to equal values.
 * `reason` may be null; else, if a reason is known, it receives a new string for
 * vrntDestroyString(), such as `.a[2].b: 1 != 2`.
 * Errors: none are caught: throws std::bad_alloc for deeply nested values, for shared ones that
 * refer to others, or for a reason, and vrnt::Exception "Enum code out of range: {}" where the
 * reason would print such a code. Don't compare cycles of references.
 */
VRNT_API int32_t vrntValueEqual(const vrntValue_t* a, const vrntValueView_t* viewA,
                                const vrntValue_t* b, const vrntValueView_t* viewB, float tolerance,
                                char** reason);

/**
 * Prints the value at a view in the language that vrntValueParse() reads. The text is read back to
 * an equal value, but for functions, and for references to `int` that lead to an enum: the text
 * says the enum's type only, and a list of such and other references may be refused.
 * Result: a new string for vrntDestroyString(), or null on failure.
 * Errors: kind 2 with the words of any std::exception, "Enum code out of range: {}" among them; the
 * out-of-memory object.
 */
VRNT_API char* vrntValueString(const vrntValue_t* value, const vrntValueView_t* view,
                               uint32_t flags, vrntValuesError_t** error);

/**
 * Writes a value and all that it refers to, each block once, in four calls of the callback a block.
 * Errors: the out-of-memory object, or kind 2 with the words of any std::exception, the callback's
 * included; what else a callback throws passes through. What was delivered until then stays
 * delivered.
 */
VRNT_API void vrntValueSerialize(const vrntValue_t* value, vrntWriteFn write, void* user,
                                 vrntValuesError_t** error);

VRNT_END_DECLS

#endif
