// The stream of a value, its type texts included: what reads is written again, and what that reads
// as is written alike.
#include "support/streams.hpp"

namespace vornath_fuzz {

void runInput(std::string_view bytes) {
  StreamReader reader{bytes};
  ErrorParameter error;
  const UniqueValue value = readStream(reader, error);
  FUZZ_CHECK(reader.position <= bytes.size());
  if (!value) return;
  FUZZ_CHECK(value->refCount == 1);

  const std::string first = writeStream(value.get());
  const std::string tail = "tail";
  const std::string followed = first + tail;
  StreamReader again{followed};
  ErrorParameter failure;
  const UniqueValue back = readStream(again, failure);
  if (!back) {
    FUZZ_CHECK_NOTE(failure.outOfMemory(), failure.message());
    return;
  }
  // Only what is reachable is written, so that the second stream is as long as the first.
  FUZZ_CHECK(again.position == first.size());
  FUZZ_CHECK(vrntValueType(back.get()) == vrntValueType(value.get()));
  const std::string second = writeStream(back.get());
  FUZZ_CHECK(renamed(first) == renamed(second));

  // However many ways lead to what is shared, this takes no longer than to write it once.
  const bool areEqual = equal(value.get(), back.get());
  if (first.find("float") == std::string::npos && first.find("half") == std::string::npos) {
    FUZZ_CHECK(areEqual);
  }
  if (partsOf(value.get()) == kManyParts) return;
  for (const std::uint32_t flags : {0U, 5U}) {
    ErrorParameter a;
    ErrorParameter b;
    const UniqueString text = print(value.get(), flags, a);
    const UniqueString same = print(back.get(), flags, b);
    if (a.outOfMemory() || b.outOfMemory()) return;
    FUZZ_CHECK((text == nullptr) == (same == nullptr));
    if (!text) {
      // An enum's code that it doesn't have, or a value of an array type without extents.
      FUZZ_CHECK(a.kind() == VRNT_OTHER_ERROR && a.message() == b.message());
      return;
    }
    FUZZ_CHECK_NOTE(std::strcmp(text.get(), same.get()) == 0, std::string(text.get()) + same.get());
    // As bits a NaN doesn't show.
    if (flags == 0 && std::strstr(text.get(), "NaN") == nullptr) {
      FUZZ_CHECK_NOTE(areEqual, text.get());
    }
  }
}

}  // namespace vornath_fuzz
