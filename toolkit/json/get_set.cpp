// Reading and writing what an address names.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "foundation/failure.hpp"
#include "foundation/sha256.hpp"
#include "json/object_reader.hpp"
#include "json/scene_writer.hpp"
#include "scene/address.hpp"

namespace vrtk {
namespace {

vrtkSetOptions optionsOf(const vrtkSetOptions* given) {
  vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;
  if (given != nullptr) {
    const auto size = std::min<std::uint64_t>(given->structSize, sizeof(options));
    std::memcpy(&options, given, static_cast<std::size_t>(size));
  }
  return options;
}

// The text of the part that an address names, in the full form.
std::string textOf(const vrdmScene_t* scene, Catalogue& catalogue, const Address& address,
                   AssetBytes assets) {
  std::string text;
  Output out([&text](const char* bytes, std::size_t size) { text.append(bytes, size); });
  WriteOptions options;
  options.full = true;
  options.assets = assets;
  SceneWriter writer(scene, out, options, catalogue);
  const std::uint32_t objectClass = address.objectClass;
  switch (address.part) {
    case Address::Part::Document:
      writer.document();
      break;
    case Address::Part::SceneGroups:
      writer.sceneGroups(0);
      break;
    case Address::Part::SceneGroup:
      writer.group(catalogue.of(VRDM_CLASS_SCENE_DATA), address.item, sceneGroupBytes(scene), 0);
      break;
    case Address::Part::Class:
      writer.objectsOfClass(objectClass, 0);
      break;
    case Address::Part::Groups:
      writer.groups(objectClass, address.index, 0);
      break;
    case Address::Part::Group:
      writer.group(catalogue.of(objectClass), address.item,
                   groupBytes(scene, objectClass, address.index), 0);
      break;
    case Address::Part::Slots:
      writer.slots(catalogue.of(objectClass), address.index, 0);
      break;
    case Address::Part::Slot:
      writer.slot(catalogue.of(objectClass).slots[address.item], objectClass, address.index, 0);
      break;
    case Address::Part::Value:
      writer.value(objectClass, address.index, 0);
      break;
    default:
      writer.object(objectClass, address.index, 0);
  }
  out.flush();
  return text;
}

// Where a value ends that starts at `start`. The text is right.
std::size_t endOfValue(std::string_view text, std::size_t start) {
  std::size_t depth = 0;
  for (std::size_t i = start; i < text.size(); ++i) {
    switch (text[i]) {
      case '"':
        for (++i; text[i] != '"'; ++i) {
          if (text[i] == '\\') ++i;
        }
        if (depth == 0) return i + 1;
        break;
      case '{':
      case '[':
        ++depth;
        break;
      case '}':
      case ']':
        if (depth == 0) return i;
        if (--depth == 0) return i + 1;
        break;
      case ',':
      case '\n':
      case ' ':
        if (depth == 0) return i;
        break;
      default:
        break;
    }
  }
  return text.size();
}

// Follows the names below a part in its text, and returns the node that they lead to.
std::uint32_t follow(const Tape& tape, const Address& address, std::string_view given) {
  std::uint32_t node = 0;
  std::string path = address.path;
  for (const std::string& name : address.rest) {
    const JsonNode& at = tape[node];
    std::vector<std::string_view> names;
    std::optional<std::uint32_t> found;
    if (at.token == Token::Array) {
      std::uint64_t index = 0;
      const auto read = std::from_chars(name.data(), name.data() + name.size(), index);
      const bool isNumber = read.ec == std::errc() && read.ptr == name.data() + name.size() &&
                            (name.size() == 1 || name.front() != '0');
      if (!isNumber || index >= at.length) {
        throw Failure(VRTK_ADDRESS_UNKNOWN,
                      at.length == 0
                          ? fmt::format("{}: {} is empty", given, path)
                          : fmt::format("{}: {} has no element {}; expected an index from 0 to {}",
                                        given, path, quoted(name), at.length - 1));
      }
      std::uint32_t element = node + 1;
      for (std::uint64_t i = 0; i < index; ++i) element = tape[element].next;
      found = element;
    } else if (at.token == Token::Object) {
      found = tape.member(node, name);
      // What is shared stands where it is met first.
      const auto shared = tape.member(node, "shared");
      if (!found && shared && name == "to") {
        for (std::uint32_t i = 0; !found && i < tape.size(); ++i) {
          if (tape[i].token != Token::Object) continue;
          const auto other = tape.member(i, "shared");
          if (other && tape[*other].token == Token::String &&
              tape[*other].view() == tape[*shared].view()) {
            found = tape.member(i, "to");
          }
        }
      }
      if (!found) {
        for (std::uint32_t i = node + 1; i < at.next; i = tape[i + 1].next) {
          names.push_back(tape[i].view());
        }
      }
    }
    if (!found) failUnknown(given, path, name, names);
    node = *found;
    path += '/' + name;
  }
  return node;
}

void readOwnText(const std::string& text, Tape& tape) {
  if (const auto fault = readTape(text, tape)) {
    throw Failure(VRTK_INTERNAL_ERROR, "the form of the scene is no JSON: " + fault->message);
  }
}

// Takes the indentation of the line that a value starts on from all its lines.
std::string withoutIndent(std::string_view text, std::size_t start, std::size_t end) {
  std::size_t line = text.rfind('\n', start);
  line = line == std::string_view::npos ? 0 : line + 1;
  std::size_t indent = 0;
  while (line + indent < start && text[line + indent] == ' ') ++indent;
  std::string out;
  for (std::size_t i = start; i < end; ++i) {
    out += text[i];
    if (text[i] != '\n') continue;
    std::size_t blanks = 0;
    while (blanks < indent && i + 1 < end && text[i + 1] == ' ') {
      ++blanks;
      ++i;
    }
  }
  return out;
}

std::string headText(const vrdmScene_t* scene, const Address& address) {
  if (address.path == "id") return '"' + idText(vrdmSceneId(scene)->begin()) + '"';
  if (address.path == "format") return "\"vornath-scene\"";
  if (address.path == "formatVersion") return "1";
  return std::to_string(headerLayout().version);
}

std::string get(const vrdmScene_t* scene, std::string_view given) {
  Catalogue catalogue;
  const Address address = resolveAddress(scene, catalogue, given);
  if (address.part == Address::Part::Head || address.part == Address::Part::SceneId) {
    if (!address.rest.empty()) failUnknown(given, address.path, address.rest.front(), {});
    return headText(scene, address);
  }
  // The digest of an asset takes time, so it is made only if it is asked for.
  const bool needsDigest = address.part != Address::Part::Asset || address.rest.empty() ||
                           address.rest.front() == "bytes";
  std::string text =
      textOf(scene, catalogue, address, needsDigest ? AssetBytes::Digest : AssetBytes::Size);
  if (address.rest.empty()) {
    if (text.back() == '\n') text.pop_back();
    return text;
  }
  Tape tape;
  readOwnText(text, tape);
  const std::size_t start = tape[follow(tape, address, given)].offset;
  return withoutIndent(text, start, endOfValue(text, start));
}

// Writes what an address names.
class Setter {
 public:
  Setter(vrdmScene_t* scene, std::string_view given, std::string_view json,
         const vrtkSetOptions& options)
      : scene_(scene), given_(given), json_(json) {
    read_.enforceLimits = options.enforceLimits != 0;
    if (options.assetFolder != nullptr) read_.assetFolder = options.assetFolder;
  }

