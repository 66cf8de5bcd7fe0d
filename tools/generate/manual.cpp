#include "generate/manual.hpp"

#include <algorithm>

#include "core/external.hpp"
#include "core/text.hpp"

namespace vrn {
namespace {

// Escapes what troff takes for its own: backslashes, dashes that must stay dashes, and a dot or a
// quote at the start of a line.
std::string roff(std::string_view text) {
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool lineStart = i == 0 || text[i - 1] == '\n';
    if (lineStart && (text[i] == '.' || text[i] == '\'')) out += "\\&";
    if (text[i] == '\\') {
      out += "\\e";
    } else if (text[i] == '-') {
      out += "\\-";
    } else if (text[i] == '\'') {
      out += "\\(aq";
    } else if (text[i] == '`') {
      out += "\\(ga";
    } else if (text[i] == '^') {
      out += "\\(ha";
    } else if (text[i] == '~') {
      out += "\\(ti";
    } else {
      out += text[i];
    }
  }
  return out;
}

std::string bold(std::string_view text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff(text) + "\\fR"; }

std::string headerOf(const std::string& name, const std::string& summary) {
  std::string capitals = name;
  for (char& c : capitals) c = static_cast<char>(c >= 'a' && c <= 'z' ? c - 'a' + 'A' : c);
  return ".TH \"" + capitals + "\" 1 \"\" \"vrn " + vrtkVersion() +
         "\" \"Scene files\"\n.SH NAME\n" + roff(name) + " \\- " + roff(summary) + "\n";
}

std::string paragraphs(const std::string& text) {
  std::string out;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = std::min(text.find("\n\n", start), text.size());
    if (start != 0) out += ".PP\n";
    out += roff(text.substr(start, end - start)) + "\n";
    start = end + 2;
  }
  return out;
}

std::string examplesOf(const std::string& examples) {
  if (examples.empty()) return "";
  std::string out = ".SH EXAMPLES\n.EX\n";
  for (std::size_t start = 0; start < examples.size();) {
    const std::size_t end = std::min(examples.find('\n', start), examples.size());
    out += roff(examples.substr(start, end - start)) + "\n";
    start = end + 1;
  }
  return out + ".EE\n";
}

std::string entryOf(const OptionInfo& info) {
  std::string head;
  for (std::size_t i = 0; i < info.names.size(); ++i) {
    head += (i == 0 ? "" : ", ") + (info.argument ? italic(info.names[i]) : bold(info.names[i]));
  }
  if (info.argument && info.repeated) head += "...";
  if (!info.argument && !info.value.empty()) head += " " + italic(info.value);
  std::string text = info.text;
  for (std::size_t i = 0; i < info.choices.size(); ++i) {
    text += (i == 0 ? ": " : i + 1 == info.choices.size() ? " or " : ", ") + info.choices[i];
  }
  return ".TP\n" + head + "\n" + roff(text) + ".\n";
}

constexpr char kExitCodes[] =
    ".SH EXIT STATUS\n.TP\n.B 0\nDone, the same, or nothing found.\n.TP\n.B 1\nSomething was "
    "found: a "
    "difference, an error in a file, or a change that breaks.\n.TP\n.B 2\nTrouble, such as a wrong "
    "option, a file that cannot be read, or no space. One line on standard error says what "
    "happened "
    "and what to do.\n";

}  // namespace

