#include "values/choices.hpp"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include "foundation/failure.hpp"
#include "vornath_toolkit/vrtk_value.h"

namespace vrtk {
namespace {

// Reads the canonical text of an enum, such as `enum { A @name="a"; B(float x) ; }`.
class ChoiceReader {
 public:
  explicit ChoiceReader(std::string_view text) : text_(text) {}

  std::vector<Choice> read() {
    at_ = text_.find('{') + 1;
    std::vector<Choice> choices;
    for (blanks(); at_ < text_.size() && text_[at_] != '}'; blanks()) choices.push_back(choice());
    return choices;
  }

 private:
  void blanks() {
    while (at_ < text_.size() && text_[at_] == ' ') ++at_;
  }

  std::string word() {
    const std::size_t start = at_;
    at_ = std::min(text_.find_first_of(" ;(=@{}", at_), text_.size());
    return std::string(text_.substr(start, at_ - start));
  }

  // Goes to the next of `ends` that is in no brackets and in no text.
  std::string_view until(std::string_view ends) {
    const std::size_t start = at_;
    int depth = 0;
    for (; at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '"') {
        at_ = std::min(text_.find('"', at_ + 1), text_.size() - 1);
        continue;
      }
      if (depth == 0 && ends.find(c) != std::string_view::npos) break;
      if (c == '(' || c == '[' || c == '{') ++depth;
      if (c == ')' || c == ']' || c == '}') --depth;
    }
    std::string_view part = text_.substr(start, at_ - start);
    while (!part.empty() && part.front() == ' ') part.remove_prefix(1);
    while (!part.empty() && part.back() == ' ') part.remove_suffix(1);
    return part;
  }

  Choice choice() {
    Choice choice;
    choice.label = word();
    choice.name = choice.label;
    for (blanks(); at_ < text_.size() && text_[at_] != ';'; blanks()) {
      if (text_[at_] == '(') {
        ++at_;
        choice.fields = until(")");
        ++at_;
        continue;
      }
      if (text_[at_] != '@') break;
      ++at_;
      const std::string key = word();
      blanks();
      if (at_ == text_.size() || text_[at_] != '=') continue;
      ++at_;
      blanks();
      const std::string_view value = until("@;");
      if (value.size() < 2 || value.front() != '"' || value.back() != '"') continue;
      if (key == "name") choice.name = value.substr(1, value.size() - 2);
      if (key == "desc") choice.description = value.substr(1, value.size() - 2);
    }
    if (at_ < text_.size()) ++at_;
    return choice;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace

std::vector<Choice> choicesOf(const vrntType_t* enumType) {
  const char* const text = vrntTypeString(enumType);
  if (text == nullptr) throw std::bad_alloc();
  std::vector<Choice> choices = ChoiceReader(text).read();
  if (choices.size() != vrntTypeConstructorCount(enumType)) {
    throw Failure(VRTK_INTERNAL_ERROR, "the constructors of an enum are not those of its text");
  }
  return choices;
}

}  // namespace vrtk

struct vrtkEnumChoices {
  std::vector<vrtk::Choice> texts;
  std::vector<vrtkEnumChoice> choices;
};

std::uint32_t vrtkEnumChoicesOf(const vrntType_t* type, vrtkEnumChoices** choices,
                                vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkEnumChoicesOf", "type");
    vrtk::requireArgument(choices, "vrtkEnumChoicesOf", "choices");
    if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ENUM) {
      throw vrtk::Failure(VRTK_INVALID_ARGUMENT, "vrtkEnumChoicesOf: the type is no enum");
    }
    auto made = std::make_unique<vrtkEnumChoices>();
    made->texts = vrtk::choicesOf(type);
    for (const vrtk::Choice& choice : made->texts) {
      made->choices.push_back({static_cast<std::uint32_t>(made->choices.size()),
                               choice.label.c_str(), choice.name.c_str(),
                               choice.description.c_str(), choice.fields.c_str()});
    }
    *choices = made.release();
  });
}

void vrtkEnumChoicesDestroy(vrtkEnumChoices* choices) { delete choices; }

std::uint32_t vrtkEnumChoiceCount(const vrtkEnumChoices* choices) {
  return static_cast<std::uint32_t>(choices->choices.size());
}

const vrtkEnumChoice* vrtkEnumChoiceAt(const vrtkEnumChoices* choices, std::uint32_t code) {
  return code < choices->choices.size() ? &choices->choices[code] : nullptr;
}
