#include "film/tile_file.hpp"

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "film/save.hpp"

namespace vrn_render {
namespace {

static_assert(sizeof(TileHeader) == 116, "a header has no gaps");
constexpr int kLargestSide = 1 << 16;

}  // namespace

void writeTiles(const std::string& path, TileHeader header, const Film& film,
                const std::vector<int>& tiles) {
  header.tiles = static_cast<std::int32_t>(tiles.size());
  std::string bytes(reinterpret_cast<const char*>(&header), sizeof header);
  for (const int number : tiles) {
    const auto word = static_cast<std::int32_t>(number);
    bytes.append(reinterpret_cast<const char*>(&word), sizeof word);
    const Film::Tile area = film.tile(number);
    for (int y = area.y0; y < area.y1; ++y) {
      bytes.append(reinterpret_cast<const char*>(&film.at(area.x0, y)),
                   sizeof(Pixel) * static_cast<std::size_t>(area.x1 - area.x0));
    }
  }
  saveBytes(path, bytes);
}

Film assemble(const std::vector<std::string>& paths, TileHeader& header) {
  // A picture is not larger than the files that hold all of its pixels.
  std::uint64_t size = 0;
  for (const std::string& path : paths) {
    std::error_code none;
    const std::uint64_t own = std::filesystem::file_size(path, none);
    if (!none) size += own;
  }
  Film film(0, 0, false);
  std::vector<bool> isFilled;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const std::string& path = paths[i];
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error(path + ": it cannot be opened; check the path");
    TileHeader own;
    if (!stream.read(reinterpret_cast<char*>(&own), sizeof own) ||
        own.magic != TileHeader().magic) {
      throw std::runtime_error(path + ": it is no share of a picture; give what --tiles wrote");
    }
    if (own.version != TileHeader().version || own.width <= 0 || own.height <= 0 ||
        own.width > kLargestSide || own.height > kLargestSide) {
      throw std::runtime_error(path + ": another version wrote this share; render it again");
    }
    const std::uint64_t pixels =
        static_cast<std::uint64_t>(own.width) * static_cast<std::uint64_t>(own.height);
    if (size / sizeof(Pixel) < pixels) {
      throw std::runtime_error(path +
                               ": the shares have fewer pixels than the picture; give all "
                               "shares, as they were written");
    }
    if (i == 0) {
      header = own;
      film = Film(own.width, own.height, false);
      isFilled.resize(static_cast<std::size_t>(film.tiles()));
    }
    TileHeader compared = own;
    compared.tiles = header.tiles;
    if (compared != header) {
      throw std::runtime_error(path + ": it belongs to another picture than " + paths[0] +
                               "; give shares of one scene, with the same options");
    }
    for (std::int32_t tile = 0; tile < own.tiles; ++tile) {
      std::int32_t number = -1;
      stream.read(reinterpret_cast<char*>(&number), sizeof number);
      if (!stream || number < 0 || number >= film.tiles()) {
        throw std::runtime_error(path + ": it is damaged; render it again");
      }
      if (isFilled[static_cast<std::size_t>(number)]) {
        throw std::runtime_error(path + ": it has tile " + std::to_string(number) +
                                 ", which another share has; give each share once");
      }
      isFilled[static_cast<std::size_t>(number)] = true;
      const Film::Tile area = film.tile(number);
      for (int y = area.y0; y < area.y1; ++y) {
        stream.read(reinterpret_cast<char*>(&film.at(area.x0, y)),
                    static_cast<std::streamsize>(sizeof(Pixel)) * (area.x1 - area.x0));
      }
      if (!stream) throw std::runtime_error(path + ": it ends early; render it again");
    }
    if (stream.peek() != std::ifstream::traits_type::eof()) {
      throw std::runtime_error(path + ": it has bytes behind its end; render it again");
    }
  }
  for (std::size_t tile = 0; tile < isFilled.size(); ++tile) {
    if (!isFilled[tile]) {
      throw std::runtime_error("tile " + std::to_string(tile) +
                               ": it is in none of the shares; render it with --tiles " +
                               std::to_string(tile));
    }
  }
  return film;
}

}  // namespace vrn_render
