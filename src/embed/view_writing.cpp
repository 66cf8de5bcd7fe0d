#include "embed/view_writing.hpp"

#include <array>
#include <cstring>

#include "values/write_protocol.hpp"

namespace qex::vornath {

void writeSpan(DynamicValue& owner, const InternedType& type, std::uint64_t offset,
               const void* source, std::optional<std::uint64_t> count, std::uint64_t sourceOffset) {
  {
    // Keeps the source alive if it lies in the very block that the owner moves away from.
    const BlockPtr before = isExclusive(owner.block()) ? BlockPtr() : BlockPtr(owner.block());
    const WriteScope write(owner.blockHandle(), type, offset);
    std::memmove(write.data(), static_cast<const char*>(source) + sourceOffset,
                 count.value_or(type.size()));
  }
  owner.notify(&type, offset);
}

void assignView(const View& destination, const ConstView& source) {
  requireAccessible(*source.type, *destination.type);
  writeSpan(*destination.mutableOwner, *destination.type, destination.offset, source.data());
}

void writeForeign(const View& destination, std::uint64_t id) {
  requireAccessible(*destination.type, voidReferenceType());
  const std::uint64_t word = foreignWord(id);
  writeSpan(*destination.mutableOwner, *destination.type, destination.offset, &word, sizeof(word));
}

void writeForeign(const View& destination, std::uint64_t first, std::uint64_t second) {
  std::get<Type::TFun>(destination.type->desc());
  const std::array<std::uint64_t, 2> words{foreignWord(first), foreignWord(second)};
  writeSpan(*destination.mutableOwner, *destination.type, destination.offset, words.data(),
            sizeof(words));
}

}  // namespace qex::vornath
