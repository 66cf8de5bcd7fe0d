// A part of a JSON document in memory, in the order of the text, with the place of each token.
#ifndef VORNATH_TOOLKIT_JSON_TAPE_HPP
#define VORNATH_TOOLKIT_JSON_TAPE_HPP

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "json/rapidjson.hpp"
#include "json/text.hpp"

namespace vrtk {

enum class Token : std::uint8_t { Null, False, True, Number, String, Key, Object, Array };

struct JsonNode {
  Token token;
  std::uint32_t next = 0;    ///< the node behind this one and all its parts
  std::uint64_t offset = 0;  ///< bytes from the start of the document
  const char* text = nullptr;
  std::uint64_t length = 0;  ///< of the text; of an object or an array, the number of its parts

  /// The text; empty for an object or an array.
  std::string_view view() const {
    return text != nullptr ? std::string_view(text, static_cast<std::size_t>(length))
                           : std::string_view();
  }
};

/// The members of an object stand as a key and a value each.
class Tape {
 public:
  void clear() {
    nodes_.clear();
    open_.clear();
    strings_.clear();
  }
  const JsonNode& operator[](std::uint32_t index) const { return nodes_[index]; }
  std::uint32_t size() const { return static_cast<std::uint32_t>(nodes_.size()); }

  /// Returns the value of a member of an object, or nothing.
  std::optional<std::uint32_t> member(std::uint32_t object, std::string_view key) const;

  void add(Token token, std::uint64_t offset, std::string_view text) {
    JsonNode node{token};
    node.offset = offset;
    node.text = text.data();
    node.length = text.size();
    append(node);
  }
  /// The text of a string that the document does not have as it is.
  std::string_view keep(std::string_view text) { return strings_.emplace_back(text); }
  void open(Token token, std::uint64_t offset) {
    JsonNode node{token};
    node.offset = offset;
    append(node);
    open_.push_back(size() - 1);
  }
  void close(std::uint64_t parts) {
    JsonNode& node = nodes_[open_.back()];
    open_.pop_back();
    node.next = size();
    node.length = parts;
  }
  bool isComplete() const { return open_.empty(); }

 private:
  void append(JsonNode& node) {
    if (nodes_.size() >= UINT32_MAX - 1) throw std::bad_alloc();
    node.next = size() + 1;
    nodes_.push_back(node);
  }

  std::vector<JsonNode> nodes_;
  std::vector<std::uint32_t> open_;
  std::deque<std::string> strings_;
};

/// Memory for RapidJSON, which does not look whether it got any.
class ThrowingAllocator {
 public:
  static const bool kNeedFree = true;
  void* Malloc(std::size_t size) {
    if (size == 0) return nullptr;
    void* const block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
  }
  void* Realloc(void* block, std::size_t /*before*/, std::size_t size) {
    if (size == 0) {
      std::free(block);
      return nullptr;
    }
    void* const moved = std::realloc(block, size);
    if (moved == nullptr) throw std::bad_alloc();
    return moved;
  }
  static void Free(void* block) { std::free(block); }
};

/// What is wrong with the syntax of a document.
struct SyntaxFault {
  std::uint64_t offset;
  std::string message;
};

/// Reads a document, and calls the members of `Events` for its tokens, each with its offset:
/// value(Token, offset, text, isInDocument), start(Token, offset), end(parts). Texts that are not
/// in the document as they are live until the call ends. Returns what is wrong with the syntax.
template <typename Events>
std::optional<SyntaxFault> readJson(std::string_view document, Events& events);

std::string syntaxWords(rapid::ParseErrorCode code, std::string_view document,
                        std::uint64_t offset);

namespace detail {

template <typename Events>
class JsonHandler {
 public:
  JsonHandler(std::string_view document, const rapid::MemoryStream& stream, Events& events)
      : document_(document), stream_(stream), events_(events) {}

