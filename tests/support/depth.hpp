// How deep nests are and how long chains of references, where that is tested.
#ifndef VORNATH_TESTS_SUPPORT_DEPTH_HPP
#define VORNATH_TESTS_SUPPORT_DEPTH_HPP

namespace vornath_test {

// A sanitizer takes ten times as long, and shows recursion on fewer levels since its frames are
// larger.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr int kDepth = 25'000;
inline constexpr int kLinks = 250'000;
#else
inline constexpr int kDepth = 100'000;
inline constexpr int kLinks = 1'000'000;
#endif

}  // namespace vornath_test

#endif
