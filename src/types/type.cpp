#include "types/type.hpp"

#include <algorithm>
#include <bit>

#include "types/extents.hpp"
#include "types/layout.hpp"
#include "types/metadata.hpp"
#include "types/text_digest.hpp"
#include "types/type_handle.hpp"
#include "types/type_text.hpp"
#include "vornath_data/result.hpp"

namespace qex::vornath {
namespace {

using vrnt::ErrorCode;
using vrnt::Exception;

// A set of names, in one block of memory.
class NameSet {
 public:
  explicit NameSet(std::size_t maxSize) : slots_(std::bit_ceil(2 * maxSize)) {}

  /// Returns whether the name was not there yet. It must outlive the set.
  bool insert(const std::string& name) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = wholeDigest(name) & mask;
    for (; slots_[i] != nullptr; i = (i + 1) & mask) {
      if (*slots_[i] == name) return false;
    }
    slots_[i] = &name;
    return true;
  }

 private:
  std::vector<const std::string*> slots_;
};

// Returns the name of the first item that occurs again later in the list, or null.
template <typename Items, typename NameOf>
const std::string* firstDuplicate(const Items& items, NameOf nameOf) {
  constexpr std::size_t kFew = 8;
  if (items.size() <= kFew) {
    for (auto item = items.begin(); item != items.end(); ++item) {
      const auto isTwin = [&](const auto& later) { return nameOf(later) == nameOf(*item); };
      if (std::any_of(item + 1, items.end(), isTwin)) return &nameOf(*item);
    }
    return nullptr;
  }
  NameSet later(items.size());
  const std::string* first = nullptr;
  for (auto item = items.rbegin(); item != items.rend(); ++item) {
    const std::string& name = nameOf(*item);
    if (!later.insert(name)) first = &name;
  }
  return first;
}

// In a nest of which each level adds references, each type has nearly all of them.
constexpr std::uint64_t kMaxInlineRefSlots = 64;

// Publishes a value. If another thread has published one first, drops this one. Returns the
// published one.
template <typename T>
const T& publishFirst(std::atomic<const T*>& slot, T value) {
  auto own = std::make_unique<const T>(std::move(value));
  const T* first = nullptr;
  if (slot.compare_exchange_strong(first, own.get(), std::memory_order_acq_rel)) {
    first = own.release();
  }
  return *first;
}

}  // namespace

Type::Field::Field(TypePtr fieldType, std::string fieldLabel)
    : type(std::move(fieldType)), label(std::move(fieldLabel)) {
  if (!type->concrete()) {
    throw Exception(ErrorCode::InvalidArguments, "Not a concrete type: {}.", type->text());
  }
}

Type::TStruct::TStruct(std::vector<Field> structFields) : fields(std::move(structFields)) {
  const auto label = [](const Field& field) -> const std::string& { return field.label; };
  if (const std::string* duplicate = firstDuplicate(fields, label)) {
    throw Exception(ErrorCode::InvalidArguments, "Duplicate struct field: {}.", *duplicate);
  }
  offsets = structOffsets(fields);
}

Type::TEnum::TEnum(std::vector<Constructor> enumConstructors)
    : constructors(std::move(enumConstructors)) {
  if (constructors.empty()) {
    throw Exception(ErrorCode::InvalidArguments, "Enum requires at least one constructor.");
  }
  const auto name = [](const Constructor& c) -> const std::string& { return c.name; };
  if (const std::string* duplicate = firstDuplicate(constructors, name)) {
    throw Exception(ErrorCode::InvalidArguments, "Duplicate enum constructor: {}.", *duplicate);
  }
}

std::int32_t Type::TEnum::constructorIndex(std::string_view name) const {
  for (std::size_t i = 0; i < constructors.size(); ++i) {
    if (constructors[i].name == name) return static_cast<std::int32_t>(i);
  }
  throw Exception(ErrorCode::InvalidArguments, "Invalid enum constructor: {}", name);
}

const std::string& Type::TEnum::constructorName(std::int32_t code) const {
  if (code < 0 || static_cast<std::size_t>(code) >= constructors.size()) {
    throw Exception(ErrorCode::InvalidArguments, "Enum code out of range: {}", code);
  }
  return constructors[static_cast<std::size_t>(code)].name;
}

template <typename D>
Type::TArrayND<D>::TArrayND(TypePtr elementType, std::optional<D> extents)
    : element(std::move(elementType)), shape(extents) {
  if (!element->concrete()) throw Exception(ErrorCode::InvalidArguments, "concrete type required");
  if (!shape) return;
  for (const std::int32_t extent : Extents(*shape)) {
    if (extent < 0) throw Exception(ErrorCode::InvalidArguments, "negative array length");
  }
}

template struct Type::TArrayND<int>;
template struct Type::TArrayND<index2>;
template struct Type::TArrayND<index3>;
template struct Type::TArrayND<index4>;

InternedType::InternedType(TypeDesc&& desc, Metadata&& metadata, TypePtr stripped)
    : desc_(std::move(desc)), metadata_(std::move(metadata)), stripped_(std::move(stripped)) {
  Layout layout = computeLayout(desc_);
  size_ = layout.size;
  alignment_ = layout.alignment;
  concrete_ = layout.concrete;
  deepConcrete_ = layout.deepConcrete;
  refSlotCount_ = layout.refSlotCount;
  referenceDepth_ = layout.referenceDepth;
  if (refSlotCount_ <= kMaxInlineRefSlots) {
    inlineRefSlots_ = computeRefSlots(desc_, refSlotCount_);
    refSlots_.store(&inlineRefSlots_, std::memory_order_relaxed);
  } else if (const auto array = arrayDesc(desc_)) {
    slotPattern_ = &(*array->element)->slotPattern();
  }
  const std::string metadataSuffix = metadataText(metadata_);
  if (auto text = qex::vornath::shortText(desc_, metadataSuffix)) {
    shortText_ = *std::move(text);
    text_.store(&shortText_, std::memory_order_relaxed);
    textDigest_ = wholeDigest(shortText_);
  } else {
    textFingerprint_ = qex::vornath::textFingerprint(desc_, metadataSuffix);
  }
}

InternedType::~InternedType() {
  delete kept_.load(std::memory_order_acquire);
  delete cachedDefault_.load(std::memory_order_acquire);
  const std::string* const text = text_.load(std::memory_order_acquire);
  if (text != &shortText_) delete text;
  const auto* const slots = refSlots_.load(std::memory_order_acquire);
  if (slots != &inlineRefSlots_) delete slots;
}

const std::string& InternedType::buildText() const {
  std::string text;
  appendText(text, *this);
  return publishFirst(text_, std::move(text));
}

const std::vector<std::uint64_t>& InternedType::buildRefSlots() const {
  return publishFirst(refSlots_, computeRefSlots(desc_, refSlotCount_));
}

const DynamicValue& InternedType::cacheDefault(DynamicValue&& value) const {
  auto kept = std::make_unique<const HeapValue<DynamicValue>>(std::move(value));
  const HeapValue<DynamicValue>* first = nullptr;
  if (cachedDefault_.compare_exchange_strong(first, kept.get(), std::memory_order_acq_rel)) {
    first = kept.release();
  }
  return **first;
}

vrntType_t* allocateType(const Type& type) {
  intrusive_ptr_add_ref(&asInterned(type));
  return typeHandle(asInterned(type));
}

}  // namespace qex::vornath
