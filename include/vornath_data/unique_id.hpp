/// 128-bit identifiers of scenes, assets and scene objects: random ones, and digests of contents.
#ifndef VORNATH_DATA_UNIQUE_ID_HPP
#define VORNATH_DATA_UNIQUE_ID_HPP

#include "vornath_data/detail/unique_id_class.hpp"
#include "vornath_data/result.hpp"

#endif
