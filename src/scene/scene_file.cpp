#include "scene_file.hpp"

#include <fmt/format.h>

#include <array>
#include <bit>
#include <cstring>
#include <istream>
#include <ostream>
#include <type_traits>
#include <utility>

#include "asset_block.hpp"
#include "object_operations.hpp"
#include "scene_access.hpp"

namespace vrnt::data {

namespace {

constexpr char kMagic[8] = {'V', 'R', 'N', 'S', 'C', 'E', 'N', 'E'};

// A file's version says all about its layout, since plain records go to file as they lie in memory.
// Whoever changes a group's record, the order of groups, slots or classes, or what stands between
// them, raises the number and adds a line here, and runs scripts/write_catalogue.py. Other versions
// are not read.
//   173  the first of this library: 18 classes, group blocks as in docs/catalogue.md
constexpr std::uint32_t kVersion = 173;

static_assert(std::endian::native == std::endian::little,
              "the file is little-endian, and nothing here swaps bytes");

constexpr char kLive = 1;
constexpr char kFree = 0;

template <typename Link>
inline constexpr bool kIsSingle = false;
template <typename Target>
inline constexpr bool kIsSingle<Ref<Target>> = true;

// The single slots of a class come before its lists, in the file as in its Desc, so that they are
// one run of words.
template <typename Desc>
constexpr bool singleSlotsComeFirst() {
  bool first = true;
  bool afterList = false;
  forEachSlot<Desc>([&](const auto& slot, auto) {
    using Link = typename std::decay_t<decltype(slot)>::Member;
    if (!kIsSingle<Link>) afterList = true;
    if (kIsSingle<Link> && afterList) first = false;
  });
  return first;
}

template <typename Desc>
constexpr std::size_t countSingleSlots() {
  static_assert(singleSlotsComeFirst<Desc>(), "scene files have a class's lists last");
  std::size_t count = 0;
  forEachSlot<Desc>([&count](const auto& slot, auto) {
    if (kIsSingle<typename std::decay_t<decltype(slot)>::Member>) ++count;
  });
  return count;
}

// The value layer's callbacks lead to a function object, so that it sees no stream.
template <typename Writer>
void writeThrough(const void* bytes, std::uint64_t size, void* user) {
  (*static_cast<Writer*>(user))(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
}
template <typename Reader>
void readThrough(void* bytes, std::uint64_t size, void* user) {
  (*static_cast<Reader*>(user))(static_cast<char*>(bytes), static_cast<std::size_t>(size));
}

}  // namespace

void SerializeObjects::write(const void* bytes, std::size_t size) {
  stream_.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
}

void SerializeObjects::header() {
  write(kMagic, sizeof(kMagic));
  write(&kVersion, sizeof(kVersion));
  write(scene_.id.begin(), static_cast<std::size_t>(UniqueId::size()));
  write(&scene_.data, sizeof(scene_.data));
}

template <typename Desc>
void SerializeObjects::section() {
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
      references(element);
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

template <typename Source>
void SerializeObjects::record(const Program<Source>& program) {
  // Not the stored length: a text from a file can hold a NUL, and what is behind it isn't kept.
  const char* text = program.source();
  const auto length = static_cast<std::uint32_t>(std::strlen(text));
  write(&length, sizeof(length));
  write(text, length);
}

template <typename Desc>
void SerializeObjects::record(const Asset<Desc>& asset) {
  write(asset.id.begin(), static_cast<std::size_t>(UniqueId::size()));
  write(&asset.desc, sizeof(asset.desc));
  // As many bytes as the descriptor says: the reader knows no other number. That the block holds
  // them is the host's to see to.
  write(asset.storage.get()->data, asset.desc.size());
}

template <typename Desc>
void SerializeObjects::references(const Instance<Desc>& object) {
  constexpr std::size_t singles = countSingleSlots<Desc>();
  if constexpr (singles != 0) {
    std::array<std::int32_t, singles> words;
    std::size_t next = 0;
    forEachSlot<Desc>([&](const auto& slot, auto) {
      using Link = typename std::decay_t<decltype(slot)>::Member;
      if constexpr (kIsSingle<Link>) words[next++] = (object.desc.*slot.member).index;
    });
    write(words.data(), sizeof(words));
  }
  forEachSlot<Desc>([&](const auto& slot, auto) {
    using Link = typename std::decay_t<decltype(slot)>::Member;
    if constexpr (!kIsSingle<Link>) list((object.desc.*slot.member).words);
  });
}

void SerializeObjects::list(const std::vector<std::int32_t>& words) {
  const auto count = static_cast<std::uint32_t>(words.size());
  write(&count, sizeof(count));
  write(words.data(), words.size() * sizeof(std::int32_t));
}

template <typename Desc>
void SerializeObjects::handle(Ref<Instance<Desc>> ref) {
  const Value value = scene_.container<Desc>().at(ref.index).value;
  auto writer = [this](const char* bytes, std::size_t size) { write(bytes, size); };
  vrntValuesError_t* error = nullptr;
  vrntValueSerialize(value.get(), writeThrough<decltype(writer)>, &writer, &error);
  if (error) vrnt::detail::raiseError(error);
}

void DeserializeObjects::read(void* bytes, std::size_t size) {
  stream_.read(static_cast<char*>(bytes), static_cast<std::streamsize>(size));
}

std::uint32_t DeserializeObjects::readCount() {
  std::uint32_t count = 0;
  read(&count, sizeof(count));
  return count;
}

void DeserializeObjects::sceneData() { read(&scene_.data, sizeof(scene_.data)); }

template <typename Desc>
void DeserializeObjects::section() {
  auto& container = writable<Desc>(scene_);
  // Trusted as it stands, and so are all counts and sizes below: nothing tells how much a stream
  // still holds.
  const std::uint32_t count = readCount();
  // Each slot is made just before it is read, while its memory is at hand.
  container.slots.reserve(count);
  // A failed stream would give no more than flags of 0.
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
        references(element);
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

template <typename Source>
void DeserializeObjects::record(Program<Source>& program) {
  const std::uint32_t length = readCount();
  program.text = allocateText(length);
  program.length = length;
  read(program.text, length);
  program.id = UniqueId::hash(program.text, length);
}

template <typename Desc>
void DeserializeObjects::record(Asset<Desc>& asset) {
  read(asset.id.begin(), static_cast<std::size_t>(UniqueId::size()));
  read(&asset.desc, sizeof(asset.desc));
  const std::size_t size = asset.desc.size();
  AssetHandle storage = allocateAsset(size);
  auto* bytes = static_cast<char*>(makeUnique(storage));
  read(bytes, size);
  const auto delivered = static_cast<std::size_t>(stream_.gcount());
  if (delivered < size) std::memset(bytes + delivered, 0, size - delivered);
  asset.storage = std::move(storage);
}

template <typename Desc>
void DeserializeObjects::references(Instance<Desc>& object) {
  constexpr std::size_t singles = countSingleSlots<Desc>();
  if constexpr (singles != 0) {
    std::array<std::int32_t, singles> words;
    words.fill(-1);
    read(words.data(), sizeof(words));
    std::size_t next = 0;
    forEachSlot<Desc>([&](const auto& slot, auto) {
      using Link = typename std::decay_t<decltype(slot)>::Member;
      if constexpr (kIsSingle<Link>) (object.desc.*slot.member).index = words[next++];
    });
  }
  forEachSlot<Desc>([&](const auto& slot, auto) {
    using Link = typename std::decay_t<decltype(slot)>::Member;
    if constexpr (!kIsSingle<Link>) list((object.desc.*slot.member).words);
  });
}

void DeserializeObjects::list(std::vector<std::int32_t>& words) {
  words.assign(readCount(), -1);
  read(words.data(), words.size() * sizeof(std::int32_t));
}

template <typename Desc>
void DeserializeObjects::handle(Ref<Instance<Desc>> ref) {
  auto reader = [this](char* bytes, std::size_t size) {
    read(bytes, size);
    const auto delivered = static_cast<std::size_t>(stream_.gcount());
    if (delivered < size) std::memset(bytes + delivered, 0, size - delivered);
  };
  vrntValuesError_t* error = nullptr;
  vrntValue_t* value = vrntValueDeserialize(readThrough<decltype(reader)>, &reader, &error);
  if (!value) vrnt::detail::raiseError(error);
  Instance<Desc>& object = writable<Desc>(scene_).at(ref.index);
  object.value = Value::adopt(value);
  ++object.version;
}

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

}  // namespace vrnt::data
