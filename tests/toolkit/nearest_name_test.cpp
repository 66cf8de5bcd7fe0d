// The name that a misspelt one was meant to be.
#include "foundation/nearest_name.hpp"

#include <gtest/gtest.h>

#include <string>

namespace vornath_test {
namespace {

using vrtk::nearestName;

TEST(NearestName, IsTheOneWithTheFewestChanges) {
  EXPECT_EQ(nearestName({"near_distance", "shutter_open", "shutter_close"}, "shuter_close"),
            "shutter_close");
  EXPECT_EQ(nearestName({"near_distance", "far_distance"}, "faar_distance"), "far_distance");
  EXPECT_EQ(nearestName({}, "x"), "");
}

TEST(NearestName, CountsTwoLettersThatChangedPlacesOnce) {
  EXPECT_EQ(nearestName({"abcf", "badc", "abdc"}, "abcd"), "abcf");
  EXPECT_EQ(nearestName({"width"}, "widht"), "width");
  // Two replacements would be too many for a word of three letters.
  EXPECT_EQ(nearestName({"abc"}, "acb"), "abc");
}

TEST(NearestName, LetsTheCaseDecideBetweenNamesWithAsManyChanges) {
  EXPECT_EQ(nearestName({"fox", "fOO", "foO"}, "foo"), "foO");
  EXPECT_EQ(nearestName({"Cameras", "CAMERA"}, "camera"), "CAMERA");
  EXPECT_EQ(nearestName({"gO", "go"}, "gx"), "gO");
}

TEST(NearestName, DiffersInAThirdOfTheLettersAtMost) {
  EXPECT_EQ(nearestName({"abcdef"}, "abcdxy"), "abcdef");
  EXPECT_EQ(nearestName({"abcdef"}, "abcxyz"), "");
  // One letter of a short word may differ.
  EXPECT_EQ(nearestName({"x"}, "y"), "x");
  EXPECT_EQ(nearestName({"xy"}, "ab"), "");
}

TEST(NearestName, IsNotSearchedForATextThatIsNoName) {
  const std::string text(100000, 'a');
  EXPECT_EQ(nearestName({text}, text), "");
}

}  // namespace
}  // namespace vornath_test
