// The limits of a field as a picture.
#ifndef VORNATH_TOOLKIT_CATALOGUE_RANGE_PICTURE_HPP
#define VORNATH_TOOLKIT_CATALOGUE_RANGE_PICTURE_HPP

#include <string>

#include "catalogue/model.hpp"

namespace vrtk {

/// Returns an SVG element: the hard limits as a bar, the soft ones as a bar in it, the default as a
/// dot, and an arrow where there is no limit. Empty for a field without limits, and for one whose
/// elements have different ones.
std::string rangePicture(const FieldModel& field);

}  // namespace vrtk

#endif
