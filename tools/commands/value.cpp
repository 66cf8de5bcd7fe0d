// vrn value: what a value is, and what becomes of it as another type.
#include <memory>

#include "command.hpp"
#include "core/stream.hpp"
#include "core/text.hpp"
#include "core/typed_text.hpp"

namespace vrn {
namespace {

struct Choices {
  std::string text;
  std::string as;
  std::string coerce;
  bool lenient = false;
  bool hasAs = false;
  bool hasCoerce = false;
};

int describe(Session& session, const Choices& choices) {
  if (choices.lenient && !choices.hasCoerce) {
    throw Trouble("--lenient: it belongs to --coerce; give --coerce TYPE");
  }
  const std::string text = choices.text == "-" ? readAll("-") : choices.text;
  if (text.find('\0') != std::string::npos) {
    throw Trouble("TEXT: a NUL character is in no value; give the text of a value");
  }
  vrnt::UniqueType annotated;
  vrntValue_t* made = nullptr;
  {
    ErrorOut error;
    std::uint32_t status = VRTK_OK;
    if (!choices.hasAs) {
      status = vrtkValueParse(text.c_str(), &made, error);
    } else {
      annotated = parseType("--as", choices.as);
      status = vrtkValueParseAs(annotated.get(), text.c_str(), &made, error);
    }
    if (status != VRTK_OK) raiseAbout("TEXT", text, error);
  }
  vrnt::UniqueValue value(made);
  if (choices.hasCoerce) {
    annotated = parseType("--coerce", choices.coerce);
    vrntValue_t* coerced = nullptr;
    ErrorOut error;
    if (vrtkValueCoerce(annotated.get(), value.get(), choices.lenient ? 1 : 0, &coerced, error) !=
        VRTK_OK) {
      const std::string remedy = !choices.lenient && error.code() == VRTK_VALUE_TYPE
                                     ? "; --lenient keeps the default for what does not fit"
                                     : "";
      throw Trouble("--coerce: " + error.message() + remedy);
    }
    value.reset(coerced);
  }
  // An unsized array has values of many types, which have no defaults and limits of their own.
  if (annotated && vrntTypeSize(annotated.get()) != vrntTypeSize(vrntValueType(value.get()))) {
    annotated.reset();
  }
  const std::uint32_t form = session.json() ? VRTK_DESCRIPTION_JSON : VRTK_DESCRIPTION_TEXT;
  printJson(session, requireString([&](char** to, vrtkError** error) {
                       return vrtkValueDescribe(value.get(), annotated.get(), form, to, error);
                     }).get());
  return kSame;
}

Run declare(Options& options) {
  auto choices = std::make_shared<Choices>();
  options.argument("TEXT", Kind::Text, true, choices->text,
                   "the text of a value; - reads it from standard input");
  options.text("--as", "TYPE", Kind::Text, choices->as,
               "read the text as a value of this type, which says what is meant by it");
  options.text("--coerce", "TYPE", Kind::Text, choices->coerce,
               "convert the value to this type; what does not fit is an error");
  options.flag("--lenient", choices->lenient,
               "with --coerce, keep the default for what does not fit");
  const Options* const declared = &options;
  return [choices, declared](Session& session) {
    choices->hasAs = declared->given("--as");
    choices->hasCoerce = declared->given("--coerce");
    return describe(session, *choices);
  };
}

}  // namespace

const Command kValue = {
    "value",
    "explain a value: its type, canonical text and parts",
    "Parses the text of a value, and prints its type, its size, its canonical text, and each of "
    "its "
    "parts with its offset. An error is printed with a caret under its place.",
    "With --as, fields may be left out, enum labels stand bare, and an int may stand for a float. "
    "The document type_language.md describes the language.",
    "vrn value '{ a = 1; b = [ 1.0, 2.0 ]; }'\n"
    "vrn value '{ mode = HIGH }' --as '{ enum { LOW; HIGH; } mode; float @default=0.5 gloss; }'\n"
    "vrn value '{ a = 1; }' --coerce '{ int a; int b; }'",
    kJson,
    declare};

}  // namespace vrn
