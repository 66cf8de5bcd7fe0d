// What a command is.
#ifndef VRN_COMMAND_HPP
#define VRN_COMMAND_HPP

#include <functional>
#include <string>
#include <vector>

#include "core/options.hpp"
#include "core/session.hpp"

namespace vrn {

/// Does the work of a command and returns the exit code. Throws Trouble.
using Run = std::function<int(Session&)>;

/// Which of the options that commands share a command has, as bits. All have --color.
enum Shared : unsigned {
  kPlain = 0,
  kJson = 1,    ///< --json
  kReads = 2,   ///< --trust
  kMemory = 4,  ///< --max-memory
};

struct Command {
  std::string name;
  std::string summary;      ///< what it does, in a few words
  std::string description;  ///< paragraphs for --help and the manual page
  std::string notes;        ///< more paragraphs for the manual page
  std::string examples;     ///< a command a line
  unsigned shared = kPlain;
  /// Declares the options of a run, and returns what does the work.
  Run (*declare)(Options& options) = nullptr;
};

/// Returns all commands, in the order in which `vrn --help` lists them.
const std::vector<const Command*>& commands();

/// Returns the command of a name, or null.
const Command* findCommand(const std::string& name);

/// Declares all options of a command: its own, and those that it shares.
Run declareAll(const Command& command, Options& options, CommonOptions& common);

/// Returns what `vrn --help` prints.
std::string overview();

/// Runs vrn with the arguments behind its name. Returns the exit code.
int run(const std::vector<std::string>& arguments);

// The commands, one file each.
extern const Command kInfo;
extern const Command kCheck;
extern const Command kShow;
extern const Command kGet;
extern const Command kSet;
extern const Command kExport;
extern const Command kBuild;
extern const Command kDiff;
extern const Command kPatch;
extern const Command kMerge;
extern const Command kDigest;
extern const Command kCatalogue;
extern const Command kType;
extern const Command kValue;
extern const Command kSpectrum;

}  // namespace vrn

#endif
