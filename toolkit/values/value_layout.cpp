#include "values/value_layout.hpp"

#include <algorithm>
#include <array>
#include <limits>

#include "check/type_plan.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/values.h"

namespace vrtk {
namespace {

constexpr std::int32_t kFirst[4] = {0, 0, 0, 0};

vrntValueView_t elementOf(const vrntType_t* arrayType) {
  vrntValueView_t element{};
  vrntValueArrayElement(&element, arrayType, kFirst);
  return element;
}

}  // namespace

// Goes through a type without recursion, since types may nest as deeply as a file is long.
class LayoutBuilder {
 public:
  explicit LayoutBuilder(ValueLayout& layout) : layout_(layout) {}

  void run(const vrntType_t* type) {
    enter(type, 0);
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next == top.count) {
        const Open done = top;
        open_.pop_back();
        if (done.elementSize != 0) closeLoop(done);
        continue;
      }
      vrntValueView_t part{};
      if (top.elementSize == 0) {
        vrntValueStructField(&part, top.type, top.next++);
        enter(part.type, top.offset + part.offset);
      } else {
        ++top.next;
        enter(elementOf(top.type).type, 0);
      }
    }
  }

 private:
  // A struct, or an array whose elements are gone through once.
  struct Open {
    const vrntType_t* type;
    std::uint64_t offset;
    std::uint32_t next;
    std::uint32_t count;
    std::uint64_t elementSize;  // of an array, else 0
    std::size_t loop;           // of an array: its run
  };

  void enter(const vrntType_t* type, std::uint64_t offset) {
    if (isStruct(type)) {
      open_.push_back({type, offset, 0, vrntTypeFieldCount(type), 0, 0});
      return;
    }
    switch (vrntTypeDescriptor(type)) {
      case VRNT_DESCRIPTOR_BASE:
        return lanes(type, offset);
      case VRNT_DESCRIPTOR_ENUM:
        return add({RunKind::Enum, 0, offset, 1, 4, 4});
      case VRNT_DESCRIPTOR_ARRAY: {
        const std::uint64_t elements = elementCount(type);
        if (elements == 0) return;
        const std::uint64_t size = vrntTypeSize(elementOf(type).type);
        if (size == 0) return;
        layout_.runs_.push_back({RunKind::Loop, 0, offset, elements, size, 0});
        first_ = layout_.runs_.size();
        open_.push_back({type, offset, 0, 1, size, layout_.runs_.size() - 1});
        return;
      }
      case VRNT_DESCRIPTOR_REFERENCE:
        layout_.hasWords_ = true;
        return add({RunKind::Word, 0, offset, 1, 8, 8});
      default:
        layout_.hasWords_ = true;
        return add({RunKind::Word, 0, offset, 2, 8, 8});
    }
  }

  void lanes(const vrntType_t* type, std::uint64_t offset) {
    const std::uint64_t count = vrntTypeVectorDimension(type);
    switch (vrntTypeBasetype(type)) {
      case VRNT_BASETYPE_CHAR:
        return add({RunKind::Char, 0, offset, count, 1, 1});
      case VRNT_BASETYPE_HALF:
        return add({RunKind::Half, 0, offset, count, 2, 2});
      case VRNT_BASETYPE_BOOL:
        return add({RunKind::Bool, 0, offset, count, 4, 4});
      case VRNT_BASETYPE_INT:
        return add({RunKind::Int, 0, offset, count, 4, 4});
      default:
        return add({RunKind::Float, 0, offset, count, 4, 4});
    }
  }

  // Adds a run, or lengthens the last one, if it is of the same loop.
  void add(const LayoutRun& added) {
    auto& runs = layout_.runs_;
    if (runs.size() > first_) {
      LayoutRun& last = runs.back();
      if (last.kind == added.kind && last.size == added.size && last.contiguous() &&
          last.offset + last.count * last.stride == added.offset) {
        last.count += added.count;
        return;
      }
    }
    runs.push_back(added);
  }

  void closeLoop(const Open& done) {
    auto& runs = layout_.runs_;
    const std::size_t inside = runs.size() - done.loop - 1;
    LayoutRun& loop = runs[done.loop];
    if (inside == 0) {
      runs.pop_back();
    } else if (inside == 1 && runs.back().kind != RunKind::Loop &&
               (runs.back().count == 1 ||
                (runs.back().contiguous() &&
                 runs.back().count * runs.back().size == done.elementSize))) {
      // One run of numbers. The type's size is in 64 bits, and so is their number.
      LayoutRun run = runs.back();
      if (run.count == 1) run.stride = done.elementSize;
      run.count *= loop.count;
      run.offset += loop.offset;
      runs.pop_back();
      runs.back() = run;
    } else {
      loop.end = static_cast<std::uint32_t>(runs.size());
    }
    first_ = runs.size();
  }

  ValueLayout& layout_;
  std::vector<Open> open_;
  std::size_t first_ = 0;  // runs before it cannot be lengthened
};

ValueLayout::ValueLayout(const vrntType_t* type) : type_(type), size_(vrntTypeSize(type)) {
  LayoutBuilder(*this).run(type);
}

LeafPlace leafAt(const vrntType_t* type, std::uint64_t offset, std::string* path) {
  constexpr std::size_t kLongestPath = 4000;
  std::uint64_t start = 0;
  const auto append = [path](const auto& step) {
    if (path == nullptr || path->size() > kLongestPath) return;
    *path += '/';
    *path += step;
    if (path->size() > kLongestPath) *path += "/...";
  };
  for (;;) {
    if (isStruct(type)) {
      const std::uint32_t fields = vrntTypeFieldCount(type);
      // Fields are in the order of their offsets; the last one that starts at the place or before
      // it and has bytes there is the one.
      std::uint32_t low = 0;
      std::uint32_t high = fields;
      vrntValueView_t field{};
      while (high - low > 1) {
        const std::uint32_t middle = low + (high - low) / 2;
        vrntValueStructField(&field, type, middle);
        (field.offset <= offset ? low : high) = middle;
      }
      // Fields without bytes may stand behind the one that is searched, at its end.
      vrntValueStructField(&field, type, low);
      while (low != 0 && vrntTypeSize(field.type) == 0) {
        vrntValueStructField(&field, type, --low);
      }
      append(vrntTypeFieldLabel(type, low));
      type = field.type;
      start += field.offset;
      offset -= field.offset;
    } else if (vrntTypeDescriptor(type) == VRNT_DESCRIPTOR_ARRAY) {
      const vrntType_t* const element = elementOf(type).type;
      const std::uint64_t size = vrntTypeSize(element);
      std::uint64_t index = offset / size;
      start += index * size;
      offset -= index * size;
      std::int32_t shape[4] = {1, 1, 1, 1};
      vrntTypeArrayShape(type, shape);
      const std::uint32_t rank = vrntTypeArrayDimension(type);
      // The last dimension, which runs slowest, is the outermost array.
      std::array<std::uint64_t, 4> indices{};
      for (std::uint32_t d = 0; d < rank; ++d) {
        const auto extent = static_cast<std::uint64_t>(std::max(shape[d], 1));
        indices[d] = d + 1 == rank ? index : index % extent;
        index /= extent;
      }
      for (std::uint32_t d = rank; d-- > 0;) append(std::to_string(indices[d]));
      type = element;
    } else {
      return {type, start};
    }
  }
}

}  // namespace vrtk