  bool Null() { return literal(Token::Null, 4); }
  bool Bool(bool value) { return value ? literal(Token::True, 4) : literal(Token::False, 5); }
  bool RawNumber(const char* /*text*/, std::size_t length, bool /*copy*/) {
    const std::uint64_t start = stream_.Tell() - length;
    events_.value(Token::Number, start, document_.substr(start, length), true);
    return true;
  }
  bool String(const char* text, std::size_t length, bool /*copy*/) {
    string(Token::String, text, length);
    return true;
  }
  bool Key(const char* text, std::size_t length, bool /*copy*/) {
    string(Token::Key, text, length);
    return true;
  }
  bool StartObject() {
    events_.start(Token::Object, stream_.Tell());
    return true;
  }
  bool EndObject(std::size_t members) {
    events_.end(members);
    return true;
  }
  bool StartArray() {
    events_.start(Token::Array, stream_.Tell());
    return true;
  }
  bool EndArray(std::size_t elements) {
    events_.end(elements);
    return true;
  }
  // Numbers come as text.
  bool Int(int) { return false; }
  bool Uint(unsigned) { return false; }
  bool Int64(std::int64_t) { return false; }
  bool Uint64(std::uint64_t) { return false; }
  bool Double(double) { return false; }

 private:
  bool literal(Token token, std::size_t length) {
    const std::uint64_t start = stream_.Tell() - length;
    events_.value(token, start, document_.substr(start, length), true);
    return true;
  }

  void string(Token token, const char* text, std::size_t length) {
    const std::size_t end = stream_.Tell();
    // Without escapes, the document has the text between its quotes.
    if (end >= length + 2 && document_[end - length - 2] == '"' &&
        (length == 0 || std::memcmp(document_.data() + end - length - 1, text, length) == 0)) {
      events_.value(token, end - length - 2, document_.substr(end - length - 1, length), true);
      return;
    }
    // Goes back to the quote that no backslash escapes.
    std::size_t start = end - 2;
    for (;; --start) {
      if (document_[start] != '"') continue;
      std::size_t backslashes = 0;
      while (start > backslashes && document_[start - backslashes - 1] == '\\') ++backslashes;
      if (backslashes % 2 == 0) break;
    }
    events_.value(token, start, {text, length}, false);
  }

  std::string_view document_;
  const rapid::MemoryStream& stream_;
  Events& events_;
};

}  // namespace detail

namespace detail {

template <unsigned kFlags, typename Events>
std::optional<SyntaxFault> readJsonWith(std::string_view document, Events& events) {
  rapid::MemoryStream stream(document.data(), document.size());
  JsonHandler<Events> handler(document, stream, events);
  rapid::GenericReader<rapid::UTF8<>, rapid::UTF8<>, ThrowingAllocator> reader;
  const rapid::ParseResult result = reader.template Parse<kFlags>(stream, handler);
  if (result.IsError()) {
    return SyntaxFault{result.Offset(), syntaxWords(result.Code(), document, result.Offset())};
  }
  // RapidJSON takes a NUL for the end.
  if (stream.Tell() != document.size()) {
    return SyntaxFault{stream.Tell(), syntaxWords(rapid::kParseErrorDocumentRootNotSingular,
                                                  document, stream.Tell())};
  }
  return std::nullopt;
}

}  // namespace detail

template <typename Events>
std::optional<SyntaxFault> readJson(std::string_view document, Events& events) {
  constexpr unsigned kFlags = rapid::kParseIterativeFlag | rapid::kParseNumbersAsStringsFlag;
  // RapidJSON looks at each character, which takes longer than to look at all beforehand.
  if (isUtf8(document)) return detail::readJsonWith<kFlags>(document, events);
  return detail::readJsonWith<kFlags | rapid::kParseValidateEncodingFlag>(document, events);
}

/// Puts a whole document on a tape. The document must live as long as the tape is used.
std::optional<SyntaxFault> readTape(std::string_view document, Tape& tape);

/// Puts tokens on a tape.
inline void addToken(Tape& tape, Token token, std::uint64_t offset, std::string_view text,
                     bool isInDocument) {
  tape.add(token, offset, isInDocument ? text : tape.keep(text));
}

}  // namespace vrtk

#endif
