// A benchmark that has a yardstick is measured beside it in the same run: "Thing" and
// "Thing/yardstick". This reporter prints the usual table, and behind it the medians of each pair
// with their ratio and the ratio that is aimed at.
#ifndef VORNATH_BENCH_RATIO_REPORTER_HPP
#define VORNATH_BENCH_RATIO_REPORTER_HPP

#include <benchmark/benchmark.h>

#include <map>
#include <string>
#include <vector>

namespace bench {

/// The ratio that "name" aims at against "name/yardstick".
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
