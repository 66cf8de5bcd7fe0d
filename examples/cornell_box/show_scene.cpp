// Prints a scene file. Knows no class of objects by name, but queries the library for all of them.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "run_host.hpp"
#include "value_printer.hpp"
#include "vornath_data/host.hpp"

namespace cornell_box {
namespace {

using vrnt::TypeHandle;
using vrnt::Value;
using vrnt::host::Scene;

class ScenePrinter {
 public:
  ScenePrinter(const vrdmScene_t* scene, std::ostream& out, bool changedOnly)
      : scene_(scene), out_(out), changedOnly_(changedOnly) {}

  void print() {
    out_ << "Scene " << *vrdmSceneId(scene_) << "\n\nObjects\n";
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      out_ << "  " << std::left << std::setw(22) << vrdmObjectName(objectClass) << std::right
           << std::setw(6) << countLive(objectClass) << '\n';
    }
    printTitle("Scene-wide settings");
    if (!printGroups(VRDM_CLASS_SCENE_DATA, 0)) out_ << "  (nothing is changed)\n";
    for (std::uint32_t objectClass = 0; objectClass < vrdmObjectTypeCount(); ++objectClass) {
      for (std::int32_t index = 0; index < size(objectClass); ++index) {
        printObject(objectClass, index);
      }
    }
  }

 private:
  std::int32_t size(std::uint32_t objectClass) const {
    return static_cast<std::int32_t>(vrdmContainerSize(scene_, objectClass));
  }

  std::int32_t countLive(std::uint32_t objectClass) const {
    std::int32_t live = 0;
    for (std::int32_t index = 0; index < size(objectClass); ++index) {
      if (vrdmValid(scene_, objectClass, index)) ++live;
    }
    return live;
  }

  static std::string nameOf(std::uint32_t objectClass, std::int32_t index) {
    const char* const name = vrdmObjectName(objectClass);
    return std::string(name ? name : "?") + " " + std::to_string(index);
  }

  void printTitle(const std::string& title) {
    out_ << '\n' << title << '\n' << std::string(title.size(), '-') << '\n';
  }

  void printObject(std::uint32_t objectClass, std::int32_t index) {
    printTitle(nameOf(objectClass, index));
    if (!vrdmValid(scene_, objectClass, index)) {
      out_ << "  (free slot)\n";
      return;
    }
    switch (vrdmObjectClass(objectClass)) {
      case VRDM_KIND_PROGRAM:
        printProgram(objectClass, index);
        break;
      case VRDM_KIND_ASSET:
        printAsset(objectClass, index);
        break;
      default:
        printReferences(objectClass, index);
        if (!printGroups(objectClass, index)) out_ << "  (nothing is changed)\n";
        printValue(objectClass, index);
    }
  }

  void printProgram(std::uint32_t objectClass, std::int32_t index) {
    out_ << "  id  " << *vrdmGetUniqueId(scene_, objectClass, index) << '\n';
    std::istringstream source(vrdmGetProgramSource(scene_, objectClass, index));
    for (std::string line; std::getline(source, line);) out_ << "  | " << line << '\n';
  }

  void printAsset(std::uint32_t objectClass, std::int32_t index) {
    std::vector<std::uint32_t> descriptor;
    const AssetStorage* const storage = readAsset(objectClass, index, descriptor);
    out_ << "  id          " << *vrdmGetUniqueId(scene_, objectClass, index) << '\n'
         << "  descriptor  " << descriptor.size() * sizeof(std::uint32_t)
         << " bytes, in 32-bit words:";
    for (const std::uint32_t word : descriptor) out_ << ' ' << word;
    out_ << "\n  data        " << storage->size << " bytes\n";
  }

  // No query returns the size of a class's descriptor. To find it, reads the descriptor into two
  // buffers with different contents: the bytes that are equal afterwards belong to the descriptor.
  const AssetStorage* readAsset(std::uint32_t objectClass, std::int32_t index,
                                std::vector<std::uint32_t>& descriptor) const {
    unsigned char onZeros[64];
    unsigned char onOnes[64];
    std::memset(onZeros, 0x00, sizeof onZeros);
    std::memset(onOnes, 0xFF, sizeof onOnes);
    vrdmGetAssetStorage(scene_, objectClass, index, onZeros);
    const AssetStorage* const storage = *vrdmGetAssetStorage(scene_, objectClass, index, onOnes);
    std::size_t length = 0;
    while (length < sizeof onZeros && onZeros[length] == onOnes[length]) ++length;
    descriptor.resize(length / sizeof(std::uint32_t));
    std::memcpy(descriptor.data(), onZeros, descriptor.size() * sizeof(std::uint32_t));
    return storage;
  }

  void printReferences(std::uint32_t objectClass, std::int32_t index) {
    const std::uint32_t count = vrdmReferenceCount(objectClass);
    std::size_t width = 0;
    for (std::uint32_t slot = 0; slot < count; ++slot) {
      width = std::max(width, std::strlen(vrdmReferenceType(objectClass, slot).name));
    }
    if (count != 0) out_ << "  References\n";
    for (std::uint32_t slot = 0; slot < count; ++slot) {
      const vrdmReferenceInfo info = vrdmReferenceType(objectClass, slot);
      const std::string targets =
          info.kind == VRDM_REFERENCE_REQUIRED || info.kind == VRDM_REFERENCE_OPTIONAL
              ? single(objectClass, index, slot, info)
              : list(objectClass, index, slot, info);
      out_ << "    " << std::left << std::setw(static_cast<int>(width)) << info.name << "  "
           << targets << '\n';
    }
  }

