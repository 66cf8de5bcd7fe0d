#include "embed/spectrum_value.hpp"

#include <cstring>

#include "types/fixed_struct_types.hpp"

namespace qex::vornath {

DynamicValue makeSpectrumValue(SpectrumEncoding encoding, std::span<const float> floats) {
  const DynamicValue array(floatArrayType(static_cast<std::int32_t>(floats.size())), floats.data());
  const InternedType& type = spectrumType();
  const ConstView whole{&type, 0, nullptr};
  NewBlock block(type, Fill::Zero);
  const std::int32_t code = static_cast<std::int32_t>(encoding);
  std::memcpy(block.data() + whole.field("encoding").offset, &code, sizeof(code));
  storeWord(block.data() + whole.field("spectrum").offset, wordOfBlock(array.block()));
  return DynamicValue(std::move(block).finish().get());
}

}  // namespace qex::vornath
