// Scenes as JSON. The yardsticks are the library's own file of the same scene, and RapidJSON, which
// writes and parses the same document: it writes the lines and indents as they stand, from numbers
// that it has parsed before.
#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/prettywriter.h>
#include <rapidjson/stringbuffer.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "scenes.hpp"
#include "scratch_file.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_toolkit/vrtk.h"

namespace {

constexpr int kShapes = 100'000;

std::string documentOf(const vrdmScene_t* scene, bool full) {
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = full ? 1 : 0;
  char* json = nullptr;
  std::uint64_t size = 0;
  if (vrtkSceneExportString(scene, &options, &json, &size, nullptr) != VRTK_OK) std::abort();
  std::string text(json, size);
  vrtkStringDestroy(json);
  return text;
}

// Takes the document and keeps its size only.
std::uint32_t take(const void* bytes, std::uint64_t size, void* context) {
  benchmark::DoNotOptimize(bytes);
  *static_cast<std::uint64_t*>(context) += size;
  return 0;
}

void exportScene(benchmark::State& state, bool full) {
  const vrnt::UniqueScene scene = bench::makeShapes(kShapes);
  vrtkExportOptions options = VRTK_EXPORT_OPTIONS_INIT;
  options.full = full ? 1 : 0;
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    if (vrtkSceneExport(scene.get(), &options, take, &bytes, nullptr) != VRTK_OK) {
      state.SkipWithError("the export fails");
    }
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

void serialize(benchmark::State& state) {
  const vrnt::UniqueScene scene = bench::makeShapes(kShapes);
  const bench::ScratchFile file("json.vrnscene");
  for (auto _ : state) {
    state.PauseTiming();
    file.remove();
    state.ResumeTiming();
    vrdmSerialize(scene.get(), file.path());
  }
}

// Keeps no more of a document than its size, as take() does.
class Counter {
 public:
  using Ch = char;
  void Put(char c) { buffer_[used_++ % sizeof(buffer_)] = c; }
  void Flush() { benchmark::DoNotOptimize(buffer_); }
  std::uint64_t size() const { return used_; }

 private:
  char buffer_[1 << 16];
  std::uint64_t used_ = 0;
};

void writeWithRapidJson(benchmark::State& state) {
  rapidjson::Document document;
  {
    const std::string text = documentOf(bench::makeShapes(kShapes).get(), true);
    document.Parse(text.data(), text.size());
  }
  std::uint64_t bytes = 0;
  for (auto _ : state) {
    Counter out;
    rapidjson::PrettyWriter<Counter> writer(out);
    writer.SetIndent(' ', 2);
    writer.SetFormatOptions(rapidjson::kFormatSingleLineArray);
    document.Accept(writer);
    bytes += out.size();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}

void buildScene(benchmark::State& state, bool full) {
  const std::string text = documentOf(bench::makeShapes(kShapes).get(), full);
  for (auto _ : state) {
    vrdmScene_t* scene = nullptr;
    if (vrtkSceneBuild(text.data(), text.size(), nullptr, &scene, nullptr, nullptr) != VRTK_OK) {
      state.SkipWithError("the build fails");
    }
    state.PauseTiming();
    vrnt::UniqueScene owner(scene);
    bench::destroy(owner);
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void parseWithRapidJson(benchmark::State& state, bool full) {
  const std::string text = documentOf(bench::makeShapes(kShapes).get(), full);
  for (auto _ : state) {
    rapidjson::Document document;
    document.Parse(text.data(), text.size());
    benchmark::DoNotOptimize(document.IsObject());
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

const int registered = [] {
  const auto add = [](const char* name, auto function, auto... arguments) {
    benchmark::RegisterBenchmark(name, function, arguments...)->Unit(benchmark::kMillisecond);
  };
  add("vrtkSceneExport of 100,000 shapes", exportScene, false);
  add("vrtkSceneExport of 100,000 shapes/vrdmSerialize", serialize);
  add("vrtkSceneExport of 100,000 shapes with all fields", exportScene, true);
  add("vrtkSceneExport of 100,000 shapes with all fields/RapidJSON", writeWithRapidJson);
  add("vrtkSceneBuild of 100,000 shapes", buildScene, false);
  add("vrtkSceneBuild of 100,000 shapes/RapidJSON", parseWithRapidJson, false);
  add("vrtkSceneBuild of 100,000 shapes with all fields", buildScene, true);
  add("vrtkSceneBuild of 100,000 shapes with all fields/RapidJSON", parseWithRapidJson, true);
  return 0;
}();

}  // namespace
