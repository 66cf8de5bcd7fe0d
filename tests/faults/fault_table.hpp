// Every exported function with what it does when memory ends, and the drive that shows it: each
// allocation of a call is made to fail, one after the other, until the call succeeds.
#ifndef VORNATH_TESTS_FAULTS_FAULT_TABLE_HPP
#define VORNATH_TESTS_FAULTS_FAULT_TABLE_HPP

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <memory>
#include <utility>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_test {

enum class Promise {
  NeverAllocates,
  NeverFails,     // it does without what memory it lacks
  ErrorObject,    // the out-of-memory object in the error location
  BadAlloc,       // std::bad_alloc leaves the call
  Failure,        // null, or -1: the answer that stands for every failure
  FailureOrRaise  // either of the last two, by what lacks memory
};

enum class Allocations {
  EachCall,
  FirstCall,       // what it makes then stays, and another call may have made it
  Dispensable,     // the call may also do without an allocation that failed
  ToTheArguments,  // what a failed call has made until then may stay with its arguments
};

// A call that can be made any number of times. What it takes lives as long as this.
struct Call {
  // Makes the call and says whether it succeeded. Allocates nothing by itself.
  std::function<bool(vrntValuesError_t** error)> make;
  // After a success: looks at the answer, and gives back what the call made.
  std::function<void()> right = [] {};
  // After a failure: looks at the arguments.
  std::function<void()> intact = [] {};
  // Before each call: puts the arguments back as they were.
  std::function<void()> before = [] {};
};

struct FaultCase {
  const char* function;  // as exports.txt has it
  const char* what;      // which of the function's cases
  Promise promise;
  std::function<Call()> call;
  Allocations allocations = Allocations::EachCall;
};

// The name of the case in the words of a test's output.
std::ostream& operator<<(std::ostream& stream, const FaultCase& faultCase);

// A function that never allocates: `make` gives a check that calls it and compares the answer.
inline FaultCase quiet(const char* function, std::function<std::function<bool()>()> make) {
  return {function, "", Promise::NeverAllocates, [make = std::move(make)] {
            Call call;
            call.make = [check = make()](vrntValuesError_t**) { return check(); };
            return call;
          }};
}

// A call that makes a flat handle, which `right` looks at and a Handle releases.
template <typename Handle>
Call making(std::function<typename Handle::pointer(vrntValuesError_t**)> make,
            std::function<void(typename Handle::pointer)> right) {
  const auto made = std::make_shared<typename Handle::pointer>(nullptr);
  Call call;
  call.make = [made, make = std::move(make)](vrntValuesError_t** error) {
    *made = nullptr;
    *made = make(error);
    return *made != nullptr;
  };
  call.right = [made, right = std::move(right)] {
    const Handle owner(*made);
    right(*made);
  };
  return call;
}

inline Call makingType(std::function<vrntType_t*(vrntValuesError_t**)> make,
                       const std::string& text) {
  return making<TypeHandle>(std::move(make), [text](vrntType_t* type) {
    EXPECT_STREQ(vrntTypeString(type), text.c_str());
  });
}

inline Call makingValue(std::function<vrntValue_t*(vrntValuesError_t**)> make,
                        const std::string& text) {
  return making<ValueHandle>(std::move(make), [text](vrntValue_t* value) {
    EXPECT_EQ(textOf(value), text);
    EXPECT_EQ(vrntValueBinary(value)->refCount, 1u);
  });
}

// Arguments that several functions of one call hold.
using SharedType = std::shared_ptr<vrntType_t>;
using SharedValue = std::shared_ptr<vrntValue_t>;
inline SharedType sharedType(const std::string& text) { return parseType(text); }
inline SharedValue sharedValue(const std::string& text) { return parseValue(text); }

inline vrntValueView_t wholeOf(const vrntValue_t* value) { return {vrntValueType(value), 0}; }

// A function and its name, for those that come in pairs of one form.
template <typename Function>
struct Named {
  const char* name;
  Function* call;
};
template <typename Function>
Named(const char*, Function*) -> Named<Function>;

using FaultCases = std::vector<FaultCase>;
void addTypeCases(FaultCases& cases);
void addColourCases(FaultCases& cases);
void addValueCases(FaultCases& cases);
void addSceneCases(FaultCases& cases);
void addClassCases(FaultCases& cases);

}  // namespace vornath_test

#endif
