// vrn export: a scene as JSON.
#include <memory>

#include "command.hpp"
#include "core/progress.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string output = "-";
  bool full = false;
  bool inlined = false;
  bool digests = false;
};

int exportScene(Session& session, const Choices& choices) {
  if (choices.inlined && choices.digests) {
    throw Trouble("--digests: it leaves out the bytes that --inline asks for; give one of them");
  }
  const vrnt::UniqueScene scene = session.open(choices.file);
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = choices.full ? 1 : 0;
  // Standard output has no folder beside it.
  options.inlineAssets = choices.inlined || (choices.output == "-" && !choices.digests) ? 1 : 0;
  if (choices.output == "-") {
    requireStreamed(session, [&](vrtkWriteFunction write, void* context, vrtkError** error) {
      return vrtkSceneExport(scene.get(), &options, write, context, error);
    });
    return kSame;
  }
  const Progress progress(session, choices.output, 0);
  if (!choices.digests) {
    require([&](vrtkError** error) {
      return vrtkSceneExportFile(scene.get(), choices.output.c_str(), &options, error);
    });
    return kSame;
  }
  char* text = nullptr;
  std::uint64_t size = 0;
  require([&](vrtkError** error) {
    return vrtkSceneExportString(scene.get(), &options, &text, &size, error);
  });
  const String owner(text);
  session.saveBytes({text, static_cast<std::size_t>(size)}, choices.output);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("FILE", Kind::SceneFile, true, choices->file,
                   "a scene file; - for standard input");
  options.text("-o,--output", "OUT.json", Kind::JsonFile, choices->output,
               "write this file; standard output without it");
  options.flag("--full", choices->full, "write also fields that have their defaults");
  options.flag("--inline", choices->inlined,
               "write the bytes of assets into the document, in base64");
  options.flag("--digests", choices->digests,
               "leave the bytes of assets out, and name them by size and digest only");
  return [choices](Session& session) { return exportScene(session, *choices); };
}

}  // namespace

const Command kExport = {
    "export",
    "write a scene as JSON",
    "Writes a scene as a JSON document from which vrn build makes the same scene again. The bytes "
    "of "
    "assets go into files in the folder OUT.assets beside OUT.json, each with its digest as its "
    "name. On standard output they stand in the document.",
    "The same content gives the same bytes, one field a line. So the documents can be kept in "
    "version "
    "control. The document scene_json.md describes the form. With --digests, the document cannot "
    "be "
    "built again.",
    "vrn export box.vrnscene -o box.json\n"
    "vrn export --digests box.vrnscene | less\n"
    "vrn export box.vrnscene | jq .objects.Camera",
    kReads | kMemory | kJson,
    declare};

}  // namespace vrn
