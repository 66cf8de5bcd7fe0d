/* The version of the library that these headers belong to. The build system reads it here. */
#ifndef VORNATH_DATA_VERSION_H
#define VORNATH_DATA_VERSION_H

/**
 * The major version. An incompatible change of the headers increments it. The file name of the
 * shared library ends in it.
 */
#define VORNATH_DATA_VERSION_MAJOR 1
/** The minor version. An addition to the headers that changes nothing else increments it. */
#define VORNATH_DATA_VERSION_MINOR 0
/** The patch version. A fix that does not change the headers increments it. */
#define VORNATH_DATA_VERSION_PATCH 0

/**
 * Encodes a version as one integer; a later version gives a greater integer. `minor` and `patch`
 * must be below 1000.
 */
#define VORNATH_DATA_VERSION_NUMBER(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))

/**
 * This version as one integer, to compare with VORNATH_DATA_VERSION_NUMBER(), as in
 * `#if VORNATH_DATA_VERSION >= VORNATH_DATA_VERSION_NUMBER(1, 1, 0)`.
 */
#define VORNATH_DATA_VERSION                                                          \
  VORNATH_DATA_VERSION_NUMBER(VORNATH_DATA_VERSION_MAJOR, VORNATH_DATA_VERSION_MINOR, \
                              VORNATH_DATA_VERSION_PATCH)

/** This version as a string literal, such as "1.0.0". */
#define VORNATH_DATA_VERSION_STRING                                                 \
  VORNATH_DATA_VERSION_TEXT(VORNATH_DATA_VERSION_MAJOR, VORNATH_DATA_VERSION_MINOR, \
                            VORNATH_DATA_VERSION_PATCH)
/* Two steps: the arguments of the first macro are expanded before the second one quotes them. */
#define VORNATH_DATA_VERSION_TEXT(major, minor, patch) \
  VORNATH_DATA_VERSION_JOINED(major, minor, patch)
#define VORNATH_DATA_VERSION_JOINED(major, minor, patch) #major "." #minor "." #patch

#endif
