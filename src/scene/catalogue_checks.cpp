// Scene files contain the bytes of records, so every byte of a record must belong to a member. This
// file checks it once for the whole build: the sizes of the members add up to the size of the
// record.
#include <cstddef>

#include "vornath_data/catalogue/class_list.hpp"

namespace vrnt::data {

// clang-format off
// NOLINTBEGIN(bugprone-macro-parentheses): parts of one sum
#include "vornath_data/catalogue/shared_fields.inc"

#define VRNT_SIZE_bool 4
#define VRNT_SIZE_char 1
#define VRNT_SIZE_float 4
#define VRNT_SIZE_float2 8
#define VRNT_SIZE_float3 16
#define VRNT_SIZE_float4 16
#define VRNT_SIZE_int 4
#define VRNT_SIZE_int2 8
#define VRNT_SIZE_int4 16

#define VRNT_GROUP(Record, schema, member, name) static_assert(sizeof(Record) == 0
#define VRNT_END_GROUP(Record, annotations) \
  , #Record ": bytes without a name. Write VRNT_FILL above each field that is aligned to 8 or 16 bytes, and " \
  "VRNT_FILL_END behind the last field of a struct that is");
#define VRNT_SHARED_GROUP(Record, schema, member, name, annotations)
#define VRNT_SHARED_RECORD(Record) VRNT_GROUP(Record, , , ) VRNT_FIELDS_##Record VRNT_END_GROUP(Record, )
#define VRNT_STRUCT(Record) + (0
#define VRNT_END_STRUCT(label, annotations) )
#define VRNT_END_STRUCT_ARRAY(extent, label, annotations) ) * extent
#define VRNT_BARE_FIELD(type, label, value) + VRNT_SIZE_##type
#define VRNT_FIELD(type, label, value, annotations) + VRNT_SIZE_##type
#define VRNT_PLAIN_FIELD(type, label, annotations) + VRNT_SIZE_##type
#define VRNT_ARRAY(type, extent, label, value, annotations) + VRNT_SIZE_##type * extent
#define VRNT_PLAIN_ARRAY(type, extent, label, annotations) + VRNT_SIZE_##type * extent
#define VRNT_ENUM(label, constructors, value, annotations) + 4
#define VRNT_ALIASED_ENUM(label, alias, constructors, value, annotations) + 4
#define VRNT_LABELLED_ENUM(label, constructors, value, annotations) + 4
#define VRNT_PLAIN_ENUM(label, constructors, annotations) + 4
#define VRNT_RECORD(Record, label, annotations) + sizeof(Record)
#define VRNT_FILL(Scope, label) + decltype(Scope::fill_##label)::kSize
#define VRNT_FILL_END(Scope) + decltype(Scope::fill_end)::kSize

#include "vornath_data/catalogue/all_fields.def"
// NOLINTEND(bugprone-macro-parentheses)
// clang-format on

}  // namespace vrnt::data