  void run() {
    const Address address = resolveAddress(scene_, catalogue_, given_);
    if (const auto fault = readTape(json_, tape_)) {
      problems_.add(ProblemCode::Syntax, fault->offset, fault->message);
      fail(json_);
    }
    switch (address.part) {
      case Address::Part::Document:
      case Address::Part::Class:
        throw Failure(VRTK_ADDRESS_UNKNOWN,
                      fmt::format("{}: one value is set at a time; name an object or a part of it, "
                                  "or build the scene from JSON",
                                  given_.empty() ? "the scene" : std::string(given_)));
      case Address::Part::Head:
        throw Failure(VRTK_ADDRESS_UNKNOWN,
                      fmt::format("{}: this belongs to the form and cannot be set", given_));
      case Address::Part::FreeSlot:
        if (tape_[0].token == Token::Null) return;
        throw Failure(VRTK_ADDRESS_UNKNOWN,
                      fmt::format("{}: this is a free slot, without an object", given_));
      case Address::Part::SceneId:
        if (!address.rest.empty()) failUnknown(given_, address.path, address.rest.front(), {});
        break;
      default:
        break;
    }
    const bool isObject = address.part == Address::Part::Program ||
                          address.part == Address::Part::Asset ||
                          address.part == Address::Part::Instance;
    if (isObject && address.rest.empty() && tape_[0].token == Token::Null) {
      vrdmRemove(scene_, address.objectClass, address.index);
      return;
    }
    std::string document(json_);
    if (!address.rest.empty()) splice(address, document);
    keepBytes(address);
    write(address, document);
  }

 private:
  // Makes the text of the whole part with the new value in its place.
  void splice(const Address& address, std::string& document) {
    const std::string text = textOf(scene_, catalogue_, address, AssetBytes::Size);
    readOwnText(text, tape_);
    const std::size_t start = tape_[follow(tape_, address, given_)].offset;
    const std::size_t end = endOfValue(text, start);
    document = text.substr(0, start) + std::string(json_) + text.substr(end);
    start_ = start;
    readOwnText(document, tape_);
  }

  // An asset whose bytes the document only mentions keeps them.
  void keepBytes(const Address& address) {
    if (address.part != Address::Part::Asset) return;
    AssetStorage* const storage =
        *vrdmGetAssetStorage(scene_, address.objectClass, address.index, nullptr);
    read_.findBytes = [storage](const std::string& digest, std::uint64_t size) -> AssetStorage* {
      if (storage->size != size) return nullptr;
      if (!digest.empty() &&
          digest != sha256Hex(storage->data, static_cast<std::size_t>(storage->size))) {
        return nullptr;
      }
      return vrdmAssetStorageRetain(storage);
    };
  }

