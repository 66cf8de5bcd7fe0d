// Error objects and strings are foundation's; the shutdown releases types, hence this folder.
#include <cstdlib>

#include "foundation/error_object.hpp"
#include "types/type_factory.hpp"
#include "vornath_data/errors.h"

using qex::vornath::outOfMemoryError;

extern "C" {

uint32_t vrntValuesErrorCode(const vrntValuesError_t* error) { return error->kind; }

const char* vrntValuesErrorMessage(const vrntValuesError_t* error) {
  return error->message.c_str();
}

void vrntValuesErrorDestroy(vrntValuesError_t* error) {
  if (error != &outOfMemoryError) delete error;
}

void vrntDestroyString(const char* string) { std::free(const_cast<char*>(string)); }

void vrntValuesShutdown(void) {
  if (const auto factory = qex::vornath::Type::get_factory(false)) factory->shutDown();
}

}  // extern "C"
