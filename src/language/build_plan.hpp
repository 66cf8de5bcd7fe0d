/// The steps that build what a text describes, in the order in which the grammar's actions run:
/// each rule's after those of its parts. A plan holds no types and no values, so that nothing is
/// built before the whole text is known to be of the language.
#ifndef VORNATH_LANGUAGE_BUILD_PLAN_HPP
#define VORNATH_LANGUAGE_BUILD_PLAN_HPP

#include <array>
#include <boost/container/small_vector.hpp>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace qex::vornath {

/// A part of the text. Texts of plans are shorter than 4 GiB.
struct TextSpan {
  std::uint32_t offset;
  std::uint32_t length;

  std::string_view of(const char* text) const { return {text + offset, length}; }
};

/// What a step does. "Pending" is the description that the last step has built.
enum class Action : std::uint8_t {
  // Descriptions and types.
  BaseType,       ///< makes a base type without annotations: `detail`
  VoidReference,  ///< pending: `void*`
  Reference,      ///< pending: a reference to the last type
  Array,          ///< pending: an array of the last type, rank `detail`, `extents` if `flag`
  BeginFields,    ///< starts a list of `count` fields
  Field,          ///< adds a field of the last type: `text`
  Struct,         ///< pending: a struct of the last list of fields
  BeginDomain,    ///< starts the domain of a function: `count` types
  DomainType,     ///< adds the last type to it
  Function,       ///< pending: a function from that domain to the last type
  BeginEnum,      ///< starts a list of `count` constructors
  Constructor,    ///< adds one: `text`, with fields if `flag`, with annotations if `detail`
  Enum,           ///< pending: an enum of these constructors
  MakeType,       ///< makes the pending type
  BeginMetadata,  ///< starts annotations, of the pending type or of a constructor
  Flag,           ///< adds an annotation: `text`
  Text,           ///< adds an annotation with a text: `text`, `content`
  Value,          ///< adds an annotation with the last value: `text`
  MakeAnnotated,  ///< makes the type that was pending, with its annotations
  // Values.
  Lanes,           ///< `count` values of the base type `detail`: their bytes are at lanes[`number`]
  FieldLabel,      ///< labels the last value: `text`
  StructValue,     ///< a struct of the last `count` labelled values
  ArrayValue,      ///< an array of what the last `count` steps of values built, of rank `detail` (0
                   ///< if the text has no extents), of the last type if `flag`
  Foreign,         ///< a foreign pointer: `number`; to the last type if `flag`
  ReferenceValue,  ///< a reference to the last value
  Enumerator       ///< a value of the pending enum: `text`
};

struct Step {
  Action action{};
  std::uint8_t detail = 0;
  bool flag = false;
  std::uint32_t count = 0;
  std::array<std::uint32_t, 4> words{};  // the extents, the number, or the offsets and lengths

  TextSpan text() const { return {words[0], words[1]}; }
  TextSpan content() const { return {words[2], words[3]}; }
  std::uint64_t number() const { return std::uint64_t{words[1]} << 32 | words[0]; }
  std::int32_t extent(std::size_t dimension) const {
    return static_cast<std::int32_t>(words[dimension]);
  }

  void setText(TextSpan span) { words[0] = span.offset, words[1] = span.length; }
  void setContent(TextSpan span) { words[2] = span.offset, words[3] = span.length; }
  void setNumber(std::uint64_t number) {
    words[0] = static_cast<std::uint32_t>(number);
    words[1] = static_cast<std::uint32_t>(number >> 32);
  }
};

struct BuildPlan {
  /// Those of most texts need no memory of their own: a block of their size is among those for
  /// which malloc first joins all the small ones that are free.
  boost::container::small_vector<Step, 240> steps;
  std::vector<char> lanes;    ///< the bytes of scalars and short vectors, and zeros behind them
  std::size_t usedLanes = 0;  ///< bytes
};

}  // namespace qex::vornath

#endif
