// The options and arguments of a command: what reads them from the command line, and what the help,
// the manual pages and the completions print of them.
#ifndef VRN_CORE_OPTIONS_HPP
#define VRN_CORE_OPTIONS_HPP

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vrn {

/// What a value stands for, for completions.
enum class Kind { Text, Number, Size, Choice, SceneFile, JsonFile, File, Folder, Class };

/// An option or an argument as it is printed.
struct OptionInfo {
  std::vector<std::string> names;  ///< "-o", "--output"; the name of an argument, as "FILE"
  std::string value;               ///< the name of its value, as "SIZE"; empty for a flag
  Kind kind = Kind::Text;
  std::vector<std::string> choices;
  std::string text;       ///< what it does, without a full stop
  bool argument = false;  ///< an argument, which is known by its place
  bool repeated = false;
  std::size_t least = 0;  ///< how many arguments there must be
  bool common = false;    ///< one that commands share

  /// The last name, which is the long one.
  const std::string& name() const { return names.back(); }
};

/// Declares options on a parser. The places that values go to must live as long as this object.
class Options {
 public:
  explicit Options(const std::string& command);
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;
  ~Options();

  /// `names` is as in "-o,--output".
  void flag(const char* names, bool& to, const char* text);
  void text(const char* names, const char* value, Kind kind, std::string& to, const char* text);
  /// A number that is finite and not negative.
  void number(const char* names, const char* value, double& to, const char* text);
  /// A whole number.
  void count(const char* names, const char* value, std::uint64_t& to, const char* text);
  void size(const char* names, const char* value, std::uint64_t& to, const char* text);
  void choice(const char* names, const char* value, std::vector<std::string> choices,
              std::string& to, const char* text);
  void argument(const char* name, Kind kind, bool required, std::string& to, const char* text);
  void arguments(const char* name, Kind kind, std::size_t least, std::vector<std::string>& to,
                 const char* text);

  /// The options that are declared after this call are those that commands share.
  void beginCommon() { common_ = true; }

  /// Reads the arguments that follow the name of the command. Throws Trouble for what is wrong
  /// with them. Returns false, and sets no argument, if --help or --version is among them.
  bool parse(const std::vector<std::string>& arguments);
  bool wantsHelp() const { return help_; }
  bool wantsVersion() const { return version_; }
  /// Returns whether an option was given; `name` as in "--output".
  bool given(const std::string& name) const;

  const std::vector<OptionInfo>& infos() const { return infos_; }
  /// Returns the line of usage, as "vrn check [OPTIONS] FILE...".
  std::string usage() const;
  /// Returns what --help prints.
  std::string help(const std::string& summary, const std::string& description,
                   const std::string& examples, std::size_t columns) const;

 private:
  struct Reading {
    CLI::Option* option;
    std::function<void(const std::string&)> read;
  };

  CLI::Option* declare(OptionInfo info, const char* names);
  void declareValue(OptionInfo info, const char* names,
                    std::function<void(const std::string&)> read);
  void requireKnown(const std::vector<std::string>& arguments) const;
  void requireComplete() const;
  std::vector<std::string> optionNames() const;
  bool takesValue(const std::string& name) const;
  std::vector<std::string> marked(const std::vector<std::string>& arguments) const;

  std::string command_;
  std::unique_ptr<CLI::App> app_;
  std::vector<OptionInfo> infos_;
  std::vector<CLI::Option*> declared_;
  std::vector<Reading> readings_;
  bool common_ = false;
  bool help_ = false;
  bool version_ = false;
};

/// Reads a size, such as "512MiB": a number with K, M, G or T for powers of 1024, as KiB does, or
/// KB, MB, GB or TB for powers of 1000. Returns false for another text.
bool readSize(const std::string& text, std::uint64_t& size);

}  // namespace vrn

#endif
