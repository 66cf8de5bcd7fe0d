// Texts of types and values, with the places of their errors.
#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/failure.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_toolkit/vrtk_value.h"

namespace vrtk {
namespace {

struct TypeParser {
  static constexpr const char* kHead = "Unable to parse type: ";
  using Owner = vrnt::UniqueType;
  static vrntType_t* parse(const char* text, vrntValuesError_t** error) {
    return vrntTypeParse(text, error);
  }
};

struct ValueParser {
  static constexpr const char* kHead = "Unable to parse value: ";
  using Owner = vrnt::UniqueValue;
  static vrntValue_t* parse(const char* text, vrntValuesError_t** error) {
    // The library would take these bytes for a block, behind which there is nothing.
    if (std::strcmp(text, "vrntval") == 0) text = "vrntval ";
    return vrntValueParse(text, error);
  }
};

// Returns where the tokens of a text end, as the scanner of the library takes them or in larger
// pieces.
std::vector<std::size_t> tokenEnds(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  constexpr std::string_view kWord =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_'.+-@";
  std::vector<std::size_t> ends;
  for (std::size_t at = 0; at < text.size();) {
    if (kBlanks.find(text[at]) != std::string_view::npos) {
      ++at;
      continue;
    }
    if (text[at] == '"') {
      const std::size_t end = text.find('"', at + 1);
      at = end == std::string_view::npos ? at + 1 : end + 1;
    } else if (kWord.find(text[at]) != std::string_view::npos) {
      at = std::min(text.find_first_not_of(kWord, at), text.size());
    } else if (text.substr(at, 2) == "=>") {
      at += 2;
    } else {
      // A character of several bytes is one.
      for (++at; at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;) ++at;
    }
    ends.push_back(at);
  }
  return ends;
}

std::size_t tokenStart(std::string_view text, std::size_t end, std::size_t previousEnd) {
  const std::size_t start = text.find_first_not_of(" \t\r\n", previousEnd);
  return start == std::string_view::npos ? end : start;
}

// What the library says of a text: nothing if it takes it.
template <typename Parser>
std::string faultOf(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  const typename Parser::Owner parsed(Parser::parse(text.c_str(), &error));
  if (parsed) return {};
  const vrnt::UniqueError owner(error);
  if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) throw std::bad_alloc();
  std::string message = vrntValuesErrorMessage(error);
  // The library repeats the text before its words.
  const std::string head = Parser::kHead + text + ".\n";
  if (message.rfind(head, 0) == 0) message.erase(0, head.size());
  const std::size_t line = message.rfind(".\n");
  if (message.rfind(Parser::kHead, 0) == 0 && line != std::string::npos) {
    message.erase(0, line + 2);
  }
  return message.empty() ? "unknown error" : message;
}

bool wantsMore(const std::string& fault) {
  return fault.find("unexpected END") != std::string::npos;
}

// Returns the name at the end of words such as "Duplicate struct field: x."; empty if there is
// none.
std::string_view nameIn(std::string_view fault) {
  const std::size_t colon = fault.rfind(": ");
  if (colon == std::string_view::npos || fault.rfind("syntax error", 0) == 0) return {};
  std::string_view name = fault.substr(colon + 2);
  if (!name.empty() && name.back() == '.') name.remove_suffix(1);
  return name;
}

// Finds the first token with which a text cannot be right any more: the shortest beginning of the
// text that the library refuses for another reason than its end.
template <typename Parser>
std::size_t faultPlace(std::string_view text, const std::string& fault) {
  if (wantsMore(fault)) {
    const std::size_t last = text.find_last_not_of(" \t\r\n");
    return last == std::string_view::npos ? 0 : last + 1;
  }
  const std::vector<std::size_t> ends = tokenEnds(text);
  if (ends.empty()) return 0;
  std::size_t good = 0;  // so many tokens may be the beginning of a right text
  std::size_t wrong = ends.size();
  while (wrong - good > 1) {
    const std::size_t middle = good + (wrong - good) / 2;
    const std::string beginning(text.substr(0, ends[middle - 1]));
    const std::string reason = faultOf<Parser>(beginning);
    (reason.empty() || wantsMore(reason) ? good : wrong) = middle;
  }
  const auto startOf = [&](std::size_t token) {
    return tokenStart(text, ends[token], token == 0 ? 0 : ends[token - 1]);
  };
  // Rules are checked when all parts of a struct or an enum are there. The message then names one.
  const std::string_view name = nameIn(fault);
  for (std::size_t token = wrong; !name.empty() && token-- > 0;) {
    const std::size_t start = startOf(token);
    if (text.substr(start, ends[token] - start) == name) return start;
  }
  return startOf(wrong - 1);
}

template <typename Parser>
auto* parse(const char* text) {
  vrntValuesError_t* error = nullptr;
  auto* const parsed = Parser::parse(text, &error);
  if (parsed != nullptr) return parsed;
  vrntValuesErrorDestroy(error);
  const std::string fault = faultOf<Parser>(text);
  // Only for lack of memory does the library take a text that it has refused.
  if (fault.empty()) throw std::bad_alloc();
  std::string words = fault;
  for (char& c : words) {
    if (c == '\n') c = ' ';
  }
  throw Failure(VRTK_TEXT_INVALID, words, placeIn(text, faultPlace<Parser>(text, fault)));
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkTypeParse(const char* text, vrntType_t** type, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(text, "vrtkTypeParse", "text");
    vrtk::requireArgument(type, "vrtkTypeParse", "type");
    *type = vrtk::parse<vrtk::TypeParser>(text);
  });
}

std::uint32_t vrtkValueParse(const char* text, vrntValue_t** value, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(text, "vrtkValueParse", "text");
    vrtk::requireArgument(value, "vrtkValueParse", "value");
    *value = vrtk::parse<vrtk::ValueParser>(text);
  });
}
