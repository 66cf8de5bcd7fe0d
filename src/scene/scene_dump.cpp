// Prints a scene as text. Every detail of the text is fixed, since people compare dumps.
#include <array>
#include <charconv>
#include <cstring>
#include <locale>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
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

// Ends a line and flushes the stream.
struct LineEnd {};
constexpr LineEnd kLineEnd;

// Writes lines to a stream. Collects the pieces of a line and writes them at once, if the stream's
// settings leave numbers as they are; else the stream prints each piece.
class LineWriter {
 public:
  explicit LineWriter(std::ostream& stream) : stream_(stream), collects_(isPlain(stream)) {}

  LineWriter& operator<<(std::string_view text) {
    if (!collects_) {
      stream_ << text;
    } else if (text.size() <= pieces_.size() - used_) {
      std::memcpy(pieces_.data() + used_, text.data(), text.size());
      used_ += text.size();
    } else {
      pass();
      write(text);
    }
    return *this;
  }

  template <typename Integer>
  requires std::is_integral_v<Integer> LineWriter& operator<<(Integer number) {
    static_assert(sizeof(number) >= sizeof(std::int32_t), "a stream prints a character as itself");
    if (!collects_) {
      stream_ << number;
      return *this;
    }
    char digits[kMaxDigits];
    return *this << textOf(digits, std::to_chars(digits, digits + kMaxDigits, number).ptr);
  }

  // Named, since an overload for pointers would take the characters too.
  LineWriter& address(const void* address) {
    if (!collects_ || address == nullptr) {
      pass();
      stream_ << address;
      return *this;
    }
    char digits[kMaxDigits] = {'0', 'x'};
    constexpr int kBase = 16;
    return *this << textOf(digits, std::to_chars(digits + 2, digits + kMaxDigits,
                                                 reinterpret_cast<std::uintptr_t>(address), kBase)
                                       .ptr);
  }

  LineWriter& operator<<(const UniqueId& id) {
    pass();
    stream_ << id;
    return *this;
  }

  LineWriter& operator<<(LineEnd) {
    if (!collects_) {
      stream_ << std::endl;
      return *this;
    }
    *this << "\n";
    pass();
    stream_.flush();
    return *this;
  }

  // Passes on what was collected. What stands before a piece must be in the stream if that piece
  // fails.
  void pass() {
    if (used_ != 0) write({pieces_.data(), std::exchange(used_, 0)});
  }

  // Ends the line with a text of the value layer, whose room behind the text this uses.
  void endWith(std::unique_ptr<char, vrnt::detail::StringDeleter> text) {
    if (!collects_) {
      stream_ << text.get() << std::endl;
      return;
    }
    pass();
    const std::size_t size = std::strlen(text.get());
    text.get()[size] = '\n';
    write({text.get(), size + 1});
    stream_.flush();
  }

 private:
  static constexpr std::size_t kMaxDigits = 24;

  static bool isPlain(const std::ostream& stream) {
    using std::ios_base;
    const auto relevant = ios_base::basefield | ios_base::showbase | ios_base::showpos |
                          ios_base::uppercase | ios_base::unitbuf;
    return stream.width() == 0 && (stream.flags() & relevant) == ios_base::dec &&
           stream.getloc() == std::locale::classic();
  }

  static std::string_view textOf(const char* begin, const char* end) {
    return {begin, static_cast<std::size_t>(end - begin)};
  }

  void write(std::string_view text) {
    stream_.write(text.data(), static_cast<std::streamsize>(text.size()));
  }

  std::ostream& stream_;
  bool collects_;
  std::array<char, 512> pieces_;
  std::size_t used_ = 0;
};

class Dump {
 public:
  Dump(std::ostream& stream, const Scene& scene) : line_(stream), scene_(scene) {}

  void head() {
    line_ << " Scene " << scene_.id << " [v" << scene_.versions.version << "]" << kLineEnd;
    groups(classEntry<SceneData>(), &scene_.data, scene_.versions.groups.data());
  }

