#include "values/value_text.hpp"

#include <cstring>
#include <new>
#include <utility>

#include "types/base_types.hpp"
#include "types/parts.hpp"
#include "types/type_text.hpp"
#include "types/walk.hpp"
#include "values/half.hpp"
#include "values/number_text.hpp"
#include "values/text_buffer.hpp"

namespace qex::vornath {
namespace {

constexpr std::uint32_t kIndentStep = 2;

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

// Writes a literal, whose length is known where it stands.
template <std::size_t N>
char* put(char* out, const char (&literal)[N]) {
  std::memcpy(out, literal, N - 1);
  return out + N - 1;
}

struct Options {
  bool exact;
  bool multiline;
  std::uint32_t indent;  // columns
};

// The bits of a float or a half.
char* writeBits(char* out, std::uint32_t bits, std::size_t digits) {
  out = writeHex(put(out, "0x"), bits, digits);
  *out = '.';
  return out + 1;
}

// Writes a scalar, or a lane of a vector, of at most kMaxLaneText characters.
constexpr std::size_t kMaxLaneText = kMaxNumberText + 1;
char* writeLane(char* out, BaseFamily family, const char* at, bool exact) {
  switch (family) {
    case BaseFamily::Bool:
      return load<std::uint32_t>(at) != 0 ? put(out, "true") : put(out, "false");
    case BaseFamily::Int:
      return writeInt(out, load<std::int32_t>(at));
    case BaseFamily::Char:
      out = writeInt(out, load<std::uint8_t>(at));
      *out = 'c';
      return out + 1;
    case BaseFamily::Float:
      if (exact) return writeBits(out, load<std::uint32_t>(at), 8);
      return writeFloat(out, load<float>(at));
    case BaseFamily::Half:
      if (exact) return writeBits(out, load<std::uint16_t>(at), 4);
      out = writeFloat(out, halfToFloat(halfFromBits(load<std::uint16_t>(at))));
      *out = 'h';
      return out + 1;
  }
  return out;
}

class Printer {
 public:
  struct Node {
    const InternedType* type;
    const char* data;
    Options options;
    Parts parts{};
  };

  // Appends the text to the buffer.
  explicit Printer(TextBuffer& text) : text_(text) {}

  void print(const InternedType& type, const char* data, const Options& options) {
    walk_.run(*this, {&type, data, options});
  }

  // Prints a value without parts, or what stands before the parts. Nothing follows the text of what
  // a reference leads to, so that a chain of references needs no levels.
  Visit enter(Node& node) {
    for (;;) {
      const Visit visit =
          std::visit([&](const auto& desc) { return begin(desc, node); }, node.type->desc());
      if (referred_ == nullptr) return visit;
      const vrntValue_t* const block = std::exchange(referred_, nullptr);
      node.type = &blockType(block);
      node.data = blockData(block);
      node.options = {};
    }
  }

  // Prints what stands before a part. Of a struct, prints the fields without parts that come first,
  // all but the last field, which the walk needs.
  Node part(const Node& node, std::size_t i) {
    const auto* const structure = node.parts.structure();
    if (structure == nullptr) {
      if (i != 0) put(", ");
      const auto [type, offset] = node.parts[i];
      return {type, node.data + offset, node.options};
    }
    const std::uint32_t indent = node.options.indent + kIndentStep;
    for (;; ++i) {
      const Type::Field& field = structure->fields[i];
      const char* const data = node.data + structure->offsets[i];
      beginField(field.label, i == 0, node.options.multiline, indent);
      const auto* const base = field.type->getIf<Type::TBasetype>();
      if (base == nullptr || i + 1 == structure->fields.size()) {
        walk_.levels().back().next = i + 1;
        return {field.type.get(), data, {node.options.exact, node.options.multiline, indent}};
      }
      printBase(*base, *field.type, data, node.options.exact);
    }
  }

  // Prints what stands behind the last part.
  void leave(const Node& node) {
    if (node.parts.structure() == nullptr) {
      endArray(*node.type);
      return;
    }
    if (node.parts.count() != 0) endField(node.options.multiline);
    if (node.options.multiline) text_.append(node.options.indent, ' ');
    put("}");
  }

 private:
  Visit begin(Type::TBasetype base, const Node& node) {
    printBase(base, *node.type, node.data, node.options.exact);
    return Visit::leaf();
  }

  Visit begin(const Type::TEnum& enumeration, const Node& node) {
    text_.append(enumeration.constructorName(load<std::int32_t>(node.data)));
    put(" : ");
    printType(*node.type);
    return Visit::leaf();
  }

