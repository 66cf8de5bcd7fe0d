// How types with long texts, which aren't put together until somebody asks, are found by them.
#include <thread>
#include <vector>

#include "nests.hpp"
#include "types/type_factory.hpp"
#include "types/type_text.hpp"

namespace {

using namespace vornath_test;
using qex::vornath::InternedType;
using qex::vornath::kMaxShortTextLength;
using qex::vornath::TextFingerprint;
using qex::vornath::Type;
using qex::vornath::TypePtr;

// Twice as long as the longest short text.
std::string longText(const std::string& innermost) {
  return kReferences.text(innermost, static_cast<int>(2 * kMaxShortTextLength));
}

TypePtr reference(const TypePtr& target) {
  return Type::get_factory(true)->makeType(Type::TRef{target});
}

TEST(LongTexts, AreNotThereBeforeSomebodyAsks) {
  const TypePtr parsed = InternedType::parse(longText("int"));
  const TypePtr made = reference(parsed);
  EXPECT_NE(parsed->knownText(), nullptr);  // whoever parses a text has asked for it
  EXPECT_EQ(made->knownText(), nullptr);
  EXPECT_EQ(made->text(), longText("int") + "*");
  EXPECT_EQ(made->knownText(), &made->text());
}

TEST(LongTexts, BeginBehindTheLongestShortOne) {
  const int stars = static_cast<int>(kMaxShortTextLength) - 3;
  const TypePtr type = InternedType::parse(kReferences.text("int", stars));
  EXPECT_FALSE(type->hasLongText());
  EXPECT_EQ(type->text().size(), kMaxShortTextLength);
  EXPECT_TRUE(reference(type)->hasLongText());
}

TEST(LongTexts, LeadToTheTypeThatWasMadeLast) {
  const TypePtr older = InternedType::parse(longText("int @a=1"));
  const TypePtr newer = InternedType::parse(" " + longText("int @a=1"));
  ASSERT_NE(older, newer);
  EXPECT_EQ(older->text(), newer->text());
  EXPECT_EQ(InternedType::parse(longText("int @a=1")), newer);
  EXPECT_EQ(InternedType::parse(longText("int @a=1")), newer);
}

TEST(LongTexts, LeadToALivingTypeOrToANewOne) {
  InternedType::parse("int @a=1");  // makes the types that values keep for good
  const std::size_t before = Type::get_factory(true)->liveTypes();
  {
    TypePtr older = InternedType::parse(longText("int @a=1"));
    TypePtr newer = InternedType::parse(" " + longText("int @a=1"));
    newer = nullptr;
    // The entry has gone with the newer type.
    const TypePtr newest = InternedType::parse(longText("int @a=1"));
    EXPECT_NE(newest, older);
    EXPECT_EQ(InternedType::parse(longText("int @a=1")), newest);
    older = nullptr;
    EXPECT_EQ(InternedType::parse(longText("int @a=1"))->text(), longText("int @a=1"));
  }
  EXPECT_EQ(Type::get_factory(true)->liveTypes(), before);
}

TEST(LongTexts, OfPartsAreFoundWithAndWithoutHavingBeenFoundBefore) {
  const TypePtr outer = InternedType::parse(longText("int") + "*");
  const TypePtr part = outer->getIf<Type::TRef>()->target;
  EXPECT_EQ(part->knownText(), nullptr);
  EXPECT_EQ(InternedType::parse(longText("int")), part);
  EXPECT_EQ(InternedType::parse(longText("int")), part);
  EXPECT_NE(InternedType::parse(longText("float")), part);
}

TEST(LongTexts, AreMadeOnceByManyThreads) {
  const TypePtr type = reference(InternedType::parse(longText("int")));
  std::vector<const std::string*> texts(4);
  std::vector<std::thread> threads;
  for (const std::string*& text : texts) {
    threads.emplace_back([&text, &type] { text = &type->text(); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const std::string* text : texts) EXPECT_EQ(text, type->knownText());
}

TEST(LongTexts, WithAllKindsOfPartsAreThoseThatWereParsed) {
  const std::string filler = "float3 " + std::string(kMaxShortTextLength, 'f') + "; ";
  for (const std::string& part :
       {std::string("enum { A( int x, { half h; }*[2,3] y ) @n=2 @t=\"words\"; B; }"),
        std::string("int[,,]*"), std::string("char4[]*"), std::string("int[1,2,3,4] @d=1.5"),
        std::string("((int, { float f; } @m) => (() => bool)[2])"), std::string("void*")}) {
    const std::string inner = "{ " + filler + part + " b; }";
    const std::string text = "{ " + inner + " c; " + part + " d; " + inner + "*[,]* e; } @z";
    const TypePtr type = InternedType::parse(text);
    EXPECT_TRUE(type->hasLongText());
    EXPECT_EQ(type->text(), text);
    EXPECT_EQ(type->textFingerprint().length, text.size());
    TextFingerprint whole;
    whole.add(text);
    EXPECT_EQ(type->textFingerprint().digest, whole.digest);
    EXPECT_EQ(type->textFingerprint().length, whole.length);
  }
}

}  // namespace
