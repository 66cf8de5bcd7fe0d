// The text of a type: whatever parses has one canonical text, relates to itself, and has a default
// value that prints. Every text is parsed from a plan and by the generated parser.
#include "support/both_ways.hpp"
#include "support/target.hpp"

namespace vornath_fuzz {
namespace {

constexpr std::uint64_t kLargeValue = std::uint64_t{1} << 20;

bool isOpenArray(const vrntType_t* type) {
  if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY) return false;
  std::int32_t shape[4] = {};
  vrntTypeArrayShape(type, shape);
  return shape[0] == -1;
}

// Whether a canonical text has a value among its annotations: an "=" that neither a quoted text nor
// the arrow of a function explains.
bool hasValueAnnotation(std::string_view text) {
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') quoted = !quoted;
    if (quoted || text[i] != '=') continue;
    if (i + 1 < text.size() && text[i + 1] != '>' && text[i + 1] != '"') return true;
  }
  return false;
}

void checkEntries(const vrntType_t* type) {
  const std::uint32_t count = vrntMetadataSize(type);
  FUZZ_CHECK(vrntMetadataName(type, count) == nullptr);
  for (std::uint32_t i = 0; i < count; ++i) {
    const char* const key = vrntMetadataName(type, i);
    FUZZ_CHECK(key != nullptr && vrntMetadataExists(type, key) == 1);
    if (i != 0) FUZZ_CHECK(std::strcmp(vrntMetadataName(type, i - 1), key) < 0);
    switch (vrntMetadataType(type, key)) {
      case VRNT_METADATA_FLAG:
        break;
      case VRNT_METADATA_TEXT:
        FUZZ_CHECK(std::strchr(vrntMetadataString(type, key), '"') == nullptr);
        break;
      case VRNT_METADATA_VALUE: {
        const UniqueValue value(vrntMetadataValue(type, key));
        const UniqueType bare(vrntTypeStripMetadata(vrntValueType(value.get())));
        FUZZ_CHECK(bare.get() == vrntValueType(value.get()));
        break;
      }
      default:
        FUZZ_CHECK(false);
    }
  }
}

// The layout of a struct's fields or an array's elements lies within the type, in order.
void checkPlaces(const vrntType_t* type) {
  const std::uint64_t size = vrntTypeSize(type);
  if (size > kLargeValue) return;
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT) {
    std::uint64_t end = 0;
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
      vrntValueView_t place;
      vrntValueStructField(&place, type, i);
      FUZZ_CHECK(place.offset >= end && place.offset % vrntTypeAlignment(place.type) == 0);
      end = place.offset + vrntTypeSize(place.type);
    }
    FUZZ_CHECK(end <= size);
  }
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY && !isOpenArray(type)) {
    const std::int32_t first[4] = {0, 0, 0, 0};
    vrntValueView_t place;
    vrntValueArrayElement(&place, type, first);
    FUZZ_CHECK(place.offset == 0);
    const UniqueType element(vrntTypeElementType(type));
    FUZZ_CHECK(place.type == element.get());
  }
}

// All types within the type, annotations included.
void walk(const vrntType_t* type) {
  const std::uint64_t alignment = vrntTypeAlignment(type);
  FUZZ_CHECK(alignment != 0 && (alignment & (alignment - 1)) == 0);
  FUZZ_CHECK(vrntTypeSize(type) % alignment == 0 || vrntTypeSize(type) > kLargeValue);
  FUZZ_CHECK(*vrntTypeString(type) != '\0');
  checkEntries(type);
  checkPlaces(type);
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_BASE:
      FUZZ_CHECK(vrntTypeVectorDimension(type) <= 4);
      FUZZ_CHECK(vrntTypeBasetype(type) <= VRNT_BASETYPE_STRUCT);
      break;
    case VRNT_DESCRIPTOR_STRUCT:
    case VRNT_DESCRIPTOR_FUNCTION:
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
        const UniqueType part(vrntTypeFieldType(type, i));
        walk(part.get());
      }
      break;
    case VRNT_DESCRIPTOR_ENUM:
      FUZZ_CHECK(vrntTypeConstructorCount(type) != 0);
      for (std::uint32_t i = 0; i < vrntTypeConstructorCount(type); ++i) {
        FUZZ_CHECK(*vrntTypeConstructorName(type, i) != '\0');
      }
      break;
    case VRNT_DESCRIPTOR_ARRAY: {
      FUZZ_CHECK(vrntTypeArrayDimension(type) - 1 < 4);
      const UniqueType element(vrntTypeElementType(type));
      walk(element.get());
      break;
    }
    case VRNT_DESCRIPTOR_REFERENCE:
      if (const UniqueType target{vrntTypeReferencedType(type)}) walk(target.get());
      break;
    default:
      FUZZ_CHECK(false);
  }
}

