// The flat functions of the catalogue.
#include <fmt/format.h>

#include <memory>

#include "catalogue/compare.hpp"
#include "catalogue/forms.hpp"
#include "foundation/failure.hpp"
#include "vornath_toolkit/vrtk_catalogue.h"

using vrtk::guarded;
using vrtk::requireArgument;

namespace {

std::string inForm(std::uint32_t form, const vrtk::CatalogueModel& catalogue) {
  switch (form) {
    case VRTK_CATALOGUE_TEXT:
      return vrtk::catalogueText(catalogue);
    case VRTK_CATALOGUE_JSON:
      return vrtk::catalogueJson(catalogue);
    case VRTK_CATALOGUE_SCHEMA:
      return vrtk::catalogueSchema(catalogue);
    case VRTK_CATALOGUE_HTML:
      return vrtk::catalogueHtml(catalogue);
    default:
      return vrtk::catalogueMarkdown(catalogue);
  }
}

}  // namespace

std::uint32_t vrtkCatalogue(std::uint32_t form, const char* filter, char** text,
                            vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(text, "vrtkCatalogue", "text");
    if (form > VRTK_CATALOGUE_MARKDOWN) {
      throw vrtk::Failure(
          VRTK_INVALID_ARGUMENT,
          fmt::format("vrtkCatalogue: {} is no form; use a constant VRTK_CATALOGUE_*", form));
    }
    const vrtk::CatalogueModel catalogue = vrtk::readCatalogue(filter);
    *text = vrtk::copyString(inForm(form, catalogue));
  });
}

std::uint32_t vrtkCatalogueCompare(const char* json, std::uint64_t size,
                                   vrtkCatalogueChanges** changes, vrtkError** error) {
  return guarded(error, [&] {
    if (size != 0) requireArgument(json, "vrtkCatalogueCompare", "json");
    requireArgument(changes, "vrtkCatalogueCompare", "changes");
    auto found = std::make_unique<vrtkCatalogueChanges>();
    vrtk::compareCatalogues(std::string_view(json, static_cast<std::size_t>(size)), *found);
    *changes = found.release();
  });
}

void vrtkCatalogueChangesDestroy(vrtkCatalogueChanges* changes) { delete changes; }

std::uint64_t vrtkCatalogueChangesCount(const vrtkCatalogueChanges* changes) {
  return changes->changes.size();
}

std::uint64_t vrtkCatalogueChangesBreaking(const vrtkCatalogueChanges* changes) {
  return changes->breaking;
}

const vrtkCatalogueChange* vrtkCatalogueChangesGet(const vrtkCatalogueChanges* changes,
                                                   std::uint64_t index) {
  if (index >= changes->changes.size()) return nullptr;
  return &changes->changes[static_cast<std::size_t>(index)].flat;
}

std::uint32_t vrtkCatalogueChangesJson(const vrtkCatalogueChanges* changes, char** json,
                                       vrtkError** error) {
  return guarded(error, [&] {
    requireArgument(changes, "vrtkCatalogueChangesJson", "changes");
    requireArgument(json, "vrtkCatalogueChangesJson", "json");
    *json = vrtk::copyString(vrtk::changesJson(*changes));
  });
}
