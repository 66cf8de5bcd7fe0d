// vrn check: whether scene files can be read, and what a renderer may stumble over.
#include <algorithm>
#include <memory>

#include "command.hpp"
#include "core/report.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::vector<std::string> files;
  bool strict = false;
  bool quiet = false;
};

void printMessage(Session& session, const vrtkMessage& message, std::size_t codeWidth) {
  const Colours& colours = session.colours();
  Output& out = session.out();
  const bool error = message.severity == VRTK_ERROR;
  const Ink ink = error ? Ink::Error : Ink::Warning;
  out << "  " << colours.ink(ink, error ? "error    " : "warning  ")
      << colours.ink(ink, padded(message.code, codeWidth)) << "  "
      << (*message.address != '\0' ? oneLine(message.address) : "the file");
  if (message.offset != VRTK_NO_OFFSET) {
    out << colours.ink(Ink::Faint, " at byte " + std::to_string(message.offset));
  }
  out << "\n";
  for (const std::string& line : wrapped(oneLine(message.message), session.wrapColumns() - 11)) {
    out << "           " << line << "\n";
  }
}

int printReport(Session& session, const Choices& choices, const std::string& path,
                const vrtkReport* report) {
  const std::uint64_t errors = vrtkReportErrorCount(report);
  const std::uint64_t warnings = vrtkReportWarningCount(report);
  const int code = errors != 0 || (choices.strict && warnings != 0) ? kFound : kSame;
  if (session.json()) return code;

  const Colours& colours = session.colours();
  Output& out = session.out();
  std::string verdict;
  if (errors != 0) {
    verdict = colours.ink(Ink::Error, counted(errors, "error"));
    if (warnings != 0) verdict += ", " + colours.ink(Ink::Warning, counted(warnings, "warning"));
    verdict += "; it must not be read";
  } else if (warnings != 0) {
    verdict = colours.ink(Ink::Good, "no errors") + ", " +
              colours.ink(Ink::Warning, counted(warnings, "warning"));
  } else {
    verdict = colours.ink(Ink::Good, "no errors, no warnings");
  }
  if (choices.quiet && errors == 0 && warnings == 0) return code;
  out << colours.ink(Ink::Heading, nameOf(path)) << ": " << verdict << "\n";
  if (choices.quiet) return code;

  const std::uint64_t kept = vrtkReportMessageCount(report);
  std::size_t codeWidth = 0;
  for (std::uint64_t i = 0; i < kept; ++i) {
    codeWidth = std::max(codeWidth, std::string(vrtkReportMessage(report, i)->code).size());
  }
  for (std::uint64_t i = 0; i < kept; ++i) {
    printMessage(session, *vrtkReportMessage(report, i), codeWidth);
  }
  if (errors + warnings > kept) {
    out << colours.ink(Ink::Faint, "  and " + grouped(errors + warnings - kept) +
                                       " more; vrn check --max-messages N prints N of them\n");
  }
  return code;
}

Run declare(Options& options) {
  struct All : Choices {
    std::uint64_t maxMessages = 100;
  };
  auto choices = std::make_shared<All>();
  options.arguments("FILE", Kind::SceneFile, 1, choices->files,
                    "scene files; - for standard input");
  options.flag("--strict", choices->strict, "exit with 1 also if there are only warnings");
  options.flag("-q,--quiet", choices->quiet, "print no messages, and nothing about good files");
  options.count("--max-messages", "N", choices->maxMessages,
                "print at most N messages for a file, 100 by default");
  return [choices](Session& session) {
    constexpr std::uint64_t kMost = 1000000;
    return forEachReport(session, choices->files, std::min(choices->maxMessages, kMost),
                         [&](const std::string& path, const vrtkReport* report) {
                           return printReport(session, *choices, path, report);
                         });
  };
}

}  // namespace

const Command kCheck = {
    "check",
    "say whether scene files are safe to read",
    "Reads scene files without opening them, and prints what is wrong. An error means that the "
    "file "
    "must not be read: the library would crash, hang, run out of memory or read another scene. A "
    "warning means that it can be read, but that a renderer may stumble over it.\n\n"
    "Exits with 1 if a file has errors.",
    "Each message has a code, such as FILE_TRUNCATED or SLOT_OUT_OF_RANGE, the address of what it "
    "is "
    "about, and the byte at which it was found. The document scene_check.md lists all codes with "
    "cause and mend.",
    "vrn check box.vrnscene\n"
    "vrn check --strict --json scenes/*.vrnscene\n"
    "vrn check --max-memory 2GiB download.vrnscene",
    kJson | kMemory,
    declare};

}  // namespace vrn
