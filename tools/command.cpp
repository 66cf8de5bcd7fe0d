#include "command.hpp"

#include <vornath_data/version.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>
#include <vornath_data/result.hpp>

#include "core/external.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

constexpr const char* kNoMemory =
    "there is not enough memory; close other programs, or take a smaller file";

std::string versionText() {
  return std::string("vrn ") + vrtkVersion() + ", with vornath_data " +
         std::to_string(VORNATH_DATA_VERSION_MAJOR) + "." +
         std::to_string(VORNATH_DATA_VERSION_MINOR) + "." +
         std::to_string(VORNATH_DATA_VERSION_PATCH) + "\n";
}

std::vector<std::string> commandNames() {
  std::vector<std::string> names = {"help"};
  for (const Command* const command : commands()) names.push_back(command->name);
  for (const ExternalProgram& program : externalPrograms()) names.emplace_back(program.command);
  return names;
}

// Prints a text and ends. `vrn` stands in front of messages if `command` is empty.
int guarded(const std::string& command, const std::function<int()>& work) {
  const std::string start = command.empty() ? "vrn: " : "vrn " + command + ": ";
  const auto report = [&](const std::string& message) {
    tell(start + oneLine(message) + "\n");
    return static_cast<int>(kTrouble);
  };
  try {
    return work();
  } catch (const Trouble& trouble) {
    const int code = report(trouble.what());
    tell(trouble.more());
    return code;
  } catch (const ReaderGone&) {
    return kSame;
  } catch (const std::bad_alloc&) {
    return report(kNoMemory);
  } catch (const std::exception& error) {
    return report(error.what());
  }
}

int printText(const std::string& text) {
  return guarded("", [&] {
    Output out;
    out << text;
    out.finish();
    return kSame;
  });
}

int runCommand(const Command& command, const std::vector<std::string>& arguments) {
  return guarded(command.name, [&] {
    Options options(command.name);
    CommonOptions common;
    const Run work = declareAll(command, options, common);
    if (!options.parse(arguments)) {
      if (options.wantsHelp()) {
        const std::size_t columns =
            isTerminal(1) ? std::min<std::size_t>(terminalColumns(), 100) : 100;
        return printText(
            options.help(command.summary, command.description, command.examples, columns));
      }
      return printText(versionText());
    }
    Session session(command.name, common);
    int code = kTrouble;
    try {
      code = work(session);
    } catch (const std::bad_alloc&) {
      if (session.lastFile().empty()) throw;
      throw Trouble(nameOf(session.lastFile()) + ": " + kNoMemory);
    }
    session.out().finish();
    return code;
  });
}

}  // namespace

const std::vector<const Command*>& commands() {
  static const std::vector<const Command*> all = {
      &kInfo,  &kCheck, &kShow,   &kGet,       &kSet,  &kExport, &kBuild,   &kDiff,
      &kPatch, &kMerge, &kDigest, &kCatalogue, &kType, &kValue,  &kSpectrum};
  return all;
}

const Command* findCommand(const std::string& name) {
  for (const Command* const command : commands()) {
    if (command->name == name) return command;
  }
  return nullptr;
}

Run declareAll(const Command& command, Options& options, CommonOptions& common) {
  Run work = command.declare(options);
  options.beginCommon();
  if ((command.shared & kJson) != 0) {
    options.flag("--json", common.json, "print one JSON document instead of text");
  }
  options.choice("--color", "WHEN", {"auto", "always", "never"}, common.color, "colours");
  if ((command.shared & kReads) != 0) {
    options.flag("--trust", common.trust, "read scene files without a check before");
  }
  if ((command.shared & kMemory) != 0) {
    options.size("--max-memory", "SIZE", common.maxMemory,
                 "refuse a file if reading it may take more memory, as in 2GiB");
  }
  return work;
}

std::string overview() {
  std::string text =
      "vrn: look into scene files, check, change, compare and convert them\n\n"
      "usage: vrn COMMAND [OPTIONS] ARGUMENTS\n\nCommands:\n";
  for (const Command* const command : commands()) {
    text += "  " + padded(command->name, 12) + command->summary + "\n";
  }
  text += "\nCommands that are programs of their own:\n";
  for (const ExternalProgram& program : externalPrograms()) {
    const std::string command = program.command;
    text += "  vrn-" + padded(command, 8) + "`vrn " + command + "`: " + program.summary + "\n";
  }
  return text +
         "\n`vrn COMMAND --help` prints the options of a command, and `man vrn` what holds for all "
         "of them.\nFor another COMMAND, vrn runs the program vrn-COMMAND.\n\n"
         "Exit codes: 0 done, same or nothing found; 1 something was found, such as a difference\n"
         "or an error in a file; 2 trouble.\n";
}

int run(const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    tell("vrn: COMMAND: the argument is missing; vrn --help lists the commands\n");
    return kTrouble;
  }
  const std::string& first = arguments[0];
  if (first == "--help" || first == "-h" || (first == "help" && arguments.size() == 1)) {
    return printText(overview());
  }
  if (first == "--version") return printText(versionText());
  if (first == "help") return run({arguments[1], "--help"});
  if (const Command* const command = findCommand(first)) {
    return runCommand(*command, {arguments.begin() + 1, arguments.end()});
  }
  return guarded("", [&]() -> int {
    if (!first.empty() && first[0] == '-') {
      throw Trouble(oneLine(first) +
                    ": there is no such option here; options follow the command, as in vrn check "
                    "--json FILE");
    }
    runExternal(first, {arguments.begin() + 1, arguments.end()});
    const std::string near = suggestion(first, commandNames());
    throw Trouble(oneLine(first) + ": there is no such command" +
                  (near.empty() ? "; run vrn --help" : near));
  });
}

}  // namespace vrn
