// The parts of a type in the order of a document: what the writer and the reader of values go
// through, without recursion and without asking the library for each value again.
#ifndef VORNATH_TOOLKIT_JSON_TYPE_TREE_HPP
#define VORNATH_TOOLKIT_JSON_TYPE_TREE_HPP

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "check/type_plan.hpp"
#include "vornath_data/handles.hpp"

namespace vrtk {

enum class Part : std::uint8_t {
  Struct,
  Array,  ///< of one dimension; an array of several is an array of arrays, the slowest one first
  Bool,
  Int,
  Char,
  Half,
  Float,
  Enum,
  Reference,
  Function  ///< two reference words
};

/// The choices of an enum.
struct EnumLabels {
  std::vector<std::string> names;
  std::vector<std::string> json;  ///< as they stand in a document

  /// Returns the code of a label, or nothing.
  std::optional<std::uint32_t> code(std::string_view label) const;

 private:
  mutable std::unordered_map<std::string_view, std::uint32_t> codes_;  // of an enum of many
};

struct TypeNode {
  Part part;
  std::uint8_t lanes = 1;       ///< of a vector
  std::uint8_t laneSize = 0;    ///< bytes of a number; 4 for an enum
  bool isFlat = true;           ///< numbers alone, which stand on one line
  std::uint32_t end = 0;        ///< the node behind the last part of this one
  std::uint32_t children = 0;   ///< the fields of a struct
  std::uint32_t labels = 0;     ///< of an enum: an index in TypeTree::enums
  std::uint64_t offset = 0;     ///< bytes from the start of the block, or of the array's element
  std::uint64_t size = 0;       ///< bytes, without the padding behind a vector
  std::uint64_t count = 0;      ///< the elements of an array
  std::uint64_t stride = 0;     ///< bytes from one element of an array to the next
  std::uint32_t key = 0;        ///< of a field: where its label starts in TypeTree::keys
  std::uint32_t keyLength = 0;  ///< of the label alone
  const vrntType_t* type = nullptr;    ///< null for an inner dimension of an array
  const vrntType_t* target = nullptr;  ///< of a reference: the declared type; null for `void*`
};

class TypeTree {
 public:
  /// Keeps a reference on the type. Throws std::bad_alloc.
  explicit TypeTree(const vrntType_t* type);

  const vrntType_t* type() const { return type_.get(); }
  std::uint64_t size() const { return size_; }
  const std::vector<TypeNode>& nodes() const { return nodes_; }
  const TypeNode& node(std::uint32_t index) const { return nodes_[index]; }
  const EnumLabels& labels(const TypeNode& node) const { return enums_[node.labels]; }
  /// Returns the label of a field.
  std::string_view label(const TypeNode& node) const {
    return {keys_.data() + node.key + 1, node.keyLength};
  }
  /// Returns the label of a field as it stands in a document, with the colon and a blank.
  std::string_view keyText(const TypeNode& node) const {
    return {keys_.data() + node.key, node.keyLength + 4};
  }
  bool hasReferences() const { return references_ != nullptr; }
  /// The places of the references in a block. Only if there are any.
  const TypePlan& references() const { return *references_; }

  /// Returns the field of a struct with the label, or 0 if there is none.
  std::uint32_t field(std::uint32_t structNode, std::string_view label) const;

 private:
  friend class TreeBuilder;

  vrnt::UniqueType type_;
  std::uint64_t size_;
  std::vector<TypeNode> nodes_;
  std::vector<EnumLabels> enums_;
  std::string keys_;
  std::unique_ptr<TypePlan> references_;
  // The fields by their labels, of the structs that were asked for.
  mutable std::unordered_map<std::uint32_t, std::unordered_map<std::string_view, std::uint32_t>>
      fields_;
};

/// Keeps the trees of types that are needed again and again. It forgets all of them when they have
/// become many, so that it needs no more memory for many types.
class TypeTrees {
 public:
  std::shared_ptr<const TypeTree> of(const vrntType_t* type);

 private:
  static constexpr std::size_t kMostNodes = std::size_t{1} << 18;

  std::unordered_map<const vrntType_t*, std::shared_ptr<const TypeTree>> trees_;
  std::size_t nodes_ = 0;
};

}  // namespace vrtk

#endif
