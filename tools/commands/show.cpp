// vrn show: what stands in a scene, for people.
#include <algorithm>
#include <map>
#include <memory>
#include <sstream>
#include <utility>
#include <vornath_data/texture.hpp>

#include "command.hpp"
#include "core/parts.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string address;
  bool all = false;
  bool dump = false;
};

std::vector<std::string> segmentsOf(const std::string& address) {
  std::vector<std::string> segments;
  std::istringstream stream(address);
  for (std::string segment; std::getline(stream, segment, '/');) segments.push_back(segment);
  while (!segments.empty() && segments.back().empty()) segments.pop_back();
  return segments;
}

std::string joinedFrom(const std::vector<std::string>& segments, std::size_t first) {
  std::string text;
  for (std::size_t i = first; i < segments.size(); ++i)
    text += (i == first ? "" : "/") + segments[i];
  return text;
}

class ScenePrinter {
 public:
  ScenePrinter(Session& session, const vrdmScene_t* scene, const Choices& choices)
      : out_(session.out()),
        colours_(session.colours()),
        columns_(std::max<std::size_t>(session.columns(), 40)),
        scene_(scene),
        choices_(choices),
        segments_(segmentsOf(choices.address)) {}

  void print() {
    if (segments_.empty()) {
      printAll();
    } else if (segments_[0] == "scene") {
      printSettings();
    } else if (segments_[0] == "id" && segments_.size() == 1) {
      out_ << idText(vrdmSceneId(scene_)) << "\n";
    } else {
      printAddressed();
    }
  }

 private:
  using Index = std::int32_t;

  // What an address says behind the index of an object; all of it is empty for the whole object.
  struct Part {
    std::string kind;  // "groups", "slots", "value", "text", "desc", "bytes", "id"
    std::string name;
    std::string path;
  };

  Index size(std::uint32_t objectClass) const {
    return static_cast<Index>(vrdmContainerSize(scene_, objectClass));
  }

  [[noreturn]] void failAt(std::size_t segment, const std::string& where,
                           const std::vector<std::string>& names) const {
    throw Trouble(nameOf(choices_.file) + ": " + oneLine(choices_.address) + ": there is no " +
                  oneLine(segments_[segment]) + " in " + where +
                  suggestion(segments_[segment], names));
  }

