#include "check/type_cache.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "vornath_data/errors.h"

namespace vrtk {
namespace {

// A type whose parse may take more is refused: no scene has one.
constexpr std::uint64_t kLargestType = std::uint64_t{1} << 30;

// A message is for people; a long text in it would hide what it says.
std::string shortened(std::string_view text) {
  constexpr std::size_t kLongest = 120;
  std::string result(text.substr(0, kLongest));
  for (char& c : result) {
    if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x7F) c = '?';
  }
  if (text.size() > kLongest) result += "...";
  return result;
}

// The library uses one type for all enums that differ only in what their constructors carry, so a
// text that another process wrote may have other fields there. Removes them: all that stands in
// parentheses behind the name of a constructor.
std::string withoutPayloads(std::string_view text) {
  std::string result;
  std::string_view lastWord;
  std::size_t depth = 0;  // of the parentheses of a payload
  std::string braces;     // 'e' for that of an enum, 's' for that of a struct
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') {
      std::size_t end = i + 1;
      while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
      end = std::min(end, text.size() - 1);
      if (depth == 0) result += text.substr(i, end - i + 1);
      i = end;
      continue;
    }
    const bool wordStarts = std::isalpha(static_cast<unsigned char>(c)) != 0 || c == '_';
    if (wordStarts) {
      std::size_t end = i;
      while (end < text.size() &&
             (std::isalnum(static_cast<unsigned char>(text[end])) != 0 || text[end] == '_')) {
        ++end;
      }
      lastWord = text.substr(i, end - i);
      if (depth == 0) result += lastWord;
      i = end - 1;
      continue;
    }
    if (depth == 0) {
      if (c == '{') braces += lastWord == "enum" ? 'e' : 's';
      if (c == '}' && !braces.empty()) braces.pop_back();
      if (c == '(' && !braces.empty() && braces.back() == 'e') {
        depth = 1;
        continue;
      }
      result += c;
    } else {
      if (c == '(') ++depth;
      if (c == ')') --depth;
    }
    if (c != ' ') lastWord = {};
  }
  return result;
}

// Returns whether the extents in a text are such that no memory can hold all elements.
bool isHuge(std::string_view text) {
  constexpr double kMost = 1e12;
  double product = 1;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '[' && text[i] != ',') continue;
    double extent = 0;
    while (i + 1 < text.size() && std::isdigit(static_cast<unsigned char>(text[i + 1])) != 0) {
      extent = extent * 10 + (text[++i] - '0');
    }
    if (extent > 1) product *= extent;
  }
  return product > kMost;
}

bool isCanonical(std::string_view text, const vrntType_t* type) {
  const char* const canonical = vrntTypeString(type);
  if (canonical == nullptr) throw std::bad_alloc();
  const vrnt::UniqueType stripped(vrntTypeStripMetadata(type));
  if (stripped.get() != type) return false;
  if (text == canonical) return true;
  if (text.find('(') == std::string_view::npos && std::strchr(canonical, '(') == nullptr) {
    return false;
  }
  return withoutPayloads(text) == withoutPayloads(canonical);
}

}  // namespace

ValueType::ValueType(vrnt::UniqueType parsed)
    : type(std::move(parsed)), plan(type.get(), TypePlan::Numbers::Bare) {}

std::uint64_t memoryOfType(std::string_view text) {
  // What the library takes for a type, for a field or a constructor, and for a character, while it
  // parses and later. A type keeps its text if that is short. Measured; see the test.
  constexpr std::uint64_t kType = 900;
  constexpr std::uint64_t kField = 200;
  constexpr std::uint64_t kCharacter = 24;
  constexpr std::size_t kLongestKept = 4096;
  std::uint64_t memory = kType + kCharacter * text.size();
  std::vector<std::size_t> open;  // where the types start whose brackets are open
  std::size_t start = 0;          // of the last type
  bool inWord = false;
  const auto addType = [&](std::size_t end) {
    const std::size_t length = end - start;
    memory += kType + (length <= kLongestKept ? 2 * length : 0);
  };
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const bool isWord = c == '_' || std::isalnum(static_cast<unsigned char>(c)) != 0;
    if (isWord && !inWord) start = i;
    inWord = isWord;
    switch (c) {
      case '{':
      case '(':
        open.push_back(i);
        break;
      case '}':
      case ')':
        if (!open.empty()) {
          start = open.back();
          open.pop_back();
        }
        addType(i + 1);
        break;
      case '[':
        open.push_back(start);  // the numbers in the brackets are no types
        break;
      case ']':
        if (!open.empty()) {
          start = open.back();
          open.pop_back();
        }
        addType(i + 1);
        break;
      case '*':
        addType(i + 1);
        break;
      case ';':
      case ',':
      case '@':
        memory += kField;
        break;
      default:
        break;
    }
  }
  return memory;
}

