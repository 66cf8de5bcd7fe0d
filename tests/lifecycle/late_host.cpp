// A host that loads the library at run time and comes back to it when the process ends, after the
// library's own static destructors: what it registered before the load runs after them.
// usage: late_host LIBRARY atexit|destructor nothing|type|value
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "vornath_data/type_library.hpp"
#include "vornath_data/vrnt.h"

namespace {

using Factory = qex::vornath::Type::Factory;

void check(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "not so: %s\n", what);
  _exit(1);
}

struct Library {
  template <typename Function>
  void find(Function*& function, const char* name) const {
    void* const symbol = dlsym(handle, name);
    check(symbol != nullptr, name);
    std::memcpy(&function, &symbol, sizeof symbol);
  }

  void load(const char* path) {
    handle = dlopen(path, RTLD_NOW | RTLD_LOCAL);
    check(handle != nullptr, "the library can be loaded");
    find(getFactory, "_ZN3qex7vornath4Type11get_factoryEb");
    find(shutdown, "vrntValuesShutdown");
    find(typeParse, "vrntTypeParse");
    find(typeDestroy, "vrntTypeDestroy");
    find(typeString, "vrntTypeString");
    find(floatArray, "vrtnTypeFloatArray");
    find(valueParse, "vrntValueParse");
    find(valueDestroy, "vrntValueDestroy");
  }

  void* handle;
  const std::shared_ptr<Factory>& (*getFactory)(bool);
  decltype(vrntValuesShutdown)* shutdown;
  decltype(vrntTypeParse)* typeParse;
  decltype(vrntTypeDestroy)* typeDestroy;
  decltype(vrntTypeString)* typeString;
  decltype(vrtnTypeFloatArray)* floatArray;
  decltype(vrntValueParse)* valueParse;
  decltype(vrntValueDestroy)* valueDestroy;
};

Library library;
vrntType_t* heldType;
vrntValue_t* heldValue;
bool comeBackLate;

void comeBack() {
  if (!comeBackLate) return;
  comeBackLate = false;
  check(library.getFactory(false) == nullptr, "there is no factory any more");
  library.shutdown();
  if (heldType != nullptr) {
    check(std::strcmp(library.typeString(heldType), "{ int @default=3 a; }") == 0,
          "a held type can be read");
    library.typeDestroy(heldType);
  }
  if (heldValue != nullptr) library.valueDestroy(heldValue);
  library.shutdown();
  check(library.getFactory(false) == nullptr, "a shutdown makes no factory");
  std::puts("came back");
  std::fflush(stdout);
}

struct ComesBack {
  ~ComesBack() { comeBack(); }
};

}  // namespace

int main(int argc, char** argv) {
  check(argc == 4, "usage: late_host LIBRARY atexit|destructor nothing|type|value");
  const std::string way = argv[2];
  const std::string held = argv[3];
  if (way == "atexit") {
    std::atexit(comeBack);
  } else {
    static const ComesBack comesBack;
  }
  library.load(argv[1]);
  check(library.getFactory(false) == nullptr, "there is no factory yet");

  vrntValuesError_t* error = nullptr;
  library.typeDestroy(library.floatArray(3));  // a type that the factory holds
  vrntType_t* const type = library.typeParse("{ int @default=3 a; }", &error);
  vrntValue_t* const value = library.valueParse("{ a = 1; b = &[ 1.0, 2.0 ]; }", &error);
  check(type != nullptr && value != nullptr, "a type and a value are made");
  if (held == "type") {
    heldType = type;
  } else {
    library.typeDestroy(type);
  }
  if (held == "value") {
    heldValue = value;
  } else {
    library.valueDestroy(value);
  }
  check(library.getFactory(false) != nullptr, "there is a factory");
  comeBackLate = true;
  return 0;
}
