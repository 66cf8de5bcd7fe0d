#include "types/type_factory.hpp"

#include <boost/thread/recursive_mutex.hpp>
#include <cstring>
#include <mutex>
#include <utility>

#include "types/type_parser.hpp"
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

std::uint64_t mix(std::uint64_t digest, std::uint64_t word) {
  digest = (digest ^ word) * 0x9E3779B97F4A7C15U;
  return digest ^ (digest >> 29);
}

std::uint64_t wordAt(std::string_view text, std::size_t position) {
  std::uint64_t word;
  std::memcpy(&word, text.data() + position, sizeof word);
  return word;
}

std::uint64_t textDigest(std::string_view text) {
  constexpr std::size_t kWord = sizeof(std::uint64_t);
  constexpr std::size_t kSamples = 32;
  std::uint64_t digest = mix(0, text.size());
  if (text.size() < kWord) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), text.size());
    return mix(digest, word);
  }
  const std::size_t last = text.size() - kWord;
  const std::size_t step = last / kSamples > kWord ? last / kSamples : kWord;
  for (std::size_t position = 0; position < last; position += step) {
    digest = mix(digest, wordAt(text, position));
  }
  return mix(digest, wordAt(text, last));
}

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

void intrusive_ptr_add_ref(const InternedType* type) noexcept {
  // Once the factory is gone the library is being unloaded and nothing counts any more.
  if (!type->factory_.expired()) type->references_.fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const InternedType* type) noexcept {
  if (type->factory_.expired()) return;
  std::uint32_t count = type->references_.load(std::memory_order_relaxed);
  while (count > 1) {
    if (type->references_.compare_exchange_weak(count, count - 1, std::memory_order_release,
                                                std::memory_order_relaxed)) {
      return;
    }
  }
  if (const auto owner = type->factory_.lock()) owner->releaseType(type);
}

Type::Factory::TextKey::TextKey(std::string_view typeText)
    : digest(textDigest(typeText)), text(typeText) {}

TypePtr Type::Factory::findByTextLocked(std::string_view text) {
  const auto found = typesByText_.find(TextKey(text));
  if (found != typesByText_.end()) return TypePtr(found->second);
  return text.size() > kMaxShortTextLength ? findLongTextLocked(text) : TypePtr();
}

TypePtr Type::Factory::findLongTextLocked(std::string_view text) {
  TextFingerprint fingerprint;
  fingerprint.add(text);
  const auto found = typesByLongText_.find(LongTextKey(fingerprint));
  if (found == typesByLongText_.end() || found->second->text() != text) return TypePtr();
  TypePtr type(found->second);
  indexLongTextLocked(type.get());
  return type;
}

// A text that was looked up once will be looked up again, and then needs no fingerprint.
void Type::Factory::indexLongTextLocked(const InternedType* type) {
  if (!type->hasLongText() || type->indexed_) return;
  const auto found = typesByLongText_.find(LongTextKey(type->textFingerprint_));
  if (found == typesByLongText_.end() || found->second != type) return;
  typesByText_.emplace(TextKey(type->text()), type);
  type->indexed_ = true;
}

void Type::Factory::insertTextLocked(InternedType* type) {
  if (type->hasLongText()) {
    insertLongTextLocked(type);
    return;
  }
  // The older entry's key points into the older type's text, so it is replaced too.
  auto node = typesByText_.extract(TextKey(type->shortText_));
  if (node.empty()) {
    typesByText_.emplace(TextKey(type->shortText_), type);
  } else {
    node.key() = TextKey(type->shortText_);
    node.mapped() = type;
    typesByText_.insert(std::move(node));
  }
}

void Type::Factory::insertLongTextLocked(InternedType* type) {
  const auto [entry, isNew] =
      typesByLongText_.try_emplace(LongTextKey(type->textFingerprint_), type);
  if (isNew) return;
  const InternedType* const older = std::exchange(entry->second, type);
  if (std::exchange(older->indexed_, false)) typesByText_.erase(TextKey(*older->knownText()));
}

void Type::Factory::removeTextLocked(const InternedType* type) noexcept {
  if (!type->hasLongText()) {
    typesByText_.erase(TextKey(type->shortText_));
    return;
  }
  const auto entry = typesByLongText_.find(LongTextKey(type->textFingerprint_));
  if (entry == typesByLongText_.end()) return;
  const InternedType* const inserted = entry->second;
  if (std::exchange(inserted->indexed_, false)) typesByText_.erase(TextKey(*inserted->knownText()));
  typesByLongText_.erase(entry);
}

TypePtr Type::Factory::makeStrippedLocked(const TypeDesc& desc, const Metadata& metadata) {
  const bool own = !metadata.empty();
  auto stripped = std::visit([own](const auto& a) { return strippedDesc(a, own); }, desc);
  return stripped ? makeType(*std::move(stripped)) : TypePtr();
}

Type::Factory::Factory() : lock_(std::make_unique<boost::recursive_mutex>()) {}

Type::Factory::~Factory() = default;

TypePtr Type::Factory::makeType(TypeDesc desc, const Metadata& metadata) {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  if (const auto found = typesByKey_.find({&metadata, &desc}); found != typesByKey_.end()) {
    return TypePtr(found->second);
  }
  TypePtr stripped = makeStrippedLocked(desc, metadata);

  struct Delete {
    void operator()(InternedType* type) const { delete type; }
  };
  std::unique_ptr<InternedType, Delete> owned(
      new InternedType(std::move(desc), metadata, std::move(stripped), get_factory(true)));
  InternedType* const type = owned.get();
  const auto key = typesByKey_.emplace(Key{&type->metadata_, &type->desc_}, type).first;
  try {
    insertTextLocked(type);
  } catch (...) {
    typesByKey_.erase(key);
    throw;
  }
  return TypePtr(owned.release());
}

TypePtr Type::Factory::parseType(std::string_view text) {
  {
    const boost::recursive_mutex::scoped_lock guard(*lock_);
    if (TypePtr found = findByTextLocked(text)) return found;
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
  if (type->references_.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
  if (type->permanent_.load(std::memory_order_relaxed) && !shuttingDown_) return;
  destroyLocked(type);
}

void Type::Factory::destroyLocked(const InternedType* type) noexcept {
  typesByKey_.erase({&type->metadata_, &type->desc_});
  removeTextLocked(type);
  type->nextUnlinked_ = unlinked_;
  unlinked_ = type;
  if (destroying_) return;
  destroying_ = true;
  while (unlinked_) delete std::exchange(unlinked_, unlinked_->nextUnlinked_);
  destroying_ = false;
}

void Type::Factory::shutDown() {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  shuttingDown_ = true;
  const auto permanent = std::exchange(permanentTypes_, {});
}

std::size_t Type::Factory::liveTypes() const {
  const boost::recursive_mutex::scoped_lock guard(*lock_);
  return typesByKey_.size();
}

}  // namespace qex::vornath
