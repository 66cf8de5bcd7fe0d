#include "diff/scene_diff.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "diff/value_diff.hpp"
#include "foundation/sha256.hpp"
#include "json/base64.hpp"
#include "json/scene_writer.hpp"
#include "json/text.hpp"
#include "scene/objects.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"

namespace vrtk {
namespace {

using vrnt::data::ClassInfo;
using vrnt::data::Scene;

template <typename Desc>
constexpr std::uint32_t kNumber = static_cast<std::uint32_t>(ClassInfo<Desc>::kClass);

std::string jsonText(std::string_view text) {
  std::string json;
  appendJsonString(json, text);
  return json;
}

// The text of a program, as the JSON form has it.
std::string programText(std::string_view text) {
  if (isUtf8(text)) return jsonText(text);
  std::string encoded((text.size() + 2) / 3 * 4, '\0');
  writeBase64(encoded.data(), text.data(), text.size());
  return "{ \"base64\": \"" + encoded + "\" }";
}

std::string slotText(const Scene& scene, const vrdmReferenceInfo& slot, std::int32_t word) {
  const Target target = targetOf(&scene, slot, word);
  switch (target.kind) {
    case Target::Kind::None:
      return "null";
    case Target::Kind::Word:
      return fmt::format("{{ \"word\": {} }}", word);
    case Target::Kind::Object:
      break;
  }
  if (target.side == nullptr) return std::to_string(target.index);
  return fmt::format("{{ \"{}\": {} }}", target.side, target.index);
}

class SceneDiff {
 public:
  SceneDiff(const Scene& a, const Scene& b, const vrtkDiffOptions& options, vrtkDiff& diff)
      : a_(a), b_(b), includeIds_(options.includeIds != 0), diff_(diff), values_(options, diff) {}

  void run() {
    id("id", a_.id, b_.id);
    groups(catalogue_.of(VRDM_CLASS_SCENE_DATA), reinterpret_cast<const char*>(&a_.data),
           reinterpret_cast<const char*>(&b_.data), [] { return std::string("scene"); });
    vrnt::data::forEachClass([this](auto tag) { objects<typename decltype(tag)::Desc>(); });
  }

 private:
  void add(const std::string& address, std::uint32_t kind) {
    if (diff_.found()) diff_.add(address, kind, std::nullopt, std::nullopt);
  }

  void id(const std::string& address, const vrnt::UniqueId& a, const vrnt::UniqueId& b) {
    if (!includeIds_ || a == b || !diff_.found()) return;
    diff_.add(address, VRTK_DIFF_CHANGED, jsonText(idText(a.begin())), jsonText(idText(b.begin())));
  }

  template <typename Desc>
  void objects() {
    const auto& a = a_.container<Desc>();
    const auto& b = b_.container<Desc>();
    const std::uint32_t most = std::max(a.size(), b.size());
    for (std::uint32_t i = 0; i < most; ++i) {
      const bool inA = i < a.size() && a.slots[i].live();
      const bool inB = i < b.size() && b.slots[i].live();
      if (inA && inB) {
        compare(a.slots[i], b.slots[i], i);
      } else if (inA || inB) {
        add(address<Desc>(i), inA ? VRTK_DIFF_REMOVED : VRTK_DIFF_ADDED);
      }
    }
    if (a.size() == b.size()) return;
    // If the last slot is live, the object in it was reported.
    const auto& longer = a.size() > b.size() ? a : b;
    if (longer.slots[most - 1].live() || !diff_.found()) return;
    diff_.add(ClassInfo<Desc>::kName, VRTK_DIFF_CHANGED, std::to_string(a.size()),
              std::to_string(b.size()));
  }

  template <typename Desc>
  static std::string address(std::uint32_t index) {
    return fmt::format("{}/{}", ClassInfo<Desc>::kName, index);
  }

  template <typename Source>
  void compare(const vrnt::data::Program<Source>& a, const vrnt::data::Program<Source>& b,
               std::uint32_t index) {
    if (std::strcmp(a.source(), b.source()) == 0 || !diff_.found()) return;
    diff_.add(address<Source>(index) + "/text", VRTK_DIFF_CHANGED, programText(a.source()),
              programText(b.source()));
  }

  template <typename Desc>
  void compare(const vrnt::data::Asset<Desc>& a, const vrnt::data::Asset<Desc>& b,
               std::uint32_t index) {
    if (includeIds_ && a.id != b.id) id(address<Desc>(index) + "/id", a.id, b.id);
    if (std::memcmp(&a.desc, &b.desc, sizeof(Desc)) != 0) {
      record(kNumber<Desc>, &a.desc, &b.desc, address<Desc>(index) + "/desc/");
    }
    const AssetStorage* const first = a.storage.get();
    const AssetStorage* const second = b.storage.get();
    // What the record does not ask for is no content.
    const auto sizeA = std::min<std::uint64_t>(a.desc.size(), first->size);
    const auto sizeB = std::min<std::uint64_t>(b.desc.size(), second->size);
    if (sizeA == sizeB &&
        (first->data == second->data || std::memcmp(first->data, second->data, sizeA) == 0)) {
      return;
    }
    if (!diff_.found()) return;
    diff_.add(address<Desc>(index) + "/bytes", VRTK_DIFF_CHANGED,
              jsonText("sha256:" + sha256Hex(first->data, sizeA)),
              jsonText("sha256:" + sha256Hex(second->data, sizeB)));
  }

