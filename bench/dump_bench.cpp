// The text of a scene. The yardstick of a large asset is the plain digest of its bytes. The
// yardstick of many objects prints the numbers of the same text by std::to_chars and copies the
// rest.
#include <benchmark/benchmark.h>
#include <cryptopp/sha.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <ostream>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "scenes.hpp"
#include "vornath_data/catalogue/material_graph.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"
#include "vornath_data/vrnt.h"

namespace {

using vrnt::data::MaterialGraphDesc;
using vrnt::data::Scene;

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

constexpr int kShapes = 5'000;

std::string dumpedText() {
  std::ostringstream stream;
  stream << *bench::makeMeshes(kShapes);
  return stream.str();
}

void dumpIntoString(benchmark::State& state) {
  const vrnt::UniqueScene scene = bench::makeMeshes(kShapes);
  std::size_t size = 0;
  for (auto _ : state) {
    std::ostringstream stream;
    stream << *scene;
    size = stream.str().size();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(size));
}

// A piece of text with a number behind it.
struct Piece {
  std::string_view text;
  float number;
};

// The least that a text with these numbers needs: each is printed by std::to_chars, and what lies
// between them is copied.
void appendNumbers(benchmark::State& state) {
  const std::string text = dumpedText();
  std::vector<Piece> pieces;
  const char* done = text.data();
  const char* const end = text.data() + text.size();
  for (const char* at = done; at < end; ++at) {
    float number = 0;
    const bool begins = at > done && (at[-1] == ' ' || at[-1] == '(');
    const auto [behind, result] = std::from_chars(at, end, number);
    if (!begins || result != std::errc() || std::find(at, behind, '.') == behind) continue;
    pieces.push_back({std::string_view(done, static_cast<std::size_t>(at - done)), number});
    done = at = behind;
  }
  for (auto _ : state) {
    std::string copy;
    for (const Piece& piece : pieces) {
      std::array<char, 32> digits;
      char* const last =
          std::to_chars(digits.data(), digits.data() + digits.size(), piece.number).ptr;
      copy.append(piece.text).append(digits.data(), static_cast<std::size_t>(last - digits.data()));
    }
    copy.append(done, end);
    benchmark::DoNotOptimize(copy.data());
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  state.counters["numbers"] = static_cast<double>(pieces.size());
}

const int registered = [] {
  benchmark::RegisterBenchmark("dump of a 64 MiB asset", dumpAsset);
  benchmark::RegisterBenchmark("dump of a 64 MiB asset/digest of the bytes", digestAsset);
  benchmark::RegisterBenchmark("dump of 5,000 shapes into a string", dumpIntoString);
  benchmark::RegisterBenchmark("dump of 5,000 shapes into a string/to_chars", appendNumbers);
  return 0;
}();

}  // namespace
