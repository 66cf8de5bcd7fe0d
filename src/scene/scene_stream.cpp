#include "scene/scene_stream.hpp"

#include <algorithm>

namespace vrnt::data {

void FileWriter::writeThroughBuffer(const char* bytes, std::size_t size) {
  if (size == 0 || failed_) return;
  try {
    if (size >= kFileBufferSize) {
      // One call writes the content of the buffer and the bytes.
      const auto count = static_cast<std::streamsize>(size);
      failed_ = sputn(bytes, count) != count;
    } else {
      const auto room = static_cast<std::size_t>(epptr() - pptr());
      if (room != 0) {
        std::memcpy(pptr(), bytes, room);
        pbump(static_cast<int>(room));
      }
      failed_ = traits_type::eq_int_type(overflow(traits_type::to_int_type(bytes[room])),
                                         traits_type::eof());
      const std::size_t done = room + 1;
      if (!failed_ && done != size) write(bytes + done, size - done);
    }
  } catch (...) {
    failed_ = true;
  }
  if (failed_) setp(nullptr, nullptr);
}

std::size_t FileReader::readThroughBuffer(char* bytes, std::size_t size) {
  if (size == 0 || failed_) return 0;
  std::size_t count = 0;
  try {
    count = static_cast<std::size_t>(sgetn(bytes, static_cast<std::streamsize>(size)));
  } catch (...) {
    count = 0;
  }
  if (count == size) return count;
  failed_ = true;
  setg(nullptr, nullptr, nullptr);
  return count;
}

std::size_t FileReader::readIntoNew(void* bytes, std::size_t size) {
  // Small enough that the read finds its new memory in the processor's second cache.
  constexpr std::size_t kPiece = kFileBufferSize / 2;
  // Smaller blocks may have been used before, and have their pages already.
  if (size < vrnt::detail::kNeverReused) return read(bytes, size);
  std::size_t done = 0;
  while (done < size && !failed_) {
    const std::size_t piece = std::min(kPiece, size - done);
    char* const place = static_cast<char*>(bytes) + done;
    vrnt::detail::provideMemory(place, piece, static_cast<char*>(bytes) + size);
    done += read(place, piece);
  }
  return done;
}

}  // namespace vrnt::data
