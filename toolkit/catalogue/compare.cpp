#include "catalogue/compare.hpp"

#include <fmt/format.h>
#include <rapidjson/document.h>
#include <rapidjson/error/en.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "catalogue/forms.hpp"
#include "catalogue/json_writer.hpp"
#include "foundation/failure.hpp"
#include "json/text.hpp"

namespace vrtk {
namespace {

// RapidJSON does not look at what its allocator returns.
struct ThrowingAllocator {
  void* Malloc(std::size_t size) { return size == 0 ? nullptr : checked(std::malloc(size)); }
  void* Realloc(void* block, std::size_t /*oldSize*/, std::size_t size) {
    if (size != 0) return checked(std::realloc(block, size));
    std::free(block);
    return nullptr;
  }
  static void Free(void* block) { std::free(block); }

 private:
  static void* checked(void* block) {
    if (block == nullptr) throw std::bad_alloc();
    return block;
  }
};

using Pool = rapidjson::MemoryPoolAllocator<ThrowingAllocator>;
using Document = rapidjson::GenericDocument<rapidjson::UTF8<>, Pool, ThrowingAllocator>;
using Value = rapidjson::GenericValue<rapidjson::UTF8<>, Pool>;
using Buffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, ThrowingAllocator>;
using Writer = rapidjson::Writer<Buffer, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

constexpr unsigned kFormatVersion = 1;
constexpr int kDeepest = 32;
constexpr std::size_t kLongestWords = 80;

[[noreturn]] void refuse(const std::string& why) {
  throw Failure(VRTK_CATALOGUE_INVALID,
                why + "; give a catalogue that was saved in the form of JSON");
}

std::string_view textOf(const Value& value) { return {value.GetString(), value.GetStringLength()}; }

// A place in the document, for messages.
std::string pointerTo(std::string_view parent, std::string_view key) {
  std::string text;
  appendJsonString(text, key.substr(0, kLongestWords));
  return fmt::format("{}/{}", parent, std::string_view(text).substr(1, text.size() - 2));
}

const Value* find(const Value& object, std::string_view key) {
  const auto found = object.FindMember(
      Value(rapidjson::StringRef(key.data(), static_cast<rapidjson::SizeType>(key.size()))));
  return found == object.MemberEnd() ? nullptr : &found->value;
}

// Returns a member that is known to be there.
const Value& memberOf(const Value& object, std::string_view key) { return *find(object, key); }

const Value& require(const Value& object, std::string_view key, const std::string& place,
                     bool (Value::*is)() const, std::string_view expected) {
  const Value* const value = find(object, key);
  if (value == nullptr || !(value->*is)()) {
    refuse(fmt::format("{}: {} was expected", pointerTo(place, key), expected));
  }
  return *value;
}

std::uint64_t numberIn(const Value& object, std::string_view key, const std::string& place) {
  return require(object, key, place, &Value::IsUint64, "a whole number").GetUint64();
}
std::string_view textIn(const Value& object, std::string_view key, const std::string& place) {
  return textOf(require(object, key, place, &Value::IsString, "a string"));
}
const Value& objectIn(const Value& object, std::string_view key, const std::string& place) {
  return require(object, key, place, &Value::IsObject, "an object");
}
const Value& arrayIn(const Value& object, std::string_view key, const std::string& place) {
  return require(object, key, place, &Value::IsArray, "an array");
}

// A value in a message of one line.
std::string wordsOf(const Value* value) {
  if (value == nullptr) return "none";
  Buffer buffer;
  Writer writer(buffer);
  value->Accept(writer);
  const std::string_view all(buffer.GetString(), buffer.GetSize());
  std::string_view words = all.substr(0, kLongestWords);
  if (words.size() == all.size()) return std::string(words);
  // Not in the middle of a character.
  while (!words.empty() && (static_cast<unsigned char>(words.back()) & 0x80U) != 0) {
    words.remove_suffix(1);
  }
  return std::string(words) + "...";
}

std::string wordsOf(std::string_view text) {
  std::string words;
  appendJsonString(words, text.substr(0, kLongestWords));
  return words;
}

void refuseDeepNesting(std::string_view json) {
  int depth = 0;
  bool quoted = false;
  for (std::size_t i = 0; i < json.size(); ++i) {
    const char c = json[i];
    if (quoted) {
      if (c == '\\') ++i;
      if (c == '"') quoted = false;
    } else if (c == '"') {
      quoted = true;
    } else if (c == '{' || c == '[') {
      if (++depth > kDeepest) refuse("the text is nested deeper than a catalogue is");
    } else if (c == '}' || c == ']') {
      --depth;
    }
  }
}

void parse(Document& document, std::string_view json) {
  refuseDeepNesting(json);
  document.Parse<rapidjson::kParseValidateEncodingFlag>(json.data(), json.size());
  if (!document.HasParseError()) return;
  const std::string_view before = json.substr(0, document.GetErrorOffset());
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t start = before.rfind('\n');
  const std::size_t column = before.size() - (start == std::string_view::npos ? 0 : start + 1) + 1;
  std::string what = rapidjson::GetParseError_En(document.GetParseError());
  if (!what.empty() && what.back() == '.') what.pop_back();
  refuse(fmt::format("line {}, column {}: {}", line, column, what));
}

enum class Effect : bool { Harmless, Breaking };

class Comparison {
 public:
  explicit Comparison(vrtkCatalogueChanges& changes) : changes_(changes) {}

