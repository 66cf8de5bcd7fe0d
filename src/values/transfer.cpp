#include "values/transfer.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

#include "types/ref_slots.hpp"
#include "types/walk.hpp"
#include "values/block.hpp"

namespace qex::vornath {
namespace {

// The sizes of most fields are worth instructions of their own.
inline void copyBytes(char* to, const char* from, std::uint64_t bytes) {
  switch (bytes) {
    case 4:
      std::memcpy(to, from, 4);
      break;
    case 8:
      std::memcpy(to, from, 8);
      break;
    case 16:
      std::memcpy(to, from, 16);
      break;
    default:
      std::memcpy(to, from, bytes);
  }
}

}  // namespace

Transfer::Part Transfer::add(Node node) {
  nodes_.push_back(std::move(node));
  return {static_cast<std::int32_t>(nodes_.size() - 1), 0, 0};
}

Transfer::Part Transfer::copy(const InternedType& type) {
  if (type.size() == 0) return {};
  return add(Copy{type.size(), type.refSlotCount() == 0 ? nullptr : &type});
}

Transfer::Part Transfer::act(Action action) { return add(std::move(action)); }

Transfer::Part Transfer::sequence(const std::vector<Part>& parts) {
  std::vector<Part> kept;
  for (std::size_t i = 0; i < parts.size();) {
    const Part first = parts[i++];
    if (first.empty()) continue;
    const Copy* const copy = getIf<Copy>(first);
    if (copy == nullptr || copy->counted != nullptr) {
      kept.push_back(first);
      continue;
    }
    // Only what lies side by side on both sides is one: the target's padding isn't written to.
    std::uint64_t bytes = copy->bytes;
    for (; i < parts.size(); ++i) {
      if (parts[i].empty()) continue;
      const Copy* const next = getIf<Copy>(parts[i]);
      if (next == nullptr || next->counted != nullptr || parts[i].from != first.from + bytes ||
          parts[i].to != first.to + bytes) {
        break;
      }
      bytes += next->bytes;
    }
    kept.push_back(bytes == copy->bytes ? first
                                        : add(Copy{bytes, nullptr}).at(first.from, first.to));
  }
  if (kept.empty()) return {};
  if (kept.size() == 1) return kept.front();
  const bool flat = std::all_of(kept.begin(), kept.end(), [this](const Part& part) {
    return getIf<Copy>(part) != nullptr || getIf<Action>(part) != nullptr;
  });
  const Sequence sequence{parts_.size(), kept.size(), flat};
  parts_.insert(parts_.end(), kept.begin(), kept.end());
  return add(sequence);
}

Transfer::Part Transfer::repeat(const Part& part, std::uint64_t count, std::uint64_t fromStride,
                                std::uint64_t toStride) {
  if (part.empty() || count == 0) return {};
  if (count == 1) return part;
  const Copy* const copy = getIf<Copy>(part);
  if (copy != nullptr && copy->bytes == fromStride && copy->bytes == toStride) {
    return add(Copy{copy->bytes * count, copy->counted}).at(part.from, part.to);
  }
  return add(Repeat{part, count, fromStride, toStride});
}

// Gives back what the target's words lead to, and counts what they are about to lead to.
void Transfer::recount(const Copy& copy, const char* from, const char* to) {
  const std::uint64_t size = copy.counted->size();
  const RefSlots slots(*copy.counted);
  for (std::uint64_t offset = 0; offset < copy.bytes; offset += size) {
    slots.forEach([&](std::uint64_t slot) {
      const std::uint64_t now = loadWord(to + offset + slot * kWordSize);
      const std::uint64_t next = loadWord(from + offset + slot * kWordSize);
      if (now == next) return;
      retainWord(next);
      releaseWord(now);
    });
  }
}

bool Transfer::isFlat(const Part& part) const {
  if (const Sequence* const sequence = getIf<Sequence>(part)) return sequence->flat;
  return getIf<Repeat>(part) == nullptr;
}

inline void Transfer::runLeaf(const Part& part, const char* from, char* to) const {
  from += part.from;
  to += part.to;
  if (const Copy* const copy = getIf<Copy>(part)) {
    if (copy->counted != nullptr) recount(*copy, from, to);
    copyBytes(to, from, copy->bytes);
  } else {
    (*getIf<Action>(part))(from, to);
  }
}

// So many times a part that needs no frame.
void Transfer::runFlat(const Part& part, const char* from, char* to, const Repeat& times) const {
  const Part* leaves = &part;
  std::size_t count = 1;
  if (const Sequence* const sequence = getIf<Sequence>(part)) {
    leaves = &parts_[sequence->first];
    count = sequence->count;
    from += part.from;
    to += part.to;
  }
  for (std::uint64_t i = 0; i < times.count; ++i) {
    for (std::size_t leaf = 0; leaf < count; ++leaf) runLeaf(leaves[leaf], from, to);
    from += times.fromStride;
    to += times.toStride;
  }
}

class Transfer::Run {
 public:
  struct Node {
    Part part;
    const char* from;
    char* to;
  };

  explicit Run(const Transfer& plan) : plan_(plan) {}

  Visit enter(Node& node) {
    const auto [part, from, to] = node;
    if (plan_.isFlat(part)) {
      plan_.runFlat(part, from, to, {part, 1, 0, 0});
      return Visit::leaf();
    }
    node.from += part.from;
    node.to += part.to;
    if (const auto* const sequence = plan_.getIf<Sequence>(part)) {
      return Visit::parts(sequence->count);
    }
    const auto& repeat = *plan_.getIf<Repeat>(part);
    if (!plan_.isFlat(repeat.part)) return Visit::parts(repeat.count);
    plan_.runFlat(repeat.part, node.from, node.to, repeat);
    return Visit::leaf();
  }

  Node part(const Node& node, std::size_t i) {
    if (const auto* const sequence = plan_.getIf<Sequence>(node.part)) {
      return {plan_.parts_[sequence->first + i], node.from, node.to};
    }
    const auto& repeat = *plan_.getIf<Repeat>(node.part);
    return {repeat.part, node.from + i * repeat.fromStride, node.to + i * repeat.toStride};
  }

 private:
  const Transfer& plan_;
};

void Transfer::run(const Part& whole, const char* from, char* to) const {
  if (whole.empty()) return;
  Run run(*this);
  Walk<Run::Node, false>().run(run, {whole, from, to});
}

}  // namespace qex::vornath
