#include "film/image_files.hpp"

#include <OpenEXR/ImfChannelList.h>
#include <OpenEXR/ImfFrameBuffer.h>
#include <OpenEXR/ImfHeader.h>
#include <OpenEXR/ImfIO.h>
#include <OpenEXR/ImfOutputFile.h>
#include <png.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace vrn_render {
namespace {

unsigned char toByte(float amount) {
  amount = std::isfinite(amount) ? std::clamp(amount, 0.0F, 1.0F) : (amount > 0 ? 1.0F : 0.0F);
  return static_cast<unsigned char>(std::lround(amount * 255));
}

unsigned char toScreen(float linear) {
  if (!(linear > 0)) return 0;
  if (linear >= 1) return 255;
  return toByte(linear <= 0.0031308F ? 12.92F * linear
                                     : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F);
}

// Collects what OpenEXR writes, which goes back to fill in offsets.
class MemoryStream : public Imf::OStream {
 public:
  MemoryStream() : Imf::OStream("the picture") {}
  void write(const char* bytes, int count) override {
    const auto size = static_cast<std::size_t>(count);
    if (bytes_.size() < at_ + size) bytes_.resize(at_ + size);
    std::copy(bytes, bytes + size, bytes_.begin() + static_cast<std::ptrdiff_t>(at_));
    at_ += size;
  }
  std::uint64_t tellp() override { return at_; }
  void seekp(std::uint64_t position) override { at_ = static_cast<std::size_t>(position); }
  std::string take() { return std::move(bytes_); }

 private:
  std::string bytes_;
  std::size_t at_ = 0;
};

}  // namespace

std::vector<unsigned char> screenBytes(const Picture& picture, float exposure,
                                       const std::set<Pass>& passes) {
  const std::size_t count = picture.colour.size() / 4;
  std::vector<unsigned char> bytes(4 * count, 255);
  const float scale = std::exp2(exposure);
  float nearest = std::numeric_limits<float>::infinity();
  float farthest = 0;
  for (const float depth : picture.depth) {
    if (!std::isfinite(depth)) continue;
    nearest = std::min(nearest, depth);
    farthest = std::max(farthest, depth);
  }
  const float range = std::max(farthest - nearest, 1e-9F);
  for (std::size_t i = 0; i < count; ++i) {
    unsigned char* const out = bytes.data() + 4 * i;
    if (passes.count(Pass::Depth)) {
      const float depth = picture.depth[i];
      out[0] = out[1] = out[2] =
          std::isfinite(depth) ? toByte(1 - 0.9F * (depth - nearest) / range) : 0;
    } else if (passes.count(Pass::Normal)) {
      for (std::size_t k = 0; k < 3; ++k) out[k] = toByte(0.5F + 0.5F * picture.normal[3 * i + k]);
    } else if (passes.count(Pass::Albedo)) {
      for (std::size_t k = 0; k < 3; ++k) out[k] = toScreen(picture.albedo[3 * i + k]);
    } else if (passes.count(Pass::Object)) {
      const std::uint32_t hash = picture.object[i] * 0x9e3779b1U;
      for (std::size_t k = 0; k < 3; ++k) {
        out[k] = picture.object[i] == 0
                     ? 0
                     : static_cast<unsigned char>(64 + (hash >> (8 * k + 3)) % 192);
      }
    } else {
      // In a PNG, colours are not multiplied by alpha.
      const float alpha = picture.colour[4 * i + 3];
      const float own = alpha > 0 && alpha < 1 ? scale / alpha : scale;
      for (std::size_t k = 0; k < 3; ++k) out[k] = toScreen(picture.colour[4 * i + k] * own);
      out[3] = toByte(alpha);
    }
  }
  return bytes;
}

std::string makePng(const Picture& picture, float exposure, const std::set<Pass>& passes) {
  std::vector<unsigned char> bytes = screenBytes(picture, exposure, passes);
  bool isOpaque = true;
  for (std::size_t i = 3; i < bytes.size(); i += 4) isOpaque &= bytes[i] == 255;
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.width);
  image.height = static_cast<png_uint_32>(picture.height);
  image.format = PNG_FORMAT_RGBA;
  if (isOpaque) {
    // In place: a pixel moves to where no later one is.
    image.format = PNG_FORMAT_RGB;
    for (std::size_t i = 0; i < bytes.size() / 4; ++i) {
      for (std::size_t k = 0; k < 3; ++k) bytes[3 * i + k] = bytes[4 * i + k];
    }
  }
  png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
  std::string file(size, '\0');
  if (png_image_write_to_memory(&image, file.data(), &size, 0, bytes.data(), 0, nullptr) == 0) {
    throw std::runtime_error(std::string("the picture cannot be a PNG: ") + image.message);
  }
  file.resize(size);
  return file;
}

std::string makeExr(Picture picture, float exposure, const std::set<Pass>& passes) {
  const auto width = static_cast<std::size_t>(picture.width);
  Imf::Header header(picture.width, picture.height);
  header.compression() = Imf::ZIP_COMPRESSION;
  Imf::FrameBuffer frame;
  std::vector<float>& colour = picture.colour;
  const float scale = std::exp2(exposure);
  for (std::size_t i = 0; i < colour.size(); ++i) {
    if (i % 4 != 3) colour[i] *= scale;
  }
  const auto add = [&](const std::string& name, const float* first, std::size_t stride) {
    header.channels().insert(name, Imf::Channel(Imf::FLOAT));
    frame.insert(name,
                 Imf::Slice(Imf::FLOAT, const_cast<char*>(reinterpret_cast<const char*>(first)),
                            sizeof(float) * stride, sizeof(float) * stride * width));
  };
  const char* const channels[] = {"R", "G", "B", "A"};
  for (std::size_t k = 0; k < 4; ++k) add(channels[k], colour.data() + k, 4);
  if (passes.count(Pass::Depth)) add("depth.Z", picture.depth.data(), 1);
  if (passes.count(Pass::Normal)) {
    const char* const axes[] = {"normal.X", "normal.Y", "normal.Z"};
    for (std::size_t k = 0; k < 3; ++k) add(axes[k], picture.normal.data() + k, 3);
  }
  if (passes.count(Pass::Albedo)) {
    const char* const names[] = {"albedo.R", "albedo.G", "albedo.B"};
    for (std::size_t k = 0; k < 3; ++k) add(names[k], picture.albedo.data() + k, 3);
  }
  if (passes.count(Pass::Spectrum) && !picture.spectrum.empty()) {
    for (int band = 0; band < kBands; ++band) {
      add("spectrum." + std::to_string(static_cast<int>(bandBegin(band))) + "nm",
          picture.spectrum.data() + band, kBands);
    }
  }
  if (passes.count(Pass::Object)) {
    header.channels().insert("object.id", Imf::Channel(Imf::UINT));
    frame.insert("object.id",
                 Imf::Slice(Imf::UINT,
                            const_cast<char*>(reinterpret_cast<const char*>(picture.object.data())),
                            sizeof(std::uint32_t), sizeof(std::uint32_t) * width));
  }
  MemoryStream stream;
  {
    Imf::OutputFile file(stream, header, 0);
    file.setFrameBuffer(frame);
    file.writePixels(picture.height);
  }
  return stream.take();
}

}  // namespace vrn_render
