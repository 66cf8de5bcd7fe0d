#include "check/rules.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <utility>

#include "foundation/half.hpp"

namespace vrtk {
namespace {

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

std::uint64_t numberSize(Rule rule) { return rule == Rule::Char ? 1 : rule == Rule::Half ? 2 : 4; }

// The bytes of one value.
struct BytesInMemory {
  const char* bytes;
  const char* at(std::uint64_t offset, std::uint64_t) const { return bytes + offset; }
};
struct BytesInWindow {
  Window& window;
  std::uint64_t start;
  const char* at(std::uint64_t offset, std::uint64_t size) const {
    return window.at(start + offset, static_cast<std::size_t>(size));
  }
};

struct Fault {
  Code code;
  std::string message;
};

class RuleRunner {
 public:
  explicit RuleRunner(const RuleContext& context) : context_(context) {}

  template <typename Bytes>
  bool run(const TypePlan& plan, const Bytes& bytes) {
    const auto& operations = plan.operations();
    std::size_t i = 0;
    std::uint64_t base = 0;
    const auto end = [&] { return loops_.empty() ? operations.size() : loops_.back().end; };
    for (;;) {
      if (i == end()) {
        if (loops_.empty()) return !found_;
        Loop& loop = loops_.back();
        base += loop.stride;
        if (--loop.rest != 0) {
          i = loop.start;
          continue;
        }
        base = loop.base;
        loops_.pop_back();
        continue;
      }
      const Operation& operation = operations[i++];
      if (operation.rule != Rule::Loop) {
        numbers(operation, bytes, base + operation.offset);
        continue;
      }
      loops_.push_back({i, operation.end, operation.count, operation.stride, base});
      base += operation.offset;
      // The operations up to the end are next.
    }
  }

 private:
  struct Loop {
    std::size_t start;
    std::size_t end;
    std::uint64_t rest;
    std::uint64_t stride;
    std::uint64_t base;  // of what is around the loop
  };

  // Looks at a run of numbers in pieces that a window can hold.
  template <typename Bytes>
  void numbers(const Operation& run, const Bytes& bytes, std::uint64_t offset) {
    constexpr std::uint64_t kPiece = Window::kCapacity / 2;
    const std::uint64_t perPiece = std::max<std::uint64_t>(kPiece / run.stride, 1);
    bool reported = false;
    for (std::uint64_t done = 0; done < run.count;) {
      const std::uint64_t count = std::min(perPiece, run.count - done);
      const std::uint64_t at = offset + done * run.stride;
      const char* const piece = bytes.at(at, (count - 1) * run.stride + numberSize(run.rule));
      if (!areRight(run, piece, count)) {
        for (std::uint64_t i = 0; i < count; ++i) {
          const char* const number = piece + i * run.stride;
          const std::uint64_t place = at + i * run.stride;
          if (areRight(run, number, 1) || isDefault(run, number, place)) continue;
          add(run, number, place, reported);
          reported = true;
        }
      }
      done += count;
    }
  }

  template <typename T, typename IsRight>
  static bool allRight(const char* at, std::uint64_t count, std::uint64_t stride, IsRight isRight) {
    bool right = true;
    if (stride == sizeof(T)) {
      for (std::uint64_t i = 0; i < count; ++i) right &= isRight(load<T>(at + i * sizeof(T)));
      return right;
    }
    for (std::uint64_t i = 0; i < count; ++i) right &= isRight(load<T>(at + i * stride));
    return right;
  }

