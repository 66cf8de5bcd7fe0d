// Construction, writing and reading of large scenes. The yardsticks of the files write and read the
// same bytes by plain system calls: to a new file in pieces of 1 MiB, and from a file in the page
// cache into newly allocated memory.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

constexpr std::uint32_t kShape = VRDM_CLASS_SHAPE;
constexpr int kShapes = 100'000;

using vrnt::UniqueScene;
using vrnt::UniqueValue;

UniqueValue defaultOf(std::uint32_t objectClass, std::uint32_t group) {
  vrntValuesError_t* error = nullptr;
  vrntType_t* type = vrdmFieldType(objectClass, group);
  UniqueValue value(vrntValueCreateDefault(type, &error));
  vrntTypeDestroy(type);
  return value;
}

UniqueScene build(int shapes) {
  static const UniqueValue transformation = defaultOf(kShape, 0);
  static const UniqueValue general = defaultOf(kShape, 1);
  UniqueScene scene(vrdmCreateScene());
  for (int i = 0; i < shapes; ++i) {
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(scene.get(), kShape));
    vrdmSetDataValue(scene.get(), kShape, shape, 0, transformation.get());
    vrdmSetDataValue(scene.get(), kShape, shape, 1, general.get());
    vrdmSetReference(scene.get(), kShape, shape, 0, 1);
    vrdmSetReference(scene.get(), kShape, shape, 1, static_cast<std::uint32_t>(i));
    vrdmSetReference(scene.get(), kShape, shape, 3, 2);
  }
  return scene;
}

