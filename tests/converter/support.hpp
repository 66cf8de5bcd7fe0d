// Small files for the tests of the converter, and what becomes of them.
#ifndef VRN_CONVERT_TESTS_SUPPORT_HPP
#define VRN_CONVERT_TESTS_SUPPORT_HPP

#include <array>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "assimp/assimp_reader.hpp"
#include "gltf/gltf_reader.hpp"
#include "scene_plan/notices.hpp"
#include "vornath_data/host.hpp"
#include "vornath_toolkit/vrtk.h"
#include "writing/scene_writer.hpp"

namespace vrn_convert_tests {

using vrnt::host::Object;
using vrnt::host::Record;
using Float2 = std::array<float, 2>;
using Float3 = std::array<float, 3>;
using Float4 = std::array<float, 4>;

inline std::string base64(const std::string& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t word = 0;
    for (std::size_t j = 0; j < 3; ++j) {
      word = word << 8 | (i + j < bytes.size() ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    }
    for (std::size_t j = 0; j < 4; ++j) {
      text += i + j <= bytes.size() ? kDigits[(word >> (18 - 6 * j)) & 63U] : '=';
    }
  }
  return text;
}

/// The buffer of a glTF file, with a view for each array.
class Buffer {
 public:
  /// Adds an array and returns its view.
  template <typename T>
  int add(const std::vector<T>& numbers, std::size_t stride = 0) {
    while (bytes_.size() % 4 != 0) bytes_ += '\0';
    views_ += (count_ == 0 ? "" : ", ") + std::string("{ \"buffer\": 0, \"byteOffset\": ") +
              std::to_string(bytes_.size()) +
              ", \"byteLength\": " + std::to_string(numbers.size() * sizeof(T)) +
              (stride == 0 ? "" : ", \"byteStride\": " + std::to_string(stride)) + " }";
    bytes_.append(reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(T));
    return count_++;
  }
  int addBytes(const std::string& bytes) {
    return add(std::vector<char>(bytes.begin(), bytes.end()));
  }
  /// Returns the members "buffers" and "bufferViews", with the bytes in the text.
  std::string json() const {
    return "\"buffers\": [ { \"byteLength\": " + std::to_string(bytes_.size()) +
           ", \"uri\": \"data:application/octet-stream;base64," + base64(bytes_) + "\" } ], " +
           viewsJson();
  }
  /// The same without the bytes, for a .glb or another file.
  std::string jsonWithout(const std::string& uri = "") const {
    return "\"buffers\": [ { \"byteLength\": " + std::to_string(bytes_.size()) +
           (uri.empty() ? "" : ", \"uri\": \"" + uri + "\"") + " } ], " + viewsJson();
  }
  const std::string& bytes() const { return bytes_; }

 private:
  std::string viewsJson() const { return "\"bufferViews\": [ " + views_ + " ]"; }
  std::string bytes_;
  std::string views_;
  int count_ = 0;
};

inline std::string accessor(int view, int type, std::size_t count, const std::string& kind,
                            const std::string& more = "") {
  return "{ \"bufferView\": " + std::to_string(view) +
         ", \"componentType\": " + std::to_string(type) + ", \"count\": " + std::to_string(count) +
         ", \"type\": \"" + kind + "\"" + more + " }";
}

inline std::string gltf(const std::string& members) {
  return "{ \"asset\": { \"version\": \"2.0\" }, " + members + " }";
}

/// A .glb of a text and the bytes of its buffer.
inline std::string glb(std::string json, std::string bytes) {
  while (json.size() % 4 != 0) json += ' ';
  while (bytes.size() % 4 != 0) bytes += '\0';
  const auto word = [](std::size_t number) {
    std::string text(4, '\0');
    const auto bits = static_cast<std::uint32_t>(number);
    std::memcpy(text.data(), &bits, sizeof bits);
    return text;
  };
  return "glTF" + word(2) + word(28 + json.size() + bytes.size()) + word(json.size()) + "JSON" +
         json + word(bytes.size()) + std::string("BIN\0", 4) + bytes;
}

/// A triangle in the plane z = 0 with a normal along z: accessors 0 to 2 are its positions, its
/// normals and its indices. `members` may use the mesh 0 with its primitive.
inline std::string triangleGltf(const std::string& members, const std::string& ofPrimitive = "") {
  Buffer buffer;
  const int positions = buffer.add<float>({0, 0, 0, 2, 0, 0, 0, 1, 0});
  const int normals = buffer.add<float>({0, 0, 1, 0, 0, 1, 0, 0, 1});
  const int indices = buffer.add<std::uint16_t>({0, 1, 2});
  return gltf(buffer.json() + ", \"accessors\": [ " + accessor(positions, 5126, 3, "VEC3") + ", " +
              accessor(normals, 5126, 3, "VEC3") + ", " + accessor(indices, 5123, 3, "SCALAR") +
              " ], \"meshes\": [ { \"name\": \"tri\", \"primitives\": [ { \"attributes\": { "
              "\"POSITION\": 0, \"NORMAL\": 1 }, \"indices\": 2" +
              ofPrimitive + " } ] } ], " + members);
}

/// A scene and what was told about it.
struct Converted {
  vrnt::host::Scene scene;
  std::vector<std::string> notices;
  bool hasLoss = false;
  std::map<std::string, std::vector<std::string>> names;