  void record(std::uint32_t objectClass, const void* a, const void* b, const std::string& address) {
    for (const RecordMember& member : recordMembers(objectClass)) {
      const auto textOf = [&member](const void* desc) {
        std::uint64_t word = 0;
        std::memcpy(&word, static_cast<const char*>(desc) + member.offset, member.size);
        const auto code = static_cast<std::int32_t>(word);
        const char* const name = member.nameOf != nullptr ? member.nameOf(code) : nullptr;
        if (name != nullptr) return jsonText(name);
        return member.isSigned ? std::to_string(code) : std::to_string(word);
      };
      const auto* const left = static_cast<const char*>(a) + member.offset;
      const auto* const right = static_cast<const char*>(b) + member.offset;
      if (std::memcmp(left, right, member.size) == 0 || !diff_.found()) continue;
      diff_.add(address + member.name, VRTK_DIFF_CHANGED, textOf(a), textOf(b));
    }
  }

  template <typename Desc>
  void compare(const vrnt::data::Instance<Desc>& a, const vrnt::data::Instance<Desc>& b,
               std::uint32_t index) {
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      const auto* const left = reinterpret_cast<const char*>(&a.desc.groups);
      const auto* const right = reinterpret_cast<const char*>(&b.desc.groups);
      if (std::memcmp(left, right, sizeof(a.desc.groups)) != 0) {
        groups(catalogue_.of(kNumber<Desc>), left, right,
               [&] { return address<Desc>(index) + "/groups"; });
      }
    }
    vrnt::data::forEachSlot<Desc>([&](const auto& slot, auto position) {
      references<Desc>(a.desc.*slot.member, b.desc.*slot.member, index,
                       static_cast<std::uint32_t>(decltype(position)::value));
    });
    if constexpr (ClassInfo<Desc>::kHasValue) {
      const vrntValue_t* const left = a.value.get();
      const vrntValue_t* const right = b.value.get();
      if (left != nullptr && right != nullptr) {
        values_.values(left, right, [&] { return address<Desc>(index) + "/value"; });
      } else if (left != right) {
        add(address<Desc>(index) + "/value", left != nullptr ? VRTK_DIFF_REMOVED : VRTK_DIFF_ADDED);
      }
    }
  }

  template <typename Prefix>
  void groups(const ClassDescription& description, const char* a, const char* b,
              const Prefix& prefix) {
    for (const GroupLayout& group : description.groups.groups) {
      values_.groups(group.type.get(), a + group.offset, b + group.offset,
                     [&] { return prefix() + "/" + group.name; });
    }
  }

  template <typename Desc, typename T>
  void references(const vrnt::Ref<T>& a, const vrnt::Ref<T>& b, std::uint32_t index,
                  std::uint32_t slot) {
    if (a.index == b.index || !diff_.found()) return;
    const vrdmReferenceInfo info = vrdmReferenceType(kNumber<Desc>, slot);
    diff_.add(address<Desc>(index) + "/slots/" + info.name, VRTK_DIFF_CHANGED,
              slotText(a_, info, a.index), slotText(b_, info, b.index));
  }

  template <typename Desc, typename List>
  void references(const List& a, const List& b, std::uint32_t index, std::uint32_t slot) {
    if (a.words == b.words) return;
    const vrdmReferenceInfo info = vrdmReferenceType(kNumber<Desc>, slot);
    const std::string prefix = address<Desc>(index) + "/slots/" + info.name + "/";
    const std::size_t most = std::max(a.words.size(), b.words.size());
    for (std::size_t i = 0; i < most; ++i) {
      std::optional<std::string> oldText;
      std::optional<std::string> newText;
      if (i < a.words.size()) oldText = slotText(a_, info, a.words[i]);
      if (i < b.words.size()) newText = slotText(b_, info, b.words[i]);
      const std::uint32_t kind = !oldText   ? VRTK_DIFF_ADDED
                                 : !newText ? VRTK_DIFF_REMOVED
                                            : VRTK_DIFF_CHANGED;
      if (kind == VRTK_DIFF_CHANGED && a.words[i] == b.words[i]) continue;
      if (diff_.found()) {
        diff_.add(prefix + std::to_string(i), kind, std::move(oldText), std::move(newText));
      }
    }
  }

  const Scene& a_;
  const Scene& b_;
  bool includeIds_;
  vrtkDiff& diff_;
  Catalogue catalogue_;
  ValueDiff values_;
};

}  // namespace

void compareScenes(const vrdmScene_t& a, const vrdmScene_t& b, const vrtkDiffOptions& options,
                   vrtkDiff& diff) {
  SceneDiff(a, b, options, diff).run();
}

}  // namespace vrtk
