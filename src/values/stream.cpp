#include "stream.hpp"

#include <new>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "type_text.hpp"

namespace qex::vornath {
namespace {

void writeRecord(const vrntValue_t* block, vrntWriteFn write, void* user) {
  const Type& type = blockType(block);
  // Each type of a nest has nearly the whole text, so the types aren't made to keep them.
  const std::string* const known = type.knownText();
  std::string made;
  if (known == nullptr) appendText(made, type);
  const std::string& text = known != nullptr ? *known : made;
  const std::uint64_t textLength = text.size();
  const std::uint64_t id = wordOfBlock(block);
  write(&textLength, sizeof(textLength), user);
  write(text.data(), textLength, user);
  write(&id, sizeof(id), user);
  write(blockData(block), type.size(), user);
}

// A block whose record is written, and the next of its words to follow.
struct Written {
  const vrntValue_t* block;
  std::size_t next;
};

// A value whose record has been read, while those of the values that it refers to are read. The
// words in it are the stream's until finish().
struct Unfinished {
  NewBlock block;
  std::uint64_t word;  // under which another value refers to it
  std::size_t next;    // slot
};

NewBlock readRecord(vrntReadFn read, void* user) {
  std::uint64_t textLength = 0;
  read(&textLength, sizeof(textLength), user);
  std::string text;
  // A length that no text has comes from a damaged stream; it is more memory than there is.
  if (textLength > text.max_size()) throw std::bad_alloc();
  text.resize(textLength);
  read(text.data(), textLength, user);
  const TypePtr type = Type::parse(text);
  std::uint64_t id = 0;
  read(&id, sizeof(id), user);
  NewBlock block(*type, Fill::Undefined);
  read(block.data(), block.type().size(), user);
  return block;
}

// Puts addresses of values read in place of the stream's words, up to the first word that isn't in
// the map: that one is returned. 0 if there is none.
std::uint64_t resolveWords(Unfinished& value, const DynamicValue::StreamMap& map) {
  const RefSlots slots(value.block.type());
  for (auto slot = slots.from(value.next); slot != slots.end(); ++slot, ++value.next) {
    char* const at = value.block.data() + *slot * kWordSize;
    const std::uint64_t word = loadWord(at);
    if (!isBlockWord(word)) continue;
    const auto known = map.find(word);
    if (known == map.end()) return word;
    storeWord(at, known->second.word());
  }
  return 0;
}

}  // namespace

void serializeValue(const DynamicValue& value, vrntWriteFn write, void* user) {
  writeRecord(value.block(), write, user);
  if (blockType(value.block()).refSlotCount() == 0) return;

  std::unordered_set<std::uint64_t> seen{wordOfBlock(value.block())};
  std::vector<Written> open{{value.block(), 0}};
  while (!open.empty()) {
    const vrntValue_t* const block = open.back().block;
    const RefSlots slots(blockType(block));
    const std::uint64_t word = loadWord(blockData(block) + slots[open.back().next] * kWordSize);
    // A block is done with its last word, before what that leads to: a chain needs no room here.
    if (++open.back().next == slots.size()) open.pop_back();
    if (!isBlockWord(word) || !seen.insert(word).second) continue;
    const vrntValue_t* const target = blockOfWord(word);
    writeRecord(target, write, user);
    if (blockType(target).refSlotCount() != 0) open.push_back({target, 0});
  }
}

DynamicValue deserializeValue(vrntReadFn read, void* user, DynamicValue::StreamMap& map) {
  std::vector<Unfinished> open;
  open.push_back({readRecord(read, user), 0, 0});
  for (;;) {
    if (const std::uint64_t word = resolveWords(open.back(), map)) {
      open.push_back({readRecord(read, user), word, 0});
      continue;
    }
    const std::uint64_t word = open.back().word;
    BlockPtr block = std::move(open.back().block).finish();
    open.pop_back();
    if (open.empty()) return DynamicValue(block.get());
    map.insert_or_assign(word, DynamicValue::VRef(wordOfBlock(block.get())));
  }
}

}  // namespace qex::vornath
