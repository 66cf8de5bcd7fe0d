/* Which calls copy the bytes of a value. docs/memory.md explains the parts. */
#include <stdio.h>
#include <string.h>
#include <vornath_data/vrnt.h>

static vrntValuesError_t* error = NULL;
static int failures = 0;

static void check(int holds, const char* what) {
  if (!holds || error != NULL) {
    fprintf(stderr, "wrong: %s\n", what);
    ++failures;
  }
}

/* The width in a value `{ int width; int height; }`. */
static int32_t widthOf(const vrntValue_t* value) {
  int32_t width;
  memcpy(&width, vrntValueData(value), sizeof width);
  return width;
}

static void writeWhatIsShared(void) {
  vrntValue_t* a = vrntValueParse("{ width = 640; height = 480; }", &error);
  vrntValue_t* b = vrntValueCopy(a);
  check(b == a, "vrntValueCopy() shares the block");

  vrntValueView_t width;
  const int32_t narrow = 320;
  vrntValueStructField(&width, vrntValueType(b), 0);
  vrntValueWrite(&b, width.offset, &narrow, sizeof narrow, &error);
  check(b != a, "the write moved b to a copy of the block");
  check(widthOf(a) == 640 && widthOf(b) == 320, "a keeps its bytes");

  const vrntValue_t* before = b;
  vrntValueWrite(&b, width.offset, &narrow, sizeof narrow, &error);
  check(b == before, "b does not share its block now, so this write copies nothing");

  const int32_t* bytes = vrntValueData(a);
  vrntValue_t* c = vrntValueCopy(a);
  vrntValueWrite(&a, width.offset, &narrow, sizeof narrow, &error);
  check(bytes[0] == 640, "bytes still points to the old block, which c keeps alive");
  check(vrntValueData(a) != bytes && vrntValueData(c) == bytes, "a has moved");

  vrntValueDestroy(a);
  vrntValueDestroy(b);
  vrntValueDestroy(c);
}

static void writeManyElements(void) {
  vrntValue_t* a = vrntValueParse("[ : int | 1000 ]", &error);

  vrntValueView_t whole = {vrntValueType(a), 0};
  int32_t* elements = vrntValueMap(&a, &whole, &error);
  if (elements != NULL) {
    for (int32_t i = 0; i < 1000; ++i) elements[i] = i;
    vrntValueUnmap(a, &whole);
  }

  check(((const int32_t*)vrntValueData(a))[999] == 999, "the elements are written");
  vrntValueDestroy(a);
}

static void writeBehindAReference(void) {
  vrntValue_t* image = vrntValueParse("{ size = &{ width = 640; height = 480; }; }", &error);
  vrntValue_t* other = vrntValueCopy(image);

  vrntValueView_t reference;
  const int32_t narrow = 320;
  vrntValueStructField(&reference, vrntValueType(image), 0);
  vrntValue_t* size = vrntValueDereference(image, &reference);
  vrntValueWrite(&size, 0, &narrow, sizeof narrow, &error);
  vrntValueSetReference(&image, &reference, size, &error);
  vrntValueDestroy(size);

  vrntValue_t* changed = vrntValueDereference(image, &reference);
  vrntValue_t* former = vrntValueDereference(other, &reference);
  check(widthOf(changed) == 320 && widthOf(former) == 640, "only image has changed");
  vrntValueDestroy(changed);
  vrntValueDestroy(former);
  vrntValueDestroy(image);
  vrntValueDestroy(other);
}

int main(void) {
  writeWhatIsShared();
  writeManyElements();
  writeBehindAReference();
  if (error != NULL) fprintf(stderr, "%s\n", vrntValuesErrorMessage(error));
  vrntValuesErrorDestroy(error);
  return failures == 0 ? 0 : 1;
}