  void run(const Value& saved, const Value& live) {
    if (!saved.IsObject()) refuse("the text is not an object");
    if (textIn(saved, "format", "") != textIn(live, "format", "")) {
      refuse("/format: \"vornath-catalogue\" was expected");
    }
    const std::uint64_t format = numberIn(saved, "formatVersion", "");
    if (format != kFormatVersion) {
      refuse(
          fmt::format("/formatVersion: {} was expected, and {} was found", kFormatVersion, format));
    }
    if (const Value* const filter = find(saved, "filter")) {
      onlySavedClasses_ = true;
      onlySavedGroups_ = textIn(saved, "filter", "").find('/') != std::string_view::npos;
      static_cast<void>(filter);
    }
    compareNumber(saved, live, "sceneVersion", "VERSION_CHANGED", "", "version");
    compareClasses(objectIn(saved, "classes", ""), objectIn(live, "classes", ""));
    if (const Value* const scene = find(saved, "scene")) {
      if (!scene->IsObject()) refuse("/scene: an object was expected");
      compareGroups(*scene, objectIn(live, "scene", ""), "/scene", "scene", "scene/");
    }
  }

 private:
  using Members = std::vector<std::pair<std::string_view, const Value*>>;

  void add(const char* code, Effect effect, std::string address, std::string message) {
    CatalogueChange& change = changes_.changes.emplace_back();
    change.address = std::move(address);
    change.message = std::move(message);
    change.flat = {code, effect == Effect::Breaking, change.address.c_str(),
                   change.message.c_str()};
    if (effect == Effect::Breaking) ++changes_.breaking;
  }

  // Compares a number that must not change. `place` is that of the saved object.
  void compareNumber(const Value& saved, const Value& live, std::string_view key, const char* code,
                     const std::string& place, std::string_view words,
                     const std::string& address = "") {
    const std::uint64_t before = numberIn(saved, key, place);
    const std::uint64_t now = find(live, key)->GetUint64();
    if (before == now) return;
    add(code, Effect::Breaking, address, fmt::format("{} {} before, {} now", words, before, now));
  }

