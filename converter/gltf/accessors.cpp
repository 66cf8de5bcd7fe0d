#include "gltf/accessors.hpp"

#include <limits>
#include <optional>

#include "scene_plan/notices.hpp"

namespace vrn_convert {
namespace {

std::optional<Component> componentOf(int type) {
  switch (type) {
    case TINYGLTF_COMPONENT_TYPE_BYTE:
      return Component::Int8;
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_BYTE:
      return Component::UInt8;
    case TINYGLTF_COMPONENT_TYPE_SHORT:
      return Component::Int16;
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_SHORT:
      return Component::UInt16;
    case TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT:
      return Component::UInt32;
    case TINYGLTF_COMPONENT_TYPE_FLOAT:
      return Component::Float;
    default:
      return std::nullopt;
  }
}

// Whether `count` elements of `size` bytes, `stride` bytes apart, fit into a range behind an
// offset.
bool fits(std::size_t range, std::size_t offset, std::size_t count, std::size_t stride,
          std::size_t size) {
  if (offset > range) return false;
  if (count == 0) return true;
  const std::size_t room = range - offset;
  return size <= room && count - 1 <= (room - size) / stride;
}

}  // namespace

ByteRange Accessors::view(int bufferView, const std::string& what) const {
  if (bufferView < 0 || static_cast<std::size_t>(bufferView) >= model_.bufferViews.size()) {
    throw Refused(what + ": there is no buffer view " + std::to_string(bufferView));
  }
  const tinygltf::BufferView& view = model_.bufferViews[static_cast<std::size_t>(bufferView)];
  if (view.buffer < 0 || static_cast<std::size_t>(view.buffer) >= model_.buffers.size()) {
    throw Refused(what + ": there is no buffer " + std::to_string(view.buffer));
  }
  const std::vector<unsigned char>& bytes =
      model_.buffers[static_cast<std::size_t>(view.buffer)].data;
  if (view.byteOffset > bytes.size() || view.byteLength > bytes.size() - view.byteOffset) {
    throw Refused(what + ": the buffer view " + std::to_string(bufferView) +
                  " ends behind its buffer, which has " + std::to_string(bytes.size()) + " bytes");
  }
  return {bytes.data() + view.byteOffset, view.byteLength};
}

Attribute Accessors::get(int accessor, int lanes, const std::string& what) {
  if (accessor < 0 || static_cast<std::size_t>(accessor) >= model_.accessors.size()) {
    throw Refused(what + ": there is no accessor " + std::to_string(accessor));
  }
  const tinygltf::Accessor& from = model_.accessors[static_cast<std::size_t>(accessor)];
  const std::optional<Component> component = componentOf(from.componentType);
  Attribute found;
  found.lanes = tinygltf::GetNumComponentsInType(static_cast<std::uint32_t>(from.type));
  if (!component || found.lanes < 1 || (lanes != 0 && found.lanes != lanes)) {
    throw Refused(what + ": the accessor " + std::to_string(accessor) +
                  " has elements of another type than it must have");
  }
  found.component = *component;
  found.isNormalised = from.normalized;
  found.count = from.count;
  found = base(from, found, what + ": the accessor " + std::to_string(accessor));
  if (from.sparse.isSparse) {
    addSparse(from, found, what + ": the sparse accessor " + std::to_string(accessor));
  }
  return found;
}

// The elements without the sparse ones: those of a buffer view, or zeros.
Attribute Accessors::base(const tinygltf::Accessor& accessor, Attribute found,
                          const std::string& what) {
  const std::size_t size = sizeOf(found.component) * static_cast<std::size_t>(found.lanes);
  found.stride = size;
  if (accessor.bufferView < 0) {
    if (found.count > std::numeric_limits<std::size_t>::max() / size) {
      throw Refused(what + " has more elements than there can be");
    }
    made_.emplace_back(std::max<std::size_t>(1, found.count * size));
    found.data = made_.back().data();
    return found;
  }
  const ByteRange range = view(accessor.bufferView, what);
  const std::size_t stride =
      model_.bufferViews[static_cast<std::size_t>(accessor.bufferView)].byteStride;
  if (stride != 0) found.stride = stride;
  if (!fits(range.size, accessor.byteOffset, found.count, found.stride, size)) {
    throw Refused(what + " ends behind its buffer view, which has " + std::to_string(range.size) +
                  " bytes");
  }
  found.data = range.data + accessor.byteOffset;
  return found;
}

void Accessors::addSparse(const tinygltf::Accessor& accessor, Attribute& found,
                          const std::string& what) {
  const auto& sparse = accessor.sparse;
  const std::size_t size = sizeOf(found.component) * static_cast<std::size_t>(found.lanes);
  const std::optional<Component> component = componentOf(sparse.indices.componentType);
  const bool isUnsigned = component == Component::UInt8 || component == Component::UInt16 ||
                          component == Component::UInt32;
  if (!isUnsigned || sparse.count < 0 || sparse.indices.byteOffset < 0 ||
      sparse.values.byteOffset < 0) {
    throw Refused(what + " has indices or values that it cannot have");
  }
  const auto count = static_cast<std::size_t>(sparse.count);
  const ByteRange indexRange = view(sparse.indices.bufferView, what);
  const ByteRange valueRange = view(sparse.values.bufferView, what);
  const auto indexOffset = static_cast<std::size_t>(sparse.indices.byteOffset);
  const auto valueOffset = static_cast<std::size_t>(sparse.values.byteOffset);
  if (!fits(indexRange.size, indexOffset, count, sizeOf(*component), sizeOf(*component)) ||
      !fits(valueRange.size, valueOffset, count, size, size)) {
    throw Refused(what + " ends behind its buffer views");
  }
  std::vector<unsigned char> all(std::max<std::size_t>(1, found.count * size));
  for (std::size_t i = 0; i < found.count; ++i) {
    std::memcpy(all.data() + i * size, found.at(i), size);
  }
  const Attribute indices{
      indexRange.data + indexOffset, sizeOf(*component), count, *component, false, 1};
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t index = indices.index(i);
    if (index >= found.count) {
      throw Refused(what + " replaces the element " + std::to_string(index) + " of " +
                    std::to_string(found.count));
    }
    std::memcpy(all.data() + index * size, valueRange.data + valueOffset + i * size, size);
  }
  made_.push_back(std::move(all));
  found.data = made_.back().data();
  found.stride = size;
}

Attribute Accessors::indices(int accessor, const std::string& what) {
  const Attribute found = get(accessor, 1, what);
  if (found.component != Component::UInt8 && found.component != Component::UInt16 &&
      found.component != Component::UInt32) {
    throw Refused(what + ": the indices are no unsigned integers");
  }
  return found;
}

}  // namespace vrn_convert
