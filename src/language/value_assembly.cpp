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
    const Node* nodes;
    const Index* at;

    Part operator*() const { return {nodes[*at].type}; }
    Iterator& operator++() { return ++at, *this; }
    friend bool operator!=(const Iterator& a, const Iterator& b) { return a.at != b.at; }
  };

  Parts(const Node* allNodes, std::span<const Index> listed) : nodes(allNodes), indices(listed) {
    for (const Index index : indices) count += nodes[index].count;
  }

  std::size_t size() const { return count; }
  bool empty() const { return count == 0; }
  Part front() const { return *begin(); }
  Iterator begin() const { return {nodes, indices.data()}; }
  Iterator end() const { return {nodes, indices.data() + indices.size()}; }

  const Node* const nodes;
  const std::span<const Index> indices;
  std::size_t count = 0;
};

ValueAssembly::Node& ValueAssembly::add(Node::Kind kind, const InternedType& type) {
  const auto index = static_cast<Index>(nodes_.size());
  open_.push_back(index);
  nodes_.push_back({kind, 1, index, 0, 0, 0, &type, static_cast<Index>(ownedTypes_.size()),
                    static_cast<Index>(referees_.size())});
  return nodes_.back();
}

ValueAssembly::Node& ValueAssembly::addOwned(Node::Kind kind, const InternedType& type) {
  Node& node = add(kind, type.stripped());
  ownedTypes_.emplace_back(node.type);
  return node;
}

void ValueAssembly::addLanes(Type::TBasetype base, std::uint32_t count, std::uint64_t offset) {
  Node& node = add(Node::Lanes, baseType(base));
  node.count = count;
  node.source = offset;
}

void ValueAssembly::addEnumerator(const TypePtr& enumType, std::string_view constructor) {
  const std::int32_t code = std::get<Type::TEnum>(enumType->desc()).constructorIndex(constructor);
  std::memcpy(&addOwned(Node::Word, *enumType).source, &code, sizeof(code));
}

void ValueAssembly::addForeign(const TypePtr& referenceType, std::uint64_t id) {
  addOwned(Node::Word, *referenceType).source = foreignWord(id);
}

void ValueAssembly::refer() {
  const DynamicValue referee = take();
  const TypePtr type = makeType(Type::TRef{referee.type()});
  addOwned(Node::Word, *type).source = wordOfBlock(referee.block());
  referees_.emplace_back(referee.block());
}

void ValueAssembly::makeStruct(std::uint32_t count) {
  const std::size_t firstOpen = open_.size() - count;
  const std::size_t firstLabel = labels_.size() - count;
  std::vector<Type::Field> fields;
  fields.reserve(count);
  for (std::size_t i = 0; i < count; ++i) {
    fields.emplace_back(TypePtr(nodes_[open_[firstOpen + i]].type),
                        std::string(labels_[firstLabel + i]));
  }
  labels_.resize(firstLabel);
  makeAggregate(*makeType(Type::TStruct(std::move(fields))), firstOpen);
}

void ValueAssembly::makeArray(std::uint32_t count, const Extents* extents, const TypePtr& element) {
  const std::size_t firstOpen = open_.size() - count;
  const Parts values(nodes_.data(), std::span(open_.data() + firstOpen, count));
  const Extents list(static_cast<std::int32_t>(values.size()));
  const Extents& shape = extents != nullptr ? *extents : list;
  const TypePtr type = element ? arrayTypeOf(values, shape, element) : arrayTypeOf(values, shape);
  makeAggregate(*type, firstOpen);
}

// Adds a node and makes the open ones from the given one on its parts.
void ValueAssembly::makeAggregate(const InternedType& type, std::size_t firstOpen) {
  Node& aggregate = addOwned(Node::Aggregate, type);
  const Index index = open_.back();
  const vornath::Parts parts = vornath::Parts::of(*aggregate.type);
  std::size_t part = 0;
  for (std::size_t i = firstOpen; i + 1 < open_.size(); ++i) {
    Node& inner = nodes_[open_[i]];
    inner.outer = index;
    inner.offset = parts[part].offset;
    part += inner.count;
  }
  const Node& first = nodes_[nodes_[open_[firstOpen]].first];
  aggregate.ownedTypes = first.ownedTypes;
  aggregate.referees = first.referees;
  aggregate.first = nodes_[open_[firstOpen]].first;
  open_.resize(firstOpen);
  open_.push_back(index);
}

DynamicValue ValueAssembly::take() {
  const Index whole = open_.back();
  const Index first = nodes_[whole].first;
  NewBlock made(*nodes_[whole].type, Fill::Zero);
  // The outer nodes come last, so that each offset is that in the block before it is used.
  for (Index i = whole + 1; i-- > first;) {
    Node& node = nodes_[i];
    if (i != whole) node.offset += nodes_[node.outer].offset;
    if (node.kind == Node::Aggregate) continue;
    const void* const source =
        node.kind == Node::Lanes ? static_cast<const void*>(lanes_ + node.source) : &node.source;
    std::memcpy(made.data() + node.offset, source, node.count * node.type->size());
  }
  const BlockPtr block = std::move(made).finish();
  ownedTypes_.resize(nodes_[whole].ownedTypes);
  referees_.resize(nodes_[whole].referees);
  nodes_.resize(first);
  open_.pop_back();
  return DynamicValue(block.get());
}

}  // namespace qex::vornath
