#include "scene/record_comparison.hpp"

#include <cstring>

#include "vornath_data/value.hpp"

namespace vrnt::data {

namespace {

constexpr std::size_t kWordSize = 4;

template <typename T>
T load(const void* record, std::size_t offset) {
  T loaded;
  std::memcpy(&loaded, static_cast<const char*>(record) + offset, sizeof(loaded));
  return loaded;
}

constexpr std::uint32_t mask(bool condition) { return condition ? ~std::uint32_t{0} : 0; }

// Returns all ones if two floats are not equal as numbers, else 0. It does not use the processor's
// comparison, since a host may have configured the processor to treat small numbers as zeros. It
// has no branches, so that the loop over words can be vectorised.
constexpr std::uint32_t floatsDiffer(std::uint32_t a, std::uint32_t b) {
  constexpr std::int32_t kInfinity = 0x7F800000;
  const std::uint32_t notBothZero = mask(((a | b) << 1) != 0);
  const std::uint32_t isNan = mask(static_cast<std::int32_t>(a & 0x7FFFFFFFU) > kInfinity);
  return notBothZero & (mask(a != b) | isNan);
}

constexpr bool halvesDiffer(std::uint16_t a, std::uint16_t b) {
  const bool bothZero = ((a | b) & 0x7FFF) == 0;
  const bool isNan = (a & 0x7FFF) > 0x7C00;
  return !bothZero && (a != b || isNan);
}

}  // namespace

RecordComparison::RecordComparison(std::size_t size)
    : exact_(size / kWordSize), floats_(size / kWordSize), bools_(size / kWordSize) {}

void RecordComparison::add(const vrntType_t* type, std::size_t offset) {
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_STRUCT:
      return addStruct(type, offset);
    case VRNT_DESCRIPTOR_ARRAY:
      return addArray(type, offset);
    case VRNT_DESCRIPTOR_BASE:
      // The spectrum is a struct with the descriptor of a base type.
      if (vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT) return addStruct(type, offset);
      return addLanes(type, offset);
    default:
      return addBytes(offset, vrntTypeSize(type));
  }
}

void RecordComparison::addStruct(const vrntType_t* type, std::size_t offset) {
  for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
    vrntValueView_t field{};
    vrntValueStructField(&field, type, i);
    add(field.type, offset + field.offset);
  }
}

void RecordComparison::addArray(const vrntType_t* type, std::size_t offset) {
  const TypeHandle element = TypeHandle::adopt(vrntTypeElementType(type));
  const std::size_t end = offset + vrntTypeSize(type);
  const std::size_t step = vrntTypeSize(element.get());
  // An element whose size is 0 is itself an array without elements.
  for (; step != 0 && offset < end; offset += step) add(element.get(), offset);
}

void RecordComparison::addLanes(const vrntType_t* type, std::size_t offset) {
  const std::uint32_t lanes = vrntTypeVectorDimension(type);
  for (std::uint32_t lane = 0; lane < lanes; ++lane) {
    switch (vrntTypeBasetype(type)) {
      case VRNT_BASETYPE_FLOAT:
        floats_[offset / kWordSize + lane] = ~std::uint32_t{0};
        break;
      case VRNT_BASETYPE_BOOL:
        bools_[offset / kWordSize + lane] = ~std::uint32_t{0};
        break;
      case VRNT_BASETYPE_HALF:
        halves_.push_back(offset + lane * sizeof(std::uint16_t));
        break;
      case VRNT_BASETYPE_CHAR:
        addBytes(offset + lane, 1);
        break;
      default:
        addBytes(offset + lane * kWordSize, kWordSize);
        break;
    }
  }
}

void RecordComparison::addBytes(std::size_t offset, std::size_t size) {
  std::memset(reinterpret_cast<char*>(exact_.data()) + offset, 0xFF, size);
}

bool RecordComparison::equal(const void* a, const void* b) const {
  const std::size_t words = exact_.size();
  const std::uint32_t* const exact = exact_.data();
  const std::uint32_t* const floats = floats_.data();
  const std::uint32_t* const bools = bools_.data();
  std::uint32_t differences = 0;
  for (std::size_t i = 0; i < words; ++i) {
    const auto x = load<std::uint32_t>(a, i * kWordSize);
    const auto y = load<std::uint32_t>(b, i * kWordSize);
    differences |= (x ^ y) & exact[i];
    differences |= floatsDiffer(x, y) & floats[i];
    differences |= (mask(x == 0) ^ mask(y == 0)) & bools[i];
  }
  if (differences != 0) return false;
  for (const std::size_t offset : halves_) {
    if (halvesDiffer(load<std::uint16_t>(a, offset), load<std::uint16_t>(b, offset))) return false;
  }
  return true;
}

}  // namespace vrnt::data
