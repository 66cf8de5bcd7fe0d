// The texts of random values, held against a model that prints each part by a format string.
#include <fmt/format.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "random_values.hpp"
#include "types/base_types.hpp"
#include "values/half.hpp"
#include "values/text_buffer.hpp"

namespace qex::vornath::test {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 3'000;
#else
constexpr int kRounds = 60'000;
#endif

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

struct Model {
  bool exact;
  bool multiline;

  std::string lane(BaseFamily family, const char* at, bool bits) const {
    switch (family) {
      case BaseFamily::Bool:
        return load<std::uint32_t>(at) != 0 ? "true" : "false";
      case BaseFamily::Int:
        return fmt::format("{}", load<std::int32_t>(at));
      case BaseFamily::Char:
        return fmt::format("{}c", load<std::uint8_t>(at));
      case BaseFamily::Float:
        if (bits) return fmt::format("0x{:08x}.", load<std::uint32_t>(at));
        return number(load<float>(at));
      case BaseFamily::Half:
        if (bits) return fmt::format("0x{:04x}.", unsigned{load<std::uint16_t>(at)});
        return number(halfToFloat(halfFromBits(load<std::uint16_t>(at)))) + "h";
    }
    return {};
  }

  static std::string number(float number) {
    return std::isnan(number) ? "NaN" : fmt::format("{:#}", number);
  }

  std::string print(const InternedType& t, const char* data, std::size_t indent = 0) const {
    if (const auto* base = t.getIf<Type::TBasetype>()) {
      const BaseTypeInfo& info = baseTypeInfo(*base);
      if (info.lanes == 1) return lane(info.family, data, exact);
      std::string text = t.text() + "(";
      for (std::uint32_t i = 0; i < info.lanes; ++i) {
        text += (i == 0 ? "" : ", ") + lane(info.family, data + i * info.laneSize, false);
      }
      return text + ")";
    }
    if (const auto* enumeration = t.getIf<Type::TEnum>()) {
      return fmt::format("{} : {}", enumeration->constructorName(load<std::int32_t>(data)),
                         t.text());
    }
    if (const auto* structure = t.getIf<Type::TStruct>()) {
      const char* const separator = multiline ? "\n" : " ";
      std::string text = fmt::format("{{{}", separator);
      for (std::size_t i = 0; i < structure->fields.size(); ++i) {
        const auto& field = structure->fields[i];
        text +=
            fmt::format("{: >{}}{} = {};{}", "", multiline ? indent + 2 : 0, field.label,
                        print(*field.type, data + structure->offsets[i], indent + 2), separator);
      }
      return text + fmt::format("{: >{}}}}", "", multiline ? indent : 0);
    }
    if (const auto* reference = t.getIf<Type::TRef>()) {
      const std::uint64_t word = loadWord(data);
      if (isBlockWord(word)) {
        const vrntValue_t* const block = blockOfWord(word);
        return "&" + Model{false, false}.print(blockType(block), blockData(block));
      }
      if (!reference->target) return fmt::format("$0x{:016x}", word >> 1);
      return fmt::format("$(0x{:016x}:{})", word >> 1, reference->target->text());
    }
    if (t.getIf<Type::TFun>() != nullptr) return "<<function>>";

    const ArrayElements elements = arrayElements(t);
    std::string text = "[ ";
    for (int i = 0; i < elements.count; ++i) {
      if (i != 0) text += ", ";
      text += print(*elements.element,
                    data + static_cast<std::uint64_t>(i) * elements.element->size(), indent);
    }
    if (elements.count == 0 || !elements.element->deepConcrete()) {
      text += (elements.count == 0 ? ": " : " : ") + elements.element->text();
    }
    const Extents extents = arrayDesc(t.desc())->extents;
    if (extents.rank() > 1) text += " | " + extents.text(", ");
    return text + " ]";
  }
};

class Generator : public Random {
 public:
  using Random::Random;

