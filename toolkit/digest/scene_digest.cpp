// The digest of a scene. docs/scene_digest.md describes what is hashed.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <unordered_map>
#include <utility>
#include <vector>

#include "check/file_layout.hpp"
#include "digest/sha256.hpp"
#include "foundation/failure.hpp"
#include "values/value_layout.hpp"
#include "vornath_data/handles.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_digest.h"

namespace vrtk {
namespace {

using vrnt::data::ClassInfo;
using vrnt::data::Scene;

// Collects small pieces, since a call of the hash for each would cost more than the hash. The hash
// gets whole blocks at aligned places: it is much slower with others.
class Hasher {
 public:
  void add(const void* bytes, std::size_t size) {
    const auto* from = static_cast<const char*>(bytes);
    while (size > kCapacity - used_) {
      const std::size_t count = kCapacity - used_;
      std::memcpy(buffer_.get() + used_, from, count);
      used_ = kCapacity;
      flush();
      from += count;
      size -= count;
      if (size > kCapacity &&
          reinterpret_cast<std::uintptr_t>(from) % alignof(std::uint64_t) == 0) {
        const std::size_t whole = size / kBlock * kBlock;
        hash_.Update(reinterpret_cast<const CryptoPP::byte*>(from), whole);
        from += whole;
        size -= whole;
      }
    }
    if (size != 0) std::memcpy(buffer_.get() + used_, from, size);
    used_ += size;
  }
  template <typename T>
  void number(T value) {
    std::memcpy(room(sizeof(value)), &value, sizeof(value));
  }

  // Returns room for `size` bytes, at most kLargestRoom, which count as added.
  static constexpr std::size_t kLargestRoom = 8192;
  char* room(std::size_t size) {
    if (size > kCapacity - used_) flush();
    char* const place = buffer_.get() + used_;
    used_ += size;
    return place;
  }

  Sha256 digest() {
    flush();
    hash_.Update(reinterpret_cast<const CryptoPP::byte*>(buffer_.get()), used_);
    return finish(hash_);
  }

 private:
  static constexpr std::size_t kBlock = CryptoPP::SHA256::BLOCKSIZE;
  static constexpr std::size_t kCapacity = std::size_t{1} << 15;

  // Leaves less than a block in the buffer.
  void flush() {
    const std::size_t whole = used_ / kBlock * kBlock;
    hash_.Update(reinterpret_cast<const CryptoPP::byte*>(buffer_.get()), whole);
    std::memmove(buffer_.get(), buffer_.get() + whole, used_ - whole);
    used_ -= whole;
  }

  CryptoPP::SHA256 hash_;
  std::unique_ptr<char[]> buffer_ = std::make_unique<char[]>(kCapacity);
  std::size_t used_ = 0;
};

// The bits of a small block that count: those of its parts, without padding and references.
class BitMask {
 public:
  explicit BitMask(std::size_t size) : size_(size), words_((size + kWord - 1) / kWord) {}

  void add(const ValueLayout& layout, std::size_t offset) {
    auto* const bits = reinterpret_cast<unsigned char*>(words_.data());
    layout.forEachRun([&](const LayoutRun& run, std::uint64_t at) {
      if (run.kind == RunKind::Word) return true;
      for (std::uint64_t i = 0; i < run.count; ++i) {
        std::memset(bits + offset + at + i * run.stride, 0xFF, run.size);
      }
      return true;
    });
  }

  std::size_t size() const { return size_; }

  // Word by word: for a scene of many small objects this takes as long as a copy.
  void apply(const char* bytes, char* out) const {
    const std::size_t whole = size_ / kWord;
    const std::uint64_t* const words = words_.data();
    for (std::size_t i = 0; i < whole; ++i) {
      std::uint64_t word = 0;
      std::memcpy(&word, bytes + i * kWord, kWord);
      word &= words[i];
      std::memcpy(out + i * kWord, &word, kWord);
    }
    if (size_ % kWord == 0) return;
    std::uint64_t word = 0;
    std::memcpy(&word, bytes + whole * kWord, size_ % kWord);
    word &= words[whole];
    std::memcpy(out + whole * kWord, &word, size_ % kWord);
  }

 private:
  static constexpr std::size_t kWord = sizeof(std::uint64_t);

  std::size_t size_;
  std::vector<std::uint64_t> words_;
};

// Digests of values. A block counts with the digests of the blocks that it refers to, so equal
// content has equal digests however it is shared.
class ValueDigests {
 public:
  const Sha256& of(const vrntValue_t* value) {
    const char* const root = dataOf(value);
    if (const auto known = blocks_.find(root); known != blocks_.end()) return known->second.digest;
    open(root, value);
    while (!open_.empty()) {
      Open& top = open_.back();
      if (top.next == top.targets.size()) {
        close();
        continue;
      }
      const char* const target = top.targets[top.next++];
      const auto known = blocks_.find(target);
      if (known == blocks_.end()) {
        open(target, blockOf(target));
      } else if (!known->second.complete) {
        throw Failure(VRTK_VALUE_CYCLE,
                      "the references of a value form a cycle, which has no digest; set one of "
                      "them to null");
      }
    }
    return blocks_.at(root).digest;
  }

