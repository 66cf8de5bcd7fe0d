// Comparison and text of large scenes. The yardstick of the comparison is memcmp over the records
// of both scenes; the yardstick of the text is the plain digest of the asset's bytes.
#include <benchmark/benchmark.h>
#include <cryptopp/sha.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string>

#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::data::MaterialGraphDesc;
using vrnt::data::Scene;
using vrnt::data::ShapeDesc;
using vrnt::data::TransformationGroupDesc;
using vrnt::detail::MeshDesc;

constexpr std::uint32_t kMaterials = 1'000;
constexpr std::uint32_t kTransformationGroups = 1'000;

constexpr char kMaterialValue[] =
    "{ color = float3(0.5, 0.25, 0.125); roughness = 0.5; metallic = false; layers = [ 1, 2, 3 ]; "
    "wrap = REPEAT : enum { CLAMP; BORDER; REPEAT; MIRROR; }; }";

// Makes a scene that is equivalent to another one of the same size but shares no memory with it.
Scene build(std::uint32_t shapes) {
  Scene scene;
  vrntValuesError_t* error = nullptr;
  for (std::uint32_t i = 0; i < shapes; ++i) {
    const MeshDesc desc{1, 3, 1, 0};
    const std::array<std::uint32_t, 36> bytes{i};
    AssetStorage* storage = vrdmAssetStorageCopy(bytes.data(), desc.size());
    vrdmAddAsset(&scene, VRDM_CLASS_MESH, &desc, &storage);
    vrdmAssetStorageRelease(storage);
  }
  for (std::uint32_t i = 0; i < kMaterials; ++i) {
    const auto material =
        static_cast<std::int32_t>(vrdmCreateInstance(&scene, VRDM_CLASS_MATERIAL));
    const vrnt::UniqueValue value(vrntValueParse(kMaterialValue, &error));
    vrdmSetInstanceValue(&scene, VRDM_CLASS_MATERIAL, material, value.get());
  }
  for (std::uint32_t i = 0; i < kTransformationGroups; ++i) {
    vrdmCreateInstance(&scene, VRDM_CLASS_TRANSFORMATION_GROUP);
  }
  for (std::uint32_t i = 0; i < shapes; ++i) {
    const auto shape = static_cast<std::int32_t>(vrdmCreateInstance(&scene, VRDM_CLASS_SHAPE));
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 0, i % kMaterials);
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 1, i);
    vrdmSetReference(&scene, VRDM_CLASS_SHAPE, shape, 3, i % kTransformationGroups);
  }
  return scene;
}

void equivalent(benchmark::State& state, std::uint32_t shapes) {
  const Scene a = build(shapes);
  const Scene b = build(shapes);
  for (auto _ : state) {
    if (!Scene::equivalent(a, b)) state.SkipWithError("not equivalent");
  }
}

template <typename Desc>
bool sameBytes(const Scene& a, const Scene& b) {
  const auto& first = a.container<Desc>().slots;
  const auto& second = b.container<Desc>().slots;
  for (std::size_t i = 0; i < first.size(); ++i) {
    if (std::memcmp(&first[i].desc, &second[i].desc, sizeof(Desc)) != 0) return false;
  }
  return true;
}

// Leaves out the materials, whose only records are their lists.
void compareRecords(benchmark::State& state, std::uint32_t shapes) {
  const Scene a = build(shapes);
  const Scene b = build(shapes);
  for (auto _ : state) {
    if (!sameBytes<MeshDesc>(a, b) || !sameBytes<TransformationGroupDesc>(a, b) ||
        !sameBytes<ShapeDesc>(a, b)) {
      state.SkipWithError("not equal");
    }
  }
}

constexpr std::size_t kAssetSize = std::size_t{64} << 20;

class NullBuffer : public std::streambuf {
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void dumpAsset(benchmark::State& state) {
  Scene scene;
  AssetStorage* storage = vrdmAssetStorageWrap(std::malloc(kAssetSize), kAssetSize, std::free);
  std::memset(storage->data, 1, kAssetSize);
  const MaterialGraphDesc desc{kAssetSize, 0, 0};
  vrdmAddAsset(&scene, VRDM_CLASS_MATERIAL_GRAPH, &desc, &storage);
  vrdmAssetStorageRelease(storage);
  NullBuffer buffer;
  std::ostream stream(&buffer);
  for (auto _ : state) stream << scene;
}

void digestAsset(benchmark::State& state) {
  const std::unique_ptr<CryptoPP::byte[]> bytes(new CryptoPP::byte[kAssetSize]);
  std::memset(bytes.get(), 1, kAssetSize);
  CryptoPP::byte digest[CryptoPP::SHA256::DIGESTSIZE];
  for (auto _ : state) {
    CryptoPP::SHA256().CalculateDigest(digest, bytes.get(), kAssetSize);
    benchmark::DoNotOptimize(digest);
  }
}

void dumpShapes(benchmark::State& state, std::uint32_t shapes) {
  const Scene scene = build(shapes);
  NullBuffer buffer;
  std::ostream stream(&buffer);
  for (auto _ : state) stream << scene;
}

const int registered = [] {
  const auto pair = [](const std::string& name, std::uint32_t shapes) {
    benchmark::RegisterBenchmark(name.c_str(), equivalent, shapes);
    benchmark::RegisterBenchmark((name + "/memcmp of the records").c_str(), compareRecords, shapes);
  };
  pair("Scene::equivalent of 100,000 shapes", 100'000);
  pair("Scene::equivalent of 200,000 shapes", 200'000);
  benchmark::RegisterBenchmark("dump of a 64 MiB asset", dumpAsset);
  benchmark::RegisterBenchmark("dump of a 64 MiB asset/digest of the bytes", digestAsset);
  benchmark::RegisterBenchmark("dump of 5,000 shapes", dumpShapes, 5'000);
  benchmark::RegisterBenchmark("dump of 10,000 shapes", dumpShapes, 10'000);
  return 0;
}();

}  // namespace
