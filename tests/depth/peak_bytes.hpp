// How much memory the program's `operator new` has given out: what grows with the square of a depth
// is seen here before it hurts. Blocks of values come from malloc() and aren't in it.
#ifndef VORNATH_TESTS_DEPTH_PEAK_BYTES_HPP
#define VORNATH_TESTS_DEPTH_PEAK_BYTES_HPP

#include <cstdint>

namespace vornath_test {

// The most that was in use at once, of all threads together, since this was made, above what was in
// use then.
class PeakBytes {
 public:
  PeakBytes();
  PeakBytes(const PeakBytes&) = delete;
  PeakBytes& operator=(const PeakBytes&) = delete;

  std::uint64_t value() const;

 private:
  std::uint64_t before_;
};

}  // namespace vornath_test

#endif
