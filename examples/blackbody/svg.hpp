// A writer for SVG pictures of plots, with only the elements that the example needs.
#ifndef BLACKBODY_SVG_HPP
#define BLACKBODY_SVG_HPP

#include <array>
#include <ostream>
#include <string>
#include <vector>

namespace blackbody {

struct Point {
  double x, y;
};

/// An axis: the numbers at its two ends, the step between labels, and the printf format of a label.
struct Axis {
  double low, high, step;
  const char* format;
  std::string title;
};

/// Returns a screen colour for a linear sRGB colour. Scales it down if it is too bright, and
/// applies the transfer curve.
std::string screenColour(const std::array<float, 3>& linear);

/// A picture of plots. Writes each element when it is added, and the closing tag on destruction.
class Picture {
 public:
  Picture(std::ostream& out, int width, int height);
  Picture(const Picture&) = delete;
  Picture& operator=(const Picture&) = delete;
  ~Picture();

  void text(const Point& at, const std::string& words, int size, const char* anchor,
            bool upright = false);
  void line(const std::vector<Point>& points, const std::string& colour, double width,
            const char* dash);
  void dot(const Point& at, double radius, const std::string& colour);

 private:
  std::ostream& out_;
};

/// A frame with axes in a picture. Positions are given in the numbers of the axes.
class Plot {
 public:
  Plot(Picture& picture, const Point& corner, double width, double height, Axis x, Axis y,
       const std::string& title);

  void line(const std::vector<Point>& points, const std::string& colour, double width = 1.5,
            const char* dash = "");
  void dot(const Point& at, const std::string& colour, double radius = 4.0);
  void text(const Point& at, const std::string& words);

 private:
  Point place(const Point& at) const;

  Picture& picture_;
  Point corner_;
  double width_, height_;
  Axis x_, y_;
};

}  // namespace blackbody

#endif
