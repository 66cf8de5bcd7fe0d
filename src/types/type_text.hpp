/// The canonical text of types: the key of the factory's text table, the form in which schemas and
/// streams hold types, and a text that the parser reads back to the same type.
///
/// A type stores a short text from the start. Of a long one it stores the length and a digest,
/// computed from those of its parts; the text itself is built on request. Nothing here recurses.
#ifndef VORNATH_TYPES_TYPE_TEXT_HPP
#define VORNATH_TYPES_TYPE_TEXT_HPP

#include <optional>
#include <string>
#include <string_view>

#include "types/type.hpp"

namespace qex::vornath {

/// In characters. The texts of the types of a nest add up to at most the square of this, not
/// counting those that were requested.
inline constexpr std::size_t kMaxShortTextLength = 4096;

/// Returns the text of a description with the metadata of the type itself, or nothing if it is a
/// long one. `metadataSuffix` is metadataText() of the metadata.
std::optional<std::string> shortText(const TypeDesc& desc, std::string_view metadataSuffix);

/// Returns the fingerprint of that text, whatever its length.
TextFingerprint textFingerprint(const TypeDesc& desc, std::string_view metadataSuffix);

/// Appends the type's text to `out`. Does not store it in the type.
void appendText(std::string& out, const InternedType& type);

/// Returns the text of an enum, "enum { A; B; }", with the metadata of the constructors.
std::string enumText(const Type::TEnum& enumeration);

}  // namespace qex::vornath

#endif
