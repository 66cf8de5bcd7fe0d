// The life of a program that uses the library, from its arguments to its exit code.
#ifndef CORNELL_BOX_RUN_HOST_HPP
#define CORNELL_BOX_RUN_HOST_HPP

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "vornath_data/errors.h"

namespace cornell_box {

/// Runs a host with its arguments, tells what it raises as "name: words" and exit code 1, and lets
/// the library end its permanent types, which is a host's last call.
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
