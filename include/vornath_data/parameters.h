/*
 * Types of program parameters: what a material or light program takes. A parameter is a fixed value
 * or a texture; a sampler says how to look up a texture.
 *
 * A function that returns a type returns a new reference; release it with vrntTypeDestroy(). The
 * types are fixed types (types.h), so each call returns the same handle. A type argument must not
 * be null, and stays the caller's.
 *
 * Errors: these functions have no error out-parameter. They fail only if memory runs out:
 * std::bad_alloc passes through to the host, and the next call tries again.
 *
 * Threads: any thread may call any function. After its first use, returning a fixed type takes no
 * lock.
 */
#ifndef VORNATH_DATA_PARAMETERS_H
#define VORNATH_DATA_PARAMETERS_H

#include <stdint.h>

#include "vornath_data/api.h"
#include "vornath_data/types.h"

VRNT_BEGIN_DECLS

/** How a texture is read outside its bounds: the codes of the enum vrntTypeWrapmode(). */
enum {
  VRNT_WRAP_MODE_CLAMP = 0,
  VRNT_WRAP_MODE_BORDER = 1, /**< reads the border fields of the sampler */
  VRNT_WRAP_MODE_REPEAT = 2,
  VRNT_WRAP_MODE_MIRROR = 3
};

/**
 * Parameter types, as vrntTypeMaterialParam() takes them. In the first three, a mode or a flag
 * selects the value or the texture, and the texture has a sampler. In the simple ones, the texture
 * settings are fields of the parameter itself.
 */
enum {
  VRNT_MATERIAL_PARAM_COLOUR = 0,
  VRNT_MATERIAL_PARAM_FLOAT = 1,
  VRNT_MATERIAL_PARAM_NORMAL = 2,
  VRNT_MATERIAL_PARAM_SIMPLE_COLOUR = 3,
  VRNT_MATERIAL_PARAM_SIMPLE_FLOAT = 4,
  VRNT_MATERIAL_PARAM_SIMPLE_NORMAL = 5
};

/** Sampler types, as vrntTypeSampler() takes them. */
enum {
  VRNT_SAMPLER_SPECTRUM = 0,
  VRNT_SAMPLER_NORMAL = 1,
  VRNT_SAMPLER_FLOAT = 2,
  VRNT_SAMPLER_SPECTRUM_SPHERE = 3
};

/**
 * Returns the type of the wrap modes, `enum { CLAMP; BORDER; REPEAT; MIRROR; }`. Its default is
 * REPEAT.
 */
VRNT_API vrntType_t* vrntTypeWrapmode(void);

/**
 * Returns the type of a texture reference: a struct with the int field `texture_ref`, the index of
 * a texture in the scene. Its default is -1, no texture.
 */
VRNT_API vrntType_t* vrntTypeTexture(void);

/**
 * Returns the type of an affine map of texture coordinates, `{ float2 x; float2 y; float2 z; }`:
 * the columns of a 2x3 matrix.
 */
VRNT_API vrntType_t* vrntTypeUVTransformation(void);

/**
 * Returns the type of a parameter of a material or light program. `number` is a
 * VRNT_MATERIAL_PARAM_* code; null for any other.
 *
 * These types have no metadata. So their default values hold texture 0 and CLAMP, unlike those of
 * vrntTypeTexture() and vrntTypeSampler(): a host that starts from a default value must set these
 * fields.
 */
VRNT_API vrntType_t* vrntTypeMaterialParam(uint32_t number);

/**
 * Returns the first VRNT_MATERIAL_PARAM_* code whose type equals `type`, or -1 if there is none.
 * Metadata is not compared: types are equal if vrntTypeIsEqual() says so.
 */
VRNT_API int32_t vrntTypeMaterialParamType(const vrntType_t* type);

/**
 * Returns the type of a sampler. `number` is a VRNT_SAMPLER_* code; null for any other.
 * The type has the flag `no_specialize`. By default it has no texture, its wrap modes are REPEAT,
 * and its border is black.
 */
VRNT_API vrntType_t* vrntTypeSampler(uint32_t number);

/**
 * Returns the first VRNT_SAMPLER_* code whose type equals `type`, or -1 if there is none. Metadata
 * is not compared.
 */
VRNT_API int32_t vrntTypeSamplerType(const vrntType_t* type);

VRNT_END_DECLS

#endif
