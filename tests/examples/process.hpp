// Other programs, run with a shell, and folders to run them in.
#ifndef VORNATH_TESTS_EXAMPLES_PROCESS_HPP
#define VORNATH_TESTS_EXAMPLES_PROCESS_HPP

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "../support/temporary_folder.hpp"

namespace vornath_test {

struct Outcome {
  int status;  // -1 for a program that didn't end by itself
  std::string output, errors;
};

inline std::string quoted(const std::string& argument) {
  std::string text = "'";
  for (const char c : argument) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

inline std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot open " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void writeFile(const std::filesystem::path& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

// What stands between two marks, one after the other, on one line each.
inline std::vector<std::string> between(const std::string& text, const std::string& open,
                                        const std::string& close) {
  std::vector<std::string> found;
  for (std::size_t at = text.find(open); at != std::string::npos; at = text.find(open, at)) {
    const std::size_t begin = at + open.size();
    const std::size_t end = text.find(close, begin);
    if (end == std::string::npos) break;
    at = end + close.size();
    const std::string part = text.substr(begin, end - begin);
    if (part.find('\n') == std::string::npos) found.push_back(part);
  }
  return found;
}

// The relative files that a Markdown text links to.
inline std::vector<std::string> linksOf(const std::string& markdown) {
  std::vector<std::string> files;
  for (const std::string& link : between(markdown, "](", ")")) {
    const std::string file = link.substr(0, link.find('#'));
    if (!file.empty() && file.find(':') == std::string::npos) files.push_back(file);
  }
  return files;
}

// What a Markdown text says of files: every word in backticks with a slash in it that is no test of
// the build, and every link. The blocks of code go first, since their fences are backticks too.
inline std::vector<std::string> pathsIn(const std::string& markdown) {
  std::string prose = markdown;
  for (std::size_t begin = prose.find("```"); begin != std::string::npos;
       begin = prose.find("```")) {
    const std::size_t end = prose.find("```", begin + 3);
    if (end == std::string::npos) throw std::runtime_error("a block of code has no end");
    prose.erase(begin, end + 3 - begin);
  }
  std::vector<std::string> names = linksOf(prose);
  for (const std::string& name : between(prose, "`", "`")) {
    const bool isPath = name.find('/') != std::string::npos && name.rfind("abi.", 0) != 0 &&
                        name.find_first_of(" $(){};:") == std::string::npos;
    if (isPath) names.push_back(name);
  }
  return names;
}

// Whether a file is there, of the repository or of the public headers.
inline bool isThere(const std::filesystem::path& repository, const std::string& file) {
  return std::filesystem::exists(repository / file) ||
         std::filesystem::exists(repository / "include" / file) ||
         std::filesystem::exists(repository / "toolkit/include" / file);
}

// The fenced blocks of a language in a Markdown text.
inline std::vector<std::string> blocksOf(const std::string& markdown, const std::string& language) {
  std::vector<std::string> found;
  const std::string fence = "\n```" + language + "\n";
  for (std::size_t begin = markdown.find(fence); begin != std::string::npos;
       begin = markdown.find(fence, begin + 1)) {
    const std::size_t body = begin + fence.size();
    found.push_back(markdown.substr(body, markdown.find("```\n", body) - body));
  }
  return found;
}

// A test whose files lie in a folder of its own, which goes when the test ends.
class ProcessTest : public testing::Test {
 protected:
  std::string path(const std::string& file) const { return folder_.file(file); }

  Outcome run(const std::string& program, const std::vector<std::string>& arguments) const {
    std::string command = "cd " + quoted(folder_.path().string()) + " && " + quoted(program);
    for (const std::string& argument : arguments) command += " " + quoted(argument);
    command += " > " + quoted(path("stdout")) + " 2> " + quoted(path("stderr"));
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(path("stdout")),
            readFile(path("stderr"))};
  }

 private:
  TemporaryFolder folder_;
};

}  // namespace vornath_test

#endif