 private:
  struct TypeInfo {
    const ValueLayout* layout;
    Sha256 text;
    BitMask mask;  // of small types
    bool isRun;    // whether the value is one run of bytes that count as they stand
  };
  struct Block {
    bool complete = false;
    Sha256 digest;
  };
  struct Open {
    const char* data;
    const TypeInfo* type;
    std::vector<std::uint64_t> words;
    std::vector<const char*> targets;
    std::size_t next = 0;
  };

  static const char* dataOf(const vrntValue_t* value) {
    return static_cast<const char*>(vrntValueData(value));
  }
  static const vrntValue_t* blockOf(const char* data) {
    return reinterpret_cast<const vrntValue_t*>(data - sizeof(vrntValue_t));
  }

  const TypeInfo& infoOf(const vrntType_t* type) {
    if (type == lastType_) return *lastInfo_;
    auto found = types_.find(type);
    if (found == types_.end()) {
      const ValueLayout& layout = layouts_.of(type);
      const char* const text = vrntTypeString(type);
      if (text == nullptr) throw std::bad_alloc();
      const auto& runs = layout.runs();
      const bool isRun = runs.size() == 1 && runs[0].contiguous() &&
                         runs[0].count * runs[0].size == layout.size() &&
                         runs[0].kind != RunKind::Word;
      const bool isSmall = layout.size() <= Hasher::kLargestRoom;
      BitMask mask(isSmall ? static_cast<std::size_t>(layout.size()) : 0);
      if (isSmall) mask.add(layout, 0);
      found = types_
                  .emplace(type, TypeInfo{&layout, sha256(text, std::strlen(text)), std::move(mask),
                                          isRun})
                  .first;
    }
    lastType_ = type;
    lastInfo_ = &found->second;
    return found->second;
  }

  void open(const char* data, const vrntValue_t* block) {
    Open opened{data, &infoOf(vrntValueType(block)), {}, {}};
    if (opened.type->layout->hasWords()) {
      opened.type->layout->forEachRun([&](const LayoutRun& run, std::uint64_t offset) {
        if (run.kind != RunKind::Word) return true;
        for (std::uint64_t i = 0; i < run.count; ++i) {
          std::uint64_t word = 0;
          std::memcpy(&word, data + offset + i * run.stride, sizeof(word));
          opened.words.push_back(word);
          if (word != 0 && (word & 1U) == 0) {
            opened.targets.push_back(
                reinterpret_cast<const char*>(word));  // NOLINT(performance-no-int-to-ptr)
          }
        }
        return true;
      });
    }
    blocks_.emplace(data, Block());
    open_.push_back(std::move(opened));
  }

  void close() {
    const Open& top = open_.back();
    CryptoPP::SHA256 hash;
    hash.Update(top.type->text.data(), top.type->text.size());
    addData(hash, *top.type, top.data);
    for (const std::uint64_t word : top.words) {
      const bool isBlock = word != 0 && (word & 1U) == 0;
      const auto tag = static_cast<unsigned char>(word == 0 ? 0 : isBlock ? 1 : 2);
      hash.Update(&tag, 1);
      if (isBlock) {
        const Sha256& digest = blocks_.at(reinterpret_cast<const char*>(word))
                                   .digest;  // NOLINT(performance-no-int-to-ptr)
        hash.Update(digest.data(), digest.size());
      } else if (word != 0) {
        hash.Update(reinterpret_cast<const CryptoPP::byte*>(&word), sizeof(word));
      }
    }
    Block& block = blocks_.at(top.data);
    block.digest = finish(hash);
    block.complete = true;
    open_.pop_back();
  }

  void addData(CryptoPP::SHA256& hash, const TypeInfo& type, const char* data) {
    const std::uint64_t size = type.layout->size();
    const auto update = [&hash](const char* bytes, std::uint64_t count) {
      hash.Update(reinterpret_cast<const CryptoPP::byte*>(bytes), static_cast<std::size_t>(count));
    };
    if (type.isRun) return update(data, size);
    if (type.mask.size() == size) {
      char bytes[Hasher::kLargestRoom];
      type.mask.apply(data, bytes);
      return update(bytes, size);
    }
    copy_.assign(static_cast<std::size_t>(size), 0);
    type.layout->forEachRun([&](const LayoutRun& run, std::uint64_t offset) {
      if (run.kind == RunKind::Word) return true;
      // A run without gaps is one piece.
      const std::uint64_t pieces = run.contiguous() ? 1 : run.count;
      const std::uint64_t bytes = run.contiguous() ? run.count * run.size : run.size;
      for (std::uint64_t i = 0; i < pieces; ++i) {
        const std::uint64_t at = offset + i * run.stride;
        std::memcpy(copy_.data() + at, data + at, static_cast<std::size_t>(bytes));
      }
      return true;
    });
    update(copy_.data(), size);
  }