  std::string anyType(int depth) {
    switch (depth == 0 ? below(3) : below(9)) {
      case 0:
      case 1:
        return baseOfAnyLanes() + metadata();
      case 2:
        return enumeration() + metadata();
      case 3:
      case 4:
      case 5: {
        std::string text = "{";
        const int fields = below(6);
        for (int i = 0; i < fields; ++i) {
          text += " " + anyType(depth - 1) + " f" + std::string(below(12), 'x') +
                  std::to_string(i) + ";";
        }
        return text + " }" + metadata();
      }
      case 6:
        return anyType(depth - 1) + extents(1 + below(4)) + metadata();
      case 7:
        return (once(3) ? "void" : anyType(depth - 1) + (once(4) ? "[]" : "")) + "*" + metadata();
      default:
        return "((int) => float)";
    }
  }

 private:
  std::string baseOfAnyLanes() {
    static const char* const kFamilies[] = {"bool", "int", "float", "char", "half"};
    const int lanes = 1 + below(4);
    return kFamilies[below(5)] + (lanes == 1 ? std::string() : std::to_string(lanes));
  }
  std::string metadata() { return once(6) ? " @name=\"n\" @z" : ""; }
};

// The text, or the message of the failure.
template <typename Print>
std::string outcome(const Print& print) {
  try {
    return "text " + print();
  } catch (const std::exception& exception) {
    return std::string("failure ") + exception.what();
  }
}

TEST(RandomValueTexts, AreThoseOfAModel) {
  Generator random(31);
  std::vector<DynamicValue> referees{value("1"), DynamicValue(type("float[]"))};
  int failures = 0;
  std::size_t longest = 0;
  for (int round = 0; round < kRounds; ++round) {
    const TypePtr annotated = type(random.anyType(random.below(5)));
    const DynamicValue v = random.valueOf(annotated, referees, random.once(3));
    const bool exact = random.once(2);
    const bool multiline = random.once(2);
    // A view may have a type with annotations, which the text shows.
    const InternedType& shown = random.once(2) ? *annotated : v.typeOf();
    const ConstView view{&shown, 0, &v};
    const std::string expected = outcome([&] {
      return Model{exact, multiline}.print(shown, v.data());
    });
    ASSERT_EQ(outcome([&] { return valueToString(view, exact, multiline); }), expected);
    ASSERT_EQ(outcome([&] {
                const std::unique_ptr<char, decltype(&std::free)> owned(
                    newValueText(shown, v.data(), exact, multiline), &std::free);
                return std::string(owned.get());
              }),
              expected);
    failures += expected.starts_with("failure") ? 1 : 0;
    longest = std::max(longest, expected.size());
    if (referees.size() < 12) {
      referees.push_back(v);
    } else {
      referees[static_cast<std::size_t>(random.below(12))] = random.once(8) ? value("2") : v;
    }
    // Texts of references to references multiply.
    if (expected.size() > 10'000) referees.assign(1, value("3"));
  }
  EXPECT_GT(failures, kRounds / 100);
  EXPECT_LT(failures, kRounds / 2);
  EXPECT_GT(longest, 2'000U);
}

TEST(TextBuffer, GrowsFromTheObjectIntoMemory) {
  for (const std::size_t size : {0U, 1U, 999U, 1000U, 1001U, 5000U, 100'000U}) {
    TextBuffer buffer;
    std::string expected;
    while (expected.size() < size) {
      const std::size_t piece = std::min<std::size_t>(size - expected.size(), 37);
      const auto character = static_cast<char>('a' + expected.size() % 26);
      if (expected.size() % 2 == 0) {
        buffer.append(std::string(piece, character));
      } else {
        buffer.append(piece, character);
      }
      expected.append(piece, character);
    }
    EXPECT_EQ(buffer.text(), expected);
    const std::unique_ptr<char, decltype(&std::free)> string(buffer.releaseString(), &std::free);
    EXPECT_EQ(string.get(), expected);
    EXPECT_EQ(buffer.text(), "");
    buffer.append("again");
    EXPECT_EQ(buffer.text(), "again");
  }
}

TEST(TextBuffer, RefusesMoreThanThereIsMemoryFor) {
  TextBuffer buffer;
  buffer.append("a");
  EXPECT_THROW(buffer.room(std::numeric_limits<std::size_t>::max()), std::bad_alloc);
  EXPECT_THROW(buffer.room(std::numeric_limits<std::size_t>::max() / 4), std::bad_alloc);
  EXPECT_EQ(buffer.text(), "a");
}

}  // namespace
}  // namespace qex::vornath::test
