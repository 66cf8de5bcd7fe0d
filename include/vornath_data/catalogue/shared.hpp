/// Records that several classes share.
#ifndef VORNATH_DATA_CATALOGUE_SHARED_HPP
#define VORNATH_DATA_CATALOGUE_SHARED_HPP

#include <cstddef>
#include <cstdint>
#include <limits>

#include "vornath_data/catalogue/record_types.hpp"

namespace vrnt::data {

/// The default of a limit that clamps nothing.
inline constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Matrix, TransformationData, TargetData, IblSampling.
#define VRNT_FIELDS "vornath_data/catalogue/shared.def"
#include "vornath_data/catalogue/declare_groups.inc"

}  // namespace vrnt::data

#endif
