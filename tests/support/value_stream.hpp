// A value's stream in memory, with the two functions that a host gives to the library.
#ifndef VORNATH_TESTS_SUPPORT_VALUE_STREAM_HPP
#define VORNATH_TESTS_SUPPORT_VALUE_STREAM_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace vornath_test {

struct Stream {
  std::string bytes;
  std::size_t position = 0;

  static void write(const void* bytes, std::uint64_t size, void* user) {
    static_cast<Stream*>(user)->bytes.append(static_cast<const char*>(bytes), size);
  }
  static void read(void* bytes, std::uint64_t size, void* user) {
    auto& from = *static_cast<Stream*>(user);
    std::memcpy(bytes, from.bytes.data() + from.position, size);
    from.position += size;
  }
};

}  // namespace vornath_test

#endif
