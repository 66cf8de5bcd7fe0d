// A second integrator of the measured box, which shares nothing with the renderer: it reads the
// tables itself, tests each triangle in doubles, and finds the lamp by chance alone.
#ifndef VRN_RENDER_TESTS_SLOW_BOX_HPP
#define VRN_RENDER_TESTS_SLOW_BOX_HPP

#include <array>
#include <string>
#include <vector>

struct SlowObject {
  std::string name;
  double count = 0;                    ///< the camera's paths that met it
  std::array<double, 61> sum{};        ///< of their radiances, in bands of 5 nm from 400 nm
  double brightness = 0, squares = 0;  ///< sums of the mean over the bands, and of its square
};

/// Renders the box as its camera sees it. Returns its objects in the order of the table.
std::vector<SlowObject> renderSlowBox(int width, int height, int samples, int bounces,
                                      unsigned seed);

#endif
