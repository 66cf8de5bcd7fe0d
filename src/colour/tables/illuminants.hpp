/// Relative spectral power of the illuminants that a conversion can be asked for.
#ifndef VORNATH_COLOUR_TABLES_ILLUMINANTS_HPP
#define VORNATH_COLOUR_TABLES_ILLUMINANTS_HPP

#include "colour/tables/grid.hpp"

namespace qex::vornath {

extern const GridRow kIlluminantE;
extern const GridRow kIlluminantD65;

}  // namespace qex::vornath

#endif
