// One run of a command: what the options of all commands say, where results go, and the files that
// the command reads and writes.
#ifndef VRN_CORE_SESSION_HPP
#define VRN_CORE_SESSION_HPP

#include <vornath_data/vrdm.h>
#include <vornath_data/vrnt.h>
#include <vornath_toolkit/vrtk.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vornath_data/handles.hpp>

#include "core/colour.hpp"
#include "core/output.hpp"
#include "core/trouble.hpp"

namespace vrn {

/// What the options that commands share say.
struct CommonOptions {
  bool json = false;
  bool trust = false;
  std::string color = "auto";
  std::uint64_t maxMemory = 0;
};

struct ErrorDeleter {
  void operator()(vrtkError* error) const noexcept { vrtkErrorDestroy(error); }
};
struct ReportDeleter {
  void operator()(vrtkReport* report) const noexcept { vrtkReportDestroy(report); }
};
struct StringDeleter {
  void operator()(char* text) const noexcept { vrtkStringDestroy(text); }
};
using Report = std::unique_ptr<vrtkReport, ReportDeleter>;
using String = std::unique_ptr<char, StringDeleter>;

class Session {
 public:
  Session(std::string command, const CommonOptions& options);

  const std::string& command() const { return command_; }
  bool json() const { return options_.json; }
  bool trust() const { return options_.trust; }
  Output& out() { return out_; }
  /// The colours of standard output.
  const Colours& colours() const { return colours_; }
  /// The columns that tables on standard output may take: those of the terminal, or 100.
  std::size_t columns() const;
  /// The columns at which sentences are broken. Those that go to another program are not.
  std::size_t wrapColumns() const;

  /// Prints one line on standard error, `vrn COMMAND: MESSAGE`.
  void tell(std::string_view message) const;

  /// Checks a file, or standard input for "-". Throws Trouble if it cannot be read.
  Report check(const std::string& path, std::uint64_t maxMessages) const;

  /// Checks and opens a scene file, or standard input for "-"; only opens it if the command was
  /// told to trust it. Throws Trouble if it cannot be read or must not be.
  vrnt::UniqueScene open(const std::string& path) const;

  /// Writes a scene whole or not at all, to standard output for "-".
  void save(const vrdmScene_t* scene, const std::string& path);

  /// Writes bytes whole or not at all, to standard output for "-".
  void saveBytes(std::string_view bytes, const std::string& path);

 private:
  std::string command_;
  CommonOptions options_;
  Output out_;
  Colours colours_;
};

/// Throws Trouble with the message of an error that a function of the toolkit reported.
class ErrorOut {
 public:
  ErrorOut() = default;
  ErrorOut(const ErrorOut&) = delete;
  ErrorOut& operator=(const ErrorOut&) = delete;
  ~ErrorOut() { vrtkErrorDestroy(error_); }
  operator vrtkError**() { return &error_; }  // NOLINT(google-explicit-constructor)
  std::string message() const;
  /// Returns whether the error belongs to a place in a text.
  bool place(vrtkTextPlace* place) const {
    return error_ != nullptr && vrtkErrorPlace(error_, place);
  }
  std::uint32_t code() const { return error_ != nullptr ? vrtkErrorCode(error_) : 0; }

 private:
  vrtkError* error_ = nullptr;
};

/// Runs a function of the toolkit, `call(error)`, and throws Trouble if it fails.
template <typename Call>
void require(Call&& call) {
  ErrorOut error;
  if (call(static_cast<vrtkError**>(error)) != VRTK_OK) throw Trouble(error.message());
}

/// As above, for a function that gives a string.
template <typename Call>
String requireString(Call&& call) {
  char* text = nullptr;
  require([&](vrtkError** error) { return call(&text, error); });
  return String(text);
}

/// Returns whether a path stands for a stream, which is read to its end: "-", and what a shell
/// gives for `<(command)`.
bool isStream(const std::string& path);

/// Returns how messages name a path: "standard input" for "-".
std::string nameOf(const std::string& path);

/// Reads a file, or a stream, to its end. Throws Trouble.
std::string readAll(const std::string& path);

}  // namespace vrn

#endif
