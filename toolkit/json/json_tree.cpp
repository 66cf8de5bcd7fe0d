#include "json/json_tree.hpp"

#include <charconv>
#include <unordered_map>

#include "json/text.hpp"

namespace vrtk {
namespace {

// Numbers are equal if they are as doubles, and if whole numbers are beyond these, as texts.
bool sameNumber(std::string_view a, std::string_view b) {
  if (a == b) return true;
  const auto isWhole = [](std::string_view text) {
    return text.find_first_of(".eE") == std::string_view::npos;
  };
  if (isWhole(a) && isWhole(b)) {
    return (a == "0" || a == "-0") && (b == "0" || b == "-0");
  }
  double left = 0;
  double right = 0;
  const auto readA = std::from_chars(a.data(), a.data() + a.size(), left);
  const auto readB = std::from_chars(b.data(), b.data() + b.size(), right);
  return readA.ec == std::errc() && readB.ec == std::errc() && left == right;
}

}  // namespace

TreeNode::Child* TreeNode::member(std::string_view key) {
  for (Child& child : children) {
    if (child.key == key) return &child;
  }
  return nullptr;
}

TreeNode* JsonTree::fromTape(const Tape& tape, std::uint32_t json) {
  struct Open {
    TreeNode* node;
    std::uint32_t end;
  };
  std::vector<Open> open;
  TreeNode* root = nullptr;
  std::string_view key;
  for (std::uint32_t i = json; i < tape[json].next; ++i) {
    while (!open.empty() && i >= open.back().end) open.pop_back();
    const JsonNode& from = tape[i];
    if (from.token == Token::Key) {
      key = from.view();
      continue;
    }
    TreeNode* const node = make(from.token);
    if (from.token == Token::String || from.token == Token::Number) node->text = from.view();
    if (open.empty()) {
      root = node;
    } else {
      open.back().node->children.push_back({key, node});
    }
    if (from.token == Token::Object || from.token == Token::Array)
      open.push_back({node, from.next});
  }
  return root;
}

TreeNode* JsonTree::copy(const TreeNode* node) {
  struct Open {
    const TreeNode* from;
    TreeNode* to;
  };
  const auto alone = [this](const TreeNode* from) {
    TreeNode* const to = make(from->token);
    to->text = from->text;
    return to;
  };
  TreeNode* const root = alone(node);
  std::vector<Open> open{{node, root}};
  while (!open.empty()) {
    const Open top = open.back();
    open.pop_back();
    for (const TreeNode::Child& child : top.from->children) {
      TreeNode* const to = alone(child.node);
      top.to->children.push_back({child.key, to});
      open.push_back({child.node, to});
    }
  }
  return root;
}

void appendTree(std::string& out, const TreeNode* node) {
  struct Open {
    const TreeNode* node;
    std::size_t next;
  };
  std::vector<Open> open;
  const auto start = [&](const TreeNode* each) {
    switch (each->token) {
      case Token::Null:
        out += "null";
        return;
      case Token::False:
        out += "false";
        return;
      case Token::True:
        out += "true";
        return;
      case Token::Number:
        out += each->text;
        return;
      case Token::Object:
        out += '{';
        break;
      case Token::Array:
        out += '[';
        break;
      default:
        appendJsonString(out, each->text);
        return;
    }
    open.push_back({each, 0});
  };
  start(node);
  while (!open.empty()) {
    Open& top = open.back();
    const bool isObject = top.node->token == Token::Object;
    if (top.next == top.node->children.size()) {
      out += isObject ? '}' : ']';
      open.pop_back();
      continue;
    }
    if (top.next != 0) out += ',';
    const TreeNode::Child& child = top.node->children[top.next++];
    if (isObject) {
      appendJsonString(out, child.key);
      out += ':';
    }
    start(child.node);
  }
}

bool sameTree(const TreeNode* a, const TreeNode* b) {
  struct Pair {
    const TreeNode* a;
    const TreeNode* b;
  };
  std::vector<Pair> open{{a, b}};
  while (!open.empty()) {
    const Pair top = open.back();
    open.pop_back();
    if (top.a->token != top.b->token) return false;
    if (top.a->token == Token::Number && !sameNumber(top.a->text, top.b->text)) return false;
    if (top.a->token == Token::String && top.a->text != top.b->text) return false;
    if (top.a->children.size() != top.b->children.size()) return false;
    if (top.a->token == Token::Array) {
      for (std::size_t i = 0; i < top.a->children.size(); ++i) {
        open.push_back({top.a->children[i].node, top.b->children[i].node});
      }
    } else if (top.a->token == Token::Object) {
      std::unordered_map<std::string_view, const TreeNode*> members;
      for (const TreeNode::Child& child : top.b->children) members.emplace(child.key, child.node);
      for (const TreeNode::Child& child : top.a->children) {
        const auto other = members.find(child.key);
        if (other == members.end()) return false;
        open.push_back({child.node, other->second});
      }
    }
  }
  return true;
}

}  // namespace vrtk
