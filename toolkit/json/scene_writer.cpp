#include "json/scene_writer.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

#include "foundation/sha256.hpp"
#include "json/base64.hpp"
#include "json/numbers.hpp"
#include "json/text.hpp"

namespace vrtk {
namespace {

bool differs(const ClassDescription& description, std::uint32_t group, const char* bytes) {
  const GroupLayout& layout = description.groups.groups[group];
  return !sameContent(*description.trees[group], 0, bytes + layout.offset,
                      description.defaultsOf(group));
}

// Whether all groups have what those of a new object have.
bool sameGroups(const ClassDescription& description, const char* bytes) {
  if (std::memcmp(bytes, description.defaults.data(), description.defaults.size()) == 0) {
    return true;
  }
  for (std::uint32_t i = 0; i < description.trees.size(); ++i) {
    if (differs(description, i, bytes)) return false;
  }
  return true;
}

}  // namespace

std::string idText(const void* id) {
  const auto* const bytes = static_cast<const unsigned char*>(id);
  std::string text;
  for (int i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += "0123456789abcdef"[bytes[i] >> 4U];
    text += "0123456789abcdef"[bytes[i] & 15U];
  }
  return text;
}

void SceneWriter::member(bool& isFirst, std::string_view key, std::size_t depth) {
  out_.part(isFirst, depth, "\"");
  isFirst = false;
  char* at = out_.room(key.size() + 3);
  at = std::copy(key.begin(), key.end(), at);
  *at++ = '"';
  *at++ = ':';
  *at++ = ' ';
  out_.wrote(at);
}

void SceneWriter::string(std::string_view text) {
  text_.clear();
  appendJsonString(text_, text, LineFeeds::Short);
  out_.put(text_);
}

void SceneWriter::headMembers(bool& isFirst) {
  member(isFirst, "format", 1);
  out_.put("\"vornath-scene\"");
  member(isFirst, "formatVersion", 1);
  out_.put('1');
  member(isFirst, "sceneVersion", 1);
  out_.wrote(writeUnsigned(out_.room(kLongestNumber), headerLayout().version));
  member(isFirst, "id", 1);
  string(idText(vrdmSceneId(scene_)->begin()));
  const ClassDescription& wide = catalogue_.of(VRDM_CLASS_SCENE_DATA);
  const char* const bytes = sceneGroupBytes(scene_);
  if (options_.full || !sameGroups(wide, bytes)) {
    member(isFirst, "scene", 1);
    sceneGroups(1);
  }
}

void SceneWriter::head() {
  out_.put('{');
  bool isFirst = true;
  headMembers(isFirst);
  out_.line(0);
  out_.put('}');
}

void SceneWriter::document() {
  out_.put('{');
  bool isFirst = true;
  headMembers(isFirst);
  member(isFirst, "objects", 1);
  out_.put('{');
  bool isFirstClass = true;
  for (std::uint32_t c = 0; c < vrdmObjectTypeCount(); ++c) {
    if (vrdmContainerSize(scene_, c) == 0) continue;
    member(isFirstClass, vrdmObjectName(c), 2);
    objectsOfClass(c, 2);
  }
  if (!isFirstClass) out_.line(1);
  out_.put('}');
  out_.line(0);
  out_.put("}\n");
}

void SceneWriter::sceneGroups(std::size_t depth) {
  groupsOf(catalogue_.of(VRDM_CLASS_SCENE_DATA), sceneGroupBytes(scene_), depth);
}

void SceneWriter::objectsOfClass(std::uint32_t objectClass, std::size_t depth) {
  const std::uint32_t slots = vrdmContainerSize(scene_, objectClass);
  out_.put('[');
  for (std::uint32_t i = 0; i < slots; ++i) {
    if (i != 0) out_.put(',');
    out_.line(depth + 1);
    object(objectClass, static_cast<std::int32_t>(i), depth + 1);
  }
  if (slots != 0) out_.line(depth);
  out_.put(']');
}

void SceneWriter::object(std::uint32_t objectClass, std::int32_t index, std::size_t depth) {
  if (!vrdmValid(scene_, objectClass, index)) {
    out_.put("null");
    return;
  }
  const ClassDescription& description = catalogue_.of(objectClass);
  switch (description.layout.kind) {
    case VRDM_KIND_PROGRAM:
      program(objectClass, index, depth);
      return;
    case VRDM_KIND_ASSET:
      asset(description, index, depth);
      return;
    default:
      instance(description, index, depth);
  }
}

void SceneWriter::groupsOf(const ClassDescription& description, const char* bytes,
                           std::size_t depth) {
  out_.put('{');
  bool isFirst = true;
  for (std::uint32_t i = 0; i < description.trees.size(); ++i) {
    if (!options_.full && !differs(description, i, bytes)) continue;
    member(isFirst, description.groups.groups[i].name, depth + 1);
    group(description, i, bytes, depth + 1);
  }
  if (!isFirst) out_.line(depth);
  out_.put('}');
}

void SceneWriter::groups(std::uint32_t objectClass, std::int32_t index, std::size_t depth) {
  groupsOf(catalogue_.of(objectClass), groupBytes(scene_, objectClass, index), depth);
}

void SceneWriter::group(const ClassDescription& description, std::uint32_t group, const char* bytes,
                        std::size_t depth) {
  const GroupLayout& layout = description.groups.groups[group];
  writePart(out_, *description.trees[group], 0, bytes + layout.offset,
            options_.full ? nullptr : description.defaultsOf(group), depth);
}

void SceneWriter::instance(const ClassDescription& description, std::int32_t index,
                           std::size_t depth) {
  const std::uint32_t objectClass = description.layout.objectClass;
  out_.put('{');
  bool isFirst = true;
  if (!description.trees.empty()) {
    const char* const bytes = groupBytes(scene_, objectClass, index);
    if (options_.full || !sameGroups(description, bytes)) {
      member(isFirst, "groups", depth + 1);
      groupsOf(description, bytes, depth + 1);
    }
  }
  bool anySlot = options_.full && !description.slots.empty();
  for (std::uint32_t i = 0; !anySlot && i < description.slots.size(); ++i) {
    anySlot = vrdmGetReference(scene_, objectClass, index, i) !=
              (isList(description.slots[i].info) ? 0 : -1);
  }
  if (anySlot) {
    member(isFirst, "slots", depth + 1);
    slots(description, index, depth + 1);
  }
  if (description.layout.hasValue) {
    member(isFirst, "value", depth + 1);
    value(objectClass, index, depth + 1);
  }
  if (!isFirst) out_.line(depth);
  out_.put('}');
}

void SceneWriter::slots(const ClassDescription& description, std::int32_t index,
                        std::size_t depth) {
  const std::uint32_t objectClass = description.layout.objectClass;
  out_.put('{');
  bool isFirst = true;
  for (const SlotLayout& slot : description.slots) {
    const std::int32_t word = vrdmGetReference(scene_, objectClass, index, slot.slot);
    if (!options_.full && word == (isList(slot.info) ? 0 : -1)) continue;
    member(isFirst, slot.info.name, depth + 1);
    this->slot(slot, objectClass, index, depth + 1);
  }
  if (!isFirst) out_.line(depth);
  out_.put('}');
}

void SceneWriter::slot(const SlotLayout& slot, std::uint32_t objectClass, std::int32_t index,
                       std::size_t depth) {
  const std::int32_t word = vrdmGetReference(scene_, objectClass, index, slot.slot);
  if (!isList(slot.info)) {
    slotWord(slot.info, word);
    return;
  }
  const std::int32_t* const words = vrdmGetReferenceList(scene_, objectClass, index, slot.slot);
  out_.put('[');
  for (std::int32_t i = 0; i < word; ++i) {
    if (i != 0) out_.put(',');
    out_.line(depth + 1);
    slotWord(slot.info, words[i]);
  }
  if (word != 0) out_.line(depth);
  out_.put(']');
}

void SceneWriter::slotWord(const vrdmReferenceInfo& slot, std::int32_t word) {
  const Target target = targetOf(scene_, slot, word);
  const char* key = target.side;
  switch (target.kind) {
    case Target::Kind::None:
      out_.put("null");
      return;
    case Target::Kind::Word:
      key = "word";
      break;
    case Target::Kind::Object:
      break;
  }
  if (key != nullptr) {
    out_.put("{ \"");
    out_.put(key);
    out_.put("\": ");
  }
  out_.wrote(writeInt(out_.room(kLongestNumber), target.index));
  if (key != nullptr) out_.put(" }");
}

void SceneWriter::value(std::uint32_t objectClass, std::int32_t index, std::size_t depth) {
  const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, objectClass, index));
  values_.write(value.get(), depth, objectClass, index);
}

