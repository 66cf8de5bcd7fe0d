// A permanent type that somebody still holds at the shutdown. One case: there is no way back.
#include <gtest/gtest.h>

#include "types/type_factory.hpp"
#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

using qex::vornath::Type;

TEST(vrntValuesShutdown, LeavesAHeldTypeToItsLastReference) {
  vrntType_t* const prepared = vrtnTypeFloatArray(166);
  vrntType_t* const copy = vrntTypeCopy(prepared);
  const Type::Factory* const factory = Type::get_factory(false).get();
  ASSERT_NE(factory, nullptr);
  vrntValuesShutdown();
  // The array and its element.
  EXPECT_EQ(factory->liveTypes(), 2u);
  EXPECT_STREQ(vrntTypeString(prepared), "float[166]");
  vrntTypeDestroy(prepared);
  EXPECT_STREQ(vrntTypeString(copy), "float[166]");
  vrntTypeDestroy(copy);
  EXPECT_EQ(factory->liveTypes(), 0u);
}
