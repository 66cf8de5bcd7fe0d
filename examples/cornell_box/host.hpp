// What a C++ host puts around the flat functions: handles that end themselves, and error objects
// turned into exceptions.
#ifndef CORNELL_BOX_HOST_HPP
#define CORNELL_BOX_HOST_HPP

#include <cstdio>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace cornell_box {

struct EndHandle {
  void operator()(vrntType_t* type) const { vrntTypeDestroy(type); }
  void operator()(vrntValue_t* value) const { vrntValueDestroy(value); }
  void operator()(vrdmScene_t* scene) const { vrdmDestroyScene(scene); }
  void operator()(AssetStorage* storage) const { vrdmAssetStorageRelease(storage); }
  void operator()(char* string) const { vrntDestroyString(string); }
};

using Type = std::unique_ptr<vrntType_t, EndHandle>;
using Value = std::unique_ptr<vrntValue_t, EndHandle>;
using Scene = std::unique_ptr<vrdmScene_t, EndHandle>;
using Storage = std::unique_ptr<AssetStorage, EndHandle>;
using String = std::unique_ptr<char, EndHandle>;

/// Raises what an error location holds, if it holds something, and ends the object.
inline void raiseIf(vrntValuesError_t* error) {
  if (!error) return;
  const std::string message = vrntValuesErrorMessage(error);
  vrntValuesErrorDestroy(error);
  throw std::runtime_error(message);
}

inline Type parseType(const std::string& text) {
  vrntValuesError_t* error = nullptr;
  Type type(vrntTypeParse(text.c_str(), &error));
  raiseIf(error);
  return type;
}

inline Value defaultValue(const vrntType_t* type) {
  vrntValuesError_t* error = nullptr;
  Value value(vrntValueCreateDefault(type, &error));
  raiseIf(error);
  return value;
}

/// Reads a scene file. One that can't be read raises an error that names the path.
inline Scene readScene(const std::string& path) {
  Scene scene;
  try {
    scene.reset(vrdmDeserialize(path.c_str()));
  } catch (const std::exception& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
  if (!scene)
    throw std::runtime_error(path + ": there is no scene file that this program can read");
  return scene;
}

/// A host's whole life: runs it with its arguments, tells what it raises as "name: words" and exit
/// code 1, and lets the library end its permanent types, which is a host's last call.
inline int runHost(const char* name, int count, char** arguments,
                   int (*run)(const std::vector<std::string>& arguments)) {
  int status = 1;
  try {
    status = run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", name, error.what());
  }
  vrntValuesShutdown();
  return status;
}

}  // namespace cornell_box

#endif
