// The members of each group record, in order, as the tables of fields name them: their places are
// those of the record's own members.
#ifndef VORNATH_TESTS_SCENE_RECORD_MEMBERS_HPP
#define VORNATH_TESTS_SCENE_RECORD_MEMBERS_HPP

#include <cstddef>
#include <cstdint>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "vornath_data/catalogue/class_list.hpp"

namespace vornath_test {

// A member under its path from the record, as "image.wrapmode.u" or "planes[0].origin".
struct Member {
  std::string path;
  std::uint64_t offset;
  std::uint64_t size;
};

class MemberList {
 public:
  explicit MemberList(const void* record) : record_(static_cast<const char*>(record)) {}

  template <typename T>
  void add(const std::string& label, const T& member) {
    const auto* const bytes = reinterpret_cast<const char*>(&member);
    members_.push_back({prefix_ + label, static_cast<std::uint64_t>(bytes - record_), sizeof(T)});
  }

  // A struct, before its own members.
  template <typename T, typename AddMembers>
  void add(const std::string& label, const T& member, AddMembers&& addMembers) {
    add(label, member);
    nest(label + ".", member, addMembers);
  }
  template <typename T, std::size_t Extent, typename AddMembers>
  void add(const std::string& label, const T (&member)[Extent], AddMembers&& addMembers) {
    add(label, member);
    nest(label + "[0].", member[0], addMembers);
  }

  std::vector<Member> take() { return std::move(members_); }

 private:
  template <typename T, typename AddMembers>
  void nest(const std::string& prefix, const T& member, AddMembers&& addMembers) {
    const std::string outer = prefix_;
    prefix_ += prefix;
    addMembers(*this, member);
    prefix_ = outer;
  }

  const char* record_;
  std::string prefix_;
  std::vector<Member> members_;
};

// addMembers(list, record) for each record of a group and each that groups share.
namespace members {

using namespace vrnt::data;

inline void addMembers(MemberList& list, const TextureRef& record) {
  list.add("index", record.index);
}

#include "vornath_data/catalogue/shared_fields.inc"
#define VRNT_BARE_FIELD(type, label, value) list.add(#label, record.label);
#define VRNT_FIELD(type, label, value, annotations) list.add(#label, record.label);
#define VRNT_PLAIN_FIELD(type, label, annotations) list.add(#label, record.label);
#define VRNT_ARRAY(type, extent, label, value, annotations) list.add(#label, record.label);
#define VRNT_PLAIN_ARRAY(type, extent, label, annotations) list.add(#label, record.label);
#define VRNT_ENUM(label, constructors, value, annotations) list.add(#label, record.label);
#define VRNT_ALIASED_ENUM(label, alias, constructors, value, annotations) \
  list.add(#label, record.label);
#define VRNT_LABELLED_ENUM(label, constructors, value, annotations) list.add(#label, record.label);
#define VRNT_PLAIN_ENUM(label, constructors, annotations) list.add(#label, record.label);
#define VRNT_RECORD(Record, label, annotations) \
  list.add(#label, record.label,                \
           [](MemberList& inner, const Record& nested) { addMembers(inner, nested); });
#define VRNT_FILL(Scope, label)
#define VRNT_FILL_END(Scope)
#define VRNT_GROUP(Record, schema, member, name) \
  inline void addMembers(MemberList& list, const Record& record) {
#define VRNT_END_GROUP(Record, annotations) }
#define VRNT_SHARED_GROUP(Record, schema, member, name, annotations)
#define VRNT_SHARED_RECORD(Record)
// The label stands behind the members, so they are told to a function first.
#define VRNT_STRUCT(Record) \
  {                         \
    const auto addNested = [](auto& list, auto& record) {
#define VRNT_END_STRUCT(label, annotations)  \
  }                                          \
  ;                                          \
  list.add(#label, record.label, addNested); \
  }
#define VRNT_END_STRUCT_ARRAY(extent, label, annotations) VRNT_END_STRUCT(label, annotations)

// A function sees those that stand before it: the shared records come first.
#undef VRNT_SHARED_RECORD
#define VRNT_SHARED_RECORD(Record) \
  inline void addMembers(MemberList& list, const Record& record) { VRNT_FIELDS_##Record }
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"  // lists and records of nested structs
#include "vornath_data/catalogue/shared.def"
#undef VRNT_SHARED_RECORD
#define VRNT_SHARED_RECORD(Record)
#include "vornath_data/catalogue/all_fields.def"
#pragma GCC diagnostic pop
#include "vornath_data/catalogue/undefine_rows.inc"
#define VRNT_UNDEFINE
#include "vornath_data/catalogue/shared_fields.inc"
#undef VRNT_UNDEFINE

}  // namespace members

template <typename Record>
std::vector<Member> membersOf() {
  const Record record{};
  MemberList list(&record);
  members::addMembers(list, record);
  return list.take();
}

}  // namespace vornath_test

#endif
