// Patches (RFC 6902) from the full JSON form of one scene to that of another. Objects are compared
// one by one, and only those that differ are written as JSON, so that the documents are never there
// as a whole.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "diff/diff.hpp"
#include "foundation/failure.hpp"
#include "json/scene_writer.hpp"
#include "json/text.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"

namespace vrtk {
namespace {

using vrnt::data::ClassInfo;
using vrnt::data::Scene;

// A part of a document that the toolkit wrote. Its text is borrowed from the document.
struct Member;
struct Node {
  enum class Kind { Object, Array, Scalar } kind = Kind::Scalar;
  std::string_view text;
  std::vector<Member> members;
};
struct Member {
  std::string_view key;  // empty in an array
  Node node;
};

// Reads what the toolkit itself wrote, so nothing is checked.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  Node read() { return node(0); }

 private:
  // Deeper parts, which only values have, are taken as they stand.
  static constexpr int kDeepest = 200;

  void blanks() {
    while (at_ < text_.size() && (text_[at_] == ' ' || text_[at_] == '\n')) ++at_;
  }

  void skipString() {
    for (++at_; text_[at_] != '"'; ++at_) {
      if (text_[at_] == '\\') ++at_;
    }
    ++at_;
  }

  void skip() {
    std::size_t open = 0;
    do {
      const char c = text_[at_];
      if (c == '"') {
        skipString();
        continue;
      }
      if (c == '{' || c == '[') ++open;
      if (c == '}' || c == ']') --open;
      ++at_;
    } while (open != 0);
  }

  Node node(int depth) {
    blanks();
    Node node;
    const std::size_t start = at_;
    const char first = text_[at_];
    if (first == '"') {
      skipString();
    } else if (first != '{' && first != '[') {
      while (at_ < text_.size() && std::strchr(",]} \n", text_[at_]) == nullptr) ++at_;
    } else if (depth == kDeepest) {
      skip();
    } else {
      node.kind = first == '{' ? Node::Kind::Object : Node::Kind::Array;
      ++at_;
      for (blanks(); text_[at_] != '}' && text_[at_] != ']'; blanks()) {
        std::string_view key;
        if (node.kind == Node::Kind::Object) {
          const std::size_t keyStart = at_ + 1;
          skipString();
          key = text_.substr(keyStart, at_ - 1 - keyStart);
          ++at_;  // the colon
        }
        node.members.push_back({key, this->node(depth + 1)});
        blanks();
        if (text_[at_] == ',') ++at_;
      }
      ++at_;
    }
    node.text = text_.substr(start, at_ - start);
    return node;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

// Groups are compared as bytes: the same text in a document needs the same bits.
bool sameBytes(const void* a, const void* b, std::size_t size) {
  return std::memcmp(a, b, size) == 0;
}

// The text on one line.
std::string compact(std::string_view text) {
  std::string out;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      out += c;
      if (c == '\\') out += text[++i];
      inString = c != '"';
      continue;
    }
    if (c == ' ' || c == '\n') continue;
    inString = c == '"';
    out += c;
    if (c == ',' || c == ':') out += ' ';
  }
  return out;
}

bool isFloat(std::string_view text) {
  return text.front() != '"' && text.find_first_of(".eE") != std::string_view::npos &&
         text.find_first_not_of("+-0123456789.eE") == std::string_view::npos;
}

class ScenePatch {
 public:
  ScenePatch(const Scene& a, const Scene& b, const vrtkDiffOptions& options)
      : a_(a), b_(b), tolerance_(options) {
    vrnt::data::forEachClass([this](auto tag) {
      using Desc = typename decltype(tag)::Desc;
      otherSizes_ |= a_.container<Desc>().size() != b_.container<Desc>().size();
    });
  }

  std::string run() {
    if (a_.id != b_.id) operation("replace", "/id", '"' + idText(b_.id.begin()) + '"');
    if (!sameBytes(&a_.data, &b_.data, sizeof(a_.data))) {
      const auto write = [](SceneWriter& writer) { writer.sceneGroups(0); };
      compareTexts("/scene", written(a_, AssetBytes::Digest, write),
                   written(b_, AssetBytes::Digest, write));
    }
    vrnt::data::forEachClass([this](auto tag) { objects<typename decltype(tag)::Desc>(); });
    return operations_.empty() ? "[]\n" : "[" + operations_ + "\n]\n";
  }

 private:
  void operation(std::string_view name, std::string_view path, std::string_view value = {}) {
    operations_ += operations_.empty() ? "\n" : ",\n";
    operations_ += fmt::format("  {{ \"op\": \"{}\", \"path\": \"{}\"", name, path);
    if (!value.empty()) {
      operations_ += ", \"value\": ";
      operations_ += compact(value);
    }
    operations_ += " }";
  }

