/// Length and digest of a text, computed from those of its parts.
#ifndef VORNATH_TYPES_TEXT_FINGERPRINT_HPP
#define VORNATH_TYPES_TEXT_FINGERPRINT_HPP

#include <cstdint>
#include <string_view>

namespace qex::vornath {

/// The length and a digest of a text. The fingerprint of a concatenation follows from those of the
/// parts, so that the fingerprint of a long text is known before the text is built.
struct TextFingerprint {
  /// Appends text. Reads it in blocks; the result is the same however a text is cut into pieces.
  void add(std::string_view text) noexcept;
  /// Appends the text that has this fingerprint.
  void add(const TextFingerprint& text) noexcept;

  std::uint64_t length = 0;
  std::uint64_t digest = 0;
};

}  // namespace qex::vornath

#endif