  void printAll() {
    std::uint64_t live = 0;
    std::uint64_t free = 0;
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
      for (Index index = 0; index < size(i); ++index) {
        ++(vrdmValid(scene_, i, index) ? live : free);
      }
    }
    out_ << colours_.ink(Ink::Heading, nameOf(choices_.file)) << ": scene "
         << idText(vrdmSceneId(scene_)) << ", " << counted(live, "object")
         << (free == 0 ? "" : ", " + counted(free, "free slot")) << "\n";
    printed_ = true;
    printSettings();
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
      for (Index index = 0; index < size(i); ++index) printObject(i, index, Part());
    }
  }

  void printAddressed() {
    const std::uint32_t objectClass = classOf(segments_[0]);
    if (segments_.size() == 1) {
      if (size(objectClass) == 0) out_ << "The scene has no " << segments_[0] << ".\n";
      for (Index index = 0; index < size(objectClass); ++index) {
        printObject(objectClass, index, Part());
      }
      return;
    }
    const Index index = indexOf(objectClass, segments_[1]);
    Part part;
    if (segments_.size() > 2) {
      part.kind = segments_[2];
      const std::vector<std::string> kinds = kindsOf(objectClass);
      if (std::find(kinds.begin(), kinds.end(), part.kind) == kinds.end()) {
        failAt(2, segments_[0], kinds);
      }
      if (segments_.size() > 3) part.name = segments_[3];
      if (segments_.size() > 4) part.path = joinedFrom(segments_, 4);
    }
    printObject(objectClass, index, part);
  }

  std::uint32_t classOf(const std::string& name) const {
    std::vector<std::string> names = {"scene", "id"};
    for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) {
      if (name == vrdmObjectName(i)) return i;
      names.emplace_back(vrdmObjectName(i));
    }
    failAt(0, "the catalogue", names);
  }

  Index indexOf(std::uint32_t objectClass, const std::string& text) const {
    const std::string name = vrdmObjectName(objectClass);
    Index index = -1;
    if (!text.empty() && text.size() < 10 &&
        text.find_first_not_of("0123456789") == std::string::npos) {
      index = std::stoi(text);
    }
    if (index >= 0 && index < size(objectClass)) {
      if (vrdmValid(scene_, objectClass, index)) return index;
      throw Trouble(nameOf(choices_.file) + ": " + oneLine(choices_.address) + ": the slot " +
                    name + "/" + text + " is free; run vrn show " + shellWord(choices_.file) + " " +
                    name);
    }
    const Index slots = size(objectClass);
    throw Trouble(nameOf(choices_.file) + ": " + oneLine(choices_.address) + ": there is no " +
                  name + "/" + oneLine(text) + "; the scene has " +
                  (slots == 0   ? "none"
                   : slots == 1 ? name + "/0 only"
                                : name + "/0 to " + name + "/" + std::to_string(slots - 1)));
  }

  static std::vector<std::string> kindsOf(std::uint32_t objectClass) {
    switch (vrdmObjectClass(objectClass)) {
      case VRDM_KIND_PROGRAM:
        return {"text"};
      case VRDM_KIND_ASSET:
        return {"id", "desc", "bytes"};
      default:
        break;
    }
    std::vector<std::string> kinds;
    if (vrdmFieldCount(objectClass) != 0) kinds.emplace_back("groups");
    if (vrdmReferenceCount(objectClass) != 0) kinds.emplace_back("slots");
    if (vrdmHasValue(objectClass)) kinds.emplace_back("value");
    return kinds;
  }

  static std::string idText(const vrntUniqueId_t* id) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto* const bytes = reinterpret_cast<const unsigned char*>(id);
    std::string text;
    for (int i = 0; i < 16; ++i) {
      if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
      text += kDigits[bytes[i] >> 4U];
      text += kDigits[bytes[i] & 15U];
    }
    return text;
  }

  void printSettings() {
    Part part;
    if (segments_.size() > 1) {
      part.kind = "groups";
      part.name = segments_[1];
      part.path = joinedFrom(segments_, 2);
    }
    heading_ = colours_.ink(Ink::Heading, "scene");
    if (!printGroups(VRDM_CLASS_SCENE_DATA, 0, part, 1)) {
      endHeading(VRDM_CLASS_SCENE_DATA, colours_.ink(Ink::Faint, "all defaults"));
    }
  }

  // Puts an empty line between what was printed and what follows.
  void startBlock() {
    if (printed_) out_ << "\n";
    printed_ = true;
  }

  // A heading waits for what follows it.
  void flushHeading() {
    if (heading_.empty()) return;
    startBlock();
    out_ << heading_ << "\n";
    heading_.clear();
    shortClass_ = kNoClass;
  }

  // Ends a heading that nothing followed, as in one line on the object.
  void endHeading(std::uint32_t objectClass, const std::string& words) {
    // The many meshes of a scene stand below each other.
    if (shortClass_ != objectClass) startBlock();
    shortClass_ = objectClass;
    out_ << heading_ << "  " << words << "\n";
    heading_.clear();
  }

  void printObject(std::uint32_t objectClass, Index index, const Part& part) {
    const std::string name = std::string(vrdmObjectName(objectClass)) + " " + std::to_string(index);
    if (!vrdmValid(scene_, objectClass, index)) {
      if (choices_.all) {
        heading_ = colours_.ink(Ink::Faint, name);
        endHeading(objectClass, colours_.ink(Ink::Faint, "a free slot"));
      }
      return;
    }
    const std::string tag = tagOf(objectClass, index);
    heading_ = colours_.ink(Ink::Heading, name);
    if (!tag.empty()) heading_ += " " + colours_.ink(Ink::Name, tag);
    switch (vrdmObjectClass(objectClass)) {
      case VRDM_KIND_PROGRAM:
        printProgram(objectClass, index, part);
        return;
      case VRDM_KIND_ASSET:
        printAsset(objectClass, index, part);
        return;
      default:
        break;
    }
    bool printed = false;
    if (part.kind.empty() || part.kind == "slots") printed |= printSlots(objectClass, index, part);
    if (part.kind.empty() || part.kind == "groups") {
      printed |= printGroups(objectClass, index, part, 1);
    }
    if (part.kind.empty() || part.kind == "value") printed |= printValue(objectClass, index, part);
    if (!printed) endHeading(objectClass, colours_.ink(Ink::Faint, "all defaults"));
  }

  void printProgram(std::uint32_t objectClass, Index index, const Part& part) {
    constexpr std::size_t kMostLines = 12;
    flushHeading();
    const std::string text = printable(vrdmGetProgramSource(scene_, objectClass, index));
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) lines.push_back(line);
    const bool whole = choices_.all || !part.kind.empty() || lines.size() <= kMostLines;
    const std::size_t count = whole ? lines.size() : kMostLines - 2;
    for (std::size_t i = 0; i < count; ++i) {
      out_ << "  " << colours_.ink(Ink::Faint, "|") << " " << lines[i] << "\n";
    }
    if (lines.empty()) out_ << "  " << colours_.ink(Ink::Faint, "no text") << "\n";
    if (!whole) {
      out_ << "  "
           << colours_.ink(Ink::Faint, "| and " + counted(lines.size() - count, "line") + " more")
           << "\n";
    }
  }

  void printAsset(std::uint32_t objectClass, Index index, const Part& part) {
    const auto line = [&](const char* label, const std::string& text) {
      if (part.kind.empty() || part.kind == label || (part.kind == "desc" && *label == 'h')) {
        out_ << "  " << padded(label, 8) << text << "\n";
      }
    };
    vrdmMeshDesc mesh{};
    vrdmTextureDesc texture{};
    vrdmMaterialGraphDesc graph{};
    const auto number = [](auto value) { return std::to_string(value); };
    const AssetStorage* storage = nullptr;
    std::string desc;
    if (objectClass == VRDM_CLASS_MESH) {
      storage = *vrdmGetAssetStorage(scene_, objectClass, index, &mesh);
      desc = number(mesh.triangles) + " triangles, " + number(mesh.vertices) + " vertices";
      if (mesh.texcoordSets > 1)
        desc += ", " + number(mesh.texcoordSets) + " texture coordinate sets";
      if (mesh.flags != 0) desc += ", flags " + number(mesh.flags);
    } else if (objectClass == VRDM_CLASS_TEXTURE) {
      storage = *vrdmGetAssetStorage(scene_, objectClass, index, &texture);
      desc = number(texture.width) + " x " + number(texture.height) +
             (texture.depth == 1 ? "" : " x " + number(texture.depth)) + ", " +
             vrnt::toString(static_cast<vrnt::TextureFormat>(texture.format)) + ", " +
             vrnt::toString(static_cast<vrnt::TextureLayout>(texture.layout));
    } else if (objectClass == VRDM_CLASS_MATERIAL_GRAPH) {
      storage = *vrdmGetAssetStorage(scene_, objectClass, index, &graph);
      desc = sizeText(graph.binarySize) + ", root at " + number(graph.rootOffset) +
             ", parameters at " + number(graph.parameterOffset);
    } else {
      storage = *vrdmGetAssetStorage(scene_, objectClass, index, nullptr);
    }
    const std::string bytes = sizeText(storage != nullptr ? storage->size : 0);
    if (!choices_.all && part.kind.empty()) {
      endHeading(objectClass, desc + (desc.empty() ? "" : ", ") + bytes);
      return;
    }
    flushHeading();
    line("id", idText(vrdmGetUniqueId(scene_, objectClass, index)));
    if (!desc.empty()) line("holds", desc);
    line("bytes", bytes);
  }

  bool printSlots(std::uint32_t objectClass, Index index, const Part& part) {
    const std::uint32_t count = vrdmReferenceCount(objectClass);
    std::vector<std::string> names;
    for (std::uint32_t slot = 0; slot < count; ++slot) {
      names.emplace_back(vrdmReferenceType(objectClass, slot).name);
    }
    if (part.kind == "slots" && !part.name.empty() &&
        std::find(names.begin(), names.end(), part.name) == names.end()) {
      failAt(3, "the slots of " + segments_[0], names);
    }
    struct Row {
      std::string name;
      std::vector<std::string> targets;
    };
    std::vector<Row> rows;
    std::size_t widest = 0;
    for (std::uint32_t slot = 0; slot < count; ++slot) {
      if (part.kind == "slots" && !part.name.empty() && part.name != names[slot]) continue;
      const vrdmReferenceInfo info = vrdmReferenceType(objectClass, slot);
      const bool asked = choices_.all || part.kind == "slots";
      std::vector<std::string> targets = targetsOf(objectClass, index, slot, info, asked);
      if (targets.empty()) continue;
      widest = std::max(widest, names[slot].size());
      rows.push_back({names[slot], std::move(targets)});
    }
    if (!rows.empty()) flushHeading();
    for (const Row& row : rows) {
      out_ << "  " << padded(row.name, widest) << "  ";
      std::size_t at = widest + 4;
      for (std::size_t i = 0; i < row.targets.size(); ++i) {
        const std::string text = row.targets[i] + (i + 1 < row.targets.size() ? "," : "");
        if (i != 0 && at + 1 + text.size() > columns_) {
          out_ << "\n" << std::string(widest + 4, ' ');
          at = widest + 4;
        } else if (i != 0) {
          out_ << " ";
          ++at;
        }
        at += text.size();
        const bool bad = text.find("free slot") != std::string::npos ||
                         text.find("required") != std::string::npos ||
                         text.find("no object") != std::string::npos;
        out_ << colours_.ink(bad ? Ink::Warning : Ink::Reference, text);
      }
      out_ << "\n";
    }
    return !rows.empty();
  }

  // Returns texts for what a slot refers to; none if that is not worth a line.
  std::vector<std::string> targetsOf(std::uint32_t objectClass, Index index, std::uint32_t slot,
                                     const vrdmReferenceInfo& info, bool asked) {
    constexpr Index kMost = 24;
    constexpr Index kNone = INT32_MIN;
    const Index word = vrdmGetReference(scene_, objectClass, index, slot);
    if (info.kind == VRDM_REFERENCE_REQUIRED || info.kind == VRDM_REFERENCE_OPTIONAL) {
      if (word != -1) return {target(info.targetClass, word)};
      if (info.kind == VRDM_REFERENCE_REQUIRED) return {"none, but it is required"};
      return asked ? std::vector<std::string>{"none"} : std::vector<std::string>{};
    }
    if (word == 0) return asked ? std::vector<std::string>{"empty"} : std::vector<std::string>{};
    const Index* const words = vrdmGetReferenceList(scene_, objectClass, index, slot);
    std::vector<std::string> texts;
    for (Index i = 0; i < word; ++i) {
      if (i == kMost && !asked && word > kMost + 1) {
        texts.push_back("and " + grouped(static_cast<std::uint64_t>(word - i)) + " more");
        break;
      }
      if (info.kind == VRDM_REFERENCE_LIST) {
        texts.push_back(words[i] == -1 ? "none" : target(info.targetClass, words[i]));
      } else if (words[i] == kNone) {
        texts.emplace_back("none");
      } else if (info.kind == VRDM_REFERENCE_EMITTER) {
        texts.push_back(words[i] < 0 ? target(VRDM_CLASS_LIGHT, ~words[i])
                                     : target(VRDM_CLASS_SHAPE, words[i]));
      } else {
        texts.push_back(words[i] < 0 ? target(info.targetClass, ~words[i]) + " on the front"
                                     : target(info.targetClass, words[i]) + " on the back");
      }
    }
    return texts;
  }

  std::string target(std::uint32_t objectClass, Index index) {
    const std::string name = std::string(vrdmObjectName(objectClass)) + " " + std::to_string(index);
    if (index < 0 || index >= size(objectClass)) return name + " (no object)";
    if (!vrdmValid(scene_, objectClass, index)) return name + " (a free slot)";
    const std::string tag = tagOf(objectClass, index);
    return tag.empty() ? name : name + " " + tag;
  }

  // Returns the text by which people know an object, in quotes: the first text among its fields.
  std::string tagOf(std::uint32_t objectClass, Index index) {
    const auto found = tags_.find(objectClass);
    const TagPlace place = found != tags_.end() ? found->second : findTag(objectClass);
    if (place.group < 0) return "";
    const vrnt::UniqueValue group(
        vrdmGetDataValue(scene_, objectClass, index, static_cast<std::uint32_t>(place.group)));
    const char* const bytes = static_cast<const char*>(vrntValueData(group.get())) + place.offset;
    const std::string text = charsText(bytes, place.size);
    return text == "\"\"" ? "" : text;
  }

  struct TagPlace {
    int group = -1;
    std::uint64_t offset = 0;
    std::size_t size = 0;
  };

  TagPlace findTag(std::uint32_t objectClass) {
    TagPlace place;
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass) && place.group < 0; ++group) {
      const vrnt::UniqueType type(vrdmFieldType(objectClass, group));
      for (std::uint32_t field = 0; field < vrntTypeFieldCount(type.get()); ++field) {
        const vrnt::UniqueType member(vrntTypeFieldType(type.get(), field));
        if (vrntTypeDescriptor(member.get()) != VRNT_DESCRIPTOR_ARRAY ||
            vrntMetadataExists(member.get(), "string") == 0) {
          continue;
        }
        vrntValueView_t view;
        vrntValueStructField(&view, type.get(), field);
        place = {static_cast<int>(group), view.offset,
                 static_cast<std::size_t>(vrntTypeSize(member.get()))};
        break;
      }
    }
    tags_[objectClass] = place;
    return place;
  }

  bool printGroups(std::uint32_t objectClass, Index index, const Part& part, std::size_t indent) {
    std::vector<std::string> names;
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      names.emplace_back(vrdmFieldName(objectClass, group));
    }
    const bool named = part.kind == "groups" && !part.name.empty();
    if (named && std::find(names.begin(), names.end(), part.name) == names.end()) {
      failAt(objectClass == VRDM_CLASS_SCENE_DATA ? 1 : 3, "the groups of " + segments_[0], names);
    }
    bool printed = false;
    for (std::uint32_t group = 0; group < names.size(); ++group) {
      if (named && part.name != names[group]) continue;
      const vrnt::UniqueValue value(objectClass == VRDM_CLASS_SCENE_DATA
                                        ? vrdmGetSceneDataValue(scene_, group)
                                        : vrdmGetDataValue(scene_, objectClass, index, group));
      const Standard& standard = standardOf(objectClass, group);
      PartChoice choice;
      choice.path = named ? part.path : "";
      choice.all = choices_.all || !choice.path.empty();
      choice.wholeArrays = choices_.all || !choice.path.empty();
      const std::vector<PartLine> lines =
          partsOf(value.get(), standard.type.get(), standard.value.get(), choice);
      if (lines.empty() && !choice.path.empty()) {
        failPath(part, value.get(), standard.type.get());
      }
      if (lines.empty()) continue;
      flushHeading();
      out_ << std::string(indent * 2, ' ') << names[group] << "\n";
      printLines(lines, indent + 1);
      printed = true;
    }
    return printed;
  }

  [[noreturn]] void failPath(const Part& part, const vrntValue_t* value,
                             const vrntType_t* type) const {
    PartChoice choice;
    choice.all = true;
    std::vector<std::string> paths;
    for (const PartLine& line : partsOf(value, type, nullptr, choice)) {
      // Each part of a path may be the one that was meant.
      for (std::size_t end = line.path.find('/'); end != std::string::npos;
           end = line.path.find('/', end + 1)) {
        paths.push_back(line.path.substr(0, end));
      }
      paths.push_back(line.path);
    }
    throw Trouble(nameOf(choices_.file) + ": " + oneLine(choices_.address) + ": there is no " +
                  oneLine(part.path) + " there" + suggestion(part.path, paths));
  }

  struct Standard {
    vrnt::UniqueType type;
    vrnt::UniqueValue value;
  };

  // The default of a group is what a new object has.
  const Standard& standardOf(std::uint32_t objectClass, std::uint32_t group) {
    Standard& standard = standards_[{objectClass, group}];
    if (standard.type) return standard;
    if (!fresh_) fresh_.reset(vrdmCreateScene());
    if (!fresh_) throw std::bad_alloc();
    if (objectClass == VRDM_CLASS_SCENE_DATA) {
      standard.value.reset(vrdmGetSceneDataValue(fresh_.get(), group));
    } else {
      if (vrdmContainerSize(fresh_.get(), objectClass) == 0) {
        vrdmCreateInstance(fresh_.get(), objectClass);
      }
      standard.value.reset(vrdmGetDataValue(fresh_.get(), objectClass, 0, group));
    }
    standard.type.reset(vrdmFieldType(objectClass, group));
    return standard;
  }

  bool printValue(std::uint32_t objectClass, Index index, const Part& part) {
    if (!vrdmHasValue(objectClass)) return false;
    const vrnt::UniqueValue value(vrdmGetInstanceValue(scene_, objectClass, index));
    flushHeading();
    out_ << "  value";
    if (!value) {
      out_ << "  " << colours_.ink(Ink::Warning, "none") << "\n";
      return true;
    }
    std::string type = vrntTypeString(vrntValueType(value.get()));
    const std::size_t room = columns_ - 9;
    if (!choices_.all && type.size() > room) type = type.substr(0, room - 3) + "...";
    out_ << "  " << colours_.ink(Ink::Faint, type) << "\n";
    if (part.name == "type") return true;
    if (part.kind == "value" && !part.name.empty() && part.name != "data") {
      failAt(3, "the value", {"type", "data"});
    }
    PartChoice choice;
    choice.path = part.kind == "value" ? part.path : "";
    choice.all = true;
    choice.wholeArrays = choices_.all || !choice.path.empty();
    const std::vector<PartLine> lines =
        partsOf(value.get(), vrntValueType(value.get()), nullptr, choice);
    if (lines.empty() && !choice.path.empty()) {
      failPath(part, value.get(), vrntValueType(value.get()));
    }
    printLines(lines, 2);
    return true;
  }

  void printLines(const std::vector<PartLine>& lines, std::size_t indent) {
    const std::string space(indent * 2, ' ');
    const bool swatches =
        colours_.on() && std::any_of(lines.begin(), lines.end(),
                                     [](const PartLine& line) { return line.colour.has_value(); });
    std::size_t labels = 0;
    std::size_t texts = 0;
    for (const PartLine& line : lines) {
      labels = std::max(labels, width(line.path));
      if (!line.standard.empty()) texts = std::max(texts, width(line.text));
    }
    for (const PartLine& line : lines) {
      const std::string label = padded(line.path, labels);
      out_ << space << (line.changed ? label : colours_.ink(Ink::Faint, label)) << "  ";
      if (swatches) out_ << (line.colour ? colours_.swatch(*line.colour) : "   ");
      if (!line.changed) {
        out_ << colours_.ink(Ink::Faint, line.text);
      } else if (line.standard.empty()) {
        out_ << line.text;
      } else {
        out_ << padded(line.text, texts) << "  "
             << colours_.ink(Ink::Faint, "default " + line.standard);
      }
      out_ << "\n";
      printBlock(line.block, indent + 1);
    }
  }

  // Prints numbers in columns, an even number of them, so that pairs stay together.
  void printBlock(const std::vector<std::string>& texts, std::size_t indent) {
    std::size_t widest = 0;
    for (const std::string& text : texts) widest = std::max(widest, text.size());
    const std::size_t room = columns_ > indent * 2 ? columns_ - indent * 2 : 1;
    std::size_t perLine = std::max<std::size_t>(room / (widest + 2), 1);
    if (perLine > 1) perLine -= perLine % 2;
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i % perLine == 0) out_ << std::string(indent * 2, ' ');
      out_ << std::string(widest - texts[i].size(), ' ') << texts[i]
           << (i % perLine == perLine - 1 || i + 1 == texts.size() ? "\n" : "  ");
    }
  }

  Output& out_;
  const Colours& colours_;
  const std::size_t columns_;
  const vrdmScene_t* const scene_;
  const Choices& choices_;
  const std::vector<std::string> segments_;
  bool printed_ = false;
  std::string heading_;
  static constexpr std::uint32_t kNoClass = 0xFFFFFFF0;
  std::uint32_t shortClass_ = kNoClass;  // of the object above, if that took one line
  vrnt::UniqueScene fresh_;  // with one object of each class whose defaults were asked for
  std::map<std::pair<std::uint32_t, std::uint32_t>, Standard> standards_;
  std::map<std::uint32_t, TagPlace> tags_;
};

