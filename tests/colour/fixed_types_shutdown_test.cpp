// A shutdown ends the fixed types with all that they are made of. One case: there is no way back.
#include <gtest/gtest.h>

#include "colour/sampler_types.hpp"
#include "colour/universal_spectrum.hpp"
#include "embed/sampler_makers.hpp"
#include "fixed_types_list.hpp"
#include "type_reading.hpp"
#include "types/type_factory.hpp"

using namespace vornath_test;  // the test file's own vocabulary
using qex::vornath::Type;

TEST(FixedTypes, EndWithAShutdown) {
  for (const FixedType& fixed : kFixedTypes) {
    const TypeHandle type(fixed.get());
    defaultOf(type.get());  // which the type keeps
  }
  qex::vornath::floatSphereSamplerType();
  qex::vornath::toUniversalSpectrum(qex::vornath::compactSpectrumType());
  const Type::Factory& factory = *Type::get_factory(false);
  EXPECT_GT(factory.liveTypes(), std::size(kFixedTypes));
  vrntValuesShutdown();
  EXPECT_EQ(factory.liveTypes(), 0u);
}
