#include "diff/diff.hpp"

#include <cstring>
#include <memory>
#include <utility>

#include "diff/scene_diff.hpp"
#include "foundation/failure.hpp"
#include "json/text.hpp"

namespace vrtk {

vrtkDiffOptions diffOptionsOf(const vrtkDiffOptions* given, const char* function) {
  vrtkDiffOptions options = VRTK_DIFF_OPTIONS_INIT;
  readOptions(given, options);
  for (const double tolerance : {options.relative, options.absolute}) {
    if (tolerance >= 0 && std::isfinite(tolerance)) continue;
    throw Failure(VRTK_INVALID_ARGUMENT,
                  std::string(function) + ": a tolerance must be a finite number, 0 or greater");
  }
  return options;
}

bool Tolerance::equalFloats(std::uint32_t a, std::uint32_t b) const {
  if (a == b) return true;
  float left = 0;
  float right = 0;
  std::memcpy(&left, &a, sizeof(left));
  std::memcpy(&right, &b, sizeof(right));
  return equal(double{left}, double{right});
}

}  // namespace vrtk

void vrtkDiff::add(std::string address, std::uint32_t kind, std::optional<std::string> oldText,
                   std::optional<std::string> newText) {
  texts_.push_back({std::move(address), std::move(oldText), std::move(newText)});
  const Texts& texts = texts_.back();
  entries_.push_back({texts.address.c_str(), kind, texts.oldText ? texts.oldText->c_str() : nullptr,
                      texts.newText ? texts.newText->c_str() : nullptr});
}

std::string vrtkDiff::json() const {
  std::string json = "{\n  \"equal\": ";
  json += found_ == 0 ? "true" : "false";
  json += ",\n  \"differences\": " + std::to_string(found_);
  json += ",\n  \"truncated\": ";
  json += found_ > entries_.size() ? "true" : "false";
  json += ",\n  \"entries\": [";
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const vrtkDiffEntry& entry = entries_[i];
    json += i == 0 ? "\n    { \"address\": " : ",\n    { \"address\": ";
    vrtk::appendJsonString(json, entry.address);
    json += ", \"kind\": \"";
    json += vrtkDiffKindName(entry.kind);
    json += '"';
    if (entry.oldText != nullptr) json += std::string(", \"old\": ") + entry.oldText;
    if (entry.newText != nullptr) json += std::string(", \"new\": ") + entry.newText;
    json += " }";
  }
  json += entries_.empty() ? "]\n}\n" : "\n  ]\n}\n";
  return json;
}

std::uint32_t vrtkSceneDiff(const vrdmScene_t* a, const vrdmScene_t* b,
                            const vrtkDiffOptions* options, vrtkDiff** diff, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(a, "vrtkSceneDiff", "a");
    vrtk::requireArgument(b, "vrtkSceneDiff", "b");
    vrtk::requireArgument(diff, "vrtkSceneDiff", "diff");
    const vrtkDiffOptions chosen = vrtk::diffOptionsOf(options, "vrtkSceneDiff");
    auto made = std::make_unique<vrtkDiff>(chosen.maxEntries);
    vrtk::compareScenes(*a, *b, chosen, *made);
    *diff = made.release();
  });
}

void vrtkDiffDestroy(vrtkDiff* diff) { delete diff; }
std::uint64_t vrtkDiffFound(const vrtkDiff* diff) { return diff->count(); }
std::uint64_t vrtkDiffCount(const vrtkDiff* diff) { return diff->entries().size(); }

const vrtkDiffEntry* vrtkDiffEntryAt(const vrtkDiff* diff, std::uint64_t index) {
  const auto& entries = diff->entries();
  return index < entries.size() ? &entries[static_cast<std::size_t>(index)] : nullptr;
}

const char* vrtkDiffKindName(std::uint32_t kind) {
  switch (kind) {
    case VRTK_DIFF_CHANGED:
      return "changed";
    case VRTK_DIFF_REMOVED:
      return "removed";
    case VRTK_DIFF_ADDED:
      return "added";
    default:
      return nullptr;
  }
}

std::uint32_t vrtkDiffJson(const vrtkDiff* diff, char** json, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(diff, "vrtkDiffJson", "diff");
    vrtk::requireArgument(json, "vrtkDiffJson", "json");
    *json = vrtk::copyString(diff->json());
  });
}
