/// The types of the records of one stream and their texts. In a chain of references each type's
/// text holds nearly the whole text of the next one: what is known of the outer text is not worked
/// out again for the inner one.
#ifndef VORNATH_VALUES_RECORD_TEXTS_HPP
#define VORNATH_VALUES_RECORD_TEXTS_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <forward_list>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "types/type.hpp"

namespace qex::vornath {

/// The texts for writing. The texts take the memory of those of the outermost types together. All
/// types must be without metadata and outlive this.
class TextsByType {
 public:
  /// Returns the type's text, which lives as long as this. Does not store it in the type: each type
  /// of a nest would keep nearly the whole text. Throws std::bad_alloc.
  std::string_view textOf(const InternedType& type);

 private:
  std::forward_list<std::string> texts_;                              // takes no memory while empty
  std::unordered_map<const InternedType*, std::string_view> byType_;  // long ones only
};

/// The types for reading.
class TypesByText {
 public:
  /// Returns the type of a text. Throws what the parse throws.
  TypePtr typeOf(std::string_view text);

 private:
  struct Known {
    std::string_view text;
    const InternedType* type;
  };

  // The length and a few words of a text, by which nearly all texts differ.
  struct Sample {
    explicit Sample(std::string_view text);
    bool operator==(const Sample&) const = default;

    std::size_t length;
    std::array<std::uint64_t, 4> words;
  };
  struct SampleHash {
    std::size_t operator()(const Sample& sample) const noexcept;
  };

  void learn(const InternedType& type, std::string_view text);

  std::forward_list<std::string> texts_;  // takes no memory while empty
  std::vector<TypePtr> types_;            // keep those that are nested in them alive
  std::unordered_map<Sample, Known, SampleHash> bySample_;  // long texts only
};

}  // namespace qex::vornath

#endif
