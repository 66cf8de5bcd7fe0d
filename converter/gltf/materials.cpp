#include "gltf/materials.hpp"

#include <algorithm>
#include <cmath>
#include <set>

namespace vrn_convert {
namespace {

float fraction(double number) {
  return std::isfinite(number) ? static_cast<float>(std::clamp(number, 0.0, 1.0)) : 0.0F;
}
float positive(double number) {
  constexpr double kMost = 1e30;
  return std::isfinite(number) ? static_cast<float>(std::clamp(number, 0.0, kMost)) : 0.0F;
}

Colour colourOf(const std::vector<double>& numbers, Colour otherwise) {
  if (numbers.size() < 3) return otherwise;
  return {fraction(numbers[0]), fraction(numbers[1]), fraction(numbers[2])};
}

std::vector<double> numbersAt(const tinygltf::Value& object, const char* key) {
  std::vector<double> numbers;
  if (!object.Has(key)) return numbers;
  const tinygltf::Value& array = object.Get(key);
  for (std::size_t i = 0; i < array.ArrayLen(); ++i) {
    numbers.push_back(array.Get(static_cast<int>(i)).GetNumberAsDouble());
  }
  return numbers;
}

Wrap wrapOf(int mode) {
  if (mode == TINYGLTF_TEXTURE_WRAP_CLAMP_TO_EDGE) return Wrap::Clamp;
  if (mode == TINYGLTF_TEXTURE_WRAP_MIRRORED_REPEAT) return Wrap::Mirror;
  return Wrap::Repeat;
}

class MaterialReader {
 public:
  MaterialReader(const tinygltf::Model& model, const tinygltf::Material& material, Notices& notices)
      : model_(model), from_(material), notices_(notices) {}

  MaterialPlan read() {
    plan_ = defaultGltfMaterial();
    plan_.name = from_.name;
    plan_.isDoubleSided = from_.doubleSided;
    readGround();
    readEmission();
    readNormal();
    readExtensions();
    readAlpha();
    // Light goes through from behind, so the back of what is transparent belongs to the picture.
    plan_.hidesBack = !from_.doubleSided && !plan_.transmission;
    if (from_.occlusionTexture.index >= 0) {
      notices_.add("occlusion textures are not carried: a renderer computes occlusion");
    }
    return std::move(plan_);
  }

 private:
  void readGround() {
    const tinygltf::PbrMetallicRoughness& pbr = from_.pbrMetallicRoughness;
    plan_.baseColour = colourOf(pbr.baseColorFactor, {1, 1, 1});
    if (pbr.baseColorFactor.size() > 3) alpha_ = fraction(pbr.baseColorFactor[3]);
    plan_.baseTexture = texture(pbr.baseColorTexture.index, pbr.baseColorTexture.texCoord,
                                pbr.baseColorTexture.extensions, PixelUse::Colours);
    plan_.roughness = fraction(pbr.roughnessFactor);
    plan_.metallic = fraction(pbr.metallicFactor);
    const auto map =
        texture(pbr.metallicRoughnessTexture.index, pbr.metallicRoughnessTexture.texCoord,
                pbr.metallicRoughnessTexture.extensions, PixelUse::Data);
    if (!map) return;
    plan_.roughnessTexture = plan_.metallicTexture = map;
    plan_.roughnessTexture->channel = 1;
    plan_.metallicTexture->channel = 2;
  }

  void readEmission() {
    const std::vector<double>& factor = from_.emissiveFactor;
    if (factor.size() >= 3) {
      plan_.emission = {positive(factor[0]), positive(factor[1]), positive(factor[2])};
    }
    plan_.emissionTexture = texture(from_.emissiveTexture.index, from_.emissiveTexture.texCoord,
                                    from_.emissiveTexture.extensions, PixelUse::Colours);
  }

  void readNormal() {
    plan_.normalTexture = texture(from_.normalTexture.index, from_.normalTexture.texCoord,
                                  from_.normalTexture.extensions, PixelUse::Normal);
    const double scale = from_.normalTexture.scale;
    plan_.normalScale = std::isfinite(scale) ? static_cast<float>(scale) : 1;
  }