void SceneWriter::program(std::uint32_t objectClass, std::int32_t index, std::size_t depth) {
  out_.put('{');
  bool isFirst = true;
  member(isFirst, "text", depth + 1);
  const std::string_view text = vrdmGetProgramSource(scene_, objectClass, index);
  if (isUtf8(text)) {
    string(text);
  } else {
    // A document is UTF-8, and the text of a program need not be.
    out_.put("{ \"base64\": \"");
    std::string encoded((text.size() + 2) / 3 * 4, '\0');
    writeBase64(encoded.data(), text.data(), text.size());
    out_.put(encoded);
    out_.put("\" }");
  }
  out_.line(depth);
  out_.put('}');
}

void SceneWriter::asset(const ClassDescription& description, std::int32_t index,
                        std::size_t depth) {
  const std::uint32_t objectClass = description.layout.objectClass;
  char record[kLargestAssetRecord] = {};
  const AssetStorage* const storage = *vrdmGetAssetStorage(scene_, objectClass, index, record);
  out_.put('{');
  bool isFirst = true;
  member(isFirst, "id", depth + 1);
  string(idText(vrdmGetUniqueId(scene_, objectClass, index)));
  member(isFirst, "desc", depth + 1);
  out_.put('{');
  bool isFirstMember = true;
  for (const RecordMember& described : recordMembers(objectClass)) {
    member(isFirstMember, described.name, depth + 2);
    std::uint64_t word = 0;
    std::memcpy(&word, record + described.offset, described.size);
    const auto code = static_cast<std::int32_t>(word);
    const char* const name = described.nameOf != nullptr ? described.nameOf(code) : nullptr;
    if (name != nullptr) {
      string(name);
    } else if (described.isSigned) {
      out_.wrote(writeInt(out_.room(kLongestNumber), code));
    } else {
      out_.wrote(writeUnsigned(out_.room(kLongestNumber), word));
    }
  }
  out_.line(depth + 1);
  out_.put('}');
  member(isFirst, "bytes", depth + 1);
  assetBytes(*storage);
  out_.line(depth);
  out_.put('}');
}

