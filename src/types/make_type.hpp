/// Creates types for the library itself, and keeps those that it uses again and again. Only
/// make_type.cpp asks for the factory.
#ifndef VORNATH_TYPES_MAKE_TYPE_HPP
#define VORNATH_TYPES_MAKE_TYPE_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the one type of the description and metadata; see Type::Factory::makeType().
TypePtr makeType(TypeDesc&& desc, const Metadata& metadata = {});
TypePtr makeType(TypeDesc&& desc, Metadata&& metadata);
TypePtr makeType(const TypeDesc& desc, const Metadata& metadata = {});

/// Returns the array type of one dimension, as makeType() does. Needs no description of a type that
/// lives.
TypePtr makeArrayType(const InternedType& element, std::int32_t extent);

/// Keeps the type alive until vrntValuesShutdown(), for a static that refers to it:
///
///     static const InternedType& type = permanentType(makeType(Type::TRef{}));
///
/// If the initialiser of such a static throws, the next call tries again. Throws std::bad_alloc.
const InternedType& permanentType(const TypePtr& type);

}  // namespace qex::vornath

#endif
