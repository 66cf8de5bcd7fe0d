#include "options.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <numeric>
#include <string_view>

namespace vrn_render {

const char kUsage[] =
    "vrn render: render a scene to a picture\n"
    "\n"
    "usage: vrn render [OPTIONS] SCENE -o OUT.png|OUT.exr\n"
    "       vrn render [OPTIONS] SCENE --tiles A-B -o SHARE\n"
    "       vrn render [OPTIONS] --assemble SHARE... -o OUT.png|OUT.exr\n"
    "\n"
    "Follows paths of light with the whole spectrum from 400 to 700 nm. What the renderer does "
    "not\n"
    "understand in a scene, it tells once on standard error, and renders in neutral grey. The "
    "same\n"
    "options give the same bytes, whatever the number of threads. Ctrl-C ends the rendering and\n"
    "writes what there is, if there is a sample; the exit code is then 130.\n"
    "\n"
    "Arguments:\n"
    "  SCENE                   a scene file; - for standard input\n"
    "  SHARE                   what --tiles wrote\n"
    "\n"
    "Options:\n"
    "  -o, --output OUT        the picture, or with --tiles the share of it; - for a PNG, or the\n"
    "                          share, on standard output\n"
    "      --size WIDTHxHEIGHT\n"
    "                          in pixels; WIDTH alone takes the height from the camera's film. "
    "The\n"
    "                          default is 512 pixels on the longer side\n"
    "      --samples N         for each pixel at most; the default is 64\n"
    "      --noise X           end a tile when the error of its brightness is X of it, as in 0.02\n"
    "      --time SECONDS      begin no new tile after this time; not with --tiles\n"
    "      --task N            the image task; the default is the first\n"
    "      --bounces N         instead of the task's limit\n"
    "      --seed N            instead of the task's seed\n"
    "      --threads N         the default is one for each processor\n"
    "      --exposure STOPS    multiply the colours of the picture by 2 to this power\n"
    "      --pass PASS         depth (along the ray), normal, albedo, object or spectrum; may be\n"
    "                          repeated. In an EXR these are channels beside the colours; a PNG\n"
    "                          shows one instead\n"
    "      --preview           draw the picture in the terminal while it is rendered, with half\n"
    "                          blocks, or as --preview=sixel; in letters if NO_COLOR is set, or\n"
    "                          where there is no terminal\n"
    "      --tiles A-B         render only these tiles, and write a share for --assemble\n"
    "      --count-tiles       print how many tiles the picture has, and render nothing\n"
    "      --assemble          put shares together to the picture that one machine would render;\n"
    "                          with -o, --exposure, --pass, --quiet and --json only\n"
    "      --quiet             show no progress\n"
    "\n"
    "Options of all commands that have a use for them:\n"
    "      --json              print one JSON document about the rendering on standard output\n"
    "      --trust             read the scene file without a check before\n"
    "      --max-memory SIZE   refuse a file if reading it may take more memory, as in 2GiB\n"
    "  -h, --help              print this help\n"
    "      --version           print the version\n"
    "\n"
    "Examples:\n"
    "  vrn render box.vrnscene -o box.png --samples 256\n"
    "  vrn render box.vrnscene -o box.exr --noise 0.02 --pass depth --pass normal\n"
    "  vrn render box.vrnscene -o a.share --tiles 0-511\n"
    "  vrn render --assemble a.share b.share -o box.png\n";

namespace {

constexpr const char* kOptions[] = {
    "--output",   "--size",    "--samples",  "--noise", "--time",       "--task",  "--bounces",
    "--seed",     "--threads", "--exposure", "--pass",  "--preview",    "--tiles", "--count-tiles",
    "--assemble", "--quiet",   "--json",     "--trust", "--max-memory", "--help",  "--version"};

// How many characters two words differ by.
std::size_t distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t changed = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

// Returns what to do about a word that is not known.
template <typename Words>
std::string remedy(std::string_view word, const Words& words) {
  std::string best;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const char* const candidate : words) {
    const std::size_t apart = distance(word, candidate);
    if (apart >= least) continue;
    least = apart;
    best = candidate;
  }
  return best.empty() ? "; run vrn render --help" : "; did you mean " + best + "?";
}

[[noreturn]] void refuse(const std::string& option, const std::string& wanted,
                         const std::string& text) {
  throw UsageError(option + ": it takes " + wanted + ", not '" + text + "'");
}

template <typename T>
T parseNumber(const std::string& option, const std::string& text, T low, T high) {
  T number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !(number >= low) ||
      !(number <= high)) {
    std::string range;
    const auto shown = [](T value) {
      std::string digits = std::to_string(value);
      if (digits.find('.') != std::string::npos) {
        digits.erase(digits.find_last_not_of('0') + 1);
        if (digits.back() == '.') digits.pop_back();
      }
      return digits;
    };
    refuse(option, "a number from " + shown(low) + " to " + shown(high), text);
  }
  return number;
}

