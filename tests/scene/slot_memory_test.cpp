// Memory in huge pages, and the containers that are moved into it. Where the system has no huge
// pages at hand, the containers use memory from malloc, and must hold the same.
#include "scene/slot_memory.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "platform/huge_pages.hpp"
#include "scene/asset_block.hpp"

namespace {

using vrnt::data::allocateAsset;
using vrnt::data::allocateSlot;
using vrnt::data::appendSlot;
using vrnt::data::AssetHandle;
using vrnt::data::Container;
using vrnt::data::reserveSlots;
using vrnt::data::SlotsAhead;
using vrnt::detail::allocatePages;
using vrnt::detail::freeHugePages;
using vrnt::detail::kHugePage;
using vrnt::detail::provideMemory;
using vrnt::detail::releasePages;
using vrnt::detail::resizePages;
using vrnt::detail::useHugePages;

TEST(freeHugePages, CountsBlocksOfTwoMebibytesAndMore) {
  const std::string report =
      "Node 0, zone      DMA      0      0      0      0      0      0      0      0      1      1 "
      "     3 \n"
      "Node 0, zone   Normal   1744   8572   4064   2306    237     66     14     12     11     10 "
      "   100 \n"
      "Node 1, zone   Normal      9      9      9      9      9      9      9      9      9    200 "
      "     0 \n";
  EXPECT_EQ(freeHugePages(report, 0), 10U + 2 * 100U - 64U);
  EXPECT_EQ(freeHugePages(report, 1), 200U - 64U);
  EXPECT_EQ(freeHugePages(report, 2), 0U);
}

TEST(freeHugePages, IsZeroBelowTheReserve) {
  const char zone[] = "Node 0, zone Normal 9 9 9 9 9 9 9 9 9 ";
  EXPECT_EQ(freeHugePages(zone + std::string("64 0\n"), 0), 0U);
  EXPECT_EQ(freeHugePages(zone + std::string("65 0\n"), 0), 1U);
  EXPECT_EQ(freeHugePages(zone + std::string("1 32"), 0), 1U);
}

TEST(freeHugePages, IsZeroForAnotherReport) {
  for (const char* const report : {"", "\n", "Node", "Node 0,", "Node 0, zone Normal", "no report",
                                   "Node x, zone Normal 1 2", "Node 0, zone Normal a b c\n\n"}) {
    EXPECT_EQ(freeHugePages(report, 0), 0U) << report;
  }
}

// The byte that a test writes to a place.
char byteAt(std::size_t offset) { return static_cast<char>(offset * 31 + (offset >> 12)); }

void writeBytes(void* place, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) static_cast<char*>(place)[i] = byteAt(i);
}

bool holdsBytes(const void* place, std::size_t end) {
  for (std::size_t i = 0; i < end; ++i) {
    if (static_cast<const char*>(place)[i] != byteAt(i)) return false;
  }
  return true;
}

TEST(Pages, KeepTheirContentWhenTheyGrow) {
  std::size_t size = 5 * kHugePage / 2 + 12345;
  void* place = allocatePages(size);
  if (!place) GTEST_SKIP() << "no huge pages at hand";
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(place) % kHugePage, 0U);
  writeBytes(place, 0, size);
  for (const std::size_t larger : {size + 1, 2 * size, 2 * size + 4096, 5 * size + 77}) {
    void* const moved = resizePages(place, size, larger);
    ASSERT_NE(moved, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(moved) % kHugePage, 0U);
    ASSERT_TRUE(holdsBytes(moved, size));
    writeBytes(moved, size, larger);
    place = moved;
    size = larger;
  }
  EXPECT_TRUE(holdsBytes(place, size));
  releasePages(place, size);
}

TEST(Pages, AreNotAllocatedForImpossibleSizes) {
  EXPECT_EQ(allocatePages(SIZE_MAX), nullptr);
  EXPECT_EQ(allocatePages(SIZE_MAX / 2), nullptr);
  EXPECT_EQ(allocatePages(std::size_t{1} << 60), nullptr);
  void* const place = allocatePages(2 * kHugePage);
  if (!place) GTEST_SKIP() << "no huge pages at hand";
  writeBytes(place, 0, 2 * kHugePage);
  EXPECT_EQ(resizePages(place, 2 * kHugePage, SIZE_MAX), nullptr);
  EXPECT_EQ(resizePages(place, 2 * kHugePage, std::size_t{1} << 60), nullptr);
  EXPECT_TRUE(holdsBytes(place, 2 * kHugePage));
  releasePages(place, 2 * kHugePage);
}

TEST(useHugePages, ChangesNoByte) {
  std::vector<char> bytes(3 * kHugePage + 100);
  writeBytes(bytes.data(), 0, bytes.size());
  for (const std::size_t begin : {0, 1, 4095, 4096, 100000}) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kHugePage, 5 * kHugePage / 2}) {
      useHugePages(bytes.data() + begin, size);
      provideMemory(bytes.data() + begin, size, bytes.data() + bytes.size());
    }
  }
  EXPECT_TRUE(holdsBytes(bytes.data(), bytes.size()));
}

