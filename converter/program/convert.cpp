#include "program/convert.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "assimp/assimp_reader.hpp"
#include "gltf/gltf_file.hpp"
#include "gltf/gltf_reader.hpp"
#include "program/input.hpp"
#include "scene_plan/text.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_toolkit/vrtk.h"
#include "writing/framing.hpp"
#include "writing/scene_writer.hpp"

namespace vrn_convert {
namespace {

struct ErrorDeleter {
  void operator()(vrtkError* error) const { vrtkErrorDestroy(error); }
};
struct ReportDeleter {
  void operator()(vrtkReport* report) const { vrtkReportDestroy(report); }
};
struct BytesDeleter {
  void operator()(void* bytes) const { vrtkBytesDestroy(bytes); }
};

// Calls a function of the toolkit. Throws Trouble with its message.
template <typename Call>
void require(Call&& call) {
  vrtkError* error = nullptr;
  if (call(&error) == VRTK_OK) return;
  const std::unique_ptr<vrtkError, ErrorDeleter> owner(error);
  throw Trouble(error != nullptr ? vrtkErrorMessage(error) : "there is not enough memory");
}

std::string extensionOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  const std::size_t dot = path.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return "";
  std::string extension = path.substr(dot + 1);
  std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return extension;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

Transform rootOf(const Options& options) {
  const double s = options.scale;
  Transform root = Transform::scaling({s, s, s});
  // z up: (x, y, z) becomes (x, z, -y).
  if (options.isZUp) root = {{s, 0, 0}, {0, 0, -s}, {0, s, 0}, {}};
  return root;
}

void writeAll(int descriptor, const void* bytes, std::size_t size) {
  const char* at = static_cast<const char*>(bytes);
  while (size > 0) {
    const ssize_t count = write(descriptor, at, size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && errno == EPIPE) return;  // the reader has what it wants
    if (count <= 0) {
      throw Trouble(std::string("-: standard output cannot be written: ") + std::strerror(errno));
    }
    at += count;
    size -= static_cast<std::size_t>(count);
  }
}

bool isSame(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino && S_ISREG(a.st_mode);
}

// Returns the path of a file that may not be there yet, without links.
std::string placeOf(const std::string& path) {
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(path, error);
  const std::string place = std::filesystem::weakly_canonical(whole, error).string();
  return error ? path : place;
}

// Throws Trouble if a file would be written over the input or over another output, also through
// links.
void checkOutputs(const Options& options) {
  struct stat input {};
  const bool hasInput = options.input == "-" ? fstat(STDIN_FILENO, &input) == 0
                                             : stat(options.input.c_str(), &input) == 0;
  const auto check = [&](const std::string& path, const std::string& option) {
    struct stat output {};
    if (path.empty() || path == "-" || stat(path.c_str(), &output) != 0) return;
    if (hasInput && isSame(input, output)) {
      throw Trouble(option + path + ": it is the file to convert; give another file to write");
    }
  };
  check(options.output, "");
  check(options.names, "--names: ");
  if (options.names.empty() || options.output == "-") return;
  struct stat scene {
  }, names{};
  const bool areThere =
      stat(options.output.c_str(), &scene) == 0 && stat(options.names.c_str(), &names) == 0;
  if (areThere ? isSame(scene, names) : placeOf(options.output) == placeOf(options.names)) {
    throw Trouble("--names: " + options.names + ": it is the scene file to write; give another");
  }
}

// A file that is written under another name first, so that nothing can go wrong when it takes its
// place.
class PreparedFile {
 public:
  PreparedFile() = default;
  PreparedFile(const PreparedFile&) = delete;
  PreparedFile& operator=(const PreparedFile&) = delete;
  ~PreparedFile() {
    if (!temporary_.empty()) std::remove(temporary_.c_str());
  }

