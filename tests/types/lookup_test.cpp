// How the factory finds types: the digests, the table that is read without a lock, and the memory
// for types, each against a plain model.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "type_support.hpp"
#include "types/digest_table.hpp"
#include "types/text_digest.hpp"
#include "types/text_fingerprint.hpp"
#include "types/type_digest.hpp"
#include "types/type_order.hpp"
#include "types/type_pool.hpp"

namespace {

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::DigestTable;
using qex::vornath::equalInterned;
using qex::vornath::kMaxWholeSample;
using qex::vornath::sampledDigest;
using qex::vornath::TextFingerprint;
using qex::vornath::typeDigest;
using qex::vornath::TypePool;
using qex::vornath::wholeDigest;

class Random {
 public:
  explicit Random(unsigned seed) : engine_(seed) {}

  std::size_t below(std::size_t n) {
    return std::uniform_int_distribution<std::size_t>(0, n - 1)(engine_);
  }
  std::string text(std::size_t length) {
    std::string text(length, ' ');
    for (char& c : text) c = static_cast<char>(below(256));
    return text;
  }

 private:
  std::mt19937_64 engine_;
};

TextFingerprint fingerprintOf(std::string_view text) {
  TextFingerprint fingerprint;
  fingerprint.add(text);
  return fingerprint;
}

// The digest by its definition: one character after the other.
std::uint64_t digestByCharacters(std::string_view text) {
  __extension__ using Wide = unsigned __int128;
  constexpr Wide kPrime = (Wide{1} << 61) - 1;
  Wide digest = 0;
  for (const char c : text) digest = (digest * 251 + static_cast<unsigned char>(c)) % kPrime;
  return static_cast<std::uint64_t>(digest);
}

}  // namespace

