// Values of texts in which small parts stand beside large ones: where each part comes to lie, and
// that nothing is held more often than the text says.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/flat_handles.hpp"

namespace {

using namespace vornath_test;

// A text, and the texts of the parts that its value has in order.
struct Part {
  std::string text;
  std::vector<Part> parts;
  std::uint32_t elements = 0;  // of an array: how many, those without a text included
};

// Texts of which the innermost ones have up to 40,000 bytes, and so far more than their parts.
class Texts {
 public:
  explicit Texts(std::uint32_t seed) : random_(seed) {}

  Part part(int depth) {
    switch (depth == 0 ? below(4) : below(8)) {
      case 0:
        return {std::to_string(below(1000)), {}};
      case 1:
        return {"&" + std::to_string(below(1000)), {}};
      case 2:
        return {"[ : float3 | " + std::to_string(below(3000)) + " ]", {}};
      case 3:
        return {"0x" + std::string(2, static_cast<char>('0' + below(10))), {}};
      case 4:
      case 5:
        return structure(depth);
      case 6:
        return list(depth);
      default:
        return grid(depth);
    }
  }

 private:
  std::uint32_t below(std::uint32_t end) {
    return std::uniform_int_distribution<std::uint32_t>(0, end - 1)(random_);
  }

  Part structure(int depth) {
    Part whole{"{ ", {}};
    for (std::uint32_t count = below(4); whole.parts.size() < count;) {
      whole.parts.push_back(part(depth - 1));
      whole.text +=
          "f" + std::to_string(whole.parts.size()) + " = " + whole.parts.back().text + "; ";
    }
    whole.text += '}';
    return whole;
  }

  // Elements have one type: they are all the same text.
  Part list(int depth) {
    Part whole{"[ ", std::vector<Part>(1 + below(3), part(depth - 1))};
    for (const Part& element : whole.parts) {
      whole.text += (&element == &whole.parts.front() ? "" : ", ") + element.text;
    }
    whole.elements = static_cast<std::uint32_t>(whole.parts.size());
    whole.text += " ]";
    return whole;
  }

  // More elements than texts: the others are zero.
  Part grid(int depth) {
    Part whole = list(depth);
    const std::uint32_t rows = 1 + below(40);
    whole.text.erase(whole.text.size() - 2);
    whole.text += " | " + std::to_string(whole.elements) + ", " + std::to_string(rows) + " ]";
    whole.elements *= rows;
    return whole;
  }

  std::mt19937 random_;
};

bool equal(const ValueHandle& a, const vrntValueView_t& viewA, const ValueHandle& b) {
  const vrntValueView_t viewB{vrntValueType(b.get()), 0};
  return vrntValueEqual(a.get(), &viewA, b.get(), &viewB, 0, nullptr) == 1;
}

// Each part of a value against the value of the part's own text.
void expectParts(const ValueHandle& value, const vrntValueView_t& view, const Part& part) {
  if (testing::Test::HasFailure()) return;
  if (part.parts.empty()) {
    EXPECT_TRUE(equal(value, view, parseValue(part.text))) << part.text;
    return;
  }
  if (part.elements == 0) {
    for (std::uint32_t i = 0; i < part.parts.size(); ++i) {
      vrntValueView_t field{};
      vrntValueStructField(&field, view.type, i);
      expectParts(value, {field.type, view.offset + field.offset}, part.parts[i]);
    }
    return;
  }
  const TypeHandle element(vrntTypeElementType(view.type));
  const std::uint64_t size = vrntTypeSize(element.get());
  for (std::size_t i = 0; i < part.parts.size(); ++i) {
    expectParts(value, {element.get(), view.offset + i * size}, part.parts[i]);
  }
  // The elements behind those of the text are zero: megabytes, so one comparison takes them all,
  // each byte with the one before it.
  const char* const bytes = static_cast<const char*>(vrntValueData(value.get())) + view.offset;
  const std::uint64_t first = part.parts.size() * size;
  const std::uint64_t count = part.elements * size - first;
  if (count == 0) return;
  EXPECT_EQ(bytes[first], 0) << part.text;
  EXPECT_EQ(std::memcmp(bytes + first, bytes + first + 1, count - 1), 0) << part.text;
}

TEST(NestedValues, HaveEachPartInItsPlace) {
  for (std::uint32_t seed = 0; seed < 400 && !HasFailure(); ++seed) {
    const Part whole = Texts(seed).part(5);
    SCOPED_TRACE(seed);
    const ValueHandle value = parseValue(whole.text);
    expectParts(value, {vrntValueType(value.get()), 0}, whole);
  }
}

TEST(NestedValues, HoldWhatTheyReferToOnce) {
  const ValueHandle value =
      parseValue("{ a = [ { r = &1; z = [ : int | 5000 ]; } ]; b = [ &2, &3 ]; c = { s = &4; }; }");
  const auto count = [&value](std::uint64_t offset) {
    const auto* target = reinterpret_cast<const char*>(readAt<std::uint64_t>(value, offset));
    std::int32_t number = 0;
    std::memcpy(&number, target, sizeof(number));
    EXPECT_EQ(reinterpret_cast<const vrntValue_t*>(target - sizeof(vrntValue_t))->refCount, 1u);
    return number;
  };
  EXPECT_EQ(count(0), 1);
  EXPECT_EQ(count(20008), 2);
  EXPECT_EQ(count(20016), 3);
  EXPECT_EQ(count(20024), 4);
}

TEST(NestedValues, AreRefusedAtTheInnermostPartThatDoesNotFit) {
  const auto failure = valueFailure("[ { a = [ 1, 2.0 ]; }, { b = [ : int | 5000 ]; } ]");
  ASSERT_TRUE(failure);
  EXPECT_EQ(failure->message, "Incompatible type for value -> type float does not match type int.");
}

}  // namespace
