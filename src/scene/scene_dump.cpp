// Prints a scene as text. Every detail of the text is fixed, since people compare dumps.
#include <ostream>
#include <string>
#include <vector>

#include "foundation/digest.hpp"
#include "scene/class_table.hpp"
#include "scene/group_value.hpp"
#include "scene/reference_slots.hpp"
#include "vornath_data/scene.hpp"

namespace vrnt::data {

namespace {

// Returns the index in a word of a coded list. Treats the word for no target like an index.
constexpr std::int32_t codedIndex(std::int32_t word) { return word < 0 ? ~word : word; }

class Dump {
 public:
  Dump(std::ostream& stream, const Scene& scene) : stream_(stream), scene_(scene) {}

  void head() {
    stream_ << " Scene " << scene_.id << " [v" << scene_.versions.version << "]" << std::endl;
    groups(classEntry<SceneData>(), &scene_.data, scene_.versions.groups.data());
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
  // An asset without bytes is live, but is printed as a free slot.
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
      for (const SlotEntry& slot : classEntry<Desc>().slots) {
        stream_ << "\t\t";
        references(&instance.desc, slot);
        stream_ << std::endl;
      }
    }
    if constexpr (kGroupCount<Desc> != 0) {
      groups(classEntry<Desc>(), &instance.desc.groups, instance.groupVersions.data());
    }
    if constexpr (ClassInfo<Desc>::kHasValue) {
      const void* const address = instance.value.get();
      stream_ << "\tvalue: [v" << address << "] ";
      text(instance.value);
    }
  }

  void groups(const ClassEntry& owner, const void* records, const std::uint32_t* versions) {
    stream_ << "\tdata" << std::endl;
    for (const GroupEntry& group : owner.groups) {
      stream_ << "\t\t" << group.name << ": [vv" << *versions++ << "] ";
      text(groupValue(records, group));
    }
  }

  // Prints the text of the value layer; the stream's settings do not apply to its numbers.
  void text(const Value& value) {
    stream_ << ConstBasicView<const Value*>(&value).text() << std::endl;
  }

  void references(const void* desc, const SlotEntry& slot) {
    switch (slot.form) {
      case SlotForm::Single:
        return single(singleReference(desc, slot), slot);
      case SlotForm::List:
        return list(referenceList(desc, slot), slot);
      case SlotForm::CodedList:
        return codedList(referenceList(desc, slot), slot);
    }
  }

  void single(std::int32_t index, const SlotEntry& slot) {
    stream_ << classEntry(slot.target).name << ": ";
    if (slot.kind == ReferenceKind::Optional && index == -1) {
      stream_ << "null";
    } else {
      stream_ << index;
    }
  }

  void list(const std::vector<std::int32_t>& indices, const SlotEntry& slot) {
    stream_ << classEntry(slot.target).name << "s: [ ";
    for (const std::int32_t index : indices) stream_ << index << ", ";
    stream_ << "]";
  }

  void codedList(const std::vector<std::int32_t>& words, const SlotEntry& slot) {
    const bool decals = slot.kind == ReferenceKind::OrderedDecal;
    const char* const negative = decals ? " (Front), " : " (Light), ";
    const char* const nonNegative = decals ? " (Back), " : " (Shape), ";
    stream_ << (decals ? "OrderedDecals: [ " : "Emitters: [ ");
    for (const std::int32_t word : words) {
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
