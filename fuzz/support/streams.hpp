// Streams of values in memory, and their records one by one.
#ifndef VORNATH_FUZZ_STREAMS_HPP
#define VORNATH_FUZZ_STREAMS_HPP

#include <string>
#include <vector>

#include "support/target.hpp"

namespace vornath_fuzz {

// Gives the bytes of a buffer, and throws std::runtime_error behind its end.
struct StreamReader {
  std::string_view bytes;
  std::size_t position = 0;

  static void read(void* to, std::uint64_t size, void* reader);
};

// What vrntValueSerialize() writes, or nothing if memory runs out.
std::string writeStream(const vrntValue_t* value);

// A null handle for an error; the reader tells how far it came.
UniqueValue readStream(StreamReader& reader, ErrorParameter& error);

// The same stream with other names: each record's word becomes 16, 32, 48 ... in the order of the
// records, there and where it is referred to. Addresses differ from run to run, these don't.
std::string renamed(std::string_view stream);

}  // namespace vornath_fuzz

#endif
