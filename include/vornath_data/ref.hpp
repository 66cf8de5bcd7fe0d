/// References between the objects of a scene. A reference is a slot index, never a pointer.
#ifndef VORNATH_DATA_REF_HPP
#define VORNATH_DATA_REF_HPP

#include <cstdint>
#include <type_traits>
#include <vector>

namespace vrnt {

/// The slot index of an object in the container of T, or -1 for none. It has no generation number:
/// after the object is removed, the reference leads to a free slot, and later to the object that
/// takes this slot.
template <typename T>
struct Ref {
  using Target = T;

  std::int32_t index = -1;

  friend constexpr bool operator==(Ref a, Ref b) { return a.index == b.index; }
  friend constexpr bool operator!=(Ref a, Ref b) { return a.index != b.index; }
};

static_assert(sizeof(Ref<void>) == 4 && std::is_trivially_copyable_v<Ref<void>>,
              "a reference goes to file as its 32-bit word");

/// A list of slot indices in the container of T; -1 for none.
template <typename T>
struct RefList {
  using Target = T;
  static constexpr std::int32_t kNoTarget = -1;

  std::vector<std::int32_t> words;
};

/// A list whose words have two meanings, told apart by their sign. A word of 0 or more is a plain
/// slot index (see nonNegative()). A negative word is the bitwise complement of a slot index (see
/// negative()). Only the word kNoTarget refers to nothing.
template <typename T>
struct CodedRefList {
  using Target = T;
  static constexpr std::int32_t kNoTarget = INT32_MIN;

  static constexpr std::int32_t nonNegative(std::int32_t index) { return index; }
  static constexpr std::int32_t negative(std::int32_t index) { return ~index; }

  std::vector<std::int32_t> words;
};

}  // namespace vrnt

#endif
