#include "language/value_assembly.hpp"

#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "types/make_type.hpp"
#include "types/parts.hpp"
#include "values/aggregate_types.hpp"
#include "values/fixed_types.hpp"

namespace qex::vornath {

struct ValueAssembly::Parts {
  struct Part {
    const InternedType* valueType;
    TypePtr type() const { return TypePtr(valueType); }
  };
  struct Iterator {
    const std::vector<Node>* nodes;
    const Index* at;

    Part operator*() const { return {(*nodes)[*at].valueType}; }
    Iterator& operator++() { return ++at, *this; }
    friend bool operator!=(const Iterator& a, const Iterator& b) { return a.at != b.at; }
  };

  Parts(const std::vector<Node>& allNodes, std::span<const Index> listed)
      : nodes(allNodes), indices(listed) {
    for (const Index index : indices) count += nodes[index].count;
  }

  std::size_t size() const { return count; }
  bool empty() const { return count == 0; }
  Part front() const { return *begin(); }
  Iterator begin() const { return {&nodes, indices.data()}; }
  Iterator end() const { return {&nodes, indices.data() + indices.size()}; }

  const std::vector<Node>& nodes;
  const std::span<const Index> indices;
  std::size_t count = 0;
};

ValueAssembly::Index ValueAssembly::add(Node::Kind kind, const InternedType& type) {
  const auto index = static_cast<Index>(nodes_.size());
  Node node{.kind = kind, .first = index, .valueType = &type};
  nodes_.push_back(std::move(node));
  open_.push_back(index);
  return index;
}

ValueAssembly::Index ValueAssembly::addOwned(Node::Kind kind, const InternedType& type) {
  TypePtr owner(&type.stripped());
  const Index index = add(kind, *owner);
  nodes_[index].owner = std::move(owner);
  return index;
}

void ValueAssembly::addLanes(Type::TBasetype base, std::uint32_t count, std::uint64_t offset) {
  Node& node = nodes_[add(Node::Lanes, baseType(base))];
  node.count = count;
  node.source = offset;
}

void ValueAssembly::addEnumerator(const TypePtr& enumType, std::string_view constructor) {
  const std::int32_t code = std::get<Type::TEnum>(enumType->desc()).constructorIndex(constructor);
  std::uint64_t& word = nodes_[addOwned(Node::Word, *enumType)].source;
  std::memcpy(&word, &code, sizeof(code));
}

void ValueAssembly::addForeign(const TypePtr& referenceType, std::uint64_t id) {
  nodes_[addOwned(Node::Word, *referenceType)].source = foreignWord(id);
}

void ValueAssembly::refer() {
  const DynamicValue referee = take();
  Node& node = nodes_[addOwned(Node::Word, *makeType(Type::TRef{referee.type()}))];
  node.source = wordOfBlock(referee.block());
  node.referee = BlockPtr(referee.block());
}

void ValueAssembly::makeStruct(std::uint32_t count) {
  const std::size_t firstOpen = open_.size() - count;
  const std::size_t firstLabel = labels_.size() - count;
  std::vector<Type::Field> fields;
  fields.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    fields.emplace_back(TypePtr(nodes_[open_[firstOpen + i]].valueType),
                        std::string(labels_[firstLabel + i]));
  }
  labels_.resize(firstLabel);
  const TypePtr type = makeType(Type::TStruct(std::move(fields)));
  place(addOwned(Node::Aggregate, *type), firstOpen);
}

void ValueAssembly::makeArray(std::uint32_t count, const Extents* extents, const TypePtr& element) {
  const std::size_t firstOpen = open_.size() - count;
  const Parts values(nodes_, std::span(open_).subspan(firstOpen));
  const Extents list(static_cast<std::int32_t>(values.size()));
  const Extents& shape = extents != nullptr ? *extents : list;
  const TypePtr type = element ? arrayTypeOf(values, shape, element) : arrayTypeOf(values, shape);
  place(addOwned(Node::Aggregate, *type), firstOpen);
}

// Makes the open nodes from the given one on parts of the last node, which is open itself.
void ValueAssembly::place(Index outer, std::size_t firstOpen) {
  const vornath::Parts parts = vornath::Parts::of(*nodes_[outer].valueType);
  std::size_t part = 0;
  for (std::size_t i = firstOpen; i + 1 < open_.size(); ++i) {
    Node& inner = nodes_[open_[i]];
    inner.outer = outer;
    inner.offset = parts[part].offset;
    part += inner.count;
  }
  nodes_[outer].first = nodes_[open_[firstOpen]].first;
  open_.resize(firstOpen);
  open_.push_back(outer);
}

DynamicValue ValueAssembly::take() {
  const Index whole = open_.back();
  const Index first = nodes_[whole].first;
  NewBlock made(*nodes_[whole].valueType, Fill::Zero);
  // The outer nodes come last, so that each offset is that in the block before it is used.
  for (Index i = whole + 1; i-- > first;) {
    Node& node = nodes_[i];
    if (i != whole) node.offset += nodes_[node.outer].offset;
    if (node.kind == Node::Aggregate) continue;
    const void* const source =
        node.kind == Node::Lanes ? static_cast<const void*>(lanes_ + node.source) : &node.source;
    std::memcpy(made.data() + node.offset, source, node.count * node.valueType->size());
  }
  const BlockPtr block = std::move(made).finish();
  nodes_.erase(nodes_.begin() + first, nodes_.end());
  open_.pop_back();
  return DynamicValue(block.get());
}

}  // namespace qex::vornath
