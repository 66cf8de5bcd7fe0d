#include "core/typed_text.hpp"

#include <algorithm>

#include "core/text.hpp"

namespace vrn {
namespace {

constexpr std::size_t kRoom = 96;  // columns of the line that is shown

}  // namespace

void raiseAbout(const std::string& what, const std::string& text, const ErrorOut& error) {
  vrtkTextPlace place{};
  if (!error.place(&place)) throw Trouble(what + ": " + error.message());
  std::size_t start = 0;
  const std::size_t offset = std::min<std::size_t>(place.offset, text.size());
  if (offset != 0) {
    const std::size_t feed = text.rfind('\n', offset - 1);
    if (feed != std::string::npos) start = feed + 1;
  }
  const std::size_t end = std::min(text.find('\n', start), text.size());
  std::string before = oneLine(std::string_view(text).substr(start, offset - start));
  std::string after =
      oneLine(std::string_view(text).substr(offset, std::max(end, offset) - offset));
  // A long line is cut around the place.
  if (before.size() > kRoom / 2) {
    std::size_t cut = before.size() - kRoom / 2;
    while (cut < before.size() && (static_cast<unsigned char>(before[cut]) & 0xC0U) == 0x80) ++cut;
    before = "..." + before.substr(cut);
  }
  if (after.size() > kRoom / 2) {
    std::size_t cut = kRoom / 2;
    while (cut > 0 && (static_cast<unsigned char>(after[cut]) & 0xC0U) == 0x80) --cut;
    after = after.substr(0, cut) + "...";
  }
  std::string where = what + ": ";
  if (std::count(text.begin(), text.end(), '\n') != 0) {
    where += "line " + std::to_string(place.line) + ", ";
  }
  throw Trouble(where + "column " + std::to_string(place.column) + ": " + error.message(),
                "  " + before + after + "\n  " + std::string(width(before), ' ') + "^\n");
}

vrnt::UniqueType parseType(const std::string& what, const std::string& text) {
  vrntType_t* type = nullptr;
  ErrorOut error;
  if (vrtkTypeParse(text.c_str(), &type, error) != VRTK_OK) raiseAbout(what, text, error);
  return vrnt::UniqueType(type);
}

}  // namespace vrn
