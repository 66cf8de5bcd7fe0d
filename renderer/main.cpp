// vrn-render: renders a scene file to a picture.
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <numeric>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "film/preview.hpp"
#include "film/save.hpp"
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
constexpr int kTrouble = 2;
constexpr int kInterrupted = 130;
constexpr double kBarAfter = 1;  // seconds

std::atomic<bool> cancelled{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

constexpr std::string_view kNoSample =
    "interrupted before the first sample, so no picture is written";

void onInterrupt(int /*signal*/) { cancelled.store(true, std::memory_order_relaxed); }

// Before the first ray there is nothing to keep, and nothing that would look at a flag.
void onEarlyInterrupt(int /*signal*/) {
  for (const std::string_view part :
       {std::string_view("vrn render: "), kNoSample, std::string_view("\n")}) {
    if (write(STDERR_FILENO, part.data(), part.size()) < 0) break;
  }
  _exit(kInterrupted);
}

void onCtrlC(void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // a second Ctrl-C ends at once
  sigaction(SIGINT, &action, nullptr);
}

// Prints one line on standard error: control characters are escaped.
void tell(std::string_view message) {
  std::string line = "vrn render: ";
  for (const char c : message) {
    if (static_cast<unsigned char>(c) >= 32 && c != 127) {
      line += c;
    } else {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
      line += escaped;
    }
  }
  line += '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

// Returns the length of the UTF-8 sequence at the start of a text, 0 if there is none.
std::size_t sequenceLength(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const std::size_t length = first < 0xC2 ? 0 : first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
  if (length == 0 || first > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  // Not in its shortest form, a half of a pair, or beyond the last code.
  const unsigned second = byte(1);
  if ((first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ||
      (first == 0xF0 && second < 0x90) || (first == 0xF4 && second >= 0x90)) {
    return 0;
  }
  return length;
}

// A document is UTF-8. The sign of replacement stands for each byte that is not.
std::string jsonString(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const std::size_t length = sequenceLength(text);
    const char c = text[0];
    if (length == 0) {
      out += "\xEF\xBF\xBD";
    } else if (static_cast<unsigned char>(c) < 32) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(c));
      out += escaped;
    } else {
      if (c == '"' || c == '\\') out += '\\';
      out += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return out + '"';
}

std::string jsonNumber(double number) {
  if (!std::isfinite(number)) return "null";
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", number);
  return text;
}

struct Deleter {
  void operator()(vrtkError* error) const { vrtkErrorDestroy(error); }
  void operator()(vrtkReport* report) const { vrtkReportDestroy(report); }
};

std::string readStandardInput() {
  std::string bytes;
  char part[65536];
  std::size_t count;
  while ((count = std::fread(part, 1, sizeof part, stdin)) != 0) bytes.append(part, count);
  if (std::ferror(stdin)) {
    throw std::runtime_error("standard input: it cannot be read; check where it comes from");
  }
  return bytes;
}

vrnt::UniqueScene openScene(const Options& options) {
  const std::string& path = options.scene;
  const bool isStream = path == "-";
  if (options.trust && !isStream) {
    vrnt::UniqueScene scene(vrdmDeserialize(path.c_str()));
    if (scene) return scene;
    throw std::runtime_error(path + ": it is no scene file of this version; run vrn check " + path);
  }
  vrtkLimits limits = VRTK_LIMITS_INIT;
  limits.maxMemory = options.maxMemory;
  vrdmScene_t* scene = nullptr;
  vrtkReport* found = nullptr;
  vrtkError* error = nullptr;
  std::uint32_t status = VRTK_OK;
  if (isStream) {
    const std::string bytes = readStandardInput();
    status = vrtkSceneOpenBytes(bytes.data(), bytes.size(), &limits, &scene, &found, &error);
  } else {
    status = vrtkSceneOpen(path.c_str(), &limits, &scene, &found, &error);
  }
  const std::unique_ptr<vrtkError, Deleter> errorOwner(error);
  const std::unique_ptr<vrtkReport, Deleter> report(found);
  if (status == VRTK_OK) return vrnt::UniqueScene(scene);
  std::string message = error != nullptr ? vrtkErrorMessage(error) : path + ": it cannot be read";
  if (report && !vrtkReportValid(report.get())) message += "; run vrn check " + path;
  throw std::runtime_error(message);
}

bool isPng(const Options& options) {
  const std::string& path = options.output;
  return path == "-" || path.substr(path.size() - 4) == ".png";
}

void writePicture(const Options& options, Picture picture) {
  saveBytes(options.output, isPng(options)
                                ? makePng(picture, options.exposure, options.passes)
                                : makeExr(std::move(picture), options.exposure, options.passes));
}

std::string timeText(double seconds) {
  char text[32];
  const long whole = std::lround(seconds);
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
        isShown_(!options.isQuiet && isatty(STDERR_FILENO) && !isDumb()) {}

  void operator()(const Progress& progress) {
    if (options_.preview != Preview::None && progress.isRoundEnd) draw();
    if (!isShown_ || progress.seconds < kBarAfter) return;
    hasBar_ = true;
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
    if (options_.isQuiet || options_.json) return;
    if (hasBar_) std::fputs("\r\x1b[K", stderr);
    std::fprintf(
        stderr, "%llu samples, %llu rays in %.2f s: %.2f million rays per second\n",
        static_cast<unsigned long long>(progress.samples),
        static_cast<unsigned long long>(progress.rays), progress.seconds,
        progress.seconds > 0 ? static_cast<double>(progress.rays) / progress.seconds / 1e6 : 0.0);
  }

 private:
  static bool isDumb() {
    const char* const terminal = std::getenv("TERM");
    return terminal != nullptr && std::string_view(terminal) == "dumb";
  }

  void draw() {
    winsize size{};
    int columns = 80, rows = 24;
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 && size.ws_row > 3) {
      columns = size.ws_col;
      rows = size.ws_row;
    }
    const Picture picture = film_.finish(task_, {});
    // A picture on standard output must not be mixed with its preview.
    std::FILE* const to = options_.output == "-" ? stderr : stdout;
    const bool isTerminal = isatty(fileno(to)) != 0;
    const char* const noColour = std::getenv("NO_COLOR");
    const bool isPlain = !isTerminal || (noColour != nullptr && *noColour != '\0');
    const std::string text = isPlain ? letters(picture, options_.exposure, columns, rows - 2)
                             : options_.preview == Preview::Sixels
                                 ? sixels(picture, options_.exposure, 640)
                                 : halfBlocks(picture, options_.exposure, columns, rows - 2);
    // From the top left corner over what was there.
    const char* const home = isDrawn_ ? "\x1b[H" : "\x1b[2J\x1b[H";
    std::fprintf(to, "%s%s", isTerminal ? home : "", text.c_str());
    std::fflush(to);
    isDrawn_ = true;
  }

  const Options& options_;
  const Film& film_;
  const TaskDescription& task_;
  bool isShown_;
  bool isDrawn_ = false;
  bool hasBar_ = false;
};

void printJson(const Options& options, const Film& film, const Progress& progress,
               const Notices& notices) {
  std::string text = "{\n  \"scene\": " + jsonString(options.scene) +
                     ",\n  \"output\": " + jsonString(options.output) +
                     ",\n  \"width\": " + std::to_string(film.width()) +
                     ",\n  \"height\": " + std::to_string(film.height()) +
                     ",\n  \"tiles\": " + std::to_string(film.tiles()) +
                     ",\n  \"samples\": " + std::to_string(progress.samples) +
                     ",\n  \"rays\": " + std::to_string(progress.rays) +
                     ",\n  \"seconds\": " + jsonNumber(progress.seconds) +
                     ",\n  \"noise\": " + jsonNumber(static_cast<double>(progress.noise)) +
                     ",\n  \"interrupted\": " + (cancelled ? "true" : "false") +
                     ",\n  \"notices\": [";
  const char* before = "\n    ";
  for (const std::string& message : notices.messages()) {
    text += before + jsonString(message);
    before = ",\n    ";
  }
  saveBytes("-", text + (notices.messages().empty() ? "]\n}\n" : "\n  ]\n}\n"));
}

void printJsonOfShares(const Options& options, const Film& film) {
  std::uint64_t samples = 0;
  std::uint64_t rays = 0;
  for (int y = 0; y < film.height(); ++y) {
    for (int x = 0; x < film.width(); ++x) {
      samples += film.at(x, y).samples;
      rays += film.at(x, y).rays;
    }
  }
  std::string text = "{\n  \"shares\": [";
  const char* before = "\n    ";
  for (const std::string& share : options.shares) {
    text += before + jsonString(share);
    before = ",\n    ";
  }
  saveBytes("-", text + "\n  ],\n  \"output\": " + jsonString(options.output) +
                     ",\n  \"width\": " + std::to_string(film.width()) +
                     ",\n  \"height\": " + std::to_string(film.height()) + ",\n  \"tiles\": " +
                     std::to_string(film.tiles()) + ",\n  \"samples\": " + std::to_string(samples) +
                     ",\n  \"rays\": " + std::to_string(rays) + "\n}\n");
}

int assembleShares(const Options& options) {
  requireTarget(options.output);
  TileHeader header;
  const Film film = assemble(options.shares, header);
  TaskDescription task;
  task.brightness = header.brightness;
  task.hasTransparentBackground = header.hasTransparentBackground != 0;
  writePicture(options, film.finish(task, options.passes));
  if (options.json) printJsonOfShares(options, film);
  return 0;
}

int renderScene(const Options& options) {
  onCtrlC(onEarlyInterrupt);
  if (!options.wantsTiles) requireTarget(options.output);
  const vrnt::UniqueScene owner = openScene(options);
  Notices notices;
  if (options.task &&
      !vrdmValid(owner.get(), VRDM_CLASS_IMAGE_TASK, static_cast<std::int32_t>(*options.task))) {
    throw UsageError("--task: there is no image task " + std::to_string(*options.task) +
                     "; run vrn show " + options.scene);
  }
  SceneDescription scene = readScene(owner.get(), options.task, notices);
  if (!options.json) {
    for (const std::string& message : notices.messages()) tell(message);
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
    saveBytes("-", std::to_string(film.tiles()) + "\n");
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
      throw std::runtime_error("--tiles: the picture has the tiles 0 to " +
                               std::to_string(film.tiles() - 1));
    }
    how.tiles.resize(static_cast<std::size_t>(options.tiles->second - options.tiles->first) + 1);
    std::iota(how.tiles.begin(), how.tiles.end(), options.tiles->first);
  }

  const PathTracer tracer(scene, filmHeight);
  onCtrlC(onInterrupt);
  ProgressBar bar(options, film, task);
  const Progress progress =
      render(tracer, scene, how, film, [&bar](const Progress& at) { bar(at); });
  bar.finish(progress);

  if (options.tiles) {
    if (cancelled) {
      tell("interrupted: a share must be whole, so none is written");
      return kInterrupted;
    }
    TileHeader header;
    header.width = width;
    header.height = height;
    header.samples = how.samples;
    header.seed = how.seed;
    header.noise = how.noise;
    char digest[VRTK_DIGEST_LENGTH] = {};
    vrtkError* error = nullptr;
    if (vrtkSceneDigest(owner.get(), nullptr, digest, &error) != VRTK_OK) {
      const std::unique_ptr<vrtkError, Deleter> errorOwner(error);
      throw std::runtime_error(error != nullptr ? vrtkErrorMessage(error)
                                                : "the scene has no digest");
    }
    std::copy_n(digest, header.scene.size(), header.scene.begin());
    header.task = static_cast<std::uint32_t>(options.task.value_or(0));
    header.bounces = static_cast<std::uint32_t>(task.maxBounces);
    header.brightness = task.brightness;
    header.hasTransparentBackground = task.hasTransparentBackground;
    writeTiles(options.output, header, film, how.tiles);
  } else if (progress.samples != 0) {
    writePicture(options, film.finish(task, options.passes));
  } else if (cancelled) {
    tell(kNoSample);
  } else {
    throw std::runtime_error("--time: it was over before the first sample; give more seconds");
  }
  if (options.json) printJson(options, film, progress, notices);
  return cancelled ? kInterrupted : 0;
}

int run(int count, char** arguments) {
  const Options options = parseOptions({arguments + 1, arguments + count});
  if (options.wantsHelp) {
    saveBytes("-", kUsage);
    return 0;
  }
  if (options.wantsVersion) {
    saveBytes("-", std::string("vrn-render ") + vrtkVersion() + ", with vornath_data " +
                       std::to_string(VORNATH_DATA_VERSION_MAJOR) + "." +
                       std::to_string(VORNATH_DATA_VERSION_MINOR) + "." +
                       std::to_string(VORNATH_DATA_VERSION_PATCH) + "\n");
    return 0;
  }
  return options.assembles ? assembleShares(options) : renderScene(options);
}

}  // namespace
}  // namespace vrn_render

int main(int count, char** arguments) {
  // A write to a pipe without a reader then reports an error.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return vrn_render::run(count, arguments);
  } catch (const std::bad_alloc&) {
    vrn_render::tell("there is not enough memory; close other programs, or take a smaller picture");
  } catch (const std::exception& error) {
    vrn_render::tell(error.what());
  }
  return vrn_render::kTrouble;
}
