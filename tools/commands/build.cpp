// vrn build: a scene file from JSON.
#include <memory>

#include "command.hpp"
#include "core/json_report.hpp"
#include "core/progress.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string output;
  std::string assets;
};

std::string targetOf(const std::string& path) {
  constexpr std::string_view kEnd = ".json";
  if (isStream(path)) return "-";
  if (path.size() > kEnd.size() &&
      path.compare(path.size() - kEnd.size(), kEnd.size(), kEnd) == 0) {
    return path.substr(0, path.size() - kEnd.size()) + ".vrnscene";
  }
  return path + ".vrnscene";
}

int build(Session& session, const Choices& choices) {
  vrtkBuildOptions options = VRTK_BUILD_OPTIONS_INIT;
  options.assetFolder = choices.assets.empty() ? nullptr : choices.assets.c_str();
  vrdmScene_t* made = nullptr;
  vrtkJsonReport* found = nullptr;
  ErrorOut error;
  std::uint32_t status = VRTK_OK;
  {
    const Progress progress(session, choices.file, 0);
    if (isStream(choices.file)) {
      const std::string json = readAll(choices.file);
      // A document without a folder of its own names files from the current one.
      if (options.assetFolder == nullptr) options.assetFolder = ".";
      status = vrtkSceneBuild(json.data(), json.size(), &options, &made, &found, error);
    } else {
      status = vrtkSceneBuildFile(choices.file.c_str(), &options, &made, &found, error);
    }
  }
  const JsonReport report(found);
  if (report && vrtkJsonReportCount(report.get()) != 0) {
    return tellJsonReport(session, nameOf(choices.file), report.get());
  }
  if (status != VRTK_OK) throw Trouble(error.message());
  const vrnt::UniqueScene scene(made);
  session.save(scene.get(), choices.output.empty() ? targetOf(choices.file) : choices.output);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("IN.json", Kind::JsonFile, true, choices->file,
                   "a scene as JSON; - for standard input");
  options.text("-o,--output", "OUT", Kind::SceneFile, choices->output,
               "write this file; IN.vrnscene without it; - for standard output");
  options.text("--assets", "FOLDER", Kind::Folder, choices->assets,
               "the folder that files of assets are named from; that of IN.json without it");
  return [choices](Session& session) { return build(session, *choices); };
}

}  // namespace

const Command kBuild = {"build",
                        "make a scene file from JSON",
                        "Builds the scene that a JSON document describes and writes its file. The "
                        "document may leave out "
                        "everything that has its default.\n\n"
                        "Errors are printed with line, column and JSON pointer, up to 20 at once. "
                        "The exit code is then "
                        "1, and nothing is written.",
                        "The document scene_json.md describes the form.",
                        "vrn build box.json\n"
                        "vrn build scene.json -o scene.vrnscene\n"
                        "vrn export a.vrnscene | jq "
                        "'.objects.Camera[0].groups.General.near_distance = 0.1' | vrn build "
                        "- -o b.vrnscene",
                        kJson,
                        declare};

}  // namespace vrn
