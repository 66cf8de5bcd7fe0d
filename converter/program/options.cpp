#include "program/options.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <functional>
#include <limits>

namespace vrn_convert {

const char kHelp[] =
    "usage: vrn convert [OPTIONS] IN OUT.vrnscene\n"
    "\n"
    "Converts a file of another kind to a scene file: glTF 2.0 (.gltf, .glb), and what Assimp\n"
    "reads, such as OBJ, PLY, STL, FBX, COLLADA and 3DS. What a scene has no place for is told on\n"
    "standard error.\n"
    "\n"
    "  IN, OUT               - is standard input and standard output. A scene on standard input\n"
    "                        cannot refer to other files\n"
    "  -o, --output OUT      another way to name OUT\n"
    "  --format EXTENSION    reads IN as a file with this extension; --formats lists them\n"
    "  --scale METRES        the length of a unit of IN, in metres; the default is what IN says,\n"
    "                        or 1\n"
    "  --up AXIS             the axis of IN that points up, y or z; the default is y\n"
    "  --frame               adds a camera that sees the whole scene, and puts it first\n"
    "  --light               adds the default lights to those of IN\n"
    "  --no-default-camera   adds no camera if IN has none\n"
    "  --no-default-light    adds no light if IN has none\n"
    "  --names NAMES.json    writes the names of all objects to this file\n"
    "  --strict              exits with 1 if something of IN is not carried\n"
    "  --json                prints a report as JSON\n"
    "  --quiet               does not tell what is not carried\n"
    "  --time-limit SECONDS  gives up after this time; the default is 600, and 0 is no limit\n"
    "  --max-memory SIZE     gives up if more memory is needed, as in 2GiB\n"
    "  --formats             lists what can be read\n"
    "  --help, --version\n"
    "\n"
    "Exit code 0: converted; 1: with --strict, converted without something; 2: not converted.\n";

namespace {

// The number of characters to insert, remove or change (Levenshtein).
std::size_t distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t corner = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({above + 1, row[j - 1] + 1, corner + (a[i - 1] == b[j - 1] ? 0U : 1U)});
      corner = above;
    }
  }
  return row[b.size()];
}

double parseNumber(const std::string& option, const std::string& text, double low, double high) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !(number >= low) ||
      !(number <= high)) {
    throw UsageError(option + ": '" + text + "' is not a number that it takes; see --help");
  }
  return number;
}

std::uint64_t parseSize(const std::string& option, const std::string& text) {
  static constexpr std::array<std::pair<const char*, double>, 9> kUnits = {
      {{"", 1.0},
       {"B", 1.0},
       {"KiB", 1024.0},
       {"MiB", 1048576.0},
       {"GiB", 1073741824.0},
       {"TiB", 1099511627776.0},
       {"KB", 1e3},
       {"MB", 1e6},
       {"GB", 1e9}}};
  const std::size_t end = std::min(text.find_first_not_of("0123456789."), text.size());
  for (const auto& [unit, bytes] : kUnits) {
    if (end == 0 || text.substr(end) != unit) continue;
    return static_cast<std::uint64_t>(parseNumber(option, text.substr(0, end), 1.0 / 1024, 1e6) *
                                      bytes);
  }
  throw UsageError(option + ": '" + text + "' is not a size; write it as in 2GiB");
}

struct Option {
  const char* name;
  bool takesArgument;
  std::function<void(Options&, const std::string&)> set;
};