void SceneWriter::assetBytes(const AssetStorage& storage) {
  const auto* const bytes = static_cast<const char*>(storage.data);
  const auto size = static_cast<std::size_t>(storage.size);
  const std::string digest =
      options_.assets == AssetBytes::Size ? std::string() : sha256Hex(bytes, size);
  out_.put("{ ");
  if (options_.assets == AssetBytes::File) {
    out_.put("\"file\": ");
    string(options_.prefix + assetFileName(digest));
    out_.put(", ");
    if (options_.files != nullptr) options_.files->add(digest, bytes, size);
  } else if (options_.assets == AssetBytes::Inline) {
    out_.put("\"base64\": \"");
    constexpr std::size_t kPiece = Output::kMostRoom / 4 * 3;
    for (std::size_t at = 0; at < size; at += kPiece) {
      const std::size_t count = std::min(kPiece, size - at);
      out_.wrote(writeBase64(out_.room(Output::kMostRoom), bytes + at, count));
    }
    out_.put("\", ");
  }
  out_.put("\"size\": ");
  out_.wrote(writeUnsigned(out_.room(kLongestNumber), size));
  if (!digest.empty()) {
    out_.put(", \"sha256\": \"");
    out_.put(digest);
    out_.put('"');
  }
  out_.put(" }");
}

}  // namespace vrtk
