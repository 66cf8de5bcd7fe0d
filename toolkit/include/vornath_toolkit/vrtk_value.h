/*
 * Types and values: texts that people type, limits, the choices of enums, and descriptions of types
 * and values. vrtk.h has the rules for all functions.
 *
 * An annotated type is a type with metadata (vornath_data/metadata.h): defaults, limits, labels.
 * The types of groups are annotated (vrdmFieldType()). The type of a value never is, so the
 * functions below take the annotated type beside the value.
 *
 * A path leads to a part of a value, as in the JSON form of a scene: "matrix/x/0" is the first
 * component of the field x of the field matrix. The path of the value itself is empty.
 */
#ifndef VORNATH_TOOLKIT_VALUE_H
#define VORNATH_TOOLKIT_VALUE_H

#include <stdint.h>
#ifndef __cplusplus
#include <stdbool.h>
#endif

#include "vornath_data/types.h"
#include "vornath_data/values.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/* Texts. */

/**
 * Parses the text of a type, as vrntTypeParse() does, and tells the place of an error.
 * `*type` receives a new reference; release it with vrntTypeDestroy().
 * Errors: VRTK_TEXT_INVALID with the words of the library; vrtkErrorPlace() tells the first place
 * in the text from which on nothing can make it right. VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkTypeParse(const char* text, vrntType_t** type, vrtkError** error);

/**
 * Parses the text of a value in the language of vrntValueParse(), and tells the place of an error.
 * `*value` receives a new reference; release it with vrntValueDestroy().
 * Errors: as vrtkTypeParse().
 */
VRTK_API uint32_t vrtkValueParse(const char* text, vrntValue_t** value, vrtkError** error);

/**
 * Reads a text that a person typed as a value of a type. It reads all that vrntValueString() writes
 * for the type, and is more lenient where the type tells what is meant:
 *
 *  - A field that is left out keeps its default, as vrntValueCreateDefault() has it. The fields may
 *    be in any order, the last ";" of a struct may be missing, and "," may stand for ";".
 *  - A constructor of an enum stands bare, as in `mode = FIT_SIZE;`.
 *  - An int may stand for a float, a half or a char, and 0 and 1 do not stand for a bool. Chars and
 *    halves need no suffix. "inf" and "nan" stand for themselves.
 *  - A vector is written as `float3(1, 0, 0)`, `(1, 0, 0)` or `[1, 0, 0]`. One number does not
 *    stand for a vector.
 *  - An array has as many elements as its type says. The arrays of an array with several
 *    dimensions are written one inside the other, the outermost being the last dimension, or as
 *    vrntValueString() writes them.
 *  - A reference is `& VALUE` with a value of the referenced type, `null`, or `$0`; the `&` may be
 *    missing. An address of this process is not read.
 *
 * A number outside the range of its type is refused: an int that 32 bits cannot represent, a char
 * outside 0 to 255, a float or half that would become infinite. The limits of the type's metadata
 * are not enforced; use vrtkValueCheck() or vrtkValueClamp().
 *
 * `type` is an annotated type, or any other concrete one, or an unsized array of one dimension,
 * which then has as many elements as the text. `*value` receives a new value, whose type has no
 * metadata; release it with vrntValueDestroy().
 *
 * Errors: VRTK_TEXT_INVALID, with words such as "the struct has no field 'mod'; did you mean
 * 'mode'?" and the place, which vrtkErrorPlace() returns; VRTK_INVALID_ARGUMENT for a type of which
 * there are no values; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueParseAs(const vrntType_t* type, const char* text, vrntValue_t** value,
                                   vrtkError** error);

/**
 * Converts a value to another type, as vrntCoerce() does. With `lenient` 0, it fails if something
 * does not fit: a part of the value whose type is not that of the target, a label that the target's
 * enum does not have. Fields and elements that only one of the types has are no failure.
 * `*result` receives a new reference; release it with vrntValueDestroy().
 * Errors: VRTK_VALUE_TYPE with the path of the first part that does not fit;
 * VRTK_LIBRARY_ERROR; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueCoerce(const vrntType_t* type, const vrntValue_t* value,
                                  uint32_t lenient, vrntValue_t** result, vrtkError** error);

/* Limits. */

