// The file of a scene: what reads is printed, compared, imported and written again, and what that
// reads as is the same scene. Sizes in a damaged file are believed, and answered by the limit on
// memory.
#include <algorithm>
#include <cstring>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "support/scenes.hpp"

namespace vornath_fuzz {
namespace {

// Takes all bytes and keeps none.
class NoBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
  std::streamsize xsputn(const char*, std::streamsize size) override { return size; }
};

constexpr std::string_view kMagic = "VRNSCENE";

// The number behind the magic, as far as the bytes go.
std::uint32_t versionIn(std::string_view bytes) {
  std::uint32_t version = 0;
  const std::string_view rest = bytes.substr(kMagic.size());
  std::memcpy(&version, rest.data(), std::min(rest.size(), sizeof version));
  return version;
}

// The version of the files that the library writes.
std::uint32_t currentVersion() {
  std::ostringstream stream;
  Scene::serialize(Scene(vrnt::UniqueId::null()), stream);
  return versionIn(stream.str());
}

std::string outdated(std::string_view bytes) {
  // Numbers that can't have been a version are there to be refused.
  constexpr std::uint32_t kNoVersion = 0x10000;
  if (bytes.substr(0, kMagic.size()) != kMagic || bytes.size() < kMagic.size() + 4) return "";
  const std::uint32_t version = versionIn(bytes);
  const std::uint32_t current = currentVersion();
  if (version == current || version >= kNoVersion) return "";
  return "The input is a scene file of version " + std::to_string(version) +
         ", and the library reads version " + std::to_string(current) +
         " only: scripts/raise_corpus_version.py raises it.";
}

[[maybe_unused]] const OutdatedInput registered = outdatedInput = outdated;

void checkFailure(std::string_view bytes, std::istream& stream, const vrnt::ErrorRecord& error) {
  if (bytes.size() < kMagic.size()) {
    FUZZ_CHECK(error.code() == vrnt::ErrorCode::IoError && error.message() == nullptr);
  } else if (bytes.substr(0, kMagic.size()) != kMagic) {
    FUZZ_CHECK(error.code() == vrnt::ErrorCode::InvalidArguments);
    FUZZ_CHECK(std::string("Bad header: this is not a Vornath scene binary.") == error.message());
    FUZZ_CHECK(stream.tellg() == std::streampos(0));
  } else {
    FUZZ_CHECK(error.code() == vrnt::ErrorCode::VersionMismatch);
    FUZZ_CHECK("Vornath data model binary version mismatch: source has version " +
                   std::to_string(versionIn(bytes)) + ", current version is " +
                   std::to_string(currentVersion()) ==
               error.message());
  }
}

// Empty if a stored value can't be read.
std::optional<Scene> read(std::string_view bytes) {
  std::istringstream stream{std::string(bytes)};
  try {
    auto result = Scene::deserialize(stream, vrnt::UniqueId::null());
    if (!result) {
      checkFailure(bytes, stream, result.error());
      return std::nullopt;
    }
    return std::move(*result);
  } catch (const vrnt::Exception&) {
    return std::nullopt;
  }
}

// Whether the programs' texts have no NUL.
bool idsAreOfTexts(const ModelScene& model) {
  for (std::uint32_t c = 0; c < kClasses; ++c) {
    if (vrdmObjectClass(c) != VRDM_KIND_PROGRAM) continue;
    for (const ModelObject& object : model.classes[c]) {
      if (object.live && object.id != vrnt::UniqueId::hash(object.text.c_str())) return false;
    }
  }
  return true;
}

// What shares the blocks of a scene, besides the scene itself.
void checkShares(const ModelScene& model, std::uint32_t handles) {
  for (const auto& objects : model.classes) {
    for (const ModelObject& object : objects) {
      if (object.live && object.block != nullptr) FUZZ_CHECK(object.block->references == handles);
    }
  }
}

void checkImports(Scene& scene, const ModelScene& model) {
  {
    Scene empty(vrnt::UniqueId::null());
    ModelScene imported = modelOf(empty);
    const auto maps = empty.import(scene);
    const ModelScene actual = modelOf(empty);
    importInto(imported, model, maps, actual);
    checkSame(imported, actual);
    checkSame(model, modelOf(scene));
    checkShares(model, 2);
  }
  checkShares(model, 1);
  ModelScene twice = model;
  const auto maps = scene.import(scene);
  const ModelScene actual = modelOf(scene);
  importInto(twice, model, maps, actual);
  checkSame(twice, actual);
}

// Where to look at everything would take too long: no crash, no leak.
void useLargeScene(Scene& scene) {
  NoBuffer buffer;
  std::ostream stream(&buffer);
  Scene::serialize(scene, stream);
  Scene empty(vrnt::UniqueId::null());
  empty.import(scene);
}

}  // namespace

void runInput(std::string_view bytes) {
  std::optional<Scene> scene = read(bytes);
  if (!scene) return;
  if (const std::uint64_t weight = weightOf(*scene); weight > kLightScene) {
    if (weight < kHeavyScene) useLargeScene(*scene);
    return;
  }
  const ModelScene model = modelOf(*scene);
  FUZZ_CHECK(isComplete(model));
  checkShares(model, 1);

  const std::optional<std::string> text = dump(*scene);
  FUZZ_CHECK(text.has_value() == isPrintable(model));
  const std::optional<bool> alike = naiveEquivalence(model, model);
  const auto checkEquivalence = [&](const Scene& other) {
    const std::optional<bool> answer = equivalent(*scene, other);
    // A value that can't be printed may come behind a difference that ends the comparison.
    if (alike) FUZZ_CHECK(answer == alike);
    if (!alike) FUZZ_CHECK(answer != true);
  };
  checkEquivalence(*scene);

  // The same bytes once more.
  const std::optional<Scene> same = read(bytes);
  FUZZ_CHECK(same.has_value());
  checkSameContent(model, modelOf(*same));
  checkEquivalence(*same);

  // What the library writes itself is read to its last byte, and stays as it is.
  const std::string written = write(*scene);
  const Scene back = readBack(written);
  checkSameContent(model, modelOf(back));
  checkEquivalence(back);
  FUZZ_CHECK(write(back).size() == written.size());
  const std::optional<std::string> backText = dump(back);
  FUZZ_CHECK(backText.has_value() == text.has_value());
  // A text ends at its first NUL in the new file, which makes the id another one.
  if (text && idsAreOfTexts(model)) {
    FUZZ_CHECK(withoutAddresses(*text) == withoutAddresses(*backText));
  }

  checkImports(*scene, model);
}

}  // namespace vornath_fuzz
