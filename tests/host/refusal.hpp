// The words of what a call throws.
#ifndef VORNATH_TESTS_HOST_REFUSAL_HPP
#define VORNATH_TESTS_HOST_REFUSAL_HPP

#include <string>

#include "vornath_data/result.hpp"

namespace vornath_test {

// The code that comes with the words, NoError if nothing was thrown.
struct Refusal {
  std::string message;
  vrnt::ErrorCode code = vrnt::ErrorCode::NoError;
};

template <typename Call>
Refusal refusalOf(Call call) {
  try {
    call();
  } catch (const vrnt::Exception& caught) {
    return {caught.what(), caught.code()};
  }
  return {"nothing was thrown"};
}

template <typename Call>
std::string messageOf(Call call) {
  return refusalOf(call).message;
}

}  // namespace vornath_test

#endif
