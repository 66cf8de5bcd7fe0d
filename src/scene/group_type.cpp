#include "group_type.hpp"

#include <array>
#include <atomic>
#include <utility>

#include "made.hpp"

namespace vrnt::data {

namespace {

// `annotated` is stored last: whoever sees it sees the other one.
struct CachedType {
  std::atomic<vrntType_t*> annotated{nullptr};
  std::atomic<vrntType_t*> plain{nullptr};
};

constinit std::array<CachedType, kTotalGroupCount> cachedTypes{};

// Gives the handles back before the library goes. Made after the first parse, so that it ends
// before the factory of types does.
struct CacheEnd {
  ~CacheEnd() {
    for (CachedType& cached : cachedTypes) {
      if (vrntType_t* type = cached.annotated.exchange(nullptr)) vrntTypeDestroy(type);
      if (vrntType_t* type = cached.plain.exchange(nullptr)) vrntTypeDestroy(type);
    }
  }
};

constexpr std::array<const char*, kTotalGroupCount> collectSchemas() {
  std::array<const char*, kTotalGroupCount> schemas{};
  const auto collect = [&schemas](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    forEachGroup<Desc>([&schemas](const auto& group, auto position) {
      schemas[kFirstGroupOrdinal<Desc> + position] = group.schema;
    });
  };
  forEachClass(collect);
  collect(ClassTag<SceneData>{});
  return schemas;
}

constexpr std::array<const char*, kTotalGroupCount> schemas = collectSchemas();

// Moves the handle into the place, or drops it if another thread was faster. Two threads may hold
// different annotated types of one schema here; the first stays.
void publish(std::atomic<vrntType_t*>& place, TypeHandle type) {
  vrntType_t* expected = nullptr;
  if (place.compare_exchange_strong(expected, type.get(), std::memory_order_acq_rel)) {
    type.release();
  }
}

void parseInto(CachedType& cached, const char* schema) {
  TypeHandle annotated = made(TypeHandle::parse(schema));
  static const CacheEnd end;
  publish(cached.plain, TypeHandle::adopt(vrntTypeStripMetadata(annotated.get())));
  publish(cached.annotated, std::move(annotated));
}

}  // namespace

GroupType groupType(std::size_t ordinal) {
  CachedType& cached = cachedTypes[ordinal];
  if (cached.annotated.load(std::memory_order_acquire) == nullptr) {
    parseInto(cached, schemas[ordinal]);
  }
  return {cached.annotated.load(std::memory_order_acquire),
          cached.plain.load(std::memory_order_relaxed)};
}

TypeHandle newGroupType(std::size_t ordinal) {
  groupType(ordinal);  // held from now on, so that the parse finds it
  return made(TypeHandle::parse(schemas[ordinal]));
}

}  // namespace vrnt::data