std::uint64_t parseSize(const std::string& option, const std::string& text) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  std::string unit(end, text.data() + text.size());
  for (char& c : unit) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  double factor = 1;
  bool isKnown = error == std::errc() && number > 0;
  if (isKnown && !unit.empty() && unit != "B") {
    const std::size_t power = std::string("KMGT").find(unit[0]);
    const std::string rest = unit.substr(1);
    isKnown = power != std::string::npos && (rest.empty() || rest == "IB" || rest == "B");
    factor = std::pow(rest == "B" ? 1000.0 : 1024.0, static_cast<double>(power + 1));
  }
  const double bytes = number * factor;
  if (!isKnown || !(bytes >= 1) || bytes >= 0x1p64) {
    refuse(option, "a size, such as 512MiB or 2GB", text);
  }
  return static_cast<std::uint64_t>(bytes);
}

Pass parsePass(const std::string& name) {
  constexpr std::pair<const char*, Pass> kPasses[] = {{"depth", Pass::Depth},
                                                      {"normal", Pass::Normal},
                                                      {"albedo", Pass::Albedo},
                                                      {"object", Pass::Object},
                                                      {"spectrum", Pass::Spectrum}};
  for (const auto& [label, pass] : kPasses) {
    if (name == label) return pass;
  }
  constexpr const char* kNames[] = {"depth", "normal", "albedo", "object", "spectrum"};
  throw UsageError("--pass: there is no pass '" + name + "'" + remedy(name, kNames));
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Throws for options that mean nothing with --assemble: nothing is rendered then.
void requireUse(const std::vector<std::string>& seen) {
  constexpr const char* kUsed[] = {"--assemble", "-o",      "--output", "--exposure",
                                   "--pass",     "--quiet", "--json"};
  for (const std::string& option : seen) {
    if (std::find(std::begin(kUsed), std::end(kUsed), option) != std::end(kUsed)) continue;
    throw UsageError(option + ": it means nothing with --assemble; leave it out");
  }
}

// Throws for options that contradict each other, or are missing.
void requireSense(const Options& options) {
  if (options.output.empty()) {
    throw UsageError("--output: the option is missing; give -o OUT.png or -o OUT.exr");
  }
  const bool isExr = endsWith(options.output, ".exr");
  const bool isPng = endsWith(options.output, ".png") || options.output == "-";
  const bool hasSpectra = options.passes.count(Pass::Spectrum) != 0;
  if (options.json && options.output == "-") {
    throw UsageError("-: standard output cannot take both the picture and JSON; give -o FILE");
  }
  if (options.json && options.preview != Preview::None) {
    throw UsageError("--json: standard output cannot take both JSON and the preview; give one");
  }
  if (hasSpectra && (options.tiles || options.assembles)) {
    throw UsageError("--pass: shares have no spectra; render the picture at once for them");
  }
  if (options.tiles) {
    if (options.seconds > 0) {
      throw UsageError("--time: a share of tiles must be whole; limit it by --samples or --noise");
    }
    if (options.output != "-" && (isPng || isExr)) {
      throw UsageError("--output: with --tiles it is a share, not a picture; give another ending");
    }
    return;
  }
  if (!isPng && !isExr) {
    throw UsageError("--output: '" + options.output +
                     "' does not tell the format; let it end in "
                     ".png or .exr");
  }
  if (isPng && hasSpectra)
    throw UsageError("--pass: spectra need an EXR; let the output end in .exr");
  if (isPng && options.passes.size() > 1) {
    throw UsageError("--pass: a PNG shows one pass; give one, or let the output end in .exr");
  }
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  constexpr int kLargestSide = 65536;
  constexpr int kMost = 1 << 30;
  Options options;
  std::vector<std::string> names;
  std::vector<std::string> seen;
  bool onlyNames = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string option = arguments[i];
    if (onlyNames || option.size() < 2 || option[0] != '-') {
      names.push_back(option);
      continue;
    }
    if (option == "--") {
      onlyNames = true;
      continue;
    }
    std::optional<std::string> given;
    const std::size_t equals = option.find('=');
    if (option.rfind("--", 0) == 0 && equals != std::string::npos) {
      given = option.substr(equals + 1);
      option.resize(equals);
    }
    bool isTaken = false;
    const auto argument = [&]() -> std::string {
      isTaken = true;
      if (given) return *given;
      if (i + 1 == arguments.size()) {
        throw UsageError(option + ": a value is missing; run vrn render --help");
      }
      return arguments[++i];
    };
    const auto integer = [&](int low, int high) {
      return parseNumber<int>(option, argument(), low, high);
    };
    if (option == "-o" || option == "--output") {
      options.output = argument();
    } else if (option == "--size") {
      const std::string text = argument();
      const std::size_t x = text.find('x');
      options.width = parseNumber<int>(option, text.substr(0, x), 1, kLargestSide);
      if (x != std::string::npos) {
        options.height = parseNumber<int>(option, text.substr(x + 1), 1, kLargestSide);
      }
    } else if (option == "--samples") {
      options.samples = static_cast<std::uint32_t>(integer(1, kMost));
    } else if (option == "--noise") {
      options.noise = parseNumber<float>(option, argument(), 0.0F, 1e6F);
    } else if (option == "--time") {
      options.seconds = parseNumber<double>(option, argument(), 0.0, 1e9);
    } else if (option == "--task") {
      options.task = integer(0, kMost);
    } else if (option == "--bounces") {
      options.bounces = integer(0, 4096);
    } else if (option == "--seed") {
      options.seed = parseNumber<std::uint32_t>(option, argument(), 0U, ~0U);
    } else if (option == "--threads") {
      options.threads = integer(1, 4096);
    } else if (option == "--exposure") {
      options.exposure = parseNumber<float>(option, argument(), -100.0F, 100.0F);
    } else if (option == "--pass") {
      options.passes.insert(parsePass(argument()));
    } else if (option == "--preview") {
      isTaken = true;
      if (given && *given != "sixel" && *given != "blocks") {
        refuse(option, "blocks or sixel", *given);
      }
      options.preview = given && *given == "sixel" ? Preview::Sixels : Preview::Blocks;
    } else if (option == "--tiles") {
      const std::string text = argument();
      const std::size_t dash = text.find('-');
      const int first = parseNumber<int>(option, text.substr(0, dash), 0, kMost);
      const int last = dash == std::string::npos
                           ? first
                           : parseNumber<int>(option, text.substr(dash + 1), first, kMost);
      options.tiles = {first, last};
    } else if (option == "--max-memory") {
      options.maxMemory = parseSize(option, argument());
    } else if (option == "--count-tiles") {
      options.wantsTiles = true;
    } else if (option == "--assemble") {
      options.assembles = true;
    } else if (option == "--quiet") {
      options.isQuiet = true;
    } else if (option == "--json") {
      options.json = true;
    } else if (option == "--trust") {
      options.trust = true;
    } else if (option == "-h" || option == "--help") {
      options.wantsHelp = true;
    } else if (option == "--version") {
      options.wantsVersion = true;
    } else {
      throw UsageError(option + ": there is no such option" + remedy(option, kOptions));
    }
    if (given && !isTaken) throw UsageError(option + ": it takes no value; leave out =" + *given);
    seen.push_back(option);
  }
  if (options.wantsHelp || options.wantsVersion) return options;
  if (options.assembles) {
    requireUse(seen);
    if (names.empty()) throw UsageError("SHARE: the argument is missing; give what --tiles wrote");
    if (std::find(names.begin(), names.end(), "-") != names.end()) {
      throw UsageError("-: a share is not read from standard input; give the file of it");
    }
    options.shares = std::move(names);
  } else {
    if (names.empty()) throw UsageError("SCENE: the argument is missing; run vrn render --help");
    if (names.size() > 1) {
      throw UsageError(names[1] + ": one argument too many; run vrn render --help");
    }
    options.scene = names.front();
  }
  if (!options.wantsTiles) requireSense(options);
  return options;
}

}  // namespace vrn_render
