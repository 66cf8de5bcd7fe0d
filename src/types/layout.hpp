/// Sizes, alignments, field offsets and the places of references, computed from a description.
#ifndef VORNATH_TYPES_LAYOUT_HPP
#define VORNATH_TYPES_LAYOUT_HPP

#include <cstdint>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// The byte offset of each field: each at the next multiple of its type's alignment.
std::vector<std::uint64_t> structOffsets(const std::vector<Type::Field>& fields);

/// The number of elements that an array's extents give. More than one extent multiply in 32 bits,
/// and run over as two's complement does.
std::int32_t elementCount(int shape);
std::int32_t elementCount(const index2& shape);
std::int32_t elementCount(const index3& shape);
std::int32_t elementCount(const index4& shape);

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
