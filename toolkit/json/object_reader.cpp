#include "json/object_reader.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "check/report.hpp"
#include "check/rules.hpp"
#include "file/sources.hpp"
#include "foundation/failure.hpp"
#include "foundation/sha256.hpp"
#include "json/base64.hpp"
#include "json/numbers.hpp"
#include "vornath_data/scene.hpp"

namespace vrtk {
namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

[[noreturn]] void raise(vrntValuesError_t* error) { vrnt::detail::raiseError(error); }

// Bytes that are filled in by the caller.
vrnt::UniqueAsset newStorage(std::uint64_t size) {
  void* const bytes = std::malloc(std::max<std::uint64_t>(size, 1));
  if (bytes == nullptr) throw std::bad_alloc();
  vrnt::UniqueAsset storage(vrdmAssetStorageWrap(bytes, size, std::free));
  if (!storage) {
    std::free(bytes);
    throw std::bad_alloc();
  }
  return storage;
}

// Whether a name of a file stays in the folder that it is named from.
bool staysInside(std::string_view name) {
  if (name.empty() || name.front() == '/') return false;
  while (!name.empty()) {
    const std::size_t slash = std::min(name.find('/'), name.size());
    if (name.substr(0, slash) == "..") return false;
    name.remove_prefix(std::min(slash + 1, name.size()));
  }
  return true;
}

std::vector<std::string_view> groupNames(const ClassDescription& description) {
  std::vector<std::string_view> names;
  for (const GroupLayout& group : description.groups.groups) names.emplace_back(group.name);
  return names;
}

// Where a finding about a group is: its path below the group.
class GroupPlace final : public Place {
 public:
  explicit GroupPlace(const vrntType_t* type) : type_(type) {}
  std::string address(std::uint64_t offset) const override {
    std::string out;
    appendPath(out, type_, offset);
    return out;
  }

 private:
  const vrntType_t* type_;
};

}  // namespace

std::optional<IdBytes> readId(std::string_view text) {
  constexpr std::size_t kLength = 36;
  if (text.size() != kLength) return std::nullopt;
  IdBytes id{};
  std::size_t digits = 0;
  for (std::size_t i = 0; i < kLength; ++i) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      if (text[i] != '-') return std::nullopt;
      continue;
    }
    const int digit = hexDigit(text[i]);
    if (digit < 0) return std::nullopt;
    auto& byte = id.bytes[digits++ / 2];
    byte = static_cast<unsigned char>(unsigned{byte} << 4U | static_cast<unsigned>(digit));
  }
  return id;
}

template <typename Change>
void ObjectReader::change(Change&& change, bool allocates) {
  if (!problems_.none()) return;
  if (!deferred_) {
    change();
    return;
  }
  (allocates ? firstChanges_ : changes_).emplace_back(std::forward<Change>(change));
}

void ObjectReader::apply() {
  // No class has two lists, so only the first change can lack memory.
  for (const auto& each : firstChanges_) each();
  for (const auto& each : changes_) each();
  firstChanges_.clear();
  changes_.clear();
}

bool ObjectReader::isObject(std::uint32_t json, const char* what) {
  if (tape_[json].token == Token::Object) return true;
  problems_.add(
      ProblemCode::WrongKind, tape_[json].offset,
      fmt::format("found {}; expected an object with {}", foundWords(tape_[json].token), what));
  return false;
}

bool ObjectReader::takeSlot(const ClassDescription& description, std::uint64_t offset) {
  if (budget_.take(description.layout.slotMemory)) return true;
  problems_.add(ProblemCode::TooLarge, offset,
                "the scene would take more memory than it may; raise the limit if that is "
                "intended");
  return false;
}

void ObjectReader::addFree(std::uint32_t objectClass) {
  std::int32_t index = -1;
  switch (vrdmObjectClass(objectClass)) {
    case VRDM_KIND_PROGRAM:
      index = static_cast<std::int32_t>(vrdmAddProgram(scene_, objectClass, ""));
      break;
    case VRDM_KIND_ASSET: {
      const char record[kLargestAssetRecord] = {};
      const vrnt::UniqueAsset storage = newStorage(0);
      AssetStorage* const handle = storage.get();
      index = static_cast<std::int32_t>(vrdmAddAsset(scene_, objectClass, record, &handle));
      break;
    }
    default:
      index = static_cast<std::int32_t>(vrdmCreateInstance(scene_, objectClass));
  }
  free_.push_back({objectClass, index});
}

void ObjectReader::add(std::uint32_t objectClass, std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(objectClass);
  if (!takeSlot(description, tape_[json].offset)) throw EnoughProblems();
  if (tape_[json].token == Token::Null) {
    addFree(objectClass);
    return;
  }
  switch (description.layout.kind) {
    case VRDM_KIND_PROGRAM:
      vrdmAddProgram(scene_, objectClass, readProgram(json).value_or("").c_str());
      return;
    case VRDM_KIND_ASSET: {
      auto read = readAsset(description, json);
      if (!read) {
        read.emplace();
        read->storage = newStorage(0);
      }
      AssetStorage* const storage = read->storage.get();
      const auto index =
          static_cast<std::int32_t>(vrdmAddAsset(scene_, objectClass, read->record, &storage));
      if (read->id) setId(objectClass, index, *read->id);
      return;
    }
    default:
      instance(objectClass, static_cast<std::int32_t>(vrdmCreateInstance(scene_, objectClass)),
               json, true);
  }
}