const std::vector<Option>& allOptions() {
  static const std::vector<Option> options = {
      {"--output", true, [](Options& o, const std::string& text) { o.output = text; }},
      {"--format", true,
       [](Options& o, const std::string& text) {
         o.format = text.substr(
             text.find_first_not_of('.') == std::string::npos ? 0 : text.find_first_not_of('.'));
         std::transform(o.format.begin(), o.format.end(), o.format.begin(), [](char c) {
           return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
         });
       }},
      {"--scale", true,
       [](Options& o, const std::string& text) {
         o.scale = parseNumber("--scale", text, 1e-9, 1e9);
       }},
      {"--up", true,
       [](Options& o, const std::string& text) {
         if (text != "y" && text != "z") {
           throw UsageError("--up: '" + text + "' is not an axis that can be up; give y or z");
         }
         o.isZUp = text == "z";
       }},
      {"--frame", false, [](Options& o, const std::string&) { o.framesCamera = true; }},
      {"--light", false, [](Options& o, const std::string&) { o.addsLightAlways = true; }},
      {"--no-default-camera", false, [](Options& o, const std::string&) { o.addsCamera = false; }},
      {"--no-default-light", false, [](Options& o, const std::string&) { o.addsLight = false; }},
      {"--names", true, [](Options& o, const std::string& text) { o.names = text; }},
      {"--strict", false, [](Options& o, const std::string&) { o.isStrict = true; }},
      {"--json", false, [](Options& o, const std::string&) { o.isJson = true; }},
      {"--quiet", false, [](Options& o, const std::string&) { o.isQuiet = true; }},
      {"--time-limit", true,
       [](Options& o, const std::string& text) {
         o.seconds = parseNumber("--time-limit", text, 0, 1e6);
       }},
      {"--max-memory", true,
       [](Options& o, const std::string& text) { o.maxMemory = parseSize("--max-memory", text); }},
      // Nothing that is printed has colours.
      {"--color", true, [](Options&, const std::string&) {}},
      {"--formats", false, [](Options& o, const std::string&) { o.wantsFormats = true; }},
      {"--help", false, [](Options& o, const std::string&) { o.wantsHelp = true; }},
      {"--version", false, [](Options& o, const std::string&) { o.wantsVersion = true; }}};
  return options;
}

const Option& findOption(std::string name) {
  if (name == "-o") name = "--output";
  if (name == "-h") name = "--help";
  std::string nearest;
  std::size_t least = std::numeric_limits<std::size_t>::max();
  for (const Option& option : allOptions()) {
    if (name == option.name) return option;
    const std::size_t steps = distance(name, option.name);
    if (steps < least) {
      least = steps;
      nearest = option.name;
    }
  }
  throw UsageError(name + ": there is no such option; " +
                   (least <= 3 ? "did you mean " + nearest + "?" : "see vrn convert --help"));
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  std::vector<std::string> files;
  bool isBehind = false;  // behind --, all words are files
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& word = arguments[i];
    if (isBehind || word == "-" || word.empty() || word[0] != '-') {
      files.push_back(word);
      continue;
    }
    if (word == "--") {
      isBehind = true;
      continue;
    }
    const bool isLong = word.compare(0, 2, "--") == 0;
    const std::size_t equals = isLong ? word.find('=') : std::string::npos;
    const Option& option = findOption(word.substr(0, equals));
    std::string argument;
    if (equals != std::string::npos) {
      if (!option.takesArgument) {
        throw UsageError(std::string(option.name) + ": the option takes no argument");
      }
      argument = word.substr(equals + 1);
    } else if (option.takesArgument) {
      if (i + 1 == arguments.size()) {
        throw UsageError(std::string(option.name) + ": the argument of the option is missing");
      }
      argument = arguments[++i];
    }
    option.set(options, argument);
  }
  if (options.wantsHelp || options.wantsVersion || options.wantsFormats) return options;
  if (files.empty()) throw UsageError("IN: the file to convert is missing; see vrn convert --help");
  options.input = files[0];
  if (files.size() == 2 && options.output.empty()) {
    options.output = files[1];
  } else if (files.size() > 1) {
    throw UsageError(files.back() + ": there are too many files; give IN and OUT.vrnscene");
  }
  if (options.output.empty()) {
    throw UsageError("OUT: the scene file to write is missing; see vrn convert --help");
  }
  if (options.output == "-" && options.isJson) {
    throw UsageError("-: standard output cannot take both the scene and the report; give a file");
  }
  if (options.names == "-") throw UsageError("--names: give a file, not standard output");
  return options;
}

}  // namespace vrn_convert
