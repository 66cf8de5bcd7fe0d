// vrn-render: renders a scene file to a picture.
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <new>
#include <numeric>
#include <string>
#include <vector>

#include "film/preview.hpp"
#include "film/tile_file.hpp"
#include "integrator/render.hpp"
#include "options.hpp"
#include "scene_reading/scene_reader.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/version.h"
#include "vornath_toolkit/vrtk.h"

namespace vrn_render {
namespace {

constexpr int kDefaultSide = 512;
constexpr int kUsageStatus = 2;
constexpr int kInterruptedStatus = 130;

std::atomic<bool> cancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void onInterrupt(int /*signal*/) { cancelled.store(true, std::memory_order_relaxed); }

struct ErrorDeleter {
  void operator()(vrtkError* error) const { vrtkErrorDestroy(error); }
};

vrnt::UniqueScene openScene(const std::string& path) {
  vrdmScene_t* scene = nullptr;
  vrtkError* error = nullptr;
  if (vrtkSceneOpen(path.c_str(), nullptr, &scene, nullptr, &error) != VRTK_OK) {
    const std::unique_ptr<vrtkError, ErrorDeleter> owner(error);
    throw std::runtime_error(error ? vrtkErrorMessage(error) : path + ": cannot be read");
  }
  return vrnt::UniqueScene(scene);
}

// The picture appears under its name as a whole.
template <typename Write>
void writeWhole(const std::string& path, Write write) {
  const std::string unfinished = path + ".unfinished";
  try {
    write(unfinished);
    std::filesystem::rename(unfinished, path);
  } catch (...) {
    std::error_code ignored;
    std::filesystem::remove(unfinished, ignored);
    throw;
  }
}

void writePicture(const Options& options, const Picture& picture) {
  const bool isPng = options.output.substr(options.output.size() - 4) == ".png";
  writeWhole(options.output, [&](const std::string& path) {
    (isPng ? writePng : writeExr)(path, picture, options.exposure, options.passes);
  });
}

std::string timeText(double seconds) {
  char text[32];
  const auto whole = static_cast<long>(seconds + 0.5);
  if (whole < 60) {
    std::snprintf(text, sizeof text, "%ld s", whole);
  } else {
    std::snprintf(text, sizeof text, "%ld:%02ld min", whole / 60, whole % 60);
  }
  return text;
}

class ProgressBar {
 public:
  ProgressBar(const Options& options, const Film& film, const TaskDescription& task)
      : options_(options),
        film_(film),
        task_(task),
        isShown_(!options.isQuiet && isatty(STDERR_FILENO)) {}

  void operator()(const Progress& progress) {
    if (options_.preview != Preview::None && progress.isRoundEnd) draw();
    if (!isShown_) return;
    constexpr int kWidth = 30;
    const int done = static_cast<int>(progress.share * kWidth);
    std::string bar(static_cast<std::size_t>(done), '#');
    bar.resize(kWidth, '.');
    const double left =
        progress.share > 0 ? progress.seconds * (1 - progress.share) / progress.share : 0;
    const std::string noise = std::isfinite(progress.noise)
                                  ? std::to_string(progress.noise * 100).substr(0, 4) + " %"
                                  : "unknown";
    std::fprintf(stderr, "\r[%s] %3.0f %%, noise %s, %s left    ", bar.c_str(),
                 100 * progress.share, noise.c_str(), timeText(left).c_str());
  }

  void finish(const Progress& progress) const {
    if (options_.isQuiet) return;
    if (isShown_) std::fputc('\n', stderr);
    std::fprintf(
        stderr, "%llu samples, %llu rays in %.2f s: %.2f million rays per second\n",
        static_cast<unsigned long long>(progress.samples),
        static_cast<unsigned long long>(progress.rays), progress.seconds,
        progress.seconds > 0 ? static_cast<double>(progress.rays) / progress.seconds / 1e6 : 0.0);
  }

 private:
  void draw() {
    winsize size{};
    int columns = 80, rows = 24;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 3) {
      columns = size.ws_col;
      rows = size.ws_row;
    }
    const Picture picture = film_.finish(task_);
    const std::string text = options_.preview == Preview::Sixels
                                 ? sixels(picture, options_.exposure, 640)
                                 : halfBlocks(picture, options_.exposure, columns, rows - 2);
    // From the top left corner over what was there.
    const char* const home = isDrawn_ ? "\x1b[H" : "\x1b[2J\x1b[H";
    std::fprintf(stdout, "%s%s", isatty(STDOUT_FILENO) ? home : "", text.c_str());
    std::fflush(stdout);
    isDrawn_ = true;
  }