void ObjectReader::addCopy(std::uint32_t objectClass, const vrdmScene_t* source,
                           std::int32_t index) {
  if (!vrdmValid(source, objectClass, index)) {
    addFree(objectClass);
    return;
  }
  const ClassDescription& description = catalogue_.of(objectClass);
  switch (description.layout.kind) {
    case VRDM_KIND_PROGRAM:
      vrdmAddProgram(scene_, objectClass, vrdmGetProgramSource(source, objectClass, index));
      return;
    case VRDM_KIND_ASSET: {
      char record[kLargestAssetRecord] = {};
      AssetStorage* const* const storage = vrdmGetAssetStorage(source, objectClass, index, record);
      const auto added =
          static_cast<std::int32_t>(vrdmAddAsset(scene_, objectClass, record, storage));
      IdBytes id{};
      std::memcpy(id.bytes, vrdmGetUniqueId(source, objectClass, index)->begin(), sizeof(id.bytes));
      setId(objectClass, added, id);
      return;
    }
    default:
      break;
  }
  const auto added = static_cast<std::int32_t>(vrdmCreateInstance(scene_, objectClass));
  const char* const bytes = groupBytes(source, objectClass, index);
  for (std::uint32_t i = 0; i < description.trees.size(); ++i) {
    const char* const group = bytes + description.groups.groups[i].offset;
    if (std::memcmp(group, description.defaultsOf(i), description.trees[i]->size()) == 0) continue;
    vrdmSetDataValue(scene_, objectClass, added, i, writeGroup(description, i, group).get());
  }
  for (const SlotLayout& slot : description.slots) {
    const std::int32_t word = vrdmGetReference(source, objectClass, index, slot.slot);
    vrdmSetReference(scene_, objectClass, added, slot.slot, static_cast<std::uint32_t>(word));
    if (!isList(slot.info) || word == 0) continue;
    std::memcpy(vrdmModifyReferenceList(scene_, objectClass, added, slot.slot),
                vrdmGetReferenceList(source, objectClass, index, slot.slot),
                sizeof(std::int32_t) * static_cast<std::size_t>(word));
  }
  const vrnt::UniqueValue value(vrdmGetInstanceValue(source, objectClass, index));
  if (value) vrdmSetInstanceValue(scene_, objectClass, added, value.get());
}

void ObjectReader::missingObject(std::uint64_t offset, std::uint32_t objectClass,
                                 std::int32_t index, std::uint32_t slots) {
  const char* const name = vrdmObjectName(objectClass);
  problems_.add(ProblemCode::OutOfRange, offset,
                slots == 0
                    ? fmt::format("there is no {} {}: the scene has none", name, index)
                    : fmt::format("there is no {} {}; the last one is {}", name, index, slots - 1));
}

void ObjectReader::finish() {
  for (const Free& slot : free_) vrdmRemove(scene_, slot.objectClass, slot.index);
  free_.clear();
  for (const Pending& reference : pending_) {
    const std::uint32_t slots = vrdmContainerSize(scene_, reference.objectClass);
    if (static_cast<std::uint32_t>(reference.index) >= slots) {
      missingObject(reference.offset, reference.objectClass, reference.index, slots);
    }
  }
  pending_.clear();
}

void ObjectReader::sceneId(std::uint32_t json) {
  const auto id = tape_[json].token == Token::String ? readId(tape_[json].view()) : std::nullopt;
  if (!id) {
    problems_.add(ProblemCode::WrongKind, tape_[json].offset,
                  "expected an id such as \"883ff973-e105-4b5b-982a-4d2cb87d48ca\"");
    return;
  }
  change([this, given = *id] {
    std::memcpy(static_cast<void*>(&scene_->id), given.bytes, sizeof(given.bytes));
  });
}

void ObjectReader::setId(std::uint32_t objectClass, std::int32_t index, const IdBytes& id) {
  setAssetId(scene_, objectClass, index, id.bytes);
}

bool ObjectReader::readGroups(
    const ClassDescription& description, std::uint32_t json,
    const std::function<void(std::uint32_t group, std::uint32_t json)>& each) {
  if (!isObject(json, "groups")) return false;
  const auto& all = description.groups.groups;
  std::vector<bool> seen(all.size());
  std::size_t expected = 0;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const std::string_view key = tape_[i].view();
    std::size_t group = expected;
    if (group >= all.size() || all[group].name != key) {
      for (group = 0; group < all.size() && all[group].name != key; ++group) {
      }
    }
    if (group == all.size()) {
      problems_.add(ProblemCode::UnknownKey, tape_[i].offset,
                    fmt::format("there is no group {}{}", quoted(key),
                                suggestion(key, groupNames(description))));
      continue;
    }
    if (seen[group]) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the group {} is there twice", quoted(key)));
      continue;
    }
    seen[group] = true;
    expected = group + 1;
    each(static_cast<std::uint32_t>(group), i + 1);
  }
  return true;
}

