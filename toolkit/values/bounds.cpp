#include "values/bounds.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

#include "check/type_plan.hpp"
#include "foundation/failure.hpp"
#include "foundation/half.hpp"
#include "json/numbers.hpp"
#include "vornath_data/metadata.h"
#include "vornath_data/values.h"

namespace vrtk {
namespace {

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

template <typename T>
void fill(std::vector<char>& bytes, std::uint64_t offset, std::uint64_t lanes, T value) {
  for (std::uint64_t i = 0; i < lanes; ++i) {
    std::memcpy(bytes.data() + offset + i * sizeof(T), &value, sizeof(T));
  }
}

vrnt::UniqueValue annotation(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_VALUE) {
    return nullptr;
  }
  vrnt::UniqueValue value(vrntMetadataValue(type, key));
  // Like the library, takes no notice of a value of another type.
  if (vrntTypeIsSubType(vrntValueType(value.get()), type) == 0) return nullptr;
  return value;
}

class BoundsBuilder {
 public:
  explicit BoundsBuilder(BoundsBytes& bounds) : bounds_(bounds) {}

  // The parts are listed before they are filled, and filled from the last to the first, so that
  // what contains others comes after them and its annotations replace theirs. No recursion: types
  // may nest as deeply as a text is long.
  void run(const vrntType_t* type) {
    struct Part {
      const vrntType_t* type;
      std::uint64_t offset;
    };
    std::vector<Part> parts;
    std::vector<Part> open{{type, 0}};
    while (!open.empty()) {
      const Part part = open.back();
      open.pop_back();
      parts.push_back(part);
      vrntValueView_t view{};
      if (isStruct(part.type)) {
        for (std::uint32_t i = 0; i < vrntTypeFieldCount(part.type); ++i) {
          vrntValueStructField(&view, part.type, i);
          open.push_back({view.type, part.offset + view.offset});
        }
      } else if (isArrayWithBytes(part.type)) {
        constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
        vrntValueArrayElement(&view, part.type, kFirst);
        open.push_back({view.type, part.offset});
      }
    }
    while (!parts.empty()) {
      own(parts.back().type, parts.back().offset);
      annotations(parts.back().type, parts.back().offset);
      parts.pop_back();
    }
  }

 private:
  static bool isArrayWithBytes(const vrntType_t* type) {
    return !isStruct(type) && vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY &&
           elementCount(type) != 0 && vrntTypeSize(type) != 0;
  }

  template <typename T>
  void range(std::uint64_t offset, std::uint64_t lanes, T min, T max) {
    fill(bounds_.min, offset, lanes, min);
    fill(bounds_.softMin, offset, lanes, min);
    fill(bounds_.max, offset, lanes, max);
    fill(bounds_.softMax, offset, lanes, max);
  }

  void own(const vrntType_t* type, std::uint64_t offset) {
    if (isStruct(type)) return;
    if (isArrayWithBytes(type)) return repeat(type, offset);
    const std::uint32_t kind = vrntTypeDescriptor(type);
    if (kind == VRNT_DESCRIPTOR_ENUM) {
      return range<std::int32_t>(offset, 1, 0,
                                 static_cast<std::int32_t>(vrntTypeConstructorCount(type)) - 1);
    }
    if (kind != VRNT_DESCRIPTOR_BASE) return;
    const std::uint64_t lanes = vrntTypeVectorDimension(type);
    constexpr float kInfinity = std::numeric_limits<float>::infinity();
    switch (vrntTypeBasetype(type)) {
      case VRNT_BASETYPE_BOOL:
        return range<std::uint32_t>(offset, lanes, 0, ~std::uint32_t{0});
      case VRNT_BASETYPE_INT:
        return range(offset, lanes, std::numeric_limits<std::int32_t>::min(),
                     std::numeric_limits<std::int32_t>::max());
      case VRNT_BASETYPE_CHAR:
        return range<std::uint8_t>(offset, lanes, 0, 255);
      case VRNT_BASETYPE_HALF:
        return range<std::uint16_t>(offset, lanes, 0xFC00, 0x7C00);
      default:
        return range(offset, lanes, -kInfinity, kInfinity);
    }
  }

