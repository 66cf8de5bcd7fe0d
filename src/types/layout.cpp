#include "layout.hpp"

#include <algorithm>
#include <new>

#include "base_types.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

constexpr std::uint64_t kWord = 8;
constexpr std::uint64_t kStructMinimum = 4;  // bytes, of size and of alignment

// Sizes and offsets stop here instead of running over: no memory holds such a value, and a size that
// had run over would pass for a small one.
constexpr std::uint64_t kHuge = std::uint64_t{1} << 63;

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
  return a >= kHuge || b >= kHuge - a ? kHuge : a + b;
}

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  return b != 0 && a > kHuge / b ? kHuge : a * b;
}

std::uint64_t alignUp(std::uint64_t position, std::uint64_t alignment) {
  return sum(position, alignment - 1) / alignment * alignment;
}

// A count that ran over to below 0 gives a negative size, which as an unsigned one is beyond all
// memory.
std::uint64_t arraySize(std::int32_t count, std::uint64_t elementSize) {
  if (count >= 0) return product(static_cast<std::uint64_t>(count), elementSize);
  const std::uint64_t magnitude =
      product(static_cast<std::uint64_t>(-std::int64_t{count}), elementSize);
  return magnitude >= kHuge ? kHuge : 0 - magnitude;
}

std::int32_t product32(std::initializer_list<std::int32_t> extents) {
  std::uint32_t product = 1;
  for (const std::int32_t extent : extents) product *= static_cast<std::uint32_t>(extent);
  return static_cast<std::int32_t>(product);
}

void appendSlots(std::vector<std::uint64_t>& slots, const Type& part, std::uint64_t offset) {
  for (const std::uint64_t slot : part.refSlots()) slots.push_back(offset / kWord + slot);
}

Layout layoutOf(Type::TBasetype base) {
  const std::uint64_t size = baseTypeInfo(base).size;
  return {size, size, true, true, {}};
}

Layout layoutOf(const Type::TEnum&) { return {4, 4, true, true, {}}; }

Layout layoutOf(const Type::TStruct& structure) {
  Layout layout{0, kStructMinimum, true, true, {}};
  for (std::size_t i = 0; i < structure.fields.size(); ++i) {
    const Type& type = *structure.fields[i].type;
    layout.alignment = std::max(layout.alignment, type.alignment());
    layout.size = sum(structure.offsets[i], type.size());
    layout.deepConcrete = layout.deepConcrete && type.deepConcrete();
    appendSlots(layout.refSlots, type, structure.offsets[i]);
  }
  layout.size = alignUp(std::max(layout.size, kStructMinimum), layout.alignment);
  return layout;
}

template <typename D>
Layout layoutOf(const Type::TArrayND<D>& array) {
  const Type& element = *array.element;
  Layout layout{0, element.alignment(), false, false, {}};
  if (!array.shape) return layout;
  const std::int32_t count = elementCount(*array.shape);
  layout.size = arraySize(count, element.size());
  layout.concrete = element.concrete();
  layout.deepConcrete = element.deepConcrete();
  if (count > 0 && !element.refSlots().empty()) {
    const auto elements = static_cast<std::uint64_t>(count);
    if (elements > layout.refSlots.max_size() / element.refSlots().size()) throw std::bad_alloc();
    layout.refSlots.reserve(elements * element.refSlots().size());
    for (std::uint64_t i = 0; i < elements; ++i) {
      appendSlots(layout.refSlots, element, i * element.size());
    }
  }
  return layout;
}

Layout layoutOf(const Type::TRef& reference) {
  return {kWord, kWord, true, reference.target && reference.target->deepConcrete(), {0}};
}

Layout layoutOf(const Type::TFun&) { return {2 * kWord, kWord, true, true, {0, 1}}; }

}  // namespace

std::vector<std::uint64_t> structOffsets(const std::vector<Type::Field>& fields) {
  std::vector<std::uint64_t> offsets;
  offsets.reserve(fields.size());
  std::uint64_t position = 0;
  for (const Type::Field& field : fields) {
    position = alignUp(position, field.type->alignment());
    offsets.push_back(position);
    position = sum(position, field.type->size());
  }
  return offsets;
}

std::int32_t elementCount(int shape) { return shape; }
std::int32_t elementCount(const index2& shape) { return product32({shape.x, shape.y}); }
std::int32_t elementCount(const index3& shape) { return product32({shape.x, shape.y, shape.z}); }
std::int32_t elementCount(const index4& shape) {
  return product32({shape.x, shape.y, shape.z, shape.w});
}

Layout computeLayout(const TypeDesc& desc) {
  return std::visit([](const auto& alternative) { return layoutOf(alternative); }, desc);
}

}  // namespace qex::vornath
