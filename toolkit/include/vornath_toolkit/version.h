/* The version of the toolkit that these headers belong to. The build system reads it here. */
#ifndef VORNATH_TOOLKIT_VERSION_H
#define VORNATH_TOOLKIT_VERSION_H

/**
 * The major version. An incompatible change of the headers increments it. The file name of the
 * shared library ends in it. It is independent of the version of vornath_data.
 */
#define VORNATH_TOOLKIT_VERSION_MAJOR 1
/** The minor version. An addition to the headers that changes nothing else increments it. */
#define VORNATH_TOOLKIT_VERSION_MINOR 0
/** The patch version. A fix that does not change the headers increments it. */
#define VORNATH_TOOLKIT_VERSION_PATCH 0

#endif
