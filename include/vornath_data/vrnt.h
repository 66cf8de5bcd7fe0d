/* All vrnt functions: errors, types, metadata, values, colour and program parameters. */
#ifndef VORNATH_DATA_VRNT_H
#define VORNATH_DATA_VRNT_H

#include "vornath_data/colour.h"
#include "vornath_data/errors.h"
#include "vornath_data/metadata.h"
#include "vornath_data/parameters.h"
#include "vornath_data/types.h"
#include "vornath_data/values.h"
#include "vornath_data/version.h"

#endif
