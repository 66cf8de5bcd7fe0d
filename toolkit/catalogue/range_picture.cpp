#include "catalogue/range_picture.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "catalogue/value_text.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/metadata.h"

namespace vrtk {
namespace {

// The picture in its own units.
constexpr double kWidth = 120;
constexpr double kLeft = 8;
constexpr double kRight = kWidth - 8;
constexpr double kMiddle = 8;

// Returns the number that all elements of a value have.
std::optional<double> commonNumber(const vrntType_t* type, const char* bytes) {
  if (bytes == nullptr) return std::nullopt;
  const vrnt::UniqueType element = innermostElement(type);
  const auto numbers = numbersOf(element.get());
  if (!numbers || numbers->family == VRNT_BASETYPE_BOOL) return std::nullopt;
  const std::uint64_t size = vrntTypeSize(element.get());
  std::optional<double> common;
  for (std::uint64_t at = 0; at < vrntTypeSize(type); at += size) {
    for (std::uint32_t lane = 0; lane < numbers->lanes; ++lane) {
      const double number = laneNumber(*numbers, bytes + at, lane);
      if (common && *common != number) return std::nullopt;
      common = number;
    }
  }
  return common;
}

// Returns a limit that is a number; nothing for none and for an infinite one.
std::optional<double> finiteLimit(const vrntType_t* type, const char* key) {
  const vrnt::UniqueValue limit = limitOf(type, key);
  if (!limit) return std::nullopt;
  const auto number = commonNumber(vrntValueType(limit.get()),
                                   static_cast<const char*>(vrntValueData(limit.get())));
  return number && std::isfinite(*number) ? number : std::nullopt;
}

// What the ends of the picture stand for.
struct Scale {
  double low;
  double high;
  bool isOpenBelow;
  bool isOpenAbove;
  bool isLogarithmic;

  double place(double number) const {
    double part = (number - low) / (high - low);
    if (isLogarithmic) {
      part = (std::log(std::max(number, low)) - std::log(low)) / (std::log(high) - std::log(low));
    }
    return kLeft + std::clamp(part, 0.0, 1.0) * (kRight - kLeft);
  }
};

struct Limits {
  std::optional<double> min, max, softMin, softMax, byDefault;

  Scale scale(bool wantsLogarithm) const {
    // Far hard limits would leave nothing of the soft ones.
    constexpr double kFar = 25;
    double low = min.value_or(softMin.value_or(0));
    double high = max.value_or(softMax.value_or(low));
    bool isOpenBelow = !min;
    bool isOpenAbove = !max;
    if (max && softMax && *max - low > kFar * (*softMax - low) && *softMax > low) {
      high = *softMax;
      isOpenAbove = true;
    }
    if (!min && !softMin) low = std::min(0.0, high - 1);
    if (byDefault && std::isfinite(*byDefault)) {
      if (isOpenAbove && !softMax) high = std::max(high, low + 2 * (*byDefault - low));
      if (isOpenBelow) low = std::min(low, *byDefault);
      if (isOpenAbove) high = std::max(high, *byDefault);
    }
    if (high <= low) high = low + 1;
    return {low, high, isOpenBelow, isOpenAbove, wantsLogarithm && low > 0};
  }
};

std::string bar(const char* name, double from, double to, double height) {
  return fmt::format(
      R"(<rect class="{}" x="{:.1f}" y="{:.1f}" width="{:.1f}" height="{:.0f}" rx="2"/>)", name,
      from, kMiddle - height / 2, std::max(to - from, 1.0), height);
}

}  // namespace

std::string rangePicture(const FieldModel& field) {
  const vrntType_t* const type = field.type.get();
  const Limits limits{finiteLimit(type, "min"), finiteLimit(type, "max"),
                      finiteLimit(type, "soft_min"), finiteLimit(type, "soft_max"),
                      commonNumber(type, field.defaultBytes)};
  if (!limits.min && !limits.max && !limits.softMin && !limits.softMax) return {};
  const Scale scale = limits.scale(vrntMetadataExists(type, "logscale") != 0);

  std::string svg = fmt::format(
      R"(<svg class="range" viewBox="0 0 {:.0f} 16" preserveAspectRatio="xMinYMid" aria-hidden="true">)",
      kWidth);
  svg += fmt::format(R"(<line class="axis" x1="{:.0f}" y1="{:.0f}" x2="{:.0f}" y2="{:.0f}"/>)",
                     scale.isOpenBelow ? 0 : kLeft, kMiddle, scale.isOpenAbove ? kWidth : kRight,
                     kMiddle);
  if (limits.min || limits.max) {
    svg += bar("hard", scale.isOpenBelow && !limits.min ? 0 : kLeft,
               scale.isOpenAbove ? kWidth : kRight, 8);
  }
  if (limits.softMin || limits.softMax) {
    const double from = scale.place(limits.softMin.value_or(limits.min.value_or(scale.low)));
    const double to = scale.place(limits.softMax.value_or(limits.max.value_or(scale.high)));
    svg += bar("soft", from, to, 4);
  }
  constexpr double kArrow = 4;
  if (scale.isOpenBelow) {
    svg += fmt::format(R"(<path class="end" d="M{:.0f} {:.0f}L1 {:.0f}L{:.0f} {:.0f}"/>)",
                       kArrow + 1, kMiddle - kArrow, kMiddle, kArrow + 1, kMiddle + kArrow);
  }
  if (scale.isOpenAbove) {
    svg += fmt::format(R"(<path class="end" d="M{:.0f} {:.0f}L{:.0f} {:.0f}L{:.0f} {:.0f}"/>)",
                       kWidth - kArrow - 1, kMiddle - kArrow, kWidth - 1, kMiddle,
                       kWidth - kArrow - 1, kMiddle + kArrow);
  }
  if (limits.byDefault) {
    // An infinite default is where the arrow points.
    const double place = std::isfinite(*limits.byDefault) ? scale.place(*limits.byDefault)
                         : *limits.byDefault > 0          ? kWidth - 2
                                                          : 2;
    svg +=
        fmt::format(R"(<circle class="default" cx="{:.1f}" cy="{:.0f}" r="3.5"/>)", place, kMiddle);
  }
  return svg + "</svg>";
}

}  // namespace vrtk
