// A shutdown after a scene was asked for one of its groups. One case: there is no way back.
#include <gtest/gtest.h>

#include "types/type_factory.hpp"
#include "vornath_data/type_library.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

using qex::vornath::Type;

TEST(vrntValuesShutdown, LeavesTheTypesOfGroupsToTheUnloading) {
  vrdmScene_t* const scene = vrdmCreateScene();
  vrntValueDestroy(vrdmGetSceneDataValue(scene, 3));
  vrdmDestroyScene(scene);
  vrntValuesShutdown();
  EXPECT_GT(Type::get_factory(false)->liveTypes(), 0u);
}
