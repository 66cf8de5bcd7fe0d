#include "values/write_protocol.hpp"

#include <optional>

#include "case_count.hpp"
#include "embed/view_writing.hpp"
#include "random_values.hpp"
#include "values_support.hpp"

namespace qex::vornath::test {
namespace {

TEST(CloneBlock, CarriesBytesAndLengthAndTakesReferences) {
  const DynamicValue target = value("1");
  DynamicValue v = DynamicValue::array({DynamicValue::reference(target)}, 1);
  v.setLength(0);
  const DynamicValue clone(cloneBlock(v.block()));
  EXPECT_NE(clone.block(), v.block());
  EXPECT_EQ(clone.block()->refCount, 1u);
  EXPECT_EQ(clone.block()->length, 0u);
  EXPECT_NE(clone.block()->shadowRefs, v.block()->shadowRefs);
  EXPECT_EQ(at<std::uint64_t>(clone), at<std::uint64_t>(v));
  EXPECT_EQ(count(target), 3u);
}

TEST(PrepareWrite, StaysInAnExclusiveBlock) {
  DynamicValue v = value("{ a = 1; }");
  vrntValue_t* const before = v.block();
  {
    const WriteScope write(v.blockHandle(), v.typeOf(), 0);
    EXPECT_EQ(write.data(), blockData(before));
  }
  EXPECT_EQ(v.block(), before);
}

TEST(PrepareWrite, MovesToACopyOfASharedBlock) {
  DynamicValue v = value("{ a = 1; b = &2; }");
  const DynamicValue other(v);
  vrntValue_t* const before = v.block();
  {
    const WriteScope write(v.blockHandle(), *v.view().field("a").type, 0);
    const std::int32_t a = 9;
    std::memcpy(write.data(), &a, sizeof(a));
  }
  EXPECT_NE(v.block(), before);
  EXPECT_EQ(count(v), 1u);
  EXPECT_EQ(count(other), 1u);
  EXPECT_EQ(text(v), "{ a = 9; b = &2; }");
  EXPECT_EQ(text(other), "{ a = 1; b = &2; }");
}

TEST(WriteProtocol, KeepsOldWordsInTheShadowArrayUntilTheCommit) {
  const DynamicValue target = value("1");
  DynamicValue v = DynamicValue::structure(
      {{"x", DynamicValue::reference(target)}, {"y", DynamicValue::reference(target)}});
  const std::uint64_t word = wordOfBlock(target.block());
  {
    const View y = v.view().field("y");
    const WriteScope write(v.blockHandle(), *y.type, y.offset);
    EXPECT_EQ(v.block()->shadowRefs[0], word);
    EXPECT_EQ(v.block()->shadowRefs[1], 0u);
    EXPECT_EQ(count(target), 3u);
    storeWord(write.data(), 0);
  }
  EXPECT_EQ(v.block()->shadowRefs[0], 0u);
  EXPECT_EQ(count(target), 2u);
}

TEST(WriteProtocol, MovesReferencesWithTheWords) {
  const DynamicValue before = value("1");
  const DynamicValue after = value("2");
  DynamicValue v = DynamicValue::reference(before);
  {
    const WriteScope write(v.blockHandle(), v.typeOf(), 0);
    storeWord(write.data(), wordOfBlock(after.block()));
  }
  EXPECT_EQ(count(before), 1u);
  EXPECT_EQ(count(after), 2u);
}

TEST(WriteProtocol, KeepsTheTargetOfAWordLeftAlone) {
  DynamicValue v = value("&7");
  { const WriteScope write(v.blockHandle(), v.typeOf(), 0); }
  EXPECT_EQ(text(v), "&7");
  EXPECT_EQ(blockOfWord(at<std::uint64_t>(v))->refCount, 1u);
}

TEST(WriteScope, CommitsOnAThrow) {
  const DynamicValue target = value("1");
  DynamicValue v = DynamicValue::reference(target);
  try {
    const WriteScope write(v.blockHandle(), v.typeOf(), 0);
    throw std::runtime_error("stop");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(v.block()->shadowRefs[0], 0u);
  EXPECT_EQ(count(target), 2u);
}

TEST(WriteSpan, NotifiesWithTypeAndOffset) {
  DynamicValue v(type("{ int a; int b; }"));
  std::vector<std::pair<const InternedType*, std::uint64_t>> calls;
  v.changeListener() = [&](const InternedType* t, std::uint64_t offset) {
    calls.emplace_back(t, offset);
  };
  const std::int32_t number = 3;
  const View b = v.view().field("b");
  writeSpan(v, *b.type, b.offset, &number);
  EXPECT_EQ(text(v), "{ a = 0; b = 3; }");
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0], std::pair(b.type, b.offset));
}

TEST(WriteSpan, TakesACountAndASourceOffset) {
  DynamicValue v = value("[ 1, 2, 3 ]");
  const std::int32_t numbers[] = {7, 8, 9};
  writeSpan(v, v.typeOf(), 0, numbers, 8, 4);
  EXPECT_EQ(text(v), "[ 8, 9, 3 ]");
}

TEST(WriteSpan, TakesASourceInTheSharedBlockThatItLeaves) {
  DynamicValue v = value("[ 1, 2, 3 ]");
  DynamicValue other(v);
  const char* const source = other.data();
  writeSpan(v, *v.view().element(2).type, 8, source);
  EXPECT_EQ(text(v), "[ 1, 2, 1 ]");
  EXPECT_EQ(text(other), "[ 1, 2, 3 ]");
}

TEST(WriteForeign, StoresTheForeignForm) {
  const DynamicValue target = value("1");
  DynamicValue v = DynamicValue::reference(target);
  writeForeign(v.view(), 5);
  EXPECT_EQ(at<std::uint64_t>(v), 11u);
  EXPECT_EQ(count(target), 1u);
  writeForeign(v.view(), 0);
  EXPECT_EQ(at<std::uint64_t>(v), 0u);
  DynamicValue f(type("(() => int)"));
  writeForeign(f.view(), 3, 4);
  EXPECT_EQ(at<std::uint64_t>(f, 0), 7u);
  EXPECT_EQ(at<std::uint64_t>(f, 8), 9u);
}

TEST(WriteData, CountsOnlyReferencesThatChange) {
  const DynamicValue stays = value("1");
  const DynamicValue goes = value("2");
  const DynamicValue comes = value("3");
  DynamicValue v = DynamicValue::structure(
      {{"a", DynamicValue::reference(stays)}, {"b", DynamicValue::reference(goes)}});
  const std::uint64_t words[] = {wordOfBlock(stays.block()), wordOfBlock(comes.block())};
  writeData(v, words, v.typeOf(), 0);
  EXPECT_EQ(text(v), "{ a = &1; b = &3; }");
  EXPECT_EQ(count(stays), 2u);
  EXPECT_EQ(count(goes), 1u);
  EXPECT_EQ(count(comes), 2u);
}

TEST(WriteData, LeavesOtherHoldersAlone) {
  DynamicValue v = value("{ a = 1; b = &2; }");
  const DynamicValue other(v);
  const DynamicValue source = value("{ a = 3; b = &4; }");
  int calls = 0;
  v.changeListener() = [&](const InternedType*, std::uint64_t) { ++calls; };
  writeData(v, source.data(), v.typeOf(), 0);
  EXPECT_EQ(text(v), "{ a = 3; b = &4; }");
  EXPECT_EQ(text(other), "{ a = 1; b = &2; }");
  EXPECT_EQ(calls, 1);
}

TEST(WriteData, TakesASourceThatTheOldReferencesKeepAlive) {
  // The list's rest becomes the list: the words written are all that holds the rest.
  DynamicValue list(type("{ void* next; int number; }"));
  {
    DynamicValue last(type("{ void* next; int number; }"));
    writeAs(last.view().field("number"), std::int32_t{2});
    writeAs(list.view().field("number"), std::int32_t{1});
    const std::uint64_t word = wordOfBlock(last.block());
    writeSpan(list, *list.view().field("next").type, 0, &word);
  }
  const auto* const rest = reinterpret_cast<const char*>(at<std::uintptr_t>(list));
  writeData(list, rest, list.typeOf(), 0);
  EXPECT_EQ(text(list), "{ next = $0x0000000000000000; number = 2; }");
}

TEST(WriteData, TakesManyReferences) {
  const DynamicValue target = value("1");
  DynamicValue v(type("int*[100]"));
  const std::vector<std::uint64_t> words(100, wordOfBlock(target.block()));
  writeData(v, words.data(), v.typeOf(), 0);
  EXPECT_EQ(count(target), 101u);
  const std::vector<std::uint64_t> none(100, 0);
  writeData(v, none.data(), v.typeOf(), 0);
  EXPECT_EQ(count(target), 1u);
}

// A type of one or more references among other fields, with lists of slots of every form.
std::string holderType(Random& random) {
  static const char* const kTypes[] = {"int*",
                                       "int*[5]",
                                       "{ int a; int* b; }[4]",
                                       "{ int* a; char b; int* c; }[33]",
                                       "{ int a; int*[3] b; (() => int) f; }",
                                       "{ float a; int*[12] b; }[3,2]",
                                       "{ char[3] a; { int b; int* c; } d; int e; }",
                                       "float[12]",
                                       "int*[0]",
                                       "{ int a; }"};
  return kTypes[random.below(10)];
}

TEST(WriteBytes, DoesWhatAWriteOfTheWholeValueDoes) {
  Random random(20261122);
  std::vector<DynamicValue> referees;
  for (int i = 0; i < 4; ++i) referees.push_back(value(std::to_string(i)));
  for (int i = 0; i < vornath_test::cases(200000); ++i) {
    const TypePtr t = type(holderType(random));
    const DynamicValue source = random.valueOf(t, referees);
    DynamicValue whole = random.valueOf(t, referees);
    DynamicValue bytes(whole.view());
    // A word is written as a whole, or not at all.
    const int size = static_cast<int>(t->size());
    int first = random.below(size + 1);
    int end = first + random.below(size + 1 - first);
    if (random.once(8)) first = 0, end = size;
    if (t->refSlotCount() != 0) first = first / 8 * 8, end = std::min((end + 7) / 8 * 8, size);
    const auto length = static_cast<std::size_t>(end - first);

    std::optional<DynamicValue> sharedWhole, sharedBytes;
    if (random.once(4)) sharedWhole = whole, sharedBytes = bytes;
    const auto before = counts(referees);
    {
      const WriteScope scope(whole.blockHandle(), *t, 0);
      std::memcpy(scope.data() + first, source.data() + first, length);
    }
    const auto between = counts(referees);
    writeBytes(bytes.blockHandle(), static_cast<std::uint64_t>(first), source.data() + first,
               length);
    const auto after = counts(referees);
    ASSERT_TRUE(sameBytes(bytes, whole)) << t->text();
    ASSERT_EQ(count(bytes), 1u);
    if (sharedBytes) {
      ASSERT_TRUE(sameBytes(*sharedBytes, *sharedWhole)) << t->text();
    }
    for (std::size_t r = 0; r < referees.size(); ++r) {
      ASSERT_EQ(after[r] - between[r], between[r] - before[r]) << t->text();
    }
    for (std::uint64_t slot = 0; slot < t->refSlotCount(); ++slot) {
      ASSERT_EQ(bytes.block()->shadowRefs[slot], 0u);
    }
  }
  for (const DynamicValue& referee : referees) EXPECT_EQ(count(referee), 1u);
}

TEST(WriteBytes, TakesASourceInTheSharedBlockThatItLeaves) {
  DynamicValue first = DynamicValue::array({value("1"), value("2"), value("3")}, 3);
  std::optional<DynamicValue> other(first);
  const char* const source = first.data();
  other.reset();
  writeBytes(first.blockHandle(), 4, source, 8);
  EXPECT_EQ(text(first), "[ 1, 1, 2 ]");
}

TEST(WriteBytes, OfNothingStillMovesToACopy) {
  DynamicValue first = value("[ 1, 2 ]");
  const DynamicValue other(first);
  writeBytes(first.blockHandle(), 0, nullptr, 0);
  EXPECT_NE(first.block(), other.block());
  EXPECT_EQ(text(first), "[ 1, 2 ]");
}

}  // namespace
}  // namespace qex::vornath::test
