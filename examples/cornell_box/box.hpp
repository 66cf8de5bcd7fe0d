// The measured box, read from its files and converted to metres, with its meshes and spectra.
#ifndef CORNELL_BOX_BOX_HPP
#define CORNELL_BOX_BOX_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "vornath_data/host.hpp"

namespace cornell_box {

using Spectrum = vrnt::host::SampledSpectrum;
using Vector = std::array<double, 3>;

Vector operator+(const Vector& a, const Vector& b);
Vector operator-(const Vector& a, const Vector& b);
Vector operator*(const Vector& a, double factor);
Vector cross(const Vector& a, const Vector& b);
Vector normalised(const Vector& a);

/// A quadrilateral with its corners in sequence, counter-clockwise as seen from its front.
using Quad = std::array<Vector, 4>;

/// A part of the box: one material and one or more faces.
struct Part {
  std::string name;
  std::string material;
  std::vector<Quad> faces;
};

struct BoxCamera {
  Vector position, direction, up;
  double focalLength = 0, filmWidth = 0, filmHeight = 0;
};

struct Box {
  std::vector<Part> parts;  ///< in the order of the file
  std::map<std::string, Spectrum> reflectances;
  Spectrum emission;  ///< of the lamp; relative, without a unit
  BoxCamera camera;
};

struct BoxFiles {
  std::string geometry, reflectance, light, camera;
};

/// Reads all four files. An error names the file and the line.
Box readBox(const BoxFiles& files);

/// A mesh for a scene. buildMesh() documents the layout of its words.
struct Mesh {
  vrdmMeshDesc descriptor{};
  std::vector<std::uint32_t> words;
};

Mesh buildMesh(const std::vector<Quad>& faces);

}  // namespace cornell_box

#endif
