// What a conversion tells: why a file is refused, and what could not be carried.
#ifndef VRN_CONVERT_SCENE_PLAN_NOTICES_HPP
#define VRN_CONVERT_SCENE_PLAN_NOTICES_HPP

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <unordered_set>
#include <vector>

namespace vrn_convert {

/// Ends a conversion: the file cannot become a scene. The message is one line without the name of
/// the file.
class Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why a file is refused that has only points, lines, cameras or lights.
inline constexpr char kNoTriangles[] = "it has no triangles, so there is nothing to render";

/// What is told if the colours of the vertices of a mesh differ, or their alphas.
inline constexpr char kMeanColours[] =
    "colours of vertices are not carried; their mean multiplies the base colour";
inline constexpr char kMeanAlphas[] =
    "alphas of vertices are not carried; their mean multiplies the opacity";

/// Returns a text as one line: line ends and control characters become spaces, and a text of more
/// than 300 bytes is cut.
inline std::string oneLine(std::string text) {
  constexpr std::size_t kMost = 300;
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  }
  while (!text.empty() && (text.back() == ' ' || text.back() == '.')) text.pop_back();
  if (text.size() > kMost) {
    std::size_t end = kMost;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    text.resize(end);
    text += "...";
  }
  return text;
}

/// The notices of a conversion. Each is told once.
class Notices {
 public:
  /// Tells what a scene has no place for.
  void add(const std::string& text) {
    if (remark(text)) hasLoss_ = true;
  }
  /// Tells something that loses nothing. Returns whether it is new.
  bool remark(const std::string& text) {
    constexpr std::size_t kMost = 1000;
    std::string line = oneLine(text);
    if (messages_.size() >= kMost || !seen_.insert(line).second) return false;
    messages_.push_back(std::move(line));
    return true;
  }
  const std::vector<std::string>& messages() const { return messages_; }
  /// Whether something was not carried.
  bool hasLoss() const { return hasLoss_; }

 private:
  bool hasLoss_ = false;
  std::vector<std::string> messages_;
  std::unordered_set<std::string> seen_;
};

}  // namespace vrn_convert

#endif
