// A shutdown without a use. One case: it needs a fresh process.
#include <gtest/gtest.h>

#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

using qex::vornath::Type;

TEST(vrntValuesShutdown, DoesNothingBeforeAnyTypeWasUsed) {
  EXPECT_EQ(Type::get_factory(false), nullptr);
  vrntValuesShutdown();
  vrntValuesShutdown();
  EXPECT_EQ(Type::get_factory(false), nullptr);
}
