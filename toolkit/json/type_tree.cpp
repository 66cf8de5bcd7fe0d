#include "json/type_tree.hpp"

#include <array>
#include <cstring>

#include "json/text.hpp"
#include "vornath_data/values.h"

namespace vrtk {
namespace {

// Which constructors of an enum have fields. Only the text of the type shows them.
std::vector<bool> constructorsWithFields(const vrntType_t* type) {
  const std::uint32_t count = vrntTypeConstructorCount(type);
  std::vector<bool> found(count);
  const char* const text = vrntTypeString(type);
  if (text == nullptr) throw std::bad_alloc();
  std::string_view rest(text);
  constexpr std::string_view kStart = "enum { ";
  if (rest.substr(0, kStart.size()) != kStart || rest.find('(') == std::string_view::npos) {
    return found;
  }
  rest.remove_prefix(kStart.size());
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string_view name = vrntTypeConstructorName(type, i);
    if (rest.substr(0, name.size()) != name) return found;
    rest.remove_prefix(name.size());
    found[i] = !rest.empty() && rest.front() == '(';
    // Goes behind the semicolon that ends the constructor.
    int depth = 0;
    bool quoted = false;
    std::size_t at = 0;
    for (; at < rest.size(); ++at) {
      const char c = rest[at];
      if (quoted) {
        if (c == '\\') ++at;
        if (c == '"') quoted = false;
      } else if (c == '"') {
        quoted = true;
      } else if (c == '(' || c == '{' || c == '[') {
        ++depth;
      } else if (c == ')' || c == '}' || c == ']') {
        --depth;
      } else if (c == ';' && depth == 0) {
        break;
      }
    }
    rest.remove_prefix(std::min(at + 2, rest.size()));
  }
  return found;
}

EnumLabels labelsOf(const vrntType_t* type) {
  EnumLabels labels;
  const std::vector<bool> fields = constructorsWithFields(type);
  for (std::uint32_t i = 0; i < fields.size(); ++i) {
    labels.names.emplace_back(vrntTypeConstructorName(type, i));
    std::string json;
    if (fields[i]) json += "{ ";
    appendJsonString(json, labels.names.back());
    if (fields[i]) json += ": [] }";
    labels.json.push_back(std::move(json));
  }
  return labels;
}

// The extents of an array, the slowest one first; all elements in one dimension where the extents
// do not multiply to the number of elements.
std::vector<std::uint64_t> extentsOf(const vrntType_t* type) {
  const std::uint64_t count = elementCount(type);
  std::int32_t shape[4] = {1, 1, 1, 1};
  vrntTypeArrayShape(type, shape);
  const std::uint32_t rank = vrntTypeArrayDimension(type);
  std::vector<std::uint64_t> extents;
  std::uint64_t product = 1;
  for (std::uint32_t d = rank; d-- > 0;) {
    if (shape[d] <= 0) return {0};
    extents.push_back(static_cast<std::uint64_t>(shape[d]));
    if (product > count) return {count};
    product *= extents.back();
  }
  if (product != count) return {count};
  return extents;
}

}  // namespace

// Goes through a type without recursion, since types may nest as deeply as a document is long.
class TreeBuilder {
 public:
  explicit TreeBuilder(TypeTree& tree) : tree_(tree) {}

