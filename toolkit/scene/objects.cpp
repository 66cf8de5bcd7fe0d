#include "scene/objects.hpp"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <type_traits>

#include "foundation/failure.hpp"
#include "vornath_data/asset_records.h"
#include "vornath_data/scene.hpp"
#include "vornath_data/texture.hpp"

namespace vrtk {
namespace {

const char* named(const char* name) { return std::strcmp(name, "Unknown") == 0 ? nullptr : name; }

const char* formatName(std::int32_t code) {
  return named(vrnt::toString(static_cast<vrnt::TextureFormat>(code)));
}

const char* layoutName(std::int32_t code) {
  return named(vrnt::toString(static_cast<vrnt::TextureLayout>(code)));
}

#define VRTK_MEMBER(Record, member, isSigned) \
  { #member, offsetof(Record, member), sizeof(Record::member), isSigned, nullptr, nullptr }

const std::vector<RecordMember> kMeshMembers = {
    VRTK_MEMBER(vrdmMeshDesc, triangles, true), VRTK_MEMBER(vrdmMeshDesc, vertices, true),
    VRTK_MEMBER(vrdmMeshDesc, texcoordSets, true), VRTK_MEMBER(vrdmMeshDesc, flags, false)};
const std::vector<RecordMember> kTextureMembers = {
    VRTK_MEMBER(vrdmTextureDesc, width, true),
    VRTK_MEMBER(vrdmTextureDesc, height, true),
    VRTK_MEMBER(vrdmTextureDesc, depth, true),
    {"format", offsetof(vrdmTextureDesc, format), 4, true, formatName, vrnt::parseTextureFormat},
    {"layout", offsetof(vrdmTextureDesc, layout), 4, true, layoutName, vrnt::parseTextureLayout}};
const std::vector<RecordMember> kGraphMembers = {
    VRTK_MEMBER(vrdmMaterialGraphDesc, binarySize, false),
    VRTK_MEMBER(vrdmMaterialGraphDesc, rootOffset, false),
    VRTK_MEMBER(vrdmMaterialGraphDesc, parameterOffset, false)};
const std::vector<RecordMember> kNoMembers;

#undef VRTK_MEMBER

// The bytes of a default record, with zeros in its padding.
template <typename Record>
std::vector<char> defaultBytes() {
  std::vector<char> bytes(sizeof(Record));
  alignas(Record) char place[sizeof(Record)] = {};
  static_assert(std::is_trivially_destructible_v<Record>);
  new (place) Record;
  std::memcpy(bytes.data(), place, sizeof(Record));
  return bytes;
}

std::vector<char> defaultGroups(std::uint32_t objectClass) {
  if (objectClass == VRDM_CLASS_SCENE_DATA) return defaultBytes<vrnt::data::SceneData>();
  return vrnt::data::visitClass(
      objectClass,
      [](auto tag) -> std::vector<char> {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (vrnt::data::ClassInfo<Desc>::kKind == vrnt::data::ObjectKind::Instance &&
                      vrnt::data::kGroupCount<Desc> != 0) {
          return defaultBytes<decltype(Desc::groups)>();
        } else {
          return {};
        }
      },
      []() -> std::vector<char> { return {}; });
}

using vrnt::data::ClassInfo;
using vrnt::data::kGroupCount;
using vrnt::data::ObjectKind;

}  // namespace

const std::vector<RecordMember>& recordMembers(std::uint32_t objectClass) {
  switch (objectClass) {
    case VRDM_CLASS_MESH:
      return kMeshMembers;
    case VRDM_CLASS_TEXTURE:
      return kTextureMembers;
    case VRDM_CLASS_MATERIAL_GRAPH:
      return kGraphMembers;
    default:
      return kNoMembers;
  }
}

std::vector<std::string> recordNames(const RecordMember& member) {
  std::vector<std::string> names;
  if (member.nameOf == nullptr) return names;
  // All codes with a name are below this.
  constexpr std::int32_t kCodes = 0x40000;
  for (std::int32_t code = 0; code < kCodes; ++code) {
    const char* const name = member.nameOf(code);
    if (name != nullptr) names.emplace_back(name);
  }
  return names;
}

ClassDescription::ClassDescription(std::uint32_t objectClass)
    : layout(objectClass), groups(objectClass), defaults(defaultGroups(objectClass)) {
  if (defaults.size() != groups.size) {
    throw Failure(VRTK_INTERNAL_ERROR,
                  "the library's groups have another size than the catalogue says; use a toolkit "
                  "of the library's version");
  }
  for (const GroupLayout& group : groups.groups) {
    trees.push_back(std::make_unique<TypeTree>(group.type.get()));
  }
  for (std::uint32_t i = 0; i < vrdmReferenceCount(objectClass); ++i) {
    slots.push_back({vrdmReferenceType(objectClass, i), i, false});
  }
}

const ClassDescription& Catalogue::of(std::uint32_t objectClass) {
  if (objectClass == VRDM_CLASS_SCENE_DATA) {
    if (!scene_) scene_ = std::make_unique<ClassDescription>(objectClass);
    return *scene_;
  }
  if (classes_.empty()) classes_.resize(vrdmObjectTypeCount());
  auto& known = classes_[objectClass];
  if (!known) known = std::make_unique<ClassDescription>(objectClass);
  return *known;
}

const char* groupBytes(const vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index) {
  return vrnt::data::visitClass(
      objectClass,
      [scene, index](auto tag) -> const char* {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (ClassInfo<Desc>::kKind == ObjectKind::Instance && kGroupCount<Desc> != 0) {
          const vrnt::data::Scene& read = *scene;
          return reinterpret_cast<const char*>(&read.container<Desc>().at(index).desc.groups);
        } else {
          return nullptr;
        }
      },
      []() -> const char* { return nullptr; });
}

const char* sceneGroupBytes(const vrdmScene_t* scene) {
  return reinterpret_cast<const char*>(&scene->data);
}

Target targetOf(const vrdmScene_t* scene, const vrdmReferenceInfo& slot, std::int32_t word) {
  Target target{Target::Kind::Object, slot.targetClass, word};
  switch (slot.kind) {
    case VRDM_REFERENCE_ORDERED_DECAL:
    case VRDM_REFERENCE_EMITTER: {
      if (word == kNoTarget) return {Target::Kind::None};
      const bool isEmitter = slot.kind == VRDM_REFERENCE_EMITTER;
      target.index = word < 0 ? ~word : word;
      if (isEmitter) target.objectClass = word < 0 ? VRDM_CLASS_LIGHT : VRDM_CLASS_SHAPE;
      target.side = isEmitter ? vrdmObjectName(target.objectClass) : word < 0 ? "front" : "back";
      break;
    }
    default:
      if (word == -1) return {Target::Kind::None};
  }
  if (target.index < 0 ||
      static_cast<std::uint32_t>(target.index) >= vrdmContainerSize(scene, target.objectClass)) {
    return {Target::Kind::Word, 0, word};
  }
  return target;
}

namespace {

void countChange(vrdmScene_t* scene, std::uint32_t objectClass) {
  ++scene->versions.version;
  ++scene->versions.classes[objectClass];
}

// Calls a function with a program or an asset for writing. The scene does not count the references
// of such objects, since they have none, so it makes no difference to it that it hands them out.
template <ObjectKind kKind, typename Function>
void withElement(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                 Function&& function) {
  vrnt::data::visitClass(
      objectClass,
      [&](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        if constexpr (ClassInfo<Desc>::kKind == kKind) {
          function(scene->container<Desc>().at(index));
          countChange(scene, objectClass);
        }
      },
      [] {});
}

}  // namespace

void replaceProgram(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                    const std::string& text) {
  std::unique_ptr<char, decltype(&std::free)> copy(static_cast<char*>(std::malloc(text.size() + 1)),
                                                   &std::free);
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy.get(), text.c_str(), text.size() + 1);
  withElement<ObjectKind::Program>(scene, objectClass, index, [&](auto& program) {
    std::free(program.text);
    program.text = copy.release();
    program.length = text.size();
    program.id = vrnt::UniqueId::hash(program.text, text.size());
  });
}

void replaceAsset(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index,
                  const void* record, AssetStorage* storage) {
  withElement<ObjectKind::Asset>(scene, objectClass, index, [&](auto& asset) {
    std::memcpy(static_cast<void*>(&asset.desc), record, sizeof(asset.desc));
    asset.storage = vrnt::data::AssetHandle::share(storage);
  });
}

void setAssetId(vrdmScene_t* scene, std::uint32_t objectClass, std::int32_t index, const void* id) {
  withElement<ObjectKind::Asset>(scene, objectClass, index, [id](auto& asset) {
    std::memcpy(static_cast<void*>(&asset.id), id, sizeof(asset.id));
  });
}

}  // namespace vrtk
