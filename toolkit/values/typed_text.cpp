// Texts that people type, read against a type.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "check/type_plan.hpp"
#include "foundation/failure.hpp"
#include "json/numbers.hpp"
#include "values/bounds.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_toolkit/vrtk_value.h"

namespace vrtk {
namespace {

// How many letters are to be added, removed or replaced to make one word of another. Letters of the
// other case count half.
std::size_t distance(std::string_view a, std::string_view b) {
  const auto lower = [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  };
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = 2 * j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t corner = row[0];
    row[0] = 2 * i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = corner + (a[i - 1] == b[j - 1]                 ? 0
                                             : lower(a[i - 1]) == lower(b[j - 1]) ? 1
                                                                                  : 2);
      corner = row[j];
      row[j] = std::min({replaced, row[j] + 2, row[j - 1] + 2});
    }
  }
  return row[b.size()];
}

// The words " ; did you mean 'x'?", or the first of the names if none is near.
template <typename NameAt>
std::string suggestion(std::string_view wanted, std::uint32_t count, NameAt nameAt) {
  constexpr std::size_t kLongestName = 200;
  std::string_view nearest;
  std::size_t least = SIZE_MAX;
  for (std::uint32_t i = 0; i < count && wanted.size() < kLongestName; ++i) {
    const std::string_view name = nameAt(i);
    if (name.size() >= kLongestName) continue;
    const std::size_t changes = distance(wanted, name);
    if (changes < least) {
      least = changes;
      nearest = name;
    }
  }
  // At most a third of the letters, or one of a short word.
  if (!nearest.empty() && least <= std::max<std::size_t>(2, 2 * wanted.size() / 3)) {
    return fmt::format("; did you mean '{}'?", nearest);
  }
  constexpr std::uint32_t kMost = 8;
  std::string names;
  for (std::uint32_t i = 0; i < std::min(count, kMost); ++i) {
    names += i == 0 ? "" : ", ";
    names += nameAt(i);
  }
  if (count == 0) return "; it has none";
  return fmt::format("; there {} {}{}", count == 1 ? "is" : "are", names,
                     count > kMost ? ", ..." : "");
}

std::string typeText(const vrntType_t* type) {
  const vrnt::UniqueType plain(vrntTypeStripMetadata(type));
  const char* const text = vrntTypeString(plain.get());
  if (text == nullptr) throw std::bad_alloc();
  constexpr std::size_t kLongest = 80;
  const std::string_view whole = text;
  return whole.size() <= kLongest ? std::string(whole)
                                  : std::string(whole.substr(0, kLongest)) + "...";
}

std::uint32_t laneSize(std::uint32_t family) {
  return family == VRNT_BASETYPE_CHAR ? 1 : family == VRNT_BASETYPE_HALF ? 2 : 4;
}

bool isUnsizedArray(const vrntType_t* type) {
  if (isStruct(type) || vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY) return false;
  std::int32_t shape[4] = {0, 0, 0, 0};
  vrntTypeArrayShape(type, shape);
  return vrntTypeArrayDimension(type) == 1 && shape[0] < 0;
}

class TypedText {
 public:
  explicit TypedText(std::string_view text) : text_(text) {}

  vrnt::UniqueValue read(const vrntType_t* type) {
    vrnt::UniqueValue read = value(type, 0);
    blanks();
    if (at_ != text_.size()) fail(at_, fmt::format("unexpected {} after the value", found()));
    return read;
  }

 private:
  // Texts nest as people write them.
  static constexpr int kDeepest = 200;

  // A value whose bytes are being read. References are set when all else is written.
  struct Draft {
    std::vector<char> bytes;
    struct Reference {
      vrntValueView_t view;
      vrnt::UniqueValue target;
    };
    std::vector<Reference> references;
  };

  [[noreturn]] void fail(std::size_t at, const std::string& words) const {
    throw Failure(VRTK_TEXT_INVALID, words, placeIn(text_, at));
  }

  // Tokens.

