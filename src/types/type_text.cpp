#include "types/type_text.hpp"

#include <algorithm>
#include <new>
#include <utility>
#include <vector>

#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/metadata.hpp"
#include "types/walk.hpp"

namespace qex::vornath {
namespace {

// The digest of a text is its characters as the digits of a number, modulo a prime.
constexpr std::uint64_t kPrime = (std::uint64_t{1} << 61) - 1;
constexpr std::uint64_t kBase = 0x0B4F0E7C5A3D9B21U;

__extension__ using Wide = unsigned __int128;

std::uint64_t product(std::uint64_t a, std::uint64_t b) {
  const Wide wide = Wide{a} * b;
  const std::uint64_t folded =
      static_cast<std::uint64_t>(wide & kPrime) + static_cast<std::uint64_t>(wide >> 61);
  return folded >= kPrime ? folded - kPrime : folded;
}

std::uint64_t sum(std::uint64_t a, std::uint64_t b) {
  const std::uint64_t added = a + b;
  return added >= kPrime ? added - kPrime : added;
}

// The text of a description goes to a sink: words in pieces, types as a whole.

template <typename Sink>
void write(Type::TBasetype base, Sink& sink) {
  sink.words(baseTypeInfo(base).spelling);
}

template <typename Sink>
void write(const Type::TEnum& enumeration, Sink& sink) {
  sink.words("enum { ");
  for (const Type::Constructor& constructor : enumeration.constructors) {
    sink.words(constructor.name);
    const char* separator = "( ";
    for (const Type::Field& field : constructor.payload.fields) {
      sink.words(separator);
      sink.type(*field.type);
      sink.words(" ");
      sink.words(field.label);
      separator = ", ";
    }
    if (!constructor.payload.fields.empty()) sink.words(" )");
    if (!constructor.metadata.empty()) sink.words(metadataText(constructor.metadata));
    sink.words("; ");
  }
  sink.words("}");
}

template <typename Sink>
void write(const Type::TStruct& structure, Sink& sink) {
  sink.words("{ ");
  for (const Type::Field& field : structure.fields) {
    sink.type(*field.type);
    sink.words(" ");
    sink.words(field.label);
    sink.words("; ");
  }
  sink.words("}");
}

template <typename D, typename Sink>
void write(const Type::TArrayND<D>& array, Sink& sink) {
  const Extents extents(array);
  sink.type(*array.element);
  sink.words("[");
  sink.words(extents.known() ? extents.text() : std::string(extents.rank() - 1, ','));
  sink.words("]");
}

template <typename Sink>
void write(const Type::TRef& reference, Sink& sink) {
  if (reference.target) {
    sink.type(*reference.target);
  } else {
    sink.words("void");
  }
  sink.words("*");
}

template <typename Sink>
void write(const Type::TFun& function, Sink& sink) {
  sink.words("((");
  const char* separator = "";
  for (const TypePtr& domain : function.domain) {
    sink.words(separator);
    sink.type(*domain);
    separator = ", ";
  }
  sink.words(") => ");
  sink.type(*function.codomain);
  sink.words(")");
}

template <typename Sink>
void writeDesc(const TypeDesc& desc, Sink& sink) {
  std::visit([&sink](const auto& alternative) { write(alternative, sink); }, desc);
}

// Puts a text together as long as it is short. A type with a long text makes it a long one.
class ShortSink {
 public:
  void words(std::string_view piece) {
    if (fits_ && piece.size() <= kLongestShortText - text_.size()) {
      text_.append(piece);
    } else {
      fits_ = false;
    }
  }
  void type(const InternedType& part) {
    const std::string* const known = part.knownText();
    if (known != nullptr) {
      words(*known);
    } else {
      fits_ = false;
    }
  }

  std::optional<std::string> result() && {
    return fits_ ? std::optional(std::move(text_)) : std::nullopt;
  }

 private:
  std::string text_;
  bool fits_ = true;
};

struct SumSink {
  void words(std::string_view piece) { sum.add(piece); }
  void type(const InternedType& part) {
    if (part.hasLongText()) {
      sum.add(part.textFingerprint());
    } else {
      sum.add(part.text());
    }
  }

  TextFingerprint sum;
};

struct WholeSink {
  void words(std::string_view piece) { text.append(piece); }
  void type(const InternedType& part) { appendText(text, part); }

  std::string& text;
};

// What is still to be appended: a type's text, or words.
struct Piece {
  const InternedType* type;
  std::string words;
};

// Appends what is there, and keeps the rest from the first type on whose text nobody has asked for.
struct PieceSink {
  void words(std::string_view piece) {
    if (later.empty()) {
      text.append(piece);
    } else if (later.back().type == nullptr) {
      later.back().words.append(piece);
    } else {
      later.push_back({nullptr, std::string(piece)});
    }
  }
  void type(const InternedType& part) {
    if (const std::string* const known = part.knownText()) {
      words(*known);
    } else {
      later.push_back({&part, {}});
    }
  }

  std::string& text;
  std::vector<Piece>& later;
};

// Appends pieces, each with what it consists of.
struct PieceAppender {
  struct Node {
    Piece piece;
    std::vector<Piece> later{};
  };

  Visit enter(Node& node) {
    const auto& [type, words] = node.piece;
    if (type == nullptr) {
      text.append(words);
      return Visit::leaf();
    }
    PieceSink sink{text, node.later};
    writeDesc(type->desc(), sink);
    sink.words(metadataText(type->metadata()));
    return Visit::parts(node.later.size());
  }
  Node part(Node& node, std::size_t i) { return {std::move(node.later[i])}; }

  std::string& text;
};

}  // namespace

void TextFingerprint::add(std::string_view words) noexcept {
  for (const char character : words) {
    digest = sum(product(digest, kBase), static_cast<unsigned char>(character) + 1U);
    shift = product(shift, kBase);
  }
  length += words.size();
}

void TextFingerprint::add(const TextFingerprint& text) noexcept {
  digest = sum(product(digest, text.shift), text.digest);
  shift = product(shift, text.shift);
  length += text.length;
}

std::optional<std::string> shortText(const TypeDesc& desc, std::string_view metadataWords) {
  ShortSink sink;
  writeDesc(desc, sink);
  sink.words(metadataWords);
  return std::move(sink).result();
}

TextFingerprint textFingerprint(const TypeDesc& desc, std::string_view metadataWords) {
  SumSink sink;
  writeDesc(desc, sink);
  sink.words(metadataWords);
  return sink.sum;
}

void appendText(std::string& out, const InternedType& type) {
  if (const std::string* const known = type.knownText()) {
    out.append(*known);
    return;
  }
  if (type.textFingerprint().length > out.max_size() - out.size()) throw std::bad_alloc();
  if (out.empty()) out.reserve(type.textFingerprint().length);

  PieceAppender appender{out};
  Walk<PieceAppender::Node, false>().run(appender, {{&type, {}}});
}

std::string enumText(const Type::TEnum& enumeration) {
  std::string text;
  WholeSink sink{text};
  write(enumeration, sink);
  return text;
}

}  // namespace qex::vornath
