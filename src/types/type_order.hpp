/// The total order of types, which decides what counts as one type.
#ifndef VORNATH_TYPES_TYPE_ORDER_HPP
#define VORNATH_TYPES_TYPE_ORDER_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Negative, 0 or positive. First the alternative, then the description, then the metadata. An
/// enum's payloads take no part; values in metadata are ordered by their boxes' addresses.
int compareTypes(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                 const Metadata& metadataB);

/// The same question for the descriptions of interned types, whose parts are one object exactly
/// when they are equal: parts are told apart by address, so that the depth of a type costs nothing.
/// Which of two unequal ones comes first is arbitrary, but stays while both live.
int compareInterned(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                    const Metadata& metadataB);

struct TypeOrder {
  bool operator()(const TypePtr& a, const TypePtr& b) const {
    return a != b && compareTypes(a->desc(), a->metadata(), b->desc(), b->metadata()) < 0;
  }
};

}  // namespace qex::vornath

#endif
