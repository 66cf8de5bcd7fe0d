/// The model of types: the immutable, interned object behind each type handle.
#ifndef VORNATH_TYPES_TYPE_HPP
#define VORNATH_TYPES_TYPE_HPP

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "types/metadata.hpp"
#include "types/text_fingerprint.hpp"
#include "types/type_desc.hpp"
#include "types/type_pointer.hpp"
#include "vornath_data/type_library.hpp"

namespace qex::vornath {

/// What an upper layer keeps with a type. The type destroys it.
class KeptWithType {
 public:
  virtual ~KeptWithType() = default;
};

/// The type of a value: an immutable description with annotations, its size, its layout and its
/// reference slots. Every Type is an InternedType; asInterned() converts.
///
/// Identity: only the Factory creates types, one object for each description and metadata, so that
/// equal types have equal addresses. Values in metadata are compared by their blocks' addresses, so
/// that each parse of a text with such values creates a type of its own. Payloads of an enum's
/// constructors are not compared: of two enums that differ only in payloads, the first is used for
/// both. Lifetime: until the reference count falls to zero or, if permanent, until
/// vrntValuesShutdown(). Threads: everything but the count and `permanent` is constant after
/// construction and is read without a lock; kept() says itself who may change what is there.
///
/// Long texts and long lists of references are built on the first request, since each type of a
/// deep nest contains nearly all of the innermost one's: memory grows with the nest's text, not
/// with its square.
class InternedType final : public Type {
 public:
  /// Returns the type of a text. Throws what the parse throws.
  static TypePtr parse(std::string_view text);

  const TypeDesc& desc() const noexcept { return desc_; }
  /// Returns the alternative, which must be the one that the description holds.
  template <typename Alternative>
  const Alternative& get() const {
    return std::get<Alternative>(desc_);
  }
  template <typename Alternative>
  const Alternative* getIf() const noexcept {
    return std::get_if<Alternative>(&desc_);
  }
  const Metadata& metadata() const noexcept { return metadata_; }
  std::uint64_t alignment() const noexcept { return alignment_; }
  std::uint64_t size() const noexcept { return size_; }
  /// Returns whether the type has a definite size, so that values of it can be created.
  bool concrete() const noexcept { return concrete_; }
  /// Returns concrete(), and whether every reference has a target that is deepConcrete() too.
  bool deepConcrete() const noexcept { return deepConcrete_; }

  /// Returns the canonical text, which lives as long as the type. Throws std::bad_alloc if there is
  /// no memory for a long text at its first request.
  const std::string& text() const {
    const std::string* const known = knownText();
    return known ? *known : buildText();
  }
  /// Returns the canonical text, or null for a long one that was not requested yet.
  const std::string* knownText() const noexcept { return text_.load(std::memory_order_acquire); }
  /// Returns whether the text is built on request; textFingerprint() is then set.
  bool hasLongText() const noexcept { return textFingerprint_.length != 0; }
  /// Returns the fingerprint of a long text; zero for a short one.
  const TextFingerprint& textFingerprint() const noexcept { return textFingerprint_; }

  /// Returns the slots of the references in a value, in 8-byte words from its start, ascending.
  /// Throws std::bad_alloc if there is no memory for a long list at its first request; later calls
  /// do not throw.
  const std::vector<std::uint64_t>& refSlots() const {
    const auto* const known = knownRefSlots();
    return known ? *known : buildRefSlots();
  }
  /// Returns the same list, or null for a long one that was not requested yet.
  const std::vector<std::uint64_t>* knownRefSlots() const noexcept {
    return refSlots_.load(std::memory_order_acquire);
  }
  /// Returns the length of refSlots(); does not build the list.
  std::uint64_t refSlotCount() const noexcept { return refSlotCount_; }
  /// Returns the length of the longest chain of references from a value that the type implies: 0
  /// without references, 1 for a `void*`, the target's plus one for any other reference.
  std::uint32_t referenceDepth() const noexcept { return referenceDepth_; }
  /// Returns the type whose refSlots() repeat, one value after the other, to give those of this
  /// type: the innermost element type of a long array, or this type.
  const InternedType& slotPattern() const noexcept { return slotPattern_ ? *slotPattern_ : *this; }

  /// Returns this type without metadata at any depth, which may be this type.
  const InternedType& stripped() const noexcept { return stripped_ ? *stripped_ : *this; }

  /// Returns the cached default value of this type, or null. It lives as long as the type.
  const DynamicValue* cachedDefault() const noexcept {
    const auto* cached = cachedDefault_.load(std::memory_order_acquire);
    return cached ? cached->get() : nullptr;
  }
  /// Caches a default value and returns the cached one; later calls do not replace it. The value's
  /// type must not be this type, which the cache would keep alive forever. Throws std::bad_alloc.
  const DynamicValue& cacheDefault(DynamicValue&& value) const;

  /// Returns where the value layer keeps what it worked out from this type; null at first. The type
  /// owns what is stored there. Not to be replaced.
  std::atomic<KeptWithType*>& kept() const noexcept { return kept_; }

 private:
  friend class Type::Factory;

  InternedType(TypeDesc&& desc, Metadata&& metadata, TypePtr stripped);
  ~InternedType();

  const std::string& buildText() const;
  const std::vector<std::uint64_t>& buildRefSlots() const;

  TypeDesc desc_;
  Metadata metadata_;
  std::uint64_t alignment_ = 0;
  std::uint64_t size_ = 0;
  bool concrete_ = false;
  bool deepConcrete_ = false;
  std::uint32_t referenceDepth_ = 0;
  std::uint64_t refSlotCount_ = 0;
  std::string shortText_;
  std::vector<std::uint64_t> inlineRefSlots_;
  // These point to the members above or to heap objects that the type owns.
  mutable std::atomic<const std::string*> text_{nullptr};
  mutable std::atomic<const std::vector<std::uint64_t>*> refSlots_{nullptr};
  TypePtr stripped_;
  mutable std::atomic<const HeapValue<DynamicValue>*> cachedDefault_{nullptr};
  mutable std::atomic<KeptWithType*> kept_{nullptr};

  // The reference count of another type may be in the same line of the cache as the last 56 bytes.
  // So those that are seldom read stand here.
  const InternedType* slotPattern_ = nullptr;           // of a long array: kept alive by desc_
  TextFingerprint textFingerprint_;                     // of a long text only
  std::uint64_t textDigest_ = 0;                        // of a short text only
  std::uint64_t keyDigest_ = 0;                         // the factory's
  mutable const InternedType* nextUnlinked_ = nullptr;  // the factory's list of types to destroy
  mutable bool indexed_ = false;  // the factory's: whether a long text is in its table of samples
  mutable std::atomic<bool> permanent_{false};
};

inline const InternedType& asInterned(const Type& type) {
  return static_cast<const InternedType&>(type);
}

}  // namespace qex::vornath

#endif
