#include "scene/text_comparison.hpp"

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>

namespace vrnt::data {

namespace {

// Bounds of a plan. A type of more parts is rare, and its values are compared by their texts if
// their bytes do not tell.
constexpr std::size_t kMaxSteps = 4096;
constexpr std::size_t kMaxSeparateReferences = 64;

// As long as the queue has no more pairs, it is searched itself.
constexpr std::size_t kShortQueue = 32;

constexpr std::uint64_t kWordSize = 8;

template <typename T>
T load(const char* at) {
  T loaded;
  std::memcpy(&loaded, at, sizeof(loaded));
  return loaded;
}

bool sameFloats(const char* a, const char* b) {
  constexpr std::uint32_t kMagnitude = 0x7FFFFFFF;
  constexpr std::uint32_t kInfinity = 0x7F800000;
  const auto x = load<std::uint32_t>(a);
  const auto y = load<std::uint32_t>(b);
  return x == y || ((x & kMagnitude) > kInfinity && (y & kMagnitude) > kInfinity);
}

bool sameHalves(const char* a, const char* b) {
  constexpr std::uint16_t kMagnitude = 0x7FFF;
  constexpr std::uint16_t kInfinity = 0x7C00;
  const auto x = load<std::uint16_t>(a);
  const auto y = load<std::uint16_t>(b);
  return x == y || ((x & kMagnitude) > kInfinity && (y & kMagnitude) > kInfinity);
}

// The words of references, as values.h describes them.
bool isBlockWord(std::uint64_t word) { return word != 0 && (word & 1) == 0; }
const vrntValue_t* blockOfWord(std::uint64_t word) {
  return reinterpret_cast<const vrntValue_t*>(static_cast<std::uintptr_t>(word)) - 1;
}

const char* bytesOf(const vrntValue_t* block) {
  return static_cast<const char*>(vrntValueData(block));
}

bool isStruct(const vrntType_t* type) {
  const std::uint32_t descriptor = vrntTypeDescriptor(type);
  return descriptor == VRNT_DESCRIPTOR_STRUCT ||
         // The spectrum is a struct with the descriptor of a base type.
         (descriptor == VRNT_DESCRIPTOR_BASE && vrntTypeBasetype(type) == VRNT_BASETYPE_STRUCT);
}

// Returns the type of the elements, borrowed, or null for an array of unknown extents.
const vrntType_t* elementType(const vrntType_t* array) {
  std::int32_t extents[4] = {};
  vrntTypeArrayShape(array, extents);
  if (extents[0] < 0) return nullptr;
  constexpr std::int32_t kFirst[4] = {};
  vrntValueView_t element{};
  return vrntValueArrayElement(&element, array, kFirst)->type;
}

// Returns whether a type has neither an enum nor a reference nor an array of unknown extents in it,
// however many parts it has: looks at each type in it once.
bool isPlain(const vrntType_t* type) {
  std::vector<const vrntType_t*> open{type};
  std::unordered_set<const vrntType_t*> seen{type};
  const auto enter = [&](const vrntType_t* part) {
    if (seen.insert(part).second) open.push_back(part);
  };
  while (!open.empty()) {
    const vrntType_t* const next = open.back();
    open.pop_back();
    if (isStruct(next)) {
      for (std::uint32_t i = 0; i < vrntTypeFieldCount(next); ++i) {
        vrntValueView_t field{};
        enter(vrntValueStructField(&field, next, i)->type);
      }
      continue;
    }
    switch (vrntTypeDescriptor(next)) {
      case VRNT_DESCRIPTOR_BASE:
      case VRNT_DESCRIPTOR_FUNCTION:
        break;
      case VRNT_DESCRIPTOR_ARRAY: {
        const vrntType_t* const element = elementType(next);
        if (element == nullptr) return false;
        enter(element);
        break;
      }
      default:
        return false;
    }
  }
  return true;
}

}  // namespace

// Makes a plan by a walk through the parts of a type. Parts of array elements are not walked one by
// one: a place stands for the same part of each element.
class TextComparison::PlanMaker {
 public:
  static Plan make(const vrntType_t* type) {
    PlanMaker maker(type);
    if (!maker.collect(type)) {
      maker.plan_.plain = isPlain(type);
      return std::move(maker.plan_);
    }
    maker.plan_.complete = true;
    maker.plan_.plain = maker.plan_.checked.empty();
    maker.separateReferences();
    return std::move(maker.plan_);
  }

