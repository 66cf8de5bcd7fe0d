// vrn type: what a type is and how its values are laid out.
#include <memory>

#include "command.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"
#include "core/typed_text.hpp"

namespace vrn {
namespace {

int describe(Session& session, const std::string& text) {
  const std::string given = text == "-" ? readAll("-") : text;
  if (given.find('\0') != std::string::npos) {
    throw Trouble("TEXT: a NUL character is in no type; give the text of a type");
  }
  const vrnt::UniqueType type = parseType("TEXT", given);
  const std::uint32_t form = session.json() ? VRTK_DESCRIPTION_JSON : VRTK_DESCRIPTION_TEXT;
  printJson(session, requireString([&](char** to, vrtkError** error) {
                       return vrtkTypeDescribe(type.get(), form, to, error);
                     }).get());
  return kSame;
}

Run declare(Options& options) {
  auto text = std::make_shared<std::string>();
  options.argument("TEXT", Kind::Text, true, *text,
                   "the text of a type; - reads it from standard input");
  return [text](Session& session) { return describe(session, *text); };
}

}  // namespace

const Command kType = {
    "type",
    "explain a type: its canonical text, size and layout",
    "Parses the text of a type, and prints its canonical text, its size and alignment, and each of "
    "its fields with offset, type, default and limits. An error is printed with a caret under its "
    "place.",
    "The document type_language.md describes the language.",
    "vrn type '{ float @default=0.5 gloss; int[3] size; }'\nvrn type --json 'enum { LOW; HIGH; }'",
    kJson,
    declare};

}  // namespace vrn
