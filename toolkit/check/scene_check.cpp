#include "check/scene_check.hpp"

#include <fmt/format.h>

#include <cstring>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "check/file_layout.hpp"
#include "check/rules.hpp"
#include "check/value_check.hpp"
#include "foundation/failure.hpp"
#include "vornath_data/scene.hpp"

namespace vrtk {
namespace {

std::string addressOf(const ClassLayout& layout, std::int32_t index) {
  return fmt::format("{}/{}", layout.name, index);
}

// The start of an address.
class PathPlace final : public Place {
 public:
  PathPlace(std::string path, const vrntType_t* type) : path_(std::move(path)), type_(type) {}
  std::string address(std::uint64_t offset) const override {
    std::string out = path_;
    appendPath(out, type_, offset);
    return out;
  }

 private:
  std::string path_;
  const vrntType_t* type_;
};

// What keeps an object from being written, or nothing.
struct Obstacle {
  Code code;
  std::string message;
};

std::optional<Obstacle> obstacleOf(const vrdmScene_t* scene, const ClassLayout& layout,
                                   std::int32_t index) {
  if (layout.hasValue) {
    const vrnt::UniqueValue value(vrdmGetInstanceValue(scene, layout.objectClass, index));
    if (!value) return Obstacle{Code::VALUE_MISSING, "the object has no value; it needs one"};
  }
  if (layout.asset == nullptr) return std::nullopt;
  char record[kLargestAssetRecord] = {};
  AssetStorage* const* const handle = vrdmGetAssetStorage(scene, layout.objectClass, index, record);
  std::optional<Obstacle> found;
  const AssetContent content = layout.asset->inspect(record, [&](const RecordFinding& finding) {
    if (severityOf(finding.code) == VRTK_ERROR) found = {finding.code, finding.message};
  });
  if (found) return found;
  if ((*handle)->size < content.bytes) {
    return Obstacle{Code::ASSET_TOO_SHORT,
                    fmt::format("the record asks for {} bytes, but the asset has {}", content.bytes,
                                (*handle)->size)};
  }
  return std::nullopt;
}

class SceneCheck {
 public:
  SceneCheck(const vrdmScene_t* scene, vrtkReport& report)
      : scene_(scene), report_(report), live_(vrdmObjectTypeCount()) {}

  void run() {
    const vrnt::data::Scene& scene = *scene_;
    std::memcpy(report_.info.id, scene.id.begin(), sizeof(report_.info.id));
    report_.info.version = headerLayout().version;
    for (std::uint32_t c = 0; c < live_.size(); ++c) findLive(c);
    const GroupsLayout groups(VRDM_CLASS_SCENE_DATA);
    for (std::uint32_t i = 0; i < groups.groups.size(); ++i) {
      const vrnt::UniqueValue value(vrdmGetSceneDataValue(scene_, i));
      group("scene", groups.groups[i], value.get());
    }
    for (std::uint32_t c = 0; c < live_.size(); ++c) section(c);
  }

 private:
  void findLive(std::uint32_t objectClass) {
    const std::uint32_t slots = vrdmContainerSize(scene_, objectClass);
    report_.classes[objectClass].slots = slots;
    for (std::uint32_t i = 0; i < slots; ++i) {
      const bool live = vrdmValid(scene_, objectClass, static_cast<std::int32_t>(i));
      live_[objectClass].add(live);
      if (live) ++report_.classes[objectClass].live;
    }
  }

  void add(Code code, const std::string& address, const std::string& message) {
    report_.add(code, VRTK_NO_OFFSET, [&] { return std::pair(address, message); });
  }

  void group(const std::string& owner, const GroupLayout& layout, const vrntValue_t* value) {
    const PathPlace place(owner + "/" + layout.name, layout.plan.type());
    applyRules(layout.plan, static_cast<const char*>(vrntValueData(value)),
               {report_, place, VRTK_NO_OFFSET, live_[VRDM_CLASS_TEXTURE], layout.defaultBytes()});
  }

  void section(std::uint32_t objectClass) {
    const ClassLayout layout(objectClass);
    const GroupsLayout groups(objectClass);
    for (std::uint32_t i = 0; i < live_[objectClass].slots(); ++i) {
      if (!live_[objectClass].has(i)) continue;
      const auto index = static_cast<std::int32_t>(i);
      const std::string address = addressOf(layout, index);
      if (layout.kind == VRDM_KIND_PROGRAM) {
        if (*vrdmGetProgramSource(scene_, objectClass, index) == '\0') {
          add(Code::PROGRAM_EMPTY, address + "/text", "the program has no text; expected a source");
        }
        continue;
      }
      if (layout.asset != nullptr) {
        asset(layout, index, address);
        continue;
      }
      for (const auto* slots : {&layout.singles, &layout.lists}) {
        for (const SlotLayout& slot : *slots) references(layout, index, address, slot);
      }
      for (std::uint32_t g = 0; g < groups.groups.size(); ++g) {
        const vrnt::UniqueValue value(vrdmGetDataValue(scene_, objectClass, index, g));
        group(address + "/groups", groups.groups[g], value.get());
      }
      if (!layout.hasValue) continue;
      const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, objectClass, index));
      if (value) {
        blocks(value.get(), address + "/value/data");
      } else {
        add(Code::VALUE_MISSING, address + "/value", "the object has no value; it needs one");
      }
    }
  }

