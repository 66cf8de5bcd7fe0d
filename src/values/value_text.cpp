#include "values/value_text.hpp"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <ostream>
#include <utility>

#include "types/base_types.hpp"
#include "types/parts.hpp"
#include "types/type_text.hpp"
#include "types/walk.hpp"
#include "values/half.hpp"

namespace qex::vornath {
namespace {

constexpr std::uint32_t kIndentStep = 2;

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

struct Options {
  bool exact;
  bool multiline;
  std::uint32_t indent;  // columns
};

class Printer {
 public:
  struct Node {
    const InternedType* type;
    const char* data;
    Options options;
    Parts parts{};
  };

  std::string print(const InternedType& type, const char* data, const Options& options) {
    Walk<Node>().run(*this, {&type, data, options});
    return std::move(text_);
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

  // Prints what stands before a part.
  Node part(const Node& node, std::size_t i) {
    const auto [type, offset] = node.parts[i];
    Node part{type, node.data + offset, node.options};
    if (const auto* const structure = node.parts.structure()) {
      if (i != 0) endField(node.options);
      part.options.indent += kIndentStep;
      if (node.options.multiline) text_.append(part.options.indent, ' ');
      text_ += structure->fields[i].label;
      put(" = ");
    } else if (i != 0) {
      put(", ");
    }
    return part;
  }

  // Prints what stands behind the last part.
  void leave(const Node& node) {
    if (node.parts.structure() == nullptr) {
      endArray(node);
      return;
    }
    if (node.parts.count() != 0) endField(node.options);
    if (node.options.multiline) text_.append(node.options.indent, ' ');
    text_ += '}';
  }

 private:
  Visit begin(Type::TBasetype base, const Node& node) {
    const BaseTypeInfo& info = baseTypeInfo(base);
    if (info.lanes == 1) {
      printLane(info.family, node.data, node.options.exact);
      return Visit::leaf();
    }
    appendText(text_, *node.type);
    text_ += '(';
    for (std::uint32_t lane = 0; lane < info.lanes; ++lane) {
      if (lane != 0) put(", ");
      printLane(info.family, node.data + lane * info.laneSize, false);
    }
    text_ += ')';
    return Visit::leaf();
  }

  Visit begin(const Type::TEnum& enumeration, const Node& node) {
    text_ += enumeration.constructorName(load<std::int32_t>(node.data));
    put(" : ");
    appendText(text_, *node.type);
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
    return openParts(array, node);
  }

  Visit begin(const Type::TRef& reference, const Node& node) {
    const std::uint64_t word = loadWord(node.data);
    if (isBlockWord(word)) {
      text_ += '&';
      referred_ = blockOfWord(word);
      return Visit::leaf();
    }
    const std::uint64_t address = word >> 1;
    if (reference.target) {
      print("$(0x{:016x}:", address);
      appendText(text_, *reference.target);
      text_ += ')';
    } else {
      print("$0x{:016x}", address);
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

  void endField(const Options& options) {
    if (options.multiline) {
      put(";\n");
    } else {
      put("; ");
    }
  }

  void endArray(const Node& array) {
    const InternedType& element = array.parts.element();
    const bool none = array.parts.count() == 0;
    if (none || !element.deepConcrete()) {
      text_ += none ? ": " : " : ";
      appendText(text_, element);
    }
    // What tells an array of several dimensions from its neighbours of other extents.
    const Extents extents = arrayDesc(array.type->desc())->extents;
    if (extents.rank() > 1) text_.append(" | ").append(extents.text(", "));
    put(" ]");
  }

  void printLane(BaseFamily family, const char* at, bool exact) {
    switch (family) {
      case BaseFamily::Bool:
        text_ += load<std::uint32_t>(at) != 0 ? "true" : "false";
        return;
      case BaseFamily::Int:
        printInt(load<std::int32_t>(at));
        return;
      case BaseFamily::Char:
        printInt(load<std::uint8_t>(at));
        text_ += 'c';
        return;
      case BaseFamily::Float:
        if (exact) {
          print("0x{:08x}.", load<std::uint32_t>(at));
        } else {
          printFloat(load<float>(at));
        }
        return;
      case BaseFamily::Half:
        if (exact) {
          print("0x{:04x}.", static_cast<unsigned>(load<std::uint16_t>(at)));
        } else {
          printFloat(halfToFloat(halfFromBits(load<std::uint16_t>(at))));
          text_ += 'h';
        }
        return;
    }
  }

  void printInt(std::int32_t number) {
    const fmt::format_int digits(number);
    text_.append(digits.data(), digits.size());
  }

  void printFloat(float number) {
    if (std::isnan(number)) {
      put("NaN");
    } else {
      print("{:#}", number);
    }
  }

  // A literal, whose length is known where it stands.
  template <std::size_t N>
  void put(const char (&literal)[N]) {
    text_.append(literal, N - 1);
  }

  template <typename... Args>
  void print(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Args>(args)...);
  }

  std::string text_;
  const vrntValue_t* referred_ = nullptr;  // the block with whose text that of a reference goes on
};

}  // namespace

std::string valueToString(const ConstView& view, bool exact, bool multiline) {
  return Printer().print(*view.type, view.data(), {exact, multiline, 0});
}

std::string valueToString(const InternedType& type, const char* data) {
  return Printer().print(type, data, {});
}

}  // namespace qex::vornath
