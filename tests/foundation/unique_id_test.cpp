#include "vornath_data/unique_id.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <iomanip>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using vrnt::UniqueId;

constexpr char kEmptyDigest[] = "2ac0ee3f15aeaf1a502fad4ae7a98832";
constexpr char kAbcDigest[] = "8275618601ff911fb1d3bbaae5a9276d";

std::string print(const UniqueId& id) {
  std::ostringstream stream;
  stream << id;
  return stream.str();
}

UniqueId counting() {
  UniqueId id;
  std::uint8_t next = 0;
  for (std::uint8_t& byte : id) byte = next++;
  return id;
}

TEST(UniqueId, IsSixteenBytesAndNullAtFirst) {
  EXPECT_EQ(sizeof(UniqueId), 16U);
  EXPECT_EQ(UniqueId::size(), 16);
  EXPECT_TRUE(UniqueId().isNull());
  EXPECT_TRUE(UniqueId::null().isNull());
  EXPECT_EQ(print(UniqueId::null()), std::string(32, '0'));
}

TEST(UniqueId, IsNotNullWithAnyByteSet) {
  for (int i = 0; i < 16; ++i) {
    UniqueId id;
    id.begin()[i] = 1;
    EXPECT_FALSE(id.isNull()) << i;
  }
}

TEST(UniqueId, EqualsOnlyInAllBytes) {
  const UniqueId id = counting();
  for (int i = 0; i < 16; ++i) {
    UniqueId other = id;
    EXPECT_TRUE(other == id);
    other.begin()[i] ^= 0x80;
    EXPECT_FALSE(other == id) << i;
    EXPECT_TRUE(other != id) << i;
  }
}

TEST(UniqueId, GivesItsBytesAsARange) {
  const UniqueId id = counting();
  EXPECT_EQ(id.end() - id.begin(), 16);
  EXPECT_EQ(id.begin()[0], 0);
  EXPECT_EQ(id.begin()[15], 15);
}

TEST(UniqueId, CopiesAndMovesItsBytes) {
  UniqueId source = counting();
  UniqueId assigned;
  EXPECT_EQ(&(assigned = source), &assigned);
  EXPECT_TRUE(assigned == counting());
  UniqueId moved;
  EXPECT_EQ(&(moved = std::move(source)), &moved);
  EXPECT_TRUE(moved == counting());
  UniqueId& self = moved;
  moved = self;
  EXPECT_TRUE(moved == counting());
}

TEST(UniqueIdHash, GivesTheReferenceDigests) {
  EXPECT_EQ(print(UniqueId::hash("")), kEmptyDigest);
  EXPECT_EQ(print(UniqueId::hash("abc")), kAbcDigest);
  EXPECT_EQ(print(UniqueId::hash("abc", 3)), kAbcDigest);
}

TEST(UniqueIdHash, OfAnEmptyTextIsNotNull) { EXPECT_FALSE(UniqueId::hash("").isNull()); }

TEST(UniqueIdHash, AllowsNullWithoutBytes) {
  EXPECT_EQ(print(UniqueId::hash(nullptr, 0)), kEmptyDigest);
}

TEST(UniqueIdHash, StopsAtTheFirstNulWithoutASizeAndCountsItWithOne) {
  const char text[] = "abc\0def";
  EXPECT_EQ(print(UniqueId::hash(text)), kAbcDigest);
  EXPECT_FALSE(UniqueId::hash(text, 7) == UniqueId::hash("abc"));
  EXPECT_FALSE(UniqueId::hash("abc", 4) == UniqueId::hash("abc", 3));
}

TEST(UniqueIdHash, LeavesAFreshStateForTheNextCall) {
  static_cast<void>(UniqueId::hash("something else"));
  EXPECT_EQ(print(UniqueId::hash("abc")), kAbcDigest);
  EXPECT_EQ(print(UniqueId::hash("")), kEmptyDigest);
}

