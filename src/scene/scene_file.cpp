#include "scene/scene_file.hpp"

#include <fmt/format.h>

#include <bit>
#include <cstring>
#include <fstream>
#include <istream>
#include <ostream>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/path.hpp"
#include "scene/asset_block.hpp"
#include "scene/class_table.hpp"
#include "scene/object_operations.hpp"
#include "scene/reference_slots.hpp"
#include "scene/scene_access.hpp"

namespace vrnt::data {

namespace {

constexpr char kMagic[8] = {'V', 'R', 'N', 'S', 'C', 'E', 'N', 'E'};

// Only the version identifies a file's layout, since records are written as they lie in memory. If
// you change a group's record, the order of groups, slots or classes, or the bytes between them,
// increment the version, add a line here, and run scripts/write_catalogue.py. Files of other
// versions are not read.
//   173  the first version of this library: 18 classes, groups as in docs/catalogue.md
constexpr std::uint32_t kVersion = 173;

static_assert(std::endian::native == std::endian::little,
              "the file is little-endian, and no code here swaps bytes");

constexpr char kLive = 1;
constexpr char kFree = 0;

// Callback for the value layer, which knows no streams: calls the function object in `user`.
template <typename Writer>
void writeThrough(const void* bytes, std::uint64_t size, void* user) {
  (*static_cast<Writer*>(user))(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}
template <typename Reader>
void readThrough(void* bytes, std::uint64_t size, void* user) {
  (*static_cast<Reader*>(user))(static_cast<char*>(bytes), static_cast<std::size_t>(size));
}

// Writes the parts of a scene to a stream, each item by one call. Does not check the stream's
// state.
class SerializeObjects {
 public:
  SerializeObjects(const Scene& scene, std::ostream& stream) : scene_(scene), stream_(stream) {}

  // Writes the magic, the version, the id and the scene-wide groups.
  void header() {
    write(kMagic, sizeof(kMagic));
    write(&kVersion, sizeof(kVersion));
    write(scene_.id.begin(), static_cast<std::size_t>(UniqueId::size()));
    write(&scene_.data, sizeof(scene_.data));
  }

  // Writes the section of a class.
  template <typename Desc>
  void section() {
    const auto& container = scene_.container<Desc>();
    const std::uint32_t count = container.size();
    write(&count, sizeof(count));
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto& element = container.slots[i];
      if (!element.live()) {
        write(&kFree, sizeof(kFree));
        continue;
      }
      write(&kLive, sizeof(kLive));
      if constexpr (kIsInstance<Desc>) {
        if constexpr (kSlotCount<Desc> != 0) references(classEntry<Desc>(), &element.desc);
        if constexpr (kGroupCount<Desc> != 0) {
          write(&element.desc.groups, sizeof(element.desc.groups));
        }
        if constexpr (ClassInfo<Desc>::kHasValue) {
          handle(Ref<Instance<Desc>>{static_cast<std::int32_t>(i)});
        }
      } else {
        record(element);
      }
    }
  }

  // Writes the value of a camera, light or material, which must have one.
  // Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
  template <typename Desc>
  void handle(Ref<Instance<Desc>> ref) {
    const Value value = scene_.container<Desc>().at(ref.index).value;
    auto writer = [this](const char* bytes, std::size_t size) { write(bytes, size); };
    vrntValuesError_t* error = nullptr;
    vrntValueSerialize(value.get(), writeThrough<decltype(writer)>, &writer, &error);
    if (error) vrnt::detail::raiseError(error);
  }

 private:
  template <typename Source>
  void record(const Program<Source>& program) {
    // Does not use the stored length: a text from a file can contain a NUL, and the text behind it
    // is dropped.
    const char* text = program.source();
    const auto length = static_cast<std::uint32_t>(std::strlen(text));
    write(&length, sizeof(length));
    write(text, length);
  }

  template <typename Desc>
  void record(const Asset<Desc>& asset) {
    write(asset.id.begin(), static_cast<std::size_t>(UniqueId::size()));
    write(&asset.desc, sizeof(asset.desc));
    // The size follows from the descriptor, since the reader knows no other size. The host must
    // ensure that the block has so many bytes.
    write(asset.storage.get()->data, asset.desc.size());
  }

  void references(const ClassEntry& owner, const void* desc) {
    if (owner.singleSlots != 0) write(desc, singleReferencesSize(owner));
    for (const SlotEntry& slot : owner.slots.subspan(owner.singleSlots)) {
      const std::vector<std::int32_t>& list = referenceList(desc, slot);
      const auto count = static_cast<std::uint32_t>(list.size());
      write(&count, sizeof(count));
      write(list.data(), list.size() * sizeof(std::int32_t));
    }
  }

  void write(const void* bytes, std::size_t size) {
    stream_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
  }

  const Scene& scene_;
  std::ostream& stream_;
};

// Reads the output of SerializeObjects into a new scene, each item by one call. If the stream ends
// early, the rest keeps its initial state: 0 for counts and flags, -1 for references, zero bytes.
class DeserializeObjects {
 public:
  DeserializeObjects(Scene& scene, std::istream& stream) : scene_(scene), stream_(stream) {}

