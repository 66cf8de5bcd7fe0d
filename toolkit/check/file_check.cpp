#include "check/file_check.hpp"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <memory>
#include <utility>

#include "check/file_layout.hpp"
#include "check/rules.hpp"
#include "check/value_check.hpp"

namespace vrtk {
namespace {

// What the library takes beside the scene's content: the scene, the buffers of the stream, and the
// types that it makes once. Measured; see the test.
constexpr std::uint64_t kMemoryOfScene = 3 << 20;
// What an allocation takes beside its bytes; a large one is rounded up to pages.
constexpr std::uint64_t kMemoryOfAllocation = 32;
constexpr std::uint64_t kLargeAllocation = 64 << 10;
constexpr std::uint64_t kPages = 8192;

template <typename T>
T load(const char* at) {
  T value;
  std::memcpy(&value, at, sizeof(value));
  return value;
}

std::uint64_t allocated(std::uint64_t bytes) {
  return bytes + kMemoryOfAllocation + (bytes >= kLargeAllocation ? kPages : 0);
}

// Thrown where the rest of the file cannot be understood. The report has the reason.
struct Unreadable {};

// The groups of an object or of the scene.
class GroupPlace final : public Place {
 public:
  GroupPlace(const ClassLayout* owner, std::uint32_t index, const GroupLayout& group)
      : owner_(owner), index_(index), group_(group) {}

  std::string address(std::uint64_t offset) const override {
    std::string out = owner_ != nullptr
                          ? fmt::format("{}/{}/groups/{}", owner_->name, index_, group_.name)
                          : "scene/" + group_.name;
    appendPath(out, group_.plan.type(), offset);
    return out;
  }

 private:
  const ClassLayout* owner_;
  std::uint32_t index_;
  const GroupLayout& group_;
};

// The groups of a class, with the bytes of each that were found right last: most objects have a
// group like that of their neighbour.
struct GroupsCheck {
  explicit GroupsCheck(std::uint32_t objectClass)
      : layout(objectClass), lastRight(layout.size), known(layout.groups.size()) {}

  GroupsLayout layout;
  std::vector<char> lastRight;
  std::vector<char> known;
  bool isWhole = false;  // lastRight is all of the last object, what is between groups included
};

class FileCheck {
 public:
  FileCheck(ByteSource& source, vrtkReport& report)
      : window_(source),
        report_(report),
        live_(vrdmObjectTypeCount()),
        values_(source, window_, report, live_[VRDM_CLASS_TEXTURE]) {}

  void run() {
    report_.info.size = window_.sourceSize();
    report_.info.openMemory = kMemoryOfScene;
    try {
      header();
      for (std::uint32_t i = 0; i < vrdmObjectTypeCount(); ++i) section(i);
      if (rest() != 0) {
        add(Code::FILE_TRAILING_BYTES, position_, "", [this] {
          return fmt::format("{} bytes follow the last section, where the file should end", rest());
        });
      }
      forwardSlots();
    } catch (const Unreadable&) {
      // What comes before the place was checked; forward references need the whole file.
    }
  }

 private:
  // The places of a slot's words in the records of the live objects of a class, in order.
  struct Forward {
    std::uint32_t objectClass;
    SlotLayout slot;
    std::deque<std::uint64_t> places;
  };

  std::uint64_t rest() const { return window_.sourceSize() - position_; }

  template <typename Message>
  void add(Code code, std::uint64_t offset, const std::string& address, Message&& message) {
    report_.add(code, offset, [&] { return std::pair(address, message()); });
  }
  template <typename Message>
  [[noreturn]] void fail(Code code, std::uint64_t offset, const std::string& address,
                         Message&& message) {
    add(code, offset, address, std::forward<Message>(message));
    throw Unreadable();
  }

  // Requires that `size` bytes follow. `what()` names what they are, and address() says whose.
  template <typename Address>
  void require(std::uint64_t size, const char* what, Address&& address) {
    if (size <= rest()) return;
    const Code code = size > window_.sourceSize() && size > Window::kCapacity
                          ? Code::SIZE_TOO_LARGE
                          : Code::FILE_TRUNCATED;
    fail(code, position_, address(), [&] {
      return fmt::format(
          "{} takes {} bytes, but the file ends after {}; it was cut, or a number "
          "is damaged",
          what, size, rest());
    });
  }

