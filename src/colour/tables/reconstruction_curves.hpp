/// The base spectra from which a distribution is put together for an RGB triple.
#ifndef VORNATH_COLOUR_TABLES_RECONSTRUCTION_CURVES_HPP
#define VORNATH_COLOUR_TABLES_RECONSTRUCTION_CURVES_HPP

#include "colour/tables/grid.hpp"

namespace qex::vornath {

extern const GridRow kWhiteCurve;
extern const GridRow kCyanCurve;
extern const GridRow kMagentaCurve;
extern const GridRow kYellowCurve;
extern const GridRow kRedCurve;
extern const GridRow kGreenCurve;
extern const GridRow kBlueCurve;

}  // namespace qex::vornath

#endif