  // Copies the limits of the first element to the others.
  void repeat(const vrntType_t* type, std::uint64_t offset) {
    const std::uint64_t total = vrntTypeSize(type);
    const std::uint64_t size = total / elementCount(type);
    for (auto* const bytes : {&bounds_.min, &bounds_.max, &bounds_.softMin, &bounds_.softMax}) {
      char* const first = bytes->data() + offset;
      for (std::uint64_t done = size; done < total;) {
        const std::uint64_t count = std::min(done, total - done);
        std::memcpy(first + done, first, static_cast<std::size_t>(count));
        done += count;
      }
    }
  }

  void annotations(const vrntType_t* type, std::uint64_t offset) {
    if (vrntMetadataSize(type) == 0) return;
    const vrnt::UniqueValue min = annotation(type, "min");
    const vrnt::UniqueValue max = annotation(type, "max");
    const vrnt::UniqueValue softMin = annotation(type, "soft_min");
    const vrnt::UniqueValue softMax = annotation(type, "soft_max");
    copy(min, bounds_.min, offset);
    copy(softMin ? softMin : min, bounds_.softMin, offset);
    copy(max, bounds_.max, offset);
    copy(softMax ? softMax : max, bounds_.softMax, offset);
  }

  // Copies all but the words of references.
  static void copy(const vrnt::UniqueValue& limit, std::vector<char>& bytes, std::uint64_t offset) {
    if (!limit) return;
    const auto* const data = static_cast<const char*>(vrntValueData(limit.get()));
    ValueLayout(vrntValueType(limit.get())).forEachRun([&](const LayoutRun& run, std::uint64_t at) {
      if (run.kind == RunKind::Word) return true;
      for (std::uint64_t i = 0; i < run.count; ++i) {
        const std::uint64_t place = at + i * run.stride;
        std::memcpy(bytes.data() + offset + place, data + place, run.size);
      }
      return true;
    });
  }

  BoundsBytes& bounds_;
};

// Returns the limit that a number is beyond, or null. `Read` makes a number of its bytes.
template <typename Read>
const char* beyond(const char* at, const char* min, const char* max, Read read,
                   Outside::Fault& fault) {
  if (read(at) < read(min)) {
    fault = Outside::Fault::Below;
    return min;
  }
  if (read(at) > read(max)) {
    fault = Outside::Fault::Above;
    return max;
  }
  return nullptr;
}

constexpr std::uint32_t kTrue = ~std::uint32_t{0};

// Returns what a number is to become, or null if it is within its limits.
const char* nearestOf(RunKind kind, const char* at, const char* min, const char* max,
                      const char* standard, Outside::Fault& fault) {
  switch (kind) {
    case RunKind::Bool: {
      const auto word = load<std::uint32_t>(at);
      static constexpr std::uint32_t kTrueWord = kTrue;
      if (word != 0 && word != kTrue) {
        fault = Outside::Fault::NoBool;
        return reinterpret_cast<const char*>(&kTrueWord);
      }
      return beyond(at, min, max, load<std::uint32_t>, fault);
    }
    case RunKind::Enum: {
      const char* const limit = beyond(at, min, max, load<std::int32_t>, fault);
      if (limit == nullptr) return nullptr;
      fault = Outside::Fault::NoChoice;
      return standard;
    }
    case RunKind::Int:
      return beyond(at, min, max, load<std::int32_t>, fault);
    case RunKind::Char:
      return beyond(at, min, max, load<std::uint8_t>, fault);
    case RunKind::Float:
      if (std::isnan(load<float>(at))) {
        fault = Outside::Fault::NoNumber;
        return standard;
      }
      return beyond(at, min, max, load<float>, fault);
    case RunKind::Half: {
      const auto read = [](const char* half) { return halfToFloat(load<std::uint16_t>(half)); };
      if (std::isnan(read(at))) {
        fault = Outside::Fault::NoNumber;
        return standard;
      }
      return beyond(at, min, max, read, fault);
    }
    default:
      return nullptr;
  }
}

}  // namespace