// The value of the group stays the reader's, and is shared with changes that wait.
ObjectReader::GroupValue ObjectReader::writeGroup(const ClassDescription& description,
                                                  std::uint32_t group, const char* bytes) {
  const GroupLayout& layout = description.groups.groups[group];
  vrnt::UniqueValue& value = groupValues_[&layout];
  vrntValuesError_t* error = nullptr;
  if (!value) {
    value.reset(vrntValueCreate(layout.type.get(), &error));
    if (!value) raise(error);
  }
  vrntValue_t* written = value.release();
  vrntValueWrite(&written, 0, bytes, description.trees[group]->size(), &error);
  value.reset(written);
  if (error != nullptr) raise(error);
  return GroupValue(value.get());
}

// Reads a group that has `initial` where the document says nothing.
ObjectReader::GroupValue ObjectReader::readGroup(const ClassDescription& description,
                                                 std::uint32_t group, const char* initial,
                                                 std::uint32_t json, const char* before) {
  const TypeTree& tree = *description.trees[group];
  buffer_.assign(initial, initial + tree.size());
  values_.readPart(tree, 0, json, buffer_.data());
  if (options_.enforceLimits) requireLimits(description, group, json, before);
  return writeGroup(description, group, buffer_.data());
}

// Looks at the numbers that are others than before.
void ObjectReader::requireLimits(const ClassDescription& description, std::uint32_t group,
                                 std::uint32_t json, const char* before) {
  const GroupLayout& layout = description.groups.groups[group];
  const std::size_t size = buffer_.size();
  std::vector<char> changed(description.defaultsOf(group), description.defaultsOf(group) + size);
  for (std::size_t at = 0; at < size; at += 4) {
    const std::size_t count = std::min<std::size_t>(4, size - at);
    if (std::memcmp(&buffer_[at], before + at, count) == 0) continue;
    std::memcpy(&changed[at], &buffer_[at], count);
  }
  const vrtkLimits limits = VRTK_LIMITS_INIT;
  vrtkReport report(limits);
  const AllLiveSlots noSlots(vrdmObjectTypeCount());
  const GroupPlace place(layout.type.get());
  applyRules(layout.plan, changed.data(),
             {report, place, VRTK_NO_OFFSET, noSlots[VRDM_CLASS_TEXTURE], layout.defaultBytes()});
  report.finish();
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(&report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(&report, i);
    const std::string_view code = message->code;
    if (code != "FIELD_OUT_OF_LIMITS" && code != "NUMBER_NOT_FINITE") continue;
    std::string_view path = message->address;
    if (!path.empty()) path.remove_prefix(1);
    problems_.add(ProblemCode::Limit, tape_[json].offset,
                  fmt::format("{}: {}", path, message->message));
  }
}

void ObjectReader::sceneGroup(std::uint32_t group, std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(VRDM_CLASS_SCENE_DATA);
  const auto value = readGroup(description, group, description.defaultsOf(group), json,
                               sceneGroupBytes(scene_) + description.groups.groups[group].offset);
  change([this, group, value] { vrdmSetSceneDataValue(scene_, group, value.get()); });
}

void ObjectReader::sceneGroups(std::uint32_t json) {
  readGroups(catalogue_.of(VRDM_CLASS_SCENE_DATA), json,
             [this](std::uint32_t group, std::uint32_t node) { sceneGroup(group, node); });
}

void ObjectReader::allSceneGroups(std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(VRDM_CLASS_SCENE_DATA);
  std::vector<bool> given(description.trees.size());
  readGroups(description, json, [&](std::uint32_t group, std::uint32_t node) {
    given[group] = true;
    sceneGroup(group, node);
  });
  for (std::uint32_t i = 0; i < given.size(); ++i) {
    if (given[i]) continue;
    const auto value = writeGroup(description, i, description.defaultsOf(i));
    change([this, i, value] { vrdmSetSceneDataValue(scene_, i, value.get()); });
  }
}

void ObjectReader::group(std::uint32_t objectClass, std::int32_t index, std::uint32_t group,
                         std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(objectClass);
  const auto value =
      readGroup(description, group, description.defaultsOf(group), json,
                groupBytes(scene_, objectClass, index) + description.groups.groups[group].offset);
  change([this, objectClass, index, group, value] {
    vrdmSetDataValue(scene_, objectClass, index, group, value.get());
  });
}

void ObjectReader::resetGroup(std::uint32_t objectClass, std::int32_t index, std::uint32_t group) {
  const ClassDescription& description = catalogue_.of(objectClass);
  const auto value = writeGroup(description, group, description.defaultsOf(group));
  change([this, objectClass, index, group, value] {
    vrdmSetDataValue(scene_, objectClass, index, group, value.get());
  });
}

