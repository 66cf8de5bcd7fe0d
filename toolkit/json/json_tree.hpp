// JSON documents that are changed: trees of nodes that an arena owns. Nothing here is recursive, so
// that a document may nest as deeply as it is long.
#ifndef VORNATH_TOOLKIT_JSON_JSON_TREE_HPP
#define VORNATH_TOOLKIT_JSON_JSON_TREE_HPP

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "json/tape.hpp"

namespace vrtk {

struct TreeNode {
  struct Child {
    std::string_view key;  ///< of a member
    TreeNode* node;
  };

  Token token = Token::Null;
  bool isObjectOfScene = false;   ///< stands for an object that has not been written yet
  std::uint32_t objectClass = 0;  ///< of such an object
  std::int32_t index = 0;
  std::string_view text;  ///< of a string or a number
  std::vector<Child> children;

  Child* member(std::string_view key);
};

class JsonTree {
 public:
  TreeNode* make(Token token) {
    nodes_.emplace_back().token = token;
    return &nodes_.back();
  }
  /// Copies a part of a tape, whose texts must live as long as the tree.
  TreeNode* fromTape(const Tape& tape, std::uint32_t json);
  TreeNode* copy(const TreeNode* node);
  std::string_view keep(std::string text) { return texts_.emplace_back(std::move(text)); }
  /// A tape that lives as long as the tree.
  Tape& tape() { return tapes_.emplace_back(); }

 private:
  std::deque<TreeNode> nodes_;
  std::deque<std::string> texts_;
  std::deque<Tape> tapes_;
};

/// Appends the text of a tree, on one line.
void appendTree(std::string& out, const TreeNode* node);

/// Returns whether two trees are equal: members in any order, numbers by what they stand for.
bool sameTree(const TreeNode* a, const TreeNode* b);

}  // namespace vrtk

#endif
