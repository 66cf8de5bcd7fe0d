// The walk itself, through trees made for it.
#include "types/walk.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using qex::vornath::Visit;
using qex::vornath::Walk;

struct Tree {
  std::string name;
  std::vector<Tree> parts;
};

// a with b (d, e), an empty c that is no leaf, and f.
const Tree kTree{"a", {{"b", {{"d", {}}, {"e", {}}}}, {"c", {}}, {"f", {}}}};

// Writes down what the walk does.
struct Recorder {
  Visit enter(const Tree*& tree) {
    log += "+" + tree->name;
    if (tree->name == stopAt) return Visit::stop();
    return tree->parts.empty() && tree->name != "c" ? Visit::leaf()
                                                    : Visit::parts(tree->parts.size());
  }
  const Tree* part(const Tree*& tree, std::size_t i) { return &tree->parts[i]; }
  void leave(const Tree*& tree) { log += "-" + tree->name; }

  std::string stopAt;
  std::string log;
};

TEST(Walk, GoesDepthFirstInOrderAndLeavesWhatHasParts) {
  Recorder recorder;
  Walk<const Tree*> walk;
  EXPECT_TRUE(walk.run(recorder, &kTree));
  EXPECT_EQ(recorder.log, "+a+b+d+e-b+c-c+f-a");
  EXPECT_TRUE(walk.levels().empty());
}

TEST(Walk, TellsThePathToWhereItWasStopped) {
  Recorder recorder{"e", {}};
  Walk<const Tree*> walk;
  EXPECT_FALSE(walk.run(recorder, &kTree));
  EXPECT_EQ(recorder.log, "+a+b+d+e");
  ASSERT_EQ(walk.levels().size(), 2u);
  EXPECT_EQ(walk.levels()[0].node->name, "a");
  EXPECT_EQ(walk.levels()[0].current(), 0u);
  EXPECT_EQ(walk.levels()[1].node->name, "b");
  EXPECT_EQ(walk.levels()[1].current(), 1u);
}

TEST(Walk, OfALeafIsOneStep) {
  Recorder recorder;
  const Tree leaf{"x", {}};
  EXPECT_TRUE(Walk<const Tree*>().run(recorder, &leaf));
  EXPECT_EQ(recorder.log, "+x");
  recorder.stopAt = "x";
  EXPECT_FALSE(Walk<const Tree*>().run(recorder, &leaf));
}

TEST(Walk, StartsWithTheFirstPartThatTheVisitorNames) {
  struct Numbers {
    Visit enter(int& number) {
      met.push_back(number);
      return number == 0 ? Visit::parts(6, 4) : Visit::leaf();
    }
    int part(int&, std::size_t i) { return static_cast<int>(i); }
    std::vector<int> met;
  };
  Numbers numbers;
  EXPECT_TRUE(Walk<int>().run(numbers, 0));
  EXPECT_EQ(numbers.met, (std::vector<int>{0, 4, 5}));
}

// Each level is one of the chain's numbers, the last one 0.
template <bool KeepsPath>
struct Chain {
  Visit enter(std::unique_ptr<int>& number) {
    deepest = std::max(deepest, walk.levels().size());
    return *number == 0 ? Visit::leaf() : Visit::parts(1);
  }
  std::unique_ptr<int> part(std::unique_ptr<int>& number, std::size_t) {
    return std::make_unique<int>(*number - 1);
  }

  Walk<std::unique_ptr<int>, KeepsPath> walk;
  std::size_t deepest = 0;
};

TEST(Walk, OfAChainNeedsALevelForEachLinkOnlyIfItKeepsThePath) {
  constexpr int kLength = 100'000;
  Chain<true> kept;
  EXPECT_TRUE(kept.walk.run(kept, std::make_unique<int>(kLength)));
  EXPECT_EQ(kept.deepest, static_cast<std::size_t>(kLength));
  Chain<false> dropped;
  EXPECT_TRUE(dropped.walk.run(dropped, std::make_unique<int>(kLength)));
  EXPECT_EQ(dropped.deepest, 0u);
}

TEST(Walk, WithoutThePathComesToTheSameNodes) {
  struct Names {
    Visit enter(const Tree*& tree) {
      log += tree->name;
      return Visit::parts(tree->parts.size());
    }
    const Tree* part(const Tree*& tree, std::size_t i) { return &tree->parts[i]; }
    std::string log;
  };
  Names names;
  EXPECT_TRUE((Walk<const Tree*, false>().run(names, &kTree)));
  EXPECT_EQ(names.log, "abdecf");
}

TEST(Walk, LetsPassWhatTheVisitorThrows) {
  struct Thrower {
    Visit enter(int&) { return Visit::parts(1); }
    int part(int& number, std::size_t) {
      if (number == 3) throw std::runtime_error("three");
      return number + 1;
    }
  };
  Thrower thrower;
  EXPECT_THROW(Walk<int>().run(thrower, 0), std::runtime_error);
}

}  // namespace