  bool areRight(const Operation& run, const char* at, std::uint64_t count) const {
    switch (run.rule) {
      case Rule::Bool:
        return allRight<std::uint32_t>(at, count, run.stride,
                                       [](std::uint32_t word) { return word + 1 <= 1; });
      case Rule::Enum:
        return allRight<std::uint32_t>(
            at, count, run.stride,
            [bound = run.bound](std::uint32_t code) { return code < bound; });
      case Rule::Int:
        return allRight<std::int32_t>(at, count, run.stride,
                                      [min = run.min, max = run.max](std::int32_t number) {
                                        return number >= min && number <= max;
                                      });
      case Rule::Char:
        return allRight<std::uint8_t>(at, count, run.stride,
                                      [min = run.min, max = run.max](std::uint8_t number) {
                                        return number >= min && number <= max;
                                      });
      case Rule::Float:
        return allRight<float>(
            at, count, run.stride,
            [min = static_cast<float>(run.min), max = static_cast<float>(run.max)](float number) {
              return number >= min && number <= max;
            });
      case Rule::Half:
        return allRight<std::uint16_t>(at, count, run.stride,
                                       [min = run.min, max = run.max](std::uint16_t bits) {
                                         const float number = halfToFloat(bits);
                                         return number >= min && number <= max;
                                       });
      case Rule::Texture:
        return allRight<std::int32_t>(at, count, run.stride, [this](std::int32_t index) {
          return index < 0 || context_.textures.has(index);
        });
      case Rule::Loop:
        break;
    }
    return true;
  }

  void add(const Operation& run, const char* at, std::uint64_t offset, bool again) {
    found_ = true;
    // One finding for a run: its others are alike.
    if (again) return;
    context_.report.add(codeOf(run, at), context_.offset(offset), [&] {
      return std::pair(context_.place.address(offset), message(run, at));
    });
  }

  static double number(const Operation& run, const char* at) {
    switch (run.rule) {
      case Rule::Float:
        return load<float>(at);
      case Rule::Half:
        return halfToFloat(load<std::uint16_t>(at));
      case Rule::Char:
        return load<std::uint8_t>(at);
      default:
        return load<std::int32_t>(at);
    }
  }

  // A number that a schema has by default is right, though it may be outside its limits. A texture
  // is 0 by default in a schema, and not in a new object.
  bool isDefault(const Operation& run, const char* at, std::uint64_t offset) const {
    return context_.defaults != nullptr && run.rule != Rule::Texture &&
           std::memcmp(context_.defaults + offset, at, numberSize(run.rule)) == 0;
  }

  static Code codeOf(const Operation& run, const char* at) {
    switch (run.rule) {
      case Rule::Bool:
        return Code::BOOL_NOT_CANONICAL;
      case Rule::Enum:
        return Code::ENUM_CODE_UNNAMED;
      case Rule::Texture:
        return Code::TEXTURE_REFERENCE_INVALID;
      default:
        return std::isfinite(number(run, at)) ? Code::FIELD_OUT_OF_LIMITS : Code::NUMBER_NOT_FINITE;
    }
  }

  static std::string numberText(const Operation& run, double number) {
    if (run.rule == Rule::Float) return fmt::format("{}", static_cast<float>(number));
    return fmt::format("{}", number);
  }

  std::string message(const Operation& run, const char* at) const {
    switch (run.rule) {
      case Rule::Bool:
        return fmt::format("found the word 0x{:08x}; a bool is 0 or 0xffffffff",
                           load<std::uint32_t>(at));
      case Rule::Enum:
        return fmt::format("found the code {}; the codes are 0 to {}", load<std::int32_t>(at),
                           run.bound - 1);
      case Rule::Texture:
        return fmt::format(
            "found texture {}, but there is no live Texture in that slot; expected "
            "one of {} slots, or -1 for none",
            load<std::int32_t>(at), context_.textures.slots());
      default:
        break;
    }
    const double found = number(run, at);
    if (!std::isfinite(found)) {
      return fmt::format("found {}; expected a finite number", found);
    }
    const bool fromBelow = found < run.min;
    return fmt::format("found {}; the {} is {}", numberText(run, found),
                       fromBelow ? "minimum" : "maximum",
                       numberText(run, fromBelow ? run.min : run.max));
  }

