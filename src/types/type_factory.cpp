#include "types/type_factory.hpp"

#include <algorithm>
#include <boost/thread/recursive_mutex.hpp>
#include <mutex>
#include <new>
#include <utility>

#include "types/text_digest.hpp"
#include "types/type_digest.hpp"
#include "types/type_parser.hpp"
#include "types/type_pool.hpp"
#include "types/type_text.hpp"

namespace qex::vornath {
namespace {

std::mutex creationMutex;
std::atomic<bool> created{false};  // whether `factory` may be read without the mutex

// The one pointer to the factory. It is never destroyed: a host that calls after the library's
// static destructors have run finds it empty.
union FactoryStorage {
  constexpr FactoryStorage() : pointer() {}
  ~FactoryStorage() {}  // NOLINT(modernize-use-equals-default): that would be a deleted one

  std::shared_ptr<Type::Factory> pointer;
};
constinit FactoryStorage factory;

// Destroys the factory when the library is unloaded.
struct FactoryDestroyer {
  ~FactoryDestroyer() {
    const std::lock_guard guard(creationMutex);
    created.store(false, std::memory_order_release);
    factory.pointer.reset();
  }
};
const FactoryDestroyer factoryDestroyer;

TypePtr strippedType(const TypePtr& type) { return type ? TypePtr(&type->stripped()) : TypePtr(); }

bool annotated(const TypePtr& type) { return type && &type->stripped() != type.get(); }

// Returns the description without metadata, or nothing if it has none.
std::optional<TypeDesc> strippedDesc(Type::TBasetype base, bool own) {
  if (!own) return std::nullopt;
  return base;
}

std::optional<TypeDesc> strippedDesc(const Type::TEnum& enumeration, bool own) {
  bool any = own;
  for (const auto& constructor : enumeration.constructors) {
    any = any || !constructor.metadata.empty();
  }
  if (!any) return std::nullopt;
  std::vector<Type::Constructor> names;
  names.reserve(enumeration.constructors.size());
  for (const auto& constructor : enumeration.constructors) {
    names.push_back({constructor.name, {}, {}});
  }
  return Type::TEnum(std::move(names));
}

std::optional<TypeDesc> strippedDesc(const Type::TStruct& structure, bool own) {
  bool any = own;
  for (const Type::Field& field : structure.fields) any = any || annotated(field.type);
  if (!any) return std::nullopt;
  Type::TStruct stripped = structure;
  for (Type::Field& field : stripped.fields) field.type = strippedType(field.type);
  return stripped;
}

template <typename D>
std::optional<TypeDesc> strippedDesc(const Type::TArrayND<D>& array, bool own) {
  if (!own && !annotated(array.element)) return std::nullopt;
  return Type::TArrayND<D>(strippedType(array.element), array.shape);
}

std::optional<TypeDesc> strippedDesc(const Type::TRef& reference, bool own) {
  if (!own && !annotated(reference.target)) return std::nullopt;
  return Type::TRef{strippedType(reference.target)};
}

std::optional<TypeDesc> strippedDesc(const Type::TFun& function, bool own) {
  bool any = own || annotated(function.codomain);
  for (const TypePtr& domain : function.domain) any = any || annotated(domain);
  if (!any) return std::nullopt;
  Type::TFun stripped = function;
  stripped.codomain = strippedType(function.codomain);
  for (TypePtr& domain : stripped.domain) domain = strippedType(domain);
  return stripped;
}

// Equal in the order of types.
auto isEqualTo(const TypeDesc& desc, const Metadata& metadata) {
  return [&](const InternedType& type) {
    return equalInterned(type.desc(), type.metadata(), desc, metadata);
  };
}

auto hasText(std::string_view text) {
  return [text](const InternedType& type) {
    const std::string* const known = type.knownText();
    return known != nullptr && *known == text;
  };
}

auto hasFingerprint(const TextFingerprint& fingerprint) {
  return [&fingerprint](const InternedType& type) {
    return type.textFingerprint().length == fingerprint.length;
  };
}

auto is(const InternedType* type) {
  return [type](const InternedType& other) { return &other == type; };
}

bool hasValue(const Metadata& metadata) {
  return std::any_of(metadata.begin(), metadata.end(), [](const auto& entry) {
    return std::holds_alternative<HeapValue<DynamicValue>>(entry.second);
  });
}

// Whether a text has a second digest, of samples.
bool isSampled(std::string_view text) { return text.size() > kMaxWholeSample; }

// A pool whose types outlive the factory, where a leak checker finds it.
constinit const TypePool* volatile abandonedPool = nullptr;

}  // namespace

const std::shared_ptr<Type::Factory>& Type::get_factory(bool create) {
  if (!create || created.load(std::memory_order_acquire)) return factory.pointer;
  const std::lock_guard guard(creationMutex);
  if (!factory.pointer) {
    factory.pointer = std::make_shared<Factory>();
    created.store(true, std::memory_order_release);
  }
  return factory.pointer;
}

TypePtr InternedType::parse(std::string_view text) { return get_factory(true)->parseType(text); }

// Returns the factory, or null once it is gone.
static std::shared_ptr<Type::Factory> livingFactory() {
  const std::lock_guard guard(creationMutex);
  return factory.pointer;
}

void intrusive_ptr_add_ref(const InternedType* type) noexcept {
  // Once the factory is gone the library is being unloaded and nothing counts any more.
  if (!created.load(std::memory_order_relaxed)) return;
  std::atomic_ref(referenceCount(type)).fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const InternedType* type) noexcept {
  if (!created.load(std::memory_order_relaxed)) return;
  const std::atomic_ref references(referenceCount(type));
  std::uint32_t count = references.load(std::memory_order_relaxed);
  while (count > 1) {
    if (references.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                         std::memory_order_relaxed)) {
      return;
    }
  }
  if (const auto owner = livingFactory()) owner->releaseType(type);
}

