#include "svg.hpp"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

namespace blackbody {
namespace {

std::string format(const char* pattern, double number) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), pattern, number);
  return text.data();
}

}  // namespace

std::string screenColour(const std::array<float, 3>& linear) {
  const float brightest = std::max({linear[0], linear[1], linear[2], 1.0F});
  std::string colour = "rgb(";
  for (std::size_t i = 0; i < linear.size(); ++i) {
    const double v = std::max(0.0, static_cast<double>(linear[i] / brightest));
    const double curved = v <= 0.0031308 ? 12.92 * v : 1.055 * std::pow(v, 1.0 / 2.4) - 0.055;
    colour += (i == 0 ? "" : ",") + std::to_string(std::lround(255.0 * curved));
  }
  return colour + ")";
}

Picture::Picture(std::ostream& out, int width, int height) : out_(out) {
  out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
       << "\" font-family=\"sans-serif\">\n"
       << "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
}

Picture::~Picture() { out_ << "</svg>\n"; }

void Picture::text(const Point& at, const std::string& words, int size, const char* anchor,
                   bool upright) {
  const std::string x = format("%.1f", at.x);
  const std::string y = format("%.1f", at.y);
  out_ << "<text x=\"" << x << "\" y=\"" << y << "\" font-size=\"" << size << "\" text-anchor=\""
       << anchor << '"';
  if (upright) out_ << " transform=\"rotate(-90 " << x << ' ' << y << ")\"";
  out_ << '>' << words << "</text>\n";
}

void Picture::line(const std::vector<Point>& points, const std::string& colour, double width,
                   const char* dash) {
  out_ << "<polyline fill=\"none\" stroke=\"" << colour << "\" stroke-width=\""
       << format("%.1f", width) << '"';
  if (*dash != '\0') out_ << " stroke-dasharray=\"" << dash << '"';
  out_ << " points=\"";
  for (const Point& point : points) {
    out_ << format("%.1f", point.x) << ',' << format("%.1f", point.y) << ' ';
  }
  out_ << "\"/>\n";
}

void Picture::dot(const Point& at, double radius, const std::string& colour) {
  out_ << "<circle cx=\"" << format("%.1f", at.x) << "\" cy=\"" << format("%.1f", at.y) << "\" r=\""
       << format("%.1f", radius) << "\" fill=\"" << colour
       << "\" stroke=\"#444\" stroke-width=\"0.5\"/>\n";
}

Plot::Plot(Picture& picture, const Point& corner, double width, double height, Axis x, Axis y,
           const std::string& title)
    : picture_(picture),
      corner_(corner),
      width_(width),
      height_(height),
      x_(std::move(x)),
      y_(std::move(y)) {
  picture_.text({corner.x + width / 2, corner.y - 12}, title, 15, "middle");
  picture_.text({corner.x + width / 2, corner.y + height + 38}, x_.title, 13, "middle");
  picture_.text({corner.x - 44, corner.y + height / 2}, y_.title, 13, "middle", true);
  for (double at = x_.low; at <= x_.high + x_.step / 2; at += x_.step) {
    line({{at, y_.low}, {at, y_.high}}, "#ddd", 0.8);
    picture_.text({place({at, 0}).x, corner.y + height + 18}, format(x_.format, at), 11, "middle");
  }
  for (double at = y_.low; at <= y_.high + y_.step / 2; at += y_.step) {
    line({{x_.low, at}, {x_.high, at}}, "#ddd", 0.8);
    picture_.text({corner.x - 8, place({0, at}).y + 4}, format(y_.format, at), 11, "end");
  }
}

Point Plot::place(const Point& at) const {
  return {corner_.x + width_ * (at.x - x_.low) / (x_.high - x_.low),
          corner_.y + height_ * (y_.high - at.y) / (y_.high - y_.low)};
}

void Plot::line(const std::vector<Point>& points, const std::string& colour, double width,
                const char* dash) {
  std::vector<Point> placed;
  placed.reserve(points.size());
  for (const Point& point : points) placed.push_back(place(point));
  picture_.line(placed, colour, width, dash);
}

void Plot::dot(const Point& at, const std::string& colour, double radius) {
  picture_.dot(place(at), radius, colour);
}

void Plot::text(const Point& at, const std::string& words) {
  picture_.text(place(at), words, 11, "start");
}

}  // namespace blackbody
