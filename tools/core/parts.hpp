// The parts of values as texts for people.
#ifndef VRN_CORE_PARTS_HPP
#define VRN_CORE_PARTS_HPP

#include <vornath_data/vrnt.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vrn {

/// A line about a part of a value.
struct PartLine {
  std::string path;                ///< as in an address, "image/wrapmode/u"
  std::string text;                ///< with its unit
  std::string standard;            ///< the default with its unit, if it is another
  bool changed = true;             ///< whether the part differs from the default
  std::vector<std::string> block;  ///< numbers of a long array, one text each
  std::optional<std::array<float, 3>> colour;
};

/// What to list.
struct PartChoice {
  std::string path;          ///< only this part and what is below it; empty for all
  bool all = false;          ///< also parts that have their defaults
  bool wholeArrays = false;  ///< all elements of long arrays
};

/// Lists the parts of a value. `annotated` is its type with annotations, or without. `standard` is
/// the default, of the same type, or null if there is none: then everything counts as changed.
std::vector<PartLine> partsOf(const vrntValue_t* value, const vrntType_t* annotated,
                              const vrntValue_t* standard, const PartChoice& choice);

/// Returns whether a type is a struct; the spectrum is one.
bool isStruct(const vrntType_t* type);

/// Returns the text of a `char` array up to its first zero, in quotes.
std::string charsText(const char* bytes, std::size_t size);

}  // namespace vrn

#endif