void ObjectReader::groups(std::uint32_t objectClass, std::int32_t index, std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(objectClass);
  std::vector<bool> given(description.trees.size());
  readGroups(description, json, [&](std::uint32_t group, std::uint32_t node) {
    given[group] = true;
    this->group(objectClass, index, group, node);
  });
  for (std::uint32_t i = 0; i < given.size(); ++i) {
    if (!given[i]) resetGroup(objectClass, index, i);
  }
}

namespace {

enum : std::uint32_t { kGroupsGiven = 1, kSlotsGiven = 2, kValueGiven = 4 };

}  // namespace

// Returns which members the document has.
std::uint32_t ObjectReader::instance(std::uint32_t objectClass, std::int32_t index,
                                     std::uint32_t json, bool isNew) {
  const ClassDescription& description = catalogue_.of(objectClass);
  const bool hasGroups = !description.trees.empty();
  const bool hasSlots = !description.slots.empty();
  const bool hasValue = description.layout.hasValue;
  if (!isObject(json, "\"groups\", \"slots\" or \"value\"")) return 0;
  std::uint32_t seen = 0;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const std::string_view key = tape_[i].view();
    std::uint32_t bit = 0;
    if (hasGroups && key == "groups") bit = kGroupsGiven;
    if (hasSlots && key == "slots") bit = kSlotsGiven;
    if (hasValue && key == "value") bit = kValueGiven;
    if (bit == 0) {
      std::vector<std::string_view> names;
      if (hasGroups) names.emplace_back("groups");
      if (hasSlots) names.emplace_back("slots");
      if (hasValue) names.emplace_back("value");
      problems_.add(ProblemCode::UnknownKey, tape_[i].offset,
                    fmt::format("a {} has no member {}{}", description.layout.name, quoted(key),
                                suggestion(key, names)));
      continue;
    }
    if ((seen & bit) != 0) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the member {} is there twice", quoted(key)));
      continue;
    }
    seen |= bit;
    if (bit == kValueGiven) {
      value(objectClass, index, i + 1);
    } else if (!isNew) {
      bit == kGroupsGiven ? groups(objectClass, index, i + 1) : allSlots(objectClass, index, i + 1);
    } else if (bit == kSlotsGiven) {
      slots(objectClass, index, i + 1);
    } else {
      readGroups(description, i + 1, [&](std::uint32_t group, std::uint32_t node) {
        // The bytes that a new object has, with its padding.
        const char* const bytes =
            groupBytes(scene_, objectClass, index) + description.groups.groups[group].offset;
        const auto read = readGroup(description, group, bytes, node, bytes);
        change([&] { vrdmSetDataValue(scene_, objectClass, index, group, read.get()); });
      });
    }
  }
  if (!hasValue || (seen & kValueGiven) != 0) return seen;
  if (!emptyValue_) {
    vrntValuesError_t* error = nullptr;
    emptyValue_.reset(vrntValueParse("{ }", &error));
    if (!emptyValue_) raise(error);
  }
  change([this, objectClass, index, empty = GroupValue(emptyValue_.get())] {
    vrdmSetInstanceValue(scene_, objectClass, index, empty.get());
  });
  return seen;
}

void ObjectReader::allOfInstance(std::uint32_t objectClass, std::int32_t index,
                                 std::uint32_t json) {
  const std::uint32_t seen = instance(objectClass, index, json, false);
  const auto groupCount = static_cast<std::uint32_t>(catalogue_.of(objectClass).trees.size());
  for (std::uint32_t i = 0; (seen & kGroupsGiven) == 0 && i < groupCount; ++i) {
    resetGroup(objectClass, index, i);
  }
  if ((seen & kSlotsGiven) == 0) resetSlots(objectClass, index, 0);
}

void ObjectReader::value(std::uint32_t objectClass, std::int32_t index, std::uint32_t json) {
  if (tape_[json].token == Token::Null) {
    // Only a new object has none; one that has a value cannot lose it.
    if (vrnt::UniqueValue(vrdmGetInstanceValue(scene_, objectClass, index))) {
      problems_.add(ProblemCode::WrongKind, tape_[json].offset,
                    "the object has a value, which can be replaced but not taken away");
    }
    return;
  }
  const vrnt::UniqueValue value = values_.readValue(json);
  if (!value) return;
  change([this, objectClass, index, read = GroupValue(value.get())] {
    vrdmSetInstanceValue(scene_, objectClass, index, read.get());
  });
}

