#include "check/report.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <new>

#include "foundation/failure.hpp"
#include "json/text.hpp"
#include "vornath_data/catalogue.h"

namespace vrtk {
namespace {

struct CodeEntry {
  const char* name;
  std::uint32_t severity;
};

constexpr CodeEntry kCodes[] = {
#define VRTK_CHECK_CODE(name, severity) {#name, severity},
#include "check/codes.def"
#undef VRTK_CHECK_CODE
};

std::string uuidText(const std::uint8_t (&id)[16]) {
  std::string text;
  for (int i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    fmt::format_to(std::back_inserter(text), "{:02x}", id[i]);
  }
  return text;
}

}  // namespace

const char* codeName(Code code) { return kCodes[static_cast<std::size_t>(code)].name; }
std::uint32_t severityOf(Code code) { return kCodes[static_cast<std::size_t>(code)].severity; }

vrtkLimits limitsOf(const vrtkLimits* given) {
  vrtkLimits limits = VRTK_LIMITS_INIT;
  readOptions(given, limits);
  limits.structSize = sizeof(limits);
  return limits;
}

}  // namespace vrtk

using vrtk::Code;

vrtkReport::vrtkReport(const vrtkLimits& limits)
    : classes(vrdmObjectTypeCount()), maxMessages_(limits.maxMessages) {}

// Returns whether the message is needed.
bool vrtkReport::count(Code code) {
  if (vrtk::severityOf(code) == VRTK_ERROR) {
    ++errors_;
    return keptErrors_ < maxMessages_ || !firstError_;
  }
  ++warnings_;
  return kept_.size() < maxMessages_;
}

void vrtkReport::keep(Kept found) {
  if (vrtk::severityOf(found.code) == VRTK_ERROR) {
    if (!firstError_) firstError_ = found;
    if (keptErrors_ >= maxMessages_) return;
    ++keptErrors_;
  }
  if (kept_.size() >= maxMessages_) {
    // An error takes the place of the last warning.
    for (auto i = kept_.rbegin(); i != kept_.rend(); ++i) {
      if (vrtk::severityOf(i->code) == VRTK_ERROR) continue;
      kept_.erase(std::next(i).base());
      break;
    }
  }
  kept_.push_back(std::move(found));
}

void vrtkReport::finish() {
  std::stable_sort(kept_.begin(), kept_.end(),
                   [](const Kept& a, const Kept& b) { return a.offset < b.offset; });
  messages_.reserve(kept_.size());
  for (const Kept& kept : kept_) {
    messages_.push_back({vrtk::codeName(kept.code), vrtk::severityOf(kept.code), kept.offset,
                         kept.address.c_str(), kept.message.c_str()});
  }
}

std::string vrtkReport::json() const {
  std::string out = "{\n  \"file\": ";
  const auto add = [&out](fmt::string_view format, const auto&... arguments) {
    fmt::vformat_to(std::back_inserter(out), format, fmt::make_format_args(arguments...));
  };
  if (hasFile) {
    vrtk::appendJsonString(out, file);
  } else {
    out += "null";
  }
  add(",\n  \"size\": {},\n  \"valid\": {},\n  \"issues\": {{\n    \"errors\": {},\n"
      "    \"warnings\": {},\n    \"truncated\": {},\n    \"messages\": [",
      info.size, errors_ == 0, errors_, warnings_, truncated());
  const char* separator = "\n      ";
  for (const vrtkMessage& message : messages_) {
    out += separator;
    separator = ",\n      ";
    add("{{\"code\": \"{}\", \"severity\": \"{}\", \"offset\": ", message.code,
        message.severity == VRTK_ERROR ? "error" : "warning");
    if (message.offset == VRTK_NO_OFFSET) {
      out += "null";
    } else {
      add("{}", message.offset);
    }
    out += ", \"address\": ";
    vrtk::appendJsonString(out, message.address);
    out += ", \"message\": ";
    vrtk::appendJsonString(out, message.message);
    out += '}';
  }
  out += messages_.empty() ? "]\n  },\n" : "\n    ]\n  },\n";
  add("  \"info\": {{\n    \"id\": \"{}\",\n    \"version\": {},\n    \"objects\": {{",
      vrtk::uuidText(info.id), info.version);
  separator = "\n      ";
  for (std::uint32_t i = 0; i < classes.size(); ++i) {
    out += separator;
    separator = ",\n      ";
    vrtk::appendJsonString(out, vrdmObjectName(i));
    add(": {{\"slots\": {}, \"live\": {}}}", classes[i].slots, classes[i].live);
  }
  add("\n    }},\n    \"assetBytes\": {},\n    \"valueBytes\": {},\n    \"openMemory\": {}\n"
      "  }}\n}}\n",
      info.assetBytes, info.valueBytes, info.openMemory);
  return out;
}

std::uint32_t vrtkCheckCodeCount() { return static_cast<std::uint32_t>(std::size(vrtk::kCodes)); }

const char* vrtkCheckCode(std::uint32_t index) {
  return index < std::size(vrtk::kCodes) ? vrtk::kCodes[index].name : nullptr;
}

std::uint32_t vrtkCheckCodeSeverity(std::uint32_t index) {
  if (index >= std::size(vrtk::kCodes)) return VRTK_WARNING;
  return vrtk::kCodes[index].severity;
}
