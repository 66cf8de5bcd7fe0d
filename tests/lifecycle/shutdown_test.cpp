// A shutdown after a use, with nothing left but permanent types. One case: there is no way back.
#include <gtest/gtest.h>

#include "types/type_factory.hpp"
#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

using qex::vornath::Type;

TEST(vrntValuesShutdown, EndsThePermanentTypesAndKeepsTheFactory) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* const other = vrntTypeParse("{ int a; float @b=1.0 c; }", &error);
  ASSERT_NE(other, nullptr);
  vrntType_t* const prepared = vrtnTypeFloatArray(3);
  vrntTypeDestroy(other);
  vrntTypeDestroy(prepared);
  const Type::Factory* const factory = Type::get_factory(false).get();
  ASSERT_NE(factory, nullptr);
  EXPECT_GE(Type::get_factory(false)->liveTypes(), 4u);
  vrntValuesShutdown();
  EXPECT_EQ(Type::get_factory(false).get(), factory);
  EXPECT_EQ(factory->liveTypes(), 0u);
  vrntValuesShutdown();
  EXPECT_EQ(factory->liveTypes(), 0u);
}
