#include "scene/texture_references.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/parameters.h"
#include "vornath_data/texture_references.hpp"
#include "vornath_data/types.h"
#include "vornath_data/values.h"

namespace vrnt::data {

namespace {

// The kinds of texture. A reference is a struct with one int, which has the name of its kind.
constexpr std::array<std::string_view, 6> kTextureKinds = {
    "spectrum_texture", "spectrum_sphere_texture", "normal_texture",
    "float_texture",    "float_sphere_texture",    "texture_ref"};

// Returns false for a spectrum, which contains no texture and has the descriptor of a base type.
bool isStruct(const vrntType_t* type) { return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT; }

bool isInt(const vrntType_t* type) {
  return vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_BASE &&
         vrntTypeBasetype(type) == VRNT_BASETYPE_INT && vrntTypeVectorDimension(type) == 1;
}

vrntValueView_t fieldOf(const vrntType_t* structType, std::uint32_t index) {
  vrntValueView_t field{};
  vrntValueStructField(&field, structType, index);
  return field;
}

vrntValueView_t fieldOf(const vrntValueView_t& parent, std::uint32_t index) {
  vrntValueView_t field = fieldOf(parent.type, index);
  field.offset += parent.offset;
  return field;
}

std::int32_t readWord(const Value& value, const vrntValueView_t& word) {
  std::int32_t number = 0;
  std::memcpy(&number, static_cast<const char*>(value.data()) + word.offset, sizeof(number));
  return number;
}

// Finds references of any kind, in samplers or elsewhere. Identifies them by the field alone.
bool findNamedTexture(const vrntType_t* structType, vrntValueView_t& word) {
  if (vrntTypeFieldCount(structType) != 1) return false;
  const std::string_view label = vrntTypeFieldLabel(structType, 0);
  for (const std::string_view kind : kTextureKinds) {
    if (label != kind) continue;
    word = fieldOf(structType, 0);
    return isInt(word.type);
  }
  return false;
}

// Finds texture references and samplers. Identifies them by the whole type. The texture of a
// sampler is its first field, a struct with one int. References of the other kinds are found only
// in samplers.
bool findImportedTexture(const vrntType_t* structType, vrntValueView_t& word) {
  const TypeHandle texture = TypeHandle::adopt(vrntTypeTexture());
  if (vrntTypeIsEqual(structType, texture.get()) != 0) {
    word = fieldOf(structType, 0);
    return true;
  }
  if (vrntTypeSamplerType(structType) == -1) return false;
  word = fieldOf(fieldOf(structType, 0), 0);
  return true;
}

}  // namespace

// A struct whose fields are being searched.
struct TextureWords::OpenStruct {
  vrntValueView_t place;
  std::uint32_t nextField;
  std::size_t wordsBefore;
};

const std::vector<vrntValueView_t>& TextureWords::in(const vrntType_t* type) {
  const auto known = words_.find(type);
  if (known != words_.end()) return known->second;
  std::vector<vrntValueView_t> words;
  if (isStruct(type)) walk(type, words);
  return words_.emplace(type, std::move(words)).first->second;
}

// Structs may nest as deeply as memory allows, so there is no recursion. A struct type without an
// index is not searched again.
void TextureWords::walk(const vrntType_t* type, std::vector<vrntValueView_t>& words) {
  std::vector<OpenStruct> open;
  const auto enter = [&](const vrntValueView_t& place) {
    if (without_.count(place.type) != 0) return;
    vrntValueView_t word{};
    if (findWord_(place.type, word)) {
      word.offset += place.offset;
      words.push_back(word);
    } else {
      open.push_back({place, 0, words.size()});
    }
  };
  enter({const_cast<vrntType_t*>(type), 0});
  while (!open.empty()) {
    OpenStruct& top = open.back();
    if (top.nextField == vrntTypeFieldCount(top.place.type)) {
      if (words.size() == top.wordsBefore) without_.insert(top.place.type);
      open.pop_back();
      continue;
    }
    const vrntValueView_t field = fieldOf(top.place, top.nextField++);
    if (isStruct(field.type)) enter(field);
  }
}

TextureWords importedTextureWords() { return TextureWords(findImportedTexture); }

void remapValueTextures(Value& value, const TextureMap& textures, TextureWords& places) {
  for (const vrntValueView_t& word : places.in(value.type())) {
    const std::int32_t source = readWord(value, word);
    if (source < 0) continue;
    const std::int32_t target = textures.lookup(source);
    vrntValuesError_t* error = nullptr;
    void* const bytes = vrntValueMap(value.address(), &word, &error);
    if (bytes == nullptr) vrnt::detail::raiseError(error);
    std::memcpy(bytes, &target, sizeof(target));
    vrntValueUnmap(value.get(), &word);
  }
}

std::vector<Ref<Asset<vrnt::detail::TextureDesc>>> extractTextureReferences(const Value& value) {
  std::vector<Ref<Asset<vrnt::detail::TextureDesc>>> textures;
  TextureWords places(findNamedTexture);
  for (const vrntValueView_t& word : places.in(value.type())) {
    const std::int32_t number = readWord(value, word);
    if (number >= 0) textures.push_back({number});
  }
  return textures;
}

}  // namespace vrnt::data