  void blanks() {
    while (at_ < text_.size() && std::strchr(" \t\r\n", text_[at_]) != nullptr) ++at_;
  }
  char peek() {
    blanks();
    return at_ < text_.size() ? text_[at_] : '\0';
  }
  bool take(char c) {
    if (peek() != c || c == '\0') return false;
    ++at_;
    return true;
  }
  static bool isWord(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '\'';
  }
  std::string_view word() {
    blanks();
    const std::size_t start = at_;
    while (at_ < text_.size() && isWord(text_[at_])) ++at_;
    return text_.substr(start, at_ - start);
  }
  // A number, or what stands in its place.
  std::string_view number() {
    blanks();
    const std::size_t start = at_;
    while (at_ < text_.size() &&
           (isWord(text_[at_]) || text_[at_] == '.' ||
            ((text_[at_] == '+' || text_[at_] == '-') &&
             (at_ == start || ((text_[at_ - 1] == 'e' || text_[at_ - 1] == 'E') &&
                               text_.substr(start, 2) != "0x"))))) {
      ++at_;
    }
    return text_.substr(start, at_ - start);
  }

  // What stands at the place, for the words of an error.
  std::string found() {
    blanks();
    if (at_ == text_.size()) return "the end of the text";
    std::size_t end = at_;
    while (end < text_.size() && isWord(text_[end])) ++end;
    if (end == at_) {
      // A character of several bytes is one.
      for (++end;
           end < text_.size() && (static_cast<unsigned char>(text_[end]) & 0xC0U) == 0x80U;) {
        ++end;
      }
    }
    constexpr std::size_t kLongest = 40;
    std::string_view shown = text_.substr(at_, std::min(end - at_, kLongest));
    return fmt::format("'{}'", shown);
  }

  void expect(char c, const char* where) {
    if (!take(c)) fail(at_, fmt::format("expected '{}' {}, found {}", c, where, found()));
  }

  // Goes behind what stands in brackets, or up to what ends a value.
  void skipValue() {
    int depth = 0;
    for (blanks(); at_ < text_.size(); ++at_) {
      const char c = text_[at_];
      if (c == '"') {
        at_ = std::min(text_.find('"', at_ + 1), text_.size() - 1);
        continue;
      }
      if (c == '(' || c == '[' || c == '{') ++depth;
      const bool closes = c == ')' || c == ']' || c == '}';
      if (depth == 0 && (closes || c == ',' || c == ';' || c == '|')) return;
      if (closes) --depth;
    }
  }

  // Values.

  vrnt::UniqueValue value(const vrntType_t* type, int depth) {
    if (isUnsizedArray(type)) {
      const vrnt::UniqueType sized = sizedType(type);
      return value(sized.get(), depth);
    }
    vrntValuesError_t* error = nullptr;
    vrnt::UniqueValue made(vrntValueCreateDefault(type, &error));
    if (!made) vrnt::detail::raiseError(error);
    const auto size = static_cast<std::size_t>(vrntTypeSize(type));
    const auto* const data = static_cast<const char*>(vrntValueData(made.get()));
    Draft draft;
    draft.bytes.assign(data, data + size);
    part(draft, type, 0, depth);
    vrntValue_t* handle = made.release();
    // The words of references are those of the default still.
    vrntValueWrite(&handle, 0, draft.bytes.data(), draft.bytes.size(), &error);
    for (const Draft::Reference& reference : draft.references) {
      if (error != nullptr) break;
      vrntValueSetReference(&handle, &reference.view, reference.target.get(), &error);
    }
    made.reset(handle);
    if (error != nullptr) vrnt::detail::raiseError(error);
    return made;
  }

  // The array type with as many elements as the text has.
  vrnt::UniqueType sizedType(const vrntType_t* type) {
    const std::size_t start = at_;
    blanks();
    const std::size_t open = at_;
    expect('[', "at the start of an array");
    std::size_t count = 0;
    if (peek() != ']' && peek() != ':') {
      for (;;) {
        ++count;
        skipValue();
        if (!take(',')) break;
        if (peek() == ']') break;
      }
    }
    if (count > INT32_MAX) fail(open, "the array has too many elements");
    at_ = start;
    const vrnt::UniqueType element(vrntTypeElementType(type));
    const char* const text = vrntTypeString(element.get());
    if (text == nullptr) throw std::bad_alloc();
    vrntValuesError_t* error = nullptr;
    vrnt::UniqueType sized(vrntTypeParse(fmt::format("{}[{}]", text, count).c_str(), &error));
    if (!sized) vrnt::detail::raiseError(error);
    return sized;
  }

