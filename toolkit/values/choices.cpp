#include "values/choices.hpp"

#include <memory>
#include <string_view>

#include "foundation/failure.hpp"
#include "types/enum_constructors.hpp"
#include "vornath_data/metadata.h"
#include "vornath_toolkit/vrtk_value.h"

namespace vrtk {
namespace {

// An annotation that is a text; `otherwise` for none.
std::string annotated(const vrntType_t* type, const char* key, const std::string& otherwise) {
  if (type == nullptr || vrntMetadataExists(type, key) == 0 ||
      vrntMetadataType(type, key) != VRNT_METADATA_TEXT) {
    return otherwise;
  }
  return vrntMetadataString(type, key);
}

}  // namespace

std::vector<Choice> choicesOf(const vrntType_t* enumType) {
  std::vector<Choice> choices;
  for (const EnumConstructor& constructor : constructorsOf(enumType)) {
    const vrntType_t* const annotations = constructor.annotations.get();
    // Without their parentheses.
    const std::string_view fields =
        constructor.fields.empty()
            ? std::string_view()
            : std::string_view(constructor.fields).substr(1, constructor.fields.size() - 2);
    choices.push_back({constructor.label, annotated(annotations, "name", constructor.label),
                       annotated(annotations, "desc", {}), std::string(fields)});
  }
  return choices;
}

}  // namespace vrtk

struct vrtkEnumChoices {
  std::vector<vrtk::Choice> texts;
  std::vector<vrtkEnumChoice> choices;
};

std::uint32_t vrtkEnumChoicesOf(const vrntType_t* type, vrtkEnumChoices** choices,
                                vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(type, "vrtkEnumChoicesOf", "type");
    vrtk::requireArgument(choices, "vrtkEnumChoicesOf", "choices");
    if (vrntTypeDescriptor(type) != VRNT_DESCRIPTOR_ENUM) {
      throw vrtk::Failure(VRTK_INVALID_ARGUMENT, "vrtkEnumChoicesOf: the type is no enum");
    }
    auto made = std::make_unique<vrtkEnumChoices>();
    made->texts = vrtk::choicesOf(type);
    for (const vrtk::Choice& choice : made->texts) {
      made->choices.push_back({static_cast<std::uint32_t>(made->choices.size()),
                               choice.label.c_str(), choice.name.c_str(),
                               choice.description.c_str(), choice.fields.c_str()});
    }
    *choices = made.release();
  });
}

void vrtkEnumChoicesDestroy(vrtkEnumChoices* choices) { delete choices; }

std::uint32_t vrtkEnumChoiceCount(const vrtkEnumChoices* choices) {
  return static_cast<std::uint32_t>(choices->choices.size());
}

const vrtkEnumChoice* vrtkEnumChoiceAt(const vrtkEnumChoices* choices, std::uint32_t code) {
  return code < choices->choices.size() ? &choices->choices[code] : nullptr;
}
