#include "check/type_plan.hpp"

#include <algorithm>
#include <array>
#include <cfloat>
#include <limits>
#include <optional>
#include <string_view>

#include "foundation/half.hpp"
#include "foundation/load.hpp"
#include "types/type_queries.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/metadata.h"
#include "vornath_data/values.h"

namespace vrtk {
namespace {

constexpr std::array<std::string_view, 6> kTextureLabels = {
    "spectrum_texture", "spectrum_sphere_texture", "normal_texture",
    "float_texture",    "float_sphere_texture",    "texture_ref"};

// The bytes of an annotation that is a value of the type. Like the library, takes no notice of a
// value of another type.
vrnt::UniqueValue annotation(const vrntType_t* type, const char* key) {
  if (vrntMetadataExists(type, key) == 0 || vrntMetadataType(type, key) != VRNT_METADATA_VALUE) {
    return nullptr;
  }
  vrnt::UniqueValue value(vrntMetadataValue(type, key));
  if (vrntTypeIsEqual(vrntValueType(value.get()), type) == 0) return nullptr;
  return value;
}

std::uint64_t saturatingMultiply(std::uint64_t a, std::uint64_t b) {
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  return a != 0 && b > kMax / a ? kMax : a * b;
}

}  // namespace

bool isTextureReference(const vrntType_t* structType) {
  if (vrntTypeFieldCount(structType) != 1) return false;
  vrntValueView_t field{};
  vrntValueStructField(&field, structType, 0);
  const auto lane = laneType(field.type);
  if (!lane || lane->family != VRNT_BASETYPE_INT || lane->lanes != 1) return false;
  const std::string_view label = vrntTypeFieldLabel(structType, 0);
  if (std::find(kTextureLabels.begin(), kTextureLabels.end(), label) != kTextureLabels.end()) {
    return true;
  }
  return vrntMetadataExists(structType, "alias") != 0 &&
         vrntMetadataType(structType, "alias") == VRNT_METADATA_TEXT &&
         std::string_view(vrntMetadataString(structType, "alias")) == "texture_ref";
}

// Goes through a type without recursion, since types may nest as deeply as a file is long.
class PlanBuilder {
 public:
  PlanBuilder(TypePlan& plan, TypePlan::Numbers numbers) : plan_(plan), numbers_(numbers) {}

