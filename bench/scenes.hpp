// Scenes that several benchmarks share.
#ifndef VORNATH_BENCH_SCENES_HPP
#define VORNATH_BENCH_SCENES_HPP

#include "vornath_data/handles.hpp"

namespace bench {

/// A scene of shapes with their groups set, and references to objects that do not exist. A shape
/// takes about 450 bytes of a file.
vrnt::UniqueScene makeShapes(int shapes);

/// A scene with a mesh for each shape, and for every hundred shapes a transformation group and a
/// material with a texture in its value.
vrnt::UniqueScene makeMeshes(int shapes);

/// Destroys a scene and returns its memory to the system, so that the next one begins like the
/// first.
void destroy(vrnt::UniqueScene& scene);

}  // namespace bench

#endif
