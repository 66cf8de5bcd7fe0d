#include "foundation/error_object.hpp"

#include <utility>

namespace qex::vornath {
namespace {

// Keeps the object from being destroyed at unload: other destructors may still report through it.
union NeverDestroyed {
  constexpr NeverDestroyed() : object{OutOfMemory, "Out of memory."} {}
  // NOLINTNEXTLINE(modernize-use-equals-default): defaulted, it would be deleted
  ~NeverDestroyed() {}

  vrntValuesError_t object;
};

// The text is short enough to be stored inside the string object, so nothing is allocated. The
// object is initialised at compile time, or, if the compiler cannot do that, when the library is
// loaded.
NeverDestroyed outOfMemoryStorage;

}  // namespace

constinit vrntValuesError_t& outOfMemoryError = outOfMemoryStorage.object;

vrntValuesError_t* makeError(std::uint32_t kind, std::string message) {
  return new vrntValuesError_t{kind, std::move(message)};
}

void storeError(vrntValuesError_t** location, std::uint32_t kind, const char* message) noexcept {
  try {
    *location = makeError(kind, message);
  } catch (...) {
    *location = &outOfMemoryError;
  }
}

}  // namespace qex::vornath
