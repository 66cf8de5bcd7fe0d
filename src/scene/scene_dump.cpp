// A scene as text. Each word of it is kept as it stands: people compare dumps of two runs.
#include <ostream>
#include <string>
#include <type_traits>

#include "digest.hpp"
#include "group_access.hpp"
#include "object_operations.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

namespace {

// The name under which a slot's line stands: that of the target's class, or what a coded list is
// of.
template <typename Element>
struct TargetName;
template <template <typename> class Element, typename Desc>
struct TargetName<Element<Desc>> {
  static constexpr const char* kName = ClassInfo<Desc>::kName;
};

// The number and the side of an element of a coded list. What stands for no target has no form of
// its own.
constexpr std::int32_t codedIndex(std::int32_t word) { return word < 0 ? ~word : word; }

class Dump {
 public:
  Dump(std::ostream& stream, const Scene& scene) : stream_(stream), scene_(scene) {}

  void head() {
    stream_ << " Scene " << scene_.id << " [v" << scene_.versions.version << "]" << std::endl;
    groups<SceneData>(scene_.data, scene_.versions.groups);
  }

  template <typename Desc>
  void section() {
    const auto& container = scene_.container<Desc>();
    if (container.size() == 0) return;
    constexpr auto number = static_cast<std::size_t>(ClassInfo<Desc>::kClass);
    stream_ << std::endl;
    stream_ << " " << ClassInfo<Desc>::kName << "s [v" << scene_.versions.classes[number] << "]"
            << std::endl;
    stream_ << "---------------------------------------------" << std::endl;
    for (std::uint32_t i = 0; i < container.size(); ++i) {
      stream_ << "[" << i << "] ";
      if (isShown(container.slots[i])) {
        stream_ << ClassInfo<Desc>::kName;
        object(container.slots[i]);
      } else {
        stream_ << "<empty>" << std::endl;
      }
    }
  }

 private:
  template <typename Element>
  static bool isShown(const Element& element) {
    return element.live();
  }
  // An asset without bytes is live, and yet there is nothing of it to show.
  template <typename Desc>
  static bool isShown(const Asset<Desc>& asset) {
    return asset.live() && asset.storage.get()->size != 0;
  }

  template <typename Source>
  void object(const Program<Source>& program) {
    stream_ << " [v" << program.id << "]" << std::endl;
    stream_ << "\t" << program.source() << std::endl;
  }

  template <typename Desc>
  void object(const Asset<Desc>& asset) {
    const AssetStorage& storage = *asset.storage.get();
    stream_ << " [v" << static_cast<const void*>(storage.data) << "]" << std::endl;
    contents(asset.desc);
    stream_ << "\tstorage: <" << asset.desc.size() << " bytes of data>" << std::endl;
    stream_ << "\tsha256: " << sha256Text(storage.data, storage.size) << std::endl;
  }

  void contents(const vrnt::detail::MeshDesc& desc) {
    stream_ << "\ttriangles: " << desc.triangles << "\n\tvertices: " << desc.vertices
            << "\n\ttexcoord sets: " << desc.texcoordSets << std::endl;
  }
  void contents(const vrnt::detail::TextureDesc& desc) {
    stream_ << "\tsize: " << desc.width << " x " << desc.height
            << "\n\tformat: " << toString(desc.format) << "\n\tlayout: " << toString(desc.layout)
            << std::endl;
  }
  void contents(const MaterialGraphDesc& desc) {
    stream_ << "\tbinary size: " << desc.binarySize
            << "\n\tparameter offset: " << desc.parameterOffset
            << "\n\troot offset: " << desc.rootOffset << std::endl;
  }

  template <typename Desc>
  void object(const Instance<Desc>& instance) {
    stream_ << " [vv" << instance.version << "]" << std::endl;
    if constexpr (kSlotCount<Desc> != 0) {
      stream_ << "\treferences [vv" << instance.referencesVersion << "]" << std::endl;
      forEachSlot<Desc>([&](const auto& slot, auto) {
        stream_ << "\t\t";
        link(instance.desc.*slot.member, slot.kind);
        stream_ << std::endl;
      });
    }
    if constexpr (kGroupCount<Desc> != 0)
      groups<Desc>(instance.desc.groups, instance.groupVersions);
    if constexpr (ClassInfo<Desc>::kHasValue) {
      const void* const address = instance.value.get();
      stream_ << "\tvalue: [v" << address << "] ";
      text(instance.value);
    }
  }

  template <typename Desc, typename Groups, typename Versions>
  void groups(const Groups& records, const Versions& versions) {
    stream_ << "\tdata" << std::endl;
    forEachGroup<Desc>([&](const auto& group, auto position) {
      stream_ << "\t\t" << group.name << ": [vv" << versions[position] << "] ";
      text(groupValue<Desc>(position, records.*group.member));
    });
  }

  // As the value layer prints it: what numbers it has don't follow the stream's settings.
  void text(const Value& value) {
    stream_ << ConstBasicView<const Value*>(&value).text() << std::endl;
  }

  template <typename Target>
  void link(const Ref<Target>& single, ReferenceKind kind) {
    stream_ << TargetName<Target>::kName << ": ";
    if (kind == ReferenceKind::Optional && single.index == -1) {
      stream_ << "null";
    } else {
      stream_ << single.index;
    }
  }

  template <typename Target>
  void link(const RefList<Target>& list, ReferenceKind) {
    stream_ << TargetName<Target>::kName << "s: [ ";
    for (const std::int32_t word : list.words) stream_ << word << ", ";
    stream_ << "]";
  }

  template <typename Target>
  void link(const CodedRefList<Target>& list, ReferenceKind kind) {
    const bool decals = kind == ReferenceKind::OrderedDecal;
    const char* const negative = decals ? " (Front), " : " (Light), ";
    const char* const nonNegative = decals ? " (Back), " : " (Shape), ";
    stream_ << (decals ? "OrderedDecals: [ " : "Emitters: [ ");
    for (const std::int32_t word : list.words) {
      stream_ << codedIndex(word) << (word < 0 ? negative : nonNegative);
    }
    stream_ << "]";
  }

  std::ostream& stream_;
  const Scene& scene_;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Scene& scene) {
  Dump dump(stream, scene);
  dump.head();
  forEachClass([&dump](auto tag) { dump.section<typename decltype(tag)::Desc>(); });
  return stream;
}

}  // namespace vrnt::data