// Returns a bit for each slot that the document has.
std::uint64_t ObjectReader::slots(std::uint32_t objectClass, std::int32_t index,
                                  std::uint32_t json) {
  const ClassDescription& description = catalogue_.of(objectClass);
  std::uint64_t seen = 0;
  if (!isObject(json, "reference slots")) return seen;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const std::string_view key = tape_[i].view();
    std::size_t number = 0;
    while (number < description.slots.size() && key != description.slots[number].info.name) {
      ++number;
    }
    if (number == description.slots.size()) {
      std::vector<std::string_view> names;
      for (const SlotLayout& slot : description.slots) names.emplace_back(slot.info.name);
      problems_.add(ProblemCode::UnknownKey, tape_[i].offset,
                    fmt::format("a {} has no slot {}{}", description.layout.name, quoted(key),
                                suggestion(key, names)));
      continue;
    }
    if ((seen >> number & 1U) != 0) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the slot {} is there twice", quoted(key)));
      continue;
    }
    seen |= std::uint64_t{1} << number;
    slot(objectClass, index, description.slots[number], i + 1);
  }
  return seen;
}

void ObjectReader::allSlots(std::uint32_t objectClass, std::int32_t index, std::uint32_t json) {
  resetSlots(objectClass, index, slots(objectClass, index, json));
}

void ObjectReader::resetSlots(std::uint32_t objectClass, std::int32_t index, std::uint64_t given) {
  const ClassDescription& description = catalogue_.of(objectClass);
  for (std::size_t i = 0; i < description.slots.size(); ++i) {
    if ((given >> i & 1U) != 0) continue;
    const SlotLayout& slot = description.slots[i];
    const std::uint32_t word = isList(slot.info) ? 0 : UINT32_MAX;
    change([this, objectClass, index, number = slot.slot, word] {
      vrdmSetReference(scene_, objectClass, index, number, word);
    });
  }
}

void ObjectReader::slot(std::uint32_t objectClass, std::int32_t index, const SlotLayout& slot,
                        std::uint32_t json) {
  if (!isList(slot.info)) {
    const auto word = static_cast<std::uint32_t>(readWord(slot.info, json));
    change([this, objectClass, index, number = slot.slot, word] {
      vrdmSetReference(scene_, objectClass, index, number, word);
    });
    return;
  }
  const JsonNode& array = tape_[json];
  if (array.token != Token::Array) {
    problems_.add(
        ProblemCode::WrongKind, array.offset,
        fmt::format("found {}; expected an array of references", foundWords(array.token)));
    return;
  }
  if (array.length > std::numeric_limits<std::int32_t>::max() ||
      !budget_.take(sizeof(std::int32_t) * array.length)) {
    problems_.add(ProblemCode::TooLarge, array.offset, "the list is longer than it may be");
    return;
  }
  std::vector<std::int32_t> words;
  words.reserve(array.length);
  for (std::uint32_t i = json + 1; i < array.next; i = tape_[i].next) {
    words.push_back(readWord(slot.info, i));
  }
  change(
      [this, objectClass, index, number = slot.slot, words = std::move(words)] {
        const auto count = static_cast<std::uint32_t>(words.size());
        vrdmSetReference(scene_, objectClass, index, number, count);
        if (count == 0) return;
        std::int32_t* const list = vrdmModifyReferenceList(scene_, objectClass, index, number);
        std::memcpy(list, words.data(), words.size() * sizeof(std::int32_t));
      },
      true);
}

std::int32_t ObjectReader::readIndex(std::uint32_t objectClass, std::uint32_t json) {
  const JsonNode& node = tape_[json];
  std::int64_t index = 0;
  NumberFault fault = NumberFault::WrongKind;
  if (node.token == Token::Number) {
    fault = readInt(node.view(), 0, std::numeric_limits<std::int32_t>::max(), index);
  }
  if (fault == NumberFault::None) {
    const auto found = static_cast<std::int32_t>(index);
    if (!sizes_.empty()) {
      if (static_cast<std::uint32_t>(found) >= sizes_[objectClass]) {
        missingObject(node.offset, objectClass, found, sizes_[objectClass]);
      }
    } else if (static_cast<std::uint32_t>(found) >= vrdmContainerSize(scene_, objectClass)) {
      pending_.push_back({node.offset, objectClass, found});
    }
    return found;
  }
  const char* const name = vrdmObjectName(objectClass);
  if (fault == NumberFault::WrongKind) {
    problems_.add(
        ProblemCode::WrongKind, node.offset,
        fmt::format("found {}; expected null or the index of a {}", foundWords(node.token), name));
  } else {
    problems_.add(
        ProblemCode::OutOfRange, node.offset,
        fmt::format("{} is no index of a {}", std::string(node.view().substr(0, 40)), name));
  }
  return 0;
}

