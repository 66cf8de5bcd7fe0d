// Scenes as a naive model: vectors of what each slot holds, searched from the front. It knows no
// container, no file and no renumbering table, only the queries of the catalogue.
#ifndef VORNATH_FUZZ_SCENES_HPP
#define VORNATH_FUZZ_SCENES_HPP

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/streams.hpp"
#include "vornath_data/scene.hpp"
#include "vornath_data/vrdm.h"

namespace vornath_fuzz {

using vrnt::data::Scene;

inline constexpr std::uint32_t kClasses = 18;
inline constexpr std::uint32_t kSceneGroups = 4;

using Words = std::vector<std::int32_t>;

// A slot of any class. What a class lacks stays empty.
struct ModelObject {
  bool live = false;
  std::string text;                     // programs: up to the first NUL
  vrnt::UniqueId id;                    // programs and assets
  std::string desc;                     // assets
  const AssetStorage* block = nullptr;  // assets
  std::vector<std::string> groups;      // instances: the record of each group
  std::vector<Words> slots;             // instances: a single slot is a list of one
  const vrntValue_t* value = nullptr;   // instances
  std::uint32_t version = 0;            // instances
  std::uint32_t referencesVersion = 0;  // instances
  std::vector<std::uint32_t> groupVersions;

  std::string bytes() const;  // of a live asset
};

struct ModelScene {
  vrnt::UniqueId id;
  std::vector<std::string> groups;
  std::uint32_t version = 0;
  std::array<std::uint32_t, kSceneGroups> groupVersions{};
  std::array<std::uint32_t, kClasses> classVersions{};
  std::array<std::vector<ModelObject>, kClasses> classes;
};

bool isList(std::uint32_t objectClass, std::uint32_t slot);

// Where a type has structs of one int that bears one of the labels, in the order of the fields. For
// types that nest little.
std::vector<std::uint64_t> singleInts(const vrntType_t* type,
                                      const std::vector<std::string>& labels);

// What a scene holds now.
ModelScene modelOf(const Scene& scene);

// An object as vrdmCreateInstance() makes it in a new slot, but for its counters.
ModelObject newInstance(std::uint32_t objectClass);

// All that a model has, counters and addresses too.
void checkSame(const ModelScene& expected, const ModelScene& actual);
void checkSame(const ModelObject& expected, const ModelObject& actual);

// What a file of a scene keeps: for each slot whether it is live, and what live ones hold, values
// by their streams. The scene's id counts, a program's not: that of a text with a NUL changes.
void checkSameContent(const ModelScene& expected, const ModelScene& actual);

// Imports the source, which is a copy even if the scenes are one, into the target, and checks the
// maps that the import gave. Where it must have copied a value, the value is looked at in `actual`,
// the target's model afterwards. Counters are taken from there.
void importInto(ModelScene& target, const ModelScene& source,
                const vrnt::data::detail::TupleOfClass<vrnt::data::RefMap>& maps,
                const ModelScene& actual);

// Whether every live Camera, Light and Material has its value.
bool isComplete(const ModelScene& scene);

// How much there is to walk in a scene, in bytes or as if it were: slots, words, assets and what
// values print as. Above the first limit it takes too long to look at everything, above the second
// to do anything.
inline constexpr std::uint64_t kLightScene = std::uint64_t{1} << 17;
inline constexpr std::uint64_t kHeavyScene = std::uint64_t{1} << 20;
std::uint64_t weightOf(const Scene& scene);

// Whether two scenes are equivalent, found out from their records, words and printed values; empty
// where a value can't be printed.
std::optional<bool> naiveEquivalence(const ModelScene& a, const ModelScene& b);

// Whether all groups and values can be printed.
bool isPrintable(const ModelScene& scene);

// The library's answer, empty for a vrnt::Exception. Memory that runs out is std::bad_alloc.
std::optional<bool> equivalent(const Scene& a, const Scene& b);
std::optional<std::string> dump(const Scene& scene);

// A dump without the addresses in it.
std::string withoutAddresses(const std::string& dump);

std::string write(const Scene& scene);
// The scene must be readable.
Scene readBack(const std::string& bytes);

}  // namespace vornath_fuzz

#endif
