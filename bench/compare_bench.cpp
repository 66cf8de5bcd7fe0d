// Comparison of large scenes by the toolkit: their differences, and their digests. The yardsticks
// are the comparison of the library, and a SHA-256 of as many bytes as the file of the scene has.
#include <benchmark/benchmark.h>
#include <cryptopp/sha.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "scenes.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk.h"

namespace {

constexpr int kShapes = 100'000;

using Make = vrnt::UniqueScene (*)(int);

// A scene that is equivalent to another but shares no memory with it.
vrnt::UniqueScene copyOf(const vrdmScene_t* scene) {
  void* bytes = nullptr;
  std::uint64_t size = 0;
  vrdmScene_t* copy = nullptr;
  if (vrtkSceneSaveBytes(scene, &bytes, &size, nullptr) != VRTK_OK ||
      vrtkSceneOpenBytes(bytes, size, nullptr, &copy, nullptr, nullptr) != VRTK_OK) {
    std::abort();
  }
  vrtkBytesDestroy(bytes);
  return vrnt::UniqueScene(copy);
}

void diff(benchmark::State& state, Make make) {
  const vrnt::UniqueScene a = make(kShapes);
  const vrnt::UniqueScene b = copyOf(a.get());
  for (auto _ : state) {
    vrtkDiff* found = nullptr;
    if (vrtkSceneDiff(a.get(), b.get(), nullptr, &found, nullptr) != VRTK_OK ||
        vrtkDiffFound(found) != 0) {
      state.SkipWithError("the scenes differ");
    }
    vrtkDiffDestroy(found);
  }
}

void equivalent(benchmark::State& state, Make make) {
  const vrnt::UniqueScene a = make(kShapes);
  const vrnt::UniqueScene b = copyOf(a.get());
  for (auto _ : state) {
    if (!vrnt::data::Scene::equivalent(*a, *b)) state.SkipWithError("the scenes differ");
  }
}

void patch(benchmark::State& state, Make make) {
  const vrnt::UniqueScene a = make(kShapes);
  const vrnt::UniqueScene b = copyOf(a.get());
  for (auto _ : state) {
    char* json = nullptr;
    if (vrtkSceneDiffPatch(a.get(), b.get(), nullptr, &json, nullptr) != VRTK_OK ||
        std::string(json) != "[]\n") {
      state.SkipWithError("the scenes differ");
    }
    vrtkStringDestroy(json);
  }
}

void digest(benchmark::State& state, Make make) {
  const vrnt::UniqueScene scene = make(kShapes);
  for (auto _ : state) {
    char hex[VRTK_DIGEST_LENGTH] = "";
    if (vrtkSceneDigest(scene.get(), nullptr, hex, nullptr) != VRTK_OK) {
      state.SkipWithError("no digest");
    }
    benchmark::DoNotOptimize(hex[0]);
  }
}

void hashFile(benchmark::State& state, Make make) {
  const vrnt::UniqueScene scene = make(kShapes);
  void* bytes = nullptr;
  std::uint64_t size = 0;
  if (vrtkSceneSaveBytes(scene.get(), &bytes, &size, nullptr) != VRTK_OK) std::abort();
  for (auto _ : state) {
    CryptoPP::byte out[CryptoPP::SHA256::DIGESTSIZE];
    CryptoPP::SHA256().CalculateDigest(out, static_cast<const CryptoPP::byte*>(bytes),
                                       static_cast<std::size_t>(size));
    benchmark::DoNotOptimize(out[0]);
  }
  vrtkBytesDestroy(bytes);
}

const int registered = [] {
  const auto add = [](const char* name, void (*run)(benchmark::State&, Make), Make make) {
    benchmark::RegisterBenchmark(name, run, make);
  };
  add("vrtkSceneDiff of 100,000 shapes", diff, bench::makeShapes);
  add("vrtkSceneDiff of 100,000 shapes/equivalent", equivalent, bench::makeShapes);
  add("vrtkSceneDiff of 100,000 meshes", diff, bench::makeMeshes);
  add("vrtkSceneDiff of 100,000 meshes/equivalent", equivalent, bench::makeMeshes);
  add("vrtkSceneDiffPatch of 100,000 shapes", patch, bench::makeShapes);
  add("vrtkSceneDiffPatch of 100,000 shapes/equivalent", equivalent, bench::makeShapes);
  add("vrtkSceneDigest of 100,000 shapes", digest, bench::makeShapes);
  add("vrtkSceneDigest of 100,000 shapes/SHA-256 of the file", hashFile, bench::makeShapes);
  add("vrtkSceneDigest of 100,000 meshes", digest, bench::makeMeshes);
  add("vrtkSceneDigest of 100,000 meshes/SHA-256 of the file", hashFile, bench::makeMeshes);
  return 0;
}();

}  // namespace