TypePtr Type::Factory::findText(std::string_view text) const {
  TypePtr found = typesByText_.find(sampledDigest(text), hasText(text));
  if (!found && isSampled(text) && text.size() <= kMaxShortTextLength) {
    found = typesByText_.find(wholeDigest(text), hasText(text));
  }
  return found;
}

TypePtr Type::Factory::findLongText(std::string_view text) {
  TextFingerprint fingerprint;
  fingerprint.add(text);
  TypePtr type = typesByLongText_.find(fingerprint.digest, hasText(text));
  if (type) return type;
  {
    const boost::recursive_mutex::scoped_lock guard(*lock_);
    type = typesByLongText_.findLocked(fingerprint.digest, hasFingerprint(fingerprint));
  }
  if (!type || type->text() != text) return {};
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  indexLongTextLocked(type.get());
  return type;
}

// A text that was looked up once will be looked up again, and then needs no fingerprint.
void Type::Factory::indexLongTextLocked(const InternedType* type) {
  if (!type->hasLongText() || type->indexed_) return;
  if (typesByLongText_.findLocked(type->textFingerprint_.digest, is(type)) == nullptr) return;
  const std::string& text = type->text();
  typesByText_.reserveLocked(1);
  insertSampleLocked(text, type);
  type->indexed_ = true;
}

// Texts with the same samples are compared one after the other, so only a few of them are kept.
void Type::Factory::insertSampleLocked(std::string_view text, const InternedType* type) noexcept {
  constexpr int kMaxAlike = 8;
  int alike = 0;
  const auto replaced = [&](const InternedType& older) {
    return hasText(text)(older) || ++alike == kMaxAlike;
  };
  const std::uint64_t digest = sampledDigest(text);
  if (typesByText_.replaceLocked(digest, type, replaced) == nullptr) {
    typesByText_.insertLocked(digest, type);
  }
}

void Type::Factory::insertTextLocked(const InternedType* type) noexcept {
  if (type->hasLongText()) {
    const TextFingerprint& fingerprint = type->textFingerprint_;
    const InternedType* const older =
        typesByLongText_.replaceLocked(fingerprint.digest, type, hasFingerprint(fingerprint));
    if (older == nullptr) {
      typesByLongText_.insertLocked(fingerprint.digest, type);
    } else if (std::exchange(older->indexed_, false)) {
      typesByText_.eraseLocked(sampledDigest(*older->knownText()), is(older));
    }
    return;
  }
  const std::string_view text = type->shortText_;
  if (typesByText_.replaceLocked(type->textDigest_, type, hasText(text)) == nullptr) {
    typesByText_.insertLocked(type->textDigest_, type);
  }
  if (isSampled(text)) insertSampleLocked(text, type);
}

void Type::Factory::removeTextLocked(const InternedType* type) noexcept {
  if (!type->hasLongText()) {
    const std::string_view text = type->shortText_;
    typesByText_.eraseLocked(type->textDigest_, hasText(text));
    if (isSampled(text)) typesByText_.eraseLocked(sampledDigest(text), hasText(text));
    return;
  }
  const TextFingerprint& fingerprint = type->textFingerprint_;
  const InternedType* const inserted =
      typesByLongText_.findLocked(fingerprint.digest, hasFingerprint(fingerprint));
  if (inserted == nullptr) return;
  if (std::exchange(inserted->indexed_, false)) {
    typesByText_.eraseLocked(sampledDigest(*inserted->knownText()), is(inserted));
  }
  typesByLongText_.eraseLocked(fingerprint.digest, is(inserted));
}

TypePtr Type::Factory::makeStrippedLocked(const TypeDesc& desc, const Metadata& metadata) {
  const bool own = !metadata.empty();
  auto stripped = std::visit([own](const auto& a) { return strippedDesc(a, own); }, desc);
  return stripped ? makeType(*std::move(stripped)) : TypePtr();
}

