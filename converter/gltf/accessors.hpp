// The arrays of a glTF file.
#ifndef VRN_CONVERT_GLTF_ACCESSORS_HPP
#define VRN_CONVERT_GLTF_ACCESSORS_HPP

#include <deque>
#include <string>
#include <vector>

#include "gltf/tiny_gltf.hpp"
#include "scene_plan/attribute.hpp"

namespace vrn_convert {

/// A range of bytes in a buffer.
struct ByteRange {
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

/// Gives access to the accessors of a file, and checks that they stay inside of their buffers.
class Accessors {
 public:
  explicit Accessors(const tinygltf::Model& model) : model_(model) {}

  /// Returns the elements of an accessor. The view is valid as long as the file and this object,
  /// and until clear(). Sparse accessors are written out. `what` is for messages.
  /// Throws Refused if there is no such accessor, if it is not inside of its buffer, or if its
  /// elements have another number of components than `lanes` (0 for any).
  Attribute get(int accessor, int lanes, const std::string& what);

  /// Returns an accessor of indices: unsigned integers.
  Attribute indices(int accessor, const std::string& what);

  /// Returns the bytes of a buffer view. Throws Refused if it is not inside of its buffer.
  ByteRange view(int bufferView, const std::string& what) const;

  /// Frees the memory of sparse accessors.
  void clear() { made_.clear(); }

 private:
  Attribute base(const tinygltf::Accessor& accessor, Attribute view, const std::string& what);
  void addSparse(const tinygltf::Accessor& accessor, Attribute& view, const std::string& what);

  const tinygltf::Model& model_;
  std::deque<std::vector<unsigned char>> made_;
};

}  // namespace vrn_convert

#endif
