// What is wrong with a document: collected while it is read, and told with its places afterwards.
#ifndef VORNATH_TOOLKIT_JSON_PROBLEMS_HPP
#define VORNATH_TOOLKIT_JSON_PROBLEMS_HPP

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "vornath_toolkit/vrtk_json.h"

namespace vrtk {

enum class ProblemCode : std::uint8_t {
  Syntax,        ///< no JSON
  UnknownKey,    ///< a member that there is not
  DuplicateKey,  ///< a member twice
  MissingKey,    ///< a member that must be there
  WrongKind,     ///< a string for a number, and so on
  UnknownLabel,  ///< an enum has no such label
  OutOfRange,    ///< a number or an index that does not fit, an array of another length
  Limit,         ///< a number outside the limits of its field
  Version,       ///< a document of another form or version
  Type,          ///< the text of a type that cannot be read or used
  Shared,        ///< a shared block that is not there, is there twice, or contains itself
  Asset,         ///< bytes that are not there or are not those that the record describes
  TooLarge,      ///< the scene would take more memory than it may
  Patch          ///< an operation that cannot be applied
};

const char* problemCodeName(ProblemCode code);

/// Thrown when no more problems are wanted.
struct EnoughProblems : std::exception {
  const char* what() const noexcept override { return "the document has many errors"; }
};

struct Problem {
  ProblemCode code;
  std::uint64_t offset;
  std::string message;
};

class Problems {
 public:
  explicit Problems(std::uint64_t most) : most_(most == 0 ? 1 : most) {}

  /// `offset` is that of the token. Throws EnoughProblems after the last one that is kept.
  void add(ProblemCode code, std::uint64_t offset, std::string message) {
    all_.push_back({code, offset, std::move(message)});
    if (all_.size() < most_) return;
    truncated_ = true;
    throw EnoughProblems();
  }
  bool none() const { return all_.empty(); }
  bool truncated() const { return truncated_; }
  const std::vector<Problem>& all() const { return all_; }
  /// Nothing is left to be found after the last one.
  void complete() { truncated_ = false; }

 private:
  std::uint64_t most_;
  bool truncated_ = false;
  std::vector<Problem> all_;
};

/// A text in quotes for a message, cut if it is long.
std::string quoted(std::string_view text);

/// Returns `; did you mean "x"?` for the name that is nearest to a text, or up to a few names to
/// choose from.
std::string suggestion(std::string_view text, const std::vector<std::string_view>& names);

}  // namespace vrtk

struct vrtkJsonReport {
  struct Kept {
    std::string code;
    std::string pointer;
    std::string words;
    vrtkJsonMessage message;
  };

  std::vector<Kept> kept;
  bool truncated = false;
};

namespace vrtk {

/// Finds the places of problems in the document and makes a report.
std::unique_ptr<vrtkJsonReport> reportOf(const Problems& problems, std::string_view document);

/// The words of an error for a report: its first message and the number of the others.
std::string errorWords(const vrtkJsonReport& report);

/// Adds a message with a pointer and without a place.
void addMessage(vrtkJsonReport& report, std::string code, std::string pointer, std::string words);

}  // namespace vrtk

#endif