void checkStandsFor(const vrntType_t* a, const vrntType_t* b) {
  ErrorParameter error;
  FUZZ_CHECK(vrntTypeIsSubType(a, b) == 1);
  const UniqueString reason(vrntTypeCheckSubType(a, b, error));
  FUZZ_CHECK(reason == nullptr);
}

void checkRelations(const vrntType_t* type) {
  const UniqueType bare(vrntTypeStripMetadata(type));
  checkStandsFor(type, type);
  checkStandsFor(type, bare.get());
  checkStandsFor(bare.get(), type);
  FUZZ_CHECK(vrntTypeIsEqual(type, bare.get()) == 1);
  FUZZ_CHECK(vrntTypeSize(type) == vrntTypeSize(bare.get()));
  const UniqueType again(vrntTypeStripMetadata(bare.get()));
  FUZZ_CHECK(again.get() == bare.get());
  FUZZ_CHECK(vrntMetadataSize(bare.get()) == 0);

  // What each kind of type may stand for.
  std::string wider;
  switch (vrntTypeDescriptor(type)) {
    case VRNT_DESCRIPTOR_ENUM:
      wider = "int";
      break;
    case VRNT_DESCRIPTOR_REFERENCE:
      wider = "void*";
      break;
    case VRNT_DESCRIPTOR_ARRAY: {
      const UniqueType element(vrntTypeElementType(bare.get()));
      wider =
          textOf(element.get()) + '[' + std::string(vrntTypeArrayDimension(type) - 1, ',') + ']';
      break;
    }
    default:
      return;
  }
  ErrorParameter error;
  if (const UniqueType open = parseType(wider, error)) {
    checkStandsFor(type, open.get());
    if (open != bare) {
      ErrorParameter none;
      FUZZ_CHECK(vrntTypeIsSubType(open.get(), type) == 0);
      const UniqueString reason(vrntTypeCheckSubType(open.get(), type, none));
      FUZZ_CHECK(reason != nullptr || none.outOfMemory());
    }
  } else {
    FUZZ_CHECK_NOTE(error.outOfMemory(), wider + "\n" + error.message());
  }
}

void checkDefault(const vrntType_t* type) {
  if (isOpenArray(type) || vrntTypeSize(type) >= kLargeValue) return;
  ErrorParameter error;
  const UniqueValue value(vrntValueCreateDefault(type, error));
  error.check(value != nullptr);
  if (!value) {
    FUZZ_CHECK_NOTE(error.outOfMemory(), error.message());
    return;
  }
  const UniqueType bare(vrntTypeStripMetadata(type));
  FUZZ_CHECK(vrntValueType(value.get()) == bare.get());
  FUZZ_CHECK(value->refCount == 1);
  if (partsOf(value.get()) == kManyParts) return;

  ErrorParameter second;
  const UniqueValue another(vrntValueCreateDefault(type, second));
  if (!another) return;
  FUZZ_CHECK(another != value);
  std::string plain;
  for (const std::uint32_t flags : {0U, 1U, 4U, 5U}) {
    ErrorParameter none;
    const UniqueString text = print(value.get(), flags, none);
    const UniqueString same = print(another.get(), flags, none);
    if (!text || !same) return;
    FUZZ_CHECK_NOTE(std::strcmp(text.get(), same.get()) == 0, std::string(text.get()) + same.get());
    if (flags == 0) plain = text.get();
  }
  // As words for no number begin.
  if (plain.find("NaN") == std::string::npos) FUZZ_CHECK(equal(value.get(), another.get()));
}

}  // namespace

void runInput(std::string_view bytes) {
  checkTypeBothWays(std::string(bytes));
  const std::string text(bytes.substr(0, bytes.find('\0')));
  ErrorParameter error;
  const UniqueType type = parseType(text, error);
  if (!type) return;

  const std::string canonical = textOf(type.get());
  ErrorParameter none;
  const UniqueType found = parseType(canonical, none);
  FUZZ_CHECK(found == type);

  // With a blank in front it isn't in the table of canonical texts and must be parsed.
  const UniqueType parsed = parseType(' ' + canonical, none);
  if (parsed) {
    FUZZ_CHECK_NOTE(textOf(parsed.get()) == canonical, canonical + "\n" + textOf(parsed.get()));
    FUZZ_CHECK(vrntTypeIsEqual(parsed.get(), type.get()) == 1);
    if (!hasValueAnnotation(canonical)) FUZZ_CHECK(parsed == type);
  } else {
    // A function's value has a text that isn't of the language.
    FUZZ_CHECK_NOTE(none.outOfMemory() || canonical.find("<<function>>") != std::string::npos,
                    canonical + "\n" + none.message());
  }

  walk(type.get());
  checkRelations(type.get());
  checkDefault(type.get());
}

}  // namespace vornath_fuzz
