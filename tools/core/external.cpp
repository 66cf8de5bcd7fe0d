#include "core/external.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "core/trouble.hpp"

namespace vrn {
namespace {

bool isProgram(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         access(path.c_str(), X_OK) == 0;
}

std::string ownFolder() {
  std::array<char, 4096> path{};
  const ssize_t length = readlink("/proc/self/exe", path.data(), path.size());
  if (length <= 0 || static_cast<std::size_t>(length) == path.size()) return "";
  const std::string text(path.data(), static_cast<std::size_t>(length));
  return text.substr(0, text.rfind('/'));
}

// Returns the folder of the program in the build tree in which vrn is; empty if it is installed.
std::string buildFolder(const std::string& own, const std::string& command) {
  const std::size_t slash = own.rfind('/');
  if (slash == std::string::npos || own.substr(slash) != "/tools") return "";
  const std::string tree = own.substr(0, slash);
  if (access((tree + "/CMakeCache.txt").c_str(), F_OK) != 0) return "";
  for (const ExternalProgram& program : externalPrograms()) {
    if (command == program.command) return tree + "/" + program.folder;
  }
  return "";
}

std::vector<std::string> folders(const std::string& command) {
  const std::string own = ownFolder();
  std::vector<std::string> found = {own, buildFolder(own, command)};
  const char* const path = std::getenv("PATH");
  const std::string text = path != nullptr ? path : "";
  for (std::size_t start = 0; start <= text.size();) {
    const std::size_t end = std::min(text.find(':', start), text.size());
    found.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return found;
}

}  // namespace

const std::vector<ExternalProgram>& externalPrograms() {
  static const std::vector<ExternalProgram> all = {
      {"convert", "make a scene file from glTF and other files", "converter",
       "build it with VORNATH_DATA_BUILD_CONVERTER=ON, for which "
       "`scripts/install_dependencies.sh converter` installs the packages, and put it beside vrn "
       "or "
       "on PATH"},
      {"render", "render a scene to a picture", "renderer",
       "build it with VORNATH_DATA_BUILD_RENDERER=ON, for which "
       "`scripts/install_dependencies.sh renderer` installs the packages, and put it beside vrn or "
       "on PATH"}};
  return all;
}

void runExternal(const std::string& command, const std::vector<std::string>& arguments) {
  // Only a name may become part of the name of a program.
  if (command.empty() || command.find('/') != std::string::npos) return;
  for (const std::string& folder : folders(command)) {
    std::string program = folder;
    program += "/vrn-";
    program += command;
    if (folder.empty() || !isProgram(program)) continue;
    std::vector<char*> words;
    words.push_back(const_cast<char*>(program.c_str()));
    for (const std::string& argument : arguments) {
      words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    std::signal(SIGPIPE, SIG_DFL);
    execv(program.c_str(), words.data());
    throw Trouble(program + ": it cannot be run: " + std::strerror(errno) + "; check the file");
  }
  for (const ExternalProgram& program : externalPrograms()) {
    if (command != program.command) continue;
    std::string message = command;
    message.append(": the program vrn-").append(command).append(" is not installed; ");
    throw Trouble(message.append(program.missing));
  }
}

}  // namespace vrn