  void readAlpha() {
    if (!isTransparent(from_)) return;
    plan_.opacity = alpha_;
    if (plan_.baseTexture) {
      plan_.opacityTexture = plan_.baseTexture;
      plan_.opacityTexture->channel = 3;
    }
    if (from_.alphaMode == "MASK") plan_.opacityCutoff = positive(from_.alphaCutoff);
  }

  void readExtensions() {
    static const std::set<std::string> kKnown = {
        "KHR_materials_emissive_strength", "KHR_materials_ior", "KHR_materials_transmission",
        "KHR_materials_unlit", "KHR_materials_pbrSpecularGlossiness"};
    for (const auto& [name, value] : from_.extensions) {
      if (!value.IsObject()) continue;
      if (kKnown.count(name) == 0)
        notices_.add("the material extension " + name +
                     " is not carried; the scene has no field for it");
    }
    if (const tinygltf::Value* const glossy = extension("KHR_materials_pbrSpecularGlossiness");
        glossy != nullptr) {
      readSpecularGlossiness(*glossy);
    }
    if (const tinygltf::Value* const strength = extension("KHR_materials_emissive_strength");
        strength != nullptr) {
      plan_.emissionStrength = positive(numberAt(*strength, "emissiveStrength", 1));
    }
    if (const tinygltf::Value* const index = extension("KHR_materials_ior"); index != nullptr) {
      // An index of 0 stands for a coat that reflects everything.
      plan_.indexOfRefraction = positive(numberAt(*index, "ior", 1.5));
    }
    if (const tinygltf::Value* const through = extension("KHR_materials_transmission");
        through != nullptr) {
      const float factor = fraction(numberAt(*through, "transmissionFactor", 0));
      if (factor > 0) plan_.transmission = factor;
      if (through->Has("transmissionTexture")) {
        notices_.add("textures of transmission are not carried; the factor alone is used");
      }
    }
    if (extension("KHR_materials_unlit") != nullptr) {
      notices_.add("unlit materials emit their colour, and reflect nothing");
      plan_.emission = plan_.baseColour;
      plan_.emissionTexture = plan_.baseTexture;
      plan_.emissionStrength = 1;
      plan_.baseColour = {0, 0, 0};
      plan_.roughness.reset();
      plan_.metallic.reset();
      plan_.normalTexture.reset();
    }
  }

  void readSpecularGlossiness(const tinygltf::Value& glossy) {
    notices_.add(
        "KHR_materials_pbrSpecularGlossiness: the specular colour is not carried, and "
        "the glossiness only as a number");
    const std::vector<double> diffuse = numbersAt(glossy, "diffuseFactor");
    plan_.baseColour = colourOf(diffuse, {1, 1, 1});
    if (diffuse.size() > 3) alpha_ = fraction(diffuse[3]);
    plan_.baseTexture.reset();
    if (glossy.Has("diffuseTexture")) {
      const tinygltf::Value& info = glossy.Get("diffuseTexture");
      tinygltf::ExtensionMap extensions;
      if (info.Has("extensions") && info.Get("extensions").Has("KHR_texture_transform")) {
        extensions["KHR_texture_transform"] = info.Get("extensions").Get("KHR_texture_transform");
      }
      plan_.baseTexture =
          texture(static_cast<int>(numberAt(info, "index", -1)),
                  static_cast<int>(numberAt(info, "texCoord", 0)), extensions, PixelUse::Colours);
    }
    plan_.metallic = 0.0F;
    plan_.roughness = 1 - fraction(numberAt(glossy, "glossinessFactor", 1));
    plan_.roughnessTexture.reset();
    plan_.metallicTexture.reset();
  }

  const tinygltf::Value* extension(const char* name) const {
    const auto found = from_.extensions.find(name);
    return found != from_.extensions.end() && found->second.IsObject() ? &found->second : nullptr;
  }