  const RuleContext& context_;
  std::vector<Loop> loops_;
  bool found_ = false;
};

std::string slotText(const LiveSlots& live, const char* className, std::int64_t index) {
  return live.slots() == 0
             ? fmt::format("found {} {}, but the scene has no {}", className, index, className)
             : fmt::format("found {} {}, but the slots are 0 to {}", className, index,
                           live.slots() - 1);
}

// Whether all indices are below a limit, which is below 2^31 itself. Compilers do this for many
// indices at once, in registers as wide as they may use.
[[gnu::always_inline]] inline bool areBelowInline(const char* bytes, std::uint64_t count,
                                                  std::uint32_t limit) {
  // The highest bit of one of these two is set if an index is not below the limit.
  const std::uint32_t last = limit - 1;
  std::uint32_t bits = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    const auto index = load<std::uint32_t>(bytes + i * 4);
    bits |= index | (last - index);
  }
  return bits >> 31U == 0;
}

#if defined(__x86_64__)
[[gnu::target("avx2")]] bool areBelowAvx2(const char* bytes, std::uint64_t count,
                                          std::uint32_t limit) {
  return areBelowInline(bytes, count, limit);
}
#endif

bool areBelow(const char* bytes, std::uint64_t count, std::uint32_t limit) {
#if defined(__x86_64__)
  static const bool hasAvx2 = __builtin_cpu_supports("avx2") != 0;
  if (hasAvx2) return areBelowAvx2(bytes, count, limit);
#endif
  return areBelowInline(bytes, count, limit);
}

}  // namespace

bool applyRules(const TypePlan& plan, const char* bytes, const RuleContext& context) {
  return RuleRunner(context).run(plan, BytesInMemory{bytes});
}

bool applyRules(const TypePlan& plan, Window& window, const RuleContext& context) {
  if (plan.size() <= Window::kCapacity) {
    return applyRules(plan, window.at(context.fileOffset, static_cast<std::size_t>(plan.size())),
                      context);
  }
  return RuleRunner(context).run(plan, BytesInWindow{window, context.fileOffset});
}

std::optional<SlotFinding> checkSlotWord(const vrdmReferenceInfo& slot, std::int32_t word,
                                         const AllLiveSlots& live) {
  constexpr std::int32_t kNothingInCodedList = INT32_MIN;
  std::uint32_t target = slot.targetClass;
  std::int64_t index = word;
  switch (slot.kind) {
    case VRDM_REFERENCE_REQUIRED:
      if (word == -1) {
        return SlotFinding{
            Code::SLOT_REQUIRED_UNSET,
            fmt::format("the slot is not set; a {} is required", vrdmObjectName(target))};
      }
      break;
    case VRDM_REFERENCE_EMITTER:
    case VRDM_REFERENCE_ORDERED_DECAL:
      if (word == kNothingInCodedList) return std::nullopt;
      if (slot.kind == VRDM_REFERENCE_EMITTER) {
        target = word < 0 ? VRDM_CLASS_LIGHT : VRDM_CLASS_SHAPE;
      }
      if (word < 0) index = ~word;
      break;
    default:
      if (word == -1) return std::nullopt;
  }
  const LiveSlots& slots = live[target];
  if (slots.has(index)) return std::nullopt;
  if (index >= 0 && index < std::int64_t{slots.slots()}) {
    return SlotFinding{Code::SLOT_NOT_LIVE,
                       fmt::format("found {} {}, whose slot is free; expected a live object",
                                   vrdmObjectName(target), index)};
  }
  return SlotFinding{Code::SLOT_OUT_OF_RANGE, slotText(slots, vrdmObjectName(target), index)};
}

void IndexCheck::add(const char* bytes, std::uint64_t count) {
  if (areBelow(bytes, count, limit_)) {
    seen_ += count;
    return;
  }
  std::uint64_t wrong = 0;
  for (std::uint64_t i = 0; i < count; ++i) {
    wrong += static_cast<std::uint64_t>(load<std::uint32_t>(bytes + i * 4) >= limit_);
  }
  for (std::uint64_t i = 0; wrong_ == 0 && wrong != 0; ++i) {
    const auto index = load<std::uint32_t>(bytes + i * 4);
    if (index < limit_) continue;
    firstWrong_ = seen_ + i;
    firstIndex_ = index;
    break;
  }
  wrong_ += wrong;
  seen_ += count;
}

std::string IndexCheck::message() const {
  return fmt::format("{} of {} indices are not below the number of vertices, {}; the first is {}",
                     wrong_, seen_, limit_, firstIndex_);
}

}  // namespace vrtk