  template <typename Desc>
  void section() {
    const auto& container = scene_.container<Desc>();
    if (container.size() == 0) return;
    constexpr auto number = static_cast<std::size_t>(ClassInfo<Desc>::kClass);
    line_ << kLineEnd;
    line_ << " " << ClassInfo<Desc>::kName << "s [v" << scene_.versions.classes[number] << "]"
          << kLineEnd;
    line_ << "---------------------------------------------" << kLineEnd;
    for (std::uint32_t i = 0; i < container.size(); ++i) {
      line_ << "[" << i << "] ";
      if (isShown(container.slots[i])) {
        line_ << ClassInfo<Desc>::kName;
        object(container.slots[i]);
      } else {
        line_ << "<empty>" << kLineEnd;
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
    line_ << " [v" << program.id << "]" << kLineEnd;
    line_ << "\t" << program.source() << kLineEnd;
  }

  template <typename Desc>
  void object(const Asset<Desc>& asset) {
    const AssetStorage& storage = *asset.storage.get();
    line_ << " [v";
    line_.address(storage.data) << "]" << kLineEnd;
    contents(asset.desc);
    line_ << "\tstorage: <" << asset.desc.size() << " bytes of data>" << kLineEnd;
    line_ << "\tsha256: ";
    line_.pass();
    line_ << sha256Text(storage.data, storage.size) << kLineEnd;
  }

  void contents(const vrnt::detail::MeshDesc& desc) {
    line_ << "\ttriangles: " << desc.triangles << "\n\tvertices: " << desc.vertices
          << "\n\ttexcoord sets: " << desc.texcoordSets << kLineEnd;
  }
  void contents(const vrnt::detail::TextureDesc& desc) {
    line_ << "\tsize: " << desc.width << " x " << desc.height
          << "\n\tformat: " << toString(desc.format) << "\n\tlayout: " << toString(desc.layout)
          << kLineEnd;
  }
  void contents(const MaterialGraphDesc& desc) {
    line_ << "\tbinary size: " << desc.binarySize
          << "\n\tparameter offset: " << desc.parameterOffset
          << "\n\troot offset: " << desc.rootOffset << kLineEnd;
  }

  template <typename Desc>
  void object(const Instance<Desc>& instance) {
    line_ << " [vv" << instance.version << "]" << kLineEnd;
    if constexpr (kSlotCount<Desc> != 0) {
      line_ << "\treferences [vv" << instance.referencesVersion << "]" << kLineEnd;
      for (const SlotEntry& slot : classEntry<Desc>().slots) {
        line_ << "\t\t";
        references(&instance.desc, slot);
        line_ << kLineEnd;
      }
    }
    if constexpr (kGroupCount<Desc> != 0) {
      groups(classEntry<Desc>(), &instance.desc.groups, instance.groupVersions.data());
    }
    if constexpr (ClassInfo<Desc>::kHasValue) {
      line_ << "\tvalue: [v";
      line_.address(instance.value.get()) << "] ";
      text(instance.value);
    }
  }

  void groups(const ClassEntry& owner, const void* records, const std::uint32_t* versions) {
    line_ << "\tdata" << kLineEnd;
    for (const GroupEntry& group : owner.groups) {
      line_ << "\t\t" << group.name << ": [vv" << *versions++ << "] ";
      line_.pass();
      text(valueOf(records, group));
    }
  }

  // Prints the text of the value layer; the stream's settings do not apply to its numbers.
  void text(const Value& value) {
    line_.pass();
    const vrntValueView_t whole{value.type(), 0};
    vrntValuesError_t* error = nullptr;
    std::unique_ptr<char, vrnt::detail::StringDeleter> text(
        vrntValueString(value.get(), &whole, 0, &error));
    if (!text) vrnt::detail::raiseError(error);
    line_.endWith(std::move(text));
  }

  // Returns the group's record as a value, until the next record of the same group.
  const Value& valueOf(const void* records, const GroupEntry& group) {
    Value& value = groupValues_[group.ordinal];
    if (!value) {
      value = groupValue(records, group);
    } else {
      // The block of the value is not shared, so the write cannot fail.
      vrntValuesError_t* error = nullptr;
      vrntValueWrite(value.address(), 0, static_cast<const char*>(records) + group.offset,
                     group.size, &error);
    }
    return value;
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
    line_ << classEntry(slot.target).name << ": ";
    if (slot.kind == ReferenceKind::Optional && index == -1) {
      line_ << "null";
    } else {
      line_ << index;
    }
  }

  void list(const std::vector<std::int32_t>& indices, const SlotEntry& slot) {
    line_ << classEntry(slot.target).name << "s: [ ";
    for (const std::int32_t index : indices) line_ << index << ", ";
    line_ << "]";
  }

  void codedList(const std::vector<std::int32_t>& words, const SlotEntry& slot) {
    const bool decals = slot.kind == ReferenceKind::OrderedDecal;
    const char* const negative = decals ? " (Front), " : " (Light), ";
    const char* const nonNegative = decals ? " (Back), " : " (Shape), ";
    line_ << (decals ? "OrderedDecals: [ " : "Emitters: [ ");
    for (const std::int32_t word : words) {
      line_ << codedIndex(word) << (word < 0 ? negative : nonNegative);
    }
    line_ << "]";
  }

  LineWriter line_;
  const Scene& scene_;
  std::array<Value, kTotalGroupCount> groupValues_;  // by ordinal; empty before the first use
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Scene& scene) {
  Dump dump(stream, scene);
  dump.head();
  forEachClass([&dump](auto tag) { dump.section<typename decltype(tag)::Desc>(); });
  return stream;
}

}  // namespace vrnt::data
