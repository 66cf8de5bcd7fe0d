// Differences between scenes.
#ifndef VORNATH_TOOLKIT_DIFF_SCENE_DIFF_HPP
#define VORNATH_TOOLKIT_DIFF_SCENE_DIFF_HPP

#include "diff/diff.hpp"
#include "vornath_data/scene_interface.h"

namespace vrtk {

/// Adds all differences to `diff`.
void compareScenes(const vrdmScene_t& a, const vrdmScene_t& b, const vrtkDiffOptions& options,
                   vrtkDiff& diff);

}  // namespace vrtk

#endif