void requireConcrete(const vrntType_t* type, const char* function) {
  // The library has no type with a part that has no size, so only the whole can have none.
  if (isStruct(type) || vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ARRAY) return;
  std::int32_t shape[4] = {0, 0, 0, 0};
  vrntTypeArrayShape(type, shape);
  if (shape[0] >= 0) return;
  throw Failure(VRTK_INVALID_ARGUMENT,
                fmt::format("{}: there are no values of an array without a size; give its extents",
                            function));
}

void requireType(const vrntType_t* type, const vrntValue_t* value) {
  if (vrntTypeIsEqual(vrntValueType(value), type) != 0) return;
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueString reason(vrntTypeCheckSubType(vrntValueType(value), type, &error));
  const vrnt::UniqueError owner(error);
  throw Failure(VRTK_VALUE_TYPE,
                fmt::format("the value is not of the expected type{}{}; convert it first",
                            reason ? ": " : "", reason ? reason.get() : ""));
}

BoundsBytes::BoundsBytes(const vrntType_t* type) {
  vrntValuesError_t* error = nullptr;
  defaults.reset(vrntValueCreateDefault(type, &error));
  if (!defaults) vrnt::detail::raiseError(error);
  const auto size = static_cast<std::size_t>(vrntTypeSize(type));
  for (auto* const bytes : {&min, &max, &softMin, &softMax}) bytes->resize(size);
  BoundsBuilder(*this).run(type);
}

void findOutside(const ValueLayout& layout, const BoundsBytes& bounds, const char* data,
                 const std::function<void(const Outside&)>& visit) {
  const auto* const standard = static_cast<const char*>(vrntValueData(bounds.defaults.get()));
  layout.forEachRun([&](const LayoutRun& run, std::uint64_t offset) {
    if (run.kind == RunKind::Word) return true;
    for (std::uint64_t i = 0; i < run.count; ++i) {
      const std::uint64_t at = offset + i * run.stride;
      Outside::Fault fault{};
      const char* const nearest = nearestOf(run.kind, data + at, bounds.min.data() + at,
                                            bounds.max.data() + at, standard + at, fault);
      // A default is right, though it may be outside its limits.
      if (nearest == nullptr || std::equal(data + at, data + at + run.size, standard + at))
        continue;
      visit({at, run.kind, data + at, nearest, fault});
    }
    return true;
  });
}

std::string numberText(RunKind kind, const char* at) {
  char text[kLongestNumber];
  char* end;
  switch (kind) {
    case RunKind::Bool:
      end = writeBool(text, load<std::uint32_t>(at));
      break;
    case RunKind::Char:
      end = writeInt(text, load<std::uint8_t>(at));
      break;
    case RunKind::Half:
      end = writeHalf(text, load<std::uint16_t>(at));
      break;
    case RunKind::Float:
      end = writeFloat(text, load<std::uint32_t>(at));
      break;
    default:
      end = writeInt(text, load<std::int32_t>(at));
  }
  return std::string(text, end);
}

std::string outsideText(const Outside& outside) {
  std::string found = numberText(outside.kind, outside.found);
  std::string limit = numberText(outside.kind, outside.nearest);
  // What JSON has no number for stands in quotes there.
  for (std::string* const text : {&found, &limit}) {
    text->erase(std::remove(text->begin(), text->end(), '"'), text->end());
  }
  switch (outside.fault) {
    case Outside::Fault::Below:
      return fmt::format("{} is below the minimum, {}", found, limit);
    case Outside::Fault::Above:
      return fmt::format("{} is above the maximum, {}", found, limit);
    case Outside::Fault::NoNumber:
      return "it is not a number";
    case Outside::Fault::NoChoice:
      return fmt::format("the enum has no constructor with the code {}", found);
    case Outside::Fault::NoBool:
      return fmt::format("the word 0x{:08x} is no bool, which is 0 or 0xffffffff",
                         load<std::uint32_t>(outside.found));
  }
  return found;
}

}  // namespace vrtk