  void prepare(const std::string& path, const std::string& bytes) {
    place_ = placeOf(path);
    struct stat old {};
    const bool isThere = stat(place_.c_str(), &old) == 0;
    if (isThere && S_ISDIR(old.st_mode)) throw Trouble(path + ": it is a folder; give a file");
    if (isThere && !S_ISREG(old.st_mode)) throw Trouble(path + ": it is no file; give a file");
    if (isThere && access(place_.c_str(), W_OK) != 0) {
      throw Trouble(path + ": it cannot be written: " + std::strerror(errno));
    }
    const std::string temporary = place_ + ".new" + std::to_string(getpid());
    vrtkError* failure = nullptr;
    if (vrtkFileSave(bytes.data(), bytes.size(), temporary.c_str(), nullptr, &failure) != VRTK_OK) {
      const std::unique_ptr<vrtkError, ErrorDeleter> owner(failure);
      std::string text =
          failure != nullptr ? vrtkErrorMessage(failure) : "there is not enough memory";
      for (std::size_t at = 0; (at = text.find(temporary, at)) != std::string::npos;) {
        text.replace(at, temporary.size(), path);
        at += path.size();
      }
      throw Trouble(text);
    }
    temporary_ = temporary;
    if (isThere) static_cast<void>(chmod(temporary_.c_str(), old.st_mode & 07777));
  }

  void commit() {
    if (temporary_.empty()) return;
    if (std::rename(temporary_.c_str(), place_.c_str()) != 0) {
      throw Trouble(place_ + ": it cannot be written: " + std::strerror(errno));
    }
    temporary_.clear();
  }

 private:
  std::string place_;      // without links
  std::string temporary_;  // empty if there is none
};

std::string namesJson(const WrittenScene& written) {
  std::string json = "{";
  const char* comma = "\n";
  for (const auto& [objectClass, names] : written.names) {
    json += comma + ("  " + jsonString(objectClass) + ": [");
    comma = ",\n";
    const char* between = "";
    for (const std::string& name : names) {
      json += between + (name.empty() ? "null" : jsonString(name));
      between = ", ";
    }
    json += "]";
  }
  return json + "\n}\n";
}

// The classes whose names a scene has no place for.
std::size_t homelessNames(const WrittenScene& written) {
  std::size_t count = 0;
  for (const auto& [objectClass, names] : written.names) {
    // Tags hold the names of shapes and lights. Groups have those of their shapes.
    if (objectClass == "Shape" || objectClass == "Light" || objectClass == "TransformationGroup") {
      continue;
    }
    count += static_cast<std::size_t>(
        std::count_if(names.begin(), names.end(), [](const std::string& n) { return !n.empty(); }));
  }
  return count;
}

class Conversion {
 public:
  Conversion(const Options& options, int standardOutput)
      : options_(options), standardOutput_(standardOutput) {}

  Outcome run() {
    checkOutputs(options_);
    ScenePlan plan = read();
    if (plan.shapes.empty()) {
      throw Refused(kNoTriangles);
    }
    addMissing(plan);
    WrittenScene written = writeScene(std::move(plan), notices_);
    check(written.scene.get());
    if (options_.names.empty()) {
      const std::size_t names = homelessNames(written);
      if (names > 0) {
        notices_.remark(std::to_string(names) +
                        " names of meshes, materials and the like have no " +
                        "place in a scene; --names keeps them in a file");
      }
    }
    save(written);
    std::string json = report(written);
    return {std::make_shared<WrittenScene>(std::move(written)), notices_.messages(),
            notices_.hasLoss(), std::move(json)};
  }

 private:
  ScenePlan read() {
    const Input input(options_.input);
    Source source;
    const bool isStream = options_.input == "-";
    if (!isStream) {
      source.path = options_.input;
      source.folder = folderOf(options_.input);
    }
    source.format = !options_.format.empty() ? options_.format
                    : isStream               ? ""
                                             : extensionOf(options_.input);
    source.bytes = input.bytes();
    source.size = input.size();
    source.root = rootOf(options_);
    source.scale = options_.scale;
    const bool mayBeGltf = source.format == "gltf" || source.format == "glb" ||
                           source.format.empty() || !assimpReads(source.format);
    if (mayBeGltf) {
      const std::optional<std::string> version = gltfVersion(source);
      // Version 1 is another format, which Assimp reads.
      if (version && !version->empty() && version->compare(0, 2, "1.") != 0) {
        if (version->compare(0, 2, "2.") != 0) {
          throw Refused("it has version " + oneLine(*version) + " of glTF, not 2.0");
        }
        reader_ = "glTF";
        return readGltf(source, notices_);
      }
    }
    reader_ = "Assimp";
    return readAssimp(source, notices_);
  }

