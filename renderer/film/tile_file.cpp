#include "film/tile_file.hpp"

#include <cstddef>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace vrn_render {
namespace {

static_assert(sizeof(TileHeader) == 64, "a header has no gaps");
constexpr int kLargestSide = 1 << 16;

}  // namespace

void writeTiles(const std::string& path, TileHeader header, const Film& film,
                const std::vector<int>& tiles) {
  header.tiles = static_cast<std::int32_t>(tiles.size());
  std::ofstream stream(path, std::ios::binary | std::ios::trunc);
  stream.write(reinterpret_cast<const char*>(&header), sizeof header);
  for (const int number : tiles) {
    const auto word = static_cast<std::int32_t>(number);
    stream.write(reinterpret_cast<const char*>(&word), sizeof word);
    const Film::Tile area = film.tile(number);
    for (int y = area.y0; y < area.y1; ++y) {
      stream.write(reinterpret_cast<const char*>(&film.at(area.x0, y)),
                   static_cast<std::streamsize>(sizeof(Pixel)) * (area.x1 - area.x0));
    }
  }
  stream.close();
  if (!stream) throw std::runtime_error(path + ": cannot write the tiles");
}

Film assemble(const std::vector<std::string>& paths, TileHeader& header) {
  Film film(0, 0, false);
  std::vector<bool> isFilled;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const std::string& path = paths[i];
    std::ifstream stream(path, std::ios::binary);
    if (!stream) throw std::runtime_error(path + ": cannot read the file");
    TileHeader own;
    if (!stream.read(reinterpret_cast<char*>(&own), sizeof own) ||
        own.magic != TileHeader().magic) {
      throw std::runtime_error(path + ": is no file of tiles");
    }
    if (own.version != TileHeader().version || own.width <= 0 || own.height <= 0 ||
        own.width > kLargestSide || own.height > kLargestSide) {
      throw std::runtime_error(path + ": is a file of tiles that this program cannot read");
    }
    if (i == 0) {
      header = own;
      film = Film(own.width, own.height, false);
      isFilled.resize(static_cast<std::size_t>(film.tiles()));
    }
    TileHeader compared = own;
    compared.tiles = header.tiles;
    if (std::memcmp(&compared, &header, sizeof header) != 0) {
      throw std::runtime_error(path + ": belongs to another picture than " + paths[0]);
    }
    for (std::int32_t tile = 0; tile < own.tiles; ++tile) {
      std::int32_t number = -1;
      stream.read(reinterpret_cast<char*>(&number), sizeof number);
      if (!stream || number < 0 || number >= film.tiles()) {
        throw std::runtime_error(path + ": is damaged");
      }
      if (isFilled[static_cast<std::size_t>(number)]) {
        throw std::runtime_error(path + ": has tile " + std::to_string(number) +
                                 ", which another file has");
      }
      isFilled[static_cast<std::size_t>(number)] = true;
      const Film::Tile area = film.tile(number);
      for (int y = area.y0; y < area.y1; ++y) {
        stream.read(reinterpret_cast<char*>(&film.at(area.x0, y)),
                    static_cast<std::streamsize>(sizeof(Pixel)) * (area.x1 - area.x0));
      }
      if (!stream) throw std::runtime_error(path + ": ends early");
    }
  }
  for (std::size_t tile = 0; tile < isFilled.size(); ++tile) {
    if (!isFilled[tile]) {
      throw std::runtime_error("tile " + std::to_string(tile) + " is in none of the files");
    }
  }
  return film;
}

}  // namespace vrn_render
