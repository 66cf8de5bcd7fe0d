#include "json/problems.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "foundation/failure.hpp"
#include "foundation/nearest_name.hpp"
#include "json/tape.hpp"
#include "json/text.hpp"

namespace vrtk {
namespace {

constexpr std::size_t kLongestName = 80;

// Follows the tokens of a document and says where each one stands.
class PlaceFinder {
 public:
  struct Place {
    std::uint64_t offset;
    std::string pointer;
  };

  explicit PlaceFinder(std::vector<std::uint64_t> offsets) : offsets_(std::move(offsets)) {
    std::sort(offsets_.begin(), offsets_.end());
    offsets_.erase(std::unique(offsets_.begin(), offsets_.end()), offsets_.end());
  }

  void value(Token token, std::uint64_t offset, std::string_view text, bool isInDocument) {
    if (token == Token::Key) {
      Level& level = levels_.back();
      level.hasKey = true;
      level.isInDocument = isInDocument;
      if (isInDocument) {
        level.text = text;
      } else {
        level.own = text;
      }
      meet(offset);
      return;
    }
    enter();
    meet(offset);
  }
  void start(Token token, std::uint64_t offset) {
    enter();
    meet(offset);
    levels_.emplace_back();
    levels_.back().isArray = token == Token::Array;
  }
  void end(std::uint64_t /*parts*/) { levels_.pop_back(); }

  /// What was not met belongs to what is still open.
  void finish() {
    while (next_ < offsets_.size()) places_.push_back({offsets_[next_++], pointer()});
  }

  const std::string& pointerOf(std::uint64_t offset) const {
    const auto found = std::lower_bound(
        places_.begin(), places_.end(), offset,
        [](const Place& place, std::uint64_t wanted) { return place.offset < wanted; });
    return found->pointer;
  }

 private:
  struct Level {
    // Computed at each use: a view of `own` would dangle when the vector moves its levels.
    std::string_view key() const { return isInDocument ? text : std::string_view(own); }

    bool isArray = false;
    bool hasKey = false;
    bool isInDocument = false;
    std::uint64_t count = 0;
    std::string_view text;  // in the document
    std::string own;        // a key with escapes
  };

  // Counts the elements of an array.
  void enter() {
    if (!levels_.empty() && levels_.back().isArray) ++levels_.back().count;
  }

  void meet(std::uint64_t offset) {
    while (next_ < offsets_.size() && offsets_[next_] <= offset) {
      places_.push_back({offsets_[next_++], pointer()});
    }
  }

  // A pointer that nobody can read is cut.
  std::string pointer() const {
    constexpr std::size_t kLongest = 4000;
    std::string text;
    for (const Level& level : levels_) {
      if (text.size() > kLongest) return text + "/...";
      if (level.isArray) {
        if (level.count != 0) text += "/" + std::to_string(level.count - 1);
        continue;
      }
      if (!level.hasKey) continue;
      text += '/';
      for (const char c : level.key()) {
        if (c == '~') {
          text += "~0";
        } else if (c == '/') {
          text += "~1";
        } else {
          text += c;
        }
      }
    }
    return text;
  }

  std::vector<std::uint64_t> offsets_;
  std::size_t next_ = 0;
  std::vector<Level> levels_;
  std::vector<Place> places_;
};

void finish(vrtkJsonReport& report) {
  for (vrtkJsonReport::Kept& kept : report.kept) {
    kept.message.code = kept.code.c_str();
    kept.message.pointer = kept.pointer.c_str();
    kept.message.message = kept.words.c_str();
  }
}

}  // namespace

const char* problemCodeName(ProblemCode code) {
  switch (code) {
    case ProblemCode::Syntax:
      return "JSON_SYNTAX";
    case ProblemCode::UnknownKey:
      return "JSON_UNKNOWN_KEY";
    case ProblemCode::DuplicateKey:
      return "JSON_DUPLICATE_KEY";
    case ProblemCode::MissingKey:
      return "JSON_MISSING_KEY";
    case ProblemCode::WrongKind:
      return "JSON_WRONG_KIND";
    case ProblemCode::UnknownLabel:
      return "JSON_UNKNOWN_LABEL";
    case ProblemCode::OutOfRange:
      return "JSON_OUT_OF_RANGE";
    case ProblemCode::Limit:
      return "JSON_LIMIT";
    case ProblemCode::Version:
      return "JSON_VERSION";
    case ProblemCode::Type:
      return "JSON_TYPE";
    case ProblemCode::Shared:
      return "JSON_SHARED";
    case ProblemCode::Asset:
      return "JSON_ASSET";
    case ProblemCode::TooLarge:
      return "JSON_TOO_LARGE";
    case ProblemCode::Patch:
      return "JSON_PATCH";
  }
  return "JSON_SYNTAX";
}

std::string quoted(std::string_view text) {
  std::string out;
  if (text.size() <= kLongestName) {
    appendJsonString(out, text);
    return out;
  }
  // Cut between characters.
  std::size_t length = kLongestName;
  while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80) --length;
  appendJsonString(out, text.substr(0, length));
  out.insert(out.size() - 1, "...");
  return out;
}

