// Finding and renumbering the texture numbers within values.
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

/// Finds the places of the texture numbers in the values of a type. These follow from the type
/// alone, as only the fields of structs are looked into. What is learnt of a type is kept, so that
/// the types must outlive this object.
class TextureWords {
 public:
  /// Tells whether a struct names a texture by itself; if so, stores the place of the number within
  /// the struct.
  using FindWord = bool (*)(const vrntType_t* structType, vrntValueView_t& word);

  explicit TextureWords(FindWord findWord) : findWord_(findWord) {}

  /// The numbers in a value of the type, in the order of the fields.
  /// Errors: throws std::bad_alloc.
  const std::vector<vrntValueView_t>& in(const vrntType_t* type);

 private:
  struct OpenStruct;

  void walk(const vrntType_t* type, std::vector<vrntValueView_t>& words);

  FindWord findWord_;
  std::unordered_map<const vrntType_t*, std::vector<vrntValueView_t>> words_;
  std::unordered_set<const vrntType_t*> without_;  // structs that hold no number
};

/// The places that an import renumbers: those in texture references and in samplers.
TextureWords importedTextureWords();

/// Renumbers the textures that a value names; a number without a pair becomes -1, one that is
/// negative stays. A value with anything to renumber moves to a copy if others share it; one
/// without stays shared.
/// Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
void remapValueTextures(Value& value, const TextureMap& textures, TextureWords& places);

}  // namespace vrnt::data

#endif
