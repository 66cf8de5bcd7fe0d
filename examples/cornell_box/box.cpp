#include "box.hpp"

#include <cmath>
#include <cstring>

#include "csv.hpp"

namespace cornell_box {

Vector operator+(const Vector& a, const Vector& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}

Vector operator-(const Vector& a, const Vector& b) { return a + b * -1.0; }

Vector operator*(const Vector& a, double factor) {
  return {a[0] * factor, a[1] * factor, a[2] * factor};
}

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Vector normalised(const Vector& a) {
  return a * (1.0 / std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]));
}

namespace {

Vector vectorAt(const Csv& csv, std::size_t row) {
  return {csv.number(row, "x"), csv.number(row, "y"), csv.number(row, "z")};
}

Vector metres(const Vector& millimetres) {
  return {millimetres[0] / 1000.0, millimetres[1] / 1000.0, millimetres[2] / 1000.0};
}

bool isZero(const Vector& a) { return a[0] == 0 && a[1] == 0 && a[2] == 0; }

std::vector<Part> readParts(const std::string& path) {
  const Csv csv(path, {"object", "face", "material", "corner", "x", "y", "z"});
  if (csv.rows() % 4 != 0) csv.fail(csv.rows() - 1, "the last face has no four corners");
  std::vector<Part> parts;
  for (std::size_t row = 0; row < csv.rows(); row += 4) {
    const std::string& name = csv.text(row, "object");
    const std::string& material = csv.text(row, "material");
    Quad quad;
    for (std::size_t corner = 0; corner < 4; ++corner) {
      const std::size_t at = row + corner;
      if (csv.text(at, "corner") != std::to_string(corner)) {
        csv.fail(at, "corner " + std::to_string(corner) + " of a face was expected here");
      }
      for (const char* column : {"object", "face", "material"}) {
        if (csv.text(at, column) != csv.text(row, column)) {
          csv.fail(at, std::string("the corners of a face differ in their ") + column);
        }
      }
      quad[corner] = metres(vectorAt(csv, at));
    }
    for (std::size_t corner = 0; corner < 4; ++corner) {
      const Vector& here = quad[corner];
      if (isZero(cross(quad[(corner + 1) % 4] - here, quad[(corner + 3) % 4] - here))) {
        csv.fail(row + corner, "two sides of the face lie on one line");
      }
    }
    if (parts.empty() || parts.back().name != name) {
      for (const Part& part : parts) {
        if (part.name == name) csv.fail(row, "the rows of '" + name + "' don't stand together");
      }
      parts.push_back({name, material, {}});
    }
    if (parts.back().material != material) {
      csv.fail(row, "'" + name + "' has more than one material");
    }
    parts.back().faces.push_back(quad);
  }
  return parts;
}

// Reads the wavelengths of a spectrum. They must increase, and there must be two at least.
std::vector<float> readWavelengths(const Csv& csv) {
  std::vector<float> wavelengths;
  for (std::size_t row = 0; row < csv.rows(); ++row) {
    wavelengths.push_back(csv.single(row, "wavelength"));
    if (wavelengths.back() <= (row == 0 ? 0.0F : wavelengths[row - 1])) {
      csv.fail(row, "the wavelengths don't rise");
    }
  }
  if (wavelengths.size() < 2) csv.fail(0, "a spectrum needs two wavelengths at least");
  return wavelengths;
}

// Reads the measured reflectances. Each holds from its wavelength to that of the next row. The last
// one holds over as many nm as the one before it.
std::map<std::string, Spectrum> readReflectances(const std::string& path) {
  const Csv csv(path, {"wavelength", "white", "green", "red"});
  const std::vector<float> wavelengths = readWavelengths(csv);
  const std::size_t count = wavelengths.size();
  std::map<std::string, Spectrum> reflectances;
  for (const char* material : {"white", "green", "red"}) {
    Spectrum spectrum{wavelengths, {}, 2 * wavelengths[count - 1] - wavelengths[count - 2]};
    for (std::size_t row = 0; row < count; ++row) {
      const float reflectance = csv.single(row, material);
      if (reflectance < 0.0F || reflectance > 1.0F)
        csv.fail(row, "a fraction of 0 to 1 was expected");
      spectrum.amplitudes.push_back(reflectance);
    }
    reflectances[material] = spectrum;
  }
  return reflectances;
}

// Reads the emission of the lamp, which has few points. They are joined by straight lines, and each
// line is cut into steps of at most 5 nm. A step has the height of the line at the step's middle,
// which is the line's mean over the step.
Spectrum readEmission(const std::string& path) {
  constexpr double kStep = 5.0;
  const Csv csv(path, {"wavelength", "emission"});
  const std::vector<float> points = readWavelengths(csv);
  Spectrum emission;
  for (std::size_t row = 0; row + 1 < points.size(); ++row) {
    const double begin = csv.number(row, "wavelength");
    const double width = csv.number(row + 1, "wavelength") - begin;
    const double low = csv.number(row, "emission");
    const double high = csv.number(row + 1, "emission");
    const double steps = std::ceil(width / kStep);
    for (double step = 0; step < steps; ++step) {
      emission.wavelengths.push_back(static_cast<float>(begin + width * (step / steps)));
      emission.amplitudes.push_back(
          static_cast<float>(low + (high - low) * ((step + 0.5) / steps)));
    }
  }
  emission.end = points.back();
  return emission;
}

BoxCamera readCamera(const std::string& path) {
  const Csv csv(path, {"quantity", "unit", "x", "y", "z"});
  const auto row = [&](const std::string& quantity, const std::string& unit) {
    for (std::size_t at = 0; at < csv.rows(); ++at) {
      if (csv.text(at, "quantity") != quantity) continue;
      if (csv.text(at, "unit") != unit) csv.fail(at, "the unit should be " + unit);
      return at;
    }
    csv.fail(csv.rows() - 1, "the file ends without '" + quantity + "'");
  };
  BoxCamera camera;
  camera.position = metres(vectorAt(csv, row("position", "mm")));
  camera.direction = vectorAt(csv, row("direction", "1"));
  camera.up = vectorAt(csv, row("up", "1"));
  camera.focalLength = csv.number(row("focal_length", "m"), "x");
  camera.filmWidth = csv.number(row("film_width", "m"), "x");
  camera.filmHeight = csv.number(row("film_height", "m"), "x");
  if (isZero(cross(camera.direction, camera.up))) {
    csv.fail(row("up", "1"), "up and the direction of view lie on one line");
  }
  return camera;
}

}  // namespace