  void write(const Address& address, const std::string& document) {
    Budget budget(UINT64_MAX);
    ObjectReader reader(scene_, tape_, problems_, budget, catalogue_, read_);
    reader.defer();
    const std::uint32_t objectClass = address.objectClass;
    const std::int32_t index = address.index;
    try {
      switch (address.part) {
        case Address::Part::SceneId:
          reader.sceneId(0);
          break;
        case Address::Part::SceneGroups:
          reader.allSceneGroups(0);
          break;
        case Address::Part::SceneGroup:
          reader.sceneGroup(address.item, 0);
          break;
        case Address::Part::Program:
          reader.program(objectClass, index, 0);
          break;
        case Address::Part::Asset:
          reader.asset(objectClass, index, 0);
          break;
        case Address::Part::Instance:
          reader.allOfInstance(objectClass, index, 0);
          break;
        case Address::Part::Groups:
          reader.groups(objectClass, index, 0);
          break;
        case Address::Part::Group:
          reader.group(objectClass, index, address.item, 0);
          break;
        case Address::Part::Slots:
          reader.allSlots(objectClass, index, 0);
          break;
        case Address::Part::Slot:
          reader.slot(objectClass, index, catalogue_.of(objectClass).slots[address.item], 0);
          break;
        default:
          reader.value(objectClass, index, 0);
      }
      reader.finish();
    } catch (const EnoughProblems&) {
    }
    if (!problems_.none()) fail(document);
    reader.apply();
  }

  // Tells the first problem, with its place in the text that was given.
  [[noreturn]] void fail(std::string_view document) {
    const Problem* first = &problems_.all().front();
    for (const Problem& problem : problems_.all()) {
      const bool isInside = problem.offset >= start_ && problem.offset < start_ + json_.size();
      if (isInside && (first->offset < start_ || problem.offset < first->offset)) first = &problem;
    }
    std::string words = fmt::format("{}: ", given_);
    if (first->offset >= start_ && first->offset <= start_ + json_.size()) {
      const std::string_view before = document.substr(start_, first->offset - start_);
      const auto lines = std::count(before.begin(), before.end(), '\n');
      const std::size_t line = before.rfind('\n');
      const std::string_view last =
          line == std::string_view::npos ? before : before.substr(line + 1);
      const auto column = std::count_if(last.begin(), last.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
      });
      words += fmt::format("line {}, column {}: ", lines + 1, column + 1);
    }
    throw Failure(VRTK_JSON_INVALID, words + first->message);
  }

  vrdmScene_t* scene_;
  std::string_view given_;
  std::string_view json_;
  ReadOptions read_;
  Catalogue catalogue_;
  Tape tape_;
  Problems problems_{20};
  std::size_t start_ = 0;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneGet(const vrdmScene_t* scene, const char* address, char** json,
                           vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneGet", "scene");
    vrtk::requireArgument(address, "vrtkSceneGet", "address");
    vrtk::requireArgument(json, "vrtkSceneGet", "json");
    *json = vrtk::copyString(vrtk::get(scene, address));
  });
}

std::uint32_t vrtkSceneGetBytes(const vrdmScene_t* scene, const char* address, const void** bytes,
                                std::uint64_t* size, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneGetBytes", "scene");
    vrtk::requireArgument(address, "vrtkSceneGetBytes", "address");
    vrtk::requireArgument(bytes, "vrtkSceneGetBytes", "bytes");
    vrtk::requireArgument(size, "vrtkSceneGetBytes", "size");
    vrtk::Catalogue catalogue;
    const vrtk::Address found = vrtk::resolveAddress(scene, catalogue, address);
    const bool isOne = found.rest.size() == 1;
    if (isOne && found.part == vrtk::Address::Part::Asset && found.rest.front() == "bytes") {
      const AssetStorage* const storage =
          *vrdmGetAssetStorage(scene, found.objectClass, found.index, nullptr);
      *bytes = storage->data;
      *size = storage->size;
      return;
    }
    if (isOne && found.part == vrtk::Address::Part::Program && found.rest.front() == "text") {
      const char* const text = vrdmGetProgramSource(scene, found.objectClass, found.index);
      *bytes = text;
      *size = std::strlen(text);
      return;
    }
    throw vrtk::Failure(VRTK_ADDRESS_UNKNOWN,
                        fmt::format("{}: there are no bytes; expected the address of an asset's "
                                    "bytes, such as Mesh/0/bytes, or of a program's text",
                                    address));
  });
}

std::uint32_t vrtkSceneSet(vrdmScene_t* scene, const char* address, const char* json,
                           const vrtkSetOptions* options, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneSet", "scene");
    vrtk::requireArgument(address, "vrtkSceneSet", "address");
    vrtk::requireArgument(json, "vrtkSceneSet", "json");
    vrtk::Setter(scene, address, json, vrtk::optionsOf(options)).run();
  });
}
