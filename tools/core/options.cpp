#include "core/options.hpp"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "core/text.hpp"
#include "core/trouble.hpp"

namespace vrn {
namespace {

// The parser gives "[...]" and what begins with a dash a meaning of its own. A mark in front of
// each value keeps values as they are.
constexpr char kMark = '\x01';

std::string unmarked(const std::string& text) {
  return !text.empty() && text[0] == kMark ? text.substr(1) : text;
}

std::vector<std::string> split(const std::string& names) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (std::size_t comma = 0; comma != std::string::npos; start = comma + 1) {
    comma = names.find(',', start);
    parts.push_back(names.substr(start, comma - start));
  }
  return parts;
}

bool isNumber(const std::string& text) {
  return text.size() > 1 && text[0] == '-' &&
         (text[1] == '.' || (text[1] >= '0' && text[1] <= '9'));
}

std::string joined(const std::vector<std::string>& words, const char* last) {
  std::string text;
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i != 0) text += i + 1 == words.size() ? last : ", ";
    text += words[i];
  }
  return text;
}

}  // namespace

bool readSize(const std::string& text, std::uint64_t& size) {
  double number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || !std::isfinite(number) || number < 0) return false;
  std::string unit(end, text.data() + text.size());
  unit.erase(std::remove(unit.begin(), unit.end(), ' '), unit.end());
  for (char& c : unit) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  double factor = 1;
  if (!unit.empty() && unit != "B") {
    const std::size_t power = std::string("KMGTP").find(unit[0]);
    const std::string rest = unit.substr(1);
    if (power == std::string::npos || (!rest.empty() && rest != "IB" && rest != "B")) return false;
    factor = std::pow(rest == "B" ? 1000.0 : 1024.0, static_cast<double>(power + 1));
  }
  const double bytes = number * factor;
  if (bytes >= static_cast<double>(std::numeric_limits<std::uint64_t>::max())) return false;
  size = static_cast<std::uint64_t>(bytes);
  return true;
}

Options::Options(const std::string& command)
    : command_(command), app_(std::make_unique<CLI::App>()) {
  app_->set_help_flag();
  app_->allow_extras();
}

Options::~Options() = default;