std::string suggestion(std::string_view text, const std::vector<std::string_view>& names) {
  if (names.empty()) return {};
  constexpr std::size_t kFew = 8;
  const std::string_view nearest = nearestName(names, text);
  if (!nearest.empty()) return fmt::format("; did you mean {}?", quoted(nearest));
  std::string out = "; expected ";
  if (names.size() > 1) out += "one of ";
  for (std::size_t i = 0; i < std::min(kFew, names.size()); ++i) {
    if (i != 0) out += ", ";
    out += quoted(names[i]);
  }
  if (names.size() > kFew) out += fmt::format(" and {} others", names.size() - kFew);
  return out;
}

std::unique_ptr<vrtkJsonReport> reportOf(const Problems& problems, std::string_view document) {
  std::vector<Problem> sorted = problems.all();
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Problem& a, const Problem& b) { return a.offset < b.offset; });
  std::vector<std::uint64_t> offsets;
  offsets.reserve(sorted.size());
  for (const Problem& problem : sorted) offsets.push_back(problem.offset);
  PlaceFinder finder(std::move(offsets));
  readJson(document, finder);  // the syntax is right at least up to the last problem
  finder.finish();
  auto report = std::make_unique<vrtkJsonReport>();
  report->truncated = problems.truncated();
  std::uint64_t line = 1;
  std::uint64_t column = 1;
  std::uint64_t at = 0;
  for (Problem& problem : sorted) {
    for (; at < problem.offset && at < document.size(); ++at) {
      if (document[at] == '\n') {
        ++line;
        column = 1;
      } else if ((static_cast<unsigned char>(document[at]) & 0xC0U) != 0x80) {
        ++column;
      }
    }
    vrtkJsonReport::Kept kept{problemCodeName(problem.code),
                              finder.pointerOf(problem.offset),
                              std::move(problem.message),
                              {}};
    kept.message.line = line;
    kept.message.column = column;
    kept.message.offset = problem.offset;
    report->kept.push_back(std::move(kept));
  }
  finish(*report);
  return report;
}

void addMessage(vrtkJsonReport& report, std::string code, std::string pointer, std::string words) {
  vrtkJsonReport::Kept kept{std::move(code), std::move(pointer), std::move(words), {}};
  kept.message.offset = VRTK_JSON_NO_OFFSET;
  report.kept.push_back(std::move(kept));
  finish(report);
}

std::string errorWords(const vrtkJsonReport& report) {
  const vrtkJsonReport::Kept& first = report.kept.front();
  std::string text;
  if (first.message.line != 0) {
    text += fmt::format("line {}, column {}: ", first.message.line, first.message.column);
  }
  if (!first.pointer.empty()) text += first.pointer + ": ";
  text += first.words;
  if (report.kept.size() > 1 || report.truncated) {
    text += fmt::format(" ({} more{})", report.kept.size() - 1,
                        report.truncated ? ", and perhaps others" : "");
  }
  return text;
}

}  // namespace vrtk

void vrtkJsonReportDestroy(vrtkJsonReport* report) { delete report; }
std::uint64_t vrtkJsonReportCount(const vrtkJsonReport* report) { return report->kept.size(); }
bool vrtkJsonReportTruncated(const vrtkJsonReport* report) { return report->truncated; }

const vrtkJsonMessage* vrtkJsonReportMessage(const vrtkJsonReport* report, std::uint64_t index) {
  return index < report->kept.size() ? &report->kept[index].message : nullptr;
}

std::uint32_t vrtkJsonReportJson(const vrtkJsonReport* report, char** json, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(report, "vrtkJsonReportJson", "report");
    vrtk::requireArgument(json, "vrtkJsonReportJson", "json");
    std::string out;
    fmt::format_to(std::back_inserter(out),
                   "{{\n  \"valid\": {},\n  \"errors\": {},\n  \"truncated\": {},\n  "
                   "\"messages\": [",
                   report->kept.empty(), report->kept.size(), report->truncated);
    bool isFirst = true;
    for (const auto& kept : report->kept) {
      out += isFirst ? "\n    { \"code\": " : ",\n    { \"code\": ";
      isFirst = false;
      vrtk::appendJsonString(out, kept.code);
      if (kept.message.line != 0) {
        fmt::format_to(std::back_inserter(out), ", \"line\": {}, \"column\": {}, \"offset\": {}",
                       kept.message.line, kept.message.column, kept.message.offset);
      } else {
        out += ", \"line\": null, \"column\": null, \"offset\": null";
      }
      out += ", \"pointer\": ";
      vrtk::appendJsonString(out, kept.pointer);
      out += ", \"message\": ";
      vrtk::appendJsonString(out, kept.words);
      out += " }";
    }
    out += isFirst ? "]\n}\n" : "\n  ]\n}\n";
    *json = vrtk::copyString(out);
  });
}
