/*
 * Colour: the types in which lights and materials hold it.
 *
 * The fixed types are made on their first use and live until vrntValuesShutdown(). Where a function
 * returns a type it is a new reference, which the caller ends with vrntTypeDestroy(); that of a
 * fixed type is the same handle on each call.
 * Errors: these functions have no error location and fail only for want of memory; what is thrown
 * then, as a std::bad_alloc, goes through to the host, and the next call tries again.
 * Threads: every function may be called from any thread; after the first use a fixed type takes no
 * lock.
 */
#ifndef VORNATH_DATA_COLOUR_H
#define VORNATH_DATA_COLOUR_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/** The codes of a spectrum's `encoding`. */
enum {
  VRNT_ENCODING_LUMINANCE = 0, /**< a `float[1]` */
  VRNT_ENCODING_RGB = 1,       /**< a `float[3]` */
  VRNT_ENCODING_SPECTRAL = 2 /**< a `float[2n]`: pairs of wavelength in nanometres and amplitude */
};

/** The codes of the enum of vrntTypeLightUnit(). */
enum {
  VRNT_LIGHT_UNIT_LUMEN = 0,   /**< luminous flux */
  VRNT_LIGHT_UNIT_CANDELA = 1, /**< luminous intensity */
  VRNT_LIGHT_UNIT_LUX = 2,     /**< illuminance */
  VRNT_LIGHT_UNIT_NIT = 3      /**< luminance */
};

/**
 * The universal spectrum, `{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }`
 * with the name "Spectrum".
 */
VRNT_API vrntType_t* vrntTypeSpectrum(void);

/** The photometric units, `enum { LUMEN; CANDELA; LUX; NIT; }`; codes are VRNT_LIGHT_UNIT_*. */
VRNT_API vrntType_t* vrntTypeLightUnit(void);

/**
 * The strength of a light: a struct of `color` (the universal spectrum), `value` (a float, in the
 * unit) and `unit` (that of vrntTypeLightUnit()).
 */
VRNT_API vrntType_t* vrntTypeEmission(void);

/**
 * The type with the universal spectrum in the place of each compact one. A compact spectrum is a
 * struct that is `{ float3 spectrum; }` but for metadata.
 * Looked through are the fields of structs and the elements of one-dimensional arrays, at any
 * depth; not so references, arrays of more dimensions, and the arguments and results of functions,
 * which stay as they are. Each part keeps its metadata, and what took the place of a compact
 * spectrum has that one's metadata besides its own; where both have a key, the compact spectrum's
 * entry counts.
 * Result: a new reference; the handle that was given if there is no compact spectrum in the type,
 * and that of vrntTypeSpectrum() for a compact spectrum without metadata of its own. As with a
 * parse, a part that changed and has a value among its metadata is another type each time.
 */
VRNT_API vrntType_t* vrntTypeToUniversalSpectrum(const vrntType_t* type);

VRNT_END_DECLS

#endif