  void run(const vrntType_t* type) {
    plan_.loops_.emplace_back();
    openLoops_.push_back(0);
    enter(type, 0);
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next != top.count) {
        next(top);
      } else {
        leave();
      }
    }
    plan_.parts_ = lastParts_;
  }

 private:
  // A struct, or an array whose elements are gone through once.
  struct Open {
    const vrntType_t* type;
    std::uint64_t offset;
    std::uint32_t next;
    std::uint32_t count;
    double parts;
    std::uint64_t elements;  // of an array
    std::size_t operation;   // of an array: its loop
    std::uint32_t loop;      // of an array: its references
    std::uint64_t elementSize;
  };

  // The limits of a number or of an array of numbers, as bytes in its layout.
  struct Limits {
    vrnt::UniqueValue min, max;

    bool any() const { return min || max; }
    static const char* bytes(const vrnt::UniqueValue& limit) {
      return limit ? static_cast<const char*>(vrntValueData(limit.get())) : nullptr;
    }
  };

  void next(Open& top) {
    vrntValueView_t part{};
    if (top.elementSize == 0) {
      vrntValueStructField(&part, top.type, top.next++);
      enter(part.type, top.offset + part.offset);
    } else {
      constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
      vrntValueArrayElement(&part, top.type, kFirst);
      ++top.next;
      enter(part.type, 0);
    }
  }

  void leave() {
    const Open done = open_.back();
    open_.pop_back();
    if (done.elementSize != 0) closeLoop(done);
    add(done.elementSize != 0 ? 1 + static_cast<double>(done.elements) * (done.parts - 1)
                              : done.parts);
  }

  // Adds the parts of what was left to those of what contains it.
  void add(double parts) {
    lastParts_ = parts;
    if (!open_.empty()) open_.back().parts += parts;
  }

  void enter(const vrntType_t* type, std::uint64_t offset) {
    if (isStruct(type)) {
      if (isTextureReference(type)) operation({Rule::Texture, 0, offset, 1, 4});
      open_.push_back({type, offset, 0, vrntTypeFieldCount(type), 1, 0, 0, 0, 0});
      return;
    }
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_BASE:
        lanes(type, *laneType(type), offset);
        add(1);
        return;
      case VRNT_DESCRIPTOR_ENUM:
        operation({Rule::Enum, 0, offset, 1, 4, vrntTypeConstructorCount(type)});
        add(1);
        return;
      case VRNT_DESCRIPTOR_ARRAY:
        array(type, offset);
        return;
      case VRNT_DESCRIPTOR_REFERENCE: {
        const vrnt::UniqueType target(vrntTypeReferencedType(type));  // lives as long as `type`
        reference(offset, target.get());
        add(1);
        return;
      }
      default:
        reference(offset, nullptr);
        reference(offset + 8, nullptr);
        add(1);
    }
  }

  void array(const vrntType_t* type, std::uint64_t offset) {
    const std::uint64_t elements = elementCount(type);
    if (elements == 0) {
      add(1);
      return;
    }
    constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
    vrntValueView_t element{};
    vrntValueArrayElement(&element, type, kFirst);
    const std::uint64_t size = vrntTypeSize(element.type);
    if (size == 0) {
      // Nothing is stored, but a text has all elements, each without parts: an array of nothing.
      add(1 + static_cast<double>(elements) * emptyParts(element.type));
      return;
    }
    if (const Limits limits = limitsOf(type); limits.any()) {
      if (const auto lane = laneType(element.type)) {
        arrayWithLimits(*lane, offset, elements, size, limits);
        return;
      }
    }
    plan_.operations_.push_back({Rule::Loop, 0, offset, elements, size});
    const auto loop = static_cast<std::uint32_t>(plan_.loops_.size());
    plan_.loops_.emplace_back().stride = size;
    openLoops_.push_back(loop);
    open_.push_back({type, offset, 0, 1, 1, elements, plan_.operations_.size() - 1, loop, size});
  }

  // The limits of an array have a number for each element.
  void arrayWithLimits(const LaneType& lane, std::uint64_t offset, std::uint64_t elements,
                       std::uint64_t size, const Limits& limits) {
    const char* const min = Limits::bytes(limits.min);
    const char* const max = Limits::bytes(limits.max);
    for (std::uint64_t i = 0; i < elements; ++i) {
      const std::uint64_t at = i * size;
      lanes(lane, offset + at, min != nullptr ? min + at : nullptr,
            max != nullptr ? max + at : nullptr);
    }
    add(1 + static_cast<double>(elements));
  }

  // How many parts the text of a value of no bytes has: it is an array, of arrays or of anything.
  static double emptyParts(const vrntType_t* type) {
    double parts = 1;
    while (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
      parts *= static_cast<double>(std::max<std::uint64_t>(elementCount(type), 1));
      constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
      vrntValueView_t element{};
      vrntValueArrayElement(&element, type, kFirst);
      type = element.type;
    }
    return parts;
  }

  void closeLoop(const Open& done) {
    auto& operations = plan_.operations_;
    openLoops_.pop_back();
    const std::size_t inside = operations.size() - done.operation - 1;
    Operation& loop = operations[done.operation];
    if (inside == 0) {
      operations.pop_back();
    } else if (inside == 1 && operations.back().rule != Rule::Loop &&
               (operations.back().count == 1 ||
                operations.back().count * operations.back().stride == done.elementSize)) {
      // A run of numbers.
      Operation run = operations.back();
      if (run.count == 1) run.stride = done.elementSize;
      run.count = saturatingMultiply(run.count, done.elements);
      run.offset += loop.offset;
      operations.pop_back();
      operations.back() = run;
    } else {
      loop.end = static_cast<std::uint32_t>(operations.size());
    }
    const std::uint64_t perElement = plan_.loops_[done.loop].perElement;
    if (perElement == 0) {
      if (done.loop + 1 == plan_.loops_.size()) plan_.loops_.pop_back();
      return;
    }
    auto& outer = plan_.loops_[openLoops_.back()];
    outer.items.push_back({outer.perElement, done.offset, nullptr, done.loop});
    outer.perElement += saturatingMultiply(perElement, done.elements);
  }

  void reference(std::uint64_t offset, const vrntType_t* target) {
    auto& loop = plan_.loops_[openLoops_.back()];
    loop.items.push_back({loop.perElement++, offset, target, 0});
  }

  // Adds an operation, or lengthens the last one.
  void operation(const Operation& added) {
    auto& operations = plan_.operations_;
    const std::size_t first =
        loopStart();  // operations before it belong to what is around the innermost loop
    if (operations.size() > first) {
      Operation& last = operations.back();
      if (last.rule == added.rule && last.rule != Rule::Loop && last.stride == added.stride &&
          last.offset + last.count * last.stride == added.offset && last.bound == added.bound &&
          last.min == added.min && last.max == added.max) {
        last.count += added.count;
        return;
      }
    }
    operations.push_back(added);
  }

  std::size_t loopStart() const {
    for (auto i = open_.rbegin(); i != open_.rend(); ++i) {
      if (i->elementSize != 0) return i->operation + 1;
    }
    return 0;
  }

  Limits limitsOf(const vrntType_t* type) const {
    if (numbers_ == TypePlan::Numbers::Bare) return {};
    return {annotation(type, "min"), annotation(type, "max")};
  }

  void lanes(const vrntType_t* type, const LaneType& lane, std::uint64_t offset) {
    const Limits limits = limitsOf(type);
    lanes(lane, offset, Limits::bytes(limits.min), Limits::bytes(limits.max));
  }

  void lanes(const LaneType& lane, std::uint64_t offset, const char* min, const char* max) {
    if (lane.family == VRNT_BASETYPE_BOOL) {
      operation({Rule::Bool, 0, offset, lane.lanes, 4});
      return;
    }
    const bool isFloat = lane.family == VRNT_BASETYPE_FLOAT || lane.family == VRNT_BASETYPE_HALF;
    if (!isFloat && min == nullptr && max == nullptr) return;
    const Rule rule = lane.family == VRNT_BASETYPE_FLOAT  ? Rule::Float
                      : lane.family == VRNT_BASETYPE_HALF ? Rule::Half
                      : lane.family == VRNT_BASETYPE_INT  ? Rule::Int
                                                          : Rule::Char;
    // Without limits, a float of a schema is finite.
    double most = std::numeric_limits<double>::infinity();
    if (numbers_ == TypePlan::Numbers::Annotated && isFloat) {
      most = rule == Rule::Half ? 65504.0 : double{FLT_MAX};
    }
    for (std::uint32_t i = 0; i < lane.lanes; ++i) {
      const std::size_t at = std::size_t{i} * lane.size;
      operation({rule, 0, offset + at, 1, lane.size, 0,
                 min != nullptr ? laneNumber(lane, min, i) : -most,
                 max != nullptr ? laneNumber(lane, max, i) : most});
    }
  }

  TypePlan& plan_;
  TypePlan::Numbers numbers_;
  std::vector<Open> open_;
  std::vector<std::uint32_t> openLoops_;
  double lastParts_ = 0;
};

