#include "scene/complete.hpp"

#include <fmt/format.h>

#include "foundation/failure.hpp"

namespace vrtk {

void requireValues(const vrnt::data::Scene& scene, const char* what) {
  vrnt::data::forEachClass([&](auto tag) {
    using Desc = typename decltype(tag)::Desc;
    if constexpr (vrnt::data::ClassInfo<Desc>::kHasValue) {
      const auto& container = scene.container<Desc>();
      for (std::uint32_t i = 0; i < container.size(); ++i) {
        const auto& object = container.slots[i];
        if (!object.live() || object.value.get() != nullptr) continue;
        throw Failure(VRTK_SCENE_INCOMPLETE,
                      fmt::format("{}/{} has no value, and so the scene cannot {}; give it one",
                                  vrnt::data::ClassInfo<Desc>::kName, i, what));
      }
    }
  });
}

}  // namespace vrtk
