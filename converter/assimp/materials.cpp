#include "assimp/materials.hpp"

#include <assimp/material.h>
#include <dirent.h>
#include <strings.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <memory>
#include <optional>

namespace vrn_convert {
namespace {

constexpr Colour kGrey{0.6F, 0.6F, 0.6F};

float fraction(float number) { return std::isfinite(number) ? std::clamp(number, 0.0F, 1.0F) : 0; }
float positive(float number) { return std::isfinite(number) ? std::clamp(number, 0.0F, 1e30F) : 0; }

bool isFile(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// Finds a file of a folder whatever the case of its name is, as the systems do on which many of
// these files were written. Returns an empty path if there is none.
std::string anyCase(const std::string& folder, const std::string& name) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir(folder.c_str()), closedir);
  if (!open) return "";
  for (const dirent* entry = readdir(open.get()); entry != nullptr; entry = readdir(open.get())) {
    if (strcasecmp(entry->d_name, name.c_str()) == 0) return folder + "/" + entry->d_name;
  }
  return "";
}

class MaterialReader {
 public:
  MaterialReader(const aiMaterial& material, AssimpImages& images, Notices& notices)
      : from_(material), images_(images), notices_(notices) {}

  MaterialPlan read() {
    aiString name;
    if (from_.Get(AI_MATKEY_NAME, name) == AI_SUCCESS) plan_.name = name.C_Str();
    int isTwoSided = 0;
    from_.Get(AI_MATKEY_TWOSIDED, isTwoSided);
    plan_.isDoubleSided = isTwoSided != 0;
    readGround();
    readSurface();
    readEmission();
    if (plan_.baseColour == Colour{0, 0, 0} && !plan_.roughness && !plan_.emits()) {
      notices_.add("a material without any colour is carried as grey");
      plan_.baseColour = kGrey;
    }
    readOpacity();
    plan_.normalTexture = texture(aiTextureType_NORMALS, PixelUse::Normal);
    if (!plan_.normalTexture) {
      plan_.normalTexture = texture(aiTextureType_NORMAL_CAMERA, PixelUse::Normal);
    }
    if (from_.GetTextureCount(aiTextureType_HEIGHT) > 0 ||
        from_.GetTextureCount(aiTextureType_DISPLACEMENT) > 0) {
      notices_.add("maps of heights are not carried; a scene has no field for them");
    }
    return std::move(plan_);
  }

 private:
  std::optional<Colour> colour(const char* key, unsigned type, unsigned index) const {
    aiColor3D found;
    if (from_.Get(key, type, index, found) != AI_SUCCESS) return std::nullopt;
    return Colour{positive(found.r), positive(found.g), positive(found.b)};
  }
  std::optional<float> number(const char* key, unsigned type, unsigned index) const {
    float found = 0;
    if (from_.Get(key, type, index, found) != AI_SUCCESS || !std::isfinite(found)) {
      return std::nullopt;
    }
    return found;
  }

  std::optional<TexturePlan> texture(aiTextureType type, PixelUse use, unsigned index = 0) {
    aiString path;
    unsigned set = 0;
    aiTextureMapMode modes[3] = {aiTextureMapMode_Wrap, aiTextureMapMode_Wrap,
                                 aiTextureMapMode_Wrap};
    if (from_.GetTexture(type, index, &path, nullptr, &set, nullptr, nullptr, modes) !=
            AI_SUCCESS ||
        path.length == 0) {
      return std::nullopt;
    }
    const auto wrap = [](aiTextureMapMode mode) {
      if (mode == aiTextureMapMode_Wrap) return Wrap::Repeat;
      return mode == aiTextureMapMode_Mirror ? Wrap::Mirror : Wrap::Clamp;
    };
    TexturePlan plan;
    plan.image = images_.find(path.C_Str());
    plan.use = use;
    plan.set = static_cast<int>(std::min(set, 8U));
    plan.u = wrap(modes[0]);
    plan.v = wrap(modes[1]);
    return plan;
  }

  void readGround() {
    std::optional<Colour> ground = colour(AI_MATKEY_BASE_COLOR);
    if (!ground) ground = colour(AI_MATKEY_COLOR_DIFFUSE);
    plan_.baseTexture = texture(aiTextureType_BASE_COLOR, PixelUse::Colours);
    if (!plan_.baseTexture) plan_.baseTexture = texture(aiTextureType_DIFFUSE, PixelUse::Colours);
    plan_.baseColour = ground.value_or(plan_.baseTexture ? Colour{1, 1, 1} : kGrey);
    for (float& channel : plan_.baseColour) channel = fraction(channel);
    // Many programs write no colour beside a texture.
    if (plan_.baseTexture && plan_.baseColour == Colour{0, 0, 0}) plan_.baseColour = {1, 1, 1};
  }

  void readSurface() {
    const std::optional<float> roughness = number(AI_MATKEY_ROUGHNESS_FACTOR);
    const std::optional<float> metallic = number(AI_MATKEY_METALLIC_FACTOR);
    auto packed = texture(aiTextureType_UNKNOWN, PixelUse::Data);  // of glTF
    auto rough = texture(aiTextureType_DIFFUSE_ROUGHNESS, PixelUse::Data);
    auto metal = texture(aiTextureType_METALNESS, PixelUse::Data);
    // One image for both has roughness in G and metal in B.
    if (rough && metal && rough->image == metal->image) packed = rough;
    if (packed && (roughness || metallic)) {
      rough = metal = packed;
      rough->channel = 1;
      metal->channel = 2;
    }
    if (metallic || metal) {
      plan_.metallic = fraction(metallic.value_or(1));
      plan_.metallicTexture = metal;
    }
    if (roughness || rough || plan_.metallic) {
      plan_.roughness = fraction(roughness.value_or(1));
      plan_.roughnessTexture = rough;
    } else {
      readHighlight();
    }
    if (const auto through = number(AI_MATKEY_TRANSMISSION_FACTOR); through && *through > 0) {
      plan_.transmission = fraction(*through);
    }
    const std::optional<float> index = number(AI_MATKEY_REFRACTI);
    if (index && *index > 1 && *index < 10 && (plan_.roughness || plan_.transmission)) {
      plan_.indexOfRefraction = *index;
    }
  }