int show(Session& session, const Choices& choices) {
  const vrnt::UniqueScene scene = session.open(choices.file);
  if (choices.dump) {
    if (session.json() || !choices.address.empty()) {
      throw Trouble("--dump: it prints the whole scene as text; leave out --json and the address");
    }
    requireStreamed(session, [&](vrtkWriteFunction write, void* context, vrtkError** error) {
      return vrtkSceneDump(scene.get(), write, context, error);
    });
    return kSame;
  }
  if (session.json()) {
    if (choices.address.empty()) {
      requireStreamed(session, [&](vrtkWriteFunction write, void* context, vrtkError** error) {
        vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
        options.full = choices.all ? 1 : 0;
        return vrtkSceneExport(scene.get(), &options, write, context, error);
      });
    } else {
      printJson(session, requireString([&](char** text, vrtkError** error) {
                           return vrtkSceneGet(scene.get(), choices.address.c_str(), text, error);
                         }).get());
    }
    return kSame;
  }
  ScenePrinter(session, scene.get(), choices).print();
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("FILE", Kind::SceneFile, true, choices->file,
                   "a scene file; - for standard input");
  options.argument("ADDRESS", Kind::Text, false, choices->address,
                   "what to show, as in Camera/0 or Shape/3/groups/General; everything without it");
  options.flag("-a,--all", choices->all,
               "show also fields that have their defaults, all elements of arrays, and free slots");
  options.flag("--dump", choices->dump, "print the dump of the library instead");
  return [choices](Session& session) { return show(session, *choices); };
}

}  // namespace

const Command kShow = {
    "show",
    "show what stands in a scene file",
    "Prints the objects of a scene: what their slots refer to, the fields of their groups that are "
    "not the default, with the default beside them, and their values. On a terminal with colours, "
    "colours and spectra have a swatch.",
    "The fields are printed with the paths that their addresses end in, so that they can be given "
    "to vrn get and vrn set.\n\nThe RGB triple beside a spectrum is that under D65. With "
    "--json, the command prints the scene, or what the address names, in the form of "
    "scene_json.md, "
    "the bytes of assets by their digests only.",
    "vrn show box.vrnscene\n"
    "vrn show box.vrnscene Camera/0\n"
    "vrn show --all box.vrnscene scene/Raytracer",
    kJson | kReads | kMemory,
    declare};

}  // namespace vrn
