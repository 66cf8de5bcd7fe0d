// A scene with objects of all 18 classes, for tests that let its operations fail.
#ifndef VORNATH_TESTS_FAULTS_ALL_CLASSES_HPP
#define VORNATH_TESTS_FAULTS_ALL_CLASSES_HPP

#include <array>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "support/flat_handles.hpp"
#include "vornath_data/catalogue.h"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_test {

inline constexpr std::uint32_t kClasses = vrnt::data::kClassCount;

// The flat handle of a scene is its address.
inline vrdmScene_t* flat(vrnt::data::Scene& scene) {
  return reinterpret_cast<vrdmScene_t*>(&scene);
}

inline std::uint32_t addBytes(vrdmScene_t* scene, std::uint32_t objectClass,
                              const std::string& bytes) {
  // A mesh of no vertices has no bytes; the descriptors of the others say how many they have.
  const std::array<std::int32_t, 5> mesh{};
  const std::array<std::int32_t, 5> texture{static_cast<std::int32_t>(bytes.size()), 1, 1, 8, 0};
  const std::array<std::uint64_t, 3> graph{bytes.size(), 0, 0};
  const void* const desc = objectClass == VRDM_CLASS_MESH ? mesh.data()
                           : objectClass == VRDM_CLASS_TEXTURE
                               ? texture.data()
                               : static_cast<const void*>(graph.data());
  AssetStorage* const storage = vrdmAssetStorageCopy(bytes.data(), bytes.size());
  const std::uint32_t slot = vrdmAddAsset(scene, objectClass, desc, &storage);
  vrdmAssetStorageRelease(storage);
  return slot;
}

// Fills every class with two objects, the second of which is freed again where `gaps`; every slot
// of theirs is set and every list has three elements. Cameras, lights and materials have a value
// with references, lists, a text and a texture.
inline void fillAllClasses(vrdmScene_t* scene, bool gaps = true) {
  for (std::uint32_t objectClass = 0; objectClass < kClasses; ++objectClass) {
    for (int i = 0; i < 2; ++i) {
      switch (vrdmObjectClass(objectClass)) {
        case VRDM_KIND_PROGRAM:
          vrdmAddProgram(scene, objectClass, i == 0 ? "program a()" : "program b()");
          continue;
        case VRDM_KIND_ASSET:
          addBytes(scene, objectClass, objectClass == VRDM_CLASS_MESH ? "" : "bytes of an asset");
          continue;
        default:
          vrdmCreateInstance(scene, objectClass);
      }
      const ValueHandle value = parseValue(
          "{ image = { texture_ref = 0; }; list = &[ 1, 2, 3 ]; both = { p = &&{ f = 2.5; }; c = "
          "[ 72c, 105c ]; e = ON : enum { OFF; ON; }; }; shared = [ &[ 1.0, 2.0 ] ]; }");
      if (vrdmHasValue(objectClass)) vrdmSetInstanceValue(scene, objectClass, i, value.get());
      for (std::uint32_t slot = 0; slot < vrdmReferenceCount(objectClass); ++slot) {
        const bool list = vrdmReferenceType(objectClass, slot).kind >= VRDM_REFERENCE_LIST;
        vrdmSetReference(scene, objectClass, i, slot, list ? 3 : 0);
        std::int32_t* const words = vrdmModifyReferenceList(scene, objectClass, i, slot);
        for (std::int32_t word = 0; words != nullptr && word < 3; ++word) words[word] = word % 2;
      }
    }
    if (gaps) vrdmRemove(scene, objectClass, 1);
  }
}

inline std::string dumpOf(const vrnt::data::Scene& scene) {
  std::ostringstream text;
  text << scene;
  return text.str();
}

}  // namespace vornath_test

#endif
