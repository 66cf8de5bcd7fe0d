#include "scene/scene_file.hpp"

#include <fmt/format.h>

#include <bit>
#include <cstring>
#include <istream>
#include <ostream>
#include <type_traits>
#include <utility>
#include <vector>

#include "scene/asset_block.hpp"
#include "scene/class_table.hpp"
#include "scene/object_operations.hpp"
#include "scene/reference_slots.hpp"
#include "scene/scene_access.hpp"
#include "scene/scene_stream.hpp"
#include "scene/slot_memory.hpp"

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

// Writes the parts of a scene, each item by one call. `Writer` is a StreamWriter or a FileWriter.
template <typename Writer>
class SerializeObjects {
 public:
  SerializeObjects(const Scene& scene, Writer& writer) : scene_(scene), writer_(writer) {}

  // Writes everything.
  void scene() {
    header();
    forEachClass([this](auto tag) { this->template section<typename decltype(tag)::Desc>(); });
  }

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
        if constexpr (kSlotCount<Desc> != 0) references(element.desc);
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

  template <typename Desc>
  void references(const Desc& desc) {
    if constexpr (kSingleSlotCount<Desc> != 0) write(&desc, kSingleReferencesSize<Desc>);
    if constexpr (kSingleSlotCount<Desc> != kSlotCount<Desc>) {
      for (const SlotEntry& slot : classEntry<Desc>().slots.subspan(kSingleSlotCount<Desc>)) {
        const std::vector<std::int32_t>& list = referenceList(&desc, slot);
        const auto count = static_cast<std::uint32_t>(list.size());
        write(&count, sizeof(count));
        write(list.data(), list.size() * sizeof(std::int32_t));
      }
    }
  }

  void write(const void* bytes, std::size_t size) { writer_.write(bytes, size); }

  const Scene& scene_;
  Writer& writer_;
};

// Reads the output of SerializeObjects into a new scene, each item by one call. If the input ends
// early, the rest keeps its initial state: 0 for counts and flags, -1 for references, zero bytes.
// `Reader` is a StreamReader or a FileReader.
template <typename Reader>
class DeserializeObjects {
 public:
  DeserializeObjects(Scene& scene, Reader& reader) : scene_(scene), reader_(reader) {}

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
    SlotsAhead ahead(container, count);
    // A failed stream would only return flags of 0.
    for (std::uint32_t i = 0; i < count && !reader_.failed(); ++i) {
      ahead.provide(i);
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
          references(element.desc);
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
    auto reader = [this](char* bytes, std::size_t size) {
      zeroRest(bytes, size, reader_.read(bytes, size));
    };
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
    auto* const bytes = static_cast<char*>(makeUnique(storage));
    zeroRest(bytes, size, reader_.readIntoNew(bytes, size));
    asset.storage = std::move(storage);
  }

  // The object is new, so its single slots hold -1.
  template <typename Desc>
  void references(Desc& desc) {
    if constexpr (kSingleSlotCount<Desc> != 0) read(&desc, kSingleReferencesSize<Desc>);
    if constexpr (kSingleSlotCount<Desc> != kSlotCount<Desc>) {
      for (const SlotEntry& slot : classEntry<Desc>().slots.subspan(kSingleSlotCount<Desc>)) {
        std::vector<std::int32_t>& list = referenceList(&desc, slot);
        list.assign(readCount(), -1);
        read(list.data(), list.size() * sizeof(std::int32_t));
      }
    }
  }

  void read(void* bytes, std::size_t size) { reader_.read(bytes, size); }

  // Call it with the number of bytes that were read. Sets those behind the end to zero.
  static void zeroRest(char* bytes, std::size_t size, std::size_t delivered) {
    if (delivered < size) std::memset(bytes + delivered, 0, size - delivered);
  }

  std::uint32_t readCount() {
    std::uint32_t count = 0;
    read(&count, sizeof(count));
    return count;
  }

  Scene& scene_;
  Reader& reader_;
};

// Reads a scene from a StreamReader or a FileReader, as Scene::deserialize() does.
template <typename Reader>
Result<Scene> readScene(Reader& reader, const UniqueId& id) {
  char magic[sizeof(kMagic)];
  reader.read(magic, sizeof(magic));
  if (reader.failed()) return Result<Scene>(ErrorCode::IoError);
  if (std::memcmp(magic, kMagic, sizeof(magic)) != 0) {
    reader.putBack(sizeof(magic));
    return Result<Scene>(ErrorCode::InvalidArguments,
                         "Bad header: this is not a Vornath scene binary.");
  }
  std::uint32_t version = 0;
  reader.read(&version, sizeof(version));
  if (version != kVersion) {
    return Result<Scene>(ErrorCode::VersionMismatch,
                         fmt::format("Vornath data model binary version mismatch: source has "
                                     "version {}, current version is {}",
                                     version, kVersion));
  }
  UniqueId storedId;
  reader.read(storedId.begin(), static_cast<std::size_t>(UniqueId::size()));
  Scene scene(id.isNull() ? storedId : id);
  ++scene.versions.version;
  for (std::uint32_t& groupVersion : scene.versions.groups) ++groupVersion;
  DeserializeObjects<Reader> objects(scene, reader);
  objects.sceneData();
  forEachClass([&objects](auto tag) { objects.template section<typename decltype(tag)::Desc>(); });
  return Result<Scene>(std::move(scene));
}

}  // namespace

void Scene::serialize(const Scene& scene, std::ostream& stream) {
  StreamWriter writer(stream);
  SerializeObjects<StreamWriter>(scene, writer).scene();
}

Result<Scene> Scene::deserialize(std::istream& stream, const UniqueId& id) {
  StreamReader reader(stream);
  return readScene(reader, id);
}

void writeSceneFile(const Scene& scene, const char* path) {
  FileWriter writer(path);
  SerializeObjects<FileWriter>(scene, writer).scene();
}

std::unique_ptr<Scene> readSceneFile(const char* path) {
  FileReader reader(path);
  auto read = readScene(reader, vrnt::UniqueId::null());
  return read ? std::make_unique<Scene>(std::move(*read)) : nullptr;
}

}  // namespace vrnt::data
