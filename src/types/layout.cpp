#include "types/layout.hpp"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/parts.hpp"
#include "types/walk.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

constexpr std::uint64_t kWord = 8;
constexpr std::uint64_t kStructMinimum = 4;  // bytes, of size and of alignment

// Where 64 bits don't hold a size or an offset, it stops here instead of running over: what had run
// over would pass for a small one.
constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();

std::uint64_t saturatingAdd(std::uint64_t a, std::uint64_t b) {
  return b > kMax - a ? kMax : a + b;
}

std::uint64_t saturatingMultiply(std::uint64_t a, std::uint64_t b) {
  return b != 0 && a > kMax / b ? kMax : a * b;
}

std::uint64_t alignUp(std::uint64_t position, std::uint64_t alignment) {
  const std::uint64_t remainder = position & (alignment - 1);  // alignments are powers of two
  return remainder == 0 ? position : saturatingAdd(position, alignment - remainder);
}

// A count that ran over to below 0 gives a negative size, which as an unsigned one is beyond all
// memory.
std::uint64_t arraySize(std::int32_t count, std::uint64_t elementSize) {
  if (count >= 0) return saturatingMultiply(static_cast<std::uint64_t>(count), elementSize);
  constexpr std::uint64_t kMinMagnitude = std::uint64_t{1}
                                          << 63;  // the magnitude of the least number
  const std::uint64_t magnitude =
      saturatingMultiply(static_cast<std::uint64_t>(-std::int64_t{count}), elementSize);
  return magnitude > kMinMagnitude ? kMax : 0 - magnitude;
}

constexpr std::uint64_t kMaxRefSlots = std::uint64_t{1} << 60;  // more than any memory holds

Layout layoutOf(Type::TBasetype base) {
  const std::uint64_t size = baseTypeInfo(base).size;
  return {size, size, true, true, 0, 0};
}

Layout layoutOf(const Type::TEnum&) { return {4, 4, true, true, 0, 0}; }

Layout layoutOf(const Type::TStruct& structure) {
  Layout layout{0, kStructMinimum, true, true, 0, 0};
  for (std::size_t i = 0; i < structure.fields.size(); ++i) {
    const InternedType& type = *structure.fields[i].type;
    layout.alignment = std::max(layout.alignment, type.alignment());
    layout.size = saturatingAdd(structure.offsets[i], type.size());
    layout.deepConcrete = layout.deepConcrete && type.deepConcrete();
    layout.refSlotCount += type.refSlotCount();
    layout.referenceDepth = std::max(layout.referenceDepth, type.referenceDepth());
    if (layout.refSlotCount > kMaxRefSlots) throw std::bad_alloc();
  }
  layout.size = alignUp(std::max(layout.size, kStructMinimum), layout.alignment);
  return layout;
}

template <typename D>
Layout layoutOf(const Type::TArrayND<D>& array) {
  const InternedType& element = *array.element;
  Layout layout{0, element.alignment(), false, false, 0, element.referenceDepth()};
  if (!array.shape) return layout;
  const std::int32_t count = Extents(array).count();
  layout.size = arraySize(count, element.size());
  layout.concrete = element.concrete();
  layout.deepConcrete = element.deepConcrete();
  if (count > 0) {
    const auto elements = static_cast<std::uint64_t>(count);
    if (element.refSlotCount() > kMaxRefSlots / elements) throw std::bad_alloc();
    layout.refSlotCount = elements * element.refSlotCount();
  }
  return layout;
}

Layout layoutOf(const Type::TRef& reference) {
  if (!reference.target) return {kWord, kWord, true, false, 1, 1};
  const std::uint32_t depth = reference.target->referenceDepth();
  constexpr std::uint32_t kMaxDepth = std::numeric_limits<std::uint32_t>::max();
  return {kWord, kWord,
          true,  reference.target->deepConcrete(),
          1,     depth < kMaxDepth ? depth + 1 : depth};
}

Layout layoutOf(const Type::TFun&) { return {2 * kWord, kWord, true, true, 2, 0}; }

// Lists the references of nested parts, the innermost ones first.
class RefSlotCollector {
 public:
  // A part of the value. Its slots may be listed already.
  struct Node {
    const TypeDesc* desc;
    std::uint64_t word;  // where it starts
    const std::vector<std::uint64_t>* known = nullptr;
    Parts parts{};
    std::size_t first = 0;  // the first slot of an array
  };

  explicit RefSlotCollector(std::uint64_t count) {
    if (count > slots_.max_size()) throw std::bad_alloc();
    slots_.reserve(count);
  }

  std::vector<std::uint64_t> list(const TypeDesc& desc) {
    Walk<Node>().run(*this, {&desc, 0});
    return std::move(slots_);
  }

  Visit enter(Node& node) {
    if (node.known == nullptr) {
      return std::visit([&](const auto& alternative) { return begin(alternative, node); },
                        *node.desc);
    }
    for (const std::uint64_t slot : *node.known) slots_.push_back(node.word + slot);
    return Visit::leaf();
  }

  Node part(const Node& node, std::size_t i) {
    const auto [type, offset] = node.parts[i];
    return {&type->desc(), node.word + offset / kWord, type->knownRefSlots()};
  }

  // The elements of an array are alike.
  void leave(const Node& node) {
    if (node.parts.structure() != nullptr) return;
    const std::size_t length = slots_.size() - node.first;
    for (std::uint64_t i = 1; i < node.parts.count(); ++i) {
      const std::uint64_t shift = i * node.parts.stride() / kWord;
      for (std::size_t slot = 0; slot < length; ++slot) {
        slots_.push_back(slots_[node.first + slot] + shift);
      }
    }
  }

 private:
  Visit begin(Type::TBasetype, const Node&) { return Visit::leaf(); }
  Visit begin(const Type::TEnum&, const Node&) { return Visit::leaf(); }
  Visit begin(const Type::TRef&, const Node& node) {
    slots_.push_back(node.word);
    return Visit::leaf();
  }
  Visit begin(const Type::TFun&, const Node& node) {
    slots_.push_back(node.word);
    slots_.push_back(node.word + 1);
    return Visit::leaf();
  }
  Visit begin(const Type::TStruct& structure, Node& node) {
    node.parts = Parts(structure);
    return Visit::parts(node.parts.count());
  }
  template <typename D>
  Visit begin(const Type::TArrayND<D>& array, Node& node) {
    node.parts = Parts(array);
    node.first = slots_.size();
    const bool any = node.parts.count() != 0 && array.element->refSlotCount() != 0;
    return any ? Visit::parts(1) : Visit::leaf();
  }

  std::vector<std::uint64_t> slots_;
};

}  // namespace

std::vector<std::uint64_t> structOffsets(const std::vector<Type::Field>& fields) {
  std::vector<std::uint64_t> offsets;
  offsets.reserve(fields.size());
  std::uint64_t position = 0;
  for (const Type::Field& field : fields) {
    position = alignUp(position, field.type->alignment());
    offsets.push_back(position);
    position = saturatingAdd(position, field.type->size());
  }
  return offsets;
}

Layout computeLayout(const TypeDesc& desc) {
  return std::visit([](const auto& alternative) { return layoutOf(alternative); }, desc);
}

std::vector<std::uint64_t> computeRefSlots(const TypeDesc& desc, std::uint64_t count) {
  if (count == 0) return {};
  return RefSlotCollector(count).list(desc);
}

}  // namespace qex::vornath