 private:
  struct Place {
    const vrntType_t* type;
    std::uint64_t offset;
    std::uint64_t count;
    std::uint64_t stride;
  };

  explicit PlanMaker(const vrntType_t* type)
      : plan_{vrntTypeSize(type), false, false, {}, {}, {}} {}

  bool collect(const vrntType_t* type) {
    open_.push_back({type, 0, 1, 0});
    std::size_t steps = 0;
    while (!open_.empty()) {
      if (++steps + open_.size() > kMaxSteps) return false;
      const Place place = open_.back();
      open_.pop_back();
      if (isStruct(place.type)) {
        for (std::uint32_t i = 0; i < vrntTypeFieldCount(place.type); ++i) {
          vrntValueView_t field{};
          vrntValueStructField(&field, place.type, i);
          open_.push_back({field.type, place.offset + field.offset, place.count, place.stride});
        }
        if (open_.size() > kMaxSteps) return false;
        continue;
      }
      switch (vrntTypeDescriptor(place.type)) {
        case VRNT_DESCRIPTOR_BASE:
          addLanes(place);
          break;
        case VRNT_DESCRIPTOR_ARRAY:
          if (!openElements(place)) return false;
          break;
        case VRNT_DESCRIPTOR_ENUM:
          plan_.checked.push_back({Kind::Enum, place.offset, place.count, place.stride,
                                   vrntTypeConstructorCount(place.type)});
          break;
        case VRNT_DESCRIPTOR_REFERENCE:
          plan_.checked.push_back(
              {Kind::Reference, place.offset, place.count, place.stride, kWordSize});
          break;
        default:
          break;  // All functions have one text.
      }
    }
    return true;
  }

  bool openElements(const Place& array) {
    const vrntType_t* const element = elementType(array.type);
    if (element == nullptr) return false;
    const std::uint64_t size = vrntTypeSize(element);
    if (size == 0) return true;  // Such elements show nothing but their types.
    const std::uint64_t count = vrntTypeSize(array.type) / size;
    if (count == 0) return true;
    if (array.count == 1) {
      open_.push_back({element, array.offset, count, size});
    } else if (array.stride == count * size) {
      open_.push_back({element, array.offset, array.count * count, size});
    } else {
      if (count > kMaxSteps) return false;
      for (std::uint64_t i = 0; i < count; ++i) {
        open_.push_back({element, array.offset + i * size, array.count, array.stride});
      }
    }
    return true;
  }

  void addLanes(const Place& place) {
    const std::uint64_t lanes = vrntTypeVectorDimension(place.type);
    Kind kind = Kind::Bytes;
    std::uint64_t size = sizeof(std::uint32_t);
    switch (vrntTypeBasetype(place.type)) {
      case VRNT_BASETYPE_FLOAT:
        kind = Kind::Float;
        break;
      case VRNT_BASETYPE_BOOL:
        kind = Kind::Bool;
        break;
      case VRNT_BASETYPE_HALF:
        kind = Kind::Half;
        size = sizeof(std::uint16_t);
        break;
      case VRNT_BASETYPE_CHAR:
        size = 1;
        break;
      default:
        break;
    }
    if (kind == Kind::Bytes) {
      plan_.shown.push_back({kind, place.offset, place.count, place.stride, lanes * size});
    } else if (place.count == 1) {
      plan_.shown.push_back({kind, place.offset, lanes, size, size});
    } else {
      for (std::uint64_t lane = 0; lane < lanes; ++lane) {
        plan_.shown.push_back({kind, place.offset + lane * size, place.count, place.stride, size});
      }
    }
  }

  // Lists the bytes before, between and behind the references.
  void separateReferences() {
    std::vector<std::uint64_t> references;
    for (const Run& run : plan_.checked) {
      if (run.kind != Kind::Reference) continue;
      if (run.count > kMaxSeparateReferences - references.size()) return;
      for (std::uint64_t i = 0; i < run.count; ++i) {
        references.push_back(run.offset + i * run.stride);
      }
    }
    std::sort(references.begin(), references.end());
    std::uint64_t begin = 0;
    for (const std::uint64_t reference : references) {
      if (reference != begin) plan_.unchecked.push_back({begin, reference - begin});
      begin = reference + kWordSize;
    }
    if (plan_.size != begin) plan_.unchecked.push_back({begin, plan_.size - begin});
  }

