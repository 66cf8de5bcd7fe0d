#include "colour/wrap_mode.hpp"

#include <string>

#include "colour/type_construction.hpp"

namespace qex::vornath {
namespace {

std::string wrapModeText(WrapMode defaultMode) {
  return std::string("enum { CLAMP; BORDER; REPEAT; MIRROR; } @default = ") +
         toString(defaultMode) + " : enum { CLAMP; BORDER; REPEAT; MIRROR; }";
}

std::string labelledText(WrapMode defaultMode) {
  return wrapModeText(defaultMode) + " @name=\"Wrap mode\"";
}

}  // namespace

const char* toString(WrapMode mode) {
  switch (mode) {
    case WrapMode::Clamp:
      return "CLAMP";
    case WrapMode::Border:
      return "BORDER";
    case WrapMode::Repeat:
      return "REPEAT";
    case WrapMode::Mirror:
      return "MIRROR";
  }
  return "INVALID_WRAPMODE";
}

TypePtr makeWrapModeType(WrapMode defaultMode) {
  return InternedType::parse(wrapModeText(defaultMode));
}

TypePtr makeWrapMode2Type(WrapMode defaultU, WrapMode defaultV) {
  return InternedType::parse("{ " + labelledText(defaultU) + " u; " + labelledText(defaultV) +
                             " v; }");
}

const InternedType& wrapModeType() {
  static const InternedType& type = permanentType(makeWrapModeType(WrapMode::Repeat));
  return type;
}

const InternedType& wrapMode2Type() {
  static const InternedType& type =
      permanentType(makeWrapMode2Type(WrapMode::Repeat, WrapMode::Repeat));
  return type;
}

}  // namespace qex::vornath
