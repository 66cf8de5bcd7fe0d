/// The pixels of a picture while it is rendered.
#ifndef VRN_RENDER_FILM_FILM_HPP
#define VRN_RENDER_FILM_FILM_HPP

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "integrator/path_tracer.hpp"
#include "scene_reading/scene_description.hpp"

namespace vrn_render {

/// The sums of the samples of a pixel.
struct Pixel {
  double r = 0, g = 0, b = 0;         ///< linear
  double luminance = 0, squares = 0;  ///< for the noise
  float alpha = 0, depth = 0;
  float normal[3] = {0, 0, 0}, albedo[3] = {0, 0, 0};
  std::uint32_t hits = 0;  ///< the samples that met a shape
  std::uint32_t samples = 0;
  std::uint32_t object = 0;  ///< that the first such sample met, plus 1
  std::uint32_t rays = 0;
};
static_assert(sizeof(Pixel) == 88, "files of tiles hold pixels as they are");

/// Square parts of a picture, which are rendered as a whole. They are counted along the rows, from
/// the top left.
inline constexpr int kTileSize = 16;

/// What a picture can show besides its colours.
enum class Pass { Depth, Normal, Albedo, Object, Spectrum };

/// A finished picture: means of the samples. A pass that was not asked for is empty.
struct Picture {
  int width = 0, height = 0;
  std::vector<float> colour;  ///< r, g, b and alpha of each pixel, linear; the first row is on top
  std::vector<float> depth;   ///< metres; infinite where there is nothing
  std::vector<float> normal;  ///< x, y and z in the world
  std::vector<float> albedo;  ///< r, g and b, linear
  std::vector<std::uint32_t> object;  ///< the index of the shape in the scene, plus 1; 0 for none
  std::vector<float> spectrum;  ///< the radiance in kBands bands; empty if it was not recorded, too
};

class Film {
 public:
  Film(int width, int height, bool recordsSpectra);

  int width() const { return width_; }
  int height() const { return height_; }
  int tileColumns() const { return (width_ + kTileSize - 1) / kTileSize; }
  int tiles() const { return tileColumns() * ((height_ + kTileSize - 1) / kTileSize); }
  /// The pixels of a tile: from x0 and y0 up to x1 and y1.
  struct Tile {
    int x0, y0, x1, y1;
  };
  Tile tile(int index) const;

  Pixel& at(int x, int y) { return pixels_[index(x, y)]; }
  const Pixel& at(int x, int y) const { return pixels_[index(x, y)]; }

  /// Adds a sample to a pixel.
  void add(int x, int y, const Seen& seen, const TaskDescription& task);

  /// Returns the standard error of a tile's luminance over its mean luminance.
  float noise(int tile) const;

  Picture finish(const TaskDescription& task, const std::set<Pass>& passes) const;

 private:
  std::size_t index(int x, int y) const {
    return static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
           static_cast<std::size_t>(x);
  }

  int width_, height_;
  std::vector<Pixel> pixels_;
  std::vector<float> spectra_;
};

}  // namespace vrn_render

#endif
