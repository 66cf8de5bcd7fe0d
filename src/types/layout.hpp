/// Sizes, alignments, field offsets and the places of references, computed from a description.
#ifndef VORNATH_TYPES_LAYOUT_HPP
#define VORNATH_TYPES_LAYOUT_HPP

#include <cstdint>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// The byte offset of each field: each at the next multiple of its type's alignment.
std::vector<std::uint64_t> structOffsets(const std::vector<Type::Field>& fields);

struct Layout {
  std::uint64_t size;
  std::uint64_t alignment;
  bool concrete;
  bool deepConcrete;
  std::uint64_t refSlotCount;
  std::uint32_t referenceDepth;  // see InternedType::referenceDepth()
};

/// Throws vrnt::Exception "Illegal base type." for a base type out of range, and std::bad_alloc.
Layout computeLayout(const TypeDesc& desc);

/// The places of the references in a value of the description, of which the layout tells the count.
/// The depth of the types doesn't matter. Throws std::bad_alloc.
std::vector<std::uint64_t> computeRefSlots(const TypeDesc& desc, std::uint64_t count);

}  // namespace qex::vornath

#endif
