// The promise of the toolkit's check: bytes without errors are read within the memory that the
// report foretells, and everything can then be done with the scene; and what the library writes has
// no errors. The check says the same of a file that it reads through its window as of bytes in
// memory.
#include <algorithm>
#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>

#include "check/file_check.hpp"
#include "support/comparison_checks.hpp"
#include "support/json_round_trip.hpp"
#include "support/scenes.hpp"
#include "vornath_toolkit/vrtk.h"

namespace vornath_fuzz {
namespace {

// Takes all bytes and keeps none.
class NoBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

// Bytes that are read as those of a file are.
class BytesAsFile final : public vrtk::ByteSource {
 public:
  explicit BytesAsFile(std::string_view bytes) : bytes_(bytes) {}
  std::uint64_t size() const override { return bytes_.size(); }
  void read(std::uint64_t offset, void* to, std::size_t size) override {
    FUZZ_CHECK(offset <= bytes_.size() && size <= bytes_.size() - offset);
    if (size != 0) std::memcpy(to, bytes_.data() + offset, size);
  }

 private:
  std::string_view bytes_;
};

struct ReportDeleter {
  void operator()(vrtkReport* report) const { vrtkReportDestroy(report); }
};
using Report = std::unique_ptr<vrtkReport, ReportDeleter>;

// Less than one input may hold, so that memory runs out for nothing that the check allows.
constexpr std::uint64_t kMemory = std::uint64_t{16} << 20;

vrtkLimits limits() {
  vrtkLimits chosen = VRTK_LIMITS_INIT;
  chosen.maxMemory = kMemory;
  return chosen;
}

std::string textOf(const vrtkReport* report) {
  std::string text;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    text += std::string(message->code) + " " + std::to_string(message->offset) + " " +
            message->address + ": " + message->message + "\n";
  }
  return text;
}

bool has(const vrtkReport* report, std::string_view code) {
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    if (vrtkReportMessage(report, i)->code == code) return true;
  }
  return false;
}

// Null if memory ran out.
Report check(std::string_view bytes) {
  const vrtkLimits chosen = limits();
  vrtkReport* report = nullptr;
  const std::uint32_t status =
      vrtkCheckBytes(bytes.data(), bytes.size(), &chosen, &report, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  return Report(report);
}

void checkConsistency(std::string_view bytes, const vrtkReport* report) {
  const vrtkInfo* const info = vrtkReportInfo(report);
  FUZZ_CHECK(info->size == bytes.size());
  FUZZ_CHECK(info->assetBytes <= bytes.size() && info->valueBytes <= bytes.size());
  std::uint64_t last = 0;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    FUZZ_CHECK(message->offset >= last);
    FUZZ_CHECK(message->offset == VRTK_NO_OFFSET || message->offset <= bytes.size());
    last = message->offset;
  }
  char* json = nullptr;
  if (vrtkReportJson(report, &json, nullptr) == VRTK_OK) vrtkStringDestroy(json);

  BytesAsFile source(bytes);
  vrtkReport asFile(limits());
  vrtk::checkSource(source, limits(), asFile);
  FUZZ_CHECK_NOTE(textOf(&asFile) == textOf(report), textOf(&asFile) + "\n" + textOf(report));
}

std::optional<std::string> saved(const Scene& scene) {
  void* bytes = nullptr;
  std::uint64_t size = 0;
  const std::uint32_t status = vrtkSceneSaveBytes(&scene, &bytes, &size, nullptr);
  FUZZ_CHECK(status == VRTK_OK || status == VRTK_OUT_OF_MEMORY);
  if (status != VRTK_OK) return std::nullopt;
  std::string result(static_cast<const char*>(bytes), size);
  vrtkBytesDestroy(bytes);
  return result;
}

