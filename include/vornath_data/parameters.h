/*
 * The shapes of what a material or light program takes: parameters, which are a fixed value or a
 * texture, and the samplers that look a texture up.
 *
 * The fixed types are made on their first use and live until vrntValuesShutdown(). Where a function
 * returns a type it is a new reference, which the caller ends with vrntTypeDestroy(), and the same
 * handle on each call. No function takes over a type that it is given.
 * Errors: these functions have no error location and fail only for want of memory; what is thrown
 * then, as a std::bad_alloc, goes through to the host, and the next call tries again.
 * Threads: every function may be called from any thread; after the first use a fixed type takes no
 * lock.
 */
#ifndef VORNATH_DATA_PARAMETERS_H
#define VORNATH_DATA_PARAMETERS_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/** The codes of the enum of vrntTypeWrapmode(): how a texture is read outside of its bounds. */
enum {
  VRNT_WRAP_MODE_CLAMP = 0,
  VRNT_WRAP_MODE_BORDER = 1, /**< as the border fields of the sampler say */
  VRNT_WRAP_MODE_REPEAT = 2,
  VRNT_WRAP_MODE_MIRROR = 3
};

/**
 * The parameters of vrntTypeMaterialParam(). In the first three a mode, or a flag, chooses between
 * value and texture, and the texture has a sampler; in the simple ones the settings of the texture
 * stand side by side.
 */
enum {
  VRNT_MATERIAL_PARAM_COLOUR = 0,
  VRNT_MATERIAL_PARAM_FLOAT = 1,
  VRNT_MATERIAL_PARAM_NORMAL = 2,
  VRNT_MATERIAL_PARAM_SIMPLE_COLOUR = 3,
  VRNT_MATERIAL_PARAM_SIMPLE_FLOAT = 4,
  VRNT_MATERIAL_PARAM_SIMPLE_NORMAL = 5
};

/** The samplers of vrntTypeSampler(). */
enum {
  VRNT_SAMPLER_SPECTRUM = 0,
  VRNT_SAMPLER_NORMAL = 1,
  VRNT_SAMPLER_FLOAT = 2,
  VRNT_SAMPLER_SPECTRUM_SPHERE = 3
};

/** The wrap modes, `enum { CLAMP; BORDER; REPEAT; MIRROR; }` with the default REPEAT. */
VRNT_API vrntType_t* vrntTypeWrapmode(void);

/**
 * A reference to a texture: a struct of the one int `texture_ref`, the index of a texture of the
 * scene. Its default is -1: no texture.
 */
VRNT_API vrntType_t* vrntTypeTexture(void);

/**
 * An affine map of texture coordinates, `{ float2 x; float2 y; float2 z; }`: the columns of a 2x3
 * matrix.
 */
VRNT_API vrntType_t* vrntTypeUVTransformation(void);

/**
 * A parameter of a material or light program. Argument: VRNT_MATERIAL_PARAM_*.
 * Result: null for any other number. The types carry no metadata, so that their default values hold
 * texture 0 and CLAMP, unlike those of vrntTypeTexture() and vrntTypeSampler(): a host that starts
 * from a default sets them.
 */
VRNT_API vrntType_t* vrntTypeMaterialParam(uint32_t number);

/**
 * The number of the first parameter, VRNT_MATERIAL_PARAM_*, that is the same type but for metadata:
 * values of either may stand for the other. -1 if there is none.
 */
VRNT_API int32_t vrntTypeMaterialParamType(const vrntType_t* type);

/**
 * A sampler. Argument: VRNT_SAMPLER_*. Result: null for any other number.
 * The type carries the flag `no_specialize`; its texture is none, its wrap modes are REPEAT, and
 * its border is black by default.
 */
VRNT_API vrntType_t* vrntTypeSampler(uint32_t number);

/** The number of the first sampler that is the same type but for metadata; -1 if there is none. */
VRNT_API int32_t vrntTypeSamplerType(const vrntType_t* type);

VRNT_END_DECLS

#endif
