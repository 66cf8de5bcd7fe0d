// What changed since a saved catalogue.
#ifndef VORNATH_TOOLKIT_CATALOGUE_COMPARE_HPP
#define VORNATH_TOOLKIT_CATALOGUE_COMPARE_HPP

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "vornath_toolkit/vrtk_catalogue.h"

namespace vrtk {

struct CatalogueChange {
  std::string address;
  std::string message;
  vrtkCatalogueChange flat;  ///< points to the strings
};

/// Compares a saved catalogue with that of the library. Throws Failure with VRTK_CATALOGUE_INVALID.
void compareCatalogues(std::string_view json, vrtkCatalogueChanges& changes);

std::string changesJson(const vrtkCatalogueChanges& changes);

}  // namespace vrtk

struct vrtkCatalogueChanges {
  std::deque<vrtk::CatalogueChange> changes;  // what they point to does not move
  std::uint64_t breaking = 0;
};

#endif
