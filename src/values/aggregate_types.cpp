#include "values/aggregate_types.hpp"

#include "vornath_data/result.hpp"

namespace qex::vornath {

void throwUntypedArray() {
  throw vrnt::Exception(vrnt::ErrorCode::InvalidArguments,
                        "Empty array without type is not allowed.");
}

}  // namespace qex::vornath
