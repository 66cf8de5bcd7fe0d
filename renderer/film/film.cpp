#include "film/film.hpp"

#include <cmath>
#include <limits>

namespace vrn_render {

Film::Film(int width, int height, bool recordsSpectra)
    : width_(width),
      height_(height),
      pixels_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
  if (recordsSpectra) spectra_.resize(pixels_.size() * kBands);
}

Film::Tile Film::tile(int index) const {
  const int x = index % tileColumns() * kTileSize;
  const int y = index / tileColumns() * kTileSize;
  return {x, y, std::min(x + kTileSize, width_), std::min(y + kTileSize, height_)};
}

void Film::add(int x, int y, const Seen& seen, const TaskDescription& task) {
  Pixel& pixel = at(x, y);
  Rgb rgb;
  float luminance;
  if (task.wavelengths == Wavelengths::One) {
    luminance = seen.radiance[task.band];
    rgb = {luminance, luminance, luminance};
  } else {
    const ScreenColour colour = Colours::get().toScreen(seen.radiance);
    rgb = colour.rgb;
    luminance = colour.luminance;
  }
  ++pixel.samples;
  pixel.rays += seen.rays;
  // A sample that is not finite is black; it would spoil all others.
  if (!std::isfinite(rgb.r + rgb.g + rgb.b + luminance)) {
    rgb = {};
    luminance = 0;
  }
  if (task.clampsLuminance) {
    if (luminance > task.clampValue) {
      const float scale = task.clampValue / luminance;
      rgb = {rgb.r * scale, rgb.g * scale, rgb.b * scale};
      luminance = task.clampValue;
    }
  } else {
    rgb = {std::min(rgb.r, task.clampValue), std::min(rgb.g, task.clampValue),
           std::min(rgb.b, task.clampValue)};
  }
  pixel.r += rgb.r;
  pixel.g += rgb.g;
  pixel.b += rgb.b;
  pixel.luminance += luminance;
  pixel.squares += static_cast<double>(luminance) * luminance;
  pixel.alpha += seen.alpha;
  if (seen.isHit) {
    if (pixel.hits++ == 0) pixel.object = seen.object;
    pixel.depth += seen.depth;
    pixel.normal[0] += seen.normal.x;
    pixel.normal[1] += seen.normal.y;
    pixel.normal[2] += seen.normal.z;
    pixel.albedo[0] += seen.albedo.r;
    pixel.albedo[1] += seen.albedo.g;
    pixel.albedo[2] += seen.albedo.b;
  }
  if (!spectra_.empty()) {
    float* const spectrum = spectra_.data() + index(x, y) * kBands;
    for (int band = 0; band < kBands; ++band) {
      if (std::isfinite(seen.radiance[band])) spectrum[band] += seen.radiance[band];
    }
  }
}

float Film::noise(int number) const {
  const Tile area = tile(number);
  double variance = 0;
  double mean = 0;
  int count = 0;
  for (int y = area.y0; y < area.y1; ++y) {
    for (int x = area.x0; x < area.x1; ++x) {
      const Pixel& pixel = at(x, y);
      ++count;
      if (pixel.samples < 2) return std::numeric_limits<float>::infinity();
      const double n = pixel.samples;
      const double own = pixel.luminance / n;
      mean += own;
      variance += std::max(0.0, pixel.squares / n - own * own) / (n - 1);
    }
  }
  mean /= count;
  // What is darker than this is not judged by its own brightness.
  constexpr double kDark = 1e-3;
  return static_cast<float>(std::sqrt(variance / count) / std::max(mean, kDark));
}

Picture Film::finish(const TaskDescription& task, const std::set<Pass>& passes) const {
  Picture picture;
  picture.width = width_;
  picture.height = height_;
  const auto reserve = [&](auto& channels, std::size_t count, Pass pass) {
    const bool isAskedFor = passes.count(pass) != 0;
    if (isAskedFor) channels.reserve(count * pixels_.size());
    return isAskedFor;
  };
  const bool hasDepth = reserve(picture.depth, 1, Pass::Depth);
  const bool hasNormal = reserve(picture.normal, 3, Pass::Normal);
  const bool hasAlbedo = reserve(picture.albedo, 3, Pass::Albedo);
  const bool hasObject = reserve(picture.object, 1, Pass::Object);
  picture.colour.reserve(4 * pixels_.size());
  for (const Pixel& pixel : pixels_) {
    const double scale =
        pixel.samples > 0 ? static_cast<double>(task.brightness) / pixel.samples : 0;
    const bool isEmpty = pixel.samples == 0;
    picture.colour.push_back(static_cast<float>(pixel.r * scale));
    picture.colour.push_back(static_cast<float>(pixel.g * scale));
    picture.colour.push_back(static_cast<float>(pixel.b * scale));
    const bool hasAlpha = task.hasTransparentBackground || isEmpty;
    picture.colour.push_back(
        hasAlpha ? (isEmpty ? 0 : pixel.alpha / static_cast<float>(pixel.samples)) : 1.0F);
    const auto hits = static_cast<float>(std::max(pixel.hits, 1U));
    if (hasDepth) {
      picture.depth.push_back(pixel.hits > 0 ? pixel.depth / hits
                                             : std::numeric_limits<float>::infinity());
    }
    for (std::size_t k = 0; k < 3 && hasNormal; ++k) {
      picture.normal.push_back(pixel.normal[k] / hits);
    }
    for (std::size_t k = 0; k < 3 && hasAlbedo; ++k) {
      picture.albedo.push_back(pixel.albedo[k] / hits);
    }
    if (hasObject) picture.object.push_back(pixel.object);
  }
  if (passes.count(Pass::Spectrum) == 0) return picture;
  picture.spectrum = spectra_;
  for (std::size_t i = 0; i < picture.spectrum.size(); ++i) {
    const std::uint32_t samples = pixels_[i / kBands].samples;
    picture.spectrum[i] *= samples > 0 ? 1 / static_cast<float>(samples) : 0;
  }
  return picture;
}

}  // namespace vrn_render
