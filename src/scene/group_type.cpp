#include "scene/group_type.hpp"

#include <utility>

#include "scene/value_or_throw.hpp"

namespace vrnt::data {

constinit std::array<detail::CachedGroupType, kTotalGroupCount> detail::cachedGroupTypes{};

namespace {

using detail::CachedGroupType;
using detail::cachedGroupTypes;

// Releases the handles before the library is unloaded. It is constructed after the first parse and
// therefore destroyed before the factory of types.
struct CacheRelease {
  ~CacheRelease() {
    for (CachedGroupType& cached : cachedGroupTypes) {
      if (vrntType_t* type = cached.annotated.exchange(nullptr)) vrntTypeDestroy(type);
      if (vrntType_t* type = cached.plain.exchange(nullptr)) vrntTypeDestroy(type);
    }
  }
};

// Stores the handle in `place`, or releases it if another thread has stored one already. Two
// threads may get different annotated types for one schema.
void publish(std::atomic<vrntType_t*>& place, TypeHandle type) {
  vrntType_t* expected = nullptr;
  if (place.compare_exchange_strong(expected, type.get(), std::memory_order_acq_rel)) {
    type.release();
  }
}

void parseInto(CachedGroupType& cached, const char* schema) {
  TypeHandle annotated = valueOrThrow(TypeHandle::parse(schema));
  static const CacheRelease release;
  publish(cached.plain, TypeHandle::adopt(vrntTypeStripMetadata(annotated.get())));
  publish(cached.annotated, std::move(annotated));
}

}  // namespace

GroupType groupType(const GroupEntry& group) {
  CachedGroupType& cached = cachedGroupTypes[group.ordinal];
  if (cached.annotated.load(std::memory_order_acquire) == nullptr) {
    parseInto(cached, group.schema);
  }
  return {cached.annotated.load(std::memory_order_acquire),
          cached.plain.load(std::memory_order_relaxed)};
}

bool detail::isGroupTypeApartFromCache(const vrntType_t* type, const GroupEntry& group) {
  const GroupType expected = groupType(group);
  return type == expected.plain || vrntTypeIsEqual(type, expected.annotated) != 0;
}

TypeHandle newGroupType(const GroupEntry& group) {
  groupType(group);  // from now on the type is held, so the parse finds it
  return valueOrThrow(TypeHandle::parse(group.schema));
}

}  // namespace vrnt::data
