// The check of a scene file.
#ifndef VORNATH_TOOLKIT_CHECK_FILE_CHECK_HPP
#define VORNATH_TOOLKIT_CHECK_FILE_CHECK_HPP

#include "check/report.hpp"
#include "file/sources.hpp"

namespace vrtk {

/// Checks the bytes of a scene file and fills a report that has its limits, up to finish().
/// Throws Failure if the source cannot be read, and std::bad_alloc.
void checkSource(ByteSource& source, const vrtkLimits& limits, vrtkReport& report);

}  // namespace vrtk

#endif