TypePlan::TypePlan(const vrntType_t* type, Numbers numbers)
    : type_(type), size_(vrntTypeSize(type)) {
  PlanBuilder(*this, numbers).run(type);
}

ReferencePlace TypePlan::reference(std::uint64_t index) const {
  std::uint64_t offset = 0;
  const ReferenceLoop* loop = loops_.data();
  for (;;) {
    offset += index / loop->perElement * loop->stride;
    index %= loop->perElement;
    const auto behind =
        std::upper_bound(loop->items.begin(), loop->items.end(), index,
                         [](std::uint64_t i, const ReferenceItem& item) { return i < item.first; });
    const ReferenceItem& item = *std::prev(behind);
    offset += item.offset;
    if (item.loop == 0) return {offset, item.target};
    index -= item.first;
    loop = &loops_[item.loop];
  }
}

std::size_t TypePlan::memory() const {
  std::size_t bytes = sizeof(*this) + operations_.capacity() * sizeof(Operation) +
                      loops_.capacity() * sizeof(ReferenceLoop);
  for (const ReferenceLoop& loop : loops_) {
    bytes += loop.items.capacity() * sizeof(ReferenceItem);
  }
  return bytes;
}

void appendPath(std::string& out, const vrntType_t* type, std::uint64_t offset) {
  for (;;) {
    if (isStruct(type)) {
      // The last field that starts at the place or before it, and is not behind it.
      const std::uint32_t fields = vrntTypeFieldCount(type);
      vrntValueView_t part{};
      std::uint32_t found = fields;
      for (std::uint32_t i = 0; i < fields; ++i) {
        vrntValueView_t field{};
        vrntValueStructField(&field, type, i);
        if (field.offset > offset || offset - field.offset >= vrntTypeSize(field.type)) continue;
        part = field;
        found = i;
      }
      if (found == fields) return;
      out += '/';
      out += vrntTypeFieldLabel(type, found);
      type = part.type;
      offset -= part.offset;
    } else if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
      constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};
      vrntValueView_t element{};
      vrntValueArrayElement(&element, type, kFirst);
      const std::uint64_t size = vrntTypeSize(element.type);
      if (size == 0) return;
      const std::uint64_t index = offset / size;
      offset -= index * size;
      forEachIndex(type, index, [&out](std::uint64_t i) { out += '/' + std::to_string(i); });
      type = element.type;
    } else {
      const auto lane = laneType(type);
      if (lane && lane->lanes > 1) out += '/' + std::to_string(offset / lane->size);
      return;
    }
  }
}

}  // namespace vrtk
