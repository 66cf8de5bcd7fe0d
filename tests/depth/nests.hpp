// Texts that are nested deeply, and threads with as much stack as a host may have.
#ifndef VORNATH_TESTS_DEPTH_NESTS_HPP
#define VORNATH_TESTS_DEPTH_NESTS_HPP

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/depth.hpp"
#include "support/small_stack.hpp"

namespace vornath_test {

// Bytes. One level costs a type, its entries in the tables and its place on the parser's stack.
inline constexpr std::uint64_t kMaxMemory = 200'000'000;

inline void runOnMainStack(const std::function<void()>& work) { runOnStack(kMainStack, work); }
inline void runOnWorkerStack(const std::function<void()>& work) { runOnStack(kWorkerStack, work); }

inline std::string repeated(const std::string& words, int times) {
  std::string text;
  text.reserve(words.size() * static_cast<std::size_t>(times));
  for (int i = 0; i < times; ++i) text += words;
  return text;
}

inline std::string nested(const std::string& before, const std::string& innermost,
                          const std::string& behind, int depth) {
  return repeated(before, depth) + innermost + repeated(behind, depth);
}

// Canonical texts of types around a base type. `levels` make kDepth types, or a few more.
struct TypeNest {
  const char* name;
  std::string before;
  std::string behind;
  int levels = kDepth;

  std::string text(const std::string& innermost = "int") const { return text(innermost, levels); }
  std::string text(const std::string& innermost, int depth) const {
    return nested(before, innermost, behind, depth);
  }
};

inline const TypeNest kReferences{"references", "", "*"};
inline const TypeNest kArrays{"arrays", "", "[1]"};
inline const TypeNest kOpenArrayReferences{"open array references", "", "[]*", kDepth / 2};
inline const TypeNest kStructs{"structs", "{ ", " a; }"};
inline const TypeNest kLastFields{"last fields", "{ int n; ", " a; }"};
inline const TypeNest kReferencesAtEachLevel{"references at each level", "{ void* r; ", " a; }"};
inline const TypeNest kDomains{"domains", "((", ") => int)"};
inline const TypeNest kCodomains{"codomains", "(() => ", ")"};
inline const TypeNest kMixed{"mixed", "{ (() => ", "[2]*)* a; }", kDepth / 5};

inline void PrintTo(const TypeNest& nest, std::ostream* stream) { *stream << nest.name; }

}  // namespace vornath_test

#endif
