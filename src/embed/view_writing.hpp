/// Writes at views of a DynamicValue, each by the write protocol. The owner's listener is notified.
#ifndef VORNATH_EMBED_VIEW_WRITING_HPP
#define VORNATH_EMBED_VIEW_WRITING_HPP

#include <cstdint>
#include <optional>

#include "values/dynamic_value.hpp"
#include "values/fixed_types.hpp"
#include "values/views.hpp"

namespace qex::vornath {

/// Copies a span of bytes to the place of `type` at `offset` and notifies the owner's listener.
/// Without a count it is the type's size. The source may lie in the owner's own bytes.
void writeSpan(DynamicValue& owner, const InternedType& type, std::uint64_t offset,
               const void* source, std::optional<std::uint64_t> count = std::nullopt,
               std::uint64_t sourceOffset = 0);

/// Writes the bytes of `source`, whose type must relate to the destination's: "Incompatible type
/// for accessor -> {}.".
void assignView(const View& destination, const ConstView& source);

/// Writes an address of the embedder's own, or null for 0, in a reference word; with two of them in
/// a function value.
void writeForeign(const View& destination, std::uint64_t id);
void writeForeign(const View& destination, std::uint64_t first, std::uint64_t second);

/// Writes a `T`; see FixedType. Throws "Incompatible type for accessor -> {}.".
template <typename T>
void writeAs(const View& destination, const T& value) {
  requireAccessible(*destination.type, FixedType<T>::type());
  writeSpan(*destination.mutableOwner, *destination.type, destination.offset, &value,
            sizeof(value));
}

}  // namespace qex::vornath

#endif
