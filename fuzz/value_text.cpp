// The text of a value: what parses prints, and prints alike once that is parsed again; it equals
// itself, and comes back from a stream as it was. Every text is parsed from a plan and by the
// generated parser.
#include <algorithm>

#include "support/both_ways.hpp"
#include "support/streams.hpp"

namespace vornath_fuzz {
namespace {

// Prints with the flags, parses that, and prints it again: the same, or the library has told why.
UniqueValue checkRoundTrip(const vrntValue_t* value, std::uint32_t flags) {
  ErrorParameter failure;
  const UniqueString text = print(value, flags, failure);
  if (!text) {
    FUZZ_CHECK_NOTE(failure.outOfMemory(), failure.message());
    throw std::bad_alloc();
  }
  ErrorParameter error;
  UniqueValue back = parseValue(text.get(), error);
  if (!back) {
    // A function's value has a text that isn't of the language.
    FUZZ_CHECK_NOTE(error.outOfMemory() || std::strstr(text.get(), "<<function>>") != nullptr,
                    std::string(text.get()) + "\n" + error.message());
    return nullptr;
  }
  FUZZ_CHECK(back->refCount == 1);
  ErrorParameter none;
  const UniqueString again = print(back.get(), flags, none);
  if (!again) throw std::bad_alloc();
  FUZZ_CHECK_NOTE(std::strcmp(text.get(), again.get()) == 0,
                  std::string(text.get()) + "\n" + again.get());
  return back;
}

// The parts of a struct or array as values of their own.
void checkParts(const vrntValue_t* value) {
  vrntType_t* const type = vrntValueType(value);
  const auto check = [&](const vrntValueView_t& view) {
    ErrorParameter error;
    const UniqueValue part(vrntValueFromView(value, &view, error));
    error.check(part != nullptr);
    if (!part) throw std::bad_alloc();
    FUZZ_CHECK(vrntValueType(part.get()) == view.type);
    ErrorParameter first;
    ErrorParameter second;
    const UniqueString inside(vrntValueString(value, &view, 0, first));
    const UniqueString alone = print(part.get(), 0, second);
    if (!inside || !alone) throw std::bad_alloc();
    FUZZ_CHECK_NOTE(std::strcmp(inside.get(), alone.get()) == 0,
                    std::string(inside.get()) + "\n" + alone.get());
  };
  vrntValueView_t view;
  if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_STRUCT) {
    for (std::uint32_t i = 0; i < std::min(vrntTypeFieldCount(type), 16U); ++i) {
      check(*vrntValueStructField(&view, type, i));
    }
  } else if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY && partsOf(type) > 1) {
    const std::int32_t first[4] = {0, 0, 0, 0};
    check(*vrntValueArrayElement(&view, type, first));
  }
}

}  // namespace

void runInput(std::string_view bytes) {
  checkValueBothWays(std::string(bytes));
  const std::string source(bytes.substr(0, bytes.find('\0')));
  if (source == "vrntval") return;  // taken for a block
  ErrorParameter error;
  const UniqueValue value = parseValue(source, error);
  if (!value) return;
  // However many elements without bytes there are, this ends at once; to print them takes its time.
  equal(value.get(), value.get());
  if (partsOf(value.get()) == kManyParts) return;
  const UniqueType bare(vrntTypeStripMetadata(vrntValueType(value.get())));
  FUZZ_CHECK(bare.get() == vrntValueType(value.get()));
  FUZZ_CHECK(value->refCount == 1);

  const UniqueValue plain = checkRoundTrip(value.get(), 0);
  const UniqueValue exact = checkRoundTrip(value.get(), VRNT_STRING_EXACT);
  checkRoundTrip(value.get(), VRNT_STRING_MULTILINE);
  checkRoundTrip(value.get(), VRNT_STRING_MULTILINE | VRNT_STRING_EXACT);
  checkParts(value.get());

  ErrorParameter none;
  const UniqueString text = print(value.get(), 0, none);
  if (!text) return;
  const bool hasNan = std::strstr(text.get(), "NaN") != nullptr;
  // What a reference leads to keeps its type in the text, but not that of a void* that led there.
  const bool hasReference = std::strchr(text.get(), '&') != nullptr;
  for (const vrntValue_t* const back : {plain.get(), exact.get()}) {
    if (back == nullptr || hasReference) continue;
    FUZZ_CHECK(vrntValueType(back) == vrntValueType(value.get()));
    if (!hasNan) FUZZ_CHECK_NOTE(equal(value.get(), back), text.get());
  }
  if (!hasNan) FUZZ_CHECK_NOTE(equal(value.get(), value.get()), text.get());

  const std::string stream = writeStream(value.get());
  StreamReader reader{stream};
  ErrorParameter failure;
  const UniqueValue read = readStream(reader, failure);
  if (!read) {
    FUZZ_CHECK_NOTE(failure.outOfMemory(), failure.message());
    return;
  }
  FUZZ_CHECK(reader.position == stream.size());
  FUZZ_CHECK(vrntValueType(read.get()) == vrntValueType(value.get()));
  ErrorParameter last;
  const UniqueString same = print(read.get(), 0, last);
  if (!same) return;
  FUZZ_CHECK_NOTE(std::strcmp(text.get(), same.get()) == 0, std::string(text.get()) + same.get());
  if (!hasNan) FUZZ_CHECK_NOTE(equal(value.get(), read.get()), text.get());
}

}  // namespace vornath_fuzz
