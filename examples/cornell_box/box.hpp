// The measured box as the files tell it, in metres, with the meshes and spectra made from it.
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

/// A quadrilateral, its corners in order around it and counter-clockwise when seen from its front.
using Quad = std::array<Vector, 4>;

/// A part of the box: one material, one or more faces.
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
  std::vector<Part> parts;  ///< in the file's order
  std::map<std::string, Spectrum> reflectances;
  Spectrum emission;  ///< of the lamp, without a unit
  BoxCamera camera;
};

struct BoxFiles {
  std::string geometry, reflectance, light, camera;
};

/// Reads all four files. Errors name the file and the line.
Box readBox(const BoxFiles& files);

/// A mesh for a scene, in the arrangement that buildMesh() documents.
struct Mesh {
  vrdmMeshDesc descriptor{};
  std::vector<std::uint32_t> words;
};

Mesh buildMesh(const std::vector<Quad>& faces);

}  // namespace cornell_box

#endif
