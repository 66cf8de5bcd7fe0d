// A reporter for benchmarks that are compared with a yardstick. In each run, the benchmark "Thing"
// is measured beside "Thing/yardstick". The reporter prints the usual table and, below it, the
// medians of each pair, their ratio, and the target ratio.
#ifndef VORNATH_BENCH_RATIO_REPORTER_HPP
#define VORNATH_BENCH_RATIO_REPORTER_HPP

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

/// Sets the target for the ratio of "name" to "name/yardstick".
void aim(const std::string& name, double ratio);

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  std::map<std::string, double> nanoseconds_;  // medians, by benchmark name
};

}  // namespace bench

#endif
