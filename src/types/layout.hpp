/// Computes sizes, alignments, field offsets and the slots of references from a description.
#ifndef VORNATH_TYPES_LAYOUT_HPP
#define VORNATH_TYPES_LAYOUT_HPP

#include <cstdint>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the byte offset of each field: the next multiple of its type's alignment.
std::vector<std::uint64_t> structOffsets(const std::vector<Type::Field>& fields);

struct Layout {
  std::uint64_t size;
  std::uint64_t alignment;
  bool concrete;
  bool deepConcrete;
  std::uint64_t refSlotCount;
  std::uint32_t referenceDepth;  // see InternedType::referenceDepth()
};

/// Computes the layout of a type. Throws vrnt::Exception "Illegal base type." for a base type out
/// of range, and std::bad_alloc.
Layout computeLayout(const TypeDesc& desc);

/// Returns the slots of the references in a value of the description. `count` is the refSlotCount
/// of its layout. Does not recurse. Throws std::bad_alloc.
std::vector<std::uint64_t> computeRefSlots(const TypeDesc& desc, std::uint64_t count);

}  // namespace qex::vornath

#endif
