// Specialization of deep types beside what the flat functions show.

#include "values/specialization.hpp"

#include <cstring>

#include "embed/specialization_difference.hpp"
#include "embed/view_writing.hpp"
#include "nests.hpp"
#include "peak_bytes.hpp"
#include "types/ref_slots.hpp"
#include "values/bounds.hpp"
#include "values/dynamic_value.hpp"
#include "values/write_protocol.hpp"
#include "vornath_data/result.hpp"

namespace {

using namespace vornath_test;
using qex::vornath::DynamicValue;
using qex::vornath::InternedType;
using qex::vornath::TypePtr;

TEST(DeepSpecialization, LeavesWhatIsNotCovered) {
  runOnMainStack([] {
    // In each level an "n" that is covered, and in the innermost one something that isn't.
    const TypePtr full = InternedType::parse(kLastFields.text("{ int m; float f; }"));
    const TypePtr covered = InternedType::parse(kLastFields.text("{ int m; }"));
    const PeakBytes peak;
    const TypePtr left = qex::vornath::specializationRemainder(*full, *covered);
    EXPECT_TRUE(left->text() == kStructs.text("{ float f; }"));
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST(DeepSpecialization, RefusesWhatTheFullTypeLacks) {
  runOnMainStack([] {
    const TypePtr full = InternedType::parse(kLastFields.text("{ int m; }"));
    const TypePtr covered = InternedType::parse(kLastFields.text("{ float m; }"));
    try {
      qex::vornath::specializationRemainder(*full, *covered);
      ADD_FAILURE() << "no exception";
    } catch (const vrnt::Exception& caught) {
      const std::string words = caught.what();
      const std::string end = "Type mismatch for field m: type float does not match type int";
      ASSERT_GT(words.size(), end.size());
      EXPECT_EQ(words.substr(words.size() - end.size()), end);
    }
  });
}

TEST(DeepSpecialization, SeesADifferenceInside) {
  runOnMainStack([] {
    const TypePtr type = InternedType::parse(kLastFields.text());
    const DynamicValue a(type);
    DynamicValue b(type);
    EXPECT_FALSE(qex::vornath::specializationDiffers(a.view(), b.view(), *type));
    std::memset(qex::vornath::blockData(b.block()) + type->size() - 4, 1, 4);
    EXPECT_TRUE(qex::vornath::specializationDiffers(a.view(), b.view(), *type));
  });
}

TEST(DeepBounds, ReachTheInnermostPart) {
  runOnMainStack([] {
    const TypePtr type = InternedType::parse(kLastFields.text("int @min=-3 @default=5"));
    const auto bounds = qex::vornath::makeValueBounds(type);
    const auto last = [&type](const DynamicValue& value) {
      std::int32_t number = 0;
      std::memcpy(&number, value.data() + type->size() - sizeof(number), sizeof(number));
      return number;
    };
    EXPECT_EQ(last(bounds[qex::vornath::kDefault]), 5);
    EXPECT_EQ(last(bounds[qex::vornath::kMin]), -3);
    EXPECT_EQ(last(bounds[qex::vornath::kMax]), 0x7FFFFFFF);
  });
}

TEST(DeepReferenceSlots, AreListedWhenAskedFor) {
  runOnMainStack([] {
    const PeakBytes peak;
    const TypePtr type = InternedType::parse(kReferencesAtEachLevel.text("((int) => int)[3]"));
    EXPECT_EQ(type->refSlotCount(), std::uint64_t{kDepth} + 6);
    // A reference and the next level behind it: no gaps.
    const auto& slots = type->refSlots();
    ASSERT_EQ(slots.size(), type->refSlotCount());
    for (std::size_t i = 0; i < slots.size(); ++i) ASSERT_EQ(slots[i], i);
    EXPECT_EQ(&type->refSlots(), &slots);
    EXPECT_LT(peak.value(), kMaxMemory);
  });
}

TEST(DeepReferenceSlots, OfArraysOfStructsAreListedInOrder) {
  // More than a type lists from the start: of each element the first word and the third.
  const TypePtr type =
      InternedType::parse("{ int n; { void* a; int n; void* b; }[50,2] s; void* z; }");
  const auto& slots = type->refSlots();
  ASSERT_EQ(slots.size(), 201u);
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_EQ(slots[2 * i], 1 + 3 * i);
    EXPECT_EQ(slots[2 * i + 1], 1 + 3 * i + 2);
  }
  EXPECT_EQ(slots.back(), 301u);
}

TEST(ReferenceSlots, AreWalkedAsTheyAreListed) {
  for (const char* text :
       {"int", "int[100]", "void*", "void*[0]", "void*[64]", "void*[65]", "void*[10][10]",
        "void*[4][5,6]", "void*[0][100]", "{ void* a; int n; void* b; }[50,2]",
        "(() => int)[7,8,9]", "{ void*[100] a; int n; void* b; }",
        "{ void*[100] a; int n; void* b; }[3]", "{ { int*[3] a; }[30] b; }[2][1][2]",
        "{ int n; void*[70][1] a; }[1]"}) {
    const TypePtr type = InternedType::parse(text);
    const qex::vornath::RefSlots walked(*type);
    std::vector<std::uint64_t> places;
    for (const std::uint64_t place : walked) places.push_back(place);
    const auto& listed = type->refSlots();
    ASSERT_EQ(places, listed) << text;
    places.clear();
    walked.forEach([&places](std::uint64_t place) { places.push_back(place); });
    ASSERT_EQ(places, listed) << text;
    EXPECT_EQ(walked.size(), listed.size()) << text;
    EXPECT_EQ(walked.empty(), listed.empty()) << text;
    for (std::size_t i = 0; i < listed.size(); ++i) {
      ASSERT_EQ(walked[i], listed[i]) << text;
      ASSERT_EQ(*walked.from(i), listed[i]) << text;
    }
    EXPECT_TRUE(walked.from(listed.size()) == walked.end()) << text;
  }
}

// A list would have two million entries.
TEST(ReferenceSlots, OfALongArrayTakeNoMemory) {
  const PeakBytes peak;
  const TypePtr type = InternedType::parse("{ void* a; int n; }[1000][2000]");
  const DynamicValue target(InternedType::parse("int"));
  {
    DynamicValue value(type);
    const DynamicValue word = DynamicValue::reference(target, InternedType::parse("void*"));
    qex::vornath::assignView(value.view().element(1999).element(999).field(0), word.view());
    EXPECT_EQ(target.block()->refCount, 3u);
    const DynamicValue copy(value.view());
    EXPECT_EQ(target.block()->refCount, 4u);
  }
  EXPECT_EQ(target.block()->refCount, 1u);
  EXPECT_EQ(type->knownRefSlots(), nullptr);
  EXPECT_LT(peak.value(), 1'000'000u);
}

}  // namespace