// Reads a reference as a word of the slot.
std::int32_t ObjectReader::readWord(const vrdmReferenceInfo& slot, std::uint32_t json) {
  const bool isEmitter = slot.kind == VRDM_REFERENCE_EMITTER;
  const bool isCoded = isEmitter || slot.kind == VRDM_REFERENCE_ORDERED_DECAL;
  const JsonNode& node = tape_[json];
  if (node.token == Token::Null) return isCoded ? kNoTarget : -1;
  if (node.token == Token::Object && node.length == 1) {
    const std::string_view key = tape_[json + 1].view();
    const std::uint32_t number = json + 2;
    if (key == "word") {
      std::int64_t word = 0;
      if (tape_[number].token == Token::Number &&
          readInt(tape_[number].view(), std::numeric_limits<std::int32_t>::min(),
                  std::numeric_limits<std::int32_t>::max(), word) == NumberFault::None) {
        return static_cast<std::int32_t>(word);
      }
      problems_.add(ProblemCode::OutOfRange, tape_[number].offset,
                    "expected a word of a slot: a whole number of 32 bits");
      return -1;
    }
    if (isCoded) {
      const char* const plain = isEmitter ? "Shape" : "back";
      const char* const complement = isEmitter ? "Light" : "front";
      const bool isComplement = key == complement;
      if (isComplement || key == plain) {
        std::uint32_t target = slot.targetClass;
        if (isEmitter) {
          target = VRDM_CLASS_SHAPE;
          if (isComplement) target = VRDM_CLASS_LIGHT;
        }
        const std::int32_t index = readIndex(target, number);
        return isComplement ? ~index : index;
      }
      problems_.add(ProblemCode::UnknownKey, tape_[json + 1].offset,
                    fmt::format("a reference of {} has no member {}{}", quoted(slot.name),
                                quoted(key), suggestion(key, {complement, plain})));
      return kNoTarget;
    }
  }
  if (isCoded) {
    problems_.add(ProblemCode::WrongKind, node.offset,
                  fmt::format("found {}; expected null or an object such as {{ \"{}\": 0 }}",
                              foundWords(node.token), isEmitter ? "Light" : "front"));
    return kNoTarget;
  }
  return readIndex(slot.targetClass, json);
}

// A text, or bytes that are no text in base64.
std::optional<std::string> ObjectReader::readText(std::uint32_t json) {
  const JsonNode& node = tape_[json];
  std::string text;
  if (node.token == Token::String) {
    text = node.view();
  } else if (node.token == Token::Object && node.length == 1 &&
             tape_[json + 1].view() == "base64" && tape_[json + 2].token == Token::String) {
    const std::string_view encoded = tape_[json + 2].view();
    const auto size = base64Size(encoded);
    if (!size) {
      problems_.add(ProblemCode::OutOfRange, tape_[json + 2].offset, "the text is no base64");
      return std::nullopt;
    }
    text.resize(*size);
    readBase64(encoded, text.data());
  } else {
    problems_.add(
        ProblemCode::WrongKind, node.offset,
        fmt::format("found {}; expected the text of the program", foundWords(node.token)));
    return std::nullopt;
  }
  if (text.find('\0') != std::string::npos) {
    problems_.add(ProblemCode::OutOfRange, node.offset,
                  "the text of a program ends at a NUL character; it must not contain one");
    return std::nullopt;
  }
  return text;
}

std::optional<std::string> ObjectReader::readProgram(std::uint32_t json) {
  if (!isObject(json, "a \"text\"")) return std::nullopt;
  std::optional<std::string> text;
  bool seen = false;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    if (tape_[i].view() != "text" || seen) {
      problems_.add(
          seen && tape_[i].view() == "text" ? ProblemCode::DuplicateKey : ProblemCode::UnknownKey,
          tape_[i].offset,
          fmt::format("a program has one \"text\" and nothing else; found {}",
                      quoted(tape_[i].view())));
      continue;
    }
    seen = true;
    text = readText(i + 1);
  }
  if (!seen) {
    problems_.add(ProblemCode::MissingKey, tape_[json].offset, "a program needs a \"text\"");
  }
  return text;
}

