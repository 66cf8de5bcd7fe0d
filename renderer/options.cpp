#include "options.hpp"

#include <charconv>

namespace vrn_render {

const char kUsage[] =
    "usage: vrn-render SCENE -o OUTPUT [option]...\n"
    "       vrn-render --assemble SHARE... -o OUTPUT [option]...\n"
    "\n"
    "Renders a scene file to a picture, .png or .exr.\n"
    "\n"
    "  -o, --output FILE    the picture, or with --tiles the share of it\n"
    "  --size WIDTHxHEIGHT  in pixels; WIDTH alone takes the height from the camera's film.\n"
    "                       The default is 512 pixels on the longer side\n"
    "  --samples N          for each pixel at most; the default is 64\n"
    "  --noise X            ends a tile when the error of its brightness is X of it, as 0.02\n"
    "  --time SECONDS       begins no new tile after this time\n"
    "  --task N             the image task; the default is the first\n"
    "  --bounces N          instead of the task's limit\n"
    "  --seed N             instead of the task's seed\n"
    "  --threads N          the default is one for each processor\n"
    "  --exposure STOPS     multiplies the colours of the picture by 2 to this power\n"
    "  --pass PASS          depth, normal, albedo, object or spectrum; may be repeated. In an "
    ".exr,\n"
    "                       these are channels beside the colours; a .png shows one instead\n"
    "  --preview[=sixel]    draws the picture in the terminal while it is rendered\n"
    "  --tiles A-B          renders only these tiles, and writes a share for --assemble\n"
    "  --count-tiles        prints how many tiles the picture has, and renders nothing\n"
    "  --assemble           puts shares together to the picture that one machine would render\n"
    "  --quiet              shows no progress\n"
    "  --help, --version\n"
    "\n"
    "Ctrl-C ends the rendering and writes what there is.\n";

namespace {

template <typename T>
T parseNumber(const std::string& option, const std::string& text, T low, T high) {
  T number{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || !(number >= low) ||
      !(number <= high)) {
    throw UsageError(option + " does not take '" + text + "'");
  }
  return number;
}

Pass parsePass(const std::string& name) {
  if (name == "depth") return Pass::Depth;
  if (name == "normal") return Pass::Normal;
  if (name == "albedo") return Pass::Albedo;
  if (name == "object") return Pass::Object;
  if (name == "spectrum") return Pass::Spectrum;
  throw UsageError("there is no pass '" + name + "'");
}

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  constexpr int kLargestSide = 65536;
  constexpr int kMost = 1 << 30;
  Options options;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    std::string option = arguments[i];
    if (option.empty() || option[0] != '-') {
      names.push_back(option);
      continue;
    }
    std::optional<std::string> given;
    const std::size_t equals = option.find('=');
    if (option.rfind("--", 0) == 0 && equals != std::string::npos) {
      given = option.substr(equals + 1);
      option.resize(equals);
    }
    const auto argument = [&]() -> std::string {
      if (given) return *given;
      if (i + 1 == arguments.size()) throw UsageError(option + " needs an argument");
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
      if (given && *given != "sixel" && *given != "blocks") {
        throw UsageError("--preview does not take '" + *given + "'");
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
    } else if (option == "--count-tiles") {
      options.wantsTiles = true;
    } else if (option == "--assemble") {
      options.assembles = true;
      if (given) names.push_back(*given);
    } else if (option == "--quiet") {
      options.isQuiet = true;
    } else if (option == "--help") {
      options.wantsHelp = true;
    } else if (option == "--version") {
      options.wantsVersion = true;
    } else {
      throw UsageError("there is no option " + option);
    }
  }
  if (options.wantsHelp || options.wantsVersion) return options;
  if (options.assembles) {
    if (names.empty()) throw UsageError("--assemble needs shares");
    if (options.passes.count(Pass::Spectrum)) throw UsageError("shares have no spectra");
    options.shares = std::move(names);
  } else {
    if (names.size() != 1) throw UsageError("one scene is needed");
    options.scene = names.front();
  }
  if (options.wantsTiles) return options;
  if (options.output.empty()) throw UsageError("-o is needed: the picture to write");
  const bool isPng = endsWith(options.output, ".png");
  const bool isExr = endsWith(options.output, ".exr");
  if (options.tiles) {
    if (isPng || isExr) throw UsageError("with --tiles, the output is a share, not a picture");
    if (options.passes.count(Pass::Spectrum)) throw UsageError("shares have no spectra");
  } else if (!isPng && !isExr) {
    throw UsageError("the output must end in .png or .exr");
  }
  if (isPng && options.passes.count(Pass::Spectrum)) {
    throw UsageError("the pass spectrum needs an .exr");
  }
  if (isPng && options.passes.size() > 1) throw UsageError("a .png shows one pass");
  return options;
}

}  // namespace vrn_render