TypeCache::Found TypeCache::use(Entries::iterator entry) {
  if (entry != entries_.begin()) entries_.splice(entries_.begin(), entries_, entry);
  return {entry->type, entry->number, 0};
}

ValueTypePtr TypeCache::find(std::uint64_t number) {
  const auto known = byNumber_.find(number);
  return known != byNumber_.end() ? use(known->second).type : nullptr;
}

TypeCache::Found TypeCache::find(std::string_view text, TypeFault& fault) {
  // Neighbouring values often have one type.
  if (!entries_.empty() && text == entries_.front().text) return use(entries_.begin());
  const auto known = byText_.find(text);
  if (known != byText_.end()) return use(known->second);
  if (text.find('\0') != std::string_view::npos) {
    fault = {Code::VALUE_TYPE_INVALID,
             fmt::format("the text of the type, \"{}\", contains a NUL", shortened(text))};
    return {};
  }
  const std::uint64_t memory = memoryOfType(text);
  if (memory > kLargestType) {
    fault = {Code::VALUE_TYPE_TOO_LARGE,
             fmt::format("the text of the type has {} bytes, and parsing it may take {} bytes of "
                         "memory; at most {} are expected",
                         text.size(), memory, kLargestType)};
    return {};
  }
  vrntValuesError_t* error = nullptr;
  vrnt::UniqueType type(vrntTypeParse(std::string(text).c_str(), &error));
  const vrnt::UniqueError owner(error);
  if (!type) {
    if (vrntValuesErrorCode(error) == VRNT_OUT_OF_MEMORY) {
      // The library also says so for a type with more references than there can be.
      if (!isHuge(text)) throw std::bad_alloc();
      fault = {Code::VALUE_TYPE_TOO_LARGE,
               fmt::format("there is no memory for values of the type \"{}\"", shortened(text))};
    } else {
      std::string_view reason = vrntValuesErrorMessage(error);
      // The library repeats the text before its reason.
      if (const auto line = reason.rfind('\n'); line != std::string_view::npos) {
        reason.remove_prefix(line + 1);
      }
      fault = {Code::VALUE_TYPE_INVALID,
               fmt::format("the text of the type, \"{}\", does not parse: {}", shortened(text),
                           shortened(reason))};
    }
    return {};
  }
  if (!isCanonical(text, type.get())) {
    const vrnt::UniqueType stripped(vrntTypeStripMetadata(type.get()));
    fault = {Code::VALUE_TYPE_NOT_CANONICAL,
             fmt::format("the text of the type is \"{}\", but the library writes \"{}\"",
                         shortened(text), shortened(vrntTypeString(stripped.get())))};
    return {};
  }
  if (vrntTypeDescriptor(type.get()) == VRNT_DESCRIPTOR_ARRAY) {
    std::int32_t shape[4] = {};
    vrntTypeArrayShape(type.get(), shape);
    if (shape[0] < 0) {
      fault = {
          Code::VALUE_TYPE_UNSIZED,
          fmt::format("a value cannot have the type \"{}\", which has no size", shortened(text))};
      return {};
    }
  }
  auto made = std::make_shared<const ValueType>(std::move(type));
  // What is kept, and what the plan takes, is less.
  largest_ = std::max(largest_, memory);
  memory_ += memory;
  while (memory_ > std::max(kMemory, 2 * largest_)) {
    const Entry& oldest = entries_.back();
    memory_ -= oldest.memory;
    byText_.erase(oldest.text);
    byNumber_.erase(oldest.number);
    entries_.pop_back();
  }
  entries_.push_front({std::string(text), std::move(made), ++numbers_, memory});
  const auto entry = entries_.begin();
  byText_.emplace(entry->text, entry);
  byNumber_.emplace(entry->number, entry);
  return {entry->type, entry->number, memory};
}

}  // namespace vrtk