  template <typename T, typename Address>
  T number(const char* what, Address&& address) {
    require(sizeof(T), what, address);
    const T result = load<T>(window_.at(position_, sizeof(T)));
    position_ += sizeof(T);
    return result;
  }

  void header() {
    const HeaderLayout expected = headerLayout();
    const auto noAddress = [] { return std::string(); };
    const auto start =
        static_cast<std::size_t>(std::min<std::uint64_t>(rest(), HeaderLayout::kMagicSize));
    if (std::memcmp(window_.at(0, start), expected.magic, start) != 0 || start == 0) {
      fail(Code::FILE_HEADER, 0, "", [&] {
        return fmt::format("a scene file starts with \"{}\", but this file does not",
                           std::string(expected.magic, sizeof(expected.magic)));
      });
    }
    require(HeaderLayout::kMagicSize, "the start of a scene file", noAddress);
    position_ = HeaderLayout::kVersionOffset;
    const auto version = number<std::uint32_t>("the version", noAddress);
    report_.info.version = version;
    if (version != expected.version) {
      fail(Code::FILE_VERSION, HeaderLayout::kVersionOffset, "", [&] {
        return fmt::format("the file has version {}; the library reads version {} only", version,
                           expected.version);
      });
    }
    require(sizeof(report_.info.id), "the id of the scene", noAddress);
    std::memcpy(report_.info.id, window_.at(position_, sizeof(report_.info.id)),
                sizeof(report_.info.id));
    position_ += sizeof(report_.info.id);
    GroupsCheck groups(VRDM_CLASS_SCENE_DATA);
    checkGroups(nullptr, 0, groups);
  }

  void checkGroups(const ClassLayout* owner, std::uint32_t index, GroupsCheck& check) {
    const std::uint64_t size = check.layout.size;
    require(size, "the groups of an object", [&] { return addressOf(owner, index); });
    const char* const bytes = window_.at(position_, static_cast<std::size_t>(size));
    if (check.isWhole && std::memcmp(bytes, check.lastRight.data(), check.lastRight.size()) == 0) {
      position_ += size;
      return;
    }
    check.isWhole = true;
    for (std::size_t i = 0; i < check.layout.groups.size(); ++i) {
      const GroupLayout& group = check.layout.groups[i];
      const auto length = static_cast<std::size_t>(group.plan.size());
      const char* const record = bytes + group.offset;
      char* const right = check.lastRight.data() + group.offset;
      if (check.known[i] != 0 && std::memcmp(record, right, length) == 0) continue;
      const GroupPlace place(owner, index, group);
      if (applyRules(group.plan, record,
                     {report_, place, position_ + group.offset, live_[VRDM_CLASS_TEXTURE],
                      group.defaultBytes()})) {
        std::memcpy(right, record, length);
        check.known[i] = 1;
      } else {
        check.isWhole = false;
      }
    }
    if (check.isWhole) std::memcpy(check.lastRight.data(), bytes, check.lastRight.size());
    position_ += size;
  }

  static std::string addressOf(const ClassLayout* owner, std::uint32_t index) {
    return owner != nullptr ? fmt::format("{}/{}", owner->name, index) : "scene";
  }

  void section(std::uint32_t objectClass) {
    const ClassLayout layout(objectClass);
    const auto className = [&] { return std::string(layout.name); };
    const std::uint64_t countAt = position_;
    const auto count = number<std::uint32_t>("the number of slots of a class", className);
    vrtkClassInfo& info = report_.classes[objectClass];
    info.slots = count;
    // Each slot takes a byte at least.
    if (count > rest()) {
      fail(count > window_.sourceSize() ? Code::COUNT_TOO_LARGE : Code::FILE_TRUNCATED, countAt,
           layout.name, [&] {
             return fmt::format(
                 "the class has {} slots, but the file ends after {} bytes; it was "
                 "cut, or the number is damaged",
                 count, rest());
           });
    }
    if (count != 0) {
      report_.info.openMemory += allocated(std::uint64_t{count} * layout.slotMemory);
    }
    for (const auto* slots : {&layout.singles, &layout.lists}) {
      for (const SlotLayout& slot : *slots) {
        if (!slot.isForward) continue;
        forward_.push_back({objectClass, slot, {}});
      }
    }
    std::unique_ptr<GroupsCheck> groups;
    if (vrdmFieldCount(objectClass) != 0 && count != 0) {
      groups = std::make_unique<GroupsCheck>(objectClass);
    }
    LiveSlots& live = live_[objectClass];
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto address = [&] { return addressOf(&layout, i); };
      require(1, "the flag of a slot", address);
      const char flag = *window_.at(position_, 1);
      if (flag != 0 && flag != 1) {
        add(Code::FLAG_INVALID, position_, address(), [&] {
          return fmt::format("found the flag {}; a slot is live (1) or free (0)",
                             static_cast<unsigned>(static_cast<unsigned char>(flag)));
        });
      }
      ++position_;
      live.add(flag == 1);
      if (flag != 1) continue;
      ++info.live;
      if (layout.kind == VRDM_KIND_PROGRAM) {
        program(layout, i);
      } else if (layout.asset != nullptr) {
        asset(layout, i);
      } else {
        references(layout, i);
        if (groups) checkGroups(&layout, i, *groups);
        if (layout.hasValue && !values_.run(position_, address())) throw Unreadable();
      }
    }
  }