std::string manualPage(const Command& command) {
  Options options(command.name);
  CommonOptions common;
  declareAll(command, options, common);
  std::string page = headerOf("vrn-" + command.name, command.summary);
  page += ".SH SYNOPSIS\n" + bold("vrn " + command.name) + " [" + italic("OPTIONS") + "]";
  const std::string usage = options.usage();
  const std::string start = "vrn " + command.name + " [OPTIONS]";
  page += italic(usage.substr(start.size())) + "\n";
  page += ".SH DESCRIPTION\n" + paragraphs(command.description);
  if (!command.notes.empty()) page += ".PP\n" + paragraphs(command.notes);
  page += ".SH ARGUMENTS\n";
  for (const OptionInfo& info : options.infos()) {
    if (info.argument) page += entryOf(info);
  }
  page += ".SH OPTIONS\n";
  for (const OptionInfo& info : options.infos()) {
    if (!info.argument) page += entryOf(info);
  }
  OptionInfo fixed;
  fixed.names = {"-h", "--help"};
  fixed.text = "print the options and end";
  page += entryOf(fixed);
  fixed.names = {"--version"};
  fixed.text = "print the version and end";
  page += entryOf(fixed);
  page += kExitCodes;
  page += examplesOf(command.examples);
  return page + ".SH SEE ALSO\n.BR vrn (1)\n";
}

std::string overviewPage() {
  std::string page =
      headerOf("vrn", "look into scene files, check, change, compare and convert them");
  page += ".SH SYNOPSIS\n" + bold("vrn") + " " + italic("COMMAND") + " [" + italic("OPTIONS") +
          "] " + italic("ARGUMENTS") + "\n.br\n" + bold("vrn") + " [" + bold("--help") + " | " +
          bold("--version") + "]\n.SH DESCRIPTION\n" +
          paragraphs(
              "vrn works on the scene files of vornath_data. Each command has a page of its own, "
              "such as "
              "vrn-check(1).") +
          ".SH COMMANDS\n";
  for (const Command* const command : commands()) {
    page += ".TP\n" + bold(command->name) + "\n" + roff(command->summary) + ".\n";
  }
  for (const ExternalProgram& program : externalPrograms()) {
    const std::string name = program.command;
    page += ".TP\n" + bold(name) + "\n" + roff(program.summary) + ": the program " +
            bold("vrn-" + name) + ".\n";
  }
  page += ".PP\n" +
          paragraphs(
              "For another COMMAND, vrn runs the program vrn-COMMAND that stands beside vrn or on "
              "PATH, with the arguments that follow.");
  page +=
      ".SH ADDRESSES\n" +
      paragraphs(
          "An address names a part of a scene: Camera/0, "
          "Camera/0/groups/Transformation/matrix/x, Shape/3/slots/material, "
          "Material/1/value/data/reflectance, scene/Raytracer/ray_epsilon, "
          "MaterialProgram/0/text, Mesh/0/bytes. The number is that of the object's slot in its "
          "class. vrn show prints the addresses that a scene has.");
  page +=
      ".SH CONVENTIONS\n" +
      paragraphs(
          "- stands for standard input or standard output wherever a file can be a stream.\n\n"
          "Results go to standard output, messages to standard error. With --json, a command "
          "prints one JSON document (RFC 8259) instead of text.\n\n"
          "A command that reads a scene checks it first, and refuses one that is not safe to "
          "read. --trust reads without the check; a damaged file may then end the command in "
          "any way.\n\n"
          "Files are written whole or not at all: beside the target, flushed to the device, and "
          "then renamed. If the command fails or is interrupted, the old file stands as it was. "
          "A target that exists keeps its permissions.\n\n"
          "Work that takes longer than a second shows a bar on standard error, if that is a "
          "terminal.");
  page += kExitCodes;
  page +=
      ".SH ENVIRONMENT\n.TP\n.B NO_COLOR\nIf it is set and not empty, nothing is "
      "coloured.\n.TP\n.B "
      "COLORTERM\ntruecolor or 24bit says that the terminal shows all colours; swatches then "
      "have them.\n.TP\n.B TERM\nOn the terminal dumb, there are no colours and no bars.\n";
  page +=
      ".SH FILES\nScene files, as vrdmSerialize() writes them. Their usual ending is "
      ".vrnscene.\n.SH SEE ALSO\n";
  for (std::size_t i = 0; i < commands().size(); ++i) {
    page +=
        ".BR vrn\\-" + commands()[i]->name + " (1)" + (i + 1 < commands().size() ? ",\n" : "\n");
  }
  return page;
}

}  // namespace vrn
