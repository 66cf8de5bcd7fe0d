// Colour functions, compared with the arithmetic that they cannot avoid.
#include <benchmark/benchmark.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "vornath_data/vrnt.h"

namespace {

constexpr std::size_t kRows = 61;

// Makes a spectrum with as many pairs as the tables have rows, at steps of `step` nm from 400 nm
// on.
vrntValue_t* makeSpectrum(float step) {
  std::vector<float> pairs(2 * kRows, 0.0F);
  for (std::size_t i = 1; i < kRows; ++i) {
    pairs[2 * i] = 400.0F + step * static_cast<float>(i - 1);
    pairs[2 * i + 1] = i + 1 < kRows ? 0.3F + 0.005F * static_cast<float>(i) : 0.0F;
  }
  vrntValuesError_t* error = nullptr;
  vrntType_t* arrayType = vrtnTypeFloatArray(static_cast<std::uint32_t>(pairs.size()));
  vrntValue_t* array = vrntValueCreate(arrayType, &error);
  vrntValueWrite(&array, 0, pairs.data(), pairs.size() * sizeof(float), &error);
  vrntType_t* type = vrntTypeSpectrum();
  vrntValue_t* spectrum = vrntValueCreate(type, &error);
  const std::int32_t encoding = VRNT_ENCODING_SPECTRAL;
  vrntValueView_t view;
  vrntValueStructField(&view, type, 0);
  vrntValueWrite(&spectrum, view.offset, &encoding, sizeof(encoding), &error);
  vrntValueStructField(&view, type, 1);
  vrntValueSetReference(&spectrum, &view, array, &error);
  vrntValueDestroy(array);
  vrntTypeDestroy(arrayType);
  vrntTypeDestroy(type);
  return spectrum;
}

void valueToRgb(benchmark::State& state, float step) {
  vrntValue_t* spectrum = makeSpectrum(step);
  const vrntValueView_t view{vrntValueType(spectrum), 0};
  std::array<float, 3> rgb{};
  for (auto _ : state) {
    vrntValueToRGB(spectrum, &view, VRNT_COLOUR_SPACE_D65, rgb.data());
    benchmark::DoNotOptimize(rgb);
  }
  vrntValueDestroy(spectrum);
}

// Computes only the sums, on rows that are contiguous in memory like the samples.
void scalarLoop(benchmark::State& state) {
  struct Row {
    float x, y, z, light, amplitude;
  };
  std::array<Row, kRows> rows{};
  for (std::size_t i = 0; i < kRows; ++i) {
    const auto at = static_cast<float>(i);
    rows[i] = {0.01F * at, 0.5F + 0.01F * at, 0.9F - 0.01F * at, 90.0F + at, 0.3F};
  }
  std::array<float, 3> rgb{};
  for (auto _ : state) {
    benchmark::DoNotOptimize(rows);
    float x = 0.0F;
    float y = 0.0F;
    float z = 0.0F;
    float norm = 0.0F;
    for (const Row& row : rows) {
      x += row.x * row.amplitude * row.light;
      y += row.y * row.amplitude * row.light;
      z += row.z * row.amplitude * row.light;
      norm += row.y * row.light;
    }
    rgb = {x / norm, y / norm, z / norm};
    benchmark::DoNotOptimize(rgb);
  }
}

void blackbody(benchmark::State& state) {
  std::array<float, 3> rgb{};
  float kelvin = 6500.0F;
  for (auto _ : state) {
    benchmark::DoNotOptimize(kelvin);
    vrntBlackbodyToRGB(rgb.data(), kelvin);
    benchmark::DoNotOptimize(rgb);
  }
}

// Makes only the calls of black body functions into the mathematical library.
void powAndExp(benchmark::State& state) {
  std::array<double, kRows> metres{};
  std::array<float, kRows> exponents{};
  for (std::size_t i = 0; i < kRows; ++i) {
    metres[i] = 1e-9 * static_cast<double>(400 + 5 * i);
    exponents[i] = 1.4387769e7F / (static_cast<float>(400 + 5 * i) * 6500.0F);
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(metres);
    benchmark::DoNotOptimize(exponents);
    for (std::size_t i = 0; i < kRows; ++i) {
      benchmark::DoNotOptimize(std::pow(metres[i], -5.0));
      benchmark::DoNotOptimize(std::exp(exponents[i]));
    }
  }
}

void valueToSpd(benchmark::State& state) {
  const auto bands = static_cast<std::size_t>(state.range(0));
  vrntValue_t* spectrum = makeSpectrum(4.0F);
  const vrntValueView_t view{vrntValueType(spectrum), 0};
  std::vector<float> pairs(2 * bands);
  for (std::size_t i = 0; i < bands; ++i) {
    pairs[2 * i] = 400.0F + 300.0F * static_cast<float>(i) / static_cast<float>(bands);
  }
  for (auto _ : state) {
    vrntValueToSPD(spectrum, &view, static_cast<std::int32_t>(pairs.size()), pairs.data());
    benchmark::DoNotOptimize(pairs.data());
  }
  state.SetComplexityN(state.range(0));
  vrntValueDestroy(spectrum);
}

const int registered = [] {
  const auto toRgb = [](const char* name, float step) {
    benchmark::RegisterBenchmark(name, [step](auto& state) { valueToRgb(state, step); });
    benchmark::RegisterBenchmark((std::string(name) + "/scalar loop").c_str(), scalarLoop);
  };
  toRgb("vrntValueToRGB of 61 pairs on the grid", 5.0F);
  toRgb("vrntValueToRGB of 61 pairs off the grid", 4.7F);
  benchmark::RegisterBenchmark("vrntBlackbodyToRGB", blackbody);
  benchmark::RegisterBenchmark("vrntBlackbodyToRGB/pow and exp", powAndExp);
  benchmark::RegisterBenchmark("vrntValueToSPD", valueToSpd)->Range(64, 16384)->Complexity();
  return 0;
}();

}  // namespace
