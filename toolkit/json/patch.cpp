// Applying JSON patches (RFC 6902) to scenes.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/failure.hpp"
#include "foundation/sha256.hpp"
#include "json/json_tree.hpp"
#include "json/scene_reader.hpp"
#include "json/scene_writer.hpp"
#include "scene/address.hpp"

namespace vrtk {
namespace {

// The document of a scene as a tree, in which an object is written when a path leads into it.
class SceneTree {
 public:
  explicit SceneTree(const vrdmScene_t* scene) : scene_(scene) {
    root_ = expandText([](SceneWriter& writer) { writer.head(); });
    TreeNode* const objects = tree_.make(Token::Object);
    root_->children.push_back({"objects", objects});
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
      const std::uint32_t slots = vrdmContainerSize(scene, c);
      if (slots == 0) continue;
      TreeNode* const array = tree_.make(Token::Array);
      objects->children.push_back({vrdmObjectName(c), array});
      array->children.reserve(slots);
      for (std::uint32_t i = 0; i < slots; ++i) {
        TreeNode* const node = tree_.make(Token::Null);
        node->isObjectOfScene = true;
        node->objectClass = c;
        node->index = static_cast<std::int32_t>(i);
        array->children.push_back({{}, node});
      }
    }
  }

  TreeNode*& root() { return root_; }
  JsonTree& tree() { return tree_; }
  Catalogue& catalogue() { return catalogue_; }

  /// Writes an object that only stands for itself.
  void expand(TreeNode* node) {
    if (!node->isObjectOfScene) return;
    const TreeNode* const made = expandText(
        [node](SceneWriter& writer) { writer.object(node->objectClass, node->index, 0); });
    *node = *made;
  }

  /// Writes all objects in a part of the document.
  void expandAll(TreeNode* node) {
    std::vector<TreeNode*> open{node};
    while (!open.empty()) {
      TreeNode* const top = open.back();
      open.pop_back();
      if (top->isObjectOfScene) {
        expand(top);
        continue;
      }
      for (const TreeNode::Child& child : top->children) open.push_back(child.node);
    }
  }

