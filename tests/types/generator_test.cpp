// Random types against a plain model of what their text, layout and twin should be.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "type_support.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary

// What the library should say of a type, worked out from the parts of its text.
struct Model {
  std::string text;
  std::string twin;  // the text without metadata
  std::uint64_t size = 0;
  std::uint64_t alignment = 0;
  std::vector<std::uint64_t> slots;
  bool concrete = true;
  bool deep = true;
  bool plain = true;      // no metadata at any depth
  bool hasValue = false;  // a value in metadata somewhere: never interned twice
};

struct BaseModel {
  const char* text;
  std::uint64_t size;
};
constexpr std::array<BaseModel, 20> kBases{
    {{"bool", 4},    {"bool2", 8},   {"bool3", 16}, {"bool4", 16}, {"int", 4},
     {"int2", 8},    {"int3", 16},   {"int4", 16},  {"float", 4},  {"float2", 8},
     {"float3", 16}, {"float4", 16}, {"char", 1},   {"char2", 2},  {"char3", 4},
     {"char4", 4},   {"half", 2},    {"half2", 4},  {"half3", 8},  {"half4", 8}}};

class Generator {
 public:
  explicit Generator(unsigned seed) : random_(seed) {}

  Model type(int depth) {
    Model model = description(depth);
    const std::string annotations = metadata(model.hasValue);
    if (!annotations.empty()) model.plain = false;
    model.text += annotations;
    return model;
  }

  Model concreteType(int depth) {
    Model model = type(depth);
    while (!model.concrete) model = type(depth);
    return model;
  }

  // The text with blanks thrown in where they mean nothing.
  std::string respelled(const std::string& text) {
    std::string result = " ";
    bool quoted = false;
    for (const char c : text) {
      const bool isMark = std::string("()[]{},;*").find(c) != std::string::npos;
      if (c == '"') quoted = !quoted;
      if (!quoted && isMark) result += blanks();
      result += c;
      if (!quoted && isMark) result += blanks();
    }
    return result;
  }

 private:
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }

  std::string blanks() {
    static constexpr std::array<const char*, 6> kBlanks{"", "", " ", "\n", "\t ", "\r\n"};
    return kBlanks[static_cast<std::size_t>(below(6))];
  }

  Model description(int depth) {
    switch (below(depth > 0 ? 9 : 3)) {
      case 0:
      case 1: {
        const BaseModel base = kBases[static_cast<std::size_t>(below(20))];
        Model model;
        model.text = model.twin = base.text;
        model.size = model.alignment = base.size;
        return model;
      }
      case 2:
        return enumeration(depth);
      case 3:
      case 4:
        return record(depth);
      case 5:
      case 6:
        return array(depth);
      case 7:
        return reference(depth);
      default:
        return function(depth);
    }
  }

  std::string metadata(bool& hasValue) {
    static constexpr std::array<const char*, 8> kKeys{"", "B", "a", "a'", "aB", "ab", "min", "z9"};
    static constexpr std::array<const char*, 5> kTexts{"", "x", "\\ @; }", "two\nlines", "='"};
    static constexpr std::array<const char*, 5> kValues{"1", "-0.5", "[ 1, 2 ]", "{ a = true; }",
                                                        "&float2(1.0, inf)"};
    std::map<std::string, std::string> entries;
    if (below(3) == 0) {
      for (int i = below(4); i > 0; --i) {
        const char* key = kKeys[static_cast<std::size_t>(below(8))];
        switch (below(5)) {
          case 0:
          case 1:
            entries[key] = "";
            break;
          case 2:
          case 3:
            entries[key] = std::string("=\"") + kTexts[static_cast<std::size_t>(below(5))] + "\"";
            break;
          default:
            entries[key] = std::string("=") + kValues[static_cast<std::size_t>(below(5))];
        }
      }
    }
    std::string text;
    for (const auto& [key, entry] : entries) {
      text += " @" + key + entry;
      hasValue = hasValue || (entry.size() > 1 && entry[1] != '"');
    }
    return text;
  }

  Model enumeration(int depth) {
    Model model;
    model.size = model.alignment = 4;
    std::string twin = "enum { ";
    model.text = "enum { ";
    const int count = 1 + below(3);
    // Payloads take no part in identity: names of its own keep each enum apart from all others.
    const std::string unique = std::to_string(enums_++);
    bool hasPayload = false;
    for (int i = 0; i < count; ++i) {
      const std::string name = "C" + std::to_string(i) + "_" + unique;
      model.text += name;
      if (depth > 0 && below(3) == 0) {
        hasPayload = true;
        model.text += "( ";
        const int fields = 1 + below(2);
        for (int f = 0; f < fields; ++f) {
          // The payload's own metadata stays out of the plainness and of the identity of the enum.
          model.text += (f ? ", " : "") + concreteType(depth - 1).text + " p" + std::to_string(f);
        }
        model.text += " )";
      }
      const std::string annotations = metadata(model.hasValue);
      if (!annotations.empty()) model.plain = false;
      model.text += annotations + "; ";
      twin += name + "; ";
    }
    model.text += "}";
    model.twin = twin + "}";
    if (hasPayload) payloads_ = true;
    return model;
  }

  Model record(int depth) {
    Model model;
    model.alignment = 4;
    model.text = model.twin = "{ ";
    std::uint64_t position = 0;
    const int count = below(4);
    for (int i = 0; i < count; ++i) {
      const Model field = concreteType(depth - 1);
      const std::string label = " f" + std::to_string(i) + "; ";
      model.text += field.text + label;
      model.twin += field.twin + label;
      position = (position + field.alignment - 1) / field.alignment * field.alignment;
      for (const std::uint64_t slot : field.slots) model.slots.push_back(position / 8 + slot);
      position += field.size;
      model.alignment = std::max(model.alignment, field.alignment);
      model.deep = model.deep && field.deep;
      model.plain = model.plain && field.plain;
      model.hasValue = model.hasValue || field.hasValue;
    }
    position = std::max<std::uint64_t>(position, 4);
    model.size = (position + model.alignment - 1) / model.alignment * model.alignment;
    model.text += "}";
    model.twin += "}";
    return model;
  }

  Model array(int depth) {
    const Model element = concreteType(depth - 1);
    Model model = element;
    const int rank = 1 + below(4);
    std::string suffix = "[";
    if (below(3) == 0) {
      suffix += std::string(static_cast<std::size_t>(rank - 1), ',');
      model.size = 0;
      model.slots.clear();
      model.concrete = model.deep = false;
    } else {
      std::uint64_t count = 1;
      for (int i = 0; i < rank; ++i) {
        const int extent = below(4);
        suffix += (i ? "," : "") + std::to_string(extent);
        count *= static_cast<std::uint64_t>(extent);
      }
      model.size = count * element.size;
      model.slots.clear();
      for (std::uint64_t i = 0; i < count; ++i) {
        for (const std::uint64_t slot : element.slots) {
          model.slots.push_back(i * element.size / 8 + slot);
        }
      }
    }
    suffix += "]";
    model.text += suffix;
    model.twin += suffix;
    return model;
  }

  Model reference(int depth) {
    Model model;
    model.size = model.alignment = 8;
    model.slots = {0};
    if (below(4) == 0) {
      model.text = model.twin = "void*";
      model.deep = false;
      return model;
    }
    const Model target = type(depth - 1);
    model.text = target.text + "*";
    model.twin = target.twin + "*";
    model.deep = target.deep;
    model.plain = target.plain;
    model.hasValue = target.hasValue;
    return model;
  }

  Model function(int depth) {
    Model model;
    model.size = 16;
    model.alignment = 8;
    model.slots = {0, 1};
    model.text = model.twin = "((";
    const int count = below(3);
    for (int i = 0; i <= count; ++i) {
      const Model part = type(depth - 1);
      const std::string before = i == count ? ") => " : i ? ", " : "";
      model.text += before + part.text;
      model.twin += before + part.twin;
      model.plain = model.plain && part.plain;
      model.hasValue = model.hasValue || part.hasValue;
    }
    model.text += ")";
    model.twin += ")";
    return model;
  }

 public:
  bool takePayloads() { return std::exchange(payloads_, false); }

 private:
  std::mt19937 random_;
  int enums_ = 0;
  bool payloads_ = false;
};

}  // namespace

