#include "values/record_texts.hpp"

#include <set>

#include "case_count.hpp"
#include "random_values.hpp"
#include "types/type_text.hpp"
#include "values/equality.hpp"
#include "values/stream.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

struct Bytes {
  std::string bytes;
  std::size_t read = 0;

  static void write(const void* from, std::uint64_t size, void* user) {
    static_cast<Bytes*>(user)->bytes.append(static_cast<const char*>(from), size);
  }
  static void take(void* to, std::uint64_t size, void* user) {
    auto& stream = *static_cast<Bytes*>(user);
    ASSERT_LE(stream.read + size, stream.bytes.size());
    stream.bytes.copy(static_cast<char*>(to), size, stream.read);
    stream.read += size;
  }
};

DynamicValue readBack(const std::string& bytes) {
  Bytes stream{bytes};
  DynamicValue::StreamMap map;
  DynamicValue v = deserializeValue(Bytes::take, &stream, map);
  EXPECT_EQ(stream.read, bytes.size());
  return v;
}

// The slow writer: the text of each type by itself.
void slowWrite(const DynamicValue& v, std::set<const void*>& seen, std::string& out) {
  if (!seen.insert(v.data()).second) return;
  std::string typeText;
  appendText(typeText, v.typeOf());
  const std::uint64_t length = typeText.size();
  const std::uint64_t id = wordOfBlock(v.block());
  out.append(reinterpret_cast<const char*>(&length), 8).append(typeText);
  out.append(reinterpret_cast<const char*>(&id), 8).append(v.data(), v.typeOf().size());
  for (const std::uint64_t slot : v.typeOf().refSlots()) {
    const std::uint64_t word = at<std::uint64_t>(v, slot * kWordSize);
    if (isBlockWord(word)) slowWrite(DynamicValue(blockOfWord(word)), seen, out);
  }
}

// A label that makes the types around it long ones soon.
std::string label(Random& random, char first) {
  return std::string(1, first) + std::string(static_cast<std::size_t>(random.below(2500)), 'x');
}

// Values made of others: structs, arrays and references, which share what they refer to.
DynamicValue nest(Random& random) {
  std::vector<DynamicValue> made{value("1"), value("2.5"), value("[ 1, 2 ]")};
  const auto any = [&]() -> const DynamicValue& {
    // The last ones are the deepest.
    const int back = std::min(random.below(4), static_cast<int>(made.size()) - 1);
    return made[made.size() - 1 - static_cast<std::size_t>(back)];
  };
  for (int i = 3 + random.below(9); i > 0; --i) {
    const DynamicValue& part = any();
    const bool large = part.typeOf().size() > 500;
    switch (large ? 0 : random.below(5)) {
      case 0:
        made.push_back(random.once(4) ? DynamicValue::reference(part, type("void*"))
                                      : DynamicValue::reference(part));
        break;
      case 1:
        made.push_back(
            DynamicValue::array({part, part}, random.once(2) ? Extents(2) : Extents(1, 2)));
        break;
      case 2:
        made.push_back(
            DynamicValue::foreign(makeType(Type::TRef{part.type()}), random.once(2) ? 0 : 77));
        break;
      default:
        made.push_back(DynamicValue::structure({{label(random, 'a'), part},
                                                {label(random, 'b'), any()},
                                                {label(random, 'c'), made.front()}}));
    }
  }
  return made.back();
}

TEST(RecordTexts, GiveTheStreamThatTheSlowWriterWrites) {
  Random random(77);
  int ofLongTypes = 0;
  for (int i = 0; i < vornath_test::cases(20000); ++i) {
    const DynamicValue v = nest(random);
    ofLongTypes += v.typeOf().hasLongText();
    Bytes stream;
    serializeValue(v, Bytes::write, &stream);
    std::string slow;
    std::set<const void*> seen;
    slowWrite(v, seen, slow);
    ASSERT_EQ(stream.bytes, slow) << v.typeOf().text();

    const DynamicValue back = readBack(stream.bytes);
    ASSERT_EQ(back.type(), v.type());
    ASSERT_TRUE(valuesEqual(back.view(), v.view(), 0, nullptr));
    // Each block once again, so that what was shared is shared.
    Bytes again;
    serializeValue(back, Bytes::write, &again);
    ASSERT_EQ(again.bytes.size(), stream.bytes.size());
    std::string slowAgain;
    seen.clear();
    slowWrite(back, seen, slowAgain);
    ASSERT_EQ(again.bytes, slowAgain);
  }
  EXPECT_GT(ofLongTypes, vornath_test::cases(20000) / 4);
}

