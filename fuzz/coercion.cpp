// Coercion and specialization between two types. The input is a type's text, a newline, a second
// type's text or "~" and a program of edits on the first, a newline, and the bytes of the value; a
// value without such bytes is the first type's default.
#include <algorithm>
#include <cctype>
#include <iterator>
#include <vector>

#include "support/target.hpp"
#include "values/block.hpp"

namespace vornath_fuzz {
namespace {

constexpr std::uint64_t kLargeValue = std::uint64_t{1} << 16;

std::string_view takeLine(std::string_view& bytes) {
  const std::size_t end = std::min(bytes.find('\n'), bytes.size());
  const std::string_view line = bytes.substr(0, end);
  bytes.remove_prefix(std::min(end + 1, bytes.size()));
  return line;
}

// Words of letters and digits, and single other characters; blanks fall away.
std::vector<std::string> tokensOf(std::string_view text) {
  const auto isLetter = [](char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '@';
  };
  std::vector<std::string> tokens;
  for (const char c : text) {
    if (c == ' ') {
      tokens.emplace_back();
    } else if (!tokens.empty() && !tokens.back().empty() && isLetter(c) &&
               isLetter(tokens.back().back())) {
      tokens.back() += c;
    } else {
      tokens.emplace_back(1, c);
    }
  }
  return tokens;
}

std::string edited(std::string_view text, Program program) {
  static constexpr const char* kWords[] = {"int",
                                           "float",
                                           "half3",
                                           "char",
                                           "bool2",
                                           "void*",
                                           "a",
                                           "b",
                                           "C",
                                           "3",
                                           "[2]",
                                           "[]",
                                           "@no_specialize",
                                           "@default=1",
                                           "int c;",
                                           "enum { A; B; }",
                                           "{ int a; float b; }"};
  std::vector<std::string> tokens = tokensOf(text);
  while (!program.atEnd() && !tokens.empty() && tokens.size() < 1024) {
    const std::uint8_t kind = program.byte();
    const auto at = tokens.begin() + static_cast<std::ptrdiff_t>(program.byte() % tokens.size());
    switch (kind % 4) {
      case 0:
        tokens.erase(at);
        break;
      case 1:
        *at = kWords[(kind / 4) % std::size(kWords)];
        break;
      case 2:
        tokens.insert(at, kWords[(kind / 4) % std::size(kWords)]);
        break;
      default:
        std::swap(*at, tokens[kind / 4 % tokens.size()]);
    }
  }
  std::string result;
  for (const std::string& token : tokens) result += token + ' ';
  return result;
}

bool hasOpenExtents(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY) return false;
  std::int32_t shape[4] = {};
  vrntTypeArrayShape(type, shape);
  return shape[0] == -1;
}

// A type whose values this target makes.
UniqueType smallType(std::string_view text) {
  ErrorParameter error;
  UniqueType type = parseType(std::string(text.substr(0, text.find('\0'))), error);
  const bool small = type && !hasOpenExtents(type.get()) && vrntTypeSize(type.get()) < kLargeValue;
  return small ? std::move(type) : nullptr;
}

// Zeros where references are, the given bytes over and over elsewhere.
void fill(UniqueValue& value, std::string_view bytes) {
  const auto& slots = qex::vornath::blockType(value.get()).refSlots();
  const vrntValueView_t whole = wholeOf(value.get());
  ErrorParameter error;
  vrntValue_t* handle = value.release();
  auto* const data = static_cast<char*>(vrntValueMap(&handle, &whole, error));
  value.reset(handle);
  if (data == nullptr) throw std::bad_alloc();
  std::size_t slot = 0;
  for (std::uint64_t i = 0; i < vrntTypeSize(whole.type); ++i) {
    while (slot < slots.size() && i >= slots[slot] * 8 + 8) ++slot;
    const bool isReference = slot < slots.size() && i >= slots[slot] * 8;
    if (!isReference) data[i] = bytes[i % bytes.size()];
  }
  vrntValueUnmap(value.get(), &whole);
}

UniqueValue sourceOf(const vrntType_t* type, std::string_view bytes) {
  ErrorParameter error;
  UniqueValue value(bytes.empty() ? vrntValueCreateDefault(type, error)
                                  : vrntValueCreate(type, error));
  error.check(value != nullptr);
  if (!value) {
    FUZZ_CHECK_NOTE(error.outOfMemory(), error.message());
    throw std::bad_alloc();
  }
  if (!bytes.empty()) fill(value, bytes);
  return value;
}

// The value as the other type; checks all that doesn't need the rules by which parts go over.
UniqueValue coerced(const vrntType_t* type, const vrntValue_t* source) {
  const std::string before(bytesOf(source));
  const std::uint32_t count = source->refCount;
  ErrorParameter error;
  UniqueValue result(vrntCoerce(type, source, error));
  error.check(result != nullptr);
  FUZZ_CHECK(bytesOf(source) == before);
  FUZZ_CHECK(result == nullptr || result.get() != source);
  if (!result) {
    FUZZ_CHECK(source->refCount == count);
    if (error.outOfMemory()) throw std::bad_alloc();
    FUZZ_CHECK_NOTE(error.kind() == VRNT_LIBRARY_ERROR &&
                        error.message().rfind("Enum code out of range: ", 0) == 0,
                    error.message());
    return nullptr;
  }
  const UniqueType bare(vrntTypeStripMetadata(type));
  FUZZ_CHECK(vrntValueType(result.get()) == bare.get());
  FUZZ_CHECK(result->refCount == 1);
  if (vrntTypeIsSubType(vrntValueType(source), type) == 1) {
    FUZZ_CHECK(bytesOf(result.get()) == before);
  }
  return result;
}

void checkCoercion(const vrntType_t* first, const vrntType_t* second, const vrntValue_t* source) {
  coerced(first, source);
  const UniqueValue there = coerced(second, source);
  if (!there) return;
  const UniqueValue back = coerced(first, there.get());
  if (!back) return;
  // Going there once more brings nothing new: what was lost on the way is lost.
  const UniqueValue again = coerced(first, back.get());
  FUZZ_CHECK(again != nullptr && bytesOf(again.get()) == bytesOf(back.get()));
}

// The text of the type without the marked fields. The type of what stays is that of the value.
std::string specializedText(const vrntType_t* own, const vrntType_t* annotated) {
  switch (vrntTypeDescriptor(annotated)) {
    case VRNT_DESCRIPTOR_STRUCT: {
      std::string text = "{ ";
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(annotated); ++i) {
        const UniqueType field(vrntTypeFieldType(annotated, i));
        if (vrntMetadataExists(field.get(), "no_specialize") == 1) continue;
        const UniqueType ownField(vrntTypeFieldType(own, i));
        text += specializedText(ownField.get(), field.get()) + ' ' +
                vrntTypeFieldLabel(annotated, i) + "; ";
      }
      return text + '}';
    }
    case VRNT_DESCRIPTOR_ARRAY: {
      const UniqueType element(vrntTypeElementType(annotated));
      const UniqueType ownElement(vrntTypeElementType(own));
      const std::string whole = textOf(own);
      return specializedText(ownElement.get(), element.get()) +
             whole.substr(textOf(ownElement.get()).size());
    }
    default:
      return textOf(own);
  }
}

