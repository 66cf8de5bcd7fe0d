// Colours of a terminal.
#ifndef VRN_CORE_COLOUR_HPP
#define VRN_CORE_COLOUR_HPP

#include <array>
#include <string>
#include <string_view>

namespace vrn {

/// What a text is, for its colour.
enum class Ink { Heading, Name, Reference, Faint, Good, Warning, Error };

/// Colours texts, or returns them as they are if colours are off.
class Colours {
 public:
  /// `choice` is "auto", "always" or "never". Auto takes colours if the descriptor is a terminal
  /// that has them and NO_COLOR is not set.
  Colours(std::string_view choice, int descriptor);

  bool on() const { return on_; }
  std::string ink(Ink kind, std::string_view text) const;
  /// Returns a block of two columns in the colour of a linear RGB triple, and a space; nothing if
  /// colours are off. A triple with a component over 1 is scaled down to 1.
  std::string swatch(const std::array<float, 3>& rgb) const;

 private:
  bool on_ = false;
  bool allColours_ = false;
};

/// Returns the bytes that a screen takes for a linear RGB triple, by the transfer curve of sRGB.
std::array<unsigned, 3> screenColour(const std::array<float, 3>& rgb);

}  // namespace vrn

#endif
