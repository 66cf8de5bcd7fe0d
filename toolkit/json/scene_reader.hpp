// Builds scenes from JSON documents.
#ifndef VORNATH_TOOLKIT_JSON_SCENE_READER_HPP
#define VORNATH_TOOLKIT_JSON_SCENE_READER_HPP

#include <string_view>

#include "json/object_reader.hpp"

namespace vrtk {

/// Builds a scene. Null if something is wrong with the document, which is then among the problems.
vrnt::UniqueScene buildScene(std::string_view document, const ReadOptions& options,
                             std::uint64_t maxMemory, Problems& problems);

}  // namespace vrtk

#endif
