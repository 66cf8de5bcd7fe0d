// The functions that tell, apply and check the limits of values, and that convert values.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <deque>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "check/type_plan.hpp"
#include "foundation/failure.hpp"
#include "values/bounds.hpp"
#include "vornath_toolkit/vrtk_value.h"

struct vrtkOutsideList {
  struct Texts {
    std::string path;
    std::string message;
  };
  std::deque<Texts> texts;  // whose elements stay where they are
  std::vector<vrtkOutside> leaves;
};

namespace vrtk {
namespace {

vrnt::UniqueValue valueOf(const vrntType_t* type, const std::vector<char>& bytes) {
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueCreate(type, &error);
  if (value == nullptr) vrnt::detail::raiseError(error);
  if (!bytes.empty()) vrntValueWrite(&value, 0, bytes.data(), bytes.size(), &error);
  vrnt::UniqueValue owner(value);
  if (error != nullptr) vrnt::detail::raiseError(error);
  return owner;
}

// The path of a lane of a leaf.
std::string pathOf(const vrntType_t* type, std::uint64_t offset) {
  std::string path;
  const LeafPlace leaf = leafAt(type, offset, &path);
  const std::uint32_t lanes = vrntTypeVectorDimension(leaf.type);
  if (lanes > 1) {
    const std::uint64_t lane = vrntTypeBasetype(leaf.type) == VRNT_BASETYPE_CHAR   ? 1
                               : vrntTypeBasetype(leaf.type) == VRNT_BASETYPE_HALF ? 2
                                                                                   : 4;
    path += '/' + std::to_string((offset - leaf.offset) / lane);
  }
  if (!path.empty()) path.erase(0, 1);
  return path;
}

// Looks for what a strict conversion refuses. Says what it is, or nothing.
class ConversionCheck {
 public:
  std::string run(const vrntType_t* from, const char* data, const vrntType_t* to) {
    open_.push_back({from, to, data, ""});
    while (!open_.empty()) {
      const Parts parts = std::move(open_.back());
      open_.pop_back();
      const std::size_t first = open_.size();
      const std::string fault = check(parts);
      if (!fault.empty()) {
        return parts.path.empty() ? fault : parts.path.substr(1) + ": " + fault;
      }
      std::reverse(open_.begin() + static_cast<std::ptrdiff_t>(first), open_.end());
    }
    return {};
  }

 private:
  struct Parts {
    const vrntType_t* from;
    const vrntType_t* to;
    const char* data;
    std::string path;
  };

  std::string check(const Parts& parts) {
    if (vrntTypeIsSubType(parts.from, parts.to) != 0) return {};
    if (isStruct(parts.from) && isStruct(parts.to)) {
      structs(parts);
      return {};
    }
    const std::uint32_t kind = vrntTypeDescriptor(parts.from);
    if (kind != vrntTypeDescriptor(parts.to) || isStruct(parts.from) || isStruct(parts.to)) {
      return unrelated(parts);
    }
    if (kind == VRNT_DESCRIPTOR_ENUM) return labels(parts);
    if (kind == VRNT_DESCRIPTOR_ARRAY &&
        vrntTypeArrayDimension(parts.from) == vrntTypeArrayDimension(parts.to)) {
      elements(parts);
      return {};
    }
    return unrelated(parts);
  }

  // A path that nobody can read is cut.
  static std::string pathTo(const std::string& path, std::string_view step) {
    constexpr std::size_t kLongestPath = 4000;
    if (path.size() > kLongestPath) return path;
    return path + "/" + std::string(step);
  }

  static std::string unrelated(const Parts& parts) {
    const vrnt::UniqueType plain(vrntTypeStripMetadata(parts.to));
    const char* const from = vrntTypeString(parts.from);
    const char* const to = vrntTypeString(plain.get());
    if (from == nullptr || to == nullptr) throw std::bad_alloc();
    return fmt::format("a value of the type {} does not fit the type {}", from, to);
  }

