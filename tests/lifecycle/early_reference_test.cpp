// A reference to the factory's pointer that is taken before there is a factory. One case: it needs
// a fresh process.
#include <gtest/gtest.h>

#include <memory>

#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

using qex::vornath::Type;

TEST(get_factory, GivesAReferenceThatSeesTheFactoryLater) {
  const std::shared_ptr<Type::Factory>& early = Type::get_factory(false);
  EXPECT_EQ(early, nullptr);
  vrntTypeDestroy(vrtnTypeFloatArray(3));
  EXPECT_NE(early, nullptr);
  EXPECT_EQ(&early, &Type::get_factory(true));
  EXPECT_EQ(&early, &Type::get_factory(false));
}
