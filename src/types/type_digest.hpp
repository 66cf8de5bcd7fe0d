/// The digest of a description with its metadata, by which the factory finds the type of them.
#ifndef VORNATH_TYPES_TYPE_DIGEST_HPP
#define VORNATH_TYPES_TYPE_DIGEST_HPP

#include <cstdint>

#include "types/type.hpp"

namespace qex::vornath {

/// Returns the digest of what equalInterned() compares: the same for descriptions that are equal by
/// it. Values in metadata count by the addresses of their boxes, parts by their addresses.
std::uint64_t typeDigest(const TypeDesc& desc, const Metadata& metadata);

/// Returns the digest of the array type of one dimension, without metadata.
std::uint64_t arrayDigest(const InternedType& element, std::int32_t extent);

}  // namespace qex::vornath

#endif
