#include "support/streams.hpp"

#include <map>
#include <stdexcept>

#include "types/type_handle.hpp"
#include "values/block.hpp"

namespace vornath_fuzz {
namespace {

using qex::vornath::isBlockWord;
using qex::vornath::loadWord;

std::string wordBytes(std::uint64_t word) {
  return {reinterpret_cast<const char*>(&word), sizeof(word)};
}

struct Record {
  std::string type;
  std::uint64_t word = 0;
  std::string data;
  std::vector<std::uint64_t> slots;
};

std::vector<Record> recordsOf(std::string_view stream) {
  const auto take = [&](std::uint64_t size) {
    FUZZ_CHECK(size <= stream.size());
    const std::string_view bytes = stream.substr(0, size);
    stream.remove_prefix(size);
    return bytes;
  };
  std::vector<Record> records;
  while (!stream.empty()) {
    Record record;
    record.type = take(loadWord(take(8).data()));
    record.word = loadWord(take(8).data());
    ErrorParameter error;
    const UniqueType type = parseType(record.type, error);
    if (!type) throw std::bad_alloc();
    record.data = take(vrntTypeSize(type.get()));
    record.slots = qex::vornath::typeOf(type.get()).refSlots();
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace

void StreamReader::read(void* to, std::uint64_t size, void* reader) {
  auto& self = *static_cast<StreamReader*>(reader);
  if (size > self.bytes.size() - self.position) throw std::runtime_error("no more bytes");
  if (size != 0) std::memcpy(to, self.bytes.data() + self.position, size);
  self.position += size;
}

std::string writeStream(const vrntValue_t* value) {
  std::string bytes;
  ErrorParameter error;
  const auto append = [](const void* data, std::uint64_t size, void* user) {
    static_cast<std::string*>(user)->append(static_cast<const char*>(data), size);
  };
  vrntValueSerialize(value, append, &bytes, error);
  if (error.outOfMemory()) throw std::bad_alloc();
  error.check(true);
  return bytes;
}

UniqueValue readStream(StreamReader& reader, ErrorParameter& error) {
  UniqueValue value(vrntValueDeserialize(&StreamReader::read, &reader, error));
  error.check(value != nullptr);
  return value;
}

std::string renamed(std::string_view stream) {
  const std::vector<Record> records = recordsOf(stream);
  std::map<std::uint64_t, std::uint64_t> names;
  for (const Record& record : records) {
    FUZZ_CHECK(isBlockWord(record.word));
    FUZZ_CHECK(names.emplace(record.word, 16 * (names.size() + 1)).second);
  }
  std::string bytes;
  for (const Record& record : records) {
    bytes += wordBytes(record.type.size()) + record.type + wordBytes(names.at(record.word));
    const std::size_t data = bytes.size();
    bytes += record.data;
    for (const std::uint64_t slot : record.slots) {
      const std::uint64_t word = loadWord(record.data.data() + slot * 8);
      if (!isBlockWord(word)) continue;
      FUZZ_CHECK(names.count(word) == 1);
      bytes.replace(data + slot * 8, 8, wordBytes(names.at(word)));
    }
  }
  return bytes;
}

}  // namespace vornath_fuzz
