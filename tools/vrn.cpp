// The command vrn.
#include <csignal>
#include <string>
#include <vector>

#include "command.hpp"

int main(int count, char** words) {
  vrn::openStandardStreams();
  // A write to a pipe without a reader then reports an error, which ends the command quietly.
  std::signal(SIGPIPE, SIG_IGN);
  return vrn::run(std::vector<std::string>(words + (count > 0 ? 1 : 0), words + count));
}
