#include "value_text.hpp"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <ostream>
#include <vector>

#include "base_types.hpp"
#include "half.hpp"
#include "type_text.hpp"

namespace qex::vornath {
namespace {

constexpr std::size_t kIndentStep = 2;

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

struct Options {
  bool exact;
  bool multiline;
  std::size_t indent;  // columns
};

// A struct or array that is being printed: what stands around its parts comes as they come and go.
struct Frame {
  const Type* type;
  const char* data;
  Options options;
  std::size_t next;  // the next field or element
};

class Printer {
 public:
  std::string print(const Type& type, const char* data, const Options& options) {
    open(&type, data, options);
    while (!frames_.empty()) {
      if (const auto* structure = frames_.back().type->getIf<Type::TStruct>()) {
        continueStruct(*structure);
      } else {
        continueArray();
      }
    }
    return std::move(text_);
  }

 private:
  // Prints a value without parts; one with parts becomes the topmost frame. Nothing follows the
  // text of what a reference leads to, so that a chain of references needs no frames.
  void open(const Type* type, const char* data, Options options) {
    while (const vrntValue_t* const target = std::visit(
               [&](const auto& desc) { return begin(desc, *type, data, options); }, type->desc())) {
      type = &blockType(target);
      data = blockData(target);
      options = {};
    }
  }

  // Each begin() returns the block with whose text this one goes on, or null.

  const vrntValue_t* begin(Type::TBasetype base, const Type& type, const char* data,
                           const Options& options) {
    const BaseTypeInfo& info = baseTypeInfo(base);
    if (info.lanes == 1) {
      printLane(info.family, data, options.exact);
      return nullptr;
    }
    appendText(text_, type);
    text_ += '(';
    for (std::uint32_t lane = 0; lane < info.lanes; ++lane) {
      if (lane != 0) text_ += ", ";
      printLane(info.family, data + lane * info.laneSize, false);
    }
    text_ += ')';
    return nullptr;
  }

  const vrntValue_t* begin(const Type::TEnum& enumeration, const Type& type, const char* data,
                           const Options&) {
    text_ += enumeration.constructorName(load<std::int32_t>(data));
    text_ += " : ";
    appendText(text_, type);
    return nullptr;
  }

  const vrntValue_t* begin(const Type::TStruct&, const Type& type, const char* data,
                           const Options& options) {
    text_ += '{';
    text_ += options.multiline ? '\n' : ' ';
    frames_.push_back({&type, data, options, 0});
    return nullptr;
  }

  template <typename D>
  const vrntValue_t* begin(const Type::TArrayND<D>& array, const Type& type, const char* data,
                           const Options& options) {
    static_cast<void>(array.shape.value());
    text_ += "[ ";
    frames_.push_back({&type, data, options, 0});
    return nullptr;
  }

  const vrntValue_t* begin(const Type::TRef& reference, const Type&, const char* data,
                           const Options&) {
    const std::uint64_t word = loadWord(data);
    if (isBlockWord(word)) {
      text_ += '&';
      return blockOfWord(word);
    }
    const std::uint64_t address = word >> 1;
    if (reference.target) {
      print("$(0x{:016x}:", address);
      appendText(text_, *reference.target);
      text_ += ')';
    } else {
      print("$0x{:016x}", address);
    }
    return nullptr;
  }

  const vrntValue_t* begin(const Type::TFun&, const Type&, const char*, const Options&) {
    text_ += "<<function>>";
    return nullptr;
  }

  void continueStruct(const Type::TStruct& structure) {
    Frame& frame = frames_.back();
    const std::size_t field = frame.next++;
    const bool multiline = frame.options.multiline;
    if (field != 0) {
      text_ += ';';
      text_ += multiline ? '\n' : ' ';
    }
    if (field == structure.fields.size()) {
      if (multiline) text_.append(frame.options.indent, ' ');
      text_ += '}';
      frames_.pop_back();
      return;
    }
    Options inner = frame.options;
    inner.indent += kIndentStep;
    if (multiline) text_.append(inner.indent, ' ');
    text_ += structure.fields[field].label;
    text_ += " = ";
    open(structure.fields[field].type.get(), frame.data + structure.offsets[field], inner);
  }

  void continueArray() {
    Frame& frame = frames_.back();
    const auto [element, extent] = arrayElements(*frame.type);
    const std::size_t count = extent < 0 ? 0 : static_cast<std::size_t>(extent);
    const std::size_t index = frame.next++;
    if (index == count) {
      if (count == 0 || !element->deepConcrete()) {
        text_ += count == 0 ? ": " : " : ";
        appendText(text_, *element);
      }
      // What tells an array of several dimensions from its neighbours of other extents.
      const Extents extents = arrayDesc(frame.type->desc())->extents;
      if (extents.rank() > 1) text_.append(" | ").append(extents.text(", "));
      text_ += " ]";
      frames_.pop_back();
      return;
    }
    if (index != 0) text_ += ", ";
    open(element, frame.data + index * element->size(), frame.options);
  }

  void printLane(BaseFamily family, const char* at, bool exact) {
    switch (family) {
      case BaseFamily::Bool:
        text_ += load<std::uint32_t>(at) != 0 ? "true" : "false";
        return;
      case BaseFamily::Int:
        print("{}", load<std::int32_t>(at));
        return;
      case BaseFamily::Char:
        print("{}c", static_cast<unsigned>(load<std::uint8_t>(at)));
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

  void printFloat(float number) {
    if (std::isnan(number)) {
      text_ += "NaN";
    } else {
      print("{:#}", number);
    }
  }

  template <typename... Args>
  void print(fmt::format_string<Args...> format, Args&&... args) {
    fmt::format_to(std::back_inserter(text_), format, std::forward<Args>(args)...);
  }

  std::string text_;
  std::vector<Frame> frames_;
};

}  // namespace

std::string valueToString(const ConstView& view, bool exact, bool multiline) {
  return Printer().print(*view.type, view.data(), {exact, multiline, 0});
}

std::string valueToString(const Type& type, const char* data) {
  return Printer().print(type, data, {});
}

std::ostream& operator<<(std::ostream& stream, const DynamicValue& value) {
  return stream << valueToString(value.view());
}

}  // namespace qex::vornath