  void program(const ClassLayout& layout, std::uint32_t index) {
    const auto address = [&] { return addressOf(&layout, index) + "/text"; };
    const std::uint64_t start = position_;
    const auto length = number<std::uint32_t>("the length of a text", address);
    require(length, "the text of a program", address);
    report_.info.openMemory += allocated(std::uint64_t{length} + 1);
    if (length == 0) {
      add(Code::PROGRAM_EMPTY, start, address(),
          [] { return "the program has no text; expected a source"; });
    }
    const std::uint64_t end = position_ + length;
    bool reported = false;
    while (position_ != end) {
      const auto piece =
          static_cast<std::size_t>(std::min<std::uint64_t>(end - position_, Window::kCapacity));
      const char* const text = window_.at(position_, piece);
      if (const void* const nul = reported ? nullptr : std::memchr(text, 0, piece)) {
        reported = true;
        const auto at = static_cast<std::uint64_t>(static_cast<const char*>(nul) - text);
        add(Code::PROGRAM_HAS_NUL, position_ + at, address(),
            [] { return "found a NUL in the text; hosts see the text up to there only"; });
      }
      position_ += piece;
    }
  }

  void asset(const ClassLayout& layout, std::uint32_t index) {
    const AssetRule& rule = *layout.asset;
    const auto address = [&] { return addressOf(&layout, index); };
    constexpr std::size_t kIdSize = 16;
    require(kIdSize + rule.recordSize, "the record of an asset", address);
    position_ += kIdSize;
    char record[kLargestAssetRecord];
    std::memcpy(record, window_.at(position_, rule.recordSize), rule.recordSize);
    const AssetContent content = rule.inspect(record, [&](const RecordFinding& finding) {
      add(finding.code, position_ + finding.offset, address() + "/desc/" + finding.member,
          [&] { return finding.message; });
    });
    if (!content.valid) throw Unreadable();
    position_ += rule.recordSize;
    require(content.bytes, "the asset", [&] { return address() + "/bytes"; });
    report_.info.assetBytes += content.bytes;
    report_.info.openMemory += allocated(content.bytes + 64);
    if (content.indices != 0) indices(content, address() + "/bytes");
    position_ += content.bytes;
  }

  void indices(const AssetContent& content, const std::string& address) {
    constexpr std::uint64_t kSize = sizeof(std::uint32_t);
    IndexCheck check(content.indexLimit);
    for (std::uint64_t done = 0; done < content.indices;) {
      const std::uint64_t count =
          std::min<std::uint64_t>(content.indices - done, Window::kCapacity / kSize);
      check.add(window_.at(position_ + done * kSize, static_cast<std::size_t>(count * kSize)),
                count);
      done += count;
    }
    if (check.wrong() == 0) return;
    add(Code::MESH_INDEX_OUT_OF_RANGE, position_ + check.firstWrong() * kSize, address,
        [&] { return check.message(); });
  }

