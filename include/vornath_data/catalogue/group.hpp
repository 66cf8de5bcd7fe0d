/// How a class declares its groups of fields.
#ifndef VORNATH_DATA_CATALOGUE_GROUP_HPP
#define VORNATH_DATA_CATALOGUE_GROUP_HPP

#include <cstddef>
#include <type_traits>

namespace vrnt::data {

/// A group of a class. `name` is the `@name` of its schema, and `schema` is the canonical text of
/// its type; both are static strings. `member` and `offset` (in bytes) locate the group's record in
/// the struct of all records of the class.
template <typename Groups, typename Data>
struct Group {
  static_assert(std::is_trivially_copyable_v<Data> && std::is_standard_layout_v<Data>,
                "a group is read, written and stored by one memory copy");
  using Record = Data;

  constexpr Group(const char* groupName, const char* groupSchema, Data Groups::*groupMember,
                  std::size_t groupOffset)
      : name(groupName), schema(groupSchema), member(groupMember), offset(groupOffset) {}

  const char* name;
  const char* schema;
  Data Groups::*member;
  std::size_t offset;
};

}  // namespace vrnt::data

#endif
