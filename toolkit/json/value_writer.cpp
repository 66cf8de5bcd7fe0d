#include "json/value_writer.hpp"

#include <fmt/format.h>

#include <cstring>
#include <utility>

#include "foundation/failure.hpp"
#include "foundation/small_stack.hpp"
#include "json/numbers.hpp"
#include "json/text.hpp"
#include "vornath_data/catalogue.h"

namespace vrtk {
namespace {

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

char* writeLane(char* out, Part part, const char* at) {
  switch (part) {
    case Part::Bool:
      return writeBool(out, load<std::uint32_t>(at));
    case Part::Int:
      return writeInt(out, load<std::int32_t>(at));
    case Part::Char:
      return writeInt(out, load<std::uint8_t>(at));
    case Part::Half:
      return writeHalf(out, load<std::uint16_t>(at));
    default:
      return writeFloat(out, load<std::uint32_t>(at));
  }
}

char* writeByte(char* out, unsigned byte) {
  if (byte >= 100) *out++ = static_cast<char>('0' + byte / 100);
  if (byte >= 10) *out++ = static_cast<char>('0' + byte / 10 % 10);
  *out++ = static_cast<char>('0' + byte % 10);
  return out;
}

void writeEnum(Output& out, const TypeTree& tree, const TypeNode& node, const char* at) {
  const auto& labels = tree.labels(node).json;
  const auto code = load<std::uint32_t>(at);
  if (code < labels.size()) {
    out.put(labels[code]);
  } else {
    out.wrote(writeInt(out.room(kLongestNumber), static_cast<std::int32_t>(code)));
  }
}

void writeNumbers(Output& out, const TypeTree& tree, const TypeNode& node, const char* at) {
  if (node.part == Part::Enum) {
    writeEnum(out, tree, node, at);
    return;
  }
  char* end = out.room(4 * (kLongestNumber + 2) + 2);
  if (node.lanes == 1) {
    out.wrote(writeLane(end, node.part, at));
    return;
  }
  *end++ = '[';
  for (std::uint32_t i = 0; i < node.lanes; ++i) {
    if (i != 0) {
      *end++ = ',';
      *end++ = ' ';
    }
    end = writeLane(end, node.part, at + std::size_t{i} * node.laneSize);
  }
  *end++ = ']';
  out.wrote(end);
}

// Writes numbers, or arrays of them, on one line. Goes one level deeper for each dimension that
// holds another: arrays nest as deeply as a type is long.
void writeFlat(Output& out, const TypeTree& tree, std::uint32_t index, const char* base) {
  const TypeNode& outer = tree.node(index);
  const char* const at = base + outer.offset;
  if (outer.part != Part::Array) {
    writeNumbers(out, tree, outer, at);
    return;
  }
  struct Level {
    std::uint32_t node;
    const char* at;
    std::uint64_t next;
  };
  if (outer.count != 0 && tree.node(index + 1).part != Part::Array) {
    const TypeNode& element = tree.node(index + 1);
    out.put('[');
    if (element.part == Part::Char && element.lanes == 1) {
      for (std::uint64_t i = 0; i < outer.count; ++i) {
        char* end = out.room(8);
        if (i != 0) {
          *end++ = ',';
          *end++ = ' ';
        }
        out.wrote(writeByte(end, static_cast<unsigned char>(at[i])));
      }
    } else {
      for (std::uint64_t i = 0; i < outer.count; ++i) {
        if (i != 0) out.put(", ");
        writeNumbers(out, tree, element, at + i * outer.stride);
      }
    }
    out.put(']');
    return;
  }
  std::vector<Level> levels{{index, at, 0}};
  out.put('[');
  while (!levels.empty()) {
    Level& level = levels.back();
    const TypeNode& array = tree.node(level.node);
    if (level.next == array.count) {
      out.put(']');
      levels.pop_back();
      continue;
    }
    if (level.next != 0) out.put(", ");
    const char* const element = level.at + level.next++ * array.stride;
    const TypeNode& part = tree.node(level.node + 1);
    if (part.part == Part::Array) {
      out.put('[');
      levels.push_back({level.node + 1, element, 0});
    } else {
      writeNumbers(out, tree, part, element);
    }
  }
}

void writeAddress(Output& out, std::uint64_t word) {
  out.put(fmt::format("{{ \"address\": \"0x{:x}\" }}", word >> 1U));
}

}  // namespace

bool sameContent(const TypeTree& tree, std::uint32_t node, const char* a, const char* b) {
  const TypeNode& whole = tree.node(node);
  if (std::memcmp(a + whole.offset, b + whole.offset, whole.size) == 0) return true;
  if (whole.part != Part::Struct && whole.part != Part::Array) return false;
  // The difference may be in padding.
  struct Open {
    std::uint32_t node;
    const char* a;
    const char* b;
  };
  SmallStack<Open, 16> open;
  open.push({node, a, b});
  while (!open.empty()) {
    const Open top = open.back();
    open.pop();
    const TypeNode& part = tree.node(top.node);
    const char* const left = top.a + part.offset;
    const char* const right = top.b + part.offset;
    if (std::memcmp(left, right, part.size) == 0) continue;
    if (part.part == Part::Struct) {
      std::uint32_t child = top.node + 1;
      for (std::uint32_t i = 0; i < part.children; ++i) {
        open.push({child, left, right});
        child = tree.node(child).end;
      }
    } else if (part.part == Part::Array) {
      for (std::uint64_t i = 0; i < part.count; ++i) {
        open.push({top.node + 1, left + i * part.stride, right + i * part.stride});
      }
    } else {
      return false;
    }
  }
  return true;
}

void writePart(Output& out, const TypeTree& tree, std::uint32_t node, const char* base,
               const char* defaults, std::size_t depth) {
  struct Open {
    std::uint32_t node;
    std::uint32_t next;
    std::uint64_t left;
    const char* base;
    const char* defaults;
    bool isFirst;
  };
  const TypeNode& first = tree.node(node);
  if (first.isFlat) {
    writeFlat(out, tree, node, base);
    return;
  }
  const auto opened = [&](std::uint32_t index, const char* from, const char* to) {
    const TypeNode& part = tree.node(index);
    const bool isStruct = part.part == Part::Struct;
    out.put(isStruct ? '{' : '[');
    return Open{index,
                index + 1,
                isStruct ? part.children : part.count,
                from + part.offset,
                to != nullptr ? to + part.offset : nullptr,
                true};
  };
  SmallStack<Open, 8> open;
  open.push(opened(node, base, defaults));
  while (!open.empty()) {
    Open& top = open.back();
    const bool isStruct = tree.node(top.node).part == Part::Struct;
    if (top.left == 0) {
      if (!top.isFirst) out.line(depth + open.size() - 1);
      out.put(isStruct ? '}' : ']');
      open.pop();
      continue;
    }
    --top.left;
    const std::uint32_t child = top.next;
    const TypeNode& part = tree.node(child);
    const char* from = top.base;
    const char* to = top.defaults;
    if (isStruct) {
      top.next = part.end;
      if (to != nullptr && sameContent(tree, child, from, to)) continue;
    } else {
      to = nullptr;  // an array has all its elements
      const TypeNode& array = tree.node(top.node);
      from += (array.count - top.left - 1) * array.stride;
    }
    out.part(top.isFirst, depth + open.size(), isStruct ? tree.keyText(part) : std::string_view());
    top.isFirst = false;
    if (part.isFlat) {
      writeFlat(out, tree, child, from);
    } else {
      open.push(opened(child, from, to));
    }
  }
}

void ValueWriter::write(const vrntValue_t* value, std::size_t depth, std::uint32_t objectClass,
                        std::int32_t index) {
  if (value == nullptr) {
    out_.put("null");
    return;
  }
  objectClass_ = objectClass;
  index_ = index;
  blocks_.clear();
  names_ = 0;
  const auto tree = trees_.of(vrntValueType(value));
  if (tree->hasReferences()) countWords(value);
  out_.put('{');
  out_.line(depth + 1);
  std::string type = "\"type\": ";
  const char* const text = vrntTypeString(tree->type());
  if (text == nullptr) throw std::bad_alloc();
  appendJsonString(type, text);
  out_.put(type);
  out_.put(',');
  out_.line(depth + 1);
  out_.put("\"data\": ");
  run(tree, static_cast<const char*>(vrntValueData(value)), depth + 1);
  out_.line(depth);
  out_.put('}');
}

namespace {

// The block behind a word that is neither null nor a foreign address.
const vrntValue_t* blockOf(std::uint64_t word) {
  const auto* const data =
      reinterpret_cast<const char*>(word);  // NOLINT(performance-no-int-to-ptr)
  return reinterpret_cast<const vrntValue_t*>(data - sizeof(vrntValue_t));
}

bool leadsToBlock(std::uint64_t word) { return word != 0 && (word & 1U) == 0; }

bool isShared(const vrntValue_t* block) {
  return __atomic_load_n(&block->refCount, __ATOMIC_RELAXED) > 1;
}

}  // namespace

// Finds the blocks that several words of the value lead to. Only blocks with more than one
// reference can be such, so only they are kept.
void ValueWriter::countWords(const vrntValue_t* value) {
  std::vector<const vrntValue_t*> open{value};
  if (isShared(value)) blocks_[static_cast<const char*>(vrntValueData(value))];
  while (!open.empty()) {
    const vrntValue_t* const block = open.back();
    open.pop_back();
    const auto tree = trees_.of(vrntValueType(block));
    if (!tree->hasReferences()) continue;
    const auto* const data = static_cast<const char*>(vrntValueData(block));
    const TypePlan& plan = tree->references();
    for (std::uint64_t i = 0; i < plan.references(); ++i) {
      const auto word = load<std::uint64_t>(data + plan.reference(i).offset);
      if (!leadsToBlock(word)) continue;
      const vrntValue_t* const to = blockOf(word);
      if (isShared(to)) {
        const auto [known, isNew] =
            blocks_.try_emplace(static_cast<const char*>(vrntValueData(to)));
        ++known->second.words;
        if (!isNew) continue;
      }
      open.push_back(to);
    }
  }
}

void ValueWriter::run(const std::shared_ptr<const TypeTree>& tree, const char* data,
                      std::size_t depth) {
  const auto root = blocks_.find(data);
  if (root != blocks_.end()) root->second.isOpen = true;
  frames_.clear();
  part(tree, 0, data, depth);
  while (!frames_.empty()) step();
}

void ValueWriter::open(Frame frame) {
  switch (frame.kind) {
    case Frame::Kind::Struct:
      out_.put('{');
      break;
    case Frame::Kind::Array:
    case Frame::Kind::Function:
      out_.put('[');
      break;
    case Frame::Kind::Reference:
      break;
  }
  frames_.push_back(std::move(frame));
}

void ValueWriter::part(const std::shared_ptr<const TypeTree>& tree, std::uint32_t node,
                       const char* base, std::size_t depth) {
  const TypeNode& part = tree->node(node);
  const char* const at = base + part.offset;
  if (part.isFlat) {
    writeFlat(out_, *tree, node, base);
    return;
  }
  switch (part.part) {
    case Part::Struct:
      open({tree, node, node + 1, 0, at, nullptr, depth, false, Frame::Kind::Struct});
      return;
    case Part::Array:
      open({tree, node, node + 1, 0, at, nullptr, depth, false, Frame::Kind::Array});
      return;
    case Part::Function:
      open({tree, node, node, 0, at, nullptr, depth, true, Frame::Kind::Function});
      return;
    default:
      reference(load<std::uint64_t>(at), part.target, depth);
  }
}

void ValueWriter::reference(std::uint64_t word, const vrntType_t* declared, std::size_t depth) {
  if (word == 0) {
    out_.put("null");
    return;
  }
  if ((word & 1U) != 0) {
    writeAddress(out_, word);
    return;
  }
  const vrntValue_t* const to = blockOf(word);
  const auto* const data = static_cast<const char*>(vrntValueData(to));
  const auto known = blocks_.find(data);
  if (known != blocks_.end()) {
    if (known->second.isOpen) {
      throw Failure(VRTK_VALUE_CYCLE,
                    fmt::format("{}/{}/value: its references form a cycle, which JSON cannot hold; "
                                "cut the cycle",
                                vrdmObjectName(objectClass_), index_));
    }
    if (known->second.name != 0) {
      out_.put(fmt::format("{{ \"shared\": \"{}\" }}", known->second.name));
      return;
    }
  }
  const auto tree = trees_.of(vrntValueType(to));
  const bool oneLine = tree->node(0).isFlat;
  out_.put(oneLine ? "{ " : "{");
  const auto item = [&](const std::string& text) {
    if (!oneLine) out_.line(depth + 1);
    out_.put(text);
    out_.put(oneLine ? ", " : ",");
  };
  if (known != blocks_.end() && known->second.words > 1) {
    known->second.name = ++names_;
    item(fmt::format("\"shared\": \"{}\"", names_));
  }
  if (tree->type() != declared) {
    std::string text = "\"type\": ";
    const char* const type = vrntTypeString(tree->type());
    if (type == nullptr) throw std::bad_alloc();
    appendJsonString(text, type);
    item(text);
  }
  if (!oneLine) out_.line(depth + 1);
  out_.put("\"to\": ");
  if (oneLine) {
    writeFlat(out_, *tree, 0, data);
    out_.put(" }");
    return;
  }
  const char* const block = known != blocks_.end() ? data : nullptr;
  if (block != nullptr) known->second.isOpen = true;
  frames_.push_back({tree, 0, 0, 0, data, block, depth, false, Frame::Kind::Reference});
}

// Writes the next part of what is open last, or its end.
void ValueWriter::step() {
  Frame& top = frames_.back();
  const TypeNode& node = top.tree->node(top.node);
  switch (top.kind) {
    case Frame::Kind::Struct:
    case Frame::Kind::Array: {
      const bool isStruct = top.kind == Frame::Kind::Struct;
      if (top.index == (isStruct ? node.children : node.count)) {
        const bool isEmpty = top.index == 0;
        if (!isEmpty) out_.line(top.depth);
        out_.put(isStruct ? '}' : ']');
        frames_.pop_back();
        return;
      }
      if (top.index != 0) out_.put(',');
      const std::uint64_t index = top.index++;
      out_.line(top.depth + 1);
      const std::uint32_t child = top.next;
      const char* base = top.base;
      if (isStruct) {
        const TypeNode& field = top.tree->node(child);
        out_.put(top.tree->keyText(field));
        top.next = field.end;
      } else {
        base += index * node.stride;
      }
      const auto tree = top.tree;  // the frame moves when another is opened
      part(tree, child, base, top.depth + 1);
      return;
    }
    case Frame::Kind::Function: {
      if (top.index == 2) {
        out_.line(top.depth);
        out_.put(']');
        frames_.pop_back();
        return;
      }
      if (top.index != 0) out_.put(',');
      const auto word = load<std::uint64_t>(top.base + 8 * top.index++);
      const std::size_t depth = top.depth + 1;
      out_.line(depth);
      reference(word, nullptr, depth);
      return;
    }
    case Frame::Kind::Reference: {
      if (top.index++ == 0) {
        const auto tree = top.tree;
        part(tree, 0, top.base, top.depth + 1);
        return;
      }
      if (top.block != nullptr) blocks_[top.block].isOpen = false;
      const std::size_t depth = top.depth;
      frames_.pop_back();
      out_.line(depth);
      out_.put('}');
      return;
    }
  }
}

}  // namespace vrtk
