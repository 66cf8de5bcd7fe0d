/*
 * Prints the catalogue: the classes of objects in a scene, with their groups, fields and reference
 * slots.
 * usage: list_catalogue [text|json|schema|html|markdown [CLASS[/GROUP]]]
 */
#include <stdio.h>
#include <string.h>

#include "vornath_toolkit/vrtk.h"

int main(int argc, char** argv) {
  /* In the order of VRTK_CATALOGUE_*. */
  static const char* const forms[] = {"text", "json", "schema", "html", "markdown"};
  const char* const wanted = argc > 1 ? argv[1] : "text";
  uint32_t form = 0;
  char* text = NULL;
  vrtkError* error = NULL;
  while (form < sizeof forms / sizeof forms[0] && strcmp(forms[form], wanted) != 0) ++form;
  if (vrtkCatalogue(form, argc > 2 ? argv[2] : NULL, &text, &error) != VRTK_OK) {
    fprintf(stderr, "list_catalogue: %s\n", vrtkErrorMessage(error));
    vrtkErrorDestroy(error);
    return 2;
  }
  fputs(text, stdout);
  vrtkStringDestroy(text);
  return fflush(stdout) == 0 ? 0 : 2;
}
