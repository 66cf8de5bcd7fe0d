#include "gltf/gltf_file.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <limits>
#include <map>
#include <new>
#include <nlohmann/json.hpp>
#include <set>
#include <string_view>

#include "scene_plan/notices.hpp"

namespace vrn_convert {
namespace {

constexpr std::size_t kGlbHeader = 12;

bool isGlb(const Source& source) {
  return source.size >= kGlbHeader && std::memcmp(source.bytes, "glTF", 4) == 0;
}

std::uint32_t wordAt(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

// Returns the JSON text of a file: the first chunk of a .glb, or the whole file.
std::string_view jsonOf(const Source& source) {
  const char* const text = reinterpret_cast<const char*>(source.bytes);
  if (!isGlb(source)) return {text, source.size};
  if (source.size < kGlbHeader + 8) return {};
  const std::uint32_t length = wordAt(source.bytes + kGlbHeader);
  if (length > source.size - kGlbHeader - 8) return {};
  return {text + kGlbHeader + 8, length};
}

// Throws Refused if a .glb has fewer bytes than its headers tell.
void checkLengths(const Source& source) {
  if (source.size < 4 || std::memcmp(source.bytes, "glTF", 4) != 0) return;
  const auto refuse = [&source](const std::string& what) {
    throw Refused("it is no valid glTF: " + what + ", and the file has " +
                  std::to_string(source.size) + "; it may be cut");
  };
  if (source.size < kGlbHeader + 8) refuse("a .glb has at least 20 bytes");
  const std::size_t whole = wordAt(source.bytes + 8);
  if (whole > source.size) refuse("its header tells of " + std::to_string(whole) + " bytes");
  const std::size_t json = wordAt(source.bytes + kGlbHeader);
  if (json > source.size - kGlbHeader - 8) {
    refuse("its JSON has " + std::to_string(json) + " bytes");
  }
}

// Reads JSON up to the end of the member "asset".
class VersionFinder : public nlohmann::json_sax<nlohmann::json> {
 public:
  const std::string& version() const { return version_; }
  const std::string& leastVersion() const { return leastVersion_; }
  /// Whether a member is an object that is an array from version 2.0 on.
  bool hasObjects() const { return hasObjects_; }
  /// Where the text is no JSON; 0 if it is.
  std::size_t damage() const { return damage_; }

  bool null() override { return value(); }
  bool boolean(bool /*value*/) override { return value(); }
  bool number_integer(number_integer_t /*value*/) override { return value(); }
  bool number_unsigned(number_unsigned_t /*value*/) override { return value(); }
  bool number_float(number_float_t /*value*/, const string_t& /*text*/) override { return value(); }
  bool binary(binary_t& /*value*/) override { return value(); }
  bool string(string_t& text) override {
    if (depth_ == 2 && isAsset_ && key_ == "version") version_ = text;
    if (depth_ == 2 && isAsset_ && key_ == "minVersion") leastVersion_ = text;
    return value();
  }
  bool start_object(std::size_t /*size*/) override {
    if (depth_ == 1) hasObjects_ |= key_ == "meshes" || key_ == "nodes" || key_ == "accessors";
    return enter();
  }
  bool start_array(std::size_t /*size*/) override { return enter(); }
  bool end_object() override { return leave(); }
  bool end_array() override { return leave(); }
  bool key(string_t& name) override {
    if (depth_ == 1) isAsset_ = name == "asset";
    key_ = name;
    return true;
  }
  bool parse_error(std::size_t place, const std::string& /*token*/,
                   const nlohmann::detail::exception& /*error*/) override {
    damage_ = std::max<std::size_t>(1, place);
    return false;
  }

 private:
  bool value() { return true; }
  bool enter() {
    ++depth_;
    return true;
  }
  bool leave() {
    --depth_;
    return depth_ != 1 || !isAsset_ || version_.empty();
  }
  std::string version_, leastVersion_, key_;
  int depth_ = 0;
  bool isAsset_ = false;
  bool hasObjects_ = false;
  std::size_t damage_ = 0;
};

// Returns whether a version, as in "2.1", is above 2.0.
bool isAboveTwo(const std::string& version) {
  char* end = nullptr;
  const unsigned long major = std::strtoul(version.c_str(), &end, 10);
  const unsigned long minor = *end == '.' ? std::strtoul(end + 1, nullptr, 10) : 0;
  return major > 2 || (major == 2 && minor > 0);
}

struct Files {
  std::string folder;
  /// The bytes to read of a file that has more than its buffer, by the path.
  std::map<std::string, std::size_t> lengths;
};

// tinygltf looks in the working folder, too, where other files may have the same name.
bool exists(const std::string& path, void* data) {
  const std::string folder = static_cast<const Files*>(data)->folder + "/";
  struct stat status {};
  return path.compare(0, folder.size(), folder) == 0 && stat(path.c_str(), &status) == 0 &&
         S_ISREG(status.st_mode);
}

std::string unchanged(const std::string& path, void* /*files*/) { return path; }

bool readFile(std::vector<unsigned char>* out, std::string* error, const std::string& path,
              void* data) {
  const auto* const files = static_cast<const Files*>(data);
  std::ifstream stream(path, std::ios::binary | std::ios::ate);
  const std::streamoff end = stream ? static_cast<std::streamoff>(stream.tellg()) : -1;
  if (end < 0) {
    if (error != nullptr) *error = "it cannot be read";
    return false;
  }
  auto size = static_cast<std::size_t>(end);
  if (const auto found = files->lengths.find(path); found != files->lengths.end()) {
    size = std::min(size, found->second);
  }
  out->resize(size);
  stream.seekg(0);
  stream.read(reinterpret_cast<char*>(out->data()), static_cast<std::streamsize>(size));
  return static_cast<bool>(stream);
}

bool writeNothing(std::string* /*error*/, const std::string& /*path*/,
                  const std::vector<unsigned char>& /*bytes*/, void* /*files*/) {
  return false;
}

// Keeps the encoded bytes of an image. Those in a buffer stay there; tinygltf does not check their
// range, so its pointer to them must not be used.
bool keepImage(tinygltf::Image* image, const int /*index*/, std::string* /*error*/,
               std::string* /*warning*/, int /*width*/, int /*height*/, const unsigned char* bytes,
               int size, void* /*data*/) {
  if (image->bufferView < 0 && size > 0) image->image.assign(bytes, bytes + size);
  return true;
}

// A buffer may be shorter than its file, which tinygltf refuses. Returns whether a message is about
// that, and then notes the length of the buffer.
bool noteLength(const std::string& message, Files& files) {
  constexpr std::string_view kStart = "File size mismatch : ";
  constexpr std::string_view kMiddle = ", requestedBytes ";
  constexpr std::string_view kLast = ", but got ";
  const std::size_t start = message.find(kStart);
  if (start == std::string::npos) return false;
  const std::size_t middle = message.find(kMiddle, start);
  if (middle == std::string::npos) return false;
  const std::size_t last = message.find(kLast, middle);
  if (last == std::string::npos) return false;
  const std::string path = message.substr(start + kStart.size(), middle - start - kStart.size());
  const std::size_t requested =
      std::strtoull(message.c_str() + middle + kMiddle.size(), nullptr, 10);
  const std::size_t found = std::strtoull(message.c_str() + last + kLast.size(), nullptr, 10);
  if (requested >= found || requested == 0) return false;
  return files.lengths.emplace(path, requested).second;
}

bool load(const Source& source, Files& files, tinygltf::Model& model, std::string& error) {
  tinygltf::TinyGLTF loader;
  loader.SetImageLoader(keepImage, nullptr);
  loader.SetFsCallbacks({exists, unchanged, readFile, writeNothing, &files});
  std::string warning;
  const auto size = static_cast<unsigned int>(source.size);
  return isGlb(source) ? loader.LoadBinaryFromMemory(&model, &error, &warning, source.bytes, size,
                                                     files.folder)
                       : loader.LoadASCIIFromString(&model, &error, &warning,
                                                    reinterpret_cast<const char*>(source.bytes),
                                                    size, files.folder);
}

// Throws Refused if a file requires an extension that is not read.
void checkExtensions(const tinygltf::Model& model) {
  static const std::set<std::string> kKnown = {"KHR_lights_punctual",
                                               "KHR_mesh_quantization",
                                               "KHR_texture_transform",
                                               "EXT_mesh_gpu_instancing",
                                               "KHR_materials_anisotropy",
                                               "KHR_materials_clearcoat",
                                               "KHR_materials_dispersion",
                                               "KHR_materials_emissive_strength",
                                               "KHR_materials_ior",
                                               "KHR_materials_iridescence",
                                               "KHR_materials_pbrSpecularGlossiness",
                                               "KHR_materials_sheen",
                                               "KHR_materials_specular",
                                               "KHR_materials_transmission",
                                               "KHR_materials_unlit",
                                               "KHR_materials_variants",
                                               "KHR_materials_volume"};
  for (const std::string& name : model.extensionsRequired) {
    if (kKnown.count(name) != 0) continue;
    throw Refused("it requires the extension " + name +
                  ", which cannot be read; write the file again without it");
  }
}

}  // namespace

std::optional<std::string> gltfVersion(const Source& source) {
  checkLengths(source);
  // A .glb of glTF 1.0 has another form.
  if (isGlb(source) && wordAt(source.bytes + 4) == 1) return "1.0";
  const std::string_view json = jsonOf(source);
  std::size_t at = 0;
  while (at < json.size() && (std::isspace(static_cast<unsigned char>(json[at])) != 0)) ++at;
  if (json.substr(at, 3) == "\xef\xbb\xbf") at += 3;
  const bool isNamed = isGlb(source) || source.format == "gltf" || source.format == "glb";
  if (at == json.size() || json[at] != '{') {
    if (isNamed)
      throw Refused("it is no valid glTF: it does not begin with an object of JSON in UTF-8");
    return std::nullopt;
  }

  VersionFinder finder;
  nlohmann::json::sax_parse(json.begin() + static_cast<std::ptrdiff_t>(at), json.end(), &finder);
  const std::string& version = finder.version();
  if (isAboveTwo(finder.leastVersion())) {
    throw Refused("it needs at least version " + oneLine(finder.leastVersion()) +
                  " of glTF (asset.minVersion), and 2.0 is what can be read");
  }
  if (!version.empty()) return version;
  if (!isNamed) return std::nullopt;
  if (finder.damage() != 0) {
    throw Refused("it is no valid glTF: its JSON is damaged at byte " +
                  std::to_string(finder.damage()) + "; the file may be cut");
  }
  // Version 1 may leave out its version.
  if (!finder.hasObjects())
    throw Refused("it is no valid glTF: its asset.version is missing, or is no string");
  return version;
}

tinygltf::Model loadGltf(const Source& source) {
  if (source.size > std::numeric_limits<unsigned int>::max()) {
    throw Refused("it has more than 4 GiB, which a .glb cannot have");
  }
  Files files;
  // Files beside standard input are not looked for.
  files.folder = source.folder.empty() ? "/dev/null" : source.folder;
  constexpr int kMostTries = 100;
  for (int tries = 0;; ++tries) {
    tinygltf::Model model;
    std::string error;
    const bool isLoaded = load(source, files, model, error);
    if (!isLoaded && tries < kMostTries && noteLength(error, files)) continue;
    // An extension may be the reason why a file looks damaged.
    checkExtensions(model);
    if (isLoaded) return model;
    if (error.find("bad_alloc") != std::string::npos) throw std::bad_alloc();
    if (error.find("File not found : data:") != std::string::npos) {
      throw Refused(
          "a data URI has a type or an encoding that cannot be read; write "
          "data:application/octet-stream;base64, and the bytes, or name a file");
    }
    throw Refused("it is no valid glTF: " + oneLine(error.substr(0, error.find('\n'))) +
                  "; check the file with a validator");
  }
}

}  // namespace vrn_convert