Type::Factory::Factory()
    : lock_(std::make_unique<boost::recursive_mutex>()), pool_(std::make_unique<TypePool>()) {}

// Types that somebody still holds can be read after the factory is gone.
Type::Factory::~Factory() {
  if (typesByKey_.sizeLocked() != 0) abandonedPool = pool_.release();
}

TypePtr Type::Factory::makeType(TypeDesc&& desc, const Metadata& metadata) {
  return makeType(std::move(desc), metadata, nullptr);
}

TypePtr Type::Factory::makeType(const TypeDesc& desc, const Metadata& metadata) {
  return makeType(TypeDesc(desc), metadata, nullptr);
}

TypePtr Type::Factory::makeType(TypeDesc&& desc, Metadata&& metadata) {
  return makeType(std::move(desc), metadata, &metadata);
}

TypePtr Type::Factory::makeType(TypeDesc&& desc, const Metadata& metadata, Metadata* movable) {
  const std::uint64_t digest = typeDigest(desc, metadata);
  if (TypePtr found = typesByKey_.find(digest, isEqualTo(desc, metadata))) return found;

  const boost::recursive_mutex::scoped_lock guard(*lock_);
  if (TypePtr found = typesByKey_.findLocked(digest, isEqualTo(desc, metadata))) return found;
  if (movable != nullptr) return makeNewLocked(std::move(desc), std::move(*movable), digest);
  Metadata copy = metadata;
  // The copy of a value has another address.
  const std::uint64_t digestOfCopy = hasValue(metadata) ? typeDigest(desc, copy) : digest;
  return makeNewLocked(std::move(desc), std::move(copy), digestOfCopy);
}

TypePtr Type::Factory::makeNewLocked(TypeDesc&& desc, Metadata&& metadata, std::uint64_t digest) {
  TypePtr stripped = makeStrippedLocked(desc, metadata);
  typesByKey_.reserveLocked(1);
  typesByText_.reserveLocked(2);
  typesByLongText_.reserveLocked(1);

  void* const room = pool_->allocate();
  InternedType* type = nullptr;
  try {
    type = new (room) InternedType(std::move(desc), std::move(metadata), std::move(stripped));
  } catch (...) {
    pool_->free(room);
    throw;
  }
  type->keyDigest_ = digest;
  std::atomic_ref(referenceCount(type)).store(1, std::memory_order_release);
  typesByKey_.insertLocked(digest, type);
  insertTextLocked(type);
  return TypePtr(type, false);
}

TypePtr Type::Factory::findArray(const InternedType& element, std::int32_t extent) const noexcept {
  return typesByKey_.find(arrayDigest(element, extent), [&](const InternedType& type) {
    const auto* const array = type.getIf<TArrayND<int>>();
    return array != nullptr && array->element.get() == &element && array->shape == extent &&
           type.metadata().empty();
  });
}

TypePtr Type::Factory::parseType(std::string_view text) {
  if (TypePtr found = findText(text)) return found;
  if (text.size() > kMaxShortTextLength) {
    if (TypePtr found = findLongText(text)) return found;
  } else {
    const boost::recursive_mutex::scoped_lock guard(*lock_);
    if (TypePtr found = typesByText_.findLocked(wholeDigest(text), hasText(text))) return found;
  }
  TypePtr type = parseUncachedType(std::string(text));
  if (type->hasLongText()) {
    const boost::recursive_mutex::scoped_lock guard(*lock_);
    indexLongTextLocked(type.get());
  }
  return type;
}

const InternedType* Type::Factory::makePermanent(const InternedType* type) {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  permanentTypes_.insert(TypePtr(type));
  type->permanent_.store(true, std::memory_order_relaxed);
  return type;
}

void Type::Factory::releaseType(const InternedType* type) noexcept {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  const std::atomic_ref references(referenceCount(type));
  if (references.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (type->permanent_.load(std::memory_order_relaxed) && !shuttingDown_) return;
  destroyLocked(type);
}

void Type::Factory::destroyLocked(const InternedType* type) noexcept {
  typesByKey_.eraseLocked(type->keyDigest_, is(type));
  removeTextLocked(type);
  type->nextUnlinked_ = unlinked_;
  unlinked_ = type;
  if (destroying_) return;
  destroying_ = true;
  while (unlinked_ != nullptr) {
    const InternedType* const dead = std::exchange(unlinked_, unlinked_->nextUnlinked_);
    dead->~InternedType();
    pool_->free(const_cast<InternedType*>(dead));
  }
  destroying_ = false;
}

void Type::Factory::shutDown() {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  shuttingDown_ = true;
  const auto permanent = std::exchange(permanentTypes_, {});
}

std::size_t Type::Factory::liveTypes() const {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  return typesByKey_.sizeLocked();
}

}  // namespace qex::vornath
