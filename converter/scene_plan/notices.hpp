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

/// The notices of a conversion: what a scene has no place for. Each is told once.
class Notices {
 public:
  void add(const std::string& text) {
    constexpr std::size_t kMost = 1000;
    std::string line = oneLine(text);
    if (messages_.size() < kMost && seen_.insert(line).second) messages_.push_back(std::move(line));
  }
  const std::vector<std::string>& messages() const { return messages_; }

 private:
  std::vector<std::string> messages_;
  std::unordered_set<std::string> seen_;
};

}  // namespace vrn_convert

#endif