  std::optional<TexturePlan> texture(int index, int set, const tinygltf::ExtensionMap& extensions,
                                     PixelUse use) {
    if (index < 0) return std::nullopt;
    if (static_cast<std::size_t>(index) >= model_.textures.size()) {
      throw Refused("there is no texture " + std::to_string(index));
    }
    const tinygltf::Texture& from = model_.textures[static_cast<std::size_t>(index)];
    if (from.source < 0) {
      notices_.add("a texture has no image that can be read" +
                   (from.extensions.empty() ? "" : " (" + from.extensions.begin()->first + ")") +
                   "; it is left out");
      return std::nullopt;
    }
    if (static_cast<std::size_t>(from.source) >= model_.images.size()) {
      throw Refused("there is no image " + std::to_string(from.source));
    }
    TexturePlan plan;
    plan.image = from.source;
    plan.use = use;
    plan.set = std::clamp(set, 0, 1 << 20);
    if (from.sampler >= 0) {
      if (static_cast<std::size_t>(from.sampler) >= model_.samplers.size()) {
        throw Refused("there is no sampler " + std::to_string(from.sampler));
      }
      const tinygltf::Sampler& sampler = model_.samplers[static_cast<std::size_t>(from.sampler)];
      plan.u = wrapOf(sampler.wrapS);
      plan.v = wrapOf(sampler.wrapT);
      if (sampler.magFilter == TINYGLTF_TEXTURE_FILTER_NEAREST) {
        notices_.add("the filter NEAREST of samplers is not carried; a scene has no filters");
      }
    }
    const auto found = extensions.find("KHR_texture_transform");
    if (found != extensions.end() && found->second.IsObject()) readMap(found->second, plan);
    return plan;
  }

  // The texture coordinates are scaled, then turned, then moved. A rotation is counter-clockwise in
  // an image whose v goes down.
  static void readMap(const tinygltf::Value& from, TexturePlan& plan) {
    const auto pair = [&from](const char* key, double otherwise) {
      const std::vector<double> numbers = numbersAt(from, key);
      std::array<double, 2> result{otherwise, otherwise};
      for (std::size_t i = 0; i < 2 && i < numbers.size(); ++i) {
        if (std::isfinite(numbers[i])) result[i] = numbers[i];
      }
      return result;
    };
    const std::array<double, 2> offset = pair("offset", 0);
    const std::array<double, 2> scale = pair("scale", 1);
    const double angle = numberAt(from, "rotation", 0);
    const double cosine = std::cos(angle);
    const double sine = std::sin(angle);
    plan.map = {static_cast<float>(cosine * scale[0]), static_cast<float>(-sine * scale[0]),
                static_cast<float>(sine * scale[1]),   static_cast<float>(cosine * scale[1]),
                static_cast<float>(offset[0]),         static_cast<float>(offset[1])};
    for (float& number : plan.map) number += 0.0F;  // turns -0.0 into 0.0
    if (from.Has("texCoord")) {
      plan.set = std::clamp(static_cast<int>(numberAt(from, "texCoord", plan.set)), 0, 1 << 20);
    }
  }

  const tinygltf::Model& model_;
  const tinygltf::Material& from_;
  Notices& notices_;
  MaterialPlan plan_;
  float alpha_ = 1;
};

}  // namespace

double numberAt(const tinygltf::Value& object, const char* key, double otherwise) {
  if (!object.Has(key)) return otherwise;
  const tinygltf::Value& value = object.Get(key);
  if (!value.IsNumber()) return otherwise;
  const double number = value.GetNumberAsDouble();
  return std::isfinite(number) && std::abs(number) < 1e30 ? number : otherwise;
}

bool isTransparent(const tinygltf::Material& material) {
  return material.alphaMode == "MASK" || material.alphaMode == "BLEND";
}

MaterialPlan defaultGltfMaterial() {
  MaterialPlan plan;
  plan.roughness = 1.0F;
  plan.metallic = 1.0F;
  plan.hidesBack = true;
  return plan;
}

MaterialPlan gltfMaterial(const tinygltf::Model& model, const tinygltf::Material& material,
                          Notices& notices) {
  return MaterialReader(model, material, notices).read();
}

}  // namespace vrn_convert