TEST(UniqueIdHash, IsTheSameOnEveryThread) {
  std::array<UniqueId, 4> ids;
  std::vector<std::thread> threads;
  for (UniqueId& id : ids) {
    threads.emplace_back([&id] {
      for (int i = 0; i < 1000; ++i) id = UniqueId::hash("abc");
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (const UniqueId& id : ids) EXPECT_EQ(print(id), kAbcDigest);
}

struct HashAtTheEnd {
  HashAtTheEnd() = default;
  HashAtTheEnd(const HashAtTheEnd&) = delete;
  HashAtTheEnd& operator=(const HashAtTheEnd&) = delete;
  ~HashAtTheEnd() { std::_Exit(print(UniqueId::hash("abc")) == kAbcDigest ? 7 : 1); }
};

// The object ends after everything that the first hash made.
TEST(UniqueIdHashDeathTest, IsTheSameWhileTheProcessEnds) {
  EXPECT_EXIT(
      {
        static const HashAtTheEnd last;
        static_cast<void>(UniqueId::hash("first"));
        std::exit(0);
      },
      testing::ExitedWithCode(7), "");
}

TEST(UniqueIdHasher, IsOnePointer) { EXPECT_EQ(sizeof(UniqueId::Hasher), sizeof(void*)); }

TEST(UniqueIdHasher, GivesTheSameDigestForEverySplit) {
  std::string content;
  for (int i = 0; i < 700; ++i) content += static_cast<char>(i * 37 + 11);
  const UniqueId whole = UniqueId::hash(content.data(), content.size());
  for (const std::size_t piece : {1U, 3U, 64U, 127U, 128U, 129U, 256U, 699U, 700U}) {
    UniqueId::Hasher hasher;
    for (std::size_t at = 0; at < content.size(); at += piece) {
      hasher.update(content.data() + at, std::min(piece, content.size() - at));
      hasher.update(content.data(), 0);
    }
    EXPECT_TRUE(hasher.finalize() == whole) << "pieces of " << piece;
  }
}

TEST(UniqueIdHasher, FinalizedTwiceGivesTheEmptyDigestTheSecondTime) {
  UniqueId::Hasher hasher;
  hasher.update("abc", 3);
  EXPECT_EQ(print(hasher.finalize()), kAbcDigest);
  EXPECT_EQ(print(hasher.finalize()), kEmptyDigest);
}

TEST(UniqueIdHasher, BeginsANewMessageAfterFinalize) {
  UniqueId::Hasher hasher;
  hasher.update("first", 5);
  static_cast<void>(hasher.finalize());
  hasher.update("a", 1);
  hasher.update("bc", 2);
  EXPECT_EQ(print(hasher.finalize()), kAbcDigest);
}

TEST(UniqueIdGenerate, SetsVersionAndVariant) {
  for (int i = 0; i < 200; ++i) {
    const UniqueId id = UniqueId::generate();
    EXPECT_EQ(id.begin()[6] & 0xF0, 0x40);
    EXPECT_EQ(id.begin()[8] & 0xC0, 0x80);
    EXPECT_FALSE(id.isNull());
  }
}

TEST(UniqueIdGenerate, GivesAnotherOneEachTimeOnEveryThread) {
  constexpr int kThreads = 4;
  constexpr int kEach = 500;
  std::vector<std::vector<std::string>> made(kThreads);
  std::vector<std::thread> threads;
  for (auto& own : made) {
    threads.emplace_back([&own] {
      for (int i = 0; i < kEach; ++i) own.push_back(print(UniqueId::generate()));
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::set<std::string> all;
  for (const auto& own : made) all.insert(own.begin(), own.end());
  EXPECT_EQ(all.size(), static_cast<std::size_t>(kThreads * kEach));
}

TEST(UniqueIdGenerate, LeavesEveryOtherBitToChance) {
  std::array<std::uint8_t, 16> everSet{};
  std::array<std::uint8_t, 16> everClear{};
  for (int i = 0; i < 500; ++i) {
    const UniqueId id = UniqueId::generate();
    for (std::size_t k = 0; k < 16; ++k) {
      everSet[k] = static_cast<std::uint8_t>(everSet[k] | id.begin()[k]);
      everClear[k] = static_cast<std::uint8_t>(everClear[k] | ~id.begin()[k]);
    }
  }
  for (std::size_t k = 0; k < 16; ++k) {
    const int fixed = k == 6 ? 0xF0 : k == 8 ? 0xC0 : 0;
    EXPECT_EQ((everSet[k] & everClear[k]) | fixed, 0xFF) << k;
  }
}

TEST(UniqueIdPrint, WritesByteZeroFirstInLowerCase) {
  UniqueId id = counting();
  id.begin()[0] = 0xAB;
  EXPECT_EQ(print(id), "ab0102030405060708090a0b0c0d0e0f");
}

TEST(UniqueIdPrint, HonoursUpperCase) {
  UniqueId id = counting();
  id.begin()[0] = 0xAB;
  std::ostringstream stream;
  stream << std::uppercase << id;
  EXPECT_EQ(stream.str(), "AB0102030405060708090A0B0C0D0E0F");
}

TEST(UniqueIdPrint, LeavesTheFormatStateAsItWas) {
  std::ostringstream stream;
  stream << std::oct << std::setfill('*') << std::setw(7);
  const auto flags = stream.flags();
  stream << counting();
  EXPECT_EQ(stream.flags(), flags);
  EXPECT_EQ(stream.width(), 7);
  EXPECT_EQ(stream.fill(), '*');
  EXPECT_EQ(stream.str(), "000102030405060708090a0b0c0d0e0f") << "the width is each byte's own";
  stream.str("");
  stream << 8;
  EXPECT_EQ(stream.str(), "*****10");
}

TEST(UniqueIdParse, ReadsWhatIsPrinted) {
  for (int i = 0; i < 100; ++i) {
    const UniqueId id = UniqueId::generate();
    const auto parsed = UniqueId::parse(print(id).c_str());
    ASSERT_TRUE(parsed.hasValue());
    EXPECT_TRUE(*parsed == id);
  }
}

TEST(UniqueIdParse, FailsOnATextThatEndsTooEarly) {
  const std::string full(32, 'a');
  for (const std::size_t length : {0U, 1U, 2U, 15U, 30U, 31U}) {
    const auto parsed = UniqueId::parse(full.substr(0, length).c_str());
    ASSERT_FALSE(parsed.hasValue()) << length;
    EXPECT_EQ(parsed.error().code(), vrnt::ErrorCode::ParseFailed);
    EXPECT_STREQ(parsed.error().message(), "cannot parse unique ID: unexpected end of string");
  }
}

TEST(UniqueIdParse, LooksAtNothingBehindThe32ndCharacter) {
  const auto parsed = UniqueId::parse("000102030405060708090a0b0c0d0e0fz");
  ASSERT_TRUE(parsed.hasValue());
  EXPECT_TRUE(*parsed == counting());
}

TEST(UniqueIdParse, ReadsEachPairAsTheStandardConversionDoes) {
  const std::pair<const char*, int> pairs[] = {
      {"ab", 0xAB}, {"AB", 0xAB}, {"aB", 0xAB}, {"a-", 0x0A}, {" a", 0x0A}, {"\ta", 0x0A},
      {"+a", 0x0A}, {"-a", 0xF6}, {"0x", 0x00}, {"ag", 0x0A}, {"-1", 0xFF}, {"00", 0x00}};
  for (const auto& [pair, value] : pairs) {
    for (const std::size_t at : {0U, 7U, 15U}) {
      std::string text(32, '0');
      text.replace(2 * at, 2, pair);
      const auto parsed = UniqueId::parse(text.c_str());
      ASSERT_TRUE(parsed.hasValue()) << pair;
      EXPECT_EQ(parsed->begin()[at], value) << pair;
    }
  }
}

TEST(UniqueIdParse, FailsOnAPairThatHoldsNoNumber) {
  for (const char* pair : {"g1", "--", "zz", "  ", "+-", "x0"}) {
    for (const std::size_t at : {0U, 15U}) {
      std::string text(32, '0');
      text.replace(2 * at, 2, pair);
      const auto parsed = UniqueId::parse(text.c_str());
      ASSERT_FALSE(parsed.hasValue()) << pair;
      EXPECT_EQ(parsed.error().code(), vrnt::ErrorCode::ParseFailed);
      EXPECT_STREQ(parsed.error().message(), "cannot parse unique id: contains non-hex numbers");
    }
  }
}

TEST(UniqueIdParse, ReportsThePairThatComesFirst) {
  EXPECT_STREQ(UniqueId::parse("zz").error().message(),
               "cannot parse unique id: contains non-hex numbers");
  EXPECT_STREQ(UniqueId::parse("z").error().message(),
               "cannot parse unique ID: unexpected end of string");
}

}  // namespace
