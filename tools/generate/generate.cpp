// Writes the manual pages and the completions of vrn from the options that its commands declare.
// usage: vrn_generate man FOLDER | completions FOLDER
#include <algorithm>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "generate/completions.hpp"
#include "generate/manual.hpp"

namespace {

void writeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  file.close();
  if (!file) throw std::runtime_error(path + ": it cannot be written");
}

void run(const std::vector<std::string>& arguments) {
  if (arguments.size() != 2) throw std::runtime_error("usage: vrn_generate man|completions FOLDER");
  const std::string& folder = arguments[1];
  if (arguments[0] == "man") {
    writeFile(folder + "/vrn.1", vrn::overviewPage());
    for (const vrn::Command* const command : vrn::commands()) {
      writeFile(folder + "/vrn-" + command->name + ".1", vrn::manualPage(*command));
    }
  } else if (arguments[0] == "completions") {
    writeFile(folder + "/vrn.bash", vrn::bashCompletion());
    writeFile(folder + "/_vrn", vrn::zshCompletion());
    writeFile(folder + "/vrn.fish", vrn::fishCompletion());
  } else {
    throw std::runtime_error("vrn_generate: there is no " + arguments[0]);
  }
}

}  // namespace

int main(int count, char** words) {
  try {
    run({words + 1, words + count});
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
