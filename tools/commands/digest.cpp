// vrn digest: one line that is equal for equal content.
#include <memory>

#include "command.hpp"
#include "core/progress.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::vector<std::string> files;
  bool ids = false;
};

int digest(Session& session, const Choices& choices) {
  int worst = kSame;
  std::string documents;
  for (const std::string& path : choices.files) {
    char hex[VRTK_DIGEST_LENGTH] = {};
    try {
      const vrnt::UniqueScene scene = session.open(path);
      vrtkDigestOptions options = VRTK_DIGEST_OPTIONS_INIT;
      options.includeIds = choices.ids ? 1 : 0;
      ErrorOut error;
      const Progress progress(session, path, 0);
      if (vrtkSceneDigest(scene.get(), &options, hex, error) != VRTK_OK) {
        throw Trouble(nameOf(path) + ": " + error.message());
      }
    } catch (const Trouble& trouble) {
      session.tell(trouble.what());
      worst = kTrouble;
      continue;
    }
    if (session.json()) {
      documents += (documents.empty() ? "" : ",\n") +
                   ("{ \"file\": " + jsonString(path) + ", \"digest\": \"sha256:" + hex + "\" }");
    } else {
      session.out() << "sha256:" << hex << "  " << (path == "-" ? "-" : oneLine(path)) << "\n";
    }
  }
  if (session.json() && !documents.empty()) {
    const bool several = choices.files.size() > 1;
    session.out() << (several ? "[\n" + documents + "\n]\n" : documents + "\n");
  }
  return worst;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.arguments("FILE", Kind::SceneFile, 1, choices->files,
                    "scene files; - for standard input");
  options.flag("--ids", choices->ids, "count also the ids of the scene and of its assets");
  return [choices](Session& session) { return digest(session, *choices); };
}

}  // namespace

const Command kDigest = {
    "digest",
    "print a digest of the content of scenes",
    "Prints sha256:HEX and the name of each file. Two files with the same content have the same "
    "digest, whatever process wrote them and whatever free slots still contain; any change of the "
    "content gives another one.",
    "The ids of scenes and assets are random, and count only with --ids. With --json, prints an "
    "object with the members \"file\" and \"digest\", or an array of such objects for several "
    "files.",
    "vrn digest *.vrnscene",
    kJson | kReads | kMemory,
    declare};

}  // namespace vrn
