/// The canonical text of types: the key of the factory's text table, the form in which schemas and
/// streams hold types, and what the parser reads back to the same type.
#ifndef VORNATH_TYPES_TYPE_TEXT_HPP
#define VORNATH_TYPES_TYPE_TEXT_HPP

#include <string>

#include "vornath_data/type_library.hpp"

namespace qex::vornath {

/// The text of a description, without the metadata of the type itself.
std::string descText(const TypeDesc& desc);

/// "enum { A; B; }", the metadata of the constructors included.
std::string enumText(const Type::TEnum& enumeration);

/// The extents joined by ",", as "2,3".
std::string extentsText(int shape);
std::string extentsText(const index2& shape);
std::string extentsText(const index3& shape);
std::string extentsText(const index4& shape);

}  // namespace qex::vornath

#endif