  // Goes through the members of both objects: what is gone where it was saved, then what is new.
  template <typename Same, typename Gone, typename New>
  void compareMembers(const Value& saved, const Value& live, const std::string& place, Same&& same,
                      Gone&& gone, New&& added) {
    for (const auto& member : saved.GetObject()) {
      const std::string_view name = textOf(member.name);
      const std::string at = pointerTo(place, name);
      if (!member.value.IsObject()) refuse(at + ": an object was expected");
      if (const Value* const now = find(live, name)) {
        same(std::string(name), member.value, *now, at);
      } else {
        gone(std::string(name), member.value);
      }
    }
    for (const auto& member : live.GetObject()) {
      const std::string_view name = textOf(member.name);
      if (find(saved, name) == nullptr) added(std::string(name), member.value);
    }
  }

  void compareClasses(const Value& saved, const Value& live) {
    compareMembers(
        saved, live, "/classes",
        [this](const std::string& name, const Value& before, const Value& now,
               const std::string& place) { compareClass(name, before, now, place); },
        [this](const std::string& name, const Value& /*before*/) {
          add("CLASS_REMOVED", Effect::Breaking, shortened(name), "the class is gone");
        },
        [this](const std::string& name, const Value& /*now*/) {
          if (!onlySavedClasses_) add("CLASS_ADDED", Effect::Harmless, name, "the class is new");
        });
  }

  void compareClass(const std::string& name, const Value& saved, const Value& live,
                    const std::string& place) {
    compareNumber(saved, live, "number", "CLASS_NUMBER_CHANGED", place, "number", name);
    compareText(saved, live, "kind", "CLASS_KIND_CHANGED", place, name, "kind ");
    const bool before =
        require(saved, "hasValue", place, &Value::IsBool, "true or false").GetBool();
    if (before != memberOf(live, "hasValue").GetBool()) {
      add("CLASS_VALUE_CHANGED", Effect::Breaking, name,
          before ? "its objects had a value" : "its objects had no value");
    }
    compareSlots(objectIn(saved, "slots", place), memberOf(live, "slots"), place + "/slots",
                 name + "/slots/");
    compareGroups(saved, live, place, name, name + "/groups/");
  }

  void compareText(const Value& saved, const Value& live, std::string_view key, const char* code,
                   const std::string& place, const std::string& address, std::string_view words) {
    const std::string_view before = textIn(saved, key, place);
    const std::string_view now = textIn(live, key, "");
    if (before == now) return;
    add(code, Effect::Breaking, address,
        fmt::format("{}{} before, {} now", words, wordsOf(before), wordsOf(now)));
  }

  void compareSlots(const Value& saved, const Value& live, const std::string& place,
                    const std::string& prefix) {
    compareMembers(
        saved, live, place,
        [&](const std::string& name, const Value& before, const Value& now, const std::string& at) {
          const std::string address = prefix + name;
          compareNumber(before, now, "number", "SLOT_NUMBER_CHANGED", at, "number", address);
          compareText(before, now, "kind", "SLOT_KIND_CHANGED", at, address, "kind ");
          const Value& targets = arrayIn(before, "targets", at);
          if (targets != memberOf(now, "targets")) {
            add("SLOT_TARGET_CHANGED", Effect::Breaking, address,
                fmt::format("{} before, {} now", wordsOf(&targets),
                            wordsOf(&memberOf(now, "targets"))));
          }
        },
        [&](const std::string& name, const Value& /*before*/) {
          add("SLOT_REMOVED", Effect::Breaking, prefix + shortened(name), "the slot is gone");
        },
        [&](const std::string& name, const Value& /*now*/) {
          if (!onlySavedGroups_)
            add("SLOT_ADDED", Effect::Harmless, prefix + name, "the slot is new");
        });
  }

