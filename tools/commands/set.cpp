// vrn set: writes one value of a scene.
#include <memory>

#include "command.hpp"
#include "core/chars.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string address;
  std::string json;
  std::string output;
  std::string assets;
  bool limits = false;
};

int set(Session& session, const Choices& choices) {
  std::string json = choices.json == "-" ? readAll("-") : choices.json;
  if (json.find('\0') != std::string::npos) {
    throw Trouble("standard input: a NUL character is no JSON; give a JSON text");
  }
  if (choices.json == "-" && choices.file == "-") {
    throw Trouble("-: standard input cannot be both the scene and the value; give a file for one");
  }
  if (const auto field = charsFieldAt(choices.address)) {
    if (const auto numbers = charsJson(json, *field)) json = *numbers;
  }
  const vrnt::UniqueScene scene = session.open(choices.file);
  vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;
  options.enforceLimits = choices.limits ? 1 : 0;
  options.assetFolder = choices.assets.empty() ? nullptr : choices.assets.c_str();
  ErrorOut error;
  if (vrtkSceneSet(scene.get(), choices.address.c_str(), json.c_str(), &options, error) !=
      VRTK_OK) {
    throw Trouble(nameOf(choices.file) + ": " + error.message());
  }
  session.save(scene.get(), choices.output.empty() ? choices.file : choices.output);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("FILE", Kind::SceneFile, true, choices->file,
                   "a scene file; - for standard input");
  options.argument("ADDRESS", Kind::Text, true, choices->address,
                   "what to write, as in Camera/0/groups/General/near_distance");
  options.argument("JSON", Kind::Text, true, choices->json,
                   "the new value; - reads it from standard input");
  options.text("-o,--output", "OUT", Kind::SceneFile, choices->output,
               "write this file and leave FILE as it is; - for standard output");
  options.flag("--limits", choices->limits, "refuse a number outside the limits of its field");
  options.text("--assets", "FOLDER", Kind::Folder, choices->assets,
               "the folder that files of assets in JSON are named from");
  return [choices](Session& session) { return set(session, *choices); };
}

}  // namespace

const Command kSet = {
    "set",
    "write one value of a scene",
    "Replaces what an address names, and saves the scene. If the address, the kind of the JSON "
    "value, an enum label or, with --limits, a number is wrong, nothing is written.",
    "The value has the form that vrn get prints. What is left out of a struct has its default "
    "afterwards. null sets a slot to no object, and removes a whole object. A field that holds a "
    "text, such as a "
    "tag, also takes a JSON string.\n\nThe file is "
    "replaced whole or not at all, and keeps its permissions.",
    "vrn set box.vrnscene Camera/0/groups/General/near_distance 0.1\n"
    "vrn set box.vrnscene Camera/0/groups/Backplate/mode '\"FIT_SIZE\"'\n"
    "vrn set box.vrnscene Shape/0/groups/Target/tag '\"ground\"'\n"
    "vrn set --limits box.vrnscene -o new.vrnscene Shape/3/slots/material 2",
    kReads | kMemory,
    declare};

}  // namespace vrn
