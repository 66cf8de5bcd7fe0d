// Random types and values, from fixed seeds: what is printed parses back, what is written reads
// back.
#include <algorithm>
#include <random>

#include "values/equality.hpp"
#include "values/stream.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

class Generator {
 public:
  explicit Generator(std::uint32_t seed) : random_(seed) {}

  int below(int limit) { return static_cast<int>(bits() % static_cast<std::uint32_t>(limit)); }
  std::uint32_t bits() { return static_cast<std::uint32_t>(random_()); }

  // A concrete type's text, not canonical.
  std::string concreteType(int depth) {
    const int kind = depth == 0 ? below(2) : below(7);
    std::string t;
    switch (kind) {
      case 0:
        t = baseType();
        break;
      case 1:
        t = enumType();
        break;
      case 2:
      case 3:
        t = structType(depth);
        break;
      case 4:
        t = concreteType(depth - 1) + metadata() + "[" + extents(1 + below(4)) + "]";
        break;
      case 5:
        t = (below(4) == 0 ? "void" : anyType(depth - 1)) + " *";
        break;
      default:
        t = functionType(depth);
        break;
    }
    return t + metadata();
  }

  // May have open extents.
  std::string anyType(int depth) {
    if (below(4) != 0) return concreteType(depth);
    return concreteType(depth) + "[" + std::string(static_cast<std::size_t>(below(4)), ',') + "]";
  }

  // A value of a random type that has a text, functions left out.
  DynamicValue randomValue(int depth) {
    switch (depth == 0 ? below(2) : below(7)) {
      case 0:
        return baseValue(static_cast<Type::TBasetype>(below(20)));
      case 1: {
        const TypePtr t = type(enumType());
        const auto& constructors = t->getIf<Type::TEnum>()->constructors;
        return DynamicValue::enumerator(
            t, constructors[static_cast<std::size_t>(below(static_cast<int>(constructors.size())))]
                   .name);
      }
      case 2:
      case 3: {
        std::vector<DynamicValue::Field> fields;
        for (int i = below(4); i > 0; --i) {
          fields.push_back({"f" + std::to_string(i), randomValue(depth - 1)});
        }
        return DynamicValue::structure(fields);
      }
      case 4: {
        const DynamicValue element = randomValue(depth - 1);
        const int x = below(3), y = 1 + below(3);
        const std::vector<DynamicValue> elements(static_cast<std::size_t>(x * y), element);
        if (below(2) == 0) return DynamicValue::array(elements, x * y, element.type());
        return DynamicValue::array(elements, index2{x, y}, element.type());
      }
      case 5: {
        // Earlier referees come back, so that blocks are shared.
        if (referees_.empty() || below(3) != 0) referees_.push_back(randomValue(depth - 1));
        const DynamicValue& referee =
            referees_[static_cast<std::size_t>(below(static_cast<int>(referees_.size())))];
        if (below(4) == 0) return DynamicValue::reference(referee, type("void*"));
        return DynamicValue::reference(referee);
      }
      default:
        return DynamicValue::foreign(type(below(2) == 0 ? "void*" : "float[]*"),
                                     (std::uint64_t{bits()} << 31) ^ bits());
    }
  }

 private:
  std::string baseType() {
    static const char* const kNames[] = {"bool", "int", "float", "char", "half"};
    const int lanes = 1 + below(4);
    return std::string(kNames[below(5)]) + (lanes == 1 ? "" : std::to_string(lanes));
  }

  std::string enumType() {
    std::string t = "enum {";
    for (int i = 1 + below(4); i > 0; --i) t += " L" + std::to_string(i) + ";";
    return t + " }";
  }

  std::string structType(int depth) {
    std::string t = "{";
    for (int i = below(4); i > 0; --i) {
      t += "  " + concreteType(depth - 1) + " f" + std::to_string(i) + " ;";
    }
    return t + "}";
  }

  std::string functionType(int depth) {
    std::string t = "((";
    for (int i = below(3); i > 0; --i) t += concreteType(depth - 1) + (i > 1 ? ", " : "");
    return t + ") => " + concreteType(depth - 1) + ")";
  }

  std::string extents(int rank) {
    std::string t = std::to_string(below(4));
    for (int i = 1; i < rank; ++i) t += "," + std::to_string(below(4));
    return t;
  }

  std::string metadata() {
    switch (below(6)) {
      case 0:
        return " @name=\"n" + std::to_string(below(3)) + "\"";
      case 1:
        return " @z @hide";
      default:
        return "";
    }
  }

  DynamicValue baseValue(Type::TBasetype base) {
    // Bits of any kind, with NaN left out: it is unequal to itself.
    DynamicValue v{TypePtr(type(baseTypeName(base)))};
    char* const data = blockData(v.block());
    const std::string name = v.typeOf().text();
    for (std::uint64_t i = 0; i + 1 < v.typeOf().size(); i += 2) {
      std::uint16_t word = static_cast<std::uint16_t>(bits());
      if (name[0] == 'h' && (word & 0x7C00) == 0x7C00) word &= 0xFC00;
      if (name[0] == 'f' && i % 4 == 2 && (word & 0x7F80) == 0x7F80) word &= 0x3FFF;
      std::memcpy(data + i, &word, sizeof(word));
    }
    return v;
  }