  // The exponent of a highlight becomes the roughness whose highlight is about as wide.
  void readHighlight() {
    const std::optional<float> exponent = number(AI_MATKEY_SHININESS);
    const Colour specular = colour(AI_MATKEY_COLOR_SPECULAR).value_or(Colour{0, 0, 0});
    const float strength = number(AI_MATKEY_SHININESS_STRENGTH).value_or(1);
    if (!exponent || !(*exponent > 0) || !(strength > 0) || specular == Colour{0, 0, 0}) return;
    plan_.roughness = fraction(std::pow(2 / (*exponent + 2), 0.25F));
  }

  void readEmission() {
    plan_.emission = colour(AI_MATKEY_COLOR_EMISSIVE).value_or(Colour{0, 0, 0});
    plan_.emissionTexture = texture(aiTextureType_EMISSION_COLOR, PixelUse::Colours);
    if (!plan_.emissionTexture) {
      plan_.emissionTexture = texture(aiTextureType_EMISSIVE, PixelUse::Colours);
    }
    if (plan_.emissionTexture && plan_.emission == Colour{0, 0, 0}) plan_.emission = {1, 1, 1};
    plan_.emissionStrength = positive(number(AI_MATKEY_EMISSIVE_INTENSITY).value_or(1));
  }

  void readOpacity() {
    plan_.opacity = fraction(number(AI_MATKEY_OPACITY).value_or(1));
    if (plan_.opacity == 0) {
      notices_.add(
          "a material with an opacity of 0 is carried as opaque; the formats disagree "
          "about what it means");
      plan_.opacity = 1;
    }
    plan_.opacityTexture = texture(aiTextureType_OPACITY, PixelUse::Data);
    if (plan_.opacityTexture && plan_.baseTexture &&
        plan_.opacityTexture->image == plan_.baseTexture->image) {
      plan_.opacityTexture = plan_.baseTexture;
      plan_.opacityTexture->channel = 3;
    }
  }

  const aiMaterial& from_;
  AssimpImages& images_;
  Notices& notices_;
  MaterialPlan plan_;
};

}  // namespace

int AssimpImages::find(const std::string& path) {
  const auto [known, isNew] = found_.emplace(path, static_cast<int>(images_.size()));
  if (!isNew) return known->second;
  ImagePlan image;
  image.name = path;
  if (const aiTexture* const texture = scene_.GetEmbeddedTexture(path.c_str());
      texture != nullptr) {
    readEmbedded(*texture, image);
  } else if (!folder_.empty()) {
    readFile(path, image);
  }
  images_.push_back(std::move(image));
  return known->second;
}

void AssimpImages::readEmbedded(const aiTexture& texture, ImagePlan& image) {
  if (texture.pcData == nullptr || texture.mWidth == 0) return;
  if (texture.mFilename.length > 0) image.name = texture.mFilename.C_Str();
  if (texture.mHeight == 0) {
    image.data = reinterpret_cast<const unsigned char*>(texture.pcData);
    image.size = texture.mWidth;
    return;
  }
  constexpr unsigned kMost = 1U << 24;
  if (texture.mWidth > kMost || texture.mHeight > kMost) return;
  const std::size_t count = std::size_t{texture.mWidth} * texture.mHeight;
  std::vector<unsigned char>& pixels = files_.emplace_back();
  pixels.reserve(4 * count);
  for (std::size_t i = 0; i < count; ++i) {
    const aiTexel& texel = texture.pcData[i];
    pixels.insert(pixels.end(), {texel.r, texel.g, texel.b, texel.a});
  }
  image.data = pixels.data();
  image.size = pixels.size();
  image.width = static_cast<int>(texture.mWidth);
  image.height = static_cast<int>(texture.mHeight);
}

// The path may be that of another machine. So the folder of the file is searched for the path, and
// for each of its ends.
void AssimpImages::readFile(const std::string& path, ImagePlan& image) {
  std::string wanted = path;
  std::replace(wanted.begin(), wanted.end(), '\\', '/');
  std::string found;
  for (std::size_t start = 0; found.empty();) {
    const std::string end = wanted.substr(start);
    if (!end.empty() && end[0] != '/' && isFile(folder_ + "/" + end)) found = folder_ + "/" + end;
    const std::size_t slash = wanted.find('/', start);
    if (slash == std::string::npos) break;
    start = slash + 1;
  }
  if (found.empty()) found = anyCase(folder_, wanted.substr(wanted.rfind('/') + 1));
  if (found.empty() || !isFile(found)) return;
  std::ifstream stream(found, std::ios::binary | std::ios::ate);
  const std::streamoff size = stream ? static_cast<std::streamoff>(stream.tellg()) : -1;
  if (size <= 0) return;
  std::vector<unsigned char> bytes(static_cast<std::size_t>(size));
  stream.seekg(0);
  if (!stream.read(reinterpret_cast<char*>(bytes.data()), size)) return;
  files_.push_back(std::move(bytes));
  image.data = files_.back().data();
  image.size = files_.back().size();
}

MaterialPlan assimpMaterial(const aiMaterial& material, AssimpImages& images, Notices& notices) {
  return MaterialReader(material, images, notices).read();
}

}  // namespace vrn_convert
