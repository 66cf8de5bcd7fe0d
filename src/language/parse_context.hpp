/// What one parse produces.
#ifndef VORNATH_LANGUAGE_PARSE_CONTEXT_HPP
#define VORNATH_LANGUAGE_PARSE_CONTEXT_HPP

#include <optional>
#include <string>

#include "types/type.hpp"
#include "values/dynamic_value.hpp"

namespace qex::vornath {

struct ParseContext {
  TypePtr type;                       ///< result of a type parse
  std::optional<DynamicValue> value;  ///< result of a value parse
  std::string error;                  ///< the last error that the parser reported
};

}  // namespace qex::vornath

#endif