  // Reads the scene-wide groups.
  void sceneData() { read(&scene_.data, sizeof(scene_.data)); }

  // Reads the section of a class.
  template <typename Desc>
  void section() {
    auto& container = writable<Desc>(scene_);
    // Neither this count nor the counts and sizes below are checked: the remaining length of a
    // stream is unknown.
    const std::uint32_t count = readCount();
    // Constructs each slot just before it is read, so that its memory is in the cache.
    reserveSlots(container, count);
    // A failed stream would only return flags of 0.
    for (std::uint32_t i = 0; i < count && !stream_.fail(); ++i) {
      container.grow(i + 1);
      char flag = kFree;
      read(&flag, sizeof(flag));
      if (flag != kLive) continue;
      auto& element = container.slots[i];
      if constexpr (kIsInstance<Desc>) {
        element.deleted = false;
        container.occupied(i);
        countClassChange<Desc>(scene_);
        if constexpr (kSlotCount<Desc> != 0) {
          references(classEntry<Desc>(), &element.desc);
          countReferenceChange(element);
        }
        if constexpr (kGroupCount<Desc> != 0) {
          read(&element.desc.groups, sizeof(element.desc.groups));
          for (std::uint32_t& groupVersion : element.groupVersions) ++groupVersion;
          ++element.version;
        }
        if constexpr (ClassInfo<Desc>::kHasValue) {
          handle(Ref<Instance<Desc>>{static_cast<std::int32_t>(i)});
        }
      } else {
        record(element);
        container.occupied(i);
        countClassChange<Desc>(scene_);
      }
    }
    container.grow(count);
  }

  // Reads the value of a camera, light or material.
  // Errors: throws vrnt::Exception or std::bad_alloc, as the value layer reports.
  template <typename Desc>
  void handle(Ref<Instance<Desc>> ref) {
    auto reader = [this](char* bytes, std::size_t size) { readOrZero(bytes, size); };
    vrntValuesError_t* error = nullptr;
    vrntValue_t* value = vrntValueDeserialize(readThrough<decltype(reader)>, &reader, &error);
    if (!value) vrnt::detail::raiseError(error);
    Instance<Desc>& object = writable<Desc>(scene_).at(ref.index);
    object.value = Value::adopt(value);
    ++object.version;
  }

 private:
  template <typename Source>
  void record(Program<Source>& program) {
    const std::uint32_t length = readCount();
    program.text = allocateText(length);
    program.length = length;
    read(program.text, length);
    program.id = UniqueId::hash(program.text, length);
  }

  template <typename Desc>
  void record(Asset<Desc>& asset) {
    read(asset.id.begin(), static_cast<std::size_t>(UniqueId::size()));
    read(&asset.desc, sizeof(asset.desc));
    const std::size_t size = asset.desc.size();
    AssetHandle storage = allocateAsset(size);
    readOrZero(static_cast<char*>(makeUnique(storage)), size);
    asset.storage = std::move(storage);
  }