  static std::string labels(const Parts& parts) {
    std::uint32_t code = 0;
    std::memcpy(&code, parts.data, sizeof(code));
    if (code >= vrntTypeConstructorCount(parts.from)) {
      return fmt::format("the enum has no constructor with the code {}",
                         static_cast<std::int32_t>(code));
    }
    const std::string_view label = vrntTypeConstructorName(parts.from, code);
    for (std::uint32_t i = 0; i < vrntTypeConstructorCount(parts.to); ++i) {
      if (label == vrntTypeConstructorName(parts.to, i)) return {};
    }
    return fmt::format("the target's enum has no constructor {}", label);
  }

  void structs(const Parts& parts) {
    std::unordered_map<std::string_view, std::uint32_t> targets;
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(parts.to); ++i) {
      targets.emplace(vrntTypeFieldLabel(parts.to, i), i);
    }
    for (std::uint32_t i = 0; i < vrntTypeFieldCount(parts.from); ++i) {
      const char* const label = vrntTypeFieldLabel(parts.from, i);
      const auto target = targets.find(label);
      if (target == targets.end()) continue;
      vrntValueView_t from{};
      vrntValueView_t to{};
      vrntValueStructField(&from, parts.from, i);
      vrntValueStructField(&to, parts.to, target->second);
      open_.push_back({from.type, to.type, parts.data + from.offset, pathTo(parts.path, label)});
    }
  }

  void elements(const Parts& parts) {
    std::array<std::int32_t, 4> from{1, 1, 1, 1};
    std::array<std::int32_t, 4> to{1, 1, 1, 1};
    vrntTypeArrayShape(parts.from, from.data());
    vrntTypeArrayShape(parts.to, to.data());
    const std::uint32_t rank = vrntTypeArrayDimension(parts.from);
    for (std::uint32_t d = 0; d < rank; ++d) {
      if (std::min(from[d], to[d]) < 1) return;
    }
    std::array<std::int32_t, 4> index{};
    for (;;) {
      vrntValueView_t source{};
      vrntValueView_t target{};
      vrntValueArrayElement(&source, parts.from, index.data());
      vrntValueArrayElement(&target, parts.to, index.data());
      if (vrntTypeIsSubType(source.type, target.type) != 0) return;
      std::string path = parts.path;
      for (std::uint32_t d = rank; d-- > 0;) path = pathTo(path, std::to_string(index[d]));
      open_.push_back({source.type, target.type, parts.data + source.offset, std::move(path)});
      std::uint32_t d = 0;
      while (d < rank && ++index[d] >= std::min(from[d], to[d])) index[d++] = 0;
      if (d == rank) return;
    }
  }

  std::vector<Parts> open_;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkValueBounds(const vrntType_t* type, vrtkBounds* bounds, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkValueBounds", "type");
    vrtk::requireArgument(bounds, "vrtkValueBounds", "bounds");
    vrtk::requireConcrete(type, "vrtkValueBounds");
    vrtk::BoundsBytes bytes(type);
    const vrntType_t* const plain = vrntValueType(bytes.defaults.get());
    vrnt::UniqueValue min = vrtk::valueOf(plain, bytes.min);
    vrnt::UniqueValue max = vrtk::valueOf(plain, bytes.max);
    vrnt::UniqueValue softMin = vrtk::valueOf(plain, bytes.softMin);
    vrnt::UniqueValue softMax = vrtk::valueOf(plain, bytes.softMax);
    bounds->defaultValue = bytes.defaults.release();
    bounds->min = min.release();
    bounds->max = max.release();
    bounds->softMin = softMin.release();
    bounds->softMax = softMax.release();
  });
}

void vrtkBoundsRelease(vrtkBounds* bounds) {
  if (bounds == nullptr) return;
  for (vrntValue_t** const value :
       {&bounds->defaultValue, &bounds->min, &bounds->max, &bounds->softMin, &bounds->softMax}) {
    if (*value != nullptr) vrntValueDestroy(std::exchange(*value, nullptr));
  }
}

