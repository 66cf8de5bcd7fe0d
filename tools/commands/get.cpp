// vrn get: one value of a scene as JSON.
#include <unistd.h>

#include <memory>

#include "command.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string file;
  std::string address;
  bool raw = false;
};

int get(Session& session, const Choices& choices) {
  const vrnt::UniqueScene scene = session.open(choices.file);
  const std::string where = nameOf(choices.file) + ": ";
  ErrorOut error;
  if (choices.raw) {
    const void* bytes = nullptr;
    std::uint64_t size = 0;
    if (vrtkSceneGetBytes(scene.get(), choices.address.c_str(), &bytes, &size, error) != VRTK_OK) {
      throw Trouble(where + error.message());
    }
    const std::string_view text(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
    if (isTerminal(STDOUT_FILENO) && text.find('\0') != std::string_view::npos) {
      throw Trouble(
          "standard output: these bytes are nothing for a terminal; redirect it to a file");
    }
    session.out().write(text);
    return kSame;
  }
  char* text = nullptr;
  if (vrtkSceneGet(scene.get(), choices.address.c_str(), &text, error) != VRTK_OK) {
    throw Trouble(where + error.message());
  }
  const String owner(text);
  printJson(session, text);
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("FILE", Kind::SceneFile, true, choices->file,
                   "a scene file; - for standard input");
  options.argument("ADDRESS", Kind::Text, true, choices->address,
                   "what to print, as in Camera/0/groups/General/near_distance");
  options.flag(
      "--raw", choices->raw,
      "print the bytes of an asset, as in Mesh/0/bytes, or the text of a program as it is");
  return [choices](Session& session) { return get(session, *choices); };
}

}  // namespace

const Command kGet = {
    "get",
    "print one value of a scene as JSON",
    "Prints what an address names: a group, a field, a slot, the value of an object, the text of a "
    "program, or a whole object. The document has all fields, also those with defaults.",
    "",
    "vrn get box.vrnscene Camera/0/groups/General/near_distance\n"
    "vrn get box.vrnscene Shape/3/slots/material\n"
    "vrn get --raw box.vrnscene Mesh/0/bytes > mesh.bin",
    kReads | kMemory | kJson,
    declare};

}  // namespace vrn