  // `owner` is the class or "scene"; `prefix` is what stands before the name of a group.
  void compareGroups(const Value& saved, const Value& live, const std::string& place,
                     const std::string& owner, const std::string& prefix) {
    compareNumber(saved, live, "groupsSize", "CLASS_SIZE_CHANGED", place,
                  "bytes of the groups:", owner);
    compareNumber(saved, live, "groupsAlignment", "CLASS_ALIGNMENT_CHANGED", place,
                  "alignment of the groups:", owner);
    compareMembers(
        objectIn(saved, "groups", place), memberOf(live, "groups"), place + "/groups",
        [&](const std::string& name, const Value& before, const Value& now, const std::string& at) {
          compareGroup(before, now, at, prefix + name);
        },
        [&](const std::string& name, const Value& /*before*/) {
          add("GROUP_REMOVED", Effect::Breaking, prefix + shortened(name), "the group is gone");
        },
        [&](const std::string& name, const Value& /*now*/) {
          if (!onlySavedGroups_) {
            add("GROUP_ADDED", Effect::Harmless, prefix + name, "the group is new");
          }
        });
  }

  void compareGroup(const Value& saved, const Value& live, const std::string& place,
                    const std::string& address) {
    compareNumber(saved, live, "number", "GROUP_NUMBER_CHANGED", place, "number", address);
    compareNumber(saved, live, "offset", "GROUP_OFFSET_CHANGED", place, "offset", address);
    compareNumber(saved, live, "size", "GROUP_SIZE_CHANGED", place, "size", address);
    compareNumber(saved, live, "alignment", "GROUP_ALIGNMENT_CHANGED", place, "alignment", address);
    compareAnnotations(saved, live, address);
    const std::string_view type = textIn(saved, "type", place);
    const std::size_t before = changes_.changes.size();
    compareFields(arrayIn(saved, "fields", place), memberOf(live, "fields"), place + "/fields",
                  address + "/");
    // The text of the type says the same as the fields, so that it differs where they do.
    if (type == textOf(memberOf(live, "type")) || changes_.changes.size() != before) return;
    for (const CatalogueChange& change : changes_.changes) {
      if (change.address == address) return;
    }
    add("GROUP_TYPE_CHANGED", Effect::Breaking, address,
        fmt::format("{} before, {} now", wordsOf(type), wordsOf(textOf(memberOf(live, "type")))));
  }

  using Paths = std::map<std::string_view, const Value*>;

  Paths pathsOf(const Value& fields, const std::string& place) {
    Paths paths;
    for (rapidjson::SizeType i = 0; i < fields.Size(); ++i) {
      const std::string at = fmt::format("{}/{}", place, i);
      if (!fields[i].IsObject()) refuse(at + ": an object was expected");
      const std::string_view path = textIn(fields[i], "path", at);
      if (!paths.emplace(path, &fields[i]).second) {
        refuse(fmt::format("{}: the field {} is listed twice", at, wordsOf(path)));
      }
    }
    return paths;
  }

  // The fields that both have, in the order of one of them.
  static std::map<std::string_view, std::size_t> ranksOf(const Value& fields, const Paths& others) {
    std::map<std::string_view, std::size_t> ranks;
    for (const Value& field : fields.GetArray()) {
      const std::string_view path = textOf(memberOf(field, "path"));
      if (others.count(path) != 0) ranks.emplace(path, ranks.size());
    }
    return ranks;
  }

  void compareFields(const Value& saved, const Value& live, const std::string& place,
                     const std::string& prefix) {
    const Paths before = pathsOf(saved, place);
    const Paths now = pathsOf(live, place);
    const auto ranksBefore = ranksOf(saved, now);
    const auto ranksNow = ranksOf(live, before);
    for (rapidjson::SizeType i = 0; i < saved.Size(); ++i) {
      const Value& field = saved[i];
      const std::string at = fmt::format("{}/{}", place, i);
      const std::string_view path = textOf(memberOf(field, "path"));
      const std::string address = prefix + shortened(path);
      const std::uint64_t offset = numberIn(field, "offset", at);
      const std::string_view type = textIn(field, "type", at);
      const auto found = now.find(path);
      if (found == now.end()) {
        add("FIELD_REMOVED", Effect::Breaking, address,
            fmt::format("the field is gone; it was {} at {}", wordsOf(type), offset));
        continue;
      }
      const Value& current = *found->second;
      compareNumber(field, current, "offset", "FIELD_OFFSET_CHANGED", at, "offset", address);
      if (ranksBefore.at(path) != ranksNow.at(path)) {
        add("FIELD_ORDER_CHANGED", Effect::Breaking, address,
            fmt::format("place {} among the fields before, {} now", ranksBefore.at(path),
                        ranksNow.at(path)));
      }
      compareType(field, current, before, now, at, address);
      compareAnnotations(field, current, address);
    }
    for (const Value& field : live.GetArray()) {
      const std::string_view path = textOf(memberOf(field, "path"));
      if (before.count(path) != 0) continue;
      add("FIELD_ADDED", Effect::Harmless, prefix + std::string(path),
          fmt::format("the field is new: {} at {}", wordsOf(textOf(memberOf(field, "type"))),
                      memberOf(field, "offset").GetUint64()));
    }
  }

