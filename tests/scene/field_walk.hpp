// The fields of a group's type, nested ones included, as the flat functions tell them.
#ifndef VORNATH_TESTS_SCENE_FIELD_WALK_HPP
#define VORNATH_TESTS_SCENE_FIELD_WALK_HPP

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "../support/flat_handles.hpp"
#include "vornath_data/vrnt.h"

namespace vornath_test {

// A field under its path from the group, as "image.wrapmode.u" or "planes[0].origin"; the offset
// counts from the group's first byte.
struct WalkedField {
  std::string path;
  TypeHandle type;
  std::uint64_t offset;
};

inline void walkFields(const vrntType_t* structType, const std::string& prefix, std::uint64_t base,
                       std::vector<WalkedField>& fields) {
  for (std::uint32_t i = 0; i < vrntTypeFieldCount(structType); ++i) {
    vrntValueView_t view{};
    vrntValueStructField(&view, structType, i);
    const std::string path = prefix + vrntTypeFieldLabel(structType, i);
    const std::uint64_t offset = base + view.offset;
    fields.push_back({path, TypeHandle(vrntTypeFieldType(structType, i)), offset});
    const TypeHandle type(vrntTypeFieldType(structType, i));
    switch (vrntTypeDescriptor(type.get())) {
      case VRNT_DESCRIPTOR_STRUCT:
        walkFields(type.get(), path + ".", offset, fields);
        break;
      case VRNT_DESCRIPTOR_ARRAY: {
        const TypeHandle element(vrntTypeElementType(type.get()));
        if (vrntTypeDescriptor(element.get()) == VRNT_DESCRIPTOR_STRUCT) {
          walkFields(element.get(), path + "[0].", offset, fields);
        }
        break;
      }
      default:
        break;
    }
  }
}

// In the order of declaration, a struct before its own fields.
inline std::vector<WalkedField> walkFields(const vrntType_t* groupType) {
  std::vector<WalkedField> fields;
  walkFields(groupType, "", 0, fields);
  return fields;
}

// The first path that one list has and the other lacks, in words.
inline std::string firstDifference(const std::vector<std::string>& paths,
                                   const std::string& inPaths,
                                   const std::vector<std::string>& others,
                                   const std::string& inOthers) {
  for (const auto& [a, where, b] :
       {std::tuple(&paths, inPaths, &others), std::tuple(&others, inOthers, &paths)}) {
    for (const std::string& path : *a) {
      if (std::find(b->begin(), b->end(), path) == b->end()) {
        return "\"" + path + "\" stands in " + where + " only";
      }
    }
  }
  return "the order differs";
}

inline std::vector<std::string> pathsOf(const std::vector<WalkedField>& fields) {
  std::vector<std::string> paths;
  for (const WalkedField& field : fields) paths.push_back(field.path);
  return paths;
}

}  // namespace vornath_test

#endif
