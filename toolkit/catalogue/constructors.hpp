// The constructors of an enum with their annotations, which no query of the library tells.
#ifndef VORNATH_TOOLKIT_CATALOGUE_CONSTRUCTORS_HPP
#define VORNATH_TOOLKIT_CATALOGUE_CONSTRUCTORS_HPP

#include <cstdint>
#include <string>
#include <vector>

#include "vornath_data/handles.hpp"

namespace vrtk {

struct ConstructorModel {
  std::uint32_t code;
  std::string label;
  std::string fields;            ///< as in the text of the type, "(float width)"; empty for none
  vrnt::UniqueType annotations;  ///< a type that has the annotations; null for none
};

/// Returns the constructors of an enum, in the order of their codes.
std::vector<ConstructorModel> constructorsOf(const vrntType_t* enumType);

}  // namespace vrtk

#endif
