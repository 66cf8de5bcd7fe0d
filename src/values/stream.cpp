#include "values/stream.hpp"

#include <array>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "types/type_text.hpp"
#include "types/walk.hpp"
#include "values/record_texts.hpp"

namespace qex::vornath {
namespace {

void writeRecord(const vrntValue_t* block, std::string_view text, vrntWriteFn write, void* user) {
  const std::uint64_t textLength = text.size();
  const std::uint64_t id = wordOfBlock(block);
  write(&textLength, sizeof(textLength), user);
  write(text.data(), textLength, user);
  write(&id, sizeof(id), user);
  write(blockData(block), blockType(block).size(), user);
}

// Reads one record after the other.
class RecordReader {
 public:
  RecordReader(vrntReadFn read, void* user) : read_(read), user_(user) {}

  NewBlock next() {
    TypePtr type = nextType();
    std::uint64_t id = 0;
    read_(&id, sizeof(id), user_);
    NewBlock block(std::move(type), Fill::Undefined);
    read_(block.data(), block.type().size(), user_);
    return block;
  }

 private:
  TypePtr nextType() {
    std::uint64_t length = 0;
    read_(&length, sizeof(length), user_);
    if (length <= kMaxShortTextLength) {
      std::array<char, kMaxShortTextLength> text;
      // A stream that ends early leaves zeros, which no type's text has.
      std::memset(text.data(), 0, length);
      read_(text.data(), length, user_);
      return types_.typeOf({text.data(), length});
    }
    // A length that no text has comes from a damaged stream; it is more memory than there is.
    if (length > longText_.max_size()) throw std::bad_alloc();
    if (length > longText_.size()) longText_.resize(length);
    std::memset(longText_.data(), 0, length);
    read_(longText_.data(), length, user_);
    return types_.typeOf({longText_.data(), length});
  }

  vrntReadFn read_;
  void* user_;
  std::string longText_;
  TypesByText types_;
};

// Writes the record of each block that the words lead to, before those that its own words lead to.
class Writer {
 public:
  struct Node {
    std::uint64_t word;
  };

  Writer(vrntWriteFn write, void* user) : write_(write), user_(user) {}

  Visit enter(const Node& node) {
    if (!isBlockWord(node.word) || !written_.insert(node.word).second) return Visit::leaf();
    const vrntValue_t* const block = blockOfWord(node.word);
    writeRecord(block, texts_.textOf(blockType(block)), write_, user_);
    return Visit::parts(blockType(block).refSlotCount());
  }

  Node part(const Node& node, std::size_t i) {
    const vrntValue_t* const block = blockOfWord(node.word);
    if (slotsOf_ != block) {
      slots_.emplace(blockType(block));
      slotsOf_ = block;
    }
    return {loadWord(blockData(block) + (*slots_)[i] * kWordSize)};
  }

 private:
  vrntWriteFn write_;
  void* user_;
  TextsByType texts_;
  std::unordered_set<std::uint64_t> written_;
  std::optional<RefSlots> slots_;  // of the block that was looked at last
  const vrntValue_t* slotsOf_ = nullptr;
};

// Reads a record and then those of the values that it refers to. The words in a value are the
// stream's until the walk has gone through them.
class Reader {
 public:
  struct Node {
    NewBlock block{};        // none behind the last word
    std::uint64_t word = 0;  // under which another value refers to it
  };

  Reader(RecordReader& records, DynamicValue::StreamMap& map) : records_(records), map_(map) {}

  BlockPtr value(NewBlock outermost) {
    walk_.run(*this, {std::move(outermost)});
    return std::move(outermost_);
  }

  Visit enter(const Node& node) {
    return node.block.empty() ? Visit::leaf() : Visit::parts(node.block.type().refSlotCount());
  }

  // Passes over the words of values that are there.
  Node part(const Node& node, std::size_t i) {
    const RefSlots slots(node.block.type());
    for (auto slot = slots.from(i); slot != slots.end(); ++slot, ++i) {
      char* const at = node.block.data() + *slot * kWordSize;
      const std::uint64_t word = loadWord(at);
      if (!isBlockWord(word) || resolve(at)) continue;
      walk_.levels().back().next = i + 1;
      return {records_.next(), word};
    }
    walk_.levels().back().next = slots.size();
    return {};
  }

  void leave(Node& node) {
    BlockPtr block = std::move(node.block).finish();
    const auto& levels = walk_.levels();
    if (levels.size() == 1) {
      outermost_ = std::move(block);
      return;
    }
    map_.insert_or_assign(node.word, DynamicValue::VRef(wordOfBlock(block.get())));
    const auto& outer = levels[levels.size() - 2];
    const NewBlock& referring = outer.node.block;
    resolve(referring.data() + RefSlots(referring.type())[outer.current()] * kWordSize);
  }

 private:
  // Puts the address of a value that was read in place of the stream's word. False for a word that
  // isn't in the map.
  bool resolve(char* at) const {
    const auto known = map_.find(loadWord(at));
    if (known == map_.end()) return false;
    storeWord(at, known->second.word());
    return true;
  }

  RecordReader& records_;
  DynamicValue::StreamMap& map_;
  Walk<Node> walk_;
  BlockPtr outermost_;
};

}  // namespace

void serializeValue(const DynamicValue& value, vrntWriteFn write, void* user) {
  if (value.typeOf().refSlotCount() == 0) {
    TextsByType texts;
    writeRecord(value.block(), texts.textOf(value.typeOf()), write, user);
    return;
  }
  Writer writer(write, user);
  Walk<Writer::Node, false>().run(writer, {wordOfBlock(value.block())});
}

BlockPtr deserializeBlock(vrntReadFn read, void* user, DynamicValue::StreamMap& map) {
  RecordReader records(read, user);
  NewBlock outermost = records.next();
  if (outermost.type().refSlotCount() == 0) return std::move(outermost).finish();
  return Reader(records, map).value(std::move(outermost));
}

}  // namespace qex::vornath
