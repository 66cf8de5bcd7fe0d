/// The total order of types, which decides which types are equal.
#ifndef VORNATH_TYPES_TYPE_ORDER_HPP
#define VORNATH_TYPES_TYPE_ORDER_HPP

#include "types/type.hpp"

namespace qex::vornath {

/// Returns a negative number, 0 or a positive number. Compares the alternatives, then the
/// descriptions, then the metadata. Ignores an enum's payloads; orders values in metadata by the
/// addresses of their boxes.
int compareTypes(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                 const Metadata& metadataB);

/// Returns whether the descriptions of interned types are equal by compareTypes(). Compares their
/// parts by address, as equal parts are one object, so that the cost does not grow with the depth
/// of a type.
bool equalInterned(const TypeDesc& descA, const Metadata& metadataA, const TypeDesc& descB,
                   const Metadata& metadataB) noexcept;

struct TypeOrder {
  bool operator()(const TypePtr& a, const TypePtr& b) const {
    return a != b && compareTypes(a->desc(), a->metadata(), b->desc(), b->metadata()) < 0;
  }
};

}  // namespace qex::vornath

#endif
