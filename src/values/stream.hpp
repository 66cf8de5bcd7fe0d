/// Values as a stream of records, each with its type as text. A record is the length of the text in
/// eight bytes, the text, the block's identity in eight bytes, and the value's bytes as they lie in
/// memory, reference words included. The records of the blocks that these words refer to follow in
/// slot order, each followed by its own; a block is written once. The stream has no header, no
/// version and no end mark, and is in the writer's byte order.
#ifndef VORNATH_VALUES_STREAM_HPP
#define VORNATH_VALUES_STREAM_HPP

#include <cstdint>
#include <memory>
#include <type_traits>

#include "values/dynamic_value.hpp"
#include "vornath_data/values.h"

namespace qex::vornath {

/// Writes the value and everything it refers to, each block once, in four calls for each block.
/// Does not recurse. Exceptions of `write` pass through.
void serializeValue(const DynamicValue& value, vrntWriteFn write, void* user);

/// Reads what serializeValue() wrote. Trusts the lengths in the stream. `map` receives all values
/// but the outermost one and keeps them alive as long as it lives. Throws "Unable to parse type:
/// {}.\n{}", and what `read` throws; the values read so far are then in the map alone.
BlockPtr deserializeBlock(vrntReadFn read, void* user, DynamicValue::StreamMap& map);

inline DynamicValue deserializeValue(vrntReadFn read, void* user, DynamicValue::StreamMap& map) {
  return DynamicValue(deserializeBlock(read, user, map));
}

template <typename Reader>
DynamicValue DynamicValue::deserialize(Reader&& reader, StreamMap& map) {
  using Target = std::remove_reference_t<Reader>;
  const vrntReadFn read = [](void* bytes, std::uint64_t size, void* user) {
    (*static_cast<Target*>(user))(bytes, size);
  };
  return deserializeValue(read, const_cast<void*>(static_cast<const void*>(std::addressof(reader))),
                          map);
}

}  // namespace qex::vornath

#endif