 private:
  template <typename Write>
  TreeNode* expandText(Write&& write) {
    std::string text;
    Output out([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
    WriteOptions options;
    options.full = true;
    SceneWriter writer(scene_, out, options, catalogue_);
    write(writer);
    out.flush();
    const std::string_view kept = tree_.keep(std::move(text));
    Tape& tape = tree_.tape();
    if (const auto fault = readTape(kept, tape)) {
      throw Failure(VRTK_INTERNAL_ERROR, "the form of the scene is no JSON: " + fault->message);
    }
    return tree_.fromTape(tape, 0);
  }

  const vrdmScene_t* scene_;
  Catalogue catalogue_;
  JsonTree tree_;
  TreeNode* root_ = nullptr;
};

// An operation that cannot be applied.
struct OperationFailed {
  std::uint32_t json;  // what is wrong: a node of the patch
  std::string words;
};

class Patcher {
 public:
  Patcher(SceneTree& scene, const Tape& patch) : scene_(scene), patch_(patch) {}

  void apply(std::uint32_t operation) {
    const std::string_view op = patch_[*patch_.member(operation, "op")].view();
    path_ = *patch_.member(operation, "path");
    if (op == "test") {
      TreeNode* const found = at(path_);
      scene_.expandAll(found);
      const std::uint32_t value = *patch_.member(operation, "value");
      if (!sameTree(found, scene_.tree().fromTape(patch_, value))) {
        std::string has;
        appendTree(has, found);
        throw OperationFailed{value,
                              fmt::format("the test fails: the scene has {}",
                                          has.size() > 200 ? has.substr(0, 200) + "..." : has)};
      }
    } else if (op == "remove") {
      remove(path_);
    } else if (op == "add") {
      add(path_, scene_.tree().fromTape(patch_, *patch_.member(operation, "value")));
    } else if (op == "replace") {
      place(path_) = scene_.tree().fromTape(patch_, *patch_.member(operation, "value"));
    } else {
      const std::uint32_t from = *patch_.member(operation, "from");
      TreeNode* const found = at(from);
      scene_.expandAll(found);
      if (op == "copy") {
        add(path_, scene_.tree().copy(found));
        return;
      }
      const std::string_view inside = patch_[path_].view();
      const std::string_view outside = patch_[from].view();
      if (inside.size() > outside.size() && inside.substr(0, outside.size()) == outside &&
          inside[outside.size()] == '/') {
        throw OperationFailed{path_, "a value cannot be moved into itself"};
      }
      remove(from);
      add(path_, found);
    }
  }

 private:
  std::vector<std::string> namesOf(std::uint32_t pointer) const {
    const std::string_view text = patch_[pointer].view();
    if (text.empty()) return {};
    if (text.front() != '/') {
      throw OperationFailed{pointer, "a path is empty or starts with a slash"};
    }
    return splitPath(text.substr(1));
  }

  static std::optional<std::size_t> indexOf(const std::string& name) {
    std::size_t index = 0;
    const auto read = std::from_chars(name.data(), name.data() + name.size(), index);
    if (read.ec != std::errc() || read.ptr != name.data() + name.size() ||
        (name.size() > 1 && name.front() == '0')) {
      return std::nullopt;
    }
    return index;
  }

  // The place of a child, or null.
  static TreeNode** child(TreeNode* node, const std::string& name) {
    if (node->token == Token::Object) {
      TreeNode::Child* const found = node->member(name);
      return found != nullptr ? &found->node : nullptr;
    }
    if (node->token == Token::Array) {
      const auto index = indexOf(name);
      return index && *index < node->children.size() ? &node->children[*index].node : nullptr;
    }
    return nullptr;
  }

  // Follows all names but the last `left`.
  TreeNode** follow(std::uint32_t pointer, const std::vector<std::string>& names,
                    std::size_t left) {
    TreeNode** found = &scene_.root();
    for (std::size_t i = 0; i + left < names.size(); ++i) {
      scene_.expand(*found);
      TreeNode** const next = child(*found, names[i]);
      if (next == nullptr) missing(pointer, *found, names[i]);
      found = next;
    }
    if (left != 0) scene_.expand(*found);
    return found;
  }

  [[noreturn]] static void missing(std::uint32_t pointer, TreeNode* node, const std::string& name) {
    if (node->token == Token::Array) {
      throw OperationFailed{pointer, fmt::format("the path leads nowhere: there is no element {} "
                                                 "among {}",
                                                 quoted(name), node->children.size())};
    }
    std::vector<std::string_view> names;
    for (const TreeNode::Child& each : node->children) names.push_back(each.key);
    throw OperationFailed{pointer, fmt::format("the path leads nowhere: there is no {}{}",
                                               quoted(name), suggestion(name, names))};
  }

  TreeNode*& place(std::uint32_t pointer) { return *follow(pointer, namesOf(pointer), 0); }
  TreeNode* at(std::uint32_t pointer) { return place(pointer); }

  void remove(std::uint32_t pointer) {
    const std::vector<std::string> names = namesOf(pointer);
    if (names.empty()) throw OperationFailed{pointer, "the whole document cannot be removed"};
    TreeNode* const parent = *follow(pointer, names, 1);
    TreeNode** const found = child(parent, names.back());
    if (found == nullptr) missing(pointer, parent, names.back());
    const auto which =
        std::find_if(parent->children.begin(), parent->children.end(),
                     [found](const TreeNode::Child& each) { return &each.node == found; });
    parent->children.erase(which);
  }

  void add(std::uint32_t pointer, TreeNode* value) {
    const std::vector<std::string> names = namesOf(pointer);
    if (names.empty()) {
      scene_.root() = value;
      return;
    }
    TreeNode* const parent = *follow(pointer, names, 1);
    const std::string& name = names.back();
    if (parent->token == Token::Object) {
      if (TreeNode::Child* const known = parent->member(name)) {
        known->node = value;
      } else {
        parent->children.push_back({scene_.tree().keep(name), value});
      }
      return;
    }
    if (parent->token != Token::Array) missing(pointer, parent, name);
    const auto index = name == "-" ? parent->children.size() : indexOf(name);
    if (!index || *index > parent->children.size()) missing(pointer, parent, name);
    parent->children.insert(parent->children.begin() + static_cast<std::ptrdiff_t>(*index),
                            {{}, value});
  }

  SceneTree& scene_;
  const Tape& patch_;
  std::uint32_t path_ = 0;
};

// Looks whether a document is a patch.
void checkPatch(const Tape& patch, Problems& problems) {
  if (patch[0].token != Token::Array) {
    problems.add(
        ProblemCode::WrongKind, patch[0].offset,
        fmt::format("found {}; a patch is an array of operations", foundWords(patch[0].token)));
    return;
  }
  for (std::uint32_t i = 1; i < patch.size(); i = patch[i].next) {
    if (patch[i].token != Token::Object) {
      problems.add(ProblemCode::WrongKind, patch[i].offset,
                   fmt::format("found {}; an operation is an object with \"op\" and \"path\"",
                               foundWords(patch[i].token)));
      continue;
    }
    const auto text = [&](std::string_view key) {
      const auto found = patch.member(i, key);
      if (!found) {
        problems.add(ProblemCode::MissingKey, patch[i].offset,
                     fmt::format("the operation needs the member \"{}\"", key));
      } else if (patch[*found].token != Token::String) {
        problems.add(ProblemCode::WrongKind, patch[*found].offset,
                     fmt::format("found {}; expected a string", foundWords(patch[*found].token)));
      } else {
        return found;
      }
      return std::optional<std::uint32_t>();
    };
    const auto op = text("op");
    text("path");
    if (!op) continue;
    const std::string_view name = patch[*op].view();
    if (name == "move" || name == "copy") {
      text("from");
    } else if (name == "add" || name == "replace" || name == "test") {
      if (!patch.member(i, "value")) {
        problems.add(ProblemCode::MissingKey, patch[i].offset,
                     "the operation needs the member \"value\"");
      }
    } else if (name != "remove") {
      problems.add(
          ProblemCode::Patch, patch[*op].offset,
          fmt::format("there is no operation {}{}", quoted(name),
                      suggestion(name, {"add", "remove", "replace", "move", "copy", "test"})));
    }
  }
}

// Finds assets by the digests of their bytes.
class AssetFinder {
 public:
  explicit AssetFinder(const vrdmScene_t* scene) : scene_(scene) {}

  AssetStorage* find(const std::string& digest) {
    if (digest.empty()) return nullptr;
    if (!known_) learn();
    const auto found = storages_.find(digest);
    return found != storages_.end() ? vrdmAssetStorageRetain(found->second) : nullptr;
  }

 private:
  void learn() {
    for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
      if (vrdmObjectClass(c) != VRDM_KIND_ASSET) continue;
      for (std::uint32_t i = 0; i < vrdmContainerSize(scene_, c); ++i) {
        const auto index = static_cast<std::int32_t>(i);
        if (!vrdmValid(scene_, c, index)) continue;
        AssetStorage* const storage = *vrdmGetAssetStorage(scene_, c, index, nullptr);
        storages_.emplace(sha256Hex(storage->data, static_cast<std::size_t>(storage->size)),
                          storage);
      }
    }
    known_ = true;
  }

  const vrdmScene_t* scene_;
  bool known_ = false;
  std::map<std::string, AssetStorage*> storages_;
};

// Builds a scene from the document that a patch has made.
class PatchedScene {
 public:
  PatchedScene(const vrdmScene_t* source, SceneTree& tree, const ReadOptions& options,
               vrtkJsonReport& report)
      : source_(source), tree_(tree), options_(options), report_(report) {}

