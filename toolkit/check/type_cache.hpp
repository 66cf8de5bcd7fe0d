// The types of values, by their texts as they stand in a file.
#ifndef VORNATH_TOOLKIT_CHECK_TYPE_CACHE_HPP
#define VORNATH_TOOLKIT_CHECK_TYPE_CACHE_HPP

#include <cstddef>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "check/report.hpp"
#include "check/type_plan.hpp"
#include "vornath_data/handles.hpp"

namespace vrtk {

/// The type of a value, with its plan.
struct ValueType {
  explicit ValueType(vrnt::UniqueType parsed);

  vrnt::UniqueType type;
  TypePlan plan;
};

using ValueTypePtr = std::shared_ptr<const ValueType>;

/// Why a text is not that of a value's type.
struct TypeFault {
  Code code;
  std::string message;
};

/// Returns an upper bound for the memory that parsing the text and keeping its type take, in bytes.
std::uint64_t memoryOfType(std::string_view text);

/// Keeps the types that were used last, in a fixed amount of memory, or in as much as twice what
/// the largest type takes. So a type that other types have displaced is parsed again no more often
/// than others of its size were parsed.
class TypeCache {
 public:
  /// A text that is longer is never parsed.
  static constexpr std::uint64_t kLongestText = std::uint64_t{16} << 20;

  struct Found {
    ValueTypePtr type;         ///< null if the text is not that of a value's type
    std::uint64_t number = 0;  ///< for find()
    std::uint64_t added =
        0;  ///< the memory that a reader takes for a type that was not in the cache
  };

  /// Returns the type of a text. Sets `fault` if there is none. Throws std::bad_alloc.
  Found find(std::string_view text, TypeFault& fault);

  /// Returns a type that was found before, or null if it is not in the cache any more.
  ValueTypePtr find(std::uint64_t number);

 private:
  struct Entry {
    std::string text;
    ValueTypePtr type;
    std::uint64_t number;
    std::uint64_t memory;
  };
  using Entries = std::list<Entry>;

  Found use(Entries::iterator entry);

  static constexpr std::uint64_t kMemory = std::uint64_t{4} << 20;

  Entries entries_;  // the last used one first
  std::unordered_map<std::string_view, Entries::iterator> byText_;
  std::unordered_map<std::uint64_t, Entries::iterator> byNumber_;
  std::uint64_t memory_ = 0;
  std::uint64_t largest_ = 0;
  std::uint64_t numbers_ = 0;
};

}  // namespace vrtk

#endif
