// A host in C++ that knows the library by its path only: what an accessor throws is caught as a
// std::exception and says which function was given what, in a host that was linked without the
// library's own classes.
// usage: dlopen_messages LIBRARY
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <exception>

#include "vornath_data/types.h"

namespace {

template <typename Function>
Function* find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

}  // namespace

int main(int count, char** arguments) {
  void* const library = count == 2 ? dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL) : nullptr;
  if (library == nullptr) {
    std::fprintf(stderr, "usage: dlopen_messages LIBRARY\n");
    return 2;
  }
  const auto parse = find<decltype(vrntTypeParse)>(library, "vrntTypeParse");
  const auto fieldType = find<decltype(vrntTypeFieldType)>(library, "vrntTypeFieldType");
  const auto destroy = find<decltype(vrntTypeDestroy)>(library, "vrntTypeDestroy");
  vrntValuesError_t* error = nullptr;
  vrntType_t* const type = parse("enum { A; }", &error);
  int status = 1;
  try {
    fieldType(type, 0);
  } catch (const std::exception& failure) {
    status = std::strcmp(failure.what(),
                         "vrntTypeFieldType: takes a struct or a function, was given the enum "
                         "{ A; }");
    if (status != 0) std::fprintf(stderr, "%s\n", failure.what());
  }
  destroy(type);
  return status == 0 && dlclose(library) == 0 ? 0 : 1;
}