  void addMissing(ScenePlan& plan) {
    const Box box = plan.box();
    const bool isSeen = std::any_of(plan.cameras.begin(), plan.cameras.end(),
                                    [&box](const CameraPlan& each) { return looksAt(each, box); });
    addedCamera_ = options_.framesCamera || (!isSeen && options_.addsCamera);
    if (!plan.cameras.empty() && !isSeen) {
      // Some of Assimp's readers lose the direction of a camera.
      notices_.add(addedCamera_ ? "no camera of it looks at the scene; one that does is put first"
                                : "no camera of it looks at the scene");
    }
    if (plan.cameras.empty()) {
      notices_.remark(addedCamera_ ? "it has no camera; one that sees the whole scene is added"
                                   : "it has no camera");
    }
    if (addedCamera_) plan.cameras.insert(plan.cameras.begin(), framingCamera(box));
    addedLight_ = options_.addsLightAlways || (!plan.hasLight() && options_.addsLight);
    if (!plan.hasLight()) {
      notices_.remark(addedLight_
                          ? "it has no light; one from above and one from everywhere are added"
                          : "it has no light");
    }
    if (addedLight_) addDefaultLights(plan);
  }

  void check(const vrdmScene_t* scene) {
    vrtkReport* made = nullptr;
    require([&](vrtkError** error) { return vrtkSceneValidate(scene, nullptr, &made, error); });
    const std::unique_ptr<vrtkReport, ReportDeleter> owner(made);
    warnings_ = vrtkReportWarningCount(made);
    for (std::uint64_t i = 0; i < vrtkReportMessageCount(made); ++i) {
      const vrtkMessage* const message = vrtkReportMessage(made, i);
      notices_.add(std::string("vrn check will warn: ") + message->code + " " + message->address +
                   ": " + message->message);
    }
  }

  void save(const WrittenScene& written) {
    PreparedFile names;
    if (!options_.names.empty()) names.prepare(options_.names, namesJson(written));
    const vrdmScene_t* const scene = written.scene.get();
    if (options_.output == "-") {
      void* bytes = nullptr;
      std::uint64_t size = 0;
      require([&](vrtkError** error) { return vrtkSceneSaveBytes(scene, &bytes, &size, error); });
      const std::unique_ptr<void, BytesDeleter> owner(bytes);
      writeAll(standardOutput_, bytes, static_cast<std::size_t>(size));
    } else {
      require([&](vrtkError** error) {
        return vrtkSceneSave(scene, options_.output.c_str(), nullptr, error);
      });
    }
    names.commit();
  }

  std::string report(const WrittenScene& written) const {
    const vrdmScene_t* const scene = written.scene.get();
    const auto flag = [](bool is) { return is ? "true" : "false"; };
    std::string json = "{\n  \"input\": " + jsonString(options_.input) +
                       ",\n  \"output\": " + jsonString(options_.output) +
                       ",\n  \"reader\": " + jsonString(reader_) + ",\n  \"objects\": {";
    const char* comma = " ";
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
      const std::uint32_t count = vrdmContainerSize(scene, i);
      if (count == 0) continue;
      json += comma + jsonString(vrdmObjectName(i)) + ": " + std::to_string(count);
      comma = ", ";
    }
    json += " },\n  \"triangles\": " + std::to_string(written.triangles) +
            ",\n  \"vertices\": " + std::to_string(written.vertices) +
            ",\n  \"addedCamera\": " + flag(addedCamera_) +
            ",\n  \"addedLight\": " + flag(addedLight_) +
            ",\n  \"warnings\": " + std::to_string(warnings_) + ",\n  \"notices\": [";
    comma = "\n    ";
    for (const std::string& notice : notices_.messages()) {
      json += comma + jsonString(notice);
      comma = ",\n    ";
    }
    return json + (notices_.messages().empty() ? "]\n}\n" : "\n  ]\n}\n");
  }

  const Options& options_;
  const int standardOutput_;
  Notices notices_;
  std::string reader_;
  bool addedCamera_ = false, addedLight_ = false;
  std::uint64_t warnings_ = 0;
};

}  // namespace

Outcome convert(const Options& options, int standardOutput) {
  return Conversion(options, standardOutput).run();
}

}  // namespace vrn_convert
