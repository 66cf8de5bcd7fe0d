// vrn patch: applies a JSON patch to a scene.
#include <memory>

#include "command.hpp"
#include "core/json_report.hpp"
#include "core/progress.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string patch;
  std::string output;
  std::string assets;
  bool limits = false;
};

int patch(Session& session, const Choices& choices) {
  if (choices.file == "-" && choices.patch == "-") {
    throw Trouble("-: standard input cannot be both the scene and the patch; give a file for one");
  }
  if (choices.output.empty()) {
    throw Trouble("--output: the option is missing; give -o OUT, which may be the file itself");
  }
  const vrnt::UniqueScene scene = session.open(choices.file);
  const std::string text = readAll(choices.patch);
  vrtkSetOptions options = VRTK_SET_OPTIONS_INIT;
  options.enforceLimits = choices.limits ? 1 : 0;
  options.assetFolder = choices.assets.empty() ? nullptr : choices.assets.c_str();
  vrdmScene_t* made = nullptr;
  vrtkJsonReport* found = nullptr;
  ErrorOut error;
  std::uint32_t status = VRTK_OK;
  {
    const Progress progress(session, choices.patch, 0);
    status = vrtkScenePatch(scene.get(), text.data(), text.size(), &options, &made, &found, error);
  }
  const JsonReport report(found);
  if (report && vrtkJsonReportCount(report.get()) != 0) {
    return tellJsonReport(session, nameOf(choices.patch), report.get());
  }
  if (status == VRTK_PATCH_FAILED || status == VRTK_JSON_INVALID) {
    session.tell(nameOf(choices.patch) + ": " + error.message());
    return kFound;
  }
  if (status != VRTK_OK) throw Trouble(nameOf(choices.patch) + ": " + error.message());
  const vrnt::UniqueScene changed(made);
  session.save(changed.get(), choices.output);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("FILE", Kind::SceneFile, true, choices->file,
                   "a scene file; - for standard input");
  options.argument("PATCH.json", Kind::JsonFile, true, choices->patch,
                   "a JSON patch; - for standard input");
  options.text("-o,--output", "OUT", Kind::SceneFile, choices->output,
               "write this file, which may be FILE; - for standard output");
  options.flag("--limits", choices->limits, "refuse a number outside the limits of its field");
  options.text("--assets", "FOLDER", Kind::Folder, choices->assets,
               "the folder that files of assets in the patch are named from");
  return [choices](Session& session) { return patch(session, *choices); };
}

}  // namespace

const Command kPatch = {
    "patch",
    "apply a JSON patch to a scene",
    "Applies a JSON patch (RFC 6902), such as vrn diff --patch prints, to the full JSON form of a "
    "scene, and writes the scene that results.\n\n"
    "If the patch does not fit, the exit code is 1, and nothing is written.",
    "Objects that the patch does not touch stay as they are, with their values and bytes.",
    "vrn patch box.vrnscene change.json -o new.vrnscene\n"
    "vrn diff --patch a.vrnscene b.vrnscene | vrn patch a.vrnscene - -o c.vrnscene",
    kJson | kReads | kMemory,
    declare};

}  // namespace vrn
