#include "generate/completions.hpp"

#include <algorithm>
#include <vector>

#include "command.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

// A command with the options that it declares.
struct Declared {
  const Command* command;
  std::vector<OptionInfo> infos;
};

std::vector<Declared> declaredCommands() {
  std::vector<Declared> all;
  for (const Command* const command : commands()) {
    Options options(command->name);
    CommonOptions common;
    declareAll(*command, options, common);
    Declared declared{command, options.infos()};
    OptionInfo fixed;
    fixed.names = {"-h", "--help"};
    fixed.text = "print the options and end";
    declared.infos.push_back(fixed);
    fixed.names = {"--version"};
    fixed.text = "print the version and end";
    declared.infos.push_back(fixed);
    all.push_back(declared);
  }
  return all;
}

std::vector<std::string> classNames() {
  std::vector<std::string> names;
  for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) names.emplace_back(vrdmObjectName(i));
  names.emplace_back("scene");
  return names;
}

std::string joined(const std::vector<std::string>& words, const char* between = " ") {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::string optionNames(const Declared& declared) {
  std::vector<std::string> names;
  for (const OptionInfo& info : declared.infos) {
    if (info.argument) continue;
    names.insert(names.end(), info.names.begin(), info.names.end());
  }
  return joined(names);
}

// What bash offers for a value.
std::string bashValue(const OptionInfo& info) {
  switch (info.kind) {
    case Kind::Choice:
      return "COMPREPLY=($(compgen -W '" + joined(info.choices) + "' -- \"$cur\"))";
    case Kind::Folder:
      return "_vrn_files -d";
    case Kind::SceneFile:
      return "_vrn_files vrnscene";
    case Kind::JsonFile:
      return "_vrn_files json";
    case Kind::File:
      return "_vrn_files";
    case Kind::Class:
      return "COMPREPLY=($(compgen -W '" + joined(classNames()) + "' -- \"$cur\"))";
    default:
      return "";
  }
}

std::string zshQuoted(const std::string& text, std::string_view special) {
  std::string out;
  for (const char c : text) {
    if (c == '\'') {
      out += "'\\''";
    } else {
      if (special.find(c) != std::string_view::npos) out += '\\';
      out += c;
    }
  }
  return out;
}

std::string zshAction(const OptionInfo& info) {
  switch (info.kind) {
    case Kind::Choice:
      return "(" + joined(info.choices) + ")";
    case Kind::Folder:
      return "_files -/";
    case Kind::SceneFile:
      return "_files -g \"*.vrnscene(-.)\"";
    case Kind::JsonFile:
      return "_files -g \"*.json(-.)\"";
    case Kind::File:
      return "_files";
    case Kind::Class:
      return "(" + joined(classNames()) + ")";
    default:
      return " ";
  }
}

std::string fishQuoted(const std::string& text) {
  std::string out = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') out += '\\';
    out += c;
  }
  return out + "'";
}

}  // namespace

std::string bashCompletion() {
  const std::vector<Declared> all = declaredCommands();
  std::vector<std::string> names;
  names.reserve(all.size());
  for (const Declared& declared : all) names.push_back(declared.command->name);
  std::string text =
      "# bash completion for vrn. Written by vrn_generate from the options of its commands.\n"
      "\n"
      "# Completes a path: all files, folders with -d, or the files with an ending, and folders. "
      "If\n"
      "# there is no file with the ending, all files are offered.\n"
      "_vrn_files() {\n"
      "  local IFS=$'\\n'\n"
      "  compopt -o filenames 2>/dev/null\n"
      "  case ${1-} in\n"
      "    -d) COMPREPLY=($(compgen -d -- \"$cur\")) ;;\n"
      "    ?*) COMPREPLY=($(compgen -f -X \"!*.$1\" -- \"$cur\") $(compgen -d -- \"$cur\"))\n"
      "        if [ ${#COMPREPLY[@]} -eq 0 ]; then COMPREPLY=($(compgen -f -- \"$cur\")); fi ;;\n"
      "    *) COMPREPLY=($(compgen -f -- \"$cur\")) ;;\n"
      "  esac\n"
      "}\n"
      "\n"
      "_vrn() {\n"
      "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} "
      "command=${COMP_WORDS[1]}\n"
      "  COMPREPLY=()\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n"
      "    COMPREPLY=($(compgen -W '" +
      joined(names) +
      " help --help --version' -- \"$cur\")\n"
      "      $(compgen -c -- \"vrn-$cur\" | sed 's/^vrn-//' | sort -u))\n"
      "    return\n"
      "  fi\n"
      "  case $command in\n";
  for (const Declared& declared : all) {
    text += "    " + declared.command->name + ")\n      case $prev in\n";
    for (const OptionInfo& info : declared.infos) {
      if (info.argument || info.value.empty()) continue;
      const std::string value = bashValue(info);
      text += "        " + joined(info.names, " | ") + ")\n" +
              (value.empty() ? "" : "          " + value + "\n") + "          return ;;\n";
    }
    text += "      esac\n      case $cur in\n        -*) COMPREPLY=($(compgen -W '" +
            optionNames(declared) + "' -- \"$cur\")) ;;\n";
    std::string files;
    for (const OptionInfo& info : declared.infos) {
      if (info.argument && files.empty()) files = bashValue(info);
    }
    if (!files.empty()) text += "        *) " + files + " ;;\n";
    text += "      esac ;;\n";
  }
  return text + "    help) COMPREPLY=($(compgen -W '" + joined(names) +
         "' -- \"$cur\")) ;;\n"
         "    *)\n"
         "      # A program of its own: the options that stand in its help.\n"
         "      case $cur in\n"
         "        -*) COMPREPLY=($(compgen -W \"$(\"${COMP_WORDS[0]}\" \"$command\" --help "
         "2>/dev/null |\n"
         "              grep -oE '(^|[ ,[|])--?[A-Za-z][A-Za-z-]*' | tr -d ' ,[|' | sort -u)\" -- "
         "\"$cur\")) ;;\n"
         "        *) _vrn_files ;;\n"
         "      esac ;;\n"
         "  esac\n}\n\ncomplete -F _vrn vrn\n";
}

