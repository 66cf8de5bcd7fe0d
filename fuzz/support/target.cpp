#include "support/target.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "values/block.hpp"

namespace vornath_fuzz {
namespace {

std::uint64_t limited(std::uint64_t a, std::uint64_t b, bool multiply) {
  // Both are at most kManyParts, so that neither runs over.
  return std::min(kManyParts, multiply ? a * b : a + b);
}

// The elements that an array lays out: the product of the extents as it runs over in 32 bits.
std::uint64_t elementsOf(const vrntType_t* array) {
  std::int32_t shape[4] = {1, 1, 1, 1};
  vrntTypeArrayShape(array, shape);
  if (shape[0] < 0) return 0;
  std::uint32_t product = 1;
  for (const std::int32_t extent : shape) product *= static_cast<std::uint32_t>(extent);
  return static_cast<std::int32_t>(product) < 0 ? 0 : std::min<std::uint64_t>(kManyParts, product);
}

}  // namespace

OutdatedInput outdatedInput = nullptr;

void failCheck(const char* condition, const char* file, int line, const std::string& note) {
  std::fprintf(stderr, "%s:%d: the check failed: %s\n%s\n", file, line, condition, note.c_str());
  std::abort();
}

void ErrorParameter::check(bool succeeded) const {
  FUZZ_CHECK(succeeded == (error_ == nullptr));
  if (error_ == nullptr) return;
  FUZZ_CHECK(kind() <= VRNT_OTHER_ERROR);
  FUZZ_CHECK(vrntValuesErrorMessage(error_) != nullptr);
  if (kind() == VRNT_OUT_OF_MEMORY) FUZZ_CHECK(message() == "Out of memory.");
}

UniqueType parseType(const std::string& text, ErrorParameter& error) {
  UniqueType type(vrntTypeParse(text.c_str(), error));
  error.check(type != nullptr);
  return type;
}

UniqueValue parseValue(const std::string& text, ErrorParameter& error) {
  UniqueValue value(vrntValueParse(text.c_str(), error));
  error.check(value != nullptr);
  return value;
}

UniqueString print(const vrntValue_t* value, std::uint32_t flags, ErrorParameter& error) {
  const vrntValueView_t whole = wholeOf(value);
  UniqueString text(vrntValueString(value, &whole, flags, error));
  error.check(text != nullptr);
  return text;
}

bool equal(const vrntValue_t* a, const vrntValue_t* b) {
  const vrntValueView_t wholeA = wholeOf(a);
  const vrntValueView_t wholeB = wholeOf(b);
  return vrntValueEqual(a, &wholeA, b, &wholeB, 0.0F, nullptr) != 0;
}

std::string_view bytesOf(const vrntValue_t* value) {
  return {static_cast<const char*>(vrntValueData(value)), vrntTypeSize(vrntValueType(value))};
}

std::uint64_t partsOf(const vrntType_t* type) {
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ARRAY: {
      const UniqueType element(vrntTypeElementType(type));
      return limited(1, limited(elementsOf(type), partsOf(element.get()), true), false);
    }
    case VRNT_DESCRIPTOR_STRUCT: {
      std::uint64_t parts = 1;
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
        const UniqueType field(vrntTypeFieldType(type, i));
        parts = limited(parts, partsOf(field.get()), false);
      }
      return parts;
    }
    default:
      return 1;
  }
}

std::uint64_t partsOf(const vrntValue_t* value) {
  std::vector<const vrntValue_t*> open{value};
  std::uint64_t parts = 0;
  while (!open.empty() && parts < kManyParts) {
    const vrntValue_t* const block = open.back();
    open.pop_back();
    parts = limited(parts, partsOf(vrntValueType(block)), false);
    if (parts == kManyParts) break;
    for (const std::uint64_t slot : qex::vornath::blockType(block).refSlots()) {
      const std::uint64_t word = qex::vornath::loadWord(qex::vornath::blockData(block) + slot * 8);
      if (qex::vornath::isBlockWord(word)) open.push_back(qex::vornath::blockOfWord(word));
    }
  }
  return parts;
}

}  // namespace vornath_fuzz
