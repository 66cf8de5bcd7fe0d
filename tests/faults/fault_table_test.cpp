// The table of all exports, case by case, and that no export is missing from it.
#include "fault_table.hpp"

#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <new>
#include <ostream>
#include <set>
#include <string>
#include <utility>

#include "support/allocations.hpp"

namespace vornath_test {

std::ostream& operator<<(std::ostream& stream, const FaultCase& faultCase) {
  return stream << faultCase.function << ' ' << faultCase.what;
}

namespace {

constexpr std::uint64_t kManyAllocations = 10'000;

const FaultCases& table() {
  static const FaultCases cases = [] {
    FaultCases all;
    addTypeCases(all);
    addColourCases(all);
    addValueCases(all);
    addSceneCases(all);
    addClassCases(all);
    return all;
  }();
  return cases;
}

enum class Ending { Success, Failure, BadAlloc };

struct Attempt {
  Ending ending;
  bool struck;  // whether an allocation failed
};

// Makes the call with the allocation of that number failing, and looks at how a failure is told.
Attempt attempt(const FaultCase& faultCase, const Call& call, std::uint64_t number) {
  vrntValuesError_t* error = nullptr;
  Attempt made{};
  {
    const FailNthAllocation failure(number);
    try {
      made.ending = call.make(&error) ? Ending::Success : Ending::Failure;
    } catch (const std::bad_alloc&) {
      made.ending = Ending::BadAlloc;
    }
    made.struck = failure.triggered();
  }
  const ErrorHandle owner(error);
  if (made.ending == Ending::Success) {
    EXPECT_EQ(error, nullptr);
    EXPECT_TRUE(!made.struck || faultCase.allocations == Allocations::Dispensable ||
                faultCase.promise == Promise::NeverFails)
        << "allocation " << number << " isn't missed";
    return made;
  }
  EXPECT_TRUE(made.struck) << "a failure without a reason";
  switch (faultCase.promise) {
    case Promise::ErrorObject:
      EXPECT_EQ(made.ending, Ending::Failure);
      EXPECT_NE(error, nullptr) << "allocation " << number;
      if (error == nullptr) break;
      EXPECT_EQ(vrntValuesErrorCode(error), std::uint32_t{VRNT_OUT_OF_MEMORY});
      EXPECT_STREQ(vrntValuesErrorMessage(error), "Out of memory.");
      break;
    case Promise::BadAlloc:
      EXPECT_EQ(made.ending, Ending::BadAlloc) << "allocation " << number;
      break;
    case Promise::Failure:
      EXPECT_EQ(made.ending, Ending::Failure) << "allocation " << number;
      EXPECT_EQ(error, nullptr);
      break;
    case Promise::FailureOrRaise:
      EXPECT_EQ(error, nullptr);
      break;
    case Promise::NeverAllocates:
    case Promise::NeverFails:
      ADD_FAILURE();
      break;
  }
  return made;
}

void succeed(const Call& call) {
  vrntValuesError_t* error = nullptr;
  call.before();
  EXPECT_TRUE(call.make(&error));
  const ErrorHandle owner(error);
  EXPECT_EQ(error, nullptr);
  if (error == nullptr) call.right();
}

// Returns how many allocations had to fail. `warm`: all that the library keeps is there, so that a
// call that fails leaves no block more than there was, and each failure is followed by a success.
std::uint64_t failEach(const FaultCase& faultCase, const Call& call, bool warm) {
  for (std::uint64_t number = 0; number < kManyAllocations; ++number) {
    call.before();
    const std::int64_t live = liveAllocations();
    const Attempt made = attempt(faultCase, call, number);
    if (testing::Test::HasFailure()) return number;
    if (made.ending == Ending::Success) {
      call.right();
      if (!made.struck) return number;
    } else {
      if (warm && faultCase.allocations != Allocations::ToTheArguments) {
        EXPECT_EQ(liveAllocations(), live) << "allocation " << number << " leaves something behind";
      }
      call.intact();
      if (warm) succeed(call);
    }
  }
  ADD_FAILURE() << "the call never succeeded";
  return kManyAllocations;
}

std::uint64_t failEach(const FaultCase& faultCase) {
  const Call call = faultCase.call();
  const std::uint64_t cold = failEach(faultCase, call, false);
  if (testing::Test::HasFailure()) return cold;
  return cold + failEach(faultCase, call, true);
}

void allocateNothing(const FaultCase& faultCase) {
  const Call call = faultCase.call();
  vrntValuesError_t* error = nullptr;
  for (int round = 0; round < 2; ++round) {
    const std::uint64_t before = allocationCount();
    bool right;
    {
      const FailingAllocations failures;
      right = call.make(&error);
    }
    EXPECT_EQ(allocationCount(), before);
    EXPECT_TRUE(right);
    EXPECT_EQ(error, nullptr);
  }
}

class Exports : public testing::TestWithParam<std::size_t> {};

TEST_P(Exports, KeepTheirPromiseWhenMemoryEnds) {
  const FaultCase& faultCase = table()[GetParam()];
  SCOPED_TRACE(testing::PrintToString(faultCase));
  if (faultCase.promise == Promise::NeverAllocates) {
    allocateNothing(faultCase);
    return;
  }
  const std::uint64_t failures = failEach(faultCase);
  // Under ctest each case has a process of its own, in which nothing was called before.
  static bool fresh = true;
  const bool first = std::exchange(fresh, false);
  if (kMallocIsCounted && (first || faultCase.allocations != Allocations::FirstCall)) {
    EXPECT_GT(failures, 0u) << "it allocates nothing";
  }
  // A second time, from the making of the arguments to their end: what is held too often now, an
  // argument of the call too, stays behind.
  const std::int64_t live = liveAllocations();
  failEach(faultCase);
  EXPECT_EQ(liveAllocations(), live);
}

std::string caseName(const testing::TestParamInfo<std::size_t>& tested) {
  const FaultCase& faultCase = table()[tested.param];
  std::string name;
  for (const char c : testing::PrintToString(faultCase) + ' ' + std::to_string(tested.param)) {
    const bool kept = std::isalnum(static_cast<unsigned char>(c)) != 0;
    if (kept || name.back() != '_') name += kept ? c : '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(All, Exports, testing::Range(std::size_t{0}, table().size()), caseName);

// What exports.txt lists besides functions.
bool isNoFunction(const std::string& name) {
  return name.starts_with("vtable for ") || name.starts_with("typeinfo ") ||
         name == "qex::vornath::parser_mutex";
}

// Ended by every test of the whole process, or begun by its very first call: they have programs of
// their own.
const std::set<std::string> kElsewhere = {
    "qex::vornath::Type::get_factory(bool)",  // first_use_faults_test.cpp
    "vrntValuesShutdown",                     // first_use_faults_test.cpp
};

TEST(FaultTable, HasEveryExportedFunction) {
  std::set<std::string> listed;
  std::ifstream list(VORNATH_TESTS_EXPORTS);
  for (std::string name; std::getline(list, name);) {
    if (!isNoFunction(name)) listed.insert(name);
  }
  EXPECT_GT(listed.size(), 100u) << VORNATH_TESTS_EXPORTS;
  std::set<std::string> held = kElsewhere;
  for (const FaultCase& faultCase : table()) held.insert(faultCase.function);
  for (const std::string& name : listed) EXPECT_TRUE(held.contains(name)) << name << " has no case";
  for (const std::string& name : held)
    EXPECT_TRUE(listed.contains(name)) << name << " is no export";
}

}  // namespace
}  // namespace vornath_test