std::string zshCompletion() {
  std::string text =
      "#compdef vrn\n"
      "# zsh completion for vrn. Written by vrn_generate from the options of its commands.\n"
      "\n"
      "_vrn() {\n"
      "  local curcontext=$curcontext state line\n"
      "  local -a listed programs\n"
      "  programs=( ${${(Mk)commands:#vrn-*}#vrn-} )\n"
      "  listed=(\n";
  const std::vector<Declared> all = declaredCommands();
  for (const Declared& declared : all) {
    text += "    '" + declared.command->name + ":" + zshQuoted(declared.command->summary, ":\\") +
            "'\n";
  }
  text +=
      "    'help:print the options of a command'\n  )\n"
      "  _arguments -C '(- *)'{-h,--help}'[print the commands]' '(- *)--version[print the "
      "version]' "
      "'1:command:->command' '*::argument:->argument'\n"
      "  case $state in\n"
      "    command) _describe command listed; (( $#programs )) && compadd -a programs ;;\n"
      "    argument)\n"
      "      case $words[1] in\n";
  constexpr std::string_view kSpecial = "[]:\\";
  for (const Declared& declared : all) {
    text += "        " + declared.command->name + ")\n          _arguments -s -S";
    for (const OptionInfo& info : declared.infos) {
      text += " \\\n            ";
      const std::string what = zshQuoted(info.text, kSpecial);
      const std::string action =
          info.value.empty() ? "" : ":" + zshQuoted(info.value, kSpecial) + ":" + zshAction(info);
      if (info.argument) {
        const std::string place = info.repeated ? "*" : info.least == 0 ? ":" : "";
        append(text, {"'", place, action, "'"});
      } else if (info.names.size() == 1) {
        append(text,
               {"'", info.names[0], info.value.empty() ? "" : "=", "[", what, "]", action, "'"});
      } else {
        append(text, {"'(", joined(info.names), ")'{", info.names[0], ",", info.name(),
                      info.value.empty() ? "" : "=", "}'[", what, "]", action, "'"});
      }
    }
    text += " ;;\n";
  }
  return text +
         "        help) _describe command listed ;;\n"
         "        *)\n"
         "          # A program of its own: the options that stand in its help.\n"
         "          (( $+commands[vrn-$words[1]] )) || return 1\n"
         "          words[1]=vrn-$words[1]\n"
         "          _arguments '*:FILE:_files' -- ;;\n"
         "      esac ;;\n  esac\n}\n\n_vrn \"$@\"\n";
}

std::string fishCompletion() {
  const std::vector<Declared> all = declaredCommands();
  std::vector<std::string> names = {"help"};
  for (const Declared& declared : all) names.push_back(declared.command->name);
  const std::string none = "-n 'not __fish_seen_subcommand_from " + joined(names) + "'";
  std::string text =
      "# fish completion for vrn. Written by vrn_generate from the options of its commands.\n\n"
      "complete -c vrn -f\n"
      "complete -c vrn " +
      none + " -s h -l help -d 'Print the commands'\n" + "complete -c vrn " + none +
      " -l version -d 'Print the version'\n" + "complete -c vrn " + none +
      " -a help -d 'print the options of a command'\n"
      "complete -c vrn -n __fish_use_subcommand -a \"(complete -C vrn- | string match -r "
      "'^vrn-\\S+' | string replace vrn- '')\" -d 'a program of its own'\n"
      "complete -c vrn -n 'not __fish_use_subcommand; and not __fish_seen_subcommand_from " +
      joined(names) + "' -F\n";
  for (const Declared& declared : all) {
    const std::string& name = declared.command->name;
    const std::string when = "-n '__fish_seen_subcommand_from " + name + "'";
    append(text, {"\ncomplete -c vrn ", none, " -a ", name, " -d ",
                  fishQuoted(declared.command->summary), "\n"});
    bool first = true;
    for (const OptionInfo& info : declared.infos) {
      std::string line = "complete -c vrn " + when;
      if (info.argument) {
        // The kind of the first argument decides what is offered.
        if (!first) continue;
        first = false;
        if (info.kind == Kind::Text || info.kind == Kind::Number) continue;
        line += info.kind == Kind::Class ? " -a " + fishQuoted(joined(classNames())) : " -F";
        text += line + "\n";
        continue;
      }
      for (const std::string& word : info.names) {
        line += word.compare(0, 2, "--") == 0 ? " -l " + word.substr(2) : " -s " + word.substr(1);
      }
      const bool takesFile =
          info.kind == Kind::SceneFile || info.kind == Kind::JsonFile || info.kind == Kind::File;
      // Without -x, the files that the argument offers stand beside the values of the option.
      if (!info.value.empty()) line += takesFile ? " -r -F" : " -x";
      if (info.kind == Kind::Choice) line += " -a " + fishQuoted(joined(info.choices));
      if (info.kind == Kind::Folder) line += " -a '(__fish_complete_directories)'";
      text += line + " -d " + fishQuoted(info.text) + "\n";
    }
  }
  return text;
}

}  // namespace vrn
