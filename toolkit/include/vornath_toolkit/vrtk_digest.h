/*
 * The digest of a scene: one short text that is equal for equal content. vrtk.h has the rules for
 * all functions.
 */
#ifndef VORNATH_TOOLKIT_DIGEST_H
#define VORNATH_TOOLKIT_DIGEST_H

#include <stdint.h>

#include "vornath_data/scene_interface.h"
#include "vornath_toolkit/vrtk_error.h"

VRNT_BEGIN_DECLS

/** The characters of a digest: 64 hexadecimal digits in lower case, and the final NUL. */
#define VRTK_DIGEST_LENGTH 65

/** What a digest covers. */
typedef struct vrtkDigestOptions {
  uint64_t structSize; /**< sizeof(vrtkDigestOptions) */
  uint32_t includeIds; /**< not 0: the id of the scene and the ids of its assets count, too */
} vrtkDigestOptions;

/** The default options, as in `vrtkDigestOptions options = VRTK_DIGEST_OPTIONS_INIT;`. */
#define VRTK_DIGEST_OPTIONS_INIT \
  { sizeof(vrtkDigestOptions), 0 }

/**
 * Computes the digest of a scene: a SHA-256 of its content, in the form that docs/scene_digest.md
 * describes. Two scenes of one version of the catalogue have the same digest if and only if they
 * have the same content:
 *
 *  - Content is the number of slots of each class and which of them are live, the texts of
 *    programs, the records and bytes of assets, the words of reference slots, the fields of groups,
 *    and the types and parts of values, with all that they refer to.
 *  - Numbers count bit by bit, so 0 and -0 differ.
 *  - No content are: change counters, what free slots still contain, padding, the addresses of
 *    blocks, whether two references lead to one block or to two equal ones, and the bytes of an
 *    asset behind those that its record asks for. The id of a program follows from its text.
 *  - The ids of the scene and of its assets are random. They count only with `includeIds`.
 *
 * `hex` receives VRTK_DIGEST_LENGTH characters, without "sha256:". `options` may be null.
 * An object without its value and an asset of too few bytes are allowed, and count as such.
 *
 * Errors: VRTK_VALUE_CYCLE for a value whose references form a cycle; VRTK_OUT_OF_MEMORY.
 */
VRTK_API uint32_t vrtkSceneDigest(const vrdmScene_t* scene, const vrtkDigestOptions* options,
                                  char hex[VRTK_DIGEST_LENGTH], vrtkError** error);

VRNT_END_DECLS

#endif
