// The check of a scene in memory.
#ifndef VORNATH_TOOLKIT_CHECK_SCENE_CHECK_HPP
#define VORNATH_TOOLKIT_CHECK_SCENE_CHECK_HPP

#include "check/report.hpp"
#include "vornath_data/scene_interface.h"

namespace vrtk {

/// Fills a report with what a check of the scene's file would warn of, and with what keeps the
/// scene from being written. Throws std::bad_alloc.
void checkScene(const vrdmScene_t* scene, vrtkReport& report);

/// Throws Failure with VRTK_SCENE_INCOMPLETE and the first object that cannot be written. `target`
/// names the file for the message.
void requireWritable(const vrdmScene_t* scene, const char* target);

}  // namespace vrtk

#endif
