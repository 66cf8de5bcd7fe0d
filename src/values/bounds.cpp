#include "values/bounds.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "types/base_types.hpp"
#include "types/fixed_struct_types.hpp"
#include "types/metadata.hpp"
#include "types/parts.hpp"
#include "types/ref_slots.hpp"
#include "types/relations.hpp"
#include "types/spectrum_encoding.hpp"
#include "types/walk.hpp"
#include "values/write_protocol.hpp"

namespace qex::vornath {
namespace {

// In bytes. A larger default is computed for each request.
constexpr std::uint64_t kMaxCachedDefaultSize = std::uint64_t{1} << 16;

using LaneBits = std::array<std::uint32_t, kBoundCount>;

// The bits of one lane of each bound, by family.
const LaneBits& laneBounds(BaseFamily family) {
  static constexpr LaneBits kChar{0, 0, 255, 0, 255};
  static constexpr LaneBits kHalf{0, 0xFC00, 0x7C00, 0xFC00, 0x7C00};
  static constexpr LaneBits kBool{0, 0, 0xFFFFFFFF, 0, 0xFFFFFFFF};
  static constexpr LaneBits kInt{0, 0x80000000, 0x7FFFFFFF, 0x80000000, 0x7FFFFFFF};
  static constexpr LaneBits kFloat{0, 0xFF800000, 0x7F800000, 0xFF800000, 0x7F800000};
  switch (family) {
    case BaseFamily::Char:
      return kChar;
    case BaseFamily::Half:
      return kHalf;
    case BaseFamily::Bool:
      return kBool;
    case BaseFamily::Int:
      return kInt;
    case BaseFamily::Float:
      break;
  }
  return kFloat;
}

char* bytesOf(DynamicValue& value, std::uint64_t offset) {
  return blockData(value.block()) + offset;
}

// Returns the amplitude of the flat spectrum of one bound: from 0 to infinity.
float flatAmplitude(std::size_t bound) {
  return bound == kMax || bound == kSoftMax ? std::numeric_limits<float>::infinity() : 0.0F;
}

// Returns whether a word refers to the array of a flat spectrum that was created for this part: no
// other reference to it exists, while annotations also refer to the blocks of their values.
bool refersToOwnArray(std::uint64_t word) {
  return isBlockWord(word) && isExclusive(blockOfWord(word));
}

// Returns a word that owns a reference to a new copy of the block.
std::uint64_t wordOfCopy(std::uint64_t word) {
  return wordOfBlock(BlockPtr::first(cloneBlock(blockOfWord(word))).detach());
}

// Copies a cached default, which other threads may copy at the same time. Each spectrum in the copy
// gets an array of its own, so that no reference to an array of the cached default leaves it.
BlockPtr copyCachedDefault(const DynamicValue& cached) {
  const InternedType& type = cached.typeOf();
  if (type.refSlotCount() == 0) return copyToBlock(type, cached.data());
  const RefSlots slots(type);
  NewBlock made(type, Fill::Undefined);
  std::memcpy(made.data(), cached.data(), type.size());
  slots.forEach([&](std::uint64_t slot) {
    char* const at = made.data() + slot * kWordSize;
    if (refersToOwnArray(loadWord(at))) storeWord(at, 0);
  });
  BlockPtr copy = std::move(made).finish();
  slots.forEach([&](std::uint64_t slot) {
    const std::uint64_t word = loadWord(cached.data() + slot * kWordSize);
    if (!refersToOwnArray(word)) return;
    storeWord(blockData(copy.get()) + slot * kWordSize, wordOfCopy(word));
  });
  return copy;
}

// Returns whether a spectrum with one float is a value of the type. A subtype of the spectrum type
// may require more: a sized array of several floats.
bool acceptsFlatSpectrum(const InternedType& type) {
  const auto* structure = type.stripped().getIf<Type::TStruct>();
  if (structure == nullptr || !isSubType(type, spectrumType())) return false;
  const InternedType& reference = structure->fields[1].type->stripped();
  const InternedType& target = reference.get<Type::TRef>().target->stripped();
  const auto& shape = target.get<Type::TArrayND<int>>().shape;
  return !shape || *shape == 1;
}

// Fills bounds that are not shared and that are all zero.
class BoundsFiller {
 public:
  struct Node {
    const InternedType* type;
    std::uint64_t offset;
    Parts parts{};
  };

  explicit BoundsFiller(std::span<DynamicValue> bounds) : bounds_(bounds) {}

  void fill(const InternedType& type) { Walk<Node>().run(*this, {&type, 0}); }

  Visit enter(Node& node) {
    const InternedType& type = *node.type;
    if (acceptsFlatSpectrum(type)) {
      fillSpectrum(type, node.offset);
    } else {
      node.parts = Parts::of(type);
      // All elements are alike: one is computed and the others are copies of it.
      if (node.parts.structure() != nullptr) return Visit::parts(node.parts.count());
      if (node.parts.count() != 0) return Visit::parts(1);
      std::visit([&](const auto& desc) { fillLeaf(desc, node.offset); }, type.desc());
    }
    applyBoundsMetadata(type, bounds_, node.offset);
    return Visit::leaf();
  }

  Node part(const Node& node, std::size_t i) {
    const auto [type, offset] = node.parts[i];
    return {type, node.offset + offset};
  }

  void leave(const Node& node) {
    if (node.parts.structure() == nullptr) copyFirstElement(node);
    applyBoundsMetadata(*node.type, bounds_, node.offset);
  }