  const Options& options_;
  const Film& film_;
  const TaskDescription& task_;
  bool isShown_;
  bool isDrawn_ = false;
};

int assembleShares(const Options& options) {
  TileHeader header;
  const Film film = assemble(options.shares, header);
  TaskDescription task;
  task.brightness = header.brightness;
  task.hasTransparentBackground = header.hasTransparentBackground != 0;
  writePicture(options, film.finish(task));
  return 0;
}

int renderScene(const Options& options) {
  const vrnt::UniqueScene owner = openScene(options.scene);
  Notices notices;
  SceneDescription scene = readScene(owner.get(), options.task, notices);
  for (const std::string& message : notices.messages()) {
    std::fprintf(stderr, "vrn-render: %s\n", message.c_str());
  }
  TaskDescription& task = scene.task;
  if (options.bounces) task.maxBounces = *options.bounces;
  if (options.seed) task.seed = *options.seed;

  // A pixel is a square of the film.
  const CameraDescription& camera = scene.camera;
  const float shape =
      camera.filmWidth * task.regionSize.x / (camera.filmHeight * task.regionSize.y);
  int width = options.width;
  int height = options.height;
  const auto side = [](float pixels) {
    return static_cast<int>(std::clamp(std::round(pixels), 1.0F, 65536.0F));
  };
  if (width == 0) width = shape >= 1 ? kDefaultSide : side(kDefaultSide * shape);
  if (height == 0) height = side(static_cast<float>(width) / shape);
  const float filmHeight = camera.filmWidth * task.regionSize.x * static_cast<float>(height) /
                           (static_cast<float>(width) * task.regionSize.y);

  Film film(width, height, options.passes.count(Pass::Spectrum) != 0);
  if (options.wantsTiles) {
    std::printf("%d\n", film.tiles());
    return 0;
  }
  RenderOptions how;
  how.samples = options.samples;
  how.seed = task.seed;
  how.threads = options.threads;
  how.noise = options.noise;
  how.seconds = options.seconds;
  how.cancel = &cancelled;
  if (options.tiles) {
    if (options.tiles->second >= film.tiles()) {
      throw std::runtime_error("there are only " + std::to_string(film.tiles()) + " tiles");
    }
    how.tiles.resize(static_cast<std::size_t>(options.tiles->second - options.tiles->first + 1));
    std::iota(how.tiles.begin(), how.tiles.end(), options.tiles->first);
  }

  struct sigaction action {};
  action.sa_handler = onInterrupt;
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second Ctrl-C ends at once
  sigaction(SIGINT, &action, nullptr);

  const PathTracer tracer(scene, filmHeight);
  ProgressBar bar(options, film, task);
  const Progress progress =
      render(tracer, scene, how, film, [&bar](const Progress& at) { bar(at); });
  bar.finish(progress);

  if (options.tiles) {
    if (cancelled) throw std::runtime_error("interrupted: a share must be whole, none is written");
    TileHeader header;
    header.width = width;
    header.height = height;
    header.samples = how.samples;
    header.seed = how.seed;
    header.noise = how.noise;
    header.scene = scene.id;
    header.task = static_cast<std::uint32_t>(options.task.value_or(0));
    header.brightness = task.brightness;
    header.hasTransparentBackground = task.hasTransparentBackground;
    writeWhole(options.output,
               [&](const std::string& path) { writeTiles(path, header, film, how.tiles); });
    return 0;
  }
  writePicture(options, film.finish(task));
  return cancelled ? kInterruptedStatus : 0;
}

int run(int count, char** arguments) {
  const Options options = parseOptions({arguments + 1, arguments + count});
  if (options.wantsHelp) {
    std::fputs(kUsage, stdout);
    return 0;
  }
  if (options.wantsVersion) {
    std::printf("vrn-render %d.%d.%d\n", VORNATH_DATA_VERSION_MAJOR, VORNATH_DATA_VERSION_MINOR,
                VORNATH_DATA_VERSION_PATCH);
    return 0;
  }
  return options.assembles ? assembleShares(options) : renderScene(options);
}

}  // namespace
}  // namespace vrn_render

int main(int count, char** arguments) {
  try {
    return vrn_render::run(count, arguments);
  } catch (const vrn_render::UsageError& error) {
    std::fprintf(stderr, "vrn-render: %s\n%s", error.what(), vrn_render::kUsage);
    return vrn_render::kUsageStatus;
  } catch (const std::bad_alloc&) {
    std::fputs("vrn-render: there is not enough memory\n", stderr);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "vrn-render: %s\n", error.what());
  }
  return 1;
}