/**
 * The merged limits of a type, as values of the type: each leaf contains the limit of that leaf.
 * All are references of the caller's.
 */
typedef struct vrtkBounds {
  uint64_t structSize;       /**< sizeof(vrtkBounds) */
  vrntValue_t* defaultValue; /**< as vrntValueCreateDefault() has it */
  vrntValue_t* min;
  vrntValue_t* max;
  vrntValue_t* softMin; /**< the range that a control should offer; a value may lie beyond it */
  vrntValue_t* softMax;
} vrtkBounds;

/** The initial value, as in `vrtkBounds bounds = VRTK_BOUNDS_INIT;`. */
#define VRTK_BOUNDS_INIT \
  { sizeof(vrtkBounds), 0, 0, 0, 0, 0 }

/**
 * Merges the limits of a type and its parts. A number starts with the range of its type (a float
 * with both infinities), an enum with its first and last code, a bool with false and true. The
 * annotations `@min`, `@max`, `@soft_min` and `@soft_max` of a type replace those of its parts; one
 * whose value is not of the annotated type is ignored. `@min` also sets the soft minimum if there
 * is no `@soft_min`, and `@max` the soft maximum. References and functions have no limits: their
 * words are 0, except in `defaultValue`.
 *
 * The members of `*bounds` receive new values; release them with vrtkBoundsRelease(). `type` must
 * be concrete.
 * Errors: VRTK_INVALID_ARGUMENT for a type of which there are no values; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueBounds(const vrntType_t* type, vrtkBounds* bounds, vrtkError** error);

/** Releases the values in `*bounds` and sets them to null. Does nothing for null. Errors: none. */
VRTK_API void vrtkBoundsRelease(vrtkBounds* bounds);

/**
 * Draws each leaf of a value into its limits: a number below its minimum becomes the minimum, one
 * above its maximum the maximum, a NaN the default, an enum code without a constructor the default.
 * A true bool gets all bits. A number whose default is outside its limits may have that default.
 * References, and what they lead to, stay as they are.
 *
 * `type` is the annotated type. `*value` is replaced if the block is shared, as by vrntValueMap();
 * nothing is written if all leaves are within their limits. `*changed` receives how many leaves
 * were changed; `changed` may be null.
 * Errors: VRTK_VALUE_TYPE if the value's type is not that of `type`; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueClamp(const vrntType_t* type, vrntValue_t** value, uint64_t* changed,
                                 vrtkError** error);

/** A leaf of a value that is outside its limits. The strings belong to the list. */
typedef struct vrtkOutside {
  const char* path;    /**< such as "matrix/x/0" */
  uint64_t offset;     /**< bytes from the start of the value */
  const char* message; /**< such as "2.5 is above the maximum, 1" */
} vrtkOutside;

/** The leaves of a value that are outside their limits. */
typedef struct vrtkOutsideList vrtkOutsideList;

/**
 * Lists the leaves that vrtkValueClamp() would change, in the order of their offsets.
 * `*list` receives a new list; destroy it with vrtkOutsideListDestroy().
 * Errors: VRTK_VALUE_TYPE if the value's type is not that of `type`; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueCheck(const vrntType_t* type, const vrntValue_t* value,
                                 vrtkOutsideList** list, vrtkError** error);

/** Destroys a list of leaves. Does nothing for null. Errors: none. */
VRTK_API void vrtkOutsideListDestroy(vrtkOutsideList* list);

/** Returns the number of leaves outside their limits. Errors: none. */
VRTK_API uint64_t vrtkOutsideCount(const vrtkOutsideList* list);

/**
 * Returns a leaf; null if `index` is vrtkOutsideCount() or greater.
 * Ownership: belongs to the list and is valid as long as the list.
 * Errors: none.
 */
VRTK_API const vrtkOutside* vrtkOutsideAt(const vrtkOutsideList* list, uint64_t index);

