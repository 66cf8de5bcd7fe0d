#include "catalogue/constructors.hpp"

#include <new>
#include <string_view>

#include "foundation/failure.hpp"
#include "vornath_data/detail/raise_error.hpp"
#include "vornath_data/types.h"

namespace vrtk {
namespace {

// Reads the canonical text of a type, piece by piece.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  // Returns the text up to one of the characters of `ends` that is neither in quotes nor in
  // brackets, without blanks around it. The next read starts at that character.
  std::string_view upTo(std::string_view ends) {
    const std::size_t start = place_;
    int depth = 0;
    bool quoted = false;
    for (; place_ < text_.size(); ++place_) {
      const char c = text_[place_];
      if (quoted) {
        quoted = c != '"';
        continue;
      }
      if (depth == 0 && ends.find(c) != std::string_view::npos) break;
      if (c == '"') quoted = true;
      if (c == '(' || c == '{' || c == '[') ++depth;
      if (c == ')' || c == '}' || c == ']') --depth;
    }
    return trimmed(text_.substr(start, place_ - start));
  }

  bool take(char c) {
    if (place_ >= text_.size() || text_[place_] != c) return false;
    ++place_;
    return true;
  }

 private:
  static std::string_view trimmed(std::string_view text) {
    while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
    while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
    return text;
  }

  std::string_view text_;
  std::size_t place_ = 0;
};

}  // namespace

std::vector<ConstructorModel> constructorsOf(const vrntType_t* enumType) {
  const char* const text = vrntTypeString(enumType);
  if (text == nullptr) throw std::bad_alloc();
  Reader reader(text);
  reader.upTo("{");
  reader.take('{');
  std::vector<ConstructorModel> constructors;
  for (std::uint32_t code = 0; code < vrntTypeConstructorCount(enumType); ++code) {
    ConstructorModel constructor{code, vrntTypeConstructorName(enumType, code), {}, nullptr};
    const std::string_view label = reader.upTo("@(;");
    if (label != constructor.label) {
      throw Failure(VRTK_INTERNAL_ERROR,
                    "the text of an enum does not list its constructors in order");
    }
    if (reader.take('(')) {
      constructor.fields = '(';
      constructor.fields += reader.upTo(")");
      constructor.fields += ')';
      reader.take(')');
    }
    const std::string_view annotations = reader.upTo(";");
    reader.take(';');
    if (!annotations.empty()) {
      // The annotations of a constructor are written as those of a type: read them as such.
      vrntValuesError_t* error = nullptr;
      constructor.annotations.reset(
          vrntTypeParse(("int " + std::string(annotations)).c_str(), &error));
      if (!constructor.annotations) vrnt::detail::raiseError(error);
    }
    constructors.push_back(std::move(constructor));
  }
  return constructors;
}

}  // namespace vrtk