UniqueScene largeAsset() {
  constexpr std::uint64_t size = std::uint64_t{256} << 20;
  const vrnt::data::MaterialGraphDesc desc{size, 0, 0};
  UniqueScene scene(vrdmCreateScene());
  AssetStorage* storage = vrdmAssetStorageWrap(std::malloc(size), size, std::free);
  std::memset(storage->data, 1, size);
  vrdmAddAsset(scene.get(), VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  return scene;
}

std::string filePath(const char* name) {
  return (std::filesystem::temp_directory_path() / (std::string("vornath_bench_") + name)).string();
}

struct RemoveFile {
  explicit RemoveFile(std::string path) : path_(std::move(path)) {}
  RemoveFile(const RemoveFile&) = delete;
  RemoveFile& operator=(const RemoveFile&) = delete;
  ~RemoveFile() { unlink(path_.c_str()); }
  std::string path_;
};

void buildScene(benchmark::State& state) {
  for (auto _ : state) {
    UniqueScene scene = build(static_cast<int>(state.range(0)));
    state.PauseTiming();
    scene.reset();
    state.ResumeTiming();
  }
  state.counters["per object"] = benchmark::Counter(
      static_cast<double>(state.range(0)),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// Frees a slot and takes it again, among many others. The yardstick does the same in a small scene.
void reuse(benchmark::State& state, int shapes) {
  const UniqueScene scene = build(shapes);
  for (auto _ : state) {
    vrdmRemove(scene.get(), kShape, 0);
    benchmark::DoNotOptimize(vrdmCreateInstance(scene.get(), kShape));
  }
}

// Does what a host does to leave no stale references: counts the references to an object before it
// removes it. In between, the material of a shape changes.
void countAndRemove(benchmark::State& state, int shapes) {
  const UniqueScene scene = build(shapes);
  for (int i = 0; i < 3; ++i) vrdmCreateInstance(scene.get(), VRDM_CLASS_MATERIAL);
  std::uint32_t material = 1;
  for (auto _ : state) {
    vrdmSetReference(scene.get(), kShape, 1, 0, material ^= 3);
    benchmark::DoNotOptimize(vrdmCountReferences(scene.get(), VRDM_CLASS_MATERIAL, 0));
    benchmark::DoNotOptimize(vrdmCountReferences(scene.get(), kShape, 2));
    vrdmRemove(scene.get(), kShape, 2);
    benchmark::DoNotOptimize(vrdmCreateInstance(scene.get(), kShape));
  }
}

// Counts references in a scene for the first time, which reads the whole scene. Each shape has a
// mesh of its own.
void firstCount(benchmark::State& state, int shapes) {
  const vrnt::detail::MeshDesc desc{};
  AssetStorage* const storage = vrdmAssetStorageCopy("", 0);
  for (auto _ : state) {
    state.PauseTiming();
    UniqueScene scene = build(shapes);
    for (int i = 0; i < shapes; ++i) {
      vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, &desc, &storage);
    }
    state.ResumeTiming();
    benchmark::DoNotOptimize(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 0));
    state.PauseTiming();
    scene.reset();
    state.ResumeTiming();
  }
  vrdmAssetStorageRelease(storage);
}

void serialize(benchmark::State& state, UniqueScene (*make)()) {
  const UniqueScene scene = make();
  const RemoveFile file(filePath("written.vrnscene"));
  for (auto _ : state) {
    state.PauseTiming();
    unlink(file.path_.c_str());
    state.ResumeTiming();
    vrdmSerialize(scene.get(), file.path_.c_str());
  }
}

std::size_t sizeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

void writePieces(benchmark::State& state, UniqueScene (*make)()) {
  const RemoveFile file(filePath("pieces"));
  vrdmSerialize(make().get(), file.path_.c_str());
  const std::vector<char> bytes(sizeOf(file.path_), 1);
  constexpr std::size_t piece = std::size_t{1} << 20;
  for (auto _ : state) {
    state.PauseTiming();
    unlink(file.path_.c_str());
    state.ResumeTiming();
    const int descriptor = open(file.path_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (std::size_t done = 0; done < bytes.size(); done += piece) {
      const std::size_t count = std::min(piece, bytes.size() - done);
      if (write(descriptor, bytes.data() + done, count) < 0) state.SkipWithError("write failed");
    }
    close(descriptor);
  }
}

void deserialize(benchmark::State& state, UniqueScene (*make)()) {
  const RemoveFile file(filePath("read.vrnscene"));
  vrdmSerialize(make().get(), file.path_.c_str());
  for (auto _ : state) {
    UniqueScene scene(vrdmDeserialize(file.path_.c_str()));
    state.PauseTiming();
    scene.reset();
    state.ResumeTiming();
  }
}

void readWhole(benchmark::State& state, UniqueScene (*make)()) {
  const RemoveFile file(filePath("whole.vrnscene"));
  vrdmSerialize(make().get(), file.path_.c_str());
  const std::size_t size = sizeOf(file.path_);
  for (auto _ : state) {
    char* bytes = static_cast<char*>(std::malloc(size));
    const int descriptor = open(file.path_.c_str(), O_RDONLY);
    std::size_t done = 0;
    while (done < size) {
      const ssize_t count = read(descriptor, bytes + done, size - done);
      if (count <= 0) {
        state.SkipWithError("read failed");
        break;
      }
      done += static_cast<std::size_t>(count);
    }
    close(descriptor);
    benchmark::DoNotOptimize(bytes);
    state.PauseTiming();
    std::free(bytes);
    state.ResumeTiming();
  }
}

UniqueScene manyShapes() { return build(kShapes); }

using OfScene = void (*)(benchmark::State&, UniqueScene (*)());

void registerPair(const std::string& name, UniqueScene (*make)(), OfScene measured,
                  const std::string& label, OfScene yardstick) {
  benchmark::RegisterBenchmark(name.c_str(), measured, make)->UseRealTime();
  benchmark::RegisterBenchmark((name + "/" + label).c_str(), yardstick, make)->UseRealTime();
}

const int registered = [] {
  benchmark::RegisterBenchmark("build shapes", buildScene)
      ->RangeMultiplier(2)
      ->Range(kShapes / 4, kShapes * 2);
  const auto besideMany = [](const std::string& name, void (*measured)(benchmark::State&, int)) {
    benchmark::RegisterBenchmark((name + " beside 100,000 shapes").c_str(), measured, kShapes);
    benchmark::RegisterBenchmark((name + " beside 100,000 shapes/beside 100").c_str(), measured,
                                 100);
  };
  besideMany("vrdmRemove and vrdmCreateInstance", reuse);
  besideMany("vrdmCountReferences and vrdmRemove", countAndRemove);
  benchmark::RegisterBenchmark("first vrdmCountReferences beside 100,000 shapes", firstCount,
                               kShapes)
      ->UseRealTime();
  registerPair("vrdmSerialize of 100,000 shapes", manyShapes, serialize, "plain write",
               writePieces);
  registerPair("vrdmDeserialize of 100,000 shapes", manyShapes, deserialize,
               "read into fresh memory", readWhole);
  registerPair("vrdmSerialize of a 256 MiB asset", largeAsset, serialize, "plain write",
               writePieces);
  registerPair("vrdmDeserialize of a 256 MiB asset", largeAsset, deserialize,
               "read into fresh memory", readWhole);
  return 0;
}();

}  // namespace
