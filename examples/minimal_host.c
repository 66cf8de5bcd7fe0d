#include <stdio.h>
#include <vornath_data/vrnt.h>

int main(void) {
  vrntValuesError_t* error = NULL;
  vrntType_t* type = vrntTypeParse("{ float @default=0.5 gloss; int[3] size; }", &error);
  vrntValue_t* value = type ? vrntValueCreateDefault(type, &error) : NULL;
  char* text = value ? vrntValueString(value, &(vrntValueView_t){type, 0}, 0, &error) : NULL;
  puts(text ? text : vrntValuesErrorMessage(error));
  vrntDestroyString(text);
  if (value) vrntValueDestroy(value);
  if (type) vrntTypeDestroy(type);
  vrntValuesErrorDestroy(error);
  return text ? 0 : 1;
}
