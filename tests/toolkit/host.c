/* A host in C11 that saves a scene, checks the file, and opens it. usage: host FILE */
#include <stdio.h>
#include <string.h>
#include <vornath_data/vrdm.h>
#include <vornath_toolkit/vrtk.h>

static int failed(const char* what, vrtkError* error) {
  fprintf(stderr, "%s: %s\n", what, error ? vrtkErrorMessage(error) : "no error");
  vrtkErrorDestroy(error);
  return 1;
}

int main(int count, char** arguments) {
  vrtkError* error = NULL;
  vrtkReport* report = NULL;
  vrdmScene_t* scene = vrdmCreateScene();
  vrtkLimits limits = VRTK_LIMITS_INIT;
  vrtkSaveOptions options = VRTK_SAVE_OPTIONS_INIT;
  char* json = NULL;
  int good;

  if (count != 2) return 2;
  options.skipSync = 1;
  vrdmAddProgram(scene, VRDM_CLASS_CAMERA_PROGRAM, "camera pinhole { }");
  if (vrtkSceneSave(scene, arguments[1], &options, &error)) return failed("save", error);
  vrdmDestroyScene(scene);

  limits.maxMemory = UINT64_C(1) << 30;
  if (vrtkCheckFile(arguments[1], &limits, &report, &error)) return failed("check", error);
  if (vrtkReportJson(report, &json, &error)) return failed("report", error);
  good = vrtkReportValid(report) && vrtkReportClass(report, VRDM_CLASS_CAMERA_PROGRAM).live == 1 &&
         strstr(json, "\"valid\": true") != NULL;
  vrtkStringDestroy(json);
  vrtkReportDestroy(report);
  if (!good) return 1;

  scene = NULL;
  if (vrtkSceneOpen(arguments[1], &limits, &scene, NULL, &error)) return failed("open", error);
  good = vrdmContainerSize(scene, VRDM_CLASS_CAMERA_PROGRAM) == 1;
  vrdmDestroyScene(scene);
  printf("toolkit %s: the scene was saved, checked and opened\n", vrtkVersion());
  return good ? 0 : 1;
}
