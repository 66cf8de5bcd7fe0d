#include "types/type_text.hpp"

#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "types/base_types.hpp"
#include "types/extents.hpp"
#include "types/metadata.hpp"
#include "types/walk.hpp"

namespace qex::vornath {
namespace {

// Writes the text of a description to a sink: literal text in pieces, each type as a whole.
template <typename Sink>
void write(Type::TBasetype base, Sink& sink) {
  sink.append(baseTypeInfo(base).spelling);
}

template <typename Sink>
void write(const Type::TEnum& enumeration, Sink& sink) {
  sink.append("enum { ");
  for (const Type::Constructor& constructor : enumeration.constructors) {
    sink.append(constructor.name);
    const char* separator = "( ";
    for (const Type::Field& field : constructor.payload.fields) {
      sink.append(separator);
      sink.appendType(*field.type);
      sink.append(" ");
      sink.append(field.label);
      separator = ", ";
    }
    if (!constructor.payload.fields.empty()) sink.append(" )");
    if (!constructor.metadata.empty()) sink.append(metadataText(constructor.metadata));
    sink.append("; ");
  }
  sink.append("}");
}

template <typename Sink>
void write(const Type::TStruct& structure, Sink& sink) {
  sink.append("{ ");
  for (const Type::Field& field : structure.fields) {
    sink.appendType(*field.type);
    sink.append(" ");
    sink.append(field.label);
    sink.append("; ");
  }
  sink.append("}");
}

template <typename D, typename Sink>
void write(const Type::TArrayND<D>& array, Sink& sink) {
  const Extents extents(array);
  sink.appendType(*array.element);
  sink.append("[");
  sink.append(extents.known() ? extents.text() : std::string(extents.rank() - 1, ','));
  sink.append("]");
}

template <typename Sink>
void write(const Type::TRef& reference, Sink& sink) {
  if (reference.target) {
    sink.appendType(*reference.target);
  } else {
    sink.append("void");
  }
  sink.append("*");
}

template <typename Sink>
void write(const Type::TFun& function, Sink& sink) {
  sink.append("((");
  const char* separator = "";
  for (const TypePtr& domain : function.domain) {
    sink.append(separator);
    sink.appendType(*domain);
    separator = ", ";
  }
  sink.append(") => ");
  sink.appendType(*function.codomain);
  sink.append(")");
}

template <typename Sink>
void writeDesc(const TypeDesc& desc, Sink& sink) {
  std::visit([&sink](const auto& alternative) { write(alternative, sink); }, desc);
}

// Builds a text while it is short. A part with a long text makes the whole a long one.
class ShortSink {
 public:
  ShortSink() {}  // NOLINT(modernize-use-equals-default): `ShortSink()` would fill text_

  void append(std::string_view piece) {
    if (fits_ && piece.size() <= kMaxShortTextLength - size_) {
      std::memcpy(text_ + size_, piece.data(), piece.size());
      size_ += piece.size();
    } else {
      fits_ = false;
    }
  }
  void appendType(const InternedType& part) {
    const std::string* const known = part.knownText();
    if (known != nullptr) {
      append(*known);
    } else {
      fits_ = false;
    }
  }

  // Allocates once, as much as the type keeps.
  std::optional<std::string> result() const {
    return fits_ ? std::optional(std::string(text_, size_)) : std::nullopt;
  }

 private:
  char text_[kMaxShortTextLength];
  std::size_t size_ = 0;
  bool fits_ = true;
};

struct FingerprintSink {
  void append(std::string_view piece) { fingerprint.add(piece); }
  void appendType(const InternedType& part) {
    if (part.hasLongText()) {
      fingerprint.add(part.textFingerprint());
    } else {
      fingerprint.add(part.text());
    }
  }

  TextFingerprint fingerprint;
};

struct WholeSink {
  void append(std::string_view piece) { text.append(piece); }
  void appendType(const InternedType& part) { appendText(text, part); }

  std::string& text;
};

// What is still to be appended: a type's text, or literal text.
struct Piece {
  const InternedType* type;
  std::string text;
};

// Appends up to the first type whose text is not built, and stores the rest as pieces.
struct PieceSink {
  void append(std::string_view piece) {
    if (later.empty()) {
      text.append(piece);
    } else if (later.back().type == nullptr) {
      later.back().text.append(piece);
    } else {
      later.push_back({nullptr, std::string(piece)});
    }
  }
  void appendType(const InternedType& part) {
    if (const std::string* const known = part.knownText()) {
      append(*known);
    } else {
      later.push_back({&part, {}});
    }
  }

  std::string& text;
  std::vector<Piece>& later;
};

// Appends pieces, expanding each type into its own pieces.
struct PieceAppender {
  struct Node {
    Piece piece;
    std::vector<Piece> later{};
  };

  Visit enter(Node& node) {
    const auto& [type, literal] = node.piece;
    if (type == nullptr) {
      text.append(literal);
      return Visit::leaf();
    }
    PieceSink sink{text, node.later};
    writeDesc(type->desc(), sink);
    sink.append(metadataText(type->metadata()));
    return Visit::parts(node.later.size());
  }
  Node part(Node& node, std::size_t i) { return {std::move(node.later[i])}; }

  std::string& text;
};

}  // namespace

std::optional<std::string> shortText(const TypeDesc& desc, std::string_view metadataSuffix) {
  ShortSink sink;
  writeDesc(desc, sink);
  sink.append(metadataSuffix);
  return sink.result();
}

TextFingerprint textFingerprint(const TypeDesc& desc, std::string_view metadataSuffix) {
  FingerprintSink sink;
  writeDesc(desc, sink);
  sink.append(metadataSuffix);
  return sink.fingerprint;
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
