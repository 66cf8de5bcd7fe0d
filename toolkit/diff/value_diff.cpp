#include "diff/value_diff.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "check/type_plan.hpp"
#include "json/output.hpp"
#include "json/text.hpp"
#include "json/value_writer.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/types.h"

namespace vrtk {
namespace {

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

bool leadsToBlock(std::uint64_t word) { return word != 0 && (word & 1U) == 0; }

const vrntValue_t* blockOf(std::uint64_t word) {
  const auto* const data =
      reinterpret_cast<const char*>(word);  // NOLINT(performance-no-int-to-ptr)
  return reinterpret_cast<const vrntValue_t*>(data - sizeof(vrntValue_t));
}

const char* dataOf(const vrntValue_t* value) {
  return static_cast<const char*>(vrntValueData(value));
}

bool isShared(const vrntValue_t* block) {
  return __atomic_load_n(&block->refCount, __ATOMIC_RELAXED) > 1;
}

const char* requireText(const vrntType_t* type) {
  const char* const text = vrntTypeString(type);
  if (text == nullptr) throw std::bad_alloc();
  return text;
}

std::string jsonText(std::string_view text) {
  std::string json;
  appendJsonString(json, text);
  return json;
}

// A path that nobody can read is cut, so that a long chain has paths of bounded length.
std::string pathTo(const std::string& path, const char* step) {
  constexpr std::size_t kLongestPath = 4000;
  return path.size() > kLongestPath ? path : path + step;
}

Output outputTo(std::string& text) {
  return Output([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
}

vrntValueView_t elementAt(const vrntType_t* arrayType, const std::array<std::int32_t, 4>& index) {
  vrntValueView_t element{};
  vrntValueArrayElement(&element, arrayType, index.data());
  return element;
}

}  // namespace

bool ValueDiff::equal(const LayoutRun& run, const char* a, const char* b) const {
  switch (run.kind) {
    case RunKind::Float:
      return tolerance_.equalFloats(load<std::uint32_t>(a), load<std::uint32_t>(b));
    case RunKind::Half:
      return tolerance_.equalHalves(load<std::uint16_t>(a), load<std::uint16_t>(b));
    default:
      return std::memcmp(a, b, run.size) == 0;
  }
}

std::string ValueDiff::textOf(const vrntType_t* type, const char* at) {
  std::string text;
  if (layouts_.of(type).hasWords()) {
    return fmt::format("{{ \"type\": {} }}", jsonText(requireText(type)));
  }
  Output out = outputTo(text);
  writePart(out, *trees_.of(type), 0, at, nullptr, 0);
  out.flush();
  return text;
}

// The text of a reference or of a word of a function.
std::string ValueDiff::wordText(std::uint64_t word, const vrntType_t* leaf) {
  if (word == 0) return "null";
  if (!leadsToBlock(word)) return fmt::format("{{ \"address\": \"0x{:x}\" }}", word >> 1U);
  const vrntValue_t* const block = blockOf(word);
  const vrntType_t* const type = vrntValueType(block);
  constexpr std::uint64_t kLongestData = 256;
  const std::string typeText = jsonText(requireText(type));
  // Long data and references in it would make a list of differences as long as the scene.
  const bool isShort = vrntTypeSize(type) <= kLongestData && !layouts_.of(type).hasWords();
  if (!isShort) return fmt::format("{{ \"type\": {} }}", typeText);
  const std::string data = textOf(type, dataOf(block));
  vrnt::UniqueType declared;
  if (vrntTypeDescriptor(leaf) == VRNT_DESCRIPTOR_REFERENCE) {
    declared.reset(vrntTypeReferencedType(leaf));
  }
  if (declared.get() == type) return fmt::format("{{ \"to\": {} }}", data);
  return fmt::format("{{ \"type\": {}, \"to\": {} }}", typeText, data);
}

void ValueDiff::report(std::uint32_t kind, const std::string& address, const vrntType_t* typeA,
                       const char* a, const vrntType_t* typeB, const char* b) {
  if (!diff_.found()) return;
  std::optional<std::string> oldText;
  std::optional<std::string> newText;
  if (kind != VRTK_DIFF_ADDED) oldText = textOf(typeA, a);
  if (kind != VRTK_DIFF_REMOVED) newText = textOf(typeB, b);
  diff_.add(address, kind, std::move(oldText), std::move(newText));
}

void ValueDiff::groups(const vrntType_t* type, const char* a, const char* b,
                       const std::function<std::string()>& address) {
  if (std::memcmp(a, b, static_cast<std::size_t>(layouts_.of(type).size())) == 0) return;
  sameType(type, a, b, address());
}

void ValueDiff::values(const vrntValue_t* a, const vrntValue_t* b,
                       const std::function<std::string()>& address) {
  if (a == b) return;
  const vrntType_t* const type = vrntValueType(a);
  if (type == vrntValueType(b)) {
    const ValueLayout& layout = layouts_.of(type);
    if (!layout.hasWords() &&
        std::memcmp(dataOf(a), dataOf(b), static_cast<std::size_t>(layout.size())) == 0) {
      return;
    }
  }
  seen_.clear();
  open_.clear();
  const std::string path = address();
  open_.push_back({a, b, path + "/data", path + "/type"});
  while (!open_.empty()) {
    const Pair pair = std::move(open_.back());
    open_.pop_back();
    blocks(pair);
  }
}

void ValueDiff::blocks(const Pair& pair) {
  const vrntType_t* const typeA = vrntValueType(pair.a);
  const vrntType_t* const typeB = vrntValueType(pair.b);
  const std::size_t first = open_.size();
  if (typeA == typeB) {
    sameType(typeA, dataOf(pair.a), dataOf(pair.b), pair.path);
  } else {
    if (diff_.found()) {
      diff_.add(pair.typePath, VRTK_DIFF_CHANGED, jsonText(requireText(typeA)),
                jsonText(requireText(typeB)));
    }
    otherTypes({typeA, typeB, dataOf(pair.a), dataOf(pair.b), pair.path});
  }
  // What was found first is compared first.
  std::reverse(open_.begin() + static_cast<std::ptrdiff_t>(first), open_.end());
}

void ValueDiff::sameType(const vrntType_t* type, const char* a, const char* b,
                         const std::string& path) {
  std::uint64_t lastLeaf = UINT64_MAX;
  const auto leafPath = [&](std::uint64_t offset, LeafPlace& leaf) {
    std::string address = path;
    leaf = leafAt(type, offset, &address);
    return address;
  };
  layouts_.of(type).forEachRun([&](const LayoutRun& run, std::uint64_t offset) {
    if (run.kind != RunKind::Word && run.contiguous() &&
        std::memcmp(a + offset, b + offset, static_cast<std::size_t>(run.count * run.size)) == 0) {
      return true;
    }
    for (std::uint64_t i = 0; i < run.count; ++i) {
      const std::uint64_t at = offset + i * run.stride;
      if (run.kind == RunKind::Word) {
        const auto left = load<std::uint64_t>(a + at);
        const auto right = load<std::uint64_t>(b + at);
        if (left == right) continue;
        LeafPlace leaf{};
        std::string address = leafPath(at, leaf);
        if (vrntTypeDescriptor(leaf.type) == VRNT_DESCRIPTOR_FUNCTION) {
          address = pathTo(address, at == leaf.offset ? "/0" : "/1");
        }
        word(left, right, leaf.type, leaf.type, address);
        continue;
      }
      if (equal(run, a + at, b + at)) continue;
      // The lanes of a vector are one leaf.
      LeafPlace leaf = leafAt(type, at, nullptr);
      if (leaf.offset == lastLeaf) continue;
      lastLeaf = leaf.offset;
      if (!diff_.found()) continue;
      const std::string address = leafPath(at, leaf);
      diff_.add(address, VRTK_DIFF_CHANGED, textOf(leaf.type, a + leaf.offset),
                textOf(leaf.type, b + leaf.offset));
    }
    return true;
  });
}

void ValueDiff::word(std::uint64_t a, std::uint64_t b, const vrntType_t* leafA,
                     const vrntType_t* leafB, const std::string& path) {
  if (a == b) return;
  if (leadsToBlock(a) && leadsToBlock(b)) {
    const vrntValue_t* const left = blockOf(a);
    const vrntValue_t* const right = blockOf(b);
    // Only blocks that several words lead to can be met again.
    if ((isShared(left) || isShared(right)) && !seen_.insert({left, right}).second) return;
    open_.push_back({left, right, pathTo(path, "/to"), pathTo(path, "/type")});
    return;
  }
  if (diff_.found()) {
    diff_.add(path, VRTK_DIFF_CHANGED, wordText(a, leafA), wordText(b, leafB));
  }
}

void ValueDiff::otherTypes(Parts parts) {
  std::vector<Parts> open;
  open.push_back(std::move(parts));
  while (!open.empty()) {
    const Parts top = std::move(open.back());
    open.pop_back();
    const std::size_t first = open.size();
    if (top.typeA == top.typeB) {
      sameType(top.typeA, top.a, top.b, top.path);
      continue;
    }
    const std::uint32_t kind = vrntTypeDescriptor(top.typeA);
    const bool isOneKind = kind == vrntTypeDescriptor(top.typeB);
    if (isStruct(top.typeA) && isStruct(top.typeB)) {
      structs(top, open);
    } else if (isOneKind && kind == VRNT_DESCRIPTOR_ARRAY &&
               vrntTypeArrayDimension(top.typeA) == vrntTypeArrayDimension(top.typeB)) {
      arrays(top, open);
    } else if (isOneKind && kind == VRNT_DESCRIPTOR_REFERENCE) {
      word(load<std::uint64_t>(top.a), load<std::uint64_t>(top.b), top.typeA, top.typeB, top.path);
    } else if (!isOneKind || kind != VRNT_DESCRIPTOR_ENUM ||
               textOf(top.typeA, top.a) != textOf(top.typeB, top.b)) {
      report(VRTK_DIFF_CHANGED, top.path, top.typeA, top.a, top.typeB, top.b);
    }
    std::reverse(open.begin() + static_cast<std::ptrdiff_t>(first), open.end());
  }
}

void ValueDiff::structs(const Parts& parts, std::vector<Parts>& open) {
  const std::uint32_t fieldsA = vrntTypeFieldCount(parts.typeA);
  const std::uint32_t fieldsB = vrntTypeFieldCount(parts.typeB);
  std::unordered_map<std::string_view, std::uint32_t> byLabel;
  for (std::uint32_t i = 0; i < fieldsB; ++i) {
    byLabel.emplace(vrntTypeFieldLabel(parts.typeB, i), i);
  }
  for (std::uint32_t i = 0; i < fieldsA; ++i) {
    const char* const label = vrntTypeFieldLabel(parts.typeA, i);
    const std::string path = pathTo(parts.path, (std::string("/") + label).c_str());
    vrntValueView_t left{};
    vrntValueStructField(&left, parts.typeA, i);
    const auto other = byLabel.find(label);
    if (other == byLabel.end()) {
      report(VRTK_DIFF_REMOVED, path, left.type, parts.a + left.offset, nullptr, nullptr);
      continue;
    }
    vrntValueView_t right{};
    vrntValueStructField(&right, parts.typeB, other->second);
    open.push_back({left.type, right.type, parts.a + left.offset, parts.b + right.offset, path});
    byLabel.erase(other);
  }
  for (std::uint32_t i = 0; i < fieldsB; ++i) {
    const char* const label = vrntTypeFieldLabel(parts.typeB, i);
    if (byLabel.find(label) == byLabel.end()) continue;
    vrntValueView_t right{};
    vrntValueStructField(&right, parts.typeB, i);
    report(VRTK_DIFF_ADDED, pathTo(parts.path, (std::string("/") + label).c_str()), nullptr,
           nullptr, right.type, parts.b + right.offset);
  }
}

void ValueDiff::arrays(const Parts& parts, std::vector<Parts>& open) {
  std::array<std::int32_t, 4> shapeA{1, 1, 1, 1};
  std::array<std::int32_t, 4> shapeB{1, 1, 1, 1};
  vrntTypeArrayShape(parts.typeA, shapeA.data());
  vrntTypeArrayShape(parts.typeB, shapeB.data());
  const std::uint32_t rank = vrntTypeArrayDimension(parts.typeA);
  // An array of no bytes has no elements that could differ.
  if (elementCount(parts.typeA) == 0 && elementCount(parts.typeB) == 0) return;
  if (vrntTypeSize(parts.typeA) == 0 && vrntTypeSize(parts.typeB) == 0) return;
  std::array<std::int32_t, 4> index{};
  const auto inside = [&index](const std::array<std::int32_t, 4>& shape) {
    for (std::uint32_t d = 0; d < 4; ++d) {
      if (index[d] >= shape[d]) return false;
    }
    return true;
  };
  for (;;) {
    const bool inA = inside(shapeA);
    const bool inB = inside(shapeB);
    if (inA || inB) {
      std::string path = parts.path;
      for (std::uint32_t d = rank; d-- > 0;) {
        path = pathTo(path, std::string("/").append(std::to_string(index[d])).c_str());
      }
      const vrntValueView_t left =
          elementAt(parts.typeA, inA ? index : std::array<std::int32_t, 4>{});
      const vrntValueView_t right =
          elementAt(parts.typeB, inB ? index : std::array<std::int32_t, 4>{});
      const char* const a = parts.a + left.offset;
      const char* const b = parts.b + right.offset;
      if (!inA || !inB) {
        report(inA ? VRTK_DIFF_REMOVED : VRTK_DIFF_ADDED, path, left.type, a, right.type, b);
      } else if (left.type == right.type) {
        sameType(left.type, a, b, path);
      } else {
        open.push_back({left.type, right.type, a, b, std::move(path)});
      }
    }
    std::uint32_t d = 0;
    while (d < rank && ++index[d] >= std::max(shapeA[d], shapeB[d])) index[d++] = 0;
    if (d == rank) return;
  }
}

}  // namespace vrtk