  Visit begin(const Type::TStruct& structure, Node& node) {
    if (node.options.multiline) {
      put("{\n");
    } else {
      put("{ ");
    }
    return openParts(structure, node);
  }

  template <typename D>
  Visit begin(const Type::TArrayND<D>& array, Node& node) {
    Extents(array).requireKnown();
    put("[ ");
    const auto* const base = array.element->template getIf<Type::TBasetype>();
    if (base == nullptr) return openParts(array, node);
    const char* data = node.data;
    for (std::size_t i = Extents(array).elements(); i != 0; --i) {
      printBase(*base, *array.element, data, node.options.exact);
      if (i != 1) put(", ");
      data += array.element->size();
    }
    endArray(*node.type);
    return Visit::leaf();
  }

  Visit begin(const Type::TRef& reference, const Node& node) {
    const std::uint64_t word = loadWord(node.data);
    if (isBlockWord(word)) {
      put("&");
      referred_ = blockOfWord(word);
      return Visit::leaf();
    }
    put("$");
    if (reference.target) {
      put("(");
      printAddress(word >> 1);
      put(":");
      printType(*reference.target);
      put(")");
    } else {
      printAddress(word >> 1);
    }
    return Visit::leaf();
  }

  Visit begin(const Type::TFun&, const Node&) {
    put("<<function>>");
    return Visit::leaf();
  }

  template <typename Desc>
  static Visit openParts(const Desc& desc, Node& node) {
    node.parts = Parts(desc);
    return Visit::parts(node.parts.count());
  }

  void beginField(const std::string& label, bool first, bool multiline, std::uint32_t indent) {
    if (!first) endField(multiline);
    if (multiline) text_.append(indent, ' ');
    text_.append(label);
    put(" = ");
  }

  void endField(bool multiline) {
    if (multiline) {
      put(";\n");
    } else {
      put("; ");
    }
  }

  void endArray(const InternedType& array) {
    const auto [elementType, extents] = *arrayDesc(array.desc());
    const InternedType& element = **elementType;
    const bool none = extents.elements() == 0;
    if (none || !element.deepConcrete()) {
      text_.append(none ? ": " : " : ");
      printType(element);
    }
    // What tells an array of several dimensions from its neighbours of other extents.
    if (extents.rank() > 1) {
      put(" | ");
      text_.append(extents.text(", "));
    }
    put(" ]");
  }

  void printBase(Type::TBasetype base, const InternedType& type, const char* data, bool exact) {
    const BaseTypeInfo& info = baseTypeInfo(base);
    if (info.lanes == 1) {
      text_.setEnd(writeLane(text_.room(kMaxLaneText), info.family, data, exact));
      return;
    }
    printType(type);
    constexpr std::size_t kMostLanes = 4;
    char* out = vornath::put(text_.room(kMostLanes * (kMaxLaneText + 2) + 2), "(");
    for (std::uint32_t lane = 0; lane < info.lanes; ++lane) {
      if (lane != 0) out = vornath::put(out, ", ");
      out = writeLane(out, info.family, data + lane * info.laneSize, false);
    }
    text_.setEnd(vornath::put(out, ")"));
  }

  void printType(const InternedType& type) {
    if (const std::string* const known = type.knownText()) {
      text_.append(*known);
      return;
    }
    // A long text is not kept in the type.
    std::string text;
    appendText(text, type);
    text_.append(text);
  }

  void printAddress(std::uint64_t address) {
    constexpr std::size_t kDigits = 16;
    char* const out = vornath::put(text_.room(2 + kDigits), "0x");
    text_.setEnd(writeHex(out, address, kDigits));
  }

  template <std::size_t N>
  void put(const char (&literal)[N]) {
    text_.setEnd(vornath::put(text_.room(N), literal));
  }

  TextBuffer& text_;
  Walk<Node> walk_;
  const vrntValue_t* referred_ = nullptr;  // the block with whose text that of a reference goes on
};

void print(TextBuffer& text, const InternedType& type, const char* data, const Options& options) {
  Printer(text).print(type, data, options);
}

}  // namespace

std::string valueToString(const ConstView& view, bool exact, bool multiline) {
  TextBuffer text;
  print(text, *view.type, view.data(), {exact, multiline, 0});
  return std::string(text.text());
}

std::string valueToString(const InternedType& type, const char* data) {
  TextBuffer text;
  print(text, type, data, {});
  return std::string(text.text());
}

char* newValueText(const InternedType& type, const char* data, bool exact, bool multiline) {
  TextBuffer text;
  print(text, type, data, {exact, multiline, 0});
  return text.releaseString();
}

}  // namespace qex::vornath
