/// How the library itself makes types, and keeps those that it looks at again and again. Only
/// make_type.cpp asks for the factory.
#ifndef VORNATH_TYPES_MAKE_TYPE_HPP
#define VORNATH_TYPES_MAKE_TYPE_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// The one type of the description and metadata; see Type::Factory::makeType().
TypePtr makeType(TypeDesc desc, const Metadata& metadata = {});

/// Keeps the type until vrntValuesShutdown(), for a static that refers to it:
///
///     static const InternedType& type = permanentType(makeType(Type::TRef{}));
///
/// A static in a function that throws while it is made stays unmade, and the next call tries again.
/// Throws std::bad_alloc.
const InternedType& permanentType(const TypePtr& type);

}  // namespace qex::vornath

#endif