 private:
  void fillSpectrum(const InternedType& type, std::uint64_t offset) {
    const auto& offsets = type.getIf<Type::TStruct>()->offsets;
    const auto code = static_cast<std::int32_t>(SpectrumEncoding::Luminance);
    for (std::size_t bound = 0; bound < bounds_.size(); ++bound) {
      const float amplitude = flatAmplitude(bound);
      DynamicValue array(floatArrayType(1), &amplitude);
      std::memcpy(bytesOf(bounds_[bound], offset + offsets[0]), &code, sizeof(code));
      storeWord(bytesOf(bounds_[bound], offset + offsets[1]), wordOfBlock(array.block()));
      retainBlock(array.block());
    }
  }

  void fillLeaf(Type::TBasetype base, std::uint64_t offset) {
    const BaseTypeInfo& info = baseTypeInfo(base);
    const LaneBits& words = laneBounds(info.family);
    // The fourth byte of a char4 has no upper limit of its own: it stays 0 throughout.
    const std::uint32_t lanes = base == Type::TBasetype::Char4 ? 3 : info.lanes;
    for (std::size_t bound = 0; bound < bounds_.size(); ++bound) {
      char* at = bytesOf(bounds_[bound], offset);
      for (std::uint32_t lane = 0; lane < lanes; ++lane, at += info.laneSize) {
        std::memcpy(at, &words[bound], info.laneSize);
      }
    }
  }

  void fillLeaf(const Type::TEnum& enumeration, std::uint64_t offset) {
    const auto last = static_cast<std::uint32_t>(enumeration.constructors.size() - 1);
    const LaneBits codes{0, 0, last, 0, last};
    for (std::size_t bound = 0; bound < bounds_.size(); ++bound) {
      std::memcpy(bytesOf(bounds_[bound], offset), &codes[bound], sizeof(codes[bound]));
    }
  }

  // The rest stays zero.
  template <typename Other>
  void fillLeaf(const Other&, std::uint64_t) {}

  void copyFirstElement(const Node& array) {
    // The element's type keeps its list of slots: in a nest of arrays of one element, the lists
    // would take the square of its depth.
    if (array.parts.count() == 1) return;
    const InternedType* const element = &array.parts.element();
    const std::uint64_t size = array.parts.stride() * array.parts.count();
    // Before the first copy: words that were copied and don't count yet would be released.
    const RefSlots slots(*element);
    std::vector<std::uint64_t> own;  // where each element has an array of its own
    for (DynamicValue& bound : bounds_) {
      char* const first = bytesOf(bound, array.offset);
      own.clear();
      slots.forEach([&](std::uint64_t slot) {
        if (refersToOwnArray(loadWord(first + slot * kWordSize))) own.push_back(slot);
      });
      for (std::uint64_t done = element->size(); done < size;) {
        const std::uint64_t piece = std::min(done, size - done);
        std::memcpy(first + done, first, piece);
        for (std::uint64_t at = done; at < done + piece; at += element->size()) {
          for (const std::uint64_t slot : own) storeWord(first + at + slot * kWordSize, 0);
          slots.forEach(
              [&](std::uint64_t slot) { retainWord(loadWord(first + at + slot * kWordSize)); });
        }
        done += piece;
      }
      if (own.empty()) continue;
      for (std::uint64_t at = element->size(); at < size; at += element->size()) {
        for (const std::uint64_t slot : own) {
          storeWord(first + at + slot * kWordSize, wordOfCopy(loadWord(first + slot * kWordSize)));
        }
      }
    }
  }

  std::span<DynamicValue> bounds_;
};

}  // namespace

void applyBoundsMetadata(const InternedType& type, std::span<DynamicValue> bounds,
                         std::uint64_t offset) {
  const Metadata& metadata = type.metadata();
  if (metadata.empty()) return;
  const auto find = [&](std::string_view key) -> const DynamicValue* {
    const DynamicValue* const value = findMetadataValue(metadata, key);
    return value != nullptr && isSubType(value->typeOf(), type) ? value : nullptr;
  };
  const auto put = [&](Bound bound, const DynamicValue* value) {
    if (value != nullptr && bound < bounds.size()) {
      writeData(bounds[bound], value->data(), type, offset);
    }
  };

  put(kDefault, find("default"));
  if (bounds.size() <= kMin) return;
  const DynamicValue* const min = find("min");
  const DynamicValue* const max = find("max");
  const DynamicValue* const softMin = find("soft_min");
  const DynamicValue* const softMax = find("soft_max");
  put(kMin, min);
  put(kSoftMin, softMin != nullptr ? softMin : min);
  put(kMax, max);
  put(kSoftMax, softMax != nullptr ? softMax : max);
}

ValueBounds makeValueBounds(const TypePtr& type) {
  ValueBounds bounds{DynamicValue(type), DynamicValue(type), DynamicValue(type), DynamicValue(type),
                     DynamicValue(type)};
  BoundsFiller(bounds).fill(*type);
  return bounds;
}

BlockPtr makeDefaultBlock(const InternedType& type) {
  // Without annotations at any depth every default is zero, but for a spectrum's array.
  const bool plain = &type.stripped() == &type;
  if (plain && type.refSlotCount() == 0) {
    return BlockPtr::first(allocateBlock(type, Fill::Zero));
  }
  if (const DynamicValue* const cached = type.cachedDefault()) return copyCachedDefault(*cached);
  DynamicValue value(BlockPtr::first(allocateBlock(type, Fill::Zero)));
  BoundsFiller({&value, 1}).fill(type);
  // A type without annotations is its own default's type, and would keep itself alive.
  if (plain || type.size() > kMaxCachedDefaultSize) {
    return BlockPtr::adopt(std::exchange(value.blockHandle(), nullptr));
  }
  return copyCachedDefault(type.cacheDefault(std::move(value)));
}

}  // namespace qex::vornath
