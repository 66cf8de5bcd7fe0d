#include <stdio.h>
#include <vornath_data/vrdm.h>
#include <vornath_data/vrnt.h>

enum { CAMERA = VRDM_CLASS_CAMERA, PROGRAM = 0, GENERAL = 1, NEAR_DISTANCE = 0 };

int main(void) {
  vrntValuesError_t* error = NULL;
  vrdmScene_t* scene = vrdmCreateScene();
  uint32_t program = vrdmAddProgram(scene, VRDM_CLASS_CAMERA_PROGRAM, "camera pinhole { }");
  int32_t camera = (int32_t)vrdmCreateInstance(scene, CAMERA);
  vrdmSetReference(scene, CAMERA, camera, PROGRAM, program);

  vrntValue_t* parameters = vrntValueParse("{ focal_length = 0.05; }", &error);
  vrdmSetInstanceValue(scene, CAMERA, camera, parameters);
  vrntValueDestroy(parameters);

  vrntValueView_t field;
  vrntValue_t* general = vrdmGetDataValue(scene, CAMERA, camera, GENERAL);
  vrntValueStructField(&field, vrntValueType(general), NEAR_DISTANCE);
  vrntValueWrite(&general, field.offset, &(float){0.25f}, sizeof(float), &error);
  vrdmSetDataValue(scene, CAMERA, camera, GENERAL, general);
  vrntValueDestroy(general);

  vrdmSerialize(scene, "camera.vrnscene");
  vrdmDestroyScene(scene);
  scene = vrdmDeserialize("camera.vrnscene");
  general = vrdmGetDataValue(scene, CAMERA, camera, GENERAL);
  char* text = vrntValueString(general, &field, 0, &error);
  printf("%s: near_distance = %s\n", vrdmFieldName(CAMERA, GENERAL), text);
  vrntDestroyString(text);
  vrntValueDestroy(general);
  vrdmDestroyScene(scene);
  return 0;
}
