// vrn merge: several scenes in one.
#include <memory>

#include "command.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::vector<std::string> files;
  std::string output;
  std::string map;
};

struct RenumberingDeleter {
  void operator()(vrtkRenumbering* renumbering) const noexcept {
    vrtkRenumberingDestroy(renumbering);
  }
};

int merge(Session& session, const Choices& choices) {
  if (choices.output.empty()) {
    throw Trouble("--output: the option is missing; give -o OUT, which may be the first file");
  }
  if (choices.map == "-" && choices.output == "-") {
    throw Trouble("-: standard output cannot take both the scene and the map; give a file for one");
  }
  const vrnt::UniqueScene scene = session.open(choices.files[0]);
  std::string map = "[";
  for (std::size_t i = 1; i < choices.files.size(); ++i) {
    const vrnt::UniqueScene source = session.open(choices.files[i]);
    vrtkRenumbering* made = nullptr;
    ErrorOut error;
    if (vrtkSceneImport(scene.get(), source.get(), &made, error) != VRTK_OK) {
      throw Trouble(nameOf(choices.files[i]) + ": " + error.message());
    }
    const std::unique_ptr<vrtkRenumbering, RenumberingDeleter> renumbering(made);
    const String slots = requireString([&](char** text, vrtkError** where) {
      return vrtkRenumberingJson(renumbering.get(), text, where);
    });
    map += (i == 1 ? "\n  { \"file\": " : ",\n  { \"file\": ") + jsonString(choices.files[i]) +
           ", \"slots\": " + oneLineJson(slots.get()) + " }";
  }
  map += "\n]\n";
  // The map is of no use without the scene.
  session.save(scene.get(), choices.output);
  if (!choices.map.empty()) session.saveBytes(map, choices.map);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.arguments("FILE", Kind::SceneFile, 2, choices->files,
                    "scene files: the first one takes in all others");
  options.text("-o,--output", "OUT", Kind::SceneFile, choices->output,
               "write this file, which may be one of FILE; - for standard output");
  options.text("--map", "MAP.json", Kind::JsonFile, choices->map,
               "write which slot of each file became which; - for standard output");
  return [choices](Session& session) { return merge(session, *choices); };
}

}  // namespace

const Command kMerge = {
    "merge",
    "import scenes into another one",
    "Imports all scenes but the first into the first, and writes the result. References, and the "
    "textures that values name, are renumbered. Programs that both scenes have become one. The id "
    "and the settings of the first scene stay.",
    "The map is an array with an element for each imported file: { \"file\": FILE, \"slots\": { "
    "\"Camera\": [ 3, null ] } }. The array of a class has, for each slot of the file, its slot in "
    "the result, or null for a free slot.",
    "vrn merge room.vrnscene chair.vrnscene table.vrnscene -o all.vrnscene\n"
    "vrn merge a.vrnscene b.vrnscene -o c.vrnscene --map map.json",
    kReads | kMemory,
    declare};

}  // namespace vrn
