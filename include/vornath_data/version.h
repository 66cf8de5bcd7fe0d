/* Which version of the library these headers belong to. The build reads the version here. */
#ifndef VORNATH_DATA_VERSION_H
#define VORNATH_DATA_VERSION_H

/** A version that the headers no longer fit raises this one: the shared library's name ends in it.
 */
#define VORNATH_DATA_VERSION_MAJOR 1
/** A version that adds to the headers and changes nothing that was there raises this one. */
#define VORNATH_DATA_VERSION_MINOR 0
/** A version that mends and leaves the headers alone raises this one. */
#define VORNATH_DATA_VERSION_PATCH 0

/** The number of a version, below that of any later one. The minor and the patch stay below 1000.
 */
#define VORNATH_DATA_VERSION_NUMBER(major, minor, patch) ((major)*1000000 + (minor)*1000 + (patch))

/** The number of this version, to compare with `#if VORNATH_DATA_VERSION >= ...`. */
#define VORNATH_DATA_VERSION                                                          \
  VORNATH_DATA_VERSION_NUMBER(VORNATH_DATA_VERSION_MAJOR, VORNATH_DATA_VERSION_MINOR, \
                              VORNATH_DATA_VERSION_PATCH)

/** This version as a text, "1.0.0" say. */
#define VORNATH_DATA_VERSION_STRING                                                 \
  VORNATH_DATA_VERSION_TEXT(VORNATH_DATA_VERSION_MAJOR, VORNATH_DATA_VERSION_MINOR, \
                            VORNATH_DATA_VERSION_PATCH)
/* The second step is there because the arguments of the first are still names of macros. */
#define VORNATH_DATA_VERSION_TEXT(major, minor, patch) \
  VORNATH_DATA_VERSION_JOINED(major, minor, patch)
#define VORNATH_DATA_VERSION_JOINED(major, minor, patch) #major "." #minor "." #patch

#endif