std::uint32_t vrtkValueClamp(const vrntType_t* type, vrntValue_t** value, std::uint64_t* changed,
                             vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkValueClamp", "type");
    vrtk::requireArgument(value, "vrtkValueClamp", "value");
    vrtk::requireArgument(*value, "vrtkValueClamp", "*value");
    vrtk::requireType(type, *value);
    const vrtk::BoundsBytes bounds(type);
    const vrtk::ValueLayout layout(vrntValueType(*value));
    struct Change {
      std::uint64_t offset;
      std::uint32_t size;
      const char* bytes;
    };
    std::vector<Change> changes;
    vrtk::findOutside(layout, bounds, static_cast<const char*>(vrntValueData(*value)),
                      [&](const vrtk::Outside& outside) {
                        const std::uint32_t size = outside.kind == vrtk::RunKind::Char   ? 1
                                                   : outside.kind == vrtk::RunKind::Half ? 2
                                                                                         : 4;
                        changes.push_back({outside.offset, size, outside.nearest});
                      });
    if (!changes.empty()) {
      const vrntValueView_t whole{vrntValueType(*value), 0};
      vrntValuesError_t* failed = nullptr;
      auto* const bytes = static_cast<char*>(vrntValueMap(value, &whole, &failed));
      if (bytes == nullptr) vrnt::detail::raiseError(failed);
      for (const Change& change : changes) {
        std::memcpy(bytes + change.offset, change.bytes, change.size);
      }
      vrntValueUnmap(*value, &whole);
    }
    if (changed != nullptr) *changed = changes.size();
  });
}

std::uint32_t vrtkValueCheck(const vrntType_t* type, const vrntValue_t* value,
                             vrtkOutsideList** list, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkValueCheck", "type");
    vrtk::requireArgument(value, "vrtkValueCheck", "value");
    vrtk::requireArgument(list, "vrtkValueCheck", "list");
    vrtk::requireType(type, value);
    const vrtk::BoundsBytes bounds(type);
    const vrtk::ValueLayout layout(vrntValueType(value));
    auto made = std::make_unique<vrtkOutsideList>();
    vrtk::findOutside(layout, bounds, static_cast<const char*>(vrntValueData(value)),
                      [&](const vrtk::Outside& outside) {
                        made->texts.push_back({vrtk::pathOf(layout.type(), outside.offset),
                                               vrtk::outsideText(outside)});
                        made->leaves.push_back({made->texts.back().path.c_str(), outside.offset,
                                                made->texts.back().message.c_str()});
                      });
    *list = made.release();
  });
}

void vrtkOutsideListDestroy(vrtkOutsideList* list) { delete list; }
std::uint64_t vrtkOutsideCount(const vrtkOutsideList* list) { return list->leaves.size(); }

const vrtkOutside* vrtkOutsideAt(const vrtkOutsideList* list, std::uint64_t index) {
  return index < list->leaves.size() ? &list->leaves[static_cast<std::size_t>(index)] : nullptr;
}

std::uint32_t vrtkValueCoerce(const vrntType_t* type, const vrntValue_t* value,
                              std::uint32_t lenient, vrntValue_t** result, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkValueCoerce", "type");
    vrtk::requireArgument(value, "vrtkValueCoerce", "value");
    vrtk::requireArgument(result, "vrtkValueCoerce", "result");
    if (lenient == 0) {
      const std::string fault = vrtk::ConversionCheck().run(
          vrntValueType(value), static_cast<const char*>(vrntValueData(value)), type);
      if (!fault.empty()) throw vrtk::Failure(VRTK_VALUE_TYPE, fault);
    }
    vrntValuesError_t* failed = nullptr;
    vrntValue_t* const made = vrntCoerce(type, value, &failed);
    if (made == nullptr) vrnt::detail::raiseError(failed);
    *result = made;
  });
}
