/// References between the objects of a scene: slot numbers, never pointers.
#ifndef VORNATH_DATA_REF_HPP
#define VORNATH_DATA_REF_HPP

#include <cstdint>
#include <type_traits>
#include <vector>

namespace vrnt {

/// The slot number of an object in the container of T; -1 for none. It holds no generation: after
/// the object's removal it is the number of a free slot, and later of whatever takes that slot.
template <typename T>
struct Ref {
  using Target = T;

  std::int32_t index = -1;

  friend constexpr bool operator==(Ref a, Ref b) { return a.index == b.index; }
  friend constexpr bool operator!=(Ref a, Ref b) { return a.index != b.index; }
};

static_assert(sizeof(Ref<void>) == 4 && std::is_trivially_copyable_v<Ref<void>>,
              "a reference goes to file as its 32-bit word");

/// A list of slot numbers in the container of T; -1 for none.
template <typename T>
struct RefList {
  using Target = T;
  static constexpr std::int32_t kNoTarget = -1;

  std::vector<std::int32_t> words;
};

/// A list whose words say in their sign which of two things they mean: 0 or more is a slot number
/// as it stands (`nonNegative`), a negative word is the bitwise complement of one (`negative`).
/// kNoTarget is the one word that stands for neither.
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
