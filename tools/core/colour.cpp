#include "core/colour.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/output.hpp"

namespace vrn {
namespace {

std::string environment(const char* name) {
  const char* const text = std::getenv(name);
  return text != nullptr ? text : "";
}

const char* codeOf(Ink kind) {
  switch (kind) {
    case Ink::Heading:
      return "1";
    case Ink::Name:
      return "32";
    case Ink::Reference:
      return "36";
    case Ink::Faint:
      return "2";
    case Ink::Good:
      return "32";
    case Ink::Warning:
      return "33";
    case Ink::Error:
      return "1;31";
  }
  return "0";
}

}  // namespace

Colours::Colours(std::string_view choice, int descriptor) {
  const std::string terminal = environment("TERM");
  // https://no-color.org asks for a variable that is set and not empty.
  on_ = environment("NO_COLOR").empty() && choice != "never" &&
        (choice == "always" || (isTerminal(descriptor) && !terminal.empty() && terminal != "dumb"));
  const std::string depth = environment("COLORTERM");
  allColours_ = depth == "truecolor" || depth == "24bit" || choice == "always" ||
                terminal.find("direct") != std::string::npos;
}

std::string Colours::ink(Ink kind, std::string_view text) const {
  if (!on_ || text.empty()) return std::string(text);
  return std::string("\x1b[") + codeOf(kind) + "m" + std::string(text) + "\x1b[0m";
}

std::string Colours::swatch(const std::array<float, 3>& rgb) const {
  if (!on_) return "";
  const std::array<unsigned, 3> bytes = screenColour(rgb);
  std::string code;
  if (allColours_) {
    code = "48;2;" + std::to_string(bytes[0]) + ";" + std::to_string(bytes[1]) + ";" +
           std::to_string(bytes[2]);
  } else {
    // The cube of 6 x 6 x 6 colours that terminals with 256 colours have.
    const auto level = [](unsigned byte) {
      return byte < 48 ? 0U : byte < 115 ? 1U : (byte - 35) / 40;
    };
    code =
        "48;5;" + std::to_string(16 + 36 * level(bytes[0]) + 6 * level(bytes[1]) + level(bytes[2]));
  }
  return "\x1b[" + code + "m  \x1b[0m ";
}

std::array<unsigned, 3> screenColour(const std::array<float, 3>& rgb) {
  const float largest = std::max({rgb[0], rgb[1], rgb[2], 1.0F});
  std::array<unsigned, 3> bytes{};
  for (std::size_t i = 0; i < 3; ++i) {
    const float value = rgb[i] / largest;
    // Also zero for what is no number.
    const float linear = value > 0 ? std::min(value, 1.0F) : 0.0F;
    const float encoded =
        linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
    bytes[i] = static_cast<unsigned>(std::lround(encoded * 255));
  }
  return bytes;
}

}  // namespace vrn
