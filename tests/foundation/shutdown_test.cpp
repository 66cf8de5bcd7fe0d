#include <gtest/gtest.h>

#include <cstdlib>

#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

// Each case that shuts the library down needs a process of its own: there is no way back.
namespace {

int factoryAfterShutdown() {
  if (qex::vornath::Type::get_factory(false)) return 2;
  vrntValuesShutdown();
  return qex::vornath::Type::get_factory(false) ? 1 : 0;
}

TEST(vrntValuesShutdownDeathTest, BeforeAnyTypeLeavesNoFactoryBehind) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(factoryAfterShutdown()), testing::ExitedWithCode(0), "");
}

int shutdownAfterUse() {
  vrntType_t* type = vrtnTypeFloatArray(3);
  vrntTypeDestroy(type);
  vrntValuesShutdown();
  // The factory stays in place until the library is unloaded.
  return qex::vornath::Type::get_factory(false) ? 0 : 1;
}

TEST(vrntValuesShutdownDeathTest, AfterUseEndsTheHoldOnPermanentTypesAndKeepsTheFactory) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(std::exit(shutdownAfterUse()), testing::ExitedWithCode(0), "");
}

}  // namespace
