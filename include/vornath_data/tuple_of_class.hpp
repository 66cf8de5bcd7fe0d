/// A tuple with one member for each class.
#ifndef VORNATH_DATA_TUPLE_OF_CLASS_HPP
#define VORNATH_DATA_TUPLE_OF_CLASS_HPP

#include <tuple>
#include <type_traits>

#include "vornath_data/catalogue/class_list.hpp"

namespace vrnt::data {

namespace detail {

// The members are nested, so that they lie in class order and are destroyed from the last class to
// the first. std::tuple leaves both open.
template <template <typename> class Member, typename... Descs>
struct ClassMembers {};

template <template <typename> class Member, typename First, typename... Rest>
struct ClassMembers<Member, First, Rest...> {
  Member<Stored<First>> first;
  ClassMembers<Member, Rest...> rest;

  template <typename Desc>
  auto& get() noexcept {
    if constexpr (std::is_same_v<Desc, First>) {
      return first;
    } else {
      return rest.template get<Desc>();
    }
  }
  template <typename Desc>
  const auto& get() const noexcept {
    if constexpr (std::is_same_v<Desc, First>) {
      return first;
    } else {
      return rest.template get<Desc>();
    }
  }
};

template <template <typename> class Member, typename List>
struct MembersOfList;
template <template <typename> class Member, typename... Descs>
struct MembersOfList<Member, std::tuple<Descs...>> {
  using Members = ClassMembers<Member, Descs...>;
};

/// Holds a `Member` of the stored element for each class, in class order. `get<Desc>()` returns the
/// member of a class.
template <template <typename> class Member>
using TupleOfClass = typename MembersOfList<Member, ClassList>::Members;

}  // namespace detail

}  // namespace vrnt::data

#endif