  Plan plan_;
  std::vector<Place> open_;
};

std::size_t TextComparison::BlocksHash::operator()(const Blocks& blocks) const noexcept {
  constexpr std::size_t kOdd = 0x9E3779B97F4A7C15;
  const std::hash<const void*> hash;
  return (hash(blocks.first) * kOdd) ^ hash(blocks.second);
}

const TextComparison::Plan& TextComparison::plan(const vrntType_t* type) {
  if (type != lastType_) {
    auto known = plans_.find(type);
    if (known == plans_.end()) known = plans_.emplace(type, PlanMaker::make(type)).first;
    lastType_ = type;
    lastPlan_ = &known->second;
  }
  return *lastPlan_;
}

bool TextComparison::sameShown(const Run& run, const char* a, const char* b) {
  a += run.offset;
  b += run.offset;
  if (run.kind == Kind::Bytes && run.size == run.stride) {
    return std::memcmp(a, b, run.count * run.size) == 0;
  }
  for (std::uint64_t i = 0; i < run.count; ++i, a += run.stride, b += run.stride) {
    bool same = false;
    switch (run.kind) {
      case Kind::Bool:
        same = (load<std::uint32_t>(a) != 0) == (load<std::uint32_t>(b) != 0);
        break;
      case Kind::Float:
        same = sameFloats(a, b);
        break;
      case Kind::Half:
        same = sameHalves(a, b);
        break;
      default:
        same = std::memcmp(a, b, run.size) == 0;
        break;
    }
    if (!same) return false;
  }
  return true;
}

bool TextComparison::sameChecked(const Run& run, const char* a, const char* b) {
  a += run.offset;
  b += run.offset;
  for (std::uint64_t i = 0; i < run.count; ++i, a += run.stride, b += run.stride) {
    if (run.kind == Kind::Enum) {
      const auto code = load<std::uint32_t>(a);
      if (code >= run.size || code != load<std::uint32_t>(b)) return false;
      continue;
    }
    const auto x = load<std::uint64_t>(a);
    const auto y = load<std::uint64_t>(b);
    if (isBlockWord(x) != isBlockWord(y)) return false;
    if (isBlockWord(x)) {
      enqueue({blockOfWord(x), blockOfWord(y)});
    } else if (x >> 1 != y >> 1) {
      return false;
    }
  }
  return true;
}

bool TextComparison::sameBlocks(const Blocks& blocks) {
  const auto [first, second] = blocks;
  const vrntType_t* const type = vrntValueType(first);
  if (type != vrntValueType(second)) return false;
  const Plan& plan = this->plan(type);
  const char* const a = bytesOf(first);
  const char* const b = bytesOf(second);

  const auto sameBytes = [a, b](const Bytes& bytes) {
    return std::memcmp(a + bytes.offset, b + bytes.offset, bytes.size) == 0;
  };
  if (!plan.complete) return plan.plain && (first == second || sameBytes({0, plan.size}));
  if (first != second) {
    const bool same = !plan.unchecked.empty() &&
                      std::all_of(plan.unchecked.begin(), plan.unchecked.end(), sameBytes);
    if (!same && !std::all_of(plan.shown.begin(), plan.shown.end(),
                              [a, b](const Run& run) { return sameShown(run, a, b); })) {
      return false;
    }
  }
  return std::all_of(plan.checked.begin(), plan.checked.end(),
                     [&](const Run& run) { return sameChecked(run, a, b); });
}

void TextComparison::enqueue(const Blocks& blocks) {
  if (queue_.size() < kShortQueue) {
    if (std::find(queue_.begin(), queue_.end(), blocks) != queue_.end()) return;
  } else {
    if (known_.empty()) known_.insert(queue_.begin(), queue_.end());
    if (!known_.insert(blocks).second) return;
  }
  queue_.push_back(blocks);
}

bool TextComparison::sameByStructure(const Value& a, const Value& b) {
  queue_.clear();
  if (!known_.empty()) known_.clear();
  enqueue({a.get(), b.get()});
  for (std::size_t i = 0; i < queue_.size(); ++i) {
    // The queue may move while it grows.
    const Blocks next = queue_[i];
    if (!sameBlocks(next)) return false;
  }
  return true;
}

bool TextComparison::sameText(const Value& a, const Value& b) {
  if (sameByStructure(a, b)) return true;
  const std::string text = ConstBasicView<const Value*>(&a).text();
  // Two handles on one block have the same text. It is printed anyway, since a failure must be
  // reported.
  return a.get() == b.get() || text == ConstBasicView<const Value*>(&b).text();
}

}  // namespace vrnt::data
