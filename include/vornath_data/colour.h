/*
 * Colour: the types of spectra and lights, conversions between spectra and RGB, and black bodies.
 *
 * A spectrum has one of three encodings: a luminance, a linear RGB triple, or a sampled
 * distribution. RGB is linear, without a transfer curve, and uses the primaries and the D65 white
 * point of sRGB (IEC 61966-2-1). Wavelengths are in nanometres. All arithmetic uses 32-bit floats
 * and gives the same bits on every compiler. Overflow yields infinity or NaN. Results are clamped
 * only where a function says so.
 *
 * A sampled distribution is an array of pairs of a wavelength and an amplitude. Pair 0 is (0, 0),
 * the wavelengths increase strictly, and the last amplitude is 0; this first pair and this last
 * pair are the closing pairs. An amplitude holds from its wavelength up to the wavelength of the
 * next pair. The functions do not check these rules for an array that they only read.
 *
 * Conversions use the CIE 1931 standard observer (2 degrees) at 61 wavelengths: 400, 405, ...,
 * 700 nm. A distribution for an RGB triple is built by the method of B. Smits, "An RGB-to-spectrum
 * conversion for reflectances", Journal of Graphics Tools 4(4), 1999, for the equal-energy white.
 *
 * A function that returns a type returns a new reference; release it with vrntTypeDestroy(). Each
 * call for a fixed type (types.h) returns the same handle. These functions have no error
 * out-parameter. They fail only if memory runs out: std::bad_alloc passes through to the host, and
 * the next call tries again.
 *
 * Arguments stay the caller's, and pointers must not be null.
 *
 * Threads: any number of threads may call any function at once. After its first use, returning a
 * fixed type takes no lock.
 */
#ifndef VORNATH_DATA_COLOUR_H
#define VORNATH_DATA_COLOUR_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

VRNT_BEGIN_DECLS

/** Encodings of a spectrum: the codes of the enum in the spectrum type. */
enum {
  VRNT_ENCODING_LUMINANCE = 0, /**< one float */
  VRNT_ENCODING_RGB = 1,       /**< three floats */
  VRNT_ENCODING_SPECTRAL = 2   /**< pairs of a wavelength and an amplitude */
};

/** The illuminant of a conversion. Every code other than 1 selects E. */
enum {
  VRNT_COLOUR_SPACE_E = 0,  /**< equal energy */
  VRNT_COLOUR_SPACE_D65 = 1 /**< CIE standard illuminant D65 */
};

/** A colour as a plain struct. */
typedef struct vrntSpectrumRec {
  uint32_t encoding; /**< VRNT_ENCODING_*; every other code selects RGB */
  int32_t count;     /**< the number of floats for SPECTRAL; not read otherwise */
  float* data;       /**< 1 float, 3 floats, or `count` floats in pairs; owned by the caller */
} vrntSpectrumRec;

/** Light units: the codes of the enum vrntTypeLightUnit(). */
enum {
  VRNT_LIGHT_UNIT_LUMEN = 0,   /**< luminous flux */
  VRNT_LIGHT_UNIT_CANDELA = 1, /**< luminous intensity */
  VRNT_LIGHT_UNIT_LUX = 2,     /**< illuminance */
  VRNT_LIGHT_UNIT_NIT = 3      /**< luminance */
};

/**
 * Returns the universal spectrum type,
 * `{ enum { LUMINANCE; RGB; SPECTRAL; } encoding; float[]* spectrum; }` with the name "Spectrum".
 */
VRNT_API vrntType_t* vrntTypeSpectrum(void);

/**
 * Returns the type of the photometric units, `enum { LUMEN; CANDELA; LUX; NIT; }`. The codes are
 * VRNT_LIGHT_UNIT_*.
 */
VRNT_API vrntType_t* vrntTypeLightUnit(void);

/**
 * Returns the type of a light's emission: a struct with the fields `color` (the universal
 * spectrum), `value` (a float, measured in `unit`) and `unit` (vrntTypeLightUnit()).
 */
VRNT_API vrntType_t* vrntTypeEmission(void);

/**
 * Replaces each compact spectrum in a type by the universal spectrum. A compact spectrum is the
 * struct `{ float3 spectrum; }`, with or without metadata.
 *
 * The function looks into the fields of structs and the elements of one-dimensional arrays, at any
 * depth. References, arrays of more dimensions, and the arguments and results of functions are not
 * changed. Each part keeps its metadata. A universal spectrum that replaces a compact one has the
 * metadata of both; for a key that both have, the annotation of the compact spectrum is used.
 *
 * Returns a new reference: the same handle if the type contains no compact spectrum, and the handle
 * of vrntTypeSpectrum() for a compact spectrum without metadata. As with vrntTypeParse(), a changed
 * part that has a value among its annotations is a new type for each call.
 */
