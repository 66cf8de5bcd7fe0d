#include "ratio_reporter.hpp"

#include <cstdio>

namespace bench {
namespace {

constexpr char kYardstick[] = "/yardstick";

std::map<std::string, double>& aims() {
  static std::map<std::string, double> ratios;
  return ratios;
}

// Removes the run settings that the reporter appends to a name, for example "/repeats:5".
std::string bareName(const benchmark::BenchmarkReporter::Run& run) {
  return run.run_name.args.empty() ? run.run_name.function_name
                                   : run.run_name.function_name + "/" + run.run_name.args;
}

}  // namespace

void aim(const std::string& name, double ratio) { aims()[name] = ratio; }

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") {
      nanoseconds_[bareName(run)] =
          run.GetAdjustedRealTime() * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    }
  }
}

void RatioReporter::Finalize() {
  std::printf("\n%-44s %14s %14s %8s %8s\n", "median, ns", "measured", "yardstick", "ratio", "aim");
  for (const auto& [name, time] : nanoseconds_) {
    if (name.ends_with(kYardstick)) continue;
    const auto yardstick = nanoseconds_.find(name + kYardstick);
    const auto aimed = aims().find(name);
    std::printf("%-44s %14.1f", name.c_str(), time);
    if (yardstick != nanoseconds_.end()) {
      std::printf(" %14.1f %8.2f", yardstick->second, time / yardstick->second);
    }
    if (aimed != aims().end()) std::printf(" %8.2f", aimed->second);
    std::printf("\n");
  }
  std::fflush(stdout);
}

}  // namespace bench