TEST(allocateAsset, GivesABlockThatFreeReleasesForEachSize) {
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, 2 * kHugePage - 32,
                                 2 * kHugePage - 31, 9 * kHugePage + 5, 17 * kHugePage}) {
    const AssetHandle asset = allocateAsset(size);
    const AssetStorage& block = *asset.get();
    EXPECT_EQ(block.size, size);
    EXPECT_EQ(block.external, 0U);
    EXPECT_EQ(block.data, &block + 1);
    EXPECT_EQ(block.release, &std::free);
    writeBytes(block.data, 0, size);
    EXPECT_TRUE(holdsBytes(block.data, size));
  }
}

// An element of plain bytes, as large as that of a class with groups.
struct Plain {
  std::uint32_t number = 0;
  bool used = false;
  char rest[504] = {};

  bool live() const { return used; }
  void set(std::uint32_t value) {
    number = value;
    used = true;
    std::memset(rest, static_cast<int>(value % 251), sizeof(rest));
  }
  bool is(std::uint32_t value) const {
    return number == value && rest[0] == static_cast<char>(value % 251) &&
           rest[503] == static_cast<char>(value % 251);
  }
};

// An element that owns memory.
struct Owning {
  std::unique_ptr<std::uint32_t> number;

  bool live() const { return number != nullptr; }
  void set(std::uint32_t value) { number = std::make_unique<std::uint32_t>(value); }
  bool is(std::uint32_t value) const { return number && *number == value; }
};

// Adds elements in all ways in which the library and hosts add them.
template <typename Element>
void checkContainers(std::uint32_t seed, std::size_t mostElements) {
  std::mt19937 random(seed);
  const auto pick = [&random](std::size_t count) {
    return std::uniform_int_distribution<std::size_t>(0, count - 1)(random);
  };
  Container<Element> container;
  std::vector<std::uint32_t> model;
  const auto set = [&](std::size_t index) {
    model.resize(container.slots.size());
    model[index] = static_cast<std::uint32_t>(random());
    container.slots[index].set(model[index]);
  };
  const auto check = [&] {
    ASSERT_EQ(container.slots.size(), model.size());
    for (std::size_t i = 0; i < model.size(); ++i)
      ASSERT_TRUE(container.slots[i].is(model[i])) << i;
  };
  while (container.slots.size() < mostElements) {
    const std::size_t size = container.slots.size();
    switch (pick(6)) {
      case 0:  // as the flat functions add objects
        for (std::size_t i = pick(mostElements / 3); i != 0; --i) set(allocateSlot(container));
        break;
      case 1:  // as an import adds objects one by one
        for (std::size_t i = pick(mostElements / 3); i != 0; --i) {
          appendSlot(container);
          container.occupied(static_cast<std::uint32_t>(container.slots.size() - 1));
          set(container.slots.size() - 1);
        }
        break;
      case 2: {  // as a file is read
        const std::size_t count = size + pick(mostElements / 3);
        reserveSlots(container, count);
        SlotsAhead ahead(container, count);
        for (std::size_t i = 0; i < count; ++i) {
          ahead.provide(i);
          if (i < size) continue;
          container.grow(static_cast<std::uint32_t>(i + 1));
          container.occupied(static_cast<std::uint32_t>(i));
          set(i);
        }
        break;
      }
      case 3:  // as a host adds objects to a container that it took
        for (std::size_t i = pick(100); i != 0; --i) set(container.allocate());
        if (pick(4) == 0) {
          for (std::size_t i = size; i != 0; --i) set(container.allocate());
        }
        break;
      case 4: {  // as a scene is moved
        Container<Element> moved(std::move(container));
        EXPECT_TRUE(container.slots.empty());
        container = std::move(moved);
        break;
      }
      default:
        check();
    }
  }
  check();
}

TEST(SlotMemory, KeepsPlainElementsHoweverTheContainerGrows) {
  for (std::uint32_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE(seed);
    checkContainers<Plain>(seed, 100'000);
  }
}

TEST(SlotMemory, KeepsElementsThatOwnHoweverTheContainerGrows) {
  for (std::uint32_t seed = 1; seed <= 4; ++seed) {
    SCOPED_TRACE(seed);
    checkContainers<Owning>(seed, 50'000);
  }
}

TEST(SlotMemory, RunsOutForAnImpossibleCount) {
  Container<Plain> container;
  EXPECT_THROW(reserveSlots(container, SIZE_MAX / 2), std::bad_alloc);
  EXPECT_THROW(reserveSlots(container, std::size_t{1} << 50), std::bad_alloc);
  EXPECT_TRUE(container.slots.empty());
}

}  // namespace
