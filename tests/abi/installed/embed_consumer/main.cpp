// A program that builds the library in: values and spectra by the internals, and a flat function.
#include <cstdio>
#include <cstring>
#include <vector>

#include "embed/spectrum.hpp"
#include "vornath_data/vrnt.h"

using qex::vornath::DynamicValue;
using qex::vornath::Illuminant;
using qex::vornath::Spectrum;
using qex::vornath::Type;

int main() {
  const std::vector<DynamicValue> numbers{DynamicValue::base(Type::TBasetype::Float, 0.5F),
                                          DynamicValue::base(Type::TBasetype::Float, 1.5F)};
  const DynamicValue array = DynamicValue::array(numbers, 2);
  vrntValue_t* value = qex::vornath::allocateValue(array);
  const vrntValueView_t whole{vrntValueType(value), 0};
  vrntValuesError_t* error = nullptr;
  char* text = vrntValueString(value, &whole, 0, &error);
  const bool printed = text != nullptr && std::strcmp(text, "[ 0.5, 1.5 ]") == 0;
  std::puts(text != nullptr ? text : vrntValuesErrorMessage(error));
  vrntDestroyString(text);
  vrntValueDestroy(value);
  const float luminance = Spectrum::fromLuminance(0.25F).view().toLuminance(Illuminant::E);
  return printed && luminance > 0.24F && luminance < 0.26F ? 0 : 1;
}