bool ObjectReader::readRecord(std::uint32_t objectClass, std::uint32_t json, char* record) {
  if (!isObject(json, "the members of the record")) return false;
  bool right = true;
  std::uint32_t seen = 0;
  const auto& members = recordMembers(objectClass);
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const std::string_view key = tape_[i].view();
    const auto found = std::find_if(members.begin(), members.end(),
                                    [key](const auto& member) { return key == member.name; });
    if (found == members.end()) {
      std::vector<std::string_view> names;
      names.reserve(members.size());
      for (const RecordMember& member : members) names.emplace_back(member.name);
      problems_.add(ProblemCode::UnknownKey, tape_[i].offset,
                    fmt::format("the record of a {} has no member {}{}",
                                vrdmObjectName(objectClass), quoted(key), suggestion(key, names)));
      right = false;
      continue;
    }
    const std::uint32_t bit = 1U << (found - members.begin());
    if ((seen & bit) != 0) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the member {} is there twice", quoted(key)));
      right = false;
      continue;
    }
    seen |= bit;
    const JsonNode& node = tape_[i + 1];
    std::uint64_t word = 0;
    NumberFault fault = NumberFault::WrongKind;
    if (node.token == Token::String && found->codeOf != nullptr) {
      const std::string name(node.view());
      const std::int32_t code = found->codeOf(name.c_str());
      if (code == -1 || name.find('\0') != std::string::npos) {
        const std::vector<std::string> all = recordNames(*found);
        problems_.add(ProblemCode::UnknownLabel, node.offset,
                      fmt::format("there is no {} {}{}", key, quoted(name),
                                  suggestion(name, {all.begin(), all.end()})));
        right = false;
        continue;
      }
      word = static_cast<std::uint32_t>(code);
      fault = NumberFault::None;
    } else if (node.token == Token::Number) {
      if (found->isSigned) {
        std::int64_t number = 0;
        fault = readInt(node.view(), std::numeric_limits<std::int32_t>::min(),
                        std::numeric_limits<std::int32_t>::max(), number);
        word = static_cast<std::uint32_t>(number);
      } else {
        fault = readUnsigned(node.view(), word);
        if (fault == NumberFault::None && found->size == 4 && word >> 32U != 0) {
          fault = NumberFault::OutOfRange;
        }
      }
    }
    if (fault != NumberFault::None) {
      right = false;
      if (fault == NumberFault::WrongKind) {
        problems_.add(ProblemCode::WrongKind, node.offset,
                      fmt::format("found {}; expected a whole number{}", foundWords(node.token),
                                  found->codeOf != nullptr ? " or a name" : ""));
      } else {
        problems_.add(ProblemCode::OutOfRange, node.offset,
                      fmt::format("the number {} is out of the range of {}",
                                  std::string(node.view().substr(0, 40)), key));
      }
      continue;
    }
    std::memcpy(record + found->offset, &word, found->size);
  }
  return right;
}

vrnt::UniqueAsset ObjectReader::readFile(std::uint32_t json) {
  const JsonNode& node = tape_[json];
  if (node.token != Token::String) {
    problems_.add(ProblemCode::WrongKind, node.offset,
                  fmt::format("found {}; expected the name of a file", foundWords(node.token)));
    return nullptr;
  }
  const std::string name(node.view());
  if (!staysInside(name) || name.find('\0') != std::string::npos) {
    problems_.add(ProblemCode::Asset, node.offset,
                  fmt::format("the name {} leads out of the folder of the document", quoted(name)));
    return nullptr;
  }
  if (!options_.assetFolder) {
    problems_.add(ProblemCode::Asset, node.offset,
                  fmt::format("there is no folder in which to look for the file {}; give one, or "
                              "have the bytes in \"base64\"",
                              quoted(name)));
    return nullptr;
  }
  try {
    FileSource source(options_.assetFolder->empty() ? name : *options_.assetFolder + "/" + name);
    vrnt::UniqueAsset storage = newStorage(source.size());
    source.read(0, storage->data, static_cast<std::size_t>(source.size()));
    return storage;
  } catch (const Failure& failure) {
    problems_.add(ProblemCode::Asset, node.offset, failure.what());
    return nullptr;
  }
}

// Reads { "file" or "base64", "size", "sha256" }.
vrnt::UniqueAsset ObjectReader::readBytes(std::uint32_t json) {
  if (!isObject(json, "\"file\" or \"base64\"")) return nullptr;
  constexpr std::string_view kKeys[] = {"file", "base64", "size", "sha256"};
  std::optional<std::uint32_t> at[4];
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const auto* const found = std::find(std::begin(kKeys), std::end(kKeys), tape_[i].view());
    if (found == std::end(kKeys)) {
      problems_.add(
          ProblemCode::UnknownKey, tape_[i].offset,
          fmt::format("the bytes of an asset have no member {}{}", quoted(tape_[i].view()),
                      suggestion(tape_[i].view(), {std::begin(kKeys), std::end(kKeys)})));
      return nullptr;
    }
    auto& place = at[found - kKeys];
    if (place) {
      problems_.add(ProblemCode::DuplicateKey, tape_[i].offset,
                    fmt::format("the member {} is there twice", quoted(tape_[i].view())));
      return nullptr;
    }
    place = i + 1;
  }
  std::uint64_t size = 0;
  if (at[2] && (tape_[*at[2]].token != Token::Number ||
                readUnsigned(tape_[*at[2]].view(), size) != NumberFault::None)) {
    problems_.add(ProblemCode::WrongKind, tape_[*at[2]].offset, "expected a number of bytes");
    return nullptr;
  }
  std::string digest;
  if (at[3]) {
    const JsonNode& node = tape_[*at[3]];
    digest = node.view();
    for (char& c : digest) {
      if (c >= 'A' && c <= 'F') c = static_cast<char>(c - 'A' + 'a');
    }
    if (node.token != Token::String || digest.size() != 64 ||
        digest.find_first_not_of("0123456789abcdef") != std::string::npos) {
      problems_.add(ProblemCode::WrongKind, node.offset, "expected 64 hexadecimal digits");
      return nullptr;
    }
  }
  if (at[0] && at[1]) {
    problems_.add(ProblemCode::DuplicateKey, tape_[*at[1]].offset,
                  "the bytes stand in a file or in base64, not in both");
    return nullptr;
  }
  vrnt::UniqueAsset storage;
  if (at[0]) {
    storage = readFile(*at[0]);
    if (!storage) return nullptr;
  } else if (at[1]) {
    const JsonNode& node = tape_[*at[1]];
    const auto decoded = node.token == Token::String ? base64Size(node.view()) : std::nullopt;
    if (!decoded) {
      problems_.add(ProblemCode::WrongKind, node.offset, "expected a text in base64");
      return nullptr;
    }
    storage = newStorage(*decoded);
    readBase64(node.view(), storage->data);
  } else {
    if (options_.findBytes && at[2]) storage.reset(options_.findBytes(digest, size));
    if (!storage) {
      problems_.add(ProblemCode::Asset, tape_[json].offset,
                    "the document does not have the bytes; expected a \"file\" or \"base64\"");
      return nullptr;
    }
  }
  if (at[2] && storage->size != size) {
    problems_.add(ProblemCode::Asset, tape_[*at[2]].offset,
                  fmt::format("there are {} bytes, not {}", storage->size, size));
    return nullptr;
  }
  if (!digest.empty()) {
    const std::string found = sha256Hex(storage->data, static_cast<std::size_t>(storage->size));
    if (found != digest) {
      problems_.add(ProblemCode::Asset, tape_[*at[3]].offset,
                    fmt::format("the bytes have another digest, {}", found));
      return nullptr;
    }
  }
  return storage;
}

