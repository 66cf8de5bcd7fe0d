// Writing and reading of large scenes, and calls on one object beside many others. The yardsticks
// of the files write and read the same bytes by plain system calls: to a new file in pieces of 1
// MiB, and from a file in the page cache into newly allocated memory, in pages of 4 KiB and in huge
// pages.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "scenes.hpp"
#include "scratch_file.hpp"
#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/catalogue/mesh.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

constexpr std::uint32_t kShape = VRDM_CLASS_SHAPE;
constexpr int kShapes = 100'000;

using vrnt::UniqueScene;

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

// Frees the first slot and takes it again, beside many others.
void reuse(benchmark::State& state) {
  const UniqueScene scene = bench::makeShapes(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    vrdmRemove(scene.get(), kShape, 0);
    benchmark::DoNotOptimize(vrdmCreateInstance(scene.get(), kShape));
  }
}

// Does what a host does to leave no stale references: counts the references to an object before it
// removes it. In between, the material of a shape changes.
void countAndRemove(benchmark::State& state) {
  const UniqueScene scene = bench::makeShapes(static_cast<int>(state.range(0)));
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
    UniqueScene scene = bench::makeShapes(shapes);
    for (int i = 0; i < shapes; ++i) {
      vrdmAddAsset(scene.get(), VRDM_CLASS_MESH, &desc, &storage);
    }
    state.ResumeTiming();
    benchmark::DoNotOptimize(vrdmCountReferences(scene.get(), VRDM_CLASS_MESH, 0));
    state.PauseTiming();
    bench::destroy(scene);
    state.ResumeTiming();
  }
  vrdmAssetStorageRelease(storage);
}

void serialize(benchmark::State& state, UniqueScene (*make)()) {
  const UniqueScene scene = make();
  const bench::ScratchFile file("written.vrnscene");
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    vrdmSerialize(scene.get(), file.path());
  }
}

std::size_t sizeOf(const char* path) {
  struct stat status {};
  return stat(path, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

// Saves over the file that the iteration before has written.
void serializeAgain(benchmark::State& state, UniqueScene (*make)()) {
  const UniqueScene scene = make();
  const bench::ScratchFile file("again.vrnscene");
  vrdmSerialize(scene.get(), file.path());
  for (auto _ : state) vrdmSerialize(scene.get(), file.path());
}

void writePieces(benchmark::State& state, UniqueScene (*make)()) {
  const bench::ScratchFile file("pieces");
  vrdmSerialize(make().get(), file.path());
  const std::vector<char> bytes(sizeOf(file.path()), 1);
  constexpr std::size_t piece = std::size_t{1} << 20;
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    const int descriptor = open(file.path(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (std::size_t done = 0; done < bytes.size(); done += piece) {
      const std::size_t count = std::min(piece, bytes.size() - done);
      if (write(descriptor, bytes.data() + done, count) < 0) state.SkipWithError("write failed");
    }
    close(descriptor);
  }
}

void deserialize(benchmark::State& state, UniqueScene (*make)()) {
  const bench::ScratchFile file("read.vrnscene");
  vrdmSerialize(make().get(), file.path());
  for (auto _ : state) {
    UniqueScene scene(vrdmDeserialize(file.path()));
    if (!scene) state.SkipWithError("not read");
    state.PauseTiming();
    bench::destroy(scene);
    state.ResumeTiming();
  }
}

// Memory as the kernel gives it: not yet touched, in pages of 4 KiB or, where it has them at hand,
// in huge pages.
class FreshMemory {
 public:
  FreshMemory(std::size_t size, bool huge)
      : size_(size + kHugePage),
        memory_(mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    madvise(memory_, size_, huge ? MADV_HUGEPAGE : MADV_NOHUGEPAGE);
  }
  FreshMemory(const FreshMemory&) = delete;
  FreshMemory& operator=(const FreshMemory&) = delete;
  ~FreshMemory() { munmap(memory_, size_); }

  // At the start of a huge page.
  char* data() const {
    const auto address = reinterpret_cast<std::uintptr_t>(memory_);
    return reinterpret_cast<char*>((address + kHugePage - 1) / kHugePage * kHugePage);
  }

 private:
  static constexpr std::size_t kHugePage = std::size_t{2} << 20;
  std::size_t size_;
  void* memory_;
};

void readWhole(benchmark::State& state, UniqueScene (*make)(), bool huge) {
  const bench::ScratchFile file("whole.vrnscene");
  vrdmSerialize(make().get(), file.path());
  const std::size_t size = sizeOf(file.path());
  for (auto _ : state) {
    std::optional<FreshMemory> memory(std::in_place, size, huge);
    const int descriptor = open(file.path(), O_RDONLY);
    std::size_t done = 0;
    while (done < size) {
      const ssize_t count = read(descriptor, memory->data() + done, size - done);
      if (count <= 0) {
        state.SkipWithError("read failed");
        break;
      }
      done += static_cast<std::size_t>(count);
    }
    close(descriptor);
    benchmark::DoNotOptimize(memory->data());
    state.PauseTiming();
    memory.reset();
    state.ResumeTiming();
  }
}

void readFresh(benchmark::State& state, UniqueScene (*make)()) { readWhole(state, make, false); }
void readHuge(benchmark::State& state, UniqueScene (*make)()) { readWhole(state, make, true); }

UniqueScene manyShapes() { return bench::makeShapes(kShapes); }

using OfScene = void (*)(benchmark::State&, UniqueScene (*)());

// The time is that of all threads: other programs disturb it less than the time that passes.
void add(const std::string& name, UniqueScene (*make)(), OfScene measure) {
  benchmark::RegisterBenchmark(name.c_str(), measure, make)->MeasureProcessCPUTime();
}

const int registered = [] {
  const auto besideMany = [](const char* name, void (*measure)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, measure)->Arg(1'000)->Arg(100'000);
  };
  besideMany("vrdmRemove and vrdmCreateInstance beside n shapes", reuse);
  besideMany("vrdmCountReferences and vrdmRemove beside n shapes", countAndRemove);
  benchmark::RegisterBenchmark("first vrdmCountReferences beside 100,000 shapes", firstCount,
                               kShapes)
      ->MeasureProcessCPUTime();
  const struct {
    std::string what;
    UniqueScene (*make)();
  } scenes[] = {{"100,000 shapes", manyShapes}, {"a 256 MiB asset", largeAsset}};
  for (const auto& [what, make] : scenes) {
    add("vrdmSerialize of " + what, make, serialize);
    add("vrdmSerialize of " + what + "/plain write", make, writePieces);
    add("vrdmDeserialize of " + what, make, deserialize);
    add("vrdmDeserialize of " + what + "/read into fresh memory", make, readFresh);
    add("vrdmDeserialize of " + what + "/read into huge pages", make, readHuge);
  }
  // Here the time that passes counts, with what the file system waits for.
  const std::string again = "vrdmSerialize over a file just written";
  benchmark::RegisterBenchmark(again.c_str(), serializeAgain, manyShapes)->UseRealTime();
  benchmark::RegisterBenchmark((again + "/to a new file").c_str(), serialize, manyShapes)
      ->UseRealTime();
  return 0;
}();

}  // namespace
