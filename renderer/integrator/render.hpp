/// Renders a picture: tiles on all threads, in rounds.
#ifndef VRN_RENDER_INTEGRATOR_RENDER_HPP
#define VRN_RENDER_INTEGRATOR_RENDER_HPP

#include <atomic>
#include <functional>
#include <vector>

#include "film/film.hpp"
#include "integrator/path_tracer.hpp"

namespace vrn_render {

struct RenderOptions {
  std::uint32_t samples = 64;  ///< for each pixel at most
  std::uint32_t seed = 0;
  int threads = 0;         ///< 0 for all
  float noise = 0;         ///< a tile that has no more than this is finished; 0 renders all
  double seconds = 0;      ///< no new tile is begun after this time; 0 for no limit
  std::vector<int> tiles;  ///< those to render; empty for all
  const std::atomic<bool>* cancel = nullptr;
};

struct Progress {
  double share = 0;    ///< of the samples that may be needed
  double seconds = 0;  ///< since the beginning
  float noise = 0;     ///< the mean of the tiles' noise
  std::uint64_t samples = 0, rays = 0;
  bool isRoundEnd = false;
};

/// Renders into a film. Calls `report` from any thread, one at a time, a few times a second at
/// most, and after each round. The pixels depend on the scene, the size of the film and the options
/// `samples`, `seed` and `noise` only, unless the time limit or `cancel` ends the rendering.
/// Returns the last progress.
Progress render(const PathTracer& tracer, const SceneDescription& scene,
                const RenderOptions& options, Film& film,
                const std::function<void(const Progress&)>& report);

}  // namespace vrn_render

#endif