  void part(Draft& draft, const vrntType_t* type, std::uint64_t offset, int depth) {
    blanks();
    if (depth > kDeepest) fail(at_, "the text nests too deeply");
    if (isStruct(type)) return structure(draft, type, offset, depth);
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_BASE:
        return base(draft, type, offset);
      case VRNT_DESCRIPTOR_ENUM:
        return enumerator(draft, type, offset);
      case VRNT_DESCRIPTOR_ARRAY:
        return array(draft, type, offset, depth);
      case VRNT_DESCRIPTOR_REFERENCE:
        return reference(draft, type, offset, depth);
      default:
        fail(at_, "a function has no text");
    }
  }

  void structure(Draft& draft, const vrntType_t* type, std::uint64_t offset, int depth) {
    expect('{', fmt::format("at the start of the struct {}", typeText(type)).c_str());
    const std::uint32_t count = vrntTypeFieldCount(type);
    const auto labelAt = [type](std::uint32_t i) { return vrntTypeFieldLabel(type, i); };
    std::vector<bool> given(count);
    // A search of the fields one by one would take too long for many.
    constexpr std::uint32_t kFew = 16;
    std::unordered_map<std::string_view, std::uint32_t> byLabel;
    for (std::uint32_t i = 0; count > kFew && i < count; ++i) byLabel.emplace(labelAt(i), i);
    const auto fieldOf = [&](std::string_view label) {
      if (count > kFew) {
        const auto known = byLabel.find(label);
        return known != byLabel.end() ? known->second : count;
      }
      std::uint32_t field = 0;
      while (field < count && label != labelAt(field)) ++field;
      return field;
    };
    while (!take('}')) {
      blanks();
      const std::size_t start = at_;
      const std::string_view label = word();
      if (label.empty()) {
        fail(start, fmt::format("expected the label of a field or '}}', found {}", found()));
      }
      const std::uint32_t field = fieldOf(label);
      if (field == count) {
        fail(start, fmt::format("the struct has no field '{}'{}", label,
                                suggestion(label, count, labelAt)));
      }
      if (given[field]) fail(start, fmt::format("the field '{}' is given twice", label));
      given[field] = true;
      expect('=', fmt::format("behind the label '{}'", label).c_str());
      vrntValueView_t view{};
      vrntValueStructField(&view, type, field);
      part(draft, view.type, offset + view.offset, depth + 1);
      if (!take(';') && !take(',') && peek() != '}') {
        fail(at_, fmt::format("expected ';' behind the field '{}', found {}", label, found()));
      }
    }
  }

  void array(Draft& draft, const vrntType_t* type, std::uint64_t offset, int depth) {
    if (isUnsizedArray(type)) fail(at_, "an array without a size has no place in another value");
    std::array<std::int32_t, 4> shape{1, 1, 1, 1};
    vrntTypeArrayShape(type, shape.data());
    const std::uint32_t rank = vrntTypeArrayDimension(type);
    const Array target{type, offset, shape, rank};
    if (rank > 1 && hasShape()) {
      // As the library writes it: all elements in one row, and then the extents.
      const std::uint64_t total = elementCount(type);
      row(draft, target, total, depth, [&](std::uint64_t element) {
        std::array<std::int32_t, 4> index{};
        for (std::uint32_t d = 0; d < rank; ++d) {
          const auto extent = static_cast<std::uint64_t>(shape[d]);
          index[d] = static_cast<std::int32_t>(element % extent);
          element /= extent;
        }
        this->element(draft, target, index, depth);
      });
      return;
    }
    dimension(draft, target, {}, rank - 1, depth);
  }

  struct Array {
    const vrntType_t* type;
    std::uint64_t offset;
    std::array<std::int32_t, 4> shape;
    std::uint32_t rank;
  };

  // Whether the array that starts here tells its extents at its end.
  bool hasShape() {
    const std::size_t start = at_;
    bool found = false;
    if (take('[')) {
      for (;;) {
        skipValue();
        if (take('|')) {
          found = true;
          break;
        }
        if (!take(',') && !take(';')) break;
      }
    }
    at_ = start;
    return found;
  }

  void dimension(Draft& draft, const Array& target, std::array<std::int32_t, 4> index,
                 std::uint32_t d, int depth) {
    if (depth > kDeepest) fail(at_, "the text nests too deeply");
    const auto count = static_cast<std::uint64_t>(std::max(target.shape[d], 0));
    row(draft, target, count, depth, [&](std::uint64_t element) {
      index[d] = static_cast<std::int32_t>(element);
      if (d == 0) {
        this->element(draft, target, index, depth);
      } else {
        dimension(draft, target, index, d - 1, depth + 1);
      }
    });
  }

  void element(Draft& draft, const Array& target, const std::array<std::int32_t, 4>& index,
               int depth) {
    vrntValueView_t view{};
    vrntValueArrayElement(&view, target.type, index.data());
    part(draft, view.type, target.offset + view.offset, depth + 1);
  }

  template <typename Read>
  void row(Draft&, const Array& target, std::uint64_t count, int, Read&& read) {
    const std::size_t start = (blanks(), at_);
    expect('[', fmt::format("at the start of an array of {}", count).c_str());
    std::uint64_t done = 0;
    while (peek() != ']' && peek() != ':' && peek() != '|') {
      if (done == count) {
        fail(at_, fmt::format("the array has {} element{}, but more are given", count,
                              count == 1 ? "" : "s"));
      }
      read(done++);
      if (!take(',') && peek() != ']' && peek() != ':' && peek() != '|') {
        fail(at_, fmt::format("expected ',' or ']' in an array, found {}", found()));
      }
    }
    if (done != count) {
      fail(done == 0 ? start : at_,
           fmt::format("the array has {} element{}, but {} {} given", count, count == 1 ? "" : "s",
                       done, done == 1 ? "is" : "are"));
    }
    // The type and the extents that the library writes say what is known.
    if (take(':')) skipValue();
    if (take('|')) extents(target);
    expect(']', "at the end of an array");
  }

  void extents(const Array& target) {
    for (std::uint32_t d = 0; d < target.rank; ++d) {
      blanks();
      const std::size_t start = at_;
      const std::string given(number());
      if (given != std::to_string(target.shape[d])) {
        fail(start, fmt::format("the array has {} elements in this dimension, but '{}' is given",
                                target.shape[d], given));
      }
      if (d + 1 != target.rank) expect(',', "between the extents of an array");
    }
  }

  void enumerator(Draft& draft, const vrntType_t* type, std::uint64_t offset) {
    const std::size_t start = at_;
    const std::string_view label = word();
    if (label.empty()) {
      fail(start, fmt::format("expected the label of an enum, found {}", found()));
    }
    const std::uint32_t count = vrntTypeConstructorCount(type);
    const auto labelAt = [type](std::uint32_t i) { return vrntTypeConstructorName(type, i); };
    std::uint32_t code = 0;
    while (code < count && label != labelAt(code)) ++code;
    if (code == count) {
      fail(start, fmt::format("the enum has no constructor '{}'{}", label,
                              suggestion(label, count, labelAt)));
    }
    std::memcpy(draft.bytes.data() + offset, &code, sizeof(code));
    // The library writes the type behind the label.
    const std::size_t end = at_;
    if (!take(':')) return;
    if (word() != "enum" || peek() != '{') {
      at_ = end;
      return;
    }
    skipBraces();
  }

  void skipBraces() {
    int depth = 0;
    do {
      const char c = peek();
      if (c == '\0') fail(at_, "expected '}' at the end of an enum, found the end of the text");
      if (c == '"') at_ = std::min(text_.find('"', at_ + 1), text_.size() - 1);
      if (c == '{') ++depth;
      if (c == '}') --depth;
      ++at_;
    } while (depth != 0);
  }

  void reference(Draft& draft, const vrntType_t* type, std::uint64_t offset, int depth) {
    const vrnt::UniqueType target(vrntTypeReferencedType(type));
    const std::size_t start = at_;
    draft.references.push_back({{const_cast<vrntType_t*>(type), offset}, nullptr});
    const std::size_t place = draft.references.size() - 1;
    if (text_.substr(at_, 4) == "null" && (at_ + 4 == text_.size() || !isWord(text_[at_ + 4]))) {
      at_ += 4;
      return;
    }
    if (take('$')) {
      nullAddress(start);
      return;
    }
    take('&');
    blanks();
    vrnt::UniqueValue referred;
    if (target) {
      referred = value(target.get(), depth + 1);
    } else {
      referred = untyped();
    }
    draft.references[place].target = std::move(referred);
  }

  // Reads the address behind a '$', which must be 0.
  void nullAddress(std::size_t start) {
    const bool inBrackets = take('(');
    std::string_view digits = number();
    if (digits.substr(0, 2) == "0x") digits.remove_prefix(2);
    const bool isNull = !digits.empty() && digits.find_first_not_of('0') == std::string_view::npos;
    if (!isNull) fail(start, "an address of a process means nothing in a text; expected null");
    if (inBrackets) {
      if (take(':')) {
        // A type has no brackets but those of its own.
        skipValue();
      }
      expect(')', "behind the type of an address");
    }
  }

  // Reads a value of any type, which the language of the library tells by itself.
  vrnt::UniqueValue untyped() {
    const std::size_t start = at_;
    skipValue();
    const std::string text(text_.substr(start, at_ - start));
    vrntValue_t* value = nullptr;
    vrtkError* error = nullptr;
    if (vrtkValueParse(text.c_str(), &value, &error) != VRTK_OK) {
      const std::unique_ptr<vrtkError, void (*)(vrtkError*)> owner(error, vrtkErrorDestroy);
      if (vrtkErrorCode(error) == VRTK_OUT_OF_MEMORY) throw std::bad_alloc();
      vrtkTextPlace place{1, 1, 0};
      vrtkErrorPlace(error, &place);
      fail(start + static_cast<std::size_t>(place.offset), vrtkErrorMessage(error));
    }
    return vrnt::UniqueValue(value);
  }

  void base(Draft& draft, const vrntType_t* type, std::uint64_t offset) {
    const std::uint32_t lanes = vrntTypeVectorDimension(type);
    const std::uint32_t family = vrntTypeBasetype(type);
    char* const out = draft.bytes.data() + offset;
    if (lanes == 1) return lane(family, out);
    const std::size_t start = at_;
    const std::string_view name = word();
    if (!name.empty() && !isVectorName(name, lanes)) {
      at_ = start;
      fail(start, fmt::format("expected a {}, such as ({}), found {}", typeText(type),
                              lanes == 2   ? "1, 2"
                              : lanes == 3 ? "1, 2, 3"
                                           : "1, 2, 3, 4",
                              found()));
    }
    const bool inSquare = name.empty() && peek() == '[';
    expect(inSquare ? '[' : '(', fmt::format("at the start of a {}", typeText(type)).c_str());
    for (std::uint32_t i = 0; i < lanes; ++i) {
      lane(family, out + std::size_t{i} * laneSize(family));
      if (i + 1 != lanes) {
        expect(',', fmt::format("between the {} numbers of a {}", lanes, typeText(type)).c_str());
      }
    }
    expect(inSquare ? ']' : ')',
           fmt::format("behind the {} numbers of a {}", lanes, typeText(type)).c_str());
  }

  static bool isVectorName(std::string_view name, std::uint32_t lanes) {
    for (const std::string_view family : {"bool", "int", "float", "char", "half"}) {
      if (name.size() == family.size() + 1 && name.substr(0, family.size()) == family &&
          name.back() == static_cast<char>('0' + lanes)) {
        return true;
      }
    }
    return false;
  }

  void lane(std::uint32_t family, char* out) {
    blanks();
    const std::size_t start = at_;
    const std::string text(number());
    const auto wrong = [&](const char* expected) {
      at_ = start;
      fail(start, fmt::format("expected {}, found {}", expected,
                              text.empty() ? found() : "'" + text + "'"));
    };
    const auto outOfRange = [&](const char* range) {
      fail(start, fmt::format("{} is out of range: {}", text, range));
    };
    switch (family) {
      case VRNT_BASETYPE_BOOL: {
        if (text != "true" && text != "false") wrong("true or false");
        const std::uint32_t word = text == "true" ? ~std::uint32_t{0} : 0;
        std::memcpy(out, &word, sizeof(word));
        return;
      }
      case VRNT_BASETYPE_INT: {
        std::int64_t read = 0;
        if (isHex(text, 8)) {
          read = static_cast<std::int32_t>(std::stoul(text, nullptr, 16));
        } else {
          const NumberFault fault = readWhole(text, INT32_MIN, INT32_MAX, read);
          if (fault == NumberFault::WrongKind) wrong("an int");
          if (fault == NumberFault::OutOfRange) {
            outOfRange("an int is from -2147483648 to 2147483647");
          }
        }
        const auto word = static_cast<std::int32_t>(read);
        std::memcpy(out, &word, sizeof(word));
        return;
      }
      case VRNT_BASETYPE_CHAR: {
        std::int64_t read = 0;
        if (isHex(text, 2)) {
          read = std::stol(text, nullptr, 16);
        } else {
          const bool hasSuffix = !text.empty() && text.back() == 'c';
          const NumberFault fault =
              readWhole(hasSuffix ? text.substr(0, text.size() - 1) : text, 0, 255, read);
          if (fault == NumberFault::WrongKind) wrong("a char, a number from 0 to 255");
          if (fault == NumberFault::OutOfRange) outOfRange("a char is from 0 to 255");
        }
        *out = static_cast<char>(read);
        return;
      }
      case VRNT_BASETYPE_HALF: {
        std::uint16_t bits = 0;
        const bool hasSuffix = !text.empty() && text.back() == 'h';
        if (text.size() == 7 && text.back() == '.' && isHex(text.substr(0, 6), 4)) {
          bits = static_cast<std::uint16_t>(std::stoul(text.substr(0, 6), nullptr, 16));
        } else {
          const std::string number = jsonNumber(hasSuffix ? text.substr(0, text.size() - 1) : text);
          if (!special<std::uint16_t>(number, 0x7C00, 0xFC00, 0x7FFF, bits)) {
            const NumberFault fault = readHalf(number, bits);
            if (fault == NumberFault::WrongKind) wrong("a half");
            if (fault == NumberFault::OutOfRange) outOfRange("a half is from -65504 to 65504");
          }
        }
        std::memcpy(out, &bits, sizeof(bits));
        return;
      }
      default: {
        std::uint32_t bits = 0;
        if (text.size() == 11 && text.back() == '.' && isHex(text.substr(0, 10), 8)) {
          bits = static_cast<std::uint32_t>(std::stoul(text.substr(0, 10), nullptr, 16));
        } else {
          const std::string number = jsonNumber(text);
          if (!special<std::uint32_t>(number, 0x7F800000U, 0xFF800000U, 0x7FC00000U, bits)) {
            const NumberFault fault = readFloat(number, bits);
            if (fault == NumberFault::WrongKind) wrong("a float");
            if (fault == NumberFault::OutOfRange) {
              outOfRange("a float is from -3.4028235e+38 to 3.4028235e+38");
            }
          }
        }
        std::memcpy(out, &bits, sizeof(bits));
      }
    }
  }

  static bool isHex(std::string_view text, std::size_t digits) {
    return text.size() == digits + 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
           text.find_first_not_of("0123456789abcdefABCDEF", 2) == std::string_view::npos;
  }

  static NumberFault readWhole(std::string_view text, std::int64_t min, std::int64_t max,
                               std::int64_t& number) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    // Zeros at the front, which JSON has not, say nothing.
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    while (text.size() > 1 && text.front() == '0') text.remove_prefix(1);
    std::string digits(isNegative ? 1 : 0, '-');
    digits.append(text);
    return readInt(digits, min, max, number);
  }

  // The number as JSON has it: people write "+1", "1.", ".5" and "007".
  static std::string jsonNumber(std::string_view text) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative) text.remove_prefix(1);
    while (text.size() > 1 && text[0] == '0' && text[1] >= '0' && text[1] <= '9') {
      text.remove_prefix(1);
    }
    std::string number = isNegative ? "-" : "";
    if (!text.empty() && text.front() == '.' && text.size() > 1) number += '0';
    for (std::size_t i = 0; i < text.size(); ++i) {
      number += text[i];
      const bool digitFollows = i + 1 < text.size() && text[i + 1] >= '0' && text[i + 1] <= '9';
      if (text[i] == '.' && i != 0 && !digitFollows) number += '0';
    }
    return number;
  }

  template <typename Bits>
  static bool special(std::string_view text, Bits infinity, Bits negative, Bits nan, Bits& bits) {
    if (text == "inf") {
      bits = infinity;
    } else if (text == "-inf") {
      bits = negative;
    } else if (text == "nan" || text == "NaN") {
      bits = nan;
    } else {
      return false;
    }
    return true;
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkValueParseAs(const vrntType_t* type, const char* text, vrntValue_t** value,
                               vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkValueParseAs", "type");
    vrtk::requireArgument(text, "vrtkValueParseAs", "text");
    vrtk::requireArgument(value, "vrtkValueParseAs", "value");
    if (!vrtk::isUnsizedArray(type)) vrtk::requireConcrete(type, "vrtkValueParseAs");
    *value = vrtk::TypedText(text).read(type).release();
  });
}
