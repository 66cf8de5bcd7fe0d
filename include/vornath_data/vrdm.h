/* All vrdm functions: the catalogue of classes, scenes, asset storage and scene files. */
#ifndef VORNATH_DATA_VRDM_H
#define VORNATH_DATA_VRDM_H

#include "vornath_data/asset_records.h"
#include "vornath_data/asset_storage.h"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene_interface.h"
#include "vornath_data/version.h"

#endif
