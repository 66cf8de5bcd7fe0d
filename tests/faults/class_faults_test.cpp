// The classes that headers alone make: handles, views, results, containers and maps.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <functional>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "all_classes.hpp"
#include "support/allocations.hpp"
#include "vornath_data/asset_handle.hpp"
#include "vornath_data/container.hpp"
#include "vornath_data/ref_map.hpp"
#include "vornath_data/result.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/slot_vector.hpp"
#include "vornath_data/value.hpp"

namespace {

using namespace vornath_test;
using vrnt::BasicView;
using vrnt::ConstBasicView;
using vrnt::ErrorCode;
using vrnt::Result;
using vrnt::Value;
using vrnt::data::Scene;

// Lets each allocation of `work` fail in turn until it succeeds, with std::bad_alloc each time and
// no block more than before, and looks at what `intact` says. Returns how many failed.
int raiseEach(
    const std::function<void()>& work, const std::function<void()>& intact = [] {}) {
  for (int number = 0; number < 10'000; ++number) {
    const std::int64_t live = liveAllocations();
    bool raised = false;
    bool struck;
    {
      const FailNthAllocation failure(static_cast<std::uint64_t>(number));
      try {
        work();
      } catch (const std::bad_alloc&) {
        raised = true;
      }
      struck = failure.triggered();
    }
    EXPECT_EQ(raised, struck) << "allocation " << number;
    if (!struck) return number;
    EXPECT_EQ(liveAllocations(), live) << "allocation " << number;
    intact();
  }
  ADD_FAILURE() << "it never succeeded";
  return 0;
}

// Allocates nothing and is right.
void expectQuiet(const std::function<bool()>& work) {
  const auto before = allocationCount();
  bool right;
  {
    const FailingAllocations failures;
    right = work();
  }
  EXPECT_TRUE(right);
  EXPECT_EQ(allocationCount(), before);
}

template <typename T>
int failResults(const std::function<Result<T>()>& make, const std::function<void(T&)>& right) {
  for (int number = 0; number < 10'000; ++number) {
    std::optional<Result<T>> result;
    bool struck;
    {
      const FailNthAllocation failure(static_cast<std::uint64_t>(number));
      result.emplace(make());
      struck = failure.triggered();
    }
    EXPECT_EQ(result->hasValue(), !struck);
    if (*result) {
      right(**result);
      return number;
    }
    EXPECT_EQ(result->error().code(), ErrorCode::MemoryAllocationFailure);
    EXPECT_EQ(result->error().message(), nullptr);
  }
  ADD_FAILURE() << "it never succeeded";
  return 0;
}

Value valueOf(const char* text) { return Value::adopt(parseValue(text).release()); }

std::string textOf(const Value& value) { return ConstBasicView<const Value*>(&value).text(); }

TEST(TypeHandleFaults, ParseGivesMemoryAllocationFailureWithoutWords) {
  EXPECT_GT(failResults<vrnt::TypeHandle>(
                [] { return vrnt::TypeHandle::parse("{ int a; float[3]* b; }"); },
                [](vrnt::TypeHandle& type) {
                  EXPECT_STREQ(vrntTypeString(type.get()), "{ int a; float[3]* b; }");
                }),
            0);
}

TEST(TypeHandleFaults, AllocateNothing) {
  vrnt::TypeHandle type = vrnt::TypeHandle::adopt(parseType("{ int a; }").release());
  expectQuiet([&type] {
    vrnt::TypeHandle copy = type;
    vrnt::TypeHandle moved = std::move(copy);
    copy = moved;
    return copy.get() == type.get() && moved;
  });
}

TEST(ValueFaults, CreateGivesMemoryAllocationFailureWithoutWords) {
  const TypeHandle type = parseType("{ int @default=3 a; void*[2] b; }");
  for (const bool withDefault : {true, false}) {
    const int failures = failResults<Value>(
        [&] { return Value::create(type.get(), withDefault); },
        [&](Value& value) {
          EXPECT_EQ(ConstBasicView<Value*>(&value).field("a").read<std::int32_t>(),
                    withDefault ? 3 : 0);
        });
    EXPECT_TRUE(failures > 0 || !kMallocIsCounted);
  }
}

TEST(ValueFaults, HandlesAllocateNothing) {
  const Value value = valueOf("{ a = &[ 1 ]; }");
  expectQuiet([&value] {
    Value copy = value;
    Value moved = std::move(copy);
    copy = moved;
    const Value shared = Value::share(value.get());
    return copy.get() == shared.get() && shared.get()->refCount == 4;
  });
  EXPECT_EQ(value.get()->refCount, 1u);
}

TEST(WrongKindFaults, HaveTheirWordsWithoutMemory) {
  const TypeHandle enumeration = parseType("enum { A; }");
  const TypeHandle number = parseType("float @flag");
  std::string words(200, ' ');
  const auto wordsOf = [&words](auto call) {
    try {
      const FailingAllocations failing;
      call();
    } catch (const VornathValuesAssertionFailure& failure) {
      words = failure.what();
    }
    return words;
  };
  EXPECT_EQ(wordsOf([&] { vrntTypeFieldType(enumeration.get(), 0); }),
            "vrntTypeFieldType: takes a struct or a function, was given the enum { A; }");
  EXPECT_EQ(wordsOf([&] { vrntMetadataString(number.get(), "flag"); }),
            "vrntMetadataString: takes an annotation with a text, was given the flag @flag");
  vrntValueView_t view{};
  EXPECT_EQ(wordsOf([&] { vrntValueStructField(&view, number.get(), 0); }),
            "vrntValueStructField: takes a struct, was given the base type float @flag");
}

TEST(ViewFaults, ReadingAllocatesNothing) {
  const Value value = valueOf("{ a = 1; b = { l = [ 5, 6 ]; }; c = &[ 7 ]; }");
  // The type of spectra, with which every struct is compared, is made once.
  const TypeHandle spectrum(vrntTypeSpectrum());
  expectQuiet([&value] {
    const ConstBasicView<const Value*> whole(&value);
    ConstBasicView<const Value*> part = whole.field("b").field(0u).element(1);
    part = ConstBasicView<const Value*>(part);
    return part.read<std::int32_t>() == 6 && whole.fieldCount() == 3 &&
           whole.field("c").dereference().get()->refCount == 2;
  });
}

TEST(ViewFaults, WordsRaiseEachFailedAllocation) {
  const Value value = valueOf("{ a = 1; b = [ 5, 6 ]; }");
  const ConstBasicView<const Value*> whole(&value);
  std::string text;
  EXPECT_GT(raiseEach([&] { text = whole.text(); }), 0);
  EXPECT_EQ(text, "{ a = 1; b = [ 5, 6 ]; }");
}

// A refusal needs memory for its words; the exception itself has some put by.
TEST(ViewFaults, RefusalsHaveTheirWordsOrAreOutOfMemory) {
  const Value value = valueOf("{ a = 1; b = [ 5, 6 ]; }");
  const ConstBasicView<const Value*> whole(&value);
  int raised = 0;
  int refused = 0;
  for (std::uint64_t number = 0; number < 20; ++number) {
    try {
      const FailNthAllocation failure(number);
      whole.field("a label that is longer than what a string holds in place");
    } catch (const std::bad_alloc&) {
      ++raised;
    } catch (const vrnt::Exception& exception) {
      EXPECT_STREQ(exception.what(),
                   "Field not found in struct: a label that is longer than what a string holds in "
                   "place.");
      ++refused;
    }
  }
  EXPECT_GT(raised, 0);
  EXPECT_EQ(raised + refused, 20);
}

TEST(ViewFaults, WritesRaiseEachFailedAllocationAndWriteNothing) {
  const Value other = valueOf("{ a = 1; b = &[ 5, 6 ]; }");
  const Value target = valueOf("[ 8, 9 ]");
  Value written = other;
  const auto intact = [&] {
    EXPECT_EQ(written.get(), other.get());
    EXPECT_EQ(other.get()->refCount, 2u);
    EXPECT_EQ(target.get()->refCount, 1u);
    EXPECT_EQ(textOf(other), "{ a = 1; b = &[ 5, 6 ]; }");
  };
  const int writes =
      raiseEach([&] { BasicView<Value*>(&written).field("a").write(std::int32_t{4}); }, intact);
  EXPECT_EQ(textOf(written), "{ a = 4; b = &[ 5, 6 ]; }");
  written = other;
  const int references =
      raiseEach([&] { BasicView<Value*>(&written).field("b").setReference(target); }, intact);
  EXPECT_EQ(textOf(written), "{ a = 1; b = &[ 8, 9 ]; }");
  EXPECT_EQ(target.get()->refCount, 2u);
  if (kMallocIsCounted) {
    EXPECT_EQ(writes, 2);
    EXPECT_EQ(references, 2);
  }
}

TEST(ResultFaults, TakingTheValueOfAFailureRaisesEachFailedAllocation) {
  const Result<int> failure(ErrorCode::IoError, "words that are longer than a string holds");
  // But for the exception's own memory, some of which is put by.
  bool raised = false;
  try {
    const FailNthAllocation missing(0);
    failure.value();
  } catch (const std::bad_alloc&) {
    raised = true;
  } catch (const vrnt::Exception& exception) {
    EXPECT_EQ(exception.code(), ErrorCode::IoError);
    raised = kMallocIsCounted;
  }
  EXPECT_TRUE(raised);
  EXPECT_STREQ(failure.error().text(), "words that are longer than a string holds");
}

TEST(RefMapFaults, AddLeavesTheMapAsItWas) {
  vrnt::data::RefMap<int> map;
  int failures = 0;
  for (int i = 0; i < 20; ++i) {
    // Every other pair goes between those that are there.
    const int source = i % 2 == 0 ? i : 100 - i;
    const auto before = map.pairs();
    failures += raiseEach([&] { map.add(source, i); }, [&] { EXPECT_EQ(map.pairs(), before); });
    EXPECT_EQ(map.lookup(source), i);
  }
  EXPECT_GT(failures, 3);
  expectQuiet([&map] { return map.lookup(99) == 1 && map.lookup(98) == -1; });
}

// Elements that are plain bytes, which grow in place, and others, which are moved.
template <typename Element>
void growSlots() {
  vrnt::data::SlotVector<Element> slots;
  int failures = 0;
  std::size_t size = 0;
  const auto intact = [&] { EXPECT_EQ(slots.size(), size); };
  for (; size < 20; ++size) failures += raiseEach([&] { slots.append(); }, intact);
  failures += raiseEach([&] { slots.grow(100); }, intact);
  size = 100;
  failures += raiseEach([&] { slots.reserve(1000); }, intact);
  EXPECT_EQ(slots.size(), 100u);
  if (kMallocIsCounted) {
    EXPECT_GT(failures, 4);
  }
  vrnt::data::SlotVector<Element> other;
  expectQuiet([&] {
    other = std::move(slots);
    vrnt::data::SlotVector<Element> moved(std::move(other));
    slots = std::move(moved);
    return slots.size() == 100;
  });
}

TEST(SlotVectorFaults, GrowthKeepsAllElements) {
  growSlots<int>();
  growSlots<Value>();
  growSlots<vrnt::data::Program<vrnt::data::CameraSource>>();
}

TEST(ContainerFaults, AllocateLeavesTheContainerAsItWas) {
  vrnt::data::Container<vrnt::data::Instance<vrnt::data::ShapeDesc>> container;
  int failures = 0;
  for (std::uint32_t i = 0; i < 20; ++i) {
    failures += raiseEach(
        [&] {
          const std::uint32_t chosen = container.allocate();
          EXPECT_EQ(chosen, i);
          container.slots[chosen].deleted = false;
        },
        [&] {
          EXPECT_EQ(container.size(), i);
          EXPECT_EQ(container.firstFree, i);
        });
  }
  container.slots[3].deleted = true;
  container.freed(3);
  expectQuiet([&container] { return container.allocate() == 3; });
  if (kMallocIsCounted) {
    EXPECT_GT(failures, 3);
  }
}

TEST(ContainerFaults, FreedDoesWithoutTheMemoryToNoteTheSlot) {
  vrnt::data::Container<vrnt::data::Instance<vrnt::data::KeyframeDesc>> container;
  const auto add = [&container] {
    const std::uint32_t chosen = container.allocate();
    container.slots[chosen].deleted = false;
    return chosen;
  };
  const auto remove = [&container](std::int32_t index) {
    container.at(index).deleted = true;
    container.freed(index);
  };
  for (std::uint32_t i = 0; i < 300; ++i) ASSERT_EQ(add(), i);
  remove(7);
  {
    const FailingAllocations failures;
    for (const std::int32_t index : {290, 5, 100, 200}) remove(index);
    EXPECT_EQ(add(), 5U);
    EXPECT_EQ(add(), 7U);
    remove(6);
  }
  for (const std::uint32_t index : {6U, 100U}) EXPECT_EQ(add(), index);
  remove(3);
  for (const std::uint32_t index : {3U, 200U, 290U, 300U}) EXPECT_EQ(add(), index);
}

TEST(AssetStorageFaults, IsNullAndLeavesTheBytesToTheHost) {
  if constexpr (!kMallocIsCounted) return;
  char bytes[] = "bytes";
  {
    const FailingAllocations failures;
    EXPECT_EQ(vrdmAssetStorageCopy(bytes, sizeof(bytes)), nullptr);
    EXPECT_EQ(vrdmAssetStorageWrap(bytes, sizeof(bytes), nullptr), nullptr);
  }
  AssetStorage* const wrapped = vrdmAssetStorageWrap(bytes, sizeof(bytes), nullptr);
  ASSERT_NE(wrapped, nullptr);
  expectQuiet([wrapped] {
    vrnt::data::AssetHandle handle = vrnt::data::AssetHandle::share(wrapped);
    vrnt::data::AssetHandle copy = handle;
    const vrnt::data::AssetHandle moved = std::move(copy);
    handle = moved;
    return wrapped->references == 3 && handle.hasData();
  });
  vrdmAssetStorageRelease(wrapped);
}

TEST(SceneFaults, MakingAndMovingAnEmptyOneAllocatesNothing) {
  expectQuiet([] {
    Scene scene;
    Scene moved(std::move(scene));
    scene = std::move(moved);
    return !scene.id.isNull();
  });
}

TEST(SceneFaults, MovingAFilledOneAllocatesNothing) {
  Scene scene;
  fillAllClasses(flat(scene));
  const std::string before = dumpOf(scene);
  expectQuiet([&scene] {
    Scene moved(std::move(scene));
    const bool empty = vrdmContainerSize(flat(scene), VRDM_CLASS_SHAPE) == 0;
    scene = std::move(moved);
    return empty;
  });
  EXPECT_EQ(dumpOf(scene), before);
}

}  // namespace
