#include "values/copy_plan.hpp"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <utility>

#include "types/ref_slots.hpp"
#include "types/walk.hpp"
#include "values/block.hpp"

namespace qex::vornath {
namespace {

// Most fields have one of these sizes, for which memcpy() compiles to single instructions.
inline void copyBytes(char* to, const char* from, std::uint64_t bytes) {
  switch (bytes) {
    case 4:
      std::memcpy(to, from, 4);
      break;
    case 8:
      std::memcpy(to, from, 8);
      break;
    case 12:
      std::memcpy(to, from, 12);
      break;
    case 16:
      std::memcpy(to, from, 16);
      break;
    default:
      std::memcpy(to, from, bytes);
  }
}

}  // namespace

CopyPlan::Step CopyPlan::add(Node node) {
  nodes_.push_back(std::move(node));
  return {static_cast<std::int32_t>(nodes_.size() - 1), 0, 0, 0};
}

CopyPlan::Step CopyPlan::copyOf(std::uint64_t bytes, const InternedType* counted) {
  if (counted == nullptr && bytes <= std::numeric_limits<std::uint32_t>::max()) {
    return {kShortCopy, static_cast<std::uint32_t>(bytes), 0, 0};
  }
  return add(Copy{bytes, counted});
}

CopyPlan::Step CopyPlan::copy(const InternedType& type) {
  if (type.size() == 0) return {};
  return copyOf(type.size(), type.refSlotCount() == 0 ? nullptr : &type);
}

CopyPlan::Step CopyPlan::act(Action action, std::size_t bytes) {
  actionBytes_ += bytes;
  return add(std::move(action));
}

// Returns the bytes of a copy without references, or 0 for any other step.
std::uint64_t CopyPlan::plainBytes(const Step& step) const {
  if (step.node == kShortCopy) return step.bytes;
  const Copy* const copy = getIf<Copy>(step);
  return copy != nullptr && copy->counted == nullptr ? copy->bytes : 0;
}

CopyPlan::Step CopyPlan::sequence(const std::vector<Step>& given) {
  // The steps of a short inner sequence are run as this one's own. A long one stays as it is: in a
  // deep nest each sequence would have the steps of all inner ones.
  constexpr std::size_t kMaxInlined = 16;
  std::vector<Step> steps;
  steps.reserve(given.size());
  for (const Step& step : given) {
    const Sequence* const inner = getIf<Sequence>(step);
    if (step.empty()) {
      continue;
    }
    if (inner == nullptr || inner->count > kMaxInlined) {
      steps.push_back(step);
      continue;
    }
    for (std::size_t i = 0; i < inner->count; ++i) {
      steps.push_back(steps_[inner->first + i].at(step.from, step.to));
    }
  }

  const std::size_t first = steps_.size();
  for (std::size_t i = 0; i < steps.size();) {
    const Step step = steps[i++];
    const std::uint64_t own = plainBytes(step);
    // Merges only what is adjacent in both values: the target's padding must not be written.
    std::uint64_t bytes = own;
    while (own != 0 && i < steps.size()) {
      const std::uint64_t next = plainBytes(steps[i]);
      if (next == 0 || steps[i].from != step.from + bytes || steps[i].to != step.to + bytes) break;
      bytes += next;
      ++i;
    }
    steps_.push_back(bytes == own ? step : copyOf(bytes, nullptr).at(step.from, step.to));
  }
  const std::size_t count = steps_.size() - first;
  if (count > 1) {
    const bool flat = std::all_of(
        steps_.begin() + static_cast<std::ptrdiff_t>(first), steps_.end(),
        [this](const Step& step) { return !getIf<Sequence>(step) && !getIf<Repeat>(step); });
    return add(Sequence{first, count, flat});
  }
  const Step only = count == 1 ? steps_.back() : Step{};
  steps_.resize(first);
  return only;
}

CopyPlan::Step CopyPlan::repeat(const Step& step, std::uint64_t count, std::uint64_t fromStride,
                                std::uint64_t toStride) {
  if (step.empty() || count == 0) return {};
  if (count == 1) return step;
  const Copy* const copy = getIf<Copy>(step);
  const std::uint64_t bytes = copy != nullptr ? copy->bytes : plainBytes(step);
  if (bytes != 0 && bytes == fromStride && bytes == toStride) {
    return copyOf(bytes * count, copy != nullptr ? copy->counted : nullptr).at(step.from, step.to);
  }
  return add(Repeat{step, count, fromStride, toStride});
}

void CopyPlan::shrink() {
  // shrink_to_fit() would swallow a failure.
  std::vector<Node>(std::make_move_iterator(nodes_.begin()), std::make_move_iterator(nodes_.end()))
      .swap(nodes_);
  std::vector<Step>(steps_).swap(steps_);
}

std::size_t CopyPlan::bytes() const {
  return nodes_.capacity() * sizeof(Node) + steps_.capacity() * sizeof(Step) + actionBytes_;
}

// Adds a reference for each block word of the source and releases that of the target.
void CopyPlan::exchangeReferences(const Copy& copy, const char* from, const char* to) {
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

bool CopyPlan::isFlat(const Step& step) const {
  if (const Sequence* const sequence = getIf<Sequence>(step)) return sequence->flat;
  return getIf<Repeat>(step) == nullptr;
}

inline void CopyPlan::runLeaf(const Step& step, const char* from, char* to) const {
  from += step.from;
  to += step.to;
  if (step.node == kShortCopy) {
    copyBytes(to, from, step.bytes);
  } else if (const Copy* const copy = getIf<Copy>(step)) {
    if (copy->counted != nullptr) exchangeReferences(*copy, from, to);
    copyBytes(to, from, copy->bytes);
  } else {
    (*getIf<Action>(step))(from, to);
  }
}

// Runs a step without nested sequences `times.count` times.
void CopyPlan::runFlat(const Step& step, const char* from, char* to, const Repeat& times) const {
  const Step* leaves = &step;
  std::size_t count = 1;
  if (const Sequence* const sequence = getIf<Sequence>(step)) {
    leaves = &steps_[sequence->first];
    count = sequence->count;
    from += step.from;
    to += step.to;
  }
  for (std::uint64_t i = 0; i < times.count; ++i) {
    for (std::size_t leaf = 0; leaf < count; ++leaf) runLeaf(leaves[leaf], from, to);
    from += times.fromStride;
    to += times.toStride;
  }
}

class CopyPlan::Run {
 public:
  struct Node {
    Step step;
    const char* from;
    char* to;
  };

  explicit Run(const CopyPlan& plan) : plan_(plan) {}

  Visit enter(Node& node) {
    const auto [step, from, to] = node;
    if (plan_.isFlat(step)) {
      plan_.runFlat(step, from, to, {step, 1, 0, 0});
      return Visit::leaf();
    }
    node.from += step.from;
    node.to += step.to;
    if (const auto* const sequence = plan_.getIf<Sequence>(step)) {
      return Visit::parts(sequence->count);
    }
    const auto& repeat = *plan_.getIf<Repeat>(step);
    if (!plan_.isFlat(repeat.step)) return Visit::parts(repeat.count);
    plan_.runFlat(repeat.step, node.from, node.to, repeat);
    return Visit::leaf();
  }

  Node part(const Node& node, std::size_t i) {
    if (const auto* const sequence = plan_.getIf<Sequence>(node.step)) {
      return {plan_.steps_[sequence->first + i], node.from, node.to};
    }
    const auto& repeat = *plan_.getIf<Repeat>(node.step);
    return {repeat.step, node.from + i * repeat.fromStride, node.to + i * repeat.toStride};
  }

 private:
  const CopyPlan& plan_;
};

void CopyPlan::run(const Step& whole, const char* from, char* to) const {
  if (whole.empty()) return;
  Run run(*this);
  Walk<Run::Node, false>().run(run, {whole, from, to});
}

}  // namespace qex::vornath
