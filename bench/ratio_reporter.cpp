#include "ratio_reporter.hpp"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <tuple>

namespace bench {
namespace {

constexpr std::string_view kGrowth = "growth";

struct Aim {
  std::string_view row;
  std::string_view yardstick;
  double ratio;
};

constexpr Aim kAims[] = {
#define AIM(row, yardstick, ratio) {row, yardstick, ratio},
#define SHOWN(row, yardstick)
#include "aims.def"
#undef SHOWN
#undef AIM
};

std::optional<double> aimOf(std::string_view row, std::string_view yardstick) {
  for (const Aim& aim : kAims) {
    const bool matches = aim.row.ends_with('*')
                             ? row.starts_with(aim.row.substr(0, aim.row.size() - 1))
                             : row == aim.row;
    if (matches && aim.yardstick == yardstick) return aim.ratio;
  }
  return std::nullopt;
}

void printAim(std::string_view row, std::string_view yardstick) {
  if (const auto aim = aimOf(row, yardstick)) std::printf(" %8.2f", *aim);
  std::printf("\n");
}

}  // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    // A row with one repetition has no median.
    const bool single = run.run_type == Run::RT_Iteration && run.repetitions == 1;
    if (!single && run.aggregate_name != "median") continue;
    // The time of the processor, since other programs disturb it less, unless the row asks for the
    // time that passes.
    const double measured = run.run_name.time_type.ends_with("real_time")
                                ? run.GetAdjustedRealTime()
                                : run.GetAdjustedCPUTime();
    const double time = measured * 1e9 / benchmark::GetTimeUnitMultiplier(run.time_unit);
    const auto& [name, size] = std::tie(run.run_name.function_name, run.run_name.args);
    if (size.empty()) {
      nanoseconds_[name] = time;
    } else {
      nanosecondsAt_[name][std::atoll(size.c_str())] = time;
    }
  }
}

void RatioReporter::Finalize() {
  printRatios();
  printGrowth();
  std::fflush(stdout);
}

void RatioReporter::printRatios() const {
  std::printf("\n%-60s %-24s %14s %14s %8s %8s\n", "median, ns", "yardstick", "measured",
              "yardstick", "ratio", "aim");
  for (const auto& [name, time] : nanoseconds_) {
    if (name.find('/') != std::string::npos) continue;
    const std::string prefix = name + "/";
    auto yardstick = nanoseconds_.lower_bound(prefix);
    if (yardstick == nanoseconds_.end() || !yardstick->first.starts_with(prefix)) {
      std::printf("%-60s %-24s %14.1f\n", name.c_str(), "", time);
    }
    for (; yardstick != nanoseconds_.end() && yardstick->first.starts_with(prefix); ++yardstick) {
      const std::string label = yardstick->first.substr(prefix.size());
      std::printf("%-60s %-24s %14.1f %14.1f %8.2f", name.c_str(), label.c_str(), time,
                  yardstick->second, time / yardstick->second);
      printAim(name, label);
    }
  }
}

void RatioReporter::printGrowth() const {
  if (nanosecondsAt_.empty()) return;
  std::printf("\n%-60s %12s %14s %12s %14s %8s %8s\n", "growth: median, ns", "n", "measured", "n",
              "measured", "exponent", "aim");
  for (const auto& [name, times] : nanosecondsAt_) {
    const auto& [small, first] = *times.begin();
    const auto& [large, last] = *times.rbegin();
    std::printf(
        "%-60s %12lld %14.1f %12lld %14.1f %8.2f", name.c_str(), static_cast<long long>(small),
        first, static_cast<long long>(large), last,
        std::log(last / first) / std::log(static_cast<double>(large) / static_cast<double>(small)));
    printAim(name, kGrowth);
  }
}

}  // namespace bench