  std::string single(std::uint32_t objectClass, std::int32_t index, std::uint32_t slot,
                     const vrdmReferenceInfo& info) const {
    const std::int32_t word = vrdmGetReference(scene_, objectClass, index, slot);
    if (word != -1) return target(info.targetClass, word);
    return info.kind == VRDM_REFERENCE_REQUIRED ? "none, but one is needed" : "none";
  }

  std::string list(std::uint32_t objectClass, std::int32_t index, std::uint32_t slot,
                   const vrdmReferenceInfo& info) const {
    const std::int32_t count = vrdmGetReferenceCount(scene_, objectClass, index, slot);
    const std::int32_t* const words = vrdmGetReferenceList(scene_, objectClass, index, slot);
    std::string text;
    for (std::int32_t i = 0; i < count; ++i) {
      text += (i == 0 ? "" : ", ") + element(info, words[i]);
    }
    return count == 0 ? "empty list" : text;
  }

  // Prints a word of a list. The kind of the list tells the meaning and the coding of its words,
  // whatever the class.
  std::string element(const vrdmReferenceInfo& info, std::int32_t word) const {
    constexpr std::int32_t kNoTarget = INT32_MIN;
    if (info.kind == VRDM_REFERENCE_LIST) {
      return word == -1 ? "none" : target(info.targetClass, word);
    }
    if (word == kNoTarget) return "none";
    if (info.kind == VRDM_REFERENCE_EMITTER) {
      return word < 0 ? target(VRDM_CLASS_LIGHT, ~word) : target(VRDM_CLASS_SHAPE, word);
    }
    return word < 0 ? target(info.targetClass, ~word) + " in front"
                    : target(info.targetClass, word) + " behind";
  }

  std::string target(std::uint32_t objectClass, std::int32_t index) const {
    return nameOf(objectClass, index) +
           (vrdmValid(scene_, objectClass, index) ? "" : " (a free slot)");
  }

  // Prints the groups. Returns false if all of them were left out because nothing was changed.
  bool printGroups(std::uint32_t objectClass, std::int32_t index) {
    bool isPrinted = vrdmFieldCount(objectClass) == 0;
    for (std::uint32_t group = 0; group < vrdmFieldCount(objectClass); ++group) {
      const TypeHandle type = TypeHandle::adopt(vrdmFieldType(objectClass, group));
      const Value value = readGroup(scene_, objectClass, index, group);
      ValuePrinter printer("    ");
      printer.add(value.get(), type.get(), standardGroup(objectClass, group), changedOnly_);
      if (printer.empty()) continue;
      out_ << "  " << vrdmFieldName(objectClass, group) << '\n';
      printer.print(out_);
      isPrinted = true;
    }
    return isPrinted;
  }

  static Value readGroup(const vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                         std::uint32_t group) {
    return Value::adopt(objectClass == VRDM_CLASS_SCENE_DATA
                            ? vrdmGetSceneDataValue(scene, group)
                            : vrdmGetDataValue(scene, objectClass, index, group));
  }

  // Returns the content of a group in a new object, which is created in a scene of its own.
  const vrntValue_t* standardGroup(std::uint32_t objectClass, std::uint32_t group) {
    Value& standard = standards_[{objectClass, group}];
    if (!standard) {
      if (objectClass != VRDM_CLASS_SCENE_DATA &&
          vrdmContainerSize(fresh_.get(), objectClass) == 0) {
        vrdmCreateInstance(fresh_.get(), objectClass);
      }
      standard = readGroup(fresh_.get(), objectClass, 0, group);
    }
    return standard.get();
  }

  void printValue(std::uint32_t objectClass, std::int32_t index) {
    if (!vrdmHasValue(objectClass)) return;
    const Value value = Value::adopt(vrdmGetInstanceValue(scene_, objectClass, index));
    out_ << "  Value\n";
    ValuePrinter printer("    ");
    printer.add(value.get());
    printer.print(out_);
  }

  const vrdmScene_t* const scene_;
  std::ostream& out_;
  const bool changedOnly_;
  const Scene fresh_;
  std::map<std::pair<std::uint32_t, std::uint32_t>, Value> standards_;  // by class and group
};

constexpr char kUsage[] =
    "usage: show_scene [--changed] FILE\n"
    "\n"
    "Prints the content of a scene file. Prints the default beside each changed field.\n"
    "\n"
    "  --changed  leave out fields that have their default\n";

int run(const std::vector<std::string>& arguments) {
  bool changedOnly = false;
  std::vector<std::string> files;
  for (const std::string& argument : arguments) {
    if (argument == "--help") {
      std::cout << kUsage;
      return 0;
    }
    if (argument == "--changed") {
      changedOnly = true;
    } else {
      files.push_back(argument);
    }
  }
  if (files.size() != 1 || files[0].rfind("--", 0) == 0) {
    std::cerr << kUsage;
    return 2;
  }
  const Scene scene = Scene::read(files[0]);
  ScenePrinter(scene.get(), std::cout, changedOnly).print();
  std::cout.flush();
  if (!std::cout) throw std::runtime_error("cannot write the output");
  return 0;
}

}  // namespace
}  // namespace cornell_box

int main(int count, char** arguments) {
  return cornell_box::runHost("show_scene", count, arguments, cornell_box::run);
}
