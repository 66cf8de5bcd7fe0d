// The forms in which the catalogue is written.
#ifndef VORNATH_TOOLKIT_CATALOGUE_FORMS_HPP
#define VORNATH_TOOLKIT_CATALOGUE_FORMS_HPP

#include <string>

#include "catalogue/model.hpp"

namespace vrtk {

std::string catalogueText(const CatalogueModel& catalogue);
std::string catalogueJson(const CatalogueModel& catalogue);
std::string catalogueSchema(const CatalogueModel& catalogue);
std::string catalogueHtml(const CatalogueModel& catalogue);
std::string catalogueMarkdown(const CatalogueModel& catalogue);

}  // namespace vrtk

#endif