  std::uint32_t count(std::uint32_t objectClass) const {
    return vrdmContainerSize(scene.get(), objectClass);
  }
  bool tells(const std::string& words) const {
    for (const std::string& notice : notices) {
      if (notice.find(words) != std::string::npos) return true;
    }
    return false;
  }
  std::int32_t reference(std::uint32_t objectClass, std::int32_t index, const char* slot) const {
    return vrdmGetReference(scene.get(), objectClass, index,
                            vrnt::host::slotNumber(objectClass, slot));
  }
  Record value(std::uint32_t objectClass, std::int32_t index) const {
    return scene.value({objectClass, index});
  }
  Record group(std::uint32_t objectClass, std::int32_t index, const char* name) const {
    return scene.group({objectClass, index}, name);
  }
  /// A row of the matrix of an object.
  Float4 row(std::uint32_t objectClass, std::int32_t index, const char* axis) const {
    return group(objectClass, index, "Transformation").get<Float4>(std::string("matrix.") + axis);
  }
  std::string program(std::uint32_t objectClass, std::uint32_t programs, std::int32_t index) const {
    return vrdmGetProgramSource(scene.get(), programs, reference(objectClass, index, "program"));
  }
};

/// A mesh of a scene.
struct MeshBytes {
  vrdmMeshDesc desc{};
  const std::uint32_t* words = nullptr;

  std::vector<std::uint32_t> indices() const { return {words, words + 3 * desc.triangles}; }
  const float* vertex(int index) const {
    return reinterpret_cast<const float*>(words + 3 * desc.triangles) + 9 * index;
  }
  Float3 position(int index) const { return three(vertex(index)); }
  Float3 normal(int index) const { return three(vertex(index) + 3); }
  Float3 tangent(int index) const { return three(vertex(index) + 6); }
  Float2 uv(int set, int index) const {
    const float* const at = vertex(desc.vertices) + 2 * (set * desc.vertices + index);
    return {at[0], at[1]};
  }

 private:
  static Float3 three(const float* at) { return {at[0], at[1], at[2]}; }
};

inline MeshBytes meshOf(const Converted& from, std::int32_t index) {
  MeshBytes mesh;
  AssetStorage** const storage =
      vrdmGetAssetStorage(from.scene.get(), VRDM_CLASS_MESH, index, &mesh.desc);
  mesh.words = static_cast<const std::uint32_t*>((*storage)->data);
  return mesh;
}

/// The spectrum of a field as RGB; (-1, -1, -1) if it is none in RGB.
inline Float3 rgb(const Record& record, const char* label) {
  const vrnt::host::SpectrumField field(record.value().type(), label);
  const std::vector<float> numbers = field.numbers(record.value());
  if (field.encoding(record.value()) != VRNT_ENCODING_RGB || numbers.size() != 3) {
    return {-1, -1, -1};
  }
  return {numbers[0], numbers[1], numbers[2]};
}

inline bool has(const Record& record, const std::string& label) {
  const vrntType_t* const type = record.value().type();
  for (std::uint32_t i = 0; i < vrntTypeFieldCount(type); ++i) {
    if (label == vrntTypeFieldLabel(type, i)) return true;
  }
  return false;
}

inline vrn_convert::Source sourceOf(const std::string& bytes, const std::string& format) {
  vrn_convert::Source source;
  source.format = format;
  source.bytes = reinterpret_cast<const unsigned char*>(bytes.data());
  source.size = bytes.size();
  return source;
}

inline Converted written(vrn_convert::ScenePlan plan, vrn_convert::Notices& notices) {
  vrn_convert::WrittenScene scene = vrn_convert::writeScene(std::move(plan), notices);
  return {vrnt::host::Scene(scene.scene.release()), notices.messages(), notices.hasLoss(),
          std::move(scene.names)};
}

inline Converted convert(const vrn_convert::Source& source) {
  vrn_convert::Notices notices;
  const bool isGltf = source.format == "gltf" || source.format == "glb";
  return written(
      isGltf ? vrn_convert::readGltf(source, notices) : vrn_convert::readAssimp(source, notices),
      notices);
}

/// Converts the text of a .gltf.
inline Converted convertGltf(const std::string& text) { return convert(sourceOf(text, "gltf")); }

/// The reason why a file is refused; empty if it is not.
inline std::string refusal(const std::string& bytes, const std::string& format = "gltf") {
  try {
    convert(sourceOf(bytes, format));
  } catch (const vrn_convert::Refused& refused) {
    return refused.what();
  }
  return "";
}

/// The warnings and errors that a check of a scene finds.
inline std::string checked(const Converted& from) {
  vrtkReport* report = nullptr;
  if (vrtkSceneValidate(from.scene.get(), nullptr, &report, nullptr) != VRTK_OK) return "no check";
  std::string text;
  for (std::uint64_t i = 0; i < vrtkReportMessageCount(report); ++i) {
    const vrtkMessage* const message = vrtkReportMessage(report, i);
    text += std::string(message->code) + " " + message->address + "\n";
  }
  vrtkReportDestroy(report);
  return text;
}

inline constexpr char kOneNode[] = "\"nodes\": [ { \"mesh\": 0, \"name\": \"it\" } ]";

}  // namespace vrn_convert_tests

#endif
