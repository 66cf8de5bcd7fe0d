// How many random cases a test tries.
#ifndef VORNATH_TESTS_CASE_COUNT_HPP
#define VORNATH_TESTS_CASE_COUNT_HPP

namespace vornath_test {

// A tenth of the cases where each takes some ten times as long.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int cases(int number) { return number / 10; }
#else
constexpr int cases(int number) { return number; }
#endif

}  // namespace vornath_test

#endif