void checkSpecialization(const vrntType_t* type, const vrntValue_t* source) {
  const std::string before(bytesOf(source));
  ErrorParameter error;
  const UniqueValue result(vrntBuildSpecializationParameters(type, source, error));
  error.check(result != nullptr);
  FUZZ_CHECK(bytesOf(source) == before);
  if (error.outOfMemory()) return;
  const bool fits = vrntTypeIsSubType(vrntValueType(source), type) == 1;
  FUZZ_CHECK(fits == (result != nullptr));
  if (!result) {
    FUZZ_CHECK_NOTE(error.kind() == VRNT_LIBRARY_ERROR &&
                        error.message().rfind("Incompatible type for value -> ", 0) == 0,
                    error.message());
    return;
  }
  const std::string expected = specializedText(vrntValueType(source), type);
  FUZZ_CHECK_NOTE(textOf(vrntValueType(result.get())) == expected, expected);
  // Without a mark nothing is left out.
  if (vrntValueType(result.get()) == vrntValueType(source)) {
    FUZZ_CHECK(bytesOf(result.get()).size() == before.size());
  }
}

}  // namespace

void runInput(std::string_view bytes) {
  const std::string_view firstText = takeLine(bytes);
  const std::string_view secondText = takeLine(bytes);
  const UniqueType first = smallType(firstText);
  if (!first) return;
  const UniqueType second =
      smallType(!secondText.empty() && secondText.front() == '~'
                    ? edited(vrntTypeString(first.get()), Program(secondText.substr(1)))
                    : std::string(secondText));
  if (!second) return;

  const UniqueValue source = sourceOf(first.get(), bytes);
  checkCoercion(first.get(), second.get(), source.get());
  checkSpecialization(first.get(), source.get());
  checkSpecialization(second.get(), source.get());
}

}  // namespace vornath_fuzz