CLI::Option* Options::declare(OptionInfo info, const char* names) {
  CLI::Option* option = nullptr;
  if (info.value.empty()) {
    option = app_->add_flag(names);
  } else {
    option = app_->add_option(info.argument ? info.names[0] : std::string(names));
    if (info.repeated) {
      option->type_size(1)->expected(1, -1)->allow_extra_args();
      option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    } else {
      option->type_size(1)->expected(1);
      option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
  }
  info.common = common_;
  infos_.push_back(std::move(info));
  declared_.push_back(option);
  return option;
}

void Options::declareValue(OptionInfo info, const char* names,
                           std::function<void(const std::string&)> read) {
  CLI::Option* const option = declare(std::move(info), names);
  readings_.push_back({option, std::move(read)});
}

void Options::flag(const char* names, bool& to, const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.text = text;
  CLI::Option* const option = declare(std::move(info), names);
  readings_.push_back({option, [&to](const std::string&) { to = true; }});
}

void Options::text(const char* names, const char* value, Kind kind, std::string& to,
                   const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.value = value;
  info.kind = kind;
  info.text = text;
  declareValue(std::move(info), names, [&to](const std::string& given) { to = given; });
}

void Options::number(const char* names, const char* value, double& to, const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.value = value;
  info.kind = Kind::Number;
  info.text = text;
  const std::string name = info.name();
  declareValue(std::move(info), names, [&to, name](const std::string& given) {
    double number = 0;
    const auto [end, error] = std::from_chars(given.data(), given.data() + given.size(), number);
    if (error != std::errc() || end != given.data() + given.size() || !std::isfinite(number) ||
        number < 0) {
      throw Trouble(name + ": it takes a number of at least 0, not " + shellWord(given));
    }
    to = number;
  });
}

void Options::count(const char* names, const char* value, std::uint64_t& to, const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.value = value;
  info.kind = Kind::Number;
  info.text = text;
  const std::string name = info.name();
  declareValue(std::move(info), names, [&to, name](const std::string& given) {
    const char* const last = given.data() + given.size();
    const auto [end, error] = std::from_chars(given.data(), last, to);
    if (error != std::errc() || end != last) {
      throw Trouble(name + ": it takes a whole number, not " + shellWord(given));
    }
  });
}

void Options::size(const char* names, const char* value, std::uint64_t& to, const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.value = value;
  info.kind = Kind::Size;
  info.text = text;
  const std::string name = info.name();
  declareValue(std::move(info), names, [&to, name](const std::string& given) {
    if (!readSize(given, to) || to == 0) {
      throw Trouble(name + ": it takes a size, such as 512MiB or 2GB, not " + shellWord(given));
    }
  });
}

void Options::choice(const char* names, const char* value, std::vector<std::string> choices,
                     std::string& to, const char* text) {
  OptionInfo info;
  info.names = split(names);
  info.value = value;
  info.kind = Kind::Choice;
  info.choices = choices;
  info.text = text;
  const std::string name = info.name();
  declareValue(std::move(info), names,
               [&to, name, choices = std::move(choices)](const std::string& given) {
                 if (std::find(choices.begin(), choices.end(), given) == choices.end()) {
                   throw Trouble(name + ": it takes " + joined(choices, " or ") + ", not " +
                                 shellWord(given) + suggestion(given, choices));
                 }
                 to = given;
               });
}

void Options::argument(const char* name, Kind kind, bool required, std::string& to,
                       const char* text) {
  OptionInfo info;
  info.names = {name};
  info.value = name;
  info.kind = kind;
  info.text = text;
  info.argument = true;
  info.least = required ? 1 : 0;
  declareValue(std::move(info), name, [&to](const std::string& given) { to = given; });
}

void Options::arguments(const char* name, Kind kind, std::size_t least,
                        std::vector<std::string>& to, const char* text) {
  OptionInfo info;
  info.names = {name};
  info.value = name;
  info.kind = kind;
  info.text = text;
  info.argument = true;
  info.repeated = true;
  info.least = least;
  declareValue(std::move(info), name, [&to](const std::string& given) { to.push_back(given); });
}

std::vector<std::string> Options::optionNames() const {
  std::vector<std::string> names = {"--help", "--version"};
  for (const OptionInfo& info : infos_) {
    if (!info.argument) names.push_back(info.name());
  }
  return names;
}

bool Options::takesValue(const std::string& name) const {
  return std::any_of(infos_.begin(), infos_.end(), [&](const OptionInfo& info) {
    return !info.argument && !info.value.empty() &&
           std::find(info.names.begin(), info.names.end(), name) != info.names.end();
  });
}

std::vector<std::string> Options::marked(const std::vector<std::string>& arguments) const {
  std::vector<std::string> out;
  bool onlyValues = false;
  for (const std::string& argument : arguments) {
    const std::size_t equals = argument.find('=');
    if (onlyValues || argument.size() < 2 || argument[0] != '-' || isNumber(argument)) {
      out.push_back(kMark + argument);
    } else if (argument == "--") {
      onlyValues = true;
      out.push_back(argument);
    } else if (argument.compare(0, 2, "--") == 0 && equals != std::string::npos &&
               takesValue(argument.substr(0, equals))) {
      out.push_back(argument.substr(0, equals));
      out.push_back(kMark + argument.substr(equals + 1));
    } else {
      out.push_back(argument);
    }
  }
  return out;
}

bool Options::parse(const std::vector<std::string>& arguments) {
  std::vector<std::string> words = marked(arguments);
  for (const std::string& word : words) {
    if (word == "--") break;
    if (word == "--help" || word == "-h") help_ = true;
    if (word == "--version") version_ = true;
  }
  if (help_ || version_) return false;

  std::reverse(words.begin(), words.end());
  try {
    app_->parse(words);
  } catch (const CLI::ArgumentMismatch&) {
    // The parser's words do not name the option as it was typed.
    for (std::size_t i = 0; i < infos_.size(); ++i) {
      if (!infos_[i].argument && !infos_[i].value.empty() && given(infos_[i].name()) &&
          declared_[i]->results().empty()) {
        throw Trouble(infos_[i].name() + ": a value is missing; give it as in " + infos_[i].name() +
                      " " + infos_[i].value);
      }
    }
    const std::string last = arguments.empty() ? "" : oneLine(arguments.back());
    throw Trouble(last + ": a value is missing; run vrn " + command_ + " --help");
  } catch (const CLI::ParseError& error) {
    throw Trouble(oneLine(error.what()) + "; run vrn " + command_ + " --help");
  }
  requireKnown(app_->remaining());
  requireComplete();
  for (const Reading& reading : readings_) {
    for (const std::string& result : reading.option->results()) reading.read(unmarked(result));
  }
  return true;
}

bool Options::given(const std::string& name) const {
  for (std::size_t i = 0; i < infos_.size(); ++i) {
    if (infos_[i].name() == name) return declared_[i]->count() != 0;
  }
  return false;
}

// Throws for what the parser could not place, an option before an argument.
void Options::requireKnown(const std::vector<std::string>& extras) const {
  const std::string run = "; run vrn " + command_ + " --help";
  for (const std::string& extra : extras) {
    if (extra.empty() || extra[0] == kMark || extra == "--") continue;
    const std::string name = extra.substr(0, extra.find('='));
    std::string dashes = name;
    if (dashes.size() > 2 && dashes[1] != '-') dashes.insert(0, "-");
    const std::string near = suggestion(dashes, optionNames());
    throw Trouble(oneLine(name) + ": there is no such option" + (near.empty() ? run : near));
  }
  for (const std::string& extra : extras) {
    if (extra == "--") continue;
    throw Trouble(oneLine(unmarked(extra)) + ": one argument too many" + run);
  }
}

void Options::requireComplete() const {
  for (std::size_t i = 0; i < infos_.size(); ++i) {
    const OptionInfo& info = infos_[i];
    if (!info.argument || declared_[i]->results().size() >= info.least) continue;
    throw Trouble(info.names[0] + ": the argument is missing; usage: " + usage());
  }
}

std::string Options::usage() const {
  std::string text = "vrn " + command_ + " [OPTIONS]";
  for (const OptionInfo& info : infos_) {
    if (!info.argument) continue;
    std::string word = info.names[0];
    for (std::size_t i = 1; i < info.least; ++i) word += " " + info.names[0];
    if (info.repeated) word += "...";
    text += " " + (info.least == 0 ? "[" + word + "]" : word);
  }
  return text;
}

std::string Options::help(const std::string& summary, const std::string& description,
                          const std::string& examples, std::size_t columns) const {
  std::string out = "vrn " + command_ + ": " + summary + "\n\nusage: " + usage() + "\n\n";
  for (std::size_t start = 0; start < description.size();) {
    const std::size_t end = std::min(description.find("\n\n", start), description.size());
    for (const std::string& line : wrapped(description.substr(start, end - start), columns)) {
      out += line + "\n";
    }
    out += "\n";
    start = end + 2;
  }
  const auto entry = [&](const std::string& left, const OptionInfo& info) {
    constexpr std::size_t kColumn = 26;
    out += "  " + left;
    std::size_t at = left.size() + 2;
    std::string what = info.text;
    if (info.kind == Kind::Choice) what += ": " + joined(info.choices, " or ");
    for (const std::string& line : wrapped(what, columns > kColumn + 20 ? columns - kColumn : 40)) {
      if (at + 2 > kColumn) {
        out += "\n";
        at = 0;
      }
      out += std::string(kColumn - at, ' ') + line;
      at = kColumn;
    }
    out += "\n";
  };
  const auto list = [&](const char* title, bool arguments, bool common) {
    bool any = false;
    for (const OptionInfo& info : infos_) {
      if (info.argument != arguments || info.common != common) continue;
      if (!any) out += std::string(title) + "\n";
      any = true;
      std::string left;
      if (info.argument) {
        left = info.names[0] + (info.repeated ? "..." : "");
      } else {
        const std::string value = info.value.empty() ? "" : " " + info.value;
        left = (info.names.size() == 1 ? "    " : info.names[0] + ", ") + info.name() + value;
      }
      entry(left, info);
    }
    return any;
  };
  if (list("Arguments:", true, false)) out += "\n";
  if (list("Options:", false, false)) out += "\n";
  list("Options of all commands that have a use for them:", false, true);
  OptionInfo fixed;
  fixed.text = "print this help";
  entry("-h, --help", fixed);
  fixed.text = "print the version";
  entry("    --version", fixed);
  if (!examples.empty()) {
    out += "\nExamples:\n";
    for (std::size_t start = 0; start < examples.size();) {
      const std::size_t end = std::min(examples.find('\n', start), examples.size());
      out += "  " + examples.substr(start, end - start) + "\n";
      start = end + 1;
    }
  }
  return out;
}

}  // namespace vrn
