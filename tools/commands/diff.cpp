// vrn diff: the differences between two scenes.
#include <algorithm>
#include <memory>

#include "command.hpp"
#include "core/chars.hpp"
#include "core/progress.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string a;
  std::string b;
  double tolerance = 0;
  double absolute = 0;
  bool ids = false;
  bool patch = false;
  bool quiet = false;
};

struct DiffDeleter {
  void operator()(vrtkDiff* diff) const noexcept { vrtkDiffDestroy(diff); }
};

// A difference as people see it.
struct Line {
  std::uint32_t kind;
  std::string address;
  std::string old;
  std::string now;
};

// Prints an address and the old and the new text, on one line if there is room.
void printLine(Session& session, const Line& line, std::size_t addressWidth) {
  const Colours& colours = session.colours();
  Output& out = session.out();
  if (line.kind == VRTK_DIFF_REMOVED) {
    out << colours.ink(Ink::Error, "- ") << line.address;
    if (!line.old.empty()) out << "  " << colours.ink(Ink::Error, line.old);
  } else if (line.kind == VRTK_DIFF_ADDED) {
    out << colours.ink(Ink::Good, "+ ") << line.address;
    if (!line.now.empty()) out << "  " << colours.ink(Ink::Good, line.now);
  } else {
    const std::size_t left = std::max(addressWidth, width(line.address));
    const bool fits = left + width(line.old) + width(line.now) + 8 <= session.wrapColumns();
    out << "  " << (fits ? padded(line.address, addressWidth) + "  " : line.address + "\n      ")
        << colours.ink(Ink::Error, line.old) << (fits ? " -> " : "\n   -> ")
        << colours.ink(Ink::Good, line.now);
  }
  out << "\n";
}

int diff(Session& session, const Choices& choices) {
  if (choices.a == "-" && choices.b == "-") {
    throw Trouble("-: standard input cannot be both scenes; give a file for one");
  }
  const vrnt::UniqueScene a = session.open(choices.a);
  const vrnt::UniqueScene b = session.open(choices.b);
  vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
  options.relative = choices.tolerance;
  options.absolute = choices.absolute;
  options.includeIds = choices.ids ? 1 : 0;
  if (choices.quiet && !session.json() && !choices.patch) options.maxEntries = 1;
  vrtkDiff* found = nullptr;
  require(
      [&](vrtkError** error) { return vrtkSceneDiff(a.get(), b.get(), &options, &found, error); });
  const std::unique_ptr<vrtkDiff, DiffDeleter> list(found);
  const int code = vrtkDiffFound(found) == 0 ? kSame : kFound;
  if (choices.patch) {
    printJson(session, requireString([&](char** text, vrtkError** error) {
                         return vrtkSceneDiffPatch(a.get(), b.get(), &options, text, error);
                       }).get());
    return code;
  }
  if (session.json()) {
    printJson(session, requireString([&](char** text, vrtkError** error) {
                         return vrtkDiffJson(found, text, error);
                       }).get());
    return code;
  }
  if (choices.quiet) return code;
  std::size_t addressWidth = 0;
  std::vector<Line> lines;
  std::string chars;  // the address of the text whose bytes are being passed
  for (std::uint64_t i = 0; i < vrtkDiffCount(found); ++i) {
    const vrtkDiffEntry& entry = *vrtkDiffEntryAt(found, i);
    const std::string_view address = entry.address;
    const std::size_t slash = address.rfind('/');
    const std::string_view parent = address.substr(0, std::min(slash, address.size()));
    if (!chars.empty() && parent == chars) continue;
    chars.clear();
    Line line{entry.kind, oneLine(address), entry.oldText != nullptr ? oneLine(entry.oldText) : "",
              entry.newText != nullptr ? oneLine(entry.newText) : ""};
    if (const auto field = charsFieldAt(parent); field && entry.kind == VRTK_DIFF_CHANGED) {
      // A text is one difference to people, not one for each byte.
      chars = parent;
      line.address = chars;
      line.old = charsText(a.get(), *field);
      line.now = charsText(b.get(), *field);
    }
    // One long address must not move all others.
    if (entry.kind == VRTK_DIFF_CHANGED) {
      addressWidth = std::max(addressWidth, std::min<std::size_t>(width(line.address), 60));
    }
    lines.push_back(std::move(line));
  }
  for (const Line& line : lines) printLine(session, line, addressWidth);
  return code;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("A", Kind::SceneFile, true, choices->a, "the old scene file");
  options.argument("B", Kind::SceneFile, true, choices->b,
                   "the new scene file; - for standard input");
  options.number("--tolerance", "REL", choices->tolerance,
                 "take floats for equal that differ by at most REL times the larger magnitude");
  options.number("--abs", "ABS", choices->absolute,
                 "take floats for equal that differ by at most ABS");
  options.flag("--ids", choices->ids, "compare also the ids of the scenes and of their assets");
  options.flag("--patch", choices->patch, "print a JSON patch (RFC 6902) that leads from A to B");
  options.flag("-q,--quiet", choices->quiet, "print nothing; the exit code tells");
  return [choices](Session& session) { return diff(session, *choices); };
}

}  // namespace

const Command kDiff = {
    "diff",
    "print what differs between two scenes",
    "Compares the content of two scene files and prints the addresses of what differs, as old -> "
    "new. An object that only A has stands behind -, one that only B has behind +. Bytes of assets "
    "are compared by their digests.\n\n"
    "Exits with 0 if there is no difference, and with 1 if there is one.",
    "Two floats are equal if they differ by no more than the larger of ABS and REL times the "
    "larger "
    "of their magnitudes. The ids of scenes and assets are random, and are compared only with "
    "--ids.\n\nThe patch of --patch belongs to the full JSON form of A; vrn patch applies it.",
    "vrn diff old.vrnscene new.vrnscene\n"
    "vrn diff --tolerance 1e-5 old.vrnscene new.vrnscene\n"
    "vrn diff --patch old.vrnscene new.vrnscene > change.json",
    kJson | kReads | kMemory,
    declare};

}  // namespace vrn