  // Compares the types of a field. A type that contains fields or constructors differs where they
  // do, which is told of each of them.
  void compareType(const Value& saved, const Value& live, const Paths& before, const Paths& now,
                   const std::string& place, const std::string& address) {
    const std::size_t told = changes_.changes.size();
    const Value* const savedConstructors = find(saved, "constructors");
    const Value* const liveConstructors = find(live, "constructors");
    bool differsInside = false;
    if (savedConstructors != nullptr && liveConstructors != nullptr) {
      compareConstructors(arrayIn(saved, "constructors", place), *liveConstructors,
                          place + "/constructors", address);
      differsInside = changes_.changes.size() != told;
    }
    const std::string_view savedType = textOf(memberOf(saved, "type"));
    const std::string_view liveType = textOf(memberOf(live, "type"));
    differsInside = differsInside || fieldsDiffer(textOf(memberOf(saved, "path")), before, now);
    const auto differs = [&](std::string_view key) {
      const Value* const was = find(saved, key);
      const Value* const is = find(live, key);
      return was != nullptr && (is == nullptr || *was != *is);
    };
    const bool shape = differs("kind") || differs("extents");
    if (shape || (savedType != liveType && !differsInside)) {
      add("FIELD_TYPE_CHANGED", Effect::Breaking, address,
          fmt::format("{} before, {} now", wordsOf(savedType), wordsOf(liveType)));
    } else if (!differsInside && differs("size")) {
      compareNumber(saved, live, "size", "FIELD_TYPE_CHANGED", place, "size", address);
    }
  }

  // Whether the fields inside of a field are not the same, or their types.
  static bool fieldsDiffer(std::string_view path, const Paths& before, const Paths& now) {
    const std::string prefix = std::string(path) + '/';
    const auto isInside = [&prefix](std::string_view other) {
      return other.substr(0, prefix.size()) == prefix;
    };
    auto was = before.lower_bound(prefix);
    auto is = now.lower_bound(prefix);
    for (;; ++was, ++is) {
      const bool hasBefore = was != before.end() && isInside(was->first);
      const bool hasNow = is != now.end() && isInside(is->first);
      if (!hasBefore && !hasNow) return false;
      if (hasBefore != hasNow || was->first != is->first) return true;
      const Value* const type = find(*was->second, "type");
      if (type == nullptr || *type != memberOf(*is->second, "type")) return true;
    }
  }