Box readBox(const BoxFiles& files) {
  Box box;
  box.parts = readParts(files.geometry);
  box.reflectances = readReflectances(files.reflectance);
  box.emission = readEmission(files.light);
  box.camera = readCamera(files.camera);
  return box;
}

// A scene stores the size of a mesh in bytes, but gives the bytes no order. The programs that write
// and read them define it. In this file all data are 32-bit words, in these blocks in sequence:
//
//   3 indices for each triangle, counter-clockwise as seen from the front
//   9 floats for each vertex: position (m), normal, tangent (the direction in which u increases)
//   2 floats for each vertex: u and v of the single set of texture coordinates
//
// Each face has vertices of its own, so that edges stay sharp. Each face has two triangles, because
// its four measured corners need not lie in a plane. The normal of a vertex is perpendicular to the
// two sides that meet in it. u increases from corner 0 to 1, v from corner 0 to 3.
Mesh buildMesh(const std::vector<Quad>& faces) {
  Mesh mesh{{0, 0, 1, 0}, {}};
  const auto put = [&mesh](double number) {
    const float single = static_cast<float>(number);
    std::uint32_t word;
    std::memcpy(&word, &single, sizeof word);
    mesh.words.push_back(word);
  };
  const auto putVector = [&put](const Vector& vector) {
    for (const double number : vector) put(number);
  };
  for (std::size_t face = 0; face < faces.size(); ++face) {
    for (const std::uint32_t corner : {0U, 1U, 2U, 0U, 2U, 3U}) {
      mesh.words.push_back(static_cast<std::uint32_t>(4 * face) + corner);
    }
  }
  for (const Quad& quad : faces) {
    for (std::size_t corner = 0; corner < 4; ++corner) {
      const Vector& here = quad[corner];
      const Vector next = quad[(corner + 1) % 4] - here;
      const Vector previous = quad[(corner + 3) % 4] - here;
      putVector(here);
      putVector(normalised(cross(next, previous)));
      putVector(normalised(corner < 2 ? quad[1] - quad[0] : quad[2] - quad[3]));
    }
  }
  for (std::size_t face = 0; face < faces.size(); ++face) {
    for (const double coordinate : {0.0, 0.0, 1.0, 0.0, 1.0, 1.0, 0.0, 1.0}) put(coordinate);
  }
  mesh.descriptor.triangles = static_cast<std::int32_t>(2 * faces.size());
  mesh.descriptor.vertices = static_cast<std::int32_t>(4 * faces.size());
  return mesh;
}

}  // namespace cornell_box
