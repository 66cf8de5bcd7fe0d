/// Files of the tiles that one machine has rendered, and how they become one picture.
#ifndef VRN_RENDER_FILM_TILE_FILE_HPP
#define VRN_RENDER_FILM_TILE_FILE_HPP

#include <array>
#include <string>
#include <vector>

#include "film/film.hpp"

namespace vrn_render {

/// What the shares of one picture have in common.
struct TileHeader {
  std::array<char, 8> magic{'V', 'R', 'N', 'T', 'I', 'L', 'E', 'S'};
  std::uint32_t version = 2;
  std::int32_t width = 0, height = 0;
  std::uint32_t samples = 0, seed = 0;
  float noise = 0;
  std::array<char, 64> scene{};  ///< the digest of the scene, in hexadecimal digits
  std::uint32_t task = 0, bounces = 0;
  float brightness = 1;
  std::uint32_t hasTransparentBackground = 0;
  std::int32_t tiles = 0;  ///< in this file

  bool operator==(const TileHeader&) const = default;
};

/// Writes tiles of a film: the header, the index of each tile, and the pixels of each.
/// Errors: throws what saveBytes() throws.
void writeTiles(const std::string& path, TileHeader header, const Film& film,
                const std::vector<int>& tiles);

/// Puts shares together. The film is the same, bit for bit, as if it had been rendered at once.
/// Errors: throws std::runtime_error if a file cannot be read, belongs to another picture, has a
/// tile that another has, or if a tile is in no file.
Film assemble(const std::vector<std::string>& paths, TileHeader& header);

}  // namespace vrn_render

#endif
