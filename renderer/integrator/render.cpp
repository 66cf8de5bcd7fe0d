#include "integrator/render.hpp"

#include <pmmintrin.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>
#include <xmmintrin.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <mutex>
#include <numeric>

namespace vrn_render {
namespace {

// Rounds begin small, so that there soon is a picture, and a tile is judged by enough samples.
constexpr std::uint32_t kFirstRound = 2;
constexpr std::uint32_t kLargestRound = 32;
constexpr std::uint32_t kLeastForNoise = 16;

// Numbers too small to be normal are slow, and no eye sees them.
class FlushDenormals {
 public:
  FlushDenormals() : before_(_mm_getcsr()) {
    _MM_SET_FLUSH_ZERO_MODE(_MM_FLUSH_ZERO_ON);
    _MM_SET_DENORMALS_ZERO_MODE(_MM_DENORMALS_ZERO_ON);
  }
  ~FlushDenormals() { _mm_setcsr(before_); }
  FlushDenormals(const FlushDenormals&) = delete;
  FlushDenormals& operator=(const FlushDenormals&) = delete;

 private:
  unsigned before_;
};

// Moves a sample by the filter of the task. The density of the moves is the filter, so that each
// sample belongs to one pixel.
Vec2 inPixel(const TaskDescription& task, Vec2 u) {
  if (!task.hasGaussFilter) return u;
  // The filter is exp(-alpha r^2) up to its radius.
  const float inside = 1 - std::exp(-task.gaussAlpha * task.gaussRadius * task.gaussRadius);
  const float radius = std::sqrt(-std::log1p(-u.x * inside) / task.gaussAlpha);
  const Vec2 around = turnedBy(u.y);
  return {0.5F + radius * around.x, 0.5F + radius * around.y};
}

}  // namespace

Progress render(const PathTracer& tracer, const SceneDescription& scene,
                const RenderOptions& options, Film& film,
                const std::function<void(const Progress&)>& report) {
  using Clock = std::chrono::steady_clock;
  const auto begin = Clock::now();
  const auto elapsed = [begin] {
    return std::chrono::duration<double>(Clock::now() - begin).count();
  };
  std::vector<int> tiles = options.tiles;
  if (tiles.empty()) {
    tiles.resize(static_cast<std::size_t>(film.tiles()));
    std::iota(tiles.begin(), tiles.end(), 0);
  }
  const TaskDescription& task = scene.task;
  // Nothing is known of a tile without samples.
  std::vector<float> noises(static_cast<std::size_t>(film.tiles()),
                            std::numeric_limits<float>::infinity());
  std::mutex mutex;
  Progress progress;
  progress.noise = std::numeric_limits<float>::infinity();
  double lastReport = 0;
  std::uint64_t pixelsOfAll = 0;
  for (const int tile : tiles) {
    const Film::Tile area = film.tile(tile);
    pixelsOfAll += static_cast<std::uint64_t>((area.x1 - area.x0) * (area.y1 - area.y0));
  }
  std::uint64_t savedSamples = 0;  // by tiles that were finished early

  const auto isOver = [&] {
    return (options.cancel != nullptr && options.cancel->load(std::memory_order_relaxed)) ||
           (options.seconds > 0 && elapsed() > options.seconds);
  };
  const std::vector<int> all = tiles;
  const auto meanNoise = [&] {
    double sum = 0;
    for (const int tile : all) sum += static_cast<double>(noises[static_cast<std::size_t>(tile)]);
    return all.empty() ? 0.0F : static_cast<float>(sum / static_cast<double>(all.size()));
  };

  const auto renderTile = [&](int number, std::uint32_t from, std::uint32_t to) {
    if (isOver()) return;
    const FlushDenormals flush;
    const Film::Tile area = film.tile(number);
    std::uint64_t rays = 0;
    for (int y = area.y0; y < area.y1; ++y) {
      for (int x = area.x0; x < area.x1; ++x) {
        for (std::uint32_t sample = from; sample < to; ++sample) {
          const Sampler sampler(options.seed, static_cast<std::uint32_t>(x),
                                static_cast<std::uint32_t>(y), sample);
          const Vec2 offset = inPixel(task, sampler.two(Choice::Pixel));
          const float across =
              (static_cast<float>(x) + offset.x) / static_cast<float>(film.width());
          const float down = (static_cast<float>(y) + offset.y) / static_cast<float>(film.height());
          const Vec2 at{task.regionOrigin.x + task.regionSize.x * across,
                        task.regionOrigin.y + task.regionSize.y * (1 - down)};
          const Seen seen = tracer.trace(at, sampler);
          rays += seen.rays;
          film.add(x, y, seen, task);
        }
      }
    }
    const std::uint64_t done =
        static_cast<std::uint64_t>((area.x1 - area.x0) * (area.y1 - area.y0)) * (to - from);
    const float noise = film.noise(number);
    const std::lock_guard<std::mutex> lock(mutex);
    noises[static_cast<std::size_t>(number)] = noise;
    progress.samples += done;
    progress.rays += rays;
    progress.seconds = elapsed();
    if (report && progress.seconds - lastReport > 0.2) {
      lastReport = progress.seconds;
      progress.share = static_cast<double>(progress.samples + savedSamples) /
                       static_cast<double>(pixelsOfAll * options.samples);
      progress.noise = meanNoise();
      progress.isRoundEnd = false;
      report(progress);
    }
  };

  const int threads = options.threads > 0 ? options.threads : tbb::task_arena::automatic;
  tbb::task_arena arena(threads);
  // With more threads than processors, the library would use fewer.
  std::unique_ptr<tbb::global_control> control;
  if (options.threads > 0) {
    control = std::make_unique<tbb::global_control>(tbb::global_control::max_allowed_parallelism,
                                                    static_cast<std::size_t>(options.threads));
  }
  std::uint32_t from = 0;
  std::uint32_t round = kFirstRound;
  while (from < options.samples && !tiles.empty() && !isOver()) {
    const std::uint32_t to = std::min(options.samples, from + round);
    arena.execute([&] {
      tbb::parallel_for(
          tbb::blocked_range<std::size_t>(0, tiles.size(), 1),
          [&](const tbb::blocked_range<std::size_t>& range) {
            for (std::size_t i = range.begin(); i != range.end(); ++i)
              renderTile(tiles[i], from, to);
          },
          tbb::simple_partitioner());
    });
    from = to;
    round = std::min(2 * round, kLargestRound);
    if (options.noise > 0 && from >= kLeastForNoise) {
      const auto isFinished = [&](int tile) {
        if (!(noises[static_cast<std::size_t>(tile)] <= options.noise)) return false;
        const Film::Tile area = film.tile(tile);
        savedSamples += static_cast<std::uint64_t>((area.x1 - area.x0) * (area.y1 - area.y0)) *
                        (options.samples - from);
        return true;
      };
      tiles.erase(std::remove_if(tiles.begin(), tiles.end(), isFinished), tiles.end());
    }
    progress.seconds = elapsed();
    progress.share = static_cast<double>(progress.samples + savedSamples) /
                     static_cast<double>(pixelsOfAll * options.samples);
    progress.noise = meanNoise();
    progress.isRoundEnd = true;
    if (report) report(progress);
  }
  return progress;
}

}  // namespace vrn_render