  // The object is new, so its single slots hold -1.
  void references(const ClassEntry& owner, void* desc) {
    if (owner.singleSlots != 0) read(desc, singleReferencesSize(owner));
    for (const SlotEntry& slot : owner.slots.subspan(owner.singleSlots)) {
      std::vector<std::int32_t>& list = referenceList(desc, slot);
      list.assign(readCount(), -1);
      read(list.data(), list.size() * sizeof(std::int32_t));
    }
  }

  void read(void* bytes, std::size_t size) {
    stream_.read(static_cast<char*>(bytes), static_cast<std::streamsize>(size));
  }

  // Reads bytes; those behind the end of the stream become zero.
  void readOrZero(char* bytes, std::size_t size) {
    read(bytes, size);
    const auto delivered = static_cast<std::size_t>(stream_.gcount());
    if (delivered < size) std::memset(bytes + delivered, 0, size - delivered);
  }

  std::uint32_t readCount() {
    std::uint32_t count = 0;
    read(&count, sizeof(count));
    return count;
  }

  Scene& scene_;
  std::istream& stream_;
};

// The size of the stream's buffer in bytes: most items of a scene are small.
constexpr std::size_t kBufferSize = std::size_t{1} << 20;

// Sets the buffer of a stream, which must not be open yet, and opens it. The buffer must outlive
// the stream.
template <typename Stream>
void openBuffered(Stream& stream, char* buffer, const char* path, std::ios::openmode mode) {
  stream.rdbuf()->pubsetbuf(buffer, static_cast<std::streamsize>(kBufferSize));
  stream.open(vrnt::detail::pathFromUtf8(path), mode);
}

}  // namespace

void Scene::serialize(const Scene& scene, std::ostream& stream) {
  SerializeObjects objects(scene, stream);
  objects.header();
  forEachClass([&objects](auto tag) { objects.section<typename decltype(tag)::Desc>(); });
}

Result<Scene> Scene::deserialize(std::istream& stream, const UniqueId& id) {
  char magic[sizeof(kMagic)];
  stream.read(magic, sizeof(magic));
  if (stream.fail()) return Result<Scene>(ErrorCode::IoError);
  if (std::memcmp(magic, kMagic, sizeof(magic)) != 0) {
    stream.seekg(-static_cast<std::streamoff>(sizeof(magic)), std::ios::cur);
    return Result<Scene>(ErrorCode::InvalidArguments,
                         "Bad header: this is not a Vornath scene binary.");
  }
  std::uint32_t version = 0;
  stream.read(reinterpret_cast<char*>(&version), sizeof(version));
  if (version != kVersion) {
    return Result<Scene>(ErrorCode::VersionMismatch,
                         fmt::format("Vornath data model binary version mismatch: source has "
                                     "version {}, current version is {}",
                                     version, kVersion));
  }
  UniqueId storedId;
  stream.read(reinterpret_cast<char*>(storedId.begin()), UniqueId::size());
  Scene scene(id.isNull() ? storedId : id);
  ++scene.versions.version;
  for (std::uint32_t& groupVersion : scene.versions.groups) ++groupVersion;
  DeserializeObjects objects(scene, stream);
  objects.sceneData();
  forEachClass([&objects](auto tag) { objects.section<typename decltype(tag)::Desc>(); });
  return Result<Scene>(std::move(scene));
}

void writeSceneFile(const Scene& scene, const char* path) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::ofstream stream;
  openBuffered(stream, buffer.get(), path, std::ios::binary | std::ios::out | std::ios::trunc);
  Scene::serialize(scene, stream);
}

std::unique_ptr<Scene> readSceneFile(const char* path) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kBufferSize);
  std::ifstream stream;
  openBuffered(stream, buffer.get(), path, std::ios::binary | std::ios::in);
  auto read = Scene::deserialize(stream, vrnt::UniqueId::null());
  return read ? std::make_unique<Scene>(std::move(*read)) : nullptr;
}

}  // namespace vrnt::data