  void run(const vrntType_t* type) {
    add(type, 0);
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next != top.count) {
        child(top);
      } else {
        close();
      }
    }
    if (references_) {
      tree_.references_ = std::make_unique<TypePlan>(tree_.type(), TypePlan::Numbers::Bare);
    }
  }

 private:
  struct Open {
    std::uint32_t node;
    const vrntType_t* type;
    std::uint32_t next;
    std::uint32_t count;
    std::uint32_t dimensions;  // of an array: how many nodes there are to close
  };

  void child(Open& top) {
    vrntValueView_t part{};
    if (isStruct(top.type)) {
      vrntValueStructField(&part, top.type, top.next);
      const char* const label = vrntTypeFieldLabel(top.type, top.next);
      ++top.next;
      const auto node = static_cast<std::uint32_t>(tree_.nodes_.size());
      add(part.type, part.offset);
      tree_.nodes_[node].key = static_cast<std::uint32_t>(tree_.keys_.size());
      tree_.nodes_[node].keyLength = static_cast<std::uint32_t>(std::strlen(label));
      tree_.keys_ += '"';
      tree_.keys_ += label;
      tree_.keys_ += "\": ";
    } else {
      constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
      vrntValueArrayElement(&part, top.type, kFirst);
      ++top.next;
      add(part.type, 0);
    }
  }

  void close() {
    const Open done = open_.back();
    open_.pop_back();
    const auto end = static_cast<std::uint32_t>(tree_.nodes_.size());
    for (std::uint32_t d = 0; d < done.dimensions; ++d) {
      TypeNode& node = tree_.nodes_[done.node - d];
      node.end = end;
      // The nodes of the parts follow; those of an array say whether it is flat.
      node.isFlat = node.part == Part::Array && tree_.nodes_[done.node + 1].isFlat;
    }
  }

  TypeNode& append(Part part, const vrntType_t* type, std::uint64_t offset) {
    TypeNode node;
    node.part = part;
    node.type = type;
    node.offset = offset;
    node.size = type != nullptr ? vrntTypeSize(type) : 0;
    node.end = static_cast<std::uint32_t>(tree_.nodes_.size() + 1);
    tree_.nodes_.push_back(node);
    return tree_.nodes_.back();
  }

  void add(const vrntType_t* type, std::uint64_t offset) {
    if (isStruct(type)) {
      TypeNode& node = append(Part::Struct, type, offset);
      node.children = vrntTypeFieldCount(type);
      node.isFlat = false;
      open_.push_back(
          {static_cast<std::uint32_t>(tree_.nodes_.size() - 1), type, 0, node.children, 1});
      return;
    }
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_BASE:
        number(type, offset);
        return;
      case VRNT_DESCRIPTOR_ENUM: {
        TypeNode& node = append(Part::Enum, type, offset);
        node.laneSize = 4;
        node.labels = static_cast<std::uint32_t>(tree_.enums_.size());
        // The same enum often stands in several fields.
        for (std::uint32_t i = 0; i < enumTypes_.size(); ++i) {
          if (enumTypes_[i] == type) {
            node.labels = i;
            return;
          }
        }
        tree_.enums_.push_back(labelsOf(type));
        if (enumTypes_.size() < kKnownEnums) enumTypes_.push_back(type);
        return;
      }
      case VRNT_DESCRIPTOR_ARRAY:
        array(type, offset);
        return;
      case VRNT_DESCRIPTOR_REFERENCE: {
        const vrnt::UniqueType target(vrntTypeReferencedType(type));  // lives as long as `type`
        TypeNode& node = append(Part::Reference, type, offset);
        node.target = target.get();
        node.isFlat = false;
        references_ = true;
        return;
      }
      default:
        append(Part::Function, type, offset).isFlat = false;
        references_ = true;
    }
  }

  void number(const vrntType_t* type, std::uint64_t offset) {
    const std::uint32_t family = vrntTypeBasetype(type);
    const Part part = family == VRNT_BASETYPE_BOOL   ? Part::Bool
                      : family == VRNT_BASETYPE_INT  ? Part::Int
                      : family == VRNT_BASETYPE_CHAR ? Part::Char
                      : family == VRNT_BASETYPE_HALF ? Part::Half
                                                     : Part::Float;
    TypeNode& node = append(part, type, offset);
    node.lanes = static_cast<std::uint8_t>(vrntTypeVectorDimension(type));
    node.laneSize = part == Part::Char ? 1 : part == Part::Half ? 2 : 4;
    node.size = std::uint64_t{node.lanes} * node.laneSize;
  }

  void array(const vrntType_t* type, std::uint64_t offset) {
    constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
    const std::uint64_t bytes = vrntTypeSize(type);
    if (bytes == 0) {
      append(Part::Array, type, offset);  // holds nothing, however many elements it has
      return;
    }
    vrntValueView_t element{};
    vrntValueArrayElement(&element, type, kFirst);
    const std::vector<std::uint64_t> extents = extentsOf(type);
    std::uint64_t stride = bytes;
    for (std::size_t d = 0; d < extents.size(); ++d) {
      TypeNode& node = append(Part::Array, d == 0 ? type : nullptr, d == 0 ? offset : 0);
      node.size = stride;
      node.count = extents[d];
      stride /= extents[d];
      node.stride = stride;
    }
    open_.push_back({static_cast<std::uint32_t>(tree_.nodes_.size() - 1), type, 0, 1,
                     static_cast<std::uint32_t>(extents.size())});
  }

  static constexpr std::size_t kKnownEnums = 16;

  TypeTree& tree_;
  std::vector<Open> open_;
  std::vector<const vrntType_t*> enumTypes_;
  bool references_ = false;
};

std::optional<std::uint32_t> EnumLabels::code(std::string_view label) const {
  constexpr std::size_t kFew = 16;
  if (names.size() <= kFew) {
    for (std::uint32_t i = 0; i < names.size(); ++i) {
      if (names[i] == label) return i;
    }
    return std::nullopt;
  }
  if (codes_.empty()) {
    for (std::uint32_t i = 0; i < names.size(); ++i) codes_.emplace(names[i], i);
  }
  const auto found = codes_.find(label);
  if (found == codes_.end()) return std::nullopt;
  return found->second;
}

TypeTree::TypeTree(const vrntType_t* type) : type_(vrntTypeCopy(type)), size_(vrntTypeSize(type)) {
  TreeBuilder(*this).run(type);
}

std::uint32_t TypeTree::field(std::uint32_t structNode, std::string_view label) const {
  auto known = fields_.find(structNode);
  if (known == fields_.end()) {
    std::unordered_map<std::string_view, std::uint32_t> fields;
    std::uint32_t child = structNode + 1;
    for (std::uint32_t i = 0; i < nodes_[structNode].children; ++i) {
      fields.emplace(this->label(nodes_[child]), child);
      child = nodes_[child].end;
    }
    known = fields_.emplace(structNode, std::move(fields)).first;
  }
  const auto found = known->second.find(label);
  return found != known->second.end() ? found->second : 0;
}

std::shared_ptr<const TypeTree> TypeTrees::of(const vrntType_t* type) {
  const auto known = trees_.find(type);
  if (known != trees_.end()) return known->second;
  auto tree = std::make_shared<const TypeTree>(type);
  nodes_ += tree->nodes().size();
  if (nodes_ > kMostNodes) {
    trees_.clear();
    nodes_ = tree->nodes().size();
  }
  trees_.emplace(type, tree);
  return tree;
}

}  // namespace vrtk