  ValueLayouts layouts_;
  std::unordered_map<const vrntType_t*, TypeInfo> types_;
  const vrntType_t* lastType_ = nullptr;
  const TypeInfo* lastInfo_ = nullptr;
  std::unordered_map<const char*, Block> blocks_;  // by the addresses of their data
  std::vector<Open> open_;
  std::vector<char> copy_;
};

class SceneDigest {
 public:
  SceneDigest(const Scene& scene, bool includeIds) : scene_(scene), includeIds_(includeIds) {}

  Sha256 run() {
    constexpr char kForm[] = "vornath scene digest 1\n";
    hasher_.add(kForm, sizeof(kForm) - 1);
    hasher_.number(headerLayout().version);
    hasher_.number(static_cast<std::uint32_t>(includeIds_));
    id(scene_.id);
    groups<vrnt::data::SceneData>(&scene_.data, sizeof(scene_.data));
    vrnt::data::forEachClass([this](auto tag) { objects<typename decltype(tag)::Desc>(); });
    return hasher_.digest();
  }

 private:
  void id(const vrnt::UniqueId& id) {
    if (includeIds_) hasher_.add(id.begin(), 16);
  }

  // The mask of the groups of a class, which lie in one piece.
  template <typename Desc>
  static BitMask groupMask(std::size_t size) {
    const auto objectClass = static_cast<std::uint32_t>(ClassInfo<Desc>::kClass);
    BitMask mask(size);
    vrnt::data::forEachGroup<Desc>([&](const auto& group, auto position) {
      const vrnt::UniqueType type(vrdmFieldType(objectClass, decltype(position)::value));
      mask.add(ValueLayout(type.get()), group.offset);
    });
    return mask;
  }

  template <typename Desc>
  void groups(const void* bytes, std::size_t size) {
    static const BitMask mask = groupMask<Desc>(size);
    mask.apply(static_cast<const char*>(bytes), hasher_.room(size));
  }

  template <typename Desc>
  void objects() {
    const auto& container = scene_.container<Desc>();
    hasher_.number(container.size());
    for (std::uint32_t i = 0; i < container.size(); ++i) {
      const auto& object = container.slots[i];
      hasher_.number(static_cast<std::uint32_t>(object.live()));
      if (object.live()) content(object);
    }
  }

  template <typename Source>
  void content(const vrnt::data::Program<Source>& program) {
    // A text from a file may contain a NUL; the library writes and shows what is before it.
    const std::uint64_t length = std::strlen(program.source());
    hasher_.number(length);
    hasher_.add(program.source(), static_cast<std::size_t>(length));
  }

  template <typename Desc>
  void content(const vrnt::data::Asset<Desc>& asset) {
    id(asset.id);
    hasher_.add(&asset.desc, sizeof(asset.desc));
    const AssetStorage* const storage = asset.storage.get();
    const std::uint64_t size = std::min<std::uint64_t>(asset.desc.size(), storage->size);
    hasher_.number(size);
    hasher_.add(storage->data, static_cast<std::size_t>(size));
  }

  template <typename Desc>
  void content(const vrnt::data::Instance<Desc>& object) {
    vrnt::data::forEachSlot<Desc>([&](const auto& slot, auto) { add(object.desc.*slot.member); });
    if constexpr (vrnt::data::kGroupCount<Desc> != 0) {
      groups<Desc>(&object.desc.groups, sizeof(object.desc.groups));
    }
    if constexpr (ClassInfo<Desc>::kHasValue) {
      const vrntValue_t* const value = object.value.get();
      hasher_.number(static_cast<std::uint32_t>(value != nullptr));
      if (value != nullptr) {
        const Sha256& digest = values_.of(value);
        hasher_.add(digest.data(), digest.size());
      }
    }
  }

  template <typename T>
  void add(const vrnt::Ref<T>& reference) {
    hasher_.number(reference.index);
  }
  template <typename List>
  void add(const List& list) {
    hasher_.number(static_cast<std::uint64_t>(list.words.size()));
    hasher_.add(list.words.data(), list.words.size() * sizeof(std::int32_t));
  }

  const Scene& scene_;
  bool includeIds_;
  Hasher hasher_;
  ValueDigests values_;
};

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneDigest(const vrdmScene_t* scene, const vrtkDigestOptions* options,
                              char hex[VRTK_DIGEST_LENGTH], vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneDigest", "scene");
    vrtk::requireArgument(hex, "vrtkSceneDigest", "hex");
    vrtkDigestOptions chosen = VRTK_DIGEST_OPTIONS_INIT;
    vrtk::readOptions(options, chosen);
    const std::string text = vrtk::hexText(vrtk::SceneDigest(*scene, chosen.includeIds != 0).run());
    std::memcpy(hex, text.c_str(), VRTK_DIGEST_LENGTH);
  });
}
