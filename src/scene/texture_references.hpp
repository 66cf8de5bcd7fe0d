// Finds and translates the texture indices within values.
#ifndef VORNATH_SCENE_TEXTURE_REFERENCES_HPP
#define VORNATH_SCENE_TEXTURE_REFERENCES_HPP

#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "vornath_data/elements.hpp"
#include "vornath_data/ref_map.hpp"
#include "vornath_data/value.hpp"

namespace vrnt::data {

using TextureMap = RefMap<Asset<vrnt::detail::TextureDesc>>;

/// Finds the places of the texture indices in the values of a type. They follow from the type
/// alone, since only the fields of structs are searched. The places of each type are cached, so the
/// types must outlive this object.
class TextureWords {
 public:
  /// Returns whether a struct itself names a texture; if so, stores the place of the index within
  /// the struct.
  using FindWord = bool (*)(const vrntType_t* structType, vrntValueView_t& word);

  explicit TextureWords(FindWord findWord) : findWord_(findWord) {}

  /// The places of the indices in a value of the type, in the order of the fields.
  /// Errors: throws std::bad_alloc.
  const std::vector<vrntValueView_t>& in(const vrntType_t* type);

 private:
  struct OpenStruct;

  void walk(const vrntType_t* type, std::vector<vrntValueView_t>& words);

  FindWord findWord_;
  std::unordered_map<const vrntType_t*, std::vector<vrntValueView_t>> words_;
  std::unordered_set<const vrntType_t*> without_;  // structs without an index
};

/// The places that an import translates: those in texture references and in samplers.
TextureWords importedTextureWords();

/// Translates the texture indices in a value; an index without a pair becomes -1, a negative one
/// stays. A shared value is copied first if it has an index that is not negative.
/// Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
void remapValueTextures(Value& value, const TextureMap& textures, TextureWords& places);

}  // namespace vrnt::data

#endif