  static std::string baseTypeName(Type::TBasetype base) {
    static const char* const kNames[] = {"bool", "int", "float", "char", "half"};
    const int code = static_cast<int>(base);
    return std::string(kNames[code / 4]) + (code % 4 == 0 ? "" : std::to_string(code % 4 + 1));
  }

  std::mt19937 random_;
  std::vector<DynamicValue> referees_;
};

void writeTo(const void* bytes, std::uint64_t size, void* user) {
  static_cast<std::string*>(user)->append(static_cast<const char*>(bytes), size);
}

std::string stream(const DynamicValue& v) {
  std::string bytes;
  serializeValue(v, &writeTo, &bytes);
  return bytes;
}

struct Reader {
  const std::string& bytes;
  std::size_t position = 0;

  void operator()(void* to, std::uint64_t size) {
    ASSERT_LE(size, bytes.size() - position);
    std::memcpy(to, bytes.data() + position, size);
    position += size;
  }
};

// Lists the blocks that a value refers to, each by the number of its first appearance, so that two
// values of the same shape and sharing have the same list.
std::vector<std::size_t> sharing(const DynamicValue& v) {
  std::vector<std::uint64_t> order;
  std::vector<std::size_t> list;
  std::vector<const vrntValue_t*> open{v.block()};
  for (std::size_t next = 0; next < open.size(); ++next) {
    for (const std::uint64_t slot : blockType(open[next]).refSlots()) {
      const std::uint64_t word = loadWord(blockData(open[next]) + slot * kWordSize);
      if (!isBlockWord(word)) continue;
      const auto known = std::find(order.begin(), order.end(), word);
      list.push_back(static_cast<std::size_t>(known - order.begin()));
      if (known != order.end()) continue;
      order.push_back(word);
      open.push_back(blockOfWord(word));
    }
  }
  return list;
}

TEST(Generator, RandomTypesPrintParseBackAndInternToTheSameHandle) {
  Generator generator(20240611);
  for (int i = 0; i < 3000; ++i) {
    const std::string written = generator.concreteType(4);
    const TypePtr t = type(written);
    // A blank in front keeps the text table out: the whole text is parsed.
    const TypePtr back = type(" " + t->text());
    EXPECT_EQ(back, t) << written;
    EXPECT_EQ(back->text(), t->text()) << written;
    EXPECT_EQ(type(" " + t->stripped().text()).get(), &t->stripped()) << written;
  }
}

TEST(Generator, RandomValuesPrintAndParseBackEqual) {
  Generator generator(4711);
  int compared = 0;
  for (int i = 0; i < 3000; ++i) {
    const DynamicValue v = generator.randomValue(4);
    const std::string printed = text(v);
    const DynamicValue back = value(printed);
    EXPECT_EQ(text(back), printed);
    // Where the type says void*, a reference reads back with the type of what it leads to.
    if (v.typeOf().text().find("void*") == std::string::npos) {
      ++compared;
      EXPECT_EQ(back.type(), v.type()) << printed;
      std::string reason;
      EXPECT_TRUE(valuesEqual(v.view(), back.view(), 0, &reason)) << printed << "\n" << reason;
    }
    EXPECT_EQ(text(value(valueToString(v.view(), false, true))), printed);
  }
  EXPECT_GT(compared, 2000);
}

TEST(Generator, RandomValuesStreamBackEqualWithTheirSharing) {
  Generator generator(99);
  for (int i = 0; i < 3000; ++i) {
    const DynamicValue v = generator.randomValue(4);
    const std::string bytes = stream(v);
    Reader reader{bytes};
    DynamicValue::StreamMap map;
    const DynamicValue back = DynamicValue::deserialize(reader, map);
    EXPECT_EQ(reader.position, bytes.size());
    EXPECT_EQ(back.type(), v.type());
    std::string reason;
    EXPECT_TRUE(valuesEqual(v.view(), back.view(), 0, &reason)) << text(v) << "\n" << reason;
    EXPECT_EQ(text(back), text(v));
    EXPECT_EQ(sharing(back), sharing(v));
  }
}

TEST(Generator, LeavesNoTypeBehind) {
  const std::size_t before = Type::get_factory(true)->liveTypes();
  {
    Generator generator(5);
    for (int i = 0; i < 200; ++i) type(generator.concreteType(4));
    for (int i = 0; i < 200; ++i) generator.randomValue(4);
  }
  EXPECT_EQ(Type::get_factory(true)->liveTypes(), before);
}

}  // namespace
}  // namespace qex::vornath::test