std::optional<ObjectReader::AssetRead> ObjectReader::readAsset(const ClassDescription& description,
                                                               std::uint32_t json) {
  if (!isObject(json, "\"id\", \"desc\" and \"bytes\"")) return std::nullopt;
  AssetRead read;
  bool right = true;
  std::optional<std::uint32_t> desc;
  std::optional<std::uint32_t> bytes;
  std::optional<std::uint32_t> id;
  for (std::uint32_t i = json + 1; i < tape_[json].next; i = tape_[i + 1].next) {
    const std::string_view key = tape_[i].view();
    auto* const place = key == "id"      ? &id
                        : key == "desc"  ? &desc
                        : key == "bytes" ? &bytes
                                         : nullptr;
    if (place == nullptr || *place) {
      problems_.add(
          place == nullptr ? ProblemCode::UnknownKey : ProblemCode::DuplicateKey, tape_[i].offset,
          place == nullptr ? fmt::format("a {} has no member {}{}", description.layout.name,
                                         quoted(key), suggestion(key, {"id", "desc", "bytes"}))
                           : fmt::format("the member {} is there twice", quoted(key)));
      right = false;
      continue;
    }
    *place = i + 1;
  }
  if (id) {
    const JsonNode& node = tape_[*id];
    if (node.token == Token::String) read.id = readId(node.view());
    if (!read.id) {
      problems_.add(ProblemCode::WrongKind, node.offset,
                    "expected an id such as \"883ff973-e105-4b5b-982a-4d2cb87d48ca\"");
      right = false;
    }
  }
  if (!desc) {
    problems_.add(ProblemCode::MissingKey, tape_[json].offset,
                  fmt::format("a {} needs its record in \"desc\"", description.layout.name));
    right = false;
  } else {
    right = readRecord(description.layout.objectClass, *desc, read.record) && right;
  }
  if (bytes) {
    read.storage = readBytes(*bytes);
    right = read.storage != nullptr && right;
  } else {
    read.storage = newStorage(0);
  }
  if (!right) return std::nullopt;
  const std::size_t known = problems_.all().size();
  const AssetContent content =
      description.layout.asset->inspect(read.record, [&](const RecordFinding& finding) {
        if (severityOf(finding.code) != VRTK_ERROR) return;
        const auto member = tape_.member(*desc, finding.member);
        problems_.add(ProblemCode::OutOfRange, tape_[member.value_or(*desc)].offset,
                      finding.message);
      });
  if (problems_.all().size() != known) return std::nullopt;
  if (read.storage->size < content.bytes) {
    problems_.add(ProblemCode::Asset, tape_[bytes.value_or(json)].offset,
                  fmt::format("the record asks for {} bytes, but there are {}", content.bytes,
                              read.storage->size));
    return std::nullopt;
  }
  return read;
}

void ObjectReader::program(std::uint32_t objectClass, std::int32_t index, std::uint32_t json) {
  const auto text = readProgram(json);
  if (!text) return;
  change([this, objectClass, index, given = *text] {
    replaceProgram(scene_, objectClass, index, given);
  });
}

void ObjectReader::asset(std::uint32_t objectClass, std::int32_t index, std::uint32_t json) {
  auto read = readAsset(catalogue_.of(objectClass), json);
  if (!read) return;
  change([this, objectClass, index, given = std::make_shared<AssetRead>(std::move(*read))] {
    replaceAsset(scene_, objectClass, index, given->record, given->storage.get());
    if (given->id) setId(objectClass, index, *given->id);
  });
}

}  // namespace vrtk
