/// The canonical text of types: the key of the factory's text table, the form in which schemas and
/// streams hold types, and what the parser reads back to the same type.
///
/// A type keeps a short text from the start. Of a long one it knows the length and the digest,
/// which it has from those of its parts; the text itself is put together when somebody asks for it.
/// None of this recurses.
#ifndef VORNATH_TYPES_TYPE_TEXT_HPP
#define VORNATH_TYPES_TYPE_TEXT_HPP

#include <optional>
#include <string>
#include <string_view>

#include "types/type.hpp"

namespace qex::vornath {

/// Characters. Types of a nest have texts that add up to the square of this one at most, beside
/// those that were asked for.
inline constexpr std::size_t kLongestShortText = 4096;

/// The text of a description with the metadata of the type itself, or nothing if it is a long one.
/// `metadataWords` is metadataText() of the metadata.
std::optional<std::string> shortText(const TypeDesc& desc, std::string_view metadataWords);

/// The sum of that text, whatever its length.
TextFingerprint textFingerprint(const TypeDesc& desc, std::string_view metadataWords);

/// Appends the type's text, without making the type keep it.
void appendText(std::string& out, const InternedType& type);

/// "enum { A; B; }", the metadata of the constructors included.
std::string enumText(const Type::TEnum& enumeration);

}  // namespace qex::vornath

#endif
