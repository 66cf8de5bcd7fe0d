// Finds and translates texture indices in values.
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

/// Finds the offsets of the texture indices in the values of a type. They depend only on the type,
/// since only the fields of structs are searched. The results for each type are cached, so the
/// types must outlive this object.
class TextureWords {
 public:
  /// Returns whether a struct is itself a reference to a texture. If so, stores a view of the index
  /// within the struct in `word`.
  using FindWord = bool (*)(const vrntType_t* structType, vrntValueView_t& word);

  explicit TextureWords(FindWord findWord) : findWord_(findWord) {}

  /// Returns views of the indices in a value of the type, in the order of the fields.
  /// Errors: throws std::bad_alloc.
  const std::vector<vrntValueView_t>& in(const vrntType_t* type);

 private:
  struct OpenStruct;

  void walk(const vrntType_t* type, std::vector<vrntValueView_t>& words);

  FindWord findWord_;
  std::unordered_map<const vrntType_t*, std::vector<vrntValueView_t>> words_;
  std::unordered_set<const vrntType_t*> without_;  // structs without an index
};

/// Returns an object that finds the indices that an import translates: those in texture references
/// and in samplers.
TextureWords importedTextureWords();

/// Translates the texture indices in a value. An index that is not in `textures` becomes -1; a
/// negative index does not change. Copies a shared value first if an index is not negative.
/// Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
void remapValueTextures(Value& value, const TextureMap& textures, TextureWords& places);

}  // namespace vrnt::data

#endif
