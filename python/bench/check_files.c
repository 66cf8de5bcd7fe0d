/* Checks the files that standard input names, one a line: what vornath_data.batch is measured beside. */
#include <stdio.h>
#include <string.h>
#include <vornath_toolkit/vrtk.h>

int main(void) {
  char path[4096];
  unsigned bad = 0;
  while (fgets(path, sizeof path, stdin)) {
    vrtkReport* report = NULL;
    char* json = NULL;
    path[strcspn(path, "\n")] = '\0';
    if (vrtkCheckFile(path, NULL, &report, NULL) != VRTK_OK) return 2;
    if (!vrtkReportValid(report)) ++bad;
    if (vrtkReportJson(report, &json, NULL) != VRTK_OK) return 2;
    vrtkStringDestroy(json);
    vrtkReportDestroy(report);
  }
  return bad != 0;
}