  template <typename Write>
  std::string written(const Scene& scene, AssetBytes assets, Write&& write) {
    std::string text;
    Output out([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
    WriteOptions options;
    options.full = true;
    options.assets = assets;
    SceneWriter writer(&scene, out, options, catalogue_);
    write(writer);
    out.flush();
    return text;
  }

  std::string object(const Scene& scene, std::uint32_t objectClass, std::uint32_t index,
                     AssetBytes assets) {
    return written(scene, assets, [&](SceneWriter& writer) {
      writer.object(objectClass, static_cast<std::int32_t>(index), 0);
    });
  }

  template <typename Desc>
  void objects() {
    constexpr auto kClass = static_cast<std::uint32_t>(ClassInfo<Desc>::kClass);
    const auto& a = a_.container<Desc>();
    const auto& b = b_.container<Desc>();
    const std::string path = std::string("/objects/") + ClassInfo<Desc>::kName;
    // A class without slots is left out of the form.
    if (a.size() == 0 || b.size() == 0) {
      if (a.size() == b.size()) return;
      if (b.size() == 0) return operation("remove", path);
      return operation("add", path, written(b_, AssetBytes::Inline, [](SceneWriter& writer) {
                         writer.objectsOfClass(kClass, 0);
                       }));
    }
    for (std::uint32_t i = 0; i < a.size() && i < b.size(); ++i) {
      const bool inA = a.slots[i].live();
      const bool inB = b.slots[i].live();
      if (!inA && !inB) continue;
      if (inA && inB && same(a.slots[i], b.slots[i])) continue;
      const std::string place = fmt::format("{}/{}", path, i);
      if (inA && inB) {
        compareObjects(kClass, i, place);
      } else {
        operation("replace", place, object(b_, kClass, i, AssetBytes::Inline));
      }
    }
    for (std::uint32_t i = a.size(); i < b.size(); ++i) {
      operation("add", fmt::format("{}/{}", path, i), object(b_, kClass, i, AssetBytes::Inline));
    }
    // From the end, so that the numbers of those before stay.
    for (std::uint32_t i = a.size(); i > b.size(); --i) {
      operation("remove", fmt::format("{}/{}", path, i - 1));
    }
  }

  // These return true only for objects that are the same text. They need not find all that are.

  template <typename Source>
  bool same(const vrnt::data::Program<Source>& a, const vrnt::data::Program<Source>& b) {
    return std::strcmp(a.source(), b.source()) == 0;
  }

  template <typename Desc>
  bool same(const vrnt::data::Asset<Desc>& a, const vrnt::data::Asset<Desc>& b) {
    const AssetStorage* const first = a.storage.get();
    const AssetStorage* const second = b.storage.get();
    return a.id == b.id && std::memcmp(&a.desc, &b.desc, sizeof(Desc)) == 0 &&
           first->size == second->size &&
           (first->data == second->data ||
            std::memcmp(first->data, second->data, static_cast<std::size_t>(first->size)) == 0);
  }

  template <typename Desc>
  bool same(const vrnt::data::Instance<Desc>& a, const vrnt::data::Instance<Desc>& b) {
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      if (!sameBytes(&a.desc.groups, &b.desc.groups, sizeof(a.desc.groups))) return false;
    }
    bool equal = true;
    vrnt::data::forEachSlot<Desc>([&](const auto& slot, auto position) {
      const vrdmReferenceInfo info =
          vrdmReferenceType(static_cast<std::uint32_t>(ClassInfo<Desc>::kClass),
                            static_cast<std::uint32_t>(decltype(position)::value));
      equal = equal && sameWords(a.desc.*slot.member, b.desc.*slot.member, info);
    });
    if (!equal) return false;
    if constexpr (ClassInfo<Desc>::kHasValue) {
      const vrntValue_t* const left = a.value.get();
      const vrntValue_t* const right = b.value.get();
      if (left == right) return true;
      if (left == nullptr || right == nullptr) return false;
      const vrntType_t* const type = vrntValueType(left);
      return type == vrntValueType(right) && !hasReferences(type) &&
             std::memcmp(vrntValueData(left), vrntValueData(right),
                         static_cast<std::size_t>(vrntTypeSize(type))) == 0;
    }
    return true;
  }

  template <typename T>
  bool sameWords(const vrnt::Ref<T>& a, const vrnt::Ref<T>& b, const vrdmReferenceInfo& slot) {
    return a.index == b.index && sameTarget(slot, a.index);
  }
  template <typename List>
  bool sameWords(const List& a, const List& b, const vrdmReferenceInfo& slot) {
    return a.words == b.words &&
           std::all_of(a.words.begin(), a.words.end(),
                       [&](std::int32_t word) { return sameTarget(slot, word); });
  }

  // A word that leads beyond the slots of its class has another text.
  bool sameTarget(const vrdmReferenceInfo& slot, std::int32_t word) {
    return !otherSizes_ || targetOf(&a_, slot, word).kind == targetOf(&b_, slot, word).kind;
  }

  bool hasReferences(const vrntType_t* type) { return trees_.of(type)->hasReferences(); }

  void compareObjects(std::uint32_t objectClass, std::uint32_t index, const std::string& path) {
    const std::string a = object(a_, objectClass, index, AssetBytes::Digest);
    const std::string b = object(b_, objectClass, index, AssetBytes::Digest);
    if (a == b) return;
    bytesClass_ = vrdmObjectClass(objectClass) == VRDM_KIND_ASSET ? objectClass : kNoClass;
    bytesIndex_ = index;
    bytesPath_ = path + "/bytes";
    compareTexts(path, a, b);
    bytesClass_ = kNoClass;
  }

  void compareTexts(const std::string& path, const std::string& a, const std::string& b) {
    std::string place = path;
    compare(place, Reader(a).read(), Reader(b).read());
  }

  // Leaves `path` as it was.
  void compare(std::string& path, const Node& a, const Node& b) {
    if (a.text == b.text) return;
    if (bytesClass_ != kNoClass && path == bytesPath_) {
      const std::string whole = object(b_, bytesClass_, bytesIndex_, AssetBytes::Inline);
      for (const auto& [key, member] : Reader(whole).read().members) {
        if (key == "bytes") operation("replace", path, member.text);
      }
      return;
    }
    if (a.kind != b.kind || a.kind == Node::Kind::Scalar) {
      if (!equalScalars(a, b)) operation("replace", path, b.text);
    } else if (a.kind == Node::Kind::Object) {
      compareMembers(path, a, b);
    } else {
      compareElements(path, a, b);
    }
  }

  bool equalScalars(const Node& a, const Node& b) const {
    if (tolerance_.isExact() || a.kind != b.kind || !isFloat(a.text) || !isFloat(b.text)) {
      return false;
    }
    double left = 0;
    double right = 0;
    std::from_chars(a.text.data(), a.text.data() + a.text.size(), left);
    std::from_chars(b.text.data(), b.text.data() + b.text.size(), right);
    return tolerance_.equal(left, right);
  }

  // Appends a step to a path for the time of a call.
  template <typename Call>
  void at(std::string& path, std::string_view step, Call&& call) {
    const std::size_t length = path.size();
    path += '/';
    for (const char c : step) {
      if (c == '~') {
        path += "~0";
      } else if (c == '/') {
        path += "~1";
      } else {
        path += c;
      }
    }
    call();
    path.resize(length);
  }

  void compareMembers(std::string& path, const Node& a, const Node& b) {
    std::unordered_map<std::string_view, const Node*> inB;
    for (const auto& [key, member] : b.members) inB.emplace(key, &member);
    for (const auto& [key, member] : a.members) {
      const auto found = inB.find(key);
      at(path, key, [&, &member = member] {
        if (found == inB.end()) {
          operation("remove", path);
        } else {
          compare(path, member, *found->second);
        }
      });
      if (found != inB.end()) inB.erase(found);
    }
    for (const auto& [key, member] : b.members) {
      if (inB.find(key) == inB.end()) continue;
      at(path, key, [&, &member = member] { operation("add", path, member.text); });
    }
  }

  void compareElements(std::string& path, const Node& a, const Node& b) {
    const std::size_t both = std::min(a.members.size(), b.members.size());
    for (std::size_t i = 0; i < both; ++i) {
      at(path, std::to_string(i), [&] { compare(path, a.members[i].node, b.members[i].node); });
    }
    for (std::size_t i = both; i < b.members.size(); ++i) {
      at(path, std::to_string(i), [&] { operation("add", path, b.members[i].node.text); });
    }
    for (std::size_t i = a.members.size(); i > both; --i) {
      at(path, std::to_string(i - 1), [&] { operation("remove", path); });
    }
  }

  static constexpr std::uint32_t kNoClass = UINT32_MAX;

  const Scene& a_;
  const Scene& b_;
  Tolerance tolerance_;
  bool otherSizes_ = false;
  Catalogue catalogue_;
  TypeTrees trees_;
  std::string operations_;
  // The asset whose objects are compared, if they are assets.
  std::uint32_t bytesClass_ = kNoClass;
  std::uint32_t bytesIndex_ = 0;
  std::string bytesPath_;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneDiffPatch(const vrdmScene_t* a, const vrdmScene_t* b,
                                 const vrtkDiffOptions* options, char** json, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(a, "vrtkSceneDiffPatch", "a");
    vrtk::requireArgument(b, "vrtkSceneDiffPatch", "b");
    vrtk::requireArgument(json, "vrtkSceneDiffPatch", "json");
    const vrtkDiffOptions chosen = vrtk::diffOptionsOf(options, "vrtkSceneDiffPatch");
    *json = vrtk::copyString(vrtk::ScenePatch(*a, *b, chosen).run());
  });
}