void checkSaved(const Scene& scene) {
  const std::optional<std::string> bytes = saved(scene);
  if (!bytes) return;
  const Report report = check(*bytes);
  if (!report || has(report.get(), "MEMORY_EXCEEDED")) return;
  FUZZ_CHECK_NOTE(vrtkReportValid(report.get()), textOf(report.get()));
}

void useScene(Scene& scene, const vrtkReport* report) {
  vrtkReport* validated = nullptr;
  if (vrtkSceneValidate(&scene, nullptr, &validated, nullptr) == VRTK_OK) {
    const Report owner(validated);
    FUZZ_CHECK_NOTE(vrtkReportValid(validated), textOf(validated));
  }
  checkSaved(scene);
  {
    Scene other(vrnt::UniqueId::null());
    other.import(scene);
    checkSaved(other);
  }
  const bool light = weightOf(scene) <= kLightScene;
  if (light) {
    NoBuffer buffer;
    std::ostream stream(&buffer);
    try {
      stream << scene;
      Scene::equivalent(scene, scene);
    } catch (const vrnt::Exception&) {
      // A code without a name has no text. There may be more warnings than messages.
      FUZZ_CHECK(has(report, "ENUM_CODE_UNNAMED") || vrtkReportTruncated(report));
    }
  }
  if (light) checkJsonRoundTrip(scene);
  if (light) checkComparisons(scene);
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    const std::uint32_t slots = light ? vrdmContainerSize(&scene, c) : 0;
    for (std::uint32_t i = 0; i < slots; ++i) {
      const auto index = static_cast<std::int32_t>(i);
      if (!vrdmValid(&scene, c, index)) continue;
      vrdmCountReferences(&scene, c, index);
      vrdmUpdateTextureReferences(&scene, c, index);
      for (std::uint32_t g = 0; g < vrdmFieldCount(c); ++g) {
        const UniqueValue group(vrdmGetDataValue(&scene, c, index, g));
        FUZZ_CHECK(vrdmSetDataValue(&scene, c, index, g, group.get()));
      }
    }
  }
}

std::string outdated(std::string_view bytes) {
  constexpr std::uint32_t kNoVersion = 0x10000;
  constexpr std::size_t kHeader = 12;
  const std::string current = write(Scene(vrnt::UniqueId::null()));
  if (bytes.size() < kHeader || bytes.substr(0, 8) != current.substr(0, 8)) return "";
  std::uint32_t version = 0;
  std::memcpy(&version, bytes.data() + 8, sizeof(version));
  if (bytes.substr(0, kHeader) == current.substr(0, kHeader) || version >= kNoVersion) return "";
  return "The input is a scene file of another version than the library reads: "
         "scripts/raise_corpus_version.py raises it.";
}

[[maybe_unused]] const OutdatedInput registered = outdatedInput = outdated;

}  // namespace

void runInput(std::string_view bytes) {
  const Report report = check(bytes);
  if (!report) return;
  checkConsistency(bytes, report.get());

  const vrtkLimits chosen = limits();
  vrdmScene_t* opened = nullptr;
  vrtkError* error = nullptr;
  const std::uint32_t status =
      vrtkSceneOpenBytes(bytes.data(), bytes.size(), &chosen, &opened, nullptr, &error);
  const std::string message = error != nullptr ? vrtkErrorMessage(error) : "";
  vrtkErrorDestroy(error);
  if (!vrtkReportValid(report.get())) {
    FUZZ_CHECK_NOTE(status != VRTK_OK && status != VRTK_LIBRARY_ERROR &&
                        status != VRTK_INTERNAL_ERROR && opened == nullptr,
                    message);
    return;
  }
  FUZZ_CHECK_NOTE(status == VRTK_OK && opened != nullptr, message);
  const vrnt::UniqueScene owner(opened);
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    FUZZ_CHECK(vrdmContainerSize(opened, c) == vrtkReportClass(report.get(), c).slots);
  }
  useScene(*opened, report.get());
}

}  // namespace vornath_fuzz
