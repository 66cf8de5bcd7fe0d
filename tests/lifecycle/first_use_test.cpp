// The factory comes into being with the first use of a type. One case: it needs a fresh process.
#include <gtest/gtest.h>

#include "support/flat_handles.hpp"
#include "vornath_data/type_library.hpp"

using qex::vornath::Type;

TEST(get_factory, GivesNoneBeforeTheFirstUseAndTheOneFactoryAfterIt) {
  EXPECT_EQ(Type::get_factory(false), nullptr);
  EXPECT_EQ(Type::get_factory(false), nullptr);
  {
    const auto type = vornath_test::parseType("float[3]");
    ASSERT_NE(Type::get_factory(false), nullptr);
    EXPECT_EQ(Type::get_factory(false), Type::get_factory(true));
    EXPECT_EQ(&Type::get_factory(false), &Type::get_factory(true));
  }
  EXPECT_NE(Type::get_factory(false), nullptr);
}