/* The choices of an enum. */

/** A constructor of an enum, as a choice for people. The strings belong to the list. */
typedef struct vrtkEnumChoice {
  uint32_t code;           /**< the code that a value contains: the index of the constructor */
  const char* label;       /**< the name in the type, such as "FIT_SIZE" */
  const char* name;        /**< the name to show: its annotation `@name`, or else the label */
  const char* description; /**< its annotation `@desc`, or empty */
  const char* fields;      /**< its fields as they stand in the type, such as "float x", or empty */
} vrtkEnumChoice;

/** The choices of an enum. */
typedef struct vrtkEnumChoices vrtkEnumChoices;

/**
 * Lists the constructors of an enum, with their annotations.
 * `*choices` receives a new list; destroy it with vrtkEnumChoicesDestroy().
 * Errors: VRTK_INVALID_ARGUMENT for a type that is no enum; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkEnumChoicesOf(const vrntType_t* type, vrtkEnumChoices** choices,
                                    vrtkError** error);

/** Destroys a list of choices. Does nothing for null. Errors: none. */
VRTK_API void vrtkEnumChoicesDestroy(vrtkEnumChoices* choices);

/** Returns the number of choices. Errors: none. */
VRTK_API uint32_t vrtkEnumChoiceCount(const vrtkEnumChoices* choices);

/**
 * Returns a choice by its code; null if `code` is vrtkEnumChoiceCount() or greater.
 * Ownership: belongs to the list and is valid as long as the list.
 * Errors: none.
 */
VRTK_API const vrtkEnumChoice* vrtkEnumChoiceAt(const vrtkEnumChoices* choices, uint32_t code);

/* Descriptions. */

/** Forms of a description. */
enum {
  VRTK_DESCRIPTION_TEXT = 0, /**< for people, in columns */
  VRTK_DESCRIPTION_JSON = 1  /**< one JSON document */
};

/**
 * Describes a type in a form, VRTK_DESCRIPTION_*: its canonical text, its size and alignment in
 * bytes, and its layout: each part with its path, offset, size, type, default and limits.
 *
 * The JSON document is `{"type", "canonical", "kind", "concrete", "size", "alignment", "layout":
 * [{"path", "offset", "size", "alignment", "type", "kind", "default", "min", "max", "softMin",
 * "softMax", "name", "description", "unit", "choices"}]}`. Members of a part that do not apply are
 * left out. The parts are the fields of structs, at any depth; an array is one part, followed by
 * the parts of its element with "[]" in their paths if that is a struct. Numbers are as in the JSON
 * form of a scene. Paths and types of parts that are longer than people read are cut, and end in
 * "...". Defaults and limits are left out of arrays of more than 64 elements, and of types of more
 * than 16 MiB.
 *
 * `*description` receives a new string; free it with vrtkStringDestroy().
 * Errors: VRTK_INVALID_ARGUMENT for another form; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkTypeDescribe(const vrntType_t* type, uint32_t form, char** description,
                                   vrtkError** error);

/**
 * Describes a value in a form, VRTK_DESCRIPTION_*: its type and size, its canonical text, its data
 * in the JSON form of a scene, and each leaf with its path and offset. `type` is an annotated type,
 * and adds the defaults and limits; it may be null.
 *
 * The JSON document is `{"type", "size", "alignment", "text", "data", "leaves": [{"path", "offset",
 * "type", "value", "default", "outside"}]}`; "default" is there if `type` is given and the leaf is
 * not its default, and "outside" if the leaf is outside its limits. Leaves behind a reference have
 * "to" in their paths, and offsets in the block that the reference leads to.
 *
 * `*description` receives a new string; free it with vrtkStringDestroy().
 * Errors: VRTK_INVALID_ARGUMENT for another form; VRTK_VALUE_TYPE if the value's type is not that
 * of `type`; VRTK_VALUE_CYCLE for references that form a cycle; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkValueDescribe(const vrntValue_t* value, const vrntType_t* type, uint32_t form,
                                    char** description, vrtkError** error);

VRNT_END_DECLS

#endif
