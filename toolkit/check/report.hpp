// The report of a check: what was counted, and the messages that are kept.
#ifndef VORNATH_TOOLKIT_CHECK_REPORT_HPP
#define VORNATH_TOOLKIT_CHECK_REPORT_HPP

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "vornath_toolkit/vrtk_check.h"

namespace vrtk {

enum class Code : std::uint32_t {
#define VRTK_CHECK_CODE(name, severity) name,
#include "check/codes.def"
#undef VRTK_CHECK_CODE
};

const char* codeName(Code code);
std::uint32_t severityOf(Code code);

/// Returns the limits that a caller asked for, with the default of each member that the caller's
/// version of the struct does not have.
vrtkLimits limitsOf(const vrtkLimits* given);

}  // namespace vrtk

struct vrtkReport {
 public:
  explicit vrtkReport(const vrtkLimits& limits);

  /// Counts a finding. If its message is kept, calls `words()`, which returns a pair of address and
  /// message.
  template <typename Words>
  void add(vrtk::Code code, std::uint64_t offset, Words&& words) {
    if (count(code)) {
      auto [address, message] = std::forward<Words>(words)();
      keep({code, offset, std::move(address), std::move(message)});
    }
  }

  struct Kept {
    vrtk::Code code;
    std::uint64_t offset;
    std::string address;
    std::string message;
  };

  /// Returns the error that was found first, whether its message is kept or not.
  const std::optional<Kept>& firstError() const { return firstError_; }

  /// Puts the messages in order. Call it once, when the check is done.
  void finish();

  const std::vector<vrtkMessage>& messages() const { return messages_; }
  std::uint64_t errors() const { return errors_; }
  std::uint64_t warnings() const { return warnings_; }
  bool truncated() const { return errors_ + warnings_ > messages_.size(); }
  std::string json() const;

  std::string file;  ///< the path; only if hasFile
  bool hasFile = false;
  vrtkInfo info{};
  std::vector<vrtkClassInfo> classes;

 private:
  bool count(vrtk::Code code);
  void keep(Kept found);

  std::uint64_t maxMessages_;
  std::uint64_t errors_ = 0;
  std::uint64_t warnings_ = 0;
  std::uint64_t keptErrors_ = 0;
  std::optional<Kept> firstError_;
  std::vector<Kept> kept_;
  std::vector<vrtkMessage> messages_;
};

#endif
