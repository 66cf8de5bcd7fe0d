// A reporter for rows that are compared with yardsticks. The row "Job" is measured in the same run
// as each of its yardsticks, which are the benchmarks named "Job/name of the yardstick". A job that
// is measured at several sizes is reported by its growth instead. The reporter prints the usual
// table and, below it, the medians, their ratios, and the aims that aims.def gives them.
#ifndef VORNATH_BENCH_RATIO_REPORTER_HPP
#define VORNATH_BENCH_RATIO_REPORTER_HPP

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace bench {

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  void printRatios() const;
  void printGrowth() const;

  std::map<std::string, double> nanoseconds_;                            // medians, by name
  std::map<std::string, std::map<std::int64_t, double>> nanosecondsAt_;  // by name and size
};

}  // namespace bench

#endif