  /// Returns null if something is wrong with the document, which the report then tells.
  vrnt::UniqueScene build() {
    std::vector<TreeNode*> arrays(vrdmObjectTypeCount());
    const std::string head = headText(arrays);
    Problems problems(kMostProblems);
    vrnt::UniqueScene scene = buildScene(head, options_, UINT64_MAX, problems);
    tell(problems, head, "");
    if (!scene) return nullptr;
    std::vector<std::uint32_t> sizes;
    sizes.reserve(arrays.size());
    for (const TreeNode* array : arrays) {
      sizes.push_back(array != nullptr ? static_cast<std::uint32_t>(array->children.size()) : 0);
    }
    Budget budget(UINT64_MAX);
    const Tape none;
    Problems noProblems(1);
    ObjectReader untouched(scene.get(), none, noProblems, budget, tree_.catalogue(), options_);
    for (std::uint32_t c = 0; c < arrays.size() && !report_.truncated; ++c) {
      for (std::uint32_t i = 0; i < sizes[c] && !report_.truncated; ++i) {
        TreeNode* const node = arrays[c]->children[i].node;
        if (node->isObjectOfScene && node->objectClass == c) {
          untouched.addCopy(c, source_, node->index);
        } else if (tree_.expandAll(node); node->token == Token::Null) {
          untouched.addFree(c);
        } else {
          add(scene.get(), c, i, node, sizes);
        }
      }
    }
    untouched.finish();
    return report_.kept.empty() ? std::move(scene) : nullptr;
  }

 private:
  static constexpr std::uint64_t kMostProblems = 20;

  // The text of the document without its objects, and the arrays of the classes.
  std::string headText(std::vector<TreeNode*>& arrays) {
    TreeNode* const root = tree_.root();
    TreeNode::Child* const objects =
        root->token == Token::Object ? root->member("objects") : nullptr;
    std::string text;
    if (objects == nullptr || objects->node->token != Token::Object) {
      tree_.expandAll(root);
      appendTree(text, root);
      return text;
    }
    TreeNode* const given = objects->node;
    TreeNode* const classes = tree_.tree().make(Token::Object);
    for (const TreeNode::Child& each : given->children) {
      tree_.expand(each.node);
      const bool isArray = each.node->token == Token::Array;
      if (!isArray) tree_.expandAll(each.node);
      for (std::uint32_t c = 0; isArray && c < arrays.size(); ++c) {
        if (each.key == vrdmObjectName(c)) arrays[c] = each.node;
      }
      classes->children.push_back(
          {each.key, isArray ? tree_.tree().make(Token::Array) : each.node});
    }
    objects->node = classes;
    appendTree(text, root);
    objects->node = given;
    return text;
  }

