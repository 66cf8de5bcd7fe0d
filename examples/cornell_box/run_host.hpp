// The main function of an example program.
#ifndef CORNELL_BOX_RUN_HOST_HPP
#define CORNELL_BOX_RUN_HOST_HPP

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "vornath_data/errors.h"

namespace cornell_box {

/// Runs a host program with its arguments. Prints an exception as "name: message" and returns 1
/// then. Calls vrntValuesShutdown(), a host's last call, which releases the library's permanent
/// types.
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