  void references(const ClassLayout& layout, std::uint32_t index) {
    const auto address = [&] { return addressOf(&layout, index); };
    const std::size_t singles = layout.singles.size() * sizeof(std::int32_t);
    if (singles != 0) {
      require(singles, "the references of an object", address);
      const char* const words = window_.at(position_, singles);
      for (std::size_t i = 0; i < layout.singles.size(); ++i) {
        const SlotLayout& slot = layout.singles[i];
        const std::int32_t word = load<std::int32_t>(words + i * sizeof(word));
        if (slot.isForward) {
          forwardOf(layout, slot).places.push_back(position_ + i * sizeof(word));
        } else if (!isRightSlotWord(slot.info, word, live_)) {
          slotWord(layout, index, slot, position_ + i * sizeof(word), word, -1);
        }
      }
      position_ += singles;
    }
    for (const SlotLayout& slot : layout.lists) {
      const auto slotAddress = [&] { return address() + "/slots/" + slot.info.name; };
      const std::uint64_t start = position_;
      const auto count = number<std::uint32_t>("the length of a list", slotAddress);
      const std::uint64_t size = std::uint64_t{count} * sizeof(std::int32_t);
      if (size > rest()) {
        fail(size > window_.sourceSize() ? Code::COUNT_TOO_LARGE : Code::FILE_TRUNCATED, start,
             slotAddress(), [&] {
               return fmt::format(
                   "the list has {} elements, but the file ends after {} bytes; it "
                   "was cut, or the number is damaged",
                   count, rest());
             });
      }
      if (count != 0) report_.info.openMemory += allocated(size);
      if (slot.isForward) {
        forwardOf(layout, slot).places.push_back(start);
      } else {
        listWords(layout, index, slot, position_, count);
      }
      position_ += size;
    }
  }

  void listWords(const ClassLayout& layout, std::uint32_t index, const SlotLayout& slot,
                 std::uint64_t start, std::uint32_t count) {
    constexpr std::uint64_t kSize = sizeof(std::int32_t);
    for (std::uint64_t done = 0; done < count;) {
      const std::uint64_t piece = std::min<std::uint64_t>(count - done, Window::kCapacity / kSize);
      const char* const words =
          window_.at(start + done * kSize, static_cast<std::size_t>(piece * kSize));
      for (std::uint64_t i = 0; i < piece; ++i) {
        const auto word = load<std::int32_t>(words + i * kSize);
        if (isRightSlotWord(slot.info, word, live_)) continue;
        slotWord(layout, index, slot, start + (done + i) * kSize, word,
                 static_cast<std::int64_t>(done + i));
      }
      done += piece;
    }
  }

  void slotWord(const ClassLayout& layout, std::uint32_t index, const SlotLayout& slot,
                std::uint64_t offset, std::int32_t word, std::int64_t element) {
    const auto finding = checkSlotWord(slot.info, word, live_);
    if (!finding) return;
    report_.add(finding->code, offset, [&] {
      std::string address = addressOf(&layout, index) + "/slots/" + slot.info.name;
      if (element >= 0) address += '/' + std::to_string(element);
      return std::pair(std::move(address), finding->message);
    });
  }

  Forward& forwardOf(const ClassLayout& layout, const SlotLayout& slot) {
    for (Forward& forward : forward_) {
      if (forward.objectClass == layout.objectClass && forward.slot.slot == slot.slot) {
        return forward;
      }
    }
    throw Unreadable();  // section() has added all
  }

  // Looks at the references to classes behind their owner's.
  void forwardSlots() {
    for (const Forward& forward : forward_) {
      const ClassLayout layout(forward.objectClass);
      std::uint32_t index = 0;
      for (const std::uint64_t place : forward.places) {
        while (!live_[forward.objectClass].has(index)) ++index;
        const char* const word = window_.at(place, sizeof(std::int32_t));
        if (isList(forward.slot.info)) {
          listWords(layout, index, forward.slot, place + sizeof(std::uint32_t),
                    load<std::uint32_t>(word));
        } else {
          slotWord(layout, index, forward.slot, place, load<std::int32_t>(word), -1);
        }
        ++index;
      }
    }
  }

  Window window_;
  vrtkReport& report_;
  std::uint64_t position_ = 0;
  AllLiveSlots live_;
  ValueCheck values_;
  std::vector<Forward> forward_;
};

}  // namespace

void checkSource(ByteSource& source, const vrtkLimits& limits, vrtkReport& report) {
  FileCheck(source, report).run();
  if (limits.maxMemory != 0 && report.info.openMemory > limits.maxMemory) {
    report.add(Code::MEMORY_EXCEEDED, VRTK_NO_OFFSET, [&] {
      return std::pair(std::string(),
                       fmt::format("reading the file may take {} bytes of memory; the limit is {}",
                                   report.info.openMemory, limits.maxMemory));
    });
  }
  report.finish();
}

}  // namespace vrtk