TEST(RandomTypes, AreWhatTheirPartsMakeOfThem) {
  int interned = 0;
  for (unsigned seed = 1; seed <= 40; ++seed) {
    Generator generator(seed);
    for (int i = 0; i < 50; ++i) {
      const Model model = generator.type(4);
      const bool hasPayloads = generator.takePayloads();
      SCOPED_TRACE("seed " + std::to_string(seed) + ": " + model.text);
      const TypePtr type = parsed(generator.respelled(model.text));
      ASSERT_EQ(type->text(), model.text);
      EXPECT_EQ(type->size(), model.size);
      EXPECT_EQ(type->alignment(), model.alignment);
      EXPECT_EQ(type->refSlots(), model.slots);
      EXPECT_EQ(type->concrete(), model.concrete);
      EXPECT_EQ(type->deepConcrete(), model.deep);
      EXPECT_EQ(&type->stripped() == type.get(), model.plain);
      EXPECT_EQ(type->stripped().size(), model.size);
      EXPECT_EQ(type->stripped().refSlots(), model.slots);
      // An enum without metadata of its own keeps its payload in the twin.
      if (!hasPayloads) {
        EXPECT_EQ(type->stripped().text(), model.twin);
      }
      EXPECT_EQ(parsed(model.text), type);
      if (!model.hasValue) {
        EXPECT_EQ(parsed(generator.respelled(model.text)), type);
        ++interned;
      }
    }
  }
  EXPECT_GT(interned, 500);
}

TEST(RandomTypes, LeaveNothingBehind) {
  // Every type that the library itself holds on to is made by then.
  Generator(1).type(4);
  parsed("{ int @a=[ 1, 2 ] @b={ a = true; } @c=&float2(1.0, inf) @d=-0.5 x; }");
  const std::size_t before = factory().liveTypes();
  Generator generator(99);
  {
    std::vector<TypePtr> types;
    for (int i = 0; i < 300; ++i)
      types.push_back(parsed(generator.respelled(generator.type(4).text)));
    std::shuffle(types.begin(), types.end(), std::mt19937(7));
    EXPECT_GT(factory().liveTypes(), before);
  }
  EXPECT_EQ(factory().liveTypes(), before);
}
