#include "film/preview.hpp"

#include <algorithm>
#include <array>
#include <cstdio>

#include "film/image_files.hpp"

namespace vrn_render {
namespace {

using Colour = std::array<unsigned, 3>;

// A smaller picture: the mean of the linear colours of an area becomes a pixel.
class Reduced {
 public:
  Reduced(const Picture& picture, float exposure, int width, int height)
      : width_(width), bytes_(screenBytes(reduce(picture, width, height), exposure, {})) {}

  Colour at(int x, int y) const {
    const std::size_t first = 4 * static_cast<std::size_t>(y * width_ + x);
    return {bytes_[first], bytes_[first + 1], bytes_[first + 2]};
  }

 private:
  static Picture reduce(const Picture& picture, int width, int height) {
    Picture small;
    small.width = width;
    small.height = height;
    small.colour.resize(4 * static_cast<std::size_t>(width * height));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const int x0 = x * picture.width / width;
        const int x1 = std::max(x0 + 1, (x + 1) * picture.width / width);
        const int y0 = y * picture.height / height;
        const int y1 = std::max(y0 + 1, (y + 1) * picture.height / height);
        for (std::size_t k = 0; k < 4; ++k) {
          float sum = 0;
          for (int j = y0; j < y1; ++j) {
            for (int i = x0; i < x1; ++i)
              sum += picture.colour[4 * static_cast<std::size_t>(j * picture.width + i) + k];
          }
          small.colour[4 * static_cast<std::size_t>(y * width + x) + k] =
              sum / static_cast<float>((x1 - x0) * (y1 - y0));
        }
      }
    }
    return small;
  }

  int width_;
  std::vector<unsigned char> bytes_;
};

std::string colourText(const Colour& colour) {
  char text[16];
  std::snprintf(text, sizeof text, "%u;%u;%um", colour[0] & 255U, colour[1] & 255U,
                colour[2] & 255U);
  return text;
}

}  // namespace

std::string halfBlocks(const Picture& picture, float exposure, int columns, int rows) {
  const float scale =
      std::min({static_cast<float>(columns) / static_cast<float>(picture.width),
                static_cast<float>(2 * rows) / static_cast<float>(picture.height), 1.0F});
  const int width = std::max(1, static_cast<int>(static_cast<float>(picture.width) * scale));
  const int lines =
      std::max(1, (static_cast<int>(static_cast<float>(picture.height) * scale) + 1) / 2);
  const Reduced reduced(picture, exposure, width, 2 * lines);
  std::string text;
  for (int line = 0; line < lines; ++line) {
    for (int x = 0; x < width; ++x) {
      text.append("\x1b[38;2;").append(colourText(reduced.at(x, 2 * line)));
      text.append("\x1b[48;2;").append(colourText(reduced.at(x, 2 * line + 1)));
      text.append("\u2580");
    }
    text += "\x1b[0m\n";
  }
  return text;
}

std::string letters(const Picture& picture, float exposure, int columns, int rows) {
  constexpr char kInks[] = " .:-=+*#%@";
  // A character is about twice as high as it is wide.
  const float scale =
      std::min({static_cast<float>(columns) / static_cast<float>(picture.width),
                static_cast<float>(2 * rows) / static_cast<float>(picture.height), 1.0F});
  const int width = std::max(1, static_cast<int>(static_cast<float>(picture.width) * scale));
  const int lines =
      std::max(1, (static_cast<int>(static_cast<float>(picture.height) * scale) + 1) / 2);
  const Reduced reduced(picture, exposure, width, lines);
  std::string text;
  for (int line = 0; line < lines; ++line) {
    for (int x = 0; x < width; ++x) {
      const Colour colour = reduced.at(x, line);
      const unsigned brightness = (2 * colour[0] + 5 * colour[1] + colour[2]) / 8;
      text += kInks[brightness * (sizeof kInks - 1) / 256];
    }
    text += "\n";
  }
  return text;
}

std::string sixels(const Picture& picture, float exposure, int most) {
  const int width = std::min(most, picture.width);
  const int height = std::max(1, picture.height * width / picture.width);
  const Reduced reduced(picture, exposure, width, height);
  std::string text = "\x1bPq";
  for (int colour = 0; colour < 216; ++colour) {
    char entry[64];
    std::snprintf(entry, sizeof entry, "#%d;2;%d;%d;%d", colour, colour / 36 * 20,
                  colour / 6 % 6 * 20, colour % 6 * 20);
    text.append(entry);
  }
  // An ordered pattern spreads the steps of the palette.
  constexpr unsigned kPattern[4][4] = {
      {0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
  const auto entry = [&](int x, int y) {
    const Colour colour = reduced.at(x, y);
    unsigned code = 0;
    for (const unsigned channel : colour) {
      code =
          6 * code + std::min(5U, (channel * 5 * 16 + kPattern[y & 3][x & 3] * 255) / (255 * 16));
    }
    return code;
  };
  for (int top = 0; top < height; top += 6) {
    std::array<std::string, 216> rows;
    for (int x = 0; x < width; ++x) {
      for (int y = top; y < std::min(top + 6, height); ++y) {
        std::string& row = rows[static_cast<std::size_t>(entry(x, y))];
        row.resize(static_cast<std::size_t>(std::max(x + 1, static_cast<int>(row.size()))), 0);
        row[static_cast<std::size_t>(x)] =
            static_cast<char>(row[static_cast<std::size_t>(x)] | 1 << (y - top));
      }
    }
    for (std::size_t colour = 0; colour < rows.size(); ++colour) {
      if (rows[colour].empty()) continue;
      text.append("#").append(std::to_string(colour));
      for (const char bits : rows[colour]) text += static_cast<char>(63 + bits);
      text += "$";
    }
    text += "-";
  }
  return text + "\x1b\\";
}

}  // namespace vrn_render