  void asset(const ClassLayout& layout, std::int32_t index, const std::string& address) {
    char record[kLargestAssetRecord] = {};
    const AssetStorage* const storage =
        *vrdmGetAssetStorage(scene_, layout.objectClass, index, record);
    const AssetContent content = layout.asset->inspect(record, [&](const RecordFinding& finding) {
      add(finding.code, address + "/desc/" + finding.member, finding.message);
    });
    if (!content.valid) return;
    report_.info.assetBytes += content.bytes;
    if (storage->size < content.bytes) {
      add(Code::ASSET_TOO_SHORT, address + "/bytes", obstacleOf(scene_, layout, index)->message);
      return;
    }
    IndexCheck indices(content.indexLimit);
    indices.add(static_cast<const char*>(storage->data), content.indices);
    if (indices.wrong() != 0) {
      add(Code::MESH_INDEX_OUT_OF_RANGE, address + "/bytes", indices.message());
    }
  }

  void references(const ClassLayout& layout, std::int32_t index, const std::string& address,
                  const SlotLayout& slot) {
    const auto look = [&](std::int32_t word, std::int64_t element) {
      const auto finding = checkSlotWord(slot.info, word, live_);
      if (!finding) return;
      std::string path = address + "/slots/" + slot.info.name;
      if (element >= 0) path += '/' + std::to_string(element);
      add(finding->code, path, finding->message);
    };
    const std::int32_t word = vrdmGetReference(scene_, layout.objectClass, index, slot.slot);
    if (!isList(slot.info)) {
      look(word, -1);
      return;
    }
    const std::int32_t* const list =
        vrdmGetReferenceList(scene_, layout.objectClass, index, slot.slot);
    for (std::int32_t i = 0; i < word; ++i) look(list[i], i);
  }

  // Looks at a value and at all that it refers to, each block once, without recursion.
  void blocks(const vrntValue_t* value, const std::string& address) {
    struct Open {
      const char* data;
      const vrntType_t* type;
      std::string path;
      const vrntType_t* target;
    };
    std::vector<Open> open{
        {static_cast<const char*>(vrntValueData(value)), vrntValueType(value), address, nullptr}};
    std::unordered_set<const char*> seen{open.back().data};
    while (!open.empty()) {
      const Open block = std::move(open.back());
      open.pop_back();
      const TypePlan& plan = planOf(block.type);
      ++report_.info.valueBlocks;
      report_.info.valueBytes += plan.size();
      if (block.target != nullptr && vrntTypeIsSubType(block.type, block.target) == 0) {
        add(Code::VALUE_REFERENCE_TYPE, block.path,
            fmt::format("found a block of the type {}; the reference is to {}",
                        vrntTypeString(block.type), vrntTypeString(block.target)));
      }
      const PathPlace place(block.path, block.type);
      applyRules(plan, block.data, {report_, place, VRTK_NO_OFFSET, live_[VRDM_CLASS_TEXTURE]});
      for (std::uint64_t i = 0; i < plan.references(); ++i) {
        const ReferencePlace reference = plan.reference(i);
        std::uint64_t word = 0;
        std::memcpy(&word, block.data + reference.offset, sizeof(word));
        if (word == 0) continue;
        if ((word & 1U) != 0) {
          add(Code::VALUE_FOREIGN_ADDRESS, place.address(reference.offset),
              fmt::format("found the address 0x{:x} of this process; it means nothing in another "
                          "one",
                          word >> 1U));
          continue;
        }
        const auto* const data =
            reinterpret_cast<const char*>(word);  // NOLINT(performance-no-int-to-ptr)
        if (!seen.insert(data).second) continue;
        const auto* const target = reinterpret_cast<const vrntValue_t*>(data - sizeof(vrntValue_t));
        open.push_back(
            {data, vrntValueType(target), pathOf(place, reference.offset), reference.target});
      }
    }
  }

  // A path that nobody can read is cut.
  static std::string pathOf(const PathPlace& place, std::uint64_t offset) {
    constexpr std::size_t kLongest = 2000;
    std::string path = place.address(offset);
    if (path.size() <= kLongest) return path + "/to";
    path.resize(kLongest);
    return path + "/...";
  }

  // The values of a scene keep their types alive.
  const TypePlan& planOf(const vrntType_t* type) {
    const auto known = plans_.find(type);
    if (known != plans_.end()) return known->second;
    return plans_.emplace(type, TypePlan(type, TypePlan::Numbers::Bare)).first->second;
  }

  const vrdmScene_t* scene_;
  vrtkReport& report_;
  AllLiveSlots live_;
  std::unordered_map<const vrntType_t*, TypePlan> plans_;
};

}  // namespace

void checkScene(const vrdmScene_t* scene, vrtkReport& report) {
  SceneCheck(scene, report).run();
  report.finish();
}

void requireWritable(const vrdmScene_t* scene, const char* target) {
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    const ClassLayout layout(c);
    if (!layout.hasValue && layout.asset == nullptr) continue;
    const std::uint32_t slots = vrdmContainerSize(scene, c);
    for (std::uint32_t i = 0; i < slots; ++i) {
      const auto index = static_cast<std::int32_t>(i);
      if (!vrdmValid(scene, c, index)) continue;
      if (const auto obstacle = obstacleOf(scene, layout, index)) {
        throw Failure(VRTK_SCENE_INCOMPLETE,
                      fmt::format("{}: {} cannot be written: {}; nothing was written", target,
                                  addressOf(layout, index), obstacle->message));
      }
    }
  }
}

}  // namespace vrtk