TEST(TextFingerprints, AreThoseOfTheCharactersOneAfterTheOther) {
  Random random(1);
  for (int i = 0; i < 20'000; ++i) {
    const std::string text = random.text(random.below(200));
    ASSERT_EQ(fingerprintOf(text).digest, digestByCharacters(text));
    ASSERT_EQ(fingerprintOf(text).length, text.size());
  }
  const std::string highest(10'000, '\xff');
  EXPECT_EQ(fingerprintOf(highest).digest, digestByCharacters(highest));
  EXPECT_EQ(fingerprintOf("").digest, 0u);
}

TEST(TextFingerprints, DoNotDependOnHowATextIsCut) {
  Random random(2);
  for (int i = 0; i < 5'000; ++i) {
    const std::string text = random.text(random.below(6'000));
    TextFingerprint pieces;
    for (std::string_view rest = text; !rest.empty();) {
      const std::string_view piece =
          rest.substr(0, random.below(3) == 0 ? random.below(3) : random.below(2'000));
      rest.remove_prefix(piece.size());
      if (random.below(2) == 0) {
        pieces.add(piece);
      } else {
        pieces.add(fingerprintOf(piece));
      }
    }
    ASSERT_EQ(pieces.length, text.size());
    ASSERT_EQ(pieces.digest, fingerprintOf(text).digest);
  }
}

TEST(TextFingerprints, OfHugeRepetitionsAreComputedFromTheirHalves) {
  TextFingerprint doubled = fingerprintOf("ab");
  std::string text = "ab";
  for (int i = 0; i < 60; ++i) {
    const TextFingerprint half = doubled;
    doubled.add(half);
    if (text.size() < 100'000) {
      text += text;
      ASSERT_EQ(doubled.digest, digestByCharacters(text));
    }
  }
  EXPECT_EQ(doubled.length, std::uint64_t{1} << 61);
}

TEST(TextDigests, OfShortTextsReadAllOfThem) {
  Random random(3);
  for (std::size_t length = 1; length <= kMaxWholeSample; ++length) {
    const std::string text = random.text(length);
    EXPECT_EQ(sampledDigest(text), wholeDigest(text));
    for (std::size_t i = 0; i < length; ++i) {
      std::string other = text;
      other[i] = static_cast<char>(other[i] + 1 + static_cast<char>(random.below(255)));
      ASSERT_NE(sampledDigest(other), sampledDigest(text)) << length << " at " << i;
    }
  }
  EXPECT_EQ(sampledDigest(""), wholeDigest({}));
}

TEST(TextDigests, TellLengthsApart) {
  std::set<std::uint64_t> whole;
  std::set<std::uint64_t> sampled;
  for (std::size_t length = 0; length < 5'000; ++length) {
    EXPECT_TRUE(whole.insert(wholeDigest(std::string(length, '\0'))).second) << length;
    EXPECT_TRUE(sampled.insert(sampledDigest(std::string(length, '\0'))).second) << length;
  }
}

TEST(TextDigests, OfWholeLongTextsChangeWithEachCharacter) {
  Random random(4);
  const std::string text = random.text(3'001);
  for (std::size_t i = 0; i < text.size(); ++i) {
    std::string other = text;
    other[i] = static_cast<char>(other[i] ^ 1);
    ASSERT_NE(wholeDigest(other), wholeDigest(text)) << i;
  }
}

TEST(TypeDigests, AreEqualForEqualDescriptionsOnly) {
  // Descriptions that differ in as little as they can.
  const TypePtr i = make(Base::Int);
  const TypePtr f = make(Base::Float);
  const TypePtr annotated = make(Base::Int, {{"a", flag()}});
  std::vector<TypePtr> types{i, f, annotated};
  for (const char* kind : {"enum { A; }",
                           "enum { B; }",
                           "enum { A; B; }",
                           "enum { A @a; }",
                           "enum { A @a=\"\"; }",
                           "{ }",
                           "{ int a; }",
                           "{ int b; }",
                           "{ float a; }",
                           "{ int a; int b; }",
                           "{ int @a a; }",
                           "int[]",
                           "int[1]",
                           "int[2]",
                           "float[1]",
                           "int[,]",
                           "int[1,2]",
                           "int[2,1]",
                           "int[,,]",
                           "int[1,1,2]",
                           "int[,,,]",
                           "int[1,1,1,2]",
                           "void*",
                           "int*",
                           "int**",
                           "(() => int)",
                           "((int) => int)",
                           "((int, int) => int)",
                           "((int) => float)",
                           "((float) => int)",
                           "int @a=\"\"",
                           "int @a=\"b\"",
                           "int @b",
                           "int @a @b",
                           "int @a=1"}) {
    types.push_back(parsed(kind));
  }
  for (const TypePtr& a : types) {
    for (const TypePtr& b : types) {
      const bool same = compareTypes(a->desc(), a->metadata(), b->desc(), b->metadata()) == 0;
      EXPECT_EQ(same, a == b);
      EXPECT_EQ(equalInterned(a->desc(), a->metadata(), b->desc(), b->metadata()), same)
          << a->text() << " and " << b->text();
      EXPECT_EQ(typeDigest(a->desc(), a->metadata()) == typeDigest(b->desc(), b->metadata()), same)
          << a->text() << " and " << b->text();
    }
  }
}

TEST(TypeDigests, LeavePayloadsOut) {
  const Enum with(Constructors{{"A", {}, Struct(Fields{{make(Base::Int), "x"}})}});
  const Enum without(Constructors{{"A", {}, {}}});
  EXPECT_EQ(typeDigest(with, {}), typeDigest(without, {}));
}

TEST(TypeDigests, OfArraysAreThoseOfTheirDescriptions) {
  const TypePtr element = make(Base::Half3);
  for (const int extent : {0, 1, 7, 166, 2'147'483'647}) {
    EXPECT_EQ(qex::vornath::arrayDigest(*element, extent),
              typeDigest(Array<int>(element, extent), {}));
    EXPECT_EQ(factory().findArray(*element, extent), nullptr);
    const TypePtr array = makeArray(element, extent);
    EXPECT_EQ(factory().findArray(*element, extent), array);
    const TypePtr annotated = makeArray(element, extent, {{"a", flag()}});
    EXPECT_EQ(factory().findArray(*element, extent), array);
  }
  EXPECT_EQ(factory().findArray(*element, -1), nullptr);
}

TEST(DigestTables, AnswerAsAPlainMapDoes) {
  Random random(5);
  std::vector<TypePtr> types;
  for (int i = 0; i < 8; ++i) {
    types.push_back(makeArray(make(Base::Char), 1'000 + i));
  }
  DigestTable table(64);
  std::multimap<std::uint64_t, const InternedType*> model;
  // Few digests, and digests that share the first place, so that entries stand behind each other.
  const auto digest = [&random] {
    return random.below(2) == 0 ? random.below(40) : random.below(40) << 32;
  };
  for (int phase = 0; phase < 6; ++phase) {
    const std::size_t share = phase % 2 == 0 ? 7 : 3;  // of insertions, in ten
    for (int step = 0; step < 4'000; ++step) {
      const std::uint64_t key = digest();
      const InternedType* const type = types[random.below(types.size())].get();
      const auto isType = [type](const InternedType& other) { return &other == type; };
      const auto [first, last] = model.equal_range(key);
      const auto entry = std::find_if(first, last, [&](auto& e) { return e.second == type; });
      const bool there = entry != last;
      ASSERT_EQ(table.findLocked(key, isType) == type, there);
      ASSERT_EQ(table.find(key, isType).get() == type, there);
      if (random.below(10) < share) {
        if (there) continue;
        table.reserveLocked(1);
        table.insertLocked(key, type);
        model.emplace(key, type);
      } else if (there && random.below(4) == 0) {
        const InternedType* const other = types[random.below(types.size())].get();
        const bool otherThere =
            std::any_of(first, last, [&](auto& e) { return e.second == other; });
        if (otherThere) continue;
        ASSERT_EQ(table.replaceLocked(key, other, isType), type);
        entry->second = other;
      } else {
        table.eraseLocked(key, isType);
        if (there) model.erase(entry);
      }
      ASSERT_EQ(table.sizeLocked(), model.size());
    }
    for (const auto& [key, type] : model) {
      const auto isType = [type = type](const InternedType& other) { return &other == type; };
      ASSERT_EQ(table.find(key, isType).get(), type);
    }
  }
}

TEST(DigestTables, KeepTheirEntriesWhileTheyGrowAndShrink) {
  const TypePtr type = make(Base::Char4);
  const auto any = [](const InternedType&) { return true; };
  DigestTable table(64);
  const std::uint64_t kMany = 30'000;
  const auto spread = [](std::uint64_t i) { return i * 0x9E3779B97F4A7C15U; };
  for (int round = 0; round < 3; ++round) {
    for (std::uint64_t i = 0; i < kMany; ++i) {
      table.reserveLocked(1);
      table.insertLocked(spread(i), type.get());
    }
    for (std::uint64_t i = 0; i < kMany; ++i) ASSERT_EQ(table.find(spread(i), any), type);
    ASSERT_EQ(table.find(spread(kMany), any), nullptr);
    for (std::uint64_t i = 10; i < kMany; ++i) table.eraseLocked(spread(i), any);
    table.reserveLocked(1);  // the table shrinks here
    for (std::uint64_t i = 0; i < 20; ++i) {
      ASSERT_EQ(table.find(spread(i), any), i < 10 ? type : nullptr);
    }
    for (std::uint64_t i = 0; i < 10; ++i) table.eraseLocked(spread(i), any);
    ASSERT_EQ(table.sizeLocked(), 0u);
  }
}

TEST(TypePools, KeepTheCountsOfDeadTypesAtZero) {
  Random random(6);
  TypePool pool;
  std::set<void*> used;
  std::set<void*> known;
  for (int phase = 0; phase < 8; ++phase) {
    const std::size_t share = phase % 2 == 0 ? 9 : 1;
    for (int step = 0; step < 3'000; ++step) {
      if (used.empty() || random.below(10) < share) {
        void* const type = pool.allocate();
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(type) % alignof(InternedType), 0u);
        ASSERT_TRUE(used.insert(type).second);
        known.insert(type);
        ASSERT_EQ(qex::vornath::referenceCount(type), 0u);
        qex::vornath::referenceCount(type) = 1;
        ASSERT_TRUE(qex::vornath::addReferenceIfAlive(type));
        std::fill_n(static_cast<char*>(type), sizeof(InternedType), '\xee');
      } else {
        void* const type = *used.begin();
        used.erase(used.begin());
        qex::vornath::referenceCount(type) = 0;
        pool.free(type);
      }
    }
    for (void* const type : known) {
      ASSERT_EQ(qex::vornath::addReferenceIfAlive(type), used.contains(type));
    }
    // Rooms are used again.
    EXPECT_LT(known.size(), 30'000u);
    while (phase % 2 == 1 && !used.empty()) {
      qex::vornath::referenceCount(*used.begin()) = 0;
      pool.free(*used.begin());
      used.erase(used.begin());
    }
  }
  for (void* const type : known) ASSERT_FALSE(qex::vornath::addReferenceIfAlive(type));
}

TEST(TextLookUps, FindTypesWhoseTextsHaveTheSameSamples) {
  // They differ in one place that the samples leave out, so all have one sampled digest.
  const std::string before = "{ int " + std::string(1'000, 'x');
  std::vector<TypePtr> types;
  std::vector<std::string> texts;
  for (int i = 0; i < 300; ++i) {
    std::string text = before + std::string(1'000, 'y') + "; }";
    const std::string number = std::to_string(1'000 + i);
    // Behind the first eight characters of a sample.
    const std::size_t step = (text.size() - 8) / 15;
    text.replace(3 * step + 20, number.size(), number);
    texts.push_back(text);
    types.push_back(parsed(text));
  }
  for (const std::string& text : texts) ASSERT_EQ(sampledDigest(text), sampledDigest(texts[0]));
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(parsed(texts[i]), types[i]);
  }
  for (std::size_t i = 0; i < texts.size(); i += 2) types[i].reset();
  for (std::size_t i = 1; i < texts.size(); i += 2) ASSERT_EQ(parsed(texts[i]), types[i]);
  for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(parsed(texts[i])->text(), texts[i]);
}

TEST(TextLookUps, FindLongTextsWithTheSameSamples) {
  std::vector<TypePtr> types;
  std::vector<std::string> texts;
  for (int i = 0; i < 40; ++i) {
    std::string text = "{ int " + std::string(10'000, 'x') + "; }";
    const std::size_t step = (text.size() - 8) / 15;
    const std::string number = std::to_string(1'000 + i);
    text.replace(3 * step + 20, number.size(), number);
    texts.push_back(text);
    types.push_back(parsed(text));
    ASSERT_TRUE(types.back()->hasLongText());
  }
  for (int round = 0; round < 2; ++round) {
    for (std::size_t i = 0; i < texts.size(); ++i) ASSERT_EQ(parsed(texts[i]), types[i]);
  }
  for (std::size_t i = 0; i < texts.size(); i += 2) types[i].reset();
  for (std::size_t i = 1; i < texts.size(); i += 2) ASSERT_EQ(parsed(texts[i]), types[i]);
}

TEST(TextLookUps, OfTextsOfAllLengthsGiveTheirTypes) {
  // Across the lengths at which a look-up takes another way.
  std::vector<TypePtr> types;
  std::vector<std::string> texts;
  for (std::size_t length = 12; length < 5'000; length += length < 300 ? 1 : 97) {
    texts.push_back("{ int x" + std::string(length - 10, 'y') + "; }");
    ASSERT_EQ(texts.back().size(), length);
    types.push_back(parsed(texts.back()));
  }
  for (std::size_t i = 0; i < texts.size(); ++i) {
    ASSERT_EQ(parsed(texts[i]), types[i]);
    ASSERT_EQ(parsed(" " + texts[i]), types[i]);
  }
}