  void compareConstructors(const Value& saved, const Value& live, const std::string& place,
                           const std::string& address) {
    std::map<std::string_view, const Value*> now;
    for (const Value& constructor : live.GetArray()) {
      now.emplace(textOf(memberOf(constructor, "label")), &constructor);
    }
    std::map<std::string_view, const Value*> before;
    for (rapidjson::SizeType i = 0; i < saved.Size(); ++i) {
      const std::string at = fmt::format("{}/{}", place, i);
      if (!saved[i].IsObject()) refuse(at + ": an object was expected");
      const std::string_view label = textIn(saved[i], "label", at);
      const std::uint64_t code = numberIn(saved[i], "code", at);
      if (!before.emplace(label, &saved[i]).second) {
        refuse(fmt::format("{}: the constructor {} is listed twice", at, wordsOf(label)));
      }
      const auto found = now.find(label);
      if (found == now.end()) {
        add("CONSTRUCTOR_REMOVED", Effect::Breaking, address,
            fmt::format("the constructor {} is gone; its code was {}", wordsOf(label), code));
        continue;
      }
      const Value& current = *found->second;
      const std::uint64_t codeNow = memberOf(current, "code").GetUint64();
      if (codeNow != code) {
        add("CONSTRUCTOR_CODE_CHANGED", Effect::Breaking, address,
            fmt::format("code of {}: {} before, {} now", wordsOf(label), code, codeNow));
      }
      for (const std::string_view key : {"name", "description"}) {
        const Value* const was = find(saved[i], key);
        const Value* const is = find(current, key);
        if (same(was, is)) continue;
        add(key == "name" ? "LABEL_CHANGED" : "DESCRIPTION_CHANGED", Effect::Harmless, address,
            fmt::format("{} of {}: {} before, {} now", key, wordsOf(label), wordsOf(was),
                        wordsOf(is)));
      }
    }
    for (const auto& [label, constructor] : now) {
      if (before.count(label) != 0) continue;
      add("CONSTRUCTOR_ADDED", Effect::Harmless, address,
          fmt::format("the constructor {} is new; its code is {}", wordsOf(label),
                      memberOf(*constructor, "code").GetUint64()));
    }
  }

  static bool same(const Value* a, const Value* b) {
    return a == nullptr || b == nullptr ? a == b : *a == *b;
  }

  void compareAnnotations(const Value& saved, const Value& live, const std::string& address) {
    constexpr struct {
      const char* key;
      const char* code;
    } kAnnotations[] = {
        {"default", "DEFAULT_CHANGED"}, {"min", "LIMIT_CHANGED"},
        {"max", "LIMIT_CHANGED"},       {"soft_min", "LIMIT_CHANGED"},
        {"soft_max", "LIMIT_CHANGED"},  {"unit", "UNIT_CHANGED"},
        {"label", "LABEL_CHANGED"},     {"description", "DESCRIPTION_CHANGED"},
        {"flags", "METADATA_CHANGED"},  {"metadata", "METADATA_CHANGED"},
    };
    for (const auto& annotation : kAnnotations) {
      const Value* const was = find(saved, annotation.key);
      const Value* const is = find(live, annotation.key);
      if (same(was, is)) continue;
      add(annotation.code, Effect::Harmless, address,
          fmt::format("{}: {} before, {} now", annotation.key, wordsOf(was), wordsOf(is)));
    }
  }

  // A name from the text, in an address of one line.
  static std::string shortened(std::string_view name) {
    const std::string words = wordsOf(name);
    return words.substr(1, words.size() - 2);
  }

  vrtkCatalogueChanges& changes_;
  bool onlySavedClasses_ = false;
  bool onlySavedGroups_ = false;
};

}  // namespace

void compareCatalogues(std::string_view json, vrtkCatalogueChanges& changes) {
  Document saved;
  parse(saved, json);
  Document live;
  parse(live, catalogueJson(readCatalogue(nullptr)));
  Comparison(changes).run(saved, live);
}

std::string changesJson(const vrtkCatalogueChanges& changes) {
  std::string out;
  JsonWriter writer(out);
  writer.beginObject();
  writer.member("breaking", changes.breaking);
  writer.key("changes");
  writer.beginArray();
  for (const CatalogueChange& change : changes.changes) {
    writer.beginObject(JsonWriter::Lines::One);
    writer.member("code", change.flat.code);
    writer.member("breaking", change.flat.breaking);
    writer.member("address", change.address);
    writer.member("message", change.message);
    writer.endObject();
  }
  writer.endArray();
  writer.endObject();
  out += '\n';
  return out;
}

}  // namespace vrtk
