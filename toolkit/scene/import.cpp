// Imports, with what undoes one that fails.
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "foundation/failure.hpp"
#include "scene/complete.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"
#include "vornath_toolkit/vrtk_scene.h"

struct vrtkRenumbering {
  std::array<std::vector<std::int32_t>, vrnt::data::kClassCount> slots;
};

namespace vrtk {
namespace {

using vrnt::data::ClassInfo;
using vrnt::data::Container;
using vrnt::data::ObjectKind;
using vrnt::data::Scene;
using vrnt::data::Stored;

template <typename Desc>
constexpr std::size_t kNumber = static_cast<std::size_t>(ClassInfo<Desc>::kClass);

// A free slot's content is kept until the slot is used again.

template <typename Source>
vrnt::data::Program<Source> copyOf(const vrnt::data::Program<Source>& program) {
  vrnt::data::Program<Source> copy;
  if (program.text != nullptr) {
    copy.text = static_cast<char*>(std::malloc(program.length + 1));
    if (copy.text == nullptr) throw std::bad_alloc();
    std::memcpy(copy.text, program.text, program.length + 1);
  }
  copy.length = program.length;
  copy.id = program.id;
  return copy;
}

template <typename Desc>
vrnt::data::Asset<Desc> copyOf(const vrnt::data::Asset<Desc>& asset) {
  return asset;
}

// What is needed to take the additions to a class back. An import adds instances behind the last
// slot, and programs and assets also to the lowest free slots; it changes nothing else.
template <typename Element>
struct ClassUndo {
  std::uint32_t size = 0;
  std::uint32_t firstFree = 0;
  vrnt::data::SlotVector<Element> room;  // so that taking back needs no memory
  std::vector<std::pair<std::uint32_t, Element>> freeSlots;
};

class Undo {
 public:
  // Throws std::bad_alloc. Reads the source's size, since the source may be the scene itself.
  Undo(const Scene& scene, const Scene& source) : versions_(scene.versions) {
    vrnt::data::forEachClass(
        [&](auto tag) { prepare<typename decltype(tag)::Desc>(scene, source); });
  }

  void run(Scene& scene) noexcept {
    vrnt::data::forEachClass([&](auto tag) { takeBack<typename decltype(tag)::Desc>(scene); });
    scene.versions = versions_;
  }

 private:
  template <typename Desc>
  void prepare(const Scene& scene, const Scene& source) {
    auto& undo = classes_.get<Desc>();
    const auto& container = scene.container<Desc>();
    undo.size = container.size();
    undo.firstFree = container.firstFree;
    const std::uint32_t added = source.container<Desc>().size();
    if (added == 0) return;
    undo.room.reserve(undo.size);
    if constexpr (ClassInfo<Desc>::kKind != ObjectKind::Instance) {
      for (std::uint32_t i = 0; i < undo.size && undo.freeSlots.size() < added; ++i) {
        if (!container.slots[i].live()) undo.freeSlots.emplace_back(i, copyOf(container.slots[i]));
      }
    }
  }

  template <typename Desc>
  void takeBack(Scene& scene) noexcept {
    auto& undo = classes_.get<Desc>();
    const auto& current = std::as_const(scene).container<Desc>();
    bool filled = current.size() != undo.size;
    for (const auto& [index, element] : undo.freeSlots) filled |= current.slots[index].live();
    if (!filled) return;
    auto& container = scene.container<Desc>();
    for (auto& [index, element] : undo.freeSlots) container.slots[index] = std::move(element);
    Container<Stored<Desc>> former;
    former.slots = std::move(undo.room);
    for (std::uint32_t i = 0; i < undo.size; ++i) {
      former.slots.append() = std::move(container.slots[i]);
    }
    former.firstFree = undo.firstFree;
    container = std::move(former);
  }

  vrnt::data::SceneVersions versions_;
  vrnt::data::detail::TupleOfClass<ClassUndo> classes_;
};

std::unique_ptr<vrtkRenumbering> emptyRenumbering(const Scene& source) {
  auto made = std::make_unique<vrtkRenumbering>();
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    made->slots[kNumber<Desc>].assign(source.container<Desc>().size(), -1);
  });
  return made;
}

std::string jsonOf(const vrtkRenumbering& renumbering) {
  std::string json = "{";
  for (std::uint32_t c = 0; c < renumbering.slots.size(); ++c) {
    const auto& slots = renumbering.slots[c];
    if (slots.empty()) continue;
    json += json.size() == 1 ? "\n  \"" : ",\n  \"";
    json += vrdmObjectName(c);
    json += "\": [";
    for (std::size_t i = 0; i < slots.size(); ++i) {
      if (i != 0) json += ", ";
      json += slots[i] < 0 ? "null" : std::to_string(slots[i]);
    }
    json += ']';
  }
  json += json.size() == 1 ? "}\n" : "\n}\n";
  return json;
}

}  // namespace
}  // namespace vrtk

std::uint32_t vrtkSceneImport(vrdmScene_t* scene, const vrdmScene_t* source,
                              vrtkRenumbering** renumbering, vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(scene, "vrtkSceneImport", "scene");
    vrtk::requireArgument(source, "vrtkSceneImport", "source");
    vrtk::requireValues(*source, "be imported");
    auto made = vrtk::emptyRenumbering(*source);
    vrtk::Undo undo(*scene, *source);
    try {
      const auto maps = scene->import(*source);
      vrnt::data::forEachClass([&](auto tag) {
        using Desc = typename decltype(tag)::Desc;
        auto& slots = made->slots[vrtk::kNumber<Desc>];
        for (const auto& [from, to] : maps.template get<Desc>().pairs()) {
          slots[static_cast<std::size_t>(from)] = to;
        }
      });
    } catch (...) {
      undo.run(*scene);
      throw;
    }
    if (renumbering != nullptr) *renumbering = made.release();
  });
}

void vrtkRenumberingDestroy(vrtkRenumbering* renumbering) { delete renumbering; }

const std::int32_t* vrtkRenumberingSlots(const vrtkRenumbering* renumbering,
                                         std::uint32_t objectClass, std::uint64_t* count) {
  const bool known = objectClass < renumbering->slots.size();
  if (count != nullptr) *count = known ? renumbering->slots[objectClass].size() : 0;
  if (!known || renumbering->slots[objectClass].empty()) return nullptr;
  return renumbering->slots[objectClass].data();
}

std::uint32_t vrtkRenumberingJson(const vrtkRenumbering* renumbering, char** json,
                                  vrtkError** error) {
  return vrtk::guarded(error, [&] {
    vrtk::requireArgument(renumbering, "vrtkRenumberingJson", "renumbering");
    vrtk::requireArgument(json, "vrtkRenumberingJson", "json");
    *json = vrtk::copyString(vrtk::jsonOf(*renumbering));
  });
}
