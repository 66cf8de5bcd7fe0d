// Scene plans from the formats that Assimp reads.
#ifndef VRN_CONVERT_ASSIMP_ASSIMP_READER_HPP
#define VRN_CONVERT_ASSIMP_ASSIMP_READER_HPP

#include <string>

#include "scene_plan/conversion.hpp"
#include "scene_plan/notices.hpp"
#include "scene_plan/scene_plan.hpp"

namespace vrn_convert {

/// Returns whether Assimp knows an extension, which is in lower case and without a full stop.
bool assimpReads(const std::string& extension);

/// Returns a line for each extension that can be read.
std::string formatsText();

/// Reads a file with Assimp. The plan owns all that it refers to.
/// Throws Refused with the reason, and std::bad_alloc. A damaged file may also crash Assimp.
ScenePlan readAssimp(const Source& source, Notices& notices);

}  // namespace vrn_convert

#endif