// A record of this text and these words.
std::string record(const std::string& typeText, std::uint64_t id,
                   const std::vector<std::uint64_t>& words) {
  const std::uint64_t length = typeText.size();
  std::string bytes(reinterpret_cast<const char*>(&length), 8);
  bytes += typeText;
  bytes.append(reinterpret_cast<const char*>(&id), 8);
  bytes.append(reinterpret_cast<const char*>(words.data()), words.size() * 8);
  return bytes;
}

std::string longLabel(char first) { return first + std::string(5000, 'y'); }

TEST(RecordTexts, AreParsedWhereTheyAreNotTheCanonicalOnes) {
  const std::string inner = "{ int* " + longLabel('i') + "; }";
  // As long as the canonical text, with the inner type's text in another place.
  const std::string outer = "{" + inner + "*  " + longLabel('o') + "; }";
  const TypePtr canonical = type("{ " + inner + "* " + longLabel('o') + "; }");
  ASSERT_EQ(canonical->textFingerprint().length, outer.size());
  const DynamicValue v = readBack(record(outer, 2, {4}) +
                                  record(" " + inner.substr(0, inner.size() - 2) + "}", 4, {0}));
  EXPECT_EQ(v.type(), canonical);
  EXPECT_EQ(blockType(blockOfWord(at<std::uint64_t>(v))).text(), inner);
}

TEST(RecordTexts, OfOneLengthThatDifferInOneCharacterAreOfTwoTypes) {
  const auto innerOf = [](char c) {
    std::string l = longLabel('i');
    l[1200] = c;
    return "{ int* " + l + "; }";
  };
  const std::string outer = "{ " + innerOf('p') + "* a; void* b; void* c; void* d; }";
  const DynamicValue v = readBack(record(outer, 2, {4, 6, 8, 10}) + record(innerOf('p'), 4, {0}) +
                                  record(innerOf('q'), 6, {0}) + record(innerOf('r'), 8, {0}) +
                                  record(innerOf('q'), 10, {0}));
  const char expected[] = {'p', 'q', 'r', 'q'};
  for (std::uint64_t i = 0; i < 4; ++i) {
    EXPECT_EQ(blockType(blockOfWord(at<std::uint64_t>(v, 8 * i))).text(), innerOf(expected[i]));
  }
}

TEST(RecordTexts, OfAnnotatedTypesGiveTheStrippedTypes) {
  const std::string inner = "{ int* " + longLabel('i') + "; }";
  const std::string outer = "{ " + inner + "* @desc=\"d\" a; void* b; }";
  const DynamicValue v =
      readBack(record(outer, 2, {4, 6}) + record(inner, 4, {0}) + record(inner, 6, {0}));
  EXPECT_EQ(v.typeOf().text(), "{ " + inner + "* a; void* b; }");
  EXPECT_EQ(&blockType(blockOfWord(at<std::uint64_t>(v, 0))),
            &blockType(blockOfWord(at<std::uint64_t>(v, 8))));
}

// n levels take time in the square of n for the texts alone; a second square would show here.
TEST(RecordTexts, OfALongChainOfReferencesAreNotBuiltForEachType) {
  const int levels = vornath_test::cases(3000);
  DynamicValue v = value("{ a = 1; b = 2; }");
  for (int i = 0; i < levels; ++i) {
    v = DynamicValue::structure({{"a", DynamicValue::reference(v)}, {"b", value("2")}});
  }
  Bytes stream;
  serializeValue(v, Bytes::write, &stream);
  const InternedType* t = &v.typeOf();
  const DynamicValue back = readBack(stream.bytes);
  ASSERT_EQ(back.type(), v.type());
  int built = 0;
  for (int i = 0; i < levels; ++i) {
    built += t->hasLongText() && t->knownText() != nullptr;
    t = fieldPart(*t, std::size_t{0}).type->get<Type::TRef>().target.get();
  }
  EXPECT_LE(built, 70);  // those of the outermost levels, which hosts may read
}

}  // namespace
}  // namespace qex::vornath::test
