// What the forms for people say of fields.
#ifndef VORNATH_TOOLKIT_CATALOGUE_WORDS_HPP
#define VORNATH_TOOLKIT_CATALOGUE_WORDS_HPP

#include <string>

#include "catalogue/model.hpp"

namespace vrtk {

/// Returns a value as JSON without the quotes around enum labels and infinities.
std::string valueWords(const vrntType_t* type, const char* bytes);

/// Returns the limits of a field, as in "from 0.0; soft to 1.0"; empty for none.
std::string limitWords(const vrntType_t* type);

/// Returns a type in few words: "struct", "enum" and the names of base types.
std::string typeWords(const vrntType_t* type);

/// Returns the annotations for which the forms have no place of their own, one after the other:
/// "@hide", "@alias texture_ref".
std::vector<std::string> furtherWords(const vrntType_t* type);

}  // namespace vrtk

#endif
