// The check of scene files by the toolkit. The yardsticks read the same file by vrdmDeserialize(),
// read its bytes once through a buffer, or let 5 ms pass.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "scenes.hpp"
#include "scratch_file.hpp"
#include "vornath_data/asset_records.h"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_toolkit/vrtk.h"

namespace {

constexpr std::uint32_t kShape = VRDM_CLASS_SHAPE;
constexpr int kShapes = 100'000;
constexpr std::uint64_t kGiB = std::uint64_t{1} << 30;

using vrnt::UniqueScene;

// Shapes that a renderer can take: all that they refer to is there.
UniqueScene soundShapes() {
  UniqueScene scene = bench::makeShapes(kShapes);
  vrntValuesError_t* error = nullptr;
  const vrnt::UniqueValue value(vrntValueParse("{ gloss = 0.5; }", &error));
  vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  vrdmSetInstanceValue(scene.get(), VRDM_CLASS_MATERIAL, 0, value.get());
  vrdmCreateInstance(scene.get(), VRDM_CLASS_TRANSFORMATION_GROUP);
  const vrdmMeshDesc mesh{};
  AssetStorage* storage = vrdmAssetStorageCopy("", 0);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, &mesh, &storage);
  vrdmAssetStorageRelease(storage);
  for (std::int32_t shape = 0; shape < kShapes; ++shape) {
    for (const std::uint32_t slot : {0U, 1U, 3U}) {
      vrdmSetReference(scene.get(), kShape, shape, slot, 0);
    }
  }
  return scene;
}

std::string readFile(const char* path) {
  std::ifstream stream(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(stream), {});
}

// Writes a file of one asset whose bytes are a hole, so that they take no space. `record` is that
// of an asset of `small` bytes, and `large` that of one of `size` bytes.
void writeHole(const char* path, std::uint32_t objectClass, const void* record, std::uint64_t small,
               const void* large, std::size_t recordSize, std::uint64_t size) {
  const UniqueScene scene(vrdmCreateScene());
  const std::string marker(static_cast<std::size_t>(small), '\xA7');
  AssetStorage* storage = vrdmAssetStorageCopy(marker.data(), marker.size());
  vrdmAddAsset(scene.get(), objectClass, record, &storage);
  vrdmAssetStorageRelease(storage);
  vrdmSerialize(scene.get(), path);
  std::string file = readFile(path);
  const std::size_t bytes = file.find(marker);
  std::memcpy(file.data() + bytes - recordSize, large, recordSize);
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(file.data(), static_cast<std::streamsize>(bytes));
  stream.seekp(static_cast<std::streamoff>(bytes + size));
  stream.write(file.data() + bytes + marker.size(),
               static_cast<std::streamsize>(file.size() - bytes - marker.size()));
}

// Its bytes are not looked at.
void writeGraph(const char* path) {
  const vrdmMaterialGraphDesc small{64, 0, 0};
  const vrdmMaterialGraphDesc large{kGiB, 0, 0};
  writeHole(path, VRDM_CLASS_MATERIAL_GRAPH, &small, 64, &large, sizeof(large), kGiB);
}

// Its bytes are indices, all of them 0, but for those of one vertex.
void writeMesh(const char* path) {
  constexpr auto kTriangles = static_cast<std::int32_t>(kGiB / 12);
  const vrdmMeshDesc small{1, 1, 0, 0};
  const vrdmMeshDesc large{kTriangles, 1, 0, 0};
  const auto sizeOf = [](std::uint64_t triangles) { return 4 * (3 * triangles + 11); };
  writeHole(path, VRDM_CLASS_MESH, &small, sizeOf(1), &large, sizeof(large), sizeOf(kTriangles));
}

void writeShapes(const char* path) { vrdmSerialize(soundShapes().get(), path); }
void writeDanglingShapes(const char* path) {
  vrdmSerialize(bench::makeShapes(kShapes).get(), path);
}

using WriteFile = void (*)(const char* path);

bool isValid(const char* path) {
  vrtkReport* report = nullptr;
  const bool valid =
      vrtkCheckFile(path, nullptr, &report, nullptr) == VRTK_OK && vrtkReportValid(report);
  vrtkReportDestroy(report);
  return valid;
}

// The most memory that a process has which does nothing but the work, in KiB.
template <typename Work>
double peakOf(Work&& work) {
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  struct rusage usage {};
  int status = 0;
  wait4(child, &status, 0, &usage);
  return static_cast<double>(usage.ru_maxrss);
}

void check(benchmark::State& state, WriteFile write) {
  const bench::ScratchFile file("checked.vrnscene");
  write(file.path());
  for (auto _ : state) {
    if (!isValid(file.path())) state.SkipWithError("the file is not valid");
  }
  const double before = peakOf([] {});
  const double checked = peakOf([&] { isValid(file.path()); });
  state.counters["peak_KiB"] = std::max(checked - before, 0.0);
}

void readScene(benchmark::State& state, WriteFile write) {
  const bench::ScratchFile file("deserialized.vrnscene");
  write(file.path());
  for (auto _ : state) {
    UniqueScene scene(vrdmDeserialize(file.path()));
    if (!scene) state.SkipWithError("not read");
    state.PauseTiming();
    bench::destroy(scene);
    state.ResumeTiming();
  }
}

void readBytes(benchmark::State& state, WriteFile write) {
  const bench::ScratchFile file("bytes.vrnscene");
  write(file.path());
  std::vector<char> piece(std::size_t{1} << 20);
  for (auto _ : state) {
    const int descriptor = open(file.path(), O_RDONLY);
    while (read(descriptor, piece.data(), piece.size()) > 0) benchmark::ClobberMemory();
    close(descriptor);
  }
}

void passFiveMilliseconds(benchmark::State& state, WriteFile /*write*/) {
  using Clock = std::chrono::steady_clock;
  for (auto _ : state) {
    const auto end = Clock::now() + std::chrono::milliseconds(5);
    while (Clock::now() < end) benchmark::ClobberMemory();
  }
}

void add(const std::string& name, WriteFile write, void (*measure)(benchmark::State&, WriteFile)) {
  benchmark::RegisterBenchmark(name.c_str(), measure, write)
      ->MeasureProcessCPUTime()
      ->Unit(benchmark::kMillisecond);
}

const int registered = [] {
  add("vrtkCheckFile of 100,000 shapes", writeShapes, check);
  add("vrtkCheckFile of 100,000 shapes/vrdmDeserialize", writeShapes, readScene);
  add("vrtkCheckFile of 300,000 warnings", writeDanglingShapes, check);
  add("vrtkCheckFile of 300,000 warnings/vrdmDeserialize", writeDanglingShapes, readScene);
  add("vrtkCheckFile of a 1 GiB mesh", writeMesh, check);
  add("vrtkCheckFile of a 1 GiB mesh/read once", writeMesh, readBytes);
  add("vrtkCheckFile of a 1 GiB graph", writeGraph, check);
  add("vrtkCheckFile of a 1 GiB graph/5 ms", writeGraph, passFiveMilliseconds);
  return 0;
}();

}  // namespace