VRNT_API vrntType_t* vrntTypeToUniversalSpectrum(const vrntType_t* type);

/**
 * Computes the colour of a black body, scaled to a luminance of 1; negative components are clamped
 * to 0.
 * `rgb` receives three floats. `temperature` is in kelvin. All three floats are NaN for 0 and for
 * temperatures whose light is too faint for floats (below about 230 K).
 * Errors: none.
 */
VRNT_API void vrntBlackbodyToRGB(float* rgb, float temperature);

/**
 * Returns the spectral radiance of a black body by Planck's law, in watts per steradian, square
 * metre and nanometre. `wavelength` is in nanometres, `temperature` in kelvin. Zero if one of them
 * is 0. The constants are 2h = 1.325214e-33, hc = 1.9864458e-25, k = 1.3806486e-23, and the float
 * that is nearest to the speed of light in metres per second.
 * Errors: none.
 */
VRNT_API float vrntPlancksLaw(float wavelength, float temperature);

/**
 * Converts a colour to the encoding of `out` and writes the result to the data of `out`. `in` and
 * `out` may share their data. If a SPECTRAL side has an odd number of floats, the last float is
 * ignored.
 *
 *  - From SPECTRAL: the first and the last pair of `in` are taken as the closing pairs and dropped.
 *    Of the m wavelengths that remain, the amplitude of the last one holds for a width of
 *    (last - first) / m.
 *  - To LUMINANCE: the Y of CIE XYZ.
 *  - To RGB: the colour under the illuminant of `colourSpace`, VRNT_COLOUR_SPACE_*.
 *  - To SPECTRAL: the caller sets the wavelengths in the data of `out`. Each pair except the first
 *    and the last receives the mean amplitude from its wavelength up to the next one; the last of
 *    these pairs receives the mean over the 5 nm after its wavelength. The illuminant is always
 *    D65. The first and the last pair are not changed; the caller sets them.
 *
 * Errors: exceptions pass through to the host, and nothing is written. The wavelengths of a
 * SPECTRAL side are checked, first those of `in`, then those of `out`. Throws std::bad_alloc, or
 * vrnt::Exception with the code InvalidArguments and one of these messages:
 *
 *  - "Wavelength lambda array must contain at least 2 elements."
 *  - "Wavelength lambda[0] must be greater than 0."
 *  - "Wavelength lambdas must increase strictly monotonic."
 */
VRNT_API void vrntSpectrumConvert(const vrntSpectrumRec* in, vrntSpectrumRec* out,
                                  int32_t colourSpace);

/**
 * Converts the spectrum at a view of a value to RGB. `rgb` receives three floats on success.
 *
 * `colourSpace`, VRNT_COLOUR_SPACE_*, is the illuminant for a sampled spectrum. Each pair of a
 * sampled spectrum counts once, whatever its width, including the closing pairs with their
 * amplitude of 0. Without a pair from 400 to 700 nm the result is NaN. An empty spectrum is black.
 * An encoding code without a name is read as RGB.
 *
 * The function does not allocate and adds no reference.
 *
 * Returns 0, or -1 with nothing written if the view's type is not a subtype of the spectrum type,
 * or if its reference leads to anything other than a one-dimensional array of floats, to fewer
 * floats than the encoding needs, or to a foreign pointer.
 * Errors: none other.
 */
VRNT_API int32_t vrntValueToRGB(const vrntValue_t* value, const vrntValueView_t* view,
                                int32_t colourSpace, float* rgb);

/**
 * Samples the spectrum at a view of a value, under D65.
 *
 * `pairs` points to `count` floats: pairs of a wavelength, which the caller sets, and an amplitude,
 * which the function writes. An odd float at the end is not changed. The wavelengths must be
 * positive and increase strictly. Each amplitude is the mean from its wavelength up to the next
 * one; that of the last of n pairs is the mean over a width of (last - first) / n. Unlike in
 * vrntSpectrumConvert(), every pair counts.
 *
 * Returns 0, or -1 with nothing written: for the reasons of vrntValueToRGB(), for wavelengths that
 * break the rules, for fewer than two pairs, and if memory runs out.
 * Errors: none other.
 */
VRNT_API int32_t vrntValueToSPD(const vrntValue_t* value, const vrntValueView_t* view,
                                int32_t count, float* pairs);

VRNT_END_DECLS

#endif
