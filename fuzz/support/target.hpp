// The parts that every fuzz target uses: checks that end the program, a reader of the input's
// bytes, and functions that print and measure types and values. A target defines runInput(), which
// support/entry.cpp calls.
#ifndef VORNATH_FUZZ_TARGET_HPP
#define VORNATH_FUZZ_TARGET_HPP

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "vornath_data/handles.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_fuzz {

// Runs the target on one input. It must leave nothing behind: no type may be alive afterwards that
// wasn't before, but for the library's permanent ones. std::bad_alloc may pass.
void runInput(std::string_view bytes);

// Set by a target whose inputs begin with a version: why an input of the corpus no longer gets
// behind the check of it; empty if it does, or isn't meant to. The replay fails on the first such
// input.
using OutdatedInput = std::string (*)(std::string_view bytes);
extern OutdatedInput outdatedInput;

[[noreturn]] void failCheck(const char* condition, const char* file, int line,
                            const std::string& note);

#define FUZZ_CHECK_NOTE(condition, note) \
  ((condition) ? void() : ::vornath_fuzz::failCheck(#condition, __FILE__, __LINE__, note))
#define FUZZ_CHECK(condition) FUZZ_CHECK_NOTE(condition, std::string())

using vrnt::UniqueString;
using vrnt::UniqueType;
using vrnt::UniqueValue;

// An error out-parameter for one call.
class ErrorParameter {
 public:
  ErrorParameter() = default;
  ErrorParameter(const ErrorParameter&) = delete;
  ErrorParameter& operator=(const ErrorParameter&) = delete;
  ~ErrorParameter() { vrntValuesErrorDestroy(error_); }

  operator vrntValuesError_t**() { return &error_; }  // NOLINT(google-explicit-constructor)

  // The call failed if and only if it reported an error, and that is one of the three kinds.
  void check(bool succeeded) const;

  std::uint32_t kind() const { return vrntValuesErrorCode(error_); }
  std::string message() const { return vrntValuesErrorMessage(error_); }
  bool outOfMemory() const { return error_ != nullptr && kind() == VRNT_OUT_OF_MEMORY; }

 private:
  vrntValuesError_t* error_ = nullptr;
};

inline vrntValueView_t wholeOf(const vrntValue_t* value) { return {vrntValueType(value), 0}; }
inline std::string textOf(const vrntType_t* type) { return vrntTypeString(type); }

// The type of a text, or null.
UniqueType parseType(const std::string& text, ErrorParameter& error);
UniqueValue parseValue(const std::string& text, ErrorParameter& error);

// The text of a value; null where the library reports that it has none or that memory ran out.
UniqueString print(const vrntValue_t* value, std::uint32_t flags, ErrorParameter& error);

bool equal(const vrntValue_t* a, const vrntValue_t* b);

// The bytes of a value.
std::string_view bytesOf(const vrntValue_t* value);

// How many parts a walk over values of the type meets, arrays' elements one by one, up to a limit.
// What references lead to isn't in it.
inline constexpr std::uint64_t kManyParts = 1U << 14;
std::uint64_t partsOf(const vrntType_t* type);

// The same over a value, with what it refers to, each block as often as a reference leads to it.
std::uint64_t partsOf(const vrntValue_t* value);

// Reads the input as a program: zeros behind its end.
class Program {
 public:
  explicit Program(std::string_view bytes) : bytes_(bytes) {}

  bool atEnd() const { return bytes_.empty(); }
  std::uint8_t byte() { return number<std::uint8_t>(); }
  std::uint32_t word() { return number<std::uint32_t>(); }
  // Below the limit, which isn't 0.
  std::size_t below(std::size_t limit) { return byte() % limit; }

 private:
  template <typename T>
  T number() {
    T result = 0;
    const std::size_t size = bytes_.size() < sizeof(T) ? bytes_.size() : sizeof(T);
    std::memcpy(&result, bytes_.data(), size);
    bytes_.remove_prefix(size);
    return result;
  }

  std::string_view bytes_;
};

}  // namespace vornath_fuzz

#endif