  void add(vrdmScene_t* scene, std::uint32_t objectClass, std::uint32_t index, const TreeNode* node,
           const std::vector<std::uint32_t>& sizes) {
    std::string text;
    appendTree(text, node);
    Tape tape;
    if (const auto fault = readTape(text, tape)) {
      throw Failure(VRTK_INTERNAL_ERROR, "the form is no JSON: " + fault->message);
    }
    Problems problems(kMostProblems);
    Budget budget(UINT64_MAX);
    try {
      ObjectReader reader(scene, tape, problems, budget, tree_.catalogue(), options_);
      reader.expect(sizes);
      reader.add(objectClass, 0);
    } catch (const EnoughProblems&) {
    }
    tell(problems, text, fmt::format("/objects/{}/{}", vrdmObjectName(objectClass), index));
  }

  // Takes problems over with their pointers in the whole document.
  void tell(const Problems& problems, std::string_view document, const std::string& prefix) {
    if (problems.none()) return;
    const auto found = reportOf(problems, document);
    for (const vrtkJsonReport::Kept& kept : found->kept) {
      addMessage(report_, kept.code, prefix + kept.pointer, kept.words);
    }
    report_.truncated =
        report_.truncated || found->truncated || report_.kept.size() >= kMostProblems;
  }

  const vrdmScene_t* source_;
  SceneTree& tree_;
  const ReadOptions& options_;
  vrtkJsonReport& report_;
};

[[noreturn]] void fail(std::uint32_t status, std::unique_ptr<vrtkJsonReport> made,
                       vrtkJsonReport** report) {
  Failure failure(status, errorWords(*made));
  if (report != nullptr) *report = made.release();
  throw std::move(failure);
}

void patch(const vrdmScene_t* scene, std::string_view text, const vrtkSetOptions& options,
           vrdmScene_t** newScene, vrtkJsonReport** report) {
  Tape tape;
  Problems problems(20);
  try {
    if (const auto fault = readTape(text, tape)) {
      problems.add(ProblemCode::Syntax, fault->offset, fault->message);
    } else {
      checkPatch(tape, problems);
    }
  } catch (const EnoughProblems&) {
  }
  if (!problems.none()) fail(VRTK_JSON_INVALID, reportOf(problems, text), report);
  SceneTree tree(scene);
  Patcher patcher(tree, tape);
  try {
    for (std::uint32_t i = 1; i < tape.size(); i = tape[i].next) patcher.apply(i);
  } catch (const OperationFailed& failed) {
    problems.add(ProblemCode::Patch, tape[failed.json].offset, failed.words);
    fail(VRTK_PATCH_FAILED, reportOf(problems, text), report);
  }
  AssetFinder finder(scene);
  ReadOptions read;
  read.enforceLimits = options.enforceLimits != 0;
  if (options.assetFolder != nullptr) read.assetFolder = options.assetFolder;
  read.findBytes = [&finder](const std::string& digest, std::uint64_t /*size*/) {
    return finder.find(digest);
  };
  auto made = std::make_unique<vrtkJsonReport>();
  vrnt::UniqueScene patched = PatchedScene(scene, tree, read, *made).build();
  if (!patched) fail(VRTK_JSON_INVALID, std::move(made), report);
  *newScene = patched.release();
}

vrtkSetOptions optionsOf(const vrtkSetOptions* given) {
  vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;
  if (given != nullptr) {
    const auto size = std::min<std::uint64_t>(given->structSize, sizeof(options));
    std::memcpy(&options, given, static_cast<std::size_t>(size));
  }
  return options;
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkScenePatch(const vrdmScene_t* scene, const char* patchJson, std::uint64_t size,
                             const vrtkSetOptions* options, vrdmScene_t** newScene,
                             vrtkJsonReport** report, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkScenePatch", "scene");
    if (size != 0) vrtk::requireArgument(patchJson, "vrtkScenePatch", "patchJson");
    vrtk::requireArgument(newScene, "vrtkScenePatch", "newScene");
    vrtk::patch(scene, {patchJson != nullptr ? patchJson : "", static_cast<std::size_t>(size)},
                vrtk::optionsOf(options), newScene, report);
  });
}
