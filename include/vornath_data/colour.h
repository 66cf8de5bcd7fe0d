/*
 * Colour: the types that hold it, spectra to RGB and back, and the light of black bodies.
 *
 * A spectrum is one luminance, a linear RGB triple or a sampled distribution. RGB is linear with
 * the primaries and the D65 white of sRGB (IEC 61966-2-1) and has no transfer curve. Wavelengths
 * are in nanometres; all arithmetic is in 32-bit floats, with the same result on every compiler.
 * What runs over stays as the arithmetic leaves it, infinity or NaN: nothing is clamped unless
 * told.
 *
 * A sampled distribution is an array of pairs of a wavelength and an amplitude. Pair 0 is (0, 0),
 * the wavelengths increase strictly, the last amplitude is 0. An amplitude holds from its
 * wavelength up to the next pair's. The functions here don't check an array that they only read.
 *
 * Conversions use the CIE 1931 standard observer (2 degrees) at 61 wavelengths, 400, 405, ...,
 * 700 nm. A distribution for an RGB triple is put together after B. Smits, "An RGB-to-spectrum
 * conversion for reflectances", Journal of Graphics Tools 4(4), 1999, for the equal-energy white.
 *
 * The fixed types are made on their first use and live until vrntValuesShutdown(). A type that a
 * function returns is a new reference, which the caller ends with vrntTypeDestroy(); that of a
 * fixed type is the same handle on each call. The functions that return a type have no error
 * location and fail only for want of memory: what is thrown then, as a std::bad_alloc, goes through
 * to the host, and the next call tries again.
 *
 * Threads: every function may be called from any number of threads at once; after the first use a
 * fixed type takes no lock.
 */
#ifndef VORNATH_DATA_COLOUR_H
#define VORNATH_DATA_COLOUR_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

VRNT_BEGIN_DECLS

/** The encodings of a spectrum, numbered like the constructors of the spectrum type's enum. */
enum {
  VRNT_ENCODING_LUMINANCE = 0, /**< one float */
  VRNT_ENCODING_RGB = 1,       /**< three floats */
  VRNT_ENCODING_SPECTRAL = 2   /**< pairs of a wavelength and an amplitude */
};

/** The light under which a conversion sees a distribution: any other code than 1 stands for E. */
enum {
  VRNT_COLOUR_SPACE_E = 0,  /**< equal energy */
  VRNT_COLOUR_SPACE_D65 = 1 /**< CIE standard illuminant D65 */
};

/** A colour as a plain record. */
typedef struct vrntSpectrumRec {
  uint32_t encoding; /**< VRNT_ENCODING_...; any other number means RGB */
  int32_t count;     /**< for SPECTRAL the number of floats; else not read */
  float* data;       /**< 1 float, 3 floats, or `count` floats of pairs; the caller's */
} vrntSpectrumRec;

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

/**
 * The colour of a black body's light, clamped at 0 below and scaled to a luminance of 1.
 * `rgb`: three floats, written. `temperature`: in kelvin. At 0, and where the light is too faint
 * for floats (below some 230 K), all three are NaN. Errors: none.
 */
VRNT_API void vrntBlackbodyToRGB(float* rgb, float temperature);

/**
 * Spectral radiance of a black body by Planck's law, in watts per steradian, square metre and
 * nanometre. `wavelength`: in nm. `temperature`: in kelvin. 0 if one of them is 0. With 2h =
 * 1.325214e-33, hc = 1.9864458e-25, k = 1.3806486e-23 and the speed of light as the nearest float.
 * Errors: none.
 */
VRNT_API float vrntPlancksLaw(float wavelength, float temperature);

/**
 * Converts a colour to the encoding of `out`, whose data is filled.
 *
 * From SPECTRAL, the first and the last pair of `in` are taken for the closing ones and dropped; of
 * the m wavelengths that remain, the last one's amplitude holds for (last - first) / m. To
 * LUMINANCE is the Y of CIE XYZ, to RGB the colour under the illuminant of `colourSpace`. To
 * SPECTRAL, `out` brings its wavelengths: the amplitude of each pair but the first and the last
 * becomes the mean up to the next wavelength, for the last of them up to 5 nm on. These means are
 * under D65 whatever the code; the two closing pairs are left as they are, for the caller to set.
 * In both directions an odd float at the end is no pair. `in` and `out` may share their data.
 *
 * Errors: the wavelengths of a SPECTRAL side are checked, `in` first, then `out`. A fault leaves
 * this function as a vrnt::Exception with InvalidArguments and nothing written: "Wavelength lambda
 * array must contain at least 2 elements.", "Wavelength lambda[0] must be greater than 0." or
 * "Wavelength lambdas must increase strictly monotonic.". So does std::bad_alloc.
 */
VRNT_API void vrntSpectrumConvert(const vrntSpectrumRec* in, vrntSpectrumRec* out,
                                  int32_t colourSpace);

/**
 * The RGB of the spectrum at a view of a value, under the illuminant of `colourSpace` if it is a
 * sampled one. `rgb`: three floats, written on success. An empty spectrum is black. Every pair of a
 * sampled one counts once, whatever its width, the closing ones with their amplitude of 0; without
 * a pair from 400 to 700 nm the result is NaN. An encoding code without a name reads as RGB. It
 * neither allocates nor takes a reference.
 *
 * Result: 0, or -1 with nothing written if the view's type may not stand for the spectrum type, or
 * its reference leads to something else than a one-dimensional array of floats, to fewer of them
 * than the encoding reads, or to an address of the embedder's own.
 */
VRNT_API int32_t vrntValueToRGB(const vrntValue_t* value, const vrntValueView_t* view,
                                int32_t colourSpace, float* rgb);

/**
 * Samples the spectrum at a view of a value. `pairs` holds `count` floats, pairs of a wavelength
 * and an amplitude; an odd float at the end is left alone. The wavelengths must be positive and
 * increase strictly; each amplitude becomes the mean from its wavelength up to the next, that of
 * the last of n pairs the mean over (last - first) / n. Unlike in vrntSpectrumConvert(), every pair
 * counts. The illuminant is D65.
 *
 * Result: 0, or -1 with nothing written on any failure: those of vrntValueToRGB(), bad wavelengths,
 * fewer than two pairs, want of memory.
 */
VRNT_API int32_t vrntValueToSPD(const vrntValue_t* value, const vrntValueView_t* view,
                                int32_t count, float* pairs);

VRNT_END_DECLS

#endif
